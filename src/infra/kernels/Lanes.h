// The lanes of a sum, where they are kept between pieces.
#ifndef QORN_SRC_INFRA_KERNELS_LANES_H
#define QORN_SRC_INFRA_KERNELS_LANES_H

namespace QORN::kernels {

/// Lanes of every sum: element i is added to lane i mod kSumLanes, and the lanes are then added in halves.
constexpr int kSumLanes = 32;

} // namespace QORN::kernels

#endif
