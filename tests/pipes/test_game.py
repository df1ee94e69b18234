"""Whole games, each move, line and result judged by rules that share nothing with the engine."""

import random
import unittest

import engine
from rules import START, Board, perft

# Published leaf counts.
PERFT = [
    ("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", False, 2, 2039),
    ("8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", False, 3, 2812),
    ("r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", False, 3, 9467),
    ("n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1", False, 3, 9483),
    ("bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9", True, 3, 12189),
    ("2nnrbkr/p1qppppp/8/1ppb4/6PP/3PP3/PPP2P2/BQNNRBKR w HEhe - 1 9", True, 2, 807),
]

CHESS960_STARTS = [
    "bbqnnrkr/pppppppp/8/8/8/8/PPPPPPPP/BBQNNRKR w HFhf - 0 1",
    "rkbnqrbn/pppppppp/8/8/8/8/PPPPPPPP/RKBNQRBN w FAfa - 0 1",
    "qrknbbnr/pppppppp/8/8/8/8/PPPPPPPP/QRKNBBNR w HBhb - 0 1",
]


class Games(engine.EngineTest):
    def test_the_judge_knows_the_rules(self):
        for fen, chess960, depth, leaves in PERFT:
            self.assertEqual(perft(Board(fen, chess960), depth), leaves, fen)

    def play(self, seed, board, players, searches):
        """Four random moves, then the engines to the end of the game. Checks every answer and the verdict."""
        chance, fen, moves, earlier, verdict = random.Random(seed), board.fen(), [], [], None
        while not verdict:
            earlier.append(board.identity())
            if len(moves) < 4:
                moves.append(board.uci(chance.choice(board.moves())))
                board = board.play(board.find(moves[-1]))
                continue
            player = players[len(moves) % 2]
            answer = player.go(searches[len(moves) % 2], f"fen {fen} moves {' '.join(moves)}")
            board = self.check_search(board, answer)
            moves.append(answer.best)
            verdict = board.end(earlier)
        result = {"White mates": "1-0", "Black mates": "0-1"}.get(verdict, "1/2-1/2")
        claims = {"Draw by 50-moves-rule": ["I want to claim a draw by 50-moves-rule!"],
                  "Draw by repetition": ["I want to claim a draw by third-time-repetition!"]}
        self.assertEqual(player.read_to("result .*"), [*claims.get(verdict, []), f"result {result} {{{verdict}}}"])

    def test_games(self):
        clock = "wtime 400 btime 400 winc 5 binc 5"
        for seed, searches in ((0, ("depth 5", "depth 6")), (1, ("depth 5", "depth 6")), (7, (clock, clock))):
            players = [self.ready_engine(settings="nHashTables=16384\n") for _ in set(searches)]
            self.play(seed, Board(), players * 2, searches)
        for seed, fen in enumerate(CHESS960_STARTS):
            player = self.ready_engine("UCI_Chess960 value true", settings="nHashTables=16384\n")
            self.play(seed, Board(fen, True), (player, player), ("depth 5", "depth 5"))


if __name__ == "__main__":
    engine.main()
