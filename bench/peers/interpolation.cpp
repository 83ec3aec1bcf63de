#include "peers/interpolation.h"

#if defined(QORN_PEER_GSL)

#include <gsl/gsl_interp.h>

#include <cstddef>

namespace peers {

struct GslInterpolation::Objects {
  Objects(Kind kind, int n)
      : interp(gsl_interp_alloc(kind == Kind::kLinear ? gsl_interp_linear : gsl_interp_cspline,
                                static_cast<std::size_t>(n))),
        accel(gsl_interp_accel_alloc()), size(static_cast<std::size_t>(n)) {}
  ~Objects() {
    gsl_interp_free(interp);
    gsl_interp_accel_free(accel);
  }
  Objects(const Objects &) = delete;
  Objects &operator=(const Objects &) = delete;

  gsl_interp *interp;
  gsl_interp_accel *accel;
  std::size_t size;
};

GslInterpolation::GslInterpolation(Kind kind, int n) : m_objects(std::make_unique<Objects>(kind, n)) {}
GslInterpolation::~GslInterpolation() = default;

void GslInterpolation::Init(const double *x, const double *y) {
  gsl_interp_init(m_objects->interp, x, y, m_objects->size);
  gsl_interp_accel_reset(m_objects->accel);
}

void GslInterpolation::Evaluate(const double *x, const double *y, const double *values, double *results,
                                int count) {
  for (int j = 0; j < count; ++j) {
    results[j] = gsl_interp_eval(m_objects->interp, x, y, values[j], m_objects->accel);
  }
}

} // namespace peers

#endif
