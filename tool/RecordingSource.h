// What stands behind a recording: the files of each format.
#ifndef QORN_TOOL_RECORDINGSOURCE_H
#define QORN_TOOL_RECORDINGSOURCE_H

#include <qorn/qorn.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "RecordingFormat.h"

namespace tool {

/// What a header tells and a file holds. Nothing of it is checked.
struct SourceFacts {
  Format format = Format::kIqf;
  double rate = 0.0;          ///< samples per second
  double centre = 0.0;        ///< hertz
  double span = 0.0;          ///< hertz; 0 if it is not known
  double step = 1.0;          ///< volts of one step, of 1 for floats
  double level = 0.0;         ///< dBm: the reference level
  std::int64_t samples = 0;   ///< that the header promises
  std::int64_t held = 0;      ///< of these, those that the file holds
  std::string inHeader;       ///< what the header promises, such as "4 frames"
  std::string inFile;         ///< as many as the file holds, such as "2"
  bool hasFlatness = false;   ///< behind the frames
  const char *rateEntry = ""; ///< the entry of the header that tells the rate
  const char *centreEntry = "";
  const char *noLevel = ""; ///< why there is no level if there is none
};

/// A recording of one format, open for reading.
class RecordingSource {
public:
  virtual ~RecordingSource() = default;
  RecordingSource(const RecordingSource &) = delete;
  RecordingSource &operator=(const RecordingSource &) = delete;

  const std::string &Path() const { return m_path; }
  const SourceFacts &Facts() const { return m_facts; }

  /// Throws DataError with the reason if the header tells of no samples.
  virtual void CheckSamples() const {}

  /// Fills dst with samples start to start + n - 1, in volts, and gives the number of frames among them that
  /// held phase and amplitude. Of most use if start is a multiple of ChunkSamples() and n as many.
  /// Throws DataError if the system cannot read them.
  int Read(std::int64_t start, int n, QORN::VecCplx32 &dst);
  virtual int ChunkSamples() const { return 1 << 17; }

  /// Throws DataError if the file does not hold all samples before end any more.
  void CheckHeld(std::int64_t end) const;

  /// The readers of the library; null if the recording is of another format.
  virtual const QORN::IQFReader *Iqf() const { return nullptr; }
  virtual const QORN::XIQReader *Xiq() const { return nullptr; }

protected:
  virtual int ReadSamples(std::int64_t start, int n, QORN::VecCplx32 &dst) = 0;

  /// Bytes from the start of the file to behind the last sample before end.
  virtual std::int64_t BytesTo(std::int64_t end) const = 0;

  explicit RecordingSource(std::string path) : m_path(std::move(path)) {}

  SourceFacts m_facts;

private:
  std::string m_path;
};

/// Throws DataError: the recording at path, and the reason.
[[noreturn]] void RefuseRecording(const std::string &path, const std::string &reason);

/// The same with the reason of errno.
[[noreturn]] void RefuseUnreadable(const std::string &path);

/// Runs read, which calls a reader of the library for the file at path. The readers give zeros for what they
/// cannot read, and leave the system's error in errno: throws DataError if there is one. May run read twice.
void ReadOrRefuse(const std::string &path, const std::function<void()> &read);

/// The number of bytes of the file; throws DataError if it cannot be told.
std::int64_t BytesOf(const std::string &path);

/// What a file without a header does not tell.
struct RawFormat {
  Format format;
  double rate;   ///< samples per second
  double centre; ///< hertz
  double step;   ///< volts
};

/// Each throws DataError with the reason if the file at path, which is known to be one that can be read,
/// holds no such recording.
std::unique_ptr<RecordingSource> OpenIqf(const std::string &path);
std::unique_ptr<RecordingSource> OpenXiq(const std::string &path);
std::unique_ptr<RecordingSource> OpenRaw(const std::string &path, const RawFormat &raw);

/// Whether the file starts as those of the XIQ format do.
bool LooksLikeXiq(const std::string &path);

} // namespace tool

#endif
