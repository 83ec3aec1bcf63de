#ifndef QORN_INFRA_REALVECTOROPS_H
#define QORN_INFRA_REALVECTOROPS_H

#include "qorn/Export.h"
#include "qorn/infra/VectorStorage.h"

namespace QORN {

/// What VecReal32 and VecReal64 share word for word: V is the vector class, T its element type.
///
/// Arithmetic and statistics work on the whole view, straight through the kernels, and allocate nothing.
/// Arithmetic changes this vector in place over its own length, one rounding per element; no operation
/// changes the length. Of a longer operand only the first GetSize() elements are read; a shorter one is read
/// beyond its end, which a build with QORN_CHECKED asserts. The operand may be this vector itself.
template <class V, class T> class QORN_API RealVectorOps : public VectorStorage<V, T> {
public:
  /// Element i = i * slope + offset for 0 <= i < n, one rounding for each of the two steps, of a vector
  /// resized to n.
  void Ramp(int n, T offset = 0, T slope = 1);

  /// this[i] = this[i] + arg[i]. The operators return this vector, the named forms nothing.
  ///@{
  V &operator+=(const V &arg);
  void Add(const V &arg);
  ///@}

  /// this[i] = this[i] - arg[i].
  ///@{
  V &operator-=(const V &arg);
  void Sub(const V &arg);
  ///@}

  /// this[i] = this[i] * arg[i].
  ///@{
  V &operator*=(const V &arg);
  void Mul(const V &arg);
  ///@}

  /// this[i] = this[i] / arg[i]. If a divisor is 0, its element holds the IEEE result and QORNException 12001
  /// is thrown after all elements are written.
  ///@{
  V &operator/=(const V &arg);
  void Div(const V &arg);
  ///@}

  /// this[i] = this[i] + val.
  ///@{
  V &operator+=(T val);
  void Add(T val);
  ///@}

  /// this[i] = this[i] - val.
  ///@{
  V &operator-=(T val);
  void Sub(T val);
  ///@}

  /// this[i] = this[i] * val.
  ///@{
  V &operator*=(T val);
  void Mul(T val);
  ///@}

  /// this[i] = this[i] * (1 / val), the reciprocal formed once. A val of 0 leaves the vector as it is,
  /// without any report.
  ///@{
  V &operator/=(T val);
  void Div(T val);
  ///@}

  /// The largest or smallest element. Elements that are not a number are passed over; 0 for an empty vector.
  ///@{
  T Max() const;
  T Min() const;
  ///@}

  /// The same over the count elements from first on, or over the rest if count is -1; 0 for an empty range.
  ///@{
  T Max(int first, int count = -1) const;
  T Min(int first, int count = -1) const;
  ///@}

  /// value = the largest or smallest element, index = the place of its first occurrence; 0 and 0 for an empty
  /// vector.
  ///@{
  void Max(T &value, int &index) const;
  void Min(T &value, int &index) const;
  ///@}

  /// The same over the count elements from first on, or over the rest if count is -1. index counts from the
  /// start of the vector; an empty range gives the value 0 and the index first.
  ///@{
  void Max(T &value, int &index, int first, int count = -1) const;
  void Min(T &value, int &index, int first, int count = -1) const;
  ///@}

  /// The sum of all elements, accumulated in double; 0 for an empty vector.
  T Sum() const;

  /// Sum / N, formed in double; 0 for an empty vector.
  T Mean() const;

  /// The sample standard deviation sqrt(sum of (this[i] - mean)^2 / (N - 1)); 0 for fewer than 2 elements.
  T StdDev() const;

  /// The sample variance: StdDev() squared.
  T Var() const;

  /// Resizes to n and copies src[0] to src[n - 1].
  void Import(const T *src, int n);

  /// Reads a text file of numbers, separated by white space, and resizes to their count. With twoColumn each
  /// record has two numbers, an index that is dropped and the value; this reads what Dump(path, announce)
  /// wrote. Reading stops without a report at the first record that is not complete. The file is read twice,
  /// so it must allow a return to its start: of a pipe nothing is kept. Throws QORNException 13001 if the
  /// file cannot be opened.
  void Import(const char *path, bool twoColumn = false);

  /// As above, for records of 1, 2 or 3 numbers, of which the one at the place column, counted from 0, is
  /// kept: column 1 or 2 of three, column 1 of two, and the first for any other column. Any other number of
  /// columns is taken as 1.
  void Import(const char *path, int columns, int column);

  /// dst[i] = this[i] for 0 <= i < n, whatever the length.
  void Export(T *dst, int n) const;

  using VectorOps<V, T>::Dump;

  /// Writes a text file with a line for each element, its index and its value. With announce, "====", the
  /// path and " saved" follow on the standard output. Throws QORNException 13001 if the file cannot be
  /// opened.
  void Dump(const char *path, bool announce = false) const;

  /// True if the lengths agree and each element equals its counterpart exactly: not-a-number equals nothing,
  /// 0 equals -0. Two empty vectors are equal.
  bool operator==(const RealVectorOps &arg) const;
  bool operator!=(const RealVectorOps &arg) const { return !(*this == arg); }

protected:
  RealVectorOps() = default;
  using VectorStorage<V, T>::VectorStorage;

  /// True if |this[i] - arg[i]| <= tol for 0 <= i < GetSize(). Else prints a message about the first element
  /// that fails.
  bool IsWithin(const V &arg, T tol) const;
};

} // namespace QORN

#endif
