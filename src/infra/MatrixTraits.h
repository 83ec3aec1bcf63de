// What differs from matrix class to matrix class: path literals, allocation, and the texts that are printed.
#ifndef QORN_SRC_INFRA_MATRIXTRAITS_H
#define QORN_SRC_INFRA_MATRIXTRAITS_H

#include <cstdint>
#include <cstdio>

#include "VectorTraits.h"
#include "qorn/infra/BitVector.h"

namespace QORN {

class MatReal32;
class MatReal64;

/// The paths that exceptions name, and the texts of elements.
struct RealMatrixTraits {
  static constexpr const char *kAllocModule = "infra/Matrix";
  static constexpr const char *kFileModule = "infra\\Matrix";
  static constexpr const char *kSeparator = "\n.................";

  template <class T> static void Print(std::FILE *file, T x) {
    std::fprintf(file, "%g ", static_cast<double>(x));
  }
  template <class T> static void PrintCsv(std::FILE *file, T x) {
    std::fprintf(file, "%g, ", static_cast<double>(x));
  }

  /// The row at which the tail of a dump begins: it is counted in elements, and so is empty unless the matrix
  /// has one column.
  static std::int64_t Tail(int /*rows*/, int size, int n) { return std::int64_t{size} - n; }
};

template <class M> struct MatrixTraits;

template <> struct MatrixTraits<MatReal32> : RealMatrixTraits {
  static float *Malloc(int n) { return QORNMalloc::MallocReal32(n); }
};

template <> struct MatrixTraits<MatReal64> : RealMatrixTraits {
  static double *Malloc(int n) { return QORNMalloc::MallocReal64(n); }
};

template <> struct MatrixTraits<BitVector> {
  static constexpr const char *kAllocModule = "infra/BitVector";
  static constexpr const char *kFileModule = "infra\\BitVector";
  static constexpr const char *kSeparator = "\n.................";

  static unsigned char *Malloc(int n) { return QORNMalloc::MallocBit(n); }

  static void Print(std::FILE *file, unsigned char b) {
    std::fprintf(file, "%c ", BitVector::GetPrintChar(b));
  }

  static std::int64_t Tail(int rows, int /*size*/, int n) { return std::int64_t{rows} - n; }
};

} // namespace QORN

#endif
