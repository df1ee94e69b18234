#!/usr/bin/env python3
"""Compares how many nodes per second Valku and two engines from Debian's packages search, in one run.

All engines search the same middle-game positions with their default settings on one processor, one search after the
other, each in a fresh process. They take turns position by position, so that other work of the machine slows all of
them alike. A rate is the number of nodes of the last report divided by the processor time that the process had used for
the search by then. Each engine counts nodes in its own way. Prints a table, the ratios, and the commands that were run.
"""

import argparse
import contextlib
import os
import re
import shlex
import shutil
import statistics
import subprocess
import sys
import threading
import time
from pathlib import Path

from engine_process import EngineProcess

ROOT = Path(__file__).resolve().parent.parent

SEARCH_PATH = os.environ.get("PATH", "/usr/bin:/bin") + ":/usr/games"  # where Debian puts chess programs
PEERS = [("toga2", ["toga2"]), ("gnuchess", ["gnuchess", "--uci"])]  # Debian package and command

POSITIONS = [
    "r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2Q1RK1 w - - 0 9",
    "r4rk1/1bqnbppp/p2ppn2/1p6/3NPP2/1BN1B3/PPP1Q1PP/R4RK1 w - - 0 12",
    "r1b2rk1/pp1nqppp/2pbpn2/3p4/2PP4/1PN1PN2/PBQ1BPPP/R3K2R w KQ - 0 10",
    "r2q1rk1/1b2bppp/p1n1pn2/1pp5/3P4/P1NBPN2/1P2QPPP/R1BR2K1 w - - 0 12",
    "2rq1rk1/pb1n1ppN/4p3/1pb5/3P1Pn1/P1N5/1PQ1B1PP/R1B2RK1 b - - 0 16",
    "r1bq1rk1/ppp1npbp/3p1np1/3Pp3/2P1P3/2N2N2/PP2BPPP/R1BQ1RK1 w - - 1 9",
]

REPORT = re.compile(r"\bnodes (\d+)\b")
ANSWER_SECONDS = 30  # how long an engine may take to answer a command


class Engine(EngineProcess):
    """A UCI engine on one processor."""

    def __init__(self, command, core):
        path = os.path.abspath(shutil.which(command[0], path=SEARCH_PATH))
        self.command = ([] if core is None else ["taskset", "-c", str(core)]) + [path] + command[1:]
        super().__init__(self.command, ANSWER_SECONDS)

    def lines_until(self, word):
        """The engine's lines up to the first that begins with the word."""
        for line in self.process.stdout:
            yield line
            if line.split()[:1] == [word]:
                return
        raise RuntimeError(f"{shlex.join(self.command)} ended, or gave no {word} in {ANSWER_SECONDS} s")

    def processor_seconds(self):
        """What all threads of the process have used so far; the kernel counts it in nanoseconds."""
        total = 0
        for task in Path(f"/proc/{self.process.pid}/task").iterdir():
            with contextlib.suppress(FileNotFoundError):  # of a thread that has ended
                total += int((task / "schedstat").read_text().split()[0])
        return total / 1e9

    def search(self, fen, seconds):
        """Nodes and processor seconds of a search that is stopped after so many seconds."""
        for words, answer in (("uci", "uciok"), ("ucinewgame\nisready", "readyok")):
            self.send(words)
            list(self.lines_until(answer))
        self.send("position fen " + fen)
        before = self.processor_seconds()
        self.send("go infinite")
        stopper = threading.Timer(seconds, self.send, ["stop"])
        stopper.start()
        nodes, used = 0, 0.0
        for line in self.lines_until("bestmove"):
            if report := REPORT.search(line):
                nodes, used = int(report[1]), self.processor_seconds() - before
        stopper.join()
        if nodes == 0 or used <= 0:
            raise RuntimeError(f"{shlex.join(self.command)} reported no nodes")
        return nodes, used


def find_peers(may_install):
    def missing():
        return [package for package, command in PEERS if not shutil.which(command[0], path=SEARCH_PATH)]

    if missing() and may_install:
        pairs = " ".join(f"{package}:/usr/games/{package}" for package in missing())
        subprocess.run(["bash", "-c", f". {shlex.quote(str(ROOT / 'scripts/packages.sh'))}; needPackages {pairs}"],
                       check=True)
    if missing():
        packages = " ".join(missing())
        sys.exit(f"not installed: {packages}; run this with --install, or\n    apt-get install {packages}")


def measuring_core(wanted):
    """The processor for the engines, by default the last that this process may use; None without taskset."""
    if not shutil.which("taskset"):
        return None
    return wanted if wanted is not None else max(os.sched_getaffinity(0))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--engine", default=str(ROOT / "build/release/valku"),
                        help="Valku's program (default: what ./run.sh has built)")
    parser.add_argument("--seconds", type=float, default=3.0, help="length of a search (default 3)")
    parser.add_argument("--rounds", type=int, default=1, help="searches of each engine per position (default 1)")
    parser.add_argument("--core", type=int, help="processor to run the engines on (default: the last one)")
    parser.add_argument("--install", action="store_true", help="install missing packages with apt-get")
    arguments = parser.parse_args()

    if not os.access(arguments.engine, os.X_OK):
        sys.exit(f"there is no engine at {arguments.engine}; ./run.sh builds it, --engine names another")
    find_peers(arguments.install)
    core = measuring_core(arguments.core)

    engines = [("valku", [arguments.engine]), *PEERS]
    rates = {name: [] for name, _ in engines}
    commands = {}
    print("nodes per second of processor time, in thousands")
    print("position  " + "".join(f"{name:>10}" for name, _ in engines))
    for number, fen in enumerate(POSITIONS * arguments.rounds):
        row = f"{number % len(POSITIONS) + 1:>8}  "
        for name, command in engines:
            with Engine(command, core) as engine:
                nodes, used = engine.search(fen, arguments.seconds)
                commands[name] = shlex.join(engine.command)
            rates[name].append(nodes / used)
            row += f"{rates[name][-1] / 1000:>10.0f}"
        print(row, flush=True)

    print("median    " + "".join(f"{statistics.median(rates[name]) / 1000:>10.0f}" for name, _ in engines))
    for name, _ in PEERS:
        ratios = [own / other for own, other in zip(rates["valku"], rates[name])]
        print(f"valku / {name}: median {statistics.median(ratios):.2f}, "
              f"lowest {min(ratios):.2f}, highest {max(ratios):.2f}")

    print(f"\nevery search: uci, ucinewgame, isready, position fen ..., go infinite, "
          f"after {arguments.seconds:g} s stop, in a new process of")
    for name, _ in engines:
        print(f"    {commands[name]}")
    for number, fen in enumerate(POSITIONS, 1):
        print(f"position {number}: {fen}")


if __name__ == "__main__":
    began = time.monotonic()
    main()
    print(f"took {time.monotonic() - began:.0f} s")
