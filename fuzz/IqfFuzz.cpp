// Feeds the reader of frame-based recordings with what a fuzzer makes: nothing but QORNException may come
// out.

#include <algorithm>
#include <vector>

#include "Input.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/utils/IQFReader.h"

namespace {

using QORN::fuzz::Input;
using QORN::fuzz::Try;

void Exercise(const char *path) {
  const QORN::IQFReader reader(path);
  const QORN::IQFReader copy(reader);
  char value[61];
  reader.GetHeader("Span", value);
  std::vector<QORN::FrameHeader> headers(3);
  QORN::VecCplx32 samples;
  QORN::VecCplx64 wide;
  QORN::VecReal32 a;
  QORN::VecReal32 b;
  QORN::VecReal64 c;
  QORN::VecReal64 d;
  // Frames at the start, at the end that the header tells, and beyond it.
  for (const int first : {0, 1, std::max(copy.GetNofValidFrames(), 1) - 1}) {
    Try([&] { copy.GetIQData(first, 3, headers.data(), samples); });
    Try([&] { copy.GetIQData2(first, 3, headers.data(), samples); });
    Try([&] { copy.GetRawIQAPData(first, 3, headers.data(), a, b); });
  }
  for (const int start : {0, 1000, copy.GetNofSamplesInBlock(), copy.GetNoflSamplesInFile()}) {
    Try([&] { copy.ReadIQData(start, 2000, samples); });
    Try([&] { copy.ReadIQData(start, 100, wide); });
    Try([&] { copy.ReadIQData(0, start, 2000, samples); });
    Try([&] { copy.ReadIQData(0, start, 100, wide); });
  }
  Try([&] { copy.GetFlatness(headers.data(), a, b); });
  Try([&] { copy.GetFlatness(headers.data(), c, d); });
  Try([&] { copy.GetRawFlatness(headers.data(), a, b); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  // The reader ends the program at such a first character, as its contract says.
  if (size > 0 && data[0] > '9' && data[0] < 0x80) return 0;
  const Input input(data, size);
  if (input) Try([&] { Exercise(input.Path()); });
  return 0;
}
