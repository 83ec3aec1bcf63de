#ifndef QORN_UTILS_UNITTESTRECORDER_H
#define QORN_UTILS_UNITTESTRECORDER_H

#include <list>

#include "qorn/Export.h"

namespace QORN {

/// One result: what was tested, and whether it passed.
struct UnitTestRecord {
  char name[201];        ///< at most 200 characters and a terminating zero
  char description[201]; ///< the same
  bool passed;
};

/// Records pass or fail results of measurement code: each goes at once to the standard output and to a log
/// file, and is kept for a summary and for dumps at the end of a run.
///
/// The log is "QORNUnitTestRelease.log" in the current directory, opened and closed anew for each record and
/// each summary, so that the end of the process, however it comes, takes none of those before with it. All
/// objects of a directory share it. What is written below goes to both, the same bytes, where nothing else is
/// said.
///
/// If the log cannot be opened, "\n Open Log file %s Error!" with its name is printed on the standard output,
/// and the process ends through std::exit with the status 1: a run without a log must not pass unnoticed.
/// What a log that is open does not take, on a full disk for instance, is missing there without notice.
///
/// Times and dates are local, by strftime in the locale of the process, "%H:%M:%S %p" and "%B %d %Y %z"; both
/// are empty if there is no local time. An object is for one thread at a time.
class QORN_API UnitTestRecorder {
public:
  /// An empty recorder whose first record empties the log. The log is not touched before.
  UnitTestRecorder();

  /// A copy has the records, the counters and the name of the log. The append option is no part of it: a new
  /// object starts without, one that is assigned to keeps its own. Throws 11001 if there is no memory; what
  /// was to be assigned to is then as it was.
  UnitTestRecorder(const UnitTestRecorder &other);
  UnitTestRecorder &operator=(const UnitTestRecorder &other);
  virtual ~UnitTestRecorder();

  /// With true the log keeps what it holds, and the first record is written behind it.
  void SetLogFileAppendOption(bool append) { appendToLog = append; }

  /// The number of records.
  int GetNumberOfRecords() const { return numRecords; }

  /// Adds one record and shows it as DisplayRecord(GetNumberOfRecords(), record) did before the addition: the
  /// first record has the index 0. Of each text at most 200 characters are kept; null is an empty text. Gives
  /// true. Throws 11001 if there is no memory.
  bool AddTestRecord(const char *name, const char *description, bool passed);

  /// Writes "\n#%3d. %s:%s :%s" with index, "  SUCCESS  " or "**FAILURE**", the name and the description. As
  /// long as GetNumberOfRecords() is 0, "QORN UnitTest started at %s,  %s" with time and date goes before it,
  /// and the log is emptied first unless the append option is set.
  void DisplayRecord(int index, UnitTestRecord record) const;

  /// Without a failure, writes "\n", 32 times "=", and "\n Total Tests %d, ALL PASSED\n" with the number of
  /// records. Otherwise writes "\n", 31 times "=", and "\n %d out of Tests %d FAILED\n" with the numbers of
  /// failures and records, and then what DumpFailure writes. The last line is "\n Finished at %s,  %s\n\n"
  /// with time and date in the log, and " \n Finished at %s,  %s\n\n" on the standard output.
  void DisplaySummary() const;

  /// DisplaySummary without the dump of failures and without the last line.
  void DisplayBriefSummary() const;

  /// Writes "\nFailure Test cases----------------------", each record that has not passed as DisplayRecord
  /// does, with its index, and "\n\n".
  void DumpFailure() const;

  /// Prints "\n\n---------Unit Test Result Dump----------------------" on the standard output alone, and
  /// shows each record as DisplayRecord does, with its index; the log thus gets the records again.
  void Dump() const;

  /// The local time and date as text, `size` characters at most each with the terminating zero; a text that
  /// has no room is empty. A size below 1 or a null pointer writes nothing.
  void GetTimeStamp(char *time, char *date, int size) const;

private:
  bool WriteTotals() const;

  std::list<UnitTestRecord> records;
  int numRecords = 0;
  int numFailures = 0;
  bool appendToLog = false;
  char logFileName[80] = "QORNUnitTestRelease.log";
};

} // namespace QORN

#endif
