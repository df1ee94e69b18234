#!/usr/bin/env bash
# Runs all steps of tuning once: quiet positions from games, labels for them from an engine, matrices of the
# labelled positions, weights fitted to the matrices, and a match of the new weights against the old ones. The files
# of every step stay in the output folder. README.md beside this script explains them and how to read the figures.
#
#   share/tuning/tune.sh [--install] [--games FILE.pgn] [--engine COMMAND] [--labeller COMMAND] [--depth N]
#                        [--settings FILE] [--games-to-play N] [--match-depth N] [--jobs N] [--output FOLDER]
#
#   --install        install python3-numpy with apt-get if it is missing
#   --games          the games to take positions from (default: games.pgn beside this script)
#   --engine         the Valku that is tuned (default: run.sh of this repository, which is built if need be)
#   --labeller       the UCI engine that gives the labels, such as stockfish (default: the engine itself)
#   --depth          plies that the labeller searches; Valku takes 5 at least (default 8)
#   --settings       the settings.ini to start from (default: the engine's own values)
#   --games-to-play  games of the match (default 100; 0 leaves it out)
#   --match-depth    plies that both sides search in it (default 6)
#   --jobs           games of the match at a time (default 1)
#   --output         where the files go (default: build/tuning)
set -eu

folder=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
root=$(dirname "$(dirname "$folder")")
games=$folder/games.pgn
engine=$root/run.sh
labeller=
depth=8
settings=
games_to_play=100
match_depth=6
jobs=1
output=$root/build/tuning
install=

fail() {
    echo "tune.sh: $1" >&2
    exit 1
}

while [ $# -gt 0 ]; do
    case $1 in
        --install) install=yes; shift; continue ;;
        --games | --engine | --labeller | --depth | --settings | --games-to-play | --match-depth | --jobs | --output)
            [ $# -ge 2 ] || fail "$1 needs a value" ;;
        *) sed -n '2,/^set/s/^#\( \|$\)//p' "${BASH_SOURCE[0]}" >&2; exit 2 ;;
    esac
    name=${1#--}
    declare "${name//-/_}=$2"
    shift 2
done

# Debian puts its chess programs where not every user's path leads.
PATH=$PATH:/usr/games

# The first Python with NumPy; Debian's package is of use to Debian's Python only.
findPython() {
    for python in python3 /usr/bin/python3; do
        "$python" -c 'import numpy' 2>/dev/null && return 0
    done
    return 1
}
if ! findPython; then
    [ -n "$install" ] || fail "NumPy is not installed; run this with --install, or
    apt-get install python3-numpy"
    . "$root/scripts/packages.sh"
    needPackages python3:/usr/bin/python3 python3-numpy:/usr/lib/python3/dist-packages/numpy
    findPython || fail "Python does not find NumPy"
fi

# What is named may be a relative path, and the steps run in the output folder.
program=$(command -v "$engine") && engine=$(readlink -f "$program") || fail "there is no engine $engine"
if [ -n "$labeller" ]; then
    program=$(command -v "${labeller%% *}") || fail "there is no engine $labeller"
    labelled="$(printf '%q' "$(readlink -f "$program")")${labeller#"${labeller%% *}"}"
else
    labelled=$(printf '%q' "$engine")
fi
games=$(readlink -e "$games") || fail "there is no such file of games"
[ -z "$settings" ] || settings=$(readlink -e "$settings") || fail "there is no such settings file"
# run.sh may have to build first; without input the engine ends at once.
[ "$engine" != "$root/run.sh" ] || "$engine" </dev/null || fail "the engine could not be built"

# What is to be read may be the work of an earlier round in the same folder.
mkdir -p "$output"
cat "${settings:-/dev/null}" >"$output/old.part"
cat "$games" >"$output/games.part"
cd "$output"
rm -f testPosEval.txt labels.txt matrix.mg matrix.eg fit.txt match.txt match.pgn new.ini
mv old.part old.ini
mv games.part games.pgn

# The engines of these steps run here, with the old settings but no book; of several lines of a key the last one counts.
{ cat old.ini && printf '\nbookFile=\n'; } >settings.ini
# The engine splits its arguments at blanks. A script lets the command have arguments and its path blanks.
printf '#!/bin/sh\nexec %s\n' "$labelled" >labeller
chmod +x labeller

# tell words file...: has the engine carry out the words, and checks that it has made the files.
tell() {
    local words=$1
    shift
    printf 'console\n%s\nquit\n' "$words" | "$engine" >"${words%% *}.log" || fail "the engine failed at: $words"
    ! grep '^Error\|^Could not' "${words%% *}.log" || fail "the engine reported these errors at: $words"
    for file in "$@"; do
        [ -s "$file" ] || fail "there is no result of: $words
$(tail -n 5 "${words%% *}.log")"
    done
}

echo "1. quiet positions from $games"
tell "generateTestposEval games.pgn" testPosEval.txt
echo "   $(wc -l <testPosEval.txt) positions: testPosEval.txt"

echo "2. labels for them from ${labeller:-the engine itself}, $depth plies deep"
tell "callengine ./labeller testPosEval.txt $depth labels.txt" labels.txt
echo "   $(($(wc -l <labels.txt) / 2)) labels: labels.txt"

echo "3. matrices of those that are not decided"
tell "learnfile2matrix labels.txt matrix" matrix.mg matrix.eg
echo "   $(($(wc -l <matrix.mg) - 1)) and $(($(wc -l <matrix.eg) - 1)) rows: matrix.mg, matrix.eg"

echo "4. weights by least squares"
"$python" "$folder/fit.py" matrix.mg matrix.eg new.ini --present old.ini >fit.txt
sed 's/^./   &/' fit.txt

if [ "$games_to_play" -gt 0 ]; then
    echo "5. a match of the new weights against the old ones"
    "$python" "$folder/match.py" "$engine" new.ini old.ini --games "$games_to_play" --depth "$match_depth" \
        --jobs "$jobs" --pgn match.pgn >match.txt
    sed 's/^/   /' match.txt
fi
echo "everything is in $output"
