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

} // namespace

template <class P> const P &SharedPlan(int length) {
  return plans<P>.Get(length, [=] { return P::Make(length); });
}

OverlapSave::OverlapSave(int length, int taps, Life life)
    : Blocks(length, taps),
      m_work(std::ptrdiff_t{4} * length + static_cast<std::ptrdiff_t>(m_plan->ScratchBytes() / sizeof(float)),
             std::ptrdiff_t{2} * length, life) {}

void OverlapSave::SetTaps(const float *h) {
  float *const spectrum = m_work.Data();
  float *const end = std::copy_n(h, 2 * static_cast<std::ptrdiff_t>(m_taps), spectrum);
  std::fill(end, spectrum + 2 * static_cast<std::ptrdiff_t>(Length()), 0.0F);
  m_plan->Forward(spectrum, spectrum, Scratch(), 1.0F);
}

void OverlapSave::Run() {
  m_plan->Forward(Block(), Block(), Scratch(), 1.0F);
  kernels::active->FourierProduct_32f(Block(), m_work.Data(), Block(), Length(), false, false);
  m_plan->Inverse(Block(), Block(), Scratch(), 1.0F / static_cast<float>(Length()));
}

FloatOverlapSave::FloatOverlapSave(int length, int taps, Life life)
    : Blocks(length, taps), m_work(std::ptrdiff_t{4} * length, std::ptrdiff_t{2} * length, life) {}

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

DoubleOverlapSave::DoubleOverlapSave(int length, int taps, Life life)
    : Blocks(length, taps), m_work(std::ptrdiff_t{8} * length, std::ptrdiff_t{4} * length, life) {}

Cyclic DoubleOverlapSave::Job() const {
  return {&m_plan->Steps(), m_work.Data(), m_work.Data() + 4 * static_cast<std::ptrdiff_t>(Length())};
}

void DoubleOverlapSave::SetTaps(const double *h, double magic) {
  m_gain = std::sqrt(kernels::active->FourierSpectrum_64f(Job(), h, magic, m_work.Data()));
}

CyclicParts DoubleOverlapSave::Run(const CyclicPair &pair, double magic, double product) {
  return kernels::active->FourierCyclic_64f(Job(), pair, magic, product);
}

template const ComplexPlan<float> &SharedPlan<ComplexPlan<float>>(int);
template const ComplexPlan<double> &SharedPlan<ComplexPlan<double>>(int);
template const RealPlan<double> &SharedPlan<RealPlan<double>>(int);
template const CyclicPlan &SharedPlan<CyclicPlan>(int);

} // namespace QORN::fourier
