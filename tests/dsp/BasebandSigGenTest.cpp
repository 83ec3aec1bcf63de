// The object behind the signals: parameters, what is kept from call to call, copies, levels, and parameters
// that make no signal. The signals themselves: BasebandSigGenSignalsTest.cpp.
#include "qorn/dsp/BasebandSigGen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "qorn/dsp/ArbRateResampler.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/dsp/FIRBaseFilter.h"
#include "qorn/infra/QORNException.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/UnitConversion.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Filters.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::AllocationCount;
using test::List;
using Gen = BasebandSigGen;
using Samples = std::vector<Cplx32>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Reaches what derived classes reach.
struct Probe : Gen {
  using Gen::ChangeParam;
  using Gen::Gen;
  using Gen::Generate_AM_FM_PM;
  using Gen::Generate_FSK;
  using Gen::Generate_PSK_QAM;
  using Gen::Generate_Pulse;
  using Gen::m_alphabetSize;
  using Gen::m_chirpBandwidth;
  using Gen::m_constellation;
  using Gen::m_cwFrequency;
  using Gen::m_dataSeed;
  using Gen::m_enableRandomPhase;
  using Gen::m_filter;
  using Gen::m_freqOffset;
  using Gen::m_fskDeviation;
  using Gen::m_lengthFactor;
  using Gen::m_marginSymbols;
  using Gen::m_modFrequency;
  using Gen::m_modIndex;
  using Gen::m_noise;
  using Gen::m_noiseAmplitude;
  using Gen::m_noiseIm;
  using Gen::m_noiseRe;
  using Gen::m_noiseSeed;
  using Gen::m_oversampling;
  using Gen::m_paramsChanged;
  using Gen::m_phaseContinuous;
  using Gen::m_phaseSeed;
  using Gen::m_pulsePeriod;
  using Gen::m_pulseWidth;
  using Gen::m_resampler;
  using Gen::m_rolloff;
  using Gen::m_sampleRate;
  using Gen::m_samplesPerSymbol;
  using Gen::m_shapingBuilt;
  using Gen::m_signalAmplitude;
  using Gen::m_signalType;
  using Gen::m_symbolRate;
  using Gen::UpdateParam;
};

constexpr int kTypes = 18;

Gen::SignalType Type(int value) { return static_cast<Gen::SignalType>(value); }

// An object with parameters of use for every type.
Probe Ready(int type) {
  Probe generator(Type(type));
  generator.SetBasicParameters(1e6, 10.0, -60.0, 0.0, true);
  generator.SetParameters_CW(1234.0);
  generator.SetParameters_AM_FM_PM(1000.0, 80.0);
  generator.SetParameters_PSK_QAM(250e3, 0.25);
  generator.SetParameters_FSK(250e3, 50e3, false);
  generator.SetParameters_Pulse(20e-6, 100e-6, 200e3);
  return generator;
}

Samples Signal(Gen &generator, int n, bool addNoise = false) {
  VecCplx32 signal;
  generator.GenerateSignal(signal, n, addNoise);
  return List(signal);
}

// Interface.

TEST(BasebandSigGen, SignalType_Values_AreTheStatedOnes) {
  const int values[] = {Gen::CW,   Gen::AM,    Gen::FM,    Gen::PM,    Gen::BPSK,   Gen::QPSK,
                        Gen::PSK8, Gen::PSK16, Gen::QAM16, Gen::QAM64, Gen::QAM256, Gen::FSK2,
                        Gen::FSK4, Gen::FSK8,  Gen::FSK16, Gen::Pulse, Gen::Chirp,  Gen::Custom};
  for (int i = 0; i < kTypes; ++i) EXPECT_EQ(values[i], i);
  static_assert(std::is_same_v<std::underlying_type_t<Gen::SignalType>, int>);
}

#if defined(__x86_64__) && defined(__GNUC__)
// The slot of a virtual function, in pointers, as the platform's ABI encodes it: 1 + the offset in bytes.
template <class F> std::ptrdiff_t Slot(F function) {
  static_assert(sizeof function == 2 * sizeof(std::ptrdiff_t));
  std::ptrdiff_t words[2];
  std::memcpy(words, &function, sizeof words);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void *));
}

struct Slots : Gen {
  using Gen::Generate_Custom;
  virtual void Added() {}
};

TEST(BasebandSigGen, VirtualSlots_StandInTheOrderOfTheInterface) {
  EXPECT_EQ(Slot(&Gen::GenerateSignal), 0);
  EXPECT_EQ(Slot(&Slots::Generate_Custom), 1);
  EXPECT_EQ(Slot(&Slots::Added), 4); // behind the two entries of the destructor
}
#endif

TEST(BasebandSigGen, Constructor_NewObject_HasTheStatedDefaults) {
  const Probe generator;
  EXPECT_EQ(generator.GetSignalType(), -1);
  EXPECT_TRUE(generator.m_paramsChanged);
  EXPECT_EQ(generator.m_sampleRate, -1.0);
  EXPECT_EQ(generator.m_signalAmplitude, -10.0);
  EXPECT_EQ(generator.m_noiseAmplitude, -60.0);
  EXPECT_EQ(generator.m_freqOffset, 0.0);
  EXPECT_TRUE(generator.m_enableRandomPhase);
  EXPECT_FALSE(generator.m_phaseContinuous);
  EXPECT_EQ(generator.m_filter, nullptr);
  EXPECT_EQ(generator.m_resampler, nullptr);
  EXPECT_EQ(generator.m_lengthFactor, 1.0);
  EXPECT_EQ(generator.m_constellation.GetSize(), 0);
  EXPECT_EQ(generator.m_dataSeed, 3U);
  EXPECT_EQ(generator.m_phaseSeed, 2U);
  EXPECT_EQ(generator.m_noiseSeed, 1U);
  EXPECT_EQ(Probe(Gen::FSK8).GetSignalType(), Gen::FSK8);
}

// Each setter: the fields it stores to, and whether a change is tracked.
TEST(BasebandSigGen, Setters_NewValues_AreStoredAndTrackedAsStated) {
  Probe generator;
  const auto marks = [&generator](const std::function<void()> &set) {
    generator.m_paramsChanged = false;
    set();
    const bool first = generator.m_paramsChanged;
    generator.m_paramsChanged = false;
    set(); // the same again
    EXPECT_FALSE(generator.m_paramsChanged);
    return first;
  };
  EXPECT_FALSE(marks([&] { generator.SetSignalType(Gen::QAM64); }));
  EXPECT_EQ(generator.GetSignalType(), Gen::QAM64);
  EXPECT_TRUE(marks([&] { generator.SetSampleRate(5.0); }));
  EXPECT_EQ(generator.m_sampleRate, 5.0);
  EXPECT_FALSE(marks([&] { generator.SetSignalAmplitude(6.0); }));
  EXPECT_EQ(generator.m_signalAmplitude, 6.0);
  EXPECT_FALSE(marks([&] { generator.SetNoiseAmplitude(7.0); }));
  EXPECT_EQ(generator.m_noiseAmplitude, 7.0);
  EXPECT_FALSE(marks([&] { generator.SetFreqOffset(8.0); }));
  EXPECT_EQ(generator.m_freqOffset, 8.0);
  EXPECT_FALSE(marks([&] { generator.SetEnableRandomPhase(false); }));
  EXPECT_FALSE(generator.m_enableRandomPhase);
  EXPECT_FALSE(marks([&] { generator.SetBasicParameters(5.0, 1.0, 2.0, 3.0, true); }));
  EXPECT_TRUE(marks([&] { generator.SetBasicParameters(9.0, 1.0, 2.0, 3.0, true); }));
  EXPECT_EQ(generator.m_sampleRate, 9.0);
  EXPECT_EQ(generator.m_signalAmplitude, 1.0);
  EXPECT_EQ(generator.m_noiseAmplitude, 2.0);
  EXPECT_EQ(generator.m_freqOffset, 3.0);
  EXPECT_TRUE(generator.m_enableRandomPhase);
  EXPECT_FALSE(marks([&] { generator.SetParameters_CW(11.0); }));
  EXPECT_EQ(generator.m_cwFrequency, 11.0);
  EXPECT_TRUE(marks([&] { generator.SetParameters_AM_FM_PM(12.0, 13.0); }));
  EXPECT_TRUE(marks([&] { generator.SetParameters_AM_FM_PM(14.0, 13.0); }));
  EXPECT_TRUE(marks([&] { generator.SetParameters_AM_FM_PM(14.0, 15.0); }));
  EXPECT_EQ(generator.m_modFrequency, 14.0);
  EXPECT_EQ(generator.m_modIndex, 15.0);
  EXPECT_TRUE(marks([&] { generator.SetParameters_PSK_QAM(16.0, 0.5); }));
  EXPECT_TRUE(marks([&] { generator.SetParameters_PSK_QAM(16.0, 0.6); }));
  EXPECT_EQ(generator.m_symbolRate, 16.0);
  EXPECT_EQ(generator.m_rolloff, 0.6);
  EXPECT_TRUE(marks([&] { generator.SetParameters_FSK(17.0, 18.0, true); }));
  EXPECT_TRUE(marks([&] { generator.SetParameters_FSK(17.0, 19.0, true); }));
  EXPECT_FALSE(marks([&] { generator.SetParameters_FSK(17.0, 19.0, false); }));
  EXPECT_EQ(generator.m_symbolRate, 17.0);
  EXPECT_EQ(generator.m_fskDeviation, 19.0);
  EXPECT_FALSE(generator.m_phaseContinuous); // the argument is dropped
  EXPECT_TRUE(marks([&] { generator.SetParameters_Pulse(20.0, 21.0, 22.0); }));
  EXPECT_TRUE(marks([&] { generator.SetParameters_Pulse(20.0, 21.0, 23.0); }));
  EXPECT_EQ(generator.m_pulseWidth, 20.0);
  EXPECT_EQ(generator.m_pulsePeriod, 21.0);
  EXPECT_EQ(generator.m_chirpBandwidth, 23.0);
}

TEST(BasebandSigGen, ChangeParam_AnySequence_KeepsTheFlagOnceItIsUp) {
  Probe generator;
  double value = 1.0, same = 1.0, other = 2.0, nan = kNaN;
  EXPECT_TRUE(generator.m_paramsChanged);
  generator.ChangeParam(same, value);
  EXPECT_TRUE(generator.m_paramsChanged); // was up, stays up
  generator.m_paramsChanged = false;
  generator.ChangeParam(same, value);
  EXPECT_FALSE(generator.m_paramsChanged);
  generator.ChangeParam(other, value);
  EXPECT_TRUE(generator.m_paramsChanged);
  EXPECT_EQ(value, 2.0);
  generator.ChangeParam(other, value);
  EXPECT_TRUE(generator.m_paramsChanged);
  for (int i = 0; i < 2; ++i) {
    generator.m_paramsChanged = false;
    generator.ChangeParam(nan, value); // from a number, and from not-a-number
    EXPECT_TRUE(generator.m_paramsChanged);
    EXPECT_TRUE(std::isnan(value));
  }
  generator.m_paramsChanged = false;
  generator.UpdateParam(other, value);
  EXPECT_FALSE(generator.m_paramsChanged);
  EXPECT_EQ(value, 2.0);
}

TEST(BasebandSigGen, GenerateSignal_AnyType_ClearsTheFlag) {
  for (int type = -1; type <= kTypes; ++type) {
    Probe generator = Ready(type);
    EXPECT_TRUE(generator.m_paramsChanged);
    Signal(generator, 100);
    EXPECT_FALSE(generator.m_paramsChanged) << type;
  }
}

TEST(BasebandSigGen, GenerateSignal_CustomOrUnknown_OnlyScalesTheVector) {
  for (const int type : {-1, static_cast<int>(Gen::Custom), 18, 1000, -1000}) {
    for (const int n : {-5, 0, 10}) {
      Gen generator(Type(type));
      generator.SetEnableRandomPhase(false);
      VecCplx32 vec(3);
      vec.Set({5.0F, -3.0F});
      generator.GenerateSignal(vec, n, false);
      EXPECT_EQ(List(vec), Samples(3, {0.5F, -3.0F * 0.1F})) << type;
    }
  }
}

TEST(BasebandSigGen, GenerateCustom_DerivedClass_IsCalled) {
  struct Twos : Gen {
    Twos() : Gen(Custom) {}
    void Generate_Custom(VecCplx32 &dst, int n) override { dst.Set({2.0F, 0.0F}, n); }
  };
  const std::unique_ptr<Gen> generator = std::make_unique<Twos>();
  generator->SetEnableRandomPhase(false);
  EXPECT_EQ(Signal(*generator, 4), Samples(4, {0.2F, 0.0F}));
}

TEST(BasebandSigGen, GenerateSignal_LengthZeroOrNegative_GivesNothingOrChangesNothing) {
  for (int type = Gen::AM; type <= Gen::Chirp; ++type) {
    Probe generator = Ready(type);
    VecCplx32 vec(3);
    vec.Set({5.0F, -3.0F});
    for (const int n : {-1, -1000, std::numeric_limits<int>::min()}) {
      generator.GenerateSignal(vec, n, true);
      generator.Generate_AM_FM_PM(vec, n);
      generator.Generate_PSK_QAM(vec, n);
      generator.Generate_FSK(vec, n);
      generator.Generate_Pulse(vec, n);
      EXPECT_EQ(List(vec), Samples(3, {5.0F, -3.0F})) << type;
    }
    EXPECT_EQ(generator.m_phaseSeed, 2U);
    EXPECT_TRUE(generator.m_paramsChanged);
    generator.GenerateSignal(vec, 0, true);
    EXPECT_EQ(vec.GetSize(), 0) << type;
  }
}

// Sequences.

TEST(BasebandSigGen, GenerateSignal_TwoNewObjects_GiveTheSameSequence) {
  for (int type = 0; type < kTypes - 1; ++type) {
    Probe one = Ready(type), other = Ready(type);
    const Samples first = Signal(one, 500, true), second = Signal(one, 500, true);
    EXPECT_EQ(first, Signal(other, 500, true)) << type;
    EXPECT_EQ(second, Signal(other, 500, true)) << type;
    EXPECT_NE(first, second) << type; // seeds are not reset
  }
}

// Cache.

// Whether a signal designs its chain anew. A filter that is kept keeps a mark; without a filter a signal
// that designs nothing allocates nothing.
bool Designs(Probe &generator) {
  if (generator.m_filter) generator.m_filter->SetTimeShift(1.0F);
  const bool marked = generator.m_filter != nullptr;
  VecCplx32 signal(4000);
  const long before = AllocationCount();
  generator.GenerateSignal(signal, 500, false);
  if (!generator.m_filter) return AllocationCount() != before;
  return !marked || test::FilterProbe::TimeShift(*generator.m_filter) != 1.0F;
}

TEST(BasebandSigGen, GenerateSignal_UnchangedParameters_DesignsOnce) {
  for (const int type : {static_cast<int>(Gen::QPSK), static_cast<int>(Gen::FSK4)}) {
    Probe generator = Ready(type);
    EXPECT_TRUE(Designs(generator));
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(Designs(generator));
    const struct {
      const char *what;
      bool designs;
      std::function<void()> set;
    } steps[] = {
        {"the same sample rate", false, [&] { generator.SetSampleRate(1e6); }},
        {"the same symbol rate", false, [&] { generator.SetParameters_PSK_QAM(250e3, 0.25); }},
        {"levels", false, [&] { generator.SetBasicParameters(1e6, 3.0, -3.0, 1e3, true); }},
        {"no random phase", false, [&] { generator.SetEnableRandomPhase(false); }},
        {"the carrier", false, [&] { generator.SetParameters_CW(77.0); }},
        {"a sample rate", true, [&] { generator.SetSampleRate(1.1e6); }},
        {"a roll-off", true, [&] { generator.SetParameters_PSK_QAM(250e3, 0.3); }},
        {"a symbol rate", true, [&] { generator.SetParameters_PSK_QAM(260e3, 0.3); }},
        {"a deviation", true, [&] { generator.SetParameters_FSK(260e3, 5e3, false); }},
        {"a modulation", true, [&] { generator.SetParameters_AM_FM_PM(1.0, 1.0); }},
        {"a pulse", true, [&] { generator.SetParameters_Pulse(1.0, 1.0, 1.0); }},
        {"a change and back", true,
         [&] {
           generator.SetSampleRate(7.0);
           generator.SetSampleRate(1.1e6);
           generator.SetParameters_PSK_QAM(260e3, 0.3);
         }},
        {"a release", true, [&] { generator.ReleaseAll(); }},
    };
    for (const auto &step : steps) {
      step.set();
      EXPECT_EQ(Designs(generator), step.designs) << step.what;
      EXPECT_FALSE(Designs(generator)) << step.what;
    }
  }
}

// A change of type does not count as one of the parameters.
TEST(BasebandSigGen, SetSignalType_AmongPskAndQam_KeepsTheConstellation) {
  Probe generator = Ready(Gen::QPSK);
  Signal(generator, 100);
  generator.SetSignalType(Gen::QAM256);
  Signal(generator, 100);
  EXPECT_EQ(generator.m_constellation.GetSize(), 4);
  generator.ReleaseAll();
  Signal(generator, 100);
  EXPECT_EQ(generator.m_constellation.GetSize(), 256);
  generator.SetSignalType(Gen::FSK2); // the resampler is there
  Signal(generator, 100);
  EXPECT_EQ(generator.m_alphabetSize, 256);
  generator.ReleaseAll();
  Signal(generator, 100);
  EXPECT_EQ(generator.m_alphabetSize, 2);
  EXPECT_EQ(generator.m_filter, nullptr);
  generator.SetSignalType(Gen::BPSK); // the filter is not
  Signal(generator, 100);
  EXPECT_EQ(generator.m_constellation.GetSize(), 2);
}

// The filter's own convolution may ask for memory: as much as it asks for by itself is allowed.
long FilterAllocations(const Probe &generator, int n) {
  if (!generator.m_filter) return 0;
  const double symbols = std::ceil(n / generator.m_samplesPerSymbol + generator.m_marginSymbols);
  VecCplx32 in(static_cast<int>(symbols) * generator.m_oversampling), out;
  std::fill_n(in.GetPtr(), in.GetSize(), Cplx32{1.0F, -1.0F});
  generator.m_filter->Apply(out, in, false);
  const long before = AllocationCount();
  generator.m_filter->Apply(out, in, false);
  return AllocationCount() - before;
}

TEST(BasebandSigGen, GenerateSignal_KeptDestination_AllocatesNothing) {
  for (int type = 0; type < kTypes; ++type) {
    for (const double samplesPerSymbol : {4.0, 2.9}) {
      Probe generator = Ready(type);
      generator.SetParameters_PSK_QAM(1e6 / samplesPerSymbol, 0.3);
      generator.SetFreqOffset(777.0);
      VecCplx32 signal;
      for (const int n : {1000, 1, 1000}) generator.GenerateSignal(signal, n, true);
      for (const int n : {1000, 999, 1, 500}) {
        const long allowed = FilterAllocations(generator, n), before = AllocationCount();
        generator.GenerateSignal(signal, n, true);
        EXPECT_LE(AllocationCount() - before, allowed) << type << ", " << samplesPerSymbol;
      }
    }
  }
}

TEST(BasebandSigGen, LengthFactor_OnceGrown_StaysAndRunsTheChainOnce) {
  Probe generator = Ready(Gen::FSK2);
  Signal(generator, 300);
  const double grown = generator.m_lengthFactor;
  EXPECT_GT(grown, 1.0);
  EXPECT_EQ(generator.m_dataSeed, 3U + 2 * 6003); // twice: it was too short at first
  Signal(generator, 300);
  EXPECT_EQ(generator.m_lengthFactor, grown);
  EXPECT_EQ(generator.m_dataSeed, 3U + 3 * 6003);
  generator.SetSampleRate(2e6);
  generator.SetSampleRate(1e6);
  Signal(generator, 3000);
  EXPECT_LT(generator.m_lengthFactor, grown); // made anew
}

// A short signal may cost more symbols than it shows, but a long one after it costs what it always does.
TEST(BasebandSigGen, LengthFactor_ShortestSignals_DoNotGrowIt) {
  Probe generator = Ready(Gen::FSK2);
  for (int i = 0; i < 3; ++i) Signal(generator, 1);
  EXPECT_EQ(generator.m_lengthFactor, 1.0);
  EXPECT_LE(generator.m_marginSymbols, 24); // 94 samples, 4 to a symbol
  EXPECT_EQ(generator.m_dataSeed, 3U + 4 * 6003);
}

TEST(BasebandSigGen, PskQam_Design_HasTheStatedFigures) {
  Probe generator = Ready(Gen::QAM16);
  Signal(generator, 10);
  EXPECT_EQ(generator.m_samplesPerSymbol, 4.0);
  EXPECT_EQ(generator.m_oversampling, 4);
  EXPECT_EQ(generator.m_shapingBuilt, 1);
  EXPECT_EQ(generator.m_marginSymbols, 201 / 4 * 2 + 2); // 8.75 * 4 / 0.25 = 140 taps are too few
  EXPECT_EQ(generator.m_filter->GetType(), FIRFilterRootRaisedCosine);
  EXPECT_EQ(generator.m_resampler->GetRatio(), 1.0);
  EXPECT_NEAR(DSPUtils::RootMeanSqr(generator.m_constellation), 4.0, 1e-6);
  generator.SetParameters_PSK_QAM(1e6 / 30.5, 0.25);
  Signal(generator, 10);
  EXPECT_EQ(generator.m_oversampling, 31);
  EXPECT_EQ(generator.m_marginSymbols, 1085 / 31 * 2 + 2); // 8.75 * 31 / 0.25
  generator.SetParameters_PSK_QAM(1e6, 0.25);
  Signal(generator, 10);
  EXPECT_EQ(generator.m_oversampling, 2); // at least
  EXPECT_EQ(generator.m_resampler->GetRatio(), 0.5);
}

TEST(BasebandSigGen, ReleaseAll_AfterUse_GivesEverythingBack) {
  Probe generator = Ready(Gen::QPSK);
  Signal(generator, 100, true);
  EXPECT_NE(generator.m_filter, nullptr);
  EXPECT_GT(generator.m_noise.GetCapacity(), 0);
  generator.ReleaseAll();
  generator.ReleaseAll();
  EXPECT_EQ(generator.m_filter, nullptr);
  EXPECT_EQ(generator.m_resampler, nullptr);
  EXPECT_EQ(generator.m_constellation.GetCapacity(), 0);
  EXPECT_EQ(generator.m_noiseRe.GetCapacity(), 0);
  EXPECT_EQ(generator.m_noiseIm.GetCapacity(), 0);
  EXPECT_EQ(generator.m_noise.GetCapacity(), 0);
  EXPECT_EQ(Signal(generator, 100, true).size(), 100U);
}

// Copies.

TEST(BasebandSigGen, Copies_OfAUsedObject_GoOnByThemselves) {
  for (int type = 0; type < kTypes - 1; ++type) {
    Probe plain = Ready(type);
    Signal(plain, 300, true);
    const Samples expected = Signal(plain, 300, true), after = Signal(plain, 300, true);

    auto source = std::make_unique<Probe>(Ready(type));
    Signal(*source, 300, true);
    Probe copy(*source), assigned = Ready(Gen::QAM64);
    Signal(assigned, 700, true);
    assigned = *source;
    EXPECT_TRUE(!source->m_filter || copy.m_filter.get() != source->m_filter.get());
    EXPECT_TRUE(!source->m_resampler || assigned.m_resampler.get() != source->m_resampler.get());
    EXPECT_EQ(copy.m_filter == nullptr, source->m_filter == nullptr); // nothing is designed anew
    EXPECT_EQ(assigned.m_resampler == nullptr, source->m_resampler == nullptr);
    EXPECT_FALSE(copy.m_paramsChanged);
    EXPECT_EQ(Signal(*source, 300, true), expected) << type;
    source.reset();
    EXPECT_EQ(Signal(copy, 300, true), expected) << type;
    EXPECT_EQ(Signal(assigned, 300, true), expected) << type;
    const Probe &self = copy;
    copy = self;
    EXPECT_EQ(Signal(copy, 300, true), after) << type;
  }
}

TEST(BasebandSigGen, Moves_OfAUsedObject_LeaveTheSourceUsable) {
  for (const int type : {static_cast<int>(Gen::QAM16), static_cast<int>(Gen::FSK8)}) {
    Probe plain = Ready(type), source = Ready(type);
    Signal(plain, 300);
    Signal(source, 300);
    const Samples expected = Signal(plain, 300);
    Probe moved(std::move(source)), assigned;
    EXPECT_EQ(Signal(moved, 300), expected);
    assigned = std::move(moved);
    EXPECT_EQ(Signal(assigned, 300), Signal(plain, 300));
    EXPECT_EQ(Signal(source, 300).size(), 300U); // NOLINT: a used object, by contract
    EXPECT_EQ(Signal(moved, 300).size(), 300U);  // NOLINT
  }
}

// Levels.

struct Level {
  explicit Level(const Samples &samples) {
    double power = 0.0, largest = 0.0;
    for (const Cplx32 &x : samples) {
      const double square = static_cast<double>(x.re) * x.re + static_cast<double>(x.im) * x.im;
      power += square / static_cast<double>(samples.size());
      largest = std::max(largest, square);
    }
    rms = UnitConversion::PeakVolt2dBm(std::sqrt(power));
    peak = UnitConversion::PeakVolt2dBm(std::sqrt(largest));
  }
  double rms, peak; // dBm
};

TEST(BasebandSigGen, Level_ConstantEnvelope_IsTheRequestedOneAtEverySample) {
  for (const int type : {0, 2, 3}) {
    for (const double dBm : {-37.5, 0.0, 10.0, 30.0}) {
      for (const double offset : {0.0, 12345.0}) {
        Probe generator = Ready(type);
        generator.SetSignalAmplitude(dBm);
        generator.SetFreqOffset(offset);
        const Level level(Signal(generator, 5000));
        EXPECT_NEAR(level.rms, dBm, 1e-5) << type;
        EXPECT_NEAR(level.peak, dBm, 1e-5) << type;
      }
    }
  }
}

// Whole periods of the wave: the sidebands add m^2 / 2 to the power for a cosine, m^2 / 3 for a triangle.
TEST(BasebandSigGen, Level_Am_IsThatOfItsCarrier) {
  for (const double sign : {1.0, -1.0}) {
    Probe generator = Ready(Gen::AM);
    generator.SetSignalAmplitude(-20.0);
    generator.SetParameters_AM_FM_PM(sign * 100.0, 80.0);
    const Level level(Signal(generator, 50000));
    const double share = sign > 0 ? 0.5 : 1.0 / 3.0;
    EXPECT_NEAR(level.rms, -20.0 + 10.0 * std::log10(1.0 + 0.64 * share), 1e-3);
    EXPECT_NEAR(level.peak, -20.0 + 20.0 * std::log10(1.8), 1e-3);
  }
}

// The mean over many symbols, of which the power differs; five times its deviation.
TEST(BasebandSigGen, Level_PskAndQam_IsTheRootMeanSquare) {
  for (int type = Gen::BPSK; type <= Gen::QAM256; ++type) {
    for (const double samplesPerSymbol : {4.0, 2.5}) {
      Probe generator = Ready(type);
      generator.SetSignalAmplitude(-20.0);
      generator.SetParameters_PSK_QAM(1e6 / samplesPerSymbol, 0.25);
      const Level level(Signal(generator, 100000));
      EXPECT_NEAR(level.rms, -20.0, type < Gen::QAM16 ? 0.03 : 0.1) << type;
      EXPECT_GT(level.peak, -19.5);
      EXPECT_LT(level.peak, -9.0);
    }
  }
}

TEST(BasebandSigGen, Level_Fsk_IsTheRequestedOneInItsSymbols) {
  for (int type = Gen::FSK2; type <= Gen::FSK16; ++type) {
    Probe generator = Ready(type);
    generator.SetSignalAmplitude(-20.0);
    generator.SetParameters_FSK(1e3, 20e3, false); // 1000 samples: jumps of the phase are rare
    const Level level(Signal(generator, 100000));
    EXPECT_NEAR(level.rms, -20.0, 0.15) << type; // what the low-pass takes from the jumps
    Samples signal = Signal(generator, 100000);
    std::vector<double> magnitudes;
    for (const Cplx32 &x : signal) magnitudes.push_back(std::hypot(x.re, x.im));
    std::nth_element(magnitudes.begin(), magnitudes.begin() + 50000, magnitudes.end());
    EXPECT_NEAR(UnitConversion::PeakVolt2dBm(magnitudes[50000]), -20.0, 0.02) << type;
  }
}

TEST(BasebandSigGen, Level_Pulse_IsTheRequestedOneWhileItIsOn) {
  for (const int type : {static_cast<int>(Gen::Pulse), static_cast<int>(Gen::Chirp)}) {
    Probe generator = Ready(type);
    generator.SetSignalAmplitude(-20.0);
    generator.SetParameters_Pulse(-20e-6, 100e-6, 200e3); // on for a fifth of the time
    const Level level(Signal(generator, 10000));
    EXPECT_NEAR(level.peak, -20.0, 1e-4);
    EXPECT_NEAR(level.rms, -20.0 + 10.0 * std::log10(0.2), 1e-4);
  }
}

// Parameters that make no signal.

bool IsFinite(const Samples &samples) {
  return std::all_of(samples.begin(), samples.end(),
                     [](Cplx32 x) { return std::isfinite(x.re) && std::isfinite(x.im); });
}

bool IsSilent(const Samples &samples) {
  return std::all_of(samples.begin(), samples.end(), [](Cplx32 x) { return x.re == 0 && x.im == 0; });
}

// The code of what GenerateSignal throws, 0 if nothing.
int CodeOf(Gen &generator, int n) {
  int code = 0;
  test::PrintedBy([&] { // the vectors tell of it
    VecCplx32 signal;
    code = test::ThrownBy([&] { generator.GenerateSignal(signal, n, false); }).GetErrorCode();
  });
  return code;
}

const double kOddNumbers[] = {0.0,    -0.0,  -1.0,   1.0,    -1e6, kNaN,    kInfinity, -kInfinity,
                              1e-300, 1e300, -1e300, 5e-324, 1e7,  1.7e308, 1e12,      -1e-12};

TEST(BasebandSigGen, NewObject_AnyType_MakesAHarmlessSignal) {
  for (int type = 0; type < kTypes; ++type) {
    Gen generator(Type(type));
    VecCplx32 signal(100);
    const test::AllocationLimit limit(1 << 20);
    generator.GenerateSignal(signal, 100, true);
    EXPECT_EQ(signal.GetSize(), 100) << type;
    EXPECT_TRUE(IsFinite(List(signal))) << type;
  }
}

TEST(BasebandSigGen, SampleRate_OfNoUse_GivesFiniteSignalsOfTheLength) {
  for (int type = 0; type < kTypes - 1; ++type) {
    for (const double rate : kOddNumbers) {
      for (const double offset : {0.0, 1e3}) {
        Probe generator = Ready(type);
        generator.SetSampleRate(rate);
        generator.SetFreqOffset(offset);
        const test::AllocationLimit limit(64 << 20);
        if (rate == 1e12 && type >= Gen::BPSK && type <= Gen::FSK16) continue; // long symbols, but of use
        if (rate >= 1e-300 && rate <= 1.0 && type >= Gen::BPSK && type <= Gen::FSK16) { // countless symbols
          EXPECT_EQ(CodeOf(generator, 200), 11001) << type << ", " << rate;
          continue;
        }
        const Samples signal = Signal(generator, 200);
        EXPECT_EQ(signal.size(), 200U) << type << ", " << rate;
        EXPECT_TRUE(IsFinite(signal)) << type << ", " << rate;
        if (rate == 0.0 || std::isnan(rate)) {
          EXPECT_TRUE(IsSilent(signal)) << type << ", " << rate;
        }
      }
    }
  }
}

TEST(BasebandSigGen, SymbolRate_OfNoUse_IsSilent) {
  for (int type = Gen::BPSK; type <= Gen::FSK16; ++type) {
    for (const double rate : {0.0, -0.0, -1.0, -250e3, kNaN, kInfinity, -kInfinity, 1e308, 1e-300}) {
      Probe generator = Ready(type);
      generator.SetParameters_FSK(rate, 1e3, false);
      {
        const test::AllocationLimit limit(1 << 20);
        const Samples signal = Signal(generator, 200);
        EXPECT_EQ(signal.size(), 200U) << type << ", " << rate;
        EXPECT_TRUE(IsSilent(signal)) << type << ", " << rate;
        EXPECT_EQ(generator.m_dataSeed, 3U);
      }
      generator.SetParameters_FSK(250e3, 1e3, false);
      EXPECT_FALSE(IsSilent(Signal(generator, 200)));
    }
  }
  // A sample and a symbol rate that agree in their signs only.
  for (const int type : {static_cast<int>(Gen::QPSK), static_cast<int>(Gen::FSK2)}) {
    Probe generator = Ready(type);
    generator.SetSampleRate(-1e6);
    generator.SetParameters_FSK(-250e3, 1e3, false);
    EXPECT_TRUE(IsSilent(Signal(generator, 200)));
  }
}

// Longer than a vector can be, or more of them than it can hold: refused like any other want of memory, and
// nothing is asked for.
TEST(BasebandSigGen, SymbolRate_OfEndlessOrCountlessSymbols_ThrowsForMemory) {
  for (const int type : {static_cast<int>(Gen::QPSK), static_cast<int>(Gen::FSK2)}) {
    for (const double rate : {1e6 / 2e9, 1e300, 1e15}) {
      Probe generator = Ready(type);
      generator.SetParameters_FSK(rate, 1e3, false);
      const test::AllocationLimit limit(1 << 20);
      EXPECT_EQ(CodeOf(generator, 2000000000), 11001) << type << ", " << rate;
      if (rate < 1e6) continue;
      EXPECT_EQ(CodeOf(generator, 200), 11001) << type << ", " << rate;
    }
  }
}

TEST(BasebandSigGen, OtherParameters_OfNoUse_AreHarmless) {
  const struct {
    std::vector<int> types;
    void (*set)(Gen &, double);
  } parameters[] = {
      {{Gen::CW}, [](Gen &g, double x) { g.SetParameters_CW(x); }},
      {{Gen::AM, Gen::FM, Gen::PM}, [](Gen &g, double x) { g.SetParameters_AM_FM_PM(x, 50.0); }},
      {{Gen::AM, Gen::FM, Gen::PM}, [](Gen &g, double x) { g.SetParameters_AM_FM_PM(1e3, x); }},
      {{Gen::AM, Gen::FM, Gen::PM}, [](Gen &g, double x) { g.SetParameters_AM_FM_PM(-1e3, x); }},
      {{Gen::QPSK}, [](Gen &g, double x) { g.SetParameters_PSK_QAM(250e3, x); }},
      {{Gen::FSK2, Gen::FSK16}, [](Gen &g, double x) { g.SetParameters_FSK(250e3, x, false); }},
      {{Gen::Pulse, Gen::Chirp}, [](Gen &g, double x) { g.SetParameters_Pulse(x, 100e-6, 1e5); }},
      {{Gen::Pulse, Gen::Chirp}, [](Gen &g, double x) { g.SetParameters_Pulse(20e-6, x, 1e5); }},
      {{Gen::Pulse, Gen::Chirp}, [](Gen &g, double x) { g.SetParameters_Pulse(20e-6, 100e-6, x); }},
      {{Gen::CW, Gen::QPSK, Gen::Pulse}, [](Gen &g, double x) { g.SetFreqOffset(x); }},
      {{Gen::CW, Gen::QPSK}, [](Gen &g, double x) { g.SetSignalAmplitude(x); }},
      {{Gen::CW, Gen::QPSK}, [](Gen &g, double x) { g.SetNoiseAmplitude(x); }},
  };
  for (const auto &parameter : parameters) {
    for (const int type : parameter.types) {
      for (const double odd : kOddNumbers) {
        Probe generator = Ready(type);
        parameter.set(generator, odd);
        const test::AllocationLimit limit(64 << 20);
        EXPECT_EQ(Signal(generator, 200, true).size(), 200U) << type << ", " << odd;
      }
    }
  }
}

// After a design that found no memory the next signal makes it whole.
TEST(BasebandSigGen, GenerateSignal_WithoutMemory_MayBeRepeated) {
  for (const int type :
       {static_cast<int>(Gen::QAM16), static_cast<int>(Gen::FSK4), static_cast<int>(Gen::Chirp)}) {
    int failures = 0;
    for (const std::size_t bytes : {100U, 700U, 1500U, 3000U, 8000U, 20000U, 50000U}) {
      Probe generator = Ready(type);
      Signal(generator, 10);
      generator.ReleaseAll();
      testing::internal::CaptureStdout();
      try {
        VecCplx32 signal;
        const test::AllocationLimit limit(bytes);
        generator.GenerateSignal(signal, 3000, false);
      } catch (const QORNException &) {
        ++failures;
      } catch (const std::bad_alloc &) {
        ++failures;
      }
      testing::internal::GetCapturedStdout();
      const Samples signal = Signal(generator, 1000);
      EXPECT_EQ(signal.size(), 1000U);
      EXPECT_FALSE(IsSilent(signal));
    }
    EXPECT_GT(failures, 2) << type;
  }
}

} // namespace
