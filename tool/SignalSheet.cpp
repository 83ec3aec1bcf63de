#include "SignalSheet.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "BlockTransform.h"
#include "Constellation.h"
#include "Levels.h"
#include "Panel.h"
#include "Png.h"
#include "Svg.h"
#include "Text.h"

namespace tool {

namespace {

constexpr double kWidth = 1000.0;
constexpr double kMargin = 24.0;
constexpr Box kSpectrum = {76.0, 100.0, 596.0, 400.0};
constexpr Box kSquare = {674.0, 100.0, 974.0, 400.0};
constexpr Box kEnvelope = {76.0, 482.0, 974.0, 642.0};
constexpr Box kSpectrogram = {76.0, 724.0, 974.0, 964.0};
constexpr double kBelow = 46.0; // the labels of the last panel
constexpr double kPi = 3.141592653589793;

constexpr char kStyles[] = "    .curve { stroke: #1c4f9c; stroke-width: 1.2 }\n"
                           "    .hold { stroke: #e59a3c; stroke-width: 1.1 }\n"
                           "    .symbol { fill: #1c4f9c; fill-opacity: 0.55 }\n"
                           "    .ideal { stroke: #b3261e; stroke-width: 1; fill: none }\n";

// What a sheet shows of a signal at the right.
enum class Detail { kConstellation, kFrequency, kPhase };

Detail DetailOf(const SignalKind &kind) {
  if (kind.Takes(kShaping) || kind.IsBurst()) return Detail::kConstellation;
  return kind.Takes(kDeviation) || kind.Takes(kSweep) ? Detail::kFrequency : Detail::kPhase;
}

// A level of a power in dBm, and what stands for no power.
double Dbm(double power) { return power > 0.0 ? LevelOf(Unit::kDbm, power) : -999.0; }

// As many values lie below it as the share tells.
double Quantile(std::vector<double> values, double share) {
  const auto place =
      values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

// Dark blue for the weakest, the blue and the orange of the traces, and light for the strongest.
Palette Heat() {
  constexpr Colour kStops[] = {{11, 22, 51}, {28, 79, 156}, {229, 154, 60}, {255, 246, 224}};
  constexpr double kPlaces[] = {0.0, 0.45, 0.8, 1.0};
  Palette palette{};
  for (std::size_t i = 0; i < palette.size(); ++i) {
    const double at = static_cast<double>(i) / 255.0;
    std::size_t stop = 1;
    while (at > kPlaces[stop]) ++stop;
    const double share = (at - kPlaces[stop - 1]) / (kPlaces[stop] - kPlaces[stop - 1]);
    const auto mixed = [&](std::uint8_t from, std::uint8_t to) {
      return static_cast<std::uint8_t>(std::lround(from + share * (to - from)));
    };
    const Colour &a = kStops[stop - 1];
    const Colour &b = kStops[stop];
    palette[i] = {mixed(a.red, b.red), mixed(a.green, b.green), mixed(a.blue, b.blue)};
  }
  return palette;
}

class Sheet {
public:
  Sheet(std::ostream &out, const SignalParameters &parameters, const QORN::VecCplx32 &samples)
      : p(parameters), x(samples), count(samples.GetSize()),
        svg(out, kWidth, (p.kind->IsBurst() ? kSpectrogram.bottom : kEnvelope.bottom) + kBelow, p.Title(),
            kStyles) {
    power.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
      const auto re = static_cast<double>(x[i].re), im = static_cast<double>(x[i].im);
      power.push_back(re * re + im * im);
    }
  }

  void Draw() {
    DrawHead();
    DrawSpectrum();
    switch (DetailOf(*p.kind)) {
    case Detail::kConstellation:
      DrawConstellation();
      break;
    case Detail::kFrequency:
      DrawFrequency();
      break;
    case Detail::kPhase:
      DrawPhase();
      break;
    }
    if (p.kind->IsBurst() || p.repeats > 1 || p.gap > 0)
      DrawLevels();
    else
      DrawEnvelope();
    if (p.kind->IsBurst()) DrawSpectrogram();
    svg.End();
  }

private:
  double Seconds(double samples) const { return samples / p.rate; }

  void DrawHead() {
    svg.Text(kMargin, 32, "class=\"title\"", p.Title());
    std::string text = "Sampling rate " + Quantity(p.rate, "Hz") + " · level " + Fixed(p.level, 2) + " dBm";
    if (p.offset != 0.0) text += " · offset " + Quantity(p.offset, "Hz");
    if (p.addNoise) text += " · noise " + Significant(p.noise, 6) + " dB";
    text +=
        " · " + Grouped(p.Total()) + " samples, " + Quantity(Seconds(static_cast<double>(p.Total())), "s");
    if (p.repeats > 1) text += ", " + Grouped(p.repeats) + " signals";
    if (p.Total() > count) text += ", of which the first " + Grouped(count) + " show";
    svg.Text(kMargin, 54, "class=\"quiet\"", text);
  }

  // Half the width of the band that a signal may fill, with something beside it.
  double HalfBand() const {
    const auto turns = [](double degrees) { return degrees * kPi / 180.0; };
    if (p.kind->Takes(kDepth)) return 8.0 * p.modFrequency;
    if (p.kind->Takes(kPhaseDeviation)) return 4.0 * (turns(p.phaseDeviation) + 2.0) * p.modFrequency;
    if (p.kind->Takes(kModulation)) return 2.0 * (p.deviation + 4.0 * p.modFrequency);
    if (p.kind->Takes(kShaping)) return 2.5 * p.symbolRate;
    if (p.kind->Takes(kSymbols)) return 2.0 * p.deviation + 4.0 * p.symbolRate;
    if (p.kind->Takes(kPulses)) return std::fabs(p.sweep) + 12.0 / p.width;
    return p.rate;
  }

  // All frequencies, unless the signal would be a line among them.
  Scale FrequencyScale() const {
    const double half = std::max(HalfBand(), 1e-4 * p.rate);
    if (2.0 * half > 0.6 * p.rate) return {-0.5 * p.rate, 0.5 * p.rate, kSpectrum.left, kSpectrum.right};
    const double middle = std::clamp(p.offset, half - 0.5 * p.rate, 0.5 * p.rate - half);
    return {middle - half, middle + half, kSpectrum.left, kSpectrum.right};
  }

  // Of 2048 points, or fewer so that there are several blocks, or more so that the band has some hundreds.
  void DrawSpectrum() {
    const Scale f = FrequencyScale();
    int block = 2048;
    while (block > 16 && 8 * block > count) block /= 2;
    while (2 * block <= count && block * (f.high - f.low) < 500.0 * p.rate) block *= 2;
    QORN::VecReal64 mean(block), hold(block), powers;
    const WindowKind &window = *FindWindow("blackman-harris");
    if (count >= block) {
      const BlockTransform transform = WholeSpectrum(window, block);
      QORN::VecCplx32 part(block);
      const int blocks = count / block;
      for (int b = 0; b < blocks; ++b) {
        QORN::TargetLib::Copy_32fc(x.GetPtr(b * block), part.GetPtr(), block);
        transform(powers, part);
        for (int k = 0; k < block; ++k) {
          mean[k] += powers[k] / blocks;
          hold[k] = std::max(hold[k], powers[k]);
        }
      }
    }
    const double bin = p.rate / block;
    const int first = std::max(static_cast<int>(std::floor(f.low / bin)) + block / 2, 0);
    const int last = std::min(static_cast<int>(std::ceil(f.high / bin)) + block / 2, block - 1);
    std::vector<double> means, holds;
    for (int k = first; k <= last; ++k) {
      means.push_back(Dbm(mean[k]));
      holds.push_back(Dbm(hold[k]));
    }
    const double top = *std::max_element(holds.begin(), holds.end());
    const Scale y = LevelScale(kSpectrum, top, Quantile(means, 0.02), 120.0);
    const double noiseBandwidth = bin * static_cast<double>(MakeWindow(window, block)->GetENBW());
    DrawFrequencyGrid(svg, kSpectrum, "Spectrum", f, y, RoundStep(y.high - y.low, 8),
                      "dBm in " + Quantity(noiseBandwidth, "Hz") + ", mean blue, highest orange");
    svg.BeginClip(kSpectrum);
    const auto trace = [&](const char *style, const std::vector<double> &levels) {
      svg.Trace(style, Thinned(0, levels.size() - 1, [&](std::size_t k) {
                  return Point{f((first + static_cast<int>(k) - block / 2) * bin), Shown(y, levels[k])};
                }));
    };
    trace("hold", holds);
    trace("curve", means);
    svg.EndClip();
    svg.Rectangle("frame", kSpectrum);
  }

  // Round levels from about `low`, but not more than `most` below the top, to above the top.
  static Scale LevelScale(const Box &box, double top, double low, double most) {
    if (top < -900.0) return {-200.0, -100.0, box.bottom, box.top};
    const double bottom = std::clamp(low, top - most, top - 20.0);
    return {10.0 * std::floor((bottom - 3.0) / 10.0), 10.0 * std::ceil((top + 3.0) / 10.0), box.bottom,
            box.top};
  }

  // In the picture, though perhaps not in the box.
  static double Shown(const Scale &y, double value) {
    return std::clamp(y(value), std::min(y.from, y.to) - 40.0, std::max(y.from, y.to) + 40.0);
  }

  void DrawConstellation() {
    const Constellation c = Receive(p, x.GetSize() > p.samples ? FirstSignal() : x);
    double reach = 0.0;
    for (const auto &z : c.ideal) reach = std::max({reach, std::fabs(z.real()), std::fabs(z.imag())});
    reach *= 1.35;
    const Scale re = {-reach, reach, kSquare.left, kSquare.right};
    const Scale im = {-reach, reach, kSquare.bottom, kSquare.top};
    const std::string result = c.points.empty()
                                   ? "too short to be received"
                                   : Grouped(static_cast<std::int64_t>(c.points.size())) +
                                         (p.kind->IsBurst() ? " points, EVM " : " symbols, EVM ") +
                                         Significant(100.0 * c.evm, 2) + " %";
    DrawGrid(svg, kSquare, "Constellation", re, 1.0,
             p.kind->IsBurst() ? "Data carriers" : "Symbols behind the matched filter", im,
             RoundStep(2.0 * reach, 5), result);
    svg.BeginClip(kSquare);
    for (const auto &z : c.points)
      svg.Path("symbol", {re(z.real()) - 1.6, im(z.imag())}, "a1.6 1.6 0 1 0 3.2 0a1.6 1.6 0 1 0 -3.2 0");
    const bool dense = c.ideal.size() > 64;
    for (const auto &z : c.ideal)
      svg.Path("ideal", {re(z.real()) - (dense ? 3.0 : 4.5), im(z.imag())},
               dense ? "h6m-3 -3v6" : "h9m-4.5 -4.5v9");
    svg.EndClip();
    svg.Rectangle("frame", kSquare);
  }

  QORN::VecCplx32 FirstSignal() const {
    QORN::VecCplx32 first(x);
    first.Resize(p.samples);
    return first;
  }

  // So many samples show what the signal does.
  int WindowOf() const {
    double samples = count;
    if (p.kind->Takes(kCarrier))
      samples = p.frequency == 0.0 ? 1000.0 : 8.0 * p.rate / std::fabs(p.frequency);
    else if (p.kind->Takes(kModulation))
      samples = 4.0 * p.rate / p.modFrequency;
    else if (p.kind->Takes(kSymbols))
      samples = (p.kind->Takes(kShaping) ? 60.0 : 24.0) * p.rate / p.symbolRate;
    else if (p.kind->Takes(kPulses))
      samples = 3.5 * p.rate * std::max(p.period, p.width);
    return static_cast<int>(std::min<double>(std::max(samples, 32.0), std::min(count, p.samples)));
  }

  Scale TimeScale(const Box &box, int samples) const {
    return {0.0, Seconds(std::max(samples - 1, 1)), box.left, box.right};
  }

  void DrawTimeGrid(const Box &box, const char *heading, const Scale &t, const Scale &y, double yStep,
                    const std::string &yLabel, double yUnit = 1.0) {
    const Prefix prefix = PrefixFor(t.high);
    DrawGrid(svg, box, heading, t, prefix.factor, std::string("Time (") + prefix.letter + "s)", y, yStep,
             yLabel, yUnit);
  }

  // Whether a sample has enough power for its phase to tell something.
  bool Counts(int i, double least) const { return power[static_cast<std::size_t>(i)] > least; }

  double LeastPower(int samples) const {
    return 0.01 * *std::max_element(power.begin(), power.begin() + samples);
  }

  double PhaseStep(int i) const {
    const QORN::Cplx32 a = x[i];
    const QORN::Cplx32 b = x[i + 1];
    const auto re = static_cast<double>(a.re), im = static_cast<double>(a.im);
    const auto nextRe = static_cast<double>(b.re), nextIm = static_cast<double>(b.im);
    return std::atan2(nextIm * re - nextRe * im, nextRe * re + nextIm * im);
  }

  void DrawFrequency() {
    int samples = WindowOf();
    const double least = LeastPower(samples);
    const auto counts = [&](int i) { return Counts(i, least) && Counts(i + 1, least); };
    int first = 0;
    if (p.kind->Takes(kSweep)) { // the first pulse
      while (first < samples - 1 && !counts(first)) ++first;
      int end = first;
      while (end < samples - 1 && counts(end)) ++end;
      samples = end + 1;
    }
    const Scale t = {Seconds(first), Seconds(std::max(samples - 1, first + 1)), kSquare.left, kSquare.right};
    const double swing = p.kind->Takes(kSweep) ? 0.5 * std::fabs(p.sweep) : p.deviation;
    const double half = std::max(1.4 * swing, 1e-3 * p.rate);
    const Scale y = {p.offset - half, p.offset + half, kSquare.bottom, kSquare.top};
    const Prefix prefix = PrefixFor(std::fabs(p.offset) + half);
    DrawTimeGrid(kSquare, "Frequency", t, y, RoundStep(2.0 * half, 8), std::string(prefix.letter) + "Hz",
                 prefix.factor);
    svg.BeginClip(kSquare);
    DrawPieces(
        "curve", samples - 1, counts, [](int) { return false; },
        [&](int i) {
          return Point{t(Seconds(i + 0.5)), Shown(y, PhaseStep(i) * p.rate / (2.0 * kPi))};
        });
    svg.EndClip();
    svg.Rectangle("frame", kSquare);
  }

  // Traces of the samples that count, without the lines at the breaks.
  template <class CountsAt, class BreaksAt, class At>
  void DrawPieces(const char *style, int samples, const CountsAt &counts, const BreaksAt &breaksBehind,
                  const At &at) {
    for (int from = 0; from < samples;) {
      if (!counts(from)) {
        ++from;
        continue;
      }
      int to = from;
      while (to + 1 < samples && counts(to + 1) && !breaksBehind(to)) ++to;
      svg.Trace(style, Thinned(0, static_cast<std::size_t>(to - from),
                               [&](std::size_t k) { return at(from + static_cast<int>(k)); }));
      from = to + 1;
    }
  }

  void DrawPhase() {
    const int samples = WindowOf();
    const Scale t = TimeScale(kSquare, samples);
    std::vector<double> degrees;
    for (int i = 0; i < samples; ++i)
      degrees.push_back(std::atan2(static_cast<double>(x[i].im), static_cast<double>(x[i].re)) * 180.0 / kPi);
    const bool follows = p.kind->Takes(kPhaseDeviation); // beyond half a turn
    Scale y = {-180.0, 180.0, kSquare.bottom, kSquare.top};
    if (follows) {
      for (int i = 1; i < samples; ++i)
        degrees[static_cast<std::size_t>(i)] =
            degrees[static_cast<std::size_t>(i) - 1] + PhaseStep(i - 1) * 180.0 / kPi;
      const auto [low, high] = std::minmax_element(degrees.begin(), degrees.end());
      const double margin = std::max(0.15 * (*high - *low), 5.0);
      y = {*low - margin, *high + margin, kSquare.bottom, kSquare.top};
    }
    DrawTimeGrid(kSquare, "Phase", t, y, follows ? RoundStep(y.high - y.low, 8) : 45.0, "degrees");
    const double least = LeastPower(samples);
    const auto value = [&](int i) { return degrees[static_cast<std::size_t>(i)]; };
    svg.BeginClip(kSquare);
    DrawPieces(
        p.kind->Takes(kPulses) ? "curve bold" : "curve", samples, [&](int i) { return Counts(i, least); },
        [&](int i) { return !follows && std::fabs(value(i + 1) - value(i)) > 180.0; },
        [&](int i) {
          return Point{t(Seconds(i)), Shown(y, value(i))};
        });
    svg.EndClip();
    svg.Rectangle("frame", kSquare);
  }

  void DrawEnvelope() {
    const int samples = WindowOf();
    const Scale t = TimeScale(kEnvelope, samples);
    const double top = std::sqrt(*std::max_element(power.begin(), power.begin() + samples));
    const double high = top > 0.0 ? 1.12 * top : 1.0;
    const Scale y = {0.0, high, kEnvelope.bottom, kEnvelope.top};
    const Prefix prefix = PrefixFor(high);
    DrawTimeGrid(kEnvelope, "Envelope", t, y, RoundStep(high, 5), std::string(prefix.letter) + "V",
                 prefix.factor);
    svg.BeginClip(kEnvelope);
    svg.Trace("curve", Thinned(0, static_cast<std::size_t>(samples - 1), [&](std::size_t i) {
                return Point{t(Seconds(static_cast<double>(i))), y(std::sqrt(power[i]))};
              }));
    svg.EndClip();
    svg.Rectangle("frame", kEnvelope);
  }

  // The envelope of all in dBm: in each column the mean and the largest power.
  void DrawLevels() {
    const int columns = std::min(count, 600);
    std::vector<double> means, peaks;
    for (int c = 0; c < columns; ++c) {
      const auto first = power.begin() + std::int64_t{count} * c / columns;
      const auto end = power.begin() + std::int64_t{count} * (c + 1) / columns;
      double sum = 0.0;
      double most = 0.0;
      for (auto i = first; i != end; ++i) {
        sum += *i;
        most = std::max(most, *i);
      }
      means.push_back(Dbm(sum / static_cast<double>(end - first)));
      peaks.push_back(Dbm(most));
    }
    const Scale t = TimeScale(kEnvelope, count);
    const double top = *std::max_element(peaks.begin(), peaks.end());
    const Scale y = LevelScale(kEnvelope, top, Quantile(means, 0.02), 70.0);
    DrawTimeGrid(kEnvelope, "Envelope", t, y, RoundStep(y.high - y.low, 6), "dBm, mean blue, peaks orange");
    svg.BeginClip(kEnvelope);
    const auto trace = [&](const char *style, const std::vector<double> &levels) {
      std::vector<Point> points;
      for (int c = 0; c < columns; ++c)
        points.push_back(
            {t(Seconds((c + 0.5) / columns * count)), Shown(y, levels[static_cast<std::size_t>(c)])});
      svg.Trace(style, points);
    };
    trace("hold", peaks);
    trace("curve", means);
    svg.EndClip();
    svg.Rectangle("frame", kEnvelope);
  }

  void DrawSpectrogram() {
    int points = 256;
    while (points > 32 && 64 * points > count) points /= 2;
    const Scale t = TimeScale(kSpectrogram, count);
    const Scale f = {-0.5 * p.rate, 0.5 * p.rate, kSpectrogram.bottom, kSpectrogram.top};
    const Prefix prefix = PrefixFor(f.high);
    DrawTimeGrid(kSpectrogram, "Spectrogram", t, f, RoundStep(p.rate, 8), "", prefix.factor);
    if (count >= points) DrawRaster(points);
    svg.TextUpwards(20, 0.5 * (kSpectrogram.top + kSpectrogram.bottom),
                    std::string("Frequency (") + prefix.letter + "Hz)");
    svg.Rectangle("frame", kSpectrogram);
  }

  // In each column the mean of up to four spectra from its time on.
  void DrawRaster(int points) {
    constexpr int kColumns = 449;
    constexpr int kMostBlocks = 4;
    const BlockTransform transform = WholeSpectrum(*FindWindow("hann"), points);
    QORN::VecCplx32 part(points);
    QORN::VecReal64 powers;
    std::vector<double> levels; // column by column
    const double hop = static_cast<double>(count) / kColumns;
    const int blocks = std::clamp(static_cast<int>(hop / points), 1, kMostBlocks);
    for (int c = 0; c < kColumns; ++c) {
      std::vector<double> sums(static_cast<std::size_t>(points));
      for (int b = 0; b < blocks; ++b) {
        const double middle = (c + (b + 0.5) / blocks) * hop;
        const int first = std::clamp(static_cast<int>(middle) - points / 2, 0, count - points);
        QORN::TargetLib::Copy_32fc(x.GetPtr(first), part.GetPtr(), points);
        transform(powers, part);
        for (int k = 0; k < points; ++k) sums[static_cast<std::size_t>(k)] += powers[k] / blocks;
      }
      for (const double sum : sums) levels.push_back(Dbm(sum));
    }
    const double top = Quantile(levels, 0.9995);
    const double low = std::clamp(Quantile(levels, 0.1) - 3.0, top - 70.0, top - 20.0);
    Raster raster{kColumns, points, {}};
    for (int row = points - 1; row >= 0; --row)
      for (int c = 0; c < kColumns; ++c) {
        const double level = levels[static_cast<std::size_t>(c * points + row)];
        raster.pixels.push_back(static_cast<std::uint8_t>(
            std::lround(255.0 * std::clamp((level - low) / (top - low), 0.0, 1.0))));
      }
    svg.Image(kSpectrogram, PngOf(raster, Heat()));
    DrawColours(low, top, p.rate / points * 1.5);
  }

  // The key of the colours, above the box.
  void DrawColours(double low, double top, double noiseBandwidth) {
    Raster raster{256, 1, {}};
    for (int i = 0; i < 256; ++i) raster.pixels.push_back(static_cast<std::uint8_t>(i));
    const Box key = {kSpectrogram.right - 300.0, kSpectrogram.top - 20.0, kSpectrogram.right - 170.0,
                     kSpectrogram.top - 10.0};
    svg.Image(key, PngOf(raster, Heat()));
    svg.Rectangle("frame", key);
    svg.Text(key.left - 6, key.bottom, "class=\"quiet tick\" text-anchor=\"end\"", Fixed(low, 0));
    svg.Text(key.right + 6, key.bottom, "class=\"quiet tick\"",
             Fixed(top, 0) + " dBm in " + Quantity(noiseBandwidth, "Hz"));
  }

  const SignalParameters &p;
  const QORN::VecCplx32 &x;
  int count;
  std::vector<double> power; // squares of volts, sample by sample
  Svg svg;
};

} // namespace

void WriteSheet(std::ostream &out, const SignalParameters &parameters, const QORN::VecCplx32 &start) {
  Sheet(out, parameters, start).Draw();
}

} // namespace tool
