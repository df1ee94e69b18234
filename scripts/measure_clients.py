#!/usr/bin/env python3
"""Measures what a second process brings: time to a fixed depth with CPUs 1 and with CPUs 2, and how fast a client stops.

The positions are those of the benchmark, each searched to its own depth there and --offset plies more, once with either
number of processes. Every search has an engine of its own, so that no table helps it; which number of processes comes
first changes from search to search, so that whatever else the machine does meets both. The clock runs from `go` to
`bestmove`. Who won the races is read from the engine's log, which both sides write.

Then a client is driven as its parent does it: a job that would not end, `client_stop` at a random moment, and the time
until its answer.

    scripts/measure_clients.py                          # all 64 positions, 200 stops: a quarter of an hour
    scripts/measure_clients.py --positions 8 --stops 40 # a first impression
    scripts/measure_clients.py --positions 0            # the stops alone
"""

import argparse
import collections
import itertools
import math
import os
import random
import re
import select
import statistics
import sys
import time
from pathlib import Path

from engine_process import EngineProcess

ROOT = Path(__file__).resolve().parent.parent
POSITIONS = re.findall(r'^    \{(\d+), "(.+)"\},$', (ROOT / "src/tools/benchmark_positions.h").read_text(), re.M)
RACE = re.compile(r"^! \d+:\nrace at ply \d+ depth \d+: won by (.+)", re.M)
TABLE = re.compile(r"Create new hashtable with id (\d+), size = (\d+)")
SETTLING_SECONDS = 0.5  # in which a new child gets ready for its first job
ENDLESS_DEPTH = 200  # quarter plies
PATIENCE = 1800  # seconds for all that one engine has to do


class Process(EngineProcess):
    def __init__(self, program, *arguments):
        super().__init__([program, *arguments], PATIENCE)

    def read_to(self, form):
        for line in self.process.stdout:
            if match := re.search(form, line):
                return match
        raise RuntimeError(f"the engine ended before it wrote {form}")

    def has_output(self):
        return bool(select.select([self.process.stdout], [], [], 0)[0])


def time_to_depth(program, processes, depth, fen):
    """Seconds, and how many races each kind of racer won."""
    with Process(program) as engine:
        engine.send(f"uci\nsetoption name WriteLog value true\nsetoption name CPUs value {processes}\nisready")
        engine.read_to("readyok")
        time.sleep(SETTLING_SECONDS)
        engine.send(f"position fen {fen}")
        began = time.monotonic()
        engine.send(f"go depth {depth}")
        engine.read_to("^bestmove")
        seconds = time.monotonic() - began
        logs = "".join(path.read_text() for path in Path(engine.home.name).glob("valkucom*.log"))
        return seconds, collections.Counter(RACE.findall(logs))


def measure_races(program, count, offset):
    wins, ratios, totals = collections.Counter(), [], {1: 0.0, 2: 0.0}
    print("position  depth  CPUs 1  CPUs 2  ratio  races")
    for number, (depth, fen) in enumerate(POSITIONS[::max(1, len(POSITIONS) // count)][:count]):
        depth, seconds, races = int(depth) + offset, {}, 0
        for processes in (1, 2) if number % 2 else (2, 1):
            seconds[processes], found = time_to_depth(program, processes, depth, fen)
            wins += found
            races += found.total()
            totals[processes] += seconds[processes]
        ratios.append(seconds[1] / seconds[2])
        print(f"{number + 1:8}  {depth:5}  {seconds[1]:6.2f}  {seconds[2]:6.2f}  {ratios[-1]:5.2f}  {races:5}",
              flush=True)
    low, median, high = statistics.quantiles(ratios, n=4, method="inclusive") if count > 1 else ratios * 3
    mean = math.exp(statistics.fmean(map(math.log, ratios)))
    print(f"seconds in all: {totals[1]:.0f} with one process, {totals[2]:.0f} with two")
    print(f"ratio of the times: median {median:.2f}, geometric mean {mean:.2f}, quartiles {low:.2f} and {high:.2f}")
    print("races won: " + (", ".join(f"{who} {won} ({won / wins.total():.0%})" for who, won in wins.most_common())
                           or "there were none"))


def job(fen):
    """What a parent writes for a position; any key serves."""
    placement, side, _, _ = fen.split()[:4]
    men = collections.defaultdict(str)
    for rank, row in zip(range(7, -1, -1), placement.split("/")):
        cells = itertools.chain.from_iterable("." * int(cell) if cell.isdigit() else cell for cell in row)
        for file, man in enumerate(cells):
            men[man] += f"{16 * rank + file} "
    groups = ":".join(men[man] for man in "PNBRQKpnbrqk")
    return (f"client_pos {groups}{side}\nclient_castlings 127 127 127 127\nclient_epfield 123\nclient_50moves 0\n"
            f"client_hash {random.getrandbits(31)} {random.getrandbits(31)}\nclient_history ;\n"
            f"client_alphabeta 1 -30000 30000 {ENDLESS_DEPTH} 0")


def measure_stops(program, count):
    milliseconds = []
    with Process(program, "uci") as owner:
        table, buckets = owner.read_to(TABLE.pattern).groups()
        with Process(program, "localclient", "1", table, buckets) as client:
            while len(milliseconds) < count:
                client.send(job(random.choice(POSITIONS)[1]))
                time.sleep(random.uniform(0.01, 0.4))
                ended = client.has_output()  # by itself; that is no stop
                began = time.monotonic()
                client.send("client_stop")
                client.read_to("^cabresult ")
                if not ended:
                    milliseconds.append(1000 * (time.monotonic() - began))
    nine_tenths = sorted(milliseconds)[math.ceil(0.9 * count) - 1]
    print(f"from client_stop to cabresult, {count} stops: median {statistics.median(milliseconds):.2f} ms, "
          f"90th percentile {nine_tenths:.2f} ms, longest {max(milliseconds):.2f} ms")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--engine", default=str(ROOT / "build/release/valku"),
                        help="the program (default: what ./run.sh has built)")
    parser.add_argument("--positions", type=int, default=len(POSITIONS), metavar="N",
                        help="how many of the 64 positions, evenly chosen; 0: none (default 64)")
    parser.add_argument("--offset", type=int, default=3, metavar="N",
                        help="plies more than the benchmark's own depths (default 3)")
    parser.add_argument("--stops", type=int, default=200, metavar="N", help="how many stops; 0: none (default 200)")
    arguments = parser.parse_args()
    program = os.path.abspath(arguments.engine)
    if not os.access(program, os.X_OK):
        sys.exit(f"there is no engine at {program}; ./run.sh builds it, --engine names another")
    if os.cpu_count() < 2:
        print("this machine has one processor: two processes can only take turns")
    print(f"load of the machine at the start: {os.getloadavg()[0]:.1f} on {os.cpu_count()} processors")
    if arguments.positions > 0:
        measure_races(program, min(arguments.positions, len(POSITIONS)), arguments.offset)
    if arguments.stops > 0:
        measure_stops(program, arguments.stops)


if __name__ == "__main__":
    main()
