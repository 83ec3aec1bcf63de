#!/usr/bin/env python3
"""Prints the table of a benchmark run: each workload beside the best of its peers.

Benchmarks are named Workload/variant/size..., where the variant is a level (base, v3, v4), "best" for the level that
the library chooses, or "peer:name". Times are medians over the repetitions of one interleaved run; a ratio is our
time over the best peer's, so below 1 we are faster. The last column is our share of what the machine reaches in the
same run: of a plain memory copy that touches as many bytes (a kernel that only reads can pass it), or of the fused
multiply-adds of a loop in registers. At the end stand the geometric means of the ratios of each workload and level.

The best level has a row for each workload and size; with --levels every level that was measured has.
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


def split(name):
    """Workload, variant and size of a benchmark's name."""
    workload, variant, *size = name.split("/") + [""] * (1 - name.count("/"))
    return workload, variant, "/".join(size)


class Run:
    """What one run of the benchmark program measured: lists over its repetitions, by the name of the benchmark."""

    def __init__(self, path):
        with open(path) as file:
            data = json.load(file)
        self.context = data["context"]
        self.times, self.rates, self.flops, self.skipped = {}, {}, {}, {}
        for entry in data["benchmarks"]:
            if entry.get("run_type") != "iteration":
                continue
            name = entry["run_name"]
            if entry.get("error_occurred"):
                self.skipped[name.removesuffix("/real_time")] = entry["error_message"]
                continue
            # Of what waits for another process, the time of the clock counts.
            time = entry["real_time" if name.endswith("/real_time") else "cpu_time"]
            name = name.removesuffix("/real_time")
            unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
            self.times.setdefault(name, []).append(time * unit)
            if "bytes_per_second" in entry:
                self.rates.setdefault(name, []).append(entry["bytes_per_second"])
            if "flops" in entry:
                self.flops.setdefault(name, []).append(entry["flops"])


def medians(lists):
    return {name: statistics.median(values) for name, values in lists.items()}


def main():
    every_level = "--levels" in sys.argv[1:]
    run = Run(next(argument for argument in sys.argv[1:] if argument != "--levels"))
    times, rates, flops = medians(run.times), medians(run.rates), medians(run.flops)
    copies = {int(name.split("/")[2]): rates[name] for name in rates if name.startswith("Limit/copy/")}

    def share(name):
        """The part of the limit that a benchmark reaches, or None where the run has no limit to set beside it."""
        if name in flops:
            peak = flops.get("Limit/muladd64" if re.search("64", name.split("/")[0]) else "Limit/muladd32")
            return peak and flops[name] / peak
        if name in rates and copies:
            touched = rates[name] * times[name] * 1e-9
            return rates[name] / copies[min(copies, key=lambda size: abs(size - touched))]
        return None

    rows = {}
    for name, value in times.items():
        workload, variant, size = split(name)
        if workload != "Limit":
            rows.setdefault((workload, size), {})[variant] = value

    context = run.context
    print(f"{context['date']}  {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz, load "
          + " ".join(f"{x:.1f}" for x in context.get("load_avg", [])))
    print(f"{'workload':24} {'size':>10} {'ours':>12} {'level':>6} {'best peer':>12} {'peer':>10} {'ratio':>6}"
          f" {'GB/s':>7} {'GFLOP/s':>7} {'limit':>6}")
    ratios = {}
    for (workload, size), variants in sorted(rows.items(), key=place):
        ours = sorted((v for v in variants if not v.startswith("peer:")), key=lambda v: (v == "best", v))
        peers = {v[5:]: t for v, t in variants.items() if v.startswith("peer:")}
        peer = min(peers, key=peers.get) if peers else None
        for level in ours:
            mine = variants[level]
            if peer:
                ratios.setdefault((workload, level), []).append(mine / peers[peer])
            if level != ours[-1] and not every_level:
                continue
            name = "/".join(x for x in (workload, level, size) if x)
            row = f"{workload:24} {size:>10} {mine:>9.1f} ns {level:>6} "
            if peer:
                row += f"{peers[peer]:>9.1f} ns {peer:>10} {mine / peers[peer]:>6.2f}"
            else:
                row += f"{'':>12} {'':>10} {'':>6}"
            row += f" {rates[name] / 1e9:>7.1f}" if name in rates else f" {'':>7}"
            row += f" {flops[name] / 1e9:>7.1f}" if name in flops else f" {'':>7}"
            row += f" {100 * part:>5.0f}%" if (part := share(name)) else ""
            print(row.rstrip())
    for name, reason in sorted(run.skipped.items()):
        print(f"{name} skipped: {reason}")
    if ratios:
        print("\nGeometric means of the ratios:")
    for (workload, level), values in sorted(ratios.items()):
        print(f"{workload} {level}: {statistics.geometric_mean(values):.2f}"
              f" (of {len(values)} row{'s' if len(values) > 1 else ''})")


if __name__ == "__main__":
    main()
