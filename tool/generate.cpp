// qorn generate: writes test signals as recordings, and draws them.

#include <algorithm>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "Commands.h"
#include "Failure.h"
#include "Levels.h"
#include "Options.h"
#include "OutputFile.h"
#include "Progress.h"
#include "RecordingWriter.h"
#include "SignalOptions.h"
#include "SignalSheet.h"
#include "SignalSource.h"
#include "Text.h"

namespace tool {

namespace {

struct Options {
  SignalOptions signal;
  std::string out;
  std::string format;
  std::string centre;
  std::string sheet;
  bool json = false;
};

// What one run through a signal tells.
struct SignalFigures {
  double largest = 0.0;   ///< volts: the largest magnitude of a real or an imaginary part
  double meanPower = 0.0; ///< squares of volts
  double peakPower = 0.0;
  QORN::VecCplx32 start; ///< the samples for a sheet
};

Format FormatFor(const Options &options) {
  if (!options.format.empty()) return *FindFormat(options.format);
  if (const std::optional<Format> format = FormatOfPath(options.out)) return *format;
  throw UsageError("--out: the name " + Quoted(options.out) + " ends in no format; known are " +
                   FormatNames() + " (or give --format)");
}

SignalFigures Examine(const SignalParameters &parameters, bool sheet, Progress &progress) {
  SignalFigures figures;
  if (sheet)
    figures.start.Resize(static_cast<int>(std::min<std::int64_t>(parameters.Total(), kShownSamples)));
  SignalSource source(parameters);
  QORN::VecCplx32 block;
  std::int64_t done = 0;
  while (source.Next(block)) {
    for (int i = 0; i < block.GetSize(); ++i) {
      const auto re = static_cast<double>(block[i].re), im = static_cast<double>(block[i].im);
      const double power = re * re + im * im;
      figures.largest = std::max({figures.largest, std::fabs(re), std::fabs(im)});
      figures.peakPower = std::max(figures.peakPower, power);
      figures.meanPower += power;
    }
    if (done < figures.start.GetSize()) {
      const auto at = static_cast<int>(done);
      QORN::TargetLib::Copy_32fc(block.GetPtr(), figures.start.GetPtr(at),
                                 std::min(block.GetSize(), figures.start.GetSize() - at));
    }
    progress.Update(done += block.GetSize());
  }
  figures.meanPower /= static_cast<double>(done);
  return figures;
}

void WriteRecording(std::ostream &out, const SignalParameters &parameters, Format format,
                    const RecordingHead &head, Progress &progress) {
  const std::unique_ptr<RecordingWriter> writer = MakeRecordingWriter(format, out, head);
  SignalSource source(parameters);
  QORN::VecCplx32 block;
  std::int64_t done = 0;
  while (source.Next(block)) {
    writer->Put(block.GetPtr(), block.GetSize());
    progress.Update(parameters.Total() + (done += block.GetSize()));
  }
  writer->End();
}

void WriteReport(std::ostream &out, const Options &options, const SignalParameters &parameters,
                 const SignalFigures &figures, Format format, double step) {
  const double seconds = static_cast<double>(parameters.Total()) / parameters.rate;
  if (options.json) {
    const auto level = [](double power) {
      return power > 0.0 ? nlohmann::ordered_json(LevelOf(Unit::kDbm, power)) : nullptr;
    };
    nlohmann::ordered_json report;
    report["signal"] = parameters.kind->name;
    report["sampling_rate_hz"] = parameters.rate;
    report["samples"] = parameters.Total();
    report["duration_s"] = seconds;
    report["rms_dbm"] = level(figures.meanPower);
    report["peak_dbm"] = level(figures.peakPower);
    if (!options.out.empty()) {
      report["recording"] = options.out;
      report["volts_per_step"] = step;
    }
    if (!options.sheet.empty()) report["sheet"] = options.sheet;
    // A path need not be valid UTF-8, JSON must.
    out << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    return;
  }
  Line(out, "Signal", parameters.Title());
  Line(out, "Sampling rate", Quantity(parameters.rate, "Hz"));
  Line(out, "Samples", Grouped(parameters.Total()) + ", " + Quantity(seconds, "s"));
  Line(out, "Level",
       LevelText(Unit::kDbm, figures.meanPower) + " RMS, peak " + LevelText(Unit::kDbm, figures.peakPower));
  if (!options.out.empty())
    Line(out, "Recording",
         Printable(options.out) + (format == Format::kCf32 ? "" : ", " + Quantity(step, "V") + " per step"));
  if (!options.sheet.empty()) Line(out, "Sheet", Printable(options.sheet));
}

void Run(const Options &options) {
  const SignalParameters parameters = ParametersOf(options.signal);
  const double centre = options.centre.empty() ? 0.0 : NumberWithin("--centre", options.centre, 0.0, 1e15);
  if (options.out.empty() && options.sheet.empty()) throw UsageError("--out is required, or --sheet");
  if (options.out.empty() && !options.format.empty()) throw UsageError("--format: there is no --out");
  const Format format = options.out.empty() ? Format::kCf32 : FormatFor(options);
  OutputFiles files({{"--sheet", options.sheet}, {"--out", options.out}});

  SignalFigures figures;
  double step = 1.0;
  {
    Progress progress((options.out.empty() ? 1 : 2) * parameters.Total());
    figures = Examine(parameters, !options.sheet.empty(), progress);
    RecordingHead head;
    head.samples = parameters.Total();
    head.rate = parameters.rate;
    head.centre = centre;
    head.step = step = StepFor(format, figures.largest > 0.0 ? figures.largest : 1.0);
    head.level = parameters.level;
    files.Write({[&](std::ostream &out) { WriteSheet(out, parameters, figures.start); },
                 [&](std::ostream &out) { WriteRecording(out, parameters, format, head, progress); }});
  }
  WriteReport(files.Report(), options, parameters, figures, format, step);
}

} // namespace

void AddGenerate(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("generate", "Write a test signal as a recording, and draw it");
  const auto text = [&](const char *name, std::string &value, const char *type, const char *help) {
    return command->add_option(name, value, help)->type_name(type);
  };
  AddSignalOptions(*command, options->signal);
  text("--out", options->out, "FILE", "write the recording");
  text("--format", options->format, "FORMAT", "of the recording (by the extension of FILE)")
      ->check(KnownFormat());
  text("--centre", options->centre, "HZ", "centre frequency in its header, 0 to 1e15 (0)");
  text("--sheet", options->sheet, "FILE", "write a picture");
  command->add_flag("--json", options->json, "report as JSON instead of text");
  command->footer("Signals: " + Wrapped(SignalNames(), 9) +
                  ".\n"
                  "Formats: " +
                  FormatNames() +
                  "; the last four are raw pairs of I and Q.\n"
                  "\n"
                  "The level is that of the carrier (cw, am, fm, pm, fsk), of the mean power (psk,\n"
                  "qam, 80211a while it is on) or of the inside of a pulse, into 50 ohm. Parts of\n"
                  "samples are peak volts; in integer formats the largest of them just fits.\n"
                  "Widths of pulses that are not --sharp get edges, 5 % longer. The burst has a\n"
                  "silent tenth in front, and recurs if the signal is longer than it can be.\n"
                  "\n"
                  "A recording is one signal, made in one piece, or --repeat of them, with new\n"
                  "random data and phases in each, and with noise also in the gaps. With\n"
                  "--fixed-phase, all but psk, qam, fsk and 80211a go on without a jump if a signal\n"
                  "is a whole number of their periods. The same options always give the same\n"
                  "recording.");
  command->callback([options] { Run(*options); });
}

} // namespace tool
