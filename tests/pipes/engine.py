"""A small chess interface for tests: starts the engine in a directory of its own and talks to it through pipes.

Every text that a search may send is known here, so each search of each test also checks the form of its lines. A wait
that takes longer than PATIENCE counts as a hang and fails the test; nothing else depends on the time.
"""

import contextlib
import os
import queue
import re
import select
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from rules import Board

PATIENCE = float(os.environ.get("VALKU_PATIENCE", "120"))  # seconds

LINE_MOVE = r"(?:[a-h][1-8][a-h][1-8][NBRQ]?|O-O(?:-O)?)"
UCI_MOVE = r"(?:[a-h][1-8][a-h][1-8][nbrq]?|O-O(?:-O)?)"
PV = rf"{LINE_MOVE}(?: {LINE_MOVE})*"
MAIN_LINE = re.compile(
    r"info depth (?P<depth>\d+) seldepth (?P<seldepth>\d+) time (?P<time>\d+) nodes (?P<nodes>\d+) nps (?P<nps>\d+)"
    rf" pv (?P<pv>{PV}) score cp (?P<score>-?\d+)(?P<bound> lowerbound)? hashfull (?P<hashfull>\d+)"
    r" tbhits (?P<tbhits>\d+)")
FAIL_LOW = re.compile(r"info depth (?P<depth>\d+) seldepth (?P<seldepth>\d+) score cp (?P<score>-?\d+) upperbound pv "
                      rf"(?P<pv>(?:{PV})?)")
ROOT_MOVE = re.compile(rf"info depth (?P<depth>\d+) currmove (?P<move>{UCI_MOVE}) currmovenumber (?P<number>\d+)"
                       r" hashfull (?P<hashfull>\d+)")
TIMES = re.compile(r"info string (?:movesToGo = \d+; remainingTime = -?\d+\.\d\d; increment = -?\d+\.\d\d|"
                   r"scheduled time=-?\d+\.\d\ds, maxtime=-?\d+\.\d\ds|timeout!)")
BEST_MOVE = re.compile(rf"bestmove (?P<move>{UCI_MOVE})(?: ponder (?P<ponder>{UCI_MOVE}))?")
RESULT = (r"result (?:1-0 \{White mates\}|0-1 \{Black mates\}|1/2-1/2 \{(?:Stalemate|"
          r"Draw by (?:50-moves-rule|repetition|insufficient material))\})")
CLAIM = r"I want to claim a draw by (?:50-moves-rule|third-time-repetition)!"
COMMENT = re.compile(r"tellics (?P<to>kibitz|whisper) T=(?P<depth>\d+) eval=(?P<score>-?\d+) time=\d+s"
                     rf" nodes=(?P<nodes>\d+) mainLine: (?P<pv>(?:{PV})?) tb=0/0")
THINKING = re.compile(rf"(?P<depth>\d+) (?P<score>-?\d+) \d+ (?P<nodes>\d+) (?P<pv>{PV}) tb=0/0")
XBOARD_LINES = (COMMENT, THINKING, *map(re.compile, (RESULT, CLAIM, f"move {LINE_MOVE}",
                                                     rf"tellics (?:kibitz|whisper) ponderMove={LINE_MOVE}")))
# What the console prints, in whole texts: a main line is five of them, a board is always all of it.
CONSOLE = re.compile(
    rf"(?P<main>\nHauptvariante \(T=(?P<depth>\d+)/\d+\): (?P<pv>{PV})\nWert: (?P<score>-?\d+)\n"
    r"Knoten: (?P<nodes>\d+)\nVerstrichene Zeit: \d+(?:\.\d+)?(?:e-\d+)?\nTablebaserate: 0/0\n)"
    r"|(?P<fail>Fail (?:high|low) bei T=\d+, value = -?\d+!\n)"
    rf"|(?P<move>move (?P<text>{LINE_MOVE})\n)|(?P<end>(?:{CLAIM}\n)?(?P<result>{RESULT})\n)"
    r"|(?P<board>\n(?P<rows>(?:(?: [.PNBRQKpnbrqk]){8}\n){8})-(?P<side>white|black) to move\n"
    r"(?P<key>hashpos = \d+  hashkey = \d+)\n)")
NEW_TABLE = re.compile(r"info string Create new hashtable with id (\d+), size = (\d+)")


class Hang(AssertionError):
    """An answer that did not come."""


class Answer:
    """What one search has sent, its bestmove line included."""

    def __init__(self, lines):
        self.lines = lines
        found = {form: [] for form in (MAIN_LINE, FAIL_LOW, ROOT_MOVE, TIMES, BEST_MOVE)}
        for line in lines:
            match = next((match for form in found if (match := form.fullmatch(line))), None)
            if not match or (match.re is BEST_MOVE) != (line is lines[-1]):
                raise AssertionError(f"no line of a search, or not its last: {line!r}")
            found[match.re].append(match)
        self.main_lines, self.fail_lows, self.root_moves, times, (last,) = found.values()
        self.strings = [match[0] for match in times]
        self.best, self.ponder = last["move"], last["ponder"]
        self.depth = max((int(move["depth"]) for move in self.root_moves), default=0)  # of the deepest iteration begun

    @property
    def score(self):
        return int(self.main_lines[-1]["score"])

    @property
    def nodes(self):
        return int(self.main_lines[-1]["nodes"])

    def moves_at(self, depth):
        return [move["move"] for move in self.root_moves if int(move["depth"]) == depth]

    def without_times(self):
        return [re.sub(r" (time|nps) \d+", "", line) for line in self.lines]


class Engine:
    """One running engine. `words` are the lines sent at once; `stdout` may name another output."""

    def __init__(self, *arguments, words=("uci",), settings=None, directory=None, stdout=subprocess.PIPE):
        self.home = None if directory else tempfile.TemporaryDirectory(prefix="valku-test-")
        self.directory = directory or self.home.name
        if settings is not None:
            with open(os.path.join(self.directory, "settings.ini"), "wb") as file:
                file.write(settings.encode())
        self.complaints = tempfile.TemporaryFile()
        self.process = subprocess.Popen([Engine.program, *arguments], cwd=self.directory, stdin=subprocess.PIPE,
                                        stdout=stdout, stderr=self.complaints)
        self.expected_end = {0}
        self.expected_complaints = ""  # None for any
        self.lines = queue.SimpleQueue()
        self.collector = threading.Thread(target=self.collect, daemon=True)
        if self.process.stdout:
            self.collector.start()
        self.send(*words)

    def collect(self):
        for line in self.process.stdout:
            self.lines.put(line.decode("latin-1").removesuffix("\n"))
        self.lines.put(None)

    def send_bytes(self, data):
        """An engine that reads no more is a hang like any other."""
        data = memoryview(data)
        while data:
            if not select.select([], [self.process.stdin], [], PATIENCE)[1]:
                raise Hang(f"nothing was read for {PATIENCE} seconds")
            data = data[os.write(self.process.stdin.fileno(), data[:select.PIPE_BUF]):]

    def send(self, *lines):
        self.send_bytes("".join(line + "\n" for line in lines).encode())

    def next_line(self, patience=PATIENCE):
        """None at the end of the output."""
        try:
            return self.lines.get(timeout=patience)
        except queue.Empty:
            raise Hang(f"what was waited for did not come within {PATIENCE} seconds") from None

    def read_to(self, form):
        """All lines up to the first that fully matches; it is the last of the list."""
        lines = []
        end = time.monotonic() + PATIENCE  # also for a search that goes on reporting
        while not (lines and re.fullmatch(form, lines[-1])):
            lines.append(self.next_line(max(0.0, end - time.monotonic())))
            if lines[-1] is None:
                raise AssertionError(f"the output ended before {form!r}: {lines[-5:]}")
        return lines

    def read_all(self):
        """Everything to the end of the output."""
        lines = list(iter(self.next_line, None))
        self.lines.put(None)
        return lines

    def ready(self):
        """The lines that came before the engine was ready."""
        self.send("isready")
        return self.read_to("readyok")[:-1]

    def set(self, *options):
        """Sets options; the lines of their reports."""
        self.send(*("setoption name " + option for option in options))
        return self.ready()

    def evaluation(self, *commands):
        """Of the position on the board after the commands."""
        self.send(*commands, "eval")
        return int(self.read_to("info string eval is: -?[0-9]+")[-1].split()[-1])

    def settled(self):
        """What came out up to now, and whether the engine is idle: only then it shows the book."""
        self.send("showbook", "isready")
        lines = self.read_to("readyok")[:-1]
        for number, line in enumerate(lines):
            if re.fullmatch("No moves for this position in the opening book!|The following moves are .*:", line):
                return lines[:number], True
        return lines, False

    def answer(self, seen=()):
        """The answer of the running search; `seen` are the lines of it that have been read already."""
        return Answer([*seen, *self.read_to("bestmove .*")])

    def go(self, arguments, position=None):
        if position is not None:
            self.send("position " + position)
        self.send("go " + arguments)
        return self.answer()

    def started(self):
        """Reads the lines of the start; the id of the hash table and its buckets."""
        lines = self.read_to(r"info string TBPath is .*")
        table, buckets = next(match for match in map(NEW_TABLE.fullmatch, lines) if match).groups()
        return int(table), int(buckets)

    def board(self):
        """The position on the board as FEN; this ends the engine, whose interrupt handler writes it."""
        self.ready()
        self.signal(signal.SIGINT)
        lines = self.read_all()
        if match := re.fullmatch("handler called with signal 0\nboard: (.*)", "\n".join(lines)):
            return match[1]
        raise AssertionError(f"no board in {lines}")

    def signal(self, number):
        self.expected_end.add(-number)
        self.process.send_signal(number)

    def wait(self):
        """The exit code."""
        try:
            return self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise Hang("the process did not end") from None

    def quit(self):
        self.send("quit")
        return self.wait()

    def end_input(self):
        self.process.stdin.close()

    def end(self, how):
        """By a signal, by a word such as quit, or by the end of the input ("input"); the exit code it ought to have."""
        if isinstance(how, signal.Signals):
            self.signal(how)
            return -how
        self.end_input() if how == "input" else self.send(how)
        return 0

    def close(self):
        """Ends the process if the test has not; a text if it crashed or complained."""
        with contextlib.suppress(OSError):  # of what was still to be written to a process that is gone
            self.process.stdin.close()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.expected_end.add(-signal.SIGKILL)
            self.process.kill()
            self.process.wait()
        if self.process.stdout:
            self.collector.join()
            self.process.stdout.close()
        self.complaints.seek(0)
        complaints = self.complaints.read().decode(errors="replace")
        self.complaints.close()
        if self.home:
            self.home.cleanup()
        if self.expected_complaints not in (None, complaints):
            return f"standard error of the engine:\n{complaints}"
        if self.process.returncode not in self.expected_end:
            return f"the engine ended with code {self.process.returncode}"
        return None


class EngineTest(unittest.TestCase):
    """A test that drives engines; each is ended with the test, and none may have crashed or complained."""

    def engine(self, *arguments, **options):
        engine = Engine(*arguments, **options)
        self.addCleanup(self.close, engine)
        return engine

    def ready_engine(self, *options, **how):
        """An engine after its start, with the given options set and their reports read."""
        engine = self.engine(**how)
        engine.set(*options)
        return engine

    def close(self, engine):
        if fault := engine.close():
            self.fail(fault)

    def run_with(self, text, *arguments, directory=None):
        """Everything in at once, then the end of input. The lines and the exit code."""
        engine = self.engine(*arguments, words=(), directory=directory)
        engine.send_bytes(text if isinstance(text, bytes) else text.encode())
        engine.end_input()
        lines = engine.read_all()
        return lines, engine.wait()

    def check_search(self, board, answer):
        """Checks a search by the rules of chess as the tests know them. The board after the move."""
        legal = {board.uci(move): move for move in board.moves()}
        self.assertIn(answer.best, legal)
        if answer.depth > 2:
            self.assertEqual(set(answer.moves_at(2)), set(legal), board.fen())
        reached = {(): board}
        for match in answer.main_lines + answer.fail_lows:
            line = ()
            for text in match["pv"].split():
                before, line = reached[line], (*line, text)
                if line not in reached:
                    move = before.find(text, Board.line_text)
                    if move is None:
                        self.fail(f"{text} of {match[0]!r} on {board.fen()}")
                    reached[line] = before.play(move)
        after = board.play(legal[answer.best])
        if answer.ponder:
            self.assertTrue(after.find(answer.ponder), f"{answer.lines[-1]!r} on {board.fen()}")
        return after


def wait_until(condition, what, patience=PATIENCE):
    end = time.monotonic() + patience
    while not condition():
        if time.monotonic() > end:
            raise Hang(f"waited too long for {what}")
        time.sleep(0.005)


def main():
    """Runs the tests of the calling script; its first argument, or the variable VALKU, names the engine."""
    named = len(sys.argv) > 1 and os.path.isfile(sys.argv[1])
    program = sys.argv.pop(1) if named else os.environ.get("VALKU")
    if not program:
        sys.exit("usage: test_....py <engine> [unittest arguments], or VALKU=<engine> test_....py")
    Engine.program = os.path.abspath(program)
    for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP):
        if signal.getsignal(number) == signal.SIG_IGN:  # as in the background of a shell; engines would inherit it
            signal.signal(number, signal.SIG_DFL)
    unittest.main()
