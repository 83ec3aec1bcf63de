// Opening a recording of unknown origin, and streaming its samples.
#ifndef QORN_TOOL_RECORDING_H
#define QORN_TOOL_RECORDING_H

#include <qorn/qorn.h>

#include <cstdint>
#include <memory>
#include <string>

#include "RecordingSource.h"
#include "RecordingWriter.h"

namespace tool {

/// A recording whose header can be read, or a file that is known to have none. Throws DataError with the
/// reason if there is none at path.
class Recording {
public:
  /// An IQF or an XIQ recording, by its content.
  explicit Recording(const std::string &path);
  Recording(const std::string &path, const RawFormat &raw);

  const std::string &Path() const { return m_source->Path(); }
  tool::Format Format() const { return Facts().format; }
  RecordingSource &Source() const { return *m_source; }

  double Rate() const { return m_rate > 0.0 ? m_rate : Facts().rate; } ///< samples per second
  double Centre() const { return m_hasCentre ? m_centre : Facts().centre; }
  double Span() const { return Facts().span; }
  double Step() const { return Facts().step; } ///< volts

  /// What the header promises.
  std::int64_t Samples() const { return Facts().samples; }

  /// Of these, what the file holds.
  std::int64_t Held() const { return Facts().held; }

  /// Other values than those of the header.
  void SetRate(double rate) { m_rate = rate; }
  void SetCentre(double centre) {
    m_hasCentre = true;
    m_centre = centre;
  }

  /// Throws DataError with the reason if the samples make no signal: without a usable number of points or
  /// frames, rate or level.
  void CheckSignal() const;

  /// Throws DataError if a sum of what was computed from the samples is not finite.
  void CheckFinite(double sum) const;

  /// The head of a recording of other samples that keeps what it can of this one's: all but their number.
  RecordingHead Head() const;

private:
  const SourceFacts &Facts() const { return m_source->Facts(); }

  std::unique_ptr<RecordingSource> m_source;
  double m_rate = 0.0; ///< 0 for that of the header
  double m_centre = 0.0;
  bool m_hasCentre = false;
};

/// Delivers samples start to start + count - 1 of a recording as blocks of `points` samples, some hundred
/// thousand at a time, so the memory that it needs does not depend on the recording.
class BlockStream {
public:
  BlockStream(const Recording &recording, std::int64_t start, std::int64_t count, int points);

  /// Fills block with the next points samples, or gives false if fewer are left. Throws DataError if the file
  /// has become too short for them.
  bool Next(QORN::VecCplx32 &block);

  /// The same, but in the end block gets those that are left. False if there are none.
  bool NextOrRest(QORN::VecCplx32 &block);

  /// Frames so far that hold phase and amplitude instead of Q and I.
  std::int64_t PolarFrames() const { return m_polarFrames; }

private:
  void ReadChunk();
  void Take(QORN::VecCplx32 &block, int count);

  RecordingSource &m_source;
  int m_points;
  std::int64_t m_left; ///< samples not yet delivered
  std::int64_t m_next; ///< the first sample behind the chunk
  std::int64_t m_end;  ///< the first sample behind those that are wanted
  QORN::VecCplx32 m_chunk;
  int m_position = 0; ///< the first sample of the chunk that is not yet delivered
  std::int64_t m_polarFrames = 0;
};

} // namespace tool

#endif
