"""Positions and move lists as interfaces send them; the board is read back through the interrupt handler's line."""

import random
import unittest

import engine
from rules import START, Board
from test_game import CHESS960_STARTS

SMALL = "nHashTables=16\n"
CASTLING_ROOM = "r3k2r/8/8/8/8/8/8/R3K2R {} KQkq - 0 1"
OUTER_ROOKS = "r3k2r/8/8/8/8/8/8/R3K2R {} HAha - 0 1"
KEPT = "4k3/4p3/8/8/8/8/4P3/4K3 b - - 7 1"

EVALUATED = [
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "r1bq1rk1/pp3ppp/2n1pn2/2pp4/2PP4/P1PBPN2/5PPP/R1BQ1RK1 w - - 0 10",
    "2kr3r/ppp2pp1/2n2q2/7p/1b1P2b1/2N1BN2/PP2BPPP/R2Q1RK1 b - - 4 13",
    "8/5pk1/1p4p1/p1pR3p/P1P1r2P/1P4P1/5PK1/8 w - - 0 40",
    "8/2k5/8/1P1p4/3P4/5K2/6p1/8 w - - 0 1",
    "8/3k4/1n6/3B4/8/2K3P1/8/8 b - - 0 60",
]


def random_game(seed, board, plies):
    chance = random.Random(seed)
    moves = []
    for _ in range(plies):
        legal = board.moves()
        if not legal:
            break
        # Castlings and promotions are rare; a random game shall have them all the same.
        move = chance.choice([move for move in legal if move[2] or move[3] is not None] or legal)
        moves.append(board.uci(move))
        board = board.play(move)
    return moves, board


class Positions(engine.EngineTest):
    def board_behind(self, *commands, chess960=False, arena=False):
        player = self.engine(settings=SMALL)
        player.send(f"setoption name UCI_Chess960 value {str(chess960).lower()}")
        if arena:
            player.send("setoption name ArenaChess960 value true")
        player.ready()
        player.send(*commands)
        return player.board()

    def check_game(self, fen, moves, board):
        position = "startpos" if fen == START else f"fen {fen}"
        command = f"position {position} moves {' '.join(moves)}"
        self.assertEqual(self.board_behind(command, chess960=board.chess960), board.fen(), command)

    def test_random_games_arrive_as_they_were_played(self):
        for seed in range(6):
            self.check_game(START, *random_game(seed, Board(), 30 + 20 * seed))
        for seed, fen in enumerate(CHESS960_STARTS):
            self.check_game(fen, *random_game(seed, Board(fen, True), 60))

    def test_games_longer_than_the_state_stack(self):
        moves, board = random_game(12, Board(), 900)
        self.assertGreater(len(moves), 700)
        self.check_game(START, moves, board)

        shuffle = "g1f3 g8f6 f3g1 f6g8".split() * 750
        player = self.ready_engine(settings=SMALL)
        self.check_search(Board(), player.go("depth 5", "startpos moves " + " ".join(shuffle)))
        # The byte that counts the reversible plies wraps, the number of moves does not.
        self.assertEqual(self.board_behind("position startpos moves " + " ".join(shuffle)),
                         "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 184 1501")

        rooks, player = "4k2r/8/8/8/8/8/8/R3K3 w - - 0 1", self.ready_engine(settings=SMALL)
        walk = " ".join("a1a2 h8h7 a2a1 h7h8".split() * 750)
        self.check_search(Board(rooks), player.go("depth 5", f"fen {rooks} moves {walk}"))
        self.assertEqual(player.read_to("result .*"), ["I want to claim a draw by 50-moves-rule!",
                                                       "result 1/2-1/2 {Draw by 50-moves-rule}"])

    def test_the_longest_past_is_seen_by_repetition(self):
        # Black's only legal move leads to a position that has stood on the board twice, behind 700 other plies.
        start = "7k/8/8/8/8/8/P5R1/K7 w - - 0 1"
        board, moves = Board(start), []
        for text in ["a2a3", "h8h7", "g2g1", "h7h8"] + "g1g2 h8h7 g2g1 h7h8".split() * 170 + ["a3a4", "h8h7"]:
            board = board.play(board.find(text))
            moves.append(text)
        for text in "g1g2 h7h8 g2g1 h8h7 g1g2 h7h8 g2g1".split():
            board = board.play(board.find(text))
            moves.append(text)
        self.assertEqual([board.uci(move) for move in board.moves()], ["h8h7"])
        player = self.ready_engine(settings=SMALL)
        self.assertEqual(player.go("depth 5", f"fen {start} moves {' '.join(moves)}").best, "h8h7")
        self.assertEqual(player.read_to("result .*"), ["I want to claim a draw by third-time-repetition!",
                                                       "result 1/2-1/2 {Draw by repetition}"])

    def test_castling_in_every_notation(self):
        short = {"w": "r3k2r/8/8/8/8/8/8/R4RK1 b {} - 1 1", "b": "r4rk1/8/8/8/8/8/8/R3K2R w {} - 1 1"}
        long = {"w": "r3k2r/8/8/8/8/8/8/2KR3R b {} - 1 1", "b": "2kr3r/8/8/8/8/8/8/R3K2R w {} - 1 1"}
        normal, shredder = {"w": "kq", "b": "KQ"}, {"w": "ah", "b": "AH"}
        for side, rank in (("w", "1"), ("b", "8")):
            cases = [(short, "e{0}g{0}", False), (short, "O-O", False), (long, "e{0}c{0}", False),
                     (long, "O-O-O", False), (short, "e{0}g{0}", True), (short, "e{0}h{0}", True),
                     (short, "h{0}d{0}", True), (short, "O-O", True), (long, "e{0}c{0}", True),
                     (long, "e{0}a{0}", True), (long, "a{0}f{0}", True), (long, "O-O-O", True)]
            for expected, text, chess960 in cases:
                start = (OUTER_ROOKS if chess960 else CASTLING_ROOM).format(side)
                rights = (shredder if chess960 else normal)[side]
                board = self.board_behind(f"position fen {start} moves {text.format(rank)}", chess960=chess960)
                self.assertEqual(board, expected[side].format(rights), f"{text} {side} {chess960}")

    def test_castling_as_the_answer(self):
        mate = "fen 2rkr3/2p1p3/8/8/8/8/8/RK6 w A - 0 1"
        player = self.ready_engine("UCI_Chess960 value true", settings=SMALL)
        answer = player.go("depth 5", mate)
        self.assertEqual((answer.best, answer.main_lines[-1]["pv"], answer.score), ("b1a1", "O-O-O", 29999))
        self.assertEqual(player.read_to("result .*"), ["result 1-0 {White mates}"])
        player.send("setoption name ArenaChess960 value true")
        player.read_to("info string Switched Arena Chess 960 mode on!")
        self.assertEqual(player.go("depth 5", mate.replace(" A ", " - ")).best, "O-O-O")

    def test_arena_derives_the_rights_from_the_board(self):
        fen = "rr2k1r1/8/8/8/8/8/8/1RR1K2R w - - 0 1"
        self.assertEqual(self.board_behind(f"position fen {fen}", chess960=True, arena=True).split()[2], "CHbg")
        self.assertEqual(self.board_behind(f"position fen {fen}", chess960=True).split()[2], "-")
        self.assertEqual(self.board_behind("variant fischerandom", "position fen " + OUTER_ROOKS.format("w"))
                         .split()[2], "AHah")

    def test_promotions(self):
        white, black = "8/P7/8/8/8/8/6k1/K7 w - - 0 1", "8/8/8/8/K7/8/1p4k1/8 b - - 0 1"
        for letter, man in (("", "q"), ("q", "q"), ("r", "r"), ("b", "b"), ("n", "n"), ("N", "q"), ("x", "q")):
            self.assertEqual(self.board_behind(f"position fen {white} moves a7a8{letter}"),
                             f"{man.upper()}7/8/8/8/8/8/6k1/K7 b - - 0 1")
            self.assertEqual(self.board_behind(f"position fen {black} moves b2b1{letter}"),
                             f"8/8/8/8/K7/8/6k1/1{man}6 w - - 0 1")
        board = Board("8/8/8/8/8/k7/2p5/K7 b - - 0 1")
        answer = self.ready_engine(settings=SMALL).go("depth 5", f"fen {board.fen()}")
        self.assertRegex(answer.best, "c2c1[qr]")  # both mate

    def test_what_follows_an_illegal_move_is_dropped(self):
        kept = Board()
        for text in ("e2e4", "e7e5"):
            kept = kept.play(kept.find(text))
        for bad in ("e1e3", "e7e5", "e4e5", "e1g1", "O-O", "d7d5", "0000", "xyz", "e2", "i2i4", "e9e4", "a1a1", "e2-e4",
                    "\x01\x02", "K", "e2e4" * 1000):
            command = f"position startpos moves e2e4 e7e5 {bad} g1f3 b8c6"
            self.assertEqual(self.board_behind(command), kept.fen(), bad[:20])
        pinned = "4r1k1/8/8/8/8/8/4N3/4K3 w - - 3 1"
        for bad in ("e2c3", "e1g1"):
            self.assertEqual(self.board_behind(f"position fen {pinned} moves {bad} g8g7"), pinned)
        self.assertEqual(self.board_behind("position startpos moves"), START)
        self.assertEqual(self.board_behind("position startpos moves e2e4", "position startpos "), START)

    def test_fields_that_a_fen_may_lack(self):
        for given in ("4k3/8/8/8/8/8/4P3/4K2R w K - 0 1", "4k3/8/8/8/8/8/4P3/4K2R w K -",
                      "4k3/8/8/8/8/8/4P3/4K2R w K - 0"):
            self.assertEqual(self.board_behind("position fen " + given), "4k3/8/8/8/8/8/4P3/4K2R w K - 0 1")
        for given in ("r3k3/8/8/8/8/8/8/R4K1R b", "r3k3/8/8/8/8/8/8/R4K1R b KQ"):
            for command in ("position fen ", "fen "):
                self.assertEqual(self.board_behind(command + given), "r3k3/8/8/8/8/8/8/R4K1R b - - 0 1")
        self.assertEqual(self.board_behind("fen " + KEPT), KEPT)

    def test_an_unusable_fen_keeps_the_old_position(self):
        bad = ["", "fen", "fen ", "fen  w - - 0 1", "8/8/8/8/8/8/8/8", "nonsense", "startposition",
               "fen 8/8/8/8/8/8/8/8 w - -",
               "fen 4k3/8/8/8/8/8/8/8 w - - 0 1", "fen 8/8/8/8/8/8/8/4K3 w - - 0 1", "fen 4k3/8/8/8/8/8/8/4K3",
               "fen 4k3/8/8/8/8/8/4R3/4K3 w - - 0 1", "fen 4k3/8/8/8/8/8/8 w - - 0 1",
               "fen k3k3/8/8/8/8/8/8/4K3 w - - 0 1", "fen 4k3/8/8/8/8/8/8/KK5K w - - 0 1",
               "fen 4k3/8/8/8/8/8/8/4X3 w - - 0 1", "fen 4k3/8/8/8/8/8/8/4KKKKKKKKKKKKKKKKKKKKKK w - - 0 1",
               "fen QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/8/7k/8/K7 w - - 0 1",
               "fen 4k3/pppppppp/pppppppp/8/8/8/8/4K3 w - - 0 1", "fen " + "/" * 5000, "fen " + "8" * 5000,
               "fen " + "p" * 5000]
        for position in bad:
            self.assertEqual(self.board_behind("position fen " + KEPT, "position " + position), KEPT, position[:40])

    def test_evaluation_and_mirror(self):
        player = self.ready_engine(settings=SMALL)
        player.send("eval")
        self.assertEqual(player.ready(), ["info string eval is: 8"])  # the right to move, everything else in balance

        def evaluation():
            player.send("eval")
            return int(player.read_to("info string eval is: -?[0-9]+")[-1].split()[-1])

        for fen in EVALUATED:
            player.send("position fen " + fen)
            value = evaluation()
            player.send("mirror")
            self.assertEqual(evaluation(), -value, fen)
            player.send("mirror")
            self.assertEqual(evaluation(), value, fen)
        self.assertEqual(self.board_behind("position fen 4k2r/1p6/8/2pP4/8/7N/8/R3K3 w Qk c6 5 1", "mirror"),
                         "r3k3/8/7n/8/2Pp4/8/1P6/4K2R b Kq c3 5 1")


if __name__ == "__main__":
    engine.main()
