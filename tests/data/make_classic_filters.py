#!/usr/bin/env python3
"""Writes classic_filters.csv: taps of windowed-sinc filters by SciPy, in double.

scipy.signal.firwin(n, cutoff, window="hamming", pass_zero=..., scale=True, fs=fs): unit gain at frequency 0, at half the
sampling rate or midway between the cutoffs. The rates are exact in float. SciPy refuses high-passes of even length.

Columns: kind, sampling rate, cutoff, upper cutoff (0 where there is one cutoff), n, then the n taps.
"""
import pathlib

from scipy.signal import firwin

CUTOFFS = ((8.0, 0.5), (8.0, 1.0), (8.0, 2.0), (8.0, 3.75), (48000.0, 6000.0), (1.0, 0.015625))
BANDS = ((8.0, 0.5, 1.0), (8.0, 1.0, 3.0), (48000.0, 1500.0, 21000.0))
LENGTHS = (5, 6, 21, 32, 101, 200)


def main():
    rows = []
    for n in LENGTHS:
        jobs = [("LowPass", fs, f, 0.0, f, "lowpass") for fs, f in CUTOFFS]
        if n % 2:
            jobs += [("HighPass", fs, f, 0.0, f, "highpass") for fs, f in CUTOFFS]
        jobs += [("BandPass", fs, low, high, (low, high), "bandpass") for fs, low, high in BANDS]
        for name, fs, low, high, cutoff, kind in jobs:
            taps = firwin(n, cutoff, window="hamming", pass_zero=kind, scale=True, fs=fs)
            values = ",".join(repr(float(x)) for x in taps)
            rows.append(f"{name},{fs},{low},{high},{n},{values}\n")
    pathlib.Path(__file__).with_name("classic_filters.csv").write_text("".join(rows))


if __name__ == "__main__":
    main()
