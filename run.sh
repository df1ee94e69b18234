#!/usr/bin/env bash
# Builds the release if need be and becomes the engine. Standard input and output are the engine's alone, so a chess
# interface can be given this file as its engine command; all words of set-up go to standard error.
set -u

root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
build=$root/build/release
engine=$build/valku
stamp=$build/built
tables=$root/tables

# Nothing that the build reads is newer than the last build. Folders count too: their time changes with a removal.
isBuilt() {
    [ -x "$engine" ] && [ -e "$stamp" ] &&
        [ -z "$(find "$root/src" "$root/cmake" "$root/share/book.txt" "$root/CMakeLists.txt" \
            "$root/CMakePresets.json" -newer "$stamp" -print -quit)" ]
}

build() {
    . "$root/scripts/packages.sh"
    needPackages cmake:cmake g++:c++ ninja-build:ninja || return 1
    mkdir -p "$build" || return 1
    # An interface may start two engines at once; the second waits for the first one's build.
    exec 9>"$build/lock" && flock 9 || return 1
    isBuilt && return 0
    echo "valku: building the engine, this happens once" >&2
    # The stamp is as old as the start of the build: what is changed meanwhile is built the next time.
    touch "$stamp.new" &&
        (cd "$root" && cmake --preset release && cmake --build --preset release) &&
        mv "$stamp.new" "$stamp"
}

if ! isBuilt; then
    if ! (build) </dev/null >&2; then
        echo "valku: the engine could not be built" >&2
        exit 1
    fi
fi

# The endings of three men, which settings.ini names. The lock is for two interfaces that start at once.
makeTables() {
    exec 9>"$build/lock" && flock 9 || return 1
    [ -e "$tables/kpk.nbb" ] && return 0
    "$build/valku-tables" generate --all-3 --dir "$tables" || return 1
    echo "valku: for the endings of four men run $build/valku-tables generate --all-4 --compress --dir $tables"
}

# The tables of kpk are made last, from all others of three men.
if [ ! -e "$tables/kpk.nbb" ] && [ ! -e "$tables/kpk.nbb.emd" ]; then
    (makeTables) </dev/null >&2 || echo "valku: going on without endgame tables" >&2
fi

if [ -t 0 ] && [ $# -eq 0 ]; then
    cat >&2 <<'GREETING'
Type  console  to play here,
      uci      to speak the UCI protocol as an interface would, or
      xboard   to speak the XBoard protocol; the word quit ends the engine.
For example: console, then go for a move of the engine, then your answer, such as e7e5.
GREETING
fi

exec "$engine" "$@"
