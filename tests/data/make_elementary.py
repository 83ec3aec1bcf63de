#!/usr/bin/env python3
"""Writes <function>_32f.csv and <function>_64f.csv beside itself: arguments and exact results of the elementary
functions, from mpmath at 400 digits where arguments are huge and 60 elsewhere.

A line reads  argument[,argument],exponent,high,low  with the result (high + low) * 2^exponent, 1 <= |high| < 2.
The arguments are in hexadecimal; high and low are doubles, so the result is given to about 106 bits.
"""
import os
import random
import struct

from mpmath import mp, mpf, ldexp, frexp

FOLDER = os.path.dirname(os.path.abspath(__file__))
PER_RANGE = 40


def f32(x):
    return struct.unpack("<f", struct.pack("<f", x))[0]


def bits32(b):
    return struct.unpack("<f", struct.pack("<I", b & 0xffffffff))[0]


def bits64(b):
    return struct.unpack("<d", struct.pack("<Q", b & 0xffffffffffffffff))[0]


def line(arguments, result):
    mantissa, exponent = frexp(result)
    mantissa, exponent = 2 * mantissa, int(exponent) - 1
    high = float(mantissa)
    if abs(high) == 2:
        high, exponent, mantissa = high / 2, exponent + 1, mantissa / 2
    low = float(mantissa - mpf(high))
    return ",".join([a.hex() for a in arguments] + [str(exponent), high.hex(), low.hex()])


def uniform(a, b):
    return lambda: random.uniform(a, b)


def logarithmic(a, b, signed=True):
    """Magnitudes 2^a to 2^b."""
    return lambda: (random.choice((-1, 1)) if signed else 1) * 2.0 ** random.uniform(a, b)


def near_multiples(of, most):
    return lambda: float(mpf(random.randint(-most, most)) * of)


def scaled(generate, by):
    return lambda: generate() * by


def both(*generators):
    return lambda: tuple(g() for g in generators)


def near_one_to_a_power(spread, limit):
    def generate():
        x = 1 + random.choice((-1, 1)) * 2.0 ** random.uniform(-spread, -3)
        return x, float(random.uniform(-limit, limit) / mp.log(x))
    return generate


def edge_power(low, high, least, most):
    def generate():
        x = 2.0 ** random.uniform(low, high)
        return x, float(random.uniform(least, most) / mp.log(x))
    return generate


mp.dps = 60
PI2 = mp.pi / 2
# The doubles closest to a multiple of pi/2, relative to their size, and their like among the floats
# (J.-M. Muller, Elementary Functions, chapter on range reduction).
HARD_64 = [6381956970095103 * 2.0 ** 797, 5.319372648326541e255, 1.5707963267948966,
           3.141592653589793, 4.71238898038469, 6.283185307179586, 786432.0, 786431.9999999999, 786432.0000000001,
           262144.0, 1e22, 2.0 ** 1023, 1.7976931348623157e308, 5e-324, 2.2250738585072014e-308]
HARD_32 = [f32(x) for x in (16367173 * 2.0 ** 72, 1.5707964, 3.1415927, 4.712389, 6.2831855, 786432.0, 786431.94,
                            786432.06, 1e10, 2.0 ** 127, 3.4028234e38, 1e-45, 1.1754944e-38)]

CIRCULAR = {
    32: [uniform(-4, 4), uniform(-1e5, 1e5), near_multiples(PI2, 400000), logarithmic(-149, 128)],
    64: [uniform(-4, 4), uniform(-1e5, 1e5), near_multiples(PI2, 400000), near_multiples(PI2, 2 ** 40),
         logarithmic(-1074, 1023.99)],
}
POSITIVE = {
    32: [uniform(0.5, 2), uniform(0.99, 1.01), logarithmic(-149, 127.9, False)],
    64: [uniform(0.5, 2), uniform(0.99, 1.01), logarithmic(-1074, 1023.9, False), logarithmic(-1074, -1022, False)],
}
ONE = {
    "sin": (mp.sin, CIRCULAR, HARD_32, HARD_64),
    "cos": (mp.cos, CIRCULAR, HARD_32, HARD_64),
    "atan": (mp.atan, {32: [uniform(-3, 3), logarithmic(-149, 127)], 64: [uniform(-3, 3), logarithmic(-1022, 1023)]},
             [0.4375, 0.6875, 1.0, 1.1875, 2.4375], [0.4375, 0.6875, 1.0, 1.4545454545454546, 2.2857142857142856]),
    "ln": (mp.log, POSITIVE, [bits32(0x3f800001), bits32(0x3f7fffff), bits32(0x3f3504f3), bits32(0x3f3504f4), 1e-45],
           [bits64(0x3ff0000000000001), bits64(0x3fefffffffffffff), bits64(0x3fe6a09e667f3bcc),
            bits64(0x3fe6a09e667f3bcd), 5e-324, 1.7976931348623157e308]),
    "log10": (mp.log10, POSITIVE, [10.0, 1000.0, 1e10, bits32(0x3f800001), 1e-45],
              [10.0, 1000.0, 1e22, bits64(0x3ff0000000000001), bits64(0x3fefffffffffffff), 5e-324]),
    "exp": (mp.exp, {32: [uniform(-1, 1), uniform(-87, 88), uniform(-103, -87), logarithmic(-149, 6)],
                     64: [uniform(-1, 1), uniform(-708, 709), uniform(-745, -708), logarithmic(-1074, 9)]},
            [88.72, -87.33654, -103.9], [709.782712893384, -708.3964185322641, -745.1332191019411, -707.0, 707.0]),
    "erf": (mp.erf, {32: [uniform(-4, 4), uniform(-1.2, 1.2), logarithmic(-149, 2)],
                     64: [uniform(-6, 6), uniform(-1.2, 1.2), uniform(0.4, 0.6), logarithmic(-1074, 2.5)]},
            [0.5, 1.0, 3.9192059, 4.0, 1e-45], [0.5, 0.75, 1.0, 5.921587195794507, 6.0, 5e-324, 2.2250738585072014e-308]),
    "pow10": (lambda x: mp.power(10, x), {32: [uniform(-1, 1), uniform(-37, 38), uniform(-44, -38)],
                                          64: [uniform(-1, 1), uniform(-307, 308), uniform(-323, -307)]},
              [0.3, -38.0, 38.0], [0.3, -307.5, 308.0, -323.0]),
}
TWO = {
    "atan2": (lambda y, x: mp.atan2(y, x),
              {32: [both(uniform(-1, 1), uniform(-1, 1)), both(logarithmic(-140, 127), logarithmic(-140, 127))],
               64: [both(uniform(-1, 1), uniform(-1, 1)), both(logarithmic(-500, 500), logarithmic(-500, 500)),
                    both(logarithmic(-1073, -900), logarithmic(-1073, -900)),
                    both(logarithmic(1000, 1023), logarithmic(900, 1023)),
                    both(logarithmic(-1073, -960), logarithmic(-60, -10))]}),
    "pow": (mp.power,
            {32: [both(uniform(0.01, 10), uniform(-10, 10)), near_one_to_a_power(20, 85), edge_power(-140, -1, -88, 87),
                  edge_power(1, 120, -103, -87), both(scaled(logarithmic(-8, 8, False), -1), lambda: float(random.randint(-15, 15)))],
             64: [both(uniform(0.01, 10), uniform(-10, 10)), near_one_to_a_power(50, 700), edge_power(-1070, -1, -708, 708),
                  edge_power(1, 1000, -745, -708), both(scaled(logarithmic(-8, 8, False), -1), lambda: float(random.randint(-99, 99)))]}),
}


def write(name, bits, lines):
    with open(os.path.join(FOLDER, f"{name}_{bits}f.csv"), "w", encoding="ascii") as out:
        out.write("# Made by make_elementary.py\n")
        out.write("\n".join(lines) + "\n")


def exact(function, arguments):
    huge = any(abs(a) > 1e6 for a in arguments)
    mp.dps = 400 if huge else 60
    result = +function(*[mpf(a) for a in arguments])
    if abs(result) != 0 and abs(abs(result) - 1) < mpf(10) ** -30:
        mp.dps = 400
        result = +function(*[mpf(a) for a in arguments])
    return result


def usable(result, bits):
    """Within the type's range, so that an error can be measured in units in the last place."""
    least, most = (-149, 128) if bits == 32 else (-1074, 1024)
    return mp.isfinite(result) and result != 0 and ldexp(1, least - 1) < abs(result) < ldexp(1, most) * (1 - ldexp(1, -54))


for bits in (32, 64):
    narrow = f32 if bits == 32 else float
    for name, (function, ranges, hard32, hard64) in ONE.items():
        random.seed(f"{name}{bits}")
        arguments = list(hard32 if bits == 32 else hard64)
        for generate in ranges[bits]:
            arguments += [generate() for _ in range(PER_RANGE)]
        lines = []
        for x in arguments:
            x = narrow(x)
            result = exact(function, [x]) if x != 0 else mpf(0)
            if usable(result, bits):
                lines.append(line([x], result))
        write(name, bits, lines)
    for name, (function, ranges) in TWO.items():
        random.seed(f"{name}{bits}")
        lines = []
        for generate in ranges[bits]:
            for _ in range(PER_RANGE):
                x = [narrow(v) for v in generate()]
                if 0 in x or x[0] == 1:
                    continue
                result = exact(function, x)
                if usable(result, bits):
                    lines.append(line(x, result))
        write(name, bits, lines)
