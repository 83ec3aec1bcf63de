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

/// The blocks of overlap-save: their length, taps, and outputs.
template <class P> class Blocks {
public:
  int Length() const { return m_plan->Length(); }
  int Taps() const { return m_taps; }
  int Step() const { return Length() - m_taps + 1; }

protected:
  Blocks(int length, int taps) : m_plan(&SharedPlan<P>(length)), m_taps(taps) {}

  const P *m_plan; // belongs to the process
  int m_taps;
};

/// N complex values at a time, N as SharedPlan has it, are convolved with M <= N taps, in float:
///   block[n] := sum over i of h[i] block[n - i], 0 <= i < M, indices modulo N.
/// From n = M - 1 on nothing is wrapped around: these Step() = N - M + 1 values are outputs of the filter,
/// and the first M - 1 inputs of a block are the last ones of the block before. With real taps, the real and
/// the imaginary parts are two real signals that do not meet. Copies are clones. Allocates when it is made,
/// and not afterwards.
class OverlapSave : public Blocks<ComplexPlan<float>> {
public:
  /// Throws QORNException 11001 if there is no memory.
  OverlapSave(int length, int taps, Life life = Life::kLasting);

  /// h, interleaved complex, of Taps() values.
  void SetTaps(const float *h);

  /// Where the 2 N scalars of a block are written and found again.
  float *Block() const { return m_work.Data() + 2 * static_cast<std::ptrdiff_t>(Length()); }
  void Run();

private:
  float *Scratch() const { return m_work.Data() + 4 * static_cast<std::ptrdiff_t>(Length()); }

  // Spectrum, which alone is copied, block and scratch. In one piece, since many allocators keep a piece for
  // the next request where they would give several back to the system.
  WorkArray<float> m_work;
};

/// The same of float values, or of two real signals of floats, in double. Each result is rounded once.
/// Copies are clones. Allocates when it is made, and not afterwards.
class FloatOverlapSave : public Blocks<CyclicPlan> {
public:
  /// Throws QORNException 11001 if there is no memory.
  FloatOverlapSave(int length, int taps, Life life = Life::kLasting);

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

  double m_gain = 0;
  WorkArray<double> m_work; // spectrum and scratch, as above
};

/// The same of two real signals of doubles, each cut in two parts as in Cyclic.h. Copies are clones.
/// Allocates when it is made, and not afterwards.
class DoubleOverlapSave : public Blocks<CyclicPlan> {
public:
  /// Throws QORNException 11001 if there is no memory.
  DoubleOverlapSave(int length, int taps, Life life = Life::kLasting);

  /// Of Length() taps, those from Taps() on being 0; adding and subtracting `magic` rounds them to whole
  /// steps.
  void SetTaps(const double *h, double magic);

  /// The largest magnitude of the spectrum of the taps' whole steps.
  double Gain() const { return m_gain; }

  /// Convolves two signals, `magic` rounding their values to whole steps and `product` those of the results;
  /// `first` is Taps() - 1, the counts are 0 to Step(), and no results overlap with a signal.
  CyclicParts Run(const CyclicPair &pair, double magic, double product);

private:
  Cyclic Job() const;

  double m_gain = 0;
  WorkArray<double> m_work; // spectrum and scratch, as above
};

} // namespace QORN::fourier

#endif
