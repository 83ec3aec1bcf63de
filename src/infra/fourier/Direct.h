// Which lengths have a kernel of their own.
#ifndef QORN_SRC_INFRA_FOURIER_DIRECT_H
#define QORN_SRC_INFRA_FOURIER_DIRECT_H

#include "infra/kernels/Levels.h"

namespace QORN::fourier {

/// The member of the kernel table that transforms one length: out = scale * transform of in, of complex
/// values from array to array, where out may be in, or between real samples and all their bins.
template <class T> using DirectKernel = void (*kernels::Table::*)(const T *in, T *out, bool inverse, T scale);

/// That of complex or of real transforms of so many points; null of lengths that go another way.
///@{
template <class T> DirectKernel<T> DirectComplex(int length);
template <class T> DirectKernel<T> DirectReal(int length);
///@}

/// Runs it at the level that is active.
template <class T> inline void RunDirect(DirectKernel<T> kernel, const T *in, T *out, bool inverse, T scale) {
  (kernels::active->*kernel)(in, out, inverse, scale);
}

} // namespace QORN::fourier

#endif
