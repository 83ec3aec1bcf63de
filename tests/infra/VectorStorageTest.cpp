// Vector files: every byte written, every refusal, and the vector after it. The files are made here byte by
// byte, independently of the library.
#include "qorn/infra/VectorStorage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/TempFile.h"

namespace {

using namespace QORN;
using test::ExpectThrown;
using test::OpenFiles;
using test::TempFile;

constexpr char kPath[] = "infra\\VectorStorage";

template <class Call> void ExpectOpenError(Call call) {
  ExpectThrown(call, 13001, "error opening file", kPath);
}
template <class Call> void ExpectReadError(Call call) {
  ExpectThrown(call, 13002, "error reading file", kPath);
}
template <class Call> void ExpectWriteError(Call call) {
  ExpectThrown(call, 13003, "error writing file", kPath);
}
template <class Call> void ExpectVersionError(Call call) {
  ExpectThrown(call, 13004, "file version error", kPath);
}
template <class Call> void ExpectTypeError(Call call) { ExpectThrown(call, 13005, "file type error", kPath); }

void Append(std::string &bytes, std::uint64_t word, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(word >> (8 * i) & 0xFF);
}
void Append(std::string &bytes, float x) {
  std::uint32_t word;
  std::memcpy(&word, &x, sizeof word);
  Append(bytes, word, 4);
}
void Append(std::string &bytes, double x) {
  std::uint64_t word;
  std::memcpy(&word, &x, sizeof word);
  Append(bytes, word, 8);
}
void Append(std::string &bytes, Cplx32 x) {
  Append(bytes, x.re);
  Append(bytes, x.im);
}
void Append(std::string &bytes, Cplx64 x) {
  Append(bytes, x.re);
  Append(bytes, x.im);
}

struct Real32 {
  using V = VecReal32;
  static constexpr const char *kName = "VecReal32";
  static constexpr int kType = 103, kSize = 4;
  static float Element(int i) { return 0.1F * static_cast<float>(i) - 1.0F; }
};
struct Real64 {
  using V = VecReal64;
  static constexpr const char *kName = "VecReal64";
  static constexpr int kType = 101, kSize = 8;
  static double Element(int i) { return 0.1 * i - 1.0; }
};
struct ComplexFloat {
  using V = VecCplx32;
  static constexpr const char *kName = "VecCplx32";
  static constexpr int kType = 102, kSize = 8;
  static Cplx32 Element(int i) { return {Real32::Element(i), Real32::Element(-3 * i)}; }
};
struct ComplexDouble {
  using V = VecCplx64;
  static constexpr const char *kName = "VecCplx64";
  static constexpr int kType = 100, kSize = 16;
  static Cplx64 Element(int i) { return {Real64::Element(i), Real64::Element(-3 * i)}; }
};
using Kinds = testing::Types<Real32, Real64, ComplexFloat, ComplexDouble>;
struct KindName {
  template <class K> static std::string GetName(int) { return K::kName; }
};

template <class K> std::string Description(int length) {
  return std::string(K::kName).append(", length=").append(std::to_string(length));
}

std::string Header(const std::string &description, int version, int type, int length, float a = 0,
                   float b = 0, float c = 0) {
  std::string bytes = description;
  bytes.resize(64);
  for (const int field : {26, version, type, length}) Append(bytes, static_cast<std::uint32_t>(field), 4);
  for (const float param : {a, b, c}) Append(bytes, param);
  bytes.resize(108);
  return bytes;
}
template <class K> std::string Header(int length) {
  return Header(Description<K>(length), 1, K::kType, length);
}

template <class K> std::string Data(int first, int count) {
  std::string bytes;
  for (int i = first; i < first + count; ++i) Append(bytes, K::Element(i));
  return bytes;
}

template <class K> typename K::V Vector(int n) {
  typename K::V vector(n);
  for (int i = 0; i < n; ++i) vector[i] = K::Element(i);
  return vector;
}

template <class K> void ExpectElements(const typename K::V &vector, int first, int count) {
  ASSERT_EQ(vector.GetSize(), count);
  std::string bytes;
  for (int i = 0; i < count; ++i) Append(bytes, vector[i]);
  EXPECT_EQ(bytes, Data<K>(first, count));
}

// What every failed load leaves: no elements, the capacity that was there, and no open file.
template <class K, class Expect, class Load> void ExpectRefused(Expect expect, Load load) {
  auto vector = Vector<K>(20);
  vector.Trim(3, 7);
  const int files = OpenFiles();
  expect([&] { load(vector); });
  EXPECT_EQ(vector.GetSize(), 0);
  EXPECT_EQ(vector.GetCapacity(), 20);
  EXPECT_EQ(OpenFiles(), files);
  vector.Resize(20);
  for (int i = 15; i < 20; ++i) {
    std::string got, want;
    Append(got, vector[i]);
    Append(want, K::Element(i));
    EXPECT_EQ(got, want); // the view starts at the block again, whose rest is untouched
  }
}

template <class K> class VectorFile : public testing::Test {};
TYPED_TEST_SUITE(VectorFile, Kinds, KindName);

TYPED_TEST(VectorFile, Store_AnyLength_WritesTheseBytes) {
  using K = TypeParam;
  for (const int n : {0, 1, 5, 1003}) {
    const TempFile file("something longer that was there before, and is not any more");
    Vector<K>(n).Store(file.Path());
    EXPECT_EQ(file.Content(), Header<K>(n) + Data<K>(0, n)) << n;
    EXPECT_EQ(file.Content().size(), 108U + static_cast<unsigned>(n * K::kSize));
  }
}

TYPED_TEST(VectorFile, StoreNoHeader_AnyLength_WritesTheDataAlone) {
  using K = TypeParam;
  for (const int n : {0, 1, 1003}) {
    const TempFile file("old");
    Vector<K>(n).StoreNoHeader(file.Path());
    EXPECT_EQ(file.Content(), Data<K>(0, n)) << n;
  }
}

TYPED_TEST(VectorFile, Store_TrimmedVector_WritesItsView) {
  using K = TypeParam;
  auto vector = Vector<K>(10);
  vector.Trim(2, 5);
  const TempFile file;
  vector.Store(file.Path());
  EXPECT_EQ(file.Content(), Header<K>(4) + Data<K>(2, 4));
  vector.StoreNoHeader(file.Path());
  EXPECT_EQ(file.Content(), Data<K>(2, 4));
}

TYPED_TEST(VectorFile, Store_EqualVectors_WriteEqualBytes) {
  using K = TypeParam;
  const TempFile first, second;
  Vector<K>(7).Store(first.Path());
  const auto copy = Vector<K>(7);
  copy.Store(second.Path());
  EXPECT_EQ(first.Content(), second.Content());
}

TYPED_TEST(VectorFile, Store_NewPath_MakesAFileForTheUmask) {
  using K = TypeParam;
  const TempFile file;
  ASSERT_EQ(unlink(file.Path()), 0);
  const mode_t before = umask(027);
  Vector<K>(1).Store(file.Path());
  umask(before);
  struct stat status;
  ASSERT_EQ(stat(file.Path(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TYPED_TEST(VectorFile, Load_StoredVector_GivesItBack) {
  using K = TypeParam;
  for (const int n : {0, 1, 5, 1003, 100003}) {
    const TempFile file;
    Vector<K>(n).Store(file.Path());
    auto vector = Vector<K>(3);
    vector.Load(file.Path());
    ExpectElements<K>(vector, 0, n);
  }
}

TYPED_TEST(VectorFile, Load_BytesBehindTheData_AreIgnored) {
  using K = TypeParam;
  const TempFile file(Header<K>(4) + Data<K>(0, 9));
  typename K::V vector;
  vector.Load(file.Path());
  ExpectElements<K>(vector, 0, 4);
}

TYPED_TEST(VectorFile, Load_FieldsThatAreNotExamined_MayHoldAnything) {
  using K = TypeParam;
  std::string bytes = Header("anything", 1, K::kType, 4, 1.0F, 2.0F, 3.0F) + Data<K>(0, 4);
  bytes[64] = 27;
  for (std::size_t i = 92; i < 108; ++i) bytes[i] = '\xFF';
  const TempFile file(bytes);
  typename K::V vector;
  vector.Load(file.Path());
  ExpectElements<K>(vector, 0, 4);
}

TYPED_TEST(VectorFile, Load_IntoATrimmedVector_StartsAtItsBlock) {
  using K = TypeParam;
  const TempFile file(Header<K>(6) + Data<K>(0, 6));
  auto vector = Vector<K>(8);
  const auto *block = vector.GetPtr();
  vector.Trim(5);
  vector.Load(file.Path());
  ExpectElements<K>(vector, 0, 6);
  EXPECT_EQ(vector.GetPtr(), block);
  EXPECT_EQ(vector.GetCapacity(), 8);
}

TYPED_TEST(VectorFile, StoreAndLoad_KeptVector_AllocateNothing) {
  using K = TypeParam;
  const auto source = Vector<K>(1000);
  auto vector = Vector<K>(1000);
  const TempFile file;
  const long before = test::AllocationCount();
  source.Store(file.Path());
  vector.Load(file.Path());
  source.StoreNoHeader(file.Path());
  EXPECT_EQ(test::AllocationCount(), before);
}

TYPED_TEST(VectorFile, Load_NoSuchFile_Throws13001) {
  using K = TypeParam;
  const std::string folder = std::filesystem::temp_directory_path().string();
  for (const char *path : {test::kNoSuchFile, folder.c_str(), static_cast<const char *>(nullptr)}) {
    ExpectRefused<K>([](auto call) { ExpectOpenError(call); }, [&](auto &vector) { vector.Load(path); });
  }
}

TYPED_TEST(VectorFile, Store_PathThatCannotBeWritten_Throws13001) {
  using K = TypeParam;
  const auto vector = Vector<K>(3);
  const std::string folder = std::filesystem::temp_directory_path().string();
  const int files = OpenFiles();
  for (const char *path : {test::kNoSuchFile, folder.c_str(), static_cast<const char *>(nullptr)}) {
    ExpectOpenError([&] { vector.Store(path); });
    ExpectOpenError([&] { vector.StoreNoHeader(path); });
  }
  EXPECT_EQ(OpenFiles(), files);
}

TYPED_TEST(VectorFile, Load_FileThatMayNotBeRead_Throws13001) {
  using K = TypeParam;
  const TempFile file(Header<K>(0));
  ASSERT_EQ(chmod(file.Path(), 0), 0);
  // The superuser may read everything and has to step down for this.
  const bool superuser = geteuid() == 0;
  if (superuser && seteuid(65534) != 0) GTEST_SKIP() << "the superuser cannot step down";
  ExpectRefused<K>([](auto call) { ExpectOpenError(call); }, [&](auto &vector) { vector.Load(file.Path()); });
  EXPECT_TRUE(!superuser || seteuid(0) == 0);
}

TYPED_TEST(VectorFile, Load_FileShorterThanItsHeader_Throws13002) {
  using K = TypeParam;
  for (const std::size_t size : {0U, 1U, 50U, 64U, 107U}) {
    const TempFile file(Header<K>(0).substr(0, size));
    ExpectRefused<K>([](auto call) { ExpectReadError(call); },
                     [&](auto &vector) { vector.Load(file.Path()); });
  }
}

TYPED_TEST(VectorFile, Load_FileThatFailsToBeRead_Throws13002) {
  using K = TypeParam;
  const char *path = "/proc/self/mem"; // nothing is mapped at its start
  if (!std::filesystem::exists(path)) GTEST_SKIP();
  ExpectRefused<K>([](auto call) { ExpectReadError(call); }, [&](auto &vector) { vector.Load(path); });
}

TYPED_TEST(VectorFile, Load_OtherVersion_Throws13004WhateverTheType) {
  using K = TypeParam;
  for (const int version : {0, 2, -1, 256}) {
    for (const int type : {K::kType, 0, 100, 101, 102, 103}) {
      const TempFile file(Header(Description<K>(3), version, type, 3) + Data<K>(0, 3));
      ExpectRefused<K>([](auto call) { ExpectVersionError(call); },
                       [&](auto &vector) { vector.Load(file.Path()); });
    }
  }
}

TYPED_TEST(VectorFile, Load_OtherType_Throws13005) {
  using K = TypeParam;
  for (const int type : {100, 101, 102, 103, 104, 0, -1}) {
    if (type == K::kType) continue;
    const TempFile file(Header(Description<K>(3), 1, type, 3) + std::string(1000, '\0'));
    ExpectRefused<K>([](auto call) { ExpectTypeError(call); },
                     [&](auto &vector) { vector.Load(file.Path()); });
  }
}

TYPED_TEST(VectorFile, Load_DataTooShort_Throws13002) {
  using K = TypeParam;
  for (const int missing : {1, 5 * K::kSize, 10 * K::kSize}) {
    const std::string bytes = Header<K>(10) + Data<K>(0, 10);
    const TempFile file(bytes.substr(0, bytes.size() - static_cast<unsigned>(missing)));
    ExpectRefused<K>([](auto call) { ExpectReadError(call); },
                     [&](auto &vector) { vector.Load(file.Path()); });
  }
}

TYPED_TEST(VectorFile, Load_DataTooShortForAGrownVector_LeavesItEmpty) {
  using K = TypeParam;
  const TempFile file(Header<K>(10) + Data<K>(0, 5));
  typename K::V vector;
  ExpectReadError([&] { vector.Load(file.Path()); });
  EXPECT_EQ(vector.GetSize(), 0);
}

TYPED_TEST(VectorFile, Load_LengthThatMemoryCannotHold_Throws11001) {
  using K = TypeParam;
  const TempFile file(Header<K>(INT_MAX) + Data<K>(0, 5));
  auto vector = Vector<K>(3);
  const int files = OpenFiles();
  const std::string printed = test::PrintedBy([&] {
    ExpectThrown([&] { vector.Load(file.Path()); }, 11001, "memory allocation error", "infra/Vector");
  });
  EXPECT_NE(printed.find("System tried to allocate 2147483647 items"), std::string::npos);
  EXPECT_EQ(vector.GetSize(), 0);
  EXPECT_EQ(OpenFiles(), files);
}

TYPED_TEST(VectorFile, Load_NegativeLength_Throws13002) {
  using K = TypeParam;
  for (const int length : {-1, INT_MIN}) {
    const TempFile file(Header<K>(length) + Data<K>(0, 5));
    ExpectRefused<K>([](auto call) { ExpectReadError(call); },
                     [&](auto &vector) { vector.Load(file.Path()); });
  }
}

TYPED_TEST(VectorFile, Store_FullDisk_Throws13003) {
  using K = TypeParam;
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
  const int files = OpenFiles();
  ExpectWriteError([] { Vector<K>(3).Store("/dev/full"); });
  ExpectWriteError([] { Vector<K>(0).Store("/dev/full"); });
  ExpectWriteError([] { Vector<K>(3).StoreNoHeader("/dev/full"); });
  Vector<K>(0).StoreNoHeader("/dev/full"); // there is nothing to write
  EXPECT_EQ(OpenFiles(), files);
}

// The header and the first bytes fit: what was written stays.
TYPED_TEST(VectorFile, Store_DiskFullWithinTheData_Throws13003AndLeavesAPart) {
  using K = TypeParam;
  const TempFile file;
  rlimit old;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  rlimit limited = old;
  limited.rlim_cur = 120;
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
  const int files = OpenFiles();
  ExpectWriteError([&] { Vector<K>(100).Store(file.Path()); });
  EXPECT_EQ(OpenFiles(), files);
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
  signal(SIGXFSZ, handler);
  EXPECT_EQ(file.Content(), (Header<K>(100) + Data<K>(0, 100)).substr(0, 120));
}

// A pipe takes and gives only a part of what is asked for, and signals interrupt the calls that wait for it.
TYPED_TEST(VectorFile, StoreAndLoad_SmallPipeAndSignals_MoveEveryByte) {
  using K = TypeParam;
  constexpr int kLength = 50003;
  const TempFile file;
  file.BecomePipe();
  struct sigaction action = {}, old;
  action.sa_handler = [](int) {};
  ASSERT_EQ(sigaction(SIGUSR1, &action, &old), 0);
  std::atomic<bool> stored = false, loaded = false;
  std::thread writer([&] {
    Vector<K>(kLength).Store(file.Path());
    stored = true;
    while (!loaded) std::this_thread::yield();
  });
  typename K::V vector;
  std::thread reader([&] {
    vector.Load(file.Path());
    loaded = true;
    while (!stored) std::this_thread::yield();
  });
  while (!stored || !loaded) {
    if (!stored) pthread_kill(writer.native_handle(), SIGUSR1);
    if (!loaded) pthread_kill(reader.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::microseconds(50));
  }
  writer.join();
  reader.join();
  sigaction(SIGUSR1, &old, nullptr);
  ExpectElements<K>(vector, 0, kLength);
}

TEST(VecCplx32File, Store_WithParameters_WritesThem) {
  const TempFile file;
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Vector<ComplexFloat>(2).Store(file.Path(), 1.5F, -2.25e10F, nan);
  EXPECT_EQ(file.Content(),
            Header(Description<ComplexFloat>(2), 1, 102, 2, 1.5F, -2.25e10F, nan) + Data<ComplexFloat>(0, 2));
}

struct HeaderFields {
  int length = -7;
  float a = -1, b = -2, c = -3;
};

TEST(VecCplx32File, LoadHeader_GivesLengthAndParametersAndKeepsTheVector) {
  const TempFile file(Header("", 1, 102, 1000000, 1.5F, 2.5F, 3.5F)); // and no data
  auto vector = Vector<ComplexFloat>(4);
  HeaderFields fields;
  const int files = OpenFiles();
  vector.Load(file.Path(), fields.length, fields.a, fields.b, fields.c);
  EXPECT_EQ(fields.length, 1000000);
  EXPECT_EQ(fields.a, 1.5F);
  EXPECT_EQ(fields.b, 2.5F);
  EXPECT_EQ(fields.c, 3.5F);
  ExpectElements<ComplexFloat>(vector, 0, 4);
  EXPECT_EQ(OpenFiles(), files);
}

TEST(VecCplx32File, LoadHeader_Refused_WritesParametersOnlyBeforeTheChecks) {
  struct Row {
    std::string bytes;
    int code;
    bool written;
  };
  const std::string sound = Header("", 1, 102, 4, 1, 2, 3);
  for (const Row &row :
       {Row{sound.substr(0, 107), 13002, false}, Row{Header("", 2, 103, 4, 1, 2, 3), 13004, true},
        Row{Header("", 1, 103, 4, 1, 2, 3), 13005, true},
        Row{Header("", 1, 102, -4, 1, 2, 3), 13002, true}}) {
    const TempFile file(row.bytes);
    auto vector = Vector<ComplexFloat>(4);
    HeaderFields fields;
    const int files = OpenFiles();
    const QORNException thrown =
        test::ThrownBy([&] { vector.Load(file.Path(), fields.length, fields.a, fields.b, fields.c); });
    EXPECT_EQ(thrown.GetErrorCode(), row.code);
    EXPECT_STREQ(thrown.GetFileName(), kPath);
    EXPECT_EQ(fields.length, -7);
    EXPECT_EQ(fields.a, row.written ? 1.0F : -1.0F);
    EXPECT_EQ(fields.b, row.written ? 2.0F : -2.0F);
    EXPECT_EQ(fields.c, row.written ? 3.0F : -3.0F);
    ExpectElements<ComplexFloat>(vector, 0, 4);
    EXPECT_EQ(OpenFiles(), files);
  }
  HeaderFields fields;
  VecCplx32 vector;
  ExpectOpenError([&] { vector.Load(test::kNoSuchFile, fields.length, fields.a, fields.b, fields.c); });
}

TEST(VecCplx32File, LoadPart_WithinTheFile_GivesThoseElements) {
  const TempFile file(Header<ComplexFloat>(5) + Data<ComplexFloat>(0, 5));
  struct Row {
    int first, count;
  };
  for (const Row &row : {Row{2, 3}, Row{0, 5}, Row{0, 0}, Row{5, 0}, Row{4, 1}, Row{1, 2}}) {
    auto vector = Vector<ComplexFloat>(3);
    vector.Trim(1);
    vector.Load(file.Path(), row.first, row.count);
    ExpectElements<ComplexFloat>(vector, row.first, row.count);
  }
}

TEST(VecCplx32File, LoadPart_PastTheLength_Throws13002) {
  const TempFile file(Header<ComplexFloat>(4) + Data<ComplexFloat>(0, 9));
  struct Row {
    int first, count;
  };
  for (const Row &row :
       {Row{2, 3}, Row{0, 5}, Row{5, 0}, Row{4, 1}, Row{INT_MAX, INT_MAX}, Row{INT_MAX, 1}}) {
    ExpectRefused<ComplexFloat>([](auto call) { ExpectReadError(call); },
                                [&](auto &vector) { vector.Load(file.Path(), row.first, row.count); });
  }
}

TEST(VecCplx32File, LoadPart_DataTooShort_Throws13002) {
  const TempFile file(Header<ComplexFloat>(1000000000) + Data<ComplexFloat>(0, 9));
  struct Row {
    int first, count;
  };
  for (const Row &row : {Row{0, 10}, Row{9, 1}, Row{999999990, 10}}) {
    ExpectRefused<ComplexFloat>([](auto call) { ExpectReadError(call); },
                                [&](auto &vector) { vector.Load(file.Path(), row.first, row.count); });
  }
}

TEST(VecCplx32File, LoadPart_NegativeFirst_ReadsTheHeader) {
  const std::string header = Header("", 1, 102, 2, 1.5F, 2.5F, 3.5F);
  const TempFile file(header + Data<ComplexFloat>(0, 2));
  VecCplx32 vector;
  vector.Load(file.Path(), -3, 4);
  ASSERT_EQ(vector.GetSize(), 4);
  EXPECT_EQ(vector[0].re, 2.5F); // offset 84
  EXPECT_EQ(vector[0].im, 3.5F);
  EXPECT_EQ(vector[1].re, 0.0F);
  EXPECT_EQ(vector[3].re, ComplexFloat::Element(0).re);
  ExpectRefused<ComplexFloat>([](auto call) { ExpectReadError(call); },
                              [&](auto &dst) { dst.Load(file.Path(), -14, 1); });
}

TEST(VecCplx32File, LoadPart_Refused_SaysWhy) {
  const TempFile cut(Header<ComplexFloat>(4).substr(0, 50));
  const TempFile version(Header("", 2, 103, 4));
  const TempFile type(Header("", 1, 103, 4) + std::string(64, '\0'));
  ExpectRefused<ComplexFloat>([](auto call) { ExpectOpenError(call); },
                              [](auto &vector) { vector.Load(test::kNoSuchFile, 0, 1); });
  ExpectRefused<ComplexFloat>([](auto call) { ExpectReadError(call); },
                              [&](auto &vector) { vector.Load(cut.Path(), 0, 1); });
  ExpectRefused<ComplexFloat>([](auto call) { ExpectVersionError(call); },
                              [&](auto &vector) { vector.Load(version.Path(), 0, 1); });
  ExpectRefused<ComplexFloat>([](auto call) { ExpectTypeError(call); },
                              [&](auto &vector) { vector.Load(type.Path(), 0, 1); });
}

// A real vector's file would fill a complex one, and yet is refused.
TEST(VecCplx32File, Load_FileOfAnotherClass_Throws13005) {
  const TempFile file;
  Vector<Real32>(8).Store(file.Path());
  ExpectRefused<ComplexFloat>([](auto call) { ExpectTypeError(call); },
                              [&](auto &vector) { vector.Load(file.Path()); });
}

// Data beyond 2 and 4 GiB, in a file that takes no room on the disk.
TEST(VecCplx32File, LoadPart_BeyondFourGibibytes_FindsTheElements) {
  const TempFile file(Header<ComplexFloat>(700000000));
  constexpr std::int64_t kFirst = 600000000;
  const std::string data = Data<ComplexFloat>(0, 3);
  const int descriptor = open(file.Path(), O_WRONLY);
  ASSERT_GE(descriptor, 0);
  const auto size = static_cast<ssize_t>(data.size());
  const bool written = pwrite(descriptor, data.data(), data.size(), 108 + 8 * kFirst) == size;
  close(descriptor);
  if (!written) GTEST_SKIP() << "no files of this size";
  VecCplx32 vector;
  vector.Load(file.Path(), static_cast<int>(kFirst), 3);
  ExpectElements<ComplexFloat>(vector, 0, 3);
}

} // namespace
