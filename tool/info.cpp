// qorn info: all that the header of a recording says.

#include <qorn/qorn.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <string>

#include "Commands.h"
#include "Options.h"
#include "Recording.h"
#include "Text.h"

namespace tool {

namespace {

constexpr int kMaxSets = 8; // that are told one by one

void Line(const std::string &name, const std::string &value) {
  std::cout << "  ";
  tool::Line(std::cout, name, value);
}

void ListEntries(const QORN::XIQReader &reader) {
  QORN::XIQReader::AcqInfoStruct info;
  QORN::XIQReader::SetupInfoStruct setup;
  reader.QueryAcqInfo(info);
  reader.QuerySetupInfo(setup);
  const auto entry = [](const char *name, double value) {
    std::cout << name << " = " << Shortest(value) << '\n';
  };
  entry("SamplingFrequency", info.samplingFrequency);
  entry("NumberSamples", info.numberSamples);
  entry("Scaling", info.scaling);
  entry("Frequency", info.frequency);
  entry("AcquisitionBandwidth", info.acquisitionBandwidth);
  entry("MaxSpan", info.maxSpan);
  entry("RFAttenuation", info.rfAttenuation);
  entry("ReferenceLevel", info.referenceLevel);
  entry("Analysis Offset", setup.anOffset);
  entry("Analysis Length", setup.anLenReq);
}

void TellPlace(const RecordingSource &source, const QORN::IQFReader &reader) {
  const SourceFacts &facts = source.Facts();
  const std::string promised = Grouped(reader.GetNofValidFrames());
  Line("Frames in the file", facts.inFile + " of " + promised +
                                 (facts.inFile == promised ? "" : ": cut short") +
                                 (facts.hasFlatness ? ", and the flatness record" : ", no flatness record"));
}

void TellPlace(const RecordingSource &source, const QORN::XIQReader &reader) {
  const SourceFacts &facts = source.Facts();
  for (int set = 0; set < std::min(reader.QueryNumDataSets(), kMaxSets); ++set) {
    QORN::XIQReader::DataSetInfoStruct info;
    reader.QueryDataSetInfo(info, set);
    Line("Data set " + std::to_string(set + 1), "trigger at " + Quantity(info.triggerPosition, "s") +
                                                    ", time stamp " + Quantity(info.timestampOffset, "s"));
  }
  if (reader.QueryNumDataSets() > kMaxSets)
    Line("More data sets", Grouped(reader.QueryNumDataSets() - kMaxSets));
  Line("Samples in the file",
       facts.inFile + " of " + Grouped(facts.samples) + (facts.held == facts.samples ? "" : ": cut short"));
}

void Run(const std::string &path) {
  const Recording recording(path);
  const RecordingSource &source = recording.Source();
  const QORN::IQFReader *iqf = source.Iqf();
  const QORN::XIQReader *xiq = source.Xiq();
  std::cout << "Header of " << Printable(path) << '\n' << std::flush;
  if (iqf != nullptr) iqf->ListHeader();
  if (xiq != nullptr) ListEntries(*xiq);

  const double rate = recording.Rate();
  const bool hasRate = rate > 0.0 && std::isfinite(rate);
  const auto samples = static_cast<double>(recording.Samples());
  std::cout << "What follows from it\n";
  Line("Samples", Grouped(recording.Samples()) + (hasRate ? ", " + Quantity(samples / rate, "s") : ""));
  Line("Sampling rate", hasRate ? Quantity(rate, "Hz") : "unknown");
  Line("Centre", Quantity(recording.Centre(), "Hz"));
  Line("Span", Quantity(recording.Span(), "Hz"));
  if (iqf != nullptr)
    Line("Blocks", Grouped(iqf->GetNofBlocks()) + " of " + Grouped(iqf->GetBlockSize()) +
                       " frames, the first of " + Grouped(iqf->GetFirstBlockSize()));
  Line("Volts per step", Quantity(recording.Step(), "V"));
  if (iqf != nullptr) {
    Line("Full scale", Fixed(QORN::UnitConversion::PeakVolt2dBm(32768.0 * recording.Step()), 2) +
                           " dBm, a tone of 32 768 steps");
    TellPlace(source, *iqf);
  }
  if (xiq != nullptr) TellPlace(source, *xiq);
}

} // namespace

void AddInfo(CLI::App &app) {
  const auto path = std::make_shared<std::string>();
  CLI::App *command = app.add_subcommand("info", "Show what the header of a recording says");
  AddRecording(*command, *path);
  command->callback([path] { Run(*path); });
}

} // namespace tool
