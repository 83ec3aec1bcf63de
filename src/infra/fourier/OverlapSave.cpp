#include "OverlapSave.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <climits>
#include <cmath>
#include <memory>

#include "infra/Errors.h"
#include "infra/kernels/Levels.h"

namespace QORN::fourier {

namespace {

constexpr const char *kModule = "infra\\TargetLib_ipp";

// The plans of the process. The slots are constant-initialised and trivially destroyed, and nothing frees the
// plans: global objects and threads that are still there at the end of the process filter on.
template <class T> std::atomic<const ComplexPlan<T> *> slots[5][31];

template <class T> auto Product();
template <> auto Product<float>() { return kernels::active->FourierProduct_32f; }
template <> auto Product<double>() { return kernels::active->FourierProduct_64f; }

} // namespace

template <class T> WorkArray<T>::WorkArray(std::ptrdiff_t count, std::ptrdiff_t kept) {
  constexpr int kSize = sizeof(T);
  if (count > INT_MAX / kSize) Throw(errors::kMemoryAllocation, kModule);
  m_bytes = Bytes(static_cast<int>(count) * kSize, static_cast<int>(kept) * kSize);
}

template <class T> WorkArray<T>::Bytes::Bytes(const Bytes &other) : Bytes(other.GetSize(), other.kept) {
  std::copy_n(other.GetPtr(), std::min(kept, GetSize()), GetPtr()); // a moved one has none
}
template <class T> auto WorkArray<T>::Bytes::operator=(const Bytes &other) -> Bytes & {
  return *this = Bytes(other);
}

template <class T> const ComplexPlan<T> &SharedPlan(int length) {
  const int power = std::countr_zero(static_cast<unsigned>(length));
  auto &slot = slots<T>[(length >> power) / 2][power];
  if (const ComplexPlan<T> *plan = slot.load(std::memory_order_acquire)) return *plan;
  std::unique_ptr<const ComplexPlan<T>> made = ComplexPlan<T>::Make(length, Cyclic::kLanes);
  if (made == nullptr) Throw(errors::kMemoryAllocation, kModule);
  const ComplexPlan<T> *present = nullptr;
  // Of two threads that make the same plan, the later one drops its own.
  if (slot.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) present = made.release();
  return *present;
}

template <class T>
OverlapSave<T>::OverlapSave(int length, int taps)
    : m_plan(&SharedPlan<T>(length)), m_taps(taps),
      m_work(std::ptrdiff_t{4} * length + static_cast<std::ptrdiff_t>(m_plan->ScratchBytes() / sizeof(T)),
             std::ptrdiff_t{2} * length) {}

template <class T> void OverlapSave<T>::SetTaps(const T *h) {
  T *const spectrum = m_work.Data();
  T *const end = std::copy_n(h, 2 * static_cast<std::ptrdiff_t>(m_taps), spectrum);
  std::fill(end, spectrum + 2 * static_cast<std::ptrdiff_t>(Length()), T{0});
  Forward(spectrum, spectrum);
}

template <class T> void OverlapSave<T>::Run() {
  Forward(Block(), Block());
  Product<T>()(Block(), Spectrum(), Block(), Length(), false, false);
  Inverse(Block(), Block());
}

FloatOverlapSave::FloatOverlapSave(int length, int taps)
    : m_plan(&SharedPlan<double>(length)), m_taps(taps),
      m_work(std::ptrdiff_t{6} * length, std::ptrdiff_t{2} * length) {}

Cyclic FloatOverlapSave::Job() const {
  return {&m_plan->GetColumns(), m_work.Data(), m_work.Data() + 2 * static_cast<std::ptrdiff_t>(Length())};
}

void FloatOverlapSave::SetTaps() {
  std::fill(NewTaps() + 2 * m_taps, NewTaps() + 2 * static_cast<std::ptrdiff_t>(Length()), 0.0F);
  kernels::active->FourierSpectrum_32fc(Job(), NewTaps(), m_work.Data());
}

double FloatOverlapSave::Gain() const {
  constexpr std::ptrdiff_t kLanes = Cyclic::kLanes;
  const double *const h = m_work.Data();
  double largest = 0;
  for (std::ptrdiff_t row = 0; row < Length() / kLanes; ++row) {
    for (std::ptrdiff_t i = 2 * kLanes * row; i < 2 * kLanes * row + kLanes; ++i)
      largest = std::max(largest, h[i] * h[i] + h[i + kLanes] * h[i + kLanes]);
  }
  return std::sqrt(largest) * Length();
}

CyclicFigures FloatOverlapSave::Run(const float *x, float *dst, std::ptrdiff_t count) {
  return kernels::active->FourierCyclic_32fc(Job(), x, dst, m_taps - 1, count);
}

CyclicFigures FloatOverlapSave::Run(const float *x0, const float *x1, float *dst0, std::ptrdiff_t count0,
                                    float *dst1, std::ptrdiff_t count1) {
  return kernels::active->FourierCyclic_32f(Job(), x0, x1, dst0, dst1, m_taps - 1, count0, count1);
}

template class WorkArray<float>;
template class WorkArray<double>;
template class WorkArray<std::ptrdiff_t>;
template class OverlapSave<float>;
template class OverlapSave<double>;
template const ComplexPlan<float> &SharedPlan<float>(int);
template const ComplexPlan<double> &SharedPlan<double>(int);

} // namespace QORN::fourier
