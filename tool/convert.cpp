// qorn convert: turns recordings into each other, and from and to raw pairs of numbers.

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Commands.h"
#include "Extent.h"
#include "Failure.h"
#include "FittedRecording.h"
#include "Options.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Recording.h"
#include "RecordingWriter.h"
#include "Text.h"

namespace tool {

namespace {

constexpr int kBlock = 1 << 16; // samples

struct Options : ExtentOptions {
  std::string in, out;
  std::string from, to;
  std::string rate, centre;
  std::string scale, outScale;
  bool json = false;
};

double StepOf(const char *option, const std::string &text) { return NumberWithin(option, text, 1e-15, 1e15); }

Recording OpenInput(const Options &options) {
  // A name decides only where the content cannot.
  std::optional<Format> format = FindFormat(options.from);
  if (!format && FormatOfPath(options.in) && IsRaw(*FormatOfPath(options.in)))
    format = FormatOfPath(options.in);
  const bool raw = format && IsRaw(*format);
  if (!raw && !options.scale.empty())
    throw UsageError("--scale: a recording with a header has a scale of its own");
  const double step = !raw                    ? 1.0
                      : options.scale.empty() ? 1.0 / FactsOf(*format).fullScale
                                              : StepOf("--scale", options.scale);
  Recording recording =
      raw ? Recording(options.in, RawFormat{*format, 0.0, 0.0, step}) : Recording(options.in);
  if (format && recording.Format() != *format)
    throw UsageError("--from: " + Quoted(options.in) + " is of the format " +
                     FactsOf(recording.Format()).name);
  if (!options.rate.empty()) recording.SetRate(HertzOf("--rate", options.rate));
  if (!options.centre.empty()) recording.SetCentre(NumberWithin("--centre", options.centre, -1e15, 1e15));
  recording.CheckSignal();
  return recording;
}

Format OutputFormat(const Options &options) {
  if (!options.to.empty()) return *FindFormat(options.to);
  const std::optional<Format> format = FormatOfPath(options.out);
  if (!format)
    throw UsageError("--to is required: " + Quoted(options.out) +
                     " has no extension of a format; known are " + FormatNames());
  return *format;
}

// The step at which values stay the numbers that they are, or with the same share of the full scale; 0 if the
// values themselves must tell, because neither is known to fit.
double KeptStep(const Recording &recording, Format to) {
  const Format from = recording.Format();
  const double step = recording.Step();
  if (to == Format::kCf32) return 1.0;
  if (to == Format::kXiq) {
    if (from == Format::kCf32) return 0.0;
    return from == Format::kCu8 ? 0.5 * step : step; // unsigned values lie half a step beside whole ones
  }
  if (from == Format::kXiq || (from == Format::kCf32 && to == Format::kIqf)) return 0.0;
  return step * FactsOf(from).fullScale / FactsOf(to).fullScale;
}

// The step for a peak: an XIQ recording keeps its own if its values fit.
double FoundStep(const Recording &recording, Format to, const LargestPart &peak) {
  recording.CheckFinite(peak.Magnitude());
  const double step = recording.Step();
  const double slack = 0.25; // of a step, for floats are rounded
  const bool keeps = recording.Format() == Format::kXiq &&
                     peak.Highest() <= (FactsOf(to).highest + slack) * step &&
                     peak.Magnitude() <= (slack - FactsOf(to).lowest) * step;
  return keeps || peak.Magnitude() == 0.0 ? step : StepFor(to, peak.Magnitude());
}

struct Result {
  RecordingHead head;
  std::int64_t frames = 0;
  std::int64_t saturated = 0;
};

Result Write(std::ostream &out, const Options &options, const Recording &recording, const Extent &extent,
             Format to) {
  Result result;
  result.head = recording.Head();
  result.head.samples = extent.count;
  result.head.step =
      options.outScale.empty() ? KeptStep(recording, to) : StepOf("--out-scale", options.outScale);
  CheckCount(to, result.head);
  const bool twice = result.head.step == 0.0;
  Progress progress(twice ? 2 * extent.count : extent.count);
  std::int64_t read = 0;
  const auto run = [&](const TakeSamples &take) {
    BlockStream stream(recording, extent.start, extent.count, kBlock);
    QORN::VecCplx32 block;
    while (stream.NextOrRest(block)) {
      take(block.GetPtr(), block.GetSize());
      progress.Update(read += block.GetSize());
    }
  };
  if (twice) {
    LargestPart peak;
    run([&](const QORN::Cplx32 *samples, int n) { peak.Add(samples, n); });
    result.head.step = FoundStep(recording, to, peak);
  }
  result.frames = FramesFor(to, result.head);
  const std::unique_ptr<RecordingWriter> writer = MakeRecordingWriter(to, out, result.head);
  run([&](const QORN::Cplx32 *samples, int n) { writer->Put(samples, n); });
  writer->End();
  result.saturated = writer->Saturated();
  return result;
}

void WriteText(std::ostream &out, const Options &options, const Recording &recording, Format to,
               const Result &result) {
  const RecordingHead &head = result.head;
  const auto samples = static_cast<double>(head.samples);
  const std::int64_t filling = result.frames * head.framePoints - head.samples;
  Line(out, "Recording", Printable(options.in) + ", " + FactsOf(recording.Format()).name);
  Line(out, "Converted", Printable(options.out) + ", " + FactsOf(to).name);
  Line(out, "Samples",
       Grouped(head.samples) + (head.rate > 0.0 ? ", " + Quantity(samples / head.rate, "s") : "") +
           (filling > 0 ? "; " + Grouped(filling) + " zeros fill the last frame" : ""));
  if (head.rate > 0.0) {
    Line(out, "Sampling rate", Quantity(head.rate, "Hz"));
    Line(out, "Centre", FrequencyInFull(head.centre, 1.0));
  }
  Line(out, "Volts per step", Quantity(head.step, "V"));
  Line(out, "Saturated", result.saturated == 0 ? "none" : Grouped(result.saturated) + " samples");
}

void WriteJson(std::ostream &out, const Options &options, const Recording &recording, Format to,
               const Result &result) {
  nlohmann::ordered_json report;
  report["recording"] = options.in;
  report["format"] = FactsOf(recording.Format()).name;
  report["converted"] = options.out;
  report["converted_format"] = FactsOf(to).name;
  report["samples"] = result.head.samples;
  if (result.frames > 0) report["frames"] = result.frames;
  report["sampling_rate_hz"] = nullptr;
  report["centre_hz"] = nullptr;
  if (result.head.rate > 0.0) {
    report["sampling_rate_hz"] = result.head.rate;
    report["centre_hz"] = result.head.centre;
  }
  report["volts_per_step"] = result.head.step;
  report["saturated_samples"] = result.saturated;
  // A path need not be valid UTF-8, JSON must.
  out << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void Run(const Options &options) {
  const Format to = OutputFormat(options);
  const Recording recording = OpenInput(options);
  if (recording.Rate() == 0.0 && !IsRaw(to))
    throw UsageError(std::string("--rate is required: ") + FactsOf(recording.Format()).name +
                     " files do not tell it, and " + FactsOf(to).name + " files do");
  const Extent extent = ExtentOf(options, recording);
  CheckHeld(extent, recording);
  if (!options.outScale.empty()) StepOf("--out-scale", options.outScale);
  OutputFiles files({{"OUT", options.out}}, options.in);
  Result result;
  files.Write({[&](std::ostream &out) { result = Write(out, options, recording, extent, to); }});
  if (options.json)
    WriteJson(files.Report(), options, recording, to, result);
  else
    WriteText(files.Report(), options, recording, to, result);
}

} // namespace

void AddConvert(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("convert", "Turn a recording into another format");
  const auto text = [&](const char *name, std::string &value, const char *type, const char *help) {
    return command->add_option(name, value, help)->type_name(type);
  };
  text("IN", options->in, "", "recording, or raw pairs")->required();
  text("OUT", options->out, "", "file to write")->required();
  text("--from", options->from, "FORMAT", "format of IN (by content; raw by extension)")
      ->check(KnownFormat());
  text("--to", options->to, "FORMAT", "format of OUT (by extension)")->check(KnownFormat());
  text("--rate", options->rate, "HZ", "sampling rate (the recording's)");
  text("--centre", options->centre, "HZ", "centre frequency (the recording's, or 0)");
  text("--scale", options->scale, "V", "volts of a step of raw IN (full scale 1 V)");
  text("--out-scale", options->outScale, "V", "volts of a step of OUT (as below)");
  AddExtentOptions(*command, *options);
  command->add_flag("--json", options->json, "report as JSON instead of text");
  command->footer("Formats: " + FormatNames() +
                  ". The last four are raw pairs of I and\n"
                  "Q: unsigned 8-bit around 127.5, signed 8-bit, signed 16-bit, 32-bit float. A\n"
                  "full scale is 128 or 32 768 steps, of floats 1. OUT keeps the full scale, and\n"
                  "floats are volts; the integers of XIQ stay what they are if OUT holds them.\n"
                  "Other values are scaled so that the largest just fits.");
  command->callback([options] { Run(*options); });
}

} // namespace tool
