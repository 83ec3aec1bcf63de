// Convolution and correlation: directly, or by transforms where that is less work.
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <type_traits>
#include <utility>

#include "fourier/LongConvolution.h"
#include "fourier/Operands.h"
#include "fourier/WholeCorrelation.h"
#include "fourier/WorkArray.h"
#include "kernels/Levels.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {

using Index = std::ptrdiff_t;

// dst[len - 1 - i] = conj(src[i]).
template <class T> void Reverse(const T *src, int len, T *dst) {
  std::transform(std::reverse_iterator(src + len), std::reverse_iterator(src), dst,
                 [](const T &x) { return fourier::Conjugate(x); });
}

// How a correlation is estimated to take the least time: by transforms of the whole operands, of blocks, or,
// where both lengths are 0, directly.
struct Method {
  int whole, block;
  bool IsDirect() const { return whole == 0 && block == 0; }
};
// Where few products meet, blocks of long taps leave many outputs in doubt: so many at either end of a
// convolution are computed by themselves.
template <class T> Index EndOf(int taps) {
  return std::is_same_v<T, double> && taps >= 512 ? std::max(taps / 8, 192) : 0;
}
template <class T> double EndsCost(int taps) {
  const Index end = EndOf<T>(taps);
  double cost = std::numeric_limits<double>::infinity();
  return end > 0 && fourier::WholeLength<T>(end, end, cost) != 0 ? 2 * cost : 0;
}

template <class T> Method Choose(int taps, int len, Index outputs, double terms) {
  Method method{};
  if (taps < fourier::kLeastTaps) return method;
  double cost = fourier::DirectCost<T>(taps, outputs, terms);
  method.whole = fourier::WholeLength<T>(taps, len, cost);
  method.block = fourier::BlockLength<T>(taps, outputs, cost - EndsCost<T>(taps));
  if (method.block != 0) method.whole = 0;
  return method;
}

// Where outputs of transforms of the whole operands are not good enough, blocks know to tell more.
template <class T> void Run(const fourier::Correlation<T> &job, const Method &method) {
  constexpr double kAny = std::numeric_limits<double>::infinity();
  const int length =
      method.block != 0 ? method.block : fourier::BlockLength<T>(job.tapCount, job.count, kAny);
  fourier::Correlator<T>(job.taps, job.tapCount, length, fourier::Life::kCall).Run(job);
}

template <class T>
void Convolve(void (*direct)(const T *, int, const T *, int, T *), const T *src1, int len1, const T *src2,
              int len2, T *dst) {
  if (src1 == nullptr || src2 == nullptr || dst == nullptr || len1 < 1 || len2 < 1) return;
  if (len1 > len2) {
    std::swap(src1, src2);
    std::swap(len1, len2);
  }
  const Index outputs = static_cast<Index>(len1) + len2 - 1;
  const double terms = static_cast<double>(len1) * len2;
  Method method = Choose<T>(len1, len2, outputs, terms);
  if (method.whole != 0) {
    if (fourier::ConvolveWhole(src1, len1, src2, len2, dst, method.whole)) return;
    method = {0, fourier::BlockLength<T>(len1, outputs, fourier::DirectCost<T>(len1, outputs, terms))};
  }
  if (method.IsDirect()) return direct(src1, len1, src2, len2, dst);
  const fourier::WorkArray<T> taps(len1, fourier::Life::kCall);
  Reverse(src1, len1, taps.Data());
  const Index end = EndOf<T>(len1);
  if constexpr (std::is_same_v<T, double>) {
    if (end > 0) fourier::ConvolveEnds(src1, len1, src2, len2, dst, end, end);
  }
  Run<T>({taps.Data(), len1, src2, len2, end, outputs - 2 * end, dst + end}, method);
}

template <class T>
void Correlate(void (*direct)(const T *, int, const T *, int, T *, int, int), const T *src1, int len1,
               const T *src2, int len2, T *dst, int dstLen, int lowLag) {
  if (src1 == nullptr || src2 == nullptr || dst == nullptr || len1 < 1 || len2 < 1 || dstLen < 1) return;
  // In the convolution of src2 with the reversed src1, dst[0] is value lowLag + len1 - 1.
  const Index place = static_cast<Index>(lowLag) + len1 - 1, whole = static_cast<Index>(len1) + len2 - 1;
  const Index first = std::clamp(place, Index{0}, whole), end = std::clamp(place + dstLen, Index{0}, whole);
  const int shorter = std::min(len1, len2);
  const double terms = std::min(static_cast<double>(len1) * len2, static_cast<double>(end - first) * shorter);
  const Method method =
      first == end ? Method{} : Choose<T>(shorter, std::max(len1, len2), end - first, terms);
  if (method.IsDirect()) return direct(src1, len1, src2, len2, dst, dstLen, lowLag);

  std::fill_n(dst, first - place, T{});
  std::fill(dst + (end - place), dst + dstLen, T{});
  T *const results = dst + (first - place);
  const fourier::Correlation<T> job{src1, len1, src2, len2, first, end - first, results};
  if (method.whole != 0 && fourier::CorrelateWhole(job, method.whole)) return;
  if (len1 <= len2) return Run<T>(job, method);
  constexpr Index kScalars = sizeof(T) / sizeof(float);
  const fourier::WorkArray<float> signal(kScalars * len1, fourier::Life::kCall),
      taps(kScalars * len2, fourier::Life::kCall);
  Reverse(src1, len1, reinterpret_cast<T *>(signal.Data()));
  Reverse(src2, len2, reinterpret_cast<T *>(taps.Data()));
  Run<T>({reinterpret_cast<T *>(taps.Data()), len2, reinterpret_cast<T *>(signal.Data()), len1, first,
          end - first, results},
         method);
}

} // namespace

void TargetLib::CrossCorr_32f(const float *src1, int len1, const float *src2, int len2, float *dst,
                              int dstLen, int lowLag) {
  Correlate(kernels::active->CrossCorr_32f, src1, len1, src2, len2, dst, dstLen, lowLag);
}

void TargetLib::CrossCorr_32fc(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst,
                               int dstLen, int lowLag) {
  Correlate(kernels::active->CrossCorr_32fc, src1, len1, src2, len2, dst, dstLen, lowLag);
}

void TargetLib::Conv_32f(const float *src1, int len1, const float *src2, int len2, float *dst) {
  Convolve(kernels::active->Conv_32f, src1, len1, src2, len2, dst);
}

void TargetLib::Conv_64f(const double *src1, int len1, const double *src2, int len2, double *dst) {
  Convolve(kernels::active->Conv_64f, src1, len1, src2, len2, dst);
}

} // namespace QORN
