#include "SignalKinds.h"

#include "Text.h"

namespace tool {

const std::vector<SignalKind> &Signals() {
  using Gen = QORN::BasebandSigGen;
  static const std::vector<SignalKind> signals = {
      {"cw", "Carrier", Gen::CW, kCarrier},
      {"am", "AM", Gen::AM, kModulation | kDepth},
      {"fm", "FM", Gen::FM, kModulation | kDeviation},
      {"pm", "PM", Gen::PM, kModulation | kPhaseDeviation},
      {"bpsk", "BPSK", Gen::BPSK, kSymbols | kShaping},
      {"qpsk", "QPSK", Gen::QPSK, kSymbols | kShaping},
      {"psk8", "8-PSK", Gen::PSK8, kSymbols | kShaping},
      {"psk16", "16-PSK", Gen::PSK16, kSymbols | kShaping},
      {"qam16", "16-QAM", Gen::QAM16, kSymbols | kShaping},
      {"qam64", "64-QAM", Gen::QAM64, kSymbols | kShaping},
      {"qam256", "256-QAM", Gen::QAM256, kSymbols | kShaping},
      {"fsk2", "2-FSK", Gen::FSK2, kSymbols | kDeviation},
      {"fsk4", "4-FSK", Gen::FSK4, kSymbols | kDeviation},
      {"fsk8", "8-FSK", Gen::FSK8, kSymbols | kDeviation},
      {"fsk16", "16-FSK", Gen::FSK16, kSymbols | kDeviation},
      {"pulse", "Pulses", Gen::Pulse, kPulses},
      {"chirp", "Chirps", Gen::Chirp, kPulses | kSweep},
      {"80211a", "802.11a burst", Gen::Custom, kFrame},
  };
  return signals;
}

std::string SignalNames() {
  std::vector<std::string> names;
  for (const SignalKind &kind : Signals()) names.emplace_back(kind.name);
  return Joined(names);
}

const SignalKind *FindSignal(const std::string &name) {
  for (const SignalKind &kind : Signals())
    if (PlainName(kind.name) == PlainName(name)) return &kind;
  return nullptr;
}

const std::vector<Scheme> &Schemes() {
  using Gen = QORN::OFDMSigGen;
  static const std::vector<Scheme> schemes = {
      {"6", Gen::Mbps6, Gen::BPSK, 24},     {"9", Gen::Mbps9, Gen::BPSK, 36},
      {"12", Gen::Mbps12, Gen::QPSK, 48},   {"18", Gen::Mbps18, Gen::QPSK, 72},
      {"24", Gen::Mbps24, Gen::QAM16, 96},  {"36", Gen::Mbps36, Gen::QAM16, 144},
      {"48", Gen::Mbps48, Gen::QAM64, 192}, {"54", Gen::Mbps54, Gen::QAM64, 216},
  };
  return schemes;
}

std::string SignalParameters::Title() const {
  std::string title = kind->title;
  const auto add = [&](const std::string &text) { title += ", " + text; };
  if (kind->Takes(kCarrier)) add(Quantity(frequency, "Hz"));
  if (kind->Takes(kModulation))
    add(std::string(triangle ? "triangle" : "cosine") + " of " + Quantity(modFrequency, "Hz"));
  if (kind->Takes(kSymbols)) add(Quantity(symbolRate, "Bd"));
  if (kind->Takes(kShaping)) add("roll-off " + Significant(rolloff, 6));
  if (kind->Takes(kDepth)) add("depth " + Significant(depth, 6) + " %");
  if (kind->Takes(kDeviation)) add("deviation " + Quantity(deviation, "Hz"));
  if (kind->Takes(kPhaseDeviation)) add("deviation " + Significant(phaseDeviation, 6) + "°");
  if (kind->Takes(kPulses)) add(Quantity(width, "s") + " every " + Quantity(period, "s"));
  if (kind->Takes(kSweep)) add("sweep " + Quantity(sweep, "Hz"));
  if (kind->Takes(kFrame)) add(std::string(scheme->rate) + " Mbit/s");
  return title;
}

} // namespace tool
