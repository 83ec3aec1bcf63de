#!/usr/bin/env python3
"""Writes interpolation.csv: SciPy's natural and clamped cubic splines and its monotone Hermite interpolant.

A row is a curve, a kind of row and numbers: the points of the table, or a value and what the curve has there. Points
and values are multiples of 1/64, so that floats hold them too. Beyond its ends a curve goes on with its end cubics.
"""
from pathlib import Path

import numpy
from scipy.interpolate import CubicSpline, PchipInterpolator

X = numpy.array([-160, -131, -64, -50, 3, 4, 70, 128, 129, 260, 300]) / 64
Y = numpy.array([40, -25, -26, 90, 90, 91, 310, 77, 77, -500, 12]) / 64
VALUES = numpy.concatenate([[-500, -161], numpy.arange(-160, 301, 5), X * 64, [301, 700]]) / 64
CURVES = {
    "natural": CubicSpline(X, Y, bc_type="natural"),
    "clamped": CubicSpline(X, Y, bc_type=((1, 0.75), (1, -2.5))),
    "clampedfirst": CubicSpline(X, Y, bc_type=((1, 3.0), (2, 0.0))),
    "clampedlast": CubicSpline(X, Y, bc_type=((2, 0.0), (1, 1.25))),
    "hermite": PchipInterpolator(X, Y),
    "hermite2": PchipInterpolator(X[:2], Y[:2]),
    "hermite3": PchipInterpolator(X[:3], Y[:3]),
}

with open(Path(__file__).parent / "interpolation.csv", "w", encoding="ascii") as file:
    for x, y in zip(X, Y):
        file.write(f"table,point,{float(x)!r},{float(y)!r}\n")
    for name, curve in CURVES.items():
        for v in VALUES:
            file.write(f"{name},value,{float(v)!r},{float(curve(v))!r}\n")
