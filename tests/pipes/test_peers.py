"""Peers over TCP: real ones on this machine, and sockets that play a peer in every way but the right one."""

import contextlib
import os
import pathlib
import random
import re
import shutil
import signal
import socket
import subprocess
import sys
import time

import engine
from engine import PATIENCE, wait_until
from fixtures.fake_peer import FakePeer, free_ports, hold_ports, is_listening
from rules import START, Board
from test_clients import SMALL, ClientTest, about, jobs, ticks
from test_shell import segments_of
from test_uci import MIDDLE_GAME

TRIED, CONNECTED = ["Winsock gestartet!", "Socket erstellt!"], "Verbunden mit 127.0.0.1..."
LISTENING = "acceptSocket ist im listen Modus...."
NOT_REACHED = r"Fehler: connect\(\) gescheitert! Fehlercode: 111\s+RCSP\(\) could not connect to port (\d+), retval = 1"
NOT_BOUND = r"Fehler: bind *Fehlercode: 98\s+CC: could not listen on port (\d+)"
OVERRUN = r"ConsoleCommunicator::getLine\(\): Warning: buffer overrun detected!"
FAILED = "T put client in error state (ACPS::run)!"
LOST = ["T put client in error state (ACPS::getNextMessage)!", FAILED, "response = err"]
ANSWER = rf"cabresult -?\d+ \d+ \d+ 0 0 (?:{engine.PV})?"
# Games after which there is only one move, that move, and what a job then says of men, castling, en passant and moves.
NONE = "127 127 127 127"
FORCED = (("k7/pp6/8/8/8/3Q4/2r5/R3K2R b KQ - 4 30", ["c2c5", "d3d8"], "c5c8",
           ":::0 7 :115 :4 :96 97 :::114 ::112 w", "0 7 127 127", 123, 7),
          ("K6k/8/8/8/5p2/8/4P3/1r4bb w - - 3 9", [], "e2e4", "52 :::::112 :53 ::6 7 :1 ::119 b", NONE, 36, 0))
JOB = """client_pos {}\nclient_castlings {}\nclient_epfield {}\nclient_50moves {}\nclient_hash {}\nclient_history {};
client_alphabeta {}\n"""
MATE = JOB.format(":::0 ::6 :101 102 103 :::::118 w", NONE, 123, 0, "-7 7", "", "3 -30000 30000 16 0")
ENDLESS = next(jobs())[0].replace(" 28 0\n", " 200 0\n")


class PeerTest(ClientTest):
    def root(self, *peers, settings=""):
        peers = "".join(f"remoteClient=127.0.0.1:{peer.port}\n" for peer in peers)
        return self.ready_engine(settings=SMALL + settings + peers)

    def server(self, port, children, role="remoteserver", settings=""):
        """A peer that listens. With its children it is gone after the test."""
        settings += f"{SMALL}numberOfLocalClients={children}\n"
        server = self.engine(role, str(port), words=(), settings=settings)
        server.told = server.read_to(re.escape(LISTENING))
        server.children = self.clients(server, children)
        server.expected_end.add(-signal.SIGTERM)
        self.addCleanup(self.check_gone, server)
        self.addCleanup(server.process.terminate)
        return server

    def check_gone(self, *servers):
        for server in servers:
            server.wait()
            self.wait_for_end(server.children)
            self.assertEqual(segments_of(server), set())

    def errors(self, player, name="connerr"):
        return self.diagnostics(player).get(name, "").splitlines()

    def check_ports(self, player, form, ports):
        """A port that could not be had takes a line or two."""
        told = "\n".join(self.errors(player, "starterr"))
        self.assertEqual(([*map(int, re.findall(form, told))], re.sub(form, "", told).strip()), ([*ports], ""))


class RealPeers(PeerTest):
    def test_both_sides_climb_to_a_free_port(self):
        first, held = hold_ports(self, 4)
        held.pop().close()
        server = self.server(first, 0)
        self.assertEqual(server.told, TRIED * 4 + [f"Socket an port {first + 3} gebunden", LISTENING])
        settings = f"{SMALL}numberOfLocalClients=2\nremoteClient=127.0.0.1:{first}\n"
        player = self.engine(words=("console",), settings=settings)
        lines = player.read_to("remoteClient on .*")
        self.assertEqual([line for line in lines if line in (*TRIED, CONNECTED)], [TRIED[0], *TRIED * 4, CONNECTED])
        self.assertEqual(lines[-5:], ["The following search processes will be used:", "rootSearchProcess",
                                      "localClient", "localClient", f"remoteClient on 127.0.0.1:{first + 3}"])
        self.clients(player, 2)
        self.assertEqual((player.quit(), server.wait()), (0, 0))
        self.check_ports(server, NOT_BOUND, range(first, first + 3))
        self.check_ports(player, NOT_REACHED, range(first, first + 3))

    def test_a_search_and_its_every_end(self):
        for end in "quit", signal.SIGKILL:
            ports = free_ports(self, 4)
            peers = (self.server(ports[0], 1), self.server(ports[1], 2, "remotecaller"))
            for peer, words in zip(peers, (["localclient 1"], [f"remoteclient {port}" for port in ports[2:]])):
                table, = segments_of(peer)
                self.assertEqual([about(pid, "cmdline").split("\0", 1)[1].replace("\0", " ") for pid in peer.children],
                                 [f"{word} {table} 16384 " for word in words])
            wait_until(lambda: all(map(is_listening, ports)), "the caller's children")
            # One of the children is not called by anybody.
            player = self.root(settings="".join(f"remoteClient=127.0.0.1:{port}\n" for port in ports[:3]))
            for fen in (START, MIDDLE_GAME):
                self.check_search(Board(fen), player.go("depth 9", "fen " + fen))
            self.assertEqual(os.listdir(player.directory), ["settings.ini"])
            player.send("position startpos", "go infinite")
            for peer, port in zip(peers, ports):
                peer.read_to(f"Socket created on port {port}!")
                peer.read_to(ANSWER)
            player.end(end)
            self.check_gone(*peers)
            self.assertEqual([line for line in peers[0].read_all() if not re.fullmatch(ANSWER, line)], [])

    def test_the_children_of_a_caller_that_goes_first(self):
        """Whom somebody has called stays with that one; the others go with their maker."""
        ports = free_ports(self, 3)
        caller = self.server(ports[0], 2, "remotecaller")
        called, other = caller.children
        wait_until(lambda: all(map(is_listening, ports)), "the caller's children")
        player = self.root(settings=f"remoteClient=127.0.0.1:{ports[1]}\n")
        caller.read_to(f"Socket created on port {ports[1]}!")
        caller.process.terminate()
        self.wait_for_end([caller.process.pid, other])
        self.check_work(player, called)
        self.assertEqual((player.quit(), self.errors(player)), (0, []))

    def test_the_address_to_listen_on(self):
        """Another loopback address stands for all the others that a machine has."""
        for settings, heard in (("", True), ("listenAddress=127.0.0.1\n", False)):
            port, = free_ports(self, 1)
            self.server(port, 0, settings=settings)
            callers = {address: self.enterContext(socket.socket()) for address in ("127.0.0.2", "127.0.0.1")}
            found = [caller.connect_ex((address, port)) == 0 for address, caller in callers.items()]
            self.assertEqual(found, [heard, True])
        for address in ("300.1.2.3", "nobody", "127.0.0.1 2", "192.0.2.1"):  # the last one is nobody's own
            server = self.engine("remotecaller", "1234", words=(), settings=f"{SMALL}listenAddress={address}\n")
            server.expected_end = {1}
            self.assertEqual((server.wait(), len(server.read_all())), (1, 1))


class Strangers(PeerTest):
    def answer_to(self, address, port):
        with contextlib.suppress(ConnectionError), socket.create_connection((address, port), PATIENCE) as line:
            line.sendall(MATE.encode())
            return line.makefile().readline()
        return ""

    def strangers(self):
        """Where 198.51.100.7 is an address of this machine."""
        far, malformed = "198.51.100.7", "198.51.100.7, 198.51.100.7/33"
        for settings, served in (("", False), (f"acceptFrom=1.2.3.4\nacceptFrom=8.8.8.8 {far}\r\n", True),
                                 ("acceptFrom=198.51.100.0/24\n", True), (f"acceptFrom={malformed}\n", False)):
            port, = free_ports(self, 1)
            peer = self.server(port, 0, settings=settings)
            self.assertEqual(any(malformed in line for line in peer.told), malformed in settings)
            self.assertEqual(bool(self.answer_to(far, port)), served, settings)
            if not served:
                self.assertTrue(self.answer_to("127.0.0.1", port))
                self.assertTrue(any(far in line for line in peer.read_to("Neue Verbindung .*")))

    def test_from_a_network_of_its_own(self):
        inside = ["unshare", "-rn", "sh", "-c", 'ip address add 198.51.100.7 dev lo && ip link set lo up && exec "$@"', "sh"]
        if not shutil.which("unshare") or subprocess.run([*inside, "true"], capture_output=True).returncode:
            self.skipTest("no network of its own here")
        run = subprocess.run([*inside, sys.executable, __file__, engine.Engine.program, "Strangers.strangers"],
                             capture_output=True, text=True)
        self.assertEqual(run.returncode, 0, run.stderr)


class RawBytes(PeerTest):
    """What may come over a connection to a peer, whoever is at its other end."""

    def setUp(self):
        super().setUp()
        self.begin()

    def begin(self):
        port, = free_ports(self, 1)
        self.peer = self.server(port, 1)
        self.line = self.enterContext(socket.create_connection(("127.0.0.1", port), PATIENCE))
        self.line.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.answers = self.enterContext(self.line.makefile("r"))

    def check_mate(self, *pieces):
        """A mate by the first move after the root, which is at ply 1; and no line beside the answer."""
        for piece in pieces:
            self.line.sendall(piece.encode())
        self.assertRegex(self.answers.readline(), r"^cabresult 29998 \d+ \d+ 0 0 a1a8\n$")

    def test_lines_in_every_shape(self):
        self.check_mate(*MATE)
        for _ in range(10):
            self.check_mate(MATE.replace("\n", "\r\n"))
        self.check_mate("client_stop\n\n", MATE.replace("\n", "\r"))
        self.peer.expected_complaints = None
        self.line.sendall(b"x" * 40000)
        self.peer.read_to(OVERRUN)
        self.check_mate("\n" + MATE)
        self.check_mate("\0" * 65536 + "\n" + MATE)
        self.line.sendall(b"x" * 65537)
        self.check_gone(self.peer)

    def test_other_callers_are_turned_away_and_the_port_stays_taken(self):
        port, own = self.line.getpeername()[1], self.line.getsockname()[1]
        for _ in range(3):
            with contextlib.suppress(ConnectionError), socket.create_connection(("127.0.0.1", port), PATIENCE) as other:
                self.assertEqual(other.recv(1), b"")
        second = self.server(port, 0)
        self.assertNotIn(f"Socket an port {port} gebunden", second.told)
        self.check_ports(second, NOT_BOUND, [port])
        self.check_mate(MATE)
        # The peer asks the system whether the caller is there: timer 2 of a connection is that for keeping it alive.
        table, row = pathlib.Path("/proc/net/tcp"), rf":{port:04X} \w+:{own:04X} 01 \w+:\w+ 02:"
        wait_until(lambda: re.search(row, table.read_text()), "the connection's timer")

    def test_nothing_but_words_of_a_search(self):
        """No file is written, no program started, no move made; that is told once."""
        self.peer.expected_complaints = None
        files, target = os.listdir(self.peer.directory), os.path.join(self.peer.directory, "target")
        for text in ("setoption name WriteLog value true", f"callengine /bin/cat x 1 {target} 5", f"writebook {target}",
                     f"testeval {target}", "server_createlocalclient", "new", "edit", "#", "Ke1", ".", "e2e4", "eval"):
            self.line.sendall(f"{text}\nisready\n".encode())
            self.assertEqual(self.answers.readline(), "readyok\n", text)
        self.clients(self.peer, 1)
        self.assertEqual(os.listdir(self.peer.directory), files)
        self.peer.complaints.seek(0)
        self.assertEqual(len(self.peer.complaints.readlines()), 1)
        self.check_mate("edit\n" + MATE)

    def test_garbage(self):
        self.peer.expected_complaints = None
        kings, chance = "client_pos :::::4 ::::::116 w", random.Random(1)
        for text in ("client_pos", "client_pos 200 300 -5 :", kings[:-1], kings.replace("4", "4 4"), "gobbledygook",
                     kings.replace(":", "16 " * 5000 + ":", 1), kings.replace(":4", "6 22 38 :4"), "client_castlings",
                     "client_castlings 5 5 5 5", "client_epfield 119", "client_50moves 99999999999", "client_hash x",
                     "client_history", "client_history " + "1 " * 9000, "client_preparesearch", "\xff\xfe", "a1a1"):
            noise = bytes(chance.choices(range(256), k=300)).replace(b"q", b"")  # says nothing of "quit"
            # A job that cannot be has no answer, or one; nobody asks for its worth.
            for before in ("", MATE.replace("client_alphabeta", text + "\nclient_alphabeta")):
                self.line.sendall(f"{before}{text}\nclient_alphabeta 9 9\nclient_stop\n".encode() + noise + b"\n")
            self.line.sendall(MATE.replace(":::0 ", ":::1 ").encode())  # with a mate of its own
            self.assertTrue(any(re.match("cabresult 29998 .* b1b8$", line) for line in self.answers), text)

    def test_a_job_is_judged_as_a_whole(self):
        """What no position can be is not searched, and nothing of it reaches the board."""
        good = MATE.replace(":::0 ", ":::1 ").replace("-7 7", "-9 9")  # with a mate and a key of its own
        for spoilt in (("epfield 123", "epfield 200"), ("epfield 123", "epfield 379"), ("epfield 123", "epfield -133"),
                       ("castlings 127", "castlings 383"), ("castlings 127", "castlings 1"), ("50moves 0", "50moves 256"),
                       ("50moves 0", "50moves -1"), ("history ;", f"history {'1 2 ' * 301};"), ("118 w", "118 x"),
                       ("epfield 123", "epfield 379\nclient_epfield 123")):
            self.assertIn(spoilt[0], MATE)
            self.line.sendall((MATE.replace(*spoilt) + good).encode())
            self.assertRegex(self.answers.readline(), "^cabresult 29998 .* b1b8$", spoilt)
        self.line.sendall((MATE + "isready\n").encode().replace(b"alphabeta", b"stop"))
        self.assertEqual(self.answers.readline(), "readyok\n")
        self.peer.signal(signal.SIGTERM)
        self.assertEqual(self.peer.read_all()[-1], "board: 6k1/5ppp/8/8/8/8/8/1R4K1 w - - 0 1")

    def test_a_signal_while_jobs_are_waiting(self):
        for _ in range(10):
            self.begin()
            self.line.sendall(1000 * next(jobs())[0].encode())
            self.answers.readline()
            self.peer.signal(signal.SIGTERM)
            self.check_gone(self.peer)
            self.assertEqual(self.peer.process.returncode, -signal.SIGTERM)

    def test_stops_and_a_caller_that_hangs_up_in_a_job(self):
        for number in range(20):
            self.line.sendall((ENDLESS + "client_stop\n" * (1 + number % 2)).encode())
            self.assertRegex(self.answers.readline(), ANSWER)
        self.check_mate(MATE)
        worker, = self.peer.children
        begun = ticks(worker)

        def has_worked():  # a client that is late with its last answer has no part in a job
            self.line.sendall((ENDLESS + "client_stop\n").encode())
            self.assertRegex(self.answers.readline(), ANSWER)
            return ticks(worker) > begun + 3

        wait_until(has_worked, "the client at work")
        self.line.sendall(ENDLESS.encode())
        self.line.shutdown(socket.SHUT_RDWR)
        self.check_gone(self.peer)
        self.assertEqual(self.peer.process.returncode, 0)


class FakePeers(PeerTest):
    def keys(self, fen, moves):
        """The keys of the positions of a game, as the console shows them, in the signed numbers of the wire."""
        told, _ = self.run_with("\n".join(("console", "force", f"fen {fen}", *moves, "")))
        pairs = re.findall(r"hashpos = (\d+)  hashkey = (\d+)", "\n".join(told))[1:]
        return ["{} {} ".format(*((int(half) ^ 1 << 31) - (1 << 31) for half in pair)) for pair in pairs]

    def test_the_dialogue_of_a_search(self):
        """Each job to the letter; and a peer that finishes none in time changes nothing but the count of nodes."""
        for fen, moves, forced, *words in FORCED:
            peer = FakePeer(self)
            player = self.root(peer)
            peer.answer_all("client_stop", lambda *_: "cabresult 5 1000000000 60 0 0 \n")
            game = f"fen {fen} moves {' '.join(moves)}" if moves else f"fen {fen}"
            answer, alone = (one.go("depth 12", game) for one in (player, self.root()))
            self.assertEqual((player.quit(), peer.thread.join(PATIENCE), peer.torn_jobs), (0, None, 0))
            count = len(peer.lines) // 8
            counted, own = divmod(answer.nodes, 10**9)
            self.assertTrue(0 < counted <= count, (counted, count))  # on a busy machine one may be late
            self.assertEqual(own, alone.nodes)
            told = [[(line["depth"], line["pv"], line["score"]) for line in one.main_lines] for one in (answer, alone)]
            self.assertEqual((told[0], answer.best), (told[1], alone.best))
            *earlier, last = self.keys(fen, [*moves, forced])
            window = r"1 -?\d+ -?\d+ (?:12|16|20|24|28|32|36|40|44) 0"
            job = JOB.format(*words, last[:-1], "".join(earlier) if moves else "", window) + "client_stop\n"
            self.assertRegex("\n".join(peer.lines), rf"^client_preparesearch\n(?:{job}){{{count}}}quit$")

    def test_the_first_answer_decides(self):
        peer = FakePeer(self)
        player = self.root(peer)
        peer.answer_all("client_alphabeta", lambda _, beta, distance, zero_window: (
            f"cabresult {beta if zero_window else -1234} 5000000000 77 9 3 a7a6\n"))
        answer = player.go("depth 24", "startpos")  # a depth that the engine does not reach alone
        self.check_search(Board(), answer)
        last = answer.main_lines[-1]
        self.assertEqual((last["depth"], answer.score, last["seldepth"], answer.ponder), ("24", 1234, "77", "a7a6"))
        self.assertEqual((last["pv"], int(last["tbhits"]) > 0), (answer.best + " a7a6", True))
        self.assertGreater(answer.nodes, 24 * 5000000000)
        self.assertEqual((player.quit(), peer.thread.join(PATIENCE), self.errors(player)), (0, None, []))
        words = [line.split()[0] for line in peer.lines]  # the winner is told to stop like all others
        self.assertEqual(words.count("client_alphabeta"), words.count("client_stop"))

    def test_a_silent_peer(self):
        """Nobody waits for it; after three seconds that is written down, and its late answer brings it back."""
        good, silent = FakePeer(self), FakePeer(self)
        player = self.root(good, silent)
        good.answer_all("client_stop", lambda *_: "cabresult 0 1 1 0 0 \n")
        answer = player.go("depth 6", "startpos")
        self.check_search(Board(), answer)
        first = Board().play(Board().find(answer.moves_at(5)[0]))
        told = [f"T put remote client 2 in error state (splitRootSearch)! position: {first.fen()}"]
        self.assertEqual(self.errors(player), [])
        self.check_search(Board(), player.go("depth 7", "startpos"))
        silent.wait_for("client_stop")
        for byte in "cabresult 0 1 1 0 0 e7e5":  # the time runs out in the middle of it
            silent.send(byte)
            time.sleep(0.2)
        self.assertEqual(self.errors(player), told)
        silent.send("\n")
        told.append("time = T: ACSP recovered from error state!")
        wait_until(lambda: self.errors(player) == told, "the late answer")
        silent.answer_all("client_alphabeta", lambda *_: time.sleep(0.5) or "cabresult 0 1 1 0 0 \n")
        for _ in range(3):  # an answer in time is not worth a line
            self.check_search(Board(), player.go("depth 7", "startpos"))
            time.sleep(1.5)
        self.assertEqual((player.quit(), self.errors(player), silent.thread.join(PATIENCE)), (0, told, None))
        self.assertEqual([peer.lines.count("client_preparesearch") for peer in (good, silent)], [5, 4])

    def test_peers_of_every_kind_but_good_ones(self):
        hello, answer = "info hello", "cabresult 0 1 1 0 0 "
        gone, reset, stay = lambda peer: peer.connection.close(), FakePeer.reset, id
        refused, runs = lambda text: [FAILED, "response = " + text], []
        for early, text, end, told in (
                (True, "", gone, LOST), (True, "", reset, LOST), (True, hello + "\n", stay, refused(hello)),
                (False, "", gone, LOST), (False, "", reset, LOST), (False, answer[:9], gone, LOST),
                (False, answer + "\n", stay, []), (False, hello + "\n", stay, refused(hello)),
                (False, "cabresult\n", stay, refused("cabresult")),
                # Of a flood, of a second answer and of what is no text the file may tell in more than one way.
                (False, answer + "e7e5 " * 2**18 + "\n", stay, None), (False, "x" * 2**20 + "\n", stay, None),
                (False, f"{answer}\n{answer}e7e5\n", stay, None), (False, b"\0\xff\n\n", stay, None)):
            peer = FakePeer(self)
            player = self.root(peer)
            if not early:
                player.send("position fen " + MIDDLE_GAME, "go depth 5")
                peer.wait_for("client_alphabeta")
            peer.in_thread(peer.send, text)
            peer.thread.join(1)  # a flood may find no end
            end(peer)
            runs.append((player, early, told))
        for player, early, told in runs:
            if not early:
                self.check_search(Board(MIDDLE_GAME), player.answer())
            self.check_search(Board(), player.go("depth 7", "startpos"))
            self.assertEqual(player.quit(), 0)
            found = [line for line in self.errors(player) if "(splitRootSearch)" not in line]  # it may be waited for
            self.assertEqual(found, found if told is None else told)

    def test_answers_that_nobody_can_believe(self):
        """However quick and wrong they are: the engine keeps to the rules and comes to an end."""
        players = []
        for text in ("{0} 1 1 0 0 a1a1 h8h8", "30000 1 1 0 0 ", "-30000 1 1 0 0 ", "30001 1 1 0 0 ", "29999 1 1 0 0 ",
                     "-99999 1 1 0 0 e7e5", "99999999999 -1 x", "-29999 99999999999999999999 1 1 1 e7e5 e7e5"):
            peer = FakePeer(self)
            players.append(self.root(peer))
            peer.answer_all("client_alphabeta",
                            lambda alpha, beta, *_, text=text: f"cabresult {text.format((alpha + beta) // 2)}\n")
            players[-1].send("position startpos", "go depth 10")
        for player in players:
            answer = player.answer()
            self.check_search(Board(), answer)
            self.assertEqual((abs(answer.score) <= 30000, player.quit()), (True, 0))

    def test_peers_that_are_not_there(self):
        """The engine starts without them, and can be told of one later. A label of that length asks nobody outside."""
        first, _ = hold_ports(self, 30)
        player = self.root(settings=f"remoteClient=127.0.0.1\nremoteClient=:0\nremoteClient=127.0.0.1:{first}\n")
        self.check_ports(player, NOT_REACHED, range(first, first + 30))
        nowhere = self.root(settings=f"remoteClient={'x' * 70}:5000\n")
        self.assertEqual(self.errors(nowhere, "starterr"), ["Host konnte nicht aufgeloest werden!"])
        peer, word = FakePeer(self), "server_createremoteclient"
        nowhere.send(word, word + " x", word + " 127.0.0.1 0", f"{word} 127.0.0.1 {peer.port}")
        nowhere.ready()
        peer.answer_all("client_stop", lambda *_: "cabresult 0 1000000000 1 0 0 \n")
        answers = [one.go("depth 7", "startpos") for one in (player, nowhere)]
        self.check_search(Board(), answers[1])
        self.assertEqual([answer.nodes > 10**9 for answer in answers], [False, True])


if __name__ == "__main__":
    engine.main()
