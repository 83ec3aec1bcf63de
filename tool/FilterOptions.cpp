#include "FilterOptions.h"

#include <cmath>
#include <vector>

#include "Failure.h"
#include "FilterDesign.h"
#include "Options.h"
#include "Text.h"

namespace tool {

namespace {

CLI::Validator KnownFilter() {
  return {[](const std::string &name) {
            return FindFilter(name) != nullptr
                       ? std::string()
                       : "unknown filter " + Quoted(name) + "; known are " + FilterNames();
          },
          "", ""};
}

// The options that a kind takes, read; those that it does not take are refused, and so are gaps.
class ParameterReader {
public:
  ParameterReader(const FilterKind &kind, const FilterOptions &options) : m_kind(kind), m_options(options) {}

  FilterParameters Read(const Recording *recording) {
    FilterParameters p{};
    for (const auto &[option, name, text] : Given())
      if (!text->empty()) CheckTaken(option, name);
    if (m_options.taps) CheckTaken(kTapCount, "--taps");
    p.rate = Rate(recording);
    if (m_kind.Takes(kTapsFrom)) p.tapRate = HertzOf("--tap-rate", Needed("--tap-rate", m_options.tapRate));
    p.frequency = m_kind.symbolRate;
    if (m_kind.Takes(kSymbolRate)) p.frequency = SymbolRate(p);
    if (m_kind.Takes(kBandwidth)) p.frequency = Frequency("--bandwidth", m_options.bandwidth);
    if (m_kind.Takes(kCutoff)) p.frequency = Frequency("--cutoff", m_options.cutoff);
    if (m_kind.Takes(kEdges)) {
      p.frequency = Frequency("--low", m_options.low);
      p.shape = Frequency("--high", m_options.high);
    }
    if (m_kind.Takes(kRolloff))
      p.shape = NumberWithin("--rolloff", Needed("--rolloff", m_options.rolloff), 0.0, 1.0);
    if (m_kind.Takes(kBt)) p.shape = NumberWithin("--bt", Needed("--bt", m_options.bt), 0.01, 10.0);
    p.taps = m_options.taps.value_or(0);
    return p;
  }

private:
  struct Entry {
    FilterOption option;
    std::string name;
    const std::string *text;
  };
  std::vector<Entry> Given() const {
    const FilterOptions &o = m_options;
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

  void CheckTaken(FilterOption option, const std::string &name) const {
    if (!m_kind.Takes(option))
      throw UsageError(name + ": " + m_kind.name + " does not take it; it takes " + m_kind.Options());
  }

  const std::string &Needed(const std::string &option, const std::string &text) const {
    if (text.empty()) throw UsageError(option + " is required for " + m_kind.name);
    return text;
  }

  double Frequency(const std::string &option, const std::string &text) const {
    return HertzOf(option, Needed(option, text));
  }

  // That of the recording, if there is one.
  double Rate(const Recording *recording) const {
    if (recording == nullptr) return Frequency("--rate", m_options.rate);
    const double rate = recording->Rate();
    constexpr double kSlack = 1e-6; // a rate from a header may be rounded
    if (!m_options.rate.empty() && std::fabs(HertzOf("--rate", m_options.rate) / rate - 1.0) > kSlack)
      throw UsageError("--rate: " + Quoted(m_options.rate) + " is not the rate of the recording, which is " +
                       Significant(rate, 12) + " Hz");
    return rate;
  }

  // Without one, the user's own taps keep their sum, and filters of a standard have that of the standard.
  double SymbolRate(const FilterParameters &p) const {
    if (!m_options.symbolRate.empty()) return HertzOf("--symbol-rate", m_options.symbolRate);
    if (m_kind.symbolRate > 0.0) return m_kind.symbolRate;
    if (m_kind.Takes(kTapsFrom) && !m_kind.isStep) return p.tapRate;
    return Frequency("--symbol-rate", m_options.symbolRate);
  }

  const FilterKind &m_kind;
  const FilterOptions &m_options;
};

} // namespace

void AddFilterType(CLI::App &command, FilterOptions &options) {
  command.add_option("TYPE", options.type, "filter")->type_name("")->check(KnownFilter());
}

void AddFilterOptions(CLI::App &command, FilterOptions &options) {
  const auto text = [&](const char *name, std::string &value, const char *type, const char *help) {
    command.add_option(name, value, help)->type_name(type);
  };
  text("--rate", options.rate, "HZ", "sampling rate (the recording's)");
  text("--symbol-rate", options.symbolRate, "HZ", "symbols or chips a second");
  text("--rolloff", options.rolloff, "R", "roll-off, from 0 to 1");
  text("--bt", options.bt, "BT", "bandwidth-time product");
  text("--bandwidth", options.bandwidth, "HZ", "of rectangular, both sides");
  text("--cutoff", options.cutoff, "HZ", "of low-pass and high-pass");
  text("--low", options.low, "HZ", "lower cutoff of band-pass");
  text("--high", options.high, "HZ", "upper cutoff of band-pass");
  command.add_option("--taps", options.taps, "number of taps (as recommended)")
      ->type_name("N")
      ->transform(WholeNumber(1, kMaxTaps));
  text("--taps-from", options.tapsFrom, "FILE", "text file of taps for user and integral-user");
  text("--tap-rate", options.tapRate, "HZ", "taps a second of these");
}

FilterParameters ParametersOf(const FilterKind &kind, const FilterOptions &options,
                              const Recording *recording) {
  return ParameterReader(kind, options).Read(recording);
}

QORN::VecCplx32 UserTapsOf(const FilterKind &kind, const FilterOptions &options) {
  if (!kind.Takes(kTapsFrom)) return {};
  if (options.tapsFrom.empty()) throw UsageError("--taps-from is required for " + std::string(kind.name));
  return ReadTaps(options.tapsFrom);
}

} // namespace tool
