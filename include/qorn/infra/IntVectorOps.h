#ifndef QORN_INFRA_INTVECTOROPS_H
#define QORN_INFRA_INTVECTOROPS_H

#include "qorn/Export.h"
#include "qorn/infra/VectorOps.h"

namespace QORN {

/// The text files and the comparison that VecInt16, VecInt32 and VecUInt32 share: V is the vector class, T
/// its element type.
template <class V, class T> class QORN_API IntVectorText : public VectorOps<V, T> {
public:
  /// Reads a text file of decimal numbers, separated by white space, and resizes to their count. With
  /// twoColumn each record has two numbers, an index that is dropped and the value. T keeps the
  /// low bits of each. Reading stops without a report at the first record that
  /// is not complete. The file is read twice, so it must allow a return to its start: of a pipe nothing is
  /// kept. Throws QORNException 13001 if the file cannot be opened.
  void Import(const char *path, bool twoColumn = false);

  using VectorOps<V, T>::Dump;

  /// Writes a text file with a line for each element: index and value for VecInt16, to be read back with
  /// twoColumn, and the value alone for the others. With announce, "====", the path and " saved" follow on
  /// the standard output. Throws QORNException 13001 if the file cannot be opened.
  void Dump(const char *path, bool announce = false) const;

  /// True if the lengths agree and |this[i] - arg[i]| <= tol for all elements; prints nothing. The difference
  /// of 32-bit elements wraps and is read as signed, so that 0 and 4294967295 differ by 1.
  bool IsEqual(const V &arg, int tol) const;

protected:
  IntVectorText() = default;
  using VectorOps<V, T>::VectorOps;
};

/// What VecInt16 and VecInt32 share word for word: V is the vector class, T its element type.
///
/// Arithmetic changes this vector in place over its own length; results stick at the limits of the type. Of a
/// longer operand only the first GetSize() elements are read; a shorter one is read beyond its end, which a
/// build with QORN_CHECKED asserts. The operand may be this vector itself. There is no division, and no
/// operator==: see IsEqual.
template <class V, class T> class QORN_API IntVectorOps : public IntVectorText<V, T> {
public:
  /// this[i] = this[i] + arg[i], saturated. The operators return this vector, the named forms nothing.
  ///@{
  V &operator+=(const V &arg);
  void Add(const V &arg);
  ///@}

  /// this[i] = this[i] - arg[i], saturated.
  ///@{
  V &operator-=(const V &arg);
  void Sub(const V &arg);
  ///@}

  /// this[i] = this[i] * arg[i], saturated.
  ///@{
  V &operator*=(const V &arg);
  void Mul(const V &arg);
  ///@}

  /// this[i] = this[i] + val, saturated.
  ///@{
  V &operator+=(T val);
  void Add(T val);
  ///@}

  /// this[i] = this[i] - val, saturated.
  ///@{
  V &operator-=(T val);
  void Sub(T val);
  ///@}

  /// this[i] = this[i] * val, saturated.
  ///@{
  V &operator*=(T val);
  void Mul(T val);
  ///@}

  /// The largest or smallest element; 0 for an empty vector.
  ///@{
  T Max() const;
  T Min() const;
  ///@}

  /// value = the largest or smallest element, index = the place of its first occurrence; 0 and 0 for an empty
  /// vector.
  ///@{
  void Max(T &value, int &index) const;
  void Min(T &value, int &index) const;
  ///@}

  /// The sum of all elements, saturated to T; 0 for an empty vector.
  T Sum() const;

  using IntVectorText<V, T>::Import;

  /// Resizes to n and copies src[0] to src[n - 1].
  void Import(const T *src, int n);

  /// dst[i] = this[i] for 0 <= i < n, whatever the length.
  void Export(T *dst, int n) const;

protected:
  IntVectorOps() = default;
  using IntVectorText<V, T>::IntVectorText;
};

} // namespace QORN

#endif
