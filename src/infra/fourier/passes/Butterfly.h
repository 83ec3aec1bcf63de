// Discrete Fourier transforms of R vectors, straight-line: X[k] = sum over n of x[n] exp(-j 2 pi n k / R), in
// place, in natural order, real and imaginary parts apart. E is a vector or a scalar of T.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_BUTTERFLY_H
#define QORN_SRC_INFRA_FOURIER_PASSES_BUTTERFLY_H

#include "Vec.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

inline constexpr long double kPi = 3.14159265358979323846264338327950288L;

// Power series, evaluated by the compiler for angles of at most pi / 4.
constexpr long double SineNearZero(long double x) {
  long double term = x, sum = x;
  for (int i = 1; i < 16; ++i) sum += term *= -x * x / (2 * i * (2 * i + 1));
  return sum;
}
constexpr long double CosineNearZero(long double x) {
  long double term = 1, sum = 1;
  for (int i = 1; i < 16; ++i) sum += term *= -x * x / ((2 * i - 1) * 2 * i);
  return sum;
}

/// cos(2 pi k / n) and sin(2 pi k / n), by reduction to the first octant.
constexpr long double Cosine(int k, int n) {
  k = (k % n + n) % n;
  if (2 * k > n) k = n - k;
  if (4 * k > n) return -Cosine(n - 2 * k, 2 * n);
  if (8 * k > n) return SineNearZero(2 * kPi * (n - 4 * k) / (4 * n));
  return CosineNearZero(2 * kPi * k / n);
}
constexpr long double Sine(int k, int n) {
  k = (k % n + n) % n;
  if (2 * k > n) return -Sine(n - k, n);
  if (4 * k > n) return Sine(n - 2 * k, 2 * n);
  if (8 * k > n) return CosineNearZero(2 * kPi * (n - 4 * k) / (4 * n));
  return SineNearZero(2 * kPi * k / n);
}

/// x *= w.
template <class E> [[gnu::always_inline]] inline void Turn(E &re, E &im, E wre, E wim) {
  const E r = re, i = im;
  re = MulSub(r, wre, i * wim);
  im = MulAdd(r, wim, i * wre);
}

/// x *= exp(-j 2 pi K / N), the constant known to the compiler.
template <class T, int K, int N, class E> [[gnu::always_inline]] inline void TurnBy(E &re, E &im) {
  if constexpr (K == 0) {
    return;
  } else if constexpr (4 * K == N) {
    const E r = re;
    re = im;
    im = -r;
  } else if constexpr (8 * K == N) {
    constexpr T c = static_cast<T>(Cosine(1, 8));
    const E r = re;
    re = (r + im) * c;
    im = (im - r) * c;
  } else if constexpr (8 * K == 3 * N) {
    constexpr T c = static_cast<T>(Cosine(1, 8));
    const E r = re;
    re = (im - r) * c;
    im = (r + im) * -c;
  } else {
    Turn(re, im, Broadcast<E>(static_cast<T>(Cosine(K, N))), Broadcast<E>(static_cast<T>(-Sine(K, N))));
  }
}

constexpr bool Coprime(int a, int b) {
  while (b != 0) {
    const int t = a % b;
    a = b;
    b = t;
  }
  return a == 1;
}

// The inverse of a modulo n, for coprime a and n.
constexpr int InverseModulo(int a, int n) {
  int x = 0;
  while (a * x % n != 1 % n) ++x;
  return x;
}

// How R falls apart: the first factor of a composite one, 1 of a prime.
constexpr int FirstFactor(int R) {
  return R == 4 || R == 8      ? 2
         : R == 16             ? 4
         : R == 9              ? 3
         : R == 12             ? 4
         : R == 15             ? 3
         : R > 2 && R % 2 == 0 ? 2
                               : 1;
}

template <class T, int R, class E> [[gnu::always_inline]] inline void Butterfly(E (&re)[R], E (&im)[R]);

// An odd prime: the sums and differences of the inputs that stand opposite each other, then one row of
// cosines and one of sines for each pair of outputs.
template <class T, int R, class E> [[gnu::always_inline]] inline void PrimeButterfly(E (&re)[R], E (&im)[R]) {
  constexpr int kHalf = R / 2;
  E sumRe[kHalf], sumIm[kHalf], differenceRe[kHalf], differenceIm[kHalf];
  const E re0 = re[0], im0 = im[0];
  Unroll<kHalf>([&](auto j) {
    sumRe[j] = re[j + 1] + re[R - 1 - j];
    sumIm[j] = im[j + 1] + im[R - 1 - j];
    differenceRe[j] = re[j + 1] - re[R - 1 - j];
    differenceIm[j] = im[j + 1] - im[R - 1 - j];
    re[0] += sumRe[j];
    im[0] += sumIm[j];
  });
  Unroll<kHalf>([&](auto row) {
    constexpr int k = row + 1;
    E evenRe = re0, evenIm = im0, oddRe{}, oddIm{};
    Unroll<kHalf>([&](auto j) {
      constexpr T c = static_cast<T>(Cosine(k * (j + 1), R)), s = static_cast<T>(Sine(k * (j + 1), R));
      const E cosine = Broadcast<E>(c), sine = Broadcast<E>(s);
      evenRe = MulAdd(sumRe[j], cosine, evenRe);
      evenIm = MulAdd(sumIm[j], cosine, evenIm);
      if constexpr (kHalf == 1) {
        // sin(pi / 3) rounds badly, and the error would grow from pass to pass; 1 less it is small.
        const E less = Broadcast<E>(static_cast<T>(1 - Sine(1, 3)));
        oddRe = NegMulAdd(differenceRe[0], less, differenceRe[0]);
        oddIm = NegMulAdd(differenceIm[0], less, differenceIm[0]);
      } else if constexpr (j == 0) {
        oddRe = differenceRe[j] * sine;
        oddIm = differenceIm[j] * sine;
      } else {
        oddRe = MulAdd(differenceRe[j], sine, oddRe);
        oddIm = MulAdd(differenceIm[j], sine, oddIm);
      }
    });
    re[k] = evenRe + oddIm;
    im[k] = evenIm - oddRe;
    re[R - k] = evenRe - oddIm;
    im[R - k] = evenIm + oddRe;
  });
}

// R = A * B without common factor: a transform in two dimensions without twiddle factors (Good 1958).
template <class T, int A, int B, class E>
[[gnu::always_inline]] inline void CoprimeButterfly(E (&re)[A * B], E (&im)[A * B]) {
  constexpr int R = A * B;
  E tableRe[B][A], tableIm[B][A];
  Unroll<B>([&](auto b) {
    Unroll<A>([&](auto a) {
      tableRe[b][a] = re[(B * a + A * b) % R];
      tableIm[b][a] = im[(B * a + A * b) % R];
    });
    Butterfly<T, A>(tableRe[b], tableIm[b]);
  });
  Unroll<A>([&](auto a) {
    E columnRe[B], columnIm[B];
    Unroll<B>([&](auto b) {
      columnRe[b] = tableRe[b][a];
      columnIm[b] = tableIm[b][a];
    });
    Butterfly<T, B>(columnRe, columnIm);
    Unroll<B>([&](auto b) {
      constexpr int k = (B * InverseModulo(B, A) * a + A * InverseModulo(A, B) * b) % R;
      re[k] = columnRe[b];
      im[k] = columnIm[b];
    });
  });
}

// R = A * B in general (Cooley and Tukey 1965).
template <class T, int A, int B, class E>
[[gnu::always_inline]] inline void FactorButterfly(E (&re)[A * B], E (&im)[A * B]) {
  E tableRe[A][B], tableIm[A][B];
  Unroll<A>([&](auto a) {
    Unroll<B>([&](auto b) {
      tableRe[a][b] = re[A * b + a];
      tableIm[a][b] = im[A * b + a];
    });
    Butterfly<T, B>(tableRe[a], tableIm[a]);
    Unroll<B>([&](auto b) { TurnBy<T, a * b, A * B>(tableRe[a][b], tableIm[a][b]); });
  });
  Unroll<B>([&](auto b) {
    E columnRe[A], columnIm[A];
    Unroll<A>([&](auto a) {
      columnRe[a] = tableRe[a][b];
      columnIm[a] = tableIm[a][b];
    });
    Butterfly<T, A>(columnRe, columnIm);
    Unroll<A>([&](auto a) {
      re[B * a + b] = columnRe[a];
      im[B * a + b] = columnIm[a];
    });
  });
}

template <class T, int R, class E> [[gnu::always_inline]] inline void Butterfly(E (&re)[R], E (&im)[R]) {
  constexpr int kFirst = FirstFactor(R);
  if constexpr (R == 1) {
    return;
  } else if constexpr (R == 2) {
    const E a = re[0], b = im[0];
    re[0] = a + re[1];
    im[0] = b + im[1];
    re[1] = a - re[1];
    im[1] = b - im[1];
  } else if constexpr (kFirst == 1) {
    PrimeButterfly<T, R>(re, im);
  } else if constexpr (Coprime(kFirst, R / kFirst)) {
    CoprimeButterfly<T, kFirst, R / kFirst>(re, im);
  } else {
    FactorButterfly<T, kFirst, R / kFirst>(re, im);
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
