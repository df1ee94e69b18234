#!/usr/bin/env python3
"""Holds the engine's node counts to the numbers in benchmarks/signature.txt: scripts/check_signature.py ENGINE [short]

The sum of the nodes of `benchmark -4` in a fresh process is the engine's signature. It is the same on every machine; a
commit that changes it says so as `signature: <nodes>` and enters the new numbers. `short` runs the shallower benchmark
only. Prints what differs; the exit code tells whether anything did.
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

KEPT = Path(__file__).resolve().parent.parent / "benchmarks/signature.txt"


def nodes_of(engine, command):
    """A folder of its own: settings that lie about must not count."""
    with tempfile.TemporaryDirectory() as folder:
        answer = subprocess.run([engine], input=f"console\n{command}\nquit\n", text=True, capture_output=True,
                                cwd=folder, check=True).stdout
    total = re.search(r"^Knoten gesamt: (\d+)$", answer, re.MULTILINE)
    return int(total[1]) if total else None


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["short"]):
        print(__doc__)
        return 2
    kept = re.findall(r"^(.+): (\d+)$", KEPT.read_text(encoding="utf-8"), re.MULTILINE)
    differs = False
    for command, nodes in kept[-1:] if sys.argv[2:] else kept:
        found = nodes_of(Path(sys.argv[1]).resolve(), command)
        print(f"{command}: {found} nodes" + ("" if found == int(nodes) else f", but {nodes} are kept"))
        differs = differs or found != int(nodes)
    return 1 if differs or not kept else 0


if __name__ == "__main__":
    sys.exit(main())
