"""The process around the engine: start words, log, settings, end of input, signals, shared memory."""

import contextlib
import fcntl
import os
import pathlib
import re
import resource
import select
import signal
import socket
import tempfile
import time
import unittest

import engine
from fixtures.fake_peer import free_ports, is_listening
from rules import Board
from test_uci import IDENTIFICATION, MIDDLE_GAME, report

DEFAULT_TABLE = 2097152


def files(directory):
    return sorted(os.listdir(directory))


def segments():
    """The shared memory of the machine: key and creator of every segment."""
    with open("/proc/sysvipc/shm") as table:
        rows = [line.split() for line in table.readlines()[1:]]
    return {(int(row[0]), int(row[4])) for row in rows}


def segments_of(*players):
    """The named ones (key not 0) that these engines have made and not removed."""
    return {key for key, creator in segments() if key and creator in [player.process.pid for player in players]}


def wait_for_last_user(player):
    engine.wait_until(lambda: player.process.pid not in [creator for _, creator in segments()], "the last user")


def most_memory(player):
    """The most that the engine has used so far, in bytes."""
    status = pathlib.Path(f"/proc/{player.process.pid}/status").read_text()
    return int(re.search(r"VmHWM:\s+(\d+) kB", status)[1]) * 1024


class Input(engine.EngineTest):
    def test_start_words_and_ends_of_lines(self):
        for text in ("isready quit\nUCI\n\n  uci\n", "\r\n\tgo uci\r\n", "x" * 100000 + " uci\n", "uci isready\n"):
            lines, code = self.run_with(text + "eval\r\nisready")
            self.assertEqual((lines[:len(IDENTIFICATION)], code), (IDENTIFICATION, 0))
            self.assertEqual(lines[-2:], ["info string eval is: 8", "readyok"])
        for text in ("nothing of the kind\n", ""):
            self.assertEqual(self.run_with(text), ([], 0))

    def test_a_line_that_does_not_end_is_passed_over(self):
        longest, most = 1 << 20, 24 << 20
        refusal = f"a line of more than {longest} characters is passed over"
        for word, form in (("uci", "info string Error: "), ("xboard", "tellusererror "), ("console", "Error: ")):
            player = self.engine(words=())
            player.send("x" * most + " " + word)
            player.ready()
            before = most_memory(player)
            player.send("eval quit " + "x" * most)
            self.assertEqual(player.ready(), [form + refusal])
            self.assertLess(most_memory(player) - before, most // 2)
            player.send(" " * longest)  # this one is not too long
            self.assertEqual(player.ready(), [])
            self.assertEqual(player.quit(), 0)


class Log(engine.EngineTest):
    def log(self, directory, number):
        with open(os.path.join(directory, f"valkucom{number}.log")) as file:
            return file.read()

    def test_each_run_writes_a_new_numbered_file(self):
        with tempfile.TemporaryDirectory() as directory:
            os.symlink("elsewhere", os.path.join(directory, "valkucom2.log"))
            self.run_with("uci_log\neval\nquit\n", directory=directory)
            first = self.log(directory, 1)
            self.assertRegex(first, r"(?s)^< \d{10}:\nid name Valku 4\.00\n")
            self.assertRegex(first, r"\n> \d{10}:\neval\n< \d{10}:\ninfo string eval is: 8\n\n> \d{10}:\nquit\n$")
            players = [self.engine(words=(), directory=directory) for _ in range(8)]
            for player in players:
                player.send("uci_log", f"x{player.process.pid}")
            for player in players:
                player.ready()
            self.assertEqual(files(directory), sorted(f"valkucom{n}.log" for n in range(1, 11)))
            logs = [self.log(directory, number) for number in (1, *range(3, 11))]
            self.assertEqual([len(re.findall(r"\nx\d+\n", log)) for log in logs], [0] + [1] * 8)
            self.assertEqual(logs[0], first)

    def test_children_do_not_hold_the_file(self):
        player = self.ready_engine(words=("uci_log",), settings="numberOfLocalClients=1\n")
        holders = []
        for link in pathlib.Path("/proc").glob("[0-9]*/fd/*"):
            with contextlib.suppress(OSError):  # of a process that has gone, or is not ours
                if os.readlink(link) == os.path.join(player.directory, "valkucom1.log"):
                    holders.append(int(link.parts[2]))
        self.assertEqual(holders, [player.process.pid])

    def test_the_option_and_the_setting_switch_the_log(self):
        player = self.ready_engine()
        self.assertEqual(files(player.directory), [])
        player.send("setoption name WriteLog value true", "eval", "setoption name WriteLog value false", "eval")
        player.set("WriteLog value true")
        self.assertEqual(files(player.directory), ["valkucom1.log", "valkucom2.log"])
        first = re.sub(r"\d{10}", "T", self.log(player.directory, 1))
        self.assertEqual(first, "\n".join(["< T:", *report(log=1), "", "> T:", "eval", "< T:", "info string eval is: 8",
                                           "", "> T:", "setoption name WriteLog value false", ""]))
        logging = self.ready_engine(settings="writeLogFile=1\n")
        self.assertEqual(files(logging.directory), ["settings.ini", "valkucom1.log"])
        silenced = self.ready_engine(settings="writeLogFile=0\n", words=("uci_log",))
        self.assertTrue(self.log(silenced.directory, 1).endswith("uciok\n\n"))

    def test_a_log_that_cannot_be_written(self):
        for limit, directory in ((resource.RLIM_INFINITY, "/proc"), (2000, None)):  # even root makes no file in /proc
            player = self.engine(words=(), directory=directory)
            resource.prlimit(player.process.pid, resource.RLIMIT_FSIZE, (limit, limit))
            player.expected_complaints = "valku: the log cannot be written\n"
            player.send("uci_log", *["eval"] * 100)
            player.ready()
            self.assertEqual(player.set("KingSafety value 100"), report())
            self.assertEqual(player.quit(), 0)


class Settings(engine.EngineTest):
    def test_values_and_their_checks(self):
        cases = [
            ("pawnValue=90\nknightValue=350\nbishopValue=360\nrookValue=500\nqueenValue=1000\n",
             dict(pawn=90, knight=350, bishop=360, rook=500, queen=1000, e1=360, e2=360 + 2 * 1090)),
            ("pairOfBishops=50\r\nTBdistance=5\r\nfactorForAnotherIteration=80\nkingSafety=-7\n",
             dict(bish=50, tbd=5, fai=80, ksft=-7)),
            ("pawnValue=-5\nknightvalue=1\nTBDistance=3\nknightValue 5\n\n=\n", dict()),
            ("rookValue=five\nbishopValue=\n", dict(rook=0, bishop=0, e1=370, e2=2890)),
            ("#pawnValue=100\n", dict(pawn=0, e2=2701)),
            ("  rookValue=12345\n", dict(rook=345)),  # the removal takes as much more as the key stands in the line
            ("pawnValue=90 rookValue=300\n", dict(pawn=90, rook=0, e2=381 + 2 * 1250)),
            ("pawnValue= 80 points\nPawnValue=70\nrookValue 60\nqueenValue=99999999999999",
             dict(pawn=80, queen=100000, e2=381 + 2 * 100080)),  # cut to what the sums can bear
        ]
        for settings, changes in cases:
            player = self.ready_engine(settings=settings)
            option = "PreserveHash value true" if "kingSafety" in settings else "KingSafety value 100"
            self.assertEqual(player.set(option), report(**changes), settings)

    def test_table_sizes(self):
        for text, buckets in (("3000000", 2097152), ("0", DEFAULT_TABLE), ("1", 1), ("-8", 1), ("100000", 65536)):
            player = self.engine(settings=f"nHashTables={text}\nnPawnTables={text}\n")
            self.assertEqual(player.started()[1], buckets)
            self.check_search(Board(), player.go("depth 6", "startpos"))

    def test_fixed_depth(self):
        for text, depth in (("6", 6), ("3", 3), ("0", 7)):
            player = self.ready_engine(settings=f"quickPlay={text}\n")
            for search in ("depth 7", "infinite", "wtime 900000 btime 900000")[:1 if depth == 7 else 3]:
                self.assertEqual(player.go(search, "startpos").depth, depth)

    def test_weights_and_paths(self):
        player = self.engine(settings="rightToMove=20\nTBPath=/no such/place\r\nbookFile=\n")
        self.assertEqual(player.read_to("info string TBPath is .*")[-1],
                         "info string TBPath is /no such/place, including 0-men TBs.")
        self.assertEqual(player.evaluation(), 20)
        # The king attack table follows the option, and only the option.
        self.assertEqual(*(self.engine(settings=settings).evaluation(f"position fen {MIDDLE_GAME}")
                           for settings in ("", "kingSafety=300\n")))

    def test_files_that_cannot_be_read(self):
        def filled_with(content):
            return lambda path: pathlib.Path(path).write_bytes(content)

        for make in (os.mkdir, lambda path: os.symlink("settings.ini", path),
                     lambda path: os.symlink("/proc/self/mem", path), filled_with(bytes(range(256)) * 5000),
                     filled_with(b"pawnValue" * 100000)):
            with tempfile.TemporaryDirectory() as directory:
                make(os.path.join(directory, "settings.ini"))
                player = self.ready_engine(directory=directory)
                self.assertEqual(player.set("KingSafety value 100"), report())
                self.assertEqual(player.quit(), 0)


class End(engine.EngineTest):
    def test_a_search_without_limit_is_stopped_any_other_is_finished_first(self):
        for search in ("depth 8", "wtime 9000 btime 9000", "infinite", "ponder wtime 1000 btime 1000",
                       "ponder infinite", "ponder depth 5"):
            lines, code = self.run_with(f"uci\nposition fen {MIDDLE_GAME}\ngo {search}")
            self.assertRegex(lines[-1], "^bestmove", search)
            self.assertEqual(code, 0)
            if search == "depth 8":
                self.assertIn("info depth 8 ", lines[-2])

    def test_an_interface_that_goes_away(self):
        for end in ("quit", "input"):
            reading, writing = os.pipe()
            player = self.engine(stdout=writing)
            os.close(writing)
            player.send("position startpos", "go infinite")
            os.read(reading, 100)
            os.close(reading)
            self.assertEqual(player.end(end), player.wait())

    def test_quit_and_signals(self):
        for end, told in (("quit", None), (signal.SIGINT, 0), (signal.SIGTERM, 6), (signal.SIGHUP, 2)):
            for search in ("", "infinite", "ponder", "depth 40", "wtime 900000 btime 900000")[:2 if told else 5]:
                player = self.ready_engine()
                player.send("position startpos moves e2e4 c7c5")
                if search:
                    player.send("go " + search)
                    player.read_to("info depth 5 .*")
                player.ready()
                code = player.end(end)
                lines = [line for line in player.read_all() if re.match("handler|board", line)]
                self.assertRegex("\n".join(lines), "^$" if told is None else
                                 rf"^handler called with signal {told}\nboard: [pnbrqkPNBRQK1-8/]+ [wb] .*$")
                self.assertEqual((player.wait(), segments_of(player)), (code, set()))

    def test_the_break_key_changes_nothing(self):
        player = self.ready_engine()
        player.send("position startpos", "go infinite")
        lines = player.read_to("info depth 5 .*")
        player.process.send_signal(signal.SIGQUIT)
        lines += player.read_to("info depth 11 .*")
        player.send("stop")
        self.check_search(Board(), player.answer(lines))
        self.assertEqual((player.ready(), player.quit()), ([], 0))


class UnreadOutput(engine.EngineTest):
    """A pipe for the output that takes a few lines and then is full."""

    def full_engine(self, *arguments, settings=None, words=()):
        self.reading, writing = os.pipe()
        self.addCleanup(os.close, self.reading)
        self.addCleanup(os.close, writing)
        fcntl.fcntl(writing, fcntl.F_SETPIPE_SZ, 4096)
        player = self.engine(*arguments, stdout=writing, settings=settings, words=words)
        if words:
            engine.wait_until(lambda: not select.select([], [writing], [], 0)[1], "a full pipe")
        return player

    def test_every_end(self):
        stuck = ("uci", *["isready"] * 2000)  # the commands themselves, which then read no other
        searching = ("uci", "position startpos", "go infinite")
        players = []
        for words, ends in ((searching, ("input", "quit", signal.SIGTERM, signal.SIGINT)),
                            (stuck, ("input", signal.SIGTERM, signal.SIGINT))):
            for end in ends:
                player = self.full_engine(words=words, settings="numberOfLocalClients=1\n")
                players.append((player, player.end(end)))
        for player, code in players:
            self.assertEqual(player.wait(), code)
            self.assertEqual(segments_of(player), set())
            wait_for_last_user(player)

    def test_a_slow_reader_gets_every_line(self):
        player = self.full_engine(words=("uci", *["isready"] * 2000, "go depth 6"))
        player.end_input()
        time.sleep(1)
        text = b""
        while not re.search(rb"\nbestmove .*\n", text):
            text += os.read(self.reading, 1000)
        self.assertEqual((text.count(b"readyok\n"), player.wait()), (2000, 0))

    def test_a_peer_does_not_wait_for_onlookers(self):
        port, = free_ports(self, 1)
        player = self.full_engine("remoteserver", str(port), words=())
        engine.wait_until(lambda: is_listening(port), "a peer that listens")
        with socket.create_connection(("127.0.0.1", port), engine.PATIENCE) as caller:
            for _ in range(40):
                caller.sendall(b"isready\n" * 1000)
                received = b""
                while len(received) < 8000:
                    received += caller.recv(8000)
                self.assertEqual(received, b"readyok\n" * 1000)
            caller.sendall(b"quit\n")
            self.assertEqual(player.wait(), 0)
        seen = os.read(self.reading, 65536)
        self.assertRegex(seen, b"(?s)^Winsock gestartet!\n.*\nreadyok\n")


class SharedTables(engine.EngineTest):
    def test_engines_side_by_side(self):
        players = [self.engine() for _ in range(3)]
        ids = [player.started()[0] for player in players]
        self.assertEqual(len(set(ids)), 3)
        self.assertGreaterEqual(min(ids), 1234000)
        self.assertEqual(segments_of(*players), set(ids))
        for player in players:
            player.send("position startpos", "go depth 6")
        lines = {tuple(player.answer().without_times()) for player in players}
        self.assertEqual(len(lines), 1)  # no engine sees another's table
        for player in players:
            self.assertEqual(player.quit(), 0)
        self.assertEqual(segments_of(*players), set())

    def test_a_killed_engine_leaves_nothing_for_long(self):
        small = "nHashTables=64\n"
        victim = self.engine(settings=small)
        table, _ = victim.started()
        victim.signal(signal.SIGKILL)
        victim.wait()
        heirs = []
        while not heirs or heirs[-1].started()[0] < table:  # ids below may have been set free by others
            heirs.append(self.engine(settings=small))
            self.assertLess(len(heirs), 64)
        self.assertEqual(segments_of(victim), set())
        for heir in heirs:
            self.assertEqual(heir.quit(), 0)
        self.assertEqual(segments_of(*heirs), set())

    def test_a_start_that_is_broken_off_leaves_nothing(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP) * 4:
            player = self.engine(settings="numberOfLocalClients=8\n")
            player.read_to(engine.NEW_TABLE)
            player.signal(number)
            self.assertEqual(player.wait(), -number)
            self.assertEqual(segments_of(player), set())
            wait_for_last_user(player)
        player = self.engine(settings="TBPath=.\n", words=())
        with open(os.path.join(player.directory, "kpk.nbw"), "wb") as table:
            table.write(b"no table")
        player.send("uci")
        player.expected_end.add(1)
        self.assertEqual(player.wait(), 1)
        self.assertEqual(segments_of(player), set())

    def test_joining_a_live_table(self):
        owner = self.engine(settings="nHashTables=65536\n")
        table, buckets = owner.started()
        self.assertTrue(owner.go("depth 8", "startpos").best)
        guest = self.engine("sharehash", str(table), str(buckets), words=())
        self.assertIn(f"Sharing hashtable with id {table}...", guest.ready())
        alone = self.ready_engine(settings="nHashTables=65536\n").go("depth 8", "startpos").nodes
        self.assertTrue(guest.go("depth 8", "startpos").best)
        self.assertLess(owner.go("depth 8", "startpos").nodes, alone // 2)  # the guest's work serves the owner
        self.assertEqual(owner.quit(), 0)
        self.check_search(Board(), guest.go("depth 6", "startpos"))  # and the table outlives its owner
        self.assertEqual(guest.quit(), 0)
        self.assertEqual(segments_of(owner, guest), set())

    def test_a_table_that_cannot_be_joined(self):
        owner = self.engine(settings="nHashTables=1024\n")
        table, _ = owner.started()
        for arguments in (("1", "16"), ("-1",), ("rubbish", "rubbish"), (), (str(table), "1048576"),
                          ("99999999999999999999", "99999999999999999999")):
            guest = self.engine("sharehash", *arguments, words=())
            guest.expected_end.add(1)
            with contextlib.suppress(BrokenPipeError):  # of a guest that has gone already
                guest.send("position startpos", "go depth 5")
                guest.end_input()
            lines = guest.read_all()
            refused = "Could not map the file! Exiting now..." in lines
            self.assertTrue(refused or lines and "bestmove" in lines[-1], (arguments, lines))
            guest.wait()
        self.check_search(Board(), owner.go("depth 6", "startpos"))


if __name__ == "__main__":
    engine.main()
