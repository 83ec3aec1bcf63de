// qorn resample: brings a recording to another sampling rate.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "Commands.h"
#include "Extent.h"
#include "Failure.h"
#include "FittedRecording.h"
#include "Measurement.h"
#include "Options.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Recording.h"
#include "ResampledRecording.h"
#include "SpectrumPicture.h"
#include "Text.h"
#include "WindowKinds.h"

namespace tool {

namespace {

constexpr double kMostRatio = 1000.0;
constexpr int kSpectrumBlock = 4096; // samples at the lower rate

struct Options : ExtentOptions {
  std::string recording;
  std::string rate;
  std::string out;
  std::string spectra;
  bool json = false;
};

struct Result {
  RecordingHead head;
  FittedRecording fitted{};
};

// Of another rate, with nothing that the old one stands behind.
RecordingHead HeadAt(double rate, const Recording &recording) {
  RecordingHead head = recording.Head();
  head.rate = rate;
  const double span = head.span > 0.0 ? head.span : recording.Rate();
  head.span = std::min(span, kPassBand * std::min(rate, recording.Rate()));
  const auto gone = [](const auto &entry) {
    return entry.first == "Bins" || entry.first == "Span" || entry.first == "FrameLength" ||
           entry.first == "UnitPeriod" || entry.first == "BlockSize";
  };
  head.entries.erase(std::remove_if(head.entries.begin(), head.entries.end(), gone), head.entries.end());
  head.flatness.clear();
  return head;
}

void Write(std::ostream &out, Format format, const Recording &recording, const Extent &extent, double ratio,
           Result &result) {
  Progress progress(RunsFor(format) * extent.count);
  std::int64_t before = 0; // in the runs that are through
  result.fitted = WriteFitted(out, format, result.head, recording, [&](const TakeSamples &take) {
    Resample(
        recording, extent, ratio, [&](std::int64_t done) { progress.Update(before + done); }, take);
    before += extent.count;
  });
}

Measurement SpectrumOf(const Recording &recording, const Extent &extent, double share) {
  Setup setup{};
  setup.window = FindWindow("blackman-harris");
  setup.start = extent.start;
  setup.count = extent.count;
  setup.block = static_cast<int>(
      std::clamp<double>(std::round(kSpectrumBlock * share), kMinBlock, static_cast<double>(extent.count)));
  Progress progress(extent.count);
  return Measure(recording, setup, [&](std::int64_t done) { progress.Update(done); });
}

// Both spectra, with bins of one width.
void WriteSpectra(std::ostream &out, const Options &options, const Recording &recording, const Extent &extent,
                  const std::string &written, Format format, const Result &result) {
  const RecordingHead &head = result.head;
  const Recording resampled =
      IsRaw(format) ? Recording(written, RawFormat{format, head.rate, head.centre, result.fitted.step})
                    : Recording(written);
  const double ratio = head.rate / recording.Rate();
  const Measurement before = SpectrumOf(recording, extent, std::max(1.0, 1.0 / ratio));
  const Measurement after = SpectrumOf(resampled, {0, head.samples}, std::max(1.0, ratio));
  const auto name = [](const std::string &path) { return std::filesystem::path(path).filename().string(); };
  WriteSvgs(out, {{&before, name(options.recording)}, {&after, name(options.out)}}, Unit::kDbm);
}

void WriteReport(std::ostream &out, const Options &options, const Recording &recording, Format format,
                 const Result &result) {
  const RecordingHead &head = result.head;
  const std::int64_t frames = FramesFor(format, head);
  if (options.json) {
    nlohmann::ordered_json report;
    report["recording"] = options.recording;
    report["resampled"] = options.out;
    report["format"] = FactsOf(format).name;
    report["old_sampling_rate_hz"] = recording.Rate();
    report["sampling_rate_hz"] = head.rate;
    report["span_hz"] = head.span;
    report["samples"] = head.samples;
    if (frames > 0) report["frames"] = frames;
    report["peak_v"] = result.fitted.peak;
    report["volts_per_step"] = result.fitted.step;
    // A path need not be valid UTF-8, JSON must.
    out << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    return;
  }
  Line(out, "Recording", Printable(options.recording));
  Line(out, "Resampled", Printable(options.out) + ", " + FactsOf(format).name);
  Line(out, "Sampling rate", Quantity(head.rate, "Hz") + ", before " + Quantity(recording.Rate(), "Hz"));
  Line(out, "Span", Quantity(head.span, "Hz"));
  Line(out, "Samples",
       Grouped(head.samples) + ", " + Quantity(static_cast<double>(head.samples) / head.rate, "s"));
  Line(out, "Largest value",
       Quantity(result.fitted.peak, "V") + ", " + Quantity(result.fitted.step, "V") + " per step");
}

void Run(const Options &options) {
  const double rate = HertzOf("--rate", options.rate);
  const Recording recording(options.recording);
  recording.CheckSignal();
  const double ratio = rate / recording.Rate();
  if (!(ratio >= 1.0 / kMostRatio && ratio <= kMostRatio))
    throw UsageError("--rate: " + Quoted(options.rate) + " is not within a factor of " +
                     Significant(kMostRatio, 4) + " of the recording's rate, " +
                     Significant(recording.Rate(), 12) + " Hz");
  const Extent extent = ExtentOf(options, recording);
  Result result;
  result.head = HeadAt(rate, recording);
  result.head.samples = ResampledCount(extent.count, ratio);
  if (!options.spectra.empty() && std::min(extent.count, result.head.samples) < kMinBlock)
    throw UsageError("--spectra: one sample has no spectrum");
  CheckHeld(extent, recording);
  const Format format = FormatOfPath(options.out).value_or(recording.Format());
  OutputFiles files({{"--out", options.out}, {"--spectra", options.spectra}}, options.recording);
  if (!options.spectra.empty() && !files.CanBeRead(0))
    throw UsageError("--spectra: the recording cannot be read again from " + Quoted(options.out));
  files.Write({[&](std::ostream &out) { Write(out, format, recording, extent, ratio, result); },
               [&](std::ostream &out) {
                 WriteSpectra(out, options, recording, extent, files.Written(0), format, result);
               }});
  WriteReport(files.Report(), options, recording, format, result);
}

} // namespace

void AddResample(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("resample", "Bring a recording to another sampling rate");
  const auto text = [&](const char *name, std::string &value, const char *type, const char *help) {
    return command->add_option(name, value, help)->type_name(type);
  };
  AddRecording(*command, options->recording);
  text("--rate", options->rate, "HZ", "the new sampling rate")->required();
  text("--out", options->out, "FILE", "the recording to write, its format by name")->required();
  AddExtentOptions(*command, *options);
  text("--spectra", options->spectra, "FILE", "draw the spectra before and after");
  command->add_flag("--json", options->json, "report as JSON instead of text");
  command->footer("Rates up to a thousand times more or less will do. Signals within 0.8 of half\n"
                  "the lower rate keep their level to 0.05 dB, and what would fold onto them is\n"
                  "taken off; that part is the span of the new recording. Its first sample is at\n"
                  "the time of the first, and the scale such that the largest value just fits.");
  command->callback([options] { Run(*options); });
}

} // namespace tool
