#include "qorn/utils/UnitTestRecorder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <type_traits>

#include "support/Allocations.h"
#include "support/Capture.h"

namespace {

using QORN::UnitTestRecord;
using QORN::UnitTestRecorder;
using QORN::test::PrintedBy;

constexpr const char *kLog = "QORNUnitTestRelease.log";

static_assert(sizeof(UnitTestRecord) == 403);
static_assert(offsetof(UnitTestRecord, description) == 201 && offsetof(UnitTestRecord, passed) == 402);
static_assert(std::is_trivially_copyable_v<UnitTestRecord>);
static_assert(std::has_virtual_destructor_v<UnitTestRecorder>);

struct Stamp {
  std::string time, date;
  bool operator==(const Stamp &other) const { return time == other.time && date == other.date; }
};

Stamp Now() {
  const std::time_t now = std::time(nullptr);
  char time[100], date[100];
  std::strftime(time, sizeof time, "%H:%M:%S %p", std::localtime(&now));
  std::strftime(date, sizeof date, "%B %d %Y %z", std::localtime(&now));
  return {time, date};
}

UnitTestRecord Record(const char *name, const char *description, bool passed) {
  UnitTestRecord record{};
  std::strcpy(record.name, name);
  std::strcpy(record.description, description);
  record.passed = passed;
  return record;
}

// Each test has a current directory of its own.
class UnitTestRecorderTest : public testing::Test {
protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "qorn-log-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
    before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
  }
  void TearDown() override {
    std::filesystem::current_path(before);
    std::filesystem::remove_all(folder);
  }

  static std::string LogText() {
    std::ifstream file(kLog, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  /// Runs call() within one second of the clock, in a directory without a log or with the given one, and
  /// keeps what was printed and logged.
  template <class Call> void Run(Call call, const std::string &oldLog = {}) {
    do {
      std::filesystem::remove(kLog);
      if (!oldLog.empty()) std::ofstream(kLog, std::ios::binary) << oldLog;
      now = Now();
      printed = PrintedBy(call);
    } while (!(now == Now()));
    logged = LogText();
  }

  std::string Banner() const { return "QORN UnitTest started at " + now.time + ",  " + now.date; }
  std::string Finish() const { return "\n Finished at " + now.time + ",  " + now.date + "\n\n"; }

  std::filesystem::path folder, before;
  Stamp now;
  std::string printed, logged;
};

TEST_F(UnitTestRecorderTest, AddTestRecord_First_EmptiesTheLogAndWritesTheBanner) {
  Run(
      [] {
        UnitTestRecorder recorder;
        EXPECT_EQ(recorder.GetNumberOfRecords(), 0);
        EXPECT_TRUE(recorder.AddTestRecord("Gain", "at 1 MHz", true));
        EXPECT_EQ(recorder.GetNumberOfRecords(), 1);
      },
      "of another run\n");
  EXPECT_EQ(printed, Banner() + "\n#  0.   SUCCESS  :Gain :at 1 MHz");
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, AddTestRecord_Later_AppendsWithTheNextIndex) {
  Run([] {
    UnitTestRecorder recorder;
    recorder.AddTestRecord("Gain", "at 1 MHz", true);
    recorder.AddTestRecord("Noise", "100 % of %d \\ µV", false);
    EXPECT_TRUE(recorder.AddTestRecord("", "", false));
    EXPECT_EQ(recorder.GetNumberOfRecords(), 3);
  });
  EXPECT_EQ(printed, Banner() + "\n#  0.   SUCCESS  :Gain :at 1 MHz"
                                "\n#  1. **FAILURE**:Noise :100 % of %d \\ µV"
                                "\n#  2. **FAILURE**: :");
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, SetLogFileAppendOption_True_KeepsTheOldLogBeforeTheBanner) {
  Run(
      [] {
        UnitTestRecorder recorder;
        recorder.SetLogFileAppendOption(true);
        recorder.AddTestRecord("a", "b", true);
      },
      "of another run\n");
  EXPECT_EQ(printed, Banner() + "\n#  0.   SUCCESS  :a :b");
  EXPECT_EQ(logged, "of another run\n" + printed);
}

TEST_F(UnitTestRecorderTest, SetLogFileAppendOption_FalseAgain_EmptiesTheLog) {
  Run(
      [] {
        UnitTestRecorder recorder;
        recorder.SetLogFileAppendOption(true);
        recorder.SetLogFileAppendOption(false);
        recorder.AddTestRecord("a", "b", true);
      },
      "of another run\n");
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, Construction_Alone_LeavesTheLog) {
  Run([] { const UnitTestRecorder recorder; }, "of another run\n");
  EXPECT_EQ(printed, "");
  EXPECT_EQ(logged, "of another run\n");
}

TEST_F(UnitTestRecorderTest, AddTestRecord_LongTexts_KeepsTwoHundredCharacters) {
  const std::string name(300, 'n'), description(200, 'd');
  Run([&] { UnitTestRecorder().AddTestRecord(name.c_str(), description.c_str(), true); });
  EXPECT_EQ(printed, Banner() + "\n#  0.   SUCCESS  :" + name.substr(0, 200) + " :" + description);
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, AddTestRecord_NullTexts_AreEmpty) {
  Run([] { UnitTestRecorder().AddTestRecord(nullptr, nullptr, true); });
  EXPECT_EQ(printed, Banner() + "\n#  0.   SUCCESS  : :");
}

TEST_F(UnitTestRecorderTest, AddTestRecord_WithoutMemory_Throws) {
  UnitTestRecorder recorder;
  QORN::test::ExpectThrown(
      [&] {
        const QORN::test::AllocationLimit none(0);
        recorder.AddTestRecord("a", "b", false);
      },
      11001, "memory allocation error", "utils\\UnitTestRecorder");
  EXPECT_EQ(recorder.GetNumberOfRecords(), 0);
  EXPECT_FALSE(std::filesystem::exists(kLog));
}

TEST_F(UnitTestRecorderTest, DisplayRecord_ByHand_EmptiesTheLogAsLongAsThereIsNoRecord) {
  Run([] {
    UnitTestRecorder recorder;
    recorder.DisplayRecord(7, Record("a", "b", false));
    recorder.DisplayRecord(-12345, Record("c", "d", true));
    EXPECT_EQ(recorder.GetNumberOfRecords(), 0);
  });
  const std::string second = Banner() + "\n#-12345.   SUCCESS  :c :d";
  EXPECT_EQ(printed, Banner() + "\n#  7. **FAILURE**:a :b" + second);
  EXPECT_EQ(logged, second);
}

TEST_F(UnitTestRecorderTest, DisplayRecord_WithoutTerminators_StopsAtTheEndOfTheTexts) {
  UnitTestRecord record{};
  std::memset(record.name, 'n', sizeof record.name);
  std::memset(record.description, 'd', sizeof record.description);
  Run([&] { UnitTestRecorder().DisplayRecord(1000, record); });
  EXPECT_EQ(printed,
            Banner() + "\n#1000. **FAILURE**:" + std::string(201, 'n') + " :" + std::string(201, 'd'));
}

TEST_F(UnitTestRecorderTest, DisplaySummary_AllPassed_TellsTheTotalAndTheTime) {
  Run([] {
    UnitTestRecorder recorder;
    recorder.AddTestRecord("a", "b", true);
    recorder.AddTestRecord("c", "d", true);
    recorder.DisplaySummary();
  });
  const std::string records = Banner() + "\n#  0.   SUCCESS  :a :b\n#  1.   SUCCESS  :c :d";
  const std::string total = "\n================================\n Total Tests 2, ALL PASSED\n";
  EXPECT_EQ(printed, records + total + " " + Finish());
  EXPECT_EQ(logged, records + total + Finish());
}

TEST_F(UnitTestRecorderTest, DisplaySummary_WithoutRecords_CountsNoneAndKeepsTheLog) {
  Run([] { UnitTestRecorder().DisplaySummary(); }, "of another run\n");
  const std::string total = "\n================================\n Total Tests 0, ALL PASSED\n";
  EXPECT_EQ(printed, total + " " + Finish());
  EXPECT_EQ(logged, "of another run\n" + total + Finish());
}

void AddMixed(UnitTestRecorder &recorder) {
  recorder.AddTestRecord("a", "b", true);
  recorder.AddTestRecord("c", "d", false);
  recorder.AddTestRecord("e", "f", true);
  recorder.AddTestRecord("g", "h", false);
}

constexpr const char *kMixed = "\n#  0.   SUCCESS  :a :b\n#  1. **FAILURE**:c :d"
                               "\n#  2.   SUCCESS  :e :f\n#  3. **FAILURE**:g :h";
constexpr const char *kFailures = "\nFailure Test cases----------------------"
                                  "\n#  1. **FAILURE**:c :d\n#  3. **FAILURE**:g :h\n\n";
constexpr const char *kFailedTotal = "\n===============================\n 2 out of Tests 4 FAILED\n";

TEST_F(UnitTestRecorderTest, DisplaySummary_WithFailures_ListsThem) {
  Run([] {
    UnitTestRecorder recorder;
    AddMixed(recorder);
    recorder.DisplaySummary();
  });
  EXPECT_EQ(printed, Banner() + kMixed + kFailedTotal + kFailures + " " + Finish());
  EXPECT_EQ(logged, Banner() + kMixed + kFailedTotal + kFailures + Finish());
}

TEST_F(UnitTestRecorderTest, DisplayBriefSummary_WithFailures_TellsTheTotalAlone) {
  Run([] {
    UnitTestRecorder recorder;
    AddMixed(recorder);
    recorder.DisplayBriefSummary();
  });
  EXPECT_EQ(printed, Banner() + kMixed + kFailedTotal);
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, DisplayBriefSummary_AllPassed_TellsTheTotalAlone) {
  Run([] { UnitTestRecorder().DisplayBriefSummary(); });
  EXPECT_EQ(printed, "\n================================\n Total Tests 0, ALL PASSED\n");
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, DumpFailure_OfMixedRecords_KeepsTheirIndexes) {
  Run([] {
    UnitTestRecorder recorder;
    AddMixed(recorder);
    recorder.DumpFailure();
  });
  EXPECT_EQ(printed, Banner() + kMixed + kFailures);
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, DumpFailure_WithoutFailures_IsEmpty) {
  Run([] { UnitTestRecorder().DumpFailure(); });
  EXPECT_EQ(printed, "\nFailure Test cases----------------------\n\n");
  EXPECT_EQ(logged, printed);
}

TEST_F(UnitTestRecorderTest, Dump_OfMixedRecords_LogsThemAgainWithoutTheHeading) {
  Run([] {
    UnitTestRecorder recorder;
    AddMixed(recorder);
    recorder.Dump();
  });
  EXPECT_EQ(printed, Banner() + kMixed + "\n\n---------Unit Test Result Dump----------------------" + kMixed);
  EXPECT_EQ(logged, Banner() + kMixed + kMixed);
}

TEST_F(UnitTestRecorderTest, Dump_BeforeTheFirstRecordOfASecondObject_CountsFromZero) {
  Run([] {
    UnitTestRecorder first, second;
    AddMixed(first);
    first.Dump();
    second.AddTestRecord("i", "j", true); // the two share the log
  });
  const std::string last = Banner() + "\n#  0.   SUCCESS  :i :j";
  EXPECT_EQ(printed,
            Banner() + kMixed + "\n\n---------Unit Test Result Dump----------------------" + kMixed + last);
  EXPECT_EQ(logged, last);
}

TEST_F(UnitTestRecorderTest, Copies_HaveRecordsAndCountersOfTheirOwn) {
  Run([] {
    UnitTestRecorder source;
    AddMixed(source);
    UnitTestRecorder copy(source), assigned;
    assigned.AddTestRecord("lost", "", false);
    assigned = source;
    source = UnitTestRecorder();
    copy.AddTestRecord("i", "j", false);
    EXPECT_EQ(source.GetNumberOfRecords(), 0);
    EXPECT_EQ(copy.GetNumberOfRecords(), 5);
    EXPECT_EQ(assigned.GetNumberOfRecords(), 4);
    assigned = *&assigned;
    assigned.DisplayBriefSummary();
    copy.DumpFailure();
  });
  const std::string lost = Banner() + "\n#  0. **FAILURE**:lost :", added = "\n#  4. **FAILURE**:i :j";
  const std::string failures(kFailures, std::strlen(kFailures) - 2);
  EXPECT_EQ(printed, Banner() + kMixed + lost + added + kFailedTotal + failures + added + "\n\n");
  EXPECT_EQ(logged, lost + added + kFailedTotal + failures + added + "\n\n");
}

TEST_F(UnitTestRecorderTest, Copies_DoNotTakeTheAppendOption) {
  UnitTestRecorder appending, emptying;
  appending.SetLogFileAppendOption(true);
  Run(
      [&] {
        UnitTestRecorder copy(appending);
        copy.AddTestRecord("a", "b", true);
      },
      "of another run\n");
  EXPECT_EQ(logged, printed);
  appending = emptying;
  Run([&] { appending.DisplayRecord(0, Record("a", "b", true)); }, "of another run\n");
  EXPECT_EQ(logged, "of another run\n" + printed);
}

TEST_F(UnitTestRecorderTest, Copies_WithoutMemory_ThrowAndChangeNothing) {
  const auto copy = [](auto make) {
    QORN::test::ExpectThrown(
        [&] {
          const QORN::test::AllocationLimit none(0);
          make();
        },
        11001, "memory allocation error", "utils\\UnitTestRecorder");
  };
  Run([&] {
    UnitTestRecorder source, target;
    AddMixed(source);
    target.AddTestRecord("kept", "here", true);
    copy([&] { const UnitTestRecorder made(source); });
    copy([&] { target = source; });
    EXPECT_EQ(target.GetNumberOfRecords(), 1);
    target.Dump();
    target.DisplayBriefSummary();
  });
  const std::string kept = "\n#  0.   SUCCESS  :kept :here";
  const std::string total = "\n================================\n Total Tests 1, ALL PASSED\n";
  EXPECT_EQ(logged, Banner() + kept + kept + total);
}

TEST_F(UnitTestRecorderTest, GetTimeStamp_GivesLocalTimeAndDate) {
  char time[60], date[60];
  do {
    now = Now();
    UnitTestRecorder().GetTimeStamp(time, date, 60);
  } while (!(now == Now()));
  EXPECT_EQ(time, now.time);
  EXPECT_EQ(date, now.date);
}

TEST_F(UnitTestRecorderTest, GetTimeStamp_KeepsToTheSize) {
  char time[60] = "t", date[60] = "d";
  const UnitTestRecorder recorder;
  recorder.GetTimeStamp(time, date, 0);
  recorder.GetTimeStamp(time, date, -1);
  EXPECT_STREQ(time, "t");
  EXPECT_STREQ(date, "d");
  recorder.GetTimeStamp(nullptr, nullptr, 60);
  recorder.GetTimeStamp(time, date, 12); // "hh:mm:ss AM" fits, no date does
  EXPECT_EQ(std::strlen(time), 11U);
  EXPECT_STREQ(date, "");
  recorder.GetTimeStamp(time, nullptr, 11);
  EXPECT_STREQ(time, "");
}

// What the call writes to the standard output before it ends the process with the status 1.
#define EXPECT_OPEN_ERROR(call, before)                                                                      \
  EXPECT_EXIT(                                                                                               \
      {                                                                                                      \
        dup2(STDERR_FILENO, STDOUT_FILENO);                                                                  \
        call;                                                                                                \
      },                                                                                                     \
      testing::ExitedWithCode(1), testing::Eq(before "\n Open Log file QORNUnitTestRelease.log Error!"))

TEST_F(UnitTestRecorderTest, Log_ThatCannotBeOpened_EndsTheProcess) {
  UnitTestRecorder recorder;
  PrintedBy([&] { recorder.AddTestRecord("a", "b", false); });
  std::filesystem::remove(kLog);
  std::filesystem::create_directory(kLog);
  EXPECT_OPEN_ERROR(UnitTestRecorder().AddTestRecord("a", "b", true), "");
  EXPECT_OPEN_ERROR(recorder.AddTestRecord("a", "b", true), "");
  EXPECT_OPEN_ERROR(recorder.DisplayRecord(0, Record("a", "b", true)), "");
  EXPECT_OPEN_ERROR(recorder.DisplaySummary(), "");
  EXPECT_OPEN_ERROR(recorder.DisplayBriefSummary(), "");
  EXPECT_OPEN_ERROR(recorder.DumpFailure(), "");
  EXPECT_OPEN_ERROR(recorder.Dump(), "\n\n---------Unit Test Result Dump----------------------");
}

} // namespace
