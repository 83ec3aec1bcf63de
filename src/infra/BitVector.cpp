#include "qorn/infra/BitVector.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "Checks.h"
#include "MatrixTraits.h"
#include "TextFile.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecInt16.h"

namespace QORN {

namespace {

using Traits = MatrixTraits<BitVector>;

// The lowest bit goes last; the shift repeats the sign.
void SetBits(unsigned char *word, int width, int value) {
  for (int c = width - 1; c >= 0; --c, value >>= 1) word[c] = static_cast<unsigned char>(value & 1);
}

// The complete code words of a file, each of `fields` numbers.
int CountWords(std::FILE *file, std::int64_t fields) {
  if (fields < 1) return 0;
  std::int64_t count = 0;
  for (int value = 0; ScanNumber(file, value);) ++count;
  return static_cast<int>(std::min<std::int64_t>(count / fields, std::numeric_limits<int>::max()));
}

bool ReadWord(std::FILE *file, unsigned char *word, int width, bool hasIndex) {
  int value = 0;
  if (hasIndex && !ScanNumber(file, value)) return false;
  for (int c = 0; c < width; ++c) {
    if (!ScanNumber(file, value)) return false;
    word[c] = static_cast<unsigned char>(value);
  }
  return true;
}

} // namespace

BitVector::BitVector(int codes, int width) : MatrixOps(codes, width) { SetZero(); }

BitVector::BitVector(const VecInt16 &values, int width) : MatrixOps(values.GetSize(), width) {
  Import(values, width);
}

char BitVector::GetPrintChar(unsigned char b) {
  if (b > 1) return 'x';
  return b == 0 ? '0' : '1';
}

void BitVector::Set(unsigned char b) { TargetLib::Set_8u(b, m_pData, m_size); }

void BitVector::And(const BitVector &b) {
  checks::Operand("size of b", b.m_size, m_size);
  TargetLib::And_8u_I(b.m_pData, m_pData, m_size);
}
void BitVector::Or(const BitVector &b) {
  checks::Operand("size of b", b.m_size, m_size);
  TargetLib::Or_8u_I(b.m_pData, m_pData, m_size);
}
void BitVector::Xor(const BitVector &b) {
  checks::Operand("size of b", b.m_size, m_size);
  TargetLib::Xor_8u_I(b.m_pData, m_pData, m_size);
}

void BitVector::And(BitVector &out, const BitVector &a, const BitVector &b) {
  checks::Operand("size of b", b.m_size, a.m_size);
  out.Resize(a.m_rows, a.m_cols);
  TargetLib::And_8u(a.m_pData, b.m_pData, out.m_pData, out.m_size);
}
void BitVector::Or(BitVector &out, const BitVector &a, const BitVector &b) {
  checks::Operand("size of b", b.m_size, a.m_size);
  out.Resize(a.m_rows, a.m_cols);
  TargetLib::Or_8u(a.m_pData, b.m_pData, out.m_pData, out.m_size);
}
void BitVector::Xor(BitVector &out, const BitVector &a, const BitVector &b) {
  checks::Operand("size of b", b.m_size, a.m_size);
  out.Resize(a.m_rows, a.m_cols);
  TargetLib::Xor_8u(a.m_pData, b.m_pData, out.m_pData, out.m_size);
}

void BitVector::Not() {
  for (int i = 0; i < m_size; ++i) {
    const unsigned char b = m_pData[i];
    m_pData[i] = b <= 1 ? static_cast<unsigned char>(1 - b) : b;
  }
}

void BitVector::Not(BitVector &out, const BitVector &a) {
  out.Resize(a.m_rows, a.m_cols);
  TargetLib::Not_8u(a.m_pData, out.m_pData, out.m_size);
}

void BitVector::Import(const VecInt16 &values, int width) { Import(values, values.GetSize(), 0, width); }

void BitVector::Import(const VecInt16 &values, int codes, int first, int width) {
  Resize(codes, width);
  if (m_size < 1) return;
  checks::Range(first, codes, values.GetSize());
  const std::int64_t end = std::min<std::int64_t>(std::int64_t{first} + codes, m_rows);
  for (int k = std::max(first, 0); k < end; ++k) SetBits(m_ppRows[k], width, values[k]);
}

void BitVector::Import(const char *path, int width, bool hasIndex) {
  const TextFile file = OpenText(path, "r", Traits::kFileModule);
  const int count = CountWords(file.get(), width < 0 ? 0 : std::int64_t{width} + (hasIndex ? 1 : 0));
  Resize(count, width);
  if (m_size < 1) return;
  std::rewind(file.get());
  int stored = 0;
  while (stored < count && ReadWord(file.get(), m_ppRows[stored], width, hasIndex)) ++stored;
  Resize(stored, width);
}

void BitVector::Export(unsigned char *dst, int codes) const {
  const std::int64_t bytes = std::int64_t{codes} * m_cols;
  checks::Require(bytes <= m_size, "bytes of the codes", bytes, "size", m_size);
  TargetLib::Copy_8u(m_pData, dst, static_cast<int>(std::min<std::int64_t>(bytes, m_size)));
}

void BitVector::Export(VecInt16 &out, int codes) const {
  checks::Require(codes <= m_rows, "codes", codes, "rows", m_rows);
  out.Resize(codes);
  const std::int16_t highest =
      m_cols >= 1 && m_cols <= 16 ? static_cast<std::int16_t>(1U << (m_cols - 1)) : std::int16_t{0};
  for (int r = 0; r < codes; ++r) {
    std::int16_t weight = highest, sum = 0;
    for (int c = 0; c < m_cols && r < m_rows; ++c) {
      sum = static_cast<std::int16_t>(sum + m_ppRows[r][c] * weight);
      weight = static_cast<std::int16_t>(weight >> 1);
    }
    out[r] = sum;
  }
}

void BitVector::Dump(const char *path, bool withIndex, bool announce) const {
  DumpLines(path, announce, Traits::kFileModule, m_rows, [=, this](std::FILE *file, int r) {
    if (withIndex) std::fprintf(file, "%3d ", r);
    for (int c = 0; c < m_cols; ++c) Traits::Print(file, m_ppRows[r][c]);
    std::fprintf(file, "\n");
  });
}

bool BitVector::Validate() const {
  return std::all_of(m_pData, m_pData + std::max(m_size, 0),
                     [this](unsigned char b) { return IsValidBit(b); });
}

static_assert(sizeof(BitVector) == sizeof(BaseMatrix<unsigned char>));

} // namespace QORN
