#include "qorn/dsp/DFT.h"

#include <utility>

#include "FourierOwner.h"

namespace QORN {

using fourier::ComplexPlan;

DFT::DFT(int length)
    : m_plan(ComplexPlan<float>::Make(length)), m_work(fourier::Workspace::Make(m_plan.get())),
      m_length(length) {}

DFT::DFT(const DFT &other)
    : m_plan(other.m_plan == nullptr ? nullptr : other.m_plan->Clone()),
      m_work(fourier::Workspace::Make(m_plan.get())), m_length(other.m_length) {}

DFT &DFT::operator=(const DFT &other) {
  DFT copy(other);
  std::swap(m_plan, copy.m_plan);
  std::swap(m_work, copy.m_work);
  std::swap(m_length, copy.m_length);
  return *this;
}

DFT::~DFT() = default;

void DFT::Transform(VecCplx32 &out, VecCplx32 const &in, bool forward) {
  fourier::ResizeAs(out, in);
  if (m_work == nullptr) return;
  fourier::Run<float>(static_cast<const ComplexPlan<float> &>(*m_plan), out, in, *m_work, forward,
                      FftScaleInverseByN);
}

void DFT::Forward(VecCplx32 &out, VecCplx32 const &in) { Transform(out, in, true); }
void DFT::Inverse(VecCplx32 &out, VecCplx32 const &in) { Transform(out, in, false); }
void DFT::Forward(VecCplx32 &data) { Transform(data, data, true); }
void DFT::Inverse(VecCplx32 &data) { Transform(data, data, false); }

} // namespace QORN
