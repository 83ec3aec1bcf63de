#!/usr/bin/env python3
"""Writes the seeds of the fuzzers into the folders of fuzz/corpus."""
import os
import struct

folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus", "Iqf")


def header(text):
    length = str(len(text))
    return f"{len(length)}{length}{text}".encode()


def frame(polar=0, cartesian=0):
    pairs = [(k * 37 % 65536 - 32768, k * 91 % 65536 - 32768) for k in range(1024)]
    return struct.pack("<5H14x", 0, polar, polar, cartesian, cartesian) + b"".join(struct.pack("<2h", *p) for p in pairs)


def keys(points, frames, block=1, **more):
    values = dict(FFTPoints=points, ValidFrames=frames, BlockSize=block, MaxInputLevel=-10, GainOffset="1.5",
                  FrameLength="512u", CenterFrequency="1090M", Span="1600k", IOffset=1, QOffset=-1, **more)
    return "\r\n".join(f"{k}={v}" for k, v in values.items())


seeds = {
    "no-header": b"10",
    "no-frames": header(keys(1024, 3)),
    "cartesian": header(keys(8, 1)) + frame(cartesian=0xFFFF) + frame(),
    "polar": header(keys(1024, 1)) + frame(polar=0xFFFF),
    "cut-short": header(keys(1000, 2)) + frame()[:700],
    "hostile": header(keys(2**31 - 1, 2**31 - 1, -(2**31), Bins="1e999", UnitPeriod="nan")),
    "many-tokens": header("a=b " * 60),
    "long-tokens": header("n" * 90 + "=" + "v" * 90),
    "length-beyond": b"9999999999Span=1M",
}
os.makedirs(folder, exist_ok=True)
for name, data in seeds.items():
    with open(os.path.join(folder, name), "wb") as file:
        file.write(data)
