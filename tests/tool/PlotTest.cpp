// qorn plot, with GNU Octave to draw.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "ToolFixture.h"
#include "support/Octave.h"

namespace {

using QORN::test::Contents;
using QORN::test::kOctave;
using QORN::test::Outcome;
using QORN::test::Recording;
using QORN::test::RunTool;
using QORN::test::Tone;
using QORN::test::Tool;

class Plot : public Tool {
protected:
  std::string Tones() const {
    return Save(Recording(8192, [](int i) { return Tone(-20, 0.125)(i) + Tone(-50, -0.25)(i); }),
                "it's_a 100% test.iqf");
  }
};

// The width and height that a PNG file tells, or zeros.
std::string SizeOf(const std::string &png) {
  if (png.compare(0, 16, std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)) != 0) return "no PNG";
  const auto number = [&](std::size_t at) {
    int value = 0;
    for (std::size_t i = at; i < at + 4; ++i) value = value * 256 + static_cast<unsigned char>(png[i]);
    return std::to_string(value);
  };
  return number(16) + "x" + number(20);
}

TEST_F(Plot, Spectrum_IsDrawnAsAPicture) {
  QORN_SKIP_WITHOUT_OCTAVE();
  const std::string png = folder / "plot.png";
  const Outcome outcome = RunTool({"plot", Tones(), "--png", png, "--interpreter", kOctave});
  EXPECT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(SizeOf(Contents(png)), "1000x600");
  EXPECT_GT(Contents(png).size(), 5000U); // a blank one of that size has less than 3000 bytes
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"it's_a 100% test.iqf", "plot.png"}));
}

TEST_F(Plot, Options_AreThoseOfTheSpectrum) {
  QORN_SKIP_WITHOUT_OCTAVE();
  const std::string png = folder / "plot.png";
  const Outcome outcome =
      RunTool({"plot", Tones(), "--png", png, "--points", "256", "--window", "hann", "--unit", "V", "--start",
               "1024", "--count", "2048", "--interpreter", kOctave});
  EXPECT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_EQ(SizeOf(Contents(png)), "1000x600");
}

TEST_F(Plot, Interpreter_ThatIsGivenCode_GetsTheSpectrum) {
  QORN_SKIP_WITHOUT_OCTAVE();
  // An interpreter that keeps what it has drawn: the same program, with another way to print.
  const std::string script = folder / "keeps-axes";
  const std::string told = folder / "told";
  std::ofstream(script) << "#!/bin/sh\nexec " << kOctave
                        << " --quiet --no-gui --persist --eval \"function print(varargin), "
                           "l = findobj(gca, 'type', 'line'); x = get(l, 'XData'); y = get(l, 'YData'); "
                           "[~, k] = max(y); f = fopen('"
                        << told
                        << "', 'w'); fprintf(f, '%d %.3f %.1f %s', numel(x), x(k), y(k), "
                           "get(get(gca, 'Title'), 'String')); fclose(f); end\"\n";
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  const std::string png = folder / "plot.png";
  ExpectFailure(1, "the session has drawn nothing",
                {"plot", Tones(), "--png", png, "--points", "1024", "--interpreter", script});
  EXPECT_EQ(Contents(told), "1024 100.125 -20.0 it's_a 100% test.iqf");
}

// The interpreter has written a picture, and goes on drawing.
TEST_F(Plot, Signal_LeavesNothingBehind) {
  QORN_SKIP_WITHOUT_OCTAVE();
  const std::string recording = Tones(), script = folder / "draws-on", drawn = folder / "drawn";
  std::ofstream(script) << "#!/bin/sh\nexec " << kOctave
                        << " --quiet --no-gui --persist --eval \"function print(varargin), "
                           "fclose(fopen(varargin{end}, 'w')); fclose(fopen('"
                        << drawn << "', 'w')); pause(20); end\"\n";
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  const std::string temporary = folder / "temporary";
  for (const int signal : {SIGINT, SIGTERM, SIGQUIT}) {
    std::filesystem::remove(drawn);
    std::filesystem::create_directory(temporary);
    const Outcome outcome =
        RunTool({"plot", recording, "--png", folder / "plot.png", "--interpreter", script}, [&] {
          setenv("TMPDIR", temporary.c_str(), 1);
          const rlimit none{0, 0}; // for the memory that SIGQUIT would save
          setrlimit(RLIMIT_CORE, &none);
          const pid_t tool = getpid();
          if (fork() != 0) return;
          while (!std::filesystem::exists(drawn) && getppid() == tool) usleep(1000);
          // As from a keyboard, but for the interpreter.
          kill(tool, signal);
          _exit(0);
        });
    EXPECT_EQ(outcome.status, -signal) << outcome.error;
    EXPECT_TRUE(std::filesystem::exists(drawn));
    EXPECT_TRUE(std::filesystem::is_empty(temporary)) << signal;
  }
  EXPECT_EQ(folder.Names(),
            (std::vector<std::string>{"drawn", "draws-on", "it's_a 100% test.iqf", "temporary"}));
}

TEST_F(Plot, Interpreter_ThatIsNone_IsNamed) {
  const std::string png = folder / "plot.png";
  ExpectFailure(1, "'no-such-program' could not be started: no interpreter could be started",
                {"plot", Tones(), "--png", png, "--interpreter", "no-such-program"});
  ExpectFailure(1, "'true' could not be started: the interpreter has ended",
                {"plot", Tones(), "--png", png, "--interpreter", "true"});
  ExpectFailure(1, "neither MATLAB nor GNU Octave could be started: no interpreter could be started",
                {"plot", Tones(), "--png", png}, [] { setenv("PATH", "/no-such-folder", 1); });
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"it's_a 100% test.iqf"}));
}

TEST_F(Plot, Arguments_ThatMakeNoSense_AreRefused) {
  const std::string recording = Tones();
  ExpectFailure(2, "--png is required", {"plot", recording});
  ExpectFailure(2, "--png: '" + recording + "' is the recording itself",
                {"plot", recording, "--png", recording});
  ExpectFailure(2, "--points: a block of 16384 points does not fit into 8192 samples",
                {"plot", recording, "--png", folder / "x.png", "--points", "16384"});
}

} // namespace
