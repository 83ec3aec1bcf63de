#!/usr/bin/env python3
"""Writes window_figures.csv: the figures of merit of the windows in the limit of many points.

Each window is taken as a function of -1/2 <= x <= 1/2 with the transform W(f), f in bins, W(0) = 1, in closed
form:

  cosine sums, a[0] + a[1] cos(2 pi x) + ...:  sum of a[m] (sinc(f - m) + sinc(f + m)) / 2, sinc(f) = sin(pi f) / (pi f)
  Gauss, exp(-2 (alpha x)^2):                  by the error function of complex argument
  Kaiser, I0(beta sqrt(1 - 4 x^2)):            sinh(s) / s with s = sqrt(beta^2 - (pi f)^2)
  Taylor:                                      the cosine sum whose terms are the samples F(m) of the line source

Columns: window, parameter, nbar, equivalent noise bandwidth in bins, widths in bins between the points at -3 dB and
at -6 dB, scalloping loss in dB, highest sidelobe in dB.
"""
import pathlib

import mpmath
from mpmath import mp, mpf

mp.dps = 30


def cosine_sum(a):
    a = [mpf(x) / mpf(a[0]) for x in a]

    def transform(f):
        return sum(x * (mpmath.sincpi(f - m) + mpmath.sincpi(f + m)) / 2 for m, x in enumerate(a))

    enbw = 1 + sum(x * x for x in a[1:]) / 2
    return transform, enbw


def gauss(alpha):
    def integral(c, f):
        """Of exp(-c x^2) cos(2 pi f x)."""
        root = mpmath.sqrt(c)
        shift = mpmath.pi * f / root
        return mpmath.sqrt(mpmath.pi) / root * mpmath.exp(-(shift**2)) * mpmath.re(mpmath.erf(root / 2 + 1j * shift))

    c = 2 * mpf(alpha) ** 2
    at0 = integral(c, 0)
    return lambda f: integral(c, f) / at0, integral(2 * c, 0) / at0**2


def kaiser(beta):
    beta = mpf(beta)

    def part(f):
        s = mpmath.sqrt(mpmath.mpc(beta**2 - (mpmath.pi * f) ** 2))
        return mpmath.re(mpmath.sinh(s) / s)

    at0 = part(0)
    square = mpmath.quad(lambda x: mpmath.besseli(0, beta * mpmath.sqrt(1 - 4 * x * x)) ** 2, [0, 0.25, 0.5]) * 2
    return lambda f: part(f) / at0, square / at0**2


def taylor(level, nbar):
    a = mpmath.acosh(mpf(10) ** (-mpf(level) / 20)) / mpmath.pi
    sigma2 = nbar**2 / (a**2 + (nbar - mpf(1) / 2) ** 2)

    def sample(m):
        value = mpf(-1) ** (m + 1) / 2
        for i in range(1, nbar):
            value *= 1 - m * m / (sigma2 * (a**2 + (i - mpf(1) / 2) ** 2))
            if i != m:
                value /= 1 - mpf(m * m) / (i * i)
        return value

    return cosine_sum([1] + [2 * sample(m) for m in range(1, nbar)])


def width(transform, level):
    amplitude = mpf(10) ** (mpf(level) / 20)
    return 2 * mpmath.findroot(lambda f: transform(f) - amplitude, (mpf(1) / 10, mpf(4)), solver="anderson")


def highest_sidelobe(transform):
    step = mpf(1) / 32
    values = [abs(transform(i * step)) for i in range(32 * 48)]
    end = next(i for i in range(1, len(values)) if values[i] <= values[i - 1] and values[i] <= values[i + 1])
    sampled = max(values[end:])
    tops = []
    for i in range(end, len(values) - 1):
        # Lobes whose samples come close may have the higher top between them.
        if values[i] < sampled * mpf("0.95") or values[i] < values[i - 1] or values[i] < values[i + 1]:
            continue
        low, high = (i - 1) * step, (i + 1) * step
        for _ in range(40):
            left, right = low + (high - low) / 3, high - (high - low) / 3
            if abs(transform(left)) < abs(transform(right)):
                low = left
            else:
                high = right
        tops.append(abs(transform(low)))
    return 20 * mpmath.log10(max(tops))


# The sums are counted from an edge, not from the centre: that turns the signs of their odd terms.
JOBS = [
    ("Rectangle", 0, 0, cosine_sum([1])),
    ("Hann", 0, 0, cosine_sum(["0.5", "0.5"])),
    ("Hamming", 0, 0, cosine_sum(["0.54", "0.46"])),
    ("BlackmanHarris", 0, 0, cosine_sum(["0.35875", "0.48829", "0.14128", "0.01168"])),
    ("FlatTop", 0, 0, cosine_sum(["0.21557895", "0.41663158", "0.277263158", "0.083578947", "0.006947368"])),
]
JOBS += [("Gauss", alpha, 0, gauss(alpha)) for alpha in (2.5, 3.5)]
JOBS += [("Kaiser", beta, 0, kaiser(beta)) for beta in (6.2831855, 9.424778, 12.566371, 14.6, 16.71)]
JOBS += [("Taylor", level, nbar, taylor(level, nbar)) for level, nbar in ((-20, 4), (-30, 4), (-40, 7), (-60, 13))]


def main():
    rows = []
    for name, parameter, nbar, (transform, enbw) in JOBS:
        figures = (
            enbw,
            width(transform, -3),
            width(transform, -6),
            -20 * mpmath.log10(abs(transform(mpf(1) / 2))),
            highest_sidelobe(transform),
        )
        rows.append(f"{name},{parameter},{nbar},{','.join(mpmath.nstr(x, 10) for x in figures)}\n")
    pathlib.Path(__file__).with_name("window_figures.csv").write_text("".join(rows))


if __name__ == "__main__":
    main()
