// Opening a recording of unknown origin, and streaming its samples.
#ifndef QORN_TOOL_RECORDING_H
#define QORN_TOOL_RECORDING_H

#include <qorn/qorn.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

/// A recording whose header can be read. Throws DataError with the reason if there is none at path.
class Recording {
public:
  explicit Recording(const std::string &path);

  const QORN::IQFReader &Reader() const { return m_reader; }
  const std::string &Path() const { return m_path; }

  /// Frames that the file holds in full, of those that the header promises.
  int WholeFrames() const { return m_wholeFrames; }
  bool HasFlatness() const { return m_hasFlatness; }

  /// What the header promises.
  std::int64_t Samples() const;

  /// Throws DataError with the reason if the samples make no signal: without a usable number of points or
  /// frames, rate or level.
  void CheckSignal() const;

  /// Throws DataError if a sum of what was computed from the samples is not finite.
  void CheckFinite(double sum) const;

private:
  std::string m_path;
  QORN::IQFReader m_reader;
  int m_wholeFrames = 0;
  bool m_hasFlatness = false;
};

/// Delivers samples start to start + count - 1 of a recording as blocks of `points` samples, a few hundred
/// frames at a time, so the memory that it needs does not depend on the recording.
class BlockStream {
public:
  BlockStream(const QORN::IQFReader &reader, std::int64_t start, std::int64_t count, int points);

  /// Fills block with the next points samples, or gives false if fewer are left.
  bool Next(QORN::VecCplx32 &block);

  /// Frames so far that hold phase and amplitude instead of Q and I.
  std::int64_t PolarFrames() const { return m_polarFrames; }

private:
  void ReadChunk();

  const QORN::IQFReader &m_reader;
  int m_points;
  std::int64_t m_left;       ///< samples not yet delivered
  int m_nextFrame;           ///< the first frame behind the chunk
  std::int64_t m_framesLeft; ///< frames behind the chunk that are wanted
  QORN::VecCplx32 m_chunk;   ///< whole frames
  QORN::VecCplx32 m_frame;   ///< one frame, where frames are read one by one
  int m_position;            ///< the first sample of the chunk that is not yet delivered
  std::int64_t m_polarFrames = 0;
  std::vector<QORN::FrameHeader> m_headers;
};

} // namespace tool

#endif
