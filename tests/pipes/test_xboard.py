"""XBoard mode: moves from the interface in every state of the engine, pondering, analysis, clocks, whole games."""

import random
import time
import unittest

import engine
from engine import COMMENT, THINKING
from rules import START, Board
from test_game import CHESS960_STARTS
from test_uci import MATE_IN_ONE, MIDDLE_GAME

SMALL = "nHashTables=4096\nnPawnTables=256\n"
CASTLES = "r3k2r/pppq1ppp/2npbn2/2b1p3/2B1P3/2NPBN2/PPPQ1PPP/R3K2R w KQkq - 0 1"
CASTLES_960 = "1r2k1r1/pppq1ppp/2npbn2/2b1p3/2B1P3/2NPBN2/PPPQ1PPP/1R2K1R1 w GBgb - 0 1"
LOST = "3qk3/8/8/8/8/8/8/4K3 w - - 0 1"
MOVED = Board().play(Board().find("e2e4"))


class Xboard(engine.EngineTest):
    def player(self, *lines, settings=SMALL):
        player = self.engine(words=("xboard", *lines), settings=settings)
        player.greeting = player.read_to("TBPath is .*")
        return player

    def thoughts(self, lines):
        """The thinking lines; the others too must be lines that XBoard knows."""
        for line in lines:
            self.assertTrue(any(form.fullmatch(line) for form in engine.XBOARD_LINES), line)
        return [match for match in map(THINKING.fullmatch, lines) if match]

    def is_line(self, board, text):
        for word in text.split():
            if not (move := board.find(word, Board.line_text)):
                return False
            board = board.play(move)
        return True

    def reply(self, player, board, pondered=None, seen=()):
        """Reads up to the engine's move. The lines, the position after the move, and the reply it expects."""
        lines = [*seen, *player.read_to("move .*")]
        best, comment = lines[-1].split()[1], COMMENT.fullmatch(lines[-2])
        thoughts = self.thoughts(lines)
        for thought in thoughts:
            self.assertTrue(any(self.is_line(start, thought["pv"]) for start in (board, pondered) if start),
                            f"{thought[0]} on {board.fen()}")
        line = []
        if comment["nodes"] != "0":
            line = thoughts[-1]["pv"].split()
            self.assertEqual((line[0], *comment.group("pv", "depth")), (best, *thoughts[-1].group("pv", "depth")))
        return lines, board.play(board.find(best, Board.line_text)), line[1] if len(line) > 1 else None

    def play(self, player, board, expected, chance, hard, clock):
        """A random mover against the engine, to the end of the game; each move is answered."""
        earlier, verdict = [], None
        while not verdict and board.ply < 240:
            moves = board.moves()
            move = pondered = expected and board.find(expected, Board.line_text)
            if move not in moves or chance.random() < 0.5:
                move = chance.choice(moves)
            castling = move[3] is not None and ("O-O" if move[1] % 8 == 6 else "O-O-O")
            words = castling or board.line_text(move), board.uci(move) if move[2] else board.line_text(move)
            player.send(*clock(), chance.choice(words))
            earlier.append(board.identity())
            pondered = pondered and hard and board.play(pondered)
            board = board.play(move)
            verdict = board.end([])
            if not verdict or "50" in verdict:
                _, board, expected = self.reply(player, board, pondered)
                earlier.append(board.identity())
                verdict = board.end(earlier)
        if verdict:
            points = {"White mates": "1-0", "Black mates": "0-1"}.get(verdict, "1/2-1/2")
            self.assertEqual(player.read_to("result .*")[-1], f"result {points} {{{verdict}}}")

    def test_features_silence_and_refusals(self):
        player = self.player()
        self.assertEqual(player.greeting[:2], ['feature myname="Valku 4.00" sigint=0',
                                               'feature variants="normal,fischerandom"'])
        player.send("protover 2", "accepted done", "otim 500", "random", "draw", "ping 1", "result 1-0 {x}", "i2e4",
                    "E2E4", "e2e5", "e9e4", "e2", "", "ponder", "ponder e2e5", "ponder i2e4", "o-o", "0-0", "O-O",
                    "e1g1", "e7e5", "a1a1", "level", "time", "sd", "st 5", "undo", "remove", "?", "exit", "edit x", ".")
        self.assertEqual(player.settled()[0], [])
        player.send("force", "edit", "#", "Ke1", "Ke2", "c", "Ke8", ".")
        self.assertRegex("\n".join(player.settled()[0]), "^tellusererror Illegal position: .*$")

    def after(self, *lines):
        return self.player("force", *lines).board()

    def test_moves_without_an_answer(self):
        for moves, fen in (("e2e4 e2e4 d2d4 e7e6x undo", MOVED.fen()), ("e2e4 c7c5 g1f3 remove", MOVED.fen()),
                           ("e2e4 remove undo", START), ("e2e4 new", START)):
            self.assertEqual(self.after(*moves.split()), fen, moves)
        board = Board("1n5k/P7/8/8/8/8/8/K7 w - - 0 1")
        for text, letter in (("a7a8", "q"), ("a7a8n", "n"), ("a7b8R", "r"), ("a7b8k", "q"), ("a7a8=n", "q")):
            self.assertEqual(self.after(f"fen {board.fen()}", text), board.play(board.find(text[:4] + letter)).fen())

    def test_castling_also_while_the_engine_ponders(self):
        for fen, chess960, pondered in ((CASTLES, 0, "f3g5"), (CASTLES_960, 1, "O-O")):
            board = Board(fen, bool(chess960))
            setting = ["variant fischerandom"] * (3 if chess960 else 2) + ["force", f"fen {fen}"]
            named = {"O-O" if move[1] == 6 else "O-O-O": move for move in board.castlings()}
            for word, move in named.items():
                self.assertEqual(self.after(*setting, word), board.play(move).fen())
                player = self.player(*setting, "sd 4", f"ponder {pondered}", word)
                expected = named.get(pondered) or board.find(pondered)
                after = self.reply(player, board.play(move), board.play(expected))[1]
                player.settled()
                self.assertEqual(player.board(), after.fen(), f"{word} after {pondered}")
        beside = Board("rk3r2/5p2/8/8/8/8/5P2/4RK1R w HEfa - 0 1", True)
        for word, placed in (("O-O", "rk3r2/5p2/8/8/8/8/5P2/4RRK1"), ("f1g1", "rk3r2/5p2/8/8/8/8/5P2/4R1KR")):
            self.assertEqual(self.after("variant fischerandom", f"fen {beside.fen()}", word).split()[0], placed)

    def test_who_thinks_when_and_how_deep(self):
        def depth(board, *lines):
            player.send(*lines)
            lines, after, _ = self.reply(player, board)
            player.settled()
            return after, int(COMMENT.fullmatch(lines[-2])["depth"])

        player = self.player()
        board, reached = depth(MOVED, "sd 5", "e2e4", "d2d4", "c7c5")  # while it thinks no move counts
        self.assertEqual(reached, 5)
        move = board.line_text(board.moves()[0])
        player.send("force", move)
        self.assertEqual(depth(board.play(board.find(move)), "sd 4", "go")[1], 4)
        self.assertEqual(depth(MOVED, "new", "e2e4")[1], 10)

    def test_every_clock_gets_its_move(self):
        player = self.player()
        for thinks, end, forms in (
                (False, [], ["0 0 0", "x y z", "0 -1 0", "99999999999 0:00 0", "0 5 0\nsd 0", "0 5 0\nsd x",
                             "0 5 0\ntime -1"]),
                (True, [], ["40 0:30 0", "70 0:01 1", "0 5 0\nsd 3x"]),
                (True, ["?"], ["40 5 0", "0 9999999999 0", "-40 1:59 12", "0 0 0\nsd 99"])):
            for form in forms:
                player.send("new", "level " + form, "e2e4", *end)
                self.assertEqual(bool(self.thoughts(self.reply(player, MOVED)[0])), thinks, form)
                player.settled()

    def test_draws_are_claimed_and_a_lost_game_is_resigned(self):
        board = Board("k7/8/8/8/8/8/8/1R3BK1 b - - 0 1")  # black has one move each time
        player = self.player("force", f"fen {board.fen()}", "sd 3", "go")
        for text in ("g1h1", "h1g1", "g1h1", "h1g1"):
            board = self.reply(player, board)[1]
            player.settled()
            board = board.play(board.find(text))
            player.send(text)
        self.reply(player, board)
        self.assertEqual(player.settled()[0][-2:], ["I want to claim a draw by third-time-repetition!",
                                                    "result 1/2-1/2 {Draw by repetition}"])
        for value, told in ((500, ["resign"]), (5000, [])):
            player = self.player("force", f"fen {LOST}", "sd 4", "go", settings=f"{SMALL}resignValue={value}\n")
            player.read_to("move .*")
            self.assertEqual([line for line in player.settled()[0] if "ponderMove" not in line], told)

    def pondering(self, fen=START, *lines):
        """An engine that has moved and ponders; the position, the expected reply, and the position after that."""
        player = self.player("force", f"fen {fen}", "hard", *(lines or ["sd 5"]), "go")
        _, board, expected = self.reply(player, Board(fen))
        seen, idle = player.settled()
        self.assertFalse(idle)
        return player, board, expected, board.play(board.find(expected, Board.line_text)), seen

    def test_the_expected_move_when_the_time_is_used_up(self):
        player, _, expected, after, seen = self.pondering(MIDDLE_GAME)
        while sum(int(thought["depth"]) == 5 for thought in self.thoughts(seen)) < 2:
            seen.append(player.next_line())
        player.send(expected)
        self.reply(player, after, seen=seen)

    def test_the_expected_move_ends_the_game(self):
        for fen, limits, result in (
                ("7r/8/8/8/8/1k6/8/K7 w - - 0 1", ["sd 6"], "0-1 {Black mates}"),
                ("6bk/3R4/8/8/8/1q6/8/K7 w - - 0 1", ["level 0 1 0", "time 900"], "1/2-1/2 {Stalemate}")):
            player, _, expected, *_ = self.pondering(fen, *limits)
            player.send("x", "a8b8", "O-O")  # nothing that could be played: the pondering goes on
            self.assertEqual(player.settled(), ([], False))
            player.send(expected)
            self.assertEqual(player.settled()[0], ["result " + result])
            player.send("e2e4", "new", "sd 4", "e2e4")
            self.reply(player, MOVED)

    def test_what_ends_it(self):
        for words, kept in (("?", 1), ("force", 1), ("exit", 1), ("undo", 0), ("remove", 0), ("new", 0)):
            player, board, *_ = self.pondering()
            player.send("fen 8/8/8/8/8/k7/8/K7 w - -", "mirror", words)
            lines, idle = player.settled()
            self.assertNotIn("move ", " ".join(lines))
            self.assertTrue(idle, words)
            self.assertEqual(player.board(), board.fen() if kept else START, words)

    def test_pondering_on_order_and_what_hard_means(self):
        for reply in ("e7e5", "c7c5"):
            player = self.player("force", "e2e4", "sd 5", "fritz", "hard", "ponder e7e5")  # fritz: hard has no effect
            seen, idle = player.settled()
            self.assertFalse(idle)
            player.send(reply)
            self.reply(player, MOVED.play(MOVED.find(reply)), MOVED.play(MOVED.find("e7e5")), seen)
            self.assertTrue(player.settled()[1])
        player.send("force", "new", "force", "fritz", "hard", "e2e4", "ponder e7e5")
        self.assertEqual(player.settled(), ([], True))

    def test_analysis(self):
        player, boards = self.player("hard", "level 0 0 0", "analyze"), [Board()]
        for text in ("e2e4", "c7c5", "undo", "e7e5", "f1c4", "e1e3", "g8f6", "d1h5", "f6h5", "remove", "b1c3"):
            player.send(text)
            player.ready()
            if text in ("undo", "remove"):
                boards = boards[:-1 if text == "undo" else -2]
                continue
            if text != "e1e3":  # which is illegal, so the analysis goes on
                boards.append(boards[-1].play(boards[-1].find(text)))
            for line in player.read_to(THINKING.pattern):
                self.assertTrue(self.is_line(boards[-1], THINKING.fullmatch(line)["pv"]), f"{line} after {text}")
        player.send("exit", "force", f"fen {MATE_IN_ONE}", "analyze")
        lines = player.read_to("100 .*")  # searched to the last depth at once
        time.sleep(0.5)
        self.assertLessEqual(len(player.ready()), 1)  # of the same iteration; there is no more to say
        player.send("a1a8")
        lines += player.read_to("result .*")
        player.send("undo", "a1a2", "exit", "undo", "analyze", "force")
        lines += player.settled()[0]
        self.assertNotIn("move ", " ".join(lines))

    def test_against_a_random_mover(self):
        chance = random.Random(3)
        clock = lambda: (f"time {chance.choice((20, 60, 150, 0, -9))}", f"otim {chance.randint(0, 99)}")
        for hard in (False, True):
            for lines, clocks, start in (
                    (["sd 2", "computer"], lambda: (), START), (["level 40 1 0"], clock, START),
                    (["variant fischerandom", "sd 3"], lambda: ("sd 2",), CHESS960_STARTS[hard])):
                player = self.player("new", *lines, "hard", *([] if hard else ["easy"]), "force", f"fen {start}", "go")
                lines, board, expected = self.reply(player, Board(start, start != START))
                self.assertEqual("kibitz" in lines[-2], clocks is not clock and start == START)
                self.play(player, board, expected, chance, hard, clocks)
                self.assertEqual(player.quit(), 0)


if __name__ == "__main__":
    engine.main()
