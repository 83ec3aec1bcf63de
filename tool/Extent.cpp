#include "Extent.h"

#include <string>

#include "Failure.h"
#include "Options.h"
#include "Text.h"

namespace tool {

void AddExtentOptions(CLI::App &command, ExtentOptions &options) {
  command.add_option("--start", options.start, "first sample (0)")
      ->type_name("SAMPLE")
      ->transform(WholeNumber(0));
  command.add_option("--count", options.count, "number of samples (to the end)")
      ->type_name("N")
      ->transform(WholeNumber(1));
}

Extent ExtentOf(const ExtentOptions &options, const Recording &recording) {
  const std::int64_t promised = recording.Samples();
  if (options.start >= promised)
    throw UsageError("--start: sample " + std::to_string(options.start) +
                     " is not in the recording, which has " + std::to_string(promised) + " samples");
  const std::int64_t available = promised - options.start;
  if (options.count.value_or(0) > available)
    throw UsageError("--count: " + std::to_string(*options.count) +
                     " samples are not in the recording, which has " + std::to_string(available) +
                     " from sample " + std::to_string(options.start) + " on");
  return {options.start, options.count.value_or(available)};
}

void CheckHeld(const Extent &extent, const Recording &recording) {
  const SourceFacts &facts = recording.Source().Facts();
  if (extent.start + extent.count > facts.held)
    throw DataError("recording " + Quoted(recording.Path()) + " is cut short: its header promises " +
                    facts.inHeader + ", the file holds " + facts.inFile +
                    (facts.held > extent.start
                         ? " (--count " + std::to_string(facts.held - extent.start) + " reads them)"
                         : ""));
}

} // namespace tool
