// The element-wise kernels and reductions at every level, beside plain loops, VOLK and memcpy.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/plain.h"
#include "peers/volk.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::TargetLib;

namespace kernels = QORN::kernels;

// The operands of all kernels, one after the other: where an array lies costs up to a half of a kernel's
// time, so that a kernel and its peers have to be given the same places.
class Operands {
public:
  // Operand k: a whole number of cache lines, and no other operand has its place within a page.
  static void *Place(std::size_t k) {
    static const std::unique_ptr<void, Free> space(::operator new(kOperands *kStep, kAlignment));
    return static_cast<char *>(space.get()) + k * kStep;
  }

private:
  static constexpr std::size_t kOperands = 4, kStep = (std::size_t{1} << 27) + 1280;
  static constexpr std::align_val_t kAlignment{4096};
  struct Free {
    void operator()(void *data) const { ::operator delete(data, kAlignment); }
  };
};

template <class T> T Value(std::uint32_t &random, bool one) {
  if constexpr (std::is_class_v<T>) {
    return {Value<decltype(T::re)>(random, one), Value<decltype(T::im)>(random, false) * (one ? 0 : 1)};
  } else {
    random = random * 1664525U + 1013904243U;
    if (one) return T(1);
    return static_cast<T>((static_cast<double>(random >> 8) * 0x1p-24 + 0.5) * 100);
  }
}

// An operand for an argument of type A. A kernel that works in place is repeated on its own results, which
// must neither overflow nor become denormal: its sources are ones.
template <class A>
A Make(std::size_t &operands, std::uint32_t &random, std::size_t n, bool ones, std::size_t &bytes) {
  if constexpr (std::is_same_v<A, int>) {
    return static_cast<int>(n);
  } else if constexpr (std::is_pointer_v<A>) {
    using T = std::remove_const_t<std::remove_pointer_t<A>>;
    T *data = static_cast<T *>(Operands::Place(operands++));
    for (std::size_t i = 0; i < n; ++i) data[i] = Value<T>(random, ones);
    bytes += n * sizeof(T);
    return data;
  } else {
    return Value<A>(random, true);
  }
}

template <class... A>
void Measure(benchmark::State &state, void (*kernel)(A...), std::size_t n, bool inPlace) {
  std::size_t operands = 0;
  std::uint32_t random = 1;
  std::size_t bytes = 0;
  std::tuple<A...> arguments{Make<A>(operands, random, n, inPlace, bytes)...};
  for (auto _ : state) {
    std::apply(kernel, arguments);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(n));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

template <class... A> using Kernel = void (*)(A...);

// One row: ours at every level, then those of the peers that have the kernel.
template <class... A>
void Row(const std::string &name, Kernel<A...> ours, std::vector<std::pair<const char *, Kernel<A...>>> peers,
         bool inMemory = false) {
  const bool inPlace = name.size() > 2 && name.compare(name.size() - 2, 2, "_I") == 0;
  std::vector<std::size_t> sizes = {256, 4096, 65536};
  if (inMemory) sizes.push_back(std::size_t{1} << 24);
  for (const std::size_t n : sizes) {
    const auto add = [&](const std::string &who, Kernel<A...> kernel, const kernels::Level &level) {
      const std::string title = name + "/" + who + "/" + std::to_string(n);
      benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
        const kernels::ScopedLevel scope(level);
        Measure(state, kernel, n, inPlace);
      });
    };
    const std::vector<kernels::Level> levels = kernels::AvailableLevels();
    for (const kernels::Level &level : levels) add(level.name, ours, level);
    for (const auto &peer : peers) add(std::string("peer:") + peer.first, peer.second, levels.back());
  }
}

#if defined(QORN_PEER_VOLK)
#define VOLK(name)                                                                                           \
  , { "volk", &peers::Volk::name }
#else
#define VOLK(name)
#endif
#define PLAIN(name)                                                                                          \
  { "plain", &peers::Plain::name }
#define FAST(name)                                                                                           \
  { "fast", &peers::Fast::name }

const bool registered = [] {
  Row("Zero_32fc", &TargetLib::Zero_32fc, {{"memset", &peers::Plain::Zero_32fc}}, true);
  Row("Set_32f", &TargetLib::Set_32f, {PLAIN(Set_32f)}, true);
  Row("Set_32fc", &TargetLib::Set_32fc, {PLAIN(Set_32fc)});
  Row("Copy_32f", &TargetLib::Copy_32f, {{"memcpy", &peers::Plain::Copy_32f}}, true);
  Row("AddC_32f_I", &TargetLib::AddC_32f_I, {PLAIN(AddC_32f_I)});
  Row("AddC_32fc_I", &TargetLib::AddC_32fc_I, {PLAIN(AddC_32fc_I)});
  Row("Add_32f_I", &TargetLib::Add_32f_I, {PLAIN(Add_32f_I) VOLK(Add_32f_I)}, true);
  Row("Add_64f_I", &TargetLib::Add_64f_I, {PLAIN(Add_64f_I)});
  Row("Add_32fc_I", &TargetLib::Add_32fc_I, {PLAIN(Add_32fc_I)});
  Row("Add_16s_I", &TargetLib::Add_16s_I, {PLAIN(Add_16s_I)});
  Row("Add_32s_I", &TargetLib::Add_32s_I, {PLAIN(Add_32s_I)});
  Row("Sub_32f_I", &TargetLib::Sub_32f_I, {PLAIN(Sub_32f_I)});
  Row("Sub_16s_I", &TargetLib::Sub_16s_I, {PLAIN(Sub_16s_I)});
  Row("Mul_32f_I", &TargetLib::Mul_32f_I, {PLAIN(Mul_32f_I) VOLK(Mul_32f_I)});
  Row("MulC_32f_I", &TargetLib::MulC_32f_I, {PLAIN(MulC_32f_I) VOLK(MulC_32f_I)});
  Row("MulC_32fc_I", &TargetLib::MulC_32fc_I, {PLAIN(MulC_32fc_I)});
  Row("MulC_16s_I", &TargetLib::MulC_16s_I, {PLAIN(MulC_16s_I)});
  Row("Mul_16s_I", &TargetLib::Mul_16s_I, {PLAIN(Mul_16s_I)});
  Row("Mul_32s_I", &TargetLib::Mul_32s_I, {PLAIN(Mul_32s_I)});
  Row("Mul_64f_I", &TargetLib::Mul_64f_I, {PLAIN(Mul_64f_I) VOLK(Mul_64f_I)});
  Row("Mul_32fc_I", &TargetLib::Mul_32fc_I, {PLAIN(Mul_32fc_I)});
  Row("Mul_32fc", &TargetLib::Mul_32fc, {PLAIN(Mul_32fc) VOLK(Mul_32fc)}, true);
  Row("Mul_64fc", &TargetLib::Mul_64fc, {PLAIN(Mul_64fc)});
  Row("DivC_32f_I", &TargetLib::DivC_32f_I, {PLAIN(DivC_32f_I)});
  Row("Div_32f_I", &TargetLib::Div_32f_I, {PLAIN(Div_32f_I) VOLK(Div_32f_I)});
  Row("Div_64f_I", &TargetLib::Div_64f_I, {PLAIN(Div_64f_I)});
  Row("Div_32fc_I", &TargetLib::Div_32fc_I, {PLAIN(Div_32fc_I) VOLK(Div_32fc_I)});
  Row("Div_64fc_I", &TargetLib::Div_64fc_I, {PLAIN(Div_64fc_I)});
  Row("And_8u", &TargetLib::And_8u, {PLAIN(And_8u)});
  Row("Not_8u_I", &TargetLib::Not_8u_I, {PLAIN(Not_8u_I)});
  Row("Abs_32f", &TargetLib::Abs_32f, {PLAIN(Abs_32f)});
  Row("Abs_32s", &TargetLib::Abs_32s, {PLAIN(Abs_32s)});
  Row("Mag_32f", &TargetLib::Mag_32f, {PLAIN(Mag_32f)});
  Row("Mag_32fc", &TargetLib::Mag_32fc, {PLAIN(Mag_32fc) VOLK(Mag_32fc)});
  Row("Mag_64fc", &TargetLib::Mag_64fc, {PLAIN(Mag_64fc)});
  Row("MagSqr_32fc", &TargetLib::MagSqr_32fc, {PLAIN(MagSqr_32fc) VOLK(MagSqr_32fc)});
  Row("MagSqr_64fc", &TargetLib::MagSqr_64fc, {PLAIN(MagSqr_64fc)});
  Row("Sqr_32f_I", &TargetLib::Sqr_32f_I, {PLAIN(Sqr_32f_I)});
  Row("Sqr_32fc_I", &TargetLib::Sqr_32fc_I, {PLAIN(Sqr_32fc_I)});
  Row("Sqrt_32f_I", &TargetLib::Sqrt_32f_I, {PLAIN(Sqrt_32f_I) VOLK(Sqrt_32f_I)});
  Row("Sqrt_32f", &TargetLib::Sqrt_32f, {PLAIN(Sqrt_32f)});
  Row("Sqrt_64f", &TargetLib::Sqrt_64f, {PLAIN(Sqrt_64f)});
  Row<const QORN::Cplx32 *, QORN::Cplx32 *, int>("Sqrt_32fc", &TargetLib::Sqrt_32fc, {});
  Row<const QORN::Cplx64 *, QORN::Cplx64 *, int>("Sqrt_64fc", &TargetLib::Sqrt_64fc, {});
  Row("Convert_16s32f", &TargetLib::Convert_16s32f, {PLAIN(Convert_16s32f) VOLK(Convert_16s32f)}, true);
  Row<const float *, short *, int>("Convert_32f16s", &TargetLib::Convert_32f16s,
                                   {PLAIN(Convert_32f16s) VOLK(Convert_32f16s)});
  Row<const float *, short *, int>("Convert_32f16s_Scaled",
                                   +[](const float *src, short *dst, int len) {
                                     TargetLib::Convert_32f16s(src, dst, len, TargetLib::ConvertRoundNear, 1);
                                   },
                                   {PLAIN(Convert_32f16s_Scaled)});
  Row("Convert_32f32s", &TargetLib::Convert_32f32s, {PLAIN(Convert_32f32s)});
  Row("Convert_32s32f", &TargetLib::Convert_32s32f, {PLAIN(Convert_32s32f)});
  Row("Convert_32f64f", &TargetLib::Convert_32f64f, {PLAIN(Convert_32f64f) VOLK(Convert_32f64f)}, true);
  Row("Convert_64f32f", &TargetLib::Convert_64f32f, {PLAIN(Convert_64f32f) VOLK(Convert_64f32f)});
  Row("Round_32f", &TargetLib::Round_32f, {PLAIN(Round_32f)});
  Row("Floor_32f", &TargetLib::Floor_32f, {PLAIN(Floor_32f)});
  Row("Real_32fc", &TargetLib::Real_32fc, {PLAIN(Real_32fc) VOLK(Real_32fc)}, true);
  Row("RealToCplx_32f", &TargetLib::RealToCplx_32f, {PLAIN(RealToCplx_32f) VOLK(RealToCplx_32f)}, true);
  Row("Conj_32fc", &TargetLib::Conj_32fc, {PLAIN(Conj_32fc) VOLK(Conj_32fc)});
  Row("Flip_32f", &TargetLib::Flip_32f, {PLAIN(Flip_32f)}, true);
  Row("Flip_64f", &TargetLib::Flip_64f, {PLAIN(Flip_64f)});
  Row("Flip_32f_I", &TargetLib::Flip_32f_I, {PLAIN(Flip_32f_I)});
  Row("ConjFlip_32fc", &TargetLib::ConjFlip_32fc, {PLAIN(ConjFlip_32fc)});
  Row("Sum_32f", &TargetLib::Sum_32f, {FAST(Sum_32f) VOLK(Sum_32f)}, true);
  Row("Sum_64f", &TargetLib::Sum_64f, {FAST(Sum_64f)});
  Row("Sum_32fc", &TargetLib::Sum_32fc, {FAST(Sum_32fc)});
  Row("Sum_16s", &TargetLib::Sum_16s, {FAST(Sum_16s)});
  Row("Sum_32s", &TargetLib::Sum_32s, {FAST(Sum_32s)});
  Row("StdDev_32f", &TargetLib::StdDev_32f, {FAST(StdDev_32f) VOLK(StdDev_32f)}, true);
  Row("StdDev_64f", &TargetLib::StdDev_64f, {FAST(StdDev_64f)});
  Row("Norm_L2_32f", &TargetLib::Norm_L2_32f, {FAST(Norm_L2_32f)});
  Row("Max_16s", &TargetLib::Max_16s, {FAST(Max_16s)});
  Row("Max_32f", &TargetLib::Max_32f, {FAST(Max_32f)}, true);
  Row("MaxIndx_16s", &TargetLib::MaxIndx_16s, {FAST(MaxIndx_16s)});
  Row("MaxIndx_32f", &TargetLib::MaxIndx_32f, {FAST(MaxIndx_32f) VOLK(MaxIndx_32f)});
  return true;
}();

} // namespace
