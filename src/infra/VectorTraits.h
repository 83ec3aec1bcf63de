// What differs from vector class to vector class: path literals, allocation, and the texts that are printed
// and scanned. The classes differ in more than the element type on purpose; each text is part of the
// contract.
#ifndef QORN_SRC_INFRA_VECTORTRAITS_H
#define QORN_SRC_INFRA_VECTORTRAITS_H

#include <cstdio>

#include "Errors.h"
#include "qorn/infra/QORNMalloc.h"

namespace QORN {

class VecCplx32;
class VecCplx64;
class VecInt16;
class VecInt32;
class VecReal32;
class VecReal64;
class VecUInt32;
class VecUInt8;

/// The paths that exceptions name, and the separator of most dumps.
struct VectorPaths {
  static constexpr const char *kAllocModule = modules::kVector;
  static constexpr const char *kFileModule = "infra\\Vector";
  static constexpr const char *kSeparator = "\n.................";
};
struct IntVectorPaths {
  static constexpr const char *kAllocModule = "infra/IntVector";
  static constexpr const char *kFileModule = "infra\\IntVector";
  static constexpr const char *kSeparator = "\n.................";
};

template <class V> struct VectorTraits;

inline double Wide(float x) { return static_cast<double>(x); }

template <> struct VectorTraits<VecReal32> : VectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::MallocReal32";
  static float *Malloc(int n) { return QORNMalloc::MallocReal32(n); }

  static constexpr const char *kScan[] = {"%f", "%f %f", "%f %f %f"};

  static void PrintElement(int i, float x) { std::printf("\n [%2d]= %g", i, Wide(x)); }
  static void PrintLine(std::FILE *file, int i, float x) {
    std::fprintf(file, "%10d        %.20f\n", i, Wide(x));
  }
  static void PrintMismatch(int i, float x, float arg, float tol) {
    std::printf("\n ==>> Idx:%i, Vec:%.8e, Arg:%.8e, Err:%.8e, Tol:%.8e <<==", i, Wide(x), Wide(arg),
                Wide(x - arg), Wide(tol));
  }
};

template <> struct VectorTraits<VecReal64> : VectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::MallocReal64";
  static double *Malloc(int n) { return QORNMalloc::MallocReal64(n); }

  static constexpr const char *kScan[] = {"%lf", "%lf %lf", "%lf %lf %lf"};
  static constexpr const char *kSeparator = "\n.............................";

  static void PrintElement(int i, double x) { std::printf("\n [%2d]= %g", i, x); }
  static void PrintLine(std::FILE *file, int i, double x) { std::fprintf(file, "%10d        %.16g\n", i, x); }
  static void PrintMismatch(int i, double x, double arg, double tol) {
    std::printf("\n ==>> Idx:%i, Vec:%.16le, Arg:%.16le, Err:%.16le, Tol:%.16le <<==", i, x, arg, x - arg,
                tol);
  }
};

template <> struct VectorTraits<VecCplx32> : VectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::MallocCplx32";
  static Cplx32 *Malloc(int n) { return QORNMalloc::MallocCplx32(n); }

  static constexpr const char *kScan[] = {nullptr, "%f %f", "%f %f %f"};

  static void PrintElement(int i, Cplx32 x) { std::printf("\n [%2d]= %g  %g ", i, Wide(x.re), Wide(x.im)); }
  static void PrintLine(std::FILE *file, int i, Cplx32 x) {
    std::fprintf(file, "%10d    %.20f  %.20f\n", i, Wide(x.re), Wide(x.im));
  }
  static void PrintMismatch(int i, Cplx32 x, Cplx32 arg, float tol) {
    std::printf("\n ==>> Idx:%i, Vec:%.8e %.8e, Arg:%.8e %.8e, Err:%.8e %.8e, Tol:%.8e <<==", i, Wide(x.re),
                Wide(x.im), Wide(arg.re), Wide(arg.im), Wide(x.re - arg.re), Wide(x.im - arg.im), Wide(tol));
  }
};

template <> struct VectorTraits<VecCplx64> : VectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::MallocCplx64";
  static Cplx64 *Malloc(int n) { return QORNMalloc::MallocCplx64(n); }

  static constexpr const char *kScan[] = {nullptr, "%lf %lf", "%lf %lf %lf"};

  static void PrintElement(int i, Cplx64 x) { std::printf("\n [%2d]= %g  %g ", i, x.re, x.im); }
  // One blank between the parts, in the lines before a separator only.
  static void PrintHeadElement(int i, Cplx64 x) { std::printf("\n [%2d]= %g %g ", i, x.re, x.im); }
  static void PrintLine(std::FILE *file, int i, Cplx64 x) {
    std::fprintf(file, "%10d    %.16g  %.16g\n", i, x.re, x.im);
  }
  static void PrintMismatch(int i, Cplx64 x, Cplx64 arg, double tol) {
    std::printf("\n ==>> Idx:%i, Vec:%.16le %.16le, Arg:%.16le %.16le, Err:%.16le %.16le, Tol:%.16le <<==", i,
                x.re, x.im, arg.re, arg.im, x.re - arg.re, x.im - arg.im, tol);
  }
};

template <> struct VectorTraits<VecUInt8> : IntVectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::MallocUInt8";
  static unsigned char *Malloc(int n) { return QORNMalloc::MallocUInt8(n); }

  static void PrintElement(int i, unsigned char x) { std::printf("\n [%2d]= %d", i, int{x}); }
};

template <> struct VectorTraits<VecInt16> : IntVectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::MallocInt16";
  static short *Malloc(int n) { return QORNMalloc::MallocInt16(n); }

  static void PrintElement(int i, short x) { std::printf("\n [%2d]= %d", i, int{x}); }
  static void PrintLine(std::FILE *file, int i, short x) {
    std::fprintf(file, "%10d        %d\n", i, int{x});
  }
};

template <> struct VectorTraits<VecInt32> : IntVectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::MallocInt32";
  static int *Malloc(int n) { return QORNMalloc::MallocInt32(n); }

  static void PrintElement(int i, int x) { std::printf("\n [%2d]= %d", i, x); }
  static void PrintLine(std::FILE *file, int, int x) { std::fprintf(file, "%d\n", x); }
};

template <> struct VectorTraits<VecUInt32> : IntVectorPaths {
  static constexpr const char *kMallocFailed = "Failed QORNMalloc::Malloc(U)Int32";
  static unsigned int *Malloc(int n) { return reinterpret_cast<unsigned int *>(QORNMalloc::MallocInt32(n)); }

  static void PrintElement(int i, unsigned int x) { std::printf("\n [%2d]= %u", i, x); }
  static void PrintLine(std::FILE *file, int, unsigned int x) { std::fprintf(file, "%u\n", x); }
};

} // namespace QORN

#endif
