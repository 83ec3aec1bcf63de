#!/usr/bin/env python3
"""Prints the table of a benchmark run: each workload beside the best of its peers.

Benchmarks are named Workload/variant/size..., where the variant is a level (base, v3, v4), "best" for the level that
the library chooses, or "peer:name". Times are medians over the repetitions of one interleaved run; a ratio is our
time over the best peer's, so below 1 we are faster.
"""
import json
import re
import statistics
import sys


def place(row):
    """By workload, then by size as a number where it begins with one."""
    workload, size = row[0]
    number = re.match(r"\d+", size)
    return workload, int(number.group()) if number else 0, size


def main():
    with open(sys.argv[1]) as file:
        data = json.load(file)
    times, rates = {}, {}
    for entry in data["benchmarks"]:
        if entry.get("run_type") != "iteration":
            continue
        unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
        times.setdefault(entry["run_name"], []).append(entry["cpu_time"] * unit)
        if "bytes_per_second" in entry:
            rates.setdefault(entry["run_name"], []).append(entry["bytes_per_second"])
    rows = {}
    for name, values in times.items():
        parts = name.split("/")
        workload, variant, size = parts[0], parts[1] if len(parts) > 1 else "", "/".join(parts[2:])
        rows.setdefault((workload, size), {})[variant] = statistics.median(values)

    context = data["context"]
    print(f"{context['date']}  {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz, load "
          + " ".join(f"{x:.1f}" for x in context.get("load_avg", [])))
    print(f"{'workload':24} {'size':>10} {'ours':>12} {'level':>6} {'best peer':>12} {'peer':>10} {'ratio':>6} {'GB/s':>7}")
    for (workload, size), variants in sorted(rows.items(), key=place):
        ours = {v: t for v, t in variants.items() if not v.startswith("peer:")}
        peers = {v[5:]: t for v, t in variants.items() if v.startswith("peer:")}
        if not ours:
            continue
        level = max(ours, key=lambda v: (v == "best", v))
        mine = ours[level]
        rate = rates.get("/".join(x for x in (workload, level, size) if x))
        row = f"{workload:24} {size:>10} {mine:>9.1f} ns {level:>6} "
        if peers:
            peer = min(peers, key=peers.get)
            row += f"{peers[peer]:>9.1f} ns {peer:>10} {mine / peers[peer]:>6.2f}"
        else:
            row += f"{'':>12} {'':>10} {'':>6}"
        row += f" {statistics.median(rate) / 1e9:>7.1f}" if rate else ""
        print(row.rstrip())


if __name__ == "__main__":
    main()
