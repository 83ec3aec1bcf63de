#ifndef QORN_UTILS_MATLABPROCESS_H
#define QORN_UTILS_MATLABPROCESS_H

#include <memory>
#include <string>

#include "qorn/Export.h"
#include "qorn/utils/CMatlabEngine.h"

namespace QORN {

/// An engine that runs MATLAB or GNU Octave as a child process, for as long as the object lives.
///
/// Code reaches the interpreter as data: code that is not complete, or wrong in any other way, is an error of
/// its own (MatlabError, with the interpreter's message) and has no effect on what follows. Matrices and long
/// texts go through memory that both processes share, bit by bit.
///
/// Each operation ends within the time limit. An interpreter that has not answered by then is killed, and one
/// that has ended is not started anew: the operation leaves MatlabTimedOut or MatlabEnded, and all later ones
/// MatlabNotUsable. The session and its figures are gone with the interpreter.
///
/// The console is what the interpreter writes to its standard output and standard error stream. While it is
/// visible, that goes to the standard output of this process as it comes, while an operation runs; otherwise,
/// and at first, it is dropped.
///
/// The child has a process group of its own, the default action for all signals that matter, the environment
/// and current directory of this process, and none of its files. This process gets no signal by it, no
/// thread, no file with a name, and, after the destructor, no child. The shared memory has the
/// size of the latest matrix or text.
class QORN_API MatlabProcess : public CMatlabEngine {
public:
  static constexpr double kDefaultTimeLimit = 60; ///< seconds

  /// Starts interpreter, a path or a name that is looked up on the PATH; if it is null, matlab, or if there
  /// is none on the PATH, octave-cli. If its file name begins with "matlab" it gets the options -nodesktop
  /// -nosplash, otherwise those of Octave, --quiet --no-gui. IsInitialized() tells whether it runs and has
  /// answered within the time limit, in seconds. Throws 11001 if there is no memory.
  explicit MatlabProcess(const char *interpreter = nullptr, double timeLimit = kDefaultTimeLimit);

  /// Ends the interpreter: asks it to, and kills it after two seconds.
  ~MatlabProcess() override;

  /// The seconds that each operation may take.
  double GetTimeLimit() const { return m_timeLimit; }
  void SetTimeLimit(double seconds) { m_timeLimit = seconds; }

private:
  class Session;

  int OnExecute(const char *text) override;
  int OnPutFullMatrix(const char *name, const double *re, const double *im, int rows, int columns) override;
  int OnGetFullMatrix(const char *name, double *re, double *im, int rows, int columns) override;
  int OnPutCharArray(const char *name, const char *text) override;
  int OnGetCharArray(const char *name, std::string &text) override;
  int OnGetVisible(bool &visible) override;
  int OnSetVisible(bool visible) override;

  int Ask(const std::string &code);

  double m_timeLimit;
  std::unique_ptr<Session> m_session;
};

} // namespace QORN

#endif
