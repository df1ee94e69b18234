"""Positions and move lists as interfaces send them; the board is read back through the interrupt handler's line."""

import random
import unittest

import engine
from rules import START, Board
from test_game import CHESS960_STARTS

SMALL = "nHashTables=16\n"
KEPT = "4k3/4p3/8/8/8/8/4P3/4K3 b - - 7 1"


def random_game(seed, board, plies):
    """Prefers castlings and promotions, which pure chance would seldom bring."""
    chance, moves = random.Random(seed), []
    while len(moves) < plies and (legal := board.moves()):
        move = chance.choice([move for move in legal if move[2] or move[3] is not None] or legal)
        moves.append(board.uci(move))
        board = board.play(move)
    return moves, board


class Positions(engine.EngineTest):
    def board_after(self, *commands, options=()):
        player = self.ready_engine(*options, settings=SMALL)
        player.send(*commands)
        return player.board()

    def check_game(self, fen, moves, board):
        options = [f"UCI_Chess960 value {str(board.chess960).lower()}"]
        command = f"position {'startpos' if fen == START else 'fen ' + fen} moves {' '.join(moves)}"
        self.assertEqual(self.board_after(command, options=options), board.fen(), command)

    def test_random_games_arrive_as_they_were_played(self):
        for seed, plies in enumerate((30, 60, 90, 130, 900)):  # the last outgrows the stack of positions
            self.check_game(START, *random_game(seed, Board(), plies))
        for seed, fen in enumerate(CHESS960_STARTS):
            self.check_game(fen, *random_game(seed, Board(fen, True), 60))

    def test_a_search_after_three_thousand_plies(self):
        rooks = "4k2r/8/8/8/8/8/8/R3K3 w - - 0 1"
        walk = " ".join("a1a2 h8h7 a2a1 h7h8".split() * 750)
        player = self.ready_engine(settings=SMALL)
        self.check_search(Board(rooks), player.go("depth 5", f"fen {rooks} moves {walk}"))
        self.assertEqual(player.read_to("result .*"), ["I want to claim a draw by 50-moves-rule!",
                                                       "result 1/2-1/2 {Draw by 50-moves-rule}"])

    def test_castling_and_its_rights_in_chess960(self):
        mate = "fen 2rkr3/2p1p3/8/8/8/8/8/RK6 w A - 0 1"
        player = self.ready_engine("UCI_Chess960 value true", settings=SMALL)
        answer = player.go("depth 5", mate)
        self.assertEqual((answer.best, answer.main_lines[-1]["pv"], answer.score), ("b1a1", "O-O-O", 29999))
        self.assertEqual(player.read_to("result .*"), ["result 1-0 {White mates}"])
        player.send("setoption name ArenaChess960 value true")
        player.read_to("info string Switched Arena Chess 960 mode on!")
        self.assertEqual(player.go("depth 5", mate.replace(" A ", " - ")).best, "O-O-O")
        player.send("position fen rr2k1r1/8/8/8/8/8/8/1RR1K2R w - - 0 1")
        self.assertEqual(player.board().split()[2], "CHbg")
        outer = "position fen r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1"
        self.assertEqual(self.board_after("variant fischerandom", outer).split()[2], "AHah")

    def test_moves_that_are_read_and_moves_that_end_the_list(self):
        pawn, kept = "8/P7/8/8/8/8/6k1/K7 w - - 0 1", Board()
        for letter, man in (("", "Q"), ("r", "R"), ("b", "B"), ("n", "N"), ("N", "Q"), ("x", "Q")):
            self.assertEqual(self.board_after(f"position fen {pawn} moves  a7a8{letter}").split("/")[0], man + "7")
        for text in ("e2e4", "e7e5"):
            kept = kept.play(kept.find(text))
        for bad in ("e1e3", "e7e5", "e1g1", "O-O", "0000", "xyz", "i2i4", "a1a1", "e2-e4", "\x01\x02", "e2e4" * 1000):
            command = f"position startpos moves e2e4 e7e5 {bad} g1f3 b8c6"
            self.assertEqual(self.board_after(command), kept.fen(), bad[:20])
        self.assertEqual(self.board_after("position startpos moves e2e4", "position startpos "), START)

    def test_an_unusable_position_keeps_the_old_one(self):
        for position in ("", "fen", "fen ", "fen  w - - 0 1", "8/8/8/8/8/8/8/8", "nonsense", "startposition",
                         "fen 8/8/8/8/8/8/8/8 w - -", "fen 4k3/8/8/8/8/8/4R3/4K3 w - - 0 1", "fen " + "/" * 5000):
            self.assertEqual(self.board_after("fen " + KEPT, "position " + position), KEPT, position[:40])

    def test_evaluation_and_mirror(self):
        def evaluation(*commands):
            player.send(*commands, "eval")
            return int(player.read_to("info string eval is: -?[0-9]+")[-1].split()[-1])

        player = self.ready_engine(settings=SMALL)
        self.assertEqual(evaluation(), 8)  # the right to move, everything else in balance
        for fen in ("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                    "8/5pk1/1p4p1/p1pR3p/P1P1r2P/1P4P1/5PK1/8 w - - 0 40", "8/2k5/8/1P1p4/3P4/5K2/6p1/8 w - - 0 1"):
            value = evaluation("position fen " + fen)
            self.assertEqual((evaluation("mirror"), evaluation("mirror")), (-value, value), fen)
        player.send("position fen 4k2r/1p6/8/2pP4/8/7N/8/R3K3 w Qk c6 5 1", "mirror")
        self.assertEqual(player.board(), "r3k3/8/7n/8/2Pp4/8/1P6/4K2R b Kq c3 5 1")


if __name__ == "__main__":
    engine.main()
