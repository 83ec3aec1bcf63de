#!/usr/bin/env python3
"""Prints how the times of two builds of the benchmarks compare: compare.py FOLDER, with the runs of the old one in
old-1.json, old-2.json ... and those of the new one in new-1.json ...

Runs of equal number were made one after the other, so that their ratio, new to old, is free of the machine's drift.
A row shows the median of these ratios, and as its noise three standard errors of that median, as their scatter over
the rounds has it, but at least 3 %. A row outside the noise is marked. The peers, whose code should not have changed,
tell by their mean how far the whole can be trusted.
"""
import pathlib
import statistics
import sys

from table import Run, medians, place, split

LEAST_NOISE = 0.03


def rounds(folder, build):
    """The runs of a build, in order."""
    paths = sorted(pathlib.Path(folder).glob(f"{build}-*.json"), key=lambda path: int(path.stem.split("-")[1]))
    return [medians(Run(path).times) for path in paths]


def noise(ratios):
    """Three standard errors of the median, from the median deviation, as of a normal distribution."""
    middle = statistics.median(ratios)
    deviation = 1.4826 * statistics.median(abs(ratio - middle) for ratio in ratios)
    return max(LEAST_NOISE, 3.0 * 1.2533 * deviation / len(ratios) ** 0.5)


def main():
    old, new = rounds(sys.argv[1], "old"), rounds(sys.argv[1], "new")
    if not old or len(old) != len(new):
        sys.exit("The runs of the two builds do not match.")
    names = [set().union(*runs) for runs in (old, new)]
    rows, peers = {}, []
    for name in names[0] & names[1]:
        pairs = [(a[name], b[name]) for a, b in zip(old, new) if name in a and name in b]
        workload, variant, size = split(name)
        if workload == "Limit" or not pairs:
            continue
        ratios = [b / a for a, b in pairs]
        if variant.startswith("peer:"):
            peers.append(statistics.median(ratios))
        else:
            rows[(workload, size), variant] = pairs, statistics.median(ratios), noise(ratios)

    print(f"{'workload':24} {'size':>10} {'level':>6} {'old':>12} {'new':>12} {'ratio':>6} {'noise':>6}")
    for (row, variant), (pairs, ratio, margin) in sorted(rows.items(), key=lambda item: (*place(item[0]), item[0][1])):
        before, after = (statistics.median(times) for times in zip(*pairs))
        mark = "  SLOWER" if ratio > 1 + margin else "  faster" if ratio < 1 - margin else ""
        print(f"{row[0]:24} {row[1]:>10} {variant:>6} {before:>9.1f} ns {after:>9.1f} ns {ratio:>6.3f}"
              f" {margin:>6.3f}{mark}")
    for build, only in (("old", names[0] - names[1]), ("new", names[1] - names[0])):
        for name in sorted(only):
            print(f"{name} is in the {build} build only")
    if rows:
        ratios = [ratio for _, ratio, _ in rows.values()]
        slower = sum(ratio > 1 + margin for _, ratio, margin in rows.values())
        faster = sum(ratio < 1 - margin for _, ratio, margin in rows.values())
        print(f"{len(rows)} rows, {slower} slower, {faster} faster; geometric mean of the ratios "
              f"{statistics.geometric_mean(ratios):.3f}")
    else:
        print("No row is in both builds.")
    if peers:
        print(f"The peers' times: geometric mean of the ratios {statistics.geometric_mean(peers):.3f}")


if __name__ == "__main__":
    main()
