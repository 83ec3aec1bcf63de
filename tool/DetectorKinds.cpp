#include "DetectorKinds.h"

#include <vector>

#include "Text.h"

namespace tool {

namespace {

constexpr DetectorKind kDetectors[] = {
    {"peak", QORN::DetectorPeak},
    {"min", QORN::DetectorMin},
    {"peak-and-min", QORN::DetectorPeakAndMin},
    {"average", QORN::DetectorAverage},
    {"rms", QORN::DetectorRms},
    {"log-average", QORN::DetectorLogAverage},
    {"sample", QORN::DetectorPointSample},
};

} // namespace

std::string DetectorNames() {
  std::vector<std::string> names;
  for (const DetectorKind &kind : kDetectors) names.emplace_back(kind.name);
  return Joined(names);
}

const DetectorKind *FindDetector(const std::string &name) {
  for (const DetectorKind &kind : kDetectors)
    if (PlainName(kind.name) == PlainName(name)) return &kind;
  return nullptr;
}

} // namespace tool
