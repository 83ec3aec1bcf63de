#!/usr/bin/env python3
"""Writes unit_conversion.csv: what each form of each unit conversion gives.

Every step is taken in the precision that the form documents; logarithms, powers and square roots come from
mpmath, rounded once. Where such a function takes part, the library may err by a unit in the last place of
it, and the bound says what becomes of that unit in the result; where none does, the bound is 0.

Columns: conversion, form (f and d: float and double scalar, F and D: float and double vector), input,
expected result, bound on the absolute error. Numbers are hexadecimal floats.
"""
import pathlib
import re

import mpmath
import numpy as np

mpmath.mp.prec = 120

OFFSET = float.fromhex("0x1.16c2p-133")  # the float of bits 0x000116C2
NEGATIVE = -999.0
C = {  # constant: (float, double)
    "vref": (0.22360679507255554, 0.22360679774998),
    "dBV": (13.010299682617188, 13.01029995663981),
    "dBmA": (13.010299682617188, 13.0102999566398),
    "dBmV": (46.98970031738281, 46.9897000433602),
    "dBuV": (106.98970031738281, 106.9897000433602),
    "dBuA": (73.01029968261719, 73.0102999566398),
    "field": (51.5266227722168, 51.5266223748352),
    "pT": (None, 49.5),
    "perohm": (0.019999999552965164, 0.02),
    "rad": (0.01745329238474369, 0.017453292519943),
    "deg": (57.295780181884766, 57.29577951308232),
}
A = {"uA": 73.0102999566398}  # double in both scalar forms


class Value:
    """A number in one precision, and by how much it may be off because of an elementary function."""

    def __init__(self, t, x, off=0.0):
        self.t, self.x, self.off = t, t(x), float(off)

    def _new(self, x, off):
        # An operand that is off may turn the rounding of this step too.
        return Value(self.t, x, off + (ulp(self.t, x) if off else 0.0))

    def _c(self, c):
        return self.t(c)

    def add(self, c):
        return self._new(self.x + self._c(c), self.off)

    def sub(self, c):
        return self._new(self.x - self._c(c), self.off)

    def mul(self, c):
        return self._new(self.x * self._c(c), self.off * abs(float(c)))

    def div(self, c):  # a true division
        return self._new(self.x / self._c(c), self.off / abs(float(c)))

    def divc(self, c):  # the kernel's: the reciprocal is formed once
        return self.mul(self.t(1) / self._c(c))

    def sqr(self):
        return self._new(self.x * self.x, 2 * self.off * abs(float(self.x)))

    def to(self, t):
        return Value(t, t(self.x), self.off + (ulp(t, self.x) if self.off and t is np.float32 else 0.0))

    def _function(self, exact):
        if exact is None:
            return Value(self.t, np.nan)
        x = self.t(float(exact)) if self.t is np.float64 else round32(exact)
        return Value(self.t, x, ulp(self.t, x))

    def log10(self):
        return self._function(mpmath.log10(mpmath.mpf(float(self.x))) if self.x > 0 else None)

    def pow10(self):
        return self._function(mpmath.mpf(10) ** mpmath.mpf(float(self.x)))

    def sqrt(self):  # correctly rounded everywhere
        v = self._function(mpmath.sqrt(mpmath.mpf(float(self.x))) if self.x >= 0 else None)
        v.off = 0.0
        return v

    def guarded(self):  # the scalar logarithm, in double
        if self.x < 0:
            return Value(np.float64, NEGATIVE)
        return (self.add(OFFSET) if self.x == 0 else self).log10()

    def offset_log(self):  # the vector logarithm
        return self.add(OFFSET).log10()


def ulp(t, x):
    return float(np.spacing(np.abs(t(x))))


def round32(x):
    """The float nearest to an mpf, without a detour over double."""
    with mpmath.workprec(24):
        return np.float32(float(+x))


f32, f64 = np.float32, np.float64


def const(name, t):
    return C[name][0 if t is f32 else 1]


# name: (scalar, vector, kind of input)
ROWS = {}


def log_row(name, scalar, vector):
    ROWS[name] = (scalar, vector, "lin")


def wide(v):
    return v.to(f64)


for name, factor in (("VoltageRatio2dB", 20), ("Volt2dBV", 20), ("PowerRatio2dB", 10)):
    log_row(name, lambda v, t, k=factor: wide(v).guarded().mul(k).to(t),
            lambda v, t, k=factor: v.offset_log().mul(k))
log_row("Watt2dBm", lambda v, t: wide(v).mul(1000).guarded().mul(10).to(t),
        lambda v, t: v.offset_log().mul(10).add(30))
log_row("Volt2dBm", lambda v, t: wide(v.div(const("vref", t))).guarded().mul(20).to(t),
        lambda v, t: v.offset_log().mul(20).add(const("dBV", t)))
log_row("PeakVolt2dBm", lambda v, t: wide(v).guarded().mul(20).add(10).to(t),
        lambda v, t: v.offset_log().mul(20).add(10))
log_row("uA2dBm", lambda v, t: wide(v).guarded().mul(20).sub(A["uA"]).to(t),
        lambda v, t: v.offset_log().mul(20).sub(const("dBuA", t)))
log_row("Watt2dBV", lambda v, t: wide(v).mul(1000).guarded().mul(10).to(t).sub(const("dBV", t)),
        lambda v, t: v.mul(50).offset_log().mul(10))


def exp_row(name, scalar, vector):
    ROWS[name] = (scalar, vector, "dB")


for name in ("dB2VoltageRatio", "dBV2Volt"):
    exp_row(name, lambda v, t: wide(v.div(20)).pow10().to(t), lambda v, t: v.divc(20).pow10())
exp_row("dB2PowerRatio", lambda v, t: wide(v.div(10)).pow10().to(t), lambda v, t: v.divc(10).pow10())
exp_row("dBm2Watt", lambda v, t: wide(v.div(10)).pow10().mul(0.001).to(t),
        lambda v, t: v.sub(30).divc(10).pow10())
exp_row("dBm2Volt", lambda v, t: wide(v.div(20)).pow10().mul(const("vref", t)).to(t),
        lambda v, t: v.sub(const("dBV", t)).divc(20).pow10())
exp_row("dBm2PeakVolt", lambda v, t: wide(v.sub(10).div(20)).pow10().to(t),
        lambda v, t: v.sub(10).divc(20).pow10())
exp_row("dBm2uA", lambda v, t: wide(v).add(A["uA"]).div(20).pow10().to(t),
        lambda v, t: v.add(const("dBuA", t)).divc(20).pow10())
exp_row("dBV2Watt", lambda v, t: wide(v.add(const("dBV", t)).div(10)).pow10().mul(0.001).to(t),
        lambda v, t: v.divc(10).pow10().mul(const("perohm", f32)) if t is f32
        else v.divc(10).pow10().divc(50))


def step_row(name, step, kind="dB"):
    ROWS[name] = (step, step, kind)


for name, sign, key in (
        ("dBm2dBV", -1, "dBV"), ("dBV2dBm", 1, "dBV"), ("dBm2dBmA", 1, "dBmA"), ("dBmA2dBm", -1, "dBmA"),
        ("dBm2dBmV", 1, "dBmV"), ("dBmV2dBm", -1, "dBmV"), ("dBm2dBuV", 1, "dBuV"), ("dBuV2dBm", -1, "dBuV"),
        ("dBm2dBuVm", 1, "dBuV"), ("dBuVm2dBm", -1, "dBuV"), ("dBm2dBuA", 1, "dBuA"), ("dBuA2dBm", -1, "dBuA"),
        ("dBpT2dBuVm", 1, "pT"), ("dBuVm2dBpT", -1, "pT")):
    if sign > 0:
        step_row(name, lambda v, t, key=key: v.add(const(key, t)))
    else:
        step_row(name, lambda v, t, key=key: v.sub(const(key, t)))
for name in ("dBm2dBuW", "dBW2dBm"):
    step_row(name, lambda v, t: v.add(30))
for name in ("dBuW2dBm", "dBm2dBW"):
    step_row(name, lambda v, t: v.sub(30))
step_row("dBuAm2dBm", lambda v, t: v.add(const("field", t)).sub(const("dBuV", t)))
step_row("dBm2dBuAm", lambda v, t: v.add(const("dBuV", t)).sub(const("field", t)))
ROWS["Volt2Watt"] = (lambda v, t: v.sqr().div(50), lambda v, t: v.sqr().divc(50), "lin")
ROWS["Watt2Volt"] = (lambda v, t: wide(v.mul(50)).sqrt().to(t), lambda v, t: v.mul(50).sqrt(), "lin")
ROWS["Volts2Amps"] = (lambda v, t: v.div(50), lambda v, t: v.mul(const("perohm", t)), "lin")
step_row("Amps2Volts", lambda v, t: v.mul(50), "lin")
step_row("Deg2Rad", lambda v, t: v.mul(const("rad", t)))
step_row("Rad2Deg", lambda v, t: v.mul(const("deg", t)))

INPUTS = {
    "lin": [0.0, -0.0, 1.0, -1.0, 0.1, 0.7, 2.0, 3.3, 10.0, 123.456, 1e-3, 2.5e-7, 4e-15, 6.5e5, -2e-3],
    "dB": [0.0, -0.0, 1.0, -1.0, 10.0, 20.0, 30.0, -30.0, 0.3, -77.7, 13.0103, 106.99, -120.25, 55.5, 180.0],
}


def text(x):
    return re.sub(r"\.?0*p", "p", float(x).hex())


def main():
    lines = []
    for name, (scalar, vector, kind) in ROWS.items():
        for form, t, rule in (("f", f32, scalar), ("d", f64, scalar), ("F", f32, vector), ("D", f64, vector)):
            if t is f32 and name in ("dBpT2dBuVm", "dBuVm2dBpT"):
                continue
            for x in INPUTS[kind]:
                v = rule(Value(t, x), t)
                lines.append(",".join((name, form, text(t(x)), text(v.x), text(v.off))) + "\n")
    pathlib.Path(__file__).with_name("unit_conversion.csv").write_text("".join(lines))


if __name__ == "__main__":
    np.seterr(all="ignore")
    main()
