// What the vector classes have and, on purpose, do not have. All of it is decided by the compiler: that this
// file compiles is the test.
#include <type_traits>
#include <utility>

// Real classes and no aliases: they can be declared ahead.
namespace QORN {
class VecCplx32;
class VecCplx64;
class VecInt16;
class VecInt32;
class VecReal32;
class VecReal64;
class VecUInt32;
class VecUInt8;
} // namespace QORN

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VecUInt32.h"
#include "qorn/infra/VecUInt8.h"

namespace {

using namespace QORN;

// One question each, of a class V and an argument X.
template <class V, class X>
concept HasAdd = requires(V v, X x) {
  v += x;
  v.Add(x);
};
template <class V, class X>
concept HasSub = requires(V v, X x) {
  v -= x;
  v.Sub(x);
};
template <class V, class X>
concept HasMul = requires(V v, X x) {
  v *= x;
  v.Mul(x);
};
template <class V, class X>
concept HasDiv = requires(V v, X x) {
  v /= x;
  v.Div(x);
};
template <class V, class X>
concept HasAnyAdd = requires(V v, X x) {
  v += x;
}
|| requires(V v, X x) { v.Add(x); };
template <class V, class X>
concept HasAnySub = requires(V v, X x) {
  v -= x;
}
|| requires(V v, X x) { v.Sub(x); };
template <class V, class X>
concept HasAnyMul = requires(V v, X x) {
  v *= x;
}
|| requires(V v, X x) { v.Mul(x); };
template <class V, class X>
concept HasAnyDiv = requires(V v, X x) {
  v /= x;
}
|| requires(V v, X x) { v.Div(x); };
template <class V>
concept HasEquality = requires(const V v) {
  v == v;
  v != v;
};
template <class V>
concept HasAnyEquality = requires(const V v) {
  v == v;
}
|| requires(const V v) { v != v; };
template <class V>
concept HasIsEqual = requires(const V v) {
  v.IsEqual(v, 0);
};
template <class V>
concept HasRamp = requires(V v) {
  v.Ramp(1, 0, 0);
};
template <class V>
concept HasMaxMin = requires(const V v) {
  v.Max();
  v.Min();
};
template <class V>
concept HasAnyMaxMin = requires(const V v) {
  v.Max();
}
|| requires(const V v) { v.Min(); };
template <class V>
concept HasSum = requires(const V v) {
  v.Sum();
};
template <class V>
concept HasMean = requires(const V v) {
  v.Mean();
};
template <class V>
concept HasStdDev = requires(const V v) {
  v.StdDev();
}
|| requires(const V v) { v.Var(); };
template <class V>
concept HasPointers = requires(V v, decltype(v.GetPtr()) p) {
  v.Import(p, 1);
  v.Export(p, 1);
};
template <class V>
concept HasTextFiles = requires(V v, const char *path) {
  v.Import(path, true);
  v.Dump(path, true);
};
template <class V>
concept HasColumns = requires(V v, const char *path) {
  v.Import(path, 3, 1);
};
template <class V>
concept HasDump = requires(const V v) {
  v.Dump(1);
};
template <class V, class P>
concept ImportsFrom = requires(V v, const P *p) {
  v.Import(p, 1);
};
template <class V, class P>
concept ImportsPairsFrom = requires(V v, const P *p) {
  v.Import(p, p, 1);
};
template <class V, class P>
concept ExportsTo = requires(const V v, P *p) {
  v.Export(p, 1);
};
template <class V, class P>
concept ExportsPairsTo = requires(const V v, P *p) {
  v.Export(p, p, 1);
};
template <class V>
concept HasSubOfRanges = requires(V v) {
  v.Sub(v, 0, 0, 0);
};

template <class V> constexpr bool IsValue() {
  return std::is_default_constructible_v<V> && std::is_copy_constructible_v<V> &&
         std::is_copy_assignable_v<V> && std::is_constructible_v<V, int> && !std::is_convertible_v<int, V> &&
         std::has_virtual_destructor_v<V> && HasDump<V>;
}
static_assert(IsValue<VecReal32>() && IsValue<VecReal64>() && IsValue<VecCplx32>() && IsValue<VecCplx64>());
static_assert(IsValue<VecInt16>() && IsValue<VecInt32>() && IsValue<VecUInt8>() && IsValue<VecUInt32>());

// Operators return the object itself.
static_assert(std::is_same_v<decltype(std::declval<VecReal32 &>() += 1.0f), VecReal32 &>);
static_assert(std::is_same_v<decltype(std::declval<VecReal64 &>() /= VecReal64()), VecReal64 &>);
static_assert(std::is_same_v<decltype(std::declval<VecCplx32 &>() *= 1.0f), VecCplx32 &>);
static_assert(std::is_same_v<decltype(std::declval<VecCplx64 &>() -= Cplx64()), VecCplx64 &>);
static_assert(std::is_same_v<decltype(std::declval<VecInt16 &>() *= VecInt16()), VecInt16 &>);
static_assert(std::is_same_v<decltype(std::declval<VecInt32 &>() = VecReal32()), VecInt32 &>);
static_assert(std::is_same_v<decltype(std::declval<VecReal32 &>() = VecInt32()), VecReal32 &>);
static_assert(std::is_same_v<decltype(std::declval<VecReal32 &>().Add(1.0f)), void>);

// Real vectors.
static_assert(HasAdd<VecReal32, VecReal32> && HasAdd<VecReal32, float> && HasAdd<VecReal32, int> &&
              HasAdd<VecReal32, double>);
static_assert(HasSub<VecReal64, VecReal64> && HasSub<VecReal64, double> && HasSub<VecReal64, int>);
static_assert(HasMul<VecReal32, float> && HasDiv<VecReal32, float> && HasDiv<VecReal64, VecReal64>);
static_assert(HasEquality<VecReal32> && HasEquality<VecReal64>);
static_assert(HasIsEqual<VecReal32> && HasIsEqual<VecReal64>);
static_assert(HasRamp<VecReal32> && HasMaxMin<VecReal32> && HasSum<VecReal32> && HasMean<VecReal32> &&
              HasStdDev<VecReal32> && HasTextFiles<VecReal32> && HasColumns<VecReal32>);
static_assert(HasRamp<VecReal64> && HasMaxMin<VecReal64> && HasSum<VecReal64> && HasMean<VecReal64> &&
              HasStdDev<VecReal64> && HasTextFiles<VecReal64> && HasColumns<VecReal64>);
static_assert(ImportsFrom<VecReal32, float> && ImportsFrom<VecReal32, double> &&
              ImportsFrom<VecReal32, short> && ImportsFrom<VecReal32, unsigned short>);
static_assert(ImportsFrom<VecReal64, float> && ImportsFrom<VecReal64, double> &&
              !ImportsFrom<VecReal64, short> && !ImportsFrom<VecReal64, unsigned short>);
static_assert(ExportsTo<VecReal32, float> && ExportsTo<VecReal32, double>);
static_assert(ExportsTo<VecReal64, double> && !ExportsTo<VecReal64, float>);
static_assert(std::is_constructible_v<VecReal32, const VecReal64 &> &&
              std::is_constructible_v<VecReal64, const VecReal32 &>);
static_assert(std::is_assignable_v<VecReal32 &, const VecReal64 &> &&
              std::is_assignable_v<VecReal32 &, const VecInt32 &> &&
              std::is_assignable_v<VecReal64 &, const VecReal32 &> &&
              std::is_assignable_v<VecReal64 &, const VecInt32 &>);
static_assert(!std::is_constructible_v<VecReal32, const VecInt32 &> &&
              !std::is_constructible_v<VecReal32, const VecCplx32 &>);

// Complex vectors.
static_assert(HasAdd<VecCplx32, VecCplx32> && HasAdd<VecCplx32, Cplx32> && !HasAnyAdd<VecCplx32, float>);
static_assert(HasSub<VecCplx64, VecCplx64> && HasSub<VecCplx64, Cplx64> && !HasAnySub<VecCplx64, double>);
static_assert(HasMul<VecCplx32, Cplx32> && HasMul<VecCplx32, float> && HasMul<VecCplx32, int>);
static_assert(HasDiv<VecCplx64, Cplx64> && HasDiv<VecCplx64, VecCplx64> && !HasAnyDiv<VecCplx64, double>);
static_assert(HasEquality<VecCplx32> && HasEquality<VecCplx64>);
static_assert(HasIsEqual<VecCplx32> && HasIsEqual<VecCplx64>);
static_assert(HasMaxMin<VecCplx32> && HasSum<VecCplx32> && HasMean<VecCplx32> && HasTextFiles<VecCplx32>);
static_assert(HasMaxMin<VecCplx64> && HasSum<VecCplx64> && HasMean<VecCplx64> && HasTextFiles<VecCplx64>);
static_assert(!HasStdDev<VecCplx32> && !HasRamp<VecCplx32> && !HasColumns<VecCplx32>);
static_assert(!HasStdDev<VecCplx64> && !HasRamp<VecCplx64> && !HasColumns<VecCplx64>);
static_assert(ImportsFrom<VecCplx32, Cplx32> && ImportsFrom<VecCplx32, float> &&
              !ImportsFrom<VecCplx32, double>);
static_assert(ImportsFrom<VecCplx64, Cplx64> && ImportsFrom<VecCplx64, double> &&
              !ImportsFrom<VecCplx64, float>);
static_assert(ImportsPairsFrom<VecCplx32, float> && ImportsPairsFrom<VecCplx32, double> &&
              ImportsPairsFrom<VecCplx64, float> && ImportsPairsFrom<VecCplx64, double>);
static_assert(ExportsPairsTo<VecCplx32, float> && ExportsPairsTo<VecCplx32, double>);
static_assert(ExportsPairsTo<VecCplx64, double> && !ExportsPairsTo<VecCplx64, float>);
static_assert(HasSubOfRanges<VecCplx32> && !HasSubOfRanges<VecCplx64>);
static_assert(std::is_constructible_v<VecCplx32, const VecCplx64 &> &&
              std::is_constructible_v<VecCplx32, const VecReal32 &> &&
              std::is_constructible_v<VecCplx32, const VecReal32 &, const VecReal32 &>);
static_assert(std::is_constructible_v<VecCplx64, const VecCplx32 &> &&
              std::is_constructible_v<VecCplx64, const VecReal64 &> &&
              std::is_constructible_v<VecCplx64, const VecReal64 &, const VecReal64 &>);

// Integer vectors: no division and no operator== at all, and each class has its share of the rest.
static_assert(!HasAnyDiv<VecInt16, VecInt16> && !HasAnyDiv<VecInt16, short>);
static_assert(!HasAnyDiv<VecInt32, VecInt32> && !HasAnyDiv<VecInt32, int>);
static_assert(!HasAnyDiv<VecUInt8, VecUInt8> && !HasAnyDiv<VecUInt8, unsigned char>);
static_assert(!HasAnyDiv<VecUInt32, VecUInt32> && !HasAnyDiv<VecUInt32, unsigned>);
static_assert(!HasAnyEquality<VecInt16> && !HasAnyEquality<VecInt32> && !HasAnyEquality<VecUInt8> &&
              !HasAnyEquality<VecUInt32>);

static_assert(HasAdd<VecInt16, VecInt16> && HasAdd<VecInt16, short> && HasSub<VecInt16, VecInt16> &&
              HasSub<VecInt16, short> && HasMul<VecInt16, VecInt16> && HasMul<VecInt16, short>);
static_assert(HasAdd<VecInt32, VecInt32> && HasAdd<VecInt32, int> && HasSub<VecInt32, VecInt32> &&
              HasSub<VecInt32, int> && HasMul<VecInt32, VecInt32> && HasMul<VecInt32, int>);
static_assert(!HasAnyAdd<VecUInt8, VecUInt8> && !HasAnyAdd<VecUInt8, unsigned char> &&
              !HasAnySub<VecUInt8, VecUInt8> && !HasAnyMul<VecUInt8, VecUInt8>);
static_assert(!HasAnyAdd<VecUInt32, VecUInt32> && !HasAnyAdd<VecUInt32, unsigned> &&
              !HasAnySub<VecUInt32, VecUInt32> && !HasAnyMul<VecUInt32, VecUInt32>);

static_assert(HasMaxMin<VecInt16> && HasSum<VecInt16> && HasMaxMin<VecInt32> && HasSum<VecInt32>);
static_assert(!HasAnyMaxMin<VecUInt8> && !HasSum<VecUInt8> && !HasAnyMaxMin<VecUInt32> && !HasSum<VecUInt32>);
static_assert(!HasMean<VecInt16> && !HasStdDev<VecInt16> && !HasMean<VecInt32> && !HasStdDev<VecInt32>);

static_assert(!HasRamp<VecInt16> && HasRamp<VecInt32> && !HasRamp<VecUInt8> && !HasRamp<VecUInt32>);
static_assert(HasPointers<VecInt16> && HasPointers<VecInt32> && HasPointers<VecUInt8> &&
              !HasPointers<VecUInt32>);
static_assert(HasTextFiles<VecInt16> && HasTextFiles<VecInt32> && !HasTextFiles<VecUInt8> &&
              HasTextFiles<VecUInt32>);
static_assert(HasIsEqual<VecInt16> && HasIsEqual<VecInt32> && !HasIsEqual<VecUInt8> && HasIsEqual<VecUInt32>);
static_assert(std::is_assignable_v<VecInt32 &, const VecReal32 &> &&
              std::is_assignable_v<VecInt32 &, const VecReal64 &>);
static_assert(!std::is_constructible_v<VecInt32, const VecReal32 &> &&
              !std::is_assignable_v<VecInt16 &, const VecReal32 &>);

} // namespace
