#ifndef QORN_DSP_OFDMSIGGEN_H
#define QORN_DSP_OFDMSIGGEN_H

#include "qorn/Export.h"
#include "qorn/dsp/BasebandSigGen.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecInt32.h"

namespace QORN {

class FFT;

/// A burst in the physical-layer frame of IEEE Std 802.11a-1999 (clause 17: OFDM, 64-point numerology), at
/// any sample rate. A test signal and not a modem: the training fields, the pilots, the SIGNAL symbol and the
/// rates are the standard's, the data symbols carry random constellation points that went through no
/// scrambler, coder or interleaver. One departure: carrier -8 of the short training field has the opposite
/// sign of the standard's.
///
///   OFDMSigGen generator;
///   generator.SetSampleRate(40e6);
///   generator.SetParameters(20e6, OFDMSigGen::Mbps54, 0.25);
///   generator.GenerateSignal(burst, 40000, false);
///
/// The frame. Symbols are made at 2 rate, by transforms of 128 points, and then resampled. With G, the guard
/// interval of guardFraction * 128 samples, a burst is, counted at 2 rate, one after the other and without
/// windowing between the symbols,
///   silence, n / 10 samples, rounded down, but at most 100 symbols,
///   the short training field, 320 samples, and the long one, 320 samples,
///   the SIGNAL symbol, and then the data symbols, 128 + G samples each,
///   silence, 128 + G samples.
/// As many data symbols are made as fit n samples of the output along with SIGNAL, but at most 32760 / (data
/// bits per symbol), so that LENGTH stays in its twelve bits. LENGTH is their number times the data bits per
/// symbol, over 8, rounded down. Where not even SIGNAL fits, the burst is the training fields alone.
///
/// dst holds the first n samples of the burst at the sample rate; where n is longer than the burst, the burst
/// recurs as it is, data and all. The silence in front is not counted in what fits, so a burst below the
/// limit is cut in its last data symbols. It does count at 2 rate: with sampleRate at 2 rate it takes a tenth
/// of dst, and with sampleRate at 20 rate all of it, up to the limit of 100 symbols.
///
/// The sample rate. The resampler of ratio = sampleRate / (2 rate) has a window of 16 samples with 50 table
/// points per sample, alpha 6.1422, and a cut-off of 0.98 rate or 1.25 ratio rate, whichever is less; below a
/// ratio of 1 it runs its alternate kernel, see ArbRateResampler. It takes its margins from the burst: the
/// first 9 samples at 2 rate, and below a ratio of 1 the first 8 / ratio, rounded down, plus 1. Its filter
/// reaches 8 samples to either side; a receiver whose window keeps that far within symbol and guard sees
/// orthogonal carriers, with gains within 0.02 dB of 1 from a ratio of 1 on and within 0.06 dB from 0.5 on.
/// Below that the sample rate does not hold the band. The error vector magnitude of pilots and data is below
/// -120 dB at ratios of 1 and 0.5, where all instants are those of samples, and below -60 dB at all others
/// from 0.5 on, where images of the carriers, which the filter rejects by 64 dB, may fall into the band.
///
/// The level. Over the training fields and the symbols, the root mean square is 10^((signalAmplitude - 10) /
/// 20), to within 0.01 dB from a ratio of 1 on. This holds for each training field and for each SIGNAL, BPSK
/// and QPSK symbol; for 16-QAM and 64-QAM in the mean over the random points. Silence does not count.
///
/// Bad input. Nothing is thrown for it. An n of zero or less gives an empty dst. A ratio that is not from
/// 1e-6 to 65536, such as that of a sample rate that was never set, gives n zeros, and so does a burst that
/// is too short for the resampler's margins.
///
/// The transform, the training fields, the constellation and the resampler are kept between calls and made
/// anew after SetParameters or a new sample rate. With them and a dst that is kept, a call of the same n or a
/// smaller one allocates nothing. The data go on from call to call; a new object always gives the same
/// sequence of bursts.
///
/// A copy is an object of its own. One object serves one thread at a time. Throws QORNException 11001 if
/// there is no memory.
class QORN_API OFDMSigGen : public BasebandSigGen {
public:
  /// The standard's modulation and coding schemes by data rate at a rate of 20 MHz. Any other value acts as
  /// Mbps6.
  enum McsType : int {
    Mbps6 = 0,  ///< BPSK, 24 data bits per symbol
    Mbps9 = 1,  ///< BPSK, 36
    Mbps12 = 2, ///< QPSK, 48
    Mbps18 = 3, ///< QPSK, 72
    Mbps24 = 4, ///< 16-QAM, 96
    Mbps36 = 5, ///< 16-QAM, 144
    Mbps48 = 6, ///< 64-QAM, 192
    Mbps54 = 7  ///< 64-QAM, 216
  };

  /// SetParameters(20e6, Mbps6, 0.25), and the signal type Custom, by which GenerateSignal makes bursts.
  OFDMSigGen();

  OFDMSigGen(const OFDMSigGen &other);
  OFDMSigGen &operator=(const OFDMSigGen &other);
  ~OFDMSigGen() override;

  /// The source keeps its parameters and makes the rest anew when it is used.
  ///@{
  OFDMSigGen(OFDMSigGen &&other) noexcept;
  OFDMSigGen &operator=(OFDMSigGen &&other) noexcept;
  ///@}

  /// The rate of the frame in Hz, 64 times the spacing of the carriers; a negative rate is minus the spacing.
  /// What comes out below 1000 or is not a number is replaced by 20e6. The guard interval as a fraction of
  /// the symbol without it, rounded to 1 / 128; not above 0 or not a number gives 0.25, and above 1 acts
  /// as 1.
  void SetParameters(double rate, McsType mcs, double guardFraction);

protected:
  /// dst = n samples of the burst of unit level, as described for the class.
  void Generate_Custom(VecCplx32 &dst, int n) override;

  int m_fftOversampling;         ///< rate of the transform's output over that of the frame, 2
  double m_fftRate;              ///< of the transform's output, Hz
  int m_fftLength;               ///< points of the transform, 128
  double m_guardFraction;        ///< as it was set
  McsType m_mcs;                 ///< as it was set
  int m_rateBits;                ///< the RATE field, R1 as the top bit
  int m_modOrder;                ///< points of the constellation
  int m_dataBitsPerSymbol;       ///< that coded data would have
  int m_numDataSymbols = 0;      ///< in the latest burst; -1 if SIGNAL did not fit either
  double m_symbolDuration = 0.0; ///< s, with guard
  int m_symbolFftLength = 0;     ///< points of the transform as built
  int m_cpLength = 0;            ///< samples of the guard interval
  int m_symbolLength = 0;        ///< samples of a symbol with guard

private:
  bool IsBuilt() const;
  double GetRatio() const;
  void Build();
  void MakeBurst(int n);
  void GenerateSTF(VecCplx32 &dst);
  void GenerateLTF(VecCplx32 &dst);
  void GeneratePreamble(VecCplx32 &dst);
  void GenerateSymbol(VecCplx32 &dst, int index);
  void GenerateSIGNALData(VecInt32 &dst);

  VecCplx32 m_preamble;
  VecCplx32 m_signalMap;
  VecInt32 m_pilotIndex;
  VecCplx32 m_pilotValues;
  VecInt32 m_dataCarrierIndex;
  VecCplx32 m_dataMap;
  double m_outputGain = 0.0;
  Owner<FFT> m_fft;
  int m_history = 0; // of the resampler that goes with the transform
  VecInt32 m_symbolData;
  VecCplx32 m_symbol;
  VecCplx32 m_spectrum;
  VecCplx32 m_burst;
  VecCplx32 m_resampled;
};

} // namespace QORN

#endif
