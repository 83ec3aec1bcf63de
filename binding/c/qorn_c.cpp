#include "qorn_c.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <variant>

#include "infra/Errors.h"
#include "qorn/Version.h"
#include "qorn/dsp/Spectrum.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecUInt32.h"
#include "qorn/math/CubicHermiteInterpolation.h"
#include "qorn/math/Spline.h"
#include "qorn/math/UnitConversion.h"

using namespace QORN;

namespace {

// A vector that can see memory of another's: without a block of its own it never frees it, and it only ever
// grows into a block of its own.
template <class V> class Seeing : public V {
public:
  void See(const void *data, int n) {
    using T = std::remove_pointer_t<decltype(this->m_pData)>;
    this->Release();
    this->m_pData = static_cast<T *>(const_cast<void *>(data));
    this->m_length = n;
  }

  // The bytes of n elements.
  static std::size_t BytesOf(int n) {
    return sizeof *std::declval<V>().GetPtr() * static_cast<std::size_t>(n);
  }

  // Whether its own block has a byte in common with the one at data.
  bool Meets(const void *data, std::size_t bytes) const {
    const auto own = reinterpret_cast<std::uintptr_t>(this->m_pStorage);
    const auto other = reinterpret_cast<std::uintptr_t>(data);
    return std::max(own, other) < std::min(own + BytesOf(this->m_capacity), other + bytes);
  }
};

// A vector's class is the alternative whose index is its number in qorn_element.
using AnyVector = std::variant<Seeing<VecInt16>, Seeing<VecInt32>, Seeing<VecUInt32>, Seeing<VecReal32>,
                               Seeing<VecReal64>, Seeing<VecCplx32>, Seeing<VecCplx64>>;

} // namespace

struct qorn_vector {
  AnyVector any;
};

struct qorn_spectrum {
  Spectrum native;
};

struct qorn_spline {
  Spline native;
};

struct qorn_hermite {
  CubicHermiteInterpolation native;
};

namespace {

constexpr const char *kModule = "binding\\qorn_c";

template <int I, class V> constexpr bool kIs = std::is_base_of_v<V, std::variant_alternative_t<I, AnyVector>>;
static_assert(kIs<QORN_INT16, VecInt16> && kIs<QORN_INT32, VecInt32> && kIs<QORN_UINT32, VecUInt32> &&
              kIs<QORN_REAL32, VecReal32> && kIs<QORN_REAL64, VecReal64> && kIs<QORN_CPLX32, VecCplx32> &&
              kIs<QORN_CPLX64, VecCplx64>);

static_assert(int{QORN_WINDOW_RECTANGLE} == WindowRectangle &&
              int{QORN_WINDOW_BLACKMAN_HARRIS} == WindowBlackmanHarris &&
              int{QORN_WINDOW_FLAT_TOP} == WindowFlatTop && int{QORN_WINDOW_HANN} == WindowHann &&
              int{QORN_WINDOW_GAUSS} == WindowGauss && int{QORN_WINDOW_CISPR_6DB} == WindowCISPR6dB &&
              int{QORN_WINDOW_MIL_6DB} == WindowMil6dB && int{QORN_WINDOW_KAISER} == WindowKaiser &&
              int{QORN_WINDOW_HAMMING} == WindowHamming && int{QORN_WINDOW_CISPR_3DB} == WindowCISPR3dB &&
              int{QORN_DBV} == PowerUnitDBV);

qorn_error Record(const QORNException &e) {
  return {e.GetErrorCode(), static_cast<int32_t>(e.GetLineNumber()), e.GetMessage(), e.GetFileName()};
}

// Runs body, which returns a number, and turns what it throws into a record. The result is the record's code,
// or body's number if nothing was thrown.
template <class Body> int32_t Guarded(qorn_error *error, Body body) noexcept {
  qorn_error record{};
  int32_t result = 0;
  try {
    result = body();
  } catch (const QORNException &e) {
    record = Record(e);
  } catch (const std::bad_alloc &) {
    record = {errors::kMemoryAllocation.code, __LINE__, errors::kMemoryAllocation.message, kModule};
  } catch (...) {
    record = {errors::kUnexpectedSoftware.code, __LINE__, errors::kUnexpectedSoftware.message, kModule};
  }
  if (error != nullptr) *error = record;
  return record.code != 0 ? record.code : result;
}

// The object that make returns, released to the caller, or null.
template <class Make> auto Made(qorn_error *error, Make make) noexcept {
  decltype(make()) object;
  Guarded(error, [&] {
    object = make();
    return 0;
  });
  return object.release();
}

template <class T> void Destroy(T *object) noexcept { const std::unique_ptr<T> owned(object); }

[[noreturn]] void Refuse(long line = __builtin_LINE()) { Throw(errors::kInvalidParameter, kModule, line); }

template <class T> T &Object(T *object) {
  if (object == nullptr) Refuse();
  return *object;
}

// The vector as one of class V, which may be const.
template <class V, class Handle> V &As(Handle *vector) {
  V *found = std::get_if<Seeing<std::remove_const_t<V>>>(&Object(vector).any);
  if (found == nullptr) Refuse();
  return *found;
}

template <std::size_t I = 0> void Emplace(AnyVector &any, int32_t element) {
  if constexpr (I < std::variant_size_v<AnyVector>) {
    if (element == static_cast<int32_t>(I)) {
      any.emplace<I>();
    } else {
      Emplace<I + 1>(any, element);
    }
  } else {
    Refuse();
  }
}

template <class V> using ElementOf = std::remove_pointer_t<decltype(std::declval<V>().GetPtr())>;

template <class V>
int32_t Interpolate(Interpolation &native, qorn_vector *yOut, const qorn_vector *x, const qorn_vector *y,
                    const qorn_vector *xOut) {
  return native.Interpolate(As<V>(yOut), As<const V>(x), As<const V>(y), As<const V>(xOut));
}

int32_t InterpolateAny(Interpolation &native, qorn_vector *yOut, const qorn_vector *x, const qorn_vector *y,
                       const qorn_vector *xOut) {
  if (yOut == x || yOut == y) Refuse(); // it would be overwritten while it is read
  return std::holds_alternative<Seeing<VecReal32>>(Object(x).any)
             ? Interpolate<VecReal32>(native, yOut, x, y, xOut)
             : Interpolate<VecReal64>(native, yOut, x, y, xOut);
}

void Apply(Spectrum &native, VecReal32 &out, const qorn_vector &in) {
  if (std::holds_alternative<Seeing<VecCplx32>>(in.any)) {
    native.Apply(out, As<const VecCplx32>(&in));
  } else {
    native.Apply(out, As<const VecReal32>(&in));
  }
}

// While it lives, a vector sees data; then it is empty.
class Sight {
public:
  Sight(qorn_vector &vector, const void *data, int n) : m_vector(vector) { See(data, n); }
  ~Sight() { See(nullptr, 0); }
  Sight(const Sight &) = delete;
  Sight &operator=(const Sight &) = delete;

private:
  void See(const void *data, int n) {
    std::visit([=](auto &v) { v.See(data, n); }, m_vector.any);
  }

  qorn_vector &m_vector;
};

} // namespace

int32_t qorn_c_interface(void) { return QORN_C_INTERFACE; }

const char *qorn_c_version(void) { return QORN_VERSION_STRING; }

qorn_vector *qorn_vector_create(int32_t element, qorn_error *error) {
  return Made(error, [&] {
    auto vector = std::make_unique<qorn_vector>();
    Emplace(vector->any, element);
    return vector;
  });
}

void qorn_vector_destroy(qorn_vector *vector) { Destroy(vector); }

int32_t qorn_vector_size(const qorn_vector *vector) {
  return vector == nullptr ? 0 : std::visit([](const auto &v) { return v.GetSize(); }, vector->any);
}

int32_t qorn_vector_capacity(const qorn_vector *vector) {
  return vector == nullptr ? 0 : std::visit([](const auto &v) { return v.GetCapacity(); }, vector->any);
}

void *qorn_vector_data(const qorn_vector *vector) {
  return vector == nullptr ? nullptr
                           : std::visit([](const auto &v) -> void * { return v.GetPtr(); }, vector->any);
}

int32_t qorn_vector_resize(qorn_vector *vector, int32_t n, qorn_error *error) {
  return Guarded(error, [&] {
    if (n < 0) Refuse();
    std::visit([n](auto &v) { v.Resize(n); }, Object(vector).any);
    return 0;
  });
}

int32_t qorn_vector_import(qorn_vector *vector, const void *src, int32_t n, qorn_error *error) {
  return Guarded(error, [&] {
    if (n < 0 || (src == nullptr && n > 0)) Refuse();
    const auto importing = [=](auto &v) {
      const std::size_t bytes = v.BytesOf(n);
      if (n > v.GetCapacity() && v.Meets(src, bytes)) Refuse(); // it would be freed before it is read
      v.Resize(n);
      if (n > 0) std::memmove(v.GetPtr(), src, bytes);
    };
    std::visit(importing, Object(vector).any);
    return 0;
  });
}

int32_t qorn_vector_export(const qorn_vector *vector, void *dst, int32_t n, qorn_error *error) {
  return Guarded(error, [&] {
    if (n < 0 || n > qorn_vector_size(&Object(vector)) || (dst == nullptr && n > 0)) Refuse();
    const auto exporting = [=](const auto &v) {
      std::copy_n(v.GetPtr(), n, static_cast<ElementOf<decltype(v)> *>(dst));
    };
    std::visit(exporting, vector->any);
    return 0;
  });
}

qorn_spectrum *qorn_spectrum_create(int32_t size, int32_t window, float parameter, qorn_error *error) {
  return Made(error, [&] {
    return std::unique_ptr<qorn_spectrum>(
        new qorn_spectrum{Spectrum(size, static_cast<WindowType>(window), parameter)});
  });
}

void qorn_spectrum_destroy(qorn_spectrum *spectrum) { Destroy(spectrum); }

int32_t qorn_spectrum_set_unit(qorn_spectrum *spectrum, int32_t unit, qorn_error *error) {
  return Guarded(error, [&] {
    Object(spectrum).native.SetUnit(static_cast<PowerUnit>(unit));
    return 0;
  });
}

int32_t qorn_spectrum_size(const qorn_spectrum *spectrum) {
  return spectrum == nullptr ? 0 : spectrum->native.GetSize();
}

int32_t qorn_spectrum_apply(qorn_spectrum *spectrum, qorn_vector *out, const qorn_vector *in,
                            qorn_error *error) {
  return Guarded(error, [&] {
    Apply(Object(spectrum).native, As<VecReal32>(out), Object(in));
    return 0;
  });
}

int32_t qorn_spectrum_apply_block(qorn_spectrum *spectrum, qorn_vector *out, qorn_vector *in,
                                  const void *data, int32_t n, qorn_error *error) {
  return Guarded(error, [&] {
    if (out == in || n < 0 || (data == nullptr && n > 0)) Refuse();
    const std::size_t bytes = std::visit([n](const auto &v) { return v.BytesOf(n); }, Object(in).any);
    // The vectors' own blocks are freed or written before the samples are read to the end.
    for (const qorn_vector *vector : {in, out}) {
      const auto meets = [=](const auto &v) { return v.Meets(data, bytes); };
      if (vector != nullptr && std::visit(meets, vector->any)) Refuse();
    }
    const Sight sight(*in, data, n);
    Apply(Object(spectrum).native, As<VecReal32>(out), *in);
    return 0;
  });
}

qorn_spline *qorn_spline_create(qorn_error *error) {
  return Made(error, [] { return std::make_unique<qorn_spline>(); });
}

void qorn_spline_destroy(qorn_spline *spline) { Destroy(spline); }

int32_t qorn_spline_set_boundary1(qorn_spline *spline, double derivative, qorn_error *error) {
  return Guarded(error, [&] {
    Object(spline).native.SetBoundaryCondition1(derivative);
    return 0;
  });
}

int32_t qorn_spline_set_boundary2(qorn_spline *spline, double derivative, qorn_error *error) {
  return Guarded(error, [&] {
    Object(spline).native.SetBoundaryCondition2(derivative);
    return 0;
  });
}

int32_t qorn_spline_set_natural(qorn_spline *spline, qorn_error *error) {
  return Guarded(error, [&] {
    Object(spline).native.SetNaturalSpline();
    return 0;
  });
}

int32_t qorn_spline_interpolate(qorn_spline *spline, qorn_vector *y_out, const qorn_vector *x,
                                const qorn_vector *y, const qorn_vector *x_out, qorn_error *error) {
  return Guarded(error, [&] { return InterpolateAny(Object(spline).native, y_out, x, y, x_out); });
}

qorn_hermite *qorn_hermite_create(qorn_error *error) {
  return Made(error, [] { return std::make_unique<qorn_hermite>(); });
}

void qorn_hermite_destroy(qorn_hermite *hermite) { Destroy(hermite); }

int32_t qorn_hermite_interpolate(qorn_hermite *hermite, qorn_vector *y_out, const qorn_vector *x,
                                 const qorn_vector *y, const qorn_vector *x_out, qorn_error *error) {
  return Guarded(error, [&] { return InterpolateAny(Object(hermite).native, y_out, x, y, x_out); });
}

double qorn_watt2dbm(double watt) { return UnitConversion::Watt2dBm(watt); }
float qorn_watt2dbmf(float watt) { return UnitConversion::Watt2dBm(watt); }
double qorn_dbm2watt(double dbm) { return UnitConversion::dBm2Watt(dbm); }
float qorn_dbm2wattf(float dbm) { return UnitConversion::dBm2Watt(dbm); }
double qorn_volt2dbm(double volt) { return UnitConversion::Volt2dBm(volt); }
float qorn_volt2dbmf(float volt) { return UnitConversion::Volt2dBm(volt); }
double qorn_dbm2volt(double dbm) { return UnitConversion::dBm2Volt(dbm); }
float qorn_dbm2voltf(float dbm) { return UnitConversion::dBm2Volt(dbm); }
double qorn_peakvolt2dbm(double volt) { return UnitConversion::PeakVolt2dBm(volt); }
float qorn_peakvolt2dbmf(float volt) { return UnitConversion::PeakVolt2dBm(volt); }
double qorn_dbm2peakvolt(double dbm) { return UnitConversion::dBm2PeakVolt(dbm); }
float qorn_dbm2peakvoltf(float dbm) { return UnitConversion::dBm2PeakVolt(dbm); }
double qorn_volt2watt(double volt) { return UnitConversion::Volt2Watt(volt); }
float qorn_volt2wattf(float volt) { return UnitConversion::Volt2Watt(volt); }
double qorn_watt2volt(double watt) { return UnitConversion::Watt2Volt(watt); }
float qorn_watt2voltf(float watt) { return UnitConversion::Watt2Volt(watt); }
double qorn_dbm2dbv(double dbm) { return UnitConversion::dBm2dBV(dbm); }
float qorn_dbm2dbvf(float dbm) { return UnitConversion::dBm2dBV(dbm); }
double qorn_dbv2dbm(double dbv) { return UnitConversion::dBV2dBm(dbv); }
float qorn_dbv2dbmf(float dbv) { return UnitConversion::dBV2dBm(dbv); }
double qorn_dbv2volt(double dbv) { return UnitConversion::dBV2Volt(dbv); }
float qorn_dbv2voltf(float dbv) { return UnitConversion::dBV2Volt(dbv); }
double qorn_volt2dbv(double volt) { return UnitConversion::Volt2dBV(volt); }
float qorn_volt2dbvf(float volt) { return UnitConversion::Volt2dBV(volt); }
double qorn_dbv2watt(double dbv) { return UnitConversion::dBV2Watt(dbv); }
float qorn_dbv2wattf(float dbv) { return UnitConversion::dBV2Watt(dbv); }
double qorn_watt2dbv(double watt) { return UnitConversion::Watt2dBV(watt); }
float qorn_watt2dbvf(float watt) { return UnitConversion::Watt2dBV(watt); }
double qorn_dbpt2dbuvm(double dbpt) { return UnitConversion::dBpT2dBuVm(dbpt); }
double qorn_dbuvm2dbpt(double dbuvm) { return UnitConversion::dBuVm2dBpT(dbuvm); }
