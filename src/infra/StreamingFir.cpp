#include "StreamingFir.h"

#include <algorithm>
#include <functional>
#include <type_traits>

#include "kernels/Levels.h"

namespace QORN {

namespace {

using Index = std::ptrdiff_t;
using kernels::active;

template <class T> constexpr Index kScalars = sizeof(T) / sizeof(float);

float Conjugate(float x) { return x; }
Cplx32 Conjugate(Cplx32 x) { return {x.re, -x.im}; }

const float *Scalars(const Cplx32 *x) { return reinterpret_cast<const float *>(x); }
float *Scalars(Cplx32 *x) { return reinterpret_cast<float *>(x); }

void Direct(const float *taps, Index count, const float *x, float *dst, Index len) {
  active->Fir_32f(taps, count, x, dst, len);
}
void Direct(const float *taps, Index count, const Cplx32 *x, Cplx32 *dst, Index len) {
  active->Fir_32f32fc(taps, count, Scalars(x), Scalars(dst), len);
}
void Direct(const Cplx32 *taps, Index count, const Cplx32 *x, Cplx32 *dst, Index len) {
  active->Fir_32fc(taps, count, Scalars(x), Scalars(dst), len);
}

} // namespace

template <class Tap>
StreamingFir<Tap>::StreamingFir(const Tap *taps, int count)
    : m_last(count - 1), m_taps(count * kScalars<Tap>), m_next(2 * m_last) {
  Tap *const last = reinterpret_cast<Tap *>(m_taps.Data()) + m_last;
  for (Index k = 0; k < count; ++k) *(last - k) = Conjugate(taps[k]);
  const int length = fourier::StreamLength<Tap>(count);
  if (length > 0) {
    m_transforms.emplace(Taps(), count, length, fourier::Life::kLasting);
    m_leastTerms = fourier::LeastTerms<Tap>(length);
  }
  m_room = std::max<Index>(4 * m_last, length);
  m_joint = fourier::WorkArray<float>(2 * m_room);
}

// The past, with room for count <= m_last samples behind it, or for a whole window of the transforms. Blocks
// that are shorter than the taps move it at most every 2 * m_last samples.
template <class Tap> template <class E> E *StreamingFir<Tap>::MakeRoom(Index count) {
  E *const past = Past<E>();
  if (m_place + m_last + count <= m_room) return past;
  m_place = 0;
  std::copy_n(past, m_last, Past<E>());
  return Past<E>();
}

// Whole runs whose window lies in `in` read it there, unless the results go over it; the others read a copy
// behind the past.
template <class Tap> template <class E> void StreamingFir<Tap>::Run(const E *in, E *out, Index len) {
  constexpr Index kProducts = kScalars<E> / kScalars<Tap>; // of an output with a tap
  constexpr std::less_equal<const E *> isBefore;
  const bool apart = isBefore(out + len, in) || isBefore(in + len, out);
  Index done = 0;
  bool current = true; // the past
  while (m_transforms) {
    const Index most = m_transforms->Step() / kProducts, count = std::min(len - done, most);
    const double terms = static_cast<double>(kProducts * count) * static_cast<double>(m_last + 1);
    if (terms <= m_leastTerms) break;
    if (apart && done >= m_last && count == most) {
      RunTransforms(in + (done - m_last), out + done, count);
      current = false;
    } else {
      E *const past = MakeRoom<E>(m_transforms->Length() - m_last);
      if (!current) std::copy_n(in + (done - m_last), m_last, past);
      std::copy_n(in + done, count, past + m_last);
      if constexpr (kProducts > 1) std::fill(past + m_last + count, past + m_transforms->Length(), E{});
      RunTransforms(past, out + done, count);
      std::copy_n(past + count, m_last, past);
      current = true;
    }
    done += count;
  }
  if (!current) std::copy_n(in + (done - m_last), m_last, Past<E>());
  if (done < len) RunDirectly(in + done, out + done, len - done);
}

template <class Tap>
template <class E>
void StreamingFir<Tap>::RunTransforms(const E *window, E *out, Index count) {
  if constexpr (std::is_same_v<E, Tap>) {
    const auto taps = static_cast<int>(m_last + 1), samples = static_cast<int>(m_last + count);
    m_transforms->Run({Taps(), taps, window, samples, m_last, count, out});
  } else {
    m_transforms->RunParts(Taps(), window, count, out);
  }
}

// Only the outputs whose sums reach into the past are computed from a copy of their samples.
template <class Tap> template <class E> void StreamingFir<Tap>::RunDirectly(const E *in, E *out, Index len) {
  const Index head = std::min(len, m_last);
  E *const past = MakeRoom<E>(head);
  std::copy_n(in, head, past + m_last);
  if (len <= m_last) {
    Direct(Taps(), m_last + 1, past, out, len);
    m_place += len;
    return;
  }
  // Before the samples are written over.
  E *const next = reinterpret_cast<E *>(m_next.Data());
  std::copy_n(in + (len - m_last), m_last, next);
  Direct(Taps(), m_last + 1, in, out + m_last, len - m_last);
  Direct(Taps(), m_last + 1, past, out, head);
  std::copy_n(next, m_last, past);
}

template class StreamingFir<float>;
template class StreamingFir<Cplx32>;
template void StreamingFir<float>::Run(const float *, float *, Index);
template void StreamingFir<float>::Run(const Cplx32 *, Cplx32 *, Index);
template void StreamingFir<Cplx32>::Run(const Cplx32 *, Cplx32 *, Index);

namespace {

// Outputs between two fillings of the streams: so many that filling takes little time, and so few that the
// streams stay in the nearest cache, but a full register if they are too many for that.
Index Chunk(Index streams) { return std::clamp(Index{4096} / streams, Index{16}, Index{256}); }

constexpr Index kSlack = 16; // scalars that the kernel reads behind them

// Whole steps of the slack, unless that could be twice what is needed: what the kernel reads behind a stream
// may be the next one.
Index Stride(Index values) { return values < 2 * kSlack ? values : (values + kSlack) / kSlack * kSlack; }

// dst[i] = src[i * factor].
void Sample(const float *src, float *dst, Index count, Index factor) {
  for (Index i = 0; i < count; ++i) dst[i] = src[i * factor];
}
void Sample(const Cplx32 *src, Cplx32 *dst, Index count, Index factor) {
  for (Index i = 0; i < count; ++i) dst[i] = src[i * factor];
}

// Asks for the first `count` values, or what the nearest cache has room for beside others.
template <class E> void Prefetch(const E *values, Index count) {
  constexpr Index kLine = 64 / sizeof(E), kMost = 16384 / sizeof(E);
  for (Index i = 0; i < std::min(count, kMost); i += kLine) __builtin_prefetch(values + i);
}

} // namespace

// Output i has x[i * decimation + phase - k] under tap k; so with m_first = phase - (T - 1), the tap in place
// j of the reversed ones has value i + j / decimation of stream j % decimation, which holds x[m * decimation
// + m_first + j % decimation], m = 0, 1, ...
DecimatingFir::DecimatingFir(const float *taps, int count, int decimation, int phase)
    : m_taps(count), m_decimation(decimation), m_first(phase - (m_taps - 1)),
      m_streams(std::min(m_taps, m_decimation)), m_overlap((m_taps - 1) / m_decimation),
      m_chunk(Chunk(m_streams)), m_stride(Stride(m_overlap + m_chunk)), m_reversed(m_taps),
      m_past(2 * m_taps), m_next(2 * m_taps) {
  std::reverse_copy(taps, taps + count, m_reversed.Data());
  if (IsSparse()) return;
  m_data = fourier::WorkArray<float>(2 * (m_streams * m_stride + kSlack));
  m_offsets = fourier::WorkArray<Index>(m_taps);
  m_cplxOffsets = fourier::WorkArray<Index>(m_taps);
  std::fill_n(m_data.Data(), 2 * (m_streams * m_stride + kSlack), 0.0F); // some is read before it is written
  for (Index j = 0; j < m_taps; ++j) {
    m_offsets.Data()[j] = j % m_decimation * m_stride + j / m_decimation;
    m_cplxOffsets.Data()[j] = 2 * m_offsets.Data()[j];
  }
}

// Values from to from + count - 1 of each stream, written from value `at` of it on. Those that would be
// beyond the end of the block are not used.
template <class E> void DecimatingFir::Fill(const E *in, Index len, Index from, Index count, Index at) {
  E *const data = reinterpret_cast<E *>(m_data.Data());
  const E *const end = Past<E>() + m_taps; // what stands before in[0]
  for (Index s = 0; s < m_streams; ++s) {
    E *const values = data + s * m_stride + at;
    const Index first = from * m_decimation + m_first + s;
    const bool whole = first + (count - 1) * m_decimation < len;
    const Index all = whole ? count : first >= len ? 0 : (len - first + m_decimation - 1) / m_decimation;
    const Index old = first >= 0 ? 0 : std::min(all, (-first + m_decimation - 1) / m_decimation);
    if (old > 0) Sample(end + first, values, old, m_decimation);
    if (all > old) Sample(in + (first + old * m_decimation), values + old, all - old, m_decimation);
  }
}

// No sample is under the taps of two outputs; so none is read after an output has gone over it, and only the
// first output has samples from before the block.
template <class E> void DecimatingFir::RunSparsely(const E *in, E *out, Index count) {
  E *const past = Past<E>();
  for (Index i = 0; i < count; ++i) {
    const Index first = i * m_decimation + m_first;
    if (first < 0) std::copy_n(in, m_taps + first, std::copy(past + (m_taps + first), past + m_taps, past));
    // Far apart, the samples are not expected by the processor.
    if (i + 1 < count) Prefetch(in + (first + m_decimation), m_taps);
    Direct(m_reversed.Data(), m_taps, first < 0 ? past : in + first, out + i, 1);
  }
}

template <class E> void DecimatingFir::Run(const E *in, E *out, Index count) {
  // Before the samples are written over.
  E *const past = Past<E>(), *const next = reinterpret_cast<E *>(m_next.Data());
  const Index len = count * m_decimation, fresh = std::min(len, m_taps);
  std::copy(past + fresh, past + m_taps, next);
  std::copy_n(in + (len - fresh), fresh, next + (m_taps - fresh));
  if (IsSparse()) {
    RunSparsely(in, out, count);
  } else {
    RunStreams(in, out, count);
  }
  std::copy_n(next, m_taps, past);
}

template <class E> void DecimatingFir::RunStreams(const E *in, E *out, Index count) {
  constexpr Index kParts = kScalars<E>;
  const Index len = count * m_decimation;
  const Index *const offsets = kParts == 1 ? m_offsets.Data() : m_cplxOffsets.Data();
  E *const data = reinterpret_cast<E *>(m_data.Data());
  Fill(in, len, 0, m_overlap, 0);
  for (Index done = 0; done < count; done += m_chunk) {
    const Index size = std::min(m_chunk, count - done);
    Fill(in, len, done + m_overlap, size, m_overlap);
    active->FirDown_32f(m_reversed.Data(), m_taps, m_data.Data(), offsets,
                        reinterpret_cast<float *>(out + done), kParts * size);
    for (Index s = 0; s < m_streams; ++s) {
      E *const values = data + s * m_stride;
      std::copy_n(values + size, m_overlap, values);
    }
  }
}

template void DecimatingFir::Run(const float *, float *, Index);
template void DecimatingFir::Run(const Cplx32 *, Cplx32 *, Index);

} // namespace QORN
