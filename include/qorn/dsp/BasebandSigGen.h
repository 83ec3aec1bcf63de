#ifndef QORN_DSP_BASEBANDSIGGEN_H
#define QORN_DSP_BASEBANDSIGGEN_H

#include <memory>
#include <utility>

#include "qorn/Export.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class ArbRateResampler;
class FIRBaseFilter;

/// Makes complex baseband test signals: a carrier, analogue modulations, filtered PSK and QAM, FSK and pulse
/// trains, of any length, at a level in dBm, with a frequency offset, a random phase and noise.
///
///   BasebandSigGen generator(BasebandSigGen::QPSK);
///   generator.SetBasicParameters(10e6, -20.0, -60.0, 0.0, true); // 10 MHz sample rate, -20 dBm
///   generator.SetParameters_PSK_QAM(1e6, 0.22);                  // 1 MHz symbol rate, roll-off 0.22
///   generator.GenerateSignal(signal, 100000, false);
///
/// Level. The unit of the samples is the peak volt across 50 ohm, so a carrier of amplitude A has the level
/// 20 log10(A) + 10 dBm, see UnitConversion::PeakVolt2dBm, and SetSignalAmplitude(10) stands for A = 1. CW,
/// FM, PM, FSK and the inside of a pulse have this level at every sample (FSK but for the resampler's ripple,
/// pulses but for their edges), AM has it as its carrier, PSK and QAM as the root of their mean power.
///
/// Randomness. Symbols, phases and noise are drawn by TargetLib::RandUniform_Direct_32f from three seeds of
/// the object, which start at 3, 2 and 1, are moved on by 6003 with each draw and are never reset: a new
/// object always gives the same sequence of signals, and each signal has draws of its own. A random phase is
/// one draw from 0 to 2 pi, or 0 without a draw while random phases are disabled.
///
/// Cost. The shaping filter, the resampler and the constellation of PSK, QAM and FSK stay in the object. They
/// are made anew by a signal that finds a tracked parameter changed, see the setters, or them missing. Once
/// the longest signal has been made, signals into a kept destination allocate nothing but what the
/// convolution may ask for.
///
/// Parameters are not checked. Where one makes no signal, the signal is silent: n zeros, for which the
/// generator draws nothing. These are: a frequency that is not finite relative to the sample rate, such as
/// any at a sample rate of 0; for PSK, QAM and FSK a symbol rate, or sampleRate / symbolRate, that is not
/// above 0 and finite, twice the rate included, and 2147483647 samples per symbol or more; for pulses a
/// sample rate that is not above 0 and finite, or a period that rounds to no sample. The sample rate of a new
/// object, -1, makes signals that mean nothing. Memory is asked for n samples and, with PSK, QAM and FSK, for
/// n symbolRate / sampleRate symbols and those of the transients of the filter and the resampler, which last
/// for tens of symbols or samples, whichever are longer; QORNException 11001 is thrown if there is none.
///
/// A class that derives from it supplies the type Custom. A copy is an independent object with its own filter
/// and resampler. One object serves one thread at a time.
class QORN_API BasebandSigGen {
public:
  /// The kind of signal. A value that is not named makes none.
  enum SignalType : int {
    CW = 0,      ///< a carrier
    AM = 1,      ///< amplitude modulation
    FM = 2,      ///< frequency modulation
    PM = 3,      ///< phase modulation
    BPSK = 4,    ///< two phases
    QPSK = 5,    ///< four phases, one in each quadrant
    PSK8 = 6,    ///< eight phases
    PSK16 = 7,   ///< sixteen phases
    QAM16 = 8,   ///< a square of 16 points
    QAM64 = 9,   ///< a square of 64 points
    QAM256 = 10, ///< a square of 256 points
    FSK2 = 11,   ///< two frequencies
    FSK4 = 12,   ///< four frequencies
    FSK8 = 13,   ///< eight frequencies
    FSK16 = 14,  ///< sixteen frequencies
    Pulse = 15,  ///< a train of plain pulses
    Chirp = 16,  ///< a train of pulses with a linear chirp in each
    Custom = 17  ///< what a derived class makes
  };

  /// An object without a type, or value -1, which makes no signal.
  BasebandSigGen();

  explicit BasebandSigGen(SignalType type);

  BasebandSigGen(const BasebandSigGen &other);
  BasebandSigGen &operator=(const BasebandSigGen &other);

  /// The source keeps its parameters and loses its filter and resampler, which it makes anew when it is used.
  ///@{
  BasebandSigGen(BasebandSigGen &&other) noexcept;
  BasebandSigGen &operator=(BasebandSigGen &&other) noexcept;
  ///@}

  /// The kind of signal. It is not tracked: a change of type alone among PSK and QAM, or from them to FSK,
  /// keeps the constellation, filter and resampler that were made for the type before. Call ReleaseAll, or
  /// change a tracked parameter, to have them made for the new type.
  ///@{
  void SetSignalType(SignalType type) { m_signalType = type; }
  SignalType GetSignalType() const { return m_signalType; }
  ///@}

  /// The sample rate in hertz, -1 at first. Tracked.
  void SetSampleRate(double sampleRate);

  /// The level in dBm, -10 at first; see the class.
  void SetSignalAmplitude(double signalAmplitude) { m_signalAmplitude = signalAmplitude; }

  /// The level of the noise in dB: it is uniform within plus and minus 10^(noiseAmplitude / 20) in both
  /// parts. -60 at first.
  void SetNoiseAmplitude(double noiseAmplitude) { m_noiseAmplitude = noiseAmplitude; }

  /// The frequency in hertz by which every signal is shifted in the end, 0 at first.
  void SetFreqOffset(double freqOffset) { m_freqOffset = freqOffset; }

  /// Whether phases are random, which they are at first, or 0.
  void SetEnableRandomPhase(bool enable) { m_enableRandomPhase = enable; }

  /// All five at once.
  void SetBasicParameters(double sampleRate, double signalAmplitude, double noiseAmplitude, double freqOffset,
                          bool enableRandomPhase);

  /// The frequency of the carrier in hertz, 0 at first.
  void SetParameters_CW(double cwFrequency) { m_cwFrequency = cwFrequency; }

  /// The modulating frequency in hertz; a negative one selects a triangular wave of frequency -modFrequency
  /// instead of a cosine. modIndex is the depth in percent for AM and the peak deviation for FM and PM: in
  /// hertz for FM, in degrees for PM, or in radians if it is negative, as its absolute value. Both are 0 at
  /// first, and tracked.
  void SetParameters_AM_FM_PM(double modFrequency, double modIndex);

  /// Symbols per second and the roll-off of the root-raised-cosine filter. The symbol rate, which FSK shares,
  /// is 0 at first, the roll-off 0.22. Both are tracked.
  void SetParameters_PSK_QAM(double symbolRate, double rolloff);

  /// Symbols per second and the deviation in hertz of the outermost frequencies, 0 at first. Both are
  /// tracked. The last argument is accepted and not used: the phase jumps where the symbol changes.
  void SetParameters_FSK(double symbolRate, double fskDeviation, bool phaseContinuous);

  /// The width and the period of pulses in seconds and the bandwidth of Chirp in hertz, all 0 at first and
  /// tracked. A positive width adds raised-cosine edges, each of 5 percent of it, half of it within the
  /// width: 1e-6 gives a pulse of 1.05 us. A negative width gives sharp edges: -1e-6 a pulse of 1 us. A
  /// period below the length of the pulse gives a gapless run of pulses.
  void SetParameters_Pulse(double pulseWidth, double pulsePeriod, double chirpBandwidth);

  /// dst = a signal of n samples: what the generator of the type makes, then ScaleAndFreqAndPhaseOffset, then
  /// AddNoise if addNoise is true. Afterwards no parameter counts as changed.
  ///
  /// An n of 0 gives an empty dst, except for CW; a negative n changes nothing. CW takes an n of 0 or less as
  /// the length that dst has. A type that is not named, and Custom in this class, leave dst to the further
  /// steps as it is.
  virtual void GenerateSignal(VecCplx32 &dst, int n, bool addNoise);

protected:
  /// Here it does nothing. A derived class makes n samples in dst, in units of the level's amplitude.
  virtual void Generate_Custom(VecCplx32 &dst, int n);

public:
  virtual ~BasebandSigGen();

  /// dst = n samples of noise, uniform within plus and minus k = 10^(noiseAmplitude / 20) in both parts: n
  /// draws for the real parts, then n for the imaginary ones, with k rounded to float.
  void GenerateNoise(VecCplx32 &dst, int n);

  /// dst[i] += noise[i] with new noise of its length.
  void AddNoise(VecCplx32 &dst);

  /// Gives back the filter, the resampler, the constellation and the memory of the noise. The next signal
  /// makes what it needs.
  void ReleaseAll();

protected:
  /// Owns a part of the chain. Copies own a copy.
  template <class T> class Owner : public std::unique_ptr<T> {
  public:
    Owner() = default;
    Owner(std::unique_ptr<T> owned) noexcept : std::unique_ptr<T>(std::move(owned)) {}
    Owner(const Owner &other);
    Owner(Owner &&other) noexcept = default;
    Owner &operator=(const Owner &other) = delete;
    Owner &operator=(Owner &&other) noexcept = default;
    ~Owner() = default;
  };

  /// dst = src, a tracked parameter. The flag for changed parameters stays if it was up, and goes up if src
  /// is another value than dst; not-a-number is always another one.
  void ChangeParam(const double &src, double &dst);

  /// dst = src.
  void UpdateParam(const double &src, double &dst) { dst = src; }

  /// dst[i] = exp(j (2 pi cwFrequency / sampleRate i + phase)) with a random phase, or 1 without a draw for a
  /// frequency of 0. dst gets the length n, or keeps its own if n is not above 0.
  void Generate_CW(VecCplx32 &dst, int n);

  /// AM, FM and PM. One draw gives the phase of the modulating wave m[k], a cosine or a triangle between -1
  /// and 1, which has a period of an even number of samples. AM: dst[k] = 1 + modIndex / 100 m[k]. FM: dst[k]
  /// = exp(j x), x = 2 pi modIndex / sampleRate (m[0] + ... + m[k]). PM: dst[k] = exp(j d m[k]), d the
  /// deviation in radians. All in float.
  void Generate_AM_FM_PM(VecCplx32 &dst, int n);

  /// PSK and QAM: random symbols (one draw) at a whole number of samples per symbol, at least 2, through the
  /// root-raised-cosine filter of at least 201 taps, then through the resampler to the sample rate; of the
  /// result the last n samples.
  void Generate_PSK_QAM(VecCplx32 &dst, int n);

  /// FSK: random symbols d[i] (one draw) below M, at a whole number S of samples per symbol, at least 2, of
  /// the frequencies fskDeviation (2 d[i] / (M - 1) - 1), with a random phase at the start and, unless
  /// phaseContinuous is true, a new one where the symbol differs from the one before; then through the
  /// resampler from S symbolRate to the sample rate; of the result the last n samples. The frequencies count
  /// relative to the sample rate, so the deviation is exact where that is a multiple of the symbol rate.
  void Generate_FSK(VecCplx32 &dst, int n);

  /// Pulses, each at the end of its period; the period is cut to n samples and the pulse to the period. With
  /// random phases each pulse is turned by a draw more than the one before. With edge = 0.05 pulseWidth, 0
  /// for a negative one, on = |pulseWidth| + edge and r = chirpBandwidth / on, Chirp has the phase 2 pi (r /
  /// 2 t - chirpBandwidth / 2) t at the time t in the pulse. An edge of e samples is (1 + cos(pi k / e - pi))
  /// / 2, 0 <= k < e, at the front, and 1 less that at the end.
  void Generate_Pulse(VecCplx32 &dst, int n);

  /// dst = the points of a type of PSK or QAM in the order of their symbols, none for any other type; the
  /// first quadrant (for PSK the first point) and its rotations, anticlockwise. The squares have odd
  /// coordinates if normalise is false. If it is true, the points are scaled to a mean power of 1.
  static void Construct_PSK_QAM_Constellation(VecCplx32 &dst, SignalType type, bool normalise);

  /// dst = n random integers from 0 to alphabet - 1, alphabet at most 256: one draw from 0 to alphabet -
  /// 1e-5f, truncated.
  void GenerateRandomData(VecInt32 &dst, int alphabet, int n);

  /// v[i] = scale v[i] exp(j (2 pi freqOffset / sampleRate i + phase)), with scale = 10^((signalAmplitude -
  /// 10) / 20) and a random phase. The length stays.
  void ScaleAndFreqAndPhaseOffset(VecCplx32 &v);

  /// A random phase in radians.
  double GetPhase();

  SignalType m_signalType;             ///< see SetSignalType
  bool m_paramsChanged = true;         ///< a tracked parameter has changed since the latest signal
  double m_sampleRate = -1.0;          ///< in hertz
  double m_signalAmplitude = -10.0;    ///< in dBm
  double m_noiseAmplitude = -60.0;     ///< in dB
  double m_freqOffset = 0.0;           ///< in hertz
  bool m_enableRandomPhase = true;     ///< see SetEnableRandomPhase
  double m_cwFrequency = 0.0;          ///< in hertz
  double m_modFrequency = 0.0;         ///< in hertz, negative for a triangle
  double m_modIndex = 0.0;             ///< see SetParameters_AM_FM_PM
  double m_symbolRate = 0.0;           ///< in symbols per second
  double m_rolloff = 0.22;             ///< of the filter of PSK and QAM
  double m_fskDeviation = 0.0;         ///< in hertz
  bool m_phaseContinuous = false;      ///< see Generate_FSK
  int m_shapingBuilt = 0;              ///< 1 once there was a filter; not read
  Owner<FIRBaseFilter> m_filter;       ///< the shaping filter of PSK and QAM, or null
  Owner<ArbRateResampler> m_resampler; ///< from the inner rate to the sample rate, or null
  double m_samplesPerSymbol = 0.0;     ///< the sample rate over the symbol rate
  int m_oversampling = 0;              ///< samples per symbol at the inner rate
  int m_marginSymbols = 0;             ///< symbols made besides those of the signal, for the transients
  double m_lengthFactor = 1.0;         ///< by how much the symbols exceed their plain number
  int m_alphabetSize = 0;              ///< the number of different symbols
  VecCplx32 m_constellation;           ///< the points by symbol, times the oversampling
  double m_pulseWidth = 0.0;           ///< in seconds, negative for sharp edges
  double m_pulsePeriod = 0.0;          ///< in seconds
  double m_chirpBandwidth = 0.0;       ///< in hertz
  unsigned int m_dataSeed = 3;         ///< of symbols
  unsigned int m_phaseSeed = 2;        ///< of random phases
  unsigned int m_noiseSeed = 1;        ///< of noise
  VecReal32 m_noiseRe;                 ///< the parts of the latest noise
  VecReal32 m_noiseIm;
  VecCplx32 m_noise; ///< the noise that was added to the latest signal

private:
  bool MakeWave(int n);
  void FillTriangle(int n);
  bool MakeRates();
  bool MakeShapingChain();
  bool MakeFskChain();
  void ShapeSymbols();
  void KeySymbols();
  void RunChain(VecCplx32 &dst, int n, void (BasebandSigGen::*modulate)());
  void MakePulse(int length, double on, double edge);

  VecReal32 m_wave;
  VecInt32 m_symbols;
  VecCplx32 m_points;
  VecCplx32 m_upsampled;
  VecCplx32 m_modulated; // at the inner rate
};

} // namespace QORN

#endif
