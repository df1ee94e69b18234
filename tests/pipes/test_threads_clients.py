"""Searches with clients beside them at every moment, also under the thread sanitizer. Seeds are fixed, moments are not."""

import os
import random
import signal
import time

import engine
from fixtures.fake_peer import free_ports
from rules import Board
from test_clients import RECOVERED, SILENT, SMALL, ClientTest
from test_threads_stress import Moments

SEARCHES = ("infinite", "infinite", "depth 12", "movetime 20", "ponder wtime 60 btime 60", "wtime 300 btime 300")
TINY = "nHashTables=4096\nnPawnTables=256\n"
ENOUGH = 50  # seconds; a thousand searches take less, but for those under a sanitizer


class ClientsThreads(ClientTest, Moments):
    def search(self, player, chance):
        """A search that is stopped at some moment has one answer, a legal one."""
        board = self.start_search(player, chance, SEARCHES)
        time.sleep(chance.choice((0, chance.random() * 0.005, chance.random() * 0.03)))
        player.send("stop")
        self.check_move(player, board, "stopped")
        self.assertFalse([line for line in player.ready() if line.startswith("bestmove")])

    def check_end(self, player):
        """No client has been lost; on a busy machine one may have been late."""
        found = self.diagnostics(player)
        self.assertRegex(found.pop("connerr", ""), rf"\A(?:{SILENT}|{RECOVERED})*\Z")
        self.assertEqual((found, player.quit()), ({}, 0))

    def test_a_thousand_short_searches(self):
        chance, player = random.Random(1), self.parent(2, TINY)
        end = time.monotonic() + ENOUGH
        for number in range(1000):
            if number < 50 or time.monotonic() < end:
                self.search(player, chance)
        self.check_work(player, *self.clients(player, 2))
        self.check_end(player)

    def test_clients_come_and_go_between_searches(self):
        chance, player = random.Random(2), self.parent(1, TINY)
        for _ in range(30):
            number = chance.randint(1, 4)
            player.send(f"setoption name CPUs value {number}")
            if chance.random() < 0.2:
                player.send(f"setoption name Hash value {chance.randint(1, 2)}")
            for _ in range(chance.randint(0, 3)):
                self.search(player, chance)
            if chance.random() < 0.5:
                self.clients(player, number - 1)
        self.check_end(player)

    def test_a_whole_game(self):
        """Clients are killed and stopped as chance has it; no move and no time is lost."""
        port, = free_ports(self, 1)

        def new_peer():
            peer = self.engine("remoteserver", str(port), words=(), settings=SMALL)
            peer.read_to(r"acceptSocket ist im listen Modus\.\.\.\.")
            return peer

        chance, peer = random.Random(3), new_peer()
        player = self.engine(settings=f"{SMALL}numberOfLocalClients=1\nremoteClient=127.0.0.1:{port}\n")
        board, earlier, moves, clocks, faults = Board(), [], [], {True: 16.0, False: 16.0}, []
        while not board.end(earlier) and len(moves) < 300:
            player.send("position startpos moves " + " ".join(moves))
            player.ready()
            victim = chance.choice((peer.process.pid, *self.clients(player, 1)))
            kinds = (signal.SIGKILL, signal.SIGSTOP)[:2 if min(clocks.values()) > 8 else 1]
            number = chance.choice(kinds) if chance.random() < 0.12 else None
            begun = time.monotonic()
            player.send("go winc 30 binc 30 " + " ".join(
                f"{'wb'[not side]}time {int(1000 * clock)}" for side, clock in clocks.items()))
            if number:
                time.sleep(chance.random() * 0.1)
                os.kill(victim, number)
                faults.append(number)
            best = player.answer().best
            clocks[board.white] -= time.monotonic() - begun - 0.03
            self.assertGreater(clocks[board.white], 0, f"time lost after {len(moves)} moves and {faults}")
            self.assertTrue(board.find(best), f"{best} on {board.fen()}")
            earlier.append(board.identity())
            moves.append(best)
            board = board.play(board.find(best))
            if number == signal.SIGSTOP:
                os.kill(victim, signal.SIGCONT)
            elif number and victim == peer.process.pid:
                peer.expected_end.add(-signal.SIGKILL)
                peer = new_peer()
                player.send(f"server_createremoteclient 127.0.0.1 {port}")
            elif number:
                player.send("setoption name CPUs value 1", "setoption name CPUs value 2")
        self.assertGreater(len(faults), 3)
        self.assertEqual((player.quit(), peer.wait()), (0, 0))


if __name__ == "__main__":
    engine.main()
