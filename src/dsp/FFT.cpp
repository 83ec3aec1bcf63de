#include "qorn/dsp/FFT.h"

#include <utility>

#include "FourierOwner.h"

namespace QORN {

using fourier::ComplexPlan;

namespace {

constexpr int kMaxOrder = 30;

} // namespace

FFT::FFT(int order, bool useDouble) : FFT(order, FftScaleInverseByN, QORNAlgorithmAccurate, useDouble) {}

FFT::FFT(int order, FftScaleFlag scaleFlag, QORNAlgorithm algorithm, bool useDouble)
    : m_order(order), m_length(order < 0 || order > kMaxOrder ? 0 : 1 << order), m_double(useDouble),
      m_scaleFlag(scaleFlag), m_algorithm(algorithm) {
  if (useDouble) {
    m_plan = ComplexPlan<double>::Make(m_length);
  } else {
    m_plan = ComplexPlan<float>::Make(m_length);
  }
  m_work = fourier::Workspace::Make(m_plan.get());
}

FFT::FFT(const FFT &other)
    : m_order(other.m_order), m_length(other.m_length), m_double(other.m_double),
      m_scaleFlag(other.m_scaleFlag), m_algorithm(other.m_algorithm),
      m_plan(other.m_plan == nullptr ? nullptr : other.m_plan->Clone()),
      m_work(fourier::Workspace::Make(m_plan.get())) {}

FFT &FFT::operator=(const FFT &other) {
  FFT copy(other);
  std::swap(m_order, copy.m_order);
  std::swap(m_length, copy.m_length);
  std::swap(m_double, copy.m_double);
  std::swap(m_scaleFlag, copy.m_scaleFlag);
  std::swap(m_algorithm, copy.m_algorithm);
  std::swap(m_plan, copy.m_plan);
  std::swap(m_work, copy.m_work);
  return *this;
}

FFT::~FFT() = default;

// Without scratch there is nothing to run on; without the plan's precision nothing to run.
template <class T, class V> void FFT::Transform(V &out, const V &in, bool forward) {
  fourier::ResizeAs(out, in);
  if (m_work == nullptr || m_double != (sizeof(T) == sizeof(double))) return;
  fourier::Run<T>(static_cast<const ComplexPlan<T> &>(*m_plan), out, in, *m_work, forward, m_scaleFlag);
}

void FFT::Forward(VecCplx32 &out, VecCplx32 const &in) { Transform<float>(out, in, true); }
void FFT::Inverse(VecCplx32 &out, VecCplx32 const &in) { Transform<float>(out, in, false); }
void FFT::Forward(VecCplx64 &out, VecCplx64 const &in) { Transform<double>(out, in, true); }
void FFT::Inverse(VecCplx64 &out, VecCplx64 const &in) { Transform<double>(out, in, false); }
void FFT::Forward(VecCplx32 &data) { Forward(data, data); }
void FFT::Inverse(VecCplx32 &data) { Inverse(data, data); }
void FFT::Forward(VecCplx64 &data) { Forward(data, data); }
void FFT::Inverse(VecCplx64 &data) { Inverse(data, data); }

} // namespace QORN
