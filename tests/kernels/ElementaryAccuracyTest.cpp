// How far the elementary functions are from the exact values, in units in the last place, at every level.
//
// Three sources of exact values: files made with mpmath (tests/data/make_elementary.py), long double
// functions over random arguments for the double forms, and the same over evenly strided bit patterns for the
// float forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <limits>
#include <mutex>
#include <random>
#include <sstream>
#include <string>
#include <thread>
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

constexpr double kWrong = std::numeric_limits<double>::infinity();

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

// The largest error met, and where.

template <class T> struct Worst {
  double error = 0;
  T x[2] = {};
  void Meet(double e, T a, T b = T()) {
    if (e > error) error = e, x[0] = a, x[1] = b;
  }
  void Meet(const Worst &other) { Meet(other.error, other.x[0], other.x[1]); }
};

template <class T> std::string Cell(const Worst<T> &worst, int arguments) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(4) << worst.error << std::defaultfloat
       << std::setprecision(std::numeric_limits<T>::max_digits10) << " at " << worst.x[0];
  if (arguments == 2) text << ", " << worst.x[1];
  return text.str();
}

/// Runs work(k) for k = 0 to count - 1 on all processors and returns the worst of each level.
template <class T, class Work> std::vector<Worst<T>> Parallel(int count, const Work &work) {
  std::vector<Worst<T>> worst(kernels::AvailableLevels().size());
  std::atomic<int> next{0};
  std::mutex mutex;
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < std::max(1U, std::thread::hardware_concurrency()); ++t) {
    threads.emplace_back([&] {
      for (int k = next++; k < count; k = next++) {
        const std::vector<Worst<T>> part = work(k);
        const std::lock_guard<std::mutex> lock(mutex);
        for (std::size_t level = 0; level < worst.size(); ++level) worst[level].Meet(part[level]);
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  return worst;
}

template <class T> void Report(const std::string &name, const std::vector<Worst<T>> &worst, int arguments) {
  std::string line = "| " + name + Kernels<T>::kSuffix + " |";
  for (std::size_t level = 0; level < worst.size(); ++level) {
    EXPECT_LE(worst[level].error, Bound<T>())
        << name << Kernels<T>::kSuffix << " at " << kernels::AvailableLevels()[level].name << ": "
        << Cell(worst[level], arguments);
    line += " " + Cell(worst[level], arguments) + " |";
  }
  std::printf("%s\n", line.c_str());
}

// All floats. The double functions of the C library, which err by less than three of their units, are off by
// a hundred millionth of a float's.

struct DoubleRow {
  const char *name;
  double (*exact)(double);
};
constexpr DoubleRow kDoubleRows[] = {{"sin", std::sin},     {"cos", std::cos},
                                     {"atan", std::atan},   {"ln", std::log},
                                     {"log10", std::log10}, {"exp", std::exp},
                                     {"erf", std::erf},     {"pow10", [](double x) { return pow(10.0, x); }}};

/// The distance in units of a float, for a normal or denormal float result.
double QuickUlpError(float got, double exact) {
  constexpr int lowest = 1023 - 126;
  const int exponent = std::max(lowest, static_cast<int>(std::bit_cast<std::uint64_t>(exact) >> 52 & 2047));
  const double perUnit = std::bit_cast<double>(static_cast<std::uint64_t>(2046 + 23 - exponent) << 52);
  return std::fabs(static_cast<double>(got) - exact) * perUnit;
}

class ElementaryNightly : public testing::TestWithParam<const char *> {};

TEST_P(ElementaryNightly, DISABLED_Float_EveryArgument_KeepsTheBound) {
  const std::string name = GetParam();
  const auto rows = OneRows<float>();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto &r) { return r.name == name; });
  const auto exactly = std::find_if(std::begin(kDoubleRows), std::end(kDoubleRows),
                                    [&](const DoubleRow &r) { return r.name == name; });
  ASSERT_TRUE(row != rows.end() && exactly != std::end(kDoubleRows));
  const auto worst = Parallel<float>(1 << 12, [&](int k) {
    constexpr std::uint32_t block = 4096;
    const auto levels = kernels::AvailableLevels();
    std::vector<Worst<float>> part(levels.size());
    std::vector<float> x(block), y(block);
    std::vector<double> exact(block);
    const std::uint32_t first = static_cast<std::uint32_t>(k) << 20;
    for (std::uint32_t start = 0; start < 1U << 20; start += block) {
      for (std::uint32_t i = 0; i < block; ++i) {
        x[i] = std::bit_cast<float>(first + start + i);
        exact[i] = exactly->exact(static_cast<double>(x[i]));
      }
      for (std::size_t level = 0; level < levels.size(); ++level) {
        (levels[level].table->*row->kernel)(x.data(), y.data(), static_cast<int>(block));
        for (std::uint32_t i = 0; i < block; ++i) {
          const bool usual = std::fabs(y[i]) <= std::numeric_limits<float>::max() &&
                             std::fabs(exact[i]) < 0x1p128 && exact[i] != 0;
          part[level].Meet(usual ? QuickUlpError(y[i], exact[i])
                                 : UlpError(y[i], static_cast<long double>(exact[i])),
                           x[i]);
          if (y[i] == 0 && std::signbit(y[i]) != std::signbit(exact[i])) part[level].Meet(kWrong, x[i]);
        }
      }
    }
    return part;
  });
  Report(name, worst, 1);
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

// The double forms, and the float forms of two arguments: at random points of each range, and where all
// exponents meet the first and last numbers of each 64th of an octave.

constexpr int kNightlyPieces = 1000;
constexpr int kNightlyPiece = 100000;

std::vector<double> Structured() {
  constexpr int fraction = std::numeric_limits<double>::digits - 1;
  std::vector<double> values;
  for (std::uint64_t octave = 0; octave < 2047; ++octave) {
    for (std::uint64_t part = 0; part < 64; ++part) {
      const std::uint64_t edge = octave << fraction | part << (fraction - 6);
      for (std::uint64_t step = 0; step < 32; ++step) {
        values.push_back(std::bit_cast<double>(edge + step));
        values.push_back(std::bit_cast<double>((edge - step) & ~(std::uint64_t{1} << 63)));
      }
    }
  }
  std::erase_if(values, [](double x) { return !std::isfinite(x); });
  return values;
}

template <class T> std::vector<Worst<T>> WorstOf(const OneRow<T> &row, const std::vector<T> &x) {
  std::vector<T> y(x.size());
  std::vector<long double> exact;
  for (const T value : x) exact.push_back(row.exact(static_cast<long double>(value)));
  std::vector<Worst<T>> worst;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    (level.table->*row.kernel)(x.data(), y.data(), static_cast<int>(x.size()));
    worst.emplace_back();
    for (std::size_t i = 0; i < x.size(); ++i) worst.back().Meet(UlpError(y[i], exact[i]), x[i]);
  }
  return worst;
}

template <class T>
std::vector<Worst<T>> WorstOf(const TwoRow<T> &row, const std::vector<T> &x, const std::vector<T> &y) {
  std::vector<T> z(x.size());
  std::vector<long double> exact;
  for (std::size_t i = 0; i < x.size(); ++i) {
    exact.push_back(row.exact(static_cast<long double>(x[i]), static_cast<long double>(y[i])));
  }
  std::vector<Worst<T>> worst;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    (level.table->*row.kernel)(x.data(), y.data(), z.data(), static_cast<int>(x.size()));
    worst.emplace_back();
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (x[i] == 0 || !std::isfinite(x[i])) continue;
      worst.back().Meet(UlpError(z[i], exact[i]), x[i], y[i]);
    }
  }
  return worst;
}

void MeetAll(auto &worst, const auto &others) {
  for (std::size_t level = 0; level < worst.size(); ++level) worst[level].Meet(others[level]);
}

TEST_P(ElementaryNightly, DISABLED_Double_RandomAndStructuredArguments_KeepTheBound) {
  const std::string name = GetParam();
  const auto rows = OneRows<double>();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto &r) { return r.name == name; });
  ASSERT_TRUE(row != rows.end());
  std::vector<Worst<double>> worst(kernels::AvailableLevels().size());
  for (const Range &range : kRanges) {
    if (range.function != name) continue;
    MeetAll(worst, Parallel<double>(kNightlyPieces, [&](int k) {
              Random random(static_cast<unsigned>(k));
              std::vector<double> x;
              for (int i = 0; i < kNightlyPiece; ++i) x.push_back(range.draw64(random));
              return WorstOf(*row, x);
            }));
  }
  std::vector<double> x = Structured();
  for (const double sign : {1.0, -1.0}) {
    for (double &value : x) value = std::copysign(value, sign);
    constexpr std::size_t piece = 65536;
    const int pieces = static_cast<int>((x.size() + piece - 1) / piece);
    MeetAll(worst, Parallel<double>(pieces, [&](int k) {
              const auto first = static_cast<std::size_t>(k) * piece;
              const auto end = std::min(x.size(), first + piece);
              return WorstOf(*row, std::vector<double>(x.data() + first, x.data() + end));
            }));
  }
  Report(name, worst, 1);
}

template <class T> void CheckPairsNightly(const std::string &name, auto draw) {
  const auto rows = TwoRows<T>();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto &r) { return r.name == name; });
  ASSERT_TRUE(row != rows.end());
  std::vector<Worst<T>> worst(kernels::AvailableLevels().size());
  for (const PairRange &range : kPairRanges) {
    if (range.function != name) continue;
    MeetAll(worst, Parallel<T>(kNightlyPieces, [&](int k) {
              Random random(static_cast<unsigned>(k));
              std::vector<T> x, y;
              for (int i = 0; i < kNightlyPiece; ++i) {
                double a, b;
                (range.*draw)(random, a, b);
                x.push_back(static_cast<T>(a));
                y.push_back(static_cast<T>(b));
              }
              return WorstOf(*row, x, y);
            }));
  }
  Report(name, worst, 2);
}

class ElementaryPairsNightly : public testing::TestWithParam<const char *> {};

TEST_P(ElementaryPairsNightly, DISABLED_Float_RandomArguments_KeepTheBound) {
  CheckPairsNightly<float>(GetParam(), &PairRange::draw32);
}
TEST_P(ElementaryPairsNightly, DISABLED_Double_RandomArguments_KeepTheBound) {
  CheckPairsNightly<double>(GetParam(), &PairRange::draw64);
}

std::string ParamName(const testing::TestParamInfo<const char *> &info) { return info.param; }
INSTANTIATE_TEST_SUITE_P(All, ElementaryNightly,
                         testing::Values("sin", "cos", "atan", "ln", "log10", "exp", "erf", "pow10"),
                         ParamName);
INSTANTIATE_TEST_SUITE_P(All, ElementaryPairsNightly, testing::Values("atan2", "pow"), ParamName);

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
