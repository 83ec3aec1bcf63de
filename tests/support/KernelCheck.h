// Runs a kernel over everything that must not matter to an element's result - level, length, place,
// alignment, in place or not - and compares each element with an independent reference.
//
//   CheckElementwise<float, float>("Sqr_32f", &TargetLib::Sqr_32f, [](float x) { return x * x; });
//   CheckInPlace<float, float>("Add_32f_I", &TargetLib::Add_32f_I, [](float dst, float src) { return dst +
//   src; }); CheckReduction<double, float>("Sum", [](const float *x, int n, double *r) {...}, [](const float
//   *x, int n) {...});
//
// The matcher decides what is close enough: Same() demands the same bits (any not-a-number for any other),
// WithinUlps(n) allows n units in the last place of the expected value.
#ifndef QORN_TESTS_SUPPORT_KERNELCHECK_H
#define QORN_TESTS_SUPPORT_KERNELCHECK_H

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/Cplx.h"

namespace QORN::test {

template <class T> inline constexpr bool kIsCplx = std::is_class_v<T>;

/// The type of a scalar, or of a complex value's parts.
template <class T, bool = kIsCplx<T>> struct PartOf { using Type = T; };
template <class T> struct PartOf<T, true> { using Type = decltype(T::re); };
template <class T> using Part = typename PartOf<T>::Type;

// Text of a value that loses nothing.

template <class T> std::string Show(const T &x) {
  if constexpr (kIsCplx<T>) {
    return std::string("(").append(Show(x.re)).append(", ").append(Show(x.im)).append(")");
  } else if constexpr (std::is_floating_point_v<T>) {
    char text[80];
    std::snprintf(text, sizeof text, "%.17g = %a", static_cast<double>(x), static_cast<double>(x));
    return text;
  } else {
    return std::to_string(x);
  }
}

// Matchers.

/// The same bits; any not-a-number stands for any other.
struct Same {
  template <class T> bool operator()(const T &got, const T &expected) const {
    if constexpr (kIsCplx<T>) {
      return (*this)(got.re, expected.re) && (*this)(got.im, expected.im);
    } else if constexpr (std::is_floating_point_v<T>) {
      if (std::isnan(got) || std::isnan(expected)) return std::isnan(got) && std::isnan(expected);
      return std::memcmp(&got, &expected, sizeof(T)) == 0;
    } else {
      return got == expected;
    }
  }
};

/// At most `ulps` units in the last place of the expected value away; zeros, infinities and not-a-number as
/// Same, but zeros of either sign match.
struct WithinUlps {
  double ulps;
  template <class T> bool operator()(const T &got, const T &expected) const {
    if constexpr (kIsCplx<T>) {
      return (*this)(got.re, expected.re) && (*this)(got.im, expected.im);
    } else {
      if (!std::isfinite(got) || !std::isfinite(expected)) return Same()(got, expected);
      const T size = std::fabs(expected);
      const T unit = std::nextafter(size, std::numeric_limits<T>::infinity()) - size;
      return static_cast<double>(std::fabs(got - expected)) <= ulps * static_cast<double>(unit);
    }
  }
};

/// At most `bound` away; infinities and not-a-number as Same.
struct WithinAbsolute {
  double bound;
  template <class T> bool operator()(const T &got, const T &expected) const {
    if constexpr (kIsCplx<T>) {
      return (*this)(got.re, expected.re) && (*this)(got.im, expected.im);
    } else {
      if (!std::isfinite(got) || !std::isfinite(expected)) return Same()(got, expected);
      return std::fabs(static_cast<double>(got) - static_cast<double>(expected)) <= bound;
    }
  }
};

// An array at a chosen distance from a 64-byte boundary, with guard bytes on both sides.

template <class T> class Guarded {
public:
  Guarded(int len, int offset) : m_len(static_cast<std::size_t>(len)) {
    const std::size_t bytes = m_len * sizeof(T);
    m_block = std::make_unique<unsigned char[]>(bytes + 2 * kGuard + 64 + 16 * sizeof(T));
    m_size = bytes + 2 * kGuard;
    const auto address = reinterpret_cast<std::uintptr_t>(m_block.get() + kGuard);
    const std::uintptr_t aligned = (address + 63) / 64 * 64 + static_cast<std::size_t>(offset) * sizeof(T);
    m_first = m_block.get() + kGuard + (aligned - address);
    std::memset(m_first - kGuard, kPattern, m_size);
  }

  T *data() { return reinterpret_cast<T *>(m_first); }

  /// Whether nothing was written before or behind the array.
  bool Intact() const {
    for (std::size_t i = 0; i < kGuard; ++i) {
      if (*(m_first - kGuard + i) != kPattern || m_first[m_len * sizeof(T) + i] != kPattern) return false;
    }
    return true;
  }

private:
  static constexpr std::size_t kGuard = 128;
  static constexpr unsigned char kPattern = 0xA5;
  std::size_t m_len;
  std::size_t m_size = 0;
  std::unique_ptr<unsigned char[]> m_block;
  unsigned char *m_first = nullptr;
};

// Operands: the values at which implementations go wrong, then random ones over the whole range.

template <class T> std::vector<T> Samples() {
  static_assert(!kIsCplx<T> || std::is_class_v<T>);
  if constexpr (kIsCplx<T>) {
    const std::vector<Part<T>> parts = Samples<Part<T>>();
    std::vector<T> values;
    const std::size_t n = parts.size();
    for (std::size_t i = 0; i < 2 * n; ++i) values.push_back({parts[i % n], parts[(7 * i + i / n) % n]});
    return values;
  } else {
    using Limits = std::numeric_limits<T>;
    std::vector<T> values;
    std::mt19937_64 random(20260731);
    if constexpr (std::is_floating_point_v<T>) {
      const T inf = Limits::infinity();
      for (const T x : {T(0),
                        Limits::denorm_min(),
                        Limits::min() / 2,
                        Limits::min(),
                        Limits::epsilon(),
                        T(0.25),
                        T(0.49999997),
                        T(0.5),
                        T(0.75),
                        T(1),
                        T(1.5),
                        T(2),
                        T(2.5),
                        T(2.9),
                        T(3),
                        T(3.5),
                        T(10),
                        T(100.25),
                        T(127.5),
                        T(255.5),
                        T(32767),
                        T(32767.5),
                        T(32768),
                        T(40000),
                        T(65535.5),
                        T(65536),
                        T(8388607.5),
                        T(16777217),
                        T(2147483520),
                        T(2147483648.0),
                        T(4.5e15),
                        T(1e19),
                        std::sqrt(Limits::max()),
                        Limits::max(),
                        inf}) {
        values.push_back(x);
        values.push_back(-x);
      }
      values.push_back(Limits::quiet_NaN());
      std::uniform_real_distribution<double> mantissa(-1, 1);
      std::uniform_int_distribution<int> exponent(-20, 20);
      while (values.size() < 211)
        values.push_back(static_cast<T>(std::ldexp(mantissa(random), exponent(random))));
    } else {
      for (const long long x : {0LL,     1LL,     2LL,     3LL,       7LL,          127LL,       128LL,
                                181LL,   182LL,   255LL,   32766LL,   32767LL,      32768LL,     46340LL,
                                46341LL, 65534LL, 65535LL, 1000000LL, 2147483646LL, 2147483647LL}) {
        for (const long long y : {x, -x, -x - 1}) {
          if (y >= static_cast<long long>(Limits::min()) && y <= static_cast<long long>(Limits::max())) {
            values.push_back(static_cast<T>(y));
          }
        }
      }
      while (values.size() < 211) values.push_back(static_cast<T>(random()));
    }
    return values;
  }
}

/// Samples without infinities and not-a-number, of magnitudes up to `limit`.
template <class T> std::vector<T> FiniteSamples(double limit) {
  std::vector<T> values;
  const auto small = [limit](auto x) { return std::fabs(static_cast<double>(x)) <= limit; };
  for (const T &x : Samples<T>()) {
    if constexpr (kIsCplx<T>) {
      if (small(x.re) && small(x.im)) values.push_back(x);
    } else {
      if (small(x)) values.push_back(x);
    }
  }
  return values;
}

/// The lengths at which bodies and tails meet.
inline std::vector<int> Lengths() {
  std::vector<int> lengths;
  for (int n = 0; n <= 70; ++n) lengths.push_back(n);
  for (const int n : {127, 128, 129, 1023, 1024, 1025, 65537}) lengths.push_back(n);
  return lengths;
}

/// What a check may vary or must leave.
struct Options {
  bool sameAtEveryLevel = true; ///< byte equality of all levels
  bool mayAlias = true;         ///< the destination may be a source of the same type
};

namespace detail {

template <class T> using Identity = T;

/// Element i of operand k: the first operand runs through its samples, the second changes once per round of
/// the first and so on, so that a long array meets every pair.
template <class T> T Operand(const std::vector<T> &samples, std::size_t i, std::size_t k, std::size_t start) {
  std::size_t index = i + start;
  for (; k > 0; --k) index /= 199;
  return samples[index % samples.size()];
}

template <class D, class... S> class Runner {
public:
  using Samples = std::tuple<std::vector<S>...>;

  template <class Kernel, class Reference, class Match>
  void Run(const std::string &name, const Kernel &kernel, const Reference &reference, const Match &match,
           const Options &options, const Samples &samples, int aliased) {
    std::vector<std::vector<unsigned char>> base;
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scope(level);
      std::size_t run = 0;
      for (const int len : Lengths()) {
        const int places = len <= 129 ? 16 : 3;
        for (int place = 0; place < places; ++place, ++run) {
          const std::string where = name + " at " + level.name + ", length " + std::to_string(len) +
                                    ", place " + std::to_string(place) +
                                    (aliased >= 0 ? ", onto source " + std::to_string(aliased) : "");
          const std::vector<unsigned char> bytes =
              Once(kernel, reference, match, samples, len, place, len >= 65537 ? 0 : run * 61, aliased, where,
                   std::index_sequence_for<S...>());
          if (testing::Test::HasFailure()) return;
          if (!options.sameAtEveryLevel) continue;
          if (base.size() <= run) {
            base.push_back(bytes);
          } else {
            ASSERT_TRUE(base[run] == bytes) << where << ": the bytes differ from those of the base level";
          }
        }
      }
    }
  }

private:
  template <class Kernel, class Reference, class Match, std::size_t... K>
  std::vector<unsigned char> Once(const Kernel &kernel, const Reference &reference, const Match &match,
                                  const Samples &samples, int len, int place, std::size_t start, int aliased,
                                  const std::string &where, std::index_sequence<K...>) {
    const auto count = static_cast<std::size_t>(len);
    std::tuple<Guarded<S>...> sources(Guarded<S>(len, (place * (5 + static_cast<int>(2 * K)) + len) % 16)...);
    Guarded<D> own(len, place);
    (Fill(std::get<K>(sources).data(), std::get<K>(samples), count, K, start), ...);

    D *dst = own.data();
    ((aliased == static_cast<int>(K) ? Alias(dst, std::get<K>(sources).data()) : void()), ...);
    kernel(static_cast<const S *>(std::get<K>(sources).data())..., dst, len);

    EXPECT_TRUE(own.Intact()) << where << ": wrote outside the destination";
    EXPECT_TRUE((std::get<K>(sources).Intact() && ...)) << where << ": wrote outside a source";
    for (std::size_t i = 0; i < count; ++i) {
      const std::tuple<S...> x(Operand(std::get<K>(samples), i, K, start)...);
      const D expected = reference(std::get<K>(x)...);
      if (match(dst[i], expected)) continue;
      std::string operands;
      (operands.append(" ").append(Show(std::get<K>(x))), ...);
      ADD_FAILURE() << where << ", element " << i << ": operands" << operands << "\n  gave " << Show(dst[i])
                    << "\n  not  " << Show(expected);
      break;
    }
    (Unchanged(std::get<K>(sources).data(), std::get<K>(samples), count, K, start,
               aliased == static_cast<int>(K), where),
     ...);
    return Canonical(dst, count);
  }

  template <class T> static void Alias(D *&dst, T *source) {
    if constexpr (std::is_same_v<D, T>) dst = source;
  }

  template <class T>
  static void Fill(T *data, const std::vector<T> &samples, std::size_t count, std::size_t k,
                   std::size_t start) {
    for (std::size_t i = 0; i < count; ++i) data[i] = Operand(samples, i, k, start);
  }

  template <class T>
  static void Unchanged(const T *data, const std::vector<T> &samples, std::size_t count, std::size_t k,
                        std::size_t start, bool written, const std::string &where) {
    if (written) return;
    for (std::size_t i = 0; i < count; ++i) {
      const T x = Operand(samples, i, k, start);
      ASSERT_EQ(std::memcmp(&data[i], &x, sizeof(T)), 0) << where << ": changed source " << k << " at " << i;
    }
  }

  // Which not-a-number comes out is not promised; every other bit is.
  static std::vector<unsigned char> Canonical(const D *data, std::size_t count) {
    std::vector<D> copy(data, data + count);
    if constexpr (std::is_floating_point_v<Part<D>>) {
      auto *parts = reinterpret_cast<Part<D> *>(copy.data());
      for (std::size_t i = 0; i < count * sizeof(D) / sizeof(Part<D>); ++i) {
        if (std::isnan(parts[i])) parts[i] = std::numeric_limits<Part<D>>::quiet_NaN();
      }
    }
    const auto *bytes = reinterpret_cast<const unsigned char *>(copy.data());
    return std::vector<unsigned char>(bytes, bytes + count * sizeof(D));
  }
};

} // namespace detail

/// kernel(const S *..., D *dst, int len) against reference(S...) -> D for each element; also with dst being
/// each source of D's type, unless the options forbid it.
template <class D, class... S, class Kernel, class Reference, class Match = Same>
void CheckElementwise(const std::string &name, const Kernel &kernel, const Reference &reference,
                      const Match &match = {}, const Options &options = {},
                      const std::tuple<std::vector<S>...> &samples = {Samples<S>()...}) {
  detail::Runner<D, S...> runner;
  runner.Run(name, kernel, reference, match, options, samples, -1);
  if (!options.mayAlias) return;
  int k = 0;
  for (const bool same : std::array<bool, sizeof...(S)>{std::is_same_v<D, S>...}) {
    if (same && !testing::Test::HasFailure()) runner.Run(name, kernel, reference, match, options, samples, k);
    ++k;
  }
}

/// kernel(const S *..., D *srcDst, int len) against reference(D, S...) -> D, the first argument being what
/// stood in srcDst.
template <class D, class... S, class Kernel, class Reference, class Match = Same>
void CheckInPlace(const std::string &name, const Kernel &kernel, const Reference &reference,
                  const Match &match = {}, const Options &options = {},
                  const std::tuple<std::vector<D>, std::vector<S>...> &samples = {Samples<D>(),
                                                                                  Samples<S>()...}) {
  // The first source is copied into the destination, and the kernel then works there.
  const auto copied = [&kernel](const D *first, const S *...rest, D *dst, int len) {
    if (dst != first && len > 0)
      std::memcpy(static_cast<void *>(dst), first, sizeof(D) * static_cast<std::size_t>(len));
    kernel(rest..., dst, len);
  };
  detail::Runner<D, D, S...> runner;
  runner.Run(name, copied, reference, match, options, samples, -1);
}

namespace detail {

// A matcher may ask for the operands, where its bound depends on them.
template <class Match, class R, class S>
bool Matches(const Match &match, const R &result, const R &expected, const S *src, int len) {
  if constexpr (std::is_invocable_v<Match, R, R, const S *, int>) {
    return match(result, expected, src, len);
  } else {
    return match(result, expected);
  }
}

} // namespace detail

/// kernel(const S *, int len, R *result) against reference(const S *, int len) -> R over arrays of every
/// length; an array below the shortest length must leave the result unwritten. The matcher may also be
/// called as match(got, expected, const S *, int len).
template <class R, class S, class Kernel, class Reference, class Match = Same>
void CheckReduction(const std::string &name, const Kernel &kernel, const Reference &reference,
                    const Match &match = {}, const Options &options = {},
                    const std::vector<S> &samples = FiniteSamples<S>(1e6), int shortest = 1) {
  std::vector<R> base;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::size_t run = 0;
    for (const int len : Lengths()) {
      for (int place = 0; place < 16; ++place) {
        Guarded<S> source(len, place);
        for (int i = 0; i < len; ++i) {
          source.data()[i] = samples[(static_cast<std::size_t>(i) + 61 * run) % samples.size()];
        }
        R result;
        std::memset(static_cast<void *>(&result), 0x5A, sizeof result);
        const R untouched = result;
        kernel(static_cast<const S *>(source.data()), len, &result);
        const std::string where = name + " at " + level.name + ", length " + std::to_string(len) +
                                  ", place " + std::to_string(place);
        ASSERT_TRUE(source.Intact()) << where;
        if (len < shortest) {
          ASSERT_EQ(std::memcmp(&result, &untouched, sizeof result), 0) << where << ": wrote a result";
          continue;
        }
        const R expected = reference(static_cast<const S *>(source.data()), len);
        ASSERT_TRUE(detail::Matches(match, result, expected, source.data(), len))
            << where << "\n  gave " << Show(result) << "\n  not  " << Show(expected);
        if (options.sameAtEveryLevel) {
          if (base.size() <= run) {
            base.push_back(result);
          } else {
            ASSERT_TRUE(Same()(result, base[run])) << where << ": differs from the base level";
          }
        }
        ++run;
      }
    }
  }
}

} // namespace QORN::test

#endif
