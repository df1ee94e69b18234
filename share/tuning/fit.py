#!/usr/bin/env python3
"""Fits the weights of settings.ini to labelled positions, by least squares.

MG and EG are the two files that learnfile2matrix writes; SETTINGS, a settings.ini with the weights found, is written.
Needs NumPy (Debian: python3-numpy).

    share/tuning/fit.py matrix.mg matrix.eg tuned.ini
    share/tuning/fit.py matrix.mg matrix.eg tuned.ini --present settings.ini --leash 20

The label of a position is modeled as the sum of what settings.ini can set, the same in middle game and ending, and of
what it cannot but the evaluation has: mobility, passed pawns by their rank and a constant, for each phase by itself.
The latter only keep the weights from absorbing these effects. Every weight has a Gaussian prior around its present value
with a width of some percent, the leash: where the positions say little, little is changed.

Labels are first scaled to the unit of the present weights. Other engines use other units; and as only positions with a
label of at most 150 are in the matrices, unbalanced material is always made up for by something else, which alone would
make all pieces look cheaper. The fit therefore determines the ratios of the weights.
"""

import argparse
import re
import sys
from pathlib import Path

try:
    import numpy as np
except ImportError:
    sys.exit("fit.py needs NumPy; on Debian: apt-get install python3-numpy")

# The columns of a row, in their order, by the kind of their feature. A king has fewer of them in the middle game.
KINDS = (("pawn", 48), ("knight", 64), ("bishop", 64), ("rook", 64), ("queen", 64), ("king", None), ("passed", 40),
         ("doubled", 8), ("isolated", 8), ("mobility", 1))
KING_COLUMNS = {"mg": 32, "eg": 64}

# The key in settings.ini, its default, and the columns that it weighs; a penalty weighs them negatively.
WEIGHTS = (("pawnValue", 100, "pawn", 1), ("knightValue", 370, "knight", 1), ("bishopValue", 381, "bishop", 1),
           ("rookValue", 580, "rook", 1), ("queenValue", 1160, "queen", 1), ("doublePawn", 12, "doubled", -1),
           ("isolatedPawn", 18, "isolated", -1))
LEAST_LEASH = 3  # for weights so small that some percent would be nothing

# What the settings cannot express, for each phase: expected value and width of the prior.
OTHERS = (("constant", 0, 20), ("mobility", 1, 1), *((f"passed on rank {rank}", 0, 50) for rank in range(2, 7)))

BLOCK = 20000  # rows read at a time
PARTS = 5
SCALE_LEASH = 0.5
STEPS = 20


def readMatrix(path, phase):
    """One row for each position, its columns added up to those of the fit, and the labels."""
    rows, labels = [np.empty((0, len(WEIGHTS) + len(OTHERS)))], [np.empty(0)]
    with open(path) as file:
        count, width = map(int, file.readline().split())
        columns, begin = {}, 0
        for kind, length in KINDS:
            length = length or KING_COLUMNS[phase]
            columns[kind] = slice(begin, begin + length)
            begin += length
        if width != begin:
            sys.exit(f"{path}: {begin} columns expected, its head says {width}")
        for left in range(count, 0, -BLOCK):
            block = np.loadtxt(file, ndmin=2, max_rows=min(BLOCK, left))
            if block.shape != (min(BLOCK, left), width + 1):
                sys.exit(f"{path}: its rows are not as its head says")
            weights = [sign * block[:, columns[kind]].sum(axis=1) for _, _, kind, sign in WEIGHTS]
            passed = block[:, columns["passed"]].reshape(len(block), 5, 8).sum(axis=2)
            rows.append(np.column_stack([*weights, np.ones(len(block)), block[:, columns["mobility"]], passed]))
            labels.append(block[:, -1])
    return np.concatenate(rows), np.concatenate(labels)


def joinPhases(middle, ending):
    """The weights are common to both phases, the rest is separate."""
    (m, e), weights = (middle, ending), len(WEIGHTS)
    noneOf = lambda rows: np.zeros((len(rows), len(OTHERS)))
    return np.block([[m[:, :weights], m[:, weights:], noneOf(m)], [e[:, :weights], noneOf(e), e[:, weights:]]])


def sums(rows, labels):
    """All that a fit needs to know of the positions."""
    return rows.T @ rows, rows.T @ labels


def solve(products, crosses, expected, leash, noise):
    """The most likely scale and values, and the errors of the values: Gauss-Newton steps for labels that are the
    scale times the rows times the values, plus noise of that mean square."""
    start = np.append(1, expected)
    ties = np.diag(1 / np.append(SCALE_LEASH, leash) ** 2)
    state = start
    for _ in range(STEPS):
        scale, values = state[0], state[1:]
        image = products @ values
        misfit = crosses - scale * image
        slope = np.append(values @ misfit, scale * misfit) / noise - ties @ (state - start)
        curvature = np.block([[values @ image, scale * image], [scale * image[:, None], scale**2 * products]])
        covariance = np.linalg.inv(curvature / noise + ties)
        state = state + covariance @ slope
    return state[0], state[1:], np.sqrt(np.diag(covariance)[1:])


def meanSquare(errors):
    return float(np.mean(errors**2)) if len(errors) else 0.0


def readSettings(path):
    """The lines that are no weight of ours, and the present weights."""
    values = {key: default for key, default, _, _ in WEIGHTS}
    kept = []
    for line in Path(path).read_text().splitlines() if path else ():
        key, _, value = line.partition("=")
        if key in values and re.match(r"\d+", value):
            values[key] = int(re.match(r"\d+", value)[0])
        else:
            kept.append(line)
    return kept, np.array([values[key] for key, _, _, _ in WEIGHTS], float)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("mg")
    parser.add_argument("eg")
    parser.add_argument("settings")
    parser.add_argument("--present", metavar="FILE", help="the settings.ini to start from, whose other lines are taken"
                        " over (default: the engine's values)")
    parser.add_argument("--leash", type=float, default=10, metavar="PERCENT",
                        help="how far off the present weights may well be (default 10)")
    options = parser.parse_args()

    kept, present = readSettings(options.present)
    middle, ending = readMatrix(options.mg, "mg"), readMatrix(options.eg, "eg")
    rows, labels = joinPhases(middle[0], ending[0]), np.concatenate([middle[1], ending[1]])
    print(f"{len(labels)} positions: {len(middle[1])} of the middle game, {len(ending[1])} of the ending")

    expected = np.concatenate([present, [middle for _, middle, _ in OTHERS] * 2])
    free = np.concatenate([np.maximum(present * options.leash / 100, LEAST_LEASH), [off for _, _, off in OTHERS] * 2])
    fixed = np.where(np.arange(len(free)) < len(WEIGHTS), 1e-6, free)

    # The residual noise of the labels. It is measured before the weights may change, so it is rather too large.
    noise = max(1.0, meanSquare(labels - rows @ expected))
    scale, values, _ = solve(*sums(rows, labels), expected, fixed, noise)
    noise = max(1.0, meanSquare(labels - scale * rows @ values))

    scale, found, errors = solve(*sums(rows, labels), expected, free, noise)
    if scale < 0.1:
        sys.exit("the labels have nothing to do with the material: are they from White's view?")
    print(f"a label of {100 * scale:.0f} stands for 100 of the weights")
    print(f"\n{'':<14}{'old':>6}{'new':>6}{'change':>8}{'standard error':>16}")
    for (key, _, _, _), old, new, error in zip(WEIGHTS, present, found, errors):
        change = round(new) - old
        words = "beyond two errors" if abs(new - old) > 2 * error else "within the noise" if change else ""
        print(f"{key:<14}{old:6.0f}{new:6.0f}{change:+8.0f}{error:16.1f}  {words}".rstrip())

    # Cross-validation: each part of the positions is also predicted from the others.
    print(f"\n{'root of the mean squared error':<32}{'fitted':>8}{'kept out of the fit':>22}")
    part = np.arange(len(labels)) % PARTS
    for name, leash in (("weights old, the rest fitted", fixed), ("weights new, the rest fitted", free)):
        scale, values, _ = solve(*sums(rows, labels), expected, leash, noise)
        seen, unseen = labels - scale * rows @ values, []
        for k in range(PARTS):
            scale, values, _ = solve(*sums(rows[part != k], labels[part != k]), expected, leash, noise)
            unseen.append(labels[part == k] - scale * rows[part == k] @ values)
        print(f"{name:<32}{meanSquare(seen) ** 0.5:8.2f}{meanSquare(np.concatenate(unseen)) ** 0.5:22.2f}")

    weights = [f"{key}={max(0, round(new))}" for (key, _, _, _), new in zip(WEIGHTS, found)]
    Path(options.settings).write_text("\n".join(kept + weights) + "\n")
    print(f"\n{options.settings}: " + " ".join(weights))


if __name__ == "__main__":
    main()
