#include "qorn/math/VectorAverage.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "ScratchFile.h"
#include "infra/Errors.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

namespace {

constexpr char kModule[] = "math\\VectorAverage";

// Vectors are moved in pieces of so many elements, through memory that need not be allocated.
constexpr int kPiece = 4096;

// use(start, count, position) for the pieces of a slot of `length` elements at `position`.
template <class Use> void ForEachPiece(std::int64_t position, int length, Use use) {
  for (int start = 0; start < length; start += std::min(kPiece, length - start)) {
    use(start, std::min(kPiece, length - start),
        position + std::int64_t{start} * static_cast<std::int64_t>(sizeof(float)));
  }
}

// What make() gives, without an exception that is not the library's own.
template <class Make> auto Made(Make make) {
  try {
    return make();
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
}

} // namespace

VectorAverage::VectorAverage() noexcept = default;

VectorAverage::VectorAverage(int newCount, const char *newPath) { Init(newCount, newPath); }

VectorAverage::VectorAverage(const VectorAverage &other)
    : count(other.count), path(Made([&] { return other.path; })), vecLen(other.vecLen),
      fileSize(other.fileSize), filePos(other.filePos), sum(other.sum), current(other.current), copied(true),
      intact(other.intact) {
  if (other.file == nullptr) return;
  OpenFile();
  float piece[kPiece];
  other.ForEachVector([&](std::int64_t slot) {
    ForEachPiece(slot, vecLen, [&](int, int n, std::int64_t position) {
      intact &= other.file->Read(position, piece, n);
      intact &= file->Write(position, piece, n);
    });
  });
}

VectorAverage &VectorAverage::operator=(const VectorAverage &other) {
  if (this == &other) return *this;
  VectorAverage copy(other);
  Swap(copy);
  return *this;
}

VectorAverage::VectorAverage(VectorAverage &&other) noexcept { Swap(other); }

VectorAverage &VectorAverage::operator=(VectorAverage &&other) noexcept {
  VectorAverage moved(std::move(other));
  Swap(moved);
  return *this;
}

VectorAverage::~VectorAverage() = default;

void VectorAverage::Swap(VectorAverage &other) noexcept {
  std::swap(count, other.count);
  std::swap(path, other.path);
  std::swap(file, other.file);
  std::swap(vecLen, other.vecLen);
  std::swap(fileSize, other.fileSize);
  std::swap(filePos, other.filePos);
  std::swap(sum, other.sum);
  std::swap(current, other.current);
  std::swap(copied, other.copied);
  std::swap(intact, other.intact);
}

void VectorAverage::Init(int newCount, const char *newPath) {
  VectorAverage fresh;
  fresh.count = std::max(newCount, 0);
  if (newPath != nullptr) fresh.path = Made([&] { return std::string(newPath); });
  Swap(fresh);
}

std::int64_t VectorAverage::SlotBytes() const {
  return std::int64_t{vecLen} * static_cast<std::int64_t>(sizeof(float));
}

// use(position) for the slots of the vectors in the average, oldest first. They lie behind each other, and
// end before the slot that is written next.
template <class Use> void VectorAverage::ForEachVector(Use use) const {
  std::int64_t position = filePos - current * SlotBytes();
  if (position < 0) position += fileSize;
  for (int k = 0; k < current; ++k) {
    use(position);
    position += SlotBytes();
    if (position == fileSize) position = 0;
  }
}

void VectorAverage::OpenFile() {
  file = Made([this] { return std::make_unique<ScratchFile>(path, copied, kModule); });
  intact &= file->Clear(fileSize);
}

// An empty ring for vectors of the given length. If that fails there is no file.
void VectorAverage::Restart(int length) {
  file.reset();
  sum.Resize(length);
  sum.SetZero();
  const std::int64_t slots = std::int64_t{count} + 1;
  if (__builtin_mul_overflow(slots * static_cast<std::int64_t>(sizeof(float)), length, &fileSize)) {
    fileSize = std::numeric_limits<std::int64_t>::max();
  }
  filePos = 0;
  intact = true;
  OpenFile();
  vecLen = length;
}

bool VectorAverage::Add(const VecReal32 &v) {
  const int n = std::max(v.GetSize(), 0);
  if (current != 0 && n != vecLen) return false;
  if (vecLen != 0 && file == nullptr) Throw(errors::kUnexpectedSoftware, kModule);
  if (file == nullptr || n != vecLen) Restart(n);

  intact &= file->Write(filePos, v.GetPtr(), n);
  filePos += SlotBytes();
  if (filePos == fileSize) filePos = 0;
  float oldest[kPiece];
  ForEachPiece(filePos, n, [&](int start, int length, std::int64_t position) {
    intact &= file->Read(position, oldest, length);
    const float *x = v.GetPtr(start);
    double *s = sum.GetPtr(start);
    for (int i = 0; i < length; ++i) s[i] += static_cast<double>(x[i] - oldest[i]);
  });
  current = std::min(current + 1, count);
  return true;
}

bool VectorAverage::Get(VecReal32 &out) const {
  if (current == 0) {
    out.Resize(std::max(vecLen, 1));
    out.SetZero();
    return false;
  }
  out.Resize(vecLen);
  const double factor = 1.0 / current;
  for (int i = 0; i < vecLen; ++i) out[i] = static_cast<float>(sum[i] * factor);
  return IsCountReached();
}

void VectorAverage::Clear() {
  current = 0;
  filePos = 0;
  sum.SetZero();
  intact = file == nullptr || file->Clear(fileSize);
}

void VectorAverage::ReCalc() {
  if (current == 0) return;
  sum.SetZero();
  float piece[kPiece];
  ForEachVector([&](std::int64_t slot) {
    ForEachPiece(slot, vecLen, [&](int start, int length, std::int64_t position) {
      intact &= file->Read(position, piece, length);
      double *s = sum.GetPtr(start);
      for (int i = 0; i < length; ++i) s[i] += static_cast<double>(piece[i]);
    });
  });
}

} // namespace QORN
