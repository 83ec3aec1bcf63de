#include "qorn/utils/MLAccess.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "Number.h"
#include "infra/Errors.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/utils/MatlabProcess.h"

namespace QORN {

namespace {

constexpr const char *kModule = "utils\\MatlabAccess";

// Of variables' names, twice, and of the line style.
constexpr const char *kPlotRow = "plot((0:length(%s)-1),%s,'%s'); grid on; zoom on;";
constexpr const char *kPlotRows = "plot(%s(1,:),%s(2,:),'%s'); grid on; zoom on;";
constexpr const char *kPlotCplx32 = "plot(real(%s),imag(%s),'%s'); grid on; zoom on;";
constexpr const char *kPlotCplx64 = "plot(real(%s), imag(%s),'%s'); grid on; zoom on;";

std::unique_ptr<CMatlabEngine> MakeEngine() {
  try {
    return std::make_unique<MatlabProcess>();
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
}

const char *Or(const char *text, const char *otherwise) { return text != nullptr ? text : otherwise; }

// Nothing if there is no format, or an argument that it cannot put into a text.
std::optional<std::string> Formatted(const char *format, std::va_list arguments) {
  if (format == nullptr) return {};
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length < 0) return {};
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  text.pop_back();
  return text;
}

template <class V> using ElementOf = std::remove_pointer_t<decltype(std::declval<const V &>().GetPtr())>;

template <class T> double RealPart(const T &x) {
  if constexpr (std::is_class_v<T>)
    return static_cast<double>(x.re);
  else
    return static_cast<double>(x);
}

// From what a session holds to an element of a vector.
void Store(double re, double, float &dst) { dst = static_cast<float>(re); }
void Store(double re, double, int &dst) { dst = Truncated(re); }
void Store(double re, double im, Cplx32 &dst) { dst = {static_cast<float>(re), static_cast<float>(im)}; }
void Store(double re, double im, Cplx64 &dst) { dst = {re, im}; }

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

} // namespace

MLAccess::MLAccess(const char *caption_) : MLAccess(caption_, MakeEngine()) {}

MLAccess::MLAccess(const char *caption_, std::unique_ptr<CMatlabEngine> engine_) {
  SetCaption(caption_);
  if (!engine_ || !engine_->IsInitialized()) Throw(errors::kMatlabAccess, kModule);
  ownedEngine = std::move(engine_);
  engine = ownedEngine.get();
}

MLAccess::MLAccess(const MLAccess &other) : realBuffer(other.realBuffer), imagBuffer(other.imagBuffer) {
  Share(other);
}

MLAccess &MLAccess::operator=(const MLAccess &other) {
  if (this == &other) return *this;
  realBuffer = other.realBuffer;
  imagBuffer = other.imagBuffer;
  Leave();
  Share(other);
  return *this;
}

MLAccess::~MLAccess() { Leave(); }

// Takes over the texts and the session, and a place in the ring behind other.
void MLAccess::Share(const MLAccess &other) {
  std::memcpy(caption, other.caption, sizeof caption);
  std::memcpy(varName, other.varName, sizeof varName);
  std::memcpy(timeString, other.timeString, sizeof timeString);
  engine = other.engine;
  next = other.next;
  previous = &other;
  next->previous = this;
  other.next = this;
}

void MLAccess::Leave() {
  if (next != this && ownedEngine) next->ownedEngine = std::move(ownedEngine);
  ownedEngine.reset();
  next->previous = previous;
  previous->next = next;
  next = previous = this;
  engine = nullptr;
}

void MLAccess::SetCaption(const char *text) {
  std::size_t length = 0;
  const char *const start = text;
  for (; text != nullptr && *text != '\0'; ++text) {
    const bool escaped = *text == '\\' || *text == '_';
    if (length + (escaped ? 2 : 1) >= sizeof caption) {
      // No half of a character is left.
      for (const char *cut = text; cut != start && IsContinuation(*cut); --cut) --length;
      break;
    }
    if (escaped) caption[length++] = '\\';
    caption[length++] = *text;
  }
  caption[length] = '\0';
}

void MLAccess::ShowConsole() {
  bool visible = false;
  if (engine->GetVisible(visible) && !visible) engine->SetVisible(true);
}

void MLAccess::HideConsole() {
  bool visible = false;
  if (engine->GetVisible(visible) && visible) engine->SetVisible(false);
}

// Calls what may find no memory, and gives its result, or none.
template <class Call> auto MLAccess::Guarded(Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const QORNException &) {
  } catch (const std::bad_alloc &) {
  }
  engine->lastResult = MatlabNoMemory;
  engine->lastMessage.clear();
  return {};
}

// Runs commands that follow on a transfer, whose failure is what the caller is to see.
template <class Call> void MLAccess::KeepingFailure(Call call) {
  const int result = engine->lastResult;
  std::string message = std::move(engine->lastMessage);
  call();
  if (result == MatlabOk) return;
  engine->lastResult = result;
  engine->lastMessage = std::move(message);
}

void MLAccess::Say(const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Guarded([&] {
    const std::optional<std::string> text = Formatted(format, arguments);
    return engine->Execute(text ? text->c_str() : nullptr);
  });
  va_end(arguments);
}

void MLAccess::ClearVar(const char *name) {
  if (name != nullptr)
    Say("clear %s", name);
  else
    engine->Execute(nullptr);
}

void MLAccess::Figure(int n) {
  if (n > 0) Say("figure(%d);", n);
}

void MLAccess::FigureSay(int n, const char *text) {
  Figure(n);
  engine->Execute(text);
}

void MLAccess::FigureClf(int n) {
  Figure(n);
  Say("clf");
}

void MLAccess::FigureAxis(int n, double a, double b, double c, double d) {
  const double limits[] = {a, b, c, d};
  FigureAxis(n, limits);
}

void MLAccess::FigureAxis(int n, const double *limits) {
  Send("ax___Vals", limits, 4);
  KeepingFailure([&] {
    Figure(n);
    Say("axis(ax___Vals);clear ax___Vals");
  });
}

template <class T> int MLAccess::SendRow(const char *name, const T *data, int n) {
  n = data != nullptr ? std::max(n, 0) : 0;
  Guarded([&] {
    if constexpr (std::is_same_v<T, double>) {
      return engine->PutFullMatrix(name, data, nullptr, 1, n);
    } else {
      realBuffer.Resize(n);
      double *const re = realBuffer.GetPtr();
      for (int i = 0; i < n; ++i) re[i] = RealPart(data[i]);
      if constexpr (!std::is_class_v<T>) {
        return engine->PutFullMatrix(name, re, nullptr, 1, n);
      } else {
        imagBuffer.Resize(n);
        double *const im = imagBuffer.GetPtr();
        for (int i = 0; i < n; ++i) im[i] = static_cast<double>(data[i].im);
        return engine->PutFullMatrix(name, re, im, 1, n);
      }
    }
  });
  return n;
}

template <class T> int MLAccess::SendRows(const char *name, const T *x, int xSize, const T *y, int ySize) {
  constexpr const char *kSecond = "x99temp";
  const int count = SendRow(name, x, xSize);
  KeepingFailure([&] {
    SendRow(kSecond, y, ySize);
    KeepingFailure([&] { Say("%s=[%s;%s]; clear %s;", Or(name, ""), Or(name, ""), kSecond, kSecond); });
  });
  return count;
}

template <class V> int MLAccess::SendVector(const char *name, const V &vec) {
  return SendRow<ElementOf<V>>(name, vec.GetPtr(), vec.GetSize());
}

template <class V> int MLAccess::SendVectors(const char *name, const V &x, const V &y) {
  return SendRows<ElementOf<V>>(name, x.GetPtr(), x.GetSize(), y.GetPtr(), y.GetSize());
}

int MLAccess::Send(const char *name, float v) { return SendRow(name, &v, 1); }
int MLAccess::Send(const char *name, double v) { return SendRow(name, &v, 1); }
int MLAccess::Send(const char *name, int v) { return SendRow(name, &v, 1); }
int MLAccess::Send(const char *name, Cplx32 v) { return SendRow(name, &v, 1); }
int MLAccess::Send(const char *name, Cplx64 v) { return SendRow(name, &v, 1); }

int MLAccess::Send(const char *name, const VecReal32 &vec) { return SendVector(name, vec); }
int MLAccess::Send(const char *name, const VecReal64 &vec) { return SendVector(name, vec); }
int MLAccess::Send(const char *name, const VecInt32 &vec) { return SendVector(name, vec); }
int MLAccess::Send(const char *name, const VecCplx32 &vec) { return SendVector(name, vec); }
int MLAccess::Send(const char *name, const VecCplx64 &vec) { return SendVector(name, vec); }

int MLAccess::Send(const char *name, const float *data, int n) { return SendRow(name, data, n); }
int MLAccess::Send(const char *name, const double *data, int n) { return SendRow(name, data, n); }
int MLAccess::Send(const char *name, const int *data, int n) { return SendRow(name, data, n); }
int MLAccess::Send(const char *name, const Cplx32 *data, int n) { return SendRow(name, data, n); }
int MLAccess::Send(const char *name, const Cplx64 *data, int n) { return SendRow(name, data, n); }

int MLAccess::Send(const char *name, const VecReal32 &x, const VecReal32 &y) {
  return SendVectors(name, x, y);
}
int MLAccess::Send(const char *name, const VecReal64 &x, const VecReal64 &y) {
  return SendVectors(name, x, y);
}
int MLAccess::Send(const char *name, const float *x, const float *y, int n) {
  return SendRows(name, x, n, y, n);
}
int MLAccess::Send(const char *name, const double *x, const double *y, int n) {
  return SendRows(name, x, n, y, n);
}

int MLAccess::Send(const char *name, const char *text) {
  engine->PutCharArray(name, text);
  return text != nullptr ? static_cast<int>(std::min<std::size_t>(std::strlen(text), INT_MAX)) : 0;
}

// Finds the size of a variable and, if it has elements, reads it: read(rows, columns) gives true if that went
// well. Returns the number of elements that were read.
template <class Read> int MLAccess::Receive(const char *name, Read read) {
  return Guarded([&]() -> int {
    if (name == nullptr) {
      engine->Execute(nullptr);
      return 0;
    }
    const std::string sizeName = std::string(name) + "Size";
    if (!engine->Execute((sizeName + "=size(" + name + ");").c_str())) return 0;
    double size[2] = {};
    int count = 0;
    if (engine->GetFullMatrix(sizeName.c_str(), size, nullptr, 1, 2)) {
      const double elements = size[0] * size[1];
      if (!(size[0] >= 0 && size[1] >= 0 && elements <= INT_MAX))
        engine->lastResult = MatlabNoMemory;
      else if (elements >= 1 && Guarded([&] { return read(Truncated(size[0]), Truncated(size[1])); }))
        count = Truncated(size[0]) * Truncated(size[1]);
    }
    KeepingFailure([&] { Say("clear %s", sizeName.c_str()); });
    return count;
  });
}

template <class V> int MLAccess::GetVector(const char *name, V &vec) {
  using T = ElementOf<V>;
  constexpr bool kComplex = std::is_class_v<T>;
  const int count = Receive(name, [&](int rows, int columns) {
    const int n = rows * columns;
    if constexpr (std::is_same_v<T, double>) {
      vec.Resize(n);
      return engine->GetFullMatrix(name, vec.GetPtr(), nullptr, rows, columns);
    } else {
      realBuffer.Resize(n);
      if (kComplex) imagBuffer.Resize(n);
      const double *const re = realBuffer.GetPtr(), *const im = kComplex ? imagBuffer.GetPtr() : re;
      if (!engine->GetFullMatrix(name, realBuffer.GetPtr(), kComplex ? imagBuffer.GetPtr() : nullptr, rows,
                                 columns))
        return false;
      vec.Resize(n);
      T *const dst = vec.GetPtr();
      for (int i = 0; i < n; ++i) Store(re[i], im[i], dst[i]);
      return true;
    }
  });
  if (count == 0) vec.Resize(0);
  return count;
}

template <class V> int MLAccess::GetParts(const char *name, V &re, V &im) {
  const int count = Receive(name, [&](int rows, int columns) {
    const int n = rows * columns;
    realBuffer.Resize(n);
    imagBuffer.Resize(n);
    if (!engine->GetFullMatrix(name, realBuffer.GetPtr(), imagBuffer.GetPtr(), rows, columns)) return false;
    re = realBuffer;
    im = imagBuffer;
    return true;
  });
  if (count == 0) {
    re.Resize(0);
    im.Resize(0);
  }
  return count;
}

template <class V, class T> int MLAccess::GetFirst(const char *name, T &v) {
  V vec;
  const int count = GetVector(name, vec);
  v = count > 0 ? vec[0] : T{};
  return count > 0 ? 1 : 0;
}

int MLAccess::Get(const char *name, VecReal32 &vec) { return GetVector(name, vec); }
int MLAccess::Get(const char *name, VecReal64 &vec) { return GetVector(name, vec); }
int MLAccess::Get(const char *name, VecInt32 &vec) { return GetVector(name, vec); }
int MLAccess::Get(const char *name, VecCplx32 &vec) { return GetVector(name, vec); }
int MLAccess::Get(const char *name, VecCplx64 &vec) { return GetVector(name, vec); }

int MLAccess::Get(const char *name, VecReal32 &re, VecReal32 &im) { return GetParts(name, re, im); }
int MLAccess::Get(const char *name, VecReal64 &re, VecReal64 &im) { return GetParts(name, re, im); }

int MLAccess::Get(const char *name, double &v) { return GetFirst<VecReal64>(name, v); }
int MLAccess::Get(const char *name, float &v) { return GetFirst<VecReal32>(name, v); }
int MLAccess::Get(const char *name, int &v) { return GetFirst<VecInt32>(name, v); }
int MLAccess::Get(const char *name, Cplx32 &v) { return GetFirst<VecCplx32>(name, v); }
int MLAccess::Get(const char *name, Cplx64 &v) { return GetFirst<VecCplx64>(name, v); }

int MLAccess::Get(const char *name, char *text) {
  std::string value;
  engine->GetCharArray(name, value);
  const std::size_t length = std::strlen(value.c_str());
  if (text != nullptr) std::memcpy(text, value.c_str(), length + 1);
  return static_cast<int>(length);
}

void MLAccess::PrePlot(int figure) {
  Figure(figure);
  // Not a whole command, which the session reports and forgets.
  Say("set(gcf,'DoubleBuffer','on'");
  PlotTimeDate(figure);
}

void MLAccess::PlotXlabel(const char *xLabel) {
  Say("xlabel('%s','FontSize',12,'FontWeight','bold');", Or(xLabel, "x-axis"));
}

void MLAccess::PlotYlabel(const char *yLabel) {
  Say("ylabel('%s','FontSize',12,'FontWeight','bold');", Or(yLabel, "y-axis"));
}

void MLAccess::PlotTitle(int figure, int n, const char *title) {
  char text[60];
  std::snprintf(text, sizeof text, "Figure %d: n=%d", figure, n);
  Say("title('%s','FontSize',13,'Color','red');", Or(title, text));
}

void MLAccess::PlotTimeDate(int figure) {
  MLGetCurrentTime();
  Say("oldunits = get( gcf, 'Units' ); oldaxes = (gca);");
  Say("set(get(ax%d,'Title'),'Visible','off')", figure);
  Say("ax%d=axes('Units','Normal','Position',[ 0.99 -0.02 .01 .01] ,'Visible','off');", figure);
  Say("set(get(ax%d,'Title'),'Visible','on')", figure);
  Say("title('%s','HorizontalAlignment','right','Color','blue');", timeString);
  Say("set(get(fax%d,'Title'),'Visible','off')", figure);
  Say("fax%d=axes('Units','Normal','Position',[ 0 -0.02 .01 .01] ,'Visible','off');", figure);
  Say("set(get(fax%d,'Title'),'Visible','on')", figure);
  Say("title('%s','HorizontalAlignment','left','Color','blue');", caption);
  Say("set( gcf, 'Units', oldunits ); axes(oldaxes);");
  Say("clear oldunits; clear oldaxes; clear ax%d; clear fax%d;", figure, figure);
}

void MLAccess::MLGetCurrentTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  char half[20] = "", time[40] = "", date[40] = "";
  if (localtime_r(&now, &local) != nullptr) {
    std::strftime(half, sizeof half, "%p", &local);
    std::strftime(time, sizeof time, "%I:%M:%S", &local);
    std::strftime(date, sizeof date, "%d-%b-%y", &local);
  }
  const auto skipped = [](const char *text) { return text + (*text == '0' ? 1 : 0); };
  std::snprintf(timeString, sizeof timeString, "[%s @ %s%s]", skipped(date), skipped(time),
                half[0] == 'A' ? "am" : "pm");
}

// Draws what has been sent as varName.
void MLAccess::Draw(int n, int figure, const char *command, const Texts &texts) {
  KeepingFailure([&] {
    PrePlot(figure);
    Say(command, varName, varName, Or(texts.style, "-"));
    KeepingFailure([&] {
      PlotTitle(figure, n, texts.title);
      PlotXlabel(texts.xLabel);
      PlotYlabel(texts.yLabel);
      ClearVar(varName);
    });
  });
}

void MLAccess::NameVariable(int figure) { std::snprintf(varName, sizeof varName, "f%d", figure); }

template <class T>
void MLAccess::PlotRow(const T *data, int n, int figure, const char *command, const Texts &texts) {
  NameVariable(figure);
  Draw(SendRow(varName, data, n), figure, command, texts);
}

template <class T>
void MLAccess::PlotRows(const T *x, int xSize, const T *y, int ySize, int figure, const Texts &texts) {
  NameVariable(figure);
  Draw(SendRows(varName, x, xSize, y, ySize), figure, kPlotRows, texts);
}

template <class V>
void MLAccess::PlotVector(const V &vec, int figure, const char *command, const Texts &texts) {
  PlotRow<ElementOf<V>>(vec.GetPtr(), vec.GetSize(), figure, command, texts);
}

template <class V> void MLAccess::PlotVectors(const V &x, const V &y, int figure, const Texts &texts) {
  PlotRows<ElementOf<V>>(x.GetPtr(), x.GetSize(), y.GetPtr(), y.GetSize(), figure, texts);
}

void MLAccess::Plot(const VecReal32 &y, int figure, const char *title, const char *xLabel, const char *yLabel,
                    const char *style) {
  PlotVector(y, figure, kPlotRow, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const VecReal64 &y, int figure, const char *title, const char *xLabel, const char *yLabel,
                    const char *style) {
  PlotVector(y, figure, kPlotRow, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const VecInt32 &y, int figure, const char *title, const char *xLabel, const char *yLabel,
                    const char *style) {
  PlotVector(y, figure, kPlotRow, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const float *y, int n, int figure, const char *title, const char *xLabel,
                    const char *yLabel, const char *style) {
  PlotRow(y, n, figure, kPlotRow, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const double *y, int n, int figure, const char *title, const char *xLabel,
                    const char *yLabel, const char *style) {
  PlotRow(y, n, figure, kPlotRow, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const VecReal32 &x, const VecReal32 &y, int figure, const char *title, const char *xLabel,
                    const char *yLabel, const char *style) {
  PlotVectors(x, y, figure, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const VecReal64 &x, const VecReal64 &y, int figure, const char *title, const char *xLabel,
                    const char *yLabel, const char *style) {
  PlotVectors(x, y, figure, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const VecInt32 &x, const VecInt32 &y, int figure, const char *title, const char *xLabel,
                    const char *yLabel, const char *style) {
  PlotVectors(x, y, figure, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const float *x, const float *y, int n, int figure, const char *title, const char *xLabel,
                    const char *yLabel, const char *style) {
  PlotRows(x, n, y, n, figure, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const double *x, const double *y, int n, int figure, const char *title,
                    const char *xLabel, const char *yLabel, const char *style) {
  PlotRows(x, n, y, n, figure, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const VecCplx32 &v, int figure, const char *title, const char *xLabel, const char *yLabel,
                    const char *style) {
  PlotVector(v, figure, kPlotCplx32, {title, xLabel, yLabel, style});
}

void MLAccess::Plot(const VecCplx64 &v, int figure, const char *title, const char *xLabel, const char *yLabel,
                    const char *style) {
  PlotVector(v, figure, kPlotCplx64, {title, xLabel, yLabel, style});
}

void MLAccess::PlotReal(const VecCplx32 &v, int figure, const char *title, const char *xLabel,
                        const char *yLabel, const char *style) {
  Guarded([&] {
    VecReal32 parts(v.GetSize());
    TargetLib::Real_32fc(v.GetPtr(), parts.GetPtr(), v.GetSize());
    PlotVector(parts, figure, kPlotRow, {title, xLabel, yLabel, style});
    return true;
  });
}

void MLAccess::PlotImag(const VecCplx32 &v, int figure, const char *title, const char *xLabel,
                        const char *yLabel, const char *style) {
  Guarded([&] {
    VecReal32 parts(v.GetSize());
    TargetLib::Imag_32fc(v.GetPtr(), parts.GetPtr(), v.GetSize());
    PlotVector(parts, figure, kPlotRow, {title, xLabel, yLabel, style});
    return true;
  });
}

void MLAccess::PlotRealImag(const VecCplx32 &v, int figure, const char *title, const char *xLabel,
                            const char *yLabel, const char *styleReal, const char *styleImag) {
  PlotReal(v, figure, title, xLabel, yLabel, styleReal);
  KeepingFailure([&] {
    Say("hold on");
    PlotImag(v, figure, title, xLabel, yLabel, styleImag);
    KeepingFailure([&] { Say("hold off"); });
  });
}

} // namespace QORN
