"""The program valku-tables, and the engine with the tables that it makes.

The longest mates of each ending are long known. The command verify checks every entry, by the engine's rules of chess
and not the solver's; here it finds what was damaged. VALKU_ALL_TABLES=1 adds all endings of four men: minutes.
"""

import os
import pathlib
import random
import re
import subprocess
import tempfile
import unittest

import engine
from rules import Board

LONGEST = {
    "kpk": 28, "knk": 0, "kbk": 0, "krk": 16, "kqk": 10, "kbbk": 19, "kbnk": 33, "knnk": 1, "kppk": 32, "knpk": 28,
    "kqkr": 35, "kqkb": 17, "kqkn": 21, "kqkq": 13, "krkr": 19, "krkb": 29, "krkn": 40, "krkp": 43, "kqkp": 29,
    "kpkp": 33}
INFO = re.compile(r"\S+: .* entries\n  \d+ wins, \d+ draws, \d+ losses\n"
                  r"(?:  longest mate: (?P<moves>\d+) moves?, (?P<fen>.*)\n)?")
PROBE = re.compile(r"(?P<fen>.*): (?:(?P<what>mate|mated|draw)(?: in (?P<moves>\d+) moves?)?), value (?P<value>-?\d+)\n"
                   r"(?:  best: (?P<best>.*)\n)?")


class TablesTest(engine.EngineTest):
    @classmethod
    def setUpClass(cls):
        cls.program = os.path.join(os.path.dirname(engine.Engine.program), "valku-tables")
        cls.scratch = tempfile.TemporaryDirectory(prefix="valku-test-")
        cls.addClassCleanup(cls.scratch.cleanup)
        cls.tables = pathlib.Path(cls.scratch.name, "all")
        cls.made = cls.run_tables("generate", "--all-3", "kbnk", "kqkr", "--dir", cls.tables)

    @classmethod
    def run_tables(cls, *arguments):
        return subprocess.run([cls.program, *map(str, arguments)], capture_output=True, text=True,
                              timeout=5 * engine.PATIENCE)

    def good(self, *arguments):
        done = self.run_tables(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""), arguments)
        return done.stdout

    def info(self, *paths):
        return list(INFO.finditer(self.good("info", *paths)))

    def probe(self, *fens, tables=None):
        told = list(PROBE.finditer(self.good("probe", *fens, "--dir", tables or self.tables)))
        self.assertEqual([probe["fen"] for probe in told], list(fens))
        return told

    def copy(self):
        """A directory with the tables of three men, for damage."""
        directory = pathlib.Path(tempfile.mkdtemp(dir=self.scratch.name))
        for path in self.tables.glob("k?k.*"):
            (directory / path.name).write_bytes(path.read_bytes())
        return directory

    def check_longest(self, directory, names):
        for name in names:
            told = self.info(*directory.glob(name + ".nb?*"))
            self.assertEqual(max(int(info["moves"] or 0) for info in told), LONGEST[name], name)
            for info in told:
                if info["fen"]:
                    self.assertEqual(self.probe(info["fen"], tables=directory)[0]["moves"], info["moves"])

    def play(self, name):
        """The engine wins from the position in which that takes longest, in no more moves, against best defence."""
        fen = self.info(self.tables / f"{name}.nbw")[0]["fen"]
        player = self.ready_engine(settings=f"TBPath={self.tables}\nTBdistance=1\n")
        board, played, hits = Board(fen), [], 0
        for left in range(LONGEST[name], 0, -1):
            answer = player.go("depth 6", f"fen {fen} moves {' '.join(played)}" if played else f"fen {fen}")
            hits += any(int(line["tbhits"]) for line in answer.main_lines)
            board = board.play(board.find(answer.best, Board.uci))
            defence, = self.probe(board.fen())
            self.assertEqual((defence["what"], int(defence["moves"] or 0)), ("mated", left - 1), board.fen())
            if left > 1:
                reply = defence["best"].split()[0]
                board = board.play(board.find(reply, Board.uci))
                played += [answer.best, reply]
        self.assertGreater(hits, LONGEST[name] // 2)

    def random_boards(self, men, count):
        """Positions in which the side not to move is not in check."""
        chance, boards = random.Random(men), []
        while len(boards) < count:
            cells = list(men.ljust(64, "1"))
            chance.shuffle(cells)
            rows = ["".join(cells[at:at + 8]) for at in range(0, 64, 8)]
            board, other = (Board(f"{'/'.join(rows)} {side} - - 0 1") for side in chance.choice(("wb", "bw")))
            if not set("Pp") & set(rows[0] + rows[7]) and not other.in_check():
                boards.append(board)
        return boards

    def test_makes_tables(self):
        self.assertEqual((self.made.returncode, self.made.stderr), (0, ""))
        self.check_longest(self.tables, ("kpk", "knk", "kbk", "krk", "kqk", "kbnk", "kqkr"))
        self.assertIn("0 classes made, 5 were there", self.good("generate", "--all-3", "--dir", self.tables))

    def test_values_follow_from_moves(self):
        """By rules that share nothing with the engine or the solver."""
        rank = {"mate": lambda moves: (2, -moves), "draw": lambda moves: (1, 0), "mated": lambda moves: (0, moves)}
        for men in ("KkP", "Kkp", "KkQ", "Kkr", "KkQr", "KkqR", "KkBN"):
            boards = self.random_boards(men, 40)
            fens = {board.play(move).fen() for board in boards for move in board.moves()}
            # Bare kings need no table.
            fens = [fen for fen in fens if len(re.findall("[a-zA-Z]", fen.split()[0])) > 2]
            after = {probe["fen"]: (probe["what"], int(probe["moves"] or 0)) for probe in self.probe(*fens)}
            for board, told in zip(boards, self.probe(*(board.fen() for board in boards))):
                ranks = {}
                for move in board.moves():
                    what, moves = after.get(board.play(move).fen(), ("draw", 0))
                    mine = {"mate": "mated", "draw": "draw", "mated": "mate"}[what]
                    ranks[board.uci(move)] = rank[mine](moves + (mine == "mate"))
                best = max(ranks.values(), default=(0, 0) if board.in_check() else (1, 0))
                self.assertEqual(rank[told["what"]](int(told["moves"] or 0)), best, board.fen())
                self.assertEqual(sorted((told["best"] or "").split()),
                                 sorted(text for text in ranks if ranks[text] == best), board.fen())

    def test_engine_wins_in_the_stated_moves(self):
        for name in ("krk", "kpk", "kbnk", "kqkr"):
            with self.subTest(name):
                self.play(name)

    def test_verify_names_the_first_wrong_entry(self):
        right = self.copy()
        path = right / "kpk.nbw"
        self.good("compress", path)
        self.good("expand", path.with_suffix(".nbw.emd"))
        self.assertEqual(path.read_bytes(), (self.tables / path.name).read_bytes())
        path.unlink()
        self.assertEqual(self.good("verify", "--dir", right).count("entries are right"), 10)
        self.check_longest(right, ["kpk"])
        (right / "kpk.nbb").write_bytes(b"x" * 84011)
        done = self.run_tables("verify", "--dir", right)
        self.assertEqual((done.returncode, done.stderr.count("\n")), (1, 1))
        self.assertIn("kpk.nbb: holds 84011 bytes, where the table of kpk has 84012", done.stderr)
        for settings, commands in ((f"TBPath={right}\n", ["uci"]),
                                   ("", ["uci", f"setoption name NalimovPath value {right}"])):
            player = self.engine(settings=settings, words=())
            player.expected_end = {1}
            player.send(*commands)
            player.read_to(rf"\*\*\* {right}/kpk.nbb corrupted 84012 84012 84011")
            self.assertEqual(player.wait(), 1)
        for places in ((70000, 70001), (81663, 5)):
            path = self.copy() / "kpk.nbw"
            data = bytearray(path.read_bytes())
            for place in places:
                data[place] = 3 if data[place] != 3 else 4
            path.write_bytes(data)
            done = self.run_tables("verify", path, path.with_name("kqk.nbb"))
            self.assertEqual(done.returncode, 1)
            self.assertRegex(done.stderr, rf"^{path}: entry {min(places)} says .*\n$")
            self.assertRegex(done.stdout, r"^\S*/kqk.nbb: 28644 entries are right")

    def test_goes_on_where_it_stopped(self):
        """No file under a table's name is unfinished, whenever generate is killed."""
        for wanted in ("knk.nbw", "kqk.nbb", "krk.nbb"):
            directory = pathlib.Path(tempfile.mkdtemp(dir=self.scratch.name))
            maker = subprocess.Popen([self.program, "generate", "kqkr", "--dir", directory], stdout=subprocess.DEVNULL)
            engine.wait_until(lambda: (directory / wanted).exists() or maker.poll() is not None, wanted)
            maker.kill()
            maker.wait()
            there = {path: path.stat().st_mtime_ns for path in directory.glob("*.nb?")}
            for path in there:
                self.assertEqual(path.read_bytes(), (self.tables / path.name).read_bytes(), path.name)
            self.good("generate", "krk", "kqk", "--dir", directory)
            self.assertEqual({path: path.stat().st_mtime_ns for path in there}, there)
            self.assertLessEqual({"krk.nbw", "krk.nbb", "kqk.nbb"}, {path.name for path in directory.iterdir()})

    def test_refuses_what_cannot_be(self):
        for code, word, command in (
                (2, "command", ""), (2, "cook", "cook"), (2, "kpqk", "generate kpqk"), (2, "kk", "generate kk"),
                (2, "six men", "generate krpkrp"), (2, "generate needs", "generate"), (2, "--all-4", "verify --all-4"),
                (2, "--threads", "generate kqk --threads 0"), (2, "needs a value", "verify --dir"),
                (1, "no directory", "generate kqk --dir /dev/null"), (1, "kqk.nbw", "info /nowhere/kqk.nbw"),
                (1, "not the name", "info /etc/passwd"), (1, "no position", "probe 8/8"),
                (1, "no tables", "verify --dir /nowhere")):
            arguments = command.split()
            done = self.run_tables(*arguments)
            self.assertEqual((done.returncode, done.stderr.count("\n")), (code, 1), arguments)
            self.assertIn(word, done.stderr)
        self.assertEqual(self.good("--help").count("\nvalku-tables "), 7)

    @unittest.skipUnless(os.environ.get("VALKU_ALL_TABLES"), "takes minutes")
    def test_all_endings_of_four_men(self):
        directory = pathlib.Path(self.scratch.name, "packed")
        self.good("generate", "--all-4", "--compress", "--dir", directory)
        self.assertEqual(self.good("verify", "--dir", directory).count("entries are right"), 66)
        self.check_longest(directory, LONGEST)


if __name__ == "__main__":
    engine.main()
