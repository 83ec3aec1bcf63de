#include "OverlapSave.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <memory>

#include "infra/Errors.h"
#include "infra/kernels/Levels.h"

namespace QORN::fourier {

namespace {

// The plans of the process, one for each length. The slots are constant-initialised and trivially destroyed,
// and nothing frees the plans: global objects and threads that are still there at the end of the process
// filter on.
template <class P> struct Slots {
  std::atomic<const P *> slots[5][31];

  template <class Make> const P &Get(int length, const Make &make) {
    const int power = std::countr_zero(static_cast<unsigned>(length));
    auto &slot = slots[(length >> power) / 2][power];
    if (const P *plan = slot.load(std::memory_order_acquire)) return *plan;
    std::unique_ptr<const P> made = make();
    if (made == nullptr) Throw(errors::kMemoryAllocation, modules::kTargetLib);
    const P *present = nullptr;
    // Of two threads that make the same plan, the later one drops its own.
    if (slot.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel))
      present = made.release();
    return *present;
  }
};
template <class P> Slots<P> plans;

template <class T> auto Product();
template <> auto Product<float>() { return kernels::active->FourierProduct_32f; }
template <> auto Product<double>() { return kernels::active->FourierProduct_64f; }

} // namespace

template <class P> const P &SharedPlan(int length) {
  return plans<P>.Get(length, [=] { return P::Make(length); });
}

template <class T>
OverlapSave<T>::OverlapSave(int length, int taps, Life life)
    : m_plan(&SharedPlan<ComplexPlan<T>>(length)), m_taps(taps),
      m_work(std::ptrdiff_t{4} * length + static_cast<std::ptrdiff_t>(m_plan->ScratchBytes() / sizeof(T)),
             std::ptrdiff_t{2} * length, life) {}

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

FloatOverlapSave::FloatOverlapSave(int length, int taps, Life life)
    : m_plan(&SharedPlan<CyclicPlan>(length)), m_taps(taps),
      m_work(std::ptrdiff_t{4} * length, std::ptrdiff_t{2} * length, life) {}

Cyclic FloatOverlapSave::Job() const {
  return {&m_plan->Steps(), m_work.Data(), m_work.Data() + 2 * static_cast<std::ptrdiff_t>(Length())};
}

void FloatOverlapSave::SetTaps() {
  std::fill(NewTaps() + 2 * m_taps, NewTaps() + 2 * static_cast<std::ptrdiff_t>(Length()), 0.0F);
  m_gain = std::sqrt(kernels::active->FourierSpectrum_32fc(Job(), NewTaps(), m_work.Data()));
}

CyclicFigures FloatOverlapSave::Run(const float *x, float *dst, std::ptrdiff_t count) {
  return kernels::active->FourierCyclic_32fc(Job(), x, dst, m_taps - 1, count);
}

CyclicFigures FloatOverlapSave::Run(const float *x0, const float *x1, float *dst0, std::ptrdiff_t count0,
                                    float *dst1, std::ptrdiff_t count1) {
  return kernels::active->FourierCyclic_32f(Job(), x0, x1, dst0, dst1, m_taps - 1, count0, count1);
}

template class OverlapSave<float>;
template class OverlapSave<double>;
template const ComplexPlan<float> &SharedPlan<ComplexPlan<float>>(int);
template const ComplexPlan<double> &SharedPlan<ComplexPlan<double>>(int);
template const RealPlan<double> &SharedPlan<RealPlan<double>>(int);
template const CyclicPlan &SharedPlan<CyclicPlan>(int);

} // namespace QORN::fourier
