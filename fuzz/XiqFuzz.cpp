// Feeds the reader of XML-headed recordings with what a fuzzer makes, and compares the data sets that it
// finds with those that a plain walk over the lines finds.

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Input.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/utils/XIQReader.h"

namespace {

using QORN::fuzz::Input;
using QORN::fuzz::Try;

int CountDataSets(const char *path) {
  std::FILE *file = std::fopen(path, "rb");
  int count = 0;
  for (char line[1024]; std::fgets(line, sizeof line, file) != nullptr;)
    if (std::strstr(line, "<DataSet>") != nullptr) ++count;
  std::fclose(file);
  return count;
}

void Exercise(const char *path) {
  const QORN::XIQReader reader(path);
  if (reader.QueryNumDataSets() != CountDataSets(path)) std::abort();
  const QORN::XIQReader copy(reader);
  QORN::XIQReader::DataSetInfoStruct info;
  for (int set = -1; set <= copy.QueryNumDataSets(); ++set) copy.QueryDataSetInfo(info, set);
  const auto read = [&](auto &dst) {
    for (const int set : {0, 1, -1, copy.QueryNumDataSets(), INT_MIN, INT_MAX}) {
      // What a recording lacks is made up, but not megabytes of it in every round.
      if (copy.QueryNumSamples() < 100000) Try([&] { copy.ReadIQSamples(dst, set); });
      for (const int start : {0, 1, copy.QueryNumSamples() - 1, INT_MAX})
        for (const int n : {0, 1, 5000, INT_MAX}) Try([&] { copy.ReadIQSamples(dst, set, start, n); });
    }
    if (std::int64_t{copy.QueryNumSamples()} * copy.QueryNumDataSets() < 100000)
      Try([&] { copy.ReadAllDataSetsIQSamples(dst); });
  };
  QORN::VecCplx32 samples;
  QORN::VecCplx64 wide;
  read(samples);
  read(wide);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const Input input(data, size);
  if (input) Try([&] { Exercise(input.Path()); });
  return 0;
}
