#!/usr/bin/env python3
"""Makes generate.csv: expected values of the random, window and filter generators.

Each line reads: kind, parameters joined by blanks, index, value (hexadecimal double). The random words are plain
integer arithmetic. Where the precision of a step is laid down, NumPy's scalars of that precision take it; the
rest is computed by mpmath to 40 digits and rounded to double. The Kaiser windows are compared with SciPy's on the
way. The index -1 of a tone stands for the phase that is carried on.
"""
import os
import sys

import numpy as np
from mpmath import mp, mpf, besseli, cos, log, pi, sin, sqrt
from scipy.signal.windows import kaiser

mp.dps = 40
WORD = 2 ** 32
INDICES = list(range(12)) + [255, 256, 257, 511, 512, 999]


def words(seed):
    congruential = 1131199209
    x0 = seed
    x1 = (x0 * 69069 + 1013904243) % WORD
    x2 = (x1 * 69069 + 1013904243) % WORD
    carry = -1
    while True:
        t = (carry + x1 - x2) % WORD
        negative = t >= WORD // 2
        x2, x1 = x1, x0
        x0 = (t - 18) % WORD if negative else t
        carry = -1 if negative else 0
        congruential = (congruential * 69069 + 1013904243) % WORD
        word = (x0 + congruential) % WORD
        yield word - WORD if word >= WORD // 2 else word


def uniform(seed, low, high, narrow):
    # Sums and differences in the element's precision, the rest in double.
    if narrow:
        low, high = np.float32(low), np.float32(high)
    middle = float(low + high) * 0.5
    scale = float(high - low) * 2.0 ** -32
    for word in words(seed):
        value = middle + float(word) * scale
        yield float(np.float32(value)) if narrow else value


def gauss(seed, mean, deviation):
    source = words(seed)
    while True:
        u = next(source) / 2.0 ** 31
        v = next(source) / 2.0 ** 31
        s = u * u + v * v  # in double, as laid down: near 1, the logarithm feels each rounding
        if s >= 1 or s == 0:
            continue
        u, v, g = mpf(u), mpf(v), sqrt(-2 * log(mpf(s)) / mpf(s))
        yield v * deviation * g + mean
        yield u * deviation * g + mean


def reduced(x, period):
    x = np.fmod(np.float64(x), np.float64(period))
    if x < 0:
        x += period
        if x >= period:
            x = np.float64(0)
    return x


def tone(magnitude, frequency, phase, length, narrow):
    """(index, real part, imaginary part) of some samples, then (-1, carried phase, 0)."""
    scalar = np.float32 if narrow else np.float64
    two_pi = np.float32(6.2831855) if narrow else np.float64(6.283185307179586)
    frequency = scalar(reduced(scalar(frequency), 1.0))
    phase = scalar(reduced(scalar(phase), np.float64(two_pi)))
    slope = two_pi * frequency
    for n in sorted({0, 1, 2, 3, 7, 100, length // 2, length - 1} & set(range(length))):
        angle = mpf(float(scalar(n) * slope + phase))
        yield n, mpf(float(scalar(magnitude))) * cos(angle), mpf(float(scalar(magnitude))) * sin(angle)
    end = np.float64(length) * (np.float64(6.283185307179586) * np.float64(frequency)) + np.float64(phase)
    yield -1, scalar(np.fmod(end, np.float64(6.283185307179586))), 0


def kaiser_value(length, alpha, n):
    # The shape per half-length is rounded to float.
    shape = mpf(float(np.float32(alpha) / (np.float32(length - 1) * np.float32(0.5))))
    half = mpf(length - 1) / 2
    return besseli(0, shape * sqrt(half ** 2 - (n - half) ** 2)) / besseli(0, shape * half)


def sinc(f, m):
    return 2 * f if m == 0 else sin(2 * pi * f * m) / (pi * m)


def fir(kind, low, high, length):
    """Taps by the formula; the gain is taken at the centre of the pass band."""
    low, high = mpf(low), mpf(high)
    centre = mpf(length - 1) / 2
    taps = []
    for n in range(length):
        m = n - centre
        if kind == "lowpass":
            ideal = sinc(low, m)
        elif kind == "highpass":
            ideal = sinc(mpf(1) / 2, m) - sinc(low, m)
        else:
            ideal = sinc(high, m) - sinc(low, m)
        taps.append(ideal * (mpf("0.54") - mpf("0.46") * cos(2 * pi * n / (length - 1))))
    if kind == "lowpass":
        gain = sum(taps)
    elif kind == "highpass" and length % 2:
        gain = sum(t * (-1) ** n for n, t in enumerate(taps))
    else:
        f = (low + mpf(1) / 2) / 2 if kind == "highpass" else (low + high) / 2
        gain = sum(t * cos(2 * pi * f * (n - centre)) for n, t in enumerate(taps))
    return [t / abs(gain) for t in taps]


def main():
    out = open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "generate.csv"), "w")

    def line(kind, parameters, index, value):
        print(kind, " ".join(str(p) for p in parameters), index, float(value).hex(), sep=",", file=out)

    print("# made by generate.py", file=out)
    for seed in (0, 1, 6004, 12345, 2147483648, 4294967295):
        for low, high in ((0, 1), (-1, 1), (-0.1, 0.3), (5, -2)):
            for narrow in (False, True):
                source = uniform(seed, low, high, narrow)
                values = [next(source) for _ in range(1000)]
                for i in INDICES:
                    line("uniform32" if narrow else "uniform64", (seed, low, high), i, values[i])
        for mean, deviation in ((0, 1), (-3.5, 0.25)):
            source = gauss(seed, mpf(mean), mpf(deviation))
            values = [next(source) for _ in range(1000)]
            for i in INDICES:
                line("gauss", (seed, mean, deviation), i, values[i])
    for parameters in ((1, 0.01, 0, 1000), (2.5, -0.3, 1, 1000), (0.5, 7.125, -1, 64), (1, 0.5, 100, 3),
                       (3, 0.123, -1e-9, 5000), (1, -1e-30, -1e-30, 10), (1, 0.25, 6.2831853, 1)):
        for narrow in (False, True):
            for n, re, im in tone(*parameters, narrow):
                kind = "tone32" if narrow else "tone64"
                line(kind + "re", parameters, n, re)
                line(kind + "im", parameters, n, im)
    for length in (2, 3, 4, 5, 16, 33, 101, 600, 1025):
        for alpha in (0, 0.5, 3, 8, 14.5, 29.9, 30, 60, 250, 1000):
            shape = float(np.float32(alpha) / (np.float32(length - 1) * np.float32(0.5)))
            check = kaiser(length, shape * (length - 1) / 2) if alpha < 600 else None
            step = max(1, length // 40)
            for n in range(0, length, step):
                value = kaiser_value(length, alpha, n)
                if check is not None and abs(value - check[n]) > 1e-13 * value * (1 + alpha):
                    sys.exit(f"SciPy differs: {length} {alpha} {n}")
                line("kaiser", (length, alpha), n, value)
    for length in (5, 6, 7, 16, 33, 64, 201):
        for f in (0.01, 0.1, 0.25, 0.4, 0.49):
            for kind in ("lowpass", "highpass"):
                for n, tap in enumerate(fir(kind, f, f, length)):
                    line(kind, (length, f, f), n, tap)
        for low, high in ((0.05, 0.1), (0.1, 0.4), (0.2, 0.21), (0.3, 0.49)):
            for n, tap in enumerate(fir("bandpass", low, high, length)):
                line("bandpass", (length, low, high), n, tap)


main()
