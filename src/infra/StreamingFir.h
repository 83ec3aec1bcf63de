// FIR filters of signals that come block by block: what the filter classes give their taps to.
#ifndef QORN_SRC_INFRA_STREAMINGFIR_H
#define QORN_SRC_INFRA_STREAMINGFIR_H

#include <cstddef>
#include <optional>

#include "fourier/LongConvolution.h"
#include "fourier/OverlapSave.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

/// y[n] = sum over k of taps[k] x[n - k], 0 <= k < T. Tap is float or Cplx32. By direct sums or, where a run
/// of transforms is estimated to take less time (fourier::LeastTerms), by transforms: T decides on their
/// length, and T and the length of a block on what goes through them. All memory is taken when it is made;
/// QORNException 11001 if there is none. Copies are clones.
template <class Tap> class StreamingFir {
public:
  StreamingFir(const Tap *taps, int count);

  /// The T - 1 samples before a block, oldest first, written before Run and those before the next one
  /// afterwards. E is float or Cplx32, with complex taps Cplx32.
  template <class E> E *Past() const { return reinterpret_cast<E *>(m_joint.Data()) + m_place; }

  /// The outputs of a block of len >= 1 samples; out may be in.
  template <class E> void Run(const E *in, E *out, std::ptrdiff_t len);

private:
  const Tap *Taps() const { return reinterpret_cast<const Tap *>(m_taps.Data()); }
  template <class E> E *MakeRoom(std::ptrdiff_t count);
  template <class E> void RunDirectly(const E *in, E *out, std::ptrdiff_t len);
  template <class E> void RunTransforms(const E *window, E *out, std::ptrdiff_t count);

  std::ptrdiff_t m_last;             // T - 1
  fourier::WorkArray<float> m_taps;  // as the kernels want them: last first, conjugate
  std::ptrdiff_t m_room;             // of m_joint, in complex samples
  std::ptrdiff_t m_place = 0;        // of the past there, in samples; it slides as short blocks come
  fourier::WorkArray<float> m_joint; // the past and, behind it, the samples of a block
  fourier::WorkArray<float> m_next;  // the past of the next block
  std::optional<fourier::Correlator<Tap>> m_transforms;
  double m_leastTerms = 0; // the products that are worth a run of them
};

/// Of the filter's outputs every decimation-th, from number phase on, 0 <= phase < decimation; the others are
/// not computed. Those that are have the bits of StreamingFir's direct sums. Memory and copies likewise: 5
/// floats for each tap if decimation >= T > 256, else at most 43 for each and what streams of few taps take.
class DecimatingFir {
public:
  DecimatingFir(const float *taps, int count, int decimation, int phase);

  /// As StreamingFir's, but T samples.
  template <class E> E *Past() const { return reinterpret_cast<E *>(m_past.Data()); }

  /// The outputs of count * decimation samples, count >= 1; out may be in.
  template <class E> void Run(const E *in, E *out, std::ptrdiff_t count);

private:
  /// Whether each output has samples of its own, and so many that it is not worth while to lay them out for
  /// sums of several outputs at once.
  bool IsSparse() const { return m_overlap == 0 && m_taps > 256; }
  template <class E> void RunSparsely(const E *in, E *out, std::ptrdiff_t count);
  template <class E> void RunStreams(const E *in, E *out, std::ptrdiff_t count);
  template <class E>
  void Fill(const E *in, std::ptrdiff_t len, std::ptrdiff_t from, std::ptrdiff_t count, std::ptrdiff_t at);

  std::ptrdiff_t m_taps, m_decimation;
  std::ptrdiff_t m_first;   // the sample before the block that the first output's oldest product has
  std::ptrdiff_t m_streams; // the samples of like remainders by the decimation make a stream
  std::ptrdiff_t m_overlap; // values of a stream under the taps, less one
  std::ptrdiff_t m_chunk;   // outputs at a time
  std::ptrdiff_t m_stride;  // of the streams, in values
  fourier::WorkArray<float> m_reversed, m_past, m_next;
  fourier::WorkArray<float> m_data; // the streams
  fourier::WorkArray<std::ptrdiff_t> m_offsets, m_cplxOffsets;
};

} // namespace QORN

#endif
