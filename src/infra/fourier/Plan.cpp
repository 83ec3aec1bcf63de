#include "Plan.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Factorise.h"
#include "Roots.h"
#include "infra/kernels/Levels.h"

namespace QORN::fourier {

namespace {

using kernels::active;

// The kernels of a scalar type.
template <class T> struct Passes;
template <> struct Passes<float> {
  static auto Small() { return active->FourierSmall_32f; }
  static auto Grid() { return active->FourierGrid_32f; }
  static auto Columns() { return active->FourierColumns_32f; }
  static auto Product() { return active->FourierProduct_32f; }
  static auto Untangle() { return active->FourierUntangle_32f; }
  static auto Tangle() { return active->FourierTangle_32f; }
};
template <> struct Passes<double> {
  static auto Small() { return active->FourierSmall_64f; }
  static auto Grid() { return active->FourierGrid_64f; }
  static auto Columns() { return active->FourierColumns_64f; }
  static auto Product() { return active->FourierProduct_64f; }
  static auto Untangle() { return active->FourierUntangle_64f; }
  static auto Tangle() { return active->FourierTangle_64f; }
};

// What make() makes, or null if it runs out of memory.
template <class F> auto OrNull(const F &make) -> decltype(make()) {
  try {
    return make();
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

template <class P> std::unique_ptr<P> Copy(const std::unique_ptr<P> &plan) {
  return plan == nullptr ? nullptr : std::make_unique<P>(*plan);
}

// From this length on, the factors that join lanes are products of two.
constexpr int kFactoredFrom = 1 << 18;

std::size_t Size(std::int64_t n) { return static_cast<std::size_t>(n); }

} // namespace

std::unique_ptr<Workspace> Workspace::Make(const Plan *plan) {
  if (plan == nullptr) return nullptr;
  auto work = OrNull([] { return std::make_unique<Workspace>(); });
  if (work != nullptr && !work->Grow(plan->ScratchBytes())) work.reset();
  return work;
}

bool Workspace::Grow(std::size_t bytes) {
  if (bytes <= m_block.Size()) return true;
  try {
    m_block = Block<unsigned char>(); // first, so that the two are never there together
    m_block = Block<unsigned char>(bytes);
    return true;
  } catch (const std::bad_alloc &) {
    return false;
  }
}

template <class T> std::unique_ptr<ComplexPlan<T>> ComplexPlan<T>::Make(int length, int lanes) {
  if (length < 1) return nullptr;
  return OrNull([&] { return std::unique_ptr<ComplexPlan>(new ComplexPlan(length, lanes)); });
}

template <class T> std::unique_ptr<Plan> ComplexPlan<T>::Clone() const {
  return OrNull([&]() -> std::unique_ptr<Plan> { return std::make_unique<ComplexPlan>(*this); });
}

template <class T> ComplexPlan<T>::ComplexPlan(int length, int lanes) : m_length(length) {
  if (const GridShape shape = GridFor(length, sizeof(T)); lanes == 0 && shape.rows != 0) {
    MakeGrid(shape);
  } else if (length <= kMaxSmall) {
    return;
  } else if (IsSmooth(length)) {
    MakeColumns(lanes != 0 ? lanes : LanesFor(length, sizeof(T)));
  } else {
    MakeBluestein();
  }
}

template <class T>
ComplexPlan<T>::ComplexPlan(const ComplexPlan &other)
    : Plan(other), m_length(other.m_length), m_scratch(other.m_scratch), m_grid(other.m_grid),
      m_columns(other.m_columns), m_turns(other.m_turns), m_joins(other.m_joins), m_strides(other.m_strides),
      m_convolution(Copy(other.m_convolution)), m_chirp(other.m_chirp), m_spectrum(other.m_spectrum) {
  m_grid.turns = m_columns.turns = m_turns.Data();
  m_grid.middleTurns = m_columns.joins = m_joins.Data();
  m_columns.strides = m_strides.Data();
}

template <class T> void ComplexPlan<T>::MakeGrid(const GridShape &shape) {
  const auto [rows, middle, columns] = shape;
  const int inner = middle * columns;
  m_scratch = Size(4 * m_length);
  const Roots<T> roots(m_length);
  m_turns = Block<T>(Size((rows - 1) * 4 * inner));
  T *turn = m_turns.Data();
  for (int k = 1; k < rows; ++k, turn += 4 * inner) {
    for (int b = 0; b < inner; ++b) {
      const auto root = roots(k * b);
      turn[2 * b] = turn[2 * b + 1] = root.re;
      turn[2 * (inner + b)] = -root.im;
      turn[2 * (inner + b) + 1] = root.im;
    }
  }
  m_grid = {rows, middle, columns, m_turns.Data(), nullptr};
  if (middle == 1) return;

  constexpr int kRepeat = kGridRepeat<T>;
  m_joins = Block<T>(Size(columns * (middle - 1) * 2 * kRepeat));
  turn = m_joins.Data();
  for (int c = 0; c < columns; ++c) {
    for (int k = 1; k < middle; ++k, turn += 2 * kRepeat) {
      const auto root = roots(rows * c * k);
      std::fill_n(turn, kRepeat, root.re);
      for (int i = 0; i < kRepeat; ++i) turn[kRepeat + i] = i % 2 == 0 ? -root.im : root.im;
    }
  }
  m_grid.middleTurns = m_joins.Data();
}

template <class T> void ComplexPlan<T>::MakeColumns(int lanes) {
  const std::int64_t blocks = m_length / lanes;
  const int width = lanes <= 8 ? 8 : 16;
  m_columns.length = m_length;
  m_columns.blocks = blocks;
  m_columns.lanes = lanes;
  m_columns.width = width;
  m_scratch = Size(blocks) * Size(4 * width);

  const Roots<T> roots(m_length);
  std::int64_t done = 1, turns = 0;
  for (const int radix : Radices(blocks)) {
    const std::int64_t rest = blocks / (done * radix);
    m_columns.passes[m_columns.passCount++] = {radix, done, rest, turns};
    turns += rest * (radix - 1) * 2;
    done *= radix;
  }
  m_turns = Block<T>(Size(turns));
  T *turn = m_turns.Data();
  for (int i = 0; i < m_columns.passCount; ++i) {
    const Pass &pass = m_columns.passes[i];
    for (std::int64_t p = 0; p < pass.rest; ++p) {
      for (std::int64_t k = 1; k < pass.radix; ++k) {
        const auto root = roots(p * k * pass.done * lanes);
        *turn++ = root.re;
        *turn++ = root.im;
      }
    }
  }
  m_columns.turns = m_turns.Data();

  const std::int64_t groups = (blocks + width - 1) / width;
  const bool factored = m_length >= kFactoredFrom;
  const std::int64_t tabled = factored ? 1 : groups;
  m_joins = Block<T>(Size(tabled) * Size((lanes - 1) * 2 * width));
  T *join = m_joins.Data();
  for (std::int64_t group = 0; group < tabled; ++group) {
    for (std::int64_t lane = 1; lane < lanes; ++lane) {
      for (int i = 0; i < width; ++i, ++join) {
        const auto root = roots(lane * (group * width + i));
        join[0] = root.re;
        join[width] = root.im;
      }
      join += width;
    }
  }
  m_columns.joins = m_joins.Data();
  if (!factored) return;

  m_strides = Block<T>(Size(groups) * Size((lanes - 1) * 2));
  T *stride = m_strides.Data();
  for (std::int64_t group = 0; group < groups; ++group) {
    for (std::int64_t lane = 1; lane < lanes; ++lane) {
      const auto root = roots(lane * width * group);
      *stride++ = root.re;
      *stride++ = root.im;
    }
  }
  m_columns.strides = m_strides.Data();
}

// With n k = (n^2 + k^2 - (k - n)^2) / 2 and c[n] = exp(-j pi n^2 / N) the transform is the convolution
// X[k] = c[k] sum over n of (x[n] c[n]) conj(c[k-n]) (Bluestein 1970), made cyclic in a longer length P.
template <class T> void ComplexPlan<T>::MakeBluestein() {
  const std::int64_t n = m_length;
  const std::int64_t p = ConvolutionLength(2 * n - 1, sizeof(T));
  if (p > INT32_MAX) throw std::bad_alloc();
  m_convolution.reset(new ComplexPlan(static_cast<int>(p), 0));
  m_scratch = Size(2 * p) + m_convolution->m_scratch;

  m_chirp = Block<T>(Size(2 * n));
  m_spectrum = Block<T>(Size(2 * p));
  T *const chirp = m_chirp.Data(), *const spectrum = m_spectrum.Data();
  std::fill_n(spectrum, m_spectrum.Size(), T{0});
  const Roots<T> roots(2 * n);
  std::int64_t square = 0; // i^2 modulo 2 n
  for (std::int64_t i = 0; i < n; ++i) {
    const auto root = roots(square);
    chirp[2 * i] = root.re;
    chirp[2 * i + 1] = root.im;
    for (const std::int64_t at : {i, (p - i) % p}) {
      spectrum[2 * at] = root.re;
      spectrum[2 * at + 1] = -root.im;
    }
    square = (square + 2 * i + 1) % (2 * n);
  }
  Block<T> scratch(m_convolution->m_scratch);
  m_convolution->Forward(spectrum, spectrum, scratch.Data(), T{1});
}

template <class T> void ComplexPlan<T>::Run(const T *in, T *out, T *scratch, bool inverse, T scale) const {
  if (m_grid.rows != 0) {
    Passes<T>::Grid()(m_grid, in, out, scratch, inverse, scale);
  } else if (m_convolution != nullptr) {
    const std::ptrdiff_t n = m_length, p = m_convolution->m_length;
    T *const rest = scratch + 2 * p;
    Passes<T>::Product()(in, m_chirp.Data(), scratch, n, inverse, false);
    std::fill(scratch + 2 * n, rest, T{0});
    m_convolution->Forward(scratch, scratch, rest, T{1});
    Passes<T>::Product()(scratch, m_spectrum.Data(), scratch, p, false, false);
    m_convolution->Inverse(scratch, scratch, rest, scale / static_cast<T>(p));
    Passes<T>::Product()(scratch, m_chirp.Data(), out, n, false, inverse);
  } else if (m_length <= kMaxSmall) {
    Passes<T>::Small()(m_length, in, out, inverse, scale);
  } else {
    Passes<T>::Columns()(m_columns, in, out, scratch, inverse, scale);
  }
}

template <class T> std::unique_ptr<RealPlan<T>> RealPlan<T>::Make(int length) {
  if (length < 1) return nullptr;
  auto plan = OrNull([&] { return std::unique_ptr<RealPlan>(new RealPlan(length)); });
  if (plan != nullptr && plan->m_complex == nullptr) plan.reset();
  return plan;
}

template <class T> std::unique_ptr<Plan> RealPlan<T>::Clone() const {
  return OrNull([&]() -> std::unique_ptr<Plan> { return std::make_unique<RealPlan>(*this); });
}

template <class T>
RealPlan<T>::RealPlan(int length)
    : m_length(length), m_complex(ComplexPlan<T>::Make(length % 2 == 0 ? length / 2 : length)) {
  if (length % 2 != 0) return;
  const Roots<T> roots(length);
  m_turns = Block<T>(Size(2 * (length / 4 + 1)));
  for (int k = 0; k <= length / 4; ++k) {
    const auto root = roots(k);
    m_turns.Data()[2 * k] = root.re;
    m_turns.Data()[2 * k + 1] = root.im;
  }
}

template <class T>
RealPlan<T>::RealPlan(const RealPlan &other)
    : Plan(other), m_length(other.m_length), m_complex(Copy(other.m_complex)), m_turns(other.m_turns) {}

template <class T> std::size_t RealPlan<T>::ScratchBytes() const {
  // The inverse of an odd length keeps its whole spectrum there.
  const std::size_t spectrum = m_length % 2 == 0 ? 0 : 2 * Size(m_length) * sizeof(T);
  return spectrum + m_complex->ScratchBytes();
}

template <class T> void RealPlan<T>::Forward(const T *in, T *out, T *scratch, T scale) const {
  const std::ptrdiff_t n = m_length;
  if (n % 2 == 0) {
    m_complex->Forward(in, out, scratch, scale / 2);
    Passes<T>::Untangle()(out, m_turns.Data(), n / 2);
    return;
  }
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    out[2 * i] = in[i];
    out[2 * i + 1] = 0;
  }
  m_complex->Forward(out, out, scratch, scale);
  out[1] = 0;
  for (std::ptrdiff_t k = 1; k <= n / 2; ++k) {
    out[2 * (n - k)] = out[2 * k];
    out[2 * (n - k) + 1] = -out[2 * k + 1];
  }
}

template <class T> void RealPlan<T>::Inverse(const T *in, T *out, T *scratch, T scale) const {
  const std::ptrdiff_t n = m_length;
  if (n % 2 == 0) {
    Passes<T>::Tangle()(in, out, m_turns.Data(), n / 2);
    m_complex->Inverse(out, out, scratch, scale);
    return;
  }
  T *const spectrum = scratch, *const rest = scratch + 2 * n;
  spectrum[0] = in[0];
  spectrum[1] = 0;
  for (std::ptrdiff_t k = 1; k <= n / 2; ++k) {
    spectrum[2 * k] = spectrum[2 * (n - k)] = in[2 * k];
    spectrum[2 * k + 1] = in[2 * k + 1];
    spectrum[2 * (n - k) + 1] = -in[2 * k + 1];
  }
  m_complex->Inverse(spectrum, spectrum, rest, scale);
  for (std::ptrdiff_t i = 0; i < n; ++i) out[i] = spectrum[2 * i];
}

template class ComplexPlan<float>;
template class ComplexPlan<double>;
template class RealPlan<float>;
template class RealPlan<double>;

} // namespace QORN::fourier
