"""Whole games, each move, line and result judged by rules that share nothing with the engine."""

import random
import unittest

import engine
from rules import START, Board, perft

# Leaf counts as chess programmers have published and confirmed them for years.
PERFT = [
    (START, False, 3, 8902),
    ("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", False, 2, 2039),
    ("8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", False, 3, 2812),
    ("r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", False, 3, 9467),
    ("n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1", False, 3, 9483),
    ("bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9", True, 3, 12189),
    ("2nnrbkr/p1qppppp/8/1ppb4/6PP/3PP3/PPP2P2/BQNNRBKR w HEhe - 1 9", True, 2, 807),
    ("qbbnnrkr/2pp2pp/p7/1p2pp2/8/P3PP2/1PPP1KPP/QBBNNR1R w hf - 0 9", True, 3, 13440),
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

    def play(self, fen, players, searches, opening, chess960=False):
        """From a few given moves on to the end of the game; checks every answer and the engine's own verdict."""
        board = Board(fen, chess960)
        moves, earlier = [], []
        for text in opening:
            earlier.append(board.identity())
            board = board.play(board.find(text))
            moves.append(text)
        while True:
            player, search = players[len(moves) % 2], searches[len(moves) % 2]
            answer = player.go(search, f"fen {fen} moves {' '.join(moves)}")
            earlier.append(board.identity())
            board = self.check_search(board, answer)
            moves.append(answer.best)
            verdict = board.end(earlier)
            if verdict:
                break
        lines = player.read_to(r"result .*")
        result = {"White mates": "1-0", "Black mates": "0-1"}.get(verdict, "1/2-1/2")
        self.assertEqual(lines[-1], f"result {result} {{{verdict}}}")
        claims = {"Draw by 50-moves-rule": ["I want to claim a draw by 50-moves-rule!"],
                  "Draw by repetition": ["I want to claim a draw by third-time-repetition!"]}
        self.assertEqual(lines[:-1], claims.get(verdict, []))

    def random_opening(self, seed, board, plies=4):
        chance = random.Random(seed)
        moves = []
        for _ in range(plies):
            moves.append(board.uci(chance.choice(board.moves())))
            board = board.play(board.find(moves[-1]))
        return moves

    def test_games_between_two_engines(self):
        for seed in range(2):
            players = [self.ready_engine(settings="nHashTables=16384\n") for _ in range(2)]
            for player in players:
                player.send("ucinewgame")
            self.play(START, players, ("depth 5", "depth 6"), self.random_opening(seed, Board()))
            for player in players:
                self.assertEqual(player.quit(), 0)

    def test_a_game_by_the_clock(self):
        player = self.ready_engine(settings="nHashTables=16384\n")
        search = "wtime 400 btime 400 winc 5 binc 5"
        self.play(START, (player, player), (search, search), self.random_opening(7, Board()))

    def test_a_game_of_chess960(self):
        for seed, fen in enumerate(CHESS960_STARTS):
            player = self.ready_engine("UCI_Chess960 value true", settings="nHashTables=16384\n")
            opening = self.random_opening(seed, Board(fen, True))
            self.play(fen, (player, player), ("depth 5", "depth 5"), opening, chess960=True)


if __name__ == "__main__":
    engine.main()
