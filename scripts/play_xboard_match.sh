#!/usr/bin/env bash
# Plays whole games at fast clocks under a real interface: xboard in match mode, without a window. Valku speaks
# xboard's own protocol. Two games against gnuchess and two of Valku against itself; for each kind of opponent one
# with "40 moves in so many minutes" and one with a base time and an increment, one with pondering and one without.
# The record of each game is held against the rules by pgn-extract, the results that Valku states against the
# interface's, and its pondering against the setting. The exit code is 0 only if all of this is in order.
#
#   scripts/play_xboard_match.sh [--install] [--engine COMMAND] [--output FOLDER]
#                                [--minutes M[:SS]] [--base M:SS] [--increment S] [--longest S]
#
#   --install    install missing Debian packages with apt-get
#   --engine     the engine's command (default: run.sh of this repository)
#   --output     where the records and xboard's debug files go (default: build/match)
#   --minutes    the clock for 40 moves (default 0:20; below 0:35 Valku hardly searches in these games)
#   --base, --increment   the other clock (default 0:02 and 1 second a move; Valku reads whole seconds a move)
#   --longest    seconds after which a game is given up, whatever its clock says (default 420)
set -u

root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
engine=$root/run.sh
output=$root/build/match
minutes=0:20
base=0:02
increment=1
install=
longest=420

while [ $# -gt 0 ]; do
    case $1 in
        --install) install=yes; shift; continue ;;
        --engine | --output | --minutes | --base | --increment | --longest)
            [ $# -ge 2 ] || { echo "$1 needs a value" >&2; exit 2; } ;;
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

display='' game=''
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
read -r -t 20 -u 4 number || { echo "the display in memory did not start: $(cat display.log)" >&2; exit 1; }
export DISPLAY=:$number

# gnuchess speaks xboard's protocol too, but now and then says nothing to it from the start.
gnuchess="polyglot -noini -ec 'gnuchess --uci' -ed '$work' -en GNUChess"

# Once xboard has judged a game to be over it reads no more, so its debug file lacks what an engine says after its
# last move: that the game is over. Each Valku's words are therefore kept on their way, in a file for each side.
export engine
printf '%s\n' '#!/usr/bin/env bash' 'exec "$engine" > >(tee -p "$1")' >valku
chmod +x valku

# countPondering debug-file sides: in how many waits for the opponent's move these sides were thinking, and how often
# the move was the one they had announced to think about.
countPondering() {
    awk -v sides="$2" 'match($0, /^[0-9]+ [<>](first |second): /) {
        said = substr($0, RLENGTH - 8, 1) == "<"
        side = substr($0, RLENGTH - 7, 6)
        text = substr($0, RLENGTH + 1)
        if (!index(sides, side)) next
        if (said && text ~ /^move /) { waits[side] = 1; thinks[side] = 0; expected[side] = "" }
        if (said && text ~ /^[0-9]+ -?[0-9]+ [0-9]+ [0-9]+ /) thinks[side] = 1
        if (said && sub(/.* ponderMove=/, "", text)) expected[side] = text
        if (!said && text ~ /^[a-h][1-8][a-h][1-8]/) {
            if (waits[side] && thinks[side]) { ++ponders; if (text == expected[side]) ++hits }
            waits[side] = 0
        }
    } END { print ponders + 0, hits + 0 }' "$1"
}

# playGame name white black moves|increment true|false: the sides are valku or gnuchess, the clock and pondering.
# False unless the game came to a proper end and Valku's words fit it; 2 if gnuchess broke off.
playGame() {
    local name=$1 ponder=$5 record=$work/$1.pgn debug=$output/$1.debug began=$SECONDS
    local white=$gnuchess black=$gnuchess sides='' clock=(-timeControl "$base" -timeIncrement "$increment")
    [ "$2" = gnuchess ] || { white="$work/valku $work/$name.first"; sides="first "; }
    [ "$3" = gnuchess ] || { black="$work/valku $work/$name.second"; sides+=second; }
    [ "$4" = increment ] || clock=(-timeControl "$minutes" -movesPerSession 40 -timeIncrement -1)
    local status result reason body moves men last side stated claims='' ponders hits wrong=0
    complain() { echo "$name: $1"; wrong=1; }
    rm -f "$output/$name".*

    # The time limit reaches xboard's whole process group, the engines included. xboard ends games by the rules as
    # Valku does, since it does not understand the word "result" in front of a claim.
    timeout --kill-after=10 "$longest" xboard -noGUI -matchGames 1 "${clock[@]}" -ponderNextMove "$ponder" \
        -firstChessProgram "$white" -secondChessProgram "$black" -saveGameFile "$record" -autoCallFlag true \
        -testLegality true -checkMates true -materialDraws true -repeatsToDraw 3 -ruleMoves 50 \
        -popupExitMessage false -soundProgram true -delayBeforeQuit 500 \
        -debugMode true -nameOfDebugFile "$debug" >"$name.out" 2>&1 &
    game=$!
    wait "$game"
    status=$? game=''
    for side in $sides; do cp "$name.$side" "$output/"; done
    cp "$record" "$output/$name.pgn" || status=1
    if grep 'gnuchess --uci: child terminated' "$name.out"; then return 2; fi
    [ "$status" -eq 0 ] || { complain "xboard ended with $status: $(tail -n 5 "$name.out")"; return 1; }

    # In its silent mode every word of pgn-extract is a complaint.
    pgn-extract -s -Wuci -F -o "$name.moves" "$record" 2>"$name.check"
    status=$?
    if [ "$status" -ne 0 ] || [ -s "$name.check" ] || [ "$(grep -c '^\[Result ' "$name.moves")" -ne 1 ]; then
        complain "pgn-extract does not accept the record: $(cat "$name.check")"
        return 1
    fi
    # The moves, and after them in braces the last position.
    body=$(grep -v '^\[' "$name.moves" | tr '\n' ' ')
    moves=$(grep -o -i -E '\b[a-h][1-8][a-h][1-8][qrbn]?\b' <<<"${body%%\{*}" | wc -l)
    men=$(sed 's/.*{ "\([^ ]*\) .*/\1/' <<<"$body" | tr -cd '[:alpha:]' | wc -c)
    [ $((moves % 2)) -eq 1 ] && last=first || last=second

    # A game may end by the rules of chess, by resignation or by agreement; nothing else is in order.
    result=$(sed -n 's/^\[Result "\(.*\)"\]/\1/p' "$record")
    reason=$(tr '\n' ' ' <"$record" | grep -o '{[^}]*} *[-0-9/*]* *$' | sed 's/}.*/}/')
    if [ "$result" = "*" ] || grep -q -i -E 'illegal|forfeit|time|exited|abort|false' <<<"$reason" ||
        ! grep -q -i -E 'mate|repetition|fifty|50|insufficient|resign|agree' <<<"$reason"; then
        complain "ended out of order: ${reason:-no reason given}"
    fi
    if grep -i -E '^[0-9]+ <(first |second): *(error|illegal move)|illegal move "' "$debug"; then
        complain "something was not understood or not legal, see $debug"
    fi

    # Every result that Valku states is the game's. One that ends the game by its last move states it, except that
    # xboard knows more kinds of insufficient material than a king against a king and one minor piece.
    for side in $sides; do
        stated=$(sed -n 's/^result \([^ ]*\) .*/\1/p' "$name.$side" | sort -u | tr '\n' ' ')
        claims+=${stated:+${claims:+, }$side ${stated% }}
        if [ -n "$stated" ] && [ "$stated" != "$result " ]; then
            complain "the $side engine states ${stated}and the interface $result"
        elif [ -z "$stated" ] && [ "$side" = "$last" ] && ! grep -q -i -E 'resign|agree' <<<"$reason" &&
            ! { grep -q -i insufficient <<<"$reason" && [ "$men" -gt 3 ]; }; then
            complain "the $side engine makes the last move and does not state a result"
        fi
    done

    read -r ponders hits < <(countPondering "$debug" "$sides")
    case $ponder/$ponders in
        false/0 | true/[1-9]*) ;;
        *) complain "pondering is $ponder, and Valku pondered $ponders times" ;;
    esac
    echo "$name: $result, $moves half-moves in $((SECONDS - began)) s, $reason," \
        "stated by Valku: ${claims:-nothing}; pondered $ponders times, $hits hits"
    return "$wrong"
}

# gnuchess now and then aborts while it ponders. That says nothing of Valku, and the game is played once more.
playGnuchess() {
    playGame "$@"
    case $? in
        0) ;;
        2) echo "$1: gnuchess broke off, once more" && rm -f "$work/$1".* && playGame "$@" ;;
        *) return 1 ;;
    esac
}

failed=0
playGnuchess valku-gnuchess valku gnuchess moves false || failed=1
playGnuchess gnuchess-valku gnuchess valku increment true || failed=1
playGame valku-valku-1 valku valku moves true || failed=1
playGame valku-valku-2 valku valku increment false || failed=1
echo "records: $output"
exit $failed
