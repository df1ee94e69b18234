"""Commands at every moment of a search, also under the thread sanitizer. Seeds are fixed, moments are not."""

import random
import signal
import time

import engine
from rules import Board

# Searched to depth 9, where a stop first counts, within milliseconds.
POSITIONS = [
    "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - - 0 1",
    "8/8/4k3/8/8/3K4/4P3/8 w - - 0 1",
    "8/5pk1/6p1/8/8/6P1/5PK1/8 b - - 0 1",
    "8/8/8/3k4/8/3K4/3R4/8 w - - 0 1",
    "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
]
SEARCHES = ["infinite", "ponder wtime 60 btime 60", "ponder wtime 9000 btime 9000", "ponder depth 6", "depth 5",
            "depth 12", "wtime 40 btime 40", "wtime 2000 btime 2000 winc 5 binc 5", "movetime 50", "ponder infinite"]

GAME_COMMANDS = """
    ?|?|force|go|go|undo|remove|analyze|exit|hard|hard|easy|ponder e7e5|ponder a2a3|ponder O-O|ponder i9|new|time 5
    time 300|time 0|level 0 0 0|level 0 0:01 0|level 40 0:02 1|level 0 1 0|sd 3|sd 12|sd 0|computer|fritz|eval|isready
    mirror|variant fischerandom|edit~#~Ke1~Ra1~Pa2~c~Ke8~Pb7~.|edit~Qd4~.|edit~c~#~.|e2e4|e7e5|g1f3|b8c6|d2d4|O-O
    O-O-O|e1g1|a2a4|a7a5|h2h3|h7h6|a1a1|x
""".strip().replace("\n    ", "|").split("|")


class Moments(engine.EngineTest):
    def check_move(self, player, board, moment):
        """The answer that comes next is a legal one."""
        line = player.read_to("(?:best)?move .*")[-1]
        self.assertTrue(board.find(line.split()[1]), f"{line} on {board.fen()}, {moment}")

    def start_search(self, player, chance, searches):
        board = Board(chance.choice(POSITIONS))
        player.send(f"position fen {board.fen()}", "go " + chance.choice(searches))
        return board


class StressThreads(Moments):
    def test_commands_at_random_moments(self):
        """Each `go` gets exactly one answer, whatever comes in at whatever moment of a deep or shallow search."""
        for seed in range(8):
            chance = random.Random(seed)
            player = self.ready_engine(settings=("nHashTables=16384\nnPawnTables=1024\n",
                                                 "nHashTables=16\nnPawnTables=16\nquickPlay=4\n")[seed % 2])
            for number in range(50):
                board = self.start_search(player, chance, SEARCHES)
                for _ in range(chance.randint(0, 3)):
                    time.sleep(chance.choice((0, 0, chance.random() * 0.01)))
                    player.send(chance.choice(("isready", "ponderhit", "eval", "isready", "setoption name Dummy2 value 1",
                                               "setoption name ClearHash", "mirror", "fen 8/8/8/8/8/k7/8/K7 w - -")))
                time.sleep(chance.choice((0, 0, chance.random() * 0.02)))
                # A new position ends the old search with its answer; it must not spoil that answer.
                player.send(chance.choice(("stop", "stop", "position startpos", "setoption name Hash value 1",
                                           "ucinewgame\nstop")))
                self.check_move(player, board, (seed, number))
                if chance.random() < 0.5:
                    player.send("setoption name Dummy3 value 1")
                self.assertFalse([line for line in player.ready() if line.startswith("bestmove")])
            self.assertEqual(player.quit(), 0)

    def test_the_next_command_in_the_instant_of_the_answer(self):
        player = self.ready_engine(settings="nHashTables=64\n")
        for number in range(400):
            board = Board(POSITIONS[number % 4])
            player.send(f"position fen {board.fen()}", "go depth 5" if number % 3 else "go movetime 1")
            self.check_move(player, board, number)
        # Then a whole session in one write.
        searches = ("depth 5", "infinite", "ponder", "movetime 5")
        player.send(*(f"position fen {POSITIONS[number % 4]}\ngo {searches[number % 4]}" for number in range(100)),
                    "isready", "stop")
        for number in range(100):
            self.check_move(player, Board(POSITIONS[number % 4]), f"session {number}")
        self.assertEqual(player.quit(), 0)

    def test_game_commands_at_random_moments(self):
        for seed in range(8):
            chance = random.Random(20 + seed)
            mode = ("xboard", "console")[seed % 2]
            settings = "nHashTables=64\nnPawnTables=16\n" + "quickPlay=3\n" * (seed > 3)
            player = self.engine(words=(mode,), settings=settings)
            for _ in range(150):
                player.send(*chance.choice(GAME_COMMANDS).split("~"))
                if chance.random() < 0.2:
                    player.send(f"fen {chance.choice(POSITIONS)}")
                time.sleep(chance.choice((0, 0, 0, chance.random() * 0.01)))
            # Only here all that came before is known to be answered.
            player.send(".", "force", "new", "force", f"fen {POSITIONS[2]}", "sd 5",
                        "benchmark 0" if mode == "xboard" else "fen x")
            player.read_to("Benchmark .*|Error: this is no legal position.*")
            player.send("go")
            self.check_move(player, Board(POSITIONS[2]), seed)
            self.assertEqual(player.quit(), 0)

    def test_moves_in_the_instant_of_the_answer(self):
        """No move that a side to move may make is lost, whether the engine ponders on it or not."""
        for seed in range(4):
            chance = random.Random(seed)
            clock = ("sd 2", "level 0 0:01 0", "sd 5", "level 0 1 0")[seed]
            player = self.engine(words=("xboard", clock), settings="nHashTables=64\nnPawnTables=16\n")
            for _ in range(8):
                board, expected = Board(), None
                player.send("new", clock, chance.choice(("hard", "easy")))
                for _ in range(15):
                    move = expected and board.find(expected, Board.line_text)
                    if not move or chance.random() < 0.4:
                        move = chance.choice(board.moves())
                    player.send("time 20", board.line_text(move))
                    board = board.play(move)
                    if not board.end([]):
                        lines = player.read_to("move .*")
                        best = board.find(lines[-1].split()[1], Board.line_text)
                        self.assertTrue(best, f"{lines[-1]} on {board.fen()}")
                        board, expected = board.play(best), (lines[-2].split("mainLine: ")[1].split() + [None] * 2)[1]
                    if board.end([]):
                        break
            self.assertEqual(player.quit(), 0)

    def test_the_end_at_random_moments(self):
        chance = random.Random(5)
        for end in ("quit", "input", signal.SIGTERM, signal.SIGINT) * 10:
            player = self.ready_engine(settings="nHashTables=1024\n")
            self.start_search(player, chance, SEARCHES)
            time.sleep(chance.random() * 0.02)
            code = player.end(end)
            answers = sum(line.startswith("bestmove") for line in player.read_all())
            self.assertEqual((player.wait(), answers), (code, 1 if end == "input" else answers))


if __name__ == "__main__":
    engine.main()
