#!/usr/bin/env python3
"""Writes pulses.csv: exact values of the pulses, from their textbook definitions.

The raised cosines are the quotients of the textbooks with their limits at the singular points; the smoothed
rectangle is a convolution by numerical quadrature, and its running integral a quadrature of that.

Columns: pulse, its two parameters and the time as the bits of floats in hexadecimal, the value.
"""
import pathlib

import numpy as np
from mpmath import cos, exp, erfc, linspace, log, mp, mpf, pi, quad, sin, sinc, sqrt

mp.dps = 30


def raised_cosine(r, T, t):
    x = t / T
    gap = 1 - (2 * r * x) ** 2
    if gap == 0:
        return pi / 4 * sinc(pi * x)
    return sinc(pi * x) * cos(pi * r * x) / gap


def root_raised_cosine(r, T, t):
    x = t / T
    gap = 1 - (4 * r * x) ** 2
    if x == 0:
        return (1 - r + 4 * r / pi) / sqrt(T)
    if gap == 0:
        a = pi / (4 * r)
        return r / sqrt(2 * T) * ((1 + 2 / pi) * sin(a) + (1 - 2 / pi) * cos(a))
    return (sin(pi * x * (1 - r)) + 4 * r * x * cos(pi * x * (1 + r))) / (pi * x * gap * sqrt(T))


def gaussian(B, _, t):
    return sqrt(2 * pi / log(2)) * B * exp(-2 * pi ** 2 * B ** 2 * t ** 2 / log(2))


def sinc_pulse(B, _, t):
    return 2 * B * sinc(2 * pi * B * t)


def conv_gauss(T, b, t):
    sigma = b * T
    density = lambda u: exp(-((t - u) / sigma) ** 2 / 2) / (sigma * sqrt(2 * pi))
    return quad(density, linspace(-T / 2, T / 2, 9)) / T


def integral_conv_gauss(T, b, t):
    # The running integral of the Gaussian, averaged over the rectangle.
    return quad(lambda u: erfc((u - t) / (sqrt(2) * b * T)) / 2, linspace(-T / 2, T / 2, 9)) / T


JOBS = (
    ("RaisedCosine", raised_cosine, ((0.0, 1.0), (0.22, 1.0), (0.25, 0.5), (0.5, 1.0), (1.0, 3.0)), 6),
    ("RootRaisedCosine", root_raised_cosine, ((0.0, 1.0), (0.22, 0.26), (0.25, 1.0), (0.5, 2.0), (1.0, 1.0)), 6),
    ("Gaussian", gaussian, ((0.3, 0.0), (1.0, 0.0), (25.0, 0.0)), 1),
    ("Sinc", sinc_pulse, ((0.5, 0.0), (3.0, 0.0)), 4),
    ("ConvGauss", conv_gauss, ((1.0, 0.44), (2.0, 0.1), (0.25, 0.9)), 2),
    ("IntegralConvGauss", integral_conv_gauss, ((1.0, 0.44), (2.0, 0.1), (0.25, 0.9)), 2),
)


def bits(x):
    return f"{int(np.float32(x).view(np.uint32)):08x}"


def main():
    rows = []
    for name, pulse, parameters, reach in JOBS:
        for first, second in parameters:
            unit = second if "Cosine" in name else first if "Conv" in name else 1 / first
            times = [k / 8 * unit for k in range(-8 * reach, 8 * reach + 1)]
            times += [0.0371 * unit, -0.3333 * unit, 1.1111 * unit]
            for t in times:
                exact = [mpf(float(np.float32(x))) for x in (first, second, t)]
                rows.append(f"{name},{bits(first)},{bits(second)},{bits(t)},{mp.nstr(pulse(*exact), 20)}\n")
    pathlib.Path(__file__).with_name("pulses.csv").write_text("".join(rows))


if __name__ == "__main__":
    main()
