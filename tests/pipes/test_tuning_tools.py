"""The tools over files of games and positions: evaluation ranges, depths of games, values too good to be true."""

import os
import pathlib
import re
import tempfile

import engine

KPK = "8/8/8/4k3/8/8/4P3/4K3 w - - 0 1"
QUIET = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
HANGING = "4k3/8/8/3q4/4P3/8/8/4K3 w - - 0 1"  # the queen is lost at once, which only the captures tell


class ToolTest(engine.EngineTest):
    def setUp(self):
        self.home = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def told(self, *lines):
        """What the tools say in console mode, after the greeting."""
        output, code = self.run_with("\n".join(("console", *lines, "quit", "")), directory=str(self.home))
        self.assertEqual(code, 0)
        return output[output.index("rootSearchProcess") + 1:]

    def write(self, name, text):
        (self.home / name).write_bytes(text.encode())
        return name


class Ranges(ToolTest):
    def test_ranges(self):
        value = int(self.told(f"fen {KPK}", "eval")[-1].split()[-1])
        start = 8  # the right to move
        black = KPK.replace(" w ", " b ")
        records = [(KPK, "0", value, value), (KPK, "0", value + 1, value + 50), (QUIET, KPK, -500, start - value - 3),
                   ("0", KPK, -value, -value), (KPK, "0", value + 1, value + 9), ("0", QUIET, 5, 10),
                   (HANGING, "0", 20, 300), ("no position", "0", 0, 0)]
        text = "\n\n".join(f"{a}\n\n{b}\r\n{low} {high}\n" for a, b, low, high in records) + "\n\n0\n0\nnumbers\n0\n0\n"
        lines = self.told("testeval " + self.write("ranges of mine.txt", text), f"fen {black}")
        wrong = [1, 3, 1, 13]  # by hand: below by 1, above by 3, below by 1, -8 below 5 by 13
        self.assertEqual(lines[0], f"Eval was wrong in 4 positions of 7 (57.14%). Diffsum = {sum(wrong)}, "
                                   f"SquaredSum = {sum(n * n for n in wrong)}. ")
        self.assertRegex(lines[1], r"^ Took \d+\.\d\ds\.$")
        self.assertEqual(lines[2], "Skipped 2 records that cannot be read.")
        self.assertEqual((self.home / "ranges of mine.txt.out").read_text(),
                         f"0\n{QUIET}\neval 1st = 0, eval 2nd = 8, diff = -8 [5,10], abs = 13\n\n"
                         f"{QUIET}\n{KPK}\neval 1st = 8, eval 2nd = {value}, diff = {start - value} "
                         f"[-500,{start - value - 3}], abs = 3\n\n"
                         # Two records of the same positions and distance are one.
                         f"{KPK}\n0\neval 1st = {value}, eval 2nd = 0, diff = {value} "
                         f"[{value + 1},{value + 50}], abs = 1\n\n")

    def test_a_stop_ends_it_with_what_it_has(self):
        os.mkfifo(self.home / "ranges")
        player = self.ready_engine(directory=str(self.home))
        player.send("testeval ranges")
        record = f"{KPK}\n0\n-9999 9999\n".encode() * 2000  # more than a pipe takes: the engine has begun
        with open(self.home / "ranges", "wb", buffering=0) as ranges, self.assertRaises(BrokenPipeError):
            ranges.write(record * 2)
            player.send("stop")
            for _ in range(9999):  # it may still be at work when the word comes
                ranges.write(record)
        self.assertRegex(player.ready()[0], r"^Eval was wrong in 0 positions of \d+ ")

    def test_files_without_ranges(self):
        empty = "Eval was wrong in 0 positions of 0 (0.00%). Diffsum = 0, SquaredSum = 0. "
        os.mkdir(self.home / "taken.out")
        for name, first in (("missing", "Error in testEvalAgainstFile!"), (self.write("empty", ""), empty),
                            (self.write("half", KPK + "\n0"), empty),
                            (self.write("taken", KPK), "Error in testEvalAgainstFile!")):
            self.assertEqual(self.told("testeval " + name)[0], first)


GAMES = """[White "Valku 4.00"]
[Black "Other"]
[Result "0-1"]

1. e4 {+0.30/12 2s} e5 {-0.20/10} 2. Qh5 {+2.50/7 1s} Nc6 {+1.0/9} 3. Bc4 {+3.0/105} g6 {0.0/1} 4. Qf3 {book} Nf6 0-1

[White "Other"]
[Black "The valku of mine"]
[Result "1/2-1/2"]

1. d4 {0.40/3} d5 {0.70/8} 2. c4 {-0.20/9} c6 {0.65/12} 3. Nf3 {-0.45/9} Nf6 {+0.60/8} 1/2-1/2

[White "Valku"]
[Black "Other"]

1. e4 {0/20} e5 {-9/9} 2. f4 {9.9/20} *
"""


class Games(ToolTest):
    def test_depths(self):
        lines = self.told("gameStats " + self.write("games.pgn", GAMES))
        self.assertEqual(lines[:4], ["game Valku 4.00 - Other (0-1), moveNr = 2: depth = 7",
                                     "position = rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2",
                                     "move = d1h5", "counter = 8"])
        counts = {7: 1, 8: 2, 12: 2, 20: 2, 100: 1}  # a depth beyond the table counts as its last
        self.assertEqual(lines[4:105], [f"{n} ply: {counts.get(n, 0)} ({counts.get(n, 0) * 12.5:.2f}%)"
                                        for n in range(101)])
        self.assertEqual(lines[105:], ["average search depth: 23.38 ply", "Went through 3 games..."])
        self.assertEqual(self.told("gameStats nowhere")[0], "Could not open file nowhere!")
        # A last game that breaks off still brings the report.
        cut = self.told("gameStats " + self.write("cut.pgn", GAMES + '[White "x"]\n\n1. e5 *'))
        self.assertEqual([line for line in cut if "ply" in line], lines[4:106])

    def test_values_too_good_to_be_true(self):
        lines = self.told("checkMissEvals " + self.write("games.pgn", GAMES), "", "", "eval")
        shown = [line for line in lines if re.match("own|.* - ", line)]
        self.assertEqual(shown, [
            "Valku 4.00 - Other (0-1): rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2",
            "own: 2.50 ; opp: 0.20  (0-1)",
            # 0.70 against -0.40 in a draw; the engine is Black
            "Other - The valku of mine (1/2-1/2): rnbqkbnr/pppppppp/8/8/3P4/8/PPP1PPPP/RNBQKBNR b KQkq - 0 1",
            "own: 0.70 ; opp: -0.40  (½-½)".encode().decode("latin-1")])
        self.assertEqual(sum(line.startswith("info string eval is: ") for line in lines), 3)

    def test_a_stop_at_the_question(self):
        for word in ("?", "quit"):
            player = self.engine(words=("console", "checkMissEvals " + self.write("games.pgn", GAMES)),
                                 directory=str(self.home))
            player.read_to("info string eval is: .*")
            player.send(word)
            if word == "?":
                self.assertEqual(player.settled(), (["Went through 1 games..."], True))
            else:
                self.assertEqual((player.wait(), player.read_all()), (0, []))

    def test_quiet_positions(self):
        games = pathlib.Path(__file__).parents[2] / "share" / "tuning" / "games.pgn"
        text = "".join(re.split(r"(?=\[Event )", games.read_text())[:13])
        self.assertEqual(self.told("generateTestposEval " + self.write("games.pgn", text)), ["Went through 12 games..."])
        found = (self.home / "testPosEval.txt").read_text().splitlines()
        self.assertGreater(len(found), 12)
        self.assertEqual(found, sorted(set(found)))
        # Quiet: the same value with and without the captures. The order in which men came to their squares moves a
        # value now and then, and a FEN does not tell it.
        values = [int(line.split()[-1]) for line in self.told(*(w for fen in found for w in (f"fen {fen}", "eval")))
                  if line.startswith("info")]
        ranges = "".join(f"{fen}\n0\n{v} {v}\n" for fen, v in
                         ((fen, value if " w " in fen else -value) for fen, value in zip(found, values)))
        wrong = self.told("testeval " + self.write("ranges", ranges))[0]
        self.assertLess(int(re.match(r"Eval was wrong in (\d+) ", wrong)[1]), len(found) / 10)


if __name__ == "__main__":
    engine.main()
