"""Console mode: what a person sees, the board editor, and the benchmark commands."""

import os
import re
import signal
import tempfile
import unittest

import engine
from engine import CONSOLE
from rules import START, Board, name
from test_uci import MATE_IN_ONE, MIDDLE_GAME

SMALL = "nHashTables=4096\nnPawnTables=256\n"
BANNER = "Valku 4.00, a chess engine. Type go to let it move, quit to leave."
PROCESSES = ["The following search processes will be used:", "rootSearchProcess"]
REFUSAL = "Benchmark kann nur im Konsolen-Modus gestartet werden!"
BENCH_START = re.compile(r"Starting benchmarking position with depth (-?\d+)\.\.\.\n")
ENDING = "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - - 0 1"


class ConsoleTest(engine.EngineTest):
    def player(self, *lines, settings=SMALL, **how):
        player = self.engine(words=("console", *lines), settings=settings, **how)
        player.greeting = player.read_to(PROCESSES[1])
        return player

    def texts(self, lines):
        """The whole texts that the lines are made of, as matches of CONSOLE; nothing else may be among them."""
        text, at, found = "".join(line + "\n" for line in lines), 0, []
        while at < len(text):
            match = CONSOLE.match(text, at)
            self.assertTrue(match, text[at:at + 300])
            found.append(match)
            at = match.end()
        return found

    def check_board(self, match, board):
        rows = ["".join(" " + (board.men[8 * rank + file] or ".") for file in range(8)) for rank in range(7, -1, -1)]
        self.assertEqual(match["rows"].splitlines(), rows, board.fen())
        self.assertEqual(match["side"], "white" if board.white else "black")

    def boards_after(self, player, *lines):
        player.send(*lines)
        found = self.texts(player.settled()[0])
        self.assertTrue(all(match["board"] for match in found), found)
        return found

    def board_after(self, player, *lines):
        found = self.boards_after(player, *lines)
        self.assertEqual(len(found), 1, lines)
        return found[0]


class Console(ConsoleTest):
    def test_the_greeting(self):
        lines = [line for line in self.player().greeting if line != "No opening book found..."]
        self.assertRegex(lines.pop(0), engine.NEW_TABLE)
        self.assertEqual(lines[:2], ["TBPath is <empty>, including 0-men TBs.", BANNER])
        self.assertEqual(lines[-2:], PROCESSES)
        self.check_board(self.texts(lines[2:-2])[0], Board())

    def test_searches_and_moves(self):
        fens = (START, MIDDLE_GAME, "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1", MATE_IN_ONE)
        failed = 0
        for fen in fens:
            player, board = self.player("force", f"fen {fen}", "sd 8", "go"), Board(fen)
            found = self.texts(player.read_to("move .*") + player.settled()[0])
            self.check_board(found.pop(0), board)
            kinds = [next(kind for kind in ("main", "fail", "move", "board", "end") if match[kind]) for match in found]
            result = ["end"] if fen == MATE_IN_ONE else []
            at = kinds.index("move")
            self.assertEqual(kinds[at:], ["move", "board", *result])
            self.assertLessEqual(set(kinds[:at]), {"main", "fail"})
            failed += kinds.count("fail")
            mains = [match for match in found if match["main"]]
            for match in mains:
                position = board
                for word in match["pv"].split():
                    position = position.play(position.find(word, Board.line_text))
            self.assertEqual((mains[-1]["depth"], mains[-1]["pv"].split()[0]), ("8", found[at]["text"]))
            nodes = [int(match["nodes"]) for match in mains]
            self.assertEqual(nodes, sorted(nodes))
            self.check_board(found[at + 1], board.play(board.find(found[at]["text"], Board.line_text)))
        self.assertGreater(failed, 0)

    def test_the_board_behind_each_change(self):
        player, board = self.player("force"), Board()
        boards = [board]
        for text in ("e2e4", "g8f6", "e4e5", "d7d5", "e5d6", "undo", "e5d6", "e7d6", "remove", "g1f3"):
            back = {"undo": 1, "remove": 2}.get(text, 0)
            boards = boards[:-back] if back else [*boards, boards[-1].play(boards[-1].find(text))]
            self.check_board(self.board_after(player, text), boards[-1])
        self.check_board(self.board_after(player, "new"), board)
        castles = Board("r3k2r/p7/8/8/8/8/7P/R3K2R b KQkq - 0 1")
        self.check_board(self.board_after(player, "force", f"fen {castles.fen()}"), castles)
        self.check_board(self.board_after(player, "O-O-O"), castles.play(castles.find("e8c8")))
        mirrored = self.boards_after(player, f"fen {ENDING}", "mirror")[1]
        self.check_board(mirrored, Board("k7/8/8/p2p1p2/P2p1P2/3P4/K7/8 b - - 0 1"))
        player.send("fen 8/8/8/8/8/8/8/8 w - -", "fen rubbish")
        self.assertTrue(all(line.startswith("Error: ") for line in player.settled()[0]))

    def test_the_board_while_pondering(self):
        for hit in (True, False):
            player = self.player("force", "sd 4", "hard", "go")
            found = self.texts(player.read_to("move .*"))
            expected = [match for match in found if match["main"]][-1]["pv"].split()[1]
            board = Board().play(Board().find(found[-1]["text"]))
            seen = player.settled()[0]
            move = board.find(expected) if hit else next(m for m in board.moves() if board.uci(m) != expected)
            player.send("easy", board.uci(move))
            lines = seen + player.read_to("move .*") + player.settled()[0]
            # A board is written in one piece, a main line in five, between which another thread's text may come.
            found = list(CONSOLE.finditer("".join(line + "\n" for line in lines)))
            shown = [match for match in found if match["board"]]
            after = board.play(move)
            if not hit:  # the expected move is taken back first
                self.check_board(shown.pop(1), board)
            best = next(match["text"] for match in found if match["move"])
            self.assertEqual(len(shown), 3)
            for match, position in zip(shown, (board, after, after.play(after.find(best, Board.line_text)))):
                self.check_board(match, position)

    def test_keys_tell_positions_apart(self):
        player = self.player("force")
        keys = {}
        ways = {"one": "e2e4 e7e5 g1f3 b8c6 f1b5 a7a6", "same": "g1f3 b8c6 e2e4 e7e5 f1b5 a7a6",
                "other": "g1f3 b8c6 e2e4 e7e5 f1c4 a7a6"}
        for way, moves in ways.items():
            keys[way] = self.boards_after(player, "new", "force", *moves.split())[-1]["key"]
        self.assertEqual(keys["one"], keys["same"])
        fens = ("4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", "4k3/8/8/8/8/8/8/R3K2R b KQ - 0 1",
                "4k3/8/8/8/8/8/8/R3K1R1 w Q - 0 1", "4k3/8/8/8/8/8/8/B3K2R w K - 0 1",
                "8/4k3/8/8/8/8/8/R3K2R w KQ - 0 1", "4k3/8/8/8/8/8/8/r3K2R w K - 0 1")
        for fen in fens:
            keys[fen] = self.board_after(player, f"fen {fen}")["key"]
        self.assertEqual(len(set(keys.values())), len(keys) - 1)

    def test_resignation(self):
        player = self.player("force", "fen 3qk3/8/8/8/8/8/8/4K3 w - - 0 1", "sd 4", "go",
                             settings=SMALL + "resignValue=500\n")
        player.read_to("move .*")
        self.assertEqual(player.settled()[0][-1], "I resign. Congratulations!")


class Edit(ConsoleTest):
    def edit_lines(self, board):
        """What an interface sends to set up a position."""
        men = [(man, f"{man.upper()}{name(square)}") for square, man in enumerate(board.men) if man]
        return ["edit", "#", *(text for man, text in men if man.isupper()), "c",
                *(text for man, text in men if man.islower()), "."]

    def test_positions_and_their_rights(self):
        cases = [("4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0), ("4k3/8/8/8/8/8/8/R3K3 w Q - 0 1", 0),
                 ("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", 0), ("r3k1r1/8/8/8/8/8/8/RR3K1R w q - 0 1", 0),
                 ("3k4/8/8/8/8/8/8/R2K3R w - - 0 1", 0), (START, 0), (MIDDLE_GAME, 0),
                 ("1r1k2r1/8/8/8/8/8/8/R1R1KR1R w FCgb - 0 1", 1), ("rk6/8/8/8/8/8/8/5KRR w Ga - 0 1", 1),
                 ("8/1rkr4/8/8/8/8/1RKR4/8 w - - 0 1", 1)]
        for fen, chess960 in cases:
            board = Board(fen, bool(chess960))
            player = self.player(*["variant fischerandom"] * chess960, "force")
            shown = self.board_after(player, *self.edit_lines(board))
            self.check_board(shown, board)
            self.assertEqual(self.board_after(player, f"fen {fen}")["key"], shown["key"], fen)
            self.board_after(player, *self.edit_lines(board))
            told = player.board().split()
            wanted = fen.split()
            self.assertEqual((told[:2], set(told[2])), (wanted[:2], set(wanted[2])), fen)

    def test_the_side_to_move_men_put_on_men_and_rubbish(self):
        player = self.player("force")
        black = Board("4k3/8/8/8/8/8/8/4K3 b - - 0 1")
        self.boards_after(player, "e2e4")
        self.check_board(self.board_after(player, "edit", "#", "Ke1", "c", "Ke8", "."), black)
        self.assertEqual(self.boards_after(player, "new", "force")[0]["side"], "white")
        # Without "#" the board stays; a man takes the place of another; "c" twice is white again.
        changed = Board(START.replace("PPPPPPPP", "PPPPQPPP").replace("rnbq", "rnbr"))
        self.check_board(self.board_after(
            player, "edit", "Qe2", "c", "Rd8", "c", "c", "c", "", "x", "Xe4", "Q", "Qe", "Qe9", "Qi1", "qe4", "e2e4",
            "go", "new", "quit please", "Q\xff4", "Qe2 and more", "undo", "edit", "."), changed)
        self.check_board(self.boards_after(player, "d2d4", "undo")[1], changed)

    def test_refused_positions_leave_the_old_one(self):
        pawns = [f"P{file}{rank}" for file in "abcdefgh" for rank in "234"]
        bad = (["Ke1"], ["Ke1", "Kd1", "c", "Ke8"], ["Ke1", *pawns[:9], "c", "Ke8"], [],
               ["Ke1", "c", "Ke8", "Kd8"],
               ["Ke1", *(man[0] + file + man[1] for man in ("N4", "N3") for file in "abcdefgh"), "c", "Kh8"],
               ["Ke1", "Pa1", "c", "Ke8"], ["Ke1", "c", "Ke8", "Pb8"],
               ["Ke1", "Re2", "c", "Ke8"], ["Ke1", "c", "Ke2"])
        player = self.player("force", "e2e4", "e7e5")
        board = Board().play(Board().find("e2e4"))
        player.settled()
        for men in bad:
            player.send("edit", "#", *men, ".")
            lines = player.settled()[0]
            self.assertEqual([line.startswith("Error: ") for line in lines], [True], (men, lines))
        self.assertEqual(len(self.boards_after(player, "undo")), 1)
        self.assertEqual(player.board().split()[:3], board.fen().split()[:3])

    def test_an_edit_while_the_engine_thinks(self):
        player = self.player("force", "sd 60", "go", "edit", "#", "Ke1", "c", "Ke8", ".", "?")
        found = self.texts(player.read_to("move .*") + player.settled()[0])
        self.check_board(found[-1], Board().play(Board().find(found[-2]["text"])))


class Benchmark(ConsoleTest):
    def nodes_of(self, lines):
        return int(next(line for line in lines if line.startswith("Knoten gesamt: ")).split()[-1])

    def test_only_the_console_runs_it(self):
        for words in (("uci",), ("xboard",)):
            player = self.engine(words=words)
            player.read_to(".*TBPath is .*")
            player.send("benchmark", "benchmark 1")
            self.assertEqual(player.ready(), [REFUSAL, REFUSAL])
            player.send("e2e4") if words == ("xboard",) else player.send("position startpos", "go depth 5")
            player.read_to("(best)?move .*")
        with tempfile.TemporaryDirectory() as directory:
            with open(os.path.join(directory, "list"), "w") as file:
                file.write("3:" + START)
            player = self.engine(directory=directory)
            player.send("benchfromfile list 0 0")
            told = [line for line in player.ready() if line.startswith(("Bench", "list"))]
            self.assertEqual(told, ["list 0 0", REFUSAL])

    def test_the_built_in_positions(self):
        runs = []
        for _ in range(2):
            player = self.player("benchmark -9", settings=None)
            lines = player.read_to("Zeit gesamt: .*") + [player.next_line()]
            runs.append(lines)
            self.assertEqual(lines[:2], ["", "Starting benchmark..."])
            self.assertRegex("\n".join(lines[-3:]), r"^Knoten gesamt: \d+\nZeit gesamt: \d+\.\d{3}\nKPS: \d+$")
        self.assertEqual(*map(self.nodes_of, runs))
        text = "".join(line + "\n" for line in runs[0])
        depths = [int(match[1]) for match in BENCH_START.finditer(text)]
        offsets = [int(figure) for figure in """
            11 12 13 13 11 11 11 12 11 11 13 14 11 11 12 11 11 11 13 15 15 10 11 10 11 11 15 12 11 11 13 15
            11 11 10 11 12 12 10 12 11 11 10 10 12 12 13 15 15 11 11 10 12 12 13 13 12 11 10 11 11 10 11 13""".split()]
        self.assertEqual(depths, [offset - 9 for offset in offsets])
        # The search of each position tells its nodes last of all.
        counts = [int([0, *re.findall(r"Knoten: (\d+)\n", part)][-1]) for part in BENCH_START.split(text)[2::2]]
        self.assertEqual((len(counts), sum(counts)), (64, self.nodes_of(runs[0])))
        player.send("sd 3", "new", "force", "go")  # no lasting effect
        player.read_to("move .*")
        player.send("benchmark -30")
        self.assertEqual(self.nodes_of(player.read_to("Zeit gesamt: .*")), 0)

    def bench_file(self, content, arguments, name="positions", log=True):
        """Output, log and exit code of a run over a file with that content."""
        with tempfile.TemporaryDirectory() as directory:
            path = os.path.join(directory, name)
            if content is None:
                os.mkdir(path)
            elif content != "missing":
                with open(path, "wb") as file:
                    file.write(content)
            lines, code = self.run_with(f"console\nbenchfromfile {name} {arguments}\n", directory=directory)
            report = None
            if os.path.exists(path + ".log"):
                with open(path + ".log", encoding="latin-1") as file:
                    report = file.read().split("\n")[:-1]
        self.assertEqual(code, 0)
        return lines[lines.index(PROCESSES[1]) + 1:], report

    def test_positions_of_a_file(self):
        fens = [START, MIDDLE_GAME, ENDING]
        text = f"6:{fens[0]}\r\n5:{fens[1]}\n4:no position: at all\n9:{fens[2]}\r\n\n7:{START}\n".encode()
        lines, report = self.bench_file(text, "1 0")
        self.assertEqual(lines[:3], ["positions 1 0", "", "Starting benchmark..."])
        depths = [int(match[1]) for match in BENCH_START.finditer("".join(line + "\n" for line in lines))]
        self.assertEqual(depths, [7, 6, 10])
        self.assertIn("_benchMarkAlgorithmPositions(no position: at all,5): an error occured while loading FEN", lines)
        # The same searches by hand, in the same process one after the other.
        player, counts = self.player(settings=None), []
        for fen, depth in zip(fens, depths):
            player.send("force", f"fen {fen}", f"sd {depth}", "go")
            found = self.texts(player.read_to("move .*") + player.settled()[0])
            counts.append(int([match["nodes"] for match in found if match["main"]][-1]))
        rows = [f"{fen}: {count}" for fen, count in zip(fens, counts)]
        self.assertEqual(report, [*rows[:2], "no position: at all: 0", rows[2]])
        self.assertEqual(self.nodes_of(lines), sum(counts))
        least = sorted(counts)[1]
        self.assertEqual(self.bench_file(text, f"1 {least}")[1], [row for row, n in zip(rows, counts) if n >= least])
        self.assertEqual(self.bench_file(text, "-6 0")[1], [])  # a depth of 0 ends the run
        self.assertEqual(self.bench_file(text, "-5 0")[1][0].split(": ")[0], START)

    def test_files_that_are_no_such_files(self):
        mated = b"5:R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1\n5:7k/5Q2/6K1/8/8/8/8/8 b - - 0 1\n5:" + START.encode()
        lines, report = self.bench_file(mated, "0 0")
        self.assertEqual([row.split(": ")[1] for row in report[:2]], ["0", "0"])
        self.assertEqual(self.nodes_of(lines), int(report[2].split(": ")[1]))
        for content in (b"", b"\n", b"rubbish", b"0:" + START.encode(), None):
            lines, report = self.bench_file(content, "0 0")
            if content is not None:
                self.assertEqual((self.nodes_of(lines), report), (0, []), content)
        self.assertEqual(self.bench_file("missing", "0 0")[0][-1], "Error: could not open positions")
        self.assertEqual(self.bench_file("missing", "", name="")[0][-1][:6], "Error:")
        rubbish = bytes(range(1, 256)).replace(b"\n", b"") * 300
        for content in (b"3:" + rubbish, b"9" * 100000, b":" * 1000, b"3\n3:\n3::\n-7:" + START.encode() + b"\n3:\0\n"):
            lines, report = self.bench_file(content, "0 0")
            self.assertTrue(lines[-1].startswith("KPS: "), lines[-3:])

    def test_an_interrupt_ends_it(self):
        for command, ends in (("benchmark", (-signal.SIGINT,)), ("benchfromfile list 9 0", (-signal.SIGINT, 0))):
            player = self.player(settings="nHashTables=4096\n")
            with open(os.path.join(player.directory, "list"), "w") as file:
                file.write(f"11:{MIDDLE_GAME}\n" * 9)
            player.send(command)
            player.read_to("Starting benchmarking position.*")
            player.signal(signal.SIGINT)
            self.assertIn(player.wait(), ends)
            if len(ends) == 1:
                self.assertIn("handler called with signal 0", player.read_all())


if __name__ == "__main__":
    engine.main()
