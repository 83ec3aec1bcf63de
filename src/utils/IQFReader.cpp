#include "qorn/utils/IQFReader.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <system_error>

#include "infra/Errors.h"
#include "qorn/infra/QORNMalloc.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

constexpr char kModule[] = "utils\\IQFReader";

constexpr int kPairs = 1024; // in a frame, used or not
constexpr int kFrameBytes = sizeof(FrameHeader) + kPairs * 2 * sizeof(std::int16_t);
constexpr int kMaxTokens = 100;
constexpr int kMaxPath = 999;
constexpr std::uint16_t kMark = 0xFFFF;

// A recording that was cut short is read with zeros for what is missing. A count that is wrong altogether
// must not make a small file fill the memory with them, so no more than this is made up.
constexpr std::int64_t kMaxMissingFrames = 4096;

static_assert(std::endian::native == std::endian::little, "frames are read as they stand in the file");

struct Closer {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

File Open(const char *path) {
  File file(path == nullptr ? nullptr : std::fopen(path, "rb"));
  if (file == nullptr) Throw(errors::kFileOpen, kModule);
  return file;
}

// Bytes in the file; the position is then its start.
std::int64_t SizeOf(std::FILE *file) {
  if (fseeko(file, 0, SEEK_END) != 0) Throw(errors::kFileOpen, kModule);
  const std::int64_t size = ftello(file);
  if (size < 0 || fseeko(file, 0, SEEK_SET) != 0) Throw(errors::kFileOpen, kModule);
  return size;
}

void ReadOrThrow(std::FILE *file, char *dst, int bytes) {
  const auto wanted = static_cast<std::size_t>(bytes);
  if (std::fread(dst, 1, wanted, file) != wanted) Throw(errors::kFileOpen, kModule);
}

std::unique_ptr<char[]> MakeText(std::size_t size) {
  try {
    return std::make_unique<char[]>(size);
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
}

int Clamped(std::int64_t value) {
  return static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX));
}

void CopyText(char *dst, const char *src, std::size_t limit) {
  const std::size_t length = strnlen(src, limit);
  std::memcpy(dst, src, length);
  dst[length] = '\0';
}

// The number at the start of s, as atof reads it in the "C" locale whatever locale the host has chosen.
double ParseReal(const char *s) {
  if (*s == '+') ++s;
  double value = 0.0;
  const std::from_chars_result result = std::from_chars(s, s + std::strlen(s), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  const bool tiny = std::strstr(s, "e-") != nullptr || std::strstr(s, "E-") != nullptr;
  const double magnitude = tiny ? 0.0 : HUGE_VAL;
  return *s == '-' ? -magnitude : magnitude;
}

bool IsPolar(const FrameHeader &header) { return header.polarMark1 == kMark && header.polarMark2 == kMark; }

bool IsCartesian(const FrameHeader &header) { return header.cartMark1 == kMark && header.cartMark2 == kMark; }

} // namespace

// The frames of a recording, read one after another through a buffer of one payload.
class IQFReader::FrameFile {
public:
  // Opens the file for nFrames frames from firstFrame on.
  FrameFile(const IQFReader &reader, int firstFrame, int nFrames) : file(Open(reader.fileName)) {
    const std::int64_t payload = std::max<std::int64_t>(SizeOf(file.get()) - reader.dataOffset, 0);
    const std::int64_t held = (payload + kFrameBytes - 1) / kFrameBytes;
    const std::int64_t missing = std::min<std::int64_t>(nFrames, std::int64_t{firstFrame} + nFrames - held);
    if (missing > kMaxMissingFrames) Throw(errors::kInvalidParameter, kModule);
    const std::int64_t position = std::int64_t{firstFrame} * kFrameBytes + reader.dataOffset;
    if (fseeko(file.get(), position, SEEK_SET) != 0) Throw(errors::kFileOpen, kModule);
  }

  // Reads the next frame; what the file does not have is zero.
  void Next() {
    Fill(&header, sizeof header);
    Fill(pairs, sizeof pairs);
  }

  FrameHeader header{};
  std::int16_t pairs[2 * kPairs]; // Q, I, Q, I, ... or phase and amplitude

private:
  void Fill(void *dst, std::size_t bytes) {
    const std::size_t got = std::fread(dst, 1, bytes, file.get());
    if (got < bytes) std::memset(static_cast<char *>(dst) + got, 0, bytes - got);
  }

  File file;
};

IQFReader::IQFReader(const char *path) {
  const File file = Open(path);
  CopyText(fileName, path, kMaxPath);
  const std::int64_t size = SizeOf(file.get());

  char digit;
  ReadOrThrow(file.get(), &digit, 1);
  const int nDigits = static_cast<signed char>(digit) - '0';
  if (nDigits > 9) std::abort();
  if (nDigits < 1) Throw(errors::kFileOpen, kModule);
  char digits[9];
  ReadOrThrow(file.get(), digits, nDigits);
  int length = 0;
  const std::from_chars_result end = std::from_chars(digits, digits + nDigits, length);
  if (end.ec != std::errc{} || end.ptr != digits + nDigits || length < 0) Throw(errors::kFileOpen, kModule);
  dataOffset = length + nDigits + 1;
  if (dataOffset > size) Throw(errors::kFileOpen, kModule);

  const std::unique_ptr<char[]> text = MakeText(static_cast<std::size_t>(length) + 1);
  ReadOrThrow(file.get(), text.get(), length);
  ParseHeader(text.get());
  SetFields();
}

IQFReader::~IQFReader() = default;

IQFReader::IQFReader(const IQFReader &other) { *this = other; }

IQFReader &IQFReader::operator=(const IQFReader &other) {
  if (this == &other) return *this;
  std::unique_ptr<HeaderItem[]> items;
  try {
    items = std::make_unique<HeaderItem[]>(static_cast<std::size_t>(other.nofHeaderItems));
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
  std::copy_n(other.headerItems.get(), other.nofHeaderItems, items.get());
  std::copy_n(other.fileName, sizeof fileName, fileName);
  fftPoints = other.fftPoints;
  nofBins = other.nofBins;
  maxInputLevel = other.maxInputLevel;
  levelOffset = other.levelOffset;
  centerFrequency = other.centerFrequency;
  span = other.span;
  blockSize = other.blockSize;
  firstBlockSize = other.firstBlockSize;
  validFrames = other.validFrames;
  unitPeriod = other.unitPeriod;
  frameLength = other.frameLength;
  gainOffset = other.gainOffset;
  multiFrames = other.multiFrames;
  scalingFactor = other.scalingFactor;
  iOffset = other.iOffset;
  qOffset = other.qOffset;
  dataOffset = other.dataOffset;
  nofBlocks = other.nofBlocks;
  headerItems = std::move(items);
  nofHeaderItems = other.nofHeaderItems;
  return *this;
}

void IQFReader::ParseHeader(const char *text) {
  constexpr char kSeparators[] = " \r\t\n=";
  ST_STR state;
  InitStrTok(state);
  HeaderItem items[kMaxTokens / 2];
  int tokens = 0;
  for (const char *token = StrTok(text, kSeparators, state); token != nullptr;
       token = StrTok(nullptr, kSeparators, state), ++tokens) {
    if (tokens == kMaxTokens) Throw(errors::kFileOpen, kModule);
    HeaderItem &item = items[tokens / 2];
    if (tokens % 2 == 0) {
      CopyText(item.name, token, sizeof item.name - 1);
      item.value[0] = '\0';
    } else {
      CopyText(item.value, token, sizeof item.value - 1);
    }
  }
  FreeStrTok(state);
  nofHeaderItems = (tokens + 1) / 2;
  try {
    headerItems = std::make_unique<HeaderItem[]>(static_cast<std::size_t>(nofHeaderItems));
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
  std::copy_n(items, nofHeaderItems, headerItems.get());
}

void IQFReader::SetFields() {
  fftPoints = IntegerOf("FFTPoints", 0);
  nofBins = IntegerOf("Bins", 0);
  blockSize = IntegerOf("BlockSize", 0);
  validFrames = IntegerOf("ValidFrames", 0);
  multiFrames = IntegerOf("MultiFrames", 1);
  maxInputLevel = RealOf("MaxInputLevel");
  levelOffset = RealOf("LevelOffset");
  gainOffset = RealOf("GainOffset");
  iOffset = RealOf("IOffset");
  qOffset = RealOf("QOffset");
  centerFrequency = ScaledRealOf("CenterFrequency");
  span = ScaledRealOf("Span");
  unitPeriod = ScaledRealOf("UnitPeriod");
  frameLength = ScaledRealOf("FrameLength");

  // The library's own power, whose bits do not vary with the machine's mathematics library.
  const double ten = 10.0;
  const double exponent = (maxInputLevel + gainOffset + levelOffset) / 10.0;
  double milliwatts = 0.0;
  TargetLib::Pow_64f(&ten, &exponent, &milliwatts, 1);
  scalingFactor = std::sqrt(milliwatts / 20.0 * 2.0);

  nofBlocks = 0;
  firstBlockSize = 0;
  if (blockSize > 0) {
    const std::int64_t frames = validFrames;
    nofBlocks = Clamped((frames - 1 + blockSize) / blockSize);
    firstBlockSize = Clamped(frames - (std::int64_t{nofBlocks} - 1) * blockSize);
  }
}

int IQFReader::IntegerOf(const char *key, int otherwise) const {
  char value[61];
  return GetHeader(key, value) ? Clamped(std::strtol(value, nullptr, 10)) : otherwise;
}

double IQFReader::RealOf(const char *key) const {
  char value[61];
  return GetHeader(key, value) ? ParseReal(value) : 0.0;
}

double IQFReader::ScaledRealOf(const char *key) const {
  char value[61];
  return GetHeader(key, value) ? Convert(value) : 0.0;
}

bool IQFReader::GetHeader(const char *key, char *value) const {
  for (int i = 0; i < nofHeaderItems; ++i) {
    if (std::strcmp(headerItems[static_cast<std::size_t>(i)].name, key) == 0) {
      std::strcpy(value, headerItems[static_cast<std::size_t>(i)].value);
      return true;
    }
  }
  *value = '\0';
  return false;
}

void IQFReader::ListHeader() const {
  for (int i = 0; i < nofHeaderItems; ++i) {
    const HeaderItem &item = headerItems[static_cast<std::size_t>(i)];
    std::printf("%s = %s\n", item.name, item.value);
  }
}

int IQFReader::GetNofSamplesInBlock() const { return Clamped(std::int64_t{blockSize} * fftPoints); }

int IQFReader::GetNoflSamplesInFile() const { return Clamped(std::int64_t{validFrames} * fftPoints); }

void IQFReader::GetTrigPos(int &a, int &b) const { a = b = GetNofSamplesInBlock(); }

// The number of elements that nFrames frames give, after all checks that need no file.
int IQFReader::CheckedSize(int firstFrame, int nFrames, int pointsPerFrame) const {
  const std::int64_t size = std::int64_t{nFrames} * pointsPerFrame;
  if (fftPoints < 1 || fftPoints > kPairs || firstFrame < 0 || nFrames < 0 || size > QORNMalloc::kMaxCount)
    Throw(errors::kInvalidParameter, kModule);
  return static_cast<int>(size);
}

bool IQFReader::GetIQData(int firstFrame, int nFrames, FrameHeader *headers, VecCplx32 &dst) const {
  const int size = CheckedSize(firstFrame, nFrames, fftPoints);
  FrameFile frames(*this, firstFrame, nFrames);
  dst.Resize(size);
  const double scale = static_cast<double>(static_cast<float>(scalingFactor));
  VecReal32 magnitude;
  VecReal32 phase;
  for (int f = 0; f < nFrames; ++f) {
    frames.Next();
    if (headers != nullptr) headers[f] = frames.header;
    Cplx32 *out = dst.GetPtr(f * fftPoints);
    for (int k = 0; k < fftPoints; ++k) {
      out[k].re = static_cast<float>((frames.pairs[2 * k + 1] - iOffset) * scale);
      out[k].im = static_cast<float>((frames.pairs[2 * k] - qOffset) * scale);
    }
    if (IsPolar(frames.header)) {
      // Samples of frames to come would be converted as well and then overwritten.
      const int so_far = (f + 1) * fftPoints;
      magnitude.Resize(size);
      phase.Resize(size);
      TargetLib::CartToPolar_32fc(dst.GetPtr(), magnitude.GetPtr(), phase.GetPtr(), so_far);
      TargetLib::RealToCplx_32f(magnitude.GetPtr(), phase.GetPtr(), dst.GetPtr(), so_far);
    }
  }
  return true;
}

bool IQFReader::GetIQData2(int firstFrame, int nFrames, FrameHeader *headers, VecCplx32 &dst) const {
  const int size = CheckedSize(firstFrame, nFrames, fftPoints);
  FrameFile frames(*this, firstFrame, nFrames);
  dst.Resize(size);
  VecReal32 re(size);
  VecReal32 im(size);
  for (int f = 0; f < nFrames; ++f) {
    frames.Next();
    if (headers != nullptr) headers[f] = frames.header;
    float *i = re.GetPtr(f * fftPoints);
    float *q = im.GetPtr(f * fftPoints);
    for (int k = 0; k < fftPoints; ++k) {
      i[k] = frames.pairs[2 * k + 1];
      q[k] = frames.pairs[2 * k];
    }
  }
  const auto scale = static_cast<float>(scalingFactor);
  if (IsCartesian(frames.header)) {
    TargetLib::SubC_32f_I(static_cast<float>(iOffset), re.GetPtr(), size);
    TargetLib::SubC_32f_I(static_cast<float>(qOffset), im.GetPtr(), size);
    TargetLib::MulC_32f_I(scale, re.GetPtr(), size);
    TargetLib::MulC_32f_I(scale, im.GetPtr(), size);
    TargetLib::RealToCplx_32f(re.GetPtr(), im.GetPtr(), dst.GetPtr(), size);
  } else if (IsPolar(frames.header)) {
    TargetLib::PolarToCart_32fc(re.GetPtr(), im.GetPtr(), dst.GetPtr(), size);
    dst += Cplx32{static_cast<float>(iOffset), static_cast<float>(qOffset)};
    dst *= scale;
  } else {
    Throw(errors::kFileOpen, kModule);
  }
  return true;
}

bool IQFReader::ReadIQData(int start, int n, VecCplx32 &dst) const {
  if (start < 0 || n < 0) Throw(errors::kInvalidParameter, kModule);
  CheckedSize(0, 0, fftPoints);
  const int first = start / fftPoints;
  const auto last = static_cast<int>((std::int64_t{start} + n - 1) / fftPoints);
  VecCplx32 frames;
  const bool done = GetIQData(first, n == 0 ? 0 : last - first + 1, nullptr, frames);
  dst.Resize(n);
  TargetLib::Copy_32fc(frames.GetPtr(start - first * fftPoints), dst.GetPtr(), n);
  return done;
}

bool IQFReader::ReadIQData(int start, int n, VecCplx64 &dst) const {
  VecCplx32 samples;
  const bool done = ReadIQData(start, n, samples);
  dst = samples;
  return done;
}

template <class Vector> int IQFReader::ReadWithinBlock(int start, int n, Vector &dst) const {
  if (start < 0 || n < 0) Throw(errors::kInvalidParameter, kModule);
  CheckedSize(0, 0, fftPoints);
  const std::int64_t inBlock = std::int64_t{blockSize} * fftPoints - start;
  const auto count = static_cast<int>(std::clamp<std::int64_t>(inBlock, 0, n));
  if (start / fftPoints >= validFrames || count == 0) {
    dst.Resize(0);
    return 0;
  }
  return ReadIQData(start, count, dst) ? count : -1;
}

int IQFReader::ReadIQData(int /*block*/, int start, int n, VecCplx32 &dst) const {
  return ReadWithinBlock(start, n, dst);
}

int IQFReader::ReadIQData(int /*block*/, int start, int n, VecCplx64 &dst) const {
  return ReadWithinBlock(start, n, dst);
}

bool IQFReader::ReadCorrectedIQData(int start, int n, VecCplx32 &dst) const {
  return ReadIQData(start, n, dst);
}

bool IQFReader::GetRawIQAPData(int firstFrame, int nFrames, FrameHeader *headers, VecReal32 &first,
                               VecReal32 &second) const {
  // Whole frames are written, so there must be room for them, however few points count.
  const int room = CheckedSize(firstFrame, nFrames, kPairs);
  FrameFile frames(*this, firstFrame, nFrames);
  first.Resize(room);
  second.Resize(room);
  for (int f = 0; f < nFrames; ++f) {
    frames.Next();
    if (headers != nullptr) headers[f] = frames.header;
    float *i = first.GetPtr(f * kPairs);
    float *q = second.GetPtr(f * kPairs);
    for (int k = 0; k < kPairs; ++k) {
      i[k] = frames.pairs[2 * k + 1];
      q[k] = frames.pairs[2 * k];
    }
  }
  first.Resize(nFrames * fftPoints);
  second.Resize(nFrames * fftPoints);
  return true;
}

template <class Real, class Vector>
bool IQFReader::ReadFlatness(FrameHeader *header, Vector &first, Vector &second, Real firstScale,
                             Real secondScale) const {
  const int size = CheckedSize(validFrames, 1, fftPoints);
  FrameFile frames(*this, validFrames, 1);
  first.Resize(size);
  second.Resize(size);
  frames.Next();
  if (header != nullptr) *header = frames.header;
  for (int k = 0; k < size; ++k) {
    first[k] = static_cast<Real>(frames.pairs[2 * k]) * firstScale;
    second[k] = static_cast<Real>(frames.pairs[2 * k + 1]) * secondScale;
  }
  return true;
}

bool IQFReader::GetFlatness(VecReal32 &amplitude, VecReal32 &phase) const {
  return GetFlatness(nullptr, amplitude, phase);
}

bool IQFReader::GetFlatness(FrameHeader *header, VecReal32 &amplitude, VecReal32 &phase) const {
  return ReadFlatness(header, amplitude, phase, 0.0078125f, -0.0078125f);
}

bool IQFReader::GetFlatness(FrameHeader *header, VecReal64 &amplitude, VecReal64 &phase) const {
  return ReadFlatness(header, amplitude, phase, 0.0078125, -0.0078125);
}

bool IQFReader::GetRawFlatness(FrameHeader *header, VecReal32 &first, VecReal32 &second) const {
  return ReadFlatness(header, first, second, 1.0f, 1.0f);
}

char *IQFReader::StrPBrk(char *s, const char *set) { return std::strpbrk(s, set); }

int IQFReader::InitStrTok(ST_STR &state) {
  state.buffer.reset();
  state.next = nullptr;
  return 0;
}

int IQFReader::FreeStrTok(ST_STR &state) {
  state.buffer.reset();
  state.next = nullptr;
  return 0;
}

char *IQFReader::StrTok(const char *s, const char *delimiters, ST_STR &state) {
  if (s != nullptr) {
    const std::size_t size = std::strlen(s) + 1;
    state.buffer = MakeText(size);
    std::memcpy(state.buffer.get(), s, size);
    state.next = state.buffer.get();
  }
  if (state.next == nullptr) return nullptr;
  char *token = state.next + std::strspn(state.next, delimiters);
  if (*token == '\0') {
    state.next = nullptr;
    return nullptr;
  }
  state.next = StrPBrk(token, delimiters);
  if (state.next != nullptr) *state.next++ = '\0';
  return token;
}

double IQFReader::Convert(const char *s) {
  const std::size_t length = std::strlen(s);
  double factor = 1.0;
  switch (length == 0 ? '\0' : s[length - 1]) {
  case 'G':
    factor = 1e9;
    break;
  case 'K':
  case 'k':
    factor = 1000.0;
    break;
  case 'M':
    factor = 1e6;
    break;
  case 'm':
    factor = 0.001;
    break;
  case 'u':
    factor = 1e-6;
    break;
  case 'n':
    factor = 1e-9;
    break;
  case 'p':
    factor = 1e-12;
    break;
  default:
    break;
  }
  return ParseReal(s) * factor;
}

bool IQFReader::Compare(double x, double ref, double tol) {
  return !(x > ref + std::fabs(tol) || x < ref - std::fabs(tol));
}

bool IQFReader::Compare(double x, const char *ref, const char *tol) {
  return Compare(x, Convert(ref), Convert(tol));
}

} // namespace QORN
