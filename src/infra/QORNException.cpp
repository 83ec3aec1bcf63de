#include "qorn/infra/QORNException.h"

#include <iostream>

namespace QORN {

QORNException::QORNException(int code, const char *text, const char *path, long line)
    : errorCode(code), message(text), fileName(path), lineNumber(line), reserved(0) {}

void QORNException::displayErrorMessage() const {
  std::cerr << std::endl
            << "EXCEPTION: " << message << ", QORNErrorCode: " << std::dec << errorCode << std::endl
            << "File: " << fileName << ",  Line: " << lineNumber << std::endl;
}

} // namespace QORN
