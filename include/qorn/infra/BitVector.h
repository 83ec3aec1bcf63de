#ifndef QORN_INFRA_BITVECTOR_H
#define QORN_INFRA_BITVECTOR_H

#include "qorn/Export.h"
#include "qorn/infra/MatrixOps.h"

namespace QORN {

class VecInt16;

/// A set of code words: a matrix with a row for each code word and a byte for each bit. A bit is 0, 1 or 255,
/// the last an undefined position; other bytes are not refused. Storage: BaseMatrix; copies and the dump to
/// the standard output: MatrixOps, in which a bit prints as GetPrintChar and a blank, and the tail has the
/// last n code words.
///
/// Logic works on all eight bits of a byte and in place changes this object over its own size; of the operand
/// as many bytes are read, whatever its shape, which a build with QORN_CHECKED asserts.
class QORN_API BitVector : public MatrixOps<BitVector, unsigned char> {
public:
  /// No code words.
  BitVector() = default;

  /// `codes` code words of `width` bits, all 0. Throws QORNException 11001 if a count is negative or there is
  /// no memory.
  BitVector(int codes, int width);

  /// A code word for each element of values: see Import(values, width).
  BitVector(const VecInt16 &values, int width);

  /// The number of code words.
  int GetCodeLen() const { return m_rows; }

  /// The number of bits of a code word.
  int GetCodeWordLen() const { return m_cols; }

  /// True for 0, 1 and 255.
  bool IsValidBit(unsigned char b) const { return b <= 1 || b == 255; }

  /// '0' for 0, '1' for 1, 'x' for any other byte.
  static char GetPrintChar(unsigned char b);

  /// All bits = b.
  void Set(unsigned char b);

  /// this[i] = this[i] & b[i], | and ^.
  ///@{
  void And(const BitVector &b);
  void Or(const BitVector &b);
  void Xor(const BitVector &b);
  ///@}

  /// out[i] = a[i] & b[i], | and ^, out resized to the shape of a. out may be a or b.
  ///@{
  static void And(BitVector &out, const BitVector &a, const BitVector &b);
  static void Or(BitVector &out, const BitVector &a, const BitVector &b);
  static void Xor(BitVector &out, const BitVector &a, const BitVector &b);
  ///@}

  /// 0 becomes 1 and 1 becomes 0; every other byte stays.
  void Not();

  /// out[i] = ~a[i], out resized to the shape of a: the complement of all eight bits, so that 0 gives 255, 1
  /// gives 254 and 255 gives 0. out may be a.
  static void Not(BitVector &out, const BitVector &a);

  using MatrixOps::Import;

  /// A code word for each element of values: the value's lowest bit is the last bit of the word, and so on to
  /// the left. Bits beyond the sixteenth repeat the sign.
  void Import(const VecInt16 &values, int width);

  /// Resizes to `codes` words of `width` bits and sets words first to first + codes - 1 from the elements of
  /// values at the same indices. Words beyond the last are left out, so a first above 0 leaves the words
  /// before it as they were.
  void Import(const VecInt16 &values, int codes, int first, int width);

  /// Reads a text file of decimal numbers, separated by white space, `width` of them for a code word, of
  /// which the low byte is kept; with hasIndex each word has a number before it that is dropped. A last word
  /// that is not complete does not count, and reading stops without a report at what is no number. The file
  /// is read twice, so it must allow a return to its start: of a pipe nothing is kept. Throws QORNException
  /// 13001 if the file cannot be opened.
  void Import(const char *path, int width, bool hasIndex = false);

  /// Copies the bytes of the first `codes` words.
  void Export(unsigned char *dst, int codes) const;

  /// out[r] = the number that word r spells for 0 <= r < codes, out resized to codes: the sum of byte times
  /// weight in 16 bits. Weights are signed 16-bit numbers, 2^(width - 1) for the first bit and halved from
  /// bit to bit; so a word of sixteen bits counts with negative weights, a longer one is 0, and a byte of 255
  /// counts 255 times its weight.
  void Export(VecInt16 &out, int codes) const;

  /// True if the shapes agree and all bytes are equal; prints nothing.
  bool IsEqual(const BitVector &b) const { return IsSame(b); }

  using MatrixOps::Dump;

  /// Writes a text file with a line for each code word, with withIndex its number first, then its bits as
  /// GetPrintChar. Import reads it back if all bits are 0 or 1. With announce, "====", the path and " saved"
  /// follow on the standard output. Throws QORNException 13001 if the file cannot be opened.
  void Dump(const char *path, bool withIndex = false, bool announce = false) const;

private:
  bool Validate() const; // all bytes are 0, 1 or 255
};

extern template class MatrixOps<BitVector, unsigned char>;

} // namespace QORN

#endif
