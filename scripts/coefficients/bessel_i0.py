#!/usr/bin/env python3
"""Prints the Chebyshev coefficients of exp(-x) sqrt(x) I0(x) over t = 16 / x - 1, 8 <= x, used by the Kaiser
window. The largest deviation of the series from the function is printed last."""
from mpmath import mp, mpf, besseli, chebyt, cos, exp, fsum, pi, sqrt, inf

mp.dps = 50
NODES = 64


def scaled(t):
    if t == -1:
        return 1 / sqrt(2 * pi)
    x = 16 / (t + 1)
    return exp(-x) * sqrt(x) * besseli(0, x)


angles = [pi * (k + mpf(1) / 2) / NODES for k in range(NODES)]
values = [scaled(cos(a)) for a in angles]
coefficients = [2 * fsum(v * cos(n * a) for v, a in zip(values, angles)) / NODES for n in range(NODES)]
coefficients[0] /= 2
used = [c for c in coefficients if abs(c) > mpf(2) ** -60]
used = coefficients[:coefficients.index(used[-1]) + 1]
for c in used:
    print(f"    {mp.nstr(c, 20)},")
worst = max(abs(fsum(c * chebyt(n, t) for n, c in enumerate(used)) / scaled(t) - 1)
            for t in [mpf(k) / 200 for k in range(-199, 201)])
print("// largest relative deviation", mp.nstr(worst, 3))
