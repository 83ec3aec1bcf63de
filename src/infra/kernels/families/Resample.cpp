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

// What the rounding of a time may leave of a place on a point.
constexpr double kNoise = 1e-10;

// A place on the filter, given as x >= 0 in units of nStep points.
struct Place {
  Place(double x, int nStep) : period(static_cast<int>(x)) {
    const double points = (x - period) * nStep;
    const int phase = static_cast<int>(points + kOnPoint);
    between = points - phase;
    if (between < kNoise && between > -kNoise) between = 0.0;
    const bool isNext = phase == nStep; // rounded up to the first point of the next period
    row = isNext ? 0 : 2 * phase + (between > kOnPoint ? 1 : 0);
    period += isNext ? 1 : 0;
  }

  int period, row;
  double between;
};

// Places that are found at a time, in a loop of their own.
constexpr int kPlaces = 256;

struct Places {
  // Of place(0) to place(count - 1).
  template <class X> [[gnu::always_inline]] void Find(Index count, int nStep, X x) {
    for (Index k = 0; k < count; ++k) {
      const Place place(x(k), nStep);
      period[k] = place.period;
      row[k] = place.row;
      between[k] = static_cast<float>(place.between);
    }
  }

  int period[kPlaces], row[kPlaces];
  float between[kPlaces];
};

// Whether the wing reaches element y of a row.
inline bool IsInReach(const ResampleTable &table, int row, Index y) {
  const Index point = row / 2 + table.nStep * y;
  return point < table.length && point > -table.length - row % 2;
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
template <int kParts, class V> [[gnu::always_inline]] inline void Fold(V lanes, float *dst) {
  constexpr int kCount = sizeof(V) / sizeof(float);
  using Half = Vec<float, kCount / 2>;
  if constexpr (kCount > 4) {
    Half halves[2];
    __builtin_memcpy(halves, &lanes, sizeof lanes);
    Fold<kParts>(halves[0] + halves[1], dst);
  } else if constexpr (kParts == 2) {
    dst[0] = lanes[0] + lanes[2];
    dst[1] = lanes[1] + lanes[3];
  } else {
    dst[0] = (lanes[0] + lanes[2]) + (lanes[1] + lanes[3]);
  }
}

template <int kParts, int kCount>
[[gnu::always_inline]] inline void Fold(const Floats (&registers)[kCount], float *dst) {
  if constexpr (kCount == 1) {
    Fold<kParts>(registers[0], dst);
  } else {
    Floats folded[kCount / 2];
    Unroll<kCount / 2>([&](auto r) { folded[r] = registers[r] + registers[r + kCount / 2]; });
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
  Fold<kParts>(sums, dst);
}

// The same without what the wings do not reach.
template <int kParts>
void ProductInReach(const ResampleTable &table, int row, float a, const float *src, float *dst) {
  const float *values = table.rows + 2 * table.pitch * row;
  float lanes[kOutputs * kParts] = {};
  for (Index i = 0; i < 2 * table.wing; ++i) {
    if (!IsInReach(table, row, i - table.wing)) continue;
    const float tap = values[i] + Rounded(a * values[table.pitch + i]);
    for (int part = 0; part < kParts; ++part) {
      lanes[i % kOutputs * kParts + part] += Rounded(tap * src[i * kParts + part]);
    }
  }
  Floats registers[kRegisters * kParts];
  __builtin_memcpy(registers, lanes, sizeof lanes);
  Fold<kParts>(registers, dst);
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

// scratch has room for table.stride elements.
template <int kParts>
void Widen(const ResampleTable &table, const float *src, Index len, double time, double step, float *dst,
           Index count, float *scratch) {
  const Instants instants(time, step);
  Places places;
  for (Index done = 0; done < count; done += kPlaces) {
    const Index outputs = count - done < kPlaces ? count - done : kPlaces;
    double t[kPlaces];
    for (Index j = 0; j < outputs; ++j) t[j] = instants[done + j];
    // The sample behind an instant lies `1 - fraction` after it: the place of the row's element 0.
    Index before[kPlaces];
    for (Index j = 0; j < outputs; ++j) before[j] = Floor(t[j]);
    places.Find(outputs, table.nStep, [&](Index j) { return 1.0 - (t[j] - static_cast<double>(before[j])); });
    for (Index j = 0; j < outputs; ++j, dst += kParts) {
      const float a = places.between[j];
      const float *values = table.rows + 2 * table.pitch * places.row[j];
      const Index first = before[j] + 1 - places.period[j] - table.wing;
      const float *samples = scratch;
      if (first >= 0 && first <= len - table.stride) {
        samples = src + first * kParts;
      } else {
        CopyInside<kParts>(src, len, first, table.stride, scratch);
      }
      Product<kParts>(values, values + table.pitch, a, table.stride, samples, dst);
      if (!IsFinite<kParts>(dst)) ProductInReach<kParts>(table, places.row[j], a, samples, dst);
    }
  }
}

// Ratio below 1: the filter's points stand step / nStep input samples apart, so that outputs are exactly
// nStep points apart. One sample therefore meets all outputs at one phase: it adds the multiples of a single
// row to consecutive outputs. Outputs are taken a group at a time, also where the wings end: zeros stand
// before and behind each row.

// As many outputs as leave registers for the taps and the samples.
constexpr int kGroup = kRegisters > 2 ? kOutputs : 2 * kOutputs;
constexpr int kGroupRegisters = kGroup / kWidth;
constexpr int kPart = 512; // outputs that are kept at a time
static_assert(kPart % kGroup == 0 && kResampleZeros > kGroup + 1);

// Adds the products of samples 0 to count - 1 with the rows from rows[at[k]] on to the outputs of a group; if
// kSloped, of those values + a[k] * the slopes that stand pitch behind them. A long sum in pieces, of a tile
// each, rounds less.
template <int kParts, bool kSloped>
inline void AddSamples(const float *rows, const Index *at, [[maybe_unused]] Index pitch,
                       [[maybe_unused]] const float *a, Index first, const float *src, Index count,
                       float (&sums)[kParts][kPart]) {
  Floats total[kParts][kGroupRegisters] = {};
  for (Index k = 0; k < count; ++k) {
    const float *row = rows + (at[k] + first);
    Floats taps[kGroupRegisters];
    Unroll<kGroupRegisters>([&](auto r) {
      taps[r] = Load<Floats>(row + r * kWidth);
      if constexpr (kSloped) taps[r] += Broadcast<Floats>(a[k]) * Load<Floats>(row + pitch + r * kWidth);
    });
    Unroll<kParts>([&](auto part) {
      const auto sample = Broadcast<Floats>(src[k * kParts + part]);
      Unroll<kGroupRegisters>([&](auto r) { total[part][r] += taps[r] * sample; });
    });
  }
  Unroll<kParts>([&](auto part) {
    Unroll<kGroupRegisters>([&](auto r) {
      float *sum = &sums[part][first + r * kWidth];
      Store(sum, Load<Floats>(sum) + total[part][r]);
    });
  });
}

// Adds to a group what a sample adds within the wings' reach, if it meets output 0 in the given period of a
// row.
template <int kParts>
void AddInReach(const ResampleTable &table, int row, Index period, float a, const float *src, Index first,
                float (&total)[kParts][kGroup]) {
  const float *values = table.rows + 2 * table.pitch * row + table.wing;
  for (int lane = 0; lane < kGroup; ++lane) {
    const Index y = period + first + lane;
    if (!IsInReach(table, row, y)) continue;
    const float tap = values[y] + Rounded(a * values[table.pitch + y]);
    for (int part = 0; part < kParts; ++part) total[part][lane] += Rounded(tap * src[part]);
  }
}

// dst = the row at a place of fraction a.
inline void Interpolate(const ResampleTable &table, int row, float a, float *dst) {
  const float *values = table.rows + 2 * table.pitch * row;
  const auto fraction = Broadcast<Floats>(a);
  for (Index i = 0; i < table.stride; i += kWidth) {
    Store(dst + i, Load<Floats>(values + i) + fraction * Load<Floats>(values + table.pitch + i));
  }
}

// x truncated, within 0 to limit.
inline Index Within(double x, Index limit) {
  const auto most = static_cast<double>(limit);
  return x > 0.0 ? static_cast<Index>(x < most ? x : most) : 0;
}

// What the parts of a run have in common. Places on the filter repeat after `repeat` samples if that is not
// 0; their rows are then interpolated once a tile, into scratch memory.
struct Narrowing {
  const ResampleTable &table;
  const float *src;
  Index len;
  double step, ratio;
  Index repeat;
  float *scratch;
};

// Outputs 0 to count - 1 <= kPart at start + j / ratio, without gain.
template <int kParts, bool kInReach>
void NarrowPart(const Narrowing &run, double start, int count, float (&sums)[kParts][kPart]) {
  const ResampleTable &table = run.table;
  const double step = run.step, ratio = run.ratio;
  const Index repeat = run.repeat;
  for (auto &part : sums) {
    for (int j = 0; j < count; j += kGroup) {
      Unroll<kGroupRegisters>([&](auto r) { Store(&part[j + r * kWidth], Floats{}); });
    }
  }
  const Index whole = Floor(start);
  const double fraction = start - static_cast<double>(whole);
  // Samples beyond these are out of reach; the sums are formed in double, since they may be huge.
  const auto wing = static_cast<double>(table.wing);
  const Index begin = Within(start - (wing + 1.0) * step - 1.0, run.len);
  const Index end = Within(start + (count + wing + 1.0) * step + 1.0, run.len);
  const Index shift = count + table.wing + 8; // makes places positive
  const Index pitch = table.pitch;
  const Index advance = Floor(static_cast<double>(repeat) * ratio + 0.5);

  Places places;
  Index at[kPlaces];
  for (Index tile = begin; tile < end; tile += kPlaces) {
    const Index samples = end - tile < kPlaces ? end - tile : kPlaces;
    // Sample k stands `origin - k` in front of output 0.
    const double origin = fraction + static_cast<double>(whole - tile);
    const Index found = repeat > 0 && repeat < samples ? repeat : samples;
    places.Find(found, table.nStep, [&](Index k) {
      return (origin - static_cast<double>(k)) * ratio + static_cast<double>(shift);
    });
    for (Index k = 0; k < found; ++k) {
      Index row = 2 * places.row[k];
      if (repeat > 0) {
        Interpolate(table, places.row[k], places.between[k], run.scratch + k * pitch);
        row = k;
      }
      at[k] = row * pitch + (places.period[k] + table.wing - shift);
    }
    for (Index turn = found, back = advance; turn < samples; turn += found, back += advance) {
      const Index rest = samples - turn < found ? samples - turn : found;
      for (Index k = 0; k < rest; ++k) at[turn + k] = at[k] - back;
    }
    for (int first = 0; first < count; first += kGroup) {
      // The samples that reach the group, and perhaps one more at either end.
      const Index low = Within((origin * ratio + first - wing) * step, samples);
      const Index high = Within((origin * ratio + first + kGroup + wing) * step + 1.0, samples);
      const float *from = run.src + (tile + low) * kParts;
      if constexpr (kInReach) {
        float total[kParts][kGroup] = {};
        for (Index k = low; k < high; ++k, from += kParts) {
          const Index same = k % found, period = places.period[same] - shift - k / found * advance;
          AddInReach<kParts>(table, places.row[same], period, places.between[same], from, first, total);
        }
        for (int part = 0; part < kParts; ++part) {
          for (int lane = 0; lane < kGroup; ++lane) sums[part][first + lane] += total[part][lane];
        }
      } else if (low < high && repeat > 0) {
        AddSamples<kParts, false>(run.scratch, at + low, pitch, nullptr, first, from, high - low, sums);
      } else if (low < high) {
        AddSamples<kParts, true>(table.rows, at + low, pitch, places.between + low, first, from, high - low,
                                 sums);
      }
    }
  }
}

// The least number of samples, up to the limit, that is a whole number of outputs; 0 if there is none.
inline Index RepeatOf(double ratio, Index limit) {
  for (Index samples = 1; samples <= limit; ++samples) {
    const double outputs = static_cast<double>(samples) * ratio;
    const double off = outputs - static_cast<double>(Floor(outputs + 0.5));
    if (off < 1e-13 && off > -1e-13) return samples;
  }
  return 0;
}

// scratch has room for kResampleRows rows with zeros before, between and behind them.
template <int kParts>
void Narrow(const ResampleTable &table, const float *src, Index len, double time, double step, double ratio,
            float *dst, Index count, float *scratch) {
  const Index repeat = RepeatOf(ratio, kResampleRows);
  const Index zeroed = 2 * kResampleZeros + repeat * table.pitch;
  __builtin_memset(scratch, 0, static_cast<std::size_t>(zeroed) * sizeof(float));
  const Narrowing run{table, src, len, step, ratio, repeat, scratch + kResampleZeros};

  const Instants instants(time, step);
  const auto gain = static_cast<float>(ratio * static_cast<double>(table.gain));
  float sums[kParts][kPart];
  for (Index done = 0; done < count; done += kPart) {
    const int outputs = static_cast<int>(count - done < kPart ? count - done : kPart);
    NarrowPart<kParts, false>(run, instants[done], outputs, sums);
    // What is not finite makes its difference with itself not-a-number.
    Floats differences = {};
    for (int part = 0; part < kParts; ++part) {
      for (int j = 0; j < outputs; j += kWidth) {
        const auto some = Load<Floats>(&sums[part][j]);
        differences += some - some;
      }
    }
    float difference;
    Fold<1>(differences, &difference);
    if (!(difference == 0.0F)) NarrowPart<kParts, true>(run, instants[done], outputs, sums);
    for (int j = 0; j < outputs; ++j) {
      for (int part = 0; part < kParts; ++part) dst[(done + j) * kParts + part] = gain * sums[part][j];
    }
  }
}

// The filter as it stands, whatever the ratio, and every step in double: the instants are sums of steps, a
// result the sum of the left wing outwards, then of the right one.

using Pair = Vec<double, 2>;

inline Pair Widened(const float *x) { return Pair{static_cast<double>(x[0]), static_cast<double>(x[1])}; }

// One wing of an output: the products of taps, nStep points apart, with samples, one after the other.
template <int kParts> struct Wing {
  // The wing begins x points from the centre and meets src[from], src[from + way] and so on.
  Wing(const ResampleTable &table, double x, const float *src, Index len, Index from, int way) {
    auto point = static_cast<Index>(x + kOnPoint);
    const double a = x - static_cast<double>(point);
    weights = Pair{1.0 - a, a};
    // Samples that lie before the source, and those up to its other end.
    const Index before = way < 0 ? from - (len - 1) : -from, all = way < 0 ? from + 1 : len - from;
    const Index skipped = before > 0 ? before : 0;
    point += skipped * table.nStep;
    if (point >= table.length || skipped >= all) return;
    const Index reach = (table.length - point + table.nStep - 1) / table.nStep;
    count = reach < all - skipped ? reach : all - skipped;
    points = table.h + point;
    samples = src + (from + way * skipped) * kParts;
    stride = way * kParts;
  }

  Pair weights;
  Index count = 0;
  const float *points = nullptr, *samples = nullptr;
  Index stride = 0;
};

// Adds product m of a wing to the sum, whose lanes are the parts.
template <int kParts>
[[gnu::always_inline]] inline void AddProduct(const Wing<kParts> &wing, Index nStep, Index m, Pair &sum) {
  const Pair weighted = Widened(wing.points + m * nStep) * wing.weights;
  const Pair tap = weighted + __builtin_shufflevector(weighted, weighted, 1, 0);
  const float *sample = wing.samples + m * wing.stride;
  if constexpr (kParts == 2) {
    sum += tap * Widened(sample);
  } else {
    sum[0] += Rounded(tap[0] * static_cast<double>(sample[0]));
  }
}

// Outputs that are formed side by side, since each sum waits for itself.
constexpr int kSums = 4;

template <int kParts>
inline void AddWings(const Wing<kParts> (&wings)[kSums], Index nStep, Pair (&sums)[kSums]) {
  Index common = wings[0].count;
  for (const auto &wing : wings) common = wing.count < common ? wing.count : common;
  for (Index m = 0; m < common; ++m) {
    Unroll<kSums>([&](auto i) { AddProduct(wings[i], nStep, m, sums[i]); });
  }
  Unroll<kSums>([&](auto i) {
    for (Index m = common; m < wings[i].count; ++m) AddProduct(wings[i], nStep, m, sums[i]);
  });
}

template <int kParts>
void InDouble(const ResampleTable &table, const float *src, Index len, double time, double step, float *dst,
              Index count) {
  const auto gain = static_cast<double>(table.gain);
  const auto left = [&](double t) {
    const Index i = Floor(t);
    return Wing<kParts>(table, (t - static_cast<double>(i)) * table.nStep, src, len, i, -1);
  };
  const auto right = [&](double t) {
    const Index i = Floor(t);
    return Wing<kParts>(table, (1.0 - (t - static_cast<double>(i))) * table.nStep, src, len, i + 1, 1);
  };
  for (Index done = 0; done < count; done += kSums) {
    double t[kSums]; // the first one again where there are no more outputs
    for (Index n = 0; n < kSums; ++n) {
      t[n] = done + n < count ? time : t[0];
      if (done + n < count) time += step;
    }
    Pair sums[kSums] = {};
    AddWings<kParts>({left(t[0]), left(t[1]), left(t[2]), left(t[3])}, table.nStep, sums);
    AddWings<kParts>({right(t[0]), right(t[1]), right(t[2]), right(t[3])}, table.nStep, sums);
    for (Index n = 0; n < kSums && done + n < count; ++n, dst += kParts) {
      for (int part = 0; part < kParts; ++part) dst[part] = static_cast<float>(sums[n][part] * gain);
    }
  }
}

} // namespace

#define QORN_FAMILY "Resample.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
