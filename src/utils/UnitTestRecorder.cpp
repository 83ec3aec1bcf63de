#include "qorn/utils/UnitTestRecorder.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <list>
#include <new>

#include "infra/Errors.h"
#include "infra/TextFile.h"

namespace QORN {

namespace {

constexpr const char *kModule = "utils\\UnitTestRecorder";
constexpr int kTimeLength = 80;

// The log, open for the texts of one call.
class Log {
public:
  Log(const char *path, const char *mode) : m_file(std::fopen(path, mode)) {
    if (m_file) return;
    std::printf("\n Open Log file %s Error!", path);
    std::exit(1);
  }

  /// To this log alone.
  std::FILE *File() const { return m_file.get(); }

  /// To the standard output and to the log.
  [[gnu::format(printf, 2, 3)]] void Write(const char *format, ...) const {
    for (std::FILE *out : {stdout, m_file.get()}) {
      std::va_list arguments;
      va_start(arguments, format);
      std::vfprintf(out, format, arguments);
      va_end(arguments);
    }
  }

private:
  TextFile m_file;
};

template <std::size_t size> void CopyText(char (&dst)[size], const char *src) {
  const std::size_t length = src != nullptr ? strnlen(src, size - 1) : 0;
  if (length > 0) std::memcpy(dst, src, length);
  dst[length] = '\0';
}

struct TimeStamp {
  char time[kTimeLength], date[kTimeLength];
};

TimeStamp Now(const UnitTestRecorder &recorder) {
  TimeStamp now;
  recorder.GetTimeStamp(now.time, now.date, kTimeLength);
  return now;
}

} // namespace

UnitTestRecorder::UnitTestRecorder() = default;
UnitTestRecorder::~UnitTestRecorder() = default;

UnitTestRecorder::UnitTestRecorder(const UnitTestRecorder &other) { *this = other; }

UnitTestRecorder &UnitTestRecorder::operator=(const UnitTestRecorder &other) {
  try {
    std::list<UnitTestRecord> copied(other.records);
    records.swap(copied);
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
  numRecords = other.numRecords;
  numFailures = other.numFailures;
  std::memmove(logFileName, other.logFileName, sizeof logFileName);
  return *this;
}

bool UnitTestRecorder::AddTestRecord(const char *name, const char *description, bool passed) {
  UnitTestRecord record;
  CopyText(record.name, name);
  CopyText(record.description, description);
  record.passed = passed;
  try {
    records.push_back(record);
  } catch (const std::bad_alloc &) {
    Throw(errors::kMemoryAllocation, kModule);
  }
  DisplayRecord(numRecords, record);
  if (!passed) ++numFailures;
  ++numRecords;
  return true;
}

void UnitTestRecorder::DisplayRecord(int index, UnitTestRecord record) const {
  const Log log(logFileName, numRecords != 0 || appendToLog ? "a" : "w");
  if (numRecords == 0) {
    const TimeStamp now = Now(*this);
    log.Write("QORN UnitTest started at %s,  %s", now.time, now.date);
  }
  // A record that was filled by hand may lack its terminating zeros.
  constexpr int kRoom = sizeof record.name;
  log.Write("\n#%3d. %s:%.*s :%.*s", index, record.passed ? "  SUCCESS  " : "**FAILURE**", kRoom, record.name,
            kRoom, record.description);
}

// True if there were failures.
bool UnitTestRecorder::WriteTotals() const {
  const Log log(logFileName, "a");
  if (numFailures != 0) {
    log.Write("\n===============================");
    log.Write("\n %d out of Tests %d FAILED\n", numFailures, numRecords);
    return true;
  }
  log.Write("\n================================");
  log.Write("\n Total Tests %d, ALL PASSED\n", numRecords);
  return false;
}

void UnitTestRecorder::DisplaySummary() const {
  if (WriteTotals()) DumpFailure();
  const Log log(logFileName, "a");
  const TimeStamp now = Now(*this);
  std::printf(" \n Finished at %s,  %s\n\n", now.time, now.date);
  std::fprintf(log.File(), "\n Finished at %s,  %s\n\n", now.time, now.date);
}

void UnitTestRecorder::DisplayBriefSummary() const { WriteTotals(); }

void UnitTestRecorder::DumpFailure() const {
  Log(logFileName, "a").Write("\nFailure Test cases----------------------");
  int index = 0;
  for (const UnitTestRecord &record : records) {
    if (!record.passed) DisplayRecord(index, record);
    ++index;
  }
  Log(logFileName, "a").Write("\n\n");
}

void UnitTestRecorder::Dump() const {
  std::printf("\n\n---------Unit Test Result Dump----------------------");
  int index = 0;
  for (const UnitTestRecord &record : records) DisplayRecord(index++, record);
}

void UnitTestRecorder::GetTimeStamp(char *time, char *date, int size) const {
  if (size < 1) return;
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  const bool known = localtime_r(&now, &local) != nullptr;
  const auto put = [&](char *dst, const char *format) {
    if (dst == nullptr) return;
    if (!known || std::strftime(dst, static_cast<std::size_t>(size), format, &local) == 0) dst[0] = '\0';
  };
  put(time, "%H:%M:%S %p");
  put(date, "%B %d %Y %z");
}

} // namespace QORN
