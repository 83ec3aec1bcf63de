#!/usr/bin/env python3
"""Prints the table of a benchmark run: each workload beside the best of its peers.

Benchmarks are named Workload/variant/size..., where the variant is a level (base, v3, v4), "best" for the level that
the library chooses, or "peer:name". Times are medians over the repetitions of one interleaved run; a ratio is our
time over the best peer's, so below 1 we are faster. The last column is our share of what the machine reaches in the
same run: of a plain memory copy that touches as many bytes (a kernel that only reads can pass it), or of the fused
multiply-adds of a loop in registers.
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
    times, rates, flops, skipped = {}, {}, {}, {}
    for entry in data["benchmarks"]:
        if entry.get("run_type") != "iteration":
            continue
        name = entry["run_name"]
        if entry.get("error_occurred"):
            skipped[name.removesuffix("/real_time")] = entry["error_message"]
            continue
        # Of what waits for another process, the time of the clock counts.
        time = entry["real_time" if name.endswith("/real_time") else "cpu_time"]
        name = name.removesuffix("/real_time")
        unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[entry["time_unit"]]
        times.setdefault(name, []).append(time * unit)
        if "bytes_per_second" in entry:
            rates.setdefault(name, []).append(entry["bytes_per_second"])
        if "flops" in entry:
            flops.setdefault(name, []).append(entry["flops"])
    times, rates, flops = ({name: statistics.median(values) for name, values in of.items()}
                           for of in (times, rates, flops))
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
    for name, values in times.items():
        parts = name.split("/")
        workload, variant, size = parts[0], parts[1] if len(parts) > 1 else "", "/".join(parts[2:])
        if workload != "Limit":
            rows.setdefault((workload, size), {})[variant] = values

    context = data["context"]
    print(f"{context['date']}  {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz, load "
          + " ".join(f"{x:.1f}" for x in context.get("load_avg", [])))
    print(f"{'workload':24} {'size':>10} {'ours':>12} {'level':>6} {'best peer':>12} {'peer':>10} {'ratio':>6}"
          f" {'GB/s':>7} {'GFLOP/s':>7} {'limit':>6}")
    for (workload, size), variants in sorted(rows.items(), key=place):
        ours = {v: t for v, t in variants.items() if not v.startswith("peer:")}
        peers = {v[5:]: t for v, t in variants.items() if v.startswith("peer:")}
        if not ours:
            continue
        level = max(ours, key=lambda v: (v == "best", v))
        mine = ours[level]
        name = "/".join(x for x in (workload, level, size) if x)
        row = f"{workload:24} {size:>10} {mine:>9.1f} ns {level:>6} "
        if peers:
            peer = min(peers, key=peers.get)
            row += f"{peers[peer]:>9.1f} ns {peer:>10} {mine / peers[peer]:>6.2f}"
        else:
            row += f"{'':>12} {'':>10} {'':>6}"
        row += f" {rates[name] / 1e9:>7.1f}" if name in rates else f" {'':>7}"
        row += f" {flops[name] / 1e9:>7.1f}" if name in flops else f" {'':>7}"
        row += f" {100 * part:>5.0f}%" if (part := share(name)) else ""
        print(row.rstrip())
    for name, reason in sorted(skipped.items()):
        print(f"{name} skipped: {reason}")


if __name__ == "__main__":
    main()
