"""One search over several processes of one machine: the words between them, their lives, and what may befall them."""

import ctypes
import itertools
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import time
from unittest import mock

import engine
from engine import NEW_TABLE, wait_until
from rules import Board
from test_shell import segments_of
from test_uci import MIDDLE_GAME, report

# Seconds for what is promised within two, on a machine that has something else to do. Races begin at depth 9.
SOON = 20
SMALL = "nHashTables=16384\nnPawnTables=1024\n"
LOST = r"T put client in error state \(ACPS::run\)!\nresponse = \n"
SILENT = r"T put local client (\d+) in error state \(splitSearch\)! position: ([\w/]+ [wb] \S+ \S+ \d+ \d+)\n"
RECOVERED = r"time = T: ACSP recovered from error state!\n"


def jobs():
    """What a parent sends and what it gets, job by job; the figures are those of an independent model."""
    dialogue = pathlib.Path(__file__).with_name("fixtures") / "client_dialogue.txt"
    for text in re.split("^# .*\n", dialogue.read_text(), flags=re.M)[1:]:
        *lines, answer = text.splitlines()
        yield "".join(line[2:].replace(" | ", "\n") + "\n" for line in lines), answer[2:]


def about(pid, what):
    """A file of /proc; nothing if the process has gone."""
    try:
        return pathlib.Path(f"/proc/{pid}/{what}").read_text("latin-1")
    except (FileNotFoundError, ProcessLookupError):
        return ""


def status(pid):
    """The fields of a living process from its state on, as proc(5) lists them; None if it has gone."""
    fields = about(pid, "stat").rpartition(")")[2].split()
    return fields if fields and fields[0] not in "ZX" else None


def ticks(pid):
    """What a process has had of the processor, in hundredths of a second."""
    return sum(map(int, (status(pid) or ["0"] * 13)[11:13]))


class ClientTest(engine.EngineTest):
    """After each test no client and no shared memory is left, or the test has failed."""

    def setUp(self):
        self.players, self.seen = [], set()
        self.addCleanup(self.check_tables)
        self.addCleanup(lambda: self.wait_for_end([pid for pid in self.seen if "localclient" in about(pid, "cmdline")]))

    def engine(self, *words, **options):
        self.players.append(super().engine(*words, **options))
        return self.players[-1]

    def check_tables(self):
        if any(player.process.returncode == -signal.SIGKILL for player in self.players):
            subprocess.run([engine.Engine.program], input=b"uci\nquit\n", stdout=subprocess.DEVNULL, check=True)
        tables = segments_of(*self.players)
        for key in tables:
            subprocess.run(["ipcrm", "-M", str(key)])
        self.assertEqual(tables, set())

    def parent(self, clients, settings=SMALL):
        """An engine that has some clients from its start on."""
        player = self.engine(settings=f"{settings}numberOfLocalClients={clients}\n")
        player.table = player.started()
        player.ready()
        return player

    def clients(self, player, count):
        """The living children of an engine, in order of their numbers."""
        def born():
            known = {int(name): status(name) for name in os.listdir("/proc") if name.isdigit()}
            return [pid for pid, fields in known.items() if fields and int(fields[1]) == player.process.pid]

        wait_until(lambda: len(born()) == count, f"{count} clients")
        self.seen.update(born())
        return sorted(born(), key=lambda pid: about(pid, "cmdline"))

    def wait_for_end(self, pids):
        """Kills what does not end."""
        try:
            wait_until(lambda: not any(map(status, pids)), "the end of the clients", SOON)
        finally:
            for pid in filter(status, pids):
                os.kill(pid, signal.SIGKILL)

    def check_work(self, player, *pids):
        """A search in which these clients have their part."""
        before = {pid: ticks(pid) for pid in pids}
        player.send("position startpos", "go infinite")
        wait_until(lambda: all(ticks(pid) > before[pid] + 3 for pid in pids), "a client at work")
        player.send("stop")
        self.check_search(Board(), player.answer())

    def diagnostics(self, player):
        """The diagnostic files that there are, by name, the times taken out."""
        return {file.name: re.sub(r"\b\d{10}\b", "T", file.read_text("latin-1"))
                for file in pathlib.Path(player.directory).glob("*err")}

    def check_complaints(self, player, form):
        found = self.diagnostics(player)
        self.assertRegex(found.pop("connerr"), rf"\A(?:{form})\Z")
        self.assertEqual(found, {})


class Words(ClientTest):
    def setUp(self):
        super().setUp()
        self.role = "localclient", "1", *map(str, self.engine(settings="nHashTables=65536\n").started())

    def test_a_recorded_dialogue(self):
        """Value, nodes, depth and line of each job, however its text is cut; and nothing but answers comes back."""
        for cut in (lambda text: [text], list, lambda text: (text[:len(text) // 2], text[len(text) // 2:])):
            client = self.engine(*self.role, words=())
            client.send("client_preparesearch", "", "client_stop")
            for job, answer in jobs():
                for piece in cut(job):
                    client.send_bytes(piece.encode())
                self.assertEqual(client.next_line(), answer, job)
            self.assertEqual((client.quit(), client.read_all()), (0, []))

    def test_each_job_is_answered_once_whenever_it_is_stopped(self):
        endless = next(jobs())[0].replace(" 28 0\n", " 220 0\n").encode()
        mate, answer = next(job for job in jobs() if job[1].endswith(" a1a8"))  # whatever the table holds
        client, chance = self.engine(*self.role, words=()), random.Random(1)
        for number in range(60):
            client.send_bytes(endless + b"client_stop\n" * (number % 3))
            time.sleep(chance.choice((0, chance.random() * 0.02)))
            client.send("client_stop")
            self.assertRegex(client.next_line(), rf"^cabresult -?\d+ \d+ \d+ 0 0 (?:{engine.PV})?$")
        client.send_bytes(mate.encode())
        self.assertEqual(client.next_line().split()[1], answer.split()[1])
        other = self.engine(*self.role, words=())
        client.send_bytes(endless + b"quit\n")
        other.send_bytes(endless)
        other.end_input()
        for ended in (client, other):  # without waiting for their jobs
            self.assertEqual((ended.wait(), ended.read_all()), (0, []))

    def test_no_other_words_are_taken(self):
        """That is told once, where the parent cannot take it for an answer; else the log alone has it."""
        words = b"e2e4\nedit\n.\nd2d4\nundo\nisready\nsetoption name WriteLog value true\nrubbish\nquit\n"
        for settings, where in ("", subprocess.PIPE), ("writeLogFile=1\n", subprocess.STDOUT):
            with tempfile.TemporaryDirectory() as directory:
                pathlib.Path(directory, "settings.ini").write_text(settings)
                client = subprocess.run([engine.Engine.program, *self.role], input=words, cwd=directory,
                                        stdout=subprocess.PIPE, stderr=where, timeout=engine.PATIENCE)
                self.assertEqual((client.returncode, client.stdout), (0, b"readyok\n"))
                log = "".join(file.read_text() for file in pathlib.Path(directory).glob("*.log"))
            told = log if settings else client.stderr.decode()
            self.assertEqual((told.count("Lines of the caller"), "\n7 lines of the caller" in log), (1, bool(settings)))

    def test_a_client_without_its_table_ends_in_silence(self):
        large = self.engine().started()
        no_room = f"ulimit -v 100000; exec '{engine.Engine.program}' localclient 1 {large[0]} {large[1]} 2>/dev/null"
        for words in (*self.role[:3], "1048576"), ("localclient", "1", "1", "16"), ("localclient",), ("-c", no_room):
            with mock.patch.object(engine.Engine, "program", engine.Engine.program if words[0] != "-c" else "/bin/sh"):
                client = self.engine(*words, words=())
            client.expected_end.add(client.wait())
            self.assertEqual(client.read_all(), [], words)


class Lives(ClientTest):
    def check_arguments(self, pids, table):
        for number, pid in enumerate(pids, 1):
            program, *words, _ = about(pid, "cmdline").split("\0")
            self.assertTrue(os.path.samefile(program, engine.Engine.program))
            self.assertRegex(" ".join(words), f"^localclient {number} {table[0]} {table[1]}$")

    def test_the_number_of_processes_is_an_option(self):
        player = self.parent(0)
        for number, told in ((1, False), (3, True), (3, False), (2, True), (4, True), (1, True), (1, False), (2, True)):
            lines = [line.replace(f"cpus = {number};", "cpus = 1;") for line in player.set(f"CPUs value {number}")]
            self.assertEqual(lines, report() if told else [])
            self.check_arguments(self.clients(player, number - 1), player.table)
        player.send("server_createlocalclient", "server_createlocalclient")
        self.check_arguments(self.clients(player, 3), player.table)
        self.assertEqual(player.ready(), [])
        for text in ("1", "0", "-7", "many"):
            player.set(f"CPUs value {text}")
            self.clients(player, 0)
        self.check_search(Board(), player.go("depth 10", "startpos"))

    def test_clients_move_to_the_new_table(self):
        player = self.parent(2)
        old = self.clients(player, 2)
        for megabytes, buckets in ((4, 65536), (1, 16384)):
            table = NEW_TABLE.fullmatch(player.set(f"Hash value {megabytes}")[-1]).groups()
            self.assertEqual(int(table[1]), buckets)
            self.wait_for_end(old)
            old = self.clients(player, 2)
            self.check_arguments(old, table)
            self.assertEqual(segments_of(player), {int(table[0])})
            self.check_work(player, *old)

    def test_every_end_of_the_parent_ends_its_clients(self):
        ends = "quit", "input", signal.SIGTERM, signal.SIGINT, *[signal.SIGKILL] * 4
        for state, end in (*itertools.product(("idle", "busy"), ends), ("frozen", "quit")):
            player = self.parent(2)
            pids = self.clients(player, 2)
            if state == "frozen":
                os.kill(pids[1], signal.SIGSTOP)
            if state == "busy":
                player.send("position startpos", "go infinite")
                player.read_to("info depth 10 .*")
            self.assertEqual(player.end(end), player.wait())
            self.wait_for_end(pids)
            self.assertEqual(segments_of(player), set(), (state, end))

    def test_the_path_of_the_program(self):
        """A blank in it does no harm; and a program that has gone is a client less, not a game less."""
        with tempfile.TemporaryDirectory(prefix="a place with blanks ") as directory:
            program = shutil.copy(engine.Engine.program, os.path.join(directory, "the engine"))
            with mock.patch.object(engine.Engine, "program", program):
                player = self.parent(2)
                self.check_arguments(self.clients(player, 2), player.table)
            for spoil in (lambda: os.chmod(program, 0o644), lambda: os.remove(program)):
                spoil()
                player.set("CPUs value 1", "CPUs value 3")
                self.clients(player, 0)
                self.check_search(Board(), player.go("depth 10", "startpos"))
            self.assertEqual((self.diagnostics(player), player.quit()), ({}, 0))


class Tables(ClientTest):
    def test_only_the_tables_of_dead_engines_are_removed(self):
        low, dead, alive = (self.parent(clients) for clients in (0, 2, 1))
        tree = [dead.process.pid, *self.clients(dead, 2)]
        for number, pid in itertools.product((signal.SIGSTOP, signal.SIGKILL), tree):
            os.kill(pid, number)  # all at once, so that nobody can clear up after another
        dead.expected_end.add(-signal.SIGKILL)
        dead.wait()
        self.wait_for_end(tree)
        low.quit()
        heir = self.parent(0)  # finds a free number, maybe below that of the dead
        self.assertEqual(segments_of(dead), set())
        self.assertEqual(segments_of(alive, heir), {alive.table[0], heir.table[0]})
        self.check_work(alive, *self.clients(alive, 1))

    def test_engines_started_in_the_same_instant(self):
        players = [self.engine(settings="nHashTables=1024\n", words=()) for _ in range(12)]
        for player in players:
            player.send("uci")
        tables = {player.started()[0] for player in players}
        self.assertEqual((len(tables), segments_of(*players)), (12, tables))


class Faults(ClientTest):
    def test_clients_that_are_killed(self):
        player = self.parent(2)
        idle, working = self.clients(player, 2)
        os.kill(idle, signal.SIGKILL)
        self.check_work(player, working)
        self.check_complaints(player, LOST)
        player.send("position startpos", "go infinite")
        seen = player.read_to("info depth 10 .*")
        os.kill(working, signal.SIGKILL)
        self.clients(player, 0)
        player.send("stop")
        self.check_search(Board(), player.answer(seen))
        self.check_search(Board(), player.go("depth 10", "startpos"))
        self.check_complaints(player, LOST * 2)
        player.set("CPUs value 1", "CPUs value 3")
        self.check_work(player, *self.clients(player, 2))

    def test_frozen_clients(self):
        """They cost neither the game nor its end; and a signal while they are being ended leaves none behind."""
        player, board = self.parent(7), Board(MIDDLE_GAME)
        working, *frozen = pids = self.clients(player, 7)

        def tell(pids, number):
            for pid in pids:
                os.kill(pid, number)
            return time.monotonic()

        begun = tell(frozen, signal.SIGSTOP)
        self.check_search(board, player.go("wtime 20000 btime 20000", "fen " + MIDDLE_GAME))
        self.assertLess(time.monotonic() - begun, 10)
        player.send("position fen " + MIDDLE_GAME, "go infinite")
        wait_until(lambda: self.diagnostics(player).get("connerr", "").count("\n") == 6, "the end of all patience")
        self.check_complaints(player, SILENT * 6)
        found = re.findall(SILENT, self.diagnostics(player)["connerr"])
        self.assertEqual(sorted(index for index, _ in found), [*"234567"])  # after this process and the one at work
        first_moves = [board.play(move).fen().split()[:4] for move in board.moves()]
        self.assertTrue(all(fen.split()[:4] in first_moves for _, fen in found))
        player.send("stop")
        self.check_search(board, player.answer())
        self.check_work(player, working)
        tell(frozen, signal.SIGCONT)
        wait_until(lambda: self.diagnostics(player)["connerr"].count("recovered") == 6, "the late answers")
        self.check_complaints(player, SILENT * 6 + RECOVERED * 6)
        self.check_work(player, *pids)
        begun = tell(pids, signal.SIGSTOP)
        self.assertEqual(len(player.set("CPUs value 8", "CPUs value 1")), 2)
        self.assertLess(time.monotonic() - begun, 5)
        self.clients(player, 0)
        player.set("CPUs value 8")
        pids = self.clients(player, 7)
        tell(pids, signal.SIGSTOP)
        player.send("setoption name CPUs value 1")
        time.sleep(0.3)
        player.signal(signal.SIGTERM)
        player.wait()
        self.wait_for_end(pids)

    def test_no_room_for_all_clients(self):
        """A limit of the system costs clients, and not the engine, which can still search against the clock."""
        player = self.parent(0)
        used = int(re.search(r"VmSize:\s+(\d+) kB", about(player.process.pid, "status"))[1]) << 10
        resource.prlimit(player.process.pid, resource.RLIMIT_AS, [used + (100 << 20)] * 2)
        for _ in range(2):  # it may be tried again
            told, *rest = player.set("CPUs value 61")
            had = re.fullmatch(r"info string The system gives room for only (\d+) of 60 clients", told)[1]
            self.assertEqual(rest, [line.replace("cpus = 1;", f"cpus = {int(had) + 1};") for line in report()])
            self.clients(player, int(had))
        self.check_search(Board(MIDDLE_GAME), player.go("wtime 9000 btime 9000", "fen " + MIDDLE_GAME))
        self.assertEqual(player.quit(), 0)

    def test_a_table_that_was_left_half_written(self):
        """What a client leaves that is killed while it writes: locks that nobody opens, fields that don't fit."""
        player = self.parent(1, "nHashTables=256\n")
        chance, entries = random.Random(2), 2 * 256
        libc = ctypes.CDLL(None)
        libc.shmat.restype = ctypes.c_void_p
        address = libc.shmat(libc.shmget(player.table[0], 0, 0), None, 0)
        self.addCleanup(libc.shmdt, ctypes.c_void_p(address))
        memory = (ctypes.c_ubyte * (24 * entries)).from_address(address)
        for locks in (entries, 2, 1):
            memory[20::24 * locks] = [1] * (entries // locks)
            player.send("position fen " + MIDDLE_GAME, "go infinite")
            end = time.monotonic() + 1
            while time.monotonic() < end:
                at = 24 * chance.randrange(entries)
                memory[at + chance.choice((0, 1, 4, 5))] = chance.randrange(128)
                memory[at + chance.choice((13, 15))] = chance.randrange(-100, 100) & 255
                memory[at + chance.choice((16, 17, 18))] = chance.randrange(250)
            player.send("stop")
            self.assertTrue(Board(MIDDLE_GAME).find(player.answer().best))
        self.assertLessEqual(set(self.diagnostics(player)), {"alphabetaerr"})


if __name__ == "__main__":
    engine.main()
