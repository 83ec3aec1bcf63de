// Reads the tables of expected values in tests/data.
#ifndef QORN_TESTS_SUPPORT_CSV_H
#define QORN_TESTS_SUPPORT_CSV_H

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace QORN::test {

/// The rows of a file in tests/data, split at the commas. Empty if the file is not there.
inline std::vector<std::vector<std::string>> ReadCsv(const std::string &name) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream file(std::string(QORN_TEST_DATA "/") + name);
  for (std::string line; std::getline(file, line);) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
    rows.push_back(fields);
  }
  return rows;
}

} // namespace QORN::test

#endif
