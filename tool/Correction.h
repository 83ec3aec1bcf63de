// A table of level corrections over frequency.
#ifndef QORN_TOOL_CORRECTION_H
#define QORN_TOOL_CORRECTION_H

#include <qorn/qorn.h>

#include <string>

namespace tool {

/// How a table is interpolated.
struct InterpolationKind {
  const char *name;
  QORN::InterpolationType type;
};

/// The names, with commas between.
std::string InterpolationNames();

/// The kind of that name, in any case; null if there is none.
const InterpolationKind *FindInterpolation(const std::string &name);

/// The corrections of a text file, a row for each: a frequency in hertz, ascending from row to row, and what
/// is added there to a level, in decibels.
class Correction {
public:
  /// Throws UsageError, with the number of the line, if the file is no such table.
  Correction(const std::string &path, const InterpolationKind &kind);

  /// The factors for powers at the given frequencies. Throws UsageError if a correction is beyond 1000 dB,
  /// as a curve may be far from its table.
  QORN::VecReal64 FactorsAt(const QORN::VecReal64 &frequencies) const;

  const std::string &Path() const { return m_path; }
  const InterpolationKind &Kind() const { return m_kind; }
  int Rows() const { return m_frequencies.GetSize(); }
  double First() const { return m_frequencies[0]; } ///< hertz
  double Last() const { return m_frequencies.GetLastValue(); }

private:
  std::string m_path;
  InterpolationKind m_kind;
  QORN::VecReal64 m_frequencies;
  QORN::VecReal64 m_levels;
};

} // namespace tool

#endif
