#ifndef QORN_DSP_SEQUENTIALRESAMPLER_H
#define QORN_DSP_SEQUENTIALRESAMPLER_H

#include <memory>

#include "qorn/Export.h"

namespace QORN {

class ArbRateResampler;
class VecCplx32;
class VecReal32;

/// Resamples a record that is too long to hold at once: chunk by chunk through one ArbRateResampler, so that
/// the outputs join as if the record had gone through in one run.
///
///   SequentialResampler resampler(ratio, total, chunkSize);
///   for (int i = 0; i < resampler.GetNumOfChunks(); ++i) {
///     // chunk = GetNumOfPreSamples() samples of the record in front of GetNextIndexInSrc(), then the chunk
///     // (GetChunkSize() samples, in the end GetLastChunkSize()), then GetNumOfPostSamples() behind it;
///     // zeros where the record has no samples
///     resampler.Apply(out, chunk);
///   }
///
/// Where the next chunk begins is known only after the one before: it is the sample in front of the next
/// output's instant. With a ratio below 1 this may lie some samples behind the end of the last chunk, up to 1
/// / ratio, so all chunks together may reach that much further than the record for each of them. The instants
/// of all outputs are those of one run to within the rounding of a time inside a chunk: the fraction of a
/// sample that is carried does not lose digits with the length of the record.
///
/// A copy is an object of its own, with its own resampler and place in the record. One object serves one
/// thread at a time.
class QORN_API SequentialResampler {
public:
  /// A record of totalSamples samples in chunks of chunkSize. The filter, see ArbRateResampler: a window of
  /// 10 input samples, 200 table points per sample, cut-off 0.95, alpha 6.865.
  SequentialResampler(double ratio, long long totalSamples, int chunkSize);

  /// The same with the window in input samples and the table points per sample.
  SequentialResampler(double ratio, long long totalSamples, int chunkSize, float window, int nStep);

  /// The same with the cut-off too. The last argument is not used: alpha is 6.865 in every form.
  SequentialResampler(double ratio, long long totalSamples, int chunkSize, float window, int nStep,
                      float rollf, float alpha);

  SequentialResampler(const SequentialResampler &other);
  SequentialResampler &operator=(const SequentialResampler &other);
  ~SequentialResampler();

  /// Cuts the record into chunks of another size and goes back to its start; the fraction of a start between
  /// samples is lost. A record that is no multiple of chunkSize has a shorter last chunk. A chunkSize that is
  /// not above zero gives no meaningful chunks, and nothing worse.
  void ComputeSeqParams(int chunkSize);

  /// Resamples the next chunk. src is the chunk with its margins as described for the class; dst gets the
  /// chunk's outputs and must not be src. If there are none, dst has the length that
  /// ArbRateResampler::Apply(dst, src, time, len) leaves. A kept dst allocates nothing. After
  /// GetNumOfChunks() calls the record is through; ComputeSeqParams goes back to its start.
  ///
  /// Throws QORNException 11001 if dst cannot grow; the chunk may then be repeated.
  ///@{
  void Apply(VecReal32 &dst, const VecReal32 &src);
  void Apply(VecCplx32 &dst, const VecCplx32 &src);
  ///@}

  int GetChunkSize() const { return m_chunkSize; }
  int GetNumOfChunks() const { return m_numChunks; }
  int GetLastChunkSize() const { return m_lastChunkSize; }

  /// The samples to supply in front of a chunk and behind it.
  ///@{
  int GetNumOfPreSamples() const { return m_history; }
  int GetNumOfPostSamples() const { return m_history; }
  ///@}

  /// The place in the record at which the next chunk begins, its margin not counted.
  long long GetNextIndexInSrc() const { return m_nextIndexInSrc; }

  /// Sets the fraction of a sample at which the next chunk starts, 0 at first.
  void SetFractTime(double t) { m_fractTime = t; }

  /// Chooses the resampler's alternate kernel if the ratio is below 1. It is meant for a record that is
  /// already limited to the band of the output.
  void EnableInternalResampler();

private:
  template <class V> void ApplyNext(V &dst, const V &src);

  long long m_totalSamples;
  int m_chunkIndex = 0;
  int m_chunkSize = 0;
  int m_numChunks = 0;
  int m_lastChunkSize = 0;
  std::unique_ptr<ArbRateResampler> m_resampler;
  double m_ratio;
  int m_history;
  double m_fractTime = 0.0;
  long long m_consumed = 0;
  long long m_nextIndexInSrc = 0;
};

} // namespace QORN

#endif
