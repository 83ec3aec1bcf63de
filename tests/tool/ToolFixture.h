// What the tests of the tool share: recordings made to measure, and running the tool on them.
#ifndef QORN_TESTS_TOOL_TOOLFIXTURE_H
#define QORN_TESTS_TOOL_TOOLFIXTURE_H

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <complex>
#include <csignal>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "RunTool.h"
#include "support/IqfRecording.h"

namespace QORN::test {

using Signal = std::function<std::complex<double>(int)>;

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kFullScale = 32768.0; // steps, by the levels below: a tone of 0 dBm
inline constexpr double kRate = 1e6;

inline std::string HeaderText(int frames, int points, const std::string &more = "") {
  std::ostringstream text;
  text.precision(17);
  text << "Title=test FFTPoints=" << points << " ValidFrames=" << frames
       << " BlockSize=4 CenterFrequency=100M "
       << "Span=800k FrameLength=" << points / kRate << " MaxInputLevel=10 LevelOffset=-10 "
       << "GainOffset=-90.308998699194358 " << more;
  return iqf::Header(text.str());
}

/// A recording of signal(i), in steps, with whole frames only.
inline std::string Recording(int samples, const Signal &signal, int points = 1024) {
  const int frames = samples / points;
  std::string bytes = HeaderText(frames, points);
  for (int f = 0; f < frames; ++f)
    bytes += iqf::Frame(iqf::Mark::kCartesian, [&](int k) {
      const std::complex<double> x = k < points ? signal(f * points + k) : 0.0;
      return iqf::Pair{static_cast<int>(std::lround(x.imag())), static_cast<int>(std::lround(x.real()))};
    });
  return bytes + iqf::Frame(iqf::Mark::kNone, [](int) { return iqf::Pair{0, 0}; });
}

/// Keeps the process from writing more than 100 000 bytes to a file; what is beyond them fails.
inline void LimitFiles() {
  const rlimit most{100000, 100000};
  setrlimit(RLIMIT_FSIZE, &most);
  std::signal(SIGXFSZ, SIG_IGN);
}

/// A tone of so many dBm at so many cycles per sample.
inline Signal Tone(double dBm, double cycles) {
  return [=](int i) {
    return std::polar(kFullScale * std::pow(10.0, dBm / 20.0), 2.0 * kPi * std::fmod(cycles * i, 1.0));
  };
}

class Tool : public testing::Test {
protected:
  std::string Save(const std::string &bytes, const std::string &name = "test.iqf") const {
    std::ofstream(folder / name, std::ios::binary) << bytes;
    return folder / name;
  }

  static nlohmann::json Measure(std::vector<std::string> arguments, const char *command = "spectrum") {
    arguments.insert(arguments.begin(), command);
    arguments.emplace_back("--json");
    const Outcome outcome = RunTool(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    return nlohmann::json::parse(outcome.out);
  }

  /// Runs what must fail: with this status, nothing on the output and one line on the error stream.
  static void ExpectFailure(int status, const std::string &message, const std::vector<std::string> &arguments,
                            const std::function<void()> &prepare = {}) {
    const Outcome outcome = RunTool(arguments, prepare);
    EXPECT_EQ(outcome.status, status) << outcome.error;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.error, "qorn: " + message + "\n");
  }

  static void ExpectWellFormed(const std::string &svg) {
    EXPECT_EQ(svg.substr(0, 5), "<svg ");
    EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");
    // Every element that is opened is closed, in order, and no number is not one.
    std::vector<std::string> open;
    for (std::size_t at = svg.find('<'); at != std::string::npos; at = svg.find('<', at + 1)) {
      const std::size_t end = svg.find('>', at);
      ASSERT_NE(end, std::string::npos);
      const std::string tag = svg.substr(at + 1, end - at - 1);
      if (tag.back() == '/') continue;
      if (tag.front() == '/') {
        ASSERT_FALSE(open.empty());
        EXPECT_EQ(tag.substr(1), open.back());
        open.pop_back();
      } else {
        open.push_back(tag.substr(0, tag.find(' ')));
      }
    }
    EXPECT_TRUE(open.empty());
    for (const char *none : {"nan", "inf", "e+", "e-0"}) EXPECT_EQ(svg.find(none), std::string::npos) << none;
  }

  TemporaryFolder folder;
};

} // namespace QORN::test

#endif
