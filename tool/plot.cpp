// qorn plot: the averaged spectrum of a recording, drawn by a MATLAB session.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Commands.h"
#include "Failure.h"
#include "Levels.h"
#include "MeasurementCommand.h"
#include "Options.h"
#include "OutputFile.h"
#include "Temporary.h"
#include "Text.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr int kMaxPoints = 1 << 18; // which a session draws in seconds

struct Options : LevelOptions {
  std::optional<int> points;
  std::string png;
  std::string interpreter;
};

std::string PrivateFolder() {
  std::string name = (fs::temp_directory_path() / "qorn-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw DataError("there is no room for temporary files");
  return name;
}

// As MATLAB code has it between apostrophes.
std::string InCode(const std::string &text) {
  std::string code;
  for (const char c : Printable(text)) code.append(c == '\'' ? 2 : 1, c);
  return code;
}

class Session {
public:
  explicit Session(const std::string &interpreter) : m_access("qorn spectrum", Start(interpreter)) {
    // No window, and no formulas in names of files.
    Do("set(0,'defaultfigurevisible','off'); set(0,'defaulttextinterpreter','none');");
  }

  void Draw(const Measurement &measurement, Unit unit, const std::string &title) {
    const int points = measurement.Points();
    const Prefix prefix = FrequencyPrefixFor(measurement.centre, measurement.spacing);
    QORN::VecReal64 frequencies(points), levels;
    LevelsOf(unit, measurement.mean, levels);
    for (int i = 0; i < points; ++i) frequencies[i] = measurement.FrequencyOf(i) / prefix.factor;
    m_access.Plot(frequencies, levels, 1, InCode(title).c_str(),
                  ("Frequency / " + std::string(prefix.letter) + "Hz").c_str(),
                  (std::string("Level / ") + NameOf(unit)).c_str());
    Check();
    m_access.Say("xlim([%.17g %.17g]);", frequencies[0], frequencies[points - 1]);
    Check();
  }

  // A picture of 1000 times 600 points.
  void Print(const fs::path &path) {
    m_access.Send("qorn_file", path.c_str());
    Check();
    Do("set(gcf,'PaperUnits','inches','PaperPosition',[0 0 10 6]); print('-dpng','-r100',qorn_file);");
  }

private:
  static std::unique_ptr<QORN::CMatlabEngine> Start(const std::string &interpreter) {
    auto engine = std::make_unique<QORN::MatlabProcess>(interpreter.empty() ? nullptr : interpreter.c_str());
    if (!engine->IsInitialized())
      throw DataError(interpreter.empty()
                          ? std::string("neither MATLAB nor GNU Octave could be started: ") +
                                engine->GetLastMessage()
                          : Quoted(interpreter) + " could not be started: " + engine->GetLastMessage());
    return engine;
  }

  void Do(const char *code) {
    m_access.Say("%s", code);
    Check();
  }

  void Check() const {
    const QORN::CMatlabEngine &engine = *m_access.GetEngine();
    if (engine.GetLastResult() == QORN::MatlabOk) return;
    const std::string message = engine.GetLastMessage();
    throw DataError("the session could not draw" + (message.empty() ? message : ": " + message));
  }

  QORN::MLAccess m_access;
};

void Run(const Options &options) {
  const Unit unit = *FindUnit(options.unit);
  const Recording recording(options.recording);
  const Setup setup = SetupOf(
      options, recording, [&](Setup &planned, const Recording &) { PlanPoints(planned, options.points); });
  OutputFiles files({{"--png", options.png}}, options.recording);
  Session session(options.interpreter);
  const Measurement measurement = MeasureWithProgress(recording, setup);
  session.Draw(measurement, unit, fs::path(options.recording).filename().string());
  const Temporary folder(PrivateFolder());
  const Temporary picture(folder.Path() + "/spectrum.png");
  session.Print(picture.Path());
  std::ifstream bytes(picture.Path(), std::ios::binary);
  if (!bytes) throw DataError("the session has drawn nothing");
  files.Write({[&](std::ostream &out) { out << bytes.rdbuf(); }});
}

} // namespace

void AddPlot(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("plot", "Draw the spectrum of a recording with MATLAB or Octave");
  AddRecording(*command, options->recording);
  command->add_option("--png", options->png, "write the picture")->type_name("FILE")->required();
  AddPointsOption(*command, options->points, kMaxPoints);
  AddLevelOptions(*command, *options);
  command->add_option("--interpreter", options->interpreter, "program to draw with (matlab, or octave-cli)")
      ->type_name("PROGRAM");
  command->footer("The spectrum is that of qorn spectrum. The program is looked up on the PATH.");
  command->callback([options] { Run(*options); });
}

} // namespace tool
