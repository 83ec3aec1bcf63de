// The elementary functions' special values, their agreement with one another, and what must not matter to a
// result: level aside, place, length, alignment, in place or not.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"

namespace QORN {
namespace {

using kernels::Table;
using test::CheckElementwise;
using test::Options;
using test::Same;
using test::Samples;
using test::Show;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMin64 = std::numeric_limits<double>::min();
constexpr double kMax64 = std::numeric_limits<double>::max();
constexpr double kTiny64 = std::numeric_limits<double>::denorm_min();
constexpr double kTiny32 = static_cast<double>(std::numeric_limits<float>::denorm_min());
constexpr double kMax32 = static_cast<double>(std::numeric_limits<float>::max());

const Table &Active() { return *kernels::active; }

template <class Check> void AtEveryLevel(const Check &check) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    SCOPED_TRACE(level.name);
    check();
  }
}

// Special values.

template <class T> using One = void (*)(const T *, T *, int);
template <class T> using Two = void (*)(const T *, const T *, T *, int);

struct Value {
  double x, result;
};

template <class T> void CheckValues(const char *name, One<T> kernel, const std::vector<Value> &values) {
  AtEveryLevel([&] {
    for (const Value &v : values) {
      const T x = static_cast<T>(v.x);
      T y = T(42);
      kernel(&x, &y, 1);
      EXPECT_TRUE(Same()(y, static_cast<T>(v.result)))
          << name << " of " << Show(x) << " gave " << Show(y) << ", not " << Show(static_cast<T>(v.result));
    }
  });
}

void CheckValues(const char *name, One<float> kernel32, One<double> kernel64,
                 const std::vector<Value> &values) {
  CheckValues<float>(name, kernel32, values);
  CheckValues<double>(name, kernel64, values);
}

TEST(Elementary, Sin_SpecialValues_FollowTheStandard) {
  CheckValues("Sin", &TargetLib::Sin_32f, &TargetLib::Sin_64f,
              {{0.0, 0.0},
               {-0.0, -0.0},
               {kInf, kNaN},
               {-kInf, kNaN},
               {kNaN, kNaN},
               {kTiny32, kTiny32},
               {-kTiny32, -kTiny32}});
  CheckValues<double>("Sin", &TargetLib::Sin_64f, {{kTiny64, kTiny64}, {-kMin64, -kMin64}});
}

TEST(Elementary, Cos_SpecialValues_FollowTheStandard) {
  CheckValues(
      "Cos", &TargetLib::Cos_32f, &TargetLib::Cos_64f,
      {{0.0, 1.0}, {-0.0, 1.0}, {kInf, kNaN}, {-kInf, kNaN}, {kNaN, kNaN}, {kTiny32, 1.0}, {-kTiny32, 1.0}});
}

TEST(Elementary, Atan_SpecialValues_FollowTheStandard) {
  constexpr double half = 1.5707963267948966;
  CheckValues("Atan", &TargetLib::Atan_32f, &TargetLib::Atan_64f,
              {{0.0, 0.0},
               {-0.0, -0.0},
               {kInf, half},
               {-kInf, -half},
               {kNaN, kNaN},
               {kMax32, half},
               {1.0, half / 2},
               {-1.0, -half / 2},
               {kTiny32, kTiny32},
               {-kTiny32, -kTiny32}});
  CheckValues<double>("Atan", &TargetLib::Atan_64f, {{kMax64, half}, {kTiny64, kTiny64}, {-kMin64, -kMin64}});
}

TEST(Elementary, Ln_SpecialValues_FollowTheStandard) {
  const std::vector<Value> values = {{0.0, -kInf}, {-0.0, -kInf},    {1.0, 0.0},
                                     {-1.0, kNaN}, {kInf, kInf},     {-kInf, kNaN},
                                     {kNaN, kNaN}, {-kTiny32, kNaN}, {-kMax32, kNaN}};
  CheckValues("Ln", &TargetLib::Ln_32f, &TargetLib::Ln_64f, values);
  CheckValues("Log10", &TargetLib::Log10_32f, &TargetLib::Log10_64f, values);
  CheckValues<double>("Ln", &TargetLib::Ln_64f, {{-kTiny64, kNaN}});
  CheckValues<double>("Log10", &TargetLib::Log10_64f, {{-kTiny64, kNaN}});
}

TEST(Elementary, Log10_PowersOfTen_AreExact) {
  std::vector<Value> values;
  double power = 1;
  for (int n = 0; n <= 22; ++n, power *= 10) values.push_back({power, static_cast<double>(n)});
  CheckValues<double>("Log10", &TargetLib::Log10_64f, values);
  values.resize(11);
  CheckValues<float>("Log10", &TargetLib::Log10_32f, values);
}

TEST(Elementary, Exp_SpecialValues_FollowTheStandard) {
  const std::vector<Value> values = {{0.0, 1.0},   {-0.0, 1.0},    {kInf, kInf},   {-kInf, 0.0},
                                     {kNaN, kNaN}, {kTiny32, 1.0}, {-kTiny32, 1.0}};
  CheckValues("Exp", &TargetLib::Exp_32f, &TargetLib::Exp_64f, values);
  CheckValues<float>(
      "Exp", &TargetLib::Exp_32f,
      {{kMax32, kInf}, {-kMax32, 0.0}, {88.722839, kInf}, {-103.97209, 0.0}, {-103.97207, kTiny32}});
  CheckValues<double>("Exp", [](const double *x, double *y, int len) { Active().Exp_64f(x, y, len); },
                      {{kMax64, kInf},
                       {-kMax64, 0.0},
                       {709.7827128933841, kInf},
                       {-745.1332191019412, 0.0},
                       {-745.1332191019411, kTiny64},
                       {1e-300, 1.0}});
}

TEST(Elementary, Exp_UnderflowOfASingleElement_GivesTheSmallestNormal) {
  AtEveryLevel([] {
    for (const double x : {-708.4, -720.0, -745.0, -800.0, -1e300, -kMax64}) {
      double y = 42;
      TargetLib::Exp_64f(&x, &y, 1);
      EXPECT_EQ(y, 2.2250738585072014e-308) << x;
      const double in[2] = {x, x};
      double out[2] = {42, 42};
      TargetLib::Exp_64f(in, out, 2);
      EXPECT_LT(out[0], 2.2250738585072014e-308) << x;
      EXPECT_EQ(out[0], out[1]) << x;
    }
    const double in[2] = {-800.0, -720.0};
    double out[2];
    TargetLib::Exp_64f(in, out, 2);
    EXPECT_EQ(out[0], 0.0);
    EXPECT_EQ(out[1], 2.0322308024242931e-313); // mpmath: exp(-720) rounded to a denormal
    double place = -800;
    TargetLib::Exp_64f(&place, &place, 1);
    EXPECT_EQ(place, 2.2250738585072014e-308);
    // No underflow: a normal result, an exact zero, not-a-number.
    for (const auto &[x, y] :
         {Value{-700.0, 9.8596765437597708e-305}, Value{-kInf, 0.0}, Value{kNaN, kNaN}}) {
      double single = 42;
      TargetLib::Exp_64f(&x, &single, 1);
      EXPECT_TRUE(Same()(single, y)) << x << " gave " << single;
    }
  });
}

TEST(Elementary, Erf_SpecialValues_FollowTheStandard) {
  CheckValues("Erf", &TargetLib::Erf_32f, &TargetLib::Erf_64f,
              {{0.0, 0.0},
               {-0.0, -0.0},
               {kInf, 1.0},
               {-kInf, -1.0},
               {kNaN, kNaN},
               {6.0, 1.0},
               {-6.0, -1.0},
               {kMax32, 1.0}});
  // The last step below 1 (mpmath), and the smallest numbers, for which the result is x times 1.128.
  CheckValues<float>("Erf", &TargetLib::Erf_32f,
                     {{3.93, 1.0}, {3.8, 0.99999994}, {kTiny32, kTiny32}, {-3 * kTiny32, -3 * kTiny32}});
  CheckValues<double>("Erf", &TargetLib::Erf_64f,
                      {{5.93, 1.0},
                       {5.8, 0.99999999999999978},
                       {kMax64, 1.0},
                       {kTiny64, kTiny64},
                       {-5 * kTiny64, -6 * kTiny64}});
}

template <class T>
void CheckPairs(const char *name, Two<T> kernel,
                const std::vector<std::pair<std::pair<double, double>, double>> &values) {
  AtEveryLevel([&] {
    for (const auto &[operands, result] : values) {
      const T a = static_cast<T>(operands.first), b = static_cast<T>(operands.second);
      T y = T(42);
      kernel(&a, &b, &y, 1);
      EXPECT_TRUE(Same()(y, static_cast<T>(result)))
          << name << " of " << Show(a) << ", " << Show(b) << " gave " << Show(y) << ", not "
          << Show(static_cast<T>(result));
    }
  });
}

TEST(Elementary, Atan2_SpecialValues_FollowTheStandard) {
  constexpr double pi = 3.141592653589793;
  std::vector<std::pair<std::pair<double, double>, double>> values;
  // The upper half plane; the lower one is its mirror image.
  for (const auto &[operands, angle] :
       std::vector<std::pair<std::pair<double, double>, double>>{{{0.0, 0.0}, 0.0},
                                                                 {{0.0, -0.0}, pi},
                                                                 {{0.0, 1.0}, 0.0},
                                                                 {{0.0, -1.0}, pi},
                                                                 {{0.0, kInf}, 0.0},
                                                                 {{0.0, -kInf}, pi},
                                                                 {{1.0, 0.0}, pi / 2},
                                                                 {{1.0, -0.0}, pi / 2},
                                                                 {{1.0, kInf}, 0.0},
                                                                 {{1.0, -kInf}, pi},
                                                                 {{kInf, 1.0}, pi / 2},
                                                                 {{kInf, -1.0}, pi / 2},
                                                                 {{kInf, 0.0}, pi / 2},
                                                                 {{kInf, -0.0}, pi / 2},
                                                                 {{kInf, kInf}, pi / 4},
                                                                 {{kInf, -kInf}, 3 * pi / 4},
                                                                 {{1.0, 1.0}, pi / 4},
                                                                 {{1.0, -1.0}, 3 * pi / 4},
                                                                 {{kTiny32, kTiny32}, pi / 4},
                                                                 {{kMax32, kMax32}, pi / 4},
                                                                 {{kMax32, kTiny32}, pi / 2},
                                                                 {{kTiny32, kMax32}, 0.0},
                                                                 {{kTiny32, -kMax32}, pi}}) {
    values.push_back({operands, angle});
    values.push_back({{-operands.first, operands.second}, -angle});
  }
  for (const double x : {0.0, 1.0, kInf, kNaN}) {
    values.push_back({{kNaN, x}, kNaN});
    values.push_back({{x, kNaN}, kNaN});
  }
  CheckPairs<float>("Atan2", &TargetLib::Atan2_32f, values);
  // In double the quotient of float's extremes is still a normal number.
  std::erase_if(
      values, [](const auto &v) { return std::fabs(v.first.first) == kTiny32 && v.first.second == kMax32; });
  values.insert(values.end(), {{{kTiny64, kMax64}, 0.0},
                               {{-kTiny64, kMax64}, -0.0},
                               {{kTiny64, -kMax64}, pi},
                               {{kTiny64, kTiny64}, pi / 4},
                               {{kMax64, kMax64}, pi / 4},
                               {{kMax64, kTiny64}, pi / 2},
                               {{kTiny64, 1.0}, kTiny64},
                               {{kMin64, 2.0}, kMin64 / 2}});
  CheckPairs<double>("Atan2", &TargetLib::Atan2_64f, values);
}

TEST(Elementary, Pow_SpecialValues_FollowTheStandard) {
  using Values = std::vector<std::pair<std::pair<double, double>, double>>;
  Values values;
  for (const double any : {0.0, -0.0, 1.0, -2.5, 1e30, -1e30, kInf, -kInf, kNaN}) {
    values.push_back({{any, 0.0}, 1.0});
    values.push_back({{any, -0.0}, 1.0});
    values.push_back({{1.0, any}, 1.0});
  }
  const Values more = {
      // Zero bases: the sign shows for odd whole exponents only.
      {{0.0, 3.0}, 0.0},
      {{-0.0, 3.0}, -0.0},
      {{0.0, 2.0}, 0.0},
      {{-0.0, 2.0}, 0.0},
      {{-0.0, 0.5}, 0.0},
      {{0.0, -3.0}, kInf},
      {{-0.0, -3.0}, -kInf},
      {{0.0, -2.0}, kInf},
      {{-0.0, -2.0}, kInf},
      {{-0.0, -0.5}, kInf},
      {{0.0, kInf}, 0.0},
      {{-0.0, kInf}, 0.0},
      {{0.0, -kInf}, kInf},
      {{-0.0, -kInf}, kInf},
      // Infinite bases.
      {{kInf, 2.0}, kInf},
      {{kInf, -2.0}, 0.0},
      {{-kInf, 3.0}, -kInf},
      {{-kInf, 2.0}, kInf},
      {{-kInf, 0.5}, kInf},
      {{-kInf, -3.0}, -0.0},
      {{-kInf, -2.0}, 0.0},
      {{-kInf, -0.5}, 0.0},
      // Infinite exponents.
      {{-1.0, kInf}, 1.0},
      {{-1.0, -kInf}, 1.0},
      {{0.5, kInf}, 0.0},
      {{0.5, -kInf}, kInf},
      {{-0.5, kInf}, 0.0},
      {{-0.5, -kInf}, kInf},
      {{2.0, kInf}, kInf},
      {{2.0, -kInf}, 0.0},
      {{-2.0, kInf}, kInf},
      {{-2.0, -kInf}, 0.0},
      {{kInf, kInf}, kInf},
      {{kInf, -kInf}, 0.0},
      {{-kInf, kInf}, kInf},
      {{-kInf, -kInf}, 0.0},
      // Negative bases.
      {{-2.0, 3.0}, -8.0},
      {{-2.0, 2.0}, 4.0},
      {{-2.0, -1.0}, -0.5},
      {{-2.0, 0.5}, kNaN},
      {{-1.0, 1e30}, 1.0},
      {{-1.0, 16777215.0}, -1.0},
      {{-1.0, 16777216.0}, 1.0},
      {{-1.0, -1.5}, kNaN},
      {{-kTiny32, 1.0}, -kTiny32},
      {{-kTiny32, 0.5}, kNaN},
      {{-3.0, 3.4e38}, kInf},
      {{-0.3, 3.4e38}, 0.0},
      // Not-a-number.
      {{kNaN, 1.0}, kNaN},
      {{2.0, kNaN}, kNaN},
      {{kNaN, kNaN}, kNaN},
      {{kNaN, kInf}, kNaN},
      {{0.0, kNaN}, kNaN},
      {{-1.0, kNaN}, kNaN},
      // Exact powers and identities.
      {{2.0, 10.0}, 1024.0},
      {{2.0, -126.0}, 0x1p-126},
      {{3.0, 4.0}, 81.0},
      {{10.0, 5.0}, 100000.0},
      {{1.5, 2.0}, 2.25},
      {{7.0, 1.0}, 7.0},
      {{0.1, 1.0}, 0.1},
      {{kTiny32, 1.0}, kTiny32},
      {{kMax32, 1.0}, kMax32},
      {{9.0, 0.5}, 3.0},
  };
  values.insert(values.end(), more.begin(), more.end());
  CheckPairs<float>("Pow", &TargetLib::Pow_32f, values);
  CheckPairs<double>("Pow", &TargetLib::Pow_64f, values);
  CheckPairs<float>("Pow", &TargetLib::Pow_32f,
                    {{{2.0, 128.0}, kInf},
                     {{-2.0, 129.0}, -kInf},
                     {{2.0, -149.0}, kTiny32},
                     {{2.0, -151.0}, 0.0},
                     {{-2.0, -151.0}, -0.0},
                     {{-2.0, -149.0}, -kTiny32}});
  CheckPairs<double>("Pow", &TargetLib::Pow_64f,
                     {{{2.0, 1024.0}, kInf},
                      {{-2.0, 1025.0}, -kInf},
                      {{2.0, -1074.0}, kTiny64},
                      {{2.0, -1076.0}, 0.0},
                      {{-2.0, -1077.0}, -0.0},
                      {{-2.0, -1073.0}, -2 * kTiny64},
                      {{-1.0, 9007199254740991.0}, -1.0},
                      {{-1.0, 9007199254740992.0}, 1.0},
                      {{-1.0, 4503599627370495.5}, kNaN},
                      {{-1.0, 4503599627370497.0}, -1.0},
                      {{-1.0, 2251799813685249.5}, kNaN},
                      {{kTiny64, 1.0}, kTiny64},
                      {{kMax64, 1.0}, kMax64},
                      {{kTiny64, -1.0}, kInf},
                      {{0x1p-1040, 0.5}, 0x1p-520},
                      {{1.0000000000000002, 1e300}, kInf},
                      {{0.9999999999999999, 1e300}, 0.0}});
}

TEST(Elementary, Pow10_WholeExponents_GivePowersOfTen) {
  CheckValues("Pow10", &TargetLib::Pow10_32f, &TargetLib::Pow10_64f,
              {{0.0, 1.0},
               {-0.0, 1.0},
               {1.0, 10.0},
               {2.0, 100.0},
               {10.0, 1e10},
               {kInf, kInf},
               {-kInf, 0.0},
               {kNaN, kNaN},
               {400.0, kInf},
               {-400.0, 0.0}});
  CheckValues<double>("Pow10", &TargetLib::Pow10_64f, {{22.0, 1e22}, {15.0, 1e15}, {308.0, 1e308}});
}

// What must not matter. The expected value of an element is what the kernel makes of it alone; that this is
// right is the accuracy tests' business.

Options OneLevel() {
  Options options;
  options.sameAtEveryLevel = false;
  return options;
}

template <class D, class S> void CheckPlace(const char *name, void (*Table::*kernel)(const S *, D *, int)) {
  CheckElementwise<D, S>(
      name,
      [kernel](const S *src, D *dst, int len) {
        if (len > 0) (Active().*kernel)(src, dst, len);
      },
      [kernel](S x) {
        D alone;
        (Active().*kernel)(&x, &alone, 1);
        return alone;
      },
      Same(), OneLevel());
}

template <class D, class S>
void CheckPlace(const char *name, void (*Table::*kernel)(const S *, const S *, D *, int)) {
  CheckElementwise<D, S, S>(
      name,
      [kernel](const S *a, const S *b, D *dst, int len) {
        if (len > 0) (Active().*kernel)(a, b, dst, len);
      },
      [kernel](S a, S b) {
        D alone;
        (Active().*kernel)(&a, &b, &alone, 1);
        return alone;
      },
      Same(), OneLevel());
}

TEST(Elementary, OneArgument_AnyPlaceAndLength_GivesTheElementsOwnResult) {
  CheckPlace("Cos_32f", &Table::Cos_32f);
  CheckPlace("Cos_64f", &Table::Cos_64f);
  CheckPlace("Sin_32f", &Table::Sin_32f);
  CheckPlace("Sin_64f", &Table::Sin_64f);
  CheckPlace("Atan_32f", &Table::Atan_32f);
  CheckPlace("Atan_64f", &Table::Atan_64f);
  CheckPlace("Ln_32f", &Table::Ln_32f);
  CheckPlace("Ln_64f", &Table::Ln_64f);
  CheckPlace("Log10_32f", &Table::Log10_32f);
  CheckPlace("Log10_64f", &Table::Log10_64f);
  CheckPlace("Exp_32f", &Table::Exp_32f);
  CheckPlace("Exp_64f", &Table::Exp_64f);
  CheckPlace("Erf_32f", &Table::Erf_32f);
  CheckPlace("Erf_64f", &Table::Erf_64f);
}

// Arguments of which the active level has another result than the base level: there, the level's own form and
// the common one can be told apart.
std::vector<float> ArgumentsOfOwnForm(One<float> Table::*kernel, float first, float last) {
  constexpr int kCandidates = 400000;
  constexpr std::size_t kEnough = 40;
  const Table &base = *kernels::AvailableLevels().front().table;
  std::vector<float> x;
  for (int i = 0; i < kCandidates; ++i)
    x.push_back(first + (last - first) * static_cast<float>(i) / static_cast<float>(kCandidates));
  std::vector<float> common(x.size()), own(x.size()), found;
  (base.*kernel)(x.data(), common.data(), kCandidates);
  (Active().*kernel)(x.data(), own.data(), kCandidates);
  for (std::size_t i = 0; i < x.size() && found.size() < kEnough; ++i)
    if (!Same()(common[i], own[i])) found.push_back(x[i]);
  return found;
}

TEST(Elementary, Float_NeighboursOfSpecialValues_KeepTheirOwnResult) {
  struct Row {
    const char *name;
    One<float> Table::*kernel;
    float first, last;
  };
  constexpr Row rows[] = {{"Exp_32f", &Table::Exp_32f, -1.0F, 1.0F},
                          {"Ln_32f", &Table::Ln_32f, 0.5F, 2.0F},
                          {"Log10_32f", &Table::Log10_32f, 0.5F, 2.0F},
                          {"Sin_32f", &Table::Sin_32f, -4.0F, 4.0F},
                          {"Cos_32f", &Table::Cos_32f, -4.0F, 4.0F}};
  const std::vector<float> specials = {static_cast<float>(kNaN),
                                       static_cast<float>(kInf),
                                       static_cast<float>(-kInf),
                                       static_cast<float>(kTiny32),
                                       -1000.0F,
                                       100.0F,
                                       0.0F,
                                       1e30F};
  AtEveryLevel([&] {
    for (const Row &row : rows) {
      const std::vector<float> arguments = ArgumentsOfOwnForm(row.kernel, row.first, row.last);
      if (arguments.empty()) continue; // the level has no form of its own
      std::vector<float> alone;
      for (const float x : arguments) {
        alone.emplace_back();
        (Active().*row.kernel)(&x, &alone.back(), 1);
      }
      for (const int len : {2, 7, 16, 33, 255, 256, 257, 600}) {
        for (int place = 0; place<len; place += len> 40 ? 13 : 1) {
          std::vector<float> x(static_cast<std::size_t>(len)), y(x.size());
          for (std::size_t i = 0; i < x.size(); ++i) x[i] = arguments[i % arguments.size()];
          x[static_cast<std::size_t>(place)] = specials[static_cast<std::size_t>(place) % specials.size()];
          (Active().*row.kernel)(x.data(), y.data(), len);
          (Active().*row.kernel)(x.data(), x.data(), len);
          for (std::size_t i = 0; i < x.size(); ++i) {
            if (i == static_cast<std::size_t>(place)) continue;
            const float expected = alone[i % arguments.size()];
            ASSERT_TRUE(Same()(y[i], expected) && Same()(x[i], expected))
                << row.name << ", element " << i << " of " << len << ", a special value at " << place;
          }
        }
      }
    }
  });
}

TEST(Elementary, TwoArguments_AnyPlaceAndLength_GiveTheElementsOwnResult) {
  CheckPlace("Atan2_32f", &Table::Atan2_32f);
  CheckPlace("Atan2_64f", &Table::Atan2_64f);
  CheckPlace("Pow_32f", &Table::Pow_32f);
  CheckPlace("Pow_64f", &Table::Pow_64f);
}

// Functions that are others in disguise: bit for bit the same, over every place and length.

template <class T> T Alone(One<T> kernel, T x) {
  T y;
  kernel(&x, &y, 1);
  return y;
}
template <class T> T Alone(Two<T> kernel, T a, T b) {
  T y;
  kernel(&a, &b, &y, 1);
  return y;
}

TEST(Elementary, Expj_AnyArgument_EqualsCosineAndSine) {
  CheckElementwise<Cplx32, float>(
      "Expj_32f", &TargetLib::Expj_32f,
      [](float x) {
        return Cplx32{Alone(&TargetLib::Cos_32f, x), Alone(&TargetLib::Sin_32f, x)};
      },
      Same(), OneLevel());
  CheckElementwise<Cplx64, double>(
      "Expj_64f", &TargetLib::Expj_64f,
      [](double x) {
        return Cplx64{Alone(&TargetLib::Cos_64f, x), Alone(&TargetLib::Sin_64f, x)};
      },
      Same(), OneLevel());
}

TEST(Elementary, Phase_AnyArgument_EqualsAtan2) {
  CheckElementwise<float, Cplx32>(
      "Phase_32fc", &TargetLib::Phase_32fc, [](Cplx32 x) { return Alone(&TargetLib::Atan2_32f, x.im, x.re); },
      Same(), OneLevel());
  CheckElementwise<double, Cplx64>(
      "Phase_64fc", &TargetLib::Phase_64fc, [](Cplx64 x) { return Alone(&TargetLib::Atan2_64f, x.im, x.re); },
      Same(), OneLevel());
}

TEST(Elementary, Powx_AnyArgument_EqualsPow) {
  for (const double val : {0.0, 0.5, 1.0, 2.0, 3.0, -1.0, -2.5, 10.0, 1e10, kInf, -kInf, kNaN}) {
    CheckElementwise<float, float>(
        "Powx_32f",
        [val](const float *src, float *dst, int len) {
          TargetLib::Powx_32f(src, static_cast<float>(val), dst, len);
        },
        [val](float x) { return Alone(&TargetLib::Pow_32f, x, static_cast<float>(val)); }, Same(),
        OneLevel());
    CheckElementwise<double, double>(
        "Powx_64f",
        [val](const double *src, double *dst, int len) { TargetLib::Powx_64f(src, val, dst, len); },
        [val](double x) { return Alone(&TargetLib::Pow_64f, x, val); }, Same(), OneLevel());
  }
}

TEST(Elementary, Pow10_AnyArgument_EqualsPowOfTen) {
  Options options = OneLevel();
  options.mayAlias = false;
  CheckElementwise<float, float>(
      "Pow10_32f", &TargetLib::Pow10_32f, [](float x) { return Alone(&TargetLib::Pow_32f, 10.0f, x); },
      Same(), options);
  CheckElementwise<double, double>(
      "Pow10_64f", &TargetLib::Pow10_64f, [](double x) { return Alone(&TargetLib::Pow_64f, 10.0, x); },
      Same(), options);
}

TEST(Elementary, CartToPolar_AnyArgument_EqualsMagnitudeAndPhase) {
  CheckElementwise<float, Cplx32>(
      "CartToPolar_32fc magnitude",
      [](const Cplx32 *src, float *dst, int len) {
        std::vector<float> phase(static_cast<std::size_t>(len) + 1);
        TargetLib::CartToPolar_32fc(src, dst, phase.data(), len);
      },
      [](Cplx32 x) {
        float magnitude;
        TargetLib::Mag_32fc(&x, &magnitude, 1);
        return magnitude;
      },
      Same(), OneLevel());
  CheckElementwise<float, Cplx32>(
      "CartToPolar_32fc phase",
      [](const Cplx32 *src, float *dst, int len) {
        std::vector<float> magnitude(static_cast<std::size_t>(len) + 1);
        TargetLib::CartToPolar_32fc(src, magnitude.data(), dst, len);
      },
      [](Cplx32 x) {
        float phase;
        TargetLib::Phase_32fc(&x, &phase, 1);
        return phase;
      },
      Same(), OneLevel());
}

TEST(Elementary, PolarToCart_AnyArgument_KeepsTheFloatBound) {
  // Products of a float and a cosine that is good to a double's precision, rounded once.
  struct Match {
    bool operator()(const Cplx32 &got, const Cplx64 &expected) const {
      return Close(got.re, expected.re) && Close(got.im, expected.im);
    }
    static bool Close(float got, double expected) {
      if (std::isnan(got) || std::isnan(expected)) return std::isnan(got) && std::isnan(expected);
      if (std::isinf(got) || expected == 0)
        return static_cast<double>(got) == static_cast<double>(static_cast<float>(expected));
      const int unit = std::max(std::ilogb(expected), -126) - 23;
      return std::fabs(static_cast<double>(got) - expected) <= std::ldexp(0.51, unit);
    }
  };
  const std::vector<float> values = Samples<float>();
  const auto size = static_cast<int>(values.size());
  AtEveryLevel([&] {
    for (int shift = 0; shift < size; shift += 7) {
      std::vector<float> magnitudes, phases;
      for (int i = 0; i < size; ++i) {
        magnitudes.push_back(values[static_cast<std::size_t>((i + shift) % size)]);
        phases.push_back(values[static_cast<std::size_t>(i)]);
      }
      std::vector<Cplx32> result(values.size());
      TargetLib::PolarToCart_32fc(magnitudes.data(), phases.data(), result.data(), size);
      for (std::size_t i = 0; i < result.size(); ++i) {
        const long double m = static_cast<long double>(magnitudes[i]),
                          p = static_cast<long double>(phases[i]);
        const Cplx64 expected = {static_cast<double>(m * cosl(p)), static_cast<double>(m * sinl(p))};
        EXPECT_TRUE(Match()(result[i], expected))
            << Show(magnitudes[i]) << " at " << Show(phases[i]) << " gave " << Show(result[i]) << ", not "
            << Show(expected);
        Cplx32 alone;
        TargetLib::PolarToCart_32fc(&magnitudes[i], &phases[i], &alone, 1);
        EXPECT_TRUE(Same()(result[i], alone)) << Show(magnitudes[i]) << " at " << Show(phases[i]);
      }
    }
  });
}

TEST(Elementary, OddFunctions_NegatedArgument_GiveTheNegatedResult) {
  AtEveryLevel([] {
    for (const double x : Samples<double>()) {
      if (std::isnan(x)) continue;
      for (const One<double> kernel : {&TargetLib::Sin_64f, &TargetLib::Atan_64f, &TargetLib::Erf_64f}) {
        EXPECT_TRUE(Same()(Alone(kernel, -x), -Alone(kernel, x))) << Show(x);
      }
      const float narrow = static_cast<float>(x);
      for (const One<float> kernel : {&TargetLib::Sin_32f, &TargetLib::Atan_32f, &TargetLib::Erf_32f}) {
        EXPECT_TRUE(Same()(Alone(kernel, -narrow), -Alone(kernel, narrow))) << Show(narrow);
      }
    }
  });
}

TEST(Elementary, AnyKernel_NoLengthOrNullPointer_DoesNothing) {
  const double x = 1;
  double y = 42;
  TargetLib::Exp_64f(&x, &y, 0);
  TargetLib::Exp_64f(&x, &y, -1);
  TargetLib::Exp_64f(nullptr, &y, 1);
  TargetLib::Exp_64f(&x, nullptr, 1);
  TargetLib::Sin_64f(&x, &y, 0);
  TargetLib::Sin_64f(nullptr, &y, 1);
  TargetLib::Sin_64f(&x, nullptr, 1);
  TargetLib::Pow_64f(&x, nullptr, &y, 1);
  TargetLib::Powx_64f(&x, 2.0, &y, -5);
  TargetLib::Pow10_64f(&x, &y, 0);
  EXPECT_EQ(y, 42);
}

TEST(Elementary, AnyKernel_LongArray_AllocatesNothing) {
  constexpr int len = 1000;
  std::vector<double> x(len, 1e9), y(len);
  std::vector<Cplx64> z(len);
  const long before = test::AllocationCount();
  TargetLib::Sin_64f(x.data(), y.data(), len);
  TargetLib::Expj_64f(x.data(), z.data(), len);
  TargetLib::Pow_64f(x.data(), x.data(), y.data(), len);
  TargetLib::Pow10_64f(x.data(), y.data(), len);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
} // namespace QORN
