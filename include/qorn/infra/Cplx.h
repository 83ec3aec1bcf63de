#ifndef QORN_INFRA_CPLX_H
#define QORN_INFRA_CPLX_H

#include "qorn/Export.h"

namespace QORN {

/// A complex pair of 16-bit integers, for recorded IQ data only; it has no arithmetic.
///
/// The three Cplx types are plain pairs without constructors or operators, real part first and no gap between
/// the parts. An array of n of them is therefore also an interleaved array of 2n scalars and may be used as
/// one. Arithmetic on single values is in Complex, on arrays in TargetLib.
struct QORN_API Cplx16 {
  short re;
  short im;
};

/// A complex pair of floats. See Cplx16 for what holds of all three.
struct QORN_API Cplx32 {
  float re;
  float im;
};

/// A complex pair of doubles. See Cplx16 for what holds of all three.
struct QORN_API Cplx64 {
  double re;
  double im;
};

} // namespace QORN

#endif
