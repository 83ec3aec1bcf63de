// qorn convert.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <qorn/qorn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "ToolFixture.h"

namespace {

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::HasTerminals;
using QORN::test::HeaderText;
using QORN::test::LimitFiles;
using QORN::test::Outcome;
using QORN::test::Recording;
using QORN::test::RunTool;
using QORN::test::Signal;
using QORN::test::Tone;
using QORN::test::Tool;
using QORN::test::iqf::Frame;
using QORN::test::iqf::Mark;
using QORN::test::iqf::Pair;

using Arguments = std::vector<std::string>;

const std::string kKnown = "known are iqf, xiq, cu8, cs8, cs16, cf32";

class Convert : public Tool {
protected:
  /// Converts folder / in to folder / out.
  json Run(const std::string &in, const std::string &out, const Arguments &more = {}) const {
    Arguments arguments = {folder / in, folder / out};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Measure(arguments, "convert");
  }
  std::string Bytes(const std::string &name) const { return Contents(folder / name); }
};

template <class Number> std::string BytesOf(const std::vector<Number> &numbers) {
  std::string bytes(numbers.size() * sizeof(Number), '\0');
  std::memcpy(bytes.data(), numbers.data(), bytes.size());
  return bytes;
}

std::string RandomBytes(std::size_t n) {
  std::mt19937 engine(1);
  std::string bytes;
  while (bytes.size() < n) bytes += static_cast<char>(engine() & 0xFF);
  return bytes;
}

// Round trips

TEST_F(Convert, IntegersThroughEveryWiderFormat_ComeBackByteForByte) {
  // More than two blocks, with a rest.
  const std::string bytes = RandomBytes(4 * 150001);
  const Arguments rate = {"--rate", "2.4e6"};
  struct Trip {
    const char *from;
    std::vector<const char *> through;
    Arguments back;
  };
  const std::vector<Trip> trips = {
      {"cu8", {"cs16", "cf32", "iqf"}, {}},
      {"cu8", {"xiq"}, {"--out-scale", "0.0078125"}},
      {"cs8", {"cs16", "cf32", "iqf", "xiq"}, {}},
      {"cs16", {"cf32", "iqf", "xiq"}, {}},
  };
  for (const Trip &trip : trips) {
    const std::string from = std::string("a.") + trip.from;
    Save(bytes, from);
    const auto samples = static_cast<std::int64_t>(bytes.size() / (std::string(trip.from) == "cs16" ? 4 : 2));
    for (const char *through : trip.through) {
      SCOPED_TRACE(std::string(trip.from) + " " + through);
      const json there = Run(from, std::string("b.") + through, rate);
      EXPECT_EQ(there["samples"], samples);
      EXPECT_EQ(there["saturated_samples"], 0);
      Arguments back = trip.back;
      // The zeros that fill the last frame stay behind.
      back.insert(back.end(), {"--count", std::to_string(samples)});
      const json here = Run(std::string("b.") + through, std::string("c.") + trip.from, back);
      EXPECT_EQ(here["saturated_samples"], 0);
      EXPECT_TRUE(Bytes(std::string("c.") + trip.from) == bytes);
    }
  }
}

TEST_F(Convert, IqfThroughEveryWiderFormat_ComesBackByteForByte) {
  Save(RandomBytes(4 * 4096), "a.cs16");
  Run("a.cs16", "a.iqf", {"--rate", "2.4e6", "--centre", "1090e6", "--scale", "1e-5"});
  const std::string bytes = Bytes("a.iqf");
  EXPECT_EQ(Run("a.iqf", "b.iqf")["volts_per_step"].get<double>(),
            Run("a.iqf", "b.xiq")["volts_per_step"].get<double>());
  EXPECT_TRUE(Bytes("b.iqf") == bytes);
  const QORN::IQFReader a((folder / "a.iqf").c_str());
  EXPECT_NEAR(a.GetScalingFactor(), 1e-5, 1e-18);
  Run("b.xiq", "c.iqf");
  EXPECT_TRUE(Bytes("c.iqf") == bytes);
  // An XIQ recording too comes back as it was.
  Run("c.iqf", "c.xiq");
  EXPECT_TRUE(Bytes("c.xiq") == Bytes("b.xiq"));
  Run("b.xiq", "d.xiq");
  EXPECT_TRUE(Bytes("d.xiq") == Bytes("b.xiq"));
  // What a format does not tell is given again.
  Run("a.iqf", "e.cf32");
  Run("e.cf32", "e.cs16", {"--out-scale", "1e-5"});
  EXPECT_TRUE(Bytes("e.cs16") == Bytes("a.cs16"));
  Run("a.iqf", "f.cs16");
  EXPECT_TRUE(Bytes("f.cs16") == Bytes("a.cs16"));
}

TEST_F(Convert, FloatsThroughXiq_ComeBackWhereTheyAreNotSmall) {
  std::mt19937 engine(1);
  std::uniform_real_distribution<float> values(0.01F, 1.0F);
  std::vector<float> floats(20000);
  for (float &value : floats) value = engine() % 2 == 0 ? values(engine) : -values(engine);
  Save(BytesOf(floats), "a.cf32");
  Run("a.cf32", "a.xiq", {"--rate", "1e6"});
  Run("a.xiq", "b.cf32");
  EXPECT_TRUE(Bytes("a.cf32") == Bytes("b.cf32"));
  Run("a.cf32", "c.cf32");
  EXPECT_TRUE(Bytes("a.cf32") == Bytes("c.cf32"));
  // With other volts for 1.
  Run("a.cf32", "d.cf32", {"--scale", "4"});
  const std::string bytes = Bytes("d.cf32");
  for (std::size_t i = 0; i < floats.size(); ++i) {
    float value;
    std::memcpy(&value, bytes.data() + 4 * i, 4);
    ASSERT_EQ(value, 4.0F * floats[i]);
  }
  Run("d.cf32", "e.cf32", {"--out-scale", "4"});
  EXPECT_TRUE(Bytes("a.cf32") == Bytes("e.cf32"));
}

// Values and scales

TEST_F(Convert, Values_AreThoseOfTheFormats) {
  using namespace std::string_literals;
  Save("\x00\xFF\x80\x7F"s, "a.cu8"); // -127.5, 127.5, 0.5, -0.5
  Run("a.cu8", "a.cs16");
  EXPECT_EQ(Bytes("a.cs16"), BytesOf<std::int16_t>({-32640, 32640, 128, -128}));
  Run("a.cu8", "a.cf32");
  EXPECT_EQ(Bytes("a.cf32"), BytesOf<float>({-127.5F / 128, 127.5F / 128, 0.5F / 128, -0.5F / 128}));
  Run("a.cf32", "a.cs8"); // halves go to even, and the limits are -128 and 127
  EXPECT_EQ(Bytes("a.cs8"), "\x80\x7F\x00\x00"s);
  Save(BytesOf<std::int16_t>({-32768, 32767, 256, -256}), "b.cs16");
  Run("b.cs16", "b.cs8");
  EXPECT_EQ(Bytes("b.cs8"), "\x80\x7F\x01\xFF"s);
  Run("b.cs16", "b.cf32", {"--scale", "0.5"});
  EXPECT_EQ(Bytes("b.cf32"), BytesOf<float>({-16384.0F, 16383.5F, 128.0F, -128.0F}));
  Run("b.cs16", "b.cf32", {"--scale", "0.5", "--out-scale", "0.25"});
  EXPECT_EQ(Bytes("b.cf32"), BytesOf<float>({-65536.0F, 65534.0F, 512.0F, -512.0F}));
}

TEST_F(Convert, XiqWithLargeValues_IsScaledToFit) {
  // Beyond 16 bits: the largest becomes the largest.
  Save(BytesOf<float>({1.0F, -0.5F, 0.25F, 0.0F}), "a.cf32");
  EXPECT_EQ(Run("a.cf32", "a.xiq", {"--rate", "1e6"})["volts_per_step"], std::ldexp(1.0, -30));
  EXPECT_EQ(Run("a.xiq", "b.cs16")["saturated_samples"], 0);
  EXPECT_EQ(Bytes("b.cs16"), BytesOf<std::int16_t>({32767, -16384, 8192, 0}));
  EXPECT_NEAR(Run("a.cf32", "a.iqf", {"--rate", "1e6"})["volts_per_step"].get<double>(), 1.0 / 32767, 1e-12);
  // Silence has no largest value.
  Save(std::string(800, '\0'), "s.cf32");
  Run("s.cf32", "s.xiq", {"--rate", "1e6"});
  Run("s.xiq", "s.cs8");
  EXPECT_EQ(Bytes("s.cs8"), std::string(200, '\0'));
  Run("s.cf32", "s.iqf", {"--rate", "1e6"});
  EXPECT_EQ(RunTool({"info", folder / "s.iqf"}).status, 0);
}

TEST_F(Convert, ValuesThatSaturate_AreCountedAndTold) {
  Save(BytesOf<float>({0.9F, 1.1F, -1.1F, 1.1F, 0.5F, -0.5F, 0.0F, -2.0F}), "a.cf32");
  const json report = Run("a.cf32", "a.cs16");
  EXPECT_EQ(report["saturated_samples"], 3);
  EXPECT_EQ(Bytes("a.cs16"), BytesOf<std::int16_t>({29491, 32767, -32768, 32767, 16384, -16384, 0, -32768}));
  const Outcome outcome = RunTool({"convert", folder / "a.cf32", folder / "a.cs16"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.out, "Recording             " + (folder / "a.cf32") +
                             ", cf32\n"
                             "Converted             " +
                             (folder / "a.cs16") +
                             ", cs16\n"
                             "Samples               4\n"
                             "Volts per step        30.52 µV\n"
                             "Saturated             3 samples\n");
}

// The header

TEST_F(Convert, Text_TellsWhatWasWritten) {
  const std::string path = Save(std::string(4 * 1500, '\x01'), "a.cs16");
  const Outcome outcome =
      RunTool({"convert", path, folder / "a.iqf", "--rate", "2.4e6", "--centre", "1090.0125e6"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.out, "Recording             " + path +
                             ", cs16\n"
                             "Converted             " +
                             (folder / "a.iqf") +
                             ", iqf\n"
                             "Samples               1 500, 625 µs; 548 zeros fill the last frame\n"
                             "Sampling rate         2.4 MHz\n"
                             "Centre                1090.0125 MHz\n"
                             "Volts per step        30.52 µV\n"
                             "Saturated             none\n");
  const json report = Run("a.iqf", "a.xiq");
  EXPECT_EQ(report["recording"], folder / "a.iqf");
  EXPECT_EQ(report["format"], "iqf");
  EXPECT_EQ(report["converted"], folder / "a.xiq");
  EXPECT_EQ(report["converted_format"], "xiq");
  EXPECT_EQ(report["sampling_rate_hz"], 2.4e6);
  EXPECT_EQ(report["centre_hz"], 1090.0125e6);
  EXPECT_EQ(report["samples"], 2048);
  EXPECT_FALSE(report.contains("frames"));
  EXPECT_EQ(Run("a.xiq", "b.iqf")["frames"], 2);
  EXPECT_EQ(Run("a.cs16", "b.cs8")["sampling_rate_hz"], nullptr);
}

TEST_F(Convert, RateAndCentre_ReplaceThoseOfTheRecording) {
  Save(Recording(2048, Tone(-10.0, 0.1)), "a.iqf");
  for (const char *out : {"b.iqf", "b.xiq"}) {
    Run("a.iqf", out);
    const json same = Measure({folder / out});
    EXPECT_EQ(same["sampling_rate_hz"], 1e6);
    EXPECT_EQ(same["centre_hz"], 100e6);
    EXPECT_EQ(same["span_hz"], 8e5);
    Run("a.iqf", out, {"--rate", "3e6", "--centre", "-5e3"});
    const json other = Measure({folder / out});
    EXPECT_EQ(other["sampling_rate_hz"], 3e6);
    EXPECT_EQ(other["centre_hz"], -5e3);
    EXPECT_NEAR(other["peaks"][0]["level"].get<double>(), -10.0, 0.9);
  }
  // A header without a rate is mended.
  std::string text = HeaderText(1, 1024);
  text.replace(text.find("FrameLength"), 11, "FrameLangth");
  Save(text + std::string(4120, '\0'), "d.iqf");
  ExpectFailure(1,
                "recording '" + (folder / "d.iqf") +
                    "' has no sampling rate: FrameLength is missing, zero or out of range",
                {"convert", folder / "d.iqf", folder / "e.iqf"});
  Run("d.iqf", "e.iqf", {"--rate", "5e5"});
  EXPECT_EQ(Measure({folder / "e.iqf"})["sampling_rate_hz"], 5e5);
}

TEST_F(Convert, IqfToIqf_KeepsTheHeaderAndTheFlatness) {
  std::string bytes = HeaderText(2, 512, "Bins=400 UnitPeriod=1u MultiFrames=3 IOffset=7 QOffset=-5 ");
  for (int f = 0; f < 2; ++f) bytes += Frame(Mark::kCartesian, [](int k) { return Pair{k % 100, 500 - k}; });
  bytes += Frame(Mark::kNone, [](int k) { return Pair{k - 300, 2 * k - 700}; });
  Save(bytes, "a.iqf");
  Run("a.iqf", "b.iqf");
  const QORN::IQFReader in((folder / "a.iqf").c_str());
  const QORN::IQFReader out((folder / "b.iqf").c_str());
  for (const char *key : {"Title", "FFTPoints", "Bins", "CenterFrequency", "Span", "FrameLength",
                          "UnitPeriod", "BlockSize", "MultiFrames", "ValidFrames"}) {
    char before[61];
    char after[61];
    EXPECT_TRUE(in.GetHeader(key, before)) << key;
    EXPECT_TRUE(out.GetHeader(key, after)) << key;
    EXPECT_STREQ(before, after) << key;
  }
  QORN::VecCplx32 x, y;
  in.ReadIQData(0, 1024, x);
  out.ReadIQData(0, 1024, y);
  for (int i = 0; i < 1024; ++i) {
    ASSERT_FLOAT_EQ(x[i].re, y[i].re);
    ASSERT_FLOAT_EQ(x[i].im, y[i].im);
  }
  QORN::VecReal32 amplitude[2], phase[2];
  in.GetFlatness(amplitude[0], phase[0]);
  out.GetFlatness(amplitude[1], phase[1]);
  for (int i = 0; i < 512; ++i) {
    ASSERT_EQ(amplitude[0][i], amplitude[1][i]);
    ASSERT_EQ(phase[0][i], phase[1][i]);
  }
}

// Formats

// The last name of a header has no value if nothing follows.
TEST_F(Convert, IqfWithANameWithoutAValue_IsWrittenWithoutIt) {
  const std::string text = "FFTPoints=8 ValidFrames=1 BlockSize=1 FrameLength=8e-6 CenterFrequency=100M "
                           "MaxInputLevel=10 LevelOffset=0 GainOffset=-100 Span=";
  std::string bytes = QORN::test::iqf::Header(text);
  for (int frame = 0; frame < 2; ++frame) bytes += Frame(Mark::kCartesian, [](int k) { return Pair{k, -k}; });
  Save(bytes, "a.iqf");
  Run("a.iqf", "b.iqf");
  const QORN::IQFReader reader((folder / "b.iqf").c_str());
  EXPECT_EQ(reader.GetFFTPoints(), 8);
  EXPECT_EQ(reader.GetNofValidFrames(), 1);
  EXPECT_EQ(reader.GetSamplingFrequency(), 1e6);
  EXPECT_EQ(reader.GetCenterFrequency(), 100e6);
  EXPECT_EQ(reader.GetSpan(), 1e6);
  Run("a.iqf", "a.cs16");
  Run("b.iqf", "b.cs16");
  EXPECT_EQ(Bytes("b.cs16"), Bytes("a.cs16"));
}

TEST_F(Convert, Formats_AreThoseOfTheOptionsBeforeThoseOfTheNames) {
  const std::string bytes = RandomBytes(400);
  Save(bytes, "a.dat");
  Run("a.dat", "b.cf32", {"--from", "CS16", "--to", "cs16"});
  EXPECT_EQ(Bytes("b.cf32"), bytes);
  Run("a.dat", "b.bin", {"--from", "cs8", "--to", "iqf", "--rate", "1e6"});
  EXPECT_EQ(Run("b.bin", "c.CS8", {"--count", "200"})["format"], "iqf");
  EXPECT_EQ(Bytes("c.CS8"), bytes);
  // A recording under the name of another, and one under that of raw pairs.
  std::filesystem::rename(folder / "b.bin", folder / "b.xiq");
  EXPECT_EQ(Run("b.xiq", "d.cs8")["format"], "iqf");
  std::filesystem::rename(folder / "b.xiq", folder / "b.cs8");
  EXPECT_EQ(Run("b.cs8", "d.cs8x", {"--to", "cu8"})["format"], "cs8");
  EXPECT_EQ(Run("b.cs8", "d.cs8", {"--from", "iqf"})["format"], "iqf");
}

TEST_F(Convert, StartAndCount_ChooseTheSamples) {
  std::vector<std::int16_t> numbers;
  for (int i = 0; i < 300000; ++i) numbers.push_back(static_cast<std::int16_t>(i % 30011));
  Save(BytesOf(numbers), "a.cs16");
  Run("a.cs16", "a.iqf", {"--rate", "1e6"});
  Run("a.cs16", "a.xiq", {"--rate", "1e6"});
  for (const char *in : {"a.cs16", "a.iqf", "a.xiq"}) {
    EXPECT_EQ(Run(in, "b.cs16", {"--start", "70001", "--count", "70003"})["samples"], 70003);
    EXPECT_TRUE(Bytes("b.cs16") == Bytes("a.cs16").substr(4 * 70001, 4 * 70003)) << in;
  }
}

// Size

TEST_F(Convert, PlacesBeyondTwoGigabytes_AreRead) {
  // A file of holes, with four samples behind 5 GB of them.
  const std::int64_t place = std::int64_t{5} << 28; // in samples
  const std::string path = Save("", "a.cs16");
  std::filesystem::resize_file(path, static_cast<std::uintmax_t>(4 * place));
  std::ofstream(path, std::ios::binary | std::ios::app) << BytesOf<std::int16_t>({1, 2, 3, 4, 5, 6, 7, 8});
  const std::string start = std::to_string(place);
  EXPECT_EQ(Run("a.cs16", "b.cs16", {"--start", start})["samples"], 4);
  EXPECT_EQ(Bytes("b.cs16"), BytesOf<std::int16_t>({1, 2, 3, 4, 5, 6, 7, 8}));
  Run("a.cs16", "b.cs16", {"--start", std::to_string(place - 1), "--count", "2"});
  EXPECT_EQ(Bytes("b.cs16"), BytesOf<std::int16_t>({0, 0, 1, 2}));
}

TEST_F(Convert, LongRecording_NeedsLittleMemoryAndShowsProgress) {
  if (QORN::test::kSanitizesAddresses) GTEST_SKIP() << "the sanitizer's own memory would be measured";
  const std::string path = Save("", "a.cs8");
  long memory[2];
  const int megabytes[] = {1, 400};
  for (int i = 0; i < 2; ++i) {
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(megabytes[i]) << 20);
    const Outcome outcome =
        RunTool({"convert", path, "/dev/null", "--to", "iqf", "--rate", "1e6"}, {}, i == 1 && HasTerminals());
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    memory[i] = outcome.residentKilobytes;
    if (i == 0 || outcome.error.empty()) continue; // a fast machine is through before there is a bar
    EXPECT_NE(outcome.error.find("\r["), std::string::npos);
    EXPECT_EQ(outcome.error.substr(outcome.error.size() - 4), "\r\x1B[K");
  }
  EXPECT_LT(memory[1], memory[0] + 4096);
}

// Failures

TEST_F(Convert, WrongArguments_ExitWithTwoAndNameTheArgument) {
  const std::string iqf = Save(Recording(2048, Tone(-10.0, 0.1)), "a.iqf");
  const std::string raw = Save(std::string(4096, '\1'), "a.cs16");
  const std::string out = folder / "out.iqf";
  const std::vector<std::pair<Arguments, std::string>> cases = {
      {{}, "IN is required"},
      {{iqf}, "OUT is required"},
      {{iqf, folder / "out.wav"},
       "--to is required: '" + (folder / "out.wav") + "' has no extension of a format; " + kKnown},
      {{iqf, folder / "out"},
       "--to is required: '" + (folder / "out") + "' has no extension of a format; " + kKnown},
      {{iqf, out, "--to", "wav"}, "--to: unknown format 'wav'; " + kKnown},
      {{iqf, out, "--to", ""}, "--to: unknown format ''; " + kKnown},
      {{iqf, out, "--from", "raw"}, "--from: unknown format 'raw'; " + kKnown},
      {{iqf, out, "--from", "xiq"}, "--from: '" + iqf + "' is of the format iqf"},
      {{raw, out}, "--rate is required: cs16 files do not tell it, and iqf files do"},
      {{raw, out, "--to", "xiq"}, "--rate is required: cs16 files do not tell it, and xiq files do"},
      {{iqf, out, "--from", "cu8"}, "--rate is required: cu8 files do not tell it, and iqf files do"},
      {{raw, out, "--rate", "0"}, "--rate: '0' is not from 0.001 to 1e+12"},
      {{raw, out, "--rate", "-1"}, "--rate: '-1' is not from 0.001 to 1e+12"},
      {{raw, out, "--rate", "1e13"}, "--rate: '1e13' is not from 0.001 to 1e+12"},
      {{raw, out, "--rate", "fast"}, "--rate: 'fast' is not a finite number"},
      {{raw, out, "--rate", "nan"}, "--rate: 'nan' is not a finite number"},
      {{raw, out, "--rate", "1", "--centre", "x"}, "--centre: 'x' is not a finite number"},
      {{raw, out, "--rate", "1", "--centre", "1e16"}, "--centre: '1e16' is not from -1e+15 to 1e+15"},
      {{raw, out, "--rate", "1", "--scale", "0"}, "--scale: '0' is not from 1e-15 to 1e+15"},
      {{raw, out, "--rate", "1", "--scale", "-1"}, "--scale: '-1' is not from 1e-15 to 1e+15"},
      {{iqf, out, "--scale", "1"}, "--scale: a recording with a header has a scale of its own"},
      {{iqf, out, "--out-scale", "0"}, "--out-scale: '0' is not from 1e-15 to 1e+15"},
      {{iqf, out, "--out-scale", "volt"}, "--out-scale: 'volt' is not a finite number"},
      {{iqf, out, "--start", "2048"}, "--start: sample 2048 is not in the recording, which has 2048 samples"},
      {{iqf, out, "--count", "2049"},
       "--count: 2049 samples are not in the recording, which has 2048 from sample 0 on"},
      {{iqf, out, "--count", "0"}, "--count: '0' is not a whole number of 1 or more"},
      {{iqf, iqf}, "OUT: '" + iqf + "' is the recording itself"},
      {{iqf, folder / "./a.iqf"}, "OUT: '" + (folder / "./a.iqf") + "' is the recording itself"},
      {{raw, raw, "--to", "cs8"}, "OUT: '" + raw + "' is the recording itself"},
      {{iqf, folder / "", "--to", "iqf"}, "OUT: '" + (folder / "") + "' is a folder"},
      {{iqf, folder / "none/o.iqf"},
       "OUT: '" + (folder / "none/o.iqf") + "' cannot be written: there is no folder '" + (folder / "none") +
           "'"},
  };
  for (auto [arguments, message] : cases) {
    arguments.insert(arguments.begin(), "convert");
    ExpectFailure(2, message, arguments);
  }
  for (const Arguments &arguments :
       {Arguments{"convert", iqf, out, "more"}, {"convert", iqf, out, "--bogus"}})
    EXPECT_EQ(RunTool(arguments).status, 2);
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.cs16", "a.iqf"}));
}

TEST_F(Convert, WrongRecordings_ExitWithOneAndLeaveNothing) {
  const std::string out = folder / "out.iqf";
  const auto fails = [&](const std::string &path, const std::string &reason, const Arguments &more = {}) {
    Arguments arguments = {"convert", path, out, "--rate", "1e6"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const std::vector<std::string> before = folder.Names();
    ExpectFailure(1, "recording '" + path + "' " + reason, arguments);
    EXPECT_EQ(folder.Names(), before);
  };
  fails(folder / "none.cs8", "cannot be opened: No such file or directory");
  fails(folder / "", "is a folder", {"--from", "cs8"});
  fails(Save("", "empty.cf32"), "is empty");
  fails(Save("abc", "odd.cu8"), "ends within a sample: 3 bytes are no multiple of 2");
  fails(Save("abcde", "odd.cs16"), "ends within a sample: 5 bytes are no multiple of 4");
  fails(Save(std::string(1001, 'a'), "odd.cf32"), "ends within a sample: 1 001 bytes are no multiple of 8");
  fails(Save("abcd", "foreign"), "is neither an IQF nor an XIQ recording, by its first bytes");
  fails(Save("abcd", "foreign.wav"), "is neither an IQF nor an XIQ recording, by its first bytes",
        {"--from", "iqf"});
  const std::string sound = Recording(4096, Tone(-10.0, 0.1));
  fails(Save(sound.substr(0, sound.size() - 3 * 4120), "cut.iqf"),
        "is cut short: its header promises 4 frames, the file holds 2 (--count 2048 reads them)");
  std::vector<float> wild(4000);
  wild[3001] = std::numeric_limits<float>::quiet_NaN();
  fails(Save(BytesOf(wild), "wild.cf32"), "has samples that are not finite numbers");
  ExpectFailure(1, "sample 1 500 is not a finite number",
                {"convert", folder / "wild.cf32", folder / "w.cs8"});
  // Floats take them.
  Run("wild.cf32", "same.cf32");
  EXPECT_TRUE(Bytes("same.cf32") == Bytes("wild.cf32"));
}

// What is written is also read, up to the limits.
TEST_F(Convert, Steps_OfAllSizes_AreReadBackOrNotWritten) {
  const std::string raw = Save(BytesOf<std::int16_t>({1, -2, 300, 32767}), "a.cs16");
  const Arguments rate = {"--rate", "1e6"};
  for (const char *scale : {"1e15", "1e-15"})
    for (const char *name : {"a.iqf", "a.xiq"}) {
      Run("a.cs16", name, {"--rate", "1e6", "--scale", scale, "--out-scale", scale});
      EXPECT_NEAR(Run(name, "b.cs16", {"--out-scale", scale, "--count", "2"})["volts_per_step"].get<double>(),
                  std::stod(scale), 1e-9 * std::stod(scale));
      EXPECT_EQ(Bytes("b.cs16"), Bytes("a.cs16")) << name << scale;
    }
  Run("a.cs16", "b.cs8", {"--scale", "1e15", "--out-scale", "1e15"});
  // Floats that are far too small for the steps of XIQ: 2^-31 of the power of two above them.
  Save(BytesOf<float>({1e-22F, -0.5e-22F}), "small.cf32");
  const std::vector<std::string> before = folder.Names();
  ExpectFailure(
      1,
      "a xiq recording of these values would have 4.93038e-32 V per step, which is not from 1e-30 to "
      "1e+15",
      {"convert", folder / "small.cf32", folder / "small.xiq", "--rate", "1"});
  EXPECT_EQ(folder.Names(), before);
}

TEST_F(Convert, MoreSamplesThanTheFormatHolds_AreRefusedUnread) {
  const std::string path = Save("", "a.cf32");
  std::filesystem::resize_file(path, std::uintmax_t{1} << 40); // for hours
  ExpectFailure(1, "137 438 953 472 samples are more than the 2 147 483 647 that xiq holds",
                {"convert", path, folder / "a.xiq", "--rate", "1"}, [] { alarm(60); });
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.cf32"});
}

TEST_F(Convert, OutputThatCannotBeWrittenWhole_IsNotLeft) {
  const std::string in = Save(std::string(400000, '\1'), "a.cs8");
  std::ofstream(folder / "old.cs8") << "old";
  for (const char *name : {"out.iqf", "out.xiq", "out.cs8", "out.cs16", "out.cf32", "out.cu8", "old.cs8"})
    ExpectFailure(1, "OUT: '" + (folder / name) + "' could not be written: File too large",
                  {"convert", in, folder / name, "--rate", "1e6"}, LimitFiles);
  EXPECT_EQ(Bytes("old.cs8"), "old");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.cs8", "old.cs8"}));
  for (const char *to : {"iqf", "xiq", "cs8"})
    ExpectFailure(1, "OUT: '/dev/full' could not be written: No space left on device",
                  {"convert", in, "/dev/full", "--to", to, "--rate", "1e6"});
  if (geteuid() == 0) return; // to whom nothing is closed
  std::filesystem::create_directory(folder / "closed");
  chmod((folder / "closed").c_str(), 0500);
  ExpectFailure(2, "OUT: '" + (folder / "closed/o.cs16") + "' cannot be written: Permission denied",
                {"convert", in, folder / "closed/o.cs16"});
}

TEST_F(Convert, Signal_LeavesNothingBehind) {
  const std::string in = Save("", "a.cs8");
  std::filesystem::resize_file(in, std::uintmax_t{1} << 40); // for hours
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    const Outcome outcome = RunTool({"convert", in, folder / "out.cs16"}, [&] {
      const rlimit none{0, 0}; // for the memory that SIGQUIT would save
      setrlimit(RLIMIT_CORE, &none);
      const pid_t tool = getpid();
      if (fork() != 0) return;
      // As soon as there is something to leave.
      while (folder.Names().size() < 2 && getppid() == tool) usleep(1000);
      usleep(10000);
      kill(tool, signal);
      _exit(0);
    });
    EXPECT_EQ(outcome.status, -signal);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.cs8"});
  }
}

TEST_F(Convert, RecordingThatShrinksWhileItIsRead_IsAnError) {
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  Save(std::string(16 << 20, '\1'), "a.cs16");
  Run("a.cs16", "a.iqf", {"--rate", "1e6"});
  Run("a.cs16", "a.xiq", {"--rate", "1e6"});
  for (const char *name : {"a.cs16", "a.iqf", "a.xiq"}) {
    const std::string path = folder / name;
    // The tool is far from the end while nobody takes what it writes.
    std::thread reader([&] {
      std::ifstream stream(pipe, std::ios::binary);
      stream.get();
      std::filesystem::resize_file(path, 1 << 20);
      char part[65536];
      while (stream.read(part, sizeof part)) continue;
    });
    ExpectFailure(1, "recording '" + path + "' was cut short while it was read",
                  {"convert", path, pipe, "--to", "cf32"});
    reader.join();
  }
}

} // namespace
