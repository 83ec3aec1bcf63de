#!/usr/bin/env python3
"""Prints the coefficients of tests/math/LeastSqrFitTest.cpp: the normal equations solved at 50 digits."""
from mpmath import inverse, matrix, mp, mpf, nstr

mp.dps = 50
X = [-61, -48, -35, -29, -11, -4, 7, 18, 26, 39, 52, 63]
Y = [120, -75, 33, -210, 64, 5, -98, 177, 243, -16, 81, -150]

for degree in (1, 3, 5):
    powers = matrix([[(mpf(x) / 64) ** c for c in range(degree, -1, -1)] for x in X])
    values = matrix([mpf(y) / 64 for y in Y])
    solution = inverse(powers.T * powers) * (powers.T * values)
    print(f"{degree}: " + ", ".join(nstr(p, 19) for p in solution))
