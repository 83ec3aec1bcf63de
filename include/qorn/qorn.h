#ifndef QORN_QORN_H
#define QORN_QORN_H

/// All of the library in one include.

#include "qorn/Export.h"
#include "qorn/Version.h"

#include "qorn/infra/BaseVector.h"
#include "qorn/infra/Complex.h"
#include "qorn/infra/Cplx.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/QORNMalloc.h"
#include "qorn/infra/TargetLib.h"

#endif
