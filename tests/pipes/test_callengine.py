"""The values that another engine gives to the positions of a file, and engines that are no good at it."""

import os
import pathlib
import signal
import sys

import engine
from fixtures import odd_engine
from rules import START, Board
from test_uci import MIDDLE_GAME, PAWN_ENDING

POSITIONS = [MIDDLE_GAME, MIDDLE_GAME.replace(" w KQ", " b -"), "r5k1/5ppp/8/8/8/8/5PPP/R4QK1 b - -", PAWN_ENDING]
# Engines end on these, or give no answer.
NO_SEARCH = ["x", "8/8/8/8/8/8/8/8 w - - 0 1", START.replace(" w", "  w"), START.replace("w", "W"), START.split()[0],
             "7k/6Q1/6K1/8/8/8/8/8 b - - 0 1", "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "8/k7/3p4/8/8/8/8/K7 w - - 100 90"]
REFUSALS = {
    "usage: callengine <engine> <input> <depth> <output> [<seconds of patience>]": ["", "x positions 3", "x x 3 x 4 5"],
    "Error: the depth must be a number above 0!": [f"x positions {depth} values" for depth in ("x", 0, "3x", 9**10)],
    "Error: could not open output file!": ["x x 3 no/values"], "Error: could not open input file!": ["x x 3 values"],
    "Error: input and output are the same file!": ["x positions 3 ./positions"],
    "Error: the engine could not be started!": [f"{name} positions 3 values" for name in ("nobody", ".", "positions")],
    "Error: could not write output file!": ["./odd positions 3 /dev/full"]}


class CallEngine(engine.EngineTest):
    def begin(self, program, lines, *before, manner="", patience=""):
        player = self.ready_engine()
        home = pathlib.Path(player.directory)
        (home / "positions").write_text("".join(lines))
        (home / "odd").write_text(f"#!/bin/sh\nexec '{sys.executable}' '{odd_engine.__file__}' '{manner}'\n")
        (home / "odd").chmod(0o755)
        player.send(*before, f"callengine {program} positions 6 values {patience}")
        return player, home

    def check_gone(self, home):
        with self.assertRaises(ProcessLookupError):
            os.kill(int((home / "told").read_text().split()[0]), 0)

    def test_values_are_those_of_a_direct_dialogue(self):
        folder, program = os.path.split(engine.Engine.program)
        os.environ["PATH"] += ":" + folder
        player, home = self.begin(program, (fen + "\n" for fen in POSITIONS))
        self.assertEqual(player.ready(), expected := [])
        other = self.ready_engine()
        for fen in POSITIONS:
            score = other.go("depth 6", f"fen {fen}").score
            expected += [fen, str(-score if fen.split()[1] == "b" else score)]
        self.assertEqual((home / "values").read_text().splitlines(), expected)

    def test_what_the_engine_is_told_and_what_is_kept_of_its_answers(self):
        fens = POSITIONS + [START]
        lines = (line + "\r\n" for line in [*NO_SEARCH, *["x"] * 1990, *fens, "", MIDDLE_GAME])
        player, home = self.begin("./odd", lines, "position startpos", "go infinite", manner="mating")
        output = [line for line in player.ready() if not line.startswith("info ")]
        reports = ["skipped 1998 lines that cannot be searched", "passed over 1 positions without a score"]
        self.assertEqual(output[1:], ["counter = 1000", "counter = 2000", *reports])
        told, values = ["0 uci"], []
        for fen in fens:
            told += [f"{len(values)} position fen {fen}", f"{len(values)} go depth 6"]
            values += [fen, "-34" if " b " in fen else "34"] if fen is not fens[1] else []
        self.assertEqual((home / "told").read_text().split("\n")[1:], [*told, f"{len(values)} quit", ""])
        self.assertEqual((home / "values").read_text().split("\n"), [*values, ""])
        self.check_gone(home)
        self.assertEqual(player.board(), Board().play(Board().find(output[0].split()[1])).fen())

    def test_an_engine_that_fails_ends_the_command_and_leaves_nothing_behind(self):
        fens = [START + "\n"] * 3000
        runs = [(*row, *self.begin("./odd", fens, manner=row[0], patience=row[2])) for row in odd_engine.FAULTS]
        for how, fault, _, kept, player, home in runs:
            self.assertEqual(player.ready()[-1], f"Error: the engine {fault}!", how)
            self.check_gone(home)
            self.assertEqual((home / "values").read_text().replace(f"{START}\n7\n", ""), f"{START}\n34\n" * kept, how)
        player, home = self.begin("./odd", [START + "\n"], manner="deaf")
        engine.wait_until(lambda: (home / "told").exists() and "uci" in (home / "told").read_text(), "the other engine")
        player.signal(signal.SIGTERM)
        player.wait()
        self.check_gone(home)

    def test_a_stop_ends_it_with_what_it_has(self):
        player, home = self.begin("./odd", [START + "\n"] * 9, manner="silent", patience="100000")
        written = f"{START}\n34\n"
        engine.wait_until(lambda: (home / "values").exists() and (home / "values").read_text() == written, "a value")
        player.send("?")
        self.assertEqual(player.ready(), [])
        self.check_gone(home)
        self.assertEqual((home / "values").read_text(), written)

    def test_what_cannot_be_begun_or_written(self):
        player, home = self.begin("nobody", [START + "\n"])
        player.ready()
        (home / "values").write_text("old")
        for words, text in ((words, text) for text in REFUSALS for words in REFUSALS[text]):
            player.send(f"callengine {words}")
            self.assertEqual(player.ready(), [text], words)
        self.assertEqual([(home / name).read_text() for name in ("values", "positions")], ["old", START + "\n"])
        player.send("callengine ./odd /dev/null 3 values")
        self.assertEqual((player.ready(), (home / "values").read_text()), ([], ""))


if __name__ == "__main__":
    engine.main()
