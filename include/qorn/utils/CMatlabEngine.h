#ifndef QORN_UTILS_CMATLABENGINE_H
#define QORN_UTILS_CMATLABENGINE_H

#include <string>

#include "qorn/Export.h"

namespace QORN {

/// What a call of an engine came to.
enum MatlabResult : int {
  MatlabOk = 0,        ///< it succeeded
  MatlabNotUsable = 1, ///< nothing was done: the interpreter did not start, or has ended
  MatlabError = 2,     ///< the interpreter, or the engine, refused it: GetLastMessage tells why
  MatlabNoMemory = 3,  ///< there is no memory for it
  MatlabTimedOut = 4,  ///< no answer within the time limit; the interpreter was ended
  MatlabEnded = 5,     ///< the interpreter ended before it answered
};

/// A session of a MATLAB-compatible interpreter, as far as MLAccess needs one: running text, and moving
/// matrices and texts to and from its base workspace. MatlabProcess is the engine that runs an interpreter as
/// a child process; another way to an interpreter is another class derived from this one.
///
/// No operation throws. Each gives true if it succeeded, and leaves its MatlabResult in GetLastResult(); on
/// an engine that is not initialized it does nothing and leaves MatlabNotUsable. A null name or text is
/// refused with MatlabError. Texts are in UTF-8.
///
/// A derived class implements the private operations, which are called on an initialized engine only and with
/// arguments that are not null, unless it is said that they may be. They return a MatlabResult, and may
/// throw: std::bad_alloc becomes MatlabNoMemory, anything else MatlabError. An engine is for one thread at a
/// time.
class QORN_API CMatlabEngine {
public:
  CMatlabEngine();
  virtual ~CMatlabEngine();
  CMatlabEngine(const CMatlabEngine &) = delete;
  CMatlabEngine &operator=(const CMatlabEngine &) = delete;

  /// True if every step of the start succeeded and the interpreter has not ended since.
  bool IsInitialized() const { return initialized; }

  /// The MatlabResult of the last operation.
  int GetLastResult() const { return lastResult; }

  /// The interpreter's text of the last error, or another description of a failure; empty after a success.
  /// Valid until the next operation.
  const char *GetLastMessage() const { return lastMessage.c_str(); }

  /// Runs text as code in the base workspace.
  bool Execute(const char *text);

  /// Makes name a matrix of rows times columns doubles, element (r, c) = re[r * columns + c] + i im[r *
  /// columns + c]; a real one if im is null. All bits of a double are kept.
  bool PutFullMatrix(const char *name, const double *re, const double *im, int rows, int columns);

  /// Copies the matrix called name, which must have that size, to re and im in the same order. im may be
  /// null; it gets zeros for a real matrix. Integers, logical values and characters come as doubles. After a
  /// failure re and im hold no particular values.
  bool GetFullMatrix(const char *name, double *re, double *im, int rows, int columns);

  /// Makes name a row of characters.
  bool PutCharArray(const char *name, const char *text);

  /// Copies the character array called name to text, its rows one behind the other; empty after a failure.
  bool GetCharArray(const char *name, std::string &text);

  /// Whether the interpreter's console can be seen; false after a failure.
  bool GetVisible(bool &visible);
  bool SetVisible(bool visible);

protected:
  /// Of a failure.
  void SetMessage(std::string text) { lastMessage.swap(text); }

  bool initialized = false;
  int lastResult = MatlabNotUsable;

private:
  friend class MLAccess; // whose operations consist of several of these and leave the result that counts

  template <class Call> bool Run(bool valid, Call call) noexcept;

  virtual int OnExecute(const char *text) = 0;
  virtual int OnPutFullMatrix(const char *name, const double *re, const double *im, int rows,
                              int columns) = 0; ///< im may be null
  virtual int OnGetFullMatrix(const char *name, double *re, double *im, int rows,
                              int columns) = 0; ///< im may be null
  virtual int OnPutCharArray(const char *name, const char *text) = 0;
  virtual int OnGetCharArray(const char *name, std::string &text) = 0;
  virtual int OnGetVisible(bool &visible) = 0;
  virtual int OnSetVisible(bool visible) = 0;

  std::string lastMessage;
};

} // namespace QORN

#endif
