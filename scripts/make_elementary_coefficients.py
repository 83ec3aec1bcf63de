#!/usr/bin/env python3
"""Writes src/infra/kernels/families/ElementaryCoefficients.h to the standard output.

Polynomials are minimax: Remez's exchange algorithm in 60-digit arithmetic on the weighted error that is noted
beside each set, then rounded to double. Constants in several parts carry the number of bits that keeps the
products in which they are used exact.
"""
import struct

from mpmath import mp, mpf, matrix, lu_solve, pi, log, exp, sin, cos, atan, erf, erfc, sqrt, floor, ldexp, frexp

mp.dps = 60


def remez(f, weight, a, b, n):
    """Coefficients c[0..n-1] that minimise max |weight(x) (sum c[i] x^i - f(x))| over [a, b], and the maximum."""
    a, b = mpf(a), mpf(b)
    grid = [(a + b) / 2 - (b - a) / 2 * cos(pi * i / (40 * n)) for i in range(40 * n + 1)]
    grid = [x for x in grid if weight(x) != 0]
    values = [(x, f(x), weight(x)) for x in grid]
    nodes = [values[min(len(values) - 1, round((2 * i + 1) * len(values) / (2 * n + 2)))] for i in range(n + 1)]
    for _ in range(30):
        system = matrix(n + 1, n + 1)
        right = matrix(n + 1, 1)
        for i, (x, y, w) in enumerate(nodes):
            for j in range(n):
                system[i, j] = x ** j
            system[i, n] = (-1) ** i / w
            right[i] = y
        solution = lu_solve(system, right)
        c = [solution[j] for j in range(n)]
        error = [w * (sum(cj * x ** j for j, cj in enumerate(c)) - y) for x, y, w in values]
        # One extremum per run of equal sign; the largest n + 1 neighbours become the new nodes.
        runs = []
        for i, e in enumerate(error):
            if runs and (error[runs[-1]] > 0) == (e > 0):
                if abs(e) > abs(error[runs[-1]]):
                    runs[-1] = i
            else:
                runs.append(i)
        while len(runs) > n + 1:
            runs.pop(0 if abs(error[runs[0]]) < abs(error[runs[-1]]) else -1)
        if len(runs) < n + 1:
            raise RuntimeError("lost an extremum")
        nodes = [values[i] for i in runs]
        if max(abs(e) for e in error) < abs(solution[n]) * mpf("1.01"):
            break
    return c, max(abs(e) for e in error)


def rounded(x, bits):
    """x to that many significant bits, to nearest."""
    if x == 0:
        return mpf(0)
    m, e = frexp(x)
    return ldexp(floor(ldexp(m, bits) + mpf(1) / 2), int(e) - bits)


def parts(x, bits):
    """x as a sum of parts with the given numbers of bits, the lower parts truncated so that all are positive."""
    result = []
    for b in bits:
        m, e = frexp(x)
        p = ldexp(floor(ldexp(m, b)), int(e) - b)
        if b == bits[-1]:
            p = rounded(x, b)
        result.append(p)
        x -= p
    return result


BITS = {"double": 53, "float": 24}


def literal(x, kind="double"):
    mantissa, exponent = float(rounded(x, BITS[kind])).hex().split("p")
    suffix = "F" if kind == "float" else ""
    return (mantissa.rstrip("0").rstrip(".") if "." in mantissa else mantissa) + "p" + exponent + suffix


def scalars(comment, kind="double", **named):
    print(f"// {comment}")
    for name, value in named.items():
        print(f"constexpr {kind} {name} = {literal(value, kind)};")
    print()


def table(name, values, columns=4, kind="double"):
    print(f"constexpr {kind} {name}[{len(values)}] = {{")
    for i in range(0, len(values), columns):
        print("    " + ", ".join(literal(v, kind) for v in values[i:i + columns]) + ",")
    print("};")


def polynomial(name, comment, f, weight, a, b, n, kind="double"):
    c, error = remez(f, weight, a, b, n)
    print(f"// {comment}\n// Largest error 2^{float(log(error, 2)):.1f}.")
    table(name, c, kind=kind)
    print()


def near_zero(f, limit):
    """f with its limit at 0, where the quotients below are 0 / 0."""
    return lambda x: mpf(limit) if abs(x) < mpf(10) ** -18 else f(x)


print("// Made by scripts/make_elementary_coefficients.py; change that script, not this file.\n"
      "#ifndef QORN_SRC_INFRA_KERNELS_ELEMENTARYCOEFFICIENTS_H\n"
      "#define QORN_SRC_INFRA_KERNELS_ELEMENTARYCOEFFICIENTS_H\n\n"
      "#include \"Kernel.h\"\n\n"
      "namespace QORN::kernels::QORN_LEVEL {\nnamespace {\n")

# Circular functions.
p = parts(pi / 2, [33, 31, 31, 53])
scalars("pi / 2 in parts of 33, 31, 31 and 53 bits.", kHalfPi1=p[0], kHalfPi2=p[1], kHalfPi3=p[2], kHalfPi4=p[3])
p = parts(pi / 2, [32, 53])
scalars("pi / 2 in parts of 32 and 53 bits, for float arguments.", kHalfPiFirst=p[0], kHalfPiRest=p[1])
scalars("The reciprocal.", kTwoOverPi=2 / pi)
p = parts(pi / 2, [24, 53])
scalars("pi / 2 cut to a float, and 2 / pi.", kind="float", kHalfPi32=p[0], kTwoOverPi32=2 / pi)
scalars("What the cut took from pi / 2.", kHalfPi32Lost=p[1])
r = pi / 4 * mpf("1.0001")
polynomial("kSin64", "sin(r) = r + r^3 P(r^2) for |r| <= pi/4, relative.",
           near_zero(lambda u: (sin(sqrt(u)) / sqrt(u) - 1) / u, -mpf(1) / 6), lambda u: u, 0, r * r, 6)
polynomial("kCos64", "cos(r) = 1 - r^2/2 + r^4 P(r^2) for |r| <= pi/4, absolute.",
           near_zero(lambda u: (cos(sqrt(u)) - 1 + u / 2) / u ** 2, mpf(1) / 24), lambda u: u * u, 0, r * r, 6)
r = pi / 4 * mpf("1.04")
polynomial("kSin32", "sin(r) = r + r^3 P(r^2) for |r| a little above pi/4, relative, for float results.",
           near_zero(lambda u: (sin(sqrt(u)) / sqrt(u) - 1) / u, -mpf(1) / 6), lambda u: u, 0, r * r, 4)
polynomial("kCos32", "cos(r) = 1 + r^2 P(r^2) for the same, absolute.",
           near_zero(lambda u: (cos(sqrt(u)) - 1) / u, -mpf(1) / 2), lambda u: u, 0, r * r, 4)

mp.dps = 500
bits = int(floor(ldexp(2 / pi, 1280)))
mp.dps = 60
words = [0] + [(bits >> (64 * (19 - i))) & (2 ** 64 - 1) for i in range(20)]
print("// 2 / pi in binary: a word of zeros before the point, then 1280 bits.")
print(f"constexpr std::uint64_t kTwoOverPiBits[{len(words)}] = {{")
for i in range(0, len(words), 4):
    print("    " + ", ".join(f"0x{w:016x}" for w in words[i:i + 4]) + ",")
print("};\n")
h = rounded(pi / 2, 53)
scalars("pi / 2 in two parts of 53 bits; pi and pi / 4 follow by exact scaling.", kHalfPiHigh=h, kHalfPiLow=pi / 2 - h)
p = parts(pi / 2 - h, [33, 53])
scalars("The second again in parts of 33 and 53 bits.", kHalfPiMiddle=p[0], kHalfPiLast=p[1])

# Exponential.
p = parts(log(2), [42, 53])
scalars("ln 2 in parts of 42 and 53 bits, its reciprocal, and the shift that puts e^r between 3/4 and 3/2.",
        kLn2High=p[0], kLn2Low=p[1], kLog2e=1 / log(2), kExpShift=(log(mpf(3) / 2) + log(mpf(3) / 4)) / 2)
lo, hi = log(mpf(3) / 4) * mpf("1.001"), log(mpf(3) / 2) * mpf("1.001")
polynomial("kExp64", "e^r = 1 + r + r^2 P(r) for 3/4 <= e^r <= 3/2, relative.",
           near_zero(lambda r: (exp(r) - 1 - r) / r ** 2, mpf(1) / 2), lambda r: r * r / exp(r), lo, hi, 10)
polynomial("kExp2_32", "2^f = P(f) for |f| <= 1/2, relative, for float results.",
           lambda f: mpf(2) ** f, lambda f: 1 / mpf(2) ** f, "-0.5001", "0.5001", 8)

# The same in float arithmetic: x = (8 k + i) ln 2 / 8 + r, and 2^(i / 8) e^r with the power from a table.
step = log(2) / 8
p = rounded(step, 24)
scalars("The eighth of ln 2 in two parts of 24 bits and its reciprocal.", kind="float",
        kExpStepHigh=p, kExpStepLow=step - p, kExpSteps=1 / step)
powers = [rounded(mpf(2) ** (mpf(i) / 8), 24) for i in range(8)]
print("// 2^(i / 8) rounded, and the logarithm of what the rounding took.")
table("kExpPower", powers, kind="float")
table("kExpPowerLost", [log(2) * i / 8 - log(powers[i]) for i in range(8)], kind="float")
print()
polynomial("kExpRest32", "e^r = 1 + r + r^2 P(r) for |r| <= ln 2 / 16, relative, in floats.",
           near_zero(lambda r: (exp(r) - 1 - r) / r ** 2, mpf(1) / 2), lambda r: r * r / exp(r),
           -step / 2 * mpf("1.001"), step / 2 * mpf("1.001"), 3, kind="float")

# Logarithms.
p = parts(log(2), [40, 53])
scalars("ln 2, also in parts of 40 and 53 bits.", kLn2=log(2), kLogLn2High=p[0], kLogLn2Low=p[1])
p = parts(mp.log10(2), [40, 53])
q = parts(1 / log(10), [20, 53])
scalars("log10 2 in parts of 40 and 53 bits, log10 e in parts of 20 and 53 bits.",
        kLog10Of2High=p[0], kLog10Of2Low=p[1], kLog10eHigh=q[0], kLog10eLow=q[1], kLog10e=1 / log(10), kLog10Of2=mp.log10(2))
s = (sqrt(mpf(2)) - 1) / (sqrt(mpf(2)) + 1) * mpf("1.0001")
polynomial("kLog64", "ln((1 + s) / (1 - s)) = 2 s + s^3 P(s^2) for arguments between sqrt(1/2) and sqrt(2), relative.",
           near_zero(lambda u: (2 * mp.atanh(sqrt(u)) / sqrt(u) - 2) / u, mpf(2) / 3), lambda u: u / 2, 0, s * s, 7)
lo, hi = sqrt(mpf(1) / 2) - 1 - mpf("1e-5"), sqrt(mpf(2)) - 1 + mpf("1e-5")
f = near_zero(lambda f: (log(1 + f) - f) / f ** 2, -mpf(1) / 2)
w = lambda f: f ** 2 / log(1 + f) if f else mpf(0)
polynomial("kLog32", "ln(1 + f) = f + f^2 P(f) for sqrt(1/2) <= 1 + f <= sqrt(2), relative, for float results.", f, w, lo, hi, 12)
polynomial("kPowLog32", "The same, for the logarithm inside a power.", f, w, lo, hi, 15)

# The same in float arithmetic: ln x = k ln 2 + ln c + ln(1 + r), 1 / c from a table of eight. The intervals begin where
# short reciprocals keep |r| within 1/16; then r is exact. One interval holds 1, with 1 / c = 1.
float_value = lambda b: mpf(struct.unpack("<f", struct.pack("<I", b))[0])
start = 0x3f800000 + (1 << 20) // 3 - (5 << 20)
rows = []
worst = mpf(0)
for i in range(8):
    first, last = float_value(start + (i << 20)), float_value(start + ((i + 1) << 20) - 1)
    short = mpf(1) / (16 if last < mpf("1.02") else 32)
    ratio = lambda inverse: max(abs(first * inverse - 1), abs(last * inverse - 1))
    inverse = min((n * short for n in range(16, 64)), key=ratio)
    worst = max(worst, ratio(inverse))
    for x in (first, last):
        assert rounded(x * inverse - 1, 24) == x * inverse - 1
    high = floor(ldexp(-log(inverse), 17) + mpf(1) / 2) / 2 ** 17
    rows.append((inverse, high, -log(inverse) - high))
p = floor(ldexp(log(2), 17)) / mpf(2) ** 17
print(f"// The first of the numbers with k = 0, as bits; ln 2 and, per interval of an eighth of an octave's bits, 1 / c and\n"
      f"// ln c, the logarithms as multiples of 2^-17 and rests. |z / c - 1| <= {float(worst):.6f}.\n"
      f"constexpr std::uint32_t kLogStart32 = 0x{start:08x};")
print(f"constexpr float kLogLn2High32 = {literal(p, 'float')};\nconstexpr float kLogLn2Low32 = {literal(log(2) - p, 'float')};")
table("kLogInverse32", [r[0] for r in rows], kind="float")
table("kLogHigh32", [r[1] for r in rows], kind="float")
table("kLogLow32", [r[2] for r in rows], kind="float")
print()
polynomial("kLogRest32", "ln(1 + r) = r - r^2/2 + r^3 P(r) for |r| <= 1/16, relative, in floats.",
           near_zero(lambda r: (log(1 + r) - r + r * r / 2) / r ** 3, mpf(1) / 3),
           near_zero(lambda r: r ** 3 / log(1 + r), 0), -mpf(1) / 16, mpf(1) / 16, 5, kind="float")
p = rounded(1 / log(10), 24)
scalars("log10 e in two parts of 24 bits.", kind="float", kLog10eHigh32=p, kLog10eLow32=1 / log(10) - p)

# From tables of 32 |r| is so small that the leading terms alone need two parts, and log10 comes without a product of ln.
# The interval with 1 reaches as far below it as above it.
count, width = 32, 1 << 18
assert start == 0x3f800000 + width // 3 - 19 * width
inverses = []
worst = mpf(0)
for i in range(count):
    first, last = float_value(start + i * width), float_value(start + (i + 1) * width - 1)
    place = ldexp(mpf(1), -24 if first < 1 else -23)
    ratio = lambda inverse: max(abs(first * inverse - 1), abs(last * inverse - 1))
    # What follows r, beside the logarithm.
    square = lambda inverse: max((x * inverse - 1) ** 2 / abs(log(x)) for x in (first, last))
    candidates = []
    for bits in (5, 6, 7):
        step = ldexp(mpf(1), -bits)
        nearest = int(2 / (first + last) / step)
        # Those with which r is exact.
        candidates += [n * step for n in range(nearest - 3, nearest + 5) if ratio(n * step) < ldexp(step * place, 24)]
    inverse = mpf(1) if first <= 1 <= last else min(candidates, key=square)
    worst = max(worst, ratio(inverse))
    inverses.append(inverse)
print(f"// 1 / c per interval of a 32nd of an octave's bits, and the logarithms of 2 and c to both bases, as multiples of\n"
      f"// 2^-17 and rests. |z / c - 1| <= {float(worst):.6f}.")
table("kLogFineInverse", inverses, kind="float")
for name, base in (("Ln", mpf(1)), ("Log10", log(10))):
    value = lambda x: log(x) / base
    high = lambda x: floor(ldexp(value(x), 17) + mpf(1) / 2) / 2 ** 17
    for part, of in (("High", high), ("Low", lambda x: value(x) - high(x))):
        print(f"constexpr float k{name}Fine2{part} = {literal(of(mpf(2)), 'float')};")
        table(f"k{name}Fine{part}", [of(1 / x) for x in inverses], kind="float")
print()
for name, text, base in (("Ln", "ln(1 + r) = r", mpf(1)), ("Log10", "log10(1 + r) = r log10 e", log(10))):
    polynomial(f"k{name}FineRest", f"{text} + r^2 P(r) for such r, relative to the first term.",
               near_zero(lambda r: (log(1 + r) - r) / r ** 2 / base, -1 / base / 2),
               lambda r: max(abs(r), mpf("0.0001")) * base, -worst, worst, 4, kind="float")

# Power: ln x = k ln 2 + ln c + ln(1 + r) with 1 / c from a table of short numbers, so that r = z / c - 1 is exact.
lo, hi = -mpf(2) ** -7 * mpf("1.01"), mpf(2) ** -7 * mpf("1.01")
polynomial("kPowLog64", "ln(1 + r) = r - r^2/2 + r^3 P(r) for |r| <= 2^-7, relative.",
           near_zero(lambda r: (log(1 + r) - r + r * r / 2) / r ** 3, mpf(1) / 3),
           near_zero(lambda r: r ** 3 / log(1 + r), 0), lo, hi, 6)
p = parts(log(2), [42, 53])
count = 128
# Bits of the lower end of the range [0.7070, 1.4140); one interval ends at 1.
offset = 0x3fe6a00000000000
rows = []
worst = mpf(0)
value = lambda b: mpf(struct.unpack("<d", struct.pack("<Q", b))[0])
for i in range(count):
    first = value(offset + (i << 45))
    last = value(offset + ((i + 1) << 45) - 1)
    # The multiple of 2^-8, or of 2^-7 above 1, that balances both ends. Exactly 1 on both sides of 1, where
    # the logarithm is r alone and must be precise relative to itself.
    inverse = 2 / (first + last)
    step = mpf(2) ** (-7 if last < 1 else -8)
    inverse = floor(inverse / step + mpf(1) / 2) * step
    if first == 1 or value(offset + ((i + 1) << 45)) == 1:
        inverse = mpf(1)
    worst = max(worst, abs(first * inverse - 1), abs(last * inverse - 1))
    logc = -log(inverse)
    high = floor(ldexp(logc, 42) + mpf(1) / 2) / mpf(2) ** 42
    rows.append((inverse, high, logc - high))
print(f"// Per interval of 2^-7 of an octave: 1 / c with at most 8 fractional bits, and ln c as a multiple of\n"
      f"// 2^-42 and a rest. |z / c - 1| <= 2^{float(log(worst, 2)):.2f}.")
table("kPowInverse", [r[0] for r in rows], 4)
table("kPowLogHigh", [r[1] for r in rows], 4)
table("kPowLogLow", [r[2] for r in rows], 4)
print()

# Arctangent.
scalars("atan(1/2) in two parts.", kAtanHalfHigh=rounded(atan(mpf(1) / 2), 53),
        kAtanHalfLow=atan(mpf(1) / 2) - rounded(atan(mpf(1) / 2), 53))
t = mpf(7) / 16 * mpf("1.0001")
f = near_zero(lambda u: (atan(sqrt(u)) / sqrt(u) - 1) / u, -mpf(1) / 3)
w = lambda u: u * sqrt(u) / atan(sqrt(u)) if u else mpf(0)
polynomial("kAtan64", "atan(t) = t + t^3 P(t^2) for |t| <= 7/16, relative.", f, w, 0, t * t, 11)
polynomial("kAtan32", "atan(t) = t + t^3 P(t^2) for |t| <= 1, relative, for float results.", f, w, 0, 1, 12)

# Error function.
edge = mpf(1) / 2
f = near_zero(lambda u: erf(sqrt(u)) / sqrt(u) - mpf(9) / 8, 2 / sqrt(pi) - mpf(9) / 8)
polynomial("kErfSmall64", "erf(x) = x + (x / 8 + x P(x^2)) for |x| <= 1/2, relative.", f,
           lambda u: sqrt(u) / erf(sqrt(u)) if u else sqrt(pi) / 2, 0, edge ** 2, 9)
q0 = log(erfc(edge))
q1 = -2 / sqrt(pi) * exp(-edge ** 2) / erfc(edge)
q2 = (2 * edge * 2 / sqrt(pi) * exp(-edge ** 2) / erfc(edge) - q1 ** 2) / 2
scalars("ln erfc(1/2) and its derivative there, each in two parts.",
        kErfLogHigh=rounded(q0, 53), kErfLogLow=q0 - rounded(q0, 53),
        kErfSlopeHigh=rounded(q1, 53), kErfSlopeLow=q1 - rounded(q1, 53))
f = near_zero(lambda v: (log(erfc(edge + v)) - q0 - q1 * v) / v ** 2, q2)
polynomial("kErfLarge64", "ln erfc(1/2 + v) = ln erfc(1/2) + slope v + v^2 P(v) up to 1/2 + v = 6; the error is that of erf.",
           f, lambda v: v ** 2 * erfc(edge + v), 0, 6 - edge, 20)
f = lambda u: erf(sqrt(u)) / sqrt(u) if u else 2 / sqrt(pi)
polynomial("kErfSmall32", "erf(x) = x P(x^2) for |x| <= 1, relative, for float results.", f,
           lambda u: sqrt(u) / erf(sqrt(u)) if u else sqrt(pi) / 2, 0, 1, 8)
f = lambda v: log(erfc(1 + v)) / log(2)
polynomial("kErfLarge32", "log2 erfc(1 + v) = P(v) up to 1 + v = 4; the error is that of erf, for float results.",
           f, lambda v: erfc(1 + v) * log(2), 0, 3, 10)

print("} // namespace\n} // namespace QORN::kernels::QORN_LEVEL\n\n#endif")
