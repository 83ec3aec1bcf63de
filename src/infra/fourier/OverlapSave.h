// Convolution with a fixed set of taps, block by block, by transforms (overlap-save: Stockham, High-speed
// convolution and correlation, 1966).
#ifndef QORN_SRC_INFRA_FOURIER_OVERLAPSAVE_H
#define QORN_SRC_INFRA_FOURIER_OVERLAPSAVE_H

#include <cstddef>

#include "CyclicPlan.h"
#include "Plan.h"
#include "WorkArray.h"

namespace QORN::fourier {

/// The plan of a length that is 2^k times 1, 3, 5 or 9, k >= 6, P being ComplexPlan, RealPlan or CyclicPlan.
/// It is made at the first call, belongs to the process and is never freed; any thread may call. Throws
/// QORNException 11001 if there is no memory for it.
template <class P> const P &SharedPlan(int length);

/// N complex values at a time, N as SharedPlan has it, are convolved with M <= N taps:
///   block[n] := sum over i of h[i] block[n - i], 0 <= i < M, indices modulo N.
/// From n = M - 1 on nothing is wrapped around: these Step() = N - M + 1 values are outputs of the filter,
/// and the first M - 1 inputs of a block are the last ones of the block before. With real taps, the real and
/// the imaginary parts are two real signals that do not meet. Copies are clones. Allocates when it is made,
/// and not afterwards.
template <class T> class OverlapSave {
public:
  /// Throws QORNException 11001 if there is no memory.
  OverlapSave(int length, int taps, Life life = Life::kLasting);

  int Length() const { return m_plan->Length(); }
  int Taps() const { return m_taps; }
  int Step() const { return Length() - m_taps + 1; }

  /// h, interleaved complex, of Taps() values.
  void SetTaps(const T *h);

  /// Where the 2 N scalars of a block are written and found again.
  T *Block() const { return m_work.Data() + 2 * static_cast<std::ptrdiff_t>(Length()); }
  void Run();

  /// The steps of Run, for whoever has more than one spectrum. The arrays have 2 N scalars; dst may be src.
  void Forward(const T *src, T *dst) const { m_plan->Forward(src, dst, Scratch(), T{1}); }
  void Inverse(const T *src, T *dst) const {
    m_plan->Inverse(src, dst, Scratch(), T{1} / static_cast<T>(Length()));
  }
  const T *Spectrum() const { return m_work.Data(); }

private:
  T *Scratch() const { return m_work.Data() + 4 * static_cast<std::ptrdiff_t>(Length()); }

  const ComplexPlan<T> *m_plan; // belongs to the process
  int m_taps;
  // Spectrum, which alone is copied, block and scratch. In one piece, since many allocators keep a piece for
  // the next request where they would give several back to the system.
  WorkArray<T> m_work;
};

/// OverlapSave of float values, or of two real signals of floats, in double. Each result is rounded once.
/// Copies are clones. Allocates when it is made, and not afterwards.
class FloatOverlapSave {
public:
  /// Throws QORNException 11001 if there is no memory.
  FloatOverlapSave(int length, int taps, Life life = Life::kLasting);

  int Length() const { return m_plan->Length(); }
  int Taps() const { return m_taps; }
  int Step() const { return Length() - m_taps + 1; }

  /// Where Taps() taps h, interleaved complex, are to be written before SetTaps().
  float *NewTaps() const { return reinterpret_cast<float *>(m_work.Data()); }
  void SetTaps();

  /// The largest magnitude of the taps' spectrum.
  double Gain() const { return m_gain; }

  /// Convolves Length() complex values and writes `count` results from number Taps() - 1 on. count is 1 to
  /// Step(); the arrays do not overlap.
  CyclicFigures Run(const float *x, float *dst, std::ptrdiff_t count);

  /// Of two real signals with real taps; their counts are 0 to Step().
  CyclicFigures Run(const float *x0, const float *x1, float *dst0, std::ptrdiff_t count0, float *dst1,
                    std::ptrdiff_t count1);

private:
  Cyclic Job() const;

  const CyclicPlan *m_plan; // belongs to the process
  int m_taps;
  double m_gain = 0;
  WorkArray<double> m_work; // spectrum and scratch, as above
};

extern template class OverlapSave<float>;
extern template class OverlapSave<double>;

} // namespace QORN::fourier

#endif
