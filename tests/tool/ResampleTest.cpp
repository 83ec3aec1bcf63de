// qorn resample.

#include <gtest/gtest.h>
#include <qorn/qorn.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "ToolFixture.h"

namespace {

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::HeaderText;
using QORN::test::kFullScale;
using QORN::test::kRate;
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

class Resample : public Tool {
protected:
  json Run(const std::string &path, const std::string &rate, const std::string &out,
           const Arguments &more = {}) const {
    Arguments arguments = {path, "--rate", rate, "--out", folder / out};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Measure(arguments, "resample");
  }

  std::vector<std::complex<float>> Floats(const std::string &name) const {
    const std::string bytes = Contents(folder / name);
    std::vector<std::complex<float>> samples(bytes.size() / 8);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    return samples;
  }
};

Signal Noise() {
  return [](int i) {
    const std::int64_t at = i;
    return std::complex<double>(static_cast<double>(at * 7919 % 20011 - 10000),
                                static_cast<double>(at * 104729 % 15013 - 7500));
  };
}

TEST_F(Resample, Tone_KeepsItsFrequencyAndItsLevel) {
  for (const double rate : {1.5e5, 7.123e5, 1e6, 1.2345e6, 3e6}) {
    // To the ends of the pass band.
    for (const double part : {-0.8, -0.31, 0.05, 0.8}) {
      const double cycles = part * 0.5 * std::min(rate, kRate) / kRate;
      const std::string path = Save(Recording(65536, Tone(-10.0, cycles)));
      const json report = Run(path, std::to_string(rate), "out.iqf");
      EXPECT_EQ(report["sampling_rate_hz"], rate);
      EXPECT_EQ(report["old_sampling_rate_hz"], 1e6);
      // In the middle, where nothing of the ends shows.
      const auto samples = report["samples"].get<int>();
      const json spectrum =
          Measure({folder / "out.iqf", "--points", "1024", "--start", std::to_string(samples / 8), "--count",
                   std::to_string(samples / 4 * 3)});
      EXPECT_NEAR(spectrum["total_power"].get<double>(), -10.0, 0.05) << rate << ' ' << part;
      EXPECT_NEAR(spectrum["peaks"][0]["offset_hz"].get<double>(), cycles * kRate, 0.002 * rate)
          << rate << ' ' << part;
      if (spectrum["peaks"].size() > 1) {
        EXPECT_LT(spectrum["peaks"][1]["level"].get<double>(), -75.0) << rate << ' ' << part;
      }
      EXPECT_EQ(spectrum["centre_hz"], 100e6);
      EXPECT_EQ(spectrum["sampling_rate_hz"], rate);
    }
  }
}

TEST_F(Resample, ToneThatWouldFold_IsTakenOff) {
  // 400 kHz would stand at -100 kHz.
  const std::string path = Save(Recording(65536, Tone(-10.0, 0.4)));
  Run(path, "5e5", "out.iqf");
  EXPECT_LT(Measure({folder / "out.iqf", "--start", "1000", "--count", "30000"})["total_power"].get<double>(),
            -65.0);
}

__extension__ using Wide = __int128; // products of samples and rates

struct Ratio {
  std::int64_t up, down;
};

TEST_F(Resample, Count_IsThatOfTheInstantsWithinTheRecording) {
  const std::string path = Save(Recording(4096, Noise()));
  for (const Ratio &ratio :
       {Ratio{1, 1}, {1, 2}, {1, 3}, {2, 3}, {3, 2}, {7, 1}, {99, 100}, {100, 99}, {1, 1000}, {1000, 1}})
    for (const std::int64_t count : {1, 2, 3, 999, 1000, 1001, 4096}) {
      // Rates of six decimals, so that the count is one of integers: j 1e12 < count rate.
      const std::int64_t micro = std::int64_t{1000000000000} * ratio.up / ratio.down;
      const std::string decimals = std::to_string(1000000 + micro % 1000000).substr(1);
      const json report = Run(path, std::to_string(micro / 1000000) + "." + decimals, "out.cf32",
                              {"--count", std::to_string(count)});
      const auto expected =
          static_cast<std::int64_t>((static_cast<Wide>(count) * micro + 999999999999) / 1000000000000);
      EXPECT_EQ(report["samples"], expected) << ratio.up << '/' << ratio.down << ' ' << count;
      EXPECT_EQ(std::filesystem::file_size(folder / "out.cf32"), static_cast<std::uintmax_t>(8 * expected));
    }
}

TEST_F(Resample, Chunks_JoinAsOneRun) {
  // Several chunks, and then the same with the library in one piece.
  const int samples = 400 * 1024;
  const std::string path = Save(Recording(samples, Noise()));
  QORN::IQFReader reader(path.c_str());
  for (const double ratio : {0.0123, 0.7123, 1.2345}) {
    Run(path, std::to_string(ratio * kRate), "out.cf32");
    QORN::ArbRateResampler whole(ratio, 90.0F, 512, 0.9F, 6.865F);
    const int history = whole.GetHistory();
    QORN::VecCplx32 record, padded(samples + 2 * history + 2), expected;
    reader.ReadIQData(0, samples, record);
    for (int i = 0; i < samples; ++i) padded[history + i] = record[i];
    whole.Apply(expected, padded);
    const std::vector<std::complex<float>> got = Floats("out.cf32");
    ASSERT_EQ(got.size(), static_cast<std::size_t>(expected.GetSize())) << ratio;
    double worst = 0.0;
    for (std::size_t i = 0; i < got.size(); ++i) {
      const QORN::Cplx32 &e = expected[static_cast<int>(i)];
      worst = std::max({worst, std::fabs(static_cast<double>(got[i].real() - e.re)),
                        std::fabs(static_cast<double>(got[i].imag() - e.im))});
    }
    // Of 0.1 V: the rounding of floats, and of instants to less than 1e-9 of a sample.
    EXPECT_LT(worst, 1e-7) << ratio;
    EXPECT_GT(std::abs(got[got.size() / 2]), 1e-6F);
  }
}

TEST_F(Resample, Extent_IsARecordOfItsOwn) {
  const std::string path = Save(Recording(8192, Noise()));
  Run(path, "7e5", "a.cf32", {"--start", "1234", "--count", "3000"});
  RunTool({"convert", path, folder / "part.xiq", "--start", "1234", "--count", "3000"});
  Run(folder / "part.xiq", "7e5", "b.cf32");
  const auto a = Floats("a.cf32"), b = Floats("b.cf32");
  ASSERT_EQ(a.size(), 2100U);
  ASSERT_EQ(b.size(), 2100U);
  for (std::size_t i = 0; i < a.size(); ++i) ASSERT_NEAR(std::abs(a[i] - b[i]), 0.0F, 1e-7F) << i;
}

TEST_F(Resample, Header_HasTheNewRateAndWhatStillHolds) {
  std::string bytes = HeaderText(4, 512, "Bins=400 UnitPeriod=1u MultiFrames=3 ");
  for (int f = 0; f < 5; ++f) bytes += Frame(Mark::kCartesian, [](int k) { return Pair{k % 100, 500 - k}; });
  const std::string path = Save(bytes);
  const json report = Run(path, "5e5", "out.iqf");
  EXPECT_EQ(report["format"], "iqf");
  EXPECT_EQ(report["frames"], 2);
  EXPECT_EQ(report["samples"], 1024);
  const QORN::IQFReader out((folder / "out.iqf").c_str());
  EXPECT_EQ(out.GetSamplingFrequency(), 5e5);
  EXPECT_EQ(out.GetCenterFrequency(), 100e6);
  EXPECT_EQ(out.GetSpan(), 4e5);
  EXPECT_EQ(out.GetUnitPeriod(), 2e-6);
  EXPECT_EQ(out.GetFFTPoints(), 512);
  EXPECT_EQ(out.GetNofValidFrames(), 2);
  EXPECT_EQ(out.GetNofMultiFrames(), 3);
  EXPECT_EQ(out.GetNofBins(), 0);
  EXPECT_EQ(out.GetMaxInputLevel(), 10.0);
  EXPECT_NEAR(out.GetScalingFactor(), report["volts_per_step"].get<double>(), 1e-12);
  char title[61];
  EXPECT_TRUE(out.GetHeader("Title", title));
  EXPECT_STREQ(title, "test");
  // The largest value just fits.
  QORN::VecCplx32 x;
  out.ReadIQData(0, 1024, x);
  float peak = 0.0F;
  for (int i = 0; i < 1024; ++i) peak = std::max({peak, std::fabs(x[i].re), std::fabs(x[i].im)});
  EXPECT_NEAR(static_cast<double>(peak) / out.GetScalingFactor(), 32767.0, 0.01);
  EXPECT_NEAR(static_cast<double>(peak), report["peak_v"].get<double>(), 1e-4 * static_cast<double>(peak));

  // By the name, and else as the recording is.
  EXPECT_EQ(Run(path, "2e6", "out.xiq")["format"], "xiq");
  EXPECT_EQ(Measure({folder / "out.xiq"})["sampling_rate_hz"], 2e6);
  EXPECT_EQ(Measure({folder / "out.xiq"})["span_hz"], 8e5);
  EXPECT_EQ(Run(folder / "out.xiq", "1e6", "out")["format"], "xiq");
  EXPECT_EQ(Run(path, "2e6", "out.cs16")["format"], "cs16");
  EXPECT_EQ(std::filesystem::file_size(folder / "out.cs16"), 4U * 4096U);
}

TEST_F(Resample, Text_TellsWhatWasWritten) {
  const std::string path = Save(Recording(2048, [](int) { return std::complex<double>(); }));
  const Outcome outcome = RunTool({"resample", path, "--rate", "2.5e5", "--out", folder / "out.cf32"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.out, "Recording             " + path +
                             "\n"
                             "Resampled             " +
                             (folder / "out.cf32") +
                             ", cf32\n"
                             "Sampling rate         250 kHz, before 1 MHz\n"
                             "Span                  200 kHz\n"
                             "Samples               512, 2.048 ms\n"
                             "Largest value         0 V, 1 V per step\n");
}

TEST_F(Resample, Spectra_ShowBothRates) {
  const std::string path = Save(Recording(65536, Tone(-20.0, 0.1)));
  for (const char *name : {"out.iqf", "out.xiq", "out.cs16", "out.cf32"}) {
    Run(path, "3.3e5", name, {"--spectra", folder / "s.svg"});
    const std::string svg = Contents(folder / "s.svg");
    ExpectWellFormed(svg);
    for (const char *text : {">test.iqf<", "sampling rate 1 MHz", "sampling rate 330 kHz", ">Peak hold<"})
      EXPECT_NE(svg.find(text), std::string::npos) << name << ' ' << text;
    EXPECT_NE(svg.find(std::string(">") + name + "<"), std::string::npos) << name;
    // The tone stands in both, at its level.
    const std::size_t first = svg.find(">100.100");
    EXPECT_NE(svg.find(">100.100", first + 1), std::string::npos) << name;
    // Names within a document are of one part each.
    EXPECT_EQ(svg.find("id=\"clip1\"", svg.find("id=\"clip1\"") + 1), std::string::npos);
  }
  // A handful of samples.
  for (const char *count : {"2", "3", "7"})
    Run(path, "3e6", "out.iqf", {"--count", count, "--spectra", folder / "s.svg"});
  ExpectWellFormed(Contents(folder / "s.svg"));
}

TEST_F(Resample, LongRecording_NeedsLittleMemory) {
  if (QORN::test::kSanitizesAddresses) GTEST_SKIP() << "the sanitizer's own memory would be measured";
  long memory[2];
  const int frames[] = {400, 8000}; // of holes
  for (int i = 0; i < 2; ++i) {
    const std::string header = HeaderText(frames[i], 1024);
    const std::string path = Save(header + Frame(Mark::kCartesian, [](int) { return Pair{100, 200}; }));
    std::filesystem::resize_file(path, header.size() + static_cast<std::uintmax_t>(frames[i] + 1) * 4120);
    const Outcome outcome = RunTool({"resample", path, "--rate", "1e5", "--out", folder / "out.cf32"});
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    memory[i] = outcome.residentKilobytes;
  }
  EXPECT_LT(memory[1], memory[0] + 4096);
}

// Failures

TEST_F(Resample, WrongArguments_ExitWithTwoAndNameTheArgument) {
  const std::string path = Save(Recording(2048, Tone(-10.0, 0.1)));
  const std::string out = folder / "out.iqf";
  const auto rate = [&](const std::string &value, const std::string &reason) {
    ExpectFailure(2, "--rate: '" + value + "' " + reason, {"resample", path, "--rate", value, "--out", out});
  };
  for (const char *value : {"0", "-1e6", "1e13", "0.0001"}) rate(value, "is not from 0.001 to 1e+12");
  for (const char *value : {"x", "nan", "inf", ""}) rate(value, "is not a finite number");
  const std::string far = "is not within a factor of 1000 of the recording's rate, 1000000 Hz";
  for (const char *value : {"999", "1.001e9", "1e12", "0.001"}) rate(value, far);
  const std::vector<std::pair<Arguments, std::string>> cases = {
      {{}, "RECORDING is required"},
      {{path, "--out", out}, "--rate is required"},
      {{path, "--rate", "1e5"}, "--out is required"},
      {{path, "--rate", "1e5", "--out", path}, "--out: '" + path + "' is the recording itself"},
      {{path, "--rate", "1e5", "--out", folder / ""}, "--out: '" + (folder / "") + "' is a folder"},
      {{path, "--rate", "1e5", "--out", out, "--spectra", out},
       "--spectra: '" + out + "' is the file of --out"},
      {{path, "--rate", "1e5", "--out", out, "--spectra", path},
       "--spectra: '" + path + "' is the recording itself"},
      {{path, "--rate", "1e5", "--out", out, "--count", "1", "--spectra", folder / "s.svg"},
       "--spectra: one sample has no spectrum"},
      {{path, "--rate", "1e5", "--out", "/dev/null", "--spectra", folder / "s.svg"},
       "--spectra: the recording cannot be read again from '/dev/null'"},
      {{path, "--rate", "1e5", "--out", "/dev/stdout", "--spectra", folder / "s.svg"},
       "--spectra: the recording cannot be read again from '/dev/stdout'"},
      {{path, "--rate", "1e5", "--out", out, "--start", "2048"},
       "--start: sample 2048 is not in the recording, which has 2048 samples"},
      {{path, "--rate", "1e5", "--out", out, "--count", "2049"},
       "--count: 2049 samples are not in the recording, which has 2048 from sample 0 on"},
  };
  for (auto [arguments, message] : cases) {
    arguments.insert(arguments.begin(), "resample");
    ExpectFailure(2, message, arguments);
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
}

TEST_F(Resample, WrongRecordings_ExitWithOneAndLeaveNothing) {
  const std::string sound = Recording(4096, Tone(-10.0, 0.1));
  const std::string cut = Save(sound.substr(0, sound.size() - 3 * 4120), "cut.iqf");
  std::string bytes = HeaderText(1, 1024, "IOffset=nan ");
  bytes += Frame(Mark::kCartesian, [](int) { return Pair{1, 1}; });
  const std::string wild = Save(bytes, "wild.iqf");
  const std::vector<std::string> before = folder.Names();
  const auto fails = [&](const std::string &path, const std::string &message) {
    for (const char *out : {"out.iqf", "out.cf32"})
      ExpectFailure(
          1, "recording '" + path + "' " + message,
          {"resample", path, "--rate", "3e5", "--out", folder / out, "--spectra", folder / "s.svg"});
    EXPECT_EQ(folder.Names(), before);
  };
  fails(folder / "none.iqf", "cannot be opened: No such file or directory");
  fails(cut, "is cut short: its header promises 4 frames, the file holds 2 (--count 2048 reads them)");
  fails(wild, "has no finite samples: its levels, IOffset or QOffset are out of range");
}

TEST_F(Resample, OutputThatCannotBeWrittenWhole_IsNotLeft) {
  const std::string path = Save(Recording(65536, Tone(-10.0, 0.1)));
  std::ofstream(folder / "out.iqf") << "old";
  ExpectFailure(
      1, "--out: '" + (folder / "out.iqf") + "' could not be written: File too large",
      {"resample", path, "--rate", "9e5", "--out", folder / "out.iqf", "--spectra", folder / "s.svg"},
      LimitFiles);
  EXPECT_EQ(Contents(folder / "out.iqf"), "old");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"out.iqf", "test.iqf"}));
}

} // namespace
