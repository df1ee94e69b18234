"""The UCI protocol: identification, options, searches of every kind and their lines."""

import re
import signal
import time
import unittest

import engine
from rules import START, Board

IDENTIFICATION = """\
id name Valku 4.00
id author Ferrin
option name Hash type spin default 1 min 1 max 2048
option name UCI_SetPositionValue type string
option name UCI_Chess960 type check default false
option name Ponder type check default false
option name NalimovPath type string default <empty>
option name NalimovCache type spin default 1 min 1 max 32
option name TBDistance type spin default 8 min 1 max 99
option name TwoKnightsMalus type spin default 100 min 25 max 400
option name PairOfBishops type spin default 100 min 25 max 400
option name PawnValue type spin default 100 min 25 max 400
option name KnightValue type spin default 100 min 25 max 400
option name BishopValue type spin default 100 min 25 max 400
option name RookValue type spin default 100 min 25 max 400
option name QueenValue type spin default 100 min 25 max 400
option name BestBookMovesOnly type check default true
option name KingSafety type spin default 100 min 1 max 999
option name TimeUsage type spin default 100 min 50 max 400
option name PreserveHash type check default true
option name WriteLog type check default false
option name CPUs type spin default 1 min 1 max 128
option name ClearHash type button
uciok
""".splitlines()

MIDDLE_GAME = "r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2QK2R w KQ - 4 8"
PAWN_ENDING = "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - - 0 1"
MATE_IN_ONE = "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1"


def report(pawn=100, knight=370, bishop=381, rook=580, queen=1160, e1=381, e2=2901, bish=35, knights=6, tbd=8, fai=150,
           phash=1, log=0, ksft=100):
    """The report of the settings, by default that of an untouched engine."""
    return [f"info string pawn = {pawn} ; knight = {knight}; bishop = {bishop}; rook = {rook}; queen = {queen}; "
            f"e1 = {e1}; e2 = {e2}; bish = {bish}; 2knights = {knights}; tbd = {tbd}; fai = {fai}; cpus = 1; "
            f"phash = {phash}; log = {log}", f"ksft = {ksft};"]


class Start(engine.EngineTest):
    def test_identification_and_the_lines_of_the_start(self):
        player = self.engine(words=("uci", "isready"))
        lines = player.read_to("readyok")
        self.assertEqual(lines[:len(IDENTIFICATION)], IDENTIFICATION)
        rest = [line for line in lines[len(IDENTIFICATION):] if line != "No opening book found..."]
        self.assertRegex(rest[0], r"^info string Create new hashtable with id \d+, size = 2097152$")
        self.assertEqual(rest[1:], ["info string TBPath is <empty>, including 0-men TBs.", "readyok"])
        player.send("uci", "xboard", "no such word", "", " isready", "isready ")
        self.assertEqual(player.ready(), [])

    def test_any_argument_fixes_the_protocol_without_identification(self):
        player = self.engine("whatever", words=("uci", "position startpos", "go depth 5"))
        player.started()
        self.check_search(Board(), player.answer())


class LargeTable(engine.EngineTest):
    """The work that a large hash table makes is not part of a search, and the end does not wait for it."""

    BLOCKED = "8/8/k1p1p1p1/p1P1P1P1/P1K5/8/8/8 w - - 0 1"  # a few thousand positions, however deep

    def table_memory(self, player, field):
        """A field of the kernel's account of the shared table, in bytes."""
        with open(f"/proc/{player.process.pid}/smaps") as file:
            return int(re.search(rf"/SYSV.*\n(?:[A-Z].*\n)*?{field}: +(\d+) kB", file.read())[1]) * 1024

    def test_a_new_table_is_in_memory_before_the_engine_is_ready(self):
        player = self.ready_engine()
        for buckets in (2097152, 1048576):
            self.assertEqual(self.table_memory(player, "Rss"), buckets * 48)
            player.set("Hash value 64")

    def test_no_search_pays_for_the_preparation_of_the_table(self):
        for preserve in ("true", "false"):
            player = self.ready_engine("Hash value 64", f"PreserveHash value {preserve}")
            for search in range(3):
                try:
                    with open(f"/proc/{player.process.pid}/clear_refs", "w") as file:
                        file.write("1\n")  # forgets which pages have been touched
                except OSError as fault:
                    self.skipTest(f"the kernel does not count touched pages: {fault}")
                player.send("position fen " + self.BLOCKED, "go infinite")
                player.read_to("info depth 9 .*")
                touched, whole = (self.table_memory(player, field) for field in ("Referenced", "Rss"))
                self.assertLess(touched, whole / 2, (preserve, search))
                player.send("stop")
                player.answer()
                self.assertEqual(player.ready(), [])

    def test_the_end_comes_while_the_table_is_prepared(self):
        for end in ("quit", "input", signal.SIGTERM):
            player = self.ready_engine("Hash value 1024", "PreserveHash value false")
            player.go("depth 6", "startpos")
            self.assertEqual(player.end(end), player.wait())


class Options(engine.EngineTest):
    def test_every_option_that_reports(self):
        cases = [
            ("PawnValue", 133, dict(pawn=133, e2=381 + 2 * (133 + 1160))),
            ("PawnValue", "rubbish", dict(pawn=0, e2=2701)),
            ("PawnValue", 401, dict(pawn=401, e2=3503)),
            ("KnightValue", 109, dict(knight=403, e1=403, e2=2923)),
            ("BishopValue", 50, dict(bishop=190, e1=370, e2=2890)),
            ("RookValue", 25, dict(rook=145)),
            ("QueenValue", 99, dict(queen=1148, e2=381 + 2 * 1248)),
            ("PairOfBishops", 25, dict(bish=8)),
            ("TwoKnightsMalus", 150, dict(knights=9)),
            ("KingSafety", 250, dict(ksft=250)),
            ("TBDistance", 123456789, dict(tbd=123456789)),
            ("TimeUsage", 400, dict(fai=37)),
            ("PreserveHash", "false", dict(phash=0)),
            ("WriteLog", "true", dict(log=1)),
        ]
        standard = {"PreserveHash": "true", "WriteLog": "false", "TBDistance": 8}
        player = self.ready_engine()
        for name, value, changes in cases:
            self.assertEqual(player.set(f"{name} value {value}"), report(**changes), f"{name} {value}")
            self.assertEqual(player.set(f"{name} value {standard.get(name, 100)}"), report(), name)

    def test_options_that_say_nothing(self):
        player = self.ready_engine()
        player.send("setoption", "setoption name")
        self.assertEqual(player.set(
            "CPUs value 1", "Ponder value true", "UCI_Chess960 value false", "BestBookMovesOnly value false",
            "ClearHash", "Dummy2 value 7", "Dummy3 value 7", "ReactionOnShowEval value true", "no such option value 1",
            "pawnvalue value 50", "PawnValue  value 50", "value", "", "UCI_SetPositionValue value "), [])

    def test_options_that_leave_a_search_alone(self):
        player = self.ready_engine()
        player.send("go infinite")
        seen = player.set("Ponder value true", "BestBookMovesOnly value false", "Dummy2 value 7", "no such option", "",
                          "ReactionOnShowEval value true", "WriteLog value true", "PreserveHash value true")
        self.assertEqual(sum(line.startswith("ksft") for line in seen), 2)
        self.assertFalse([line for line in seen if line.startswith("bestmove")])
        player.send("setoption name PawnValue value 100")  # this one the search reads
        player.read_to("bestmove .*")

    def test_options_with_texts_of_their_own(self):
        player = self.ready_engine()
        self.assertEqual(player.set("ArenaChess960 value true", "ArenaChess960 value false"),
                         [f"info string Switched Arena Chess 960 mode {state}!" for state in ("on", "off")])
        self.assertEqual(player.set("NalimovCache value 4", "NalimovCache value 0"),
                         ["NalimovCache received: 4", "new TB-cache = 4 MB",
                          "NalimovCache received: 0", "new TB-cache = 4 MB"])
        self.assertEqual(player.set("NalimovPath value /no such/folder")[:3],
                         ["NalimovPath received: /no such/folder", "new NalimovPath = /no such/folder",
                          "TB-cache = 4 MB"])

    def test_hash_sizes(self):
        player = self.engine()
        self.assertEqual(player.started()[1], 2097152)
        # The same number of buckets changes nothing, and so makes no new table.
        for value, buckets in ((1, [16384]), (64, [1048576]), (3, [65536]), (0, [1]), (-3, []), ("", []),
                               ("no number", []), (2, [32768])):
            tables = map(engine.NEW_TABLE.fullmatch, player.set(f"Hash value {value}"))
            self.assertEqual([int(table[2]) for table in tables], buckets)
            answer = player.go("depth 6", "startpos")
            self.check_search(Board(), answer)
            self.assertLessEqual(max(int(line["hashfull"]) for line in answer.main_lines), 1000)
        self.assertRegex(player.set("Hash")[0], "size = 1$")

    def test_weights_reach_the_evaluation(self):
        player = self.ready_engine()
        for name, value, fen, least, most in (
                ("QueenValue", 75, "rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", -290, -290),
                ("KingSafety", 400, "r1b2rk1/ppp2p1p/8/4q3/8/2NB3Q/PPP2PPP/4RRK1 w - - 0 1", 1, 1000)):
            before = player.evaluation("position fen " + fen)
            change = player.evaluation(f"setoption name {name} value {value}") - before
            self.assertTrue(least <= change <= most, (name, change))
            self.assertEqual(player.evaluation(f"setoption name {name} value 100"), before)

    def test_an_evaluation_during_a_search_leaves_it_alone(self):
        position, lines = f"position fen {START.replace('QKB', '1KB')}", []
        calm, asked = self.ready_engine(), self.ready_engine()
        value = calm.evaluation(position)
        asked.send(position, "go depth 12")
        for _ in range(50):
            asked.send("eval")
            lines += asked.read_to("info string eval is: .*")
            shown = lines.pop()
            if lines and lines[-1].startswith("bestmove"):
                break
            self.assertEqual(shown, f"info string eval is: {value}")
        else:
            lines += asked.read_to("bestmove .*")
        self.assertEqual(engine.Answer(lines).without_times(), calm.go("depth 12").without_times())

    def test_tables_between_searches(self):
        def nodes(player):
            return player.go("depth 8", f"fen {MIDDLE_GAME}").nodes

        fresh, player = nodes(self.ready_engine()), self.ready_engine()
        self.assertEqual(nodes(player), fresh)
        self.assertLess(nodes(player), fresh // 2)
        player.set("ClearHash")
        self.assertEqual(nodes(player), fresh)
        player.set("PreserveHash value false")
        self.assertGreater(nodes(player), fresh // 2)

    def test_position_values(self):
        fen = "4k3/8/8/3q4/8/8/P5P1/3RK3 w - - 0 1"
        reply = "8/4k3/8/3R4/8/8/P5P1/4K3 w - - 1 2"  # after d1d5 e8e7
        player = self.ready_engine(settings="nHashTables=16384\n")
        given, cleared = f"UCI_SetPositionValue value -2500 {reply}", f"UCI_SetPositionValue value clear {reply}"
        for options, takes in (
                ([], True), (["ClearHash", given], False), (["ClearHash"], False), ([cleared, "ClearHash"], True),
                (["ClearHash", given], False), (["UCI_SetPositionValue value clearall", "ClearHash"], True)):
            player.set(*options)  # ClearHash leaves values that the user has given
            self.assertEqual(player.go("depth 6", f"fen {fen}").best == "d1d5", takes, options)
        player.send(f"position fen {fen}")
        player.set(f"UCI_SetPositionValue value 10 {START}", "UCI_SetPositionValue value 10 rubbish",
                   "UCI_SetPositionValue value clear")
        self.assertEqual(player.board(), fen)  # the game stays what it was


class Searches(engine.EngineTest):
    def test_a_search_of_fixed_depth(self):
        player = self.ready_engine()
        for arguments, depth in (("depth 7", 7), ("depth 3", 5), ("depth -4", 5), ("depth x", 5), ("showeval", 0)):
            answer = player.go(arguments, "startpos")
            self.check_search(Board(), answer)
            self.assertEqual((answer.depth, answer.strings), (depth, []))
            for iteration in range(2, depth + 1):
                numbers = [int(move["number"]) for move in answer.root_moves if int(move["depth"]) == iteration]
                self.assertEqual((numbers[:20], set(numbers)), (list(range(1, 21)), set(range(1, 21))))

    def test_the_report_agrees_with_itself(self):
        # A check that costs the queen after four plies looks good until then, and a quiet sacrifice looks bad.
        fens = (MIDDLE_GAME, PAWN_ENDING, START, "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1",
                "r1b1kb1r/pppp1ppp/2n2n2/4p2q/2B1P3/2N2N2/PPPP1PPP/R1BQ1RK1 w kq - 6 6")
        answers = [self.ready_engine("Hash value 1").go("depth 9", f"fen {fen}") for fen in fens]
        self.assertTrue(any(line["bound"] for answer in answers for line in answer.main_lines))
        self.assertTrue(any(answer.fail_lows for answer in answers))
        for fen, answer in zip(fens, answers):
            self.check_search(Board(fen), answer)
            for line in answer.main_lines:
                elapsed, nodes, rate = (int(line[field]) for field in ("time", "nodes", "nps"))
                self.assertLessEqual(nodes * 1000 // (elapsed + 1), rate)
                self.assertLessEqual(rate, nodes * 1000 // max(elapsed, 1))
                self.assertEqual(line["tbhits"], "0")
            for field in ("depth", "time", "nodes", "seldepth"):
                values = [int(line[field]) for line in answer.main_lines]
                self.assertEqual(values, sorted(values), field)
            last = answer.main_lines[-1]
            self.assertIsNone(last["bound"])
            self.assertEqual([answer.best, answer.ponder], (last["pv"].lower().split() + [None])[:2])
            self.assertGreater(int(last["hashfull"]), 0)

    def test_clock(self):
        black, forced = PAWN_ENDING.replace(" w ", " b "), "7k/8/8/8/8/8/8/K5R1 b - - 0 1"
        # The arguments; then moves to go, remaining time, increment, schedule and hard limit as reported.
        cases = [
            (PAWN_ENDING, "wtime 300000 btime 1 winc 0 binc 0", "25 300.00 0.00 12.00 120.00"),
            (black, "wtime 1 btime 60000 winc 5 binc 2000", "25 60.00 2.00 4.40 24.00"),
            (PAWN_ENDING, "wtime 60000 btime 60000 movestogo 10", "13 60.00 0.00 4.62 24.00"),
            (PAWN_ENDING, "wtime 60000 btime 60000 movestogo 100", "25 60.00 0.00 2.40 24.00"),
            (PAWN_ENDING, "wtime 4000 btime 4000 movestogo 1", "5 4.00 0.00 0.40 0.80"),
            (PAWN_ENDING, "wtime 3000 winc 10000", "25 3.00 10.00 0.50 1.00"),
            # A sixth of the clock, for the increment is too large to halve.
            (PAWN_ENDING, "wtime 4000 winc 11 movestogo 1", "5 4.00 0.01 0.67 1.33"),
            (PAWN_ENDING, "wtime 30000", "25 30.00 0.00 1.20 2.40"),  # twice the schedule, not 40 percent of the clock
            (PAWN_ENDING, "wtime 30010", "25 30.01 0.00 1.20 12.00"),
            (PAWN_ENDING, "wtime 6000 winc 1000", "25 6.00 1.00 1.00 2.00"),
            (PAWN_ENDING, "wtime 6001 winc 10", "25 6.00 0.01 0.25 2.40"),
            (forced, "btime 100000", "25 100.00 0.00 0.80 40.00"),
            (PAWN_ENDING, f"wtime {'9' * 20} movestogo {'9' * 20}", "25 2147483.65 0.00 85899.35 858993.46"),
            (PAWN_ENDING, "wtime -5000", "25 -5.00 0.00 -0.83 -1.67"),
        ]
        player = self.ready_engine()
        player.go("movetime 1", "startpos")
        for doubled in (False, True):
            for fen, arguments, figures in cases:
                moves, remaining, increment, schedule, limit = figures.split()
                if doubled:
                    player.send("ucinewgame")
                    schedule = {"0.67": "1.33", "4.62": "9.23", "-0.83": "-1.67", "85899.35": "171798.69"}.get(
                        schedule, f"{2 * float(schedule):.2f}")
                player.send("position fen " + fen, "go " + arguments, "stop")
                answer = player.answer()
                self.assertEqual(answer.strings[:2], [
                    f"info string movesToGo = {moves}; remainingTime = {remaining}; increment = {increment}",
                    f"info string scheduled time={schedule}s, maxtime={limit}s"], f"{arguments} {doubled}")
                self.check_search(Board(fen), answer)

    def test_a_search_ends_by_its_clock(self):
        self.check_search(Board(), self.ready_engine().go("wtime 1500 btime 1500", "startpos"))
        # The hard limit comes right after the first iteration, the schedule would allow many more. Only a machine that
        # has no time for the engine can pass over it, and not every time.
        player = self.ready_engine(settings="factorForAnotherIteration=1\n")
        answers = [player.go("wtime 4900 btime 4900 movestogo 1", f"fen {MIDDLE_GAME}") for _ in range(4)]
        self.assertTrue(any("info string timeout!" in answer.strings for answer in answers))

    def test_without_a_clock_the_first_legal_move_comes_at_once(self):
        player = self.ready_engine()
        self.assertTrue(player.go("depth 5", "startpos").ponder)  # of which nothing must come back below
        for arguments in ("movetime 100000", "nodes 5000000", "mate 3", "", "searchmoves e2e4", "movetime"):
            answer = player.go(arguments, "startpos")
            self.assertEqual((answer.main_lines, answer.root_moves, answer.best, answer.ponder), ([], [], "a2a3", None))
        player.send("position startpos", "gobbledygook")
        self.assertEqual(player.answer().best, "a2a3")

    def test_infinite_search(self):
        player = self.ready_engine()
        player.send("position startpos", "go infinite", "stop")
        answer = player.answer()
        self.check_search(Board(), answer)
        self.assertGreaterEqual(int(answer.main_lines[-1]["depth"]), 9)  # a stop waits for a move of some depth
        self.assertEqual(answer.strings, [])
        answer = player.go("infinite", f"fen {MATE_IN_ONE}")  # nothing is left to find: ends by itself
        self.assertEqual(answer.depth, 50)
        player.read_to("result .*")
        self.assertEqual(player.go("depth 45", f"fen {MATE_IN_ONE}").depth, 45)

    def test_pondering(self):
        player = self.ready_engine()
        # Whether the clock has run out long ago, or the last iteration repeats.
        for search, end, depth in (("wtime 500 btime 500", "ponderhit", None), ("depth 6", "ponderhit", 6),
                                   ("depth 6", "?", 6)):
            player.send(f"position fen {PAWN_ENDING}", "go ponder " + search)
            seen = self.no_answer_soon(player)
            player.send(end)
            answer = player.answer(seen)
            self.check_search(Board(PAWN_ENDING), answer)
            self.assertIn(depth, (None, answer.depth))
        for end in ("ponderhit", "stop"):
            player.send("position startpos", "go ponder wtime 9000 btime 9000", end)
            self.check_search(Board(), player.answer())
        player.send("ponderhit", "stop", "stop")
        self.assertEqual(player.ready(), [])

    def no_answer_soon(self, player):
        time.sleep(0.3)
        lines = player.ready()
        self.assertFalse([line for line in lines if line.startswith("bestmove")], lines[-3:])
        return lines

    def test_no_move_no_answer(self):
        player = self.ready_engine()
        for fen in ("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1"):
            for arguments in ("depth 6", "infinite", "wtime 100000 btime 100000", "ponder"):
                player.send(f"position fen {fen}", "go " + arguments, "stop")
                self.assertFalse([line for line in player.ready() if "string" not in line])
        self.check_search(Board(), player.go("depth 5", "startpos"))

    def test_the_end_of_the_game_is_told(self):
        for fen, result in (
                (MATE_IN_ONE, ["result 1-0 {White mates}"]), ("k7/P7/8/1K6/8/8/8/8 w - - 0 1", []),
                ("k7/8/8/8/8/8/1p6/K7 w - - 0 1", ["result 1/2-1/2 {Draw by insufficient material}"])):
            player = self.ready_engine()
            self.check_search(Board(fen), player.go("depth 5", f"fen {fen}"))
            self.assertEqual(player.settled(), (result, True))


if __name__ == "__main__":
    engine.main()
