#include "NumberRows.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Failure.h"
#include "Options.h"
#include "Text.h"

namespace tool {

namespace {

// Whole, but no more than there can be of use: not every file ends.
std::string TextOf(const std::string &option, const std::string &path, std::size_t mostBytes) {
  const auto refuse = [&](const std::string &reason) {
    throw UsageError(option + ": " + Quoted(path) + " " + reason);
  };
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) refuse("is a folder");
  std::ifstream file(path);
  if (!file) refuse(std::string("cannot be opened: ") + std::strerror(errno));
  std::string text;
  char block[65536];
  do {
    file.read(block, sizeof block);
    text.append(block, static_cast<std::size_t>(file.gcount()));
    if (text.size() > mostBytes)
      refuse("is longer than " + Grouped(static_cast<std::int64_t>(mostBytes)) + " bytes");
  } while (file);
  if (file.bad()) refuse(std::string("cannot be read: ") + std::strerror(errno));
  return text;
}

} // namespace

void ReadNumberRows(
    const std::string &option, const std::string &path, std::size_t mostBytes,
    const std::function<void(const std::string &place, const std::vector<double> &numbers)> &use) {
  std::istringstream file(TextOf(option, path, mostBytes));
  constexpr double kLargest = 1e15;
  std::string text;
  for (int number = 1; std::getline(file, text); ++number) {
    const std::string place = option + ": line " + std::to_string(number);
    text.resize(std::min(text.find('#'), text.size()));
    for (char &c : text)
      if (c == ',' || c == ';') c = ' ';
    std::istringstream words(text);
    std::vector<double> numbers;
    for (std::string word; words >> word;) {
      numbers.push_back(NumberOf(place, word));
      if (std::fabs(numbers.back()) > kLargest)
        throw UsageError(place + ": " + Quoted(word) + " is out of range");
    }
    if (!numbers.empty()) use(place, numbers);
  }
}

} // namespace tool
