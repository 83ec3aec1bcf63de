// The test signals by the names that the command line knows, and what each is made from.
#ifndef QORN_TOOL_SIGNALKINDS_H
#define QORN_TOOL_SIGNALKINDS_H

#include <qorn/qorn.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

/// The options that a kind may take beside those that all take.
enum SignalOption : unsigned {
  kCarrier = 1,
  kModulation = 2, ///< --mod-frequency and --triangle
  kDepth = 4,
  kDeviation = 8,
  kPhaseDeviation = 16,
  kSymbols = 32,
  kShaping = 64, ///< --rolloff
  kPulses = 128, ///< --width, --period and --sharp
  kSweep = 256,
  kFrame = 512, ///< --mcs, --frame-rate and --guard
};

struct SignalKind {
  const char *name;
  const char *title;
  QORN::BasebandSigGen::SignalType type; ///< Custom is the burst of OFDMSigGen
  unsigned takes;                        ///< SignalOption joined

  bool Takes(SignalOption option) const { return (takes & option) != 0; }
  bool IsBurst() const { return type == QORN::BasebandSigGen::Custom; }
};

/// Those that the library makes.
const std::vector<SignalKind> &Signals();

/// The names, with commas between.
std::string SignalNames();

/// The signal of that name, in any case and with or without hyphens; null if there is none.
const SignalKind *FindSignal(const std::string &name);

/// A scheme of the burst.
struct Scheme {
  const char *rate; ///< Mbit/s
  QORN::OFDMSigGen::McsType type;
  QORN::BasebandSigGen::SignalType map; ///< of the data carriers
  int bits;                             ///< data bits of a symbol
};
const std::vector<Scheme> &Schemes();

/// What a recording is made of. Parameters that the kind does not take have values that do not matter.
struct SignalParameters {
  const SignalKind *kind;
  double rate;             ///< samples per second
  double level;            ///< dBm
  double offset;           ///< hertz
  double noise;            ///< dB
  double frequency;        ///< hertz
  double modFrequency;     ///< hertz
  double depth;            ///< percent
  double deviation;        ///< hertz
  double phaseDeviation;   ///< degrees
  double symbolRate;       ///< hertz
  double rolloff;          ///< 0 to 1
  double width, period;    ///< seconds
  double sweep;            ///< hertz
  double frameRate, guard; ///< hertz, and the fraction of a symbol
  const Scheme *scheme;
  bool addNoise, triangle, sharp, fixedPhase;
  unsigned seed;
  int samples;          ///< of one signal
  std::int64_t gap;     ///< samples behind each
  std::int64_t repeats; ///< signals

  std::int64_t Total() const { return repeats * (samples + gap); }

  /// "QPSK, 2 MHz, roll-off 0.22".
  std::string Title() const;
};

} // namespace tool

#endif
