#!/usr/bin/env python3
"""Plays a match between two settings of one engine, A and B, and tells whether the difference is significant.

Every opening is played twice, each side having White once, from an empty hash table and without a book, so at a fixed
depth the same command gives the same games. The openings are the beginnings of the lines of share/book.txt. The engine
itself tells when a game is over; a game that gets too long counts as a draw. The figures are from A's view.

    share/tuning/match.py ./run.sh new.ini old.ini --games 400 --depth 6
    share/tuning/match.py ./run.sh new.ini old.ini --games 400 --clock 10+0.1 --pgn match.pgn
"""

import argparse
import concurrent.futures
import contextlib
import math
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

BOOK = Path(__file__).resolve().parent.parent / "book.txt"
REPORT = re.compile(r"info depth (\d+) .*\bscore cp (-?\d+) ")
RESULT = re.compile(r"result (\S+) \{(.*)\}")
POINTS = {"1-0": 1.0, "1/2-1/2": 0.5, "0-1": 0.0}


class Player:
    """A running engine with its settings, in a folder of its own."""

    def __init__(self, command, settings):
        self.folder = tempfile.TemporaryDirectory(prefix="valku-match-")
        # The last line of a key counts: whatever the settings say, there is no book.
        Path(self.folder.name, "settings.ini").write_text(Path(settings).read_text() + "\nbookFile=\n")
        self.process = subprocess.Popen([command], cwd=self.folder.name, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True, bufsize=1)
        identity = next(line for line in self.ask("uci", "uciok") if line.startswith("id name "))
        self.name = identity.removeprefix("id name ")

    def ask(self, words, last):
        """The lines that come after these words, up to the one that begins with `last`."""
        lines = []
        with contextlib.suppress(BrokenPipeError):  # an engine that is gone has no answer either
            self.process.stdin.write(words + "\n")
        for line in self.process.stdout:
            lines.append(line.rstrip("\n"))
            if line.startswith(last):
                return lines
        raise SystemExit(f"the engine ended while {last!r} was due; it last said: {lines[-1:]}")

    def close(self):
        self.process.stdin.close()  # which ends the engine
        self.process.stdout.close()
        self.process.wait()
        self.folder.cleanup()


def readOpenings(plies):
    """The different beginnings of the book's lines, `plies` half-moves long or more, the shorter ones first."""
    lines, line = [], []
    for text in BOOK.read_text().splitlines():
        number, *words = text.split() or ["0"]
        if number == "0":  # a title
            continue
        branch = 2 * (int(number.rstrip("-")) - 1) + number.endswith("-")
        line = line[:branch] + [word.replace("/", "").lower() for word in words if len(word) >= 4]
        lines.append(line)
    return [list({tuple(line[:length]): None for line in lines if len(line) >= length})
            for length in range(plies, max(map(len, lines)) + 1)]


def chooseOpenings(count, plies, seed):
    """Each game begins differently: at a fixed depth a second one from the same opening would tell nothing new."""
    chosen = []
    for openings in readOpenings(plies):
        openings = [opening for opening in openings if opening not in chosen]
        chosen += random.Random(seed).sample(openings, min(count - len(chosen), len(openings)))
    if len(chosen) < count:
        raise SystemExit(f"there are no more than {len(chosen)} openings of {plies} or more plies")
    return chosen


def playGame(sides, opening, options):
    """The moves, a comment for each, the result and its reason. `sides` are White and Black."""
    moves, comments = list(opening), [""] * len(opening)
    clocks = [options.clock[0]] * 2 if options.clock else None
    for side in sides:
        side.ask("ucinewgame\nsetoption name ClearHash\nisready", "readyok")
    while len(moves) < options.plies:
        mover = len(moves) % 2
        limit = f"depth {options.depth}"
        if clocks:
            times, increment = [int(1000 * clock) for clock in clocks], int(1000 * options.clock[1])
            limit = f"wtime {times[0]} btime {times[1]} winc {increment} binc {increment}"
        began = time.monotonic()
        lines = sides[mover].ask(f"position startpos moves {' '.join(moves)}\ngo {limit}", "bestmove ")
        if clocks:
            clocks[mover] -= time.monotonic() - began
            if clocks[mover] < 0:
                return moves, comments, ("0-1", "1-0")[mover], "time"
            clocks[mover] += options.clock[1]
        moves.append(lines[-1].split()[1])
        reports = [match for match in map(REPORT.match, lines) if match]
        comments.append(f"{int(reports[-1][2]) / 100:.2f}/{reports[-1][1]}" if reports else "")
        # After its move the engine says whether the game is over; a new position is set up only after that.
        words = sides[mover].ask(f"position startpos moves {' '.join(moves)}\nisready", "readyok")
        for over in filter(None, map(RESULT.fullmatch, words)):
            return moves, comments, over[1], over[2]
    return moves, comments, "1/2-1/2", "too long"


def writeMoves(moves):
    """The moves in algebraic notation, always with the square of origin, which needs no rules of chess."""
    men = {file + rank: man for rank, row in zip("1278", ("RNBQKBNR", "P" * 8, "p" * 8, "rnbqkbnr"))
           for file, man in zip("abcdefgh", row)}
    texts = []
    for origin, target, promotion in ((move[:2], move[2:4], move[4:]) for move in moves):
        man = men.pop(origin)
        takes = "x" if target in men else ""
        if man in "Kk" and origin[0] == "e" and target[0] in "cg":
            texts.append("O-O" if target[0] == "g" else "O-O-O")
            rook = ("h", "f") if target[0] == "g" else ("a", "d")
            men[rook[1] + origin[1]] = men.pop(rook[0] + origin[1])
        elif man in "Pp":
            if origin[0] != target[0]:
                if not takes:
                    del men[target[0] + origin[1]]  # en passant
                texts.append(f"{origin[0]}x{target}")
            else:
                texts.append(target)
            if promotion:
                texts[-1] += "=" + promotion.upper()
                man = promotion.upper() if man == "P" else promotion
        else:
            texts.append(man.upper() + origin + takes + target)
        men[target] = man
    return texts


def gameText(number, names, moves, comments, result, reason):
    tags = (("Event", "Valku against itself"), ("Round", number), ("White", names[0]), ("Black", names[1]),
            ("Result", result))
    words = [f'[{tag} "{value}"]\n' for tag, value in tags] + ["\n"]
    for ply, (move, comment) in enumerate(zip(writeMoves(moves), comments)):
        words.append((f"{ply // 2 + 1}. " if ply % 2 == 0 else "") + move + (f" {{{comment}}}" if comment else ""))
        words.append("\n" if ply % 8 == 7 else " ")
    return "".join(words) + f"{{{reason}}} {result}\n\n"


def playMatch(command, options, tell):
    """The games as (A's points, unit, text, reason, plies); games of one unit share an opening."""
    openings = chooseOpenings(options.games if options.once else (options.games + 1) // 2, options.plies_of_opening,
                              options.seed)
    games = [(unit, opening, turn) for unit, opening in enumerate(openings)
             for turn in ((unit % 2,) if options.once else (0, 1))][:options.games]

    def work(worker):
        players = [Player(command, options.a), Player(command, options.b)]
        names = [player.name for player in players]
        if Path(options.a).read_bytes() != Path(options.b).read_bytes():
            names = [f"{name} {Path(settings).stem}" for name, settings in zip(names, (options.a, options.b))]
        played = []
        for number in range(worker, len(games), options.jobs):
            unit, opening, turn = games[number]
            order = (1, 0) if turn else (0, 1)
            game = playGame([players[side] for side in order], opening, options)
            text = gameText(number + 1, [names[side] for side in order], *game)
            points = POINTS[game[2]]
            played.append((number, 1 - points if turn else points, unit, text, game[3]))
            tell(points, turn)
        for player in players:
            player.close()
        return played

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        return sorted(game for part in pool.map(work, range(options.jobs)) for game in part)


def elo(score):
    """The difference in strength that this share of the points stands for."""
    return -math.inf if score <= 0 else math.inf if score >= 1 else -400 * math.log10(1 / score - 1)


def interval(units):
    """The mean of the units' shares, and its 95 % error.

    The games of one opening are no independent trials, so the variance is that between openings. Two more, one all
    won and one all lost, are added to it: a few games that happen to end alike are no certainty.
    """
    mean = sum(units) / len(units)
    spread = sum((unit - mean) ** 2 for unit in [*units, 0, 1]) / (len(units) + 1)
    return mean, 1.96 * math.sqrt(spread / len(units))


def clock(text):
    seconds, _, increment = text.partition("+")
    return float(seconds), float(increment or 0)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("engine", help="path of the engine, which must be a Valku")
    parser.add_argument("a", metavar="SETTINGS_A", help="a settings.ini; the figures are from its view")
    parser.add_argument("b", metavar="SETTINGS_B", help="the settings.ini to compare with")
    parser.add_argument("--games", type=int, default=200)
    parser.add_argument("--depth", type=int, default=6, help="plies of each search; the engine takes 5 at least")
    parser.add_argument("--clock", type=clock, help="seconds for the game + seconds for each move, instead of a depth")
    parser.add_argument("--jobs", type=int, default=1, help="games at a time; two engines each, of which one thinks")
    parser.add_argument("--plies", type=int, default=300, help="a longer game is a draw")
    parser.add_argument("--plies-of-opening", type=int, default=8, help="how many half-moves come from the book")
    parser.add_argument("--seed", type=int, default=1, help="another seed chooses other openings")
    parser.add_argument("--once", action="store_true",
                        help="play each opening once only: for a collection of games, not for a verdict")
    parser.add_argument("--pgn", metavar="FILE", help="write the games, each move with its {value/depth}")
    options = parser.parse_args()
    options.jobs = max(1, min(options.jobs, options.games))
    if options.games < 1:
        parser.error("--games must be 1 or more")
    for settings in (options.a, options.b):
        if not Path(settings).is_file():
            parser.error(f"no settings {settings}")
    command = shutil.which(options.engine)
    if not command:
        parser.error(f"no engine {options.engine}")

    done = []

    def tell(points, turn):
        done.append(1 - points if turn else points)
        if len(done) % 20 == 0:
            print(f"{len(done)} games, {sum(done):g} points for A", file=sys.stderr)

    games = playMatch(str(Path(command).resolve()), options, tell)
    if options.pgn:
        Path(options.pgn).write_text("".join(game[3] for game in games))

    points = [game[1] for game in games]
    units = {}
    for _, share, unit, _, _ in games:
        units.setdefault(unit, []).append(share)
    mean, error = interval([sum(shares) / len(shares) for shares in units.values()])
    low, high = elo(mean - error), elo(mean + error)
    ends = [game[4] for game in games]
    print(f"A: {options.a}\nB: {options.b}")
    print(f"{len(games)} games from {len(units)} openings; of A: {points.count(1)} wins, {points.count(0.5)} draws, "
          f"{points.count(0)} losses ({ends.count('too long')} too long, {ends.count('time')} lost on time)")
    print(f"score of A: {100 * mean:.1f} % +- {100 * error:.1f} %; the error bars are those of 95 % certainty")
    print(f"Elo of A less B: {elo(mean) + 0:+.0f}, from {low:+.0f} to {high:+.0f}")
    print("A is stronger: the difference is beyond the error" if low > 0 else
          "A is weaker: the difference is beyond the error" if high < 0 else
          "no verdict: the difference is within the error, as it may be without any difference in strength")


if __name__ == "__main__":
    main()
