#include "FilterDesign.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <memory>

#include "Failure.h"
#include "NumberRows.h"
#include "Options.h"
#include "Text.h"

namespace tool {

namespace {

constexpr double kTables[] = {2.0, 4.0, 8.0, 16.0}; // samples per symbol that IS-95 filters are known for

constexpr int kLeastOfWindow = 5; // taps: a windowed sinc of fewer is none

// Parameters as the library takes them, checked for what it makes no filter of.
struct Checked {
  float rate, frequency, shape;
};

Checked CheckedParameters(const FilterKind &kind, const FilterParameters &p) {
  const auto refuse = [](const std::string &option, double value, const std::string &reason) {
    throw UsageError(option + ": " + Significant(value, 12) + " Hz " + reason);
  };
  const std::string rate = Significant(p.rate, 12) + " Hz";
  if (kind.Takes(kSymbolRate) && p.frequency > p.rate)
    refuse("--symbol-rate", p.frequency, "is above the sampling rate of " + rate);
  if (kind.Takes(kBandwidth) && p.frequency > p.rate)
    refuse("--bandwidth", p.frequency, "is above the sampling rate of " + rate);
  const Checked floats{static_cast<float>(p.rate), static_cast<float>(p.frequency),
                       static_cast<float>(p.shape)};
  const auto belowHalf = [&](float frequency) { return frequency / floats.rate < 0.5F; };
  const std::string tooHigh = "is not below half the sampling rate of " + rate;
  if (kind.Takes(kCutoff) && !belowHalf(floats.frequency)) refuse("--cutoff", p.frequency, tooHigh);
  if (kind.Takes(kEdges) && !belowHalf(floats.shape)) refuse("--high", p.shape, tooHigh);
  if (kind.Takes(kEdges) && !(floats.frequency / floats.rate < floats.shape / floats.rate))
    refuse("--low", p.frequency, "is not below --high");
  const double samples = p.rate / p.frequency;
  const bool isTable = kind.takes == kSymbolRate;
  if (isTable && std::none_of(std::begin(kTables), std::end(kTables),
                              [&](double ratio) { return std::fabs(samples - ratio) < 1e-3 * ratio; }))
    throw UsageError("--rate: " + std::string(kind.name) +
                     " is for 2, 4, 8 or 16 samples per symbol, not for " + Significant(samples, 6));
  return floats;
}

} // namespace

double FilterDesign::PassFrequency() const {
  if (kind->type == QORN::FIRFilterHighPass) return 0.5 * (parameters.frequency + 0.5 * parameters.rate);
  if (kind->type == QORN::FIRFilterBandPass) return 0.5 * (parameters.frequency + parameters.shape);
  return kind->Takes(kTapsFrom) ? -1.0 : 0.0;
}

FilterDesign DesignOf(const FilterKind &kind, const FilterParameters &parameters,
                      const QORN::VecCplx32 &userTaps) {
  const auto [rate, frequency, shape] = CheckedParameters(kind, parameters);
  const std::unique_ptr<QORN::FIRBaseFilter> filter(QORN::FIRFilterFactory::MakeFilter(kind.type));
  if (kind.Takes(kTapsFrom)) {
    const auto tapsPerSymbol = static_cast<float>(parameters.tapRate / parameters.frequency);
    if (kind.isStep)
      dynamic_cast<QORN::IntegralUserDefinedFilter &>(*filter).SetUserTaps(userTaps, tapsPerSymbol);
    else
      dynamic_cast<QORN::UserDefinedFilter &>(*filter).SetUserTaps(userTaps, tapsPerSymbol);
  }
  FilterDesign design{};
  design.kind = &kind;
  design.parameters = parameters;
  design.recommended = filter->GetRecommendedTapSize(rate, frequency, shape);
  int count = parameters.taps > 0 ? parameters.taps : design.recommended;
  if (kind.type == QORN::FIRFilterHDQPSKP25Measurement) count = 32; // its only length
  if (count > kMaxTaps)
    throw UsageError("--taps: the recommended " + Grouped(count) + " taps of " + kind.name +
                     " are more than " + Grouped(kMaxTaps) + "; give a number");
  if (count < 1 && kind.Takes(kTapsFrom))
    throw UsageError("--tap-rate: taps at " + Significant(parameters.tapRate, 12) +
                     " Hz cannot be resampled to " + Significant(parameters.rate, 12) + " Hz");
  if ((kind.Takes(kCutoff) || kind.Takes(kEdges)) && count > 0 && count < kLeastOfWindow)
    throw UsageError("--taps: " + std::string(kind.name) + " takes 5 or more");
  if (count < 1) throw UsageError("--taps is required for " + std::string(kind.name));
  filter->SetParameters(rate, frequency, shape, count);

  QORN::VecCplx32 taps;
  if (filter->IsComplexFilter()) {
    filter->GetTaps(taps);
  } else {
    QORN::VecReal32 real;
    filter->GetTaps(real);
    taps = QORN::VecCplx32(real);
  }
  double sum = 0.0;
  for (int i = 0; i < taps.GetSize(); ++i) {
    design.taps.emplace_back(taps[i].re, taps[i].im);
    design.isComplex = design.isComplex || taps[i].im != 0.0F;
    sum += std::norm(design.taps.back());
  }
  if (!(sum > 0.0 && std::isfinite(sum)))
    throw UsageError(std::string(kind.name) + ": all taps are zero or out of range with these parameters");
  design.delay = static_cast<double>(filter->GetDelay());
  return design;
}

QORN::VecCplx32 ReadTaps(const std::string &path) {
  const std::string option = "--taps-from";
  std::vector<std::complex<double>> taps;
  constexpr std::size_t kMost = std::size_t{64} * kMaxTaps + (1 << 20); // bytes, of comments too
  ReadNumberRows(option, path, kMost, [&](const std::string &place, const std::vector<double> &parts) {
    if (parts.size() > 2) throw UsageError(place + ": a tap is one number or two");
    taps.emplace_back(parts[0], parts.size() > 1 ? parts[1] : 0.0);
    if (taps.size() > static_cast<std::size_t>(kMaxTaps))
      throw UsageError(option + ": " + Quoted(path) + " has more than " + Grouped(kMaxTaps) + " taps");
  });
  if (taps.empty()) throw UsageError(option + ": " + Quoted(path) + " has no taps");
  QORN::VecCplx32 result(static_cast<int>(taps.size()));
  for (int i = 0; i < result.GetSize(); ++i) {
    const std::complex<double> tap = taps[static_cast<std::size_t>(i)];
    result[i] = {static_cast<float>(tap.real()), static_cast<float>(tap.imag())};
  }
  return result;
}

QORN::VecCplx32 ExampleTaps() {
  // An odd number of samples of a raised cosine in time.
  constexpr int kCount = 7;
  QORN::VecCplx32 taps(kCount);
  for (int i = 0; i < kCount; ++i)
    taps[i] = {static_cast<float>(0.25 * (1.0 - std::cos(6.283185307179586 * (i + 1) / (kCount + 1)))), 0.0F};
  return taps;
}

} // namespace tool
