"""The matrices of learnfile2matrix byte for byte. A side is counted as White; for Black the board is turned round."""

import pathlib
import random
import resource

import engine
from rules import JUMPS, SLIDES, START, Board, ray, step

# Material of which 5200 make no ending yet; a queen takes 500 off that.
WORTH = dict(zip("PNBRQpnbrq", [100, 370, 381, 580, 1160 + 500] * 2))
# What a square is worth to a man that reaches it, from a8 to h1.
REACH = {"n": "2446644202466420246886422466664200466400024444200024420000200200",
         "b": "4444444404444440246886422466664200666600044664400422224000000000",
         "r": "4468864444688644224664222246642222244222222442220024420000244200",
         "q": "2222222224444442024444200024420000244200002222000022220000000000"}
# Kings on the fifth rank, early and late; two queens with 4200 and 4300; pawns doubled, lonely, passed; many queens.
SHAPES = """r1bq1rk1/ppp2ppp/2n5/4p3/3PK3/2N2N2/PPP2PPP/R1BQ1B1R b - - 0 1
rnbq1bnr/pppppppp/8/4K3/8/3k4/PPPPPPPP/RNBQ1BNR b - - 0 1
3qk2r/pppppp2/8/4K3/8/8/PPPPPPP1/3Q4 b - - 0 1\n3qk2r/ppppppp1/8/4K3/8/8/PPPPPPP1/3Q4 b - - 0 1
4k3/P1p2P2/2p4p/p3P1pP/P7/2P5/2P2P2/4K3 b - - 0 1\nQQQQQQQQ/Q5k1/8/8/8/6r1/p6K/8 b - - 0 1""".splitlines()
REFUSED = ["no position", "8/8/8/8/8/8/8/8 w - - 0 1", " ", "4k3/8/8/8/8/8/8/P3K3 w - - 0 1", START.replace("K", "k"),
           START.replace("/8", "", 1), START.replace("PPP/", "PPPP/"), START.replace("/8/", "/7x/"),
           START.split()[0], "4k3/8/8/8/8/8/4R3/4K3 w - - 0 1"]
NUMBERS = {"150": 150, "-150": -150, "151": None, "-151": None, "9" * 20: None, " 7": 7, "+5": 5, "12cp": 12, "": 0}


def columns(men, king_squares):
    on = [sum(men[file + 8 * rank] == "P" for rank in range(8)) for file in range(8)]
    near = [range(max(file - 1, 0), min(file + 2, 8)) for file in range(8)]
    passed = lambda at: not any(men[file + 8 * rank] == "p" for file in near[at % 8] for rank in range(at // 8 + 1, 8))
    reached = []
    for at, kind in ((at, man.lower()) for at, man in enumerate(men) if man and man in "NBRQ"):
        reached += [(kind, at)] * (2 if kind == "q" else 1)
        for way in JUMPS.get(kind, ()) + SLIDES.get(kind, ()):
            for to in ray(at, way) if kind in SLIDES else {step(at, way)} - {None}:
                reached += [(kind, to)] if men[to] is None or men[to].islower() else []
                if men[to]:
                    break
    guarded = {step(at, (aside, -1)) for at in range(64) if men[at] == "p" for aside in (-1, 1)}
    return [*(man == "P" for man in men[8:56]), *(man == kind for kind in "NBRQ" for man in men),
            *(man == "K" for man in men[:king_squares]), *(men[at] == "P" and passed(at) for at in range(8, 48)),
            *(max(number - 1, 0) for number in on),
            *(on[file] * (sum(on[other] for other in near[file]) == on[file]) for file in range(8)),
            sum(int(REACH[kind][at ^ 56]) for kind, at in reached if at not in guarded)]


class LearnFile(engine.EngineTest):
    def convert(self, player, text, *answer, names="learn matrix"):
        home = pathlib.Path(player.directory)
        (home / "learn").write_text(text)
        player.send(f"learnfile2matrix {names}")
        self.assertEqual((player.ready(), list(home.glob("*.new"))), ([*answer], []))
        return [path.read_text() for path in (home / "matrix.mg", home / "matrix.eg")]

    def test_a_stop_leaves_nothing_behind(self):
        player = self.ready_engine()
        home = pathlib.Path(player.directory)
        (home / "learn").write_text(f"{START}\n0\n" * 300000)
        player.send("learnfile2matrix learn matrix")
        engine.wait_until((home / "matrix.eg.new").exists, "the begin")
        player.send("?")
        self.assertEqual(player.ready(), ["Stopped: no matrix has been written."])
        self.assertEqual(list(home.glob("matrix*")), [])

    def test_rows(self):
        player, chance, board, pairs, rows = self.ready_engine(), random.Random(1), Board(), [], ([], [])
        for shape, (text, number) in zip(SHAPES * 50, [*NUMBERS.items(), *((str(n), n) for n in range(-140, 150))]):
            board = board.play(chance.choice(board.moves())) if board.moves() else Board()
            for fen in (shape, board.fen()):
                pairs.append(fen + chance.choice(["\n", "\r\n"]) + text)
                men = Board(fen).men
                late = sum(WORTH.get(man, 0) for man in men) <= 5200
                sides = men, [man and man.swapcase() for man in (men[at ^ 56] for at in range(64))]
                white, black = (columns(view, 64 if late else 32) for view in sides)
                if number is not None:
                    rows[late].append(" ".join(f"{a - b}" for a, b in zip(white, black)) + f" {number}\n")
        pairs[50:50] = [fen + "\n1" for fen in REFUSED]
        for end in ("\n", "", f"\n\n{START}\n3\n", f"\r\n\r\n{START}\r\n3", f"\n{START}\n"):
            matrices = self.convert(player, "\n".join(pairs) + end,
                                    f"Skipped {len(REFUSED)} positions whose FEN cannot be read.")
            for matrix, lines, width in zip(matrices, rows, (393, 425)):
                self.assertEqual(matrix, f"{len(lines)} {width}\n" + "".join(lines))
        self.assertEqual(self.convert(player, ""), ["0 393\n", "0 425\n"])

    def test_failures_keep_what_stands(self):
        player = self.ready_engine()
        home, closed = pathlib.Path(player.directory), "Could not open learn file or matrix file!"
        player.send("go infinite")
        search = player.read_to("info depth 3 .*")
        player.send("learnfile2matrix", "position fen " + SHAPES[0])
        self.assertEqual(player.answer(search).strings + player.ready(), [closed])
        before = self.convert(player, SHAPES[2] + "\n1\n")
        (home / "folder.eg").mkdir()
        for names in ("", "learn", "nothing matrix", "folder.eg matrix", "learn nowhere/matrix", "learn folder"):
            self.assertEqual(self.convert(player, "", closed, names=names), before)
        limits = resource.prlimit(player.process.pid, resource.RLIMIT_FSIZE)
        resource.prlimit(player.process.pid, resource.RLIMIT_FSIZE, (100, limits[1]))
        for shape in (SHAPES[0], SHAPES[2]):
            text = f"{shape}\n3\n"
            self.assertEqual(self.convert(player, text, "Error: the matrix files could not be written!"), before)
        self.assertEqual(player.board(), SHAPES[0])


if __name__ == "__main__":
    engine.main()
