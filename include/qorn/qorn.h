#ifndef QORN_QORN_H
#define QORN_QORN_H

/// All of the library in one include.

#include "qorn/Export.h"
#include "qorn/Version.h"

#include "qorn/infra/BaseVector.h"
#include "qorn/infra/Complex.h"
#include "qorn/infra/Cplx.h"
#include "qorn/infra/CplxVectorOps.h"
#include "qorn/infra/IntVectorOps.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/QORNMalloc.h"
#include "qorn/infra/RealVectorOps.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VecUInt32.h"
#include "qorn/infra/VecUInt8.h"
#include "qorn/infra/VectorConversion.h"
#include "qorn/infra/VectorOps.h"

#include "qorn/math/MathUtils.h"
#include "qorn/math/UnitConversion.h"
#include "qorn/math/VecUtils.h"

#include "qorn/dsp/ChirpZ.h"
#include "qorn/dsp/ClassicFilters.h"
#include "qorn/dsp/DFT.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/dsp/FFT.h"
#include "qorn/dsp/FIRBaseFilter.h"
#include "qorn/dsp/FIRFilter.h"
#include "qorn/dsp/FIRFilterFactory.h"
#include "qorn/dsp/FT.h"
#include "qorn/dsp/FftScaleFlag.h"
#include "qorn/dsp/FirstOrderFilters.h"
#include "qorn/dsp/FixedWindows.h"
#include "qorn/dsp/IntegralFilters.h"
#include "qorn/dsp/MeasurementFilters.h"
#include "qorn/dsp/ParametricWindows.h"
#include "qorn/dsp/PulseFilters.h"
#include "qorn/dsp/Spectrum.h"
#include "qorn/dsp/UserDefinedFilters.h"
#include "qorn/dsp/WaveformGenerator.h"
#include "qorn/dsp/Window.h"
#include "qorn/dsp/WindowFactory.h"

#include "qorn/utils/IQFReader.h"

#endif
