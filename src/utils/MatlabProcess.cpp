#include "qorn/utils/MatlabProcess.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "ChildProcess.h"
#include "infra/Errors.h"

namespace QORN {

namespace {

constexpr const char *kModule = "utils\\MatlabAccess";
constexpr const char *kSharedPath = "'/proc/self/fd/3'";
static_assert(ChildProcess::kShared == 3);
constexpr std::size_t kMaxAnswer = 1 << 20;
constexpr const char *kNotWritten = "there is no memory to share";

// Writes code: "$" is a variable of a name that nobody has, "#f(" calls the interpreter's own f, whatever
// variables and functions of the user bear its name, and "@1" to "@9" are the parts.
std::string Code(std::string_view pattern, std::initializer_list<std::string_view> parts = {}) {
  std::string code;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '$') {
      code += "qorn_session_";
    } else if (pattern[i] == '#') {
      const std::size_t end = pattern.find('(', i);
      code += "builtin('";
      code += pattern.substr(i + 1, end - i - 1);
      code += "',";
      i = end;
    } else if (pattern[i] == '@') {
      code += parts.begin()[pattern[++i] - '1'];
    } else {
      code += pattern[i];
    }
  }
  return code;
}

void AppendHex(std::string &text, std::string_view bytes) {
  constexpr const char *kDigits = "0123456789abcdef";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += kDigits[value / 16];
    text += kDigits[value % 16];
  }
}

int ValueOf(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

// The bytes up to the first character that is no digit of one.
std::string FromHex(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const int high = ValueOf(text[i]), low = ValueOf(text[i + 1]);
    if (high < 0 || low < 0) break;
    bytes += static_cast<char>(high * 16 + low);
  }
  return bytes;
}

std::string RandomName() {
  unsigned char bytes[16] = {};
  // Should it fail, the name is 32 zeros, which other output may hold: then the number of the line and the
  // status behind it tell an answer.
  static_cast<void>(getentropy(bytes, sizeof bytes));
  std::string name;
  AppendHex(name, {reinterpret_cast<const char *>(bytes), sizeof bytes});
  return name;
}

// Memory as a file without a name; without any, a file of the system's temporary folder that has lost its
// name.
int OpenShared() {
#if defined(__linux__)
  const int memory = memfd_create("qorn", MFD_CLOEXEC);
  if (memory >= 0) return memory;
#endif
  char path[] = "/tmp/qorn-XXXXXX";
  const int file = mkostemp(path, O_CLOEXEC);
  if (file >= 0) unlink(path);
  return file;
}

// The message of an error without what Octave puts around it.
std::string Stripped(const std::string &message) {
  const std::size_t start = message.compare(0, 7, "error: ") == 0 ? 7 : 0;
  const std::size_t end = message.find_last_not_of(" \n");
  return end == std::string::npos || end < start ? std::string() : message.substr(start, end + 1 - start);
}

// Of a matrix; a negative number for more elements than a vector can hold.
std::int64_t BytesOf(int rows, int columns) {
  const std::int64_t elements = static_cast<std::int64_t>(rows) * columns;
  return elements <= INT_MAX ? elements * static_cast<std::int64_t>(sizeof(double)) : -1;
}

bool IsMatlab(std::string_view interpreter) {
  const std::size_t slash = interpreter.rfind('/');
  return interpreter.substr(slash == std::string_view::npos ? 0 : slash + 1).substr(0, 6) == "matlab";
}

} // namespace

// The interpreter reads one line of code after the other from its standard input. Each line ends by printing
// an answer: the session's name, the number of the line, a status, and the message of an error in hexadecimal
// digits. The name is a random one, and what prints it holds it in two halves, so that neither the console's
// other output nor an echo of the code is taken for an answer.
class MatlabProcess::Session {
public:
  explicit Session(const char *interpreter)
      : shared(OpenShared()), m_name(RandomName()), m_child(Arguments(interpreter), shared) {}

  bool Started() const { return shared.Descriptor() >= 0 && m_child.Started(); }

  // Finds out whether Octave it is, and keeps that from leaving files behind when a signal ends it.
  int Greet(double timeLimit, std::string &message) {
    const int result =
        Ask(Code("if #exist('OCTAVE_VERSION','builtin')~=0,#crash_dumps_octave_core(false);"
                 "#sighup_dumps_octave_core(false);#sigterm_dumps_octave_core(false);@1else,@2end",
                 {Answer(kOctave, "''"), Answer(MatlabOk, "''")}),
            timeLimit, message);
    m_octave = result == kOctave;
    return m_octave ? MatlabOk : result;
  }

  // Runs code; an error in it leads to the answer that tells its message.
  int Try(const std::string &code, double timeLimit, std::string &message) {
    const std::string digits = Code("#sprintf('%02x',@1)", {Encoded("builtin('lasterr')")});
    return Ask(
        Code("try,@1@2catch,@3#clear('$');end", {code, Answer(MatlabOk, "''"), Answer(MatlabError, digits)}),
        timeLimit, message);
  }

  // Bytes as characters, and back.
  std::string Decoded(std::string_view bytes) const {
    return Code(m_octave ? "#char(@1)" : "native2unicode(uint8(@1),'UTF-8')", {bytes});
  }
  std::string Encoded(std::string_view characters) const {
    return Code(m_octave ? "#double(@1)" : "double(unicode2native(@1,'UTF-8'))", {characters});
  }

  // A text of any characters, as code of harmless ones.
  std::string Literal(std::string_view text) const {
    std::string digits;
    digits.reserve(2 * text.size());
    AppendHex(digits, text);
    return Decoded(Code("#sscanf('@1','%2x').'", {digits}));
  }

  // Gives the shared file so many bytes.
  bool Reserve(std::int64_t bytes) const { return Allowed(bytes) && shared.Resize(bytes); }

  // Empties the shared file, to which the interpreter is to write so many bytes, from the first to the last.
  // It may not notice that some of them find no room when it closes the file: the size tells how many did.
  bool Empty(std::int64_t bytes) const { return Allowed(bytes) && shared.Resize(0); }

  const BinaryFile shared;
  bool visible = false;

private:
  static constexpr int kOctave = 6;

  // A size that the host's limits do not allow would raise a signal.
  static bool Allowed(std::int64_t bytes) {
    if (bytes < 0) return false;
    rlimit most{};
    return getrlimit(RLIMIT_FSIZE, &most) != 0 || most.rlim_cur == RLIM_INFINITY ||
           static_cast<rlim_t>(bytes) <= most.rlim_cur;
  }

  static std::vector<const char *> Arguments(const char *interpreter) {
    if (IsMatlab(interpreter)) return {interpreter, "-nodesktop", "-nosplash"};
    return {interpreter, "--quiet", "--no-gui"};
  }

  // Code that answers the next line.
  std::string Answer(int status, std::string_view message) const {
    const std::size_t half = m_name.size() / 2;
    return Code("#fprintf(1,'%s%s @1 @2 %s\\n','@3','@4',@5);",
                {std::to_string(m_line + 1), std::to_string(status), m_name.substr(0, half),
                 m_name.substr(half), message});
  }

  int Ask(std::string code, double timeLimit, std::string &message) {
    ++m_line;
    m_pending.clear();
    int status = MatlabError;
    code += '\n';
    const auto outcome = m_child.Exchange(code, InSeconds(timeLimit), [&](std::string_view output) {
      m_pending += output;
      return IsAnswered(status, message);
    });
    if (outcome == ChildProcess::Outcome::kDone) return status;
    Show(m_pending);
    m_child.Kill();
    const bool late = outcome == ChildProcess::Outcome::kTimedOut;
    message = late ? "no answer within the time limit" : "the interpreter has ended";
    return late ? MatlabTimedOut : MatlabEnded;
  }

  // Looks for an answer in what has come so far, and shows and forgets all that is none.
  bool IsAnswered(int &status, std::string &message) {
    while (true) {
      const std::size_t start = m_pending.find(m_name);
      if (start == std::string::npos) {
        const std::size_t shown = m_pending.size() - std::min(m_pending.size(), m_name.size() - 1);
        Show({m_pending.data(), shown});
        m_pending.erase(0, shown);
        return false;
      }
      Show({m_pending.data(), start});
      m_pending.erase(0, start);
      const std::size_t end = m_pending.find('\n');
      if (end == std::string::npos && m_pending.size() < kMaxAnswer) return false;
      if (Parse(std::string_view(m_pending).substr(0, end), status, message)) return true;
      m_pending.erase(0, m_name.size());
    }
  }

  bool Parse(std::string_view answer, int &status, std::string &message) const {
    answer.remove_prefix(m_name.size());
    const auto number = [&] {
      std::int64_t value = -1;
      answer.remove_prefix(std::min<std::size_t>(answer.size(), 1)); // the blank in front
      const char *const behind = std::from_chars(answer.data(), answer.data() + answer.size(), value).ptr;
      answer.remove_prefix(static_cast<std::size_t>(behind - answer.data()));
      return value;
    };
    if (number() != m_line) return false;
    const std::int64_t told = number();
    if (told != MatlabOk && told != MatlabError && told != kOctave) return false;
    status = static_cast<int>(told);
    answer.remove_prefix(std::min<std::size_t>(answer.size(), 1));
    message = Stripped(FromHex(answer));
    return true;
  }

  void Show(std::string_view text) const {
    if (!visible || text.empty()) return;
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
  }

  std::string m_name;
  std::string m_pending; ///< output that may be the beginning of an answer
  std::int64_t m_line = 0;
  bool m_octave = false;
  ChildProcess m_child;
};

MatlabProcess::MatlabProcess(const char *interpreter, double timeLimit) : m_timeLimit(timeLimit) {
  try {
    const std::vector<const char *> candidates =
        interpreter != nullptr ? std::vector{interpreter} : std::vector{"matlab", "octave-cli"};
    for (const char *candidate : candidates) {
      m_session = std::make_unique<Session>(candidate);
      if (m_session->Started()) break;
    }
    if (!m_session->Started()) {
      m_session.reset();
      lastResult = MatlabEnded;
      SetMessage("no interpreter could be started");
      return;
    }
    std::string message;
    lastResult = m_session->Greet(timeLimit, message);
    SetMessage(message);
    initialized = lastResult == MatlabOk;
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
}

MatlabProcess::~MatlabProcess() = default;

int MatlabProcess::Ask(const std::string &code) {
  std::string message;
  int result = MatlabEnded;
  try {
    result = m_session->Try(code, m_timeLimit, message);
  } catch (...) {
    // What the interpreter has been told, and what it will answer, is not known any more.
    initialized = false;
    m_session.reset();
    throw;
  }
  SetMessage(message);
  if (result == MatlabTimedOut || result == MatlabEnded) {
    initialized = false;
    m_session.reset();
  }
  return result;
}

int MatlabProcess::OnExecute(const char *text) { return Ask(Code("#eval(@1);", {m_session->Literal(text)})); }

// Matrices go row by row, and the interpreter keeps columns. The size is set anew, since there are kinds of
// empty.
int MatlabProcess::OnPutFullMatrix(const char *name, const double *re, const double *im, int rows,
                                   int columns) {
  const std::int64_t bytes = BytesOf(rows, columns);
  const auto part = static_cast<std::size_t>(bytes);
  if (!m_session->Reserve(im != nullptr ? 2 * bytes : bytes) || !m_session->shared.WriteAt(0, re, part) ||
      (im != nullptr && !m_session->shared.WriteAt(bytes, im, part)))
    return MatlabNoMemory;
  const std::string read = Code("#reshape(#fread(${1},[@1,@2],'double=>double').',@2,@1);",
                                {std::to_string(columns), std::to_string(rows)});
  return Ask(Code(im != nullptr
                      ? "$={#fopen(@1,'r')};${2}=@2${3}=@2${1}=#fclose(${1});"
                        "#assignin('base',@3,#complex(${2},${3}));#clear('$');"
                      : "$={#fopen(@1,'r')};${2}=@2${1}=#fclose(${1});#assignin('base',@3,${2});#clear('$');",
                  {kSharedPath, read, m_session->Literal(name)}));
}

int MatlabProcess::OnGetFullMatrix(const char *name, double *re, double *im, int rows, int columns) {
  const std::int64_t bytes = BytesOf(rows, columns);
  if (!m_session->Empty(im != nullptr ? 2 * bytes : bytes)) return MatlabNoMemory;
  const auto write = [](const char *part) { return Code("${3}=#fwrite(${2},@1,'double');", {Code(part)}); };
  const int result =
      Ask(Code("if #exist(@1,'var')~=1,#error('there is no such variable');end;"
               "$={#double(#full(#evalin('base',@1)))};"
               "if #ndims(${1})~=2||#size(${1},1)~=@2||#size(${1},2)~=@3,"
               "#error('the variable has another size');end;"
               "${2}=#fopen(@4,'r+');@5@6${2}=#fclose(${2});#clear('$');",
               {m_session->Literal(name), std::to_string(rows), std::to_string(columns), kSharedPath,
                write("#real(${1}).'"), im != nullptr ? write("#imag(${1}).'") : std::string()}));
  if (result != MatlabOk) return result;
  const auto part = static_cast<std::size_t>(bytes);
  if (m_session->shared.ReadAt(0, re, part) == part &&
      (im == nullptr || m_session->shared.ReadAt(bytes, im, part) == part))
    return MatlabOk;
  SetMessage(kNotWritten);
  return MatlabError;
}

int MatlabProcess::OnPutCharArray(const char *name, const char *text) {
  const std::size_t length = std::strlen(text);
  if (!m_session->Reserve(static_cast<std::int64_t>(length)) || !m_session->shared.WriteAt(0, text, length))
    return MatlabNoMemory;
  return Ask(Code(
      "$={#fopen(@1,'r')};${2}=#fread(${1},[1,@2],'uint8=>uint8');${1}=#fclose(${1});"
      "#assignin('base',@3,@4);#clear('$');",
      {kSharedPath, std::to_string(length), m_session->Literal(name), m_session->Decoded(Code("${2}"))}));
}

// The number of bytes goes before them.
int MatlabProcess::OnGetCharArray(const char *name, std::string &text) {
  if (!m_session->Empty(0)) return MatlabNoMemory;
  const int result =
      Ask(Code("if #exist(@1,'var')~=1,#error('there is no such variable');end;"
               "$={#evalin('base',@1)};if ~#ischar(${1}),#error('the variable is no text');end;"
               "${1}=#reshape(${1}.',1,#numel(${1}));${1}=@3;${2}=#fopen(@2,'r+');"
               "${3}=#fwrite(${2},#numel(${1}),'double');${3}=#fwrite(${2},${1},'uint8');"
               "${2}=#fclose(${2});#clear('$');",
               {m_session->Literal(name), kSharedPath, m_session->Encoded(Code("${1}"))}));
  if (result != MatlabOk) return result;
  double count = -1;
  constexpr std::int64_t kStart = sizeof count;
  const std::int64_t size = m_session->shared.Size() - kStart;
  if (size > INT_MAX) return MatlabNoMemory;
  if (m_session->shared.ReadAt(0, &count, sizeof count) == sizeof count &&
      static_cast<double>(size) == count) {
    text.resize(static_cast<std::size_t>(size));
    if (m_session->shared.ReadAt(kStart, text.data(), text.size()) == text.size()) return MatlabOk;
  }
  SetMessage(kNotWritten);
  return MatlabError;
}

int MatlabProcess::OnGetVisible(bool &visible) {
  visible = m_session->visible;
  return MatlabOk;
}

int MatlabProcess::OnSetVisible(bool visible) {
  m_session->visible = visible;
  return MatlabOk;
}

} // namespace QORN
