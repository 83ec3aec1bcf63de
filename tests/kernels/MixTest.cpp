#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "support/KernelCheck.h"

namespace {

using namespace QORN;
using test::Guarded;

constexpr double kTwoPi = 6.283185307179586;

Cplx32 Sample(int i) {
  return {static_cast<float>(std::sin(1.0 + 0.7 * i)), static_cast<float>(std::cos(0.3 * i * i))};
}

// Errors of some units of a double's last place vanish in the rounding to float, but for ties.
void ExpectMixed(const Cplx32 *dst, int len, double frequency, double phase, const std::string &where) {
  for (int i = 0; i < len; ++i) {
    const long double angle =
        static_cast<long double>(phase) +
        6.283185307179586476925286766559L * std::fmod(static_cast<long double>(frequency) * i, 1.0L);
    const long double c = std::cos(angle), s = std::sin(angle);
    const Cplx32 x = Sample(i);
    const auto re = static_cast<double>(x.re * c - x.im * s), im = static_cast<double>(x.re * s + x.im * c);
    ASSERT_NEAR(static_cast<double>(dst[i].re), re, 6e-8 * std::fabs(re) + 1e-12) << where << ", at " << i;
    ASSERT_NEAR(static_cast<double>(dst[i].im), im, 6e-8 * std::fabs(im) + 1e-12) << where << ", at " << i;
  }
}

// Any period will do for the kernel: seeds at every sample, within blocks and across them.
TEST(KernelTable, Mix_AnyLengthPlaceAndPeriod_TurnsEachSampleAndNothingElse) {
  const double frequency = 0.137, phase = -5.0;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int len : test::Lengths()) {
      if (len > 2000) continue;
      for (const int period : {1, 2, 3, 15, 16, 17, 100, 101, 255, 2000}) {
        const int place = (len + period) % 16;
        Guarded<Cplx32> src(len, place), dst(len, (3 * place + 1) % 16);
        for (int i = 0; i < len; ++i) src.data()[i] = Sample(i);
        const std::string where = std::string("at ") + level.name + ", length " + std::to_string(len) +
                                  ", period " + std::to_string(period);

        Cplx64 next{};
        level.table->Mix(src.data(), dst.data(), len, frequency, phase, period, &next);
        ExpectMixed(dst.data(), len, frequency, phase, where);
        for (int i = 0; i < len; ++i) {
          ASSERT_TRUE(test::Same()(src.data()[i], Sample(i))) << where << ": the source changed";
        }
        ASSERT_TRUE(dst.Intact() && src.Intact()) << where << ": wrote outside";
        const double angle = phase + kTwoPi * std::fmod(frequency * len, 1.0);
        ASSERT_NEAR(next.re, std::cos(angle), 1e-12) << where;
        ASSERT_NEAR(next.im, std::sin(angle), 1e-12) << where;

        Cplx64 again{};
        level.table->Mix(src.data(), src.data(), len, frequency, phase, period, &again);
        ASSERT_EQ(std::memcmp(src.data(), dst.data(), sizeof(Cplx32) * static_cast<std::size_t>(len)), 0)
            << where << ": in place differs";
        ASSERT_TRUE(test::Same()(again, next)) << where;
        ASSERT_TRUE(src.Intact()) << where << ": wrote outside in place";
      }
    }
  }
}

} // namespace
