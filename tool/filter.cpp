// qorn filter: designs a filter, tells and draws what it does, and runs recordings through it.

#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "Commands.h"
#include "Extent.h"
#include "Failure.h"
#include "FilterDesign.h"
#include "FilterFigures.h"
#include "FilterPicture.h"
#include "FilteredRecording.h"
#include "Options.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Text.h"

namespace tool {

namespace {

struct Options : ExtentOptions {
  std::string type;
  std::string recording;
  std::string rate, symbolRate, bandwidth, cutoff, low, high, rolloff, bt;
  std::optional<int> taps;
  std::string tapsFrom, tapRate;
  std::string out;
  std::string svg;
  std::string csv;
  bool json = false;
  std::string gallery;
};

CLI::Validator KnownFilter() {
  return {[](const std::string &name) {
            return FindFilter(name) != nullptr
                       ? std::string()
                       : "unknown filter " + Quoted(name) + "; known are " + FilterNames();
          },
          "", ""};
}

double Within(const std::string &option, const std::string &text, double least, double most) {
  const double value = NumberOf(option, text);
  if (value < least || value > most)
    throw UsageError(option + ": " + Quoted(text) + " is not from " + Significant(least, 6) + " to " +
                     Significant(most, 6));
  return value;
}

double Hertz(const std::string &option, const std::string &text) { return Within(option, text, 1e-3, 1e12); }

// The options that a kind takes, read; those that it does not take are refused, and so are gaps.
class ParameterReader {
public:
  ParameterReader(const FilterKind &kind, const Options &options) : m_kind(kind), m_options(options) {}

  FilterParameters Read(const QORN::IQFReader *recording) {
    FilterParameters p{};
    for (const auto &[option, name, text] : Given())
      if (!text->empty() && !m_kind.Takes(option))
        throw UsageError(name + ": " + m_kind.name + " does not take it; it takes " + m_kind.Options());
    if (m_options.taps && !m_kind.Takes(kTapCount))
      throw UsageError(std::string("--taps: ") + m_kind.name + " does not take it; it takes " +
                       m_kind.Options());
    p.rate = Rate(recording);
    if (m_kind.Takes(kTapsFrom)) p.tapRate = Hertz("--tap-rate", Needed("--tap-rate", m_options.tapRate));
    p.frequency = m_kind.symbolRate;
    if (m_kind.Takes(kSymbolRate)) p.frequency = SymbolRate(p);
    if (m_kind.Takes(kBandwidth)) p.frequency = Frequency("--bandwidth", m_options.bandwidth);
    if (m_kind.Takes(kCutoff)) p.frequency = Frequency("--cutoff", m_options.cutoff);
    if (m_kind.Takes(kEdges)) {
      p.frequency = Frequency("--low", m_options.low);
      p.shape = Frequency("--high", m_options.high);
    }
    if (m_kind.Takes(kRolloff))
      p.shape = Within("--rolloff", Needed("--rolloff", m_options.rolloff), 0.0, 1.0);
    if (m_kind.Takes(kBt)) p.shape = Within("--bt", Needed("--bt", m_options.bt), 0.01, 10.0);
    p.taps = m_options.taps.value_or(0);
    constexpr int kLeastOfWindow = 5; // a windowed sinc of fewer taps is none
    if (m_kind.Takes(kCutoff) || m_kind.Takes(kEdges)) {
      if (!m_options.taps) throw UsageError("--taps is required for " + std::string(m_kind.name));
      if (p.taps < kLeastOfWindow)
        throw UsageError("--taps: " + std::string(m_kind.name) + " takes 5 or more");
    }
    return p;
  }

private:
  struct Entry {
    FilterOption option;
    std::string name;
    const std::string *text;
  };
  std::vector<Entry> Given() const {
    const Options &o = m_options;
    return {{kSymbolRate, "--symbol-rate", &o.symbolRate},
            {kBandwidth, "--bandwidth", &o.bandwidth},
            {kCutoff, "--cutoff", &o.cutoff},
            {kEdges, "--low", &o.low},
            {kEdges, "--high", &o.high},
            {kRolloff, "--rolloff", &o.rolloff},
            {kBt, "--bt", &o.bt},
            {kTapsFrom, "--taps-from", &o.tapsFrom},
            {kTapsFrom, "--tap-rate", &o.tapRate}};
  }

  const std::string &Needed(const std::string &option, const std::string &text) const {
    if (text.empty()) throw UsageError(option + " is required for " + m_kind.name);
    return text;
  }

  double Frequency(const std::string &option, const std::string &text) const {
    return Hertz(option, Needed(option, text));
  }

  // That of the recording, if there is one.
  double Rate(const QORN::IQFReader *recording) const {
    if (recording == nullptr) return Frequency("--rate", m_options.rate);
    const double rate = recording->GetSamplingFrequency();
    constexpr double kSlack = 1e-6; // a rate from a header may be rounded
    if (!m_options.rate.empty() && std::fabs(Hertz("--rate", m_options.rate) / rate - 1.0) > kSlack)
      throw UsageError("--rate: " + Quoted(m_options.rate) + " is not the rate of the recording, which is " +
                       Significant(rate, 12) + " Hz");
    return rate;
  }

  // Without one, the user's own taps keep their sum, and filters of a standard have that of the standard.
  double SymbolRate(const FilterParameters &p) const {
    if (!m_options.symbolRate.empty()) return Hertz("--symbol-rate", m_options.symbolRate);
    if (m_kind.symbolRate > 0.0) return m_kind.symbolRate;
    if (m_kind.Takes(kTapsFrom) && !m_kind.isStep) return p.tapRate;
    return Frequency("--symbol-rate", m_options.symbolRate);
  }

  const FilterKind &m_kind;
  const Options &m_options;
};

void RunOne(const Options &options) {
  const FilterKind &kind = *FindFilter(options.type);
  const bool runs = !options.recording.empty();
  if (runs && options.out.empty()) throw UsageError("--out is required to filter a recording");
  if (!runs && !options.out.empty()) throw UsageError("--out: there is no RECORDING to filter");
  if (runs && kind.isStep)
    throw UsageError(std::string(kind.name) +
                     ": what it adds for a sample never ends; it filters no recording");
  std::optional<Recording> recording;
  Extent extent{};
  if (runs) {
    recording.emplace(options.recording);
    recording->CheckSignal();
    extent = ExtentOf(options, *recording);
    CheckHeld(extent, *recording);
  }
  const FilterParameters parameters =
      ParameterReader(kind, options).Read(recording ? &recording->Reader() : nullptr);
  QORN::VecCplx32 userTaps;
  if (kind.Takes(kTapsFrom)) {
    if (options.tapsFrom.empty()) throw UsageError("--taps-from is required for " + std::string(kind.name));
    userTaps = ReadTaps(options.tapsFrom);
  }
  OutputFiles files({{"--svg", options.svg}, {"--csv", options.csv}, {"--out", options.out}},
                    options.recording);
  const FilterFigures figures = FiguresOf(DesignOf(kind, parameters, userTaps));
  std::optional<FilteredRecording> filtered;
  files.Write({[&](std::ostream &out) { WriteSvg(out, figures); },
               [&](std::ostream &out) { WriteCsv(out, figures); },
               [&](std::ostream &out) {
                 Progress progress(2 * extent.count);
                 filtered = WriteFiltered(out, *recording, extent, figures.design,
                                          [&](std::int64_t done) { progress.Update(done); });
               }});
  if (options.json) {
    nlohmann::ordered_json report = JsonOf(figures);
    if (filtered)
      report["filtered"] = {{"recording", options.out},   {"samples", filtered->samples},
                            {"frames", filtered->frames}, {"advance_samples", filtered->advance},
                            {"peak_v", filtered->peak},   {"volts_per_step", filtered->step}};
    // A path need not be valid UTF-8, JSON must.
    std::cout << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    return;
  }
  WriteText(std::cout, figures);
  if (!filtered) return;
  Line(std::cout, "Filtered", Printable(options.out));
  Line(std::cout, "Samples",
       Grouped(filtered->samples) + ", " + Grouped(filtered->advance) + " of delay taken off");
  Line(std::cout, "Largest value",
       Quantity(filtered->peak, "V") + ", " + Quantity(filtered->step, "V") + " per step");
}

void RunGallery(const CLI::App &command, const Options &options) {
  for (const CLI::Option *option : command.get_options())
    if (option->count() > 0 && option->get_name() != "--gallery")
      throw UsageError("--gallery: " + option->get_name() + " does not go with it");
  namespace fs = std::filesystem;
  const fs::path folder = options.gallery;
  std::error_code error;
  if (!fs::is_directory(folder, error)) fs::create_directory(folder, error);
  if (!fs::is_directory(folder))
    throw UsageError("--gallery: " + Quoted(options.gallery) + " cannot be made a folder" +
                     (error ? ": " + error.message() : ""));
  for (const FilterKind &kind : Filters()) {
    const std::string path = (folder / (std::string(kind.name) + ".svg")).string();
    OutputFiles files({{"--gallery", path}});
    const FilterFigures figures = FiguresOf(DesignOf(kind, kind.example, ExampleTaps()));
    files.Write({[&](std::ostream &out) { WriteSvg(out, figures); }});
    std::cout << Printable(path) << '\n';
  }
}

} // namespace

void AddFilter(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("filter", "Design a filter, draw it, and filter a recording");
  const auto text = [&](const char *name, std::string &value, const char *type, const char *help) {
    command->add_option(name, value, help)->type_name(type);
  };
  command->add_option("TYPE", options->type, "filter")->type_name("")->check(KnownFilter());
  text("RECORDING", options->recording, "", "IQF file to filter");
  text("--rate", options->rate, "HZ", "sampling rate (the recording's)");
  text("--symbol-rate", options->symbolRate, "HZ", "symbols or chips a second");
  text("--rolloff", options->rolloff, "R", "roll-off, from 0 to 1");
  text("--bt", options->bt, "BT", "bandwidth-time product");
  text("--bandwidth", options->bandwidth, "HZ", "of rectangular, both sides");
  text("--cutoff", options->cutoff, "HZ", "of low-pass and high-pass");
  text("--low", options->low, "HZ", "lower cutoff of band-pass");
  text("--high", options->high, "HZ", "upper cutoff of band-pass");
  command->add_option("--taps", options->taps, "number of taps (as recommended)")
      ->type_name("N")
      ->check(WholeNumber(1, kMaxTaps));
  text("--taps-from", options->tapsFrom, "FILE", "text file of taps for user and integral-user");
  text("--tap-rate", options->tapRate, "HZ", "taps a second of these");
  text("--out", options->out, "FILE", "write the filtered recording");
  AddExtentOptions(*command, *options);
  text("--svg", options->svg, "FILE", "write a picture");
  text("--csv", options->csv, "FILE", "write the taps as a table");
  command->add_flag("--json", options->json, "report as JSON instead of text");
  text("--gallery", options->gallery, "DIR", "write a picture of every filter, and nothing else");
  command->footer("Filters: " + Wrapped(FilterNames(), 9) +
                  ".\n"
                  "Each type takes the options that design it, and names them if one is missing or\n"
                  "too many; is95, c4fm and hdqpsk filters know their symbol rates. Bandwidths and\n"
                  "nulls are those of the taps; of the integral types, those of the pulse whose\n"
                  "running sum the taps are. user takes the taps of the file in reverse order.\n"
                  "\n"
                  "A recording is filtered at its own sampling rate. Half the taps are taken off as\n"
                  "delay, so each sample stays at its time; an even number of taps leaves it half a\n"
                  "sample early. As many samples come out as went in, the first and last of them\n"
                  "from zeros beyond the ends. The scale is such that the largest value just fits.");
  command->callback([options, command] {
    if (!options->gallery.empty())
      RunGallery(*command, *options);
    else if (options->type.empty())
      throw UsageError("TYPE is required");
    else
      RunOne(*options);
  });
}

} // namespace tool
