#ifndef QORN_DSP_DECIMATIONFILTER_H
#define QORN_DSP_DECIMATIONFILTER_H

#include <vector>

#include "qorn/Export.h"
#include "qorn/dsp/SFIRFilter.h"

namespace QORN {

/// Divides the rate of a block by 2^S, in S stages that halve it, all with the same T taps (a half-band
/// low-pass of odd length, for instance).
///
/// A stage filters its L samples, keeps the L - T + 1 outputs for which all samples are there, and of these
/// every other one, the first included: (L - T + 2) / 2 samples, rounded down, go on to the next stage. So
/// every block is taken by itself, and no output depends on earlier calls; a signal that is cut into blocks
/// must be cut so that each begins with the samples that charge the filters once more.
///
/// Copies are clones. An object is for one thread at a time.
class QORN_API DecimationFilter {
public:
  /// S = stages, none if it is negative. Throws QORNException 11001 if there is no memory.
  DecimationFilter(int stages, VecReal32 const &taps);

  /// out = what is left of in after the last stage; a copy of in if there is none. out is empty if a stage is
  /// left with fewer than 2 samples before it drops every other one. Without taps all outputs are zero.
  ///
  /// out may be in. Blocks of like size allocate nothing; otherwise the working blocks and out grow as they
  /// have to, and QORNException 11001 is thrown if there is no memory.
  ///@{
  void Apply(VecReal32 &out, VecReal32 const &in);
  void Apply(VecCplx32 &out, VecCplx32 const &in);
  ///@}

  /// A length of blocks that gives at least outputLength outputs, if the taps are of odd number: outputLength
  /// is S times replaced by 2 (outputLength + h), with h = (T - 1) / 2 rounded down.
  int GetRequiredInputLength(int outputLength) const;

  /// The samples that charge the filters before the first output: GetRequiredInputLength(0).
  int GetFilterChargeTime() const;

  /// Clears the delay lines of the stages.
  void Flush();

private:
  template <class V> void Run(V &out, V const &in, V &filtered, V &kept);

  std::vector<SFIRFilter> m_stages;
  int m_tapCount;
  int m_stageCount;
  VecReal32 m_filtered, m_kept;
  VecCplx32 m_cplxFiltered, m_cplxKept;
};

} // namespace QORN

#endif
