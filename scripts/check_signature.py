#!/usr/bin/env python3
"""Compares the engine's node counts with benchmarks/signature.txt: scripts/check_signature.py ENGINE [short]

The sum of the nodes of `benchmark -4` in a fresh process is the engine's signature. It is the same on every machine; a
commit that changes it says so as `signature: <nodes>` and enters the new numbers. `short` runs the shallower benchmark
only. The exit code is 1 if a number differs.
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

KEPT = Path(__file__).resolve().parent.parent / "benchmarks/signature.txt"


def nodes_of(engine, command):
    with tempfile.TemporaryDirectory() as folder:  # without settings
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
