/* The C interface from C11 alone: the spectrum of a tone, a spline through a sine, a failure, and the units.
 * Prints what it finds; the result is the number of findings that are wrong. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "qorn_c.h"

enum { kPoints = 1024, kBin = 100, kTable = 33 };

static int wrong = 0;

static void expect(const char *what, double found, double expected, double tolerance) {
  const int right = fabs(found - expected) <= tolerance;
  printf("%-32s %.9g%s\n", what, found, right ? "" : " is wrong");
  if (!right) ++wrong;
}

/* A tone of 0.1 V at bin kBin reads -20 dBV at index kPoints / 2 + kBin, and lies at least 90 dB above bins
 * far off. */
static void spectrum_of_a_tone(void) {
  const double turn = 8 * atan(1.0);
  float samples[2 * kPoints], levels[kPoints];
  for (int n = 0; n < kPoints; ++n) {
    samples[2 * n] = (float)(0.1 * cos(turn * kBin * n / kPoints));
    samples[2 * n + 1] = (float)(0.1 * sin(turn * kBin * n / kPoints));
  }
  qorn_error error;
  qorn_spectrum *spectrum = qorn_spectrum_create(kPoints, QORN_WINDOW_BLACKMAN_HARRIS, 0, &error);
  qorn_vector *in = qorn_vector_create(QORN_CPLX32, &error), *out = qorn_vector_create(QORN_REAL32, &error);
  if (qorn_vector_import(in, samples, kPoints, &error) == 0 &&
      qorn_spectrum_apply(spectrum, out, in, &error) == 0 &&
      qorn_vector_export(out, levels, kPoints, &error) == 0) {
    expect("level of the tone in dBV", (double)levels[kPoints / 2 + kBin], -20, 1e-4);
    expect("level of bin 0 below -110 dBV", (double)levels[kPoints / 2] < -110, 1, 0);
  }
  expect("code after the spectrum", error.code, 0, 0);
  qorn_vector_destroy(out);
  qorn_vector_destroy(in);
  qorn_spectrum_destroy(spectrum);
}

/* A sine has the slope 1 at 0 and at a full turn: with these, the spline is within 5/384 h^4 of it. */
static void spline_through_a_sine(void) {
  const double turn = 8 * atan(1.0), h = turn / (kTable - 1);
  qorn_error error;
  qorn_spline *spline = qorn_spline_create(&error);
  qorn_vector *x = qorn_vector_create(QORN_REAL64, &error), *y = qorn_vector_create(QORN_REAL64, &error);
  qorn_vector *x_out = qorn_vector_create(QORN_REAL64, &error),
              *y_out = qorn_vector_create(QORN_REAL64, &error);
  qorn_vector_resize(x, kTable, &error);
  qorn_vector_resize(y, kTable, &error);
  for (int i = 0; i < kTable; ++i) {
    ((double *)qorn_vector_data(x))[i] = i * h;
    ((double *)qorn_vector_data(y))[i] = sin(i * h);
  }
  const double where[2] = {1.0, 4.0};
  qorn_vector_import(x_out, where, 2, &error);
  qorn_spline_set_boundary1(spline, 1, &error);
  qorn_spline_set_boundary2(spline, 1, &error);
  if (qorn_spline_interpolate(spline, y_out, x, y, x_out, &error) == 0) {
    const double *values = qorn_vector_data(y_out);
    expect("spline at 1", values[0], sin(1.0), 5.0 / 384 * pow(h, 4));
    expect("spline at 4", values[1], sin(4.0), 5.0 / 384 * pow(h, 4));
  }
  expect("values", qorn_vector_size(y_out), 2, 0);

  /* Without the second boundary the table is the same, but the curve is not. */
  qorn_spline_set_natural(spline, &error);
  expect("natural spline", qorn_spline_interpolate(spline, y_out, x, y, x_out, &error), 0, 0);

  /* A table that does not ascend is refused by the other interpolator, which tells where. */
  qorn_hermite *hermite = qorn_hermite_create(&error);
  expect("Hermite interpolation", qorn_hermite_interpolate(hermite, y_out, x, y, x_out, &error), 0, 0);
  ((double *)qorn_vector_data(x))[1] = 0;
  expect("x that does not ascend", qorn_hermite_interpolate(hermite, y_out, x, y, x_out, &error), 10002, 0);
  printf("%d: %s (%s, line %d)\n", error.code, error.message, error.file, error.line);
  if (strcmp(error.message, "invalid input parameter") != 0 || error.line <= 0 ||
      strcmp(error.file, "math\\CubicHermiteInterpolation") != 0) {
    ++wrong;
  }
  qorn_hermite_destroy(hermite);
  qorn_vector_destroy(y_out);
  qorn_vector_destroy(x_out);
  qorn_vector_destroy(y);
  qorn_vector_destroy(x);
  qorn_spline_destroy(spline);
}

int main(void) {
  expect("interface", qorn_c_interface(), QORN_C_INTERFACE, 0);
  printf("version %s\n", qorn_c_version());
  spectrum_of_a_tone();
  spline_through_a_sine();
  expect("1 W in dBm", qorn_watt2dbm(1), 30, 1e-12);
  expect("13 dBm in V", (double)qorn_dbm2voltf(13), 0.998814876, 1e-6);
  return wrong;
}
