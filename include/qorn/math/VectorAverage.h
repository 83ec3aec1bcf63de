#ifndef QORN_MATH_VECTORAVERAGE_H
#define QORN_MATH_VECTORAVERAGE_H

#include <cstdint>
#include <memory>
#include <string>

#include "qorn/Export.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

class ScratchFile;
class VecReal32;

/// The running mean of the last N vectors of a stream, such as traces of a display. The vectors lie in a
/// scratch file as a ring; memory holds one vector of doubles, their running sum, whatever N is.
///
/// The scratch file has N + 1 slots of raw floats, in the machine's byte order and without a header: 4 (N +
/// 1) bytes for each element of a vector, which may be more than 2 GB; a slot that was never written takes no
/// room on most file systems. The first Add makes the file, in place of one that is there, and the object
/// removes it when it is destroyed, assigned to or given vectors of another length; it is found even if the
/// current folder has changed since, and a file that somebody else has put in its place stays. A symbolic
/// link at the path stays: the file that it leads to is made and removed.
///
/// | state | vectors in the mean | file | left by |
/// |---|---|---|---|
/// | unused | 0 | none | the first Add |
/// | filling | 1 to N - 1 | open | Add, which reaches N; Clear |
/// | full | N | open | Clear |
/// | cleared | 0 | open | Add, with vectors of any length |
///
/// What goes wrong leaves as QORNException, with the path literal "math\VectorAverage":
///
/// | code | message | when |
/// |---|---|---|
/// | 10001 | "unexpected software error" | Add, after it could not make the file for another length |
/// | 11001 | "memory allocation error" | there is no memory |
/// | 13001 | "error opening file" | the scratch file cannot be opened; every Add tries again |
///
/// A file that cannot grow, or that somebody cuts short, throws nothing: what it does not give back counts as
/// zeros, and IsIntact tells that the mean is no longer to be trusted. A file that somebody deletes serves on
/// until the object is done with it.
///
/// A copy is a value of its own. Its scratch file, which a copy of an object with a file makes at once, lies
/// beside that of its source, with a dot and six characters behind its name; a moved object keeps the file.
/// For one thread at a time. Two objects must not be given one path.
class QORN_API VectorAverage {
public:
  /// An average over no vectors, without a path: Init must follow.
  VectorAverage() noexcept;

  /// As Init on a new object.
  VectorAverage(int count, const char *path);

  /// Throws 13001 if a file has to be copied and cannot be opened.
  ///@{
  VectorAverage(const VectorAverage &other);
  VectorAverage &operator=(const VectorAverage &other);
  ///@}

  /// The source is then as made by the default constructor.
  ///@{
  VectorAverage(VectorAverage &&other) noexcept;
  VectorAverage &operator=(VectorAverage &&other) noexcept;
  ///@}

  /// Closes and removes the scratch file.
  virtual ~VectorAverage();

  /// Starts afresh: a mean of the last count vectors, with the scratch file at path, of any length. Opens no
  /// file, and closes and removes one that is open. A count below 1 gives an average that stays empty, a null
  /// path one that cannot be opened.
  void Init(int count, const char *path);

  /// Takes v into the average, and the oldest vector out of it if there are N: one write to the file, one
  /// read, and sum[i] += v[i] - oldest[i], the difference in float and the sum in double. True; or false and
  /// nothing else if v has another length than the vectors in the average. After Clear any length is taken,
  /// for which the file is made anew. Nothing is allocated in the steady state.
  ///
  /// An infinity or not-a-number stays in the sum when its vector has left: see ReCalc.
  bool Add(const VecReal32 &v);

  /// out[i] = the mean of element i of the vectors in the average, sum[i] * (1 / CurrentCount()) in double,
  /// rounded to float; out is resized to their length. Without a vector out is zeros of the length of the
  /// last one, or a single zero. True if there are N vectors. Returns false for an empty average.
  bool Get(VecReal32 &out) const;

  /// Empties the average; the file stays open and is zeroed.
  void Clear();

  /// CurrentCount() == N.
  bool IsCountReached() const { return current == count; }

  /// The number of vectors in the average, 0 to N.
  int CurrentCount() const { return current; }

  /// Sums the vectors in the file anew, oldest first, to shed the rounding errors of the running sum, and an
  /// infinity or not-a-number that has left. One read of N vectors.
  void ReCalc();

  /// False once the scratch file has failed to take or to give back a vector, until Clear or Init.
  bool IsIntact() const { return intact; }

private:
  friend struct VectorAveragePeer; // moves tests to the end of a large ring

  void Swap(VectorAverage &other) noexcept;
  void OpenFile();
  void Restart(int length);
  std::int64_t SlotBytes() const;
  template <class Use> void ForEachVector(Use use) const;

  int count = 0;                     // N
  std::string path;                  // of the scratch file
  std::unique_ptr<ScratchFile> file; // null until the first Add
  int vecLen = 0;                    // length of the vectors in the ring, 0 before the first Add
  std::int64_t fileSize = 0;         // of the ring, in bytes
  std::int64_t filePos = 0;          // of the slot that the next Add writes
  VecReal64 sum;                     // of the vectors in the average
  int current = 0;                   // their number
  bool copied = false;               // the path is another object's: the file's name is made from it
  bool intact = true;                // the file has kept everything so far
};

} // namespace QORN

#endif
