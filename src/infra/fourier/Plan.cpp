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
  static auto Lines() { return active->FourierLines_32f; }
  static auto FourStep() { return active->FourierFourStep_32f; }
  static auto Columns() { return active->FourierColumns_32f; }
  static auto WeightedGrid() { return active->FourierWeightedGrid_32f; }
  static auto WeightedLines() { return active->FourierWeightedLines_32f; }
  static auto WeightedFourStep() { return active->FourierWeightedFourStep_32f; }
  static auto WeightedColumns() { return active->FourierWeightedColumns_32f; }
  static auto Tiled() { return active->FourierTiled_32f; }
  static auto Product() { return active->FourierProduct_32f; }
  static auto MirroredProduct() { return active->FourierMirroredProduct_32f; }
  static auto Untangle() { return active->FourierUntangle_32f; }
  static auto Tangle() { return active->FourierTangle_32f; }
};
template <> struct Passes<double> {
  static auto Small() { return active->FourierSmall_64f; }
  static auto Grid() { return active->FourierGrid_64f; }
  static auto Lines() { return active->FourierLines_64f; }
  static auto FourStep() { return active->FourierFourStep_64f; }
  static auto Columns() { return active->FourierColumns_64f; }
  static auto Tiled() { return active->FourierTiled_64f; }
  static auto Product() { return active->FourierProduct_64f; }
  static auto MirroredProduct() { return active->FourierMirroredProduct_64f; }
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

template <class P> std::unique_ptr<P> Copy(const std::unique_ptr<P> &other) {
  return other == nullptr ? nullptr : std::make_unique<P>(*other);
}

// From this length on, the factors that join lanes are products of two.
constexpr int kFactoredFrom = 1 << 18;

std::size_t Size(std::int64_t n) { return static_cast<std::size_t>(n); }

// Fills in the passes over `blocks` blocks; the number of scalars that their factors take.
template <class T> std::int64_t SetPasses(Columns<T> &columns, std::int64_t blocks) {
  columns.blocks = blocks;
  std::int64_t done = 1, turns = 0;
  for (const int radix : Radices(blocks)) {
    const std::int64_t rest = blocks / (done * radix);
    columns.passes[columns.passCount++] = {radix, done, rest, turns};
    const std::int64_t table = radix > kMaxStraight ? 2 * (radix / 2) * (radix / 2) : 0;
    turns += table + rest * (radix - 1) * 2;
    done *= radix;
  }
  return turns;
}

// `count` factors number first, first + step, ...: their real parts, then their imaginary ones.
template <class T>
T *WriteFactors(const Roots<T> &roots, std::int64_t first, std::int64_t step, std::int64_t count, T *to) {
  for (std::int64_t i = 0; i < count; ++i, ++to) {
    const auto root = roots(first + step * i);
    to[0] = root.re;
    to[count] = root.im;
  }
  return to + count;
}

// The factors of the middle step of a grid.
template <class T> Block<T> MiddleTurns(const Roots<T> &roots, const GridShape &shape) {
  const auto [rows, middle, columns] = shape;
  Block<T> turns(Size(columns * (middle - 1) * 4));
  T *turn = turns.Data();
  for (int c = 0; c < columns; ++c) {
    for (int k = 1; k < middle; ++k) turn = WriteTurns(roots, rows * c * k, 0, 1, turn);
  }
  return turns;
}

// A strip of a transform of n points, and its factors.
template <class T>
void MakeStrip(const Roots<T> &roots, std::int64_t n, const std::vector<int> &radices, Strip<T> &strip,
               Block<T> &turns) {
  strip.length = 1;
  for (const int radix : radices) {
    strip.radices[strip.steps++] = radix;
    strip.length *= radix;
  }
  // Calls body(length, radix) for each step but the last one.
  const auto eachStep = [&](const auto &body) {
    std::int64_t length = strip.length;
    for (int step = 0; step < strip.steps - 1; ++step) {
      body(length, strip.radices[step]);
      length /= strip.radices[step];
    }
  };
  std::int64_t size = 0;
  eachStep([&](std::int64_t length, int radix) { size += length - length / radix; });
  turns = Block<T>(Size(4 * size));
  T *turn = turns.Data();
  eachStep([&](std::int64_t length, int radix) {
    for (std::int64_t p = 0; p < length / radix; ++p) {
      for (int k = 1; k < radix; ++k) turn = WriteTurns(roots, p * k * (n / length), 0, 1, turn);
    }
  });
}

// The factors of the passes. n, that of the roots, is a multiple of the number of blocks.
template <class T>
T *WritePassFactors(const Columns<T> &columns, const Roots<T> &roots, std::int64_t n, T *to) {
  for (int i = 0; i < columns.passCount; ++i) {
    const Pass &pass = columns.passes[i];
    if (pass.radix > kMaxStraight) {
      for (std::int64_t k = 1; k <= pass.radix / 2; ++k) {
        for (std::int64_t j = 1; j <= pass.radix / 2; ++j) {
          const auto root = roots(k * j % pass.radix * (n / pass.radix));
          Write<T>(to, {root.re, -root.im});
        }
      }
    }
    for (std::int64_t p = 0; p < pass.rest; ++p) {
      for (std::int64_t k = 1; k < pass.radix; ++k)
        Write<T>(to, roots(p * k * (n / (pass.rest * pass.radix))));
    }
  }
  return to;
}

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

template <class T> std::unique_ptr<ComplexPlan<T>> ComplexPlan<T>::Make(int length) {
  if (length < 1) return nullptr;
  return OrNull([&] { return std::unique_ptr<ComplexPlan>(new ComplexPlan(length)); });
}

template <class T> std::unique_ptr<Plan> ComplexPlan<T>::Clone() const {
  return OrNull([&]() -> std::unique_ptr<Plan> { return std::make_unique<ComplexPlan>(*this); });
}

template <class T>
ComplexPlan<T>::ComplexPlan(int length)
    : m_length(length), m_share(static_cast<T>(1.0 / length)), m_direct(DirectComplex<T>(length)) {
  if (m_direct != nullptr) {
    return;
  } else if (const GridShape lines = LinesFor(length, sizeof(T)); lines.rows != 0) {
    MakeLines(lines);
  } else if (const GridShape shape = GridFor(length, sizeof(T)); shape.rows != 0) {
    MakeGrid(shape);
  } else if (length <= kMaxSmall) {
    return;
  } else if (const FourStepShape sweeps = FourStepFor(length, sizeof(T)); sweeps.first != 0) {
    MakeFourStep(sweeps);
  } else if (const std::int64_t rows = TileRows(length, sizeof(T)); rows != 0) {
    MakeTiled(rows);
  } else if (IsSmooth(length)) {
    MakeColumns(LanesFor(length, sizeof(T)));
  } else if (const int generator = CyclicGenerator(length, sizeof(T)); generator != 0) {
    MakeRader(generator);
  } else {
    MakeBluestein();
  }
  Link();
}

template <class T>
ComplexPlan<T>::ComplexPlan(const ComplexPlan &other)
    : Plan(other), m_length(other.m_length), m_share(other.m_share), m_direct(other.m_direct),
      m_scratch(other.m_scratch), m_grid(other.m_grid), m_lines(other.m_lines),
      m_columns(Copy(other.m_columns)), m_fourStep(other.m_fourStep), m_turns(other.m_turns),
      m_joins(other.m_joins), m_strides(other.m_strides), m_tiled(Copy(other.m_tiled)), m_down(other.m_down),
      m_across(other.m_across), m_convolution(Copy(other.m_convolution)), m_chirp(other.m_chirp),
      m_spectrum(other.m_spectrum), m_places(other.m_places) {
  Link();
}

// Points the passes to this plan's tables.
template <class T> void ComplexPlan<T>::Link() {
  m_lines.turns = m_grid.turns = m_turns.Data();
  m_lines.middleTurns = m_grid.middleTurns = m_joins.Data();
  m_fourStep.columnTurns = m_turns.Data();
  m_fourStep.downTurns = m_joins.Data();
  m_fourStep.acrossTurns = m_strides.Data();
  m_fourStep.down.turns = m_down.Data();
  m_fourStep.across.turns = m_across.Data();
  if (m_columns != nullptr) {
    m_columns->turns = m_turns.Data();
    m_columns->joins = m_joins.Data();
    m_columns->strides = m_strides.Data();
  }
  if (m_tiled != nullptr) {
    m_tiled->down.part.turns = m_down.Data();
    m_tiled->across.part.turns = m_across.Data();
    m_tiled->steps = m_joins.Data();
    m_tiled->strides = m_strides.Data();
  }
}

template <class T> void ComplexPlan<T>::MakeGrid(const GridShape &shape) {
  const auto [rows, middle, columns] = shape;
  const int inner = middle * columns;
  m_scratch = Size(4 * m_length);
  const Roots<T> roots(m_length);
  m_turns = Block<T>(Size((rows - 1) * 4 * inner));
  T *turn = m_turns.Data();
  for (int k = 1; k < rows; ++k) turn = WriteTurns(roots, 0, k, inner, turn);
  m_grid = {rows, middle, columns, nullptr, nullptr};
  if (middle == 1) return;
  m_joins = MiddleTurns(roots, shape);
}

template <class T> void ComplexPlan<T>::MakeLines(const GridShape &shape) {
  constexpr int kWidth = Lines<T>::kWidth;
  const auto [rows, middle, columns] = shape;
  const int inner = middle * columns;
  m_scratch = Size(2 * (m_length + kWidth * (middle + 1) * columns));
  m_lines.length = m_length;
  const Roots<T> roots(m_length);
  m_turns = Block<T>(Size((rows - 1) * 4 * inner));
  T *turn = m_turns.Data();
  for (int at = 0; at < inner; at += kWidth) {
    for (int k = 1; k < rows; ++k) turn = WriteTurns(roots, k * at, k, kWidth, turn);
  }
  m_joins = MiddleTurns(roots, shape);
}

template <class T> void ComplexPlan<T>::MakeFourStep(const FourStepShape &shape) {
  constexpr std::int64_t kWidth = FourStep<T>::kWidth;
  // From kFarBytes of samples on whole runs of lines are written; before, strips stay in the first cache.
  // Bins of a butterfly that lie a multiple of kSet bytes apart share a few sets of it: too few for more than
  // kRun of them, and for others if they lie kFewBins bytes apart or more and are not written in runs.
  constexpr std::size_t kFarBytes = 1 << 19;
  constexpr std::int64_t kNearLines = 512, kRun = 8, kSet = 1024, kFewBins = 32768;
  FourStep<T> &plan = m_fourStep;
  const Roots<T> roots(m_length);
  MakeStrip(roots, m_length, shape.down, plan.down, m_down);
  MakeStrip(roots, m_length, shape.across, plan.across, m_across);
  const std::int64_t first = shape.first, down = plan.down.length, columns = plan.across.length;
  const std::int64_t groups = first / kWidth, rows = first * down;
  plan.first = shape.first;
  plan.columns = columns;
  // A line stays free behind each part, but not where the lines of W columns, written as neighbours, may lie
  // across two parts.
  const std::int64_t part = columns / shape.across.front(), lastRadix = shape.across.back();
  plan.across.pitch = part % kWidth == 0 ? part + 1 : part;
  plan.down.pitch = (plan.down.steps < 2 ? down : down / shape.down.front()) + 1;
  // The W lines that go to one row, and those that go to the others, fill sets of the cache evenly.
  plan.pitch = shape.across.front() * plan.across.pitch;
  while (groups * plan.pitch % (2 * kWidth) != kWidth) ++plan.pitch;
  plan.together = 2 * Size(m_length) * sizeof(T) >= kFarBytes
                      ? kRun
                      : std::clamp(kNearLines / columns, std::int64_t{2}, kRun);
  const std::int64_t jump = 2 * rows * (columns / lastRadix) * static_cast<std::int64_t>(sizeof(T));
  plan.isSpread = jump % kSet == 0 && (lastRadix > kRun || (jump >= kFewBins && plan.together < kRun));
  const std::int64_t tile = std::max<std::int64_t>(
      plan.together * plan.pitch, first * (plan.down.steps < 2 ? 1 : shape.down.front()) * plan.down.pitch);
  m_scratch = Size(2 * kWidth) * Size(rows / kWidth * plan.pitch + (down == 1 ? 0 : tile));

  const std::int64_t lines = (columns + kWidth - 1) / kWidth;
  m_turns = Block<T>(Size(lines * (first - 1) * 4 * kWidth));
  T *turn = m_turns.Data();
  for (std::int64_t line = 0; line < lines; ++line) {
    const std::int64_t b = std::min(line * kWidth, columns - kWidth);
    for (std::int64_t k = 1; k < first; ++k) turn = WriteTurns(roots, k * b, k, kWidth, turn);
  }
  if (down == 1) return;
  m_joins = Block<T>(Size(4 * rows));
  turn = m_joins.Data();
  for (std::int64_t j = 0; j < down; ++j) turn = WriteTurns(roots, 0, j * columns, first, turn);
  m_strides = Block<T>(Size(4 * down * columns));
  turn = m_strides.Data();
  for (std::int64_t q = 0; q < down; ++q) {
    for (std::int64_t p = 0; p < part; ++p) {
      for (std::int64_t b = p; b < columns; b += part) turn = WriteTurns(roots, first * q * b, 0, 1, turn);
    }
  }
}

template <class T> void ComplexPlan<T>::MakeColumns(int lanes) {
  const std::int64_t blocks = m_length / lanes;
  const int width = lanes <= 8 ? 8 : 16;
  m_columns = std::make_unique<Columns<T>>();
  m_columns->length = m_length;
  m_columns->lanes = lanes;
  m_columns->width = width;
  m_scratch = Size(blocks) * Size(4 * width);

  const Roots<T> roots(m_length);
  m_turns = Block<T>(Size(SetPasses(*m_columns, blocks)));
  WritePassFactors(*m_columns, roots, m_length, m_turns.Data());

  const std::int64_t groups = (blocks + width - 1) / width;
  const bool factored = m_length >= kFactoredFrom;
  const std::int64_t tabled = factored ? 1 : groups;
  m_joins = Block<T>(Size(tabled) * Size((lanes - 1) * 2 * width));
  T *join = m_joins.Data();
  for (std::int64_t group = 0; group < tabled; ++group) {
    for (std::int64_t lane = 1; lane < lanes; ++lane)
      join = WriteFactors(roots, lane * group * width, lane, width, join);
  }
  if (!factored) return;

  m_strides = Block<T>(Size(groups) * Size((lanes - 1) * 2));
  T *stride = m_strides.Data();
  for (std::int64_t group = 0; group < groups; ++group) {
    for (std::int64_t lane = 1; lane < lanes; ++lane) Write<T>(stride, roots(lane * width * group));
  }
}

template <class T> void ComplexPlan<T>::MakeTiled(std::int64_t rows) {
  constexpr std::int64_t kWidth = Tiled<T>::kWidth;
  const std::int64_t columns = m_length / rows, groups = (rows + kWidth - 1) / kWidth;
  const std::int64_t tiles = (columns + kWidth - 1) / kWidth;
  const Roots<T> roots(m_length);
  m_tiled = std::make_unique<Tiled<T>>();
  std::int64_t tile = 0, spare = 0;
  const auto makeLine = [&](std::int64_t length, Line<T> &line, Block<T> &factors) {
    line.last = LastRadix(length);
    Columns<T> &part = line.part;
    part.lanes = part.width = kWidth;
    line.lastTurns = SetPasses(part, length / line.last);
    factors = Block<T>(Size(line.lastTurns + part.blocks * 2 * (line.last - 1)));
    T *factor = WritePassFactors(part, roots, m_length, factors.Data());
    for (std::int64_t q = 0; q < part.blocks; ++q) {
      for (std::int64_t j = 1; j < line.last; ++j) Write<T>(factor, roots(q * j * (m_length / length)));
    }
    tile = std::max<std::int64_t>(tile, (part.blocks + 1) * line.last);
    spare = std::max<std::int64_t>(
        {spare, 2 * part.blocks, part.blocks % kWidth == 0 ? kWidth * line.last : length});
  };
  makeLine(rows, m_tiled->down, m_down);
  makeLine(columns, m_tiled->across, m_across);
  m_tiled->tile = 2 * kWidth * tile;
  m_scratch = Size(2 * kWidth) * Size(groups * columns + tile + spare);

  m_joins = Block<T>(Size(columns) * Size(2 * kWidth));
  T *step = m_joins.Data();
  for (std::int64_t column = 0; column < columns; ++column)
    step = WriteFactors(roots, 0, column, kWidth, step);
  m_strides = Block<T>(Size(tiles * groups) * Size(2 * kWidth));
  T *stride = m_strides.Data();
  for (std::int64_t i = 0; i < tiles; ++i) {
    const std::int64_t first = std::min(i * kWidth, columns - kWidth);
    for (std::int64_t group = 0; group < groups; ++group) {
      const std::int64_t k = std::min(group * kWidth, rows - kWidth);
      for (std::int64_t column = first; column < first + kWidth; ++column)
        Write<T>(stride, roots(column * k));
    }
  }
}

// With n k = (n^2 + k^2 - (k - n)^2) / 2 and c[n] = exp(-j pi n^2 / N) the transform is the convolution
// X[k] = c[k] sum over n of (x[n] c[n]) conj(c[k-n]) (Bluestein 1970), made cyclic in a longer length P. The
// spectrum has the factor 1/P of the inverse transform, so that no value on the way outgrows the results.
template <class T> void ComplexPlan<T>::MakeBluestein() {
  const std::int64_t n = m_length;
  const std::int64_t p = ConvolutionLength(2 * n - 1, sizeof(T));
  if (p > INT32_MAX) throw std::bad_alloc();
  m_convolution.reset(new ComplexPlan(static_cast<int>(p)));
  m_scratch = Size(2 * p) + m_convolution->m_scratch;

  m_chirp = Block<T>(Size(2 * n));
  Block<T> taps(Size(2 * p));
  T *const chirp = m_chirp.Data();
  std::fill_n(taps.Data(), taps.Size(), T{0});
  const Roots<T> roots(2 * n);
  std::int64_t square = 0; // i^2 modulo 2 n
  for (std::int64_t i = 0; i < n; ++i) {
    const auto root = roots(square);
    chirp[2 * i] = root.re;
    chirp[2 * i + 1] = root.im;
    for (const std::int64_t at : {i, (p - i) % p}) {
      taps.Data()[2 * at] = root.re;
      taps.Data()[2 * at + 1] = -root.im;
    }
    square = (square + 2 * i + 1) % (2 * n);
  }
  MakeSpectrum(taps.Data(), false);
}

// Of taps that are symmetric, or in their second half the conjugates of the first, the spectrum is the mirror
// of its own half; what its bins k and P - k make of rounding differs, and their mean has less of it.
template <class T> void ComplexPlan<T>::MakeSpectrum(T *taps, bool conjugate) {
  const std::int64_t p = m_convolution->m_length;
  {
    const Block<T> scratch(m_convolution->m_scratch);
    m_convolution->Forward(taps, taps, scratch.Data(), T{1} / static_cast<T>(p));
  }
  m_spectrum = Block<T>(Size(p + 2));
  for (std::int64_t k = 0; k <= p / 2; ++k) {
    const std::int64_t mirror = (p - k) % p;
    const T re = conjugate && k % 2 != 0 ? T{-1} : T{1}, im = conjugate ? -re : re;
    m_spectrum.Data()[2 * k] = (taps[2 * k] + re * taps[2 * mirror]) / 2;
    m_spectrum.Data()[2 * k + 1] = (taps[2 * k + 1] + im * taps[2 * mirror + 1]) / 2;
  }
}

// The powers of a generator g run through all residues of a prime N but 0, and X[g^-i] is x[0] and the cyclic
// convolution of length N - 1 of x[g^i] and exp(-j 2 pi g^-i / N) (Rader 1968); the factor 1/(N - 1) as
// above. As g^((N-1)/2) = -1, the second half of the powers is N less the first, and the second half of the
// factors are the first one's conjugates.
template <class T> void ComplexPlan<T>::MakeRader(int generator) {
  const std::int64_t n = m_length, p = n - 1, half = p / 2;
  m_convolution.reset(new ComplexPlan(static_cast<int>(p)));
  m_scratch = Size(2 * p) + m_convolution->m_scratch;
  m_places = Block<std::int32_t>(Size(half));
  Block<T> taps(Size(2 * p));
  const Roots<T> roots(n);
  std::int64_t power = 1;
  for (std::int64_t i = 0; i < p; ++i, power = power * generator % n) {
    if (i < half) m_places.Data()[i] = static_cast<std::int32_t>(power);
    const auto root = roots(power);
    const std::int64_t at = (p - i) % p;
    taps.Data()[2 * at] = root.re;
    taps.Data()[2 * at + 1] = root.im;
  }
  MakeSpectrum(taps.Data(), true);
}

// An inverse transform is the forward one with real and imaginary parts exchanged, before and after.
template <class T>
void ComplexPlan<T>::RunRader(const T *in, T *out, T *scratch, bool inverse, T scale) const {
  const std::ptrdiff_t n = m_length, p = n - 1, half = p / 2;
  const std::int32_t *const places = m_places.Data();
  const std::ptrdiff_t re = inverse ? 1 : 0, im = 1 - re;
  T *const rest = scratch + 2 * p;
  // Value i is that of place places[i], value i + half that of n - places[i].
  for (std::ptrdiff_t i = 0; i < half; ++i) {
    const std::ptrdiff_t place = places[i];
    const T *const x = in + 2 * place, *const y = in + 2 * (n - place);
    T *const to = scratch + 2 * i;
    to[0] = x[re];
    to[1] = x[im];
    to[2 * half] = y[re];
    to[2 * half + 1] = y[im];
  }
  const T first[2] = {in[re], in[im]};
  m_convolution->Forward(scratch, scratch, rest, T{1});
  const T sum[2] = {scratch[0] + first[0], scratch[1] + first[1]};
  Passes<T>::MirroredProduct()(scratch, m_spectrum.Data(), p, true);
  scratch[0] += first[0];
  scratch[1] += first[1];
  m_convolution->Inverse(scratch, scratch, rest, scale);
  out[re] = sum[0] * scale;
  out[im] = sum[1] * scale;
  // Bin places[i] is value -i, and so bin n - places[i] value half - i.
  for (std::ptrdiff_t i = 0; i < half; ++i) {
    const std::ptrdiff_t place = places[i];
    T *const x = out + 2 * place, *const y = out + 2 * (n - place);
    const T *const xFrom = scratch + 2 * (i == 0 ? 0 : p - i), *const yFrom = scratch + 2 * (half - i);
    x[re] = xFrom[0];
    x[im] = xFrom[1];
    y[re] = yFrom[0];
    y[im] = yFrom[1];
  }
}

template <class T>
void ComplexPlan<T>::RunLong(const T *in, T *out, T *scratch, bool inverse, T scale) const {
  if (m_lines.length != 0) {
    Passes<T>::Lines()(m_lines, in, out, scratch, inverse, scale);
  } else if (m_grid.rows != 0) {
    Passes<T>::Grid()(m_grid, in, out, scratch, inverse, scale);
  } else if (m_fourStep.first != 0) {
    Passes<T>::FourStep()(m_fourStep, in, out, scratch, inverse, scale);
  } else if (m_places.Data() != nullptr) {
    RunRader(in, out, scratch, inverse, scale);
  } else if (m_convolution != nullptr) {
    const std::ptrdiff_t n = m_length, p = m_convolution->m_length;
    T *const rest = scratch + 2 * p;
    Passes<T>::Product()(in, m_chirp.Data(), scratch, n, inverse, false);
    std::fill(scratch + 2 * n, rest, T{0});
    m_convolution->Forward(scratch, scratch, rest, T{1});
    Passes<T>::MirroredProduct()(scratch, m_spectrum.Data(), p, false);
    m_convolution->Inverse(scratch, scratch, rest, scale);
    Passes<T>::Product()(scratch, m_chirp.Data(), out, n, false, inverse);
  } else if (m_length <= kMaxSmall) {
    Passes<T>::Small()(m_length, in, out, inverse, scale);
  } else if (m_tiled != nullptr) {
    Passes<T>::Tiled()(*m_tiled, in, out, scratch, inverse, scale);
  } else {
    Passes<T>::Columns()(*m_columns, in, out, scratch, inverse, scale);
  }
}

template <class T>
bool ComplexPlan<T>::ForwardWeighted(const T *in, const T *weights, T *out, T *scratch) const {
  if constexpr (requires { Passes<T>::WeightedGrid(); }) {
    if (m_lines.length != 0) {
      Passes<T>::WeightedLines()(m_lines, in, weights, out, scratch);
      return true;
    }
    if (m_grid.rows != 0) {
      Passes<T>::WeightedGrid()(m_grid, in, weights, out, scratch);
      return true;
    }
    if (m_fourStep.first != 0) {
      Passes<T>::WeightedFourStep()(m_fourStep, in, weights, out, scratch);
      return true;
    }
    if (m_columns != nullptr) {
      Passes<T>::WeightedColumns()(*m_columns, in, weights, out, scratch);
      return true;
    }
  }
  return false;
}

template <class T> std::unique_ptr<RealPlan<T>> RealPlan<T>::Make(int length) {
  if (length < 1) return nullptr;
  auto plan = OrNull([&] { return std::unique_ptr<RealPlan>(new RealPlan(length)); });
  if (plan != nullptr && plan->m_direct == nullptr && plan->m_complex == nullptr) plan.reset();
  return plan;
}

template <class T> std::unique_ptr<Plan> RealPlan<T>::Clone() const {
  return OrNull([&]() -> std::unique_ptr<Plan> { return std::make_unique<RealPlan>(*this); });
}

template <class T>
RealPlan<T>::RealPlan(int length)
    : m_length(length), m_share(static_cast<T>(1.0 / length)), m_direct(DirectReal<T>(length)) {
  if (m_direct != nullptr) return;
  m_complex = ComplexPlan<T>::Make(length % 2 == 0 ? length / 2 : length);
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
    : Plan(other), m_length(other.m_length), m_share(other.m_share), m_direct(other.m_direct),
      m_complex(Copy(other.m_complex)), m_turns(other.m_turns) {}

template <class T> std::size_t RealPlan<T>::ScratchBytes() const {
  if (m_direct != nullptr) return 0;
  // The inverse of an odd length keeps its whole spectrum there.
  const std::size_t spectrum = m_length % 2 == 0 ? 0 : 2 * Size(m_length) * sizeof(T);
  return spectrum + m_complex->ScratchBytes();
}

template <class T> void RealPlan<T>::ForwardLong(const T *in, T *out, T *scratch, T scale) const {
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

template <class T> void RealPlan<T>::InverseLong(const T *in, T *out, T *scratch, T scale) const {
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
