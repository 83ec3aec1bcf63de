// How a length falls apart into lanes and passes, and what that costs.
#ifndef QORN_SRC_INFRA_FOURIER_FACTORISE_H
#define QORN_SRC_INFRA_FOURIER_FACTORISE_H

#include <cstdint>
#include <vector>

namespace QORN::fourier {

/// The largest length that may be one straight-line butterfly; those with a kernel of their own (Direct.h)
/// are not.
inline constexpr int kMaxSmall = 16;

/// The radices of a transform of few points, as in fourier::Grid; rows is 0 if it goes another way. `scalar`
/// is sizeof of the type.
struct GridShape {
  int rows, middle, columns;
};
GridShape GridFor(int n, int scalar);

/// The same of a transform as in fourier::Lines. The passes have code for these shapes alone.
GridShape LinesFor(int n, int scalar);

/// The shape of a transform in two sweeps, as in fourier::FourStep: the radices of its first step and of the
/// strips down and across; first is 0 if n goes another way.
struct FourStepShape {
  int first;
  std::vector<int> down, across;
};
FourStepShape FourStepFor(std::int64_t n, int scalar);

/// The radices of a cyclic convolution of n points, n = 2^k times 1, 3, 5 or 9, k >= 6, as in
/// fourier::CyclicSteps.
struct CyclicShape {
  int first;
  std::vector<int> strip;
};
CyclicShape CyclicFor(std::int64_t n);

/// Whether n has no prime factor above 13, so that there is a butterfly for each.
bool IsSmooth(std::int64_t n);

/// The radices of the passes of n, which has no prime factor above kMaxRadix, in their order.
std::vector<int> Radices(std::int64_t n);

/// The number of lanes, 5 to 16 and a divisor of the smooth n > 16, at the least estimated cost; `scalar` is
/// sizeof of the type. There always is one: n has a prime factor of 5 or more, or 8 or 9 divides it.
int LanesFor(std::int64_t n, int scalar);

/// Of a transform in tiles (Passes.h): the number of rows at the least estimated cost, or 0 if n has no
/// factors for it, or is smooth and its samples stay in the caches.
std::int64_t TileRows(std::int64_t n, int scalar);

/// The radix that joins the parts of a line of n blocks, n >= 4.
int LastRadix(std::int64_t n);

/// A generator of the residues modulo n but 0, if n is a prime for which the convolution of n - 1 values
/// pays; else 0.
int CyclicGenerator(int n, int scalar);

/// The estimated cost of a transform of smooth length, in vector operations of the widest level.
double Cost(std::int64_t n, int scalar);

/// The length P >= least, a smooth multiple of 16, with the least cost: that of Bluestein's convolution.
std::int64_t ConvolutionLength(std::int64_t least, int scalar);

} // namespace QORN::fourier

#endif
