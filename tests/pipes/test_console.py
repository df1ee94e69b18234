"""Console mode: what a person sees, the board editor, and the benchmark commands."""

import pathlib
import re
import signal
import unittest

import engine
from engine import CONSOLE
from rules import START, Board, name
from test_uci import MATE_IN_ONE, MIDDLE_GAME

SMALL = "nHashTables=4096\nnPawnTables=256\n"
PROCESSES = ["The following search processes will be used:", "rootSearchProcess"]
REFUSAL = "Benchmark kann nur im Konsolen-Modus gestartet werden!"
BENCH_START = re.compile(r"Starting benchmarking position with depth (-?\d+)\.\.\.")
ENDING = "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - - 0 1"


class ConsoleTest(engine.EngineTest):
    def player(self, *lines, settings=SMALL):
        player = self.engine(words=("console", *lines), settings=settings)
        player.greeting = player.read_to(PROCESSES[1])
        return player

    def texts(self, lines):
        """The whole texts that the lines are made of, as matches of CONSOLE; nothing else may be among them."""
        text = "".join(line + "\n" for line in lines)
        found = list(CONSOLE.finditer(text))
        self.assertEqual("".join(match[0] for match in found), text)
        return found

    def check_board(self, match, board):
        rows = ["".join(" " + (board.men[8 * rank + file] or ".") for file in range(8)) for rank in range(7, -1, -1)]
        self.assertEqual(match["rows"].splitlines(), rows, board.fen())
        self.assertEqual(match["side"], "white" if board.white else "black")

    def board_after(self, player, *lines, shown=1):
        """The last of the boards, and nothing else, that the lines bring."""
        player.send(*lines)
        found = self.texts(player.settled()[0])
        self.assertEqual([bool(match["board"]) for match in found], [True] * shown, lines)
        return found[-1]


class Game(ConsoleTest):
    def test_the_greeting(self):
        lines = [line for line in self.player().greeting if line != "No opening book found..."]
        self.assertRegex(lines[0], engine.NEW_TABLE)
        self.assertEqual(lines[1:3], ["TBPath is <empty>, including 0-men TBs.",
                                      "Valku 4.00, a chess engine. Type go to let it move, quit to leave."])
        self.assertEqual(lines[-2:], PROCESSES)
        self.check_board(self.texts(lines[3:-2])[0], Board())

    def test_searches_and_moves(self):
        for fen in (MIDDLE_GAME, "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1", MATE_IN_ONE):
            player, board = self.player("force", f"fen {fen}", "sd 8", "go"), Board(fen)
            found = self.texts(player.read_to("move .*") + player.settled()[0])
            self.check_board(found.pop(0), board)
            kinds = "".join(kind[0] for match in found for kind in ("main", "fail", "Move", "board", "end")
                            if match[kind.lower()])
            self.assertRegex(kinds, "^[mf]+Mb" + ("e$" if fen == MATE_IN_ONE else "$"))
            mains = [match for match in found if match["main"]]
            for match in mains:
                position = board
                for word in match["pv"].split():
                    position = position.play(position.find(word, Board.line_text))
            move = next(match["text"] for match in found if match["move"])
            self.assertEqual((mains[-1]["depth"], mains[-1]["pv"].split()[0]), ("8", move))
            after = board.play(board.find(move, Board.line_text))
            self.check_board(next(match for match in found if match["board"]), after)

    def test_the_board_after_each_change(self):
        player, boards = self.player("force"), [Board()]
        for text in ("e2e4", "g8f6", "e4e5", "d7d5", "e5d6", "undo", "e5d6", "e7d6", "remove", "g1f3"):
            back = {"undo": 1, "remove": 2}.get(text, 0)
            boards = boards[:-back] if back else [*boards, boards[-1].play(boards[-1].find(text))]
            self.check_board(self.board_after(player, text), boards[-1])
        self.check_board(self.board_after(player, "new"), Board())
        mirrored = self.board_after(player, "force", f"fen {ENDING}", "mirror", shown=2)
        self.check_board(mirrored, Board("k7/8/8/p2p1p2/P2p1P2/3P4/K7/8 b - - 0 1"))
        keys = [self.board_after(player, "new", "force", *moves.split(), shown=5)["key"]
                for moves in ("e2e4 e7e5 g1f3 b8c6", "g1f3 b8c6 e2e4 e7e5", "e2e4 e7e5 f1c4 b8c6")]
        self.assertEqual([keys[0] == key for key in keys], [True, True, False])
        player.send("fen x")
        self.assertEqual(player.settled()[0][0], "Error: this is no legal position; the old one stays")

    def test_resignation(self):
        player = self.player("fen 3qk3/8/8/8/8/8/8/4K3 w - - 0 1", "sd 4", "go", settings="resignValue=500\n")
        player.read_to("move .*")
        self.assertEqual(player.settled()[0][-1], "I resign. Congratulations!")

    def test_a_move_that_was_not_pondered_on(self):
        player = self.player("force", "sd 4", "hard", "go")
        found = self.texts(player.read_to("move .*"))
        expected = [match for match in found if match["main"]][-1]["pv"].split()[1]
        board = Board().play(Board().find(found[-1]["text"]))
        seen = player.settled()[0]
        move = next(move for move in board.moves() if board.uci(move) != expected)
        player.send("easy", board.uci(move))
        # A board is written in one piece, a main line in five, between which another thread's text may come.
        found = list(CONSOLE.finditer("\n".join(seen + player.read_to("move .*") + player.settled()[0]) + "\n"))
        after = board.play(move)
        best = after.find(next(match["text"] for match in found if match["move"]), Board.line_text)
        shown = [match for match in found if match["board"]]
        for match, position in zip(shown, (board, board, after, after.play(best)), strict=True):
            self.check_board(match, position)  # the expected move is taken back first


class Edit(ConsoleTest):
    def test_positions_and_their_rights(self):
        for fen, chess960 in (
                ("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", 0), ("r3k1r1/8/8/8/8/8/8/RR3K1R w q - 0 1", 0),
                (MIDDLE_GAME, 0), ("1r1k2r1/8/8/8/8/8/8/R1R1KR1R w FCgb - 0 1", 1),
                ("rk6/8/8/8/8/8/8/5KRR w Ga - 0 1", 1)):
            board = Board(fen, bool(chess960))
            men = [(man.upper() + name(at), man.isupper()) for at, man in enumerate(board.men) if man]
            white, black = ([text for text, is_white in men if is_white == color] for color in (True, False))
            edit = ["edit", "#", *white, "c", *black, "."]
            player = self.player(*["variant fischerandom"] * chess960, "force")
            shown = self.board_after(player, *edit)
            self.check_board(shown, board)
            self.assertEqual(self.board_after(player, f"fen {fen}")["key"], shown["key"], fen)
            self.board_after(player, *edit)
            self.assertEqual(player.board().split()[:3], board.fen().split()[:3])

    def test_the_side_to_move_is_that_at_the_begin_of_the_edit(self):
        player = self.player("easy", "sd 13", "go", "edit")
        player.read_to("move .*")
        player.send("#", "Ke1", "c", "Ke8", ".")
        self.assertEqual(player.board().split()[1], "w")

    def test_men_put_on_men_and_rubbish(self):
        player = self.player("force")
        black = self.board_after(player, "e2e4", "edit", "#", "Ke1", "c", "Ke8", ".", shown=2)
        self.check_board(black, Board("4k3/8/8/8/8/8/8/4K3 b - - 0 1"))
        # Without "#" the board stays; a man takes the place of another; "c" twice is white again.
        changed = Board(START.replace("PPPPPPPP", "PPPPQPPP").replace("rnbq", "rnbr"))
        self.check_board(self.board_after(player, "new", "force", "edit", "Qe2", "c", "Rd8", "c", "c", "c", "", "Xe4",
                                          "Qe", "Qe9", "qe4", "e2e4", ".", shown=2), changed)
        player.send("edit")
        self.assertEqual(player.quit(), 0)

    def test_refused_positions_leave_the_old_one(self):
        player = self.player("force", "e2e4")
        player.settled()
        nine_pawns = [f"P{file}{rank}" for file in "abcdefgh" for rank in "23"][:9]
        for men in (["Ke1"], ["Ke1", "Kd1", "c", "Ke8"], ["Ke1", *nine_pawns, "c", "Ke8"], ["Ke1", "Pa1", "c", "Ke8"],
                    ["Ke1", "c", "Ke8", "Pb8"], ["Ke1", "c", "Ke2"]):
            player.send("edit", "#", *men, ".")
            self.assertRegex("\n".join(player.settled()[0]), "^Error: .*$", men)
        self.assertEqual(player.board(), Board().play(Board().find("e2e4")).fen())


class Benchmark(ConsoleTest):
    def bench_depths(self, lines):
        return [int(match[1]) for match in map(BENCH_START.fullmatch, lines) if match]

    def bench_player(self, text, command):
        """A player that carries out the command, with the text in the file list."""
        player = self.player(settings=None)
        pathlib.Path(player.directory, "list").write_bytes(text.encode())
        player.send(command)
        return player

    def test_only_the_console_runs_it(self):
        for mode in ("uci", "xboard"):
            player = self.engine(words=(mode,), settings="3:" + START)
            player.read_to(".*TBPath is .*")
            player.send("benchmark", "benchmark 1", "benchfromfile settings.ini 0 0")
            self.assertEqual(player.ready(), [REFUSAL, REFUSAL, "settings.ini 0 0", REFUSAL])

    def test_the_built_in_positions_twice(self):
        lines, code = self.run_with("console\nbenchmark -9\nstop\nbenchmark -11\nquit\n")
        end = lines.index(next(line for line in lines if line.startswith("Knoten gesamt: ")))
        self.assertRegex("\n".join(lines[end:end + 3]), r"^Knoten gesamt: \d+\nZeit gesamt: \d+\.\d{3}\nKPS: \d+$")
        offsets = [int(figure) for figure in """
            11 12 13 13 11 11 11 12 11 11 13 14 11 11 12 11 11 11 13 15 15 10 11 10 11 11 15 12 11 11 13 15
            11 11 10 11 12 12 10 12 11 11 10 10 12 12 13 15 15 11 11 10 12 12 13 13 12 11 10 11 11 10 11 13""".split()]
        depths = [offset - less for less in (9, 11) for offset in offsets]
        self.assertEqual((self.bench_depths(lines), code), (depths, 0))

    def bench_file(self, text, arguments):
        """Output and log of a run over a file with that text."""
        player = self.bench_player(text, f"benchfromfile list {arguments}")
        lines = player.read_all()
        self.assertEqual(player.wait(), 0)
        return lines, pathlib.Path(player.directory, "list.log").read_text().splitlines()

    def test_positions_of_a_file(self):
        fens = [START, MIDDLE_GAME, ENDING]
        mated = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"
        text = f"6:{fens[0]}\r\n5:{fens[1]}\n4:no position: at all\n2:{mated}\n9:{fens[2]}\r\n\n7:{START}\n"
        lines, report = self.bench_file(text, "1 0")
        self.assertEqual(lines[:3], ["list 1 0", "", "Starting benchmark..."])
        self.assertEqual(self.bench_depths(lines), [7, 6, 3, 10])
        self.assertIn("_benchMarkAlgorithmPositions(no position: at all,5): an error occured while loading FEN", lines)
        # The same searches by hand, in the same process one after the other.
        player, counts = self.player(settings=None), []
        for fen, depth in zip(fens, (7, 6, 10)):
            player.send("force", f"fen {fen}", f"sd {depth}", "go")
            found = self.texts(player.read_to("move .*") + player.settled()[0])
            counts.append(int([match["nodes"] for match in found if match["main"]][-1]))
        rows = [f"{fen}: {count}" for fen, count in zip(fens, counts)]
        self.assertEqual(report, [*rows[:2], "no position: at all: 0", mated + ": 0", rows[2]])
        self.assertIn(f"Knoten gesamt: {sum(counts)}", lines)
        least = sorted(counts)[1]
        self.assertEqual(self.bench_file(text, f"1 {least}")[1], [row for row, n in zip(rows, counts) if n >= least])
        self.assertEqual(self.bench_file(text, "-6 0")[1], [])  # a depth of 0 ends the run
        lines, code = self.run_with("console\nbenchfromfile missing 0 0\n")
        self.assertEqual((lines[-1], code), ("Error: could not open missing", 0))

    def test_what_ends_it(self):
        for command in ("benchmark 20", "benchfromfile list 20 0"):
            for end in ("?", "stop", "quit", "input", signal.SIGINT):
                player = self.bench_player(f"11:{MIDDLE_GAME}\n" * 9, command)
                player.read_to(BENCH_START.pattern)
                player.send("showbook")  # which waits for its turn
                code = player.end(end)
                lines = player.read_to("handler called with signal 0|Zeit gesamt: .*")
                self.assertEqual(self.bench_depths(lines), [])  # no position after the one at work
                if command == "benchmark 20" and end in ("?", "stop"):
                    self.assertTrue(player.settled()[1])
                else:
                    self.assertEqual(player.wait(), code)


if __name__ == "__main__":
    engine.main()
