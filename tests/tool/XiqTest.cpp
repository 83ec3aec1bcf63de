// XIQ recordings in every subcommand that takes a recording: by their content, and as IQF ones.

#include <gtest/gtest.h>
#include <qorn/qorn.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "ToolFixture.h"
#include "support/XiqRecording.h"

namespace {

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::kFullScale;
using QORN::test::kRate;
using QORN::test::Outcome;
using QORN::test::Recording;
using QORN::test::RunTool;
using QORN::test::Signal;
using QORN::test::Tone;
using QORN::test::Tool;
namespace xiq = QORN::test::xiq;

// 0 dBm for a tone of 32768 steps, as that of the IQF recordings.
const std::string kScaling = "9.650505554713072e-06";

std::string Acquisition(int samples, const std::string &scaling = kScaling) {
  const char *hertz = " units=\"Hz\"";
  return xiq::Line("SamplingFrequency", hertz, "1000000") +
         xiq::Line("NumberSamples", "", std::to_string(samples)) + xiq::Line("Scaling", "", scaling) +
         xiq::Line("Frequency", hertz, "100e6") + xiq::Line("AcquisitionBandwidth", hertz, "800000") +
         xiq::Line("MaxSpan", hertz, "800000") + xiq::Line("RFAttenuation", " units=\"dB\"", "10") +
         xiq::Line("ReferenceLevel", " units=\"dBm\"", "-20.5");
}

std::string Header(const std::string &acquisition, int sets = 1) {
  std::string lines = acquisition;
  for (int i = 0; i < sets; ++i) lines += xiq::DataSet(0.5 * i, 0.001);
  return xiq::Header(lines + "  </DataSetsCollection>\n" + xiq::SetupLines("1.5", "0.002"));
}

/// A recording of signal(i), in steps.
std::string XiqRecording(int samples, const Signal &signal, int sets = 1) {
  std::string bytes = Header(Acquisition(samples / sets), sets);
  for (int i = 0; i < samples; ++i) {
    const std::complex<double> x = signal(i);
    xiq::AppendInteger(bytes, static_cast<std::int32_t>(std::lround(x.real())));
    xiq::AppendInteger(bytes, static_cast<std::int32_t>(std::lround(x.imag())));
  }
  return bytes;
}

TEST_F(Tool, Xiq_InEverySubcommand_GivesWhatIqfGives) {
  const Signal tone = Tone(-20.0, 0.1234);
  const std::string iqf = Save(Recording(65536, tone), "a.iqf");
  // The name says nothing.
  const std::string xiq = Save(XiqRecording(65536, tone), "b.iqf");
  const auto both = [&](const char *command, std::vector<std::string> arguments) {
    std::vector<json> reports;
    for (const std::string &path : {iqf, xiq}) {
      arguments.insert(arguments.begin() + (std::string(command) == "filter" ? 1 : 0), path);
      reports.push_back(Measure(arguments, command));
      arguments.erase(arguments.begin() + (std::string(command) == "filter" ? 1 : 0));
    }
    return reports;
  };
  for (std::vector<json> &reports : std::vector<std::vector<json>>{
           both("spectrum", {"--points", "1000"}),
           both("spectrum", {"--points", "1000", "--start", "1001", "--count", "40000"}),
           both("zoom", {"--centre", "100.12e6", "--span", "20e3"})}) {
    for (json &report : reports) report.erase("recording");
    const double power = reports[0]["peaks"][0]["level"].get<double>();
    EXPECT_NEAR(power, -20.0, 0.9);
    EXPECT_NEAR(reports[1]["peaks"][0]["level"].get<double>(), power, 1e-4);
    for (json &report : reports)
      for (const char *level :
           {"peaks", "total_power", "power_in_span", "noise_floor", "noise_density_per_hz"})
        report.erase(level);
    EXPECT_EQ(reports[0], reports[1]);
  }
  const std::vector<std::string> design = {"low-pass", "--cutoff", "2e5", "--taps", "21", "--out"};
  std::vector<std::string> arguments = design;
  arguments.push_back(folder / "out.iqf");
  const std::vector<json> filtered = both("filter", arguments);
  EXPECT_NEAR(filtered[0]["filtered"]["peak_v"].get<double>(),
              filtered[1]["filtered"]["peak_v"].get<double>(), 1e-8);
  EXPECT_EQ(filtered[1]["filtered"]["frames"], 64);
  EXPECT_NEAR(Measure({folder / "out.iqf", "--points", "1000"})["total_power"].get<double>(), -20.0, 0.1);
}

TEST_F(Tool, Xiq_FilteredRecording_IsOfTheFormatOfItsName) {
  const std::string path = Save(XiqRecording(5000, Tone(-20.0, 0.05)), "in");
  const auto filter = [&](const std::string &in, const std::string &name) {
    return Measure({"low-pass", in, "--cutoff", "2e5", "--taps", "21", "--out", folder / name}, "filter");
  };
  const json report = filter(path, "out.xiq");
  EXPECT_EQ(report["filtered"]["samples"], 5000);
  EXPECT_FALSE(report["filtered"].contains("frames"));
  const QORN::XIQReader reader((folder / "out.xiq").c_str());
  QORN::XIQReader::AcqInfoStruct info;
  reader.QueryAcqInfo(info);
  EXPECT_EQ(info.numberSamples, 5000);
  EXPECT_EQ(info.samplingFrequency, 1e6);
  EXPECT_EQ(info.frequency, 100e6);
  EXPECT_EQ(info.acquisitionBandwidth, 8e5);
  EXPECT_EQ(info.referenceLevel, -20.5);
  EXPECT_EQ(info.scaling, report["filtered"]["volts_per_step"].get<double>());
  EXPECT_NEAR(Measure({folder / "out.xiq", "--points", "1000"})["total_power"].get<double>(), -20.0, 0.05);
  // A name that tells nothing leaves the format as it is.
  filter(path, "plain");
  EXPECT_EQ(Contents(folder / "plain"), Contents(folder / "out.xiq"));
  filter(Save(Recording(4096, Tone(-20.0, 0.05))), "iqf.dat");
  EXPECT_EQ(QORN::IQFReader((folder / "iqf.dat").c_str()).GetNofValidFrames(), 4);
  filter(path, "floats.cf32");
  EXPECT_EQ(std::filesystem::file_size(folder / "floats.cf32"), 40000U);
}

TEST_F(Tool, Xiq_DataSets_Join) {
  // A ramp tells each sample: across data sets and chunks.
  const Signal ramp = [](int i) { return std::complex<double>(i % 9973, 0.0); };
  const int samples = 3 * 100000;
  const std::string path = Save(XiqRecording(samples, ramp, 3));
  double sum = 0.0;
  for (int i = 0; i < samples; ++i) sum += std::pow(i % 9973 / kFullScale, 2.0);
  const json report = Measure({path, "--points", "60"});
  EXPECT_EQ(report["samples"], samples);
  EXPECT_NEAR(report["total_power"].get<double>(), 10.0 * std::log10(sum / samples), 1e-4);
  // The first 100 of the last data set.
  sum = 0.0;
  for (int i = 200000; i < 200100; ++i) sum += std::pow(i % 9973 / kFullScale, 2.0);
  const json part = Measure({path, "--points", "100", "--start", "200000", "--count", "100"});
  EXPECT_NEAR(part["total_power"].get<double>(), 10.0 * std::log10(sum / 100.0), 1e-4);
}

TEST_F(Tool, Xiq_Info_ShowsTheHeaderAndWhatFollows) {
  std::string bytes = Header(Acquisition(1000, "2e-6"), 2);
  bytes.resize(bytes.size() + 16000);
  const std::string path = Save(bytes);
  const Outcome outcome = RunTool({"info", path});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.out, "Header of " + path +
                             "\n"
                             "SamplingFrequency = 1e+06\n"
                             "NumberSamples = 1000\n"
                             "Scaling = 2e-06\n"
                             "Frequency = 1e+08\n"
                             "AcquisitionBandwidth = 8e+05\n"
                             "MaxSpan = 8e+05\n"
                             "RFAttenuation = 10\n"
                             "ReferenceLevel = -20.5\n"
                             "Analysis Offset = 1.5\n"
                             "Analysis Length = 0.002\n"
                             "What follows from it\n"
                             "  Samples               2 000, 2 ms\n"
                             "  Sampling rate         1 MHz\n"
                             "  Centre                100 MHz\n"
                             "  Span                  800 kHz\n"
                             "  Volts per step        2 µV\n"
                             "  Data set 1            trigger at 0 s, time stamp 1 ms\n"
                             "  Data set 2            trigger at 500 ms, time stamp 1 ms\n"
                             "  Samples in the file   2 000 of 2 000\n");
  // Cut short, and with more data sets than are told one by one.
  const Outcome cut = RunTool({"info", Save(Header(Acquisition(1000), 30) + std::string(999, '\0'))});
  EXPECT_NE(cut.out.find("\n  Data set 8 "), std::string::npos) << cut.out;
  EXPECT_NE(cut.out.find("\n  More data sets        22\n"), std::string::npos) << cut.out;
  EXPECT_NE(cut.out.find("\n  Samples in the file   124 of 30 000: cut short\n"), std::string::npos)
      << cut.out;
  // Nothing but the first line.
  EXPECT_EQ(RunTool({"info", Save("<DataFile offset=\"\">")}).status, 0);
}

TEST_F(Tool, Xiq_WithoutASignal_ExitsWithOneAndSaysWhy) {
  const auto fails = [&](const std::string &bytes, const std::string &reason) {
    const std::string path = Save(bytes + std::string(8000, '\1'));
    ExpectFailure(1, "recording '" + path + "' " + reason, {"spectrum", path, "--svg", folder / "p.svg"});
  };
  const auto without = [](std::string text, const std::string &tag) {
    for (std::size_t at = 0; (at = text.find(tag, at)) != std::string::npos; ++at) text[at] = 'x';
    return text;
  };
  const std::string sound = Header(Acquisition(1000));
  const std::string noPlace = "does not tell where its samples start: DataFile offset is no number above 0";
  for (const char *offset : {"", "0", "x", "1", "0-5", "00", "0abc"})
    fails("<DataFile offset=\"" + std::string(offset) + "\">\n" + sound.substr(sound.find('\n') + 1),
          noPlace);
  // Without the quotation mark behind the number, which may be any.
  for (const char *offset : {"0100>", "0100", "0nan\">", "0-1e3\">", "0.9\">"})
    fails("<DataFile offset=\"" + std::string(offset) + "\n" + sound.substr(sound.find('\n') + 1), noPlace);
  fails(Header(Acquisition(1000), 0), "has no data sets: its header has no line with <DataSet>");
  fails(without(sound, "NumberSamples"), "has no samples: NumberSamples is missing or below 1");
  fails(Header(Acquisition(0)), "has no samples: NumberSamples is missing or below 1");
  fails(Header(Acquisition(-4)), "has no samples: NumberSamples is missing or below 1");
  fails(without(sound, "SamplingFrequency"),
        "has no sampling rate: SamplingFrequency is missing, zero or out of range");
  for (const char *scaling : {"0", "-1", "nan", "1e40", "1e999", "x"})
    fails(Header(Acquisition(1000, scaling)),
          "has no usable level: Scaling is missing, zero or out of range");
  fails(Header(Acquisition(1001)),
        "is cut short: its header promises 1 001 samples, the file holds 1 000 (--count 1000 reads them)");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
  const std::string path = Save(sound + std::string(7999, '\0'));
  EXPECT_EQ(Measure({path, "--count", "999", "--points", "64"})["blocks"], 15);
}

// Wherever the library finds the samples, the tool does.
TEST_F(Tool, Xiq_OffsetThatIsARealNumber_IsThatOfTheLibrary) {
  const Signal tone = Tone(-10.0, 0.1);
  const std::string whole = XiqRecording(1000, tone);
  const std::string samples = whole.substr(whole.size() - 8000);
  const std::string lines = Header(Acquisition(1000));
  for (const char *offset : {"02e3", "0 2000", "02000.75", "0+2e+3", "00x7D0", "02000x"}) {
    std::string bytes = "<DataFile offset=\"" + std::string(offset) + "\">\n";
    bytes += lines.substr(lines.find('\n') + 1);
    bytes.resize(2000, ' ');
    const std::string path = Save(bytes + samples);
    QORN::VecCplx32 first;
    QORN::XIQReader(path.c_str()).ReadIQSamples(first, 0, 0, 1);
    EXPECT_NEAR(static_cast<double>(first[0].re), std::stod(kScaling) * std::round(tone(0).real()), 1e-6)
        << offset;
    const json report = Measure({path, "--points", "1000"});
    EXPECT_EQ(report["samples"], 1000) << offset;
    EXPECT_NEAR(report["total_power"].get<double>(), -10.0, 0.01) << offset;
    // Of the last sample a byte is missing.
    const Outcome info = RunTool({"info", Save(bytes + samples.substr(0, 7999))});
    EXPECT_NE(info.out.find("999 of 1 000: cut short"), std::string::npos) << offset << info.out;
  }
}

TEST_F(Tool, Xiq_CutAnywhere_IsRefusedOrWhole) {
  const std::string whole = XiqRecording(100, Tone(-10.0, 0.1));
  for (std::size_t length = 0; length < whole.size(); length += length < 200 ? 1 : 97) {
    const Outcome outcome = RunTool({"spectrum", Save(whole.substr(0, length)), "--svg", folder / "p.svg"});
    EXPECT_EQ(outcome.status, 1) << length;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
}

} // namespace
