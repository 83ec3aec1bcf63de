#include "qorn/utils/IQFReader.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "Number.h"
#include "infra/BinaryFile.h"
#include "infra/Errors.h"
#include "infra/kernels/Levels.h"
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

// A recording, open for reading.
class File {
public:
  explicit File(const char *path) : m_file(path, BinaryFile::Mode::kReadRegular, kModule) {}

  std::int64_t Size() const { return m_file.Size(); }

  /// Reads `bytes` bytes from `position` on; what the file does not have is zero.
  void Read(std::int64_t position, void *dst, std::size_t bytes) const {
    const std::size_t got = m_file.ReadAt(position, dst, bytes);
    std::memset(static_cast<char *>(dst) + got, 0, bytes - got);
  }

  void ReadOrThrow(std::int64_t position, char *dst, int bytes) const {
    const auto wanted = static_cast<std::size_t>(bytes);
    if (m_file.ReadAt(position, dst, wanted) != wanted) Throw(errors::kFileOpen, kModule);
  }

private:
  BinaryFile m_file;
};

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

// Turns samples to (magnitude, phase), or back, a block at a time on the stack: a read needs no memory of its
// own.
constexpr int kBlock = 256;

void CartToPolarInPlace(Cplx32 *samples, int n) {
  float magnitude[kBlock];
  float phase[kBlock];
  for (int i = 0; i < n; i += kBlock) {
    const int count = std::min(kBlock, n - i);
    TargetLib::CartToPolar_32fc(samples + i, magnitude, phase, count);
    TargetLib::RealToCplx_32f(magnitude, phase, samples + i, count);
  }
}

void PolarToCartInPlace(Cplx32 *samples, int n) {
  float magnitude[kBlock];
  float phase[kBlock];
  for (int i = 0; i < n; i += kBlock) {
    const int count = std::min(kBlock, n - i);
    TargetLib::Real_32fc(samples + i, magnitude, count);
    TargetLib::Imag_32fc(samples + i, phase, count);
    TargetLib::PolarToCart_32fc(magnitude, phase, samples + i, count);
  }
}

bool IsPolar(const FrameHeader &header) { return header.polarMark1 == kMark && header.polarMark2 == kMark; }

bool IsCartesian(const FrameHeader &header) { return header.cartMark1 == kMark && header.cartMark2 == kMark; }

} // namespace

// The frames of a recording, one after another, read some at a time.
class IQFReader::FrameFile {
public:
  // Opens the file for nFrames frames from firstFrame on.
  FrameFile(const IQFReader &reader, int firstFrame, int nFrames)
      : m_file(reader.fileName), m_position(std::int64_t{firstFrame} * kFrameBytes + reader.dataOffset),
        m_unread(nFrames) {
    const std::int64_t payload = std::max<std::int64_t>(m_file.Size() - reader.dataOffset, 0);
    const std::int64_t held = (payload + kFrameBytes - 1) / kFrameBytes;
    const std::int64_t missing = std::min<std::int64_t>(nFrames, std::int64_t{firstFrame} + nFrames - held);
    if (missing > kMaxMissingFrames) Throw(errors::kInvalidParameter, kModule);
    m_frames[0].header = {};
  }

  // Passes on to the next frame; what the file does not have is zero.
  void Next() {
    if (++m_current < m_end) return;
    m_current = 0;
    m_end = std::min(kBuffered, m_unread);
    m_unread -= m_end;
    const auto bytes = static_cast<std::size_t>(m_end) * kFrameBytes;
    m_file.Read(m_position, m_frames, bytes);
    m_position += static_cast<std::int64_t>(bytes);
  }

  // All zero before the first frame.
  const FrameHeader &Header() const { return m_frames[std::max(m_current, 0)].header; }

  // Q, I, Q, I, ... or phase and amplitude.
  const std::int16_t *Pairs() const { return m_frames[m_current].pairs; }

private:
  struct Frame {
    FrameHeader header;
    std::int16_t pairs[2 * kPairs];
  };
  static_assert(sizeof(Frame) == kFrameBytes);

  static constexpr int kBuffered = 8; // 33 KB on the stack, and enough to make little of a call's cost

  File m_file;
  std::int64_t m_position;
  int m_unread;
  int m_current = -1;
  int m_end = 0;
  Frame m_frames[kBuffered];
};

IQFReader::IQFReader(const char *path) {
  const File file(path);
  CopyText(fileName, path, kMaxPath);

  char digit;
  file.ReadOrThrow(0, &digit, 1);
  const int nDigits = static_cast<signed char>(digit) - '0';
  if (nDigits > 9) std::abort();
  if (nDigits < 1) Throw(errors::kFileOpen, kModule);
  char digits[10] = {};
  file.ReadOrThrow(1, digits, nDigits);
  // As atoi reads it: blanks before the digits and other characters behind them do not count.
  const std::int64_t length = std::strtol(digits, nullptr, 10);
  if (length < 0 || length + nDigits + 1 > file.Size()) Throw(errors::kFileOpen, kModule);
  dataOffset = static_cast<int>(length) + nDigits + 1;

  const std::unique_ptr<char[]> text = MakeText(static_cast<std::size_t>(length) + 1);
  file.ReadOrThrow(1 + nDigits, text.get(), static_cast<int>(length));
  ParseHeader(text.get());
  SetFields();
}

IQFReader::~IQFReader() = default;

IQFReader::IQFReader(const IQFReader &other) = default;
IQFReader &IQFReader::operator=(const IQFReader &other) = default;

IQFReader::HeaderItems::HeaderItems(const HeaderItems &other) : vector() { *this = other; }

IQFReader::HeaderItems &IQFReader::HeaderItems::operator=(const HeaderItems &other) {
  try {
    vector::operator=(other);
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
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
  try {
    headerItems.assign(items, items + (tokens + 1) / 2);
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
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
  for (const HeaderItem &item : headerItems) {
    if (std::strcmp(item.name, key) == 0) {
      std::strcpy(value, item.value);
      return true;
    }
  }
  *value = '\0';
  return false;
}

void IQFReader::ListHeader() const {
  for (const HeaderItem &item : headerItems) std::printf("%s = %s\n", item.name, item.value);
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
  ReadSamples(frames, 0, size, headers, dst.GetPtr());
  return true;
}

// Reads n samples into dst, from the `skipped`-th sample of the next frame on.
void IQFReader::ReadSamples(FrameFile &frames, int skipped, int n, FrameHeader *headers, Cplx32 *dst) const {
  const double scale = static_cast<double>(static_cast<float>(scalingFactor));
  for (int done = 0; done < n; skipped = 0) {
    frames.Next();
    if (headers != nullptr) *headers++ = frames.Header();
    const int count = std::min(fftPoints - skipped, n - done);
    kernels::active->ScaleQI(frames.Pairs() + 2 * skipped, dst + done, count, iOffset, qOffset, scale);
    done += count;
    // A marked frame turns all samples of the read to polar form, once more if they are already; those of
    // frames to come would only be overwritten.
    if (IsPolar(frames.Header())) CartToPolarInPlace(dst, done);
  }
}

bool IQFReader::GetIQData2(int firstFrame, int nFrames, FrameHeader *headers, VecCplx32 &dst) const {
  const int size = CheckedSize(firstFrame, nFrames, fftPoints);
  FrameFile frames(*this, firstFrame, nFrames);
  dst.Resize(size);
  for (int f = 0; f < nFrames; ++f) {
    frames.Next();
    if (headers != nullptr) headers[f] = frames.Header();
    kernels::active->ScaleQI(frames.Pairs(), dst.GetPtr(f * fftPoints), fftPoints, 0.0, 0.0, 1.0);
  }
  const Cplx32 offset{static_cast<float>(iOffset), static_cast<float>(qOffset)};
  if (IsCartesian(frames.Header())) {
    dst -= offset;
  } else if (IsPolar(frames.Header())) {
    PolarToCartInPlace(dst.GetPtr(), size);
    dst += offset;
  } else {
    Throw(errors::kFileOpen, kModule);
  }
  dst *= static_cast<float>(scalingFactor);
  return true;
}

bool IQFReader::ReadIQData(int start, int n, VecCplx32 &dst) const {
  if (start < 0 || n < 0) Throw(errors::kInvalidParameter, kModule);
  CheckedSize(0, 0, fftPoints);
  const int first = start / fftPoints;
  const std::int64_t last = (std::int64_t{start} + n - 1) / fftPoints;
  const int nFrames = n == 0 ? 0 : static_cast<int>(last - first + 1);
  CheckedSize(first, nFrames, fftPoints);
  FrameFile frames(*this, first, nFrames);
  dst.Resize(n);
  ReadSamples(frames, start - first * fftPoints, n, nullptr, dst.GetPtr());
  return true;
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
    if (headers != nullptr) headers[f] = frames.Header();
    float *i = first.GetPtr(f * kPairs);
    float *q = second.GetPtr(f * kPairs);
    for (int k = 0; k < kPairs; ++k) {
      i[k] = frames.Pairs()[2 * k + 1];
      q[k] = frames.Pairs()[2 * k];
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
  if (header != nullptr) *header = frames.Header();
  for (int k = 0; k < size; ++k) {
    first[k] = static_cast<Real>(frames.Pairs()[2 * k]) * firstScale;
    second[k] = static_cast<Real>(frames.Pairs()[2 * k + 1]) * secondScale;
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
