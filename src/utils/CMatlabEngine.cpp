#include "qorn/utils/CMatlabEngine.h"

#include <new>

namespace QORN {

CMatlabEngine::CMatlabEngine() = default;
CMatlabEngine::~CMatlabEngine() = default;

template <class Call> bool CMatlabEngine::Run(bool valid, Call call) noexcept {
  lastMessage.clear();
  if (!initialized) {
    lastResult = MatlabNotUsable;
  } else if (!valid) {
    lastResult = MatlabError;
  } else {
    try {
      lastResult = call();
    } catch (const std::bad_alloc &) {
      lastResult = MatlabNoMemory;
    } catch (...) {
      lastResult = MatlabError;
    }
  }
  return lastResult == MatlabOk;
}

bool CMatlabEngine::Execute(const char *text) {
  return Run(text != nullptr, [&] { return OnExecute(text); });
}

bool CMatlabEngine::PutFullMatrix(const char *name, const double *re, const double *im, int rows,
                                  int columns) {
  const bool empty = rows == 0 || columns == 0;
  return Run(name != nullptr && rows >= 0 && columns >= 0 && (empty || re != nullptr),
             [&] { return OnPutFullMatrix(name, re, im, rows, columns); });
}

bool CMatlabEngine::GetFullMatrix(const char *name, double *re, double *im, int rows, int columns) {
  const bool empty = rows == 0 || columns == 0;
  return Run(name != nullptr && rows >= 0 && columns >= 0 && (empty || re != nullptr),
             [&] { return OnGetFullMatrix(name, re, im, rows, columns); });
}

bool CMatlabEngine::PutCharArray(const char *name, const char *text) {
  return Run(name != nullptr && text != nullptr, [&] { return OnPutCharArray(name, text); });
}

bool CMatlabEngine::GetCharArray(const char *name, std::string &text) {
  text.clear();
  const bool done = Run(name != nullptr, [&] { return OnGetCharArray(name, text); });
  if (!done) text.clear();
  return done;
}

bool CMatlabEngine::GetVisible(bool &visible) {
  visible = false;
  return Run(true, [&] { return OnGetVisible(visible); });
}

bool CMatlabEngine::SetVisible(bool visible) {
  return Run(true, [&] { return OnSetVisible(visible); });
}

} // namespace QORN
