// What the owners of Fourier plans share: scale factors, and running a plan on vectors.
#ifndef QORN_SRC_DSP_FOURIEROWNER_H
#define QORN_SRC_DSP_FOURIEROWNER_H

#include <cmath>

#include "infra/fourier/Plan.h"
#include "qorn/dsp/FftScaleFlag.h"

namespace QORN::fourier {

/// The factor of a transform of length points.
inline double Scale(FftScaleFlag flag, int length, bool forward) {
  switch (flag) {
  case FftScaleForwardByN:
    return forward ? 1.0 / length : 1.0;
  case FftScaleBySqrtN:
    return 1.0 / std::sqrt(static_cast<double>(length));
  case FftScaleNone:
    return 1.0;
  case FftScaleInverseByN:
    break;
  }
  return forward ? 1.0 : 1.0 / length;
}

/// Gives out the length of in. Not where the two are one vector: Resize would widen a narrowed view.
template <class Out, class In> void ResizeAs(Out &out, const In &in) {
  if (static_cast<const void *>(&out) != static_cast<const void *>(&in)) out.Resize(in.GetSize());
}

/// Runs a plan, complex or real, from vector to vector. Vectors of another length than the plan's are left
/// alone.
template <class T, class P, class Out, class In>
void Run(const P &plan, Out &out, const In &in, const Workspace &work, bool forward, FftScaleFlag flag) {
  if (in.GetSize() != plan.Length()) return;
  const T scale = static_cast<T>(Scale(flag, plan.Length(), forward));
  const auto *from = reinterpret_cast<const T *>(in.GetPtr());
  auto *to = reinterpret_cast<T *>(out.GetPtr());
  if (forward) {
    plan.Forward(from, to, work.As<T>(), scale);
  } else {
    plan.Inverse(from, to, work.As<T>(), scale);
  }
}

} // namespace QORN::fourier

#endif
