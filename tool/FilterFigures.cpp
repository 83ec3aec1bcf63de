#include "FilterFigures.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "Text.h"

namespace tool {

namespace {

using Taps = std::vector<std::complex<double>>;

constexpr double kTurn = 6.283185307179586;
constexpr int kLeastPoints = 8192; // of the transform
constexpr int kPerLobe = 16;       // points from null to null, which are 1 / taps of the sampling rate apart

// The samples whose running sum the taps are, or the taps.
Taps PulseOf(const FilterDesign &design) {
  Taps pulse = design.taps;
  if (design.kind->isStep)
    for (std::size_t i = pulse.size() - 1; i > 0; --i) pulse[i] -= pulse[i - 1];
  return pulse;
}

struct Sums {
  std::complex<double> response, moment; // of h[k], and of k h[k] with k counted from the middle
};

double MiddleOf(const Taps &pulse) { return 0.5 * (static_cast<double>(pulse.size()) - 1.0); }

Sums SumsAt(const Taps &pulse, double cycles) {
  Sums sums;
  for (std::size_t k = 0; k < pulse.size(); ++k) {
    const auto place = static_cast<double>(k);
    const std::complex<double> term = pulse[k] * std::polar(1.0, -kTurn * std::fmod(cycles * place, 1.0));
    sums.response += term;
    sums.moment += (place - MiddleOf(pulse)) * term;
  }
  return sums;
}

double GainAt(const Taps &pulse, double cycles) { return std::abs(SumsAt(pulse, cycles).response); }

// The group delay is the real part of the quotient; counted from the middle, that loses least.
double DelayOf(const Sums &sums, double middle) {
  const double square = std::norm(sums.response);
  return square > 0.0 ? middle + (sums.moment * std::conj(sums.response)).real() / square : middle;
}

// The transform of the pulse, each sample times its weight, padded to so many points.
QORN::VecCplx64 TransformOf(const Taps &pulse, int points, const std::function<double(std::size_t)> &weight) {
  QORN::VecCplx64 padded(points);
  for (std::size_t k = 0; k < pulse.size(); ++k) {
    const std::complex<double> value = pulse[k] * weight(k);
    padded[static_cast<int>(k)] = {value.real(), value.imag()};
  }
  QORN::VecCplx64 transform;
  QORN::FT().Forward(transform, padded);
  return transform;
}

// Fills in gain and group delay.
void Transform(FilterFigures &f) {
  const int taps = static_cast<int>(f.pulse.size());
  int points = kLeastPoints;
  while (points < kPerLobe * taps) points *= 2;
  const double middle = MiddleOf(f.pulse);
  const QORN::VecCplx64 sum = TransformOf(f.pulse, points, [](std::size_t) { return 1.0; });
  const QORN::VecCplx64 moment =
      TransformOf(f.pulse, points, [&](std::size_t k) { return static_cast<double>(k) - middle; });
  f.spacing = f.design.parameters.rate / points;
  const int first = f.design.isComplex ? -points / 2 : 0;
  f.first = first * f.spacing;
  for (int i = first; i <= points / 2; ++i) {
    const QORN::Cplx64 h = sum[(i + points) % points];
    const QORN::Cplx64 m = moment[(i + points) % points];
    const Sums sums{{h.re, h.im}, {m.re, m.im}};
    f.gain.push_back(std::abs(sums.response));
    f.delay.push_back(DelayOf(sums, middle));
  }
}

// One side of the response: the points from the pass band on, downwards or upwards.
class Side {
public:
  Side(const FilterFigures &figures, std::size_t start, int direction)
      : m_figures(figures), m_start(start), m_direction(direction) {}

  // Where the gain falls to a level, or the end of the side.
  double EdgeAt(double level) const {
    const std::size_t last = LastAbove(level);
    const double above = m_figures.FrequencyOf(last);
    if (IsEnd(last)) return above;
    double in = above;
    double out = m_figures.FrequencyOf(Next(last));
    for (int i = 0; i < 30; ++i) {
      const double between = 0.5 * (in + out);
      (Gain(between) > level ? in : out) = between;
    }
    return 0.5 * (in + out);
  }

  // The first minimum behind the point where the gain falls to a level, and the highest gain behind it.
  std::optional<std::pair<double, double>> StopBand(double level) const {
    const std::vector<double> &gain = m_figures.gain;
    std::size_t at = LastAbove(level);
    while (!IsEnd(at) && gain[Next(at)] < gain[at]) at = Next(at);
    if (IsEnd(at)) return std::nullopt;
    const double null = Extreme(at, -1.0);
    std::size_t highest = at;
    for (; !IsEnd(at); at = Next(at))
      if (gain[Next(at)] > gain[highest]) highest = Next(at);
    return std::pair{null, Gain(Extreme(highest, 1.0))};
  }

private:
  bool IsEnd(std::size_t i) const { return m_direction < 0 ? i == 0 : i + 1 == m_figures.gain.size(); }
  std::size_t Next(std::size_t i) const { return m_direction < 0 ? i - 1 : i + 1; }

  double Gain(double frequency) const {
    return GainAt(m_figures.pulse, frequency / m_figures.design.parameters.rate);
  }

  std::size_t LastAbove(double level) const {
    std::size_t last = m_start;
    while (!IsEnd(last) && m_figures.gain[Next(last)] > level) last = Next(last);
    return last;
  }

  // The place of the only maximum (sign 1) or minimum (sign -1) beside a point, by thirds.
  double Extreme(std::size_t i, double sign) const {
    double left = m_figures.FrequencyOf(i == 0 ? 0 : i - 1);
    double right = m_figures.FrequencyOf(std::min(i + 1, m_figures.gain.size() - 1));
    for (int k = 0; k < 20; ++k) {
      const double third = (right - left) / 3.0;
      if (sign * Gain(left + third) < sign * Gain(right - third))
        left += third;
      else
        right -= third;
    }
    return 0.5 * (left + right);
  }

  const FilterFigures &m_figures;
  std::size_t m_start;
  int m_direction;
};

std::string EdgeText(double hertz, double resolution) {
  return hertz == 0.0 ? "0 Hz" : Frequency(hertz, resolution);
}

std::string BandText(const Band &band, double resolution) {
  return Quantity(band.Width(), "Hz") + ", from " + EdgeText(band.low, resolution) + " to " +
         EdgeText(band.high, resolution);
}

// A frequency that was given, without the digits of its rounding.
std::string GivenText(double hertz) {
  const Prefix prefix = PrefixFor(hertz);
  return Significant(hertz / prefix.factor, 9) + " " + prefix.letter + "Hz";
}

std::string TapText(const std::complex<double> &tap) {
  // Exponents without a zero in front.
  const auto text = [](double part) {
    std::string number = Significant(part, 6);
    const std::size_t zero = number.find("e-0");
    return zero == std::string::npos ? number : number.erase(zero + 2, 1);
  };
  if (tap.imag() == 0.0) return text(tap.real());
  return text(tap.real()) + (tap.imag() < 0.0 ? " - " : " + ") + text(std::fabs(tap.imag())) + "j";
}

std::size_t LargestTap(const Taps &taps) {
  const auto smaller = [](const std::complex<double> &a, const std::complex<double> &b) {
    return std::norm(a) < std::norm(b);
  };
  return static_cast<std::size_t>(std::max_element(taps.begin(), taps.end(), smaller) - taps.begin());
}

std::complex<double> SumOf(const Taps &taps) {
  std::complex<double> sum;
  for (const std::complex<double> &tap : taps) sum += tap;
  return sum;
}

double Decibels(double gain) { return QORN::UnitConversion::VoltageRatio2dB(gain); }

} // namespace

FilterFigures FiguresOf(const FilterDesign &design) {
  FilterFigures f{};
  f.design = design;
  f.pulse = PulseOf(design);
  Transform(f);
  const double rate = design.parameters.rate;
  const auto pass = design.PassFrequency();
  const std::size_t start =
      pass < 0.0 ? static_cast<std::size_t>(std::max_element(f.gain.begin(), f.gain.end()) - f.gain.begin())
                 : static_cast<std::size_t>(std::lround((pass - f.first) / f.spacing));
  f.passFrequency = pass < 0.0 ? f.FrequencyOf(start) : pass;
  f.passGain = GainAt(f.pulse, f.passFrequency / rate);
  f.gainAtZero = GainAt(f.pulse, 0.0);

  const double level3 = f.passGain * std::sqrt(0.5);
  const double level6 = f.passGain * 0.5;
  const Side below(f, start, -1);
  const Side above(f, start, 1);
  f.width3dB = {below.EdgeAt(level3), above.EdgeAt(level3)};
  f.width6dB = {below.EdgeAt(level6), above.EdgeAt(level6)};
  const auto take = [&](const Side &side, std::optional<double> &null) {
    const auto stop = side.StopBand(level6);
    if (!stop) return;
    null = stop->first;
    f.stopGain = std::max(f.stopGain.value_or(0.0), stop->second);
  };
  take(below, f.nullLow);
  take(above, f.nullHigh);

  f.delays = {f.delay[start], f.delay[start]};
  const auto include = [&](double delay) {
    f.delays = {std::min(f.delays.low, delay), std::max(f.delays.high, delay)};
  };
  for (const double edge : {f.width3dB.low, f.width3dB.high})
    include(DelayOf(SumsAt(f.pulse, edge / rate), MiddleOf(f.pulse)));
  for (std::size_t i = 0; i < f.gain.size(); ++i)
    if (f.FrequencyOf(i) > f.width3dB.low && f.FrequencyOf(i) < f.width3dB.high) include(f.delay[i]);
  return f;
}

std::string DecibelText(double gain, int decimals) {
  return gain > 0.0 ? Fixed(Decibels(gain), decimals) + " dB" : "none";
}

FigureTable TableOf(const FilterFigures &f) {
  const FilterDesign &design = f.design;
  const FilterParameters &p = design.parameters;
  const FilterKind &kind = *design.kind;
  const double resolution = p.rate * 1e-5;
  FigureTable table;
  const auto add = [&](const char *name, const std::string &value) { table.emplace_back(name, value); };
  const auto seconds = [&](double samples) { return Quantity(samples / p.rate, "s"); };
  add("Sampling rate", GivenText(p.rate));
  if (kind.Takes(kSymbolRate) || kind.symbolRate > 0.0)
    add("Symbol rate", GivenText(p.frequency) + ", " + Significant(design.SamplesPerSymbol(), 6) +
                           (design.SamplesPerSymbol() == 1.0 ? " sample" : " samples") + " per symbol");
  if (kind.Takes(kBandwidth)) add("Bandwidth", GivenText(p.frequency) + " in all");
  if (kind.Takes(kCutoff)) add("Cutoff", GivenText(p.frequency));
  if (kind.Takes(kEdges)) add("Cutoffs", GivenText(p.frequency) + " and " + GivenText(p.shape));
  const int count = static_cast<int>(design.taps.size());
  add("Taps", Grouped(count) + (design.recommended > 0 && design.recommended != count
                                    ? " (" + Grouped(design.recommended) + " recommended)"
                                    : ""));
  const std::size_t largest = LargestTap(design.taps);
  add("First tap", TapText(design.taps.front()));
  add("Largest tap", TapText(design.taps[largest]) + " at " + Grouped(static_cast<int>(largest)));
  if (kind.isStep)
    add("Last tap", TapText(design.taps.back()));
  else
    add("Sum of taps", TapText(SumOf(design.taps)));
  add("Delay", Significant(design.delay, 9) + " samples, " + seconds(design.delay));
  add(kind.isStep ? "Pulse gain at 0 Hz" : "Gain at 0 Hz", DecibelText(f.gainAtZero, 3));
  if (f.passFrequency != 0.0)
    add("Gain in pass band", DecibelText(f.passGain, 3) + " at " + Frequency(f.passFrequency, resolution));
  add("3 dB bandwidth", BandText(f.width3dB, resolution));
  add("6 dB bandwidth", BandText(f.width6dB, resolution));
  std::string nulls;
  for (const std::optional<double> &null : {f.nullLow, f.nullHigh})
    if (null) nulls += (nulls.empty() ? "" : " and ") + Frequency(*null, resolution);
  add("First null", nulls.empty() ? "none" : nulls);
  if (f.stopGain) add("Stop band", DecibelText(*f.stopGain / f.passGain, 1) + " relative to the pass band");
  const double ripple = f.delays.Width();
  add("Group delay ripple",
      Fixed(ripple, 3) + " samples" + (ripple < 5e-4 ? "" : ", " + seconds(ripple)) + " in the 3 dB band");
  return table;
}

void WriteText(std::ostream &out, const FilterFigures &f) {
  Line(out, "Filter", TitleOf(*f.design.kind, f.design.parameters));
  for (const auto &[name, value] : TableOf(f)) Line(out, name, value);
}

nlohmann::ordered_json JsonOf(const FilterFigures &f) {
  using Json = nlohmann::ordered_json;
  const FilterDesign &design = f.design;
  const FilterParameters &p = design.parameters;
  const FilterKind &kind = *design.kind;
  const auto decibels = [](double gain) { return gain > 0.0 ? Json(Decibels(gain)) : Json(nullptr); };
  const auto optional = [](const std::optional<double> &value) {
    return value ? Json(*value) : Json(nullptr);
  };
  const auto tap = [&](const std::complex<double> &value) {
    return design.isComplex ? Json::array({value.real(), value.imag()}) : Json(value.real());
  };
  const auto band = [](const Band &b) { return Json{{"low_hz", b.low}, {"high_hz", b.high}}; };
  Json report;
  report["filter"] = kind.name;
  report["sampling_rate_hz"] = p.rate;
  if (kind.Takes(kSymbolRate) || kind.symbolRate > 0.0) report["symbol_rate_hz"] = p.frequency;
  if (kind.Takes(kBandwidth)) report["bandwidth_hz"] = p.frequency;
  if (kind.Takes(kCutoff)) report["cutoff_hz"] = p.frequency;
  if (kind.Takes(kEdges)) report["cutoffs_hz"] = {p.frequency, p.shape};
  if (kind.Takes(kRolloff)) report["rolloff"] = p.shape;
  if (kind.Takes(kBt)) report["bt"] = p.shape;
  report["taps"] = design.taps.size();
  report["recommended_taps"] = design.recommended > 0 ? Json(design.recommended) : Json(nullptr);
  report["first_tap"] = tap(design.taps.front());
  report["largest_tap"] = tap(design.taps[LargestTap(design.taps)]);
  report["largest_tap_index"] = LargestTap(design.taps);
  report["sum_of_taps"] = tap(SumOf(design.taps));
  report["delay_samples"] = design.delay;
  report["response_of"] = kind.isStep ? "pulse" : "taps";
  report["gain_at_0_hz_db"] = decibels(f.gainAtZero);
  report["pass_frequency_hz"] = f.passFrequency;
  report["pass_gain_db"] = decibels(f.passGain);
  report["band_3db"] = band(f.width3dB);
  report["band_6db"] = band(f.width6dB);
  report["first_null_below_hz"] = optional(f.nullLow);
  report["first_null_above_hz"] = optional(f.nullHigh);
  report["stop_band_db"] = f.stopGain ? decibels(*f.stopGain / f.passGain) : Json(nullptr);
  report["group_delay_samples"] = {{"least", f.delays.low}, {"largest", f.delays.high}};
  return report;
}

void WriteCsv(std::ostream &out, const FilterFigures &f) {
  const FilterDesign &design = f.design;
  out << (design.isComplex ? "index,time_s,real,imaginary\n" : "index,time_s,tap\n");
  for (std::size_t i = 0; i < design.taps.size(); ++i) {
    const auto text = [](double part) { return Significant(part, 9); }; // all that a float tells
    out << i << ',' << Significant(static_cast<double>(i) / design.parameters.rate, 12) << ','
        << text(design.taps[i].real());
    if (design.isComplex) out << ',' << text(design.taps[i].imag());
    out << '\n';
  }
}

} // namespace tool
