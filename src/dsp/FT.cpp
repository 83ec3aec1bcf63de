#include "qorn/dsp/FT.h"

#include <new>
#include <utility>

#include "FourierOwner.h"

namespace QORN {

using fourier::ComplexPlan;
using fourier::Plan;
using fourier::RealPlan;
using fourier::Workspace;

namespace {

enum Kind : int { kReal32 = 0, kCplx32 = 1, kReal64 = 2, kCplx64 = 3 };

std::unique_ptr<Plan> MakePlan(int kind, int length) {
  switch (kind) {
  case kReal32:
    return RealPlan<float>::Make(length);
  case kCplx32:
    return ComplexPlan<float>::Make(length);
  case kReal64:
    return RealPlan<double>::Make(length);
  case kCplx64:
    return ComplexPlan<double>::Make(length);
  default:
    return nullptr;
  }
}

} // namespace

struct FT::PlanRecord {
  std::unique_ptr<PlanRecord> next;
  std::unique_ptr<Plan> plan;
  std::size_t workSize;
  int length;
  int kind;
  FftScaleFlag scaleFlag;
  QORNAlgorithm algorithm;

  [[gnu::noinline, gnu::visibility("hidden")]] static void *SetUp(FT &ft, PlanRecord *record, int kind,
                                                                  int length);
};

FT::FT() : FT(FftScaleInverseByN, QORNAlgorithmAccurate) {}

FT::FT(FftScaleFlag scaleFlag, QORNAlgorithm algorithm) : m_scaleFlag(scaleFlag), m_algorithm(algorithm) {}

// A plan that finds no memory is left out: the copy makes it when it is asked for.
FT::FT(const FT &other) : FT(other.m_scaleFlag, other.m_algorithm) {
  try {
    std::unique_ptr<PlanRecord> *end = &m_plans;
    for (const PlanRecord *record = other.m_plans.get(); record != nullptr; record = record->next.get()) {
      auto plan = record->plan->Clone();
      if (plan == nullptr) return;
      *end =
          std::make_unique<PlanRecord>(PlanRecord{nullptr, std::move(plan), record->workSize, record->length,
                                                  record->kind, record->scaleFlag, record->algorithm});
      end = &(*end)->next;
    }
    m_work = std::make_unique<Workspace>();
    if (m_work->Grow(other.m_workSize)) m_workSize = other.m_workSize;
  } catch (const std::bad_alloc &) {
  }
}

FT &FT::operator=(const FT &other) {
  FT copy(other);
  std::swap(m_scaleFlag, copy.m_scaleFlag);
  std::swap(m_algorithm, copy.m_algorithm);
  std::swap(m_plans, copy.m_plans);
  std::swap(m_work, copy.m_work);
  std::swap(m_workSize, copy.m_workSize);
  return *this;
}

// One record at a time: a chain of destructors would need the stack for every plan.
FT::~FT() {
  while (m_plans != nullptr) m_plans = std::move(m_plans->next);
}

int FT::GetPlanCount(int kind) const {
  int count = 0;
  for (const PlanRecord *record = m_plans.get(); record != nullptr; record = record->next.get()) {
    if (record->kind == kind) ++count;
  }
  return count;
}

// The plan of that kind and length, and work memory that is large enough for it; null if either cannot be
// had.
void *FT::SetupFT(int kind, int length) {
  PlanRecord *record = m_plans.get();
  while (record != nullptr && (record->kind != kind || record->length != length ||
                               record->scaleFlag != m_scaleFlag || record->algorithm != m_algorithm)) {
    record = record->next.get();
  }
  if (record != nullptr && m_work != nullptr && record->workSize <= m_workSize) return record->plan.get();
  return PlanRecord::SetUp(*this, record, kind, length);
}

// What a repeated transform does not need: makes what there is not yet.
void *FT::PlanRecord::SetUp(FT &ft, PlanRecord *record, int kind, int length) {
  try {
    if (record == nullptr) {
      auto plan = MakePlan(kind, length);
      if (plan == nullptr) return nullptr;
      const std::size_t workSize = plan->ScratchBytes();
      auto made = std::make_unique<PlanRecord>(
          PlanRecord{nullptr, std::move(plan), workSize, length, kind, ft.m_scaleFlag, ft.m_algorithm});
      made->next = std::move(ft.m_plans);
      ft.m_plans = std::move(made);
      record = ft.m_plans.get();
    }
    if (ft.m_work == nullptr) ft.m_work = std::make_unique<Workspace>();
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
  if (record->workSize > ft.m_workSize) {
    ft.m_workSize = 0;
    if (!ft.m_work->Grow(record->workSize)) return nullptr;
    ft.m_workSize = record->workSize;
  }
  return record->plan.get();
}

template <class T, class P, class Out, class In>
void FT::Transform(int kind, Out &out, const In &in, bool forward) {
  fourier::ResizeAs(out, in);
  const auto *plan = static_cast<const P *>(static_cast<Plan *>(SetupFT(kind, in.GetSize())));
  if (plan != nullptr) fourier::RunAll<T>(*plan, out, in, *m_work, forward, m_scaleFlag);
}

bool FT::ForwardWeighted(VecCplx32 &out, VecCplx32 const &in, const float *weights) {
  fourier::ResizeAs(out, in);
  const auto *plan =
      static_cast<const ComplexPlan<float> *>(static_cast<Plan *>(SetupFT(kCplx32, in.GetSize())));
  if (plan == nullptr || fourier::Scale(m_scaleFlag, *plan, true) != 1.0F) return false;
  return plan->ForwardWeighted(reinterpret_cast<const float *>(in.GetPtr()), weights,
                               reinterpret_cast<float *>(out.GetPtr()), m_work->As<float>());
}

void FT::FT_C32C32(VecCplx32 const &in, VecCplx32 &out, bool forward) {
  Transform<float, ComplexPlan<float>>(kCplx32, out, in, forward);
}

void FT::FT_C64C64(VecCplx64 const &in, VecCplx64 &out, bool forward) {
  Transform<double, ComplexPlan<double>>(kCplx64, out, in, forward);
}

void FT::FT_R32C32(VecReal32 &real, VecCplx32 &cplx, bool forward) {
  if (forward) {
    Transform<float, RealPlan<float>>(kReal32, cplx, real, true);
  } else {
    Transform<float, RealPlan<float>>(kReal32, real, cplx, false);
  }
}

void FT::FT_R64C64(VecReal64 &real, VecCplx64 &cplx, bool forward) {
  if (forward) {
    Transform<double, RealPlan<double>>(kReal64, cplx, real, true);
  } else {
    Transform<double, RealPlan<double>>(kReal64, real, cplx, false);
  }
}

// Flattened: a call takes as long as a good part of a short transform.
[[gnu::flatten]] void FT::Forward(VecCplx32 &out, VecCplx32 const &in) { FT_C32C32(in, out, true); }
[[gnu::flatten]] void FT::Inverse(VecCplx32 &out, VecCplx32 const &in) { FT_C32C32(in, out, false); }
[[gnu::flatten]] void FT::Forward(VecCplx64 &out, VecCplx64 const &in) { FT_C64C64(in, out, true); }
[[gnu::flatten]] void FT::Inverse(VecCplx64 &out, VecCplx64 const &in) { FT_C64C64(in, out, false); }

// The source side of the private forms is only read.
[[gnu::flatten]] void FT::Forward(VecCplx32 &out, VecReal32 const &in) {
  FT_R32C32(const_cast<VecReal32 &>(in), out, true);
}
[[gnu::flatten]] void FT::Forward(VecCplx64 &out, VecReal64 const &in) {
  FT_R64C64(const_cast<VecReal64 &>(in), out, true);
}
[[gnu::flatten]] void FT::Inverse(VecReal32 &out, VecCplx32 const &in) {
  FT_R32C32(out, const_cast<VecCplx32 &>(in), false);
}
[[gnu::flatten]] void FT::Inverse(VecReal64 &out, VecCplx64 const &in) {
  FT_R64C64(out, const_cast<VecCplx64 &>(in), false);
}

} // namespace QORN
