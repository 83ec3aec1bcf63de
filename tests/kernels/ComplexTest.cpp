// Parts of complex elements, conjugates and reversed order.
#include <gtest/gtest.h>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;
using QORN::test::CheckElementwise;
using QORN::test::CheckInPlace;
using QORN::test::Guarded;
using QORN::test::Lengths;
using QORN::test::Same;
using QORN::test::Samples;

namespace kernels = QORN::kernels;

TEST(TargetLib, RealToCplx_TwoArrays_Interleaves) {
  CheckElementwise<Cplx32, float, float>("RealToCplx_32f", &TargetLib::RealToCplx_32f,
                                         [](float re, float im) {
                                           return Cplx32{re, im};
                                         });
  CheckElementwise<Cplx64, double, double>("RealToCplx_64f", &TargetLib::RealToCplx_64f,
                                           [](double re, double im) {
                                             return Cplx64{re, im};
                                           });
}

TEST(TargetLib, RealImag_Complex_GiveOnePart) {
  CheckElementwise<float, Cplx32>("Real_32fc", &TargetLib::Real_32fc, [](Cplx32 x) { return x.re; });
  CheckElementwise<double, Cplx64>("Real_64fc", &TargetLib::Real_64fc, [](Cplx64 x) { return x.re; });
  CheckElementwise<float, Cplx32>("Imag_32fc", &TargetLib::Imag_32fc, [](Cplx32 x) { return x.im; });
  CheckElementwise<double, Cplx64>("Imag_64fc", &TargetLib::Imag_64fc, [](Cplx64 x) { return x.im; });
}

template <class C> C Conjugate(C x) {
  return {x.re, std::copysign(x.im, decltype(x.im)(std::signbit(x.im) ? 1 : -1))};
}

TEST(TargetLib, Conj_Complex_InvertsTheSignOfTheImaginaryPart) {
  CheckElementwise<Cplx32, Cplx32>("Conj_32fc", &TargetLib::Conj_32fc, Conjugate<Cplx32>);
  CheckElementwise<Cplx64, Cplx64>("Conj_64fc", &TargetLib::Conj_64fc, Conjugate<Cplx64>);
  CheckInPlace<Cplx32>("Conj_32fc_I", &TargetLib::Conj_32fc_I, Conjugate<Cplx32>);
  CheckInPlace<Cplx64>("Conj_64fc_I", &TargetLib::Conj_64fc_I, Conjugate<Cplx64>);
}

// Reversal: element i comes from place len - 1 - i, so the element-wise harness does not serve.
template <class T, class Kernel, class Reference>
void CheckReversal(const std::string &name, const Kernel &kernel, const Reference &element, bool inPlace) {
  const std::vector<T> samples = Samples<T>();
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int len : Lengths()) {
      for (int place = 0; place < 16; ++place) {
        Guarded<T> source(len, (3 * place + len) % 16), destination(len, place);
        const auto x = [&](int i) {
          return samples[static_cast<std::size_t>(i + 7 * place) % samples.size()];
        };
        for (int i = 0; i < len; ++i) source.data()[i] = x(i);
        T *dst = inPlace ? source.data() : destination.data();
        kernel(source.data(), dst, len);
        const std::string where = name + " at " + level.name + ", length " + std::to_string(len) +
                                  ", place " + std::to_string(place);
        ASSERT_TRUE(source.Intact() && destination.Intact()) << where;
        for (int i = 0; i < len; ++i) {
          ASSERT_TRUE(Same()(dst[i], element(x(len - 1 - i)))) << where << ", element " << i;
          ASSERT_TRUE(inPlace || Same()(source.data()[i], x(i))) << where << ", source changed at " << i;
        }
      }
    }
  }
}

template <class T> T Itself(T x) { return x; }

template <class T>
void CheckFlip(const char *name, void (*flip)(const T *, T *, int), void (*flipI)(T *, int)) {
  CheckReversal<T>(name, flip, Itself<T>, false);
  CheckReversal<T>(std::string(name) + " onto its source", flip, Itself<T>, true);
  CheckReversal<T>(
      std::string(name) + "_I", [=](const T *, T *srcDst, int len) { flipI(srcDst, len); }, Itself<T>, true);
}

TEST(TargetLib, Flip_AnyLength_Reverses) {
  CheckFlip<float>("Flip_32f", &TargetLib::Flip_32f, &TargetLib::Flip_32f_I);
  CheckFlip<double>("Flip_64f", &TargetLib::Flip_64f, &TargetLib::Flip_64f_I);
  CheckFlip<Cplx32>("Flip_32fc", &TargetLib::Flip_32fc, &TargetLib::Flip_32fc_I);
  CheckFlip<Cplx64>("Flip_64fc", &TargetLib::Flip_64fc, &TargetLib::Flip_64fc_I);
}

TEST(TargetLib, ConjFlip_AnyLength_ReversesAndConjugates) {
  for (const bool inPlace : {false, true}) {
    CheckReversal<Cplx32>("ConjFlip_32fc", &TargetLib::ConjFlip_32fc, Conjugate<Cplx32>, inPlace);
    CheckReversal<Cplx64>("ConjFlip_64fc", &TargetLib::ConjFlip_64fc, Conjugate<Cplx64>, inPlace);
  }
}

} // namespace
