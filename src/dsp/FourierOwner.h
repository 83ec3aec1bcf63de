// What the owners of Fourier plans share: scale factors, and running a plan on vectors.
#ifndef QORN_SRC_DSP_FOURIEROWNER_H
#define QORN_SRC_DSP_FOURIEROWNER_H

#include <cmath>

#include "infra/fourier/Plan.h"
#include "qorn/dsp/FftScaleFlag.h"

namespace QORN::fourier {

/// The factor of a plan's transform.
template <class P> auto Scale(FftScaleFlag flag, const P &plan, bool forward) -> decltype(plan.Share()) {
  using T = decltype(plan.Share());
  switch (flag) {
  case FftScaleForwardByN:
    return forward ? plan.Share() : T{1};
  case FftScaleBySqrtN:
    return static_cast<T>(1.0 / std::sqrt(static_cast<double>(plan.Length())));
  case FftScaleNone:
    return T{1};
  case FftScaleInverseByN:
    break;
  }
  return forward ? T{1} : plan.Share();
}

/// Gives out the length of in. Not where the two are one vector: Resize would widen a narrowed view.
template <class Out, class In> void ResizeAs(Out &out, const In &in) {
  if (static_cast<const void *>(&out) != static_cast<const void *>(&in)) out.Resize(in.GetSize());
}

/// Runs a plan, complex or real, from vector to vector, both of the plan's length.
template <class T, class P, class Out, class In>
void RunAll(const P &plan, Out &out, const In &in, const Workspace &work, bool forward, FftScaleFlag flag) {
  const T scale = Scale(flag, plan, forward);
  const auto *from = reinterpret_cast<const T *>(in.GetPtr());
  auto *to = reinterpret_cast<T *>(out.GetPtr());
  if (forward) {
    plan.Forward(from, to, work.As<T>(), scale);
  } else {
    plan.Inverse(from, to, work.As<T>(), scale);
  }
}

/// The same, but vectors of another length than the plan's are left alone.
template <class T, class P, class Out, class In>
void Run(const P &plan, Out &out, const In &in, const Workspace &work, bool forward, FftScaleFlag flag) {
  if (in.GetSize() == plan.Length()) RunAll<T>(plan, out, in, work, forward, flag);
}

} // namespace QORN::fourier

#endif
