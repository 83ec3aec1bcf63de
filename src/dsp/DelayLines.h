// What the streaming filters of real taps share: the samples before a block, in the engine that runs the
// filter or in delay lines.
#ifndef QORN_SRC_DSP_DELAYLINES_H
#define QORN_SRC_DSP_DELAYLINES_H

#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

/// Gives the engine its `past` samples before a block of the form `to` from the delay lines, which get those
/// of the form `from` before. The parts of a complex signal run through the real filters side by side, as
/// they lie in memory.
template <class Form, class Engine>
void ChangeForm(Form from, Form to, const Engine &engine, VecReal32 &realLine, VecReal32 &imagLine,
                int past) {
  float *const real = engine.template Past<float>();
  Cplx32 *const cplx = engine.template Past<Cplx32>();
  if (from == Form::kReal) {
    TargetLib::Copy_32f(real, realLine.GetPtr(), past);
  } else if (from == Form::kCplx) {
    TargetLib::Real_32fc(cplx, realLine.GetPtr(), past);
    TargetLib::Imag_32fc(cplx, imagLine.GetPtr(), past);
  }
  if (to == Form::kReal) {
    TargetLib::Copy_32f(realLine.GetPtr(), real, past);
  } else {
    TargetLib::RealToCplx_32f(realLine.GetPtr(), imagLine.GetPtr(), cplx, past);
  }
}

} // namespace QORN

#endif
