// Reads tests/data/generate.csv: expected values of generators, made outside of the library.
#ifndef QORN_TESTS_SUPPORT_EXPECTEDVALUES_H
#define QORN_TESTS_SUPPORT_EXPECTEDVALUES_H

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace QORN::test {

/// The values of one kind and one set of parameters, by index.
struct Expected {
  std::vector<double> parameters;
  std::vector<int> indices;
  std::vector<double> values;
  std::string name;
};

/// All sets of a kind in the order of the file; none if the file is missing.
inline std::vector<Expected> ExpectedValues(const std::string &kind) {
  std::vector<Expected> sets;
  std::ifstream file(QORN_TEST_DATA "/generate.csv");
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string thisKind, parameters, index, value;
    std::getline(fields, thisKind, ',');
    if (thisKind != kind) continue;
    std::getline(fields, parameters, ',');
    std::getline(fields, index, ',');
    std::getline(fields, value, ',');
    if (sets.empty() || sets.back().name != parameters) {
      sets.push_back({{}, {}, {}, parameters});
      std::istringstream numbers(parameters);
      for (double x; numbers >> x;) sets.back().parameters.push_back(x);
    }
    sets.back().indices.push_back(std::stoi(index));
    sets.back().values.push_back(std::strtod(value.c_str(), nullptr));
  }
  return sets;
}

} // namespace QORN::test

#endif
