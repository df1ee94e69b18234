"""The protocol as an interface sees it: identification, options, searches of every kind and their lines."""

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
    """What a large hash table takes of time is not taken from a search, nor does it keep the end waiting."""

    BLOCKED = "8/8/k1p1p1p1/p1P1P1P1/P1K5/8/8/8 w - - 0 1"  # a few thousand positions, however deep

    @staticmethod
    def table_memory(player, field):
        """A field of the kernel's account of the shared table, in bytes."""
        with open(f"/proc/{player.process.pid}/smaps") as file:
            table = re.search(rf"/SYSV.*\n(?:[A-Z].*\n)*?{field}: +(\d+) kB", file.read())
        return int(table[1]) * 1024

    def test_a_new_table_is_in_memory_before_the_engine_is_ready(self):
        player = self.ready_engine()
        for buckets in (2097152, 1048576):
            self.assertEqual(self.table_memory(player, "Rss"), buckets * 48)
            player.send("setoption name Hash value 64")
            player.ready()

    def test_no_search_pays_for_the_preparation_of_the_table(self):
        for preserve in ("true", "false"):
            player = self.ready_engine("Hash value 64", f"PreserveHash value {preserve}")
            whole = self.table_memory(player, "Rss")
            for search in range(3):
                with open(f"/proc/{player.process.pid}/clear_refs", "w") as file:
                    file.write("1\n")  # forgets which pages have been touched
                player.send("position fen " + self.BLOCKED, "go infinite")
                player.read_to("info depth 9 .*")
                touched = self.table_memory(player, "Referenced")
                self.assertLess(touched, whole / 2, (preserve, search))
                player.send("stop")
                player.answer()
                self.assertEqual(player.ready(), [])
            self.assertEqual(player.quit(), 0)

    def test_the_end_comes_while_the_table_is_prepared(self):
        ends = {"quit": lambda player: player.send("quit"), "end of input": lambda player: player.end_input(),
                "signal": lambda player: player.signal(signal.SIGTERM)}
        for name, end in ends.items():
            player = self.ready_engine("Hash value 1024", "PreserveHash value false")
            player.go("depth 6", "startpos")
            end(player)
            self.assertEqual(player.wait(), -signal.SIGTERM if name == "signal" else 0, name)


class Options(engine.EngineTest):
    def test_every_option_that_reports(self):
        cases = [
            ("PawnValue", 133, dict(pawn=133, e2=381 + 2 * (133 + 1160))),
            ("KnightValue", 109, dict(knight=403, e1=403, e2=2923)),
            ("KnightValue", 50, dict(knight=185)),
            ("BishopValue", 50, dict(bishop=190, e1=370, e2=2890)),
            ("BishopValue", 137, dict(bishop=521, e1=521, e2=3041)),
            ("RookValue", 25, dict(rook=145)),
            ("QueenValue", 99, dict(queen=1148, e2=381 + 2 * 1248)),
            ("PairOfBishops", 25, dict(bish=8)),
            ("TwoKnightsMalus", 150, dict(knights=9)),
            ("KingSafety", 250, dict(ksft=250)),
            ("TBDistance", 123456789, dict(tbd=123456789)),
            ("TimeUsage", 50, dict(fai=300)),
            ("TimeUsage", 200, dict(fai=75)),
            ("TimeUsage", 400, dict(fai=37)),
            ("TBDistance", 12, dict(tbd=12)),
            ("PreserveHash", "false", dict(phash=0)),
            ("WriteLog", "true", dict(log=1)),
            ("PawnValue", "rubbish", dict(pawn=0, e2=2701)),
            ("PawnValue", 401, dict(pawn=401, e2=3503)),
        ]
        standard = {"PreserveHash": "true", "WriteLog": "false", "TBDistance": 8}
        player = self.ready_engine()
        for name, value, changes in cases:
            player.send(f"setoption name {name} value {value}")
            self.assertEqual(player.ready(), report(**changes), f"{name} {value}")
            player.send(f"setoption name {name} value {standard.get(name, 100)}")
            self.assertEqual(player.ready(), report(), name)

    def test_options_that_say_nothing(self):
        player = self.ready_engine()
        player.send(*(f"setoption name {text}" for text in (
            "CPUs value 1", "Ponder value true", "UCI_Chess960 value false", "BestBookMovesOnly value false",
            "ClearHash", "Dummy2 value 7", "Dummy3 value 7", "ReactionOnShowEval value true", "no such option value 1",
            "pawnvalue value 50", "PawnValue  value 50", "value", "", "UCI_SetPositionValue value ")))
        player.send("setoption", "setoption name")
        self.assertEqual(player.ready(), [])

    def test_options_that_leave_a_search_alone(self):
        player = self.ready_engine()
        player.send("go infinite", *(f"setoption name {text}" for text in (
            "Ponder value true", "BestBookMovesOnly value false", "Dummy2 value 7", "ReactionOnShowEval value true",
            "no such option value 1", "", "WriteLog value true", "PreserveHash value true")))
        seen = player.read_to("ksft.*") + player.read_to("ksft.*") + player.ready()
        self.assertFalse([line for line in seen if line.startswith("bestmove")])
        player.send("setoption name PawnValue value 100")  # this one the search reads
        player.read_to("bestmove .*")

    def test_options_with_texts_of_their_own(self):
        player = self.ready_engine()
        player.send("setoption name ArenaChess960 value true", "setoption name ArenaChess960 value false")
        self.assertEqual(player.ready(), ["info string Switched Arena Chess 960 mode on!",
                                          "info string Switched Arena Chess 960 mode off!"])
        player.send("setoption name NalimovCache value 4", "setoption name NalimovCache value 0")
        self.assertEqual(player.ready(), ["NalimovCache received: 4", "new TB-cache = 4 MB",
                                          "NalimovCache received: 0", "new TB-cache = 4 MB"])
        player.send("setoption name NalimovPath value /no such/folder")
        self.assertEqual(player.ready()[:3], ["NalimovPath received: /no such/folder",
                                              "new NalimovPath = /no such/folder", "TB-cache = 4 MB"])

    def test_hash_sizes(self):
        player = self.engine()
        first = player.started()
        self.assertEqual(first[1], 2097152)
        # The same number of buckets changes nothing, and so makes no new table.
        sizes = [(1, [16384]), (64, [1048576]), (3, [65536]), (0, [1]), (-3, []), ("", []), ("no number", []),
                 (2, [32768])]
        for value, buckets in sizes:
            player.send(f"setoption name Hash value {value}")
            tables = [engine.NEW_TABLE.fullmatch(line) for line in player.ready()]
            self.assertEqual([int(table[2]) for table in tables], buckets)
            answer = player.go("depth 6", "startpos")
            self.check_search(Board(), answer)
            self.assertLessEqual(max(int(line["hashfull"]) for line in answer.main_lines), 1000)
        player.send("setoption name Hash")
        self.assertRegex(player.ready()[0], "size = 1$")

    def test_weights_reach_the_evaluation(self):
        def evaluation(player):
            player.send("eval")
            return int(player.read_to("info string eval is: .*")[-1].split()[-1])

        queens = "fen rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
        player = self.ready_engine()
        player.send("position " + queens)
        before = evaluation(player)
        player.send("setoption name QueenValue value 75")
        self.assertEqual(evaluation(player), before - 290)
        player.send("setoption name QueenValue value 100")
        self.assertEqual(evaluation(player), before)

        attacked = "fen r1b2rk1/ppp2p1p/8/4q3/8/2NB3Q/PPP2PPP/4RRK1 w - - 0 1"
        player.send("position " + attacked)
        calm = evaluation(player)
        player.send("setoption name KingSafety value 400")
        self.assertGreater(evaluation(player), calm)
        player.send("setoption name KingSafety value 100")
        self.assertEqual(evaluation(player), calm)

    def test_an_evaluation_during_a_search_leaves_it_alone(self):
        shown, position = re.compile("info string eval is: (-?[0-9]+)"), f"fen {START.replace('QKB', '1KB')}"
        calm, asked = self.ready_engine(), self.ready_engine()
        calm.send("position " + position, "eval")
        value = calm.read_to(shown.pattern)[-1]
        asked.send("position " + position, "go depth 12")
        lines = asked.read_to(f"(?:{engine.ROOT_MOVE.pattern})")
        for _ in range(50):
            asked.send("eval")
            lines += asked.read_to(shown.pattern)
            self.assertEqual(lines.pop(), value)
        self.assertFalse([line for line in lines if line.startswith("bestmove")], "the search was too short")
        self.assertEqual(asked.answer(lines).without_times(), calm.go("depth 12").without_times())

    def test_tables_between_searches(self):
        def nodes(player):
            return player.go("depth 8", f"fen {MIDDLE_GAME}").nodes

        fresh = nodes(self.ready_engine())
        player = self.ready_engine()
        self.assertEqual(nodes(player), fresh)
        self.assertLess(nodes(player), fresh // 2)
        player.send("setoption name ClearHash")
        self.assertEqual(nodes(player), fresh)
        player.send("setoption name PreserveHash value false")
        player.ready()
        self.assertGreater(nodes(player), fresh // 2)

    def test_position_values(self):
        fen = "4k3/8/8/3q4/8/8/P5P1/3RK3 w - - 0 1"
        reply = "8/4k3/8/3R4/8/8/P5P1/4K3 w - - 1 2"  # behind d1d5 e8e7
        player = self.ready_engine(settings="nHashTables=16384\n")
        self.assertEqual(player.go("depth 6", f"fen {fen}").best, "d1d5")
        for clear in (f"clear {reply}", "clearall"):
            player.send("setoption name ClearHash", f"setoption name UCI_SetPositionValue value -2500 {reply}")
            self.assertNotEqual(player.go("depth 6", f"fen {fen}").best, "d1d5")
            player.send("setoption name ClearHash")  # leaves values that the user has given
            self.assertNotEqual(player.go("depth 6", f"fen {fen}").best, "d1d5")
            player.send(f"setoption name UCI_SetPositionValue value {clear}", "setoption name ClearHash")
            self.assertEqual(player.go("depth 6", f"fen {fen}").best, "d1d5")
        # The game stays what it was.
        player.send(f"position fen {fen}", f"setoption name UCI_SetPositionValue value 10 {START}",
                    "setoption name UCI_SetPositionValue value 10 rubbish",
                    "setoption name UCI_SetPositionValue value clear")
        self.assertEqual(player.board(), fen)


class Searches(engine.EngineTest):
    def test_a_search_of_fixed_depth(self):
        player = self.ready_engine()
        for arguments, depth in (("depth 7", 7), ("depth 3", 5), ("depth -4", 5), ("depth", 5), ("depth x", 5)):
            answer = player.go(arguments, "startpos")
            self.check_search(Board(), answer)
            self.assertEqual(answer.depth, depth)
            self.assertEqual(answer.strings, [])
            for iteration in range(2, depth + 1):
                numbers = [int(move["number"]) for move in answer.root_moves if int(move["depth"]) == iteration]
                self.assertEqual(set(numbers), set(range(1, 21)))
                self.assertEqual(numbers[:20], list(range(1, 21)))

    def test_the_report_agrees_with_itself(self):
        for arguments, fen in (("depth 9", MIDDLE_GAME), ("depth 12", PAWN_ENDING), ("depth 9", START)):
            player = self.ready_engine("Hash value 1")
            answer = player.go(arguments, f"fen {fen}")
            self.check_search(Board(fen), answer)
            for line in answer.main_lines:
                elapsed, nodes, rate = (int(line[field]) for field in ("time", "nodes", "nps"))
                self.assertLessEqual(nodes * 1000 // (elapsed + 1), rate)
                self.assertLessEqual(rate, nodes * 1000 // elapsed if elapsed else nodes * 1000)
                self.assertEqual(line["tbhits"], "0")
            for field in ("depth", "time", "nodes", "seldepth"):
                values = [int(line[field]) for line in answer.main_lines]
                self.assertEqual(values, sorted(values), field)
            last = answer.main_lines[-1]
            moves = [text.lower() for text in last["pv"].split()]
            self.assertIsNone(last["bound"])
            self.assertEqual([answer.best, answer.ponder], (moves + [None])[:2])
            self.assertGreater(int(last["hashfull"]), 0)

    def test_lower_and_upper_bounds_are_reported(self):
        # A check that costs the queen after four plies looks good until then, and a quiet sacrifice looks bad.
        fens = (MIDDLE_GAME, "r1b1kb1r/pppp1ppp/2n2n2/4p2q/2B1P3/2N2N2/PPPP1PPP/R1BQ1RK1 w kq - 6 6",
                "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1")
        answers = [self.ready_engine().go("depth 9", f"fen {fen}") for fen in fens]
        self.assertTrue(any(line["bound"] for answer in answers for line in answer.main_lines))
        self.assertTrue(any(answer.fail_lows for answer in answers))
        for fen, answer in zip(fens, answers):
            self.check_search(Board(fen), answer)

    def test_the_same_search_in_two_processes(self):
        for arguments, fen in (("depth 9", MIDDLE_GAME), ("depth 14", PAWN_ENDING)):
            answers = [self.ready_engine().go(arguments, f"fen {fen}") for _ in range(2)]
            self.assertEqual(answers[0].without_times(), answers[1].without_times())

    def test_clock(self):
        endings = f"fen {PAWN_ENDING}"
        black = "fen " + PAWN_ENDING.replace(" w ", " b ")
        forced = "fen 7k/8/8/8/8/8/8/K5R1 b - - 0 1"
        # The arguments; then moves to go, remaining time, increment, schedule and hard limit as reported.
        cases = [
            (endings, "wtime 300000 btime 1 winc 0 binc 0", "25 300.00 0.00 12.00 120.00"),
            (black, "wtime 1 btime 60000 winc 5 binc 2000", "25 60.00 2.00 4.40 24.00"),
            (endings, "movestogo 100 wtime 60000 btime 60000", "25 60.00 0.00 2.40 24.00"),
            (endings, "wtime 60000 btime 60000 movestogo 10", "13 60.00 0.00 4.62 24.00"),
            (endings, "wtime 4000 btime 4000 movestogo 1", "5 4.00 0.00 0.40 0.80"),
            (endings, "wtime 25000 btime 25000", "25 25.00 0.00 1.00 2.00"),
            (endings, "wtime 3000 winc 10000", "25 3.00 10.00 0.50 1.00"),
            # A sixth of the clock, for the increment is too large to halve.
            (endings, "wtime 4000 winc 11 movestogo 1", "5 4.00 0.01 0.67 1.33"),
            (endings, "wtime 30000", "25 30.00 0.00 1.20 2.40"),  # twice the schedule, not 40 percent of the clock
            (endings, "wtime 30010", "25 30.01 0.00 1.20 12.00"),
            (endings, "wtime 25000 winc 1000", "25 25.00 1.00 2.00 10.00"),
            (endings, "wtime 6000 winc 1000", "25 6.00 1.00 1.00 2.00"),
            (endings, "wtime 6001 winc 10", "25 6.00 0.01 0.25 2.40"),
            (endings, "wtime 60000 movestogo 2", "6 60.00 0.00 10.00 24.00"),
            (endings, "wtime 60000 movestogo 25", "25 60.00 0.00 2.40 24.00"),
            (forced, "btime 100000", "25 100.00 0.00 0.80 40.00"),
            (endings, "wtime 99999999999999999999 movestogo 99999999999999999999",
             "25 2147483.65 0.00 85899.35 858993.46"),
            (endings, "wtime -5000", "25 -5.00 0.00 -0.83 -1.67"),
        ]
        player = self.ready_engine()
        player.go("movetime 1", "startpos")
        for doubled in (False, True):
            for position, arguments, figures in cases:
                moves, remaining, increment, schedule, limit = figures.split()
                if doubled:
                    player.send("ucinewgame")
                    schedule = {"0.67": "1.33", "4.62": "9.23", "-0.83": "-1.67", "85899.35": "171798.69"}.get(
                        schedule, f"{2 * float(schedule):.2f}")
                player.send("position " + position, "go " + arguments, "stop")
                answer = player.answer()
                self.assertEqual(answer.strings[:2], [
                    f"info string movesToGo = {moves}; remainingTime = {remaining}; increment = {increment}",
                    f"info string scheduled time={schedule}s, maxtime={limit}s"], f"{arguments} {doubled}")
                self.check_search(Board(position[4:]), answer)

    def test_a_search_ends_by_its_clock(self):
        self.check_search(Board(), self.ready_engine().go("wtime 1500 btime 1500", "startpos"))
        # The hard limit comes at once behind the first iteration, the schedule would allow many more. A machine with no
        # time for us could pass over the one or the other, but not every time.
        player = self.ready_engine(settings="factorForAnotherIteration=1\n")
        for _ in range(5):
            player.send("ucinewgame")
            answer = player.go("wtime 4900 btime 4900 movestogo 1", f"fen {MIDDLE_GAME}")
            self.check_search(Board(MIDDLE_GAME), answer)
            if "info string timeout!" in answer.strings:
                break
        else:
            self.fail("the hard limit never came")

    def test_without_a_clock_the_first_legal_move_comes_at_once(self):
        player = self.ready_engine()
        self.assertTrue(player.go("depth 5", "startpos").ponder)  # of which nothing must come back below
        for arguments in ("movetime 100000", "nodes 5000000", "mate 3", "", "searchmoves e2e4", "movetime"):
            answer = player.go(arguments, "startpos")
            self.assertEqual((answer.main_lines, answer.root_moves, answer.best, answer.ponder), ([], [], "a2a3", None))
        player.send("position startpos", "gobbledygook")
        self.assertEqual(player.answer().best, "a2a3")

    def test_show_evaluation(self):
        player = self.ready_engine()
        self.check_search(Board(), player.go("showeval wtime 100000", "startpos"))
        self.assertEqual(player.ready(), [])

    def test_infinite_search(self):
        player = self.ready_engine()
        player.send("position startpos", "go infinite", "stop")
        answer = player.answer()
        self.check_search(Board(), answer)
        self.assertGreaterEqual(answer.depth, 9)  # a stop waits for a move of some depth
        self.assertEqual(answer.strings, [])
        answer = player.go("infinite", f"fen {MATE_IN_ONE}")  # nothing is left to find: ends by itself
        self.assertEqual(answer.depth, 50)
        player.read_to("result .*")
        self.assertEqual(player.go("depth 45", f"fen {MATE_IN_ONE}").depth, 45)

    def test_pondering(self):
        player = self.ready_engine()
        clock = "wtime 500 btime 500"
        player.send(f"position fen {PAWN_ENDING}", "go ponder " + clock)
        seen = self.no_answer_soon(player)  # though the clock has run out long ago
        player.send("ponderhit")
        self.check_search(Board(PAWN_ENDING), player.answer(seen))

        player.send("position startpos", "go ponder wtime 900000 btime 900000", "stop")
        self.check_search(Board(), player.answer())

        player.send(f"position fen {PAWN_ENDING}", "go ponder depth 6")
        seen = self.no_answer_soon(player)  # the last iteration repeats
        player.send("ponderhit")
        self.assertEqual(player.answer(seen).depth, 6)

        player.send(f"position fen {PAWN_ENDING}", "go ponder wtime 9000 btime 9000", "ponderhit")
        self.check_search(Board(PAWN_ENDING), player.answer())
        player.send("go ponder depth 6")
        seen = self.no_answer_soon(player)
        player.send("?")
        self.assertEqual(player.answer(seen).depth, 6)
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
        cases = [(MATE_IN_ONE, "a1a8", 29999, "result 1-0 {White mates}"),
                 ("r5k1/8/8/8/8/8/5PPP/6K1 b - - 0 1", "a8a1", 29999, "result 0-1 {Black mates}"),
                 ("k7/8/8/8/8/8/1p6/K7 w - - 0 1", None, None, "result 1/2-1/2 {Draw by insufficient material}"),
                 ("k7/P7/8/1K6/8/8/8/8 w - - 0 1", None, None, None),
                 ("7k/4K2p/8/6Q1/8/8/8/8 b - - 0 1", None, None, None)]
        for fen, best, score, result in cases:
            player = self.ready_engine()
            answer = player.go("depth 5", f"fen {fen}")
            after = self.check_search(Board(fen), answer)
            self.assertIn(best, (answer.best, None))
            self.assertIn(score, (answer.score, None))
            verdict = after.end([])
            self.assertEqual(verdict, result and re.search("{(.*)}", result)[1])
            if verdict:
                self.assertEqual(player.read_to("result .*"), [result])


if __name__ == "__main__":
    engine.main()
