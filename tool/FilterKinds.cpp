#include "FilterKinds.h"

#include "Text.h"

namespace tool {

namespace {

constexpr double kChips = 1.2288e6; // of IS-95, a second
constexpr double kGsm = 1625e3 / 6; // symbols a second
constexpr double kUmts = 3.84e6;

} // namespace

std::string FilterKind::Options() const {
  std::vector<std::string> options{"--rate"};
  const auto add = [&](FilterOption option, const char *names) {
    if (Takes(option)) options.emplace_back(names);
  };
  add(kSymbolRate, "--symbol-rate");
  add(kBandwidth, "--bandwidth");
  add(kCutoff, "--cutoff");
  add(kEdges, "--low, --high");
  add(kRolloff, "--rolloff");
  add(kBt, "--bt");
  add(kTapCount, "--taps");
  add(kTapsFrom, "--taps-from, --tap-rate");
  return Joined(options);
}

const std::vector<FilterKind> &Filters() {
  static const std::vector<FilterKind> filters = {
      {"root-raised-cosine",
       QORN::FIRFilterRootRaisedCosine,
       kSymbolRate | kRolloff | kTapCount,
       0,
       false,
       {4 * kUmts, kUmts, 0.22, 0}},
      {"raised-cosine",
       QORN::FIRFilterRaisedCosine,
       kSymbolRate | kRolloff | kTapCount,
       0,
       false,
       {4 * kUmts, kUmts, 0.22, 0}},
      {"gaussian",
       QORN::FIRFilterGaussian,
       kSymbolRate | kBt | kTapCount,
       0,
       false,
       {8 * kGsm, kGsm, 0.3, 0}},
      {"gauss-rect",
       QORN::FIRFilterGaussRect,
       kSymbolRate | kBt | kTapCount,
       0,
       false,
       {8 * kGsm, kGsm, 0.3, 0}},
      {"rectangular", QORN::FIRFilterRectangular, kBandwidth | kTapCount, 0, false, {10e6, 2e6, 0, 0}},
      {"is95-tx", QORN::FIRFilterIS95TXMeasurement, kSymbolRate, kChips, false, {4 * kChips, kChips, 0, 0}},
      {"is95-tx-eq",
       QORN::FIRFilterIS95TXEQMeasurement,
       kSymbolRate,
       kChips,
       false,
       {4 * kChips, kChips, 0, 0}},
      {"is95-reference",
       QORN::FIRFilterIS95Reference,
       kSymbolRate,
       kChips,
       false,
       {4 * kChips, kChips, 0, 0}},
      {"c4fm", QORN::FIRFilterC4FMReverseShaping, kSymbolRate | kTapCount, 4800, false, {48e3, 4800, 0, 0}},
      {"hdqpsk-p25", QORN::FIRFilterHDQPSKP25Measurement, 0, 7200, false, {28.8e3, 7200, 0, 0}},
      {"low-pass", QORN::FIRFilterLowPass, kCutoff | kTapCount, 0, false, {1e6, 100e3, 0, 101}},
      {"high-pass", QORN::FIRFilterHighPass, kCutoff | kTapCount, 0, false, {1e6, 300e3, 0, 101}},
      {"band-pass", QORN::FIRFilterBandPass, kEdges | kTapCount, 0, false, {1e6, 150e3, 250e3, 101}},
      {"integral-gaussian",
       QORN::FIRFilterIntegralGaussian,
       kSymbolRate | kBt | kTapCount,
       0,
       true,
       {8 * kGsm, kGsm, 0.3, 0}},
      {"integral-rect",
       QORN::FIRFilterIntegralRect,
       kSymbolRate | kTapCount,
       0,
       true,
       {8 * kGsm, kGsm, 0, 0}},
      {"user",
       QORN::FIRFilterUserDefined,
       kSymbolRate | kTapCount | kTapsFrom,
       0,
       false,
       {4e6, 1e6, 0, 0, 2e6}},
      {"integral-user",
       QORN::FIRFilterIntegralUserDefined,
       kSymbolRate | kTapCount | kTapsFrom,
       0,
       true,
       {8e6, 1e6, 0, 0, 2e6}},
  };
  return filters;
}

std::string FilterNames() {
  std::vector<std::string> names;
  for (const FilterKind &kind : Filters()) names.emplace_back(kind.name);
  return Joined(names);
}

const FilterKind *FindFilter(const std::string &name) {
  for (const FilterKind &kind : Filters())
    if (PlainName(kind.name) == PlainName(name)) return &kind;
  return nullptr;
}

std::string TitleOf(const FilterKind &kind, const FilterParameters &parameters) {
  std::string title = kind.name;
  if (kind.Takes(kRolloff)) title += ", roll-off " + Significant(parameters.shape, 6);
  if (kind.Takes(kBt)) title += ", BT " + Significant(parameters.shape, 6);
  return title;
}

} // namespace tool
