#ifndef QORN_INFRA_CPLXVECTOROPS_H
#define QORN_INFRA_CPLXVECTOROPS_H

#include "qorn/Export.h"
#include "qorn/infra/VectorStorage.h"

namespace QORN {

/// What VecCplx32 and VecCplx64 share word for word: V is the vector class, T its element type, S the scalar
/// of its parts and R the real vector of that scalar.
///
/// Lengths, indices and capacities count complex values. Arithmetic and statistics work on the whole view,
/// straight through the kernels, and allocate nothing. Arithmetic changes this vector in place over its own
/// length; no operation changes the length. Of a longer operand only the first GetSize() elements are read; a
/// shorter one is read beyond its end, which a build with QORN_CHECKED asserts. The operand may be this
/// vector itself.
template <class V, class T, class S, class R> class QORN_API CplxVectorOps : public VectorStorage<V, T> {
public:
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

  /// this[i] = this[i] / arg[i]. If a divisor has zero magnitude, its element holds the IEEE result and
  /// QORNException 12001 is thrown after all elements are written.
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

  /// this[i] = this[i] * (1 / val), the reciprocal formed once. A val of zero magnitude leaves the vector as
  /// it is, without any report.
  ///@{
  V &operator/=(T val);
  void Div(T val);
  ///@}

  /// Both parts of this[i] times val.
  ///@{
  V &operator*=(S val);
  void Mul(S val);
  ///@}

  /// value = the element of largest magnitude, index = the place of its first occurrence; magnitudes are
  /// compared as re^2 + im^2 in the element's precision. Elements that are not a number are passed over.
  /// Index 0 if no magnitude is above 0, value (0, 0) for an empty vector.
  void Max(T &value, int &index) const;

  /// value = the element of smallest magnitude, index = the place of its first occurrence, as in Max. An
  /// element 0 that is not a number wins, since nothing compares below it.
  void Min(T &value, int &index) const;

  /// The element of largest or smallest magnitude, as above.
  ///@{
  T Max() const;
  T Min() const;
  ///@}

  /// The sum of all elements, accumulated in double; (0, 0) for an empty vector.
  T Sum() const;

  /// Sum / N, formed in double; (0, 0) for an empty vector.
  T Mean() const;

  /// out[i] = the real part of this[i], out resized to this length.
  void GetReal(R &out) const;

  /// out[i] = the imaginary part of this[i], out resized to this length.
  void GetImag(R &out) const;

  /// this[i] = (re[i], 0), resized to the length of re.
  void Import(const R &re);

  /// this[i] = (re[i], im[i]), resized to the length of re. The length of im is not looked at: a shorter one
  /// is read beyond its end, which a build with QORN_CHECKED asserts.
  void Import(const R &re, const R &im);

  /// Resizes to n and copies src[0] to src[n - 1].
  void Import(const T *src, int n);

  /// Resizes to n and copies n pairs: this[i] = (src[2 i], src[2 i + 1]).
  void Import(const S *src, int n);

  /// this[i] = (re[i], im[i]) for 0 <= i < n, resized to n.
  void Import(const S *re, const S *im, int n);

  /// Reads a text file of records "re im", or "index re im" with threeColumn, the index being dropped, and
  /// resizes to their count. The second form is what Dump(path, announce) writes. Reading stops without a
  /// report at the first record that is not complete. The file is read twice, so it must allow a return to
  /// its start: of a pipe nothing is kept. Throws QORNException 13001 if the file cannot be opened.
  void Import(const char *path, bool threeColumn = false);

  /// dst[i] = this[i] for 0 <= i < n, whatever the length.
  void Export(T *dst, int n) const;

  /// (re[i], im[i]) = this[i] for 0 <= i < n, whatever the length.
  void Export(S *re, S *im, int n) const;

  using VectorOps<V, T>::Dump;

  /// Writes a text file with a line for each element, its index and its two parts. With announce, "====", the
  /// path and " saved" follow on the standard output. Throws QORNException 13001 if the file cannot be
  /// opened.
  void Dump(const char *path, bool announce = false) const;

  /// True if the lengths agree and both parts of each element equal their counterparts exactly: not-a-number
  /// equals nothing, 0 equals -0. Two empty vectors are equal.
  bool operator==(const CplxVectorOps &arg) const;
  bool operator!=(const CplxVectorOps &arg) const { return !(*this == arg); }

  /// True if the lengths agree and for all elements the real parts, and also the imaginary parts, differ by
  /// at most tol; not-a-number fails, and so does a negative tol. Prints a message about the first element
  /// that fails, and none if the lengths differ.
  bool IsEqual(const V &arg, S tol) const;

protected:
  CplxVectorOps() = default;
  using VectorStorage<V, T>::VectorStorage;
};

} // namespace QORN

#endif
