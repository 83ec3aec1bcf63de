// How far the elementary functions are from the exact values, in units in the last place, at every level.
//
// Three sources of exact values: files made with mpmath (tests/data/make_elementary.py), long double
// functions over random arguments for the double forms, and the same over evenly strided bit patterns for the
// float forms.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "support/Elementary.h"

namespace QORN {
namespace {

using kernels::Table;
using test::UlpError;

// What is promised: half a unit and a hundredth for float, less than one unit for double. The long double
// functions may themselves err by one unit of theirs, a two-thousandth of a double's.
constexpr double kFloatBound = 0.51;
constexpr double kDoubleBound = 0.90;

template <class T> constexpr double Bound() {
  return sizeof(T) == sizeof(float) ? kFloatBound : kDoubleBound;
}

template <class T> struct Kernels;
template <> struct Kernels<float> {
  using One = void (*Table::*)(const float *, float *, int);
  using Two = void (*Table::*)(const float *, const float *, float *, int);
  static constexpr const char *kSuffix = "_32f";
};
template <> struct Kernels<double> {
  using One = void (*Table::*)(const double *, double *, int);
  using Two = void (*Table::*)(const double *, const double *, double *, int);
  static constexpr const char *kSuffix = "_64f";
};

template <class T> struct OneRow {
  const char *name;
  typename Kernels<T>::One kernel;
  long double (*exact)(long double);
};

long double Pow10Exact(long double x) { return powl(10.0L, x); }

template <class T> std::vector<OneRow<T>> OneRows() {
  if constexpr (sizeof(T) == sizeof(float)) {
    return {{"sin", &Table::Sin_32f, sinl},       {"cos", &Table::Cos_32f, cosl},
            {"atan", &Table::Atan_32f, atanl},    {"ln", &Table::Ln_32f, logl},
            {"log10", &Table::Log10_32f, log10l}, {"exp", &Table::Exp_32f, expl},
            {"erf", &Table::Erf_32f, erfl},       {"pow10", &Table::Pow10_32f, Pow10Exact}};
  } else {
    return {{"sin", &Table::Sin_64f, sinl},       {"cos", &Table::Cos_64f, cosl},
            {"atan", &Table::Atan_64f, atanl},    {"ln", &Table::Ln_64f, logl},
            {"log10", &Table::Log10_64f, log10l}, {"exp", &Table::Exp_64f, expl},
            {"erf", &Table::Erf_64f, erfl},       {"pow10", &Table::Pow10_64f, Pow10Exact}};
  }
}

template <class T> struct TwoRow {
  const char *name;
  typename Kernels<T>::Two kernel;
  long double (*exact)(long double, long double);
};

template <class T> std::vector<TwoRow<T>> TwoRows() {
  if constexpr (sizeof(T) == sizeof(float)) {
    return {{"atan2", &Table::Atan2_32f, atan2l}, {"pow", &Table::Pow_32f, powl}};
  } else {
    return {{"atan2", &Table::Atan2_64f, atan2l}, {"pow", &Table::Pow_64f, powl}};
  }
}

// Files.

struct Case {
  double x[2];
  int exponent;
  double high, low;
};

std::vector<Case> Read(const std::string &name, int arguments) {
  std::ifstream file(std::string(QORN_TEST_DATA) + "/" + name + ".csv");
  EXPECT_TRUE(file.is_open()) << name;
  std::vector<Case> cases;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    const auto next = [&fields] {
      std::string field;
      std::getline(fields, field, ',');
      return std::strtod(field.c_str(), nullptr);
    };
    Case c{};
    for (int k = 0; k < arguments; ++k) c.x[k] = next();
    c.exponent = static_cast<int>(next());
    c.high = next();
    c.low = next();
    cases.push_back(c);
  }
  EXPECT_GT(cases.size(), 50U) << name;
  return cases;
}

template <class T> void CheckFile(const std::string &name, int arguments, const auto &run) {
  const std::vector<Case> cases = Read(name, arguments);
  std::vector<T> x, y, results(cases.size());
  for (const Case &c : cases) {
    x.push_back(static_cast<T>(c.x[0]));
    y.push_back(static_cast<T>(c.x[1]));
  }
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    run(*level.table, x.data(), y.data(), results.data(), static_cast<int>(cases.size()));
    for (std::size_t i = 0; i < cases.size(); ++i) {
      const Case &c = cases[i];
      EXPECT_LE(UlpError(results[i], c.exponent, c.high, c.low), Bound<T>())
          << name << " at " << level.name << " of " << std::hexfloat << c.x[0] << ", " << c.x[1] << " gave "
          << results[i] << ", not " << c.high << " * 2^" << std::dec << c.exponent;
    }
  }
}

template <class T> void CheckFiles() {
  for (const OneRow<T> &row : OneRows<T>()) {
    CheckFile<T>(std::string(row.name) + Kernels<T>::kSuffix, 1,
                 [&row](const Table &table, const T *x, const T *, T *dst, int len) {
                   (table.*row.kernel)(x, dst, len);
                 });
  }
  for (const TwoRow<T> &row : TwoRows<T>()) {
    CheckFile<T>(std::string(row.name) + Kernels<T>::kSuffix, 2,
                 [&row](const Table &table, const T *x, const T *y, T *dst, int len) {
                   (table.*row.kernel)(x, y, dst, len);
                 });
  }
}

TEST(Elementary, Float_FilesOfExactValues_KeepTheBound) { CheckFiles<float>(); }
TEST(Elementary, Double_FilesOfExactValues_KeepTheBound) { CheckFiles<double>(); }

// Every step-th float.

void CheckStrided(const OneRow<float> &row, std::uint64_t step) {
  constexpr std::size_t block = 4096;
  std::vector<float> x(block), y(block);
  std::vector<long double> exact(block);
  for (std::uint64_t start = 0; start < std::uint64_t(1) << 32; start += step * block) {
    for (std::size_t i = 0; i < block; ++i) {
      const auto bits = static_cast<std::uint32_t>(start + step * i);
      std::memcpy(&x[i], &bits, sizeof bits);
      exact[i] = row.exact(static_cast<long double>(x[i]));
    }
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      (level.table->*row.kernel)(x.data(), y.data(), static_cast<int>(block));
      for (std::size_t i = 0; i < block; ++i) {
        const double error = UlpError(y[i], exact[i]);
        ASSERT_LE(error, kFloatBound) << row.name << " at " << level.name << " of " << std::hexfloat << x[i]
                                      << " gave " << y[i] << ", not " << exact[i];
      }
    }
  }
}

TEST(Elementary, Float_EveryStridedArgument_KeepsTheBound) {
  for (const OneRow<float> &row : OneRows<float>()) CheckStrided(row, 9973);
}

// Hours; for the nightly run.
TEST(Elementary, DISABLED_Float_EveryArgument_KeepsTheBound) {
  for (const OneRow<float> &row : OneRows<float>()) CheckStrided(row, 1);
}

// Random arguments over ranges, also the source of the table in docs/elementary-accuracy.md.

using Random = std::mt19937_64;

double Uniform(Random &random, double a, double b) {
  return std::uniform_real_distribution<double>(a, b)(random);
}
double Logarithmic(Random &random, double a, double b) {
  const double size = std::exp2(Uniform(random, a, b));
  return (random() & 1) != 0 ? -size : size;
}
template <class T> T AnyFinite(Random &random) {
  for (;;) {
    const std::uint64_t bits = random();
    T x;
    std::memcpy(&x, &bits, sizeof x);
    if (std::isfinite(x)) return x;
  }
}

struct Range {
  const char *function;
  const char *text;
  double (*draw32)(Random &);
  double (*draw64)(Random &);
};

const Range kRanges[] = {
    {"sin", "within 2 pi", [](Random &r) { return Uniform(r, -6.3, 6.3); },
     [](Random &r) { return Uniform(r, -6.3, 6.3); }},
    {"sin", "all", [](Random &r) { return static_cast<double>(AnyFinite<float>(r)); }, AnyFinite<double>},
    {"cos", "within 2 pi", [](Random &r) { return Uniform(r, -6.3, 6.3); },
     [](Random &r) { return Uniform(r, -6.3, 6.3); }},
    {"cos", "all", [](Random &r) { return static_cast<double>(AnyFinite<float>(r)); }, AnyFinite<double>},
    {"atan", "within 3", [](Random &r) { return Uniform(r, -3, 3); },
     [](Random &r) { return Uniform(r, -3, 3); }},
    {"atan", "all", [](Random &r) { return static_cast<double>(AnyFinite<float>(r)); }, AnyFinite<double>},
    {"ln", "1/2 to 2", [](Random &r) { return Uniform(r, 0.5, 2); },
     [](Random &r) { return Uniform(r, 0.5, 2); }},
    {"ln", "all", [](Random &r) { return std::fabs(static_cast<double>(AnyFinite<float>(r))); },
     [](Random &r) { return std::fabs(AnyFinite<double>(r)); }},
    {"log10", "1/2 to 2", [](Random &r) { return Uniform(r, 0.5, 2); },
     [](Random &r) { return Uniform(r, 0.5, 2); }},
    {"log10", "all", [](Random &r) { return std::fabs(static_cast<double>(AnyFinite<float>(r))); },
     [](Random &r) { return std::fabs(AnyFinite<double>(r)); }},
    {"exp", "within 1", [](Random &r) { return Uniform(r, -1, 1); },
     [](Random &r) { return Uniform(r, -1, 1); }},
    {"exp", "all", [](Random &r) { return Uniform(r, -104, 89); },
     [](Random &r) { return Uniform(r, -746, 710); }},
    {"erf", "within 2", [](Random &r) { return Uniform(r, -2, 2); },
     [](Random &r) { return Uniform(r, -2, 2); }},
    {"erf", "all", [](Random &r) { return Logarithmic(r, -149, 3); },
     [](Random &r) { return Logarithmic(r, -1074, 3); }},
    {"pow10", "all", [](Random &r) { return Uniform(r, -46, 39); },
     [](Random &r) { return Uniform(r, -324, 309); }},
};

template <class T>
double LargestError(const Table &table, const OneRow<T> &row, double (*draw)(Random &), int count) {
  Random random(7);
  std::vector<T> x, y(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) x.push_back(static_cast<T>(draw(random)));
  (table.*row.kernel)(x.data(), y.data(), count);
  double largest = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    largest = std::max(largest, UlpError(y[i], row.exact(static_cast<long double>(x[i]))));
  }
  return largest;
}

template <class T> std::vector<std::string> CheckRanges(int count) {
  std::vector<std::string> lines;
  for (const Range &range : kRanges) {
    for (const OneRow<T> &row : OneRows<T>()) {
      if (std::string(row.name) != range.function) continue;
      std::ostringstream line;
      line << "| " << row.name << Kernels<T>::kSuffix << " | " << range.text << " |";
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        const double error =
            LargestError(*level.table, row, sizeof(T) == sizeof(float) ? range.draw32 : range.draw64, count);
        EXPECT_LE(error, Bound<T>()) << row.name << Kernels<T>::kSuffix << ", " << range.text << ", at "
                                     << level.name;
        line << " " << std::fixed << std::setprecision(3) << error << " |";
      }
      lines.push_back(line.str());
    }
  }
  return lines;
}

struct PairRange {
  const char *function;
  const char *text;
  void (*draw32)(Random &, double &, double &);
  void (*draw64)(Random &, double &, double &);
};

const PairRange kPairRanges[] = {
    {"atan2", "within 1",
     [](Random &r, double &y, double &x) { y = Uniform(r, -1, 1), x = Uniform(r, -1, 1); },
     [](Random &r, double &y, double &x) { y = Uniform(r, -1, 1), x = Uniform(r, -1, 1); }},
    {"atan2", "all",
     [](Random &r, double &y, double &x) {
       y = static_cast<double>(AnyFinite<float>(r)), x = static_cast<double>(AnyFinite<float>(r));
     },
     [](Random &r, double &y, double &x) { y = AnyFinite<double>(r), x = AnyFinite<double>(r); }},
    {"pow", "base to 10, exponent within 10",
     [](Random &r, double &x, double &y) { x = Uniform(r, 0, 10), y = Uniform(r, -10, 10); },
     [](Random &r, double &x, double &y) { x = Uniform(r, 0, 10), y = Uniform(r, -10, 10); }},
    {"pow", "base near 1, result over the whole range",
     [](Random &r, double &x, double &y) {
       x = static_cast<double>(static_cast<float>(1 + Logarithmic(r, -22, -2))),
       y = Uniform(r, -104, 89) / std::log(x);
     },
     [](Random &r, double &x, double &y) {
       x = 1 + Logarithmic(r, -50, -2), y = Uniform(r, -746, 710) / std::log(x);
     }},
    {"pow", "any base, result over the whole range",
     [](Random &r, double &x, double &y) {
       x = static_cast<double>(static_cast<float>(std::fabs(Logarithmic(r, -149, 128)))),
       y = Uniform(r, -104, 89) / std::log(x);
     },
     [](Random &r, double &x, double &y) {
       x = std::fabs(Logarithmic(r, -1074, 1024)), y = Uniform(r, -746, 710) / std::log(x);
     }},
    {"pow", "negative base, whole exponent",
     [](Random &r, double &x, double &y) { x = -Uniform(r, 0, 10), y = std::round(Uniform(r, -30, 30)); },
     [](Random &r, double &x, double &y) { x = -Uniform(r, 0, 10), y = std::round(Uniform(r, -300, 300)); }},
};

template <class T>
double LargestError(const Table &table, const TwoRow<T> &row, void (*draw)(Random &, double &, double &),
                    int count) {
  Random random(11);
  std::vector<T> x, y, z(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    double a, b;
    draw(random, a, b);
    x.push_back(static_cast<T>(a));
    y.push_back(static_cast<T>(b));
  }
  (table.*row.kernel)(x.data(), y.data(), z.data(), count);
  double largest = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (x[i] == 0 || !std::isfinite(x[i])) continue;
    largest = std::max(
        largest, UlpError(z[i], row.exact(static_cast<long double>(x[i]), static_cast<long double>(y[i]))));
  }
  return largest;
}

template <class T> std::vector<std::string> CheckPairRanges(int count) {
  std::vector<std::string> lines;
  for (const PairRange &range : kPairRanges) {
    for (const TwoRow<T> &row : TwoRows<T>()) {
      if (std::string(row.name) != range.function) continue;
      std::ostringstream line;
      line << "| " << row.name << Kernels<T>::kSuffix << " | " << range.text << " |";
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        const double error =
            LargestError(*level.table, row, sizeof(T) == sizeof(float) ? range.draw32 : range.draw64, count);
        EXPECT_LE(error, Bound<T>()) << row.name << Kernels<T>::kSuffix << ", " << range.text << ", at "
                                     << level.name;
        line << " " << std::fixed << std::setprecision(3) << error << " |";
      }
      lines.push_back(line.str());
    }
  }
  return lines;
}

constexpr int kTrials = 50000;

TEST(Elementary, Float_RandomArguments_KeepTheBound) {
  CheckRanges<float>(kTrials);
  CheckPairRanges<float>(kTrials);
}
TEST(Elementary, Double_RandomArguments_KeepTheBound) {
  CheckRanges<double>(kTrials);
  CheckPairRanges<double>(kTrials);
}

// Prints the rows of docs/elementary-accuracy.md.
TEST(Elementary, DISABLED_PrintsTheAccuracyTable) {
  for (const auto &lines : {CheckRanges<float>(2000000), CheckPairRanges<float>(2000000),
                            CheckRanges<double>(2000000), CheckPairRanges<double>(2000000)}) {
    for (const std::string &line : lines) std::printf("%s\n", line.c_str());
  }
}

} // namespace
} // namespace QORN
