#!/usr/bin/env python3
"""Writes parametric_windows.csv: the coefficients of the parametric windows by SciPy, in double.

scipy.signal.windows.kaiser(N, beta) and scipy.signal.windows.taylor(N, nbar, level, norm=False), both
symmetric, each divided by its sum.

Columns: window, parameter (beta or the level in dB, which SciPy takes as a positive number), nbar (0 for
Kaiser), N, then the N coefficients.
"""
import math
import pathlib

from scipy.signal.windows import kaiser, taylor

LENGTHS = (1, 2, 3, 4, 7, 16, 33, 64, 101, 200)


def main():
    jobs = []
    for beta in (0, 0.5, 5, 14.6, 16.71, 29.9, 30, 60):
        jobs.append(("Kaiser", beta, 0, lambda n, beta=beta: kaiser(n, beta)))
    for level, nbar in ((-30, 4), (-20, 4), (-24, 3), (-40, 7), (-60, 13), (-80, 21), (-120, 44), (0, 1), (0, 4), (-3, 2)):
        jobs.append(
            ("Taylor", level, nbar, lambda n, nbar=nbar, level=level: taylor(n, nbar, -level, norm=False))
        )
    rows = []
    for name, parameter, nbar, make in jobs:
        for n in LENGTHS:
            w = [float(x) for x in make(n)]
            total = math.fsum(w)
            rows.append(f"{name},{parameter},{nbar},{n},{' '.join(repr(x / total) for x in w)}\n")
    pathlib.Path(__file__).with_name("parametric_windows.csv").write_text("".join(rows))


if __name__ == "__main__":
    main()
