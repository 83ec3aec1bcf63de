#include "qorn/dsp/FirstOrderFilters.h"

#include "math/Elementwise.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

namespace {

// out[i] = step(in[i], state) for each sample in order; step sets the new state.
template <class Step> void Recur(VecReal32 &out, const VecReal32 &in, float &state, Step step) {
  const int n = in.GetSize();
  ResizeLike(out, in);
  const float *x = in.GetPtr();
  float *y = out.GetPtr();
  float w = state; // not in memory: out could be where state is, for all that the compiler knows
  for (int i = 0; i < n; ++i) y[i] = step(x[i], w);
  state = w;
}

} // namespace

FirstOrderIIRFilter::~FirstOrderIIRFilter() = default;

void FirstOrderIIRFilter::SetTaps(float b0, float b1, float a1) {
  m_b0 = b0;
  m_b1 = b1;
  m_a1 = a1;
}

void FirstOrderIIRFilter::Apply(VecReal32 &out, const VecReal32 &in) {
  Recur(out, in, m_state, [b0 = m_b0, b1 = m_b1, a1 = m_a1](float x, float &w) {
    const float v = x - a1 * w;
    const float y = b0 * v + b1 * w;
    w = v;
    return y;
  });
}

void FirstOrderIIRFilter::Flush() { m_state = 0.0F; }

FirstOrderRCLowPass::~FirstOrderRCLowPass() = default;

void FirstOrderRCLowPass::ComputeFilterCoefficients(float a, float b) {
  if (a == m_a && b == m_b) return;
  m_a = a;
  m_b = b;
  m_gain = 1.0F / (a * b);
  m_feedback = -static_cast<float>(MapScalar<double>(-static_cast<double>(m_gain), TargetLib::Exp_64f));
}

float FirstOrderRCLowPass::Apply(float x) {
  m_state = static_cast<float>(static_cast<double>(m_gain) * static_cast<double>(x) -
                               static_cast<double>(m_feedback) * static_cast<double>(m_state));
  return m_state;
}

void FirstOrderRCLowPass::Apply(VecReal32 &out, const VecReal32 &in) {
  Recur(out, in, m_state, [g = m_gain, c = m_feedback](float x, float &y) { return y = g * x - c * y; });
}

void FirstOrderRCLowPass::Flush() { m_state = 0.0F; }

} // namespace QORN
