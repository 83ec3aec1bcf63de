// Discrete Fourier transforms of R vectors, straight-line as in Butterfly.h, but of interleaved complex
// values: a vector of 2 V scalars holds V of them. A transform takes half the registers that parts in vectors
// of their own do, and loads and stores need no reordering; a multiplication by j costs one shuffle. An
// inverse transform is the same text with the conjugate constants.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_INTERLEAVED_H
#define QORN_SRC_INFRA_FOURIER_PASSES_INTERLEAVED_H

#include "Butterfly.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

/// V interleaved complex values.
template <class T, int V> using Complex = Vec<T, 2 * V>;

/// Complex values of T in the widest register.
template <class T> inline constexpr int kComplexLanes = kRegisterBytes / (2 * static_cast<int>(sizeof(T)));

template <class E> using Scalar = decltype(E{}[0] * 1);
template <class E> inline constexpr int kScalars = static_cast<int>(sizeof(E) / sizeof(Scalar<E>));

struct NeighboursSwapped {
  static constexpr int At(int i) { return i ^ 1; }
};

/// Real and imaginary parts exchanged.
template <class E> [[gnu::always_inline]] inline E Swapped(E x) {
  return Shuffle<NeighboursSwapped, kScalars<E>>(x, x);
}

template <class E, class T, int... I>
[[gnu::always_inline]] inline E AlternatingAs(T even, T odd, Seq<I...>) {
  return E{(I % 2 == 0 ? even : odd)...};
}
/// even, odd, even, odd, ...
template <class E, class T> [[gnu::always_inline]] inline E Alternating(T even, T odd) {
  return AlternatingAs<E>(even, odd, MakeSeq<kScalars<E>>{});
}

/// -j x, or j x in an inverse transform, is Swapped(x) times this, (1, -1) or (-1, 1); so a - j b and a + j b
/// take one multiplication and addition each.
template <class T, bool Inverse, class E> [[gnu::always_inline]] inline E MinusJ() {
  return Inverse ? Alternating<E>(T{-1}, T{1}) : Alternating<E>(T{1}, T{-1});
}

/// x * w, the real parts of w twice each in wre, the imaginary ones as (-w.im, w.im) in wim; or x * conj(w)
/// in an inverse transform.
template <bool Inverse = false, class E> [[gnu::always_inline]] inline E Turned(E x, E wre, E wim) {
  return Inverse ? NegMulAdd(Swapped(x), wim, x * wre) : MulAdd(Swapped(x), wim, x * wre);
}

#if !defined(__FMA__)
template <class E> [[gnu::always_inline]] inline E MulSubAdd(E a, E b, E c) {
  return MulAdd(a, b, c * Alternating<E>(Scalar<E>{-1}, Scalar<E>{1}));
}
template <class E> [[gnu::always_inline]] inline E MulAddSub(E a, E b, E c) {
  return MulAdd(a, b, c * Alternating<E>(Scalar<E>{1}, Scalar<E>{-1}));
}
#endif

template <int Odd> struct NeighbourTwice {
  static constexpr int At(int i) { return i / 2 * 2 + Odd; }
};

/// The real parts, or the imaginary ones, in both places.
template <class E> [[gnu::always_inline]] inline E ReTwice(E x) {
  return Shuffle<NeighbourTwice<0>, kScalars<E>>(x, x);
}
template <class E> [[gnu::always_inline]] inline E ImTwice(E x) {
  return Shuffle<NeighbourTwice<1>, kScalars<E>>(x, x);
}

/// x * w, or x * conj(w) in an inverse transform, w being interleaved as x is.
template <bool Inverse = false, class E> [[gnu::always_inline]] inline E Multiplied(E x, E w) {
  const E re = ReTwice(w);
  const E im = Swapped(x) * ImTwice(w);
  return Inverse ? MulAddSub(x, re, im) : MulSubAdd(x, re, im);
}

/// x * w + y.
template <class E> [[gnu::always_inline]] inline E MultipliedAdd(E x, E w, E y) {
  const E re = ReTwice(w);
  return MulSubAdd(x, re, MulSubAdd(Swapped(x), ImTwice(w), y));
}

/// x * exp(-j 2 pi K / N), the constant known to the compiler.
template <class T, int K, int N, bool Inverse, class E> [[gnu::always_inline]] inline E TurnedBy(E x) {
  constexpr T c = static_cast<T>(Cosine(1, 8));
  if constexpr (K == 0) {
    return x;
  } else if constexpr (4 * K == N) {
    return Swapped(x) * MinusJ<T, Inverse, E>();
  } else if constexpr (8 * K == N) {
    return MulAdd(Swapped(x), MinusJ<T, Inverse, E>(), x) * c;
  } else if constexpr (8 * K == 3 * N) {
    return MulSub(Swapped(x), MinusJ<T, Inverse, E>(), x) * c;
  } else {
    constexpr T re = static_cast<T>(Cosine(K, N)), im = static_cast<T>(-Sine(K, N));
    return Turned<Inverse>(x, Broadcast<E>(re), Alternating<E>(-im, im));
  }
}

template <class T, int R, bool Inverse = false, class E>
[[gnu::always_inline]] inline void Butterfly(E (&x)[R]);

template <class T, bool Inverse, class E> [[gnu::always_inline]] inline void FourPoints(E (&x)[4]) {
  const E j = MinusJ<T, Inverse, E>();
  const E a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = Swapped(x[1] - x[3]);
  x[0] = a + c;
  x[1] = MulAdd(d, j, b);
  x[2] = a - c;
  x[3] = NegMulAdd(d, j, b);
}

// With p = x1 - x5 and q = x3 - x7, bins 1 and 3 of the odd half, turned, are (p - q) - j (p + q) and
// -(p - q) - j (p + q), times sqrt(1/2), which the additions that follow multiply in.
template <class T, bool Inverse, class E> [[gnu::always_inline]] inline void EightPoints(E (&x)[8]) {
  const E j = MinusJ<T, Inverse, E>(), c = Broadcast<E>(static_cast<T>(Cosine(1, 8)));
  E even[4] = {x[0], x[2], x[4], x[6]};
  FourPoints<T, Inverse>(even);
  const E a = x[1] + x[5], p = x[1] - x[5], b = x[3] + x[7], q = x[3] - x[7];
  const E zeroth = a + b, second = Swapped(a - b), less = p - q, more = Swapped(p + q);
  const E first = MulAdd(more, j, less), third = MulSub(more, j, less);
  x[0] = even[0] + zeroth;
  x[4] = even[0] - zeroth;
  x[1] = MulAdd(first, c, even[1]);
  x[5] = NegMulAdd(first, c, even[1]);
  x[2] = MulAdd(second, j, even[2]);
  x[6] = NegMulAdd(second, j, even[2]);
  x[3] = MulAdd(third, c, even[3]);
  x[7] = NegMulAdd(third, c, even[3]);
}

// The second half of four points: of the sum and the difference of inputs 0 and 2, and of those of inputs 1
// and 3, which still lack the factor c.
template <class T, bool Inverse, class E>
[[gnu::always_inline]] inline void FourPointsOf(E evenSum, E evenDifference, E oddSum, E oddDifference, T c,
                                                E (&x)[4]) {
  const E factor = Broadcast<E>(c), turned = MinusJ<T, Inverse, E>() * c, swapped = Swapped(oddDifference);
  x[0] = MulAdd(oddSum, factor, evenSum);
  x[1] = MulAdd(swapped, turned, evenDifference);
  x[2] = NegMulAdd(oddSum, factor, evenSum);
  x[3] = NegMulAdd(swapped, turned, evenDifference);
}

// 4 * 4. The cosines of the factors between the two steps are multiplied in by the additions that follow:
// with t = tan(pi / 8), exp(-j pi / 8) = cos(pi / 8) (1 - j t) and exp(-j 3 pi / 8) = cos(pi / 8) (t - j).
// get(n) gives point n, put(k, value) takes result k. Each is called once, as late and as soon as can be: the
// values that lie between the steps fill sixteen registers.
template <class T, bool Inverse, class E, class Get, class Put>
[[gnu::always_inline]] inline void SixteenPoints(const Get &get, const Put &put) {
  constexpr T kHalf = static_cast<T>(Cosine(1, 8)), kCosine = static_cast<T>(Cosine(1, 16)),
              kTangent = static_cast<T>(Sine(1, 16) / Cosine(1, 16));
  const E j = MinusJ<T, Inverse, E>(), half = Broadcast<E>(kHalf), t = Broadcast<E>(kTangent),
          turned = j * kTangent;
  E row[4][4];
  Unroll<4>([&](auto a) {
    Unroll<4>([&](auto b) { row[a][b] = get(Int<4 * b + a>{}); });
    FourPoints<T, Inverse>(row[a]);
  });
  const auto putColumn = [&](auto b, const E(&column)[4]) {
    Unroll<4>([&](auto a) { put(Int<4 * a + b>{}, column[a]); });
  };
  {
    E column[4] = {row[0][0], row[1][0], row[2][0], row[3][0]};
    FourPoints<T, Inverse>(column);
    putColumn(Int<0>{}, column);
  }
  {
    const E first = MulAdd(Swapped(row[1][1]), turned, row[1][1]),
            second = MulAdd(Swapped(row[2][1]), j, row[2][1]),
            third = MulAdd(Swapped(row[3][1]), j, row[3][1] * t);
    E column[4];
    FourPointsOf<T, Inverse>(MulAdd(second, half, row[0][1]), NegMulAdd(second, half, row[0][1]),
                             first + third, first - third, kCosine, column);
    putColumn(Int<1>{}, column);
  }
  {
    const E first = MulAdd(Swapped(row[1][2]), j, row[1][2]), second = Swapped(row[2][2]),
            third = MulSub(Swapped(row[3][2]), j, row[3][2]);
    E column[4];
    FourPointsOf<T, Inverse>(MulAdd(second, j, row[0][2]), NegMulAdd(second, j, row[0][2]), first + third,
                             first - third, kHalf, column);
    putColumn(Int<2>{}, column);
  }
  {
    const E first = MulAdd(Swapped(row[1][3]), j, row[1][3] * t),
            second = MulSub(Swapped(row[2][3]), j, row[2][3]),
            third = MulAdd(Swapped(row[3][3]), turned, row[3][3]); // to be subtracted
    E column[4];
    FourPointsOf<T, Inverse>(MulAdd(second, half, row[0][3]), NegMulAdd(second, half, row[0][3]),
                             first - third, first + third, kCosine, column);
    putColumn(Int<3>{}, column);
  }
}

// An odd prime, as in Butterfly.h.
template <class T, int R, bool Inverse, class E> [[gnu::always_inline]] inline void PrimePoints(E (&x)[R]) {
  constexpr int kHalf = R / 2;
  const E minusJ = MinusJ<T, Inverse, E>();
  E sum[kHalf], difference[kHalf];
  const E first = x[0];
  Unroll<kHalf>([&](auto j) {
    sum[j] = x[j + 1] + x[R - 1 - j];
    difference[j] = Swapped(x[j + 1] - x[R - 1 - j]);
    x[0] += sum[j];
  });
  Unroll<kHalf>([&](auto row) {
    constexpr int k = row + 1;
    E even = first, odd{};
    Unroll<kHalf>([&](auto j) {
      constexpr T c = static_cast<T>(Cosine(k * (j + 1), R)), s = static_cast<T>(Sine(k * (j + 1), R));
      even = MulAdd(sum[j], Broadcast<E>(c), even);
      if constexpr (kHalf == 1) {
        // sin(pi / 3) rounds badly, and the error would grow from pass to pass; 1 less it is small.
        odd = NegMulAdd(difference[0], Broadcast<E>(static_cast<T>(1 - Sine(1, 3))), difference[0]);
      } else if constexpr (j == 0) {
        odd = difference[j] * Broadcast<E>(s);
      } else {
        odd = MulAdd(difference[j], Broadcast<E>(s), odd);
      }
    });
    x[k] = MulAdd(odd, minusJ, even);
    x[R - k] = NegMulAdd(odd, minusJ, even);
  });
}

// R = A * B: where they have no common factor without twiddle factors (Good 1958), else with them (Cooley and
// Tukey 1965).
template <class T, int A, int B, bool Inverse, class E>
[[gnu::always_inline]] inline void ProductPoints(E (&x)[A * B]) {
  constexpr int R = A * B;
  constexpr bool kCoprime = Coprime(A, B);
  E table[A][B];
  Unroll<A>([&](auto a) {
    Unroll<B>([&](auto b) { table[a][b] = x[kCoprime ? (B * a + A * b) % R : A * b + a]; });
    Butterfly<T, B, Inverse>(table[a]);
    if constexpr (!kCoprime)
      Unroll<B>([&](auto b) { table[a][b] = TurnedBy<T, a * b, R, Inverse>(table[a][b]); });
  });
  Unroll<B>([&](auto b) {
    E column[A];
    Unroll<A>([&](auto a) { column[a] = table[a][b]; });
    Butterfly<T, A, Inverse>(column);
    Unroll<A>([&](auto a) {
      if constexpr (kCoprime) {
        x[(B * InverseModulo(B, A) * a + A * InverseModulo(A, B) * b) % R] = column[a];
      } else {
        x[B * a + b] = column[a];
      }
    });
  });
}

template <class T, int R, bool Inverse, class E> [[gnu::always_inline]] inline void Butterfly(E (&x)[R]) {
  if constexpr (R == 2) {
    const E a = x[0];
    x[0] = a + x[1];
    x[1] = a - x[1];
  } else if constexpr (R == 4) {
    FourPoints<T, Inverse>(x);
  } else if constexpr (R == 8) {
    EightPoints<T, Inverse>(x);
  } else if constexpr (R == 16) {
    E y[16];
    SixteenPoints<T, Inverse, E>([&](auto n) { return x[n]; }, [&](auto k, E value) { y[k] = value; });
    Unroll<16>([&](auto k) { x[k] = y[k]; });
  } else if constexpr (FirstFactor(R) == 1) {
    PrimePoints<T, R, Inverse>(x);
  } else {
    ProductPoints<T, FirstFactor(R), R / FirstFactor(R), Inverse>(x);
  }
}

/// A butterfly between memory and memory: get and put as of SixteenPoints.
template <class T, int R, bool Inverse, class E, class Get, class Put>
[[gnu::always_inline]] inline void Points(const Get &get, const Put &put) {
  if constexpr (R == 16) {
    SixteenPoints<T, Inverse, E>(get, put);
  } else {
    E x[R];
    Unroll<R>([&](auto n) { x[n] = get(n); });
    Butterfly<T, R, Inverse>(x);
    Unroll<R>([&](auto k) { put(k, x[k]); });
  }
}

/// Turns V rows of V complex values into their V columns.
template <class T, int V> [[gnu::always_inline]] inline void TransposeComplex(Complex<T, V> *r) {
  using E = Complex<T, V>;
  if constexpr (V == 1) {
    return;
  } else if constexpr (sizeof(T) == sizeof(float)) {
    // A complex float moves as one double.
    using D = Vec<double, V>;
    D d[V];
    Unroll<V>([&](auto i) { d[i] = reinterpret_cast<D>(r[i]); });
    Transpose<double, V>(d);
    Unroll<V>([&](auto i) { r[i] = reinterpret_cast<E>(d[i]); });
  } else {
    using Even = GroupsEveryOther<2 * V, 2, 0>;
    using Odd = GroupsEveryOther<2 * V, 2, 1>;
    const E a = r[0], b = r[1];
    if constexpr (V == 2) {
      r[0] = Shuffle<Even, 4>(a, b);
      r[1] = Shuffle<Odd, 4>(a, b);
    } else {
      const E c = r[2], d = r[3];
      const E ab0 = Shuffle<Even, 8>(a, b), ab1 = Shuffle<Odd, 8>(a, b);
      const E cd0 = Shuffle<Even, 8>(c, d), cd1 = Shuffle<Odd, 8>(c, d);
      r[0] = Shuffle<Even, 8>(ab0, cd0);
      r[1] = Shuffle<Even, 8>(ab1, cd1);
      r[2] = Shuffle<Odd, 8>(ab0, cd0);
      r[3] = Shuffle<Odd, 8>(ab1, cd1);
    }
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
