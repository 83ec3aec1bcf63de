#include <gtest/gtest.h>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::CheckInPlace;

TEST(TargetLib, Add_Floats_RoundsOnce) {
  CheckInPlace<float, float>("Add_32f_I", &TargetLib::Add_32f_I, [](float a, float b) {
    return static_cast<float>(static_cast<double>(a) + static_cast<double>(b));
  });
}

TEST(TargetLib, Add_Ints_Saturates) {
  CheckInPlace<int, int>("Add_32s_I", &TargetLib::Add_32s_I, [](int a, int b) {
    const long long sum = static_cast<long long>(a) + b;
    return static_cast<int>(sum > 2147483647LL ? 2147483647LL : sum < -2147483648LL ? -2147483648LL : sum);
  });
}

TEST(TargetLib, Mul_Complex_RoundsEveryStep) {
  CheckInPlace<QORN::Cplx32, QORN::Cplx32>(
      "Mul_32fc_I", &TargetLib::Mul_32fc_I, [](QORN::Cplx32 a, QORN::Cplx32 b) {
        volatile float rr = a.re * b.re, ii = a.im * b.im, ri = a.re * b.im, ir = a.im * b.re;
        return QORN::Cplx32{rr - ii, ri + ir};
      });
}

} // namespace
