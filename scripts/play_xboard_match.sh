#!/usr/bin/env bash
# Plays whole games at a fast clock under a real interface: xboard in match mode, without a window, with polyglot
# between its protocol and the engines' UCI. One game against gnuchess, then one of Valku against itself. The record
# of each is held against the rules by pgn-extract. The exit code is 0 only if every game came to a proper end.
#
#   scripts/play_xboard_match.sh [--install] [--engine COMMAND] [--output FOLDER] [--base M:SS] [--increment S]
#
#   --install    install missing Debian packages with apt-get
#   --engine     the engine's command (default: run.sh of this repository)
#   --output     where the records go (default: build/match)
#   --base, --increment   the clock (default 0:20 and 0.5 seconds a move)
set -u

root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
engine=$root/run.sh
output=$root/build/match
base=0:20
increment=0.5
install=
longestGame=420  # seconds, whatever the clock says

while [ $# -gt 0 ]; do
    case $1 in
        --install) install=yes; shift; continue ;;
        --engine | --output | --base | --increment) [ $# -ge 2 ] || { echo "$1 needs a value" >&2; exit 2; } ;;
        *) sed -n '2,/^set/s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2; exit 2 ;;
    esac
    declare "${1#--}=$2"
    shift 2
done

# Debian puts its chess programs where not every user's path leads.
PATH=$PATH:/usr/games
missing=()
for pair in xboard:xboard polyglot:polyglot gnuchess:gnuchess pgn-extract:pgn-extract xvfb:Xvfb; do
    command -v "${pair#*:}" >/dev/null || missing+=("$pair")
done
if [ ${#missing[@]} -ne 0 ]; then
    if [ -z "$install" ]; then
        echo "not installed: ${missing[*]%%:*}; run this with --install, or" >&2
        echo "    apt-get install ${missing[*]%%:*}" >&2
        exit 2
    fi
    . "$root/scripts/packages.sh"
    needPackages "${missing[@]}" || exit 2
fi

mkdir -p "$output" && output=$(readlink -f "$output") || exit 2
case $engine in */*) engine=$(readlink -f "$engine") ;; esac
# run.sh may have to build first, which is no part of a game; without input the engine ends at once.
[ "$engine" != "$root/run.sh" ] || "$engine" </dev/null || exit 2

# The interface keeps its settings in the home folder, and the engines leave files where they run.
work=$(mktemp -d)
export HOME=$work/home
mkdir "$HOME"
cd "$work" || exit 2

display=
game=
cleanUp() {
    for process in $game $display; do kill "$process" 2>/dev/null && wait "$process" 2>/dev/null; done
    cd / && rm -rf "$work"
}
trap cleanUp EXIT
trap 'exit 130' INT TERM

# xboard starts only where there is a display, even when it shows nothing. This one is in memory, takes no
# connection from the network, and chooses a free number by itself.
mkfifo displayNumber
Xvfb -displayfd 3 -screen 0 640x480x16 -nolisten tcp 3<>displayNumber 2>display.log &
display=$!
exec 4<>displayNumber
if ! read -r -t 20 -u 4 number; then
    echo "the display in memory did not start:" >&2
    cat display.log >&2
    exit 1
fi
export DISPLAY=:$number

# gnuchess speaks xboard's protocol too, but now and then says nothing to it from the start.
valku="polyglot -noini -ec '$engine' -ed '$work' -en Valku"
gnuchess="polyglot -noini -ec 'gnuchess --uci' -ed '$work' -en GNUChess"

# playGame name first-engine second-engine: false unless the game came to a proper end.
playGame() {
    local name=$1 record=$work/$1.pgn began=$SECONDS moves=
    rm -f "$output/$name.pgn"
    # The time limit reaches xboard's whole process group, the engines included.
    timeout --kill-after=10 "$longestGame" xboard -noGUI -matchGames 1 -timeControl "$base" -timeIncrement "$increment" \
        -firstChessProgram "$2" -secondChessProgram "$3" -saveGameFile "$record" -ponderNextMove false \
        -popupExitMessage false -soundProgram true -testLegality true \
        -debugMode true -nameOfDebugFile "$output/$name.debug" >"$name.out" 2>&1 &
    game=$!
    wait "$game"
    local status=$?
    game=
    if [ "$status" -ne 0 ]; then
        echo "$name: xboard ended with $status"
        tail -n 5 "$name.out"
        return 1
    fi
    if [ ! -s "$record" ]; then
        echo "$name: no game was recorded"
        return 1
    fi
    cp "$record" "$output/$name.pgn"

    # In its silent mode every word of pgn-extract is a complaint.
    pgn-extract -s -Wuci -o "$name.moves" "$record" 2>"$name.check"
    status=$?
    if [ "$status" -ne 0 ] || [ -s "$name.check" ] || [ "$(grep -c '^\[Result ' "$name.moves")" -ne 1 ]; then
        echo "$name: pgn-extract does not accept the record"
        cat "$name.check"
        return 1
    fi
    moves=$(grep -v '^\[' "$name.moves" | grep -o -E '\b[a-h][1-8][a-h][1-8][qrbn]?\b' | wc -l)

    # A game may end by the rules of chess, by resignation or by agreement; nothing else is in order.
    local result reason
    result=$(sed -n 's/^\[Result "\(.*\)"\]/\1/p' "$record")
    reason=$(tr '\n' ' ' <"$record" | grep -o '{[^}]*} *[-0-9/*]* *$')
    if [ "$result" = "*" ] || grep -q -i -E 'illegal|forfeit|time|exited|abort' <<<"$reason" || ! grep -q -i -E \
        'mate|repetition|fifty|50|insufficient|material|resign|agree' <<<"$reason"; then
        echo "$name: ended out of order: ${reason:-no reason given}"
        return 1
    fi
    echo "$name: $result, $moves half-moves in $((SECONDS - began)) s, $reason"
}

failed=0
playGame valku-gnuchess "$valku" "$gnuchess" || failed=1
playGame valku-valku "$valku" "$valku" || failed=1
echo "records: $output"
exit $failed
