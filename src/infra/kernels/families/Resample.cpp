#include "../Resample.h"

#include "../../fourier/passes/Vec.h"
#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Products and sums are rounded apart, and sums go in an order that the table gives and not the registers:
// the bits are the same at every level. Fused forms would gain nothing, since each product waits for loads.
//
// A complex signal is taken as the scalars that it is, kParts to an element. Either part is treated as a real
// signal would be, so that the results are those of the parts by themselves.
//
// A product of a zero of the table with an infinity or not-a-number would carry it further than the filter
// reaches. So a result that is not finite is computed again, with the products outside of the wings left out.

constexpr int kOutputs = kResampleLanes;
constexpr int kWidth = kLanes<float, kOutputs>;
constexpr int kRegisters = kOutputs / kWidth;
using Floats = Vec<float, kWidth>;

inline Index Floor(double x) {
  const auto whole = static_cast<Index>(x);
  return static_cast<double>(whole) > x ? whole - 1 : whole;
}

// A place on the filter, given as x >= 0 in units of nStep points.
struct Place {
  Place(double x, int nStep) : period(static_cast<int>(x)) {
    const double points = (x - period) * nStep;
    phase = static_cast<int>(points + kOnPoint);
    between = points - phase;
    row = 2 * phase + (between > kOnPoint ? 1 : 0);
    if (phase == nStep) row = phase = 0, ++period; // rounded up to the first point of the next period
  }

  int period, phase, row;
  double between;
};

// Whether the wing reaches element y of a row.
inline bool IsInReach(const ResampleTable &table, const Place &place, Index y) {
  const Index point = place.phase + table.nStep * y;
  return point < table.length && point > -table.length - place.row % 2;
}

// Ratio of 1 or more: an output is the product of one row with the samples around its instant.

// The lower half of the lanes, each twice, and the upper one.
template <class V> inline V TwiceLow(V x) {
  if constexpr (sizeof(V) == 64) {
    return __builtin_shufflevector(x, x, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
  } else if constexpr (sizeof(V) == 32) {
    return __builtin_shufflevector(x, x, 0, 0, 1, 1, 2, 2, 3, 3);
  } else {
    return __builtin_shufflevector(x, x, 0, 0, 1, 1);
  }
}

template <class V> inline V TwiceHigh(V x) {
  if constexpr (sizeof(V) == 64) {
    return __builtin_shufflevector(x, x, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13, 14, 14, 15, 15);
  } else if constexpr (sizeof(V) == 32) {
    return __builtin_shufflevector(x, x, 4, 4, 5, 5, 6, 6, 7, 7);
  } else {
    return __builtin_shufflevector(x, x, 2, 2, 3, 3);
  }
}

// The lanes, added in halves until kParts are left.
template <int kParts, int kCount> inline void Fold(const float (&lanes)[kCount], float *dst) {
  if constexpr (kCount == kParts) {
    for (int part = 0; part < kParts; ++part) dst[part] = lanes[part];
  } else {
    float folded[kCount / 2];
    for (int i = 0; i < kCount / 2; ++i) folded[i] = lanes[i] + lanes[i + kCount / 2];
    Fold<kParts>(folded, dst);
  }
}

// dst = sum over i of (values[i] + a * slopes[i]) * src[i]; product i goes to lane i mod kOutputs.
template <int kParts>
inline void Product(const float *values, const float *slopes, float a, Index count, const float *src,
                    float *dst) {
  Floats sums[kRegisters * kParts] = {};
  const auto fraction = Broadcast<Floats>(a);
  for (Index i = 0; i < count; i += kOutputs, src += kOutputs * kParts) {
    Unroll<kRegisters>([&](auto r) {
      const Floats tap =
          Load<Floats>(values + i + r * kWidth) + fraction * Load<Floats>(slopes + i + r * kWidth);
      if constexpr (kParts == 1) {
        sums[r] += tap * Load<Floats>(src + r * kWidth);
      } else {
        sums[2 * r] += TwiceLow(tap) * Load<Floats>(src + 2 * r * kWidth);
        sums[2 * r + 1] += TwiceHigh(tap) * Load<Floats>(src + (2 * r + 1) * kWidth);
      }
    });
  }
  float lanes[kOutputs * kParts];
  Unroll<kRegisters * kParts>([&](auto r) { Store(lanes + r * kWidth, sums[r]); });
  Fold<kParts>(lanes, dst);
}

// The same without what the wings do not reach.
template <int kParts>
void ProductInReach(const ResampleTable &table, const Place &place, const float *values, float a,
                    const float *src, float *dst) {
  float lanes[kOutputs * kParts] = {};
  for (Index i = 0; i < 2 * table.wing; ++i) {
    if (!IsInReach(table, place, i - table.wing)) continue;
    const float tap = values[i] + Rounded(a * values[table.stride + i]);
    for (int part = 0; part < kParts; ++part) {
      lanes[i % kOutputs * kParts + part] += Rounded(tap * src[i * kParts + part]);
    }
  }
  Fold<kParts>(lanes, dst);
}

template <int kParts> inline bool IsFinite(const float *x) {
  for (int part = 0; part < kParts; ++part) {
    if (!(x[part] - x[part] == 0.0F)) return false;
  }
  return true;
}

// dst[k] = src[first + k] for 0 <= k < count, zero outside of the source.
template <int kParts> void CopyInside(const float *src, Index len, Index first, Index count, float *dst) {
  const Index begin = first < 0 ? -first : 0;
  const Index end = len - first < count ? len - first : count;
  __builtin_memset(dst, 0, static_cast<std::size_t>(count * kParts) * sizeof(float));
  if (begin < end) {
    __builtin_memcpy(dst + begin * kParts, src + (first + begin) * kParts,
                     static_cast<std::size_t>((end - begin) * kParts) * sizeof(float));
  }
}

// window has room for table.stride elements.
template <int kParts>
void Widen(const ResampleTable &table, const float *src, Index len, double time, double step, float *dst,
           Index count, float *window) {
  const Instants instants(time, step);
  for (Index j = 0; j < count; ++j, dst += kParts) {
    const double t = instants[j];
    const Index i = Floor(t);
    // The sample after the instant lies `1 - fraction` behind it: the place of the row's element 0.
    const Place place(1.0 - (t - static_cast<double>(i)), table.nStep);
    const auto a = static_cast<float>(place.between);
    const float *values = table.rows + 2 * table.stride * place.row;
    const Index first = i + 1 - place.period - table.wing;
    const float *samples = window;
    if (first >= 0 && first <= len - table.stride) {
      samples = src + first * kParts;
    } else {
      CopyInside<kParts>(src, len, first, table.stride, window);
    }
    Product<kParts>(values, values + table.stride, a, table.stride, samples, dst);
    if (!IsFinite<kParts>(dst)) ProductInReach<kParts>(table, place, values, a, samples, dst);
  }
}

// Ratio below 1: the filter's points stand step / nStep input samples apart, so that outputs are exactly
// nStep points apart. One sample therefore meets all outputs at one phase: it adds the multiples of a single
// row to consecutive outputs.

constexpr int kPart = 512; // outputs that are kept at a time, a multiple of kOutputs
constexpr int kTile = 128; // samples whose places are kept at a time, and whose sum is formed apart: long
                           // sums in pieces round less

// Adds samples 0 to count - 1, whose rows begin at rows + at[k] and take the fractions a[k].
template <int kParts>
inline void AddSamples(const float *rows, Index stride, const Index *at, const float *a, const float *src,
                       Index count, float (&sums)[kParts][kPart], int first) {
  Floats total[kParts * kRegisters] = {};
  for (Index k = 0; k < count; ++k) {
    const float *values = rows + at[k];
    const auto fraction = Broadcast<Floats>(a[k]);
    Unroll<kRegisters>([&](auto r) {
      const Floats tap =
          Load<Floats>(values + r * kWidth) + fraction * Load<Floats>(values + stride + r * kWidth);
      Unroll<kParts>([&](auto part) {
        total[part * kRegisters + r] += tap * Broadcast<Floats>(src[k * kParts + part]);
      });
    });
  }
  Unroll<kParts * kRegisters>([&](auto r) {
    float *sum = &sums[r / kRegisters][first + r % kRegisters * kWidth];
    Store(sum, Load<Floats>(sum) + total[r]);
  });
}

// Adds to outputs first to first + kOutputs - 1 what a sample at the given place of output 0 adds within the
// wings' reach.
template <int kParts>
void AddInReach(const ResampleTable &table, const Place &place, Index period, const float *src,
                float (&sums)[kParts][kPart], int first) {
  const float *values = table.rows + 2 * table.stride * place.row + table.lead;
  for (int lane = first; lane < first + kOutputs; ++lane) {
    const Index y = period + lane;
    if (!IsInReach(table, place, y)) continue;
    const float tap = values[y] + Rounded(static_cast<float>(place.between) * values[table.stride + y]);
    for (int part = 0; part < kParts; ++part) sums[part][lane] += Rounded(tap * src[part]);
  }
}

// Outputs 0 to count - 1 <= kPart at start + j / ratio, without gain.
template <int kParts, bool kInReach>
void NarrowPart(const ResampleTable &table, const float *src, Index len, double start, double step,
                double ratio, float (&sums)[kParts][kPart], int count) {
  for (auto &part : sums) {
    for (int j = 0; j < count; j += kOutputs) __builtin_memset(&part[j], 0, kOutputs * sizeof(float));
  }
  const Index whole = Floor(start);
  const double fraction = start - static_cast<double>(whole);
  // Samples beyond these are out of reach; the sums are formed in double, since they may be huge.
  const double reach = static_cast<double>(table.wing) + 1.0;
  const double lowest = start - reach * step - 1.0, highest = start + (count + reach) * step + 1.0;
  const auto length = static_cast<double>(len);
  const Index begin = lowest > 0.0 ? static_cast<Index>(lowest < length ? lowest : length) : 0;
  const Index end = highest > 0.0 ? static_cast<Index>(highest < length ? highest : length) : 0;
  // Added to a place to make it positive.
  const Index shift = count + table.wing + 8;

  Index at[kTile], periods[kTile];
  float a[kTile];
  for (Index tile = begin; tile < end; tile += kTile) {
    const Index samples = end - tile < kTile ? end - tile : kTile;
    for (Index k = 0; k < samples; ++k) {
      const double distance = fraction + static_cast<double>(whole - tile - k);
      const Place place(distance * ratio + static_cast<double>(shift), table.nStep);
      periods[k] = place.period - shift;
      at[k] = 2 * table.stride * place.row + table.lead + periods[k];
      a[k] = static_cast<float>(place.between);
    }
    // Of a block of outputs some are in reach of the samples from `low` to `high`.
    Index low = 0, high = 0;
    for (int first = 0; first < count; first += kOutputs) {
      while (low < samples && periods[low] + first > table.wing - 1) ++low;
      while (high < samples && periods[high] + first > -table.wing - kOutputs) ++high;
      if constexpr (kInReach) {
        for (Index k = low; k < high; ++k) {
          const double distance = fraction + static_cast<double>(whole - tile - k);
          const Place place(distance * ratio + static_cast<double>(shift), table.nStep);
          AddInReach<kParts>(table, place, periods[k], src + (tile + k) * kParts, sums, first);
        }
      } else if (low < high) {
        AddSamples<kParts>(table.rows + first, table.stride, at + low, a + low, src + (tile + low) * kParts,
                           high - low, sums, first);
      }
    }
  }
}

template <int kParts>
void Narrow(const ResampleTable &table, const float *src, Index len, double time, double step, double ratio,
            float *dst, Index count) {
  const Instants instants(time, step);
  const auto gain = static_cast<float>(ratio * static_cast<double>(table.gain));
  float sums[kParts][kPart];
  for (Index done = 0; done < count; done += kPart) {
    const int outputs = static_cast<int>(count - done < kPart ? count - done : kPart);
    NarrowPart<kParts, false>(table, src, len, instants[done], step, ratio, sums, outputs);
    bool finite = true;
    for (int j = 0; j < outputs; ++j) {
      for (int part = 0; part < kParts; ++part) finite &= IsFinite<1>(&sums[part][j]);
    }
    if (!finite) {
      NarrowPart<kParts, true>(table, src, len, instants[done], step, ratio, sums, outputs);
    }
    for (int j = 0; j < outputs; ++j) {
      for (int part = 0; part < kParts; ++part) dst[(done + j) * kParts + part] = gain * sums[part][j];
    }
  }
}

// The filter as it stands, whatever the ratio, and every step in double: the instants are sums of steps, a
// result the sum of the left wing outwards, then of the right one.

// Adds the products of a wing that begins x table points from the centre with src[from], src[from + way]
// and so on.
template <int kParts>
inline void AddWing(const ResampleTable &table, double x, const float *src, Index len, Index from, int way,
                    double (&sum)[kParts]) {
  const auto k = static_cast<Index>(x + kOnPoint);
  const double a = x - static_cast<double>(k), b = 1.0 - a;
  const Index before = way < 0 ? from - (len - 1) : -from; // samples of the wing that lie before the source
  Index m = before > 0 ? before : 0;
  const Index inside = way < 0 ? from + 1 : len - from;
  for (Index j = k + m * table.nStep; m < inside && j < table.length; ++m, j += table.nStep) {
    const double tap =
        Rounded(static_cast<double>(table.h[j]) * b) + Rounded(static_cast<double>(table.h[j + 1]) * a);
    const float *sample = src + (from + way * m) * kParts;
    for (int part = 0; part < kParts; ++part) {
      sum[part] += Rounded(tap * static_cast<double>(sample[part]));
    }
  }
}

template <int kParts>
void InDouble(const ResampleTable &table, const float *src, Index len, double time, double step, float *dst,
              Index count) {
  const auto gain = static_cast<double>(table.gain);
  for (Index n = 0; n < count; ++n, time += step, dst += kParts) {
    const Index i = Floor(time);
    const double f = time - static_cast<double>(i);
    double sum[kParts] = {};
    AddWing<kParts>(table, f * table.nStep, src, len, i, -1, sum);
    AddWing<kParts>(table, (1.0 - f) * table.nStep, src, len, i + 1, 1, sum);
    for (int part = 0; part < kParts; ++part) dst[part] = static_cast<float>(sum[part] * gain);
  }
}

} // namespace

#define QORN_FAMILY "Resample.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
