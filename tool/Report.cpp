#include "Report.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "Text.h"

namespace tool {

namespace {

std::string DensityText(const Measurement &m, Unit unit) {
  const double level = LevelOf(unit, m.noiseFloor / m.noiseBandwidth);
  if (unit == Unit::kVolt) return Quantity(level, DensityNameOf(unit));
  return Fixed(level, 2) + " " + DensityNameOf(unit);
}

nlohmann::ordered_json LevelOrNull(Unit unit, double power) {
  if (power <= 0.0) return nullptr;
  return LevelOf(unit, power);
}

} // namespace

void WriteText(std::ostream &out, const Recording &recording, const Measurement &m, Unit unit) {
  const std::int64_t used = m.blocks * m.setup.block;
  Line(out, "Recording", Printable(recording.Path()));
  Line(out, "Centre", FrequencyInFull(m.centre, m.spacing));
  if (m.setup.zoom)
    Line(out, "Span", FrequencyInFull(m.setup.zoom->span, m.spacing));
  else if (m.recordedSpan > 0.0)
    Line(out, "Span", Quantity(m.recordedSpan, "Hz"));
  Line(out, "Sampling rate", Quantity(m.rate, "Hz"));
  Line(out, "Samples",
       Grouped(used) + " from sample " + Grouped(m.setup.start) + " on, " +
           Quantity(static_cast<double>(used) / m.rate, "s") +
           (used < m.setup.count ? "; " + Grouped(m.setup.count - used) + " left over" : ""));
  if (m.polarFrames > 0) Line(out, "Polar frames", Grouped(m.polarFrames));
  const std::string window = std::string(", ") + m.setup.window->name + " window";
  if (m.setup.zoom) {
    Line(out, "Points", Grouped(m.Points()) + ", " + Quantity(m.spacing, "Hz") + " apart");
    Line(out, "Blocks", Grouped(m.blocks) + " of " + Grouped(m.setup.block) + " samples" + window);
  } else {
    Line(out, "Points", Grouped(m.Points()) + window);
    Line(out, "Blocks", Grouped(m.blocks));
    Line(out, "Bin spacing", Quantity(m.spacing, "Hz"));
  }
  if (m.setup.detection) {
    const Detection &detection = *m.setup.detection;
    Line(out, "Trace points",
         Grouped(detection.PointsOf(m.Points())) + ", " + Quantity(detection.Step() * m.spacing, "Hz") +
             " apart, " + detection.kind->name + " of " + Grouped(detection.ratio));
  }
  if (m.setup.correction) {
    const Correction &table = *m.setup.correction;
    Line(out, "Correction",
         Printable(table.Path()) + ", " + table.Kind().name + ", " +
             FrequencyInFull(table.First(), m.spacing) + " to " + FrequencyInFull(table.Last(), m.spacing));
  }
  Line(out, "Resolution bandwidth", Quantity(m.resolutionBandwidth, "Hz"));
  Line(out, m.setup.zoom ? "Power in span" : "Total power", LevelText(unit, m.totalPower));
  if (m.noiseFloor > 0.0)
    Line(out, "Noise floor",
         LevelText(unit, m.noiseFloor) + " in " + Quantity(m.noiseBandwidth, "Hz") + ", " +
             DensityText(m, unit));
  else
    Line(out, "Noise floor",
         m.totalPower > 0.0 && m.setup.zoom ? "unknown, the span is too narrow" : "no power");
  if (m.peaks.empty()) Line(out, "Peaks", "none stands out of the noise");
  for (std::size_t i = 0; i < m.peaks.size(); ++i) {
    const double frequency = m.FrequencyOf(m.peaks[i].place);
    std::string place = Frequency(frequency, m.spacing);
    if (m.centre != 0.0) {
      const double offset = frequency - m.centre;
      place += "  (" + std::string(offset < 0.0 ? "" : "+") + Frequency(offset, m.spacing) + ")";
    }
    Line(out, "Peak " + std::to_string(i + 1), LevelText(unit, m.peaks[i].power) + " at " + place);
  }
}

void WriteJson(std::ostream &out, const Recording &recording, const Measurement &m, Unit unit) {
  nlohmann::ordered_json report;
  report["recording"] = recording.Path();
  report["centre_hz"] = m.centre;
  const double span = m.setup.zoom ? m.setup.zoom->span : m.recordedSpan;
  report["span_hz"] = std::isfinite(span) ? nlohmann::ordered_json(span) : nullptr;
  report["sampling_rate_hz"] = m.rate;
  report["start_sample"] = m.setup.start;
  report["samples"] = m.blocks * m.setup.block;
  report["samples_left_over"] = m.setup.count - m.blocks * m.setup.block;
  report["polar_frames"] = m.polarFrames;
  report["points"] = m.Points();
  report["window"] = m.setup.window->name;
  report["blocks"] = m.blocks;
  if (m.setup.zoom) report["samples_per_block"] = m.setup.block;
  report[m.setup.zoom ? "point_spacing_hz" : "bin_spacing_hz"] = m.spacing;
  if (m.setup.detection) {
    const Detection &detection = *m.setup.detection;
    report["detector"] = detection.kind->name;
    report["ratio"] = detection.ratio;
    report["trace_points"] = detection.PointsOf(m.Points());
    report["trace_spacing_hz"] = detection.Step() * m.spacing;
  }
  if (m.setup.correction) {
    report["correction"] = m.setup.correction->Path();
    report["interpolation"] = m.setup.correction->Kind().name;
  }
  report["noise_bandwidth_hz"] = m.noiseBandwidth;
  report["resolution_bandwidth_hz"] = m.resolutionBandwidth;
  report["unit"] = NameOf(unit);
  report[m.setup.zoom ? "power_in_span" : "total_power"] = LevelOrNull(unit, m.totalPower);
  report["noise_floor"] = LevelOrNull(unit, m.noiseFloor);
  report["noise_density_per_hz"] = LevelOrNull(unit, m.noiseFloor / m.noiseBandwidth);
  report["peaks"] = nlohmann::ordered_json::array();
  for (const Peak &peak : m.peaks)
    report["peaks"].push_back({{"frequency_hz", m.FrequencyOf(peak.place)},
                               {"offset_hz", m.FrequencyOf(peak.place) - m.centre},
                               {"level", LevelOrNull(unit, peak.power)}});
  // A path need not be valid UTF-8, JSON must.
  out << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

void WriteCsv(std::ostream &out, const Measurement &m, Unit unit) {
  const std::string name = NameOf(unit);
  out << "frequency_Hz,mean_" << name << ",peak_hold_" << name << '\n';
  const auto text = [&](double power) {
    const double level = LevelOf(unit, power);
    return unit == Unit::kVolt ? Shortest(level) : Fixed(level, 4);
  };
  for (int k = 0; k < m.Points(); ++k)
    out << Shortest(m.FrequencyOf(k)) << ',' << text(m.mean[k]) << ',' << text(m.hold[k]) << '\n';
}

} // namespace tool
