#include "SignalOptions.h"

#include <algorithm>
#include <cmath>

#include "Failure.h"
#include "Options.h"
#include "Text.h"

namespace tool {

namespace {

constexpr double kMostRate = 1e10;
constexpr int kMostTaps = (1 << 20) - 1;   // of the shaping filter
constexpr double kMostPerSymbol = 1 << 20; // samples, of FSK
constexpr std::int64_t kMostRepeats = 1000000;
constexpr std::int64_t kMostTotal = 0x7FFFFFFF - 1023; // samples that a reader can count, in whole frames
constexpr unsigned kAll = 0;

// A value, or a multiple of the sampling rate or of the time of a sample.
struct Bound {
  constexpr Bound(double number) : value(number) {}

  double At(double rate) const {
    const double time = ofSample > 0.0 ? ofSample / rate : 0.0;
    return std::max(value + ofRate * rate + time, floor);
  }

  double value;
  double ofRate = 0.0, ofSample = 0.0;
  double floor = -kMostRate; // not below
};

constexpr Bound OfRate(double share, double floor = -kMostRate) {
  Bound bound(0.0);
  bound.ofRate = share;
  bound.floor = floor;
  return bound;
}

constexpr Bound Samples(double count) {
  Bound bound(0.0);
  bound.ofSample = count;
  return bound;
}

struct NumberOption {
  const char *name;
  const char *type;
  const char *help;
  unsigned takenBy; // SignalOption joined, or kAll
  Bound least, most;
  Bound standard;
  double SignalParameters::*field;
};

using P = SignalParameters;

const std::array<NumberOption, kNumberCount> kNumbers = {{
    {"--rate", "HZ", "sampling rate, 1 to 1e10 (20e6)", kAll, 1.0, kMostRate, 20e6, &P::rate},
    {"--level", "DBM", "level, -200 to 100 (-10)", kAll, -200.0, 100.0, -10.0, &P::level},
    {"--offset", "HZ", "frequency offset, up to +-rate/2 (0)", kAll, OfRate(-0.5), OfRate(0.5), 0.0,
     &P::offset},
    {"--noise", "DB", "add noise, uniform to +-10^(DB/20) V, -300 to 50", kAll, -300.0, 50.0, 0.0, &P::noise},
    {"--frequency", "HZ", "of cw, up to +-rate/2 (rate/20)", kCarrier, OfRate(-0.5), OfRate(0.5),
     OfRate(0.05), &P::frequency},
    {"--mod-frequency", "HZ", "of am, fm, pm, rate/2^24 to rate/2 (rate/1000)", kModulation,
     OfRate(1.0 / (1 << 24)), OfRate(0.5), OfRate(1e-3), &P::modFrequency},
    {"--depth", "PERCENT", "of am, 0 to 200 (50)", kDepth, 0.0, 200.0, 50.0, &P::depth},
    {"--deviation", "HZ", "peak, of fm and fsk, 0 to rate/2 (rate/20)", kDeviation, 0.0, OfRate(0.5),
     OfRate(0.05), &P::deviation},
    {"--phase-deviation", "DEG", "peak, of pm, 0 to 36000 (90)", kPhaseDeviation, 0.0, 36000.0, 90.0,
     &P::phaseDeviation},
    {"--symbol-rate", "HZ", "of psk, qam, fsk, rate/2^20 to rate (rate/10)", kSymbols,
     OfRate(1.0 / kMostPerSymbol), OfRate(1.0), OfRate(0.1), &P::symbolRate},
    {"--rolloff", "R", "of psk and qam, 0 to 1 (0.22)", kShaping, 0.0, 1.0, 0.22, &P::rolloff},
    {"--width", "S", "of pulses, 1 to 2^22 samples (200)", kPulses, Samples(1.0), Samples(kMostSamples),
     Samples(200.0), &P::width},
    {"--period", "S", "of pulses, 1 to 2^22 samples (2000)", kPulses, Samples(1.0), Samples(kMostSamples),
     Samples(2000.0), &P::period},
    {"--sweep", "HZ", "of chirp, up to +-rate (rate/4)", kSweep, OfRate(-1.0), OfRate(1.0), OfRate(0.25),
     &P::sweep},
    {"--frame-rate", "HZ", "of 80211a, 64 carriers, 1000 to rate (20e6)", kFrame,
     OfRate(1.0 / 131072.0, 1000.0), OfRate(1.0), 20e6, &P::frameRate},
    {"--guard", "SHARE", "guard interval of 80211a, 1/128 to 1 (0.25)", kFrame, 1.0 / 128.0, 1.0, 0.25,
     &P::guard},
}};

CLI::Validator KnownSignal() {
  return {[](const std::string &name) {
            return FindSignal(name) != nullptr
                       ? std::string()
                       : "unknown signal " + Quoted(name) + "; known are " + SignalNames();
          },
          "", ""};
}

const Scheme *FindScheme(const std::string &rate) {
  for (const Scheme &scheme : Schemes())
    if (rate == scheme.rate) return &scheme;
  return nullptr;
}

CLI::Validator KnownScheme() {
  return {[](const std::string &rate) {
            if (FindScheme(rate) != nullptr) return std::string();
            std::vector<std::string> rates;
            for (const Scheme &scheme : Schemes()) rates.emplace_back(scheme.rate);
            return "unknown scheme " + Quoted(rate) + "; known are " + Joined(rates);
          },
          "", ""};
}

std::string OptionsOf(const SignalKind &kind) {
  std::vector<std::string> options;
  for (const NumberOption &number : kNumbers)
    if ((number.takenBy & kind.takes) != 0) options.emplace_back(number.name);
  if (kind.Takes(kModulation)) options.emplace_back("--triangle");
  if (kind.Takes(kPulses)) options.emplace_back("--sharp");
  if (kind.Takes(kFrame)) options.emplace_back("--mcs");
  return Joined(options);
}

// A time in whole samples.
std::int64_t SamplesIn(const std::string &option, const std::string &text, double rate, double least,
                       std::int64_t most) {
  const double samples = NumberWithin(option, text, 0.0, 1e12) * rate;
  if (!(samples >= least && samples < static_cast<double>(most) + 0.5))
    throw UsageError(option + ": " + Quoted(text) + " is not a time of " + (least > 0.0 ? "1" : "0") +
                     " to " + Grouped(most) + " samples");
  return std::llround(samples);
}

void CheckTaken(const SignalKind &kind, const std::string &name, bool taken) {
  if (!taken)
    throw UsageError(name + ": " + kind.name + " does not take it; its own options are " + OptionsOf(kind));
}

void CheckFilter(const SignalParameters &p) {
  const double taps = 8.75 * p.rate / (p.symbolRate * std::max(p.rolloff, 0.001));
  if (taps > kMostTaps)
    throw UsageError("--symbol-rate: " + Significant(p.symbolRate, 6) + " Hz with a roll-off of " +
                     Significant(p.rolloff, 6) + " needs a filter of more than " + Grouped(kMostTaps) +
                     " taps");
}

void ReadLengths(SignalParameters &p, const SignalOptions &options) {
  if (options.samples && !options.duration.empty())
    throw UsageError("--duration: it does not go with --samples");
  p.samples = options.samples.value_or(kDefaultSamples);
  if (!options.duration.empty())
    p.samples = static_cast<int>(SamplesIn("--duration", options.duration, p.rate, 0.5, kMostSamples));
  if (!options.gap.empty()) p.gap = SamplesIn("--gap", options.gap, p.rate, 0.0, kMostTotal);
  p.repeats = options.repeats;
  if (p.samples + p.gap > kMostTotal / p.repeats)
    throw UsageError("--repeat: the recording would have more than " + Grouped(kMostTotal) + " samples");
}

} // namespace

void AddSignalOptions(CLI::App &command, SignalOptions &options) {
  const auto text = [&](const char *name, std::string &value, const char *type, const char *help) {
    return command.add_option(name, value, help)->type_name(type);
  };
  text("TYPE", options.type, "", "signal")->required()->check(KnownSignal());
  for (std::size_t i = 0; i < kNumberCount; ++i)
    text(kNumbers[i].name, options.numbers[i], kNumbers[i].type, kNumbers[i].help);
  text("--mcs", options.mcs, "MBIT", "rate of 80211a: 6, 9, 12, 18, 24, 36, 48, 54 (6)")
      ->check(KnownScheme());
  command.add_flag("--triangle", options.triangle, "modulate am, fm, pm by a triangle, not a cosine");
  command.add_flag("--sharp", options.sharp, "pulses without edges");
  command.add_flag("--fixed-phase", options.fixedPhase, "phases of 0, not random ones");
  command.add_option("--seed", options.seed, "another series of random data, 0 to 4294967295 (0)")
      ->type_name("N")
      ->transform(WholeNumber(0, 0xFFFFFFFF));
  command.add_option("--samples", options.samples, "length of the signal, 1 to 2^22 (20000)")
      ->type_name("N")
      ->transform(WholeNumber(1, kMostSamples));
  text("--duration", options.duration, "S", "the same as a time");
  command.add_option("--repeat", options.repeats, "signals in a row, 1 to 1000000 (1)")
      ->type_name("N")
      ->transform(WholeNumber(1, kMostRepeats));
  text("--gap", options.gap, "S", "silence behind each, 0 to 2^31-1024 samples (0)");
}

SignalParameters ParametersOf(const SignalOptions &options) {
  SignalParameters p{};
  p.kind = FindSignal(options.type);
  const SignalKind &kind = *p.kind;
  for (std::size_t i = 0; i < kNumberCount; ++i) {
    const NumberOption &number = kNumbers[i];
    const std::string &text = options.numbers[i];
    const bool taken = number.takenBy == kAll || (number.takenBy & kind.takes) != 0;
    if (!text.empty()) CheckTaken(kind, number.name, taken);
    if (!taken) continue;
    const double least = number.least.At(p.rate), most = number.most.At(p.rate);
    double value = number.standard.At(p.rate);
    if (!text.empty())
      value = NumberWithin(number.name, text, least, most);
    else if (value < least || value > most)
      throw UsageError(std::string(number.name) + ": its default of " + Significant(value, 6) +
                       " is not from " + Significant(least, 6) + " to " + Significant(most, 6));
    p.*number.field = value;
    if (number.field == &P::noise) p.addNoise = !text.empty();
  }
  if (!options.mcs.empty()) CheckTaken(kind, "--mcs", kind.Takes(kFrame));
  if (options.triangle) CheckTaken(kind, "--triangle", kind.Takes(kModulation));
  if (options.sharp) CheckTaken(kind, "--sharp", kind.Takes(kPulses));
  p.scheme = FindScheme(options.mcs.empty() ? "6" : options.mcs);
  p.triangle = options.triangle;
  p.sharp = options.sharp;
  p.fixedPhase = options.fixedPhase;
  p.seed = options.seed;
  if (kind.Takes(kShaping)) CheckFilter(p);
  ReadLengths(p, options);
  return p;
}

} // namespace tool
