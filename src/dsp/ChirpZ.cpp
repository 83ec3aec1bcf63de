#include "qorn/dsp/ChirpZ.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Clone.h"
#include "infra/Constants.h"
#include "infra/Errors.h"
#include "math/Elementwise.h"
#include "qorn/dsp/FFT.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/VecUtils.h"

namespace QORN {

namespace {

// Want of memory is reported as the vectors report it, under their name.

using constants::kTwoPi;

// exp(-j a i) and the chirp exp(-j (b / 2) i^2) for 0 <= i < n. The two precisions differ in how they form
// the phases, and with that in what a negative b does: in double its square root is not-a-number.

void MakeTone(VecCplx64 &dst, int n, double a) {
  VecReal64 phase;
  phase.Ramp(n, 0.0, -a);
  MathUtils::Expj(dst, phase);
}

void MakeChirp(VecCplx64 &dst, int n, double b) {
  VecReal64 phase;
  phase.Ramp(n, 0.0, MathUtils::Sqrt(b / 2.0));
  MathUtils::Sqr(phase);
  phase *= -1.0;
  MathUtils::Expj(dst, phase);
}

// In float the phases are double all the same: that of the chirp grows with the square of the index. Each
// finished value is rounded once.
template <class Phase> void MakePhasors(VecCplx32 &dst, int n, Phase phaseAt) {
  dst.Resize(n);
  double phases[kBlock];
  Cplx64 phasors[kBlock];
  for (int first = 0; first < n; first += kBlock) {
    const int count = std::min(kBlock, n - first);
    for (int i = 0; i < count; ++i) phases[i] = phaseAt(static_cast<double>(first + i));
    TargetLib::Expj_64f(phases, phasors, count);
    TargetLib::Convert_64f32f(&phasors[0].re, &dst[first].re, 2 * count);
  }
}

void MakeTone(VecCplx32 &dst, int n, double a) {
  MakePhasors(dst, n, [a](double i) { return -(i * a); });
}

void MakeChirp(VecCplx32 &dst, int n, double b) {
  MakePhasors(dst, n, [b](double i) { return (i * (b * -0.5)) * i; });
}

constexpr int kMaxOrder = 30;

} // namespace

ChirpZ::ChirpZ() { InitParamsToInvalid(); }

ChirpZ::ChirpZ(int n, double fs, int m, double f0, double df, bool useDouble) : ChirpZ() {
  SetParameters(n, fs, m, f0, df, useDouble);
}

ChirpZ::ChirpZ(const ChirpZ &other)
    : m_inputLength(other.m_inputLength), m_outputPoints(other.m_outputPoints),
      m_fftLength(other.m_fftLength), m_startFrequency(other.m_startFrequency),
      m_frequencyStep(other.m_frequencyStep), m_samplingRate(other.m_samplingRate),
      m_useDouble(other.m_useDouble), m_fft(Clone(other.m_fft)), m_double(other.m_double),
      m_float(other.m_float) {
  if (m_fft) RequireMemory(*m_fft);
}

// A copy that finds no memory leaves the object as it is.
ChirpZ &ChirpZ::operator=(const ChirpZ &other) { return *this = ChirpZ(other); }

ChirpZ::ChirpZ(ChirpZ &&) noexcept = default;
ChirpZ &ChirpZ::operator=(ChirpZ &&) noexcept = default;
ChirpZ::~ChirpZ() = default;

void ChirpZ::InitParamsToInvalid() {
  m_inputLength = m_outputPoints = m_fftLength = -1;
  m_startFrequency = m_frequencyStep = m_samplingRate = -1.0;
  m_useDouble = false;
  m_fft.reset();
}

// A plan that found no memory would leave every vector as it is.
void ChirpZ::RequireMemory(const FFT &fft) {
  if (!fft.m_work) Throw(errors::kMemoryAllocation, modules::kVector);
}

bool ChirpZ::SetParameters(int n, double fs, int m, double f0, double df, bool useDouble) {
  if (m_fft && n == m_inputLength && m == m_outputPoints && fs == m_samplingRate && f0 == m_startFrequency &&
      df == m_frequencyStep && useDouble == m_useDouble) {
    return true;
  }
  InitParamsToInvalid();
  m_double = {};
  m_float = {};

  int order = 0;
  while ((std::int64_t{1} << order) < std::int64_t{n} + m - 1) ++order;
  if (order > kMaxOrder) Throw(errors::kMemoryAllocation, modules::kVector);
  std::unique_ptr<FFT> fft;
  if (n > 0 && m > 0) {
    fft = std::make_unique<FFT>(order, useDouble);
    RequireMemory(*fft);
    const double a = kTwoPi<double> * f0 / fs;
    const double b = kTwoPi<double> * df / fs;
    if (useDouble) {
      m_double = Prepare<VecCplx64>(*fft, n, m, a, b);
    } else {
      m_float = Prepare<VecCplx32>(*fft, n, m, a, b);
    }
  }
  // Only now: an object whose memory did not suffice has no parameters.
  m_inputLength = n;
  m_outputPoints = m;
  m_fftLength = 1 << order;
  m_startFrequency = f0;
  m_frequencyStep = df;
  m_samplingRate = fs;
  m_useDouble = useDouble;
  m_fft = std::move(fft);
  return true;
}

template <class V> ChirpZ::WorkingSet<V> ChirpZ::Prepare(FFT &fft, int n, int m, double a, double b) {
  const int length = fft.GetFFTLen();
  WorkingSet<V> set;
  set.filterSpectrum.Resize(length);
  set.work.Resize(length);

  V chirp;
  MakeChirp(chirp, std::max(n, m), b);
  MakeTone(set.preMultiplier, n, a);
  set.preMultiplier *= chirp;
  VecUtils::Copy(set.postMultiplier, chirp, 0, m);

  // The lags 0 to m - 1 from the start on, -1 to -(n - 1) from the end down, zeros between.
  MathUtils::Conj(chirp);
  V &filter = set.filterSpectrum;
  Kernels<ElementOf<V>>::Copy(chirp.GetPtr(), filter.GetPtr(), m);
  for (int i = 1; i < n; ++i) filter[length - i] = chirp[i];
  fft.Forward(filter);
  return set;
}

template <class V> void ChirpZ::Run(WorkingSet<V> &set, V &out, const V &in) {
  using K = Kernels<ElementOf<V>>;
  const int length = set.work.GetSize();
  if (length == 0) {
    out.Resize(0);
    return;
  }
  const int n = std::min(set.preMultiplier.GetSize(), in.GetSize());
  // Block by block, so that the product finds the copy in the nearest cache.
  for (int i = 0; i < n; i += kBlock) {
    const int count = std::min(kBlock, n - i);
    K::Copy(in.GetPtr(i), set.work.GetPtr(i), count);
    K::Mul(set.preMultiplier.GetPtr(i), set.work.GetPtr(i), count);
  }
  K::Set({}, set.work.GetPtr(n), length - n);
  m_fft->Forward(set.work);
  set.work *= set.filterSpectrum;
  m_fft->Inverse(set.work);
  VecUtils::Copy(out, set.work, 0, set.postMultiplier.GetSize());
  out *= set.postMultiplier;
}

void ChirpZ::Apply(VecCplx32 &out, const VecCplx32 &in) { Run(m_float, out, in); }
void ChirpZ::Apply(VecCplx64 &out, const VecCplx64 &in) { Run(m_double, out, in); }

} // namespace QORN
