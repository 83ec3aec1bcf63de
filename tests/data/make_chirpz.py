#!/usr/bin/env python3
"""Writes chirpz.csv: spectra on a frequency grid by scipy.signal.zoom_fft.

The samples are exact in float: x[i] = ((7919 i + 13) mod 257 - 128) / 128 + j ((104729 i + 7) mod 251 - 125) / 128.

Columns: N, fs, M, f0, df, then the M points as real and imaginary part in turn.
"""
import pathlib

import numpy as np
from scipy.signal import zoom_fft

CASES = (
    (1, 1.0, 5, 0.1, 0.05),
    (16, 1.0, 16, 0.0, 1 / 16),
    (100, 10e6, 21, 1e6, 25e3),
    (257, 48e3, 40, -12e3, 600.0),
    (1000, 2e6, 33, -5e3, 312.5),
    (64, 100.0, 90, 30.0, 1.25),
)


def main():
    rows = []
    for n, fs, m, f0, df in CASES:
        i = np.arange(n, dtype=np.int64)
        x = ((7919 * i + 13) % 257 - 128) / 128 + 1j * ((104729 * i + 7) % 251 - 125) / 128
        spectrum = zoom_fft(x, [f0, f0 + m * df], m, fs=fs)
        parts = " ".join(f"{float(X.real)!r} {float(X.imag)!r}" for X in spectrum)
        rows.append(f"{n},{fs!r},{m},{f0!r},{df!r},{parts}\n")
    pathlib.Path(__file__).with_name("chirpz.csv").write_text("".join(rows))


if __name__ == "__main__":
    main()
