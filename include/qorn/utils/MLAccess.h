#ifndef QORN_UTILS_MLACCESS_H
#define QORN_UTILS_MLACCESS_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/utils/CMatlabEngine.h"

namespace QORN {

class VecCplx32;
class VecCplx64;
class VecInt32;
class VecReal32;

/// A look at vectors in a MATLAB session: moves them to and from its base workspace, runs code, and draws
/// figures.
///
/// The session is that of a CMatlabEngine: by default of a MatlabProcess, which runs MATLAB, or GNU Octave
/// where there is none, as a child process. An object that was built has a session.
///
/// After construction nothing is thrown. Each operation leaves the result of its last command in the engine,
/// GetEngine()->GetLastResult(), a MatlabResult; an operation that moves a variable and then runs commands
/// leaves the result of the move if that failed. Vectors that could not be filled are empty. Counts that are
/// not positive and null pointers to data are those of an empty vector; a null name is refused by the engine.
///
/// The time limit of an engine holds for each of its operations, of which a call may take several, one after
/// the other: Say is one, Get of a vector four, and Plot about twenty.
///
/// Vectors become rows of double values, complex ones complex rows; what comes back is narrowed to the
/// vector's type, integers by cutting off the fraction, stopped at the limits of int. A matrix comes back row
/// by row, with as many elements as it has.
///
/// An object is for the thread that built it, and so are its copies.
class QORN_API MLAccess {
public:
  /// Starts a session. The caption, which may be null, stands in the bottom left corner of figures. It goes
  /// to MATLAB's text interpreter with a backslash before each backslash and underscore, so that these appear
  /// as they are; what is more than 100 characters then is cut off.
  ///
  /// Throws QORNException 3 with the path literal "utils\MatlabAccess" if there is no session, 11001 if there
  /// is no memory.
  MLAccess(const char *caption = nullptr);

  /// The same with an engine of one's own, for instance of an interpreter that is not on the PATH. Throws 3
  /// if it is null or not initialized.
  MLAccess(const char *caption, std::unique_ptr<CMatlabEngine> engine);

  /// A copy has buffers and texts of its own and shares the session, which ends with the last of the objects
  /// that share it. Throws 11001 if there is no memory.
  MLAccess(const MLAccess &other);
  MLAccess &operator=(const MLAccess &other);
  ~MLAccess();

  /// The engine of the session, which stays the object's.
  CMatlabEngine *GetEngine() const { return engine; }

  /// Makes the console of the session visible, or hides it, unless it is so already. What that means is the
  /// engine's matter: see MatlabProcess.
  ///@{
  void ShowConsole();
  void HideConsole();
  ///@}

  /// Formats a text as std::printf does and has it run as code. A text that cannot be formatted, such as one
  /// with a wide character that the locale lacks, is refused with MatlabError, and nothing is run.
  void Say(const char *format, ...);

  /// Says "clear %s" with name.
  void ClearVar(const char *name);

  /// Makes figure n the current one, which it opens if need be: says "figure(%d);". Does nothing for n below
  /// 1, so that the current figure stays.
  void Figure(int n);

  /// Figure(n), then has text run as it stands.
  void FigureSay(int n, const char *text);

  /// Figure(n), then says "clf", which empties the figure.
  void FigureClf(int n);

  /// Sets the limits of the axes of figure n: a to b horizontally, c to d vertically. Sends the four values
  /// as "ax___Vals", then Figure(n), then says "axis(ax___Vals);clear ax___Vals".
  ///@{
  void FigureAxis(int n, double a, double b, double c, double d);
  void FigureAxis(int n, const double *limits);
  ///@}

  /// Makes name a variable that holds the value or the values, as a row. Returns the number of elements,
  /// whether the transfer succeeds or not.
  ///@{
  int Send(const char *name, float v);
  int Send(const char *name, double v);
  int Send(const char *name, int v);
  int Send(const char *name, Cplx32 v);
  int Send(const char *name, Cplx64 v);
  int Send(const char *name, const VecReal32 &vec);
  int Send(const char *name, const VecReal64 &vec);
  int Send(const char *name, const VecInt32 &vec);
  int Send(const char *name, const VecCplx32 &vec);
  int Send(const char *name, const VecCplx64 &vec);
  int Send(const char *name, const float *data, int n);
  int Send(const char *name, const double *data, int n);
  int Send(const char *name, const int *data, int n);
  int Send(const char *name, const Cplx32 *data, int n);
  int Send(const char *name, const Cplx64 *data, int n);
  ///@}

  /// Makes name a matrix of two rows, x and y, which have one length: sends y as "x99temp" and says
  /// "%s=[%s;%s]; clear %s;". Returns the number of elements of x.
  ///@{
  int Send(const char *name, const VecReal32 &x, const VecReal32 &y);
  int Send(const char *name, const VecReal64 &x, const VecReal64 &y);
  int Send(const char *name, const float *x, const float *y, int n);
  int Send(const char *name, const double *x, const double *y, int n);
  ///@}

  /// Makes name a text, and returns its length.
  int Send(const char *name, const char *text);

  /// Copies the variable called name to a vector, its imaginary parts to im if that is given, and returns the
  /// number of elements. Without such a variable, or if it is empty or no matrix, the vectors are empty and
  /// the result is 0. Says "%sSize=size(%s);" first and "clear %sSize" afterwards.
  ///@{
  int Get(const char *name, VecReal32 &vec);
  int Get(const char *name, VecReal64 &vec);
  int Get(const char *name, VecInt32 &vec);
  int Get(const char *name, VecCplx32 &vec);
  int Get(const char *name, VecCplx64 &vec);
  int Get(const char *name, VecReal32 &re, VecReal32 &im);
  int Get(const char *name, VecReal64 &re, VecReal64 &im);
  ///@}

  /// Copies the first element of the variable called name, and returns 1; without one, sets v to 0 and
  /// returns 0.
  ///@{
  int Get(const char *name, double &v);
  int Get(const char *name, float &v);
  int Get(const char *name, int &v);
  int Get(const char *name, Cplx32 &v);
  int Get(const char *name, Cplx64 &v);
  ///@}

  /// Copies the text called name, up to its first zero, with a terminating zero to `text`, which must have
  /// room for it, and returns its length. With a null `text` it just returns the length. 0 and an empty text
  /// if there is none.
  int Get(const char *name, char *text);

  /// Draws y over its indices 0, 1, ... in a figure, or with figure below 1 in the current one, with a grid,
  /// the caption and the time. title is "Figure %d: n=%d" of the figure and the number of elements if it is
  /// null, xLabel "x-axis", yLabel "y-axis", and style, MATLAB's line specification, "-".
  ///
  /// The data are sent as a variable "f%d" of the figure's number, which is cleared at the end. With a
  /// negative number that is no name: no data are drawn, title and labels of the current figure are replaced
  /// nevertheless, and the error is the result. Texts stand between apostrophes in MATLAB code: an apostrophe
  /// within one is to be written twice, and the text interpreter has its way with the rest.
  ///@{
  void Plot(const VecReal32 &y, int figure, const char *title = nullptr, const char *xLabel = nullptr,
            const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const VecReal64 &y, int figure, const char *title = nullptr, const char *xLabel = nullptr,
            const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const VecInt32 &y, int figure, const char *title = nullptr, const char *xLabel = nullptr,
            const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const float *y, int n, int figure, const char *title = nullptr, const char *xLabel = nullptr,
            const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const double *y, int n, int figure, const char *title = nullptr, const char *xLabel = nullptr,
            const char *yLabel = nullptr, const char *style = nullptr);
  ///@}

  /// Draws y over x, which have one length, in the same manner.
  ///@{
  void Plot(const VecReal32 &x, const VecReal32 &y, int figure, const char *title = nullptr,
            const char *xLabel = nullptr, const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const VecReal64 &x, const VecReal64 &y, int figure, const char *title = nullptr,
            const char *xLabel = nullptr, const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const VecInt32 &x, const VecInt32 &y, int figure, const char *title = nullptr,
            const char *xLabel = nullptr, const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const float *x, const float *y, int n, int figure, const char *title = nullptr,
            const char *xLabel = nullptr, const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const double *x, const double *y, int n, int figure, const char *title = nullptr,
            const char *xLabel = nullptr, const char *yLabel = nullptr, const char *style = nullptr);
  ///@}

  /// Draws imaginary over real parts in the same manner.
  ///@{
  void Plot(const VecCplx32 &v, int figure, const char *title = nullptr, const char *xLabel = nullptr,
            const char *yLabel = nullptr, const char *style = nullptr);
  void Plot(const VecCplx64 &v, int figure, const char *title = nullptr, const char *xLabel = nullptr,
            const char *yLabel = nullptr, const char *style = nullptr);
  ///@}

  /// Draws the real or the imaginary parts over their indices in the same manner.
  ///@{
  void PlotReal(const VecCplx32 &v, int figure, const char *title = nullptr, const char *xLabel = nullptr,
                const char *yLabel = nullptr, const char *style = nullptr);
  void PlotImag(const VecCplx32 &v, int figure, const char *title = nullptr, const char *xLabel = nullptr,
                const char *yLabel = nullptr, const char *style = nullptr);
  ///@}

  /// PlotReal, and PlotImag into the same axes.
  void PlotRealImag(const VecCplx32 &v, int figure, const char *title = nullptr, const char *xLabel = nullptr,
                    const char *yLabel = nullptr, const char *styleReal = nullptr,
                    const char *styleImag = nullptr);

  /// What comes before the drawing: Figure(figure), the double buffering of its window, and
  /// PlotTimeDate(figure).
  void PrePlot(int figure);

  /// Label the current axes; null gives "x-axis" and "y-axis".
  ///@{
  void PlotXlabel(const char *xLabel);
  void PlotYlabel(const char *yLabel);
  ///@}

  /// Gives the current axes a title; null gives "Figure %d: n=%d" with figure and n.
  void PlotTitle(int figure, int n, const char *title);

  /// Writes the time into the bottom right corner of the current figure and the caption into the bottom left
  /// one, small and blue. figure gives the names of variables that are cleared at the end.
  void PlotTimeDate(int figure);

  /// Takes the local time for the next PlotTimeDate, as "[20-Nov-26 @ 7:05:09pm]".
  void MLGetCurrentTime();

private:
  struct Texts {
    const char *title, *xLabel, *yLabel, *style;
  };

  template <class Call> auto Guarded(Call call) -> decltype(call());
  template <class Call> void KeepingFailure(Call call);
  void SetCaption(const char *text);
  template <class T> int SendRow(const char *name, const T *data, int n);
  template <class T> int SendRows(const char *name, const T *x, int xSize, const T *y, int ySize);
  template <class V> int SendVector(const char *name, const V &vec);
  template <class V> int SendVectors(const char *name, const V &x, const V &y);
  template <class Read> int Receive(const char *name, Read read);
  template <class V> int GetVector(const char *name, V &vec);
  template <class V> int GetParts(const char *name, V &re, V &im);
  template <class V, class T> int GetFirst(const char *name, T &v);
  void NameVariable(int figure);
  void Draw(int n, int figure, const char *command, const Texts &texts);
  template <class T> void PlotRow(const T *data, int n, int figure, const char *command, const Texts &texts);
  template <class T>
  void PlotRows(const T *x, int xSize, const T *y, int ySize, int figure, const Texts &texts);
  template <class V> void PlotVector(const V &vec, int figure, const char *command, const Texts &texts);
  template <class V> void PlotVectors(const V &x, const V &y, int figure, const Texts &texts);
  void Share(const MLAccess &other);
  void Leave();

  CMatlabEngine *engine = nullptr;
  VecReal64 realBuffer;
  VecReal64 imagBuffer;
  char caption[101] = {};
  char varName[101] = {};
  char timeString[101] = {};

  // The objects that share a session stand in a ring. One of them owns the engine, and hands it on when it
  // dies.
  mutable std::unique_ptr<CMatlabEngine> ownedEngine;
  mutable const MLAccess *next = this;
  mutable const MLAccess *previous = this;
};

} // namespace QORN

#endif
