// Plans of the Fourier transforms: immutable, holding factors and roots of unity, made once per length.
//
// All complex arrays are interleaved scalars. Forward is the sum with exp(-j 2 pi n k / N), Inverse that with
// exp(+j 2 pi n k / N), each multiplied by `scale` in the last pass. Scratch belongs to the caller: aligned
// memory of ScratchBytes(), whose contents do not matter. Nothing here allocates but Make and Clone.
#ifndef QORN_SRC_INFRA_FOURIER_PLAN_H
#define QORN_SRC_INFRA_FOURIER_PLAN_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Block.h"
#include "Direct.h"
#include "Factorise.h"
#include "FourStep.h"
#include "Grid.h"
#include "Passes.h"

namespace QORN::fourier {

class Plan {
public:
  virtual ~Plan() = default;

  /// A plan of its own for the same transform, or null if there is no memory.
  virtual std::unique_ptr<Plan> Clone() const = 0;

  virtual std::size_t ScratchBytes() const = 0;
};

/// The scratch of an owner of plans.
class Workspace {
public:
  /// One of the plan's ScratchBytes(); null if plan is, or if there is no memory.
  static std::unique_ptr<Workspace> Make(const Plan *plan);

  /// Has at least `bytes` afterwards, contents not kept; false if there is no memory for them.
  bool Grow(std::size_t bytes);

  template <class T> T *As() const { return reinterpret_cast<T *>(m_block.Data()); }

private:
  Block<unsigned char> m_block;
};

/// Complex transform of any length. Which way, by this rule:
/// - a few short lengths: kernels of their own (Direct.h);
/// - some lengths to 4096: lines of a grid (Grid.h; LinesFor says which);
/// - a short product of two or three radices: a grid (Grid.h; GridFor says which);
/// - else up to 16 points: one butterfly;
/// - a product of a few radices, 8 or 16 of them first, in the caches: two sweeps of lines (FourStep.h;
///   FourStepFor says which);
/// - no prime factor above 13, and the samples in the caches: passes over blocks and a joining of lanes
///   (Passes.h);
/// - no prime factor above kMaxRadix: two steps of tiles, if both can be made long enough;
/// - a prime N, no prime factor of N - 1 being above 31 and N - 1 going one of the ways above: Rader's
///   convolution, by two transforms of N - 1;
/// - else Bluestein's chirp convolution, by two transforms of the cheapest smooth length of at least 2 N - 1.
///
/// A plan takes the memory of 3 N complex values or less, and of 4 KiB. Exceptions are tiles, where (p / 2)^2
/// values for each prime factor p above kMaxStraight come on top, and Bluestein's way for fewer than 120 KiB
/// of samples, to 7 N: the short transforms of its convolution are fastest with two values for each point.
template <class T> class ComplexPlan final : public Plan {
public:
  /// Null if length is below 1 or there is no memory for the plan.
  static std::unique_ptr<ComplexPlan> Make(int length);

  ComplexPlan(const ComplexPlan &other);
  std::unique_ptr<Plan> Clone() const override;

  int Length() const { return m_length; }
  T Share() const { return m_share; }
  std::size_t ScratchBytes() const override { return m_scratch * sizeof(T); }

  /// out may be in; otherwise the two must not overlap.
  void Forward(const T *in, T *out, T *scratch, T scale) const { Run(in, out, scratch, false, scale); }
  void Inverse(const T *in, T *out, T *scratch, T scale) const { Run(in, out, scratch, true, scale); }

  /// The forward transform, of scale 1, of samples that are multiplied by weights first: the bits of the
  /// products, rounded, and then Forward. Weights are as the samples are, each stored twice. False if this
  /// plan cannot do it in one; only those in float of a grid or of passes can. out may be in.
  bool ForwardWeighted(const T *in, const T *weights, T *out, T *scratch) const;

private:
  explicit ComplexPlan(int length);
  void MakeGrid(const GridShape &shape);
  void MakeLines(const GridShape &shape);
  void MakeFourStep(const FourStepShape &shape);
  void MakeColumns(int lanes);
  void MakeTiled(std::int64_t rows);
  void Link();
  void MakeBluestein();
  void MakeSpectrum(T *taps, bool conjugate);
  void MakeRader(int generator);
  void RunRader(const T *in, T *out, T *scratch, bool inverse, T scale) const;
  void RunLong(const T *in, T *out, T *scratch, bool inverse, T scale) const;

  // A call of a direct kernel takes about as long as the kernel itself: nothing but the choice stands
  // between.
  void Run(const T *in, T *out, T *scratch, bool inverse, T scale) const {
    if (m_direct != nullptr) {
      RunDirect(m_direct, in, out, inverse, scale);
    } else {
      RunLong(in, out, scratch, inverse, scale);
    }
  }

  int m_length;
  T m_share;                             // 1 / m_length: a division takes longer than a short transform
  DirectKernel<T> m_direct;              // or null: another way
  std::size_t m_scratch = 0;             // in scalars
  Grid<T> m_grid{};                      // its tables are the first two below; rows is 0 of another way
  Lines<T> m_lines{};                    // its tables are the first two below; length is 0 of another way
  std::unique_ptr<Columns<T>> m_columns; // its tables are the three below; or null
  FourStep<T> m_fourStep{};              // its tables are the five below; first is 0 of another way
  Block<T> m_turns, m_joins, m_strides;
  std::unique_ptr<Tiled<T>> m_tiled; // its tables are the next two, joins and strides as above; or null
  Block<T> m_down, m_across;
  std::unique_ptr<ComplexPlan> m_convolution; // Bluestein's and Rader's: the transform, and a spectrum
  Block<T> m_chirp, m_spectrum;               // the spectrum as far as its middle
  Block<std::int32_t> m_places;               // Rader's: the first half of the powers of the generator
};

/// Real transform of any length: a few short ones by kernels of their own (Direct.h); else, where it is even,
/// a complex one of half the length and a step between them. Memory: that of a complex plan of N, or of
/// one of N / 2 and of N / 4 complex values.
template <class T> class RealPlan final : public Plan {
public:
  /// Null if length is below 1 or there is no memory for the plan.
  static std::unique_ptr<RealPlan> Make(int length);

  RealPlan(const RealPlan &other);
  std::unique_ptr<Plan> Clone() const override;

  int Length() const { return m_length; }
  T Share() const { return m_share; }
  std::size_t ScratchBytes() const override;

  /// All N bins of N samples; bins k and N - k are exact conjugates. in and out must not overlap.
  void Forward(const T *in, T *out, T *scratch, T scale) const {
    if (m_direct != nullptr) {
      RunDirect(m_direct, in, out, false, scale);
    } else {
      ForwardLong(in, out, scratch, scale);
    }
  }

  /// N samples from bins 0 to N / 2; the imaginary parts of bin 0 and, for even N, of bin N / 2 are taken as
  /// zero. in and out must not overlap.
  void Inverse(const T *in, T *out, T *scratch, T scale) const {
    if (m_direct != nullptr) {
      RunDirect(m_direct, in, out, true, scale);
    } else {
      InverseLong(in, out, scratch, scale);
    }
  }

private:
  explicit RealPlan(int length);
  void ForwardLong(const T *in, T *out, T *scratch, T scale) const;
  void InverseLong(const T *in, T *out, T *scratch, T scale) const;

  int m_length;
  T m_share;                // as above
  DirectKernel<T> m_direct; // or null, and then there are:
  std::unique_ptr<ComplexPlan<T>> m_complex;
  Block<T> m_turns; // exp(-j 2 pi k / N), 0 <= k <= N / 4, of an even length
};

extern template class ComplexPlan<float>;
extern template class ComplexPlan<double>;
extern template class RealPlan<float>;
extern template class RealPlan<double>;

} // namespace QORN::fourier

#endif
