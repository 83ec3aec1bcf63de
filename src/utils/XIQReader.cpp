#include "qorn/utils/XIQReader.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include "Number.h"
#include "TextLines.h"
#include "infra/BinaryFile.h"
#include "infra/Errors.h"
#include "infra/kernels/Levels.h"
#include "qorn/infra/QORNMalloc.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"

namespace QORN {

namespace {

constexpr char kModule[] = "utils\\XIQReader";

constexpr int kSampleBytes = 8;

// A recording that was cut short is read with zeros for what is missing. A count that is wrong altogether
// must not make a small file fill the memory with them, so no more than this is made up.
constexpr std::int64_t kMaxMissing = 1 << 22;

// Beyond any file, and far enough from the limits of the type to be multiplied and added to.
constexpr std::int64_t kFar = std::int64_t{1} << 58;

static_assert(std::endian::native == std::endian::little, "samples are read as they stand in the file");

void Scale(const int *pairs, Cplx32 *dst, int n, double scaling) {
  kernels::active->ScaleIQ32(pairs, dst, n, static_cast<float>(scaling));
}
void Scale(const int *pairs, Cplx64 *dst, int n, double scaling) {
  kernels::active->ScaleIQ64(pairs, dst, n, scaling);
}

bool Holds(std::string_view line, std::string_view text) { return line.find(text) != line.npos; }

// Runs what may lack memory outside the vectors.
template <class Run> auto OrNoMemory(Run run) {
  try {
    return run();
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
}

std::unique_ptr<BinaryFile> Open(const char *path) {
  return OrNoMemory(
      [&] { return std::make_unique<BinaryFile>(path, BinaryFile::Mode::kReadRegular, kModule); });
}

} // namespace

XIQReader::XIQReader(const char *path) : file(Open(path)) {
  std::memcpy(fileName, path, strnlen(path, sizeof fileName - 1));
  fileOpen = 1;
  OrNoMemory([this] {
    binDataOffset = ExtractBinDataOffset();
    ExtractDataSetsInfo();
    ExtractAcqInfo();
    ExtractSetupInfo();
  });
}

XIQReader::~XIQReader() = default;

XIQReader::XIQReader(const XIQReader &other) { *this = other; }

XIQReader &XIQReader::operator=(const XIQReader &other) {
  if (this == &other) return *this;
  OrNoMemory([&] {
    auto sets = other.dataSets;
    file = std::make_unique<BinaryFile>(*other.file, kModule);
    dataSets = std::move(sets);
  });
  std::memcpy(fileName, other.fileName, sizeof fileName);
  fileOpen = other.fileOpen;
  acqInfo = other.acqInfo;
  setupInfo = other.setupInfo;
  numDataSets = other.numDataSets;
  binDataOffset = other.binDataOffset;
  return *this;
}

bool XIQReader::GetValueFromKey(std::string_view line, std::string_view key, std::string_view closeKey,
                                double &value, std::string_view terminator) {
  value = 0.0;
  const std::size_t place = line.find(key);
  if (place == line.npos || !Holds(line, closeKey)) return false;
  // One character more than the key is left out: the ">" of a tag.
  const std::string_view text = line.substr(std::min(place + key.size() + 1, line.size()));
  const std::size_t end = text.find(terminator);
  if (end == text.npos) return false;
  value = ParseReal(text.substr(0, end));
  return true;
}

bool XIQReader::GetValueFromKey(std::string_view line, std::string_view key, double &value) {
  return GetValueFromKey(line, key, std::string("/").append(key), value, "<");
}

int XIQReader::ExtractBinDataOffset() const {
  TextLines lines(*file, {});
  std::string_view line;
  double value = 0.0;
  if (!lines.Next(line) || !GetValueFromKey(line, "DataFile offset=\"", "\"", value, "\"")) return -1;
  return Truncated(value);
}

void XIQReader::ExtractDataSetsInfo() {
  constexpr std::string_view kDataSet = "<DataSet>";
  TextLines lines(*file, {kDataSet});
  std::string_view line;
  std::int64_t count = 0;
  while (lines.NextHolding(line)) {
    DataSetInfoStruct info{};
    ++count;
    // The next two lines have the values, and count as data sets themselves should they hold the tag.
    if (lines.Next(line)) {
      GetValueFromKey(line, "TriggerPosition units=\"Seconds\"", "/TriggerPosition", info.triggerPosition,
                      "<");
      if (Holds(line, kDataSet)) ++count;
    }
    if (lines.Next(line)) {
      GetValueFromKey(line, "TimestampOffset units=\"Seconds\"", "/TimestampOffset", info.timestampOffset,
                      "<");
      if (Holds(line, kDataSet)) ++count;
    }
    dataSets.push_back(info);
  }
  dataSets.resize(static_cast<std::size_t>(std::min<std::int64_t>(count, INT_MAX)));
  dataSets.shrink_to_fit();
  numDataSets = static_cast<int>(dataSets.size());
}

bool XIQReader::ExtractAcqInfo() {
  double numberSamples = 0.0;
  const struct {
    std::string_view key, closeKey;
    double &field;
  } keys[] = {{"Frequency units=\"Hz\"", "/Frequency", acqInfo.frequency},
              {"AcquisitionBandwidth units=\"Hz\"", "/AcquisitionBandwidth", acqInfo.acquisitionBandwidth},
              {"MaxSpan units=\"Hz\"", "/MaxSpan", acqInfo.maxSpan},
              {"RFAttenuation units=\"dB\"", "/RFAttenuation", acqInfo.rfAttenuation},
              {"ReferenceLevel units=\"dBm\"", "/ReferenceLevel", acqInfo.referenceLevel},
              {"NumberSamples", "/NumberSamples", numberSamples},
              {"SamplingFrequency units=\"Hz\"", "/SamplingFrequency", acqInfo.samplingFrequency},
              {"Scaling", "/Scaling", acqInfo.scaling}};
  constexpr std::string_view kEnd = "/DataSetsCollection";
  // No other line can have one of the keys.
  TextLines lines(*file, {kEnd, keys[0].closeKey, keys[1].closeKey, keys[2].closeKey, keys[3].closeKey,
                          keys[4].closeKey, keys[5].closeKey, keys[6].closeKey, keys[7].closeKey});
  unsigned mask = 0;
  std::string_view line;
  while (lines.NextHolding(line) && !Holds(line, kEnd)) {
    for (const auto &row : keys) {
      double value = 0.0;
      if (!GetValueFromKey(line, row.key, row.closeKey, value, "<")) continue;
      row.field = value;
      mask = mask * 2 + 1;
      break;
    }
  }
  acqInfo.numberSamples = Truncated(numberSamples);
  return mask == HEADER_INFO_BITWISE_PATTERN;
}

void XIQReader::ExtractSetupInfo() {
  constexpr std::string_view kOffset = "NumericParameter pid=\"anOffset\"";
  constexpr std::string_view kLength = "NumericParameter pid=\"anLenReq\" name=\"Analysis Length Requested\"";
  constexpr std::string_view kEnd = "/Setup";
  constexpr std::string_view kOtherEnd = "Setup/";
  TextLines lines(*file, {kOffset, kLength, kEnd, kOtherEnd});
  std::string_view line;
  while (lines.NextHolding(line) && !Holds(line, kEnd) && !Holds(line, kOtherEnd)) {
    double &field = Holds(line, kOffset) ? setupInfo.anOffset : setupInfo.anLenReq;
    field = 0.0;
    if (lines.Next(line)) GetValueFromKey(line, "Value", field);
  }
}

void XIQReader::QueryDataSetInfo(DataSetInfoStruct &info, int set) const {
  info = set >= 0 && set < numDataSets ? dataSets[static_cast<std::size_t>(set)] : DataSetInfoStruct{};
}

// Bytes from the start of the file to a sample, counted from the first of data set 0.
long long XIQReader::PositionOf(long long index) const {
  return std::max(binDataOffset + kSampleBytes * std::clamp<long long>(index, -kFar, kFar), 0LL);
}

// Refuses a read of n samples of which too many lie behind the end of the file.
void XIQReader::CheckHeld(long long index, long long n) const {
  const std::int64_t held = (file->Size() - PositionOf(index)) / kSampleBytes;
  if (n > QORNMalloc::kMaxCount || n - std::max<std::int64_t>(held, 0) > kMaxMissing) {
    Throw(errors::kInvalidParameter, kModule);
  }
}

void XIQReader::CheckSet(int set) const {
  if (set > numDataSets) Throw(errors::kInvalidParameter, kModule);
}

void XIQReader::CheckPart(int set, int start, int n) const {
  CheckSet(set);
  if (start < 0 || n < 0 || std::int64_t{start} + n > acqInfo.numberSamples) {
    Throw(errors::kInvalidParameter, kModule);
  }
}

template <class T> void XIQReader::ReadSamples(long long index, int n, T *dst) const {
  constexpr int kBlock = 8192; // few calls, and within the processor's second cache
  alignas(64) int pairs[2 * kBlock];
  std::int64_t position = PositionOf(index);
  for (int done = 0, count; done < n; done += count) {
    count = std::min(kBlock, n - done);
    const auto bytes = static_cast<std::size_t>(count) * kSampleBytes;
    const std::size_t got = file->ReadAt(position, pairs, bytes);
    std::memset(reinterpret_cast<char *>(pairs) + got, 0, bytes - got);
    Scale(pairs, dst + done, count, acqInfo.scaling);
    position += static_cast<std::int64_t>(bytes);
  }
}

template <class Vector> void XIQReader::ReadPart(Vector &dst, int set, int start, int n) const {
  const std::int64_t index = std::int64_t{acqInfo.numberSamples} * set + start;
  CheckHeld(index, n);
  dst.Resize(n);
  ReadSamples(index, n, dst.GetPtr());
}

template <class Vector> void XIQReader::ReadAll(Vector &dst) const {
  const std::int64_t each = std::max(acqInfo.numberSamples, 0);
  const std::int64_t total = each * numDataSets;
  CheckHeld(0, total);
  dst.Resize(static_cast<int>(total));
  // Data sets join in the file unless the first ones start before it.
  const std::int64_t step = binDataOffset >= 0 ? total : each;
  for (std::int64_t i = 0; i < total; i += step) {
    ReadSamples(i, static_cast<int>(step), dst.GetPtr(static_cast<int>(i)));
  }
}

void XIQReader::ReadIQSamples(VecCplx32 &dst, int set) const {
  CheckSet(set);
  ReadPart(dst, set, 0, std::max(acqInfo.numberSamples, 0));
}

void XIQReader::ReadIQSamples(VecCplx64 &dst, int set) const {
  CheckSet(set);
  ReadPart(dst, set, 0, std::max(acqInfo.numberSamples, 0));
}

void XIQReader::ReadIQSamples(VecCplx32 &dst, int set, int start, int n) const {
  CheckPart(set, start, n);
  ReadPart(dst, set, start, n);
}

void XIQReader::ReadIQSamples(VecCplx64 &dst, int set, int start, int n) const {
  CheckPart(set, start, n);
  ReadPart(dst, set, start, n);
}

void XIQReader::ReadAllDataSetsIQSamples(VecCplx32 &dst) const { ReadAll(dst); }

void XIQReader::ReadAllDataSetsIQSamples(VecCplx64 &dst) const { ReadAll(dst); }

} // namespace QORN
