"""XBoard mode: moves from the interface in every state of the engine, pondering, analysis, clocks, whole games."""

import random
import time
import unittest

import engine
from engine import COMMENT, EXPECTED, THINKING
from rules import START, Board, name
from test_game import CHESS960_STARTS
from test_uci import MATE_IN_ONE, MIDDLE_GAME

SMALL = "nHashTables=4096\nnPawnTables=256\n"
CASTLES = "r3k2r/pppq1ppp/2npbn2/2b1p3/2B1P3/2NPBN2/PPPQ1PPP/R3K2R w KQkq - 0 1"
CASTLES_960 = "1r2k1r1/pppq1ppp/2npbn2/2b1p3/2B1P3/2NPBN2/PPPQ1PPP/1R2K1R1 w GBgb - 0 1"
MATED_BY_THE_REPLY = "7r/8/8/8/8/1k6/8/K7 w - - 0 1"
STALEMATED_BY_THE_REPLY = "6bk/3R4/8/8/8/1q6/8/K7 w - - 0 1"


class XboardTest(engine.EngineTest):
    def player(self, *lines, settings=SMALL):
        player = self.engine(words=("xboard", *lines), settings=settings)
        player.greeting = player.read_to("TBPath is .*")
        return player

    def check_forms(self, lines, *further):
        for line in lines:
            self.assertTrue(any(form.fullmatch(line) for form in (*engine.XBOARD_LINES, *further)), line)

    def found(self, form, lines):
        return [match for match in map(form.fullmatch, lines) if match]

    def is_line(self, board, text):
        for word in text.split():
            move = board.find(word, Board.line_text)
            if move is None:
                return False
            board = board.play(move)
        return True

    def reply(self, player, board, pondered=None, seen=()):
        """Reads up to the engine's move. The lines, the position behind the move, and the reply it expects."""
        lines = [*seen, *player.read_to("move .*")]
        self.check_forms(lines)
        self.assertEqual(len([line for line in lines if line.startswith("move ")]), 1, lines)
        best, comment = lines[-1].split()[1], COMMENT.fullmatch(lines[-2])
        for thought in self.found(THINKING, lines):
            possible = self.is_line(board, thought["pv"]) or pondered and self.is_line(pondered, thought["pv"])
            self.assertTrue(possible, f"{thought[0]} on {board.fen()}")
        self.assertTrue(self.is_line(board, best), f"{best} on {board.fen()}")
        line = []
        if comment["nodes"] != "0":
            last = self.found(THINKING, lines)[-1]
            line = last["pv"].split()
            self.assertEqual((line[0], comment["pv"], comment["depth"]), (best, last["pv"], last["depth"]))
        return lines, board.play(board.find(best, Board.line_text)), line[1] if len(line) > 1 else None

    def words_for(self, board, move):
        """The texts in which an interface can send a move."""
        words = [board.line_text(move), board.line_text(move)]
        if move[3] is not None:
            words[0] = "O-O" if move[1] % 8 == 6 else "O-O-O"
        elif move[2]:
            words[1] = board.uci(move)
        return words

    def play(self, player, board, chance, hard, clock, to="whisper", calm=0.5, expected=None, plies=120):
        """A random mover against the engine, to the end of the game; each move is answered. The engine's verdict."""
        earlier, seen = [], []
        for _ in range(plies):
            moves = board.moves()
            move = pondered = expected and board.find(expected, Board.line_text)
            if move not in moves or chance.random() < 0.5:
                move = chance.choice(moves)
            if chance.random() < calm:
                time.sleep(chance.choice((0, 0.001, 0.02)))
            player.send(*clock(), chance.choice(self.words_for(board, move)))
            earlier.append(board.identity())
            pondered = pondered and hard and board.play(pondered)
            board = board.play(move)
            verdict = board.end([])
            if verdict and "50" not in verdict:
                seen += player.read_to("result .*")
                break
            lines, board_after, expected = self.reply(player, board, pondered, seen)
            self.assertEqual(COMMENT.fullmatch(lines[-2])["to"], to)
            earlier.append(board.identity())
            board, seen = board_after, []
            verdict = board.end(earlier)
            if verdict or chance.random() < calm:
                seen, idle = player.settled()
                thoughts = [thought["pv"].split()[:2] for thought in self.found(THINKING, lines)]
                for match in self.found(EXPECTED, seen):
                    self.assertIn([lines[-1].split()[1], match["move"]], thoughts)
                self.assertEqual(idle, not (hard and expected))
            if verdict:
                break
        if verdict:
            self.check_forms(seen)
            points = {"White mates": "1-0", "Black mates": "0-1"}.get(verdict, "1/2-1/2")
            self.assertEqual([line for line in seen if line.startswith("result")], [f"result {points} {{{verdict}}}"])
        return verdict


class Words(XboardTest):
    def test_features_and_silence(self):
        player = self.player()
        features = ['feature myname="Valku 4.00" sigint=0', 'feature variants="normal,fischerandom"']
        self.assertEqual(player.greeting[:2], features)
        player.send("protover 2", "accepted done", "otim 500", "post", "nopost", "random", "hint", "bk", "draw",
                    "xboard", "ping 1", "result 1-0 {x}", "name x", "rating 1 2", "ics -", "i2e4", "E2E4", "e2e5",
                    "e9e4", "e2", "", "ponder", "ponder e2e5", "ponder i2e4", "o-o", "0-0", "O-O", "e1g1", "e7e5",
                    "a1a1", "computer", "level", "time", "sd", "st 5", "undo", "remove", "?", "exit", "edit x", ".",
                    "variant", "setboard x")
        self.assertEqual(player.settled()[0], [])

    def after(self, *lines):
        player = self.player("force", *lines)
        return player.board()

    def test_moves_without_an_answer(self):
        board = Board().play(Board().find("e2e4"))
        self.assertEqual(self.after("e2e4"), board.fen())
        self.assertEqual(self.after("e2e4", "e2e4", "d2d4", "e7e6x", "undo"), board.fen())
        self.assertEqual(self.after("e2e4", "c7c5", "g1f3", "remove"), board.fen())
        self.assertEqual(self.after("e2e4", "remove", "undo"), START)
        self.assertEqual(self.after("e2e4", "new"), START)

    def test_promotions(self):
        board = Board("1n5k/P7/8/8/8/8/8/K7 w - - 0 1")
        for text, letter in (("a7a8", "q"), ("a7a8n", "n"), ("a7b8R", "r"), ("a7a8Bishop", "b"), ("a7b8Q", "q"),
                             ("a7b8k", "q"), ("a7a8 n", "q"), ("a7a8=n", "q")):
            self.assertEqual(self.after(f"fen {board.fen()}", text), board.play(board.find(text[:4] + letter)).fen())
        black = Board("8/8/8/7k/8/8/p7/2K4N b - - 0 1")
        self.assertEqual(self.after(f"fen {black.fen()}", "a2a1N").split()[:2], ["8/8/8/7k/8/8/8/n1K4N", "w"])

    def test_castling_also_while_the_engine_ponders(self):
        for fen, chess960 in ((CASTLES, False), (CASTLES_960, True)):
            board = Board(fen, chess960)
            setting = ["variant fischerandom"] * (3 if chess960 else 2) + ["force", f"fen {fen}"]
            named = {word: move for move in board.castlings()
                     for word in (("O-O", "e1g1") if move[1] == 6 else ("O-O-O", "e1c1"))}
            for word, move in named.items():
                self.assertEqual(self.after(*setting, word), board.play(move).fen())
                for pondered in ("O-O", "e1c1", "e1d1", "f3g5"):
                    player = self.player(*setting, "sd 4", f"ponder {pondered}", word)
                    expected = named.get(pondered) or board.find(pondered)
                    after = self.reply(player, board.play(move), board.play(expected))[1]
                    player.settled()
                    self.assertEqual(player.board(), after.fen(), f"{word} behind {pondered}")

        beside = Board("rk3r2/5p2/8/8/8/8/5P2/4RK1R w HEfa - 0 1", True)
        self.assertEqual(self.after("variant fischerandom", f"fen {beside.fen()}", "O-O", "O-O-O"),
                         "2kr1r2/5p2/8/8/8/8/5P2/4RRK1 w - - 2 2")
        self.assertEqual(self.after("variant fischerandom", f"fen {beside.fen()}", "f1g1", "b8c8").split()[0],
                         "r1k2r2/5p2/8/8/8/8/5P2/4R1KR")

    def test_who_thinks_when_and_how_deep(self):
        def depth(board, *lines):
            player.send(*lines)
            lines, after, _ = self.reply(player, board)
            player.settled()
            return after, int(COMMENT.fullmatch(lines[-2])["depth"])

        player, moved = self.player(), Board().play(Board().find("e2e4"))
        board, reached = depth(moved, "sd 5", "e2e4", "d2d4", "g1f3")  # the later ones find it thinking, or no turn
        self.assertEqual(reached, 5)
        player.send("force", board.line_text(board.moves()[0]))
        self.assertEqual(player.settled(), ([], True))
        self.assertEqual(depth(board.play(board.moves()[0]), "sd 4", "go")[1], 4)
        self.assertEqual(depth(moved, "new", "e2e4")[1], 10)
        board, reached = depth(Board(), "new", "level 0 60 0", "go", "?")
        self.assertGreaterEqual(reached, 9)
        self.assertEqual(depth(board.play(board.moves()[0]), "sd 6", board.line_text(board.moves()[0]))[1], 6)

    def test_every_clock_gets_its_move(self):
        quick = ["level " + form for form in (
            "0 0 0", "0 0:00 1", "", "x y z", "-3 -5 -7", "0 -1 0", "40 0:0x 0", "0 :", "1 : 1", "0 0:-5 0",
            "99999999999 0:00 0", "0 -99999999999 -99999999999", "-1 0:00:00 0")]
        quick += [f"{word} {number}" for word in ("sd", "time") for number in ("0", "-1", "", "x", "-99999999999")]
        thinks = ["level 40 0:01 0", "level 0 0:02 0", "level 70 0:01 1", "level 40 0:30 0", "sd 2", "sd 3x"]
        long = ["level " + form for form in ("40 5 0", "0 9999999999 0", "1 1 99999999999", "0 2 12",
                                             "0 0:9999999999 0", "-40 1:59 12")]
        player, board = self.player(), Board().play(Board().find("e2e4"))
        for forms, end in ((quick, []), (thinks, []), (long + ["sd 99", "time 99999999999"], ["?"])):
            for form in forms:
                player.send("new", form, "e2e4", *end)
                self.assertEqual(bool(self.found(THINKING, self.reply(player, board)[0])), forms is not quick, form)
                player.settled()

    def test_draws_are_claimed_and_a_lost_game_is_resigned(self):
        board = Board("k7/8/8/8/8/8/8/1R3BK1 b - - 0 1")  # black has one move each time
        earlier, player = [], self.player("force", f"fen {board.fen()}", "sd 3", "go")
        for text in ("g1h1", "h1g1", "g1h1", "h1g1"):
            earlier.append(board.identity())
            board = self.reply(player, board)[1]
            self.assertNotIn("result", " ".join(player.settled()[0]))
            earlier.append(board.identity())
            board = board.play(board.find(text))
            player.send(text)
        self.assertEqual(self.reply(player, board)[1].end([*earlier, board.identity()]), "Draw by repetition")
        self.assertEqual(player.settled()[0][-2:], ["I want to claim a draw by third-time-repetition!",
                                                    "result 1/2-1/2 {Draw by repetition}"])
        player.send("force", "fen 8/8/8/8/8/1k6/8/K6R w - - 98 90", "h1h2", "sd 3", "go")
        self.reply(player, Board("8/8/8/8/8/1k6/7R/K7 b - - 99 90"))
        self.assertEqual(player.settled()[0][-2:], ["I want to claim a draw by 50-moves-rule!",
                                                    "result 1/2-1/2 {Draw by 50-moves-rule}"])
        for limit, resigns in ((500, True), (25000, False)):
            player = self.player("force", "fen 3qk3/8/8/8/8/8/8/4K3 w - - 0 1", "sd 4", "go",
                                 settings=SMALL + f"resignValue={limit}\n")
            player.read_to("move .*")
            self.assertEqual(player.settled()[0][-1:] == ["resign"], resigns)

    def test_refusals(self):
        player = self.player("benchmark", "force", "edit", "#", "Ke1", "Ke2", "c", "Ke8", ".", "sd 3", "go")
        lines = player.read_to("move .*")
        self.assertEqual(lines[0], "Benchmark kann nur im Konsolen-Modus gestartet werden!")
        self.assertTrue(lines[1].startswith("tellusererror Illegal position: "), lines[1])
        self.check_forms(lines[2:])
        self.assertTrue(self.is_line(Board(), lines[-1].split()[1]))


class Pondering(XboardTest):
    def pondering(self, fen=START, *lines):
        """An engine that has moved and ponders; the position, and the reply it expects."""
        player = self.player("force", f"fen {fen}", "hard", *(lines or ["sd 5"]), "go")
        _, board, expected = self.reply(player, Board(fen))
        self.assertTrue(expected)
        seen, idle = player.settled()
        self.assertFalse(idle)
        return player, board, expected, seen

    def test_the_expected_move_when_the_time_is_used_up(self):
        player, board, expected, seen = self.pondering(MIDDLE_GAME)
        while expected:
            while sum(int(thought["depth"]) == 5 for thought in self.found(THINKING, seen)) < 2:
                seen.append(player.next_line())
            player.send(expected)
            _, board, expected = self.reply(player, board.play(board.find(expected, Board.line_text)), seen=seen)
            seen = player.settled()[0]
            if board.ply > 24:
                break
        player, board, expected, seen = self.pondering(MIDDLE_GAME, "level 0 1 0", "time 60")
        time.sleep(0.2)
        player.send(expected)
        self.reply(player, board.play(board.find(expected, Board.line_text)), seen=seen)

    def test_the_expected_move_ends_the_game(self):
        for fen, result in ((MATED_BY_THE_REPLY, "0-1 {Black mates}"),
                            (STALEMATED_BY_THE_REPLY, "1/2-1/2 {Stalemate}")):
            for limits in (["sd 6"], ["level 0 1 0", "time 900"]):
                player, board, expected, _ = self.pondering(fen, *limits)
                self.assertIn(str(board.play(board.find(expected)).end([])), result)
                player.send(expected)
                self.assertEqual(player.settled()[0], ["result " + result])
                player.send("e2e4", "new", "sd 4", "e2e4")
                self.reply(player, Board().play(Board().find("e2e4")))
            player, board, expected, _ = self.pondering(fen)
            player.send("x", "a8b8", "O-O")  # nothing that could be played: the pondering goes on
            self.assertEqual(player.settled(), ([], False))
            other = next((move for move in board.moves() if not board.play(move).end([])), None)
            if other:
                player.send(board.line_text(other))
                self.reply(player, board.play(other))

    def test_what_ends_it(self):
        for words, kept in ((["?"], 1), (["force"], 1), (["exit"], 1), (["undo"], 0), (["remove"], 0), (["new"], 0),
                            (["ponder e7e5"], 1), (["?", "?", "undo"], 0), (["easy", "force"], 1)):
            player, board, _, _ = self.pondering()
            player.send("fen 8/8/8/8/8/k7/8/K7 w - -", "mirror", "no such word", *words)
            lines, idle = player.settled()
            self.check_forms(lines)
            self.assertNotIn("move ", " ".join(lines))
            self.assertTrue(idle, words)
            self.assertEqual(player.board(), board.fen() if kept else START, words)

    def test_pondering_on_order_and_what_hard_means(self):
        board = Board().play(Board().find("e2e4"))
        for reply in ("e7e5", "c7c5", "e7e6"):
            player = self.player("force", "e2e4", "sd 5", "fritz", "hard", "ponder e7e5")  # fritz: hard is not heard
            seen, idle = player.settled()
            self.assertFalse(idle)
            player.send(reply)
            self.reply(player, board.play(board.find(reply)), board.play(board.find("e7e5")), seen)
            self.assertTrue(player.settled()[1])
        player.send("force", "new", "force", "fritz", "hard", "e2e4", "ponder e7e5")
        self.assertEqual(player.settled(), ([], True))
        player.send("sd 5", "e7e5")
        self.reply(player, board.play(board.find("e7e5")))
        self.assertFalse(player.settled()[1])

    def test_analysis(self):
        player, boards = self.player("hard", "level 0 0 0", "analyze"), [Board()]
        for text in ("e2e4", "c7c5", "undo", "e7e5", "g1f3", "undo", "f1c4", "e1e3", "O-O", "g8f6", "d1h5", "f6h5",
                     "remove", "b1c3"):
            player.send(text)
            for line in player.ready():
                self.assertTrue(THINKING.fullmatch(line), line)
            back = {"undo": 1, "remove": 2}.get(text)
            if back:
                boards = boards[:-back]
                continue
            if text not in ("e1e3", "O-O"):  # which nobody can play, and so the analysis goes on
                boards.append(boards[-1].play(boards[-1].find(text)))
            for line in player.read_to(THINKING.pattern):
                self.assertTrue(self.is_line(boards[-1], THINKING.fullmatch(line)["pv"]), f"{line} behind {text}")
        player.send("exit")
        lines, idle = player.settled()
        self.assertTrue(idle and all(map(THINKING.fullmatch, lines)), lines)
        player.send("force", f"fen {MATE_IN_ONE}", "analyze")  # searched to the last depth at once
        lines = player.read_to("100 .*") + player.read_to("100 .*")
        player.send("a1a8")
        lines += player.read_to("result .*")
        player.send("undo", "a1a2", "undo", "a1a3")
        lines += player.ready() + player.read_to(THINKING.pattern)
        player.send("exit", "undo", "analyze", "force")
        lines += player.settled()[0]
        self.check_forms(lines)
        self.assertNotIn("move ", " ".join(lines))
        self.assertEqual(player.board(), MATE_IN_ONE)


class Games(XboardTest):
    def test_against_a_random_mover(self):
        chance = random.Random(3)
        clock = lambda: (f"time {chance.choice((20, 60, 150, 0, -9))}", f"otim {chance.randint(0, 99)}")
        for hard in (False, True):
            switches = ["hard"] if hard else ["hard", "easy"]
            for lines, clocks, calm, start in (
                    (["sd 3"], lambda: (), 0.5, None), (["sd 2", "computer"], lambda: (), 0.0, None),
                    (["level 40 1 0"], clock, 0.5, None), (["level 0 0:01 0"], clock, 0.0, None),
                    (["sd 3", "computer", "computer"], lambda: ("sd 2",), 0.3, CHESS960_STARTS[hard])):
                setting = ["variant fischerandom", "force", f"fen {start}"] if start else []
                player = self.player("new", *setting, *lines, *switches)
                board, expected = Board(start or START, bool(start)), None
                if start:
                    player.send("go")
                    _, board, expected = self.reply(player, board)
                to = "kibitz" if lines[1:] == ["computer"] else "whisper"
                self.play(player, board, chance, hard, clocks, to, calm, expected)
                player.send("force", "new", "sd 3", "e2e4")
                player.read_to("move .*")
                self.assertEqual(player.quit(), 0)


if __name__ == "__main__":
    engine.main()
