#include "Correction.h"

#include <cmath>
#include <memory>
#include <new>
#include <vector>

#include "Failure.h"
#include "NumberRows.h"
#include "Text.h"

namespace tool {

namespace {

constexpr char kOption[] = "--correction";
constexpr double kMostDecibels = 1000.0;
constexpr std::size_t kMostRows = 1000000;

constexpr InterpolationKind kKinds[] = {
    {"linear", QORN::InterpLinear},
    {"nearest", QORN::InterpNearest},
    {"spline", QORN::InterpSpline},
    {"hermite", QORN::InterpCubicHermite},
};

QORN::VecReal64 VectorOf(const std::vector<double> &values) {
  QORN::VecReal64 result;
  result.Import(values.data(), static_cast<int>(values.size()));
  return result;
}

} // namespace

std::string InterpolationNames() {
  std::vector<std::string> names;
  for (const InterpolationKind &kind : kKinds) names.emplace_back(kind.name);
  return Joined(names);
}

const InterpolationKind *FindInterpolation(const std::string &name) {
  for (const InterpolationKind &kind : kKinds)
    if (kind.name == Lower(name)) return &kind;
  return nullptr;
}

Correction::Correction(const std::string &path, const InterpolationKind &kind) : m_path(path), m_kind(kind) {
  std::vector<double> frequencies, levels;
  constexpr std::size_t kMostBytes = 64 * kMostRows;
  ReadNumberRows(kOption, path, kMostBytes, [&](const std::string &place, const std::vector<double> &row) {
    if (row.size() != 2) throw UsageError(place + ": a row is a frequency in Hz and a correction in dB");
    if (!frequencies.empty() && row[0] == frequencies.back())
      throw UsageError(place + ": the frequency " + Significant(row[0], 15) +
                       " Hz is that of the row before");
    if (!frequencies.empty() && row[0] < frequencies.back())
      throw UsageError(place + ": the frequency " + Significant(row[0], 15) +
                       " Hz is below that of the row before, " + Significant(frequencies.back(), 15) + " Hz");
    if (std::fabs(row[1]) > kMostDecibels)
      throw UsageError(place + ": a correction of " + Significant(row[1], 6) + " dB is out of range");
    frequencies.push_back(row[0]);
    levels.push_back(row[1]);
    if (frequencies.size() > kMostRows)
      throw UsageError(std::string(kOption) + ": " + Quoted(path) + " has more than " +
                       Grouped(static_cast<std::int64_t>(kMostRows)) + " rows");
  });
  if (frequencies.size() < 2)
    throw UsageError(std::string(kOption) + ": " + Quoted(path) + " has fewer than two rows");
  m_frequencies = VectorOf(frequencies);
  m_levels = VectorOf(levels);
}

QORN::VecReal64 Correction::FactorsAt(const QORN::VecReal64 &frequencies) const {
  const std::unique_ptr<QORN::Interpolation> interpolation(
      QORN::InterpolationFactory().MakeInterpolation(m_kind.type));
  QORN::VecReal64 factors;
  if (interpolation->Interpolate(factors, m_frequencies, m_levels, frequencies) != 0) throw std::bad_alloc();
  for (int k = 0; k < factors.GetSize(); ++k) {
    if (!(std::fabs(factors[k]) <= kMostDecibels))
      throw UsageError(std::string(kOption) + ": the " + m_kind.name + " curve is out of range at " +
                       Significant(frequencies[k], 12) + " Hz; the table has " + Significant(First(), 12) +
                       " to " + Significant(Last(), 12) + " Hz");
    factors[k] = std::pow(10.0, factors[k] / 10.0);
  }
  return factors;
}

} // namespace tool
