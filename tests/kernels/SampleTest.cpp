// Sampling down and up, in one piece and in blocks that carry the phase.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::Cplx16;
using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;
using QORN::test::Guarded;

namespace kernels = QORN::kernels;

template <class T> struct Kernel {
  const char *name;
  void (*run)(const T *, int, T *, int *, int, int *);
};

template <class T> T Numbered(int i) {
  if constexpr (std::is_class_v<T>) {
    using Part = decltype(T::re);
    return {static_cast<Part>(i + 1), static_cast<Part>(-i)};
  } else {
    return static_cast<T>(i + 1);
  }
}

template <class T> bool SameBits(const T &a, const T &b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

// Every length, factor and phase, from misaligned addresses, between guards.
template <class T, class Expected> void CheckAll(const Kernel<T> &kernel, const Expected &expected) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    int place = 0;
    for (int len = 1; len <= 70; ++len) {
      for (const int factor : {1, 2, 3, 4, 7, 16, 33, 100}) {
        for (int phase = 0; phase < factor; phase += 1 + factor / 5) {
          std::vector<T> result;
          int nextPhase = phase;
          Guarded<T> src(len, place = (place + 5) % 16);
          for (int i = 0; i < len; ++i) src.data()[i] = Numbered<T>(i);
          expected(src.data(), len, factor, nextPhase, result);
          Guarded<T> dst(static_cast<int>(result.size()), (place + 7) % 16);
          int dstLen = -1, carried = phase;
          kernel.run(src.data(), len, dst.data(), &dstLen, factor, &carried);
          const std::string where = std::string(kernel.name) + " at " + level.name + ", length " +
                                    std::to_string(len) + ", factor " + std::to_string(factor) + ", phase " +
                                    std::to_string(phase);
          ASSERT_TRUE(src.Intact() && dst.Intact()) << where;
          ASSERT_EQ(dstLen, static_cast<int>(result.size())) << where;
          ASSERT_EQ(carried, nextPhase) << where;
          for (int i = 0; i < dstLen; ++i) {
            ASSERT_TRUE(SameBits(dst.data()[i], result[static_cast<std::size_t>(i)]))
                << where << ", element " << i;
          }
        }
      }
    }
  }
}

template <class T> void CheckDown(const Kernel<T> &kernel) {
  CheckAll(kernel, [](const T *src, int len, int factor, int &phase, std::vector<T> &result) {
    int i = phase;
    for (; i < len; i += factor) result.push_back(src[i]);
    phase = i - len;
  });
}

template <class T> void CheckUp(const Kernel<T> &kernel) {
  CheckAll(kernel, [](const T *src, int len, int factor, const int &phase, std::vector<T> &result) {
    result.assign(static_cast<std::size_t>(len * factor), T{});
    for (int n = 0; n < len; ++n) result[static_cast<std::size_t>(n * factor + phase)] = src[n];
  });
}

TEST(TargetLib, SampleDown_AnyType_TakesEveryFactorthSample) {
  CheckDown<short>({"SampleDown_16s", &TargetLib::SampleDown_16s});
  CheckDown<Cplx16>({"SampleDown_16sc", &TargetLib::SampleDown_16sc});
  CheckDown<float>({"SampleDown_32f", &TargetLib::SampleDown_32f});
  CheckDown<double>({"SampleDown_64f", &TargetLib::SampleDown_64f});
  CheckDown<Cplx32>({"SampleDown_32fc", &TargetLib::SampleDown_32fc});
  CheckDown<Cplx64>({"SampleDown_64fc", &TargetLib::SampleDown_64fc});
}

TEST(TargetLib, SampleUp_AnyType_PutsZerosBetween) {
  CheckUp<float>({"SampleUp_32f", &TargetLib::SampleUp_32f});
  CheckUp<double>({"SampleUp_64f", &TargetLib::SampleUp_64f});
  CheckUp<Cplx32>({"SampleUp_32fc", &TargetLib::SampleUp_32fc});
  CheckUp<Cplx64>({"SampleUp_64fc", &TargetLib::SampleUp_64fc});
}

TEST(TargetLib, SampleDown_TwoBlocksOfTen_CarriesThePhase) {
  float src[10], dst[10];
  for (int i = 0; i < 10; ++i) src[i] = static_cast<float>(i);
  int dstLen = 0, phase = 0;
  TargetLib::SampleDown_32f(src, 10, dst, &dstLen, 3, &phase);
  EXPECT_EQ(std::vector<float>(dst, dst + dstLen), (std::vector<float>{0, 3, 6, 9}));
  EXPECT_EQ(phase, 2);
  TargetLib::SampleDown_32f(src, 10, dst, &dstLen, 3, &phase);
  EXPECT_EQ(std::vector<float>(dst, dst + dstLen), (std::vector<float>{2, 5, 8}));
  EXPECT_EQ(phase, 1);
}

TEST(TargetLib, SampleUp_ThreeElements_KeepsThePhase) {
  const float src[] = {5, 6, 7};
  float dst[6];
  int dstLen = 0, phase = 1;
  TargetLib::SampleUp_32f(src, 3, dst, &dstLen, 2, &phase);
  EXPECT_EQ(dstLen, 6);
  EXPECT_EQ(phase, 1);
  EXPECT_EQ(std::vector<float>(dst, dst + 6), (std::vector<float>{0, 5, 0, 6, 0, 7}));
}

TEST(TargetLib, SampleDown_AnySplitOfTheInput_GivesTheOutputOfOnePiece) {
  std::vector<double> src;
  for (int i = 0; i < 500; ++i) src.push_back(i);
  for (const int factor : {1, 2, 5, 23}) {
    std::vector<double> whole(500), parts(500);
    int wholeLen = 0, wholePhase = 0;
    TargetLib::SampleDown_64f(src.data(), 500, whole.data(), &wholeLen, factor, &wholePhase);
    int done = 0, written = 0, phase = 0;
    for (int block = 1; done < 500; block = block * 7 % 41) {
      const int count = std::min(block, 500 - done);
      int count2 = 0;
      TargetLib::SampleDown_64f(src.data() + done, count, parts.data() + written, &count2, factor, &phase);
      done += count;
      written += count2;
    }
    EXPECT_EQ(written, wholeLen) << factor;
    EXPECT_EQ(phase, wholePhase) << factor;
    EXPECT_EQ(parts, whole) << factor;
  }
}

TEST(TargetLib, SampleDown_OntoItsSource_IsTheSame) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int factor : {1, 2, 3, 9}) {
      std::vector<float> data(200);
      for (int i = 0; i < 200; ++i) data[static_cast<std::size_t>(i)] = static_cast<float>(i);
      int len = 0, phase = 0;
      TargetLib::SampleDown_32f(data.data(), 200, data.data(), &len, factor, &phase);
      for (int k = 0; k < len; ++k) {
        ASSERT_EQ(data[static_cast<std::size_t>(k)], static_cast<float>(k * factor))
            << factor << ' ' << level.name;
      }
    }
  }
}

TEST(TargetLib, Sample_ImpossibleArguments_DoNothing) {
  using Function = void (*)(const float *, int, float *, int *, int, int *);
  for (const Function sample :
       {static_cast<Function>(&TargetLib::SampleDown_32f), static_cast<Function>(&TargetLib::SampleUp_32f)}) {
    float src[4] = {1, 2, 3, 4}, dst[4] = {9, 9, 9, 9};
    struct {
      int len, factor, phase;
    } const cases[] = {{4, 0, 0},       {4, -3, 0},      {4, 3, 3},      {4, 3, -1},
                       {4, 1, 1},       {0, 2, 0},       {-1, 2, 0},     {INT_MIN, 2, 0},
                       {4, INT_MIN, 0}, {4, 2, INT_MAX}, {4, 2, INT_MIN}};
    for (const auto &c : cases) {
      int dstLen = 77, phase = c.phase;
      sample(src, c.len, dst, &dstLen, c.factor, &phase);
      EXPECT_EQ(dstLen, 77) << c.len << ' ' << c.factor << ' ' << c.phase;
      EXPECT_EQ(phase, c.phase);
    }
    int dstLen = 77, phase = 0;
    sample(nullptr, 4, dst, &dstLen, 1, &phase);
    sample(src, 4, nullptr, &dstLen, 1, &phase);
    sample(src, 4, dst, nullptr, 1, &phase);
    sample(src, 4, dst, &dstLen, 1, nullptr);
    EXPECT_EQ(dstLen, 77);
    EXPECT_EQ(phase, 0);
    EXPECT_EQ(std::vector<float>(dst, dst + 4), std::vector<float>(4, 9));
  }
}

TEST(TargetLib, SampleDown_PhaseBeyondTheBlock_WritesNothingAndMovesOn) {
  const short src[] = {1, 2, 3};
  short dst[] = {9};
  int dstLen = 77, phase = 5;
  TargetLib::SampleDown_16s(src, 3, dst, &dstLen, 8, &phase);
  EXPECT_EQ(dstLen, 0);
  EXPECT_EQ(phase, 2);
  EXPECT_EQ(dst[0], 9);
}

TEST(TargetLib, SampleDown_HugeFactor_DoesNotOverflow) {
  const short src[] = {1, 2, 3};
  short dst[] = {9};
  int dstLen = 77, phase = 2;
  TargetLib::SampleDown_16s(src, 3, dst, &dstLen, INT_MAX, &phase);
  EXPECT_EQ(dstLen, 1);
  EXPECT_EQ(dst[0], 3);
  EXPECT_EQ(phase, INT_MAX - 1);
}

TEST(TargetLib, SampleUp_ResultLongerThanAnInt_DoesNothing) {
  const float src[] = {1, 2, 3};
  float dst[] = {9};
  int dstLen = 77, phase = 2;
  TargetLib::SampleUp_32f(src, 3, dst, &dstLen, INT_MAX / 2, &phase);
  EXPECT_EQ(dstLen, 77);
  EXPECT_EQ(phase, 2);
  EXPECT_EQ(dst[0], 9);
}

} // namespace
