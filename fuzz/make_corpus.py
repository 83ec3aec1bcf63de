#!/usr/bin/env python3
"""Writes the seeds of the fuzzers into the folders of fuzz/corpus."""
import os
import struct

corpus = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")


def write(target, seeds):
    folder = os.path.join(corpus, target)
    os.makedirs(folder, exist_ok=True)
    for name, data in seeds.items():
        with open(os.path.join(folder, name), "wb") as file:
            file.write(data)


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


write("Iqf", {
    "no-header": b"10",
    "no-frames": header(keys(1024, 3)),
    "cartesian": header(keys(8, 1)) + frame(cartesian=0xFFFF) + frame(),
    "polar": header(keys(1024, 1)) + frame(polar=0xFFFF),
    "cut-short": header(keys(1000, 2)) + frame()[:700],
    "hostile": header(keys(2**31 - 1, 2**31 - 1, -(2**31), Bins="1e999", UnitPeriod="nan")),
    "far-exponents": header(keys(8, 1, LevelOffset="-1e9223372036854775807", UnitPeriod="0.01e-9223372036854775808")),
    "many-tokens": header("a=b " * 60),
    "long-tokens": header("n" * 90 + "=" + "v" * 90),
    "length-beyond": b"9999999999Span=1M",
})


def line(tag, value, attribute=""):
    return f"<{tag}{attribute}>{value}</{tag}>\n"


def times(trigger, stamp):
    seconds = ' units="Seconds"'
    return "<DataSet>\n" + line("TriggerPosition", trigger, seconds) + line("TimestampOffset", stamp, seconds)


def acquisition(samples, scaling="1e-6"):
    hertz = ' units="Hz"'
    return (line("SamplingFrequency", 56000000, hertz) + line("NumberSamples", samples) + line("Scaling", scaling) +
            line("Frequency", "1.09e9", hertz) + line("AcquisitionBandwidth", 4e7, hertz) + line("MaxSpan", 3e7, hertz) +
            line("RFAttenuation", 10, ' units="dB"') + line("ReferenceLevel", -20.5, ' units="dBm"'))


setup = ("<Setup>\n" + '<NumericParameter pid="anOffset">\n' + line("Value", 0.25) +
         '<NumericParameter pid="anLenReq" name="Analysis Length Requested">\n' + line("Value", 1.5) + "</Setup>\n")


def recording(text, samples, offset=1500):
    first = f'<DataFile offset="0{offset}" type="binary">\n'
    return (first + text).ljust(offset).encode() + b"".join(struct.pack("<2i", k * 7919, -k) for k in range(samples))


end = "</DataSetsCollection>\n"
write("Xiq", {
    "two-sets": recording(setup + acquisition(20) + times(0.5, -1) + times(1, 2) + end, 40),
    "no-end": recording(acquisition(20) + times(0, 0), 20),
    "cut-short": recording(setup + acquisition(50) + times(0, 0) + end, 10),
    "hostile": recording(acquisition(2**31 - 1, "nan") + times("1e999", "-") + end, 4, 400),
    "far-exponents": recording(acquisition(20, "0.01e-9223372036854775808") + times("1e9223372036854775807", 0) + end, 4),
    "negative": recording(acquisition(-5) + times(0, 0) + end, 4),
    "no-offset": (setup + acquisition(3) + times(0, 0) + end).encode(),
    "long-lines": b"x" * 1015 + b"<DataSet>" + b"y" * 1023 + b"<DataSet>\n" + b"ab\0<DataSet>\n<DataSet>",
    "nested": b"<DataSet>\n<DataSet>\n<DataSet>\n<DataSet>",
})


def vector_file(kind, length, data, version=1, params=(0, 0, 0)):
    return struct.pack("<64s4i3f16x", b"VecReal32, length=5", 26, version, kind, length, *params) + data


numbers = struct.pack("<10d", *(0.1 * k for k in range(10)))
write("VectorFile", {
    "cplx64": vector_file(100, 5, numbers),
    "real64": vector_file(101, 10, numbers),
    "cplx32": vector_file(102, 10, numbers, params=(1.5, -2, 3)),
    "real32": vector_file(103, 20, numbers),
    "empty": vector_file(103, 0, b""),
    "more-data": vector_file(102, 3, numbers),
    "less-data": vector_file(102, 1000, numbers),
    "version": vector_file(102, 10, numbers, version=2),
    "type": vector_file(104, 10, numbers),
    "negative": vector_file(102, -10, numbers),
    "header-cut": vector_file(102, 10, b"")[:50],
})

write("TextImport", {
    "one": b"1\n-2.5\n3e4\n",
    "two": b"0 1\n1 -2.5e-3\n2 nan\n3 inf\n",
    "three": b"0 1 2\n1 3 4\n2 5 6\n",
    "no-newline": b"1 2 3 4",
    "not-numbers": b"1 2 x 4\n",
    "hex": b"0x1p3 0xffff -0x8\n",
    "extremes": b"1e999 -1e999 1e-999 2147483648 -2147483649 99999999999999999999 18446744073709551617\n",
    "long": b"1" * 400 + b"." + b"9" * 400 + b" 0." + b"0" * 400 + b"1\n",
    "commas": b"1,2,3\n",
    "zeros": b"1\0002 3\n",
})
