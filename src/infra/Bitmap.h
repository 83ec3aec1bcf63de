// What StretchBitmap keeps between calls, as far as tests look at it.
#ifndef QORN_SRC_INFRA_BITMAP_H
#define QORN_SRC_INFRA_BITMAP_H

namespace QORN {

/// Whether StretchBitmap reports changes of its parameters on the standard error stream. False, and never set
/// by the library: a developer sets it in a debugger or a test.
extern bool traceStretch;

} // namespace QORN

#endif
