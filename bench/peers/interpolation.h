// The GNU Scientific Library's interpolation, in double as it is.
#ifndef QORN_BENCH_PEERS_INTERPOLATION_H
#define QORN_BENCH_PEERS_INTERPOLATION_H

#if defined(QORN_PEER_GSL)

#include <memory>

namespace peers {

class GslInterpolation {
public:
  enum class Kind { kLinear, kSpline };

  GslInterpolation(Kind kind, int n);
  ~GslInterpolation();

  /// Solves for the table.
  void Init(const double *x, const double *y);

  /// Value after value, each search beginning at the interval of the last one.
  void Evaluate(const double *x, const double *y, const double *values, double *results, int count);

private:
  struct Objects;
  std::unique_ptr<Objects> m_objects;
};

} // namespace peers

#endif

#endif
