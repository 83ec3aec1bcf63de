// Test signals, made piece by piece.
#ifndef QORN_TOOL_SIGNALSOURCE_H
#define QORN_TOOL_SIGNALSOURCE_H

#include <qorn/qorn.h>

#include <cstdint>

#include "SignalKinds.h"

namespace tool {

/// The samples of a recording: signal after signal of one generator, each with a gap behind it. The first is
/// the first that a new generator of the library makes, to the bit. With noise there is noise in the gaps as
/// well. The memory that it takes is that of one signal.
class SignalSource {
public:
  explicit SignalSource(const SignalParameters &parameters);

  /// Fills block with the samples that follow, in volts, or gives false at the end. A signal comes as one
  /// block, a gap as one or several.
  bool Next(QORN::VecCplx32 &block);

private:
  // The burst's generator makes all other signals as well.
  class Generator : public QORN::OFDMSigGen {
  public:
    explicit Generator(const SignalParameters &parameters);
  };

  SignalParameters m_parameters;
  Generator m_generator;
  std::int64_t m_signalsLeft;
  std::int64_t m_gapLeft = 0;
};

} // namespace tool

#endif
