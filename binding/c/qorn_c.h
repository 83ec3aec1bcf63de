/**
 * @file
 * The library from C, and from any runtime that can call C: vectors, the spectrum of a block, two
 * interpolators and the conversions of units, as flat functions over opaque objects.
 *
 * Failures. No C++ exception leaves a function. One that can fail takes a last argument `error`, which may be
 * null; else it is always written, with a code of 0 where nothing failed. A failure has one of the codes of
 * QORN::QORNException: 10002 for an argument that is refused, null objects and vectors of the wrong elements
 * among them, 11001 for a lack of memory. A function that returns a code returns that one, a function that
 * makes an object returns null.
 *
 * Objects. Each belongs to the caller, who destroys it once; destroying null does nothing. An object serves
 * one thread at a time; separate objects are independent, and the conversions have no state. An object keeps
 * its memory: calls on blocks of the same or a smaller length allocate nothing, except in
 * qorn_spline_interpolate.
 */
#ifndef QORN_C_H
#define QORN_C_H

#include <stdint.h>

#if defined(__GNUC__)
#define QORN_C_API __attribute__((visibility("default")))
#else
#define QORN_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The number of this interface; it changes when programs that were built against the former would fail. */
#define QORN_C_INTERFACE 1

/** QORN_C_INTERFACE of the library that is loaded. */
QORN_C_API int32_t qorn_c_interface(void);

/** The version of the library that is loaded, such as "0.1.0". */
QORN_C_API const char *qorn_c_version(void);

/** A failure. The texts are static and stay valid as long as the library is loaded. */
typedef struct qorn_error {
  int32_t code;        /**< 0 if nothing failed, the other members being 0 as well */
  int32_t line;        /**< the source line that reported it */
  const char *message; /**< the fixed text of the code */
  const char *file;    /**< the source path of the module, such as "math\\CubicHermiteInterpolation" */
} qorn_error;

/* Vectors. */

/** A vector of elements of one kind, given when it is made, in aligned memory. */
typedef struct qorn_vector qorn_vector;

/** The kinds of elements. A complex element is a pair of real and imaginary part without a gap. */
enum qorn_element {
  QORN_INT16 = 0,  /**< int16_t */
  QORN_INT32 = 1,  /**< int32_t */
  QORN_UINT32 = 2, /**< uint32_t */
  QORN_REAL32 = 3, /**< float */
  QORN_REAL64 = 4, /**< double */
  QORN_CPLX32 = 5, /**< two floats */
  QORN_CPLX64 = 6  /**< two doubles */
};

/** An empty vector of elements of a kind of qorn_element; another kind is refused. */
QORN_C_API qorn_vector *qorn_vector_create(int32_t element, qorn_error *error);
QORN_C_API void qorn_vector_destroy(qorn_vector *vector);

/** The number of elements; 0 for null. */
QORN_C_API int32_t qorn_vector_size(const qorn_vector *vector);

/** The number of elements that the memory has room for; 0 for null. */
QORN_C_API int32_t qorn_vector_capacity(const qorn_vector *vector);

/** The first element, or null for a vector without memory. Valid until the vector grows or is destroyed. */
QORN_C_API void *qorn_vector_data(const qorn_vector *vector);

/**
 * Gives the vector n >= 0 elements. Up to the capacity only the length changes; above it the memory is
 * replaced by that of n elements of zero, and the old ones are gone.
 */
QORN_C_API int32_t qorn_vector_resize(qorn_vector *vector, int32_t n, qorn_error *error);

/**
 * Resizes to n and copies n elements from src, which may be null if n is 0. src may be memory of the vector
 * itself up to its capacity; a vector that has to grow refuses it.
 */
QORN_C_API int32_t qorn_vector_import(qorn_vector *vector, const void *src, int32_t n, qorn_error *error);

/** Copies the first n elements to dst, which may be null if n is 0. An n above the length is refused. */
QORN_C_API int32_t qorn_vector_export(const qorn_vector *vector, void *dst, int32_t n, qorn_error *error);

/* The spectrum of a block of samples, see QORN::Spectrum. */

typedef struct qorn_spectrum qorn_spectrum;

/** The kinds of windows. Those that QORN::WindowFactory does not offer leave a spectrum that refuses to work.
 */
enum qorn_window {
  QORN_WINDOW_RECTANGLE = 0,
  QORN_WINDOW_BLACKMAN_HARRIS = 1,
  QORN_WINDOW_FLAT_TOP = 2,
  QORN_WINDOW_HANN = 3,
  QORN_WINDOW_GAUSS = 4,     /**< the parameter is alpha */
  QORN_WINDOW_CISPR_6DB = 5, /**< the parameter is beta, here and for the next two */
  QORN_WINDOW_MIL_6DB = 6,
  QORN_WINDOW_KAISER = 7,
  QORN_WINDOW_HAMMING = 8,
  QORN_WINDOW_CISPR_3DB = 15 /**< the parameter is beta */
};

/** The units of a spectrum. Any value other than 0 selects volts. */
enum qorn_power_unit { QORN_DBV = 0, QORN_VOLT = 1 };

/** A spectrum of blocks of size samples, in dBV. A negative size is refused like a lack of memory, 11001. */
QORN_C_API qorn_spectrum *qorn_spectrum_create(int32_t size, int32_t window, float parameter,
                                               qorn_error *error);
QORN_C_API void qorn_spectrum_destroy(qorn_spectrum *spectrum);

/** Selects the unit from the next block on. */
QORN_C_API int32_t qorn_spectrum_set_unit(qorn_spectrum *spectrum, int32_t unit, qorn_error *error);

/** The number of points; 0 for null. */
QORN_C_API int32_t qorn_spectrum_size(const qorn_spectrum *spectrum);

/**
 * out, of QORN_REAL32, becomes the two-sided magnitude spectrum of in, of QORN_REAL32 or QORN_CPLX32, with
 * frequency zero at index size / 2. A tone of amplitude A exp(j 2 pi k n / size) reads A at index k + size
 * / 2.
 */
QORN_C_API int32_t qorn_spectrum_apply(qorn_spectrum *spectrum, qorn_vector *out, const qorn_vector *in,
                                       qorn_error *error);

/**
 * The same for n samples at data, which are read where they lie: in, whose kind is theirs, sees them during
 * the call and is empty after it. data may be null if n is 0. Memory of either vector, up to its capacity, is
 * refused: in gives its own back before it sees the samples, and out becomes the spectrum.
 */
QORN_C_API int32_t qorn_spectrum_apply_block(qorn_spectrum *spectrum, qorn_vector *out, qorn_vector *in,
                                             const void *data, int32_t n, qorn_error *error);

/* Interpolation of a table: point i is (x[i], y[i]), x ascending. See QORN::Spline,
 * QORN::CubicHermiteInterpolation. */

typedef struct qorn_spline qorn_spline;

/** A spline that is natural at both ends: its second derivative there is 0. */
QORN_C_API qorn_spline *qorn_spline_create(qorn_error *error);
QORN_C_API void qorn_spline_destroy(qorn_spline *spline);

/** The first derivative at the first point, or at the last one. Above 1e30 the end is natural. */
QORN_C_API int32_t qorn_spline_set_boundary1(qorn_spline *spline, double derivative, qorn_error *error);
QORN_C_API int32_t qorn_spline_set_boundary2(qorn_spline *spline, double derivative, qorn_error *error);

/** Makes both ends natural. */
QORN_C_API int32_t qorn_spline_set_natural(qorn_spline *spline, qorn_error *error);

/**
 * y_out[j] = the spline at x_out[j]. The four vectors are all of QORN_REAL32 or all of QORN_REAL64. y_out may
 * be x_out; a vector of the table is refused.
 *
 * Returns 0; the code of a failure, which `error` then holds; or, with a code of 0 in `error`, a result of
 * the spline's own: 10003 if x and y differ in length, 10002 if there is no point, and y_out is then of no
 * use.
 */
QORN_C_API int32_t qorn_spline_interpolate(qorn_spline *spline, qorn_vector *y_out, const qorn_vector *x,
                                           const qorn_vector *y, const qorn_vector *x_out, qorn_error *error);

typedef struct qorn_hermite qorn_hermite;

QORN_C_API qorn_hermite *qorn_hermite_create(qorn_error *error);
QORN_C_API void qorn_hermite_destroy(qorn_hermite *hermite);

/**
 * y_out[j] = the piecewise cubic that keeps the shape of the table, at x_out[j]. Vectors as for the spline.
 * Fails with 10002 if x does not ascend or y is shorter than x, and with 12005 if there are fewer than two
 * points.
 */
QORN_C_API int32_t qorn_hermite_interpolate(qorn_hermite *hermite, qorn_vector *y_out, const qorn_vector *x,
                                            const qorn_vector *y, const qorn_vector *x_out,
                                            qorn_error *error);

/* Units, in a 50 ohm system. A form in float, whose name ends in f, takes logarithms and powers in double and
 * rounds the result. The logarithm of zero reads about -40 and that of a negative number -999, scaled and
 * offset by the formula. See QORN::UnitConversion. */

/** W to dBm: 10 log10(1000 watt). */
QORN_C_API double qorn_watt2dbm(double watt);
QORN_C_API float qorn_watt2dbmf(float watt);

/** dBm to W: 10^(dbm / 10) / 1000. */
QORN_C_API double qorn_dbm2watt(double dbm);
QORN_C_API float qorn_dbm2wattf(float dbm);

/** V to dBm: 20 log10(volt / sqrt(0.05)). */
QORN_C_API double qorn_volt2dbm(double volt);
QORN_C_API float qorn_volt2dbmf(float volt);

/** dBm to V: 10^(dbm / 20) sqrt(0.05). */
QORN_C_API double qorn_dbm2volt(double dbm);
QORN_C_API float qorn_dbm2voltf(float dbm);

/** Peak V to dBm: 20 log10(volt) + 10. */
QORN_C_API double qorn_peakvolt2dbm(double volt);
QORN_C_API float qorn_peakvolt2dbmf(float volt);

/** dBm to peak V: 10^((dbm - 10) / 20). */
QORN_C_API double qorn_dbm2peakvolt(double dbm);
QORN_C_API float qorn_dbm2peakvoltf(float dbm);

/** V to W: volt^2 / 50. */
QORN_C_API double qorn_volt2watt(double volt);
QORN_C_API float qorn_volt2wattf(float volt);

/** W to V: sqrt(50 watt). */
QORN_C_API double qorn_watt2volt(double watt);
QORN_C_API float qorn_watt2voltf(float watt);

/** dBm to dBV: dbm - 13.01029995663981. */
QORN_C_API double qorn_dbm2dbv(double dbm);
QORN_C_API float qorn_dbm2dbvf(float dbm);

/** dBV to dBm: dbv + 13.01029995663981. */
QORN_C_API double qorn_dbv2dbm(double dbv);
QORN_C_API float qorn_dbv2dbmf(float dbv);

/** dBV to V: 10^(dbv / 20). */
QORN_C_API double qorn_dbv2volt(double dbv);
QORN_C_API float qorn_dbv2voltf(float dbv);

/** V to dBV: 20 log10(volt). */
QORN_C_API double qorn_volt2dbv(double volt);
QORN_C_API float qorn_volt2dbvf(float volt);

/** dBV to W: 10^(dbv / 10) / 50. */
QORN_C_API double qorn_dbv2watt(double dbv);
QORN_C_API float qorn_dbv2wattf(float dbv);

/** W to dBV: 10 log10(50 watt). */
QORN_C_API double qorn_watt2dbv(double watt);
QORN_C_API float qorn_watt2dbvf(float watt);

/** dBpT to dBuV/m: dbpt + 49.5. */
QORN_C_API double qorn_dbpt2dbuvm(double dbpt);

/** dBuV/m to dBpT: dbuvm - 49.5. */
QORN_C_API double qorn_dbuvm2dbpt(double dbuvm);

#ifdef __cplusplus
}
#endif

#endif
