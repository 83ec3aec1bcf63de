#include "qorn/dsp/OFDMSigGen.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

#include "Clone.h"
#include "OfdmFrame.h"
#include "infra/Errors.h"
#include "qorn/dsp/ArbRateResampler.h"
#include "qorn/dsp/FFT.h"
#include "qorn/infra/Complex.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {

constexpr double kStandardRate = 2e7; // Hz
constexpr double kLeastRate = 1000.0;
constexpr double kStandardGuard = 0.25;
constexpr int kStandardPoints = 64;
constexpr int kMostLeadSymbols = 100;
constexpr int kMostDataBits = 32760; // of the 4095 octets that LENGTH can state

// Beyond these the n samples lie within one sample of the burst, or the burst within a few of the n.
constexpr double kLeastRatio = 1e-6;
constexpr double kMostRatio = 65536.0;

int Bin(int carrier, int length) { return carrier < 0 ? length + carrier : carrier; }

// The last `guard` samples of x, and then x `times` times.
void Guarded(Cplx32 *dst, const VecCplx32 &x, int guard, int times) {
  const int n = x.GetSize();
  TargetLib::Copy_32fc(x.GetPtr(n - guard), dst, guard);
  for (int i = 0; i < times; ++i) TargetLib::Copy_32fc(x.GetPtr(), dst + guard + i * n, n);
}

} // namespace

template <> BasebandSigGen::Owner<FFT>::Owner(const Owner &other) : Owner(Clone(other)) {}

OFDMSigGen::OFDMSigGen() : BasebandSigGen(Custom) { SetParameters(kStandardRate, Mbps6, kStandardGuard); }
OFDMSigGen::OFDMSigGen(const OFDMSigGen &other) = default;
OFDMSigGen::OFDMSigGen(OFDMSigGen &&other) noexcept = default;
OFDMSigGen &OFDMSigGen::operator=(OFDMSigGen &&other) noexcept = default;

OFDMSigGen &OFDMSigGen::operator=(const OFDMSigGen &other) {
  // What can fail comes first.
  OFDMSigGen copy(other);
  return *this = std::move(copy);
}

OFDMSigGen::~OFDMSigGen() = default;

void OFDMSigGen::SetParameters(double rate, McsType mcs, double guardFraction) {
  const double ofdmRate = rate < 0.0 ? -kStandardPoints * rate : rate;
  m_fftOversampling = 2;
  m_fftRate = m_fftOversampling * (ofdmRate >= kLeastRate ? ofdmRate : kStandardRate);
  m_fftLength = m_fftOversampling * kStandardPoints;
  m_guardFraction = guardFraction > 0.0 ? guardFraction : kStandardGuard;
  m_mcs = mcs;
  const ofdm::Rate row = ofdm::RateOf(mcs);
  m_rateBits = row.rateBits;
  m_modOrder = row.modOrder;
  m_dataBitsPerSymbol = row.dataBitsPerSymbol;
  m_paramsChanged = true;
  m_fft.reset(); // a signal of another type may take the flag back
}

// A ratio of zero makes a resampler without outputs.
double OFDMSigGen::GetRatio() const {
  const double ratio = m_sampleRate / m_fftRate;
  return ratio >= kLeastRatio && ratio <= kMostRatio ? ratio : 0.0;
}

// A copied transform may have found no memory. The resampler may be that of a signal of another type: its
// filter is longer at the same ratio.
bool OFDMSigGen::IsBuilt() const {
  return !m_paramsChanged && m_fft && m_fft->m_work && m_resampler && m_resampler->GetRatio() == GetRatio() &&
         m_resampler->GetHistory() == m_history;
}

void OFDMSigGen::Build() {
  ReleaseAll();
  m_samplesPerSymbol = 0.0; // another type's resampler is gone, and it is not to take this one for its own
  m_symbolFftLength = m_fftLength;
  m_cpLength = static_cast<int>(std::lround(m_fftLength * std::min(m_guardFraction, 1.0)));
  m_symbolLength = m_symbolFftLength + m_cpLength;
  const int order = std::countr_zero(static_cast<unsigned>(m_fftLength));
  m_fft = std::make_unique<FFT>(order, FftScaleNone, QORNAlgorithmAccurate, false);
  // A transform without memory would leave the carriers as they are.
  if (!m_fft->m_work) Throw(errors::kMemoryAllocation, modules::kVector);
  m_symbolDuration = m_symbolLength / m_fftRate;
  m_spectrum.Resize(m_symbolFftLength);
  GeneratePreamble(m_preamble);

  m_signalMap.Resize(2);
  m_signalMap[0] = Complex::Cplx(3.1415927F);
  m_signalMap[1] = Complex::Cplx(0.0F);
  switch (m_modOrder) {
  case 2:
    Construct_PSK_QAM_Constellation(m_dataMap, BPSK, true);
    break;
  case 4:
    Construct_PSK_QAM_Constellation(m_dataMap, QPSK, true);
    break;
  case 16:
    Construct_PSK_QAM_Constellation(m_dataMap, QAM16, true);
    break;
  default:
    Construct_PSK_QAM_Constellation(m_dataMap, QAM64, true);
  }
  m_pilotIndex.Resize(static_cast<int>(std::size(ofdm::kPilots)));
  m_pilotValues.Resize(m_pilotIndex.GetSize());
  for (int i = 0; i < m_pilotIndex.GetSize(); ++i) {
    m_pilotIndex[i] = Bin(ofdm::kPilots[i].carrier, m_symbolFftLength);
    m_pilotValues[i] = {static_cast<float>(ofdm::kPilots[i].value), 0.0F};
  }
  const auto carriers = ofdm::DataCarriers();
  m_dataCarrierIndex.Resize(static_cast<int>(carriers.size()));
  for (int i = 0; i < m_dataCarrierIndex.GetSize(); ++i) {
    m_dataCarrierIndex[i] = Bin(carriers[static_cast<std::size_t>(i)], m_symbolFftLength);
  }
  m_lengthFactor = 1.0;
  m_outputGain = 1.0 / std::sqrt(52.0);

  const double ratio = GetRatio();
  const auto rolloff = static_cast<float>(std::min(static_cast<double>(0.98F), ratio * 1.25));
  m_resampler = std::make_unique<ArbRateResampler>(ratio, 16.0F, 50, rolloff, 6.1422F);
  m_resampler->UseAlternateResampler(ratio < 1.0);
  m_history = m_resampler->GetHistory();
}

void OFDMSigGen::GenerateSTF(VecCplx32 &dst) {
  const int n = m_symbolFftLength;
  m_spectrum.SetZero();
  for (const auto &[carrier, value] : ofdm::kShortTraining) {
    const auto part = static_cast<float>(value);
    m_spectrum[Bin(carrier, n)] = {part, part};
  }
  m_fft->Inverse(m_spectrum);
  m_spectrum.Mul(static_cast<float>(std::sqrt(2.1666666666666665)));
  dst.Resize(2 * n + n / 2);
  Guarded(dst.GetPtr(), m_spectrum, n / 2, 2);
}

void OFDMSigGen::GenerateLTF(VecCplx32 &dst) {
  const int n = m_symbolFftLength;
  m_spectrum.SetZero();
  for (int carrier = -26; carrier <= 26; ++carrier) {
    m_spectrum[Bin(carrier, n)] = {static_cast<float>(ofdm::kLongTraining[carrier + 26]), 0.0F};
  }
  m_fft->Inverse(m_spectrum);
  dst.Resize(2 * n + n / 2);
  Guarded(dst.GetPtr(), m_spectrum, n / 2, 2);
}

void OFDMSigGen::GeneratePreamble(VecCplx32 &dst) {
  VecCplx32 shortTraining, longTraining;
  GenerateSTF(shortTraining);
  GenerateLTF(longTraining);
  const int n = shortTraining.GetSize();
  dst.Resize(n + longTraining.GetSize());
  TargetLib::Copy_32fc(shortTraining.GetPtr(), dst.GetPtr(), n);
  TargetLib::Copy_32fc(longTraining.GetPtr(), dst.GetPtr(n), longTraining.GetSize());
}

void OFDMSigGen::GenerateSIGNALData(VecInt32 &dst) {
  const auto bits = ofdm::CodedSignal(m_rateBits, m_numDataSymbols * m_dataBitsPerSymbol / 8);
  dst.Resize(static_cast<int>(bits.size()));
  TargetLib::Copy_32s(bits.data(), dst.GetPtr(), dst.GetSize());
}

void OFDMSigGen::GenerateSymbol(VecCplx32 &dst, int index) {
  if (index == 0) {
    GenerateSIGNALData(m_symbolData);
  } else {
    GenerateRandomData(m_symbolData, m_dataMap.GetSize(), m_dataCarrierIndex.GetSize());
  }
  const VecCplx32 &map = index == 0 ? m_signalMap : m_dataMap;
  const auto polarity = static_cast<float>(ofdm::PilotPolarity(index));
  m_spectrum.SetZero();
  for (int i = 0; i < m_dataCarrierIndex.GetSize(); ++i) {
    m_spectrum[m_dataCarrierIndex[i]] = map[m_symbolData[i]];
  }
  for (int i = 0; i < m_pilotIndex.GetSize(); ++i) {
    m_spectrum[m_pilotIndex[i]] = {polarity * m_pilotValues[i].re, polarity * m_pilotValues[i].im};
  }
  m_fft->Inverse(m_spectrum);
  dst.Resize(m_symbolLength);
  Guarded(dst.GetPtr(), m_spectrum, m_cpLength, 1);
}

void OFDMSigGen::MakeBurst(int n) {
  const double fitting = std::floor(m_lengthFactor * (n / m_sampleRate / m_symbolDuration));
  const int most = kMostDataBits / m_dataBitsPerSymbol;
  m_numDataSymbols =
      fitting >= 1.0 ? static_cast<int>(std::min(fitting - 1.0, static_cast<double>(most))) : -1;

  const int lead = std::min(n / 10, kMostLeadSymbols * m_symbolLength);
  m_burst.Resize(lead + m_preamble.GetSize() + (m_numDataSymbols + 2) * m_symbolLength);
  m_burst.SetZero();
  Cplx32 *to = m_burst.GetPtr(lead);
  TargetLib::Copy_32fc(m_preamble.GetPtr(), to, m_preamble.GetSize());
  to += m_preamble.GetSize();
  for (int index = 0; index <= m_numDataSymbols; ++index, to += m_symbolLength) {
    GenerateSymbol(m_symbol, index);
    TargetLib::Copy_32fc(m_symbol.GetPtr(), to, m_symbolLength);
  }
}

void OFDMSigGen::Generate_Custom(VecCplx32 &dst, int n) {
  if (!IsBuilt()) Build();
  dst.Resize(std::max(n, 0));
  if (n <= 0) return;
  MakeBurst(n);

  // No more of the burst than n outputs take, which bounds what a large ratio asks for.
  const double ratio = m_resampler->GetRatio(), margins = 2.0 * m_history + 2.0;
  if (!(ratio > 0.0 && m_burst.GetSize() > margins)) {
    dst.SetZero();
    return;
  }
  const double enough = margins + std::ceil(n / ratio) + 1.0;
  if (enough < m_burst.GetSize()) m_burst.Truncate(0, static_cast<int>(enough));
  m_resampler->Apply(m_resampled, m_burst);
  for (int i = 0; i < n;) {
    const int count = std::min(n - i, m_resampled.GetSize());
    TargetLib::Copy_32fc(m_resampled.GetPtr(), dst.GetPtr(i), count);
    i += count;
  }
  dst.Mul(static_cast<float>(m_outputGain));
}

} // namespace QORN
