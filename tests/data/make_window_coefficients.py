#!/usr/bin/env python3
"""Writes window_coefficients.csv: the coefficients of the fixed windows, bit for bit.

Cosines and exponentials come from mpmath, rounded once to double; every later step is taken in the
precision that the library documents for it. A length is left out if any rounding to float on the way lies
so near a tie that an error of 1 unit in the last place of a double could turn it, so that the values do not
hang on the last bit of any particular cosine.

Columns: window, parameter, N, then the N coefficients as the bits of a float, in hexadecimal.
"""
import math
import pathlib

import mpmath
import numpy as np

mpmath.mp.prec = 200
f32 = np.float32

TERMS = {
    "Hann": (0.5, 0.5),
    "Hamming": (0.54, 0.46),
    "BlackmanHarris": (0.35875, 0.48829, 0.14128, 0.01168),
    "FlatTop": (0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368),
}
LENGTHS = (1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 33, 64, 100, 129)


class NearTie(Exception):
    pass


def narrow(value, error):
    """value as a float; error is the absolute error that must not change it."""
    if f32(value - error) != f32(value + error):
        raise NearTie
    return f32(value)


def cosine_sum(a, n):
    step = 6.283185307179586 / n
    shape = [f32(0)] * n
    for k in range(n // 2 + 1):
        t = k * step
        value = a[0]
        for m in range(1, len(a)):
            cosine = float(mpmath.cos(mpmath.mpf(m * t)))
            value = value + (-a[m] if m % 2 else a[m]) * cosine
        exact = k == 0  # the cosine of 0 is 1 in any arithmetic
        shape[k] = narrow(value, 0.0 if exact else 3e-16)
        if k > 0:
            shape[n - k] = shape[k]
    return shape


def gauss(alpha, n):
    shape = [f32(0)] * n
    c = float(f32(f32(-2) * f32(alpha)) * f32(alpha))
    centre = (n - 1) * 0.5
    for k in range((n & 1) + n // 2):
        x = (k - centre) / n
        value = float(mpmath.exp(mpmath.mpf(c * x * x)))
        shape[k] = shape[n - 1 - k] = narrow(value, 0.0 if c * x == 0 else 3e-16 * value)
    return shape


def normalise(shape):
    total = 2 * math.fsum(float(w) for w in shape)
    s = narrow(total, 1e-15 * math.fsum(abs(float(w)) for w in shape))
    scale = f32(1) / (s * f32(0.5))
    return [w * scale for w in shape]


def main():
    rows = []
    jobs = [(name, 0.0, lambda n, a=a: cosine_sum(a, n)) for name, a in TERMS.items()]
    for alpha in (0.0, 1.0, 3.5, 7.25):
        jobs.append(("Gauss", alpha, lambda n, alpha=alpha: gauss(alpha, n)))
    for name, parameter, make in jobs:
        for n in LENGTHS:
            if name == "Hann" and n == 1:
                continue  # not-a-number
            try:
                coefficients = normalise(make(n))
            except NearTie:
                continue
            bits = " ".join(f"{int(np.asarray(w, f32).view(np.uint32)):08x}" for w in coefficients)
            rows.append(f"{name},{parameter},{n},{bits}\n")
    pathlib.Path(__file__).with_name("window_coefficients.csv").write_text("".join(rows))


if __name__ == "__main__":
    main()
