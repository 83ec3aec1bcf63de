// What the processor tells about itself through its own instructions; no file is read, no privilege needed.
#include <cstdint>
#include <cstdio>

#include "Processor.h"
#include "TimeStampCounter.h"
#include "kernels/Levels.h"
#include "qorn/Version.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {

#if defined(__x86_64__)

// The base clock if the processor tells it, else the rate of its time-stamp counter, which is that of the
// base clock on every processor of the last years.
int ClockMHz() {
  const int told = static_cast<int>(CpuId(0x16).eax & 0xFFFFU);
  if (told != 0) return told;
  return static_cast<int>(TimeStampCounterMHz() + 0.5);
}

// Features by the numbers of their bits in the mask.
unsigned long long Features() {
  __builtin_cpu_init();
  const bool has[] = {
      __builtin_cpu_supports("sse2") != 0,            // 0
      __builtin_cpu_supports("sse3") != 0,            // 1
      __builtin_cpu_supports("ssse3") != 0,           // 2
      __builtin_cpu_supports("sse4.1") != 0,          // 3
      __builtin_cpu_supports("sse4.2") != 0,          // 4
      __builtin_cpu_supports("popcnt") != 0,          // 5
      __builtin_cpu_supports("avx") != 0,             // 6
      __builtin_cpu_supports("avx2") != 0,            // 7
      __builtin_cpu_supports("fma") != 0,             // 8
      __builtin_cpu_supports("bmi") != 0,             // 9
      __builtin_cpu_supports("bmi2") != 0,            // 10
      __builtin_cpu_supports("avx512f") != 0,         // 11
      __builtin_cpu_supports("avx512cd") != 0,        // 12
      __builtin_cpu_supports("avx512bw") != 0,        // 13
      __builtin_cpu_supports("avx512dq") != 0,        // 14
      __builtin_cpu_supports("avx512vl") != 0,        // 15
      __builtin_cpu_supports("avx512ifma") != 0,      // 16
      __builtin_cpu_supports("avx512vbmi") != 0,      // 17
      __builtin_cpu_supports("avx512vbmi2") != 0,     // 18
      __builtin_cpu_supports("avx512vnni") != 0,      // 19
      __builtin_cpu_supports("avx512bitalg") != 0,    // 20
      __builtin_cpu_supports("avx512vpopcntdq") != 0, // 21
  };
  unsigned long long mask = 0;
  int bit = 0;
  for (const bool feature : has) mask |= static_cast<unsigned long long>(feature) << bit++;
  return mask;
}

#else

int ClockMHz() { return 0; }

// Bit 24: 128-bit vectors and fused multiply-add of 64-bit Arm.
unsigned long long Features() {
#if defined(__aarch64__)
  return 1ULL << 24;
#else
  return 0;
#endif
}

#endif

const char *LevelName() {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    if (level.table == kernels::Chosen()) return level.name;
  }
  return "base";
}

// A static buffer that texts are appended to.
class InfoText {
public:
  template <class... A> void Append(const char *format, A... arguments) {
    const int written = std::snprintf(m_text + m_length, sizeof m_text - m_length, format, arguments...);
    if (written > 0) m_length += static_cast<std::size_t>(written);
    if (m_length >= sizeof m_text) m_length = sizeof m_text - 1;
  }
  void Clear() { m_length = 0; }
  bool IsFull() const { return m_length > 2000; }
  char *Data() { return m_text; }

private:
  char m_text[4096] = {};
  std::size_t m_length = 0;
};

void AppendFeatures(InfoText &text) {
  const unsigned long long mask = Features();
  text.Append("CPU  : Features:0x%08llx = [", mask);
  for (int bit = 0; bit < 30; ++bit) {
    if ((mask >> bit & 1U) != 0) text.Append(" %i(%i)", bit, 1 << bit);
  }
  text.Append("%s", " ]\n");
}

} // namespace

char *TargetLib::GetCpuAndLibInfo() {
  static constinit InfoText text;
  text.Clear();
  text.Append("CPU  : Clk:%i MHz  Cache:%i kB\n", ClockMHz(), static_cast<int>(LargestCacheBytes() / 1024));
  if (text.IsFull()) return text.Data();
  AppendFeatures(text);
  if (text.IsFull()) return text.Data();

  struct Part {
    const char *format;
    const char *name;
  };
  static constexpr Part kParts[] = {
      {"IPP  : Name:%s  Ver:%s  Build:%d.%d.%d.%d\n", "QORN kernels"},
      {"IPPs : Name:%s  Ver:%s  Build:%d.%d.%d.%d\n", "QORN signal kernels"},
      {"IPPvm: Name:%s  Ver:%s  Build:%d.%d.%d.%d\n", "QORN elementary functions"},
      {"IPPi : Name:%s  Ver:%s  Build:%d.%d.%d.%d\n", "QORN bitmap kernels"},
      {"IPPiLeg90 : Name:%s  Ver:%s  Build:%d.%d.%d.%d\n", "QORN bitmap resizing"},
      {"IPPmLeg90 : Name:%s  Ver:%s  Build:%d.%d.%d.%d\n", "QORN matrix inversion"},
  };
  char version[64];
  std::snprintf(version, sizeof version, "%s (%s)", QORN_VERSION_STRING, LevelName());
  for (const Part &part : kParts) {
    text.Append(part.format, part.name, version, QORN_VERSION_MAJOR, QORN_VERSION_MINOR, QORN_VERSION_PATCH,
                0);
    if (text.IsFull()) break;
  }
  return text.Data();
}

} // namespace QORN
