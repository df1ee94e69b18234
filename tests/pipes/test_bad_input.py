"""Whatever comes in: no crash, no hang, and the engine plays on."""

import random
import re
import resource
import unittest

import engine
from rules import START, Board
from test_uci import PAWN_ENDING

COMMANDS = """
    uci isready ucinewgame position go stop ponderhit setoption quit eval mirror fen force undo remove
    edit time sd level fritz easy hard new computer ponder analyze exit ? variant testeval benchmark
    benchfromfile importbook pgn2book writebook showbook bookstats addmove rmmove client_stop
    client_alphabeta client_pos client_castlings client_epfield client_50moves client_hash client_history
    client_preparesearch server_createremoteclient e2e4 O-O name value moves startpos wtime btime winc
    binc movestogo depth infinite Hash PawnValue KingSafety TimeUsage CPUs NalimovCache TBDistance true
""".split()
NUMBERS = ["0", "-1", "2147483647", "2147483648", "-2147483649", "99999999999999999999999", "1e9", "0x10", "",
           "+5", "--5"]
# These start work on files, or end the input that is still to come.
NOT_FOR_LINE_STARTS = {"quit", "benchmark", "benchfromfile", "testeval", "edit", "importbook", "pgn2book", "writebook"}


class BadInput(engine.EngineTest):
    def plays(self, player):
        """The same engine still carries out an ordinary search."""
        player.send("stop")
        player.ready()
        player.send("ucinewgame", "position startpos")
        player.set("UCI_Chess960 value false")
        self.check_search(Board(), player.go("depth 6"))
        self.assertEqual(player.quit(), 0)

    def test_lines_of_a_megabyte(self):
        player = self.ready_engine()
        for word in ("", "x", "go", "position fen ", "position startpos moves ", "setoption name ",
                     "setoption name Hash value ", "setoption name UCI_SetPositionValue value 1 ", "fen ", "time "):
            for filling in (b"x", b"9", b" ", b" e2e4", b"8/", b"\0", b"\xff"):
                player.send_bytes(word.encode() + filling * (1000000 // len(filling)) + b"\n")
                if word == "go":
                    player.answer()
                    player.send("position startpos")
        answered = {line.split(" ")[0] for line in player.ready()}
        self.assertLessEqual(answered, {"info", "Error"})  # a table of so many nines is refused
        self.plays(player)

    def test_binary_rubbish(self):
        chance = random.Random(1)
        player = self.ready_engine()
        for _ in range(50):
            player.send_bytes(chance.randbytes(4000).replace(b"go", b"og") + b"\n")
        player.send_bytes(b"\r\n\r\r\n\0\n\0isready\n" + bytes(range(256)) * 20 + b"\n")
        self.assertEqual(player.ready(), [])
        self.plays(player)
        lines, code = self.run_with(chance.randbytes(200000).replace(b"uci", b"icu"))
        self.assertEqual((lines, code), ([], 0))

    def test_numbers_that_overflow(self):
        for number in NUMBERS:
            player = self.ready_engine()
            for name in ("PawnValue", "KnightValue", "BishopValue", "RookValue", "QueenValue", "TwoKnightsMalus",
                         "PairOfBishops", "KingSafety", "TimeUsage", "TBDistance", "NalimovCache", "Dummy2"):
                player.set(f"{name} value {number}")
                self.assertTrue(player.go("depth 5", "startpos moves e2e4 d7d5").best)
                player.set(f"{name} value 100")
            player.send(f"level {number} {number} {number}", f"time {number}", f"sd {number}")
            for word in ("depth", "wtime", "btime", "winc", "binc", "movestogo"):
                for extra in ("", " wtime 30000", " ponder"):
                    player.send(f"position fen {PAWN_ENDING}", f"go {word} {number}{extra}", "stop")
                    self.check_search(Board(PAWN_ENDING), player.answer())
            player.send(f"setoption name UCI_SetPositionValue value {number} {START}",
                        "setoption name UCI_SetPositionValue value clearall")
            self.plays(player)

    def test_settings_that_overflow(self):
        keys = """
            pawnValue knightValue bishopValue rookValue queenValue endgameMaterial rookOn7th
            pairOfBishops doublePawn isolatedPawn rightToMove rookAgainstNoRook backstandingPawn
            trappedBishop narrowedRook badBishop rookOnOpenLine doubledRooks spaceAdvantage
            pawnStormValue1 pawnStormValue2 maxCompensation TBdistance TBCacheSize kingSafety
            factorForAnotherIteration resignValue minNodesRemoteSearch remoteClient weightA
        """.split()
        for number in NUMBERS:
            for group in (keys, keys[:5], keys[5:]):
                player = self.ready_engine(settings="".join(f"{key}={number}\n" for key in group))
                self.assertTrue(player.go("depth 6", "startpos moves e2e4 d7d5").best)
                self.assertEqual(player.quit(), 0)

    def test_a_table_for_which_there_is_no_memory(self):
        error = "Error in createHashTable while creating shared memory:"
        created = "^info string Create new hashtable with id [0-9]+, size = "
        player = self.ready_engine()
        lines = player.set("Hash value 99999999999")
        self.assertEqual(lines[0], error)
        self.assertRegex(lines[-1], f"{created}2097152$")
        self.plays(player)
        with open(engine.Engine.program, "rb") as file:
            if b"__asan_init" in file.read():
                self.skipTest("a sanitizer needs more room than there would be")
        old_table = 2097152 * 48
        for room, buckets in ((64 << 20, 1048576), (-1 << 20, None)):
            player = self.ready_engine()
            player.go("depth 6", "startpos")  # all that a search allocates is there now
            player.ready()
            with open(f"/proc/{player.process.pid}/status") as file:
                used = int(re.search(r"VmSize:\s+(\d+) kB", file.read())[1]) * 1024
            limit = used - old_table + room
            resource.prlimit(player.process.pid, resource.RLIMIT_AS, (limit, limit))
            player.send("setoption name Hash value 1024")
            if buckets:
                lines = player.ready()
                self.assertRegex(lines[-1], f"{created}{buckets}$")
                self.plays(player)
            else:
                player.expected_end.add(1)
                self.assertEqual(player.wait(), 1)
                lines = player.read_all()
                self.assertEqual(lines[2:], ["There is no memory for any hash table. Exiting now..."])
            self.assertEqual(lines[0], error)

    def test_words_in_any_order(self):
        chance = random.Random(2)
        for _ in range(12):
            player = self.ready_engine(settings="nHashTables=1024\nquickPlay=3\n")
            for _ in range(150):
                words = [chance.choice(COMMANDS + NUMBERS) for _ in range(chance.randint(1, 6))]
                if words[0] not in NOT_FOR_LINE_STARTS and "CPUs" not in words:
                    line = chance.choice((" ", " ", "")).join(words)
                    player.send(line.replace("benchm", "").replace("quit", "")[:60])
            # What was asked at random may have been "isready" too, so another word tells where the answers end.
            player.send("stop", "position startpos", "setoption name ArenaChess960 value false")
            player.read_to("info string Switched Arena Chess 960 mode off!")
            self.assertTrue(player.go("depth 5", "startpos").best)
            self.assertEqual(player.quit(), 0)


if __name__ == "__main__":
    engine.main()
