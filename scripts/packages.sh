# Sourced by run.sh, test.sh and .ci/run: gets the Debian packages that are missing.

# needPackages package:file-or-command ... - installs each package whose file (an absolute path) or command is not
# there. Says nothing and touches nothing when all are there. Every word goes to standard error.
needPackages() {
    local missing=() pair proof
    for pair in "$@"; do
        proof=${pair#*:}
        case $proof in
            /*) [ -e "$proof" ] && continue ;;
            *) command -v "$proof" >/dev/null 2>&1 && continue ;;
        esac
        missing+=("${pair%%:*}")
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    local asRoot=()
    if ! command -v apt-get >/dev/null 2>&1; then
        echo "valku: this machine lacks ${missing[*]} (Debian's names) and has no apt-get to fetch them with." >&2
        return 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        if ! sudo -n true >/dev/null 2>&1; then
            echo "valku: packages are missing and this user may not install them. Please have run:" >&2
            echo "    apt-get install ${missing[*]}" >&2
            return 1
        fi
        asRoot=(sudo -n)
    fi
    echo "valku: installing ${missing[*]}" >&2
    if ! { "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q update &&
        "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y install --no-install-recommends \
            "${missing[@]}"; } </dev/null >&2; then
        echo "valku: installing ${missing[*]} failed" >&2
        return 1
    fi
}
