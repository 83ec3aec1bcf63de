#include "RunTool.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace QORN::test {

namespace {

std::string ReadAll(int descriptor) {
  std::string text;
  char part[4096];
  for (ssize_t got = 0; (got = read(descriptor, part, sizeof part)) > 0;)
    text.append(part, static_cast<std::size_t>(got));
  close(descriptor);
  return text;
}

} // namespace

bool HasTerminals() {
  int sides[2];
  if (openpty(&sides[0], &sides[1], nullptr, nullptr, nullptr) != 0) return false;
  close(sides[0]);
  close(sides[1]);
  return true;
}

Outcome RunTool(const std::vector<std::string> &arguments, const std::function<void()> &prepare,
                bool terminal, const char *program) {
  int out[2];
  int error[2]; // of a terminal, the side of the reader comes first as well
  if (pipe(out) != 0) throw std::runtime_error("no pipe");
  if (terminal ? openpty(&error[0], &error[1], nullptr, nullptr, nullptr) != 0 : pipe(error) != 0)
    throw std::runtime_error("no pipe or terminal");

  std::string tool = program;
  std::vector<std::string> words = arguments;
  std::vector<char *> argv{tool.data()};
  for (std::string &word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  const pid_t child = fork();
  if (child == 0) {
    dup2(out[1], STDOUT_FILENO);
    dup2(error[1], STDERR_FILENO);
    for (const int descriptor : {out[0], out[1], error[0], error[1]}) close(descriptor);
    if (prepare) prepare();
    execv(tool.c_str(), argv.data());
    _exit(127);
  }
  close(out[1]);
  close(error[1]);
  Outcome outcome{};
  std::thread reader([&] { outcome.error = ReadAll(error[0]); });
  outcome.out = ReadAll(out[0]);
  reader.join();
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  outcome.residentKilobytes = usage.ru_maxrss;
  return outcome;
}

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "qorn-tool-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

std::vector<std::string> TemporaryFolder::Names() const {
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(path))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string Contents(const std::string &path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

} // namespace QORN::test
