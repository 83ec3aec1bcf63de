// Text files of numbers.
#ifndef QORN_TOOL_NUMBERROWS_H
#define QORN_TOOL_NUMBERROWS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tool {

/// Calls use(place, numbers) for each line of a file that has numbers, place naming the option and the line
/// in messages. Blanks, commas and semicolons are between numbers, and a # begins a comment. Throws
/// UsageError if the file cannot be read, has more than mostBytes or a word that is no number of up to 1e15.
void ReadNumberRows(
    const std::string &option, const std::string &path, std::size_t mostBytes,
    const std::function<void(const std::string &place, const std::vector<double> &numbers)> &use);

} // namespace tool

#endif
