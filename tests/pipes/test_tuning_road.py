#!/usr/bin/env python3
"""The road of tuning in a short form, and the fit on made-up positions. Needs python3-numpy and fails without it."""

import random
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

import engine

TUNING = Path(__file__).resolve().parents[2] / "share" / "tuning"


class TuningRoad(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="valku tuning ")))

    def told(self, *words):
        done = subprocess.run([*map(str, words)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def testFromGamesToAMatchAndOn(self):
        output, old, weak, few = map(self.folder.joinpath, ("out", "old.ini", "weak.ini", "few.pgn"))
        old.write_text("pawnValue=90\nquickPlay=2\nnHashTables=16384\nbookFile=kept.book\n")
        few.write_text("".join(re.split(r"(?=\[Event )", (TUNING / "games.pgn").read_text())[:9]))
        tune = [TUNING / "tune.sh", "--engine", engine.Engine.program, "--depth", 5, "--output", output]
        told = self.told(*tune, "--games", few, "--settings", old, "--games-to-play", 2)
        read = lambda name: (output / name).read_text().splitlines()
        labels, new = read("labels.txt"), read("new.ini")
        counts = [len(read(name)) - 1 for name in ("matrix.mg", "matrix.eg")]
        self.assertEqual(labels[0::2], read("testPosEval.txt"))
        self.assertEqual(sum(counts), sum(abs(int(label)) <= 150 for label in labels[1::2]))
        self.assertIn("{} of the middle game, {} of the ending".format(*counts), told)
        self.assertRegex("".join(new), r"quickPlay=2nHashTables=16384bookFile=kept.bookpawnValue=(8\d|9\d|100)knight")
        told = self.told(*tune, "--games", output / "match.pgn", "--settings", output / "new.ini", "--games-to-play", 0)
        self.assertRegex(told, new[3].replace("=", " +") + " ")  # which is where the second round begins
        weak.write_text(old.read_text() + "queenValue=1\nrookValue=1\n")
        for other, words in ((old, "50.0 % .*no verdict"), (weak, "100.0 % .*stronger")):
            told = self.told("python3", TUNING / "match.py", engine.Engine.program, old, other, "--games", 10)
            self.assertRegex(told, "(?s)10 games from 5 openings.* " + words)

    def testTheFitFindsTheWeightsBehindTheLabels(self):
        chance, truth, made = random.Random(5), (100, 340, 381, 600, 1160, -20, -10), self.folder / "made"
        for phase, king, text in ((".mg", 32, "1500 393\n"), (".eg", 64, "1500 425\n")):
            for _ in range(1500):
                row, value, begin = [0] * (361 + king), chance.gauss(0, 20), 0
                for length, weight in zip((48, 64, 64, 64, 64, king, 40, 8, 8), (*truth[:5], 0, 25, *truth[5:])):
                    men, place = chance.choice((-1, 0, 1)), begin + chance.randrange(length)
                    row[place], value, begin = men, value + men * weight, begin + length
                text += " ".join(map(str, [*row, round(0.7 * value)])) + "\n"  # another engine's idea of a pawn
            made.with_suffix(phase).write_text(text)
        told = self.told("/usr/bin/python3", TUNING / "fit.py", f"{made}.mg", f"{made}.eg", f"{made}.ini")
        for found, value in zip(re.findall(r"=(\d+)", made.with_suffix(".ini").read_text()), map(abs, truth)):
            self.assertLess(abs(int(found) - value), 2 + 0.02 * value, told)


engine.main()
