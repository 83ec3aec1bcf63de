#!/usr/bin/env python3
"""Writes src/dsp/IS95TapTables.inc: the taps of the IS-95 measurement filters at 2, 4, 8 and 16 samples per chip.

The tables for 2 samples per chip are the design. Those for more are the same impulse response, sampled more
densely: the one response without any content above the chip rate that passes through all taps of the design,
with the design zero outside of its taps,

    h(t) = sum over k of design[k] sinc(t - k),     sinc(x) = sin(pi x) / (pi x),

t in samples of the design. A table of ratio r is 2 / r times h at steps of 2 / r, which leaves the gain as it is.

Where the steps lie follows from the lengths and the delay (length - 1) / 2:

- Transmitter, without and with equaliser: the first tap is h(0) at every ratio. 81, 161 and 321 taps end with
  h(80). The 643 taps end with h(80.25), two more than it takes to reach h(80), so that tap 40 of the design comes
  to place 320, one before the middle. There the transmitter's peak stays; the equaliser is not symmetric, and its
  peak, at about h(40.1), is nearest to place 321.
- Reference: tap 51 of the design, its peak, lies in the middle at every ratio. 207 taps reach half a sample
  beyond the design on both sides, 415 and 829 taps three quarters.

So at the transmitter's ratios each table is every second tap of the next one, times 2: exactly, since both are one
value of h with another power of 2, rounded to float (9 digits tell a float apart). The reference is scaled besides,
by less than half a thousandth, to its documented peaks, and mirrored, so that it is symmetric to the last
bit.
"""
import math
import pathlib

import numpy as np

TX = """
    -3.71962851e-05, 9.24044216e-05, -0.00012349851, 0.000210529513, -0.000266828516, -0.000102473139,
    0.000624141423, -0.000227058859, -0.000871703785, 0.00063626864, 0.00089337019, -0.00103439775,
    -0.000618022343, 0.00152544898, 7.68001482e-05, -0.00184679346, 0.000882589258, 0.00194439909,
    -0.00187288504, -0.00182963826, 0.00223678746, -0.00064428529, -0.00445275428, 0.00394032663,
    0.00838044286, -0.0064573423, -0.011432359, 0.0133274049, 0.0240131672, -0.00542601291, -0.0215958897,
    -0.00101774186, -0.00674354378, -0.0429898277, -0.0166002642, 0.0515526719, 0.00884773303, -0.105235368,
    -0.0143599184, 0.323382705, 0.524884164, 0.323383093, -0.0143595804, -0.105235465, 0.00884707272,
    0.0515519232, -0.0166006926, -0.0429897234, -0.00674302643, -0.00101719401, -0.0215955731,
    -0.00542646321, 0.0240130369, 0.0133268507, -0.0114324521, -0.0064573139, 0.0083800396, 0.00394139113,
    -0.00445303367, -0.000643051579, 0.00223370595, -0.00182566058, -0.00187387061, 0.00194209092,
    0.000885433285, -0.00185090571, 8.26411851e-05, 0.00151797314, -0.000606831396, -0.00105235213,
    0.000911202107, 0.00064352114, -0.000920386461, -0.000166299418, 0.000590746, -0.000106915213,
    -0.000247633259, 0.000196214649, -0.0001086501, 7.14086636e-05, -2.19098692e-05,
"""

TX_EQ = """
    0.000110464607, -0.000439668598, 0.00041473395, 0.000335055665, -0.000854362384, 8.41446818e-05,
    0.00102252909, -0.000698084361, -0.000794040097, 0.00116131047, 0.000172618384, -0.00123786193,
    0.000693594862, 0.000922981999, -0.00129249378, -1.53173266e-06, 0.00146247528, -0.00093225349,
    -0.000737667317, 0.00126670906, -0.00220454764, -0.00275741587, 0.00419593556, 0.00243360014,
    -0.00532849878, 0.000708453532, 0.00833017845, 0.00229390757, 0.00521020079, 0.0142478514,
    -0.00762983831, -0.0339184925, -0.017170595, -0.00417192653, -0.0328650735, -0.0323707648,
    0.00389626063, -0.0026869711, 0.0496195219, 0.306907058, 0.519874573, 0.320469648, -0.084401831,
    -0.174983501, 0.0329260305, 0.111929305, -0.00359968538, -0.0534222052, -0.00790881459, -0.0071284147,
    -0.0222301278, 0.0137215992, 0.0282831918, -0.00830524135, -0.0156060774, 0.011095779, 0.00726652145,
    -0.0104497727, 0.000420988275, 0.00966052525, -0.0039051231, -0.00766787073, 0.00383883645,
    0.00406177528, -0.00307229115, -0.00103875506, 0.00169181498, -0.000614301942, -0.000243595161,
    0.000967917789, -0.000735558511, -0.000447256869, 0.00121439679, -0.000385845226, -0.00108024827,
    0.00105518103, 0.000473854336, -0.0012322648, 0.000300842512, 0.000753678381, -0.000663952203,
"""

REFERENCE = """
    2.0864104e-06, -5.87377372e-06, 3.59205592e-06, -5.01654358e-06, 1.28304564e-05, 1.93209726e-05,
    -6.00069143e-05, -3.09252282e-05, 0.000154865455, 2.61123059e-05, -0.000321921223, -2.16389817e-05,
    0.000557824795, 1.68877632e-05, -0.000837179949, 2.54130077e-06, 0.00112306618, -2.56815838e-05,
    -0.00134173839, 4.08878477e-05, 0.00132481684, -0.000117661984, -0.000961016747, 0.000233065293,
    5.78175241e-05, -0.000358124264, 0.00173345243, 0.000637364923, -0.0043344982, -0.000504197262,
    0.00865023118, -6.53539537e-05, -0.0161157921, -0.000818703731, 0.0249400549, 0.000736060203,
    -0.0383162573, -0.00165506511, 0.0585746765, 0.0134323621, -0.0636007711, 0.00282104337, 0.104910173,
    0.000661657308, -0.151291266, 0.00045687746, 0.233299792, 0.000496525667, -0.411319017, -0.00050067046,
    1.26948917, 2.00168443, 1.26948917, -0.00050067046, -0.411319017, 0.000496525667, 0.233299792,
    0.00045687746, -0.151291266, 0.000661657308, 0.104910173, 0.00282104337, -0.0636007711, 0.0134323621,
    0.0585746765, -0.00165506511, -0.0383162573, 0.000736060203, 0.0249400549, -0.000818703731,
    -0.0161157921, -6.53539537e-05, 0.00865023118, -0.000504197262, -0.0043344982, 0.000637364923,
    0.00173345243, -0.000358124264, 5.78175241e-05, 0.000233065293, -0.000961016747, -0.000117661984,
    0.00132481684, 4.08878477e-05, -0.00134173839, -2.56815838e-05, 0.00112306618, 2.54130077e-06,
    -0.000837179949, 1.68877632e-05, 0.000557824795, -2.16389817e-05, -0.000321921223, 2.61123059e-05,
    0.000154865455, -3.09252282e-05, -6.00069143e-05, 1.93209726e-05, 1.28304564e-05, -5.01654358e-06,
    3.59205592e-06, -5.87377372e-06, 2.0864104e-06,
"""

TX_LENGTHS = {4: 161, 8: 321, 16: 643}
REFERENCE_LENGTHS = {4: 207, 8: 415, 16: 829}
REFERENCE_PEAKS = {4: 1.0004, 8: 0.5001, 16: 0.2501}


def parse(text):
    return [float(np.float32(word)) for word in text.replace(",", " ").split()]


def response(design, t):
    if t == int(t) and 0 <= t < len(design):
        return design[int(t)]
    return math.fsum(tap * np.sinc(t - k) for k, tap in enumerate(design))


def transmitter(design, ratio):
    step = 2 / ratio
    return [step * response(design, place * step) for place in range(TX_LENGTHS[ratio])]


def reference(design, ratio):
    step = 2 / ratio
    middle = REFERENCE_LENGTHS[ratio] // 2
    peak = len(design) // 2
    scale = REFERENCE_PEAKS[ratio] / design[peak]
    half = [scale * response(design, peak + (place - middle) * step) for place in range(middle)]
    return half + [REFERENCE_PEAKS[ratio]] + half[::-1]


def literal(tap):
    text = f"{np.float32(tap):.9g}"
    return text + ("F" if "." in text or "e" in text else ".0F")


def definition(name, ratio, taps):
    lines, line = [], "   "
    for tap in taps:
        word = f" {literal(tap)},"
        if len(line) + len(word) > 110:
            lines.append(line)
            line = "   "
        line += word
    lines.append(line)
    return f"constexpr float k{name}{ratio}[{len(taps)}] = {{\n" + "\n".join(lines) + "\n};\n"


def main():
    out = ["// Made by scripts/coefficients/is95_taps.py, which tells what the tables are. Not to be edited.\n",
           "// clang-format off\n"]
    for name, text, densely in (("Tx", TX, transmitter), ("TxEq", TX_EQ, transmitter),
                                ("Reference", REFERENCE, reference)):
        design = parse(text)
        out.append(definition(name, 2, design))
        out += [definition(name, ratio, densely(design, ratio)) for ratio in (4, 8, 16)]
    out.append("// clang-format on\n")
    root = pathlib.Path(__file__).resolve().parents[2]
    (root / "src/dsp/IS95TapTables.inc").write_text("".join(out))


if __name__ == "__main__":
    main()
