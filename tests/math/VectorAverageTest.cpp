// The running mean in a scratch file. Expected means are formed here from the vectors themselves, expected
// files byte for byte.
#include "qorn/math/VectorAverage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/VecReal32.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/TempFile.h"
#include "support/Vectors.h"

namespace QORN {

struct VectorAveragePeer {
  // As if so many bytes had been written since the start of the ring, all of them long ago.
  static void MoveTo(VectorAverage &average, std::int64_t position) { average.filePos = position; }
};

} // namespace QORN

namespace {

using namespace QORN;
using test::List;
using test::Of;
using test::TempFile;

namespace fs = std::filesystem;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// A folder of its own, gone with the object and with all that is in it.
class Folder {
public:
  Folder() : m_path(testing::TempDir().append("qorn-XXXXXX")) {
    if (mkdtemp(m_path.data()) == nullptr) std::abort();
  }
  ~Folder() { fs::remove_all(m_path); }
  Folder(const Folder &) = delete;
  Folder &operator=(const Folder &) = delete;

  std::string File(const char *name) const { return std::string(m_path).append("/").append(name); }
  const std::string &Path() const { return m_path; }

  // The names in it.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(m_path)) names.push_back(entry.path().filename());
    return names;
  }

private:
  std::string m_path;
};

class VectorAverageTest : public testing::Test {
protected:
  const Folder folder;
  const std::string path = folder.File("ring");
  const int files = test::OpenFiles();

  std::string Content() const {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::vector<float> Floats() const {
    const std::string bytes = Content();
    std::vector<float> floats(bytes.size() / sizeof(float));
    EXPECT_EQ(bytes.size() % sizeof(float), 0U);
    if (!floats.empty()) std::memcpy(floats.data(), bytes.data(), floats.size() * sizeof(float));
    return floats;
  }
  // Neither a file nor a descriptor is left.
  void ExpectNothingLeft() const {
    EXPECT_TRUE(folder.Names().empty());
    EXPECT_EQ(test::OpenFiles(), files);
  }
};

bool Add(VectorAverage &average, const std::vector<float> &v) { return average.Add(Of<VecReal32>(v)); }

void ExpectMean(const VectorAverage &average, const std::vector<float> &mean, bool full) {
  auto out = Of<VecReal32>({7, 7, 7, 7, 7});
  EXPECT_EQ(average.Get(out), full);
  EXPECT_EQ(List(out), mean);
}

template <class Call> void ExpectOpenError(Call call) {
  test::ExpectThrown(call, 13001, "error opening file", "math\\VectorAverage");
}
template <class Call> void ExpectStateError(Call call) {
  test::ExpectThrown(call, 10001, "unexpected software error", "math\\VectorAverage");
}

static_assert(std::has_virtual_destructor_v<VectorAverage>);
static_assert(std::is_nothrow_move_constructible_v<VectorAverage>);
static_assert(std::is_nothrow_move_assignable_v<VectorAverage>);
static_assert(std::is_copy_constructible_v<VectorAverage> && std::is_copy_assignable_v<VectorAverage>);

// The mean.

TEST_F(VectorAverageTest, Get_FillingAndFull_GivesTheMeanOfTheLastN) {
  VectorAverage average(2, path.c_str());
  EXPECT_TRUE(Add(average, {1}));
  ExpectMean(average, {1}, false);
  EXPECT_TRUE(Add(average, {2}));
  ExpectMean(average, {1.5}, true);
  EXPECT_TRUE(Add(average, {4}));
  ExpectMean(average, {3}, true);
  EXPECT_TRUE(Add(average, {-8}));
  ExpectMean(average, {-2}, true);
}

TEST_F(VectorAverageTest, Get_Unused_GivesASingleZero) {
  ExpectMean(VectorAverage(), {0}, false);
  ExpectMean(VectorAverage(3, path.c_str()), {0}, false);
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, CurrentCount_EachVector_RisesToN) {
  VectorAverage average(3, path.c_str());
  for (const int count : {0, 1, 2, 3, 3, 3, 3, 3}) {
    EXPECT_EQ(average.CurrentCount(), count);
    EXPECT_EQ(average.IsCountReached(), count == 3);
    Add(average, {1, 2});
  }
}

TEST_F(VectorAverageTest, Add_OneVectorOnly_FollowsTheLast) {
  VectorAverage average(1, path.c_str());
  for (const float x : {3.0F, -1.0F, 5.5F, 0.0F}) {
    EXPECT_TRUE(Add(average, {x, 2 * x}));
    ExpectMean(average, {x, 2 * x}, true);
  }
}

// The difference is formed in float, the sum in double, and the mean with a product.
TEST_F(VectorAverageTest, Get_AnyStream_HasTheBitsOfTheFormula) {
  std::mt19937 random(1);
  std::normal_distribution<float> normal(1e3F, 1e3F);
  for (const int count : {1, 2, 3, 7}) {
    for (const int n : {1, 5, 4095, 4096, 4097, 10001}) {
      const auto length = static_cast<std::size_t>(n);
      VectorAverage average(count, path.c_str());
      std::deque<std::vector<float>> ring(static_cast<std::size_t>(count), std::vector<float>(length));
      std::vector<double> sum(length);
      for (int k = 1; k <= 3 * count; ++k) {
        std::vector<float> v(length);
        for (float &x : v) x = normal(random);
        ASSERT_TRUE(Add(average, v));
        VecReal32 out;
        ASSERT_EQ(average.Get(out), k >= count);
        ASSERT_EQ(out.GetSize(), n);
        const double factor = 1.0 / std::min(k, count);
        for (std::size_t i = 0; i < length; ++i) {
          volatile float difference = v[i] - ring.front()[i];
          sum[i] += static_cast<double>(difference);
          ASSERT_EQ(out[static_cast<int>(i)], static_cast<float>(sum[i] * factor)) << count << ' ' << n;
        }
        ring.pop_front();
        ring.push_back(v);
      }
    }
  }
}

TEST_F(VectorAverageTest, Add_OtherLength_IsRefusedAndChangesNothing) {
  VectorAverage average(2, path.c_str());
  Add(average, {1, 2});
  const std::string before = Content();
  for (const auto &v : {std::vector<float>{5}, {5, 5, 5}, {}}) {
    EXPECT_FALSE(Add(average, v));
    EXPECT_EQ(average.CurrentCount(), 1);
    EXPECT_EQ(Content(), before);
    ExpectMean(average, {1, 2}, false);
  }
  EXPECT_TRUE(Add(average, {3, 4}));
  ExpectMean(average, {2, 3}, true);
}

TEST_F(VectorAverageTest, Add_ViewOfAVector_TakesTheView) {
  VectorAverage average(2, path.c_str());
  auto v = Of<VecReal32>({1, 2, 3, 4});
  v.Trim(1, 2);
  EXPECT_TRUE(average.Add(v));
  ExpectMean(average, {2, 3}, false);
}

TEST_F(VectorAverageTest, Add_EmptyVectors_Count) {
  VectorAverage average(2, path.c_str());
  EXPECT_TRUE(Add(average, {}));
  EXPECT_FALSE(Add(average, {1}));
  ExpectMean(average, {}, false);
  EXPECT_TRUE(Add(average, {}));
  ExpectMean(average, {}, true);
  average.ReCalc();
  average.Clear();
  ExpectMean(average, {0}, false);
  EXPECT_TRUE(Add(average, {1}));
  ExpectMean(average, {1}, false);
  EXPECT_EQ(test::OpenFiles(), files + 1);
}

TEST_F(VectorAverageTest, Add_NegativeLength_ActsAsEmpty) {
  VectorAverage average(2, path.c_str());
  VecReal32 v(3);
  v.Resize(-1);
  EXPECT_TRUE(average.Add(v));
  ExpectMean(average, {}, false);
}

// Without vectors to hold there is no mean, and nothing goes wrong.
TEST_F(VectorAverageTest, Add_CountBelowOne_StaysEmpty) {
  for (const int count : {0, -1, -2, INT_MIN}) {
    VectorAverage average(count, path.c_str());
    for (int k = 0; k < 5; ++k) {
      EXPECT_TRUE(Add(average, {1, 2}));
      EXPECT_EQ(average.CurrentCount(), 0);
      EXPECT_TRUE(average.IsCountReached());
      ExpectMean(average, {0, 0}, false);
      EXPECT_EQ(Floats(), (std::vector<float>{1, 2}));
    }
    EXPECT_TRUE(Add(average, {1, 2, 3}));
    average.ReCalc();
    average.Clear();
    ExpectMean(average, {0, 0, 0}, false);
  }
  ExpectNothingLeft();
}

// The scratch file.

TEST_F(VectorAverageTest, Add_Ring_WritesTheseSlots) {
  VectorAverage average(2, path.c_str());
  EXPECT_FALSE(fs::exists(path));
  Add(average, {1, 2});
  EXPECT_EQ(Floats(), (std::vector<float>{1, 2, 0, 0, 0, 0}));
  Add(average, {3, 4});
  EXPECT_EQ(Floats(), (std::vector<float>{1, 2, 3, 4, 0, 0}));
  Add(average, {5, 6});
  EXPECT_EQ(Floats(), (std::vector<float>{1, 2, 3, 4, 5, 6}));
  Add(average, {7, 8});
  EXPECT_EQ(Floats(), (std::vector<float>{7, 8, 3, 4, 5, 6}));
  Add(average, {9, 1});
  EXPECT_EQ(Floats(), (std::vector<float>{7, 8, 9, 1, 5, 6}));
}

TEST_F(VectorAverageTest, Add_Bits_AreWrittenAsTheyAre) {
  VectorAverage average(1, path.c_str());
  Add(average, {-0.0F, 0x1p-149F, -kInf, 1.0F});
  const std::string bytes("\x00\x00\x00\x80\x01\x00\x00\x00\x00\x00\x80\xFF\x00\x00\x80\x3F", 16);
  EXPECT_EQ(Content(), bytes + std::string(16, '\0'));
}

TEST_F(VectorAverageTest, Add_FileThatWasThere_IsReplaced) {
  std::ofstream(path) << std::string(100, 'x');
  VectorAverage average(1, path.c_str());
  Add(average, {1});
  EXPECT_EQ(Floats(), (std::vector<float>{1, 0}));
}

TEST_F(VectorAverageTest, Destructor_WithAFile_ClosesAndRemovesIt) {
  {
    VectorAverage average(2, path.c_str());
    Add(average, {1});
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
    EXPECT_EQ(test::OpenFiles(), files + 1);
  }
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, Destructor_WithoutAFile_RemovesNothing) {
  std::ofstream(path) << "somebody's";
  { VectorAverage average(2, path.c_str()); }
  EXPECT_EQ(Content(), "somebody's");
}

TEST_F(VectorAverageTest, Destructor_FileOfSomebodyElseInPlace_LeavesIt) {
  {
    VectorAverage average(2, path.c_str());
    Add(average, {1});
    ASSERT_EQ(unlink(path.c_str()), 0);
    std::ofstream(path) << "somebody's";
  }
  EXPECT_EQ(Content(), "somebody's");
  EXPECT_EQ(test::OpenFiles(), files);
}

// The links stay, and lead to nothing again; what the file replaces is what they lead to.
TEST_F(VectorAverageTest, Destructor_PathOfALink_RemovesTheFileThatItLeadsTo) {
  fs::create_directory(folder.File("folder"));
  fs::create_symlink("folder/second", folder.File("first"));
  fs::create_symlink("../ring", folder.File("folder/second"));
  for (const bool present : {false, true}) {
    if (present) std::ofstream(path) << std::string(100, 'x');
    {
      VectorAverage average(1, folder.File("first").c_str());
      Add(average, {1});
      EXPECT_EQ(Floats(), (std::vector<float>{1, 0}));
      const VectorAverage copy(average);
    }
    EXPECT_FALSE(fs::exists(fs::symlink_status(path)));
    EXPECT_TRUE(fs::is_symlink(fs::symlink_status(folder.File("first"))));
    EXPECT_EQ(folder.Names().size(), 2U);
  }
}

TEST_F(VectorAverageTest, Add_PathOfLinksInACircle_Throws13001) {
  fs::create_symlink("second", folder.File("first"));
  fs::create_symlink("first", folder.File("second"));
  VectorAverage average(1, folder.File("first").c_str());
  ExpectOpenError([&] { Add(average, {1}); });
  EXPECT_EQ(folder.Names().size(), 2U);
}

TEST_F(VectorAverageTest, Destructor_OtherCurrentFolder_RemovesTheFile) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.Path());
  {
    VectorAverage average(2, "ring");
    Add(average, {1});
    fs::current_path(before);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
  }
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, Add_LongPath_Works) {
  std::string longPath = folder.Path();
  while (longPath.size() < 1500) longPath += "/.";
  longPath += "/ring";
  VectorAverage average(2, longPath.c_str());
  Add(average, {1});
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
}

TEST_F(VectorAverageTest, Add_KeptPathText_IsTheObjectsOwn) {
  std::string text = path;
  VectorAverage average(2, text.c_str());
  text.assign(text.size(), 'x');
  Add(average, {1});
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
}

// Starting afresh.

TEST_F(VectorAverageTest, Clear_Used_EmptiesTheAverageAndTheFile) {
  VectorAverage average(2, path.c_str());
  for (int k = 0; k < 4; ++k) Add(average, {1, 2});
  average.Clear();
  EXPECT_EQ(average.CurrentCount(), 0);
  EXPECT_FALSE(average.IsCountReached());
  EXPECT_EQ(Floats(), std::vector<float>(6));
  ExpectMean(average, {0, 0}, false);
  Add(average, {3, 4});
  EXPECT_EQ(Floats(), (std::vector<float>{3, 4, 0, 0, 0, 0}));
  ExpectMean(average, {3, 4}, false);
  Add(average, {5, 6});
  Add(average, {7, 8});
  ExpectMean(average, {6, 7}, true);
}

TEST_F(VectorAverageTest, Clear_Unused_DoesNothing) {
  VectorAverage average;
  average.Clear();
  average.ReCalc();
  EXPECT_EQ(average.CurrentCount(), 0);
  EXPECT_TRUE(average.IsIntact());
  ExpectMean(average, {0}, false);
}

TEST_F(VectorAverageTest, Add_OtherLengthAfterClear_MakesTheFileAnew) {
  VectorAverage average(2, path.c_str());
  Add(average, {1, 2});
  for (const auto &v : {std::vector<float>{5, 6, 7}, {8}, {1, 2, 3, 4}, {}, {1, 2}}) {
    average.Clear();
    EXPECT_TRUE(Add(average, v));
    std::vector<float> slots = v;
    slots.resize(3 * v.size());
    EXPECT_EQ(Floats(), slots);
    ExpectMean(average, v, false);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
    EXPECT_EQ(test::OpenFiles(), files + 1);
  }
}

TEST_F(VectorAverageTest, Init_Unused_StoresCountAndPath) {
  VectorAverage average;
  average.Init(2, path.c_str());
  EXPECT_FALSE(average.IsCountReached());
  Add(average, {1});
  Add(average, {2});
  ExpectMean(average, {1.5}, true);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
}

TEST_F(VectorAverageTest, Init_Used_RemovesTheFileAndStartsAfresh) {
  VectorAverage average(2, path.c_str());
  Add(average, {1});
  average.Init(3, folder.File("other").c_str());
  ExpectNothingLeft();
  ExpectMean(average, {0}, false);
  EXPECT_TRUE(Add(average, {1, 2}));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"other"});
  average.Init(1, folder.File("other").c_str());
  EXPECT_TRUE(Add(average, {3}));
  ExpectMean(average, {3}, true);
}

TEST_F(VectorAverageTest, Add_DefaultConstructed_Throws13001) {
  VectorAverage average;
  ExpectOpenError([&] { Add(average, {1}); });
}

// Summing anew.

TEST_F(VectorAverageTest, ReCalc_AnyState_SumsTheFileOldestFirst) {
  std::mt19937 random(2);
  std::normal_distribution<float> normal;
  constexpr std::size_t kLength = 5000;
  for (const int count : {1, 2, 5}) {
    VectorAverage average(count, path.c_str());
    std::deque<std::vector<float>> last;
    for (int k = 1; k <= 3 * count + 1; ++k) {
      std::vector<float> v(kLength);
      for (float &x : v) x = normal(random) * std::pow(10.0F, normal(random));
      Add(average, v);
      last.push_back(v);
      if (static_cast<int>(last.size()) > count) last.pop_front();
      VecReal32 before, out;
      average.Get(before);
      const std::string bytes = Content();
      average.ReCalc();
      EXPECT_EQ(Content(), bytes);
      EXPECT_EQ(average.CurrentCount(), std::min(k, count));
      EXPECT_EQ(average.Get(out), k >= count);
      for (std::size_t i = 0; i < kLength; ++i) {
        double sum = 0.0;
        for (const auto &x : last) sum += static_cast<double>(x[i]);
        const int at = static_cast<int>(i);
        ASSERT_EQ(out[at], static_cast<float>(sum * (1.0 / static_cast<double>(last.size()))));
      }
    }
  }
}

// The running sum loses a half each time, since 2^24 + 1 has no float; the sum anew has it.
TEST_F(VectorAverageTest, ReCalc_RoundedDifferences_ShedsTheError) {
  VectorAverage average(1, path.c_str());
  Add(average, {-1});
  Add(average, {16777216});
  ExpectMean(average, {16777215}, true);
  average.ReCalc();
  ExpectMean(average, {16777216}, true);
}

TEST_F(VectorAverageTest, ReCalc_OrdinaryStream_ChangesGetByRoundingOnly) {
  std::mt19937 random(3);
  std::uniform_real_distribution<float> uniform(-1, 1);
  VectorAverage average(8, path.c_str());
  VecReal32 v(1000), before, after;
  for (int k = 0; k < 100; ++k) {
    for (int i = 0; i < v.GetSize(); ++i) v[i] = uniform(random);
    average.Add(v);
  }
  average.Get(before);
  average.ReCalc();
  average.Get(after);
  // 100 differences of magnitude up to 2, each rounded by up to 2^-24, over 8.
  for (int i = 0; i < v.GetSize(); ++i) ASSERT_NEAR(before[i], after[i], 100 * 0x1p-24 / 8 + 0x1p-24);
}

TEST_F(VectorAverageTest, ReCalc_InfinityThatHasLeft_IsShed) {
  VectorAverage average(2, path.c_str());
  for (const auto &v : {std::vector<float>{kInf, kNaN, 1}, {1, 1, 1}, {3, 3, 3}}) Add(average, v);
  VecReal32 out;
  average.Get(out);
  EXPECT_TRUE(std::isnan(out[0]));
  EXPECT_TRUE(std::isnan(out[1]));
  average.ReCalc();
  ExpectMean(average, {2, 2, 2}, true);
}

// What can go wrong.

TEST_F(VectorAverageTest, Add_PathThatCannotBeOpened_Throws13001OnEachAdd) {
  const std::string tooLong = folder.File(std::string(5000, 'x').c_str());
  for (const char *bad :
       {test::kNoSuchFile, folder.Path().c_str(), tooLong.c_str(), "", static_cast<const char *>(nullptr)}) {
    VectorAverage average(2, bad);
    for (int k = 0; k < 2; ++k) {
      ExpectOpenError([&] { Add(average, {1, 2}); });
      EXPECT_EQ(average.CurrentCount(), 0);
      ExpectMean(average, {0}, false);
    }
    average.Clear();
    average.ReCalc();
    const VectorAverage copy = average;
    average.Init(2, path.c_str());
    EXPECT_TRUE(Add(average, {1, 2}));
  }
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, Add_FolderThatMayNotBeWritten_Throws13001) {
  ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
  // The superuser may write everywhere and has to step down for this.
  const bool superuser = geteuid() == 0;
  if (superuser && seteuid(65534) != 0) GTEST_SKIP() << "the superuser cannot step down";
  VectorAverage average(2, path.c_str());
  ExpectOpenError([&] { Add(average, {1, 2}); });
  EXPECT_TRUE(!superuser || seteuid(0) == 0);
  ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
  EXPECT_TRUE(Add(average, {1, 2}));
  ExpectMean(average, {1, 2}, false);
}

TEST_F(VectorAverageTest, Add_FileLostOnAChangeOfLength_Throws10001UntilInit) {
  const std::string inner = folder.File("inner");
  fs::create_directory(inner);
  VectorAverage average(2, std::string(inner).append("/ring").c_str());
  Add(average, {1, 2});
  average.Clear();
  fs::remove_all(inner);
  ExpectOpenError([&] { Add(average, {1, 2, 3}); });
  for (const auto &v : {std::vector<float>{1}, {1, 2}, {1, 2, 3}}) {
    ExpectStateError([&] { Add(average, v); });
    EXPECT_EQ(average.CurrentCount(), 0);
  }
  average.Clear();
  average.ReCalc();
  const VectorAverage copy = average;
  ExpectMean(copy, {0, 0}, false);
  average.Init(2, path.c_str());
  EXPECT_TRUE(Add(average, {1, 2, 3}));
}

TEST_F(VectorAverageTest, Add_FileDeletedMidway_GoesOn) {
  {
    VectorAverage average(2, path.c_str());
    Add(average, {1});
    ASSERT_EQ(unlink(path.c_str()), 0);
    for (const float x : {2.0F, 4.0F, 6.0F}) EXPECT_TRUE(Add(average, {x}));
    ExpectMean(average, {5}, true);
    average.ReCalc();
    ExpectMean(average, {5}, true);
    EXPECT_TRUE(average.IsIntact());
    average.Clear();
    EXPECT_TRUE(Add(average, {1, 2}));
    EXPECT_EQ(Floats(), (std::vector<float>{1, 2, 0, 0, 0, 0}));
  }
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, Add_FileCutMidway_CountsTheLostAsZeros) {
  VectorAverage average(2, path.c_str());
  Add(average, {1, 1});
  Add(average, {2, 2});
  EXPECT_TRUE(average.IsIntact());
  ASSERT_EQ(truncate(path.c_str(), 6), 0);
  EXPECT_TRUE(Add(average, {4, 4}));
  EXPECT_EQ(Floats(), (std::vector<float>{1, 0, 0, 0, 4, 4})); // half an element counts as none
  EXPECT_TRUE(average.IsIntact());
  ASSERT_EQ(truncate(path.c_str(), 6), 0);
  average.ReCalc();
  EXPECT_FALSE(average.IsIntact());
  ExpectMean(average, {0, 0}, true);
  EXPECT_TRUE(Add(average, {6, 6}));
  average.Clear();
  EXPECT_TRUE(average.IsIntact());
  for (const float x : {2.0F, 4.0F, 6.0F}) EXPECT_TRUE(Add(average, {x, x}));
  ExpectMean(average, {5, 5}, true);
}

class FileLimit {
public:
  explicit FileLimit(rlim_t bytes) : m_handler(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &m_old);
    const rlimit limited{bytes, m_old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limited);
  }
  ~FileLimit() {
    setrlimit(RLIMIT_FSIZE, &m_old);
    signal(SIGXFSZ, m_handler);
  }
  FileLimit(const FileLimit &) = delete;
  FileLimit &operator=(const FileLimit &) = delete;

private:
  void (*m_handler)(int);
  rlimit m_old;
};

TEST_F(VectorAverageTest, Add_FileThatCannotGrow_GoesOnAndTells) {
  {
    VectorAverage average(3, path.c_str());
    {
      const FileLimit limit(20); // of the 32 bytes
      for (int k = 1; k <= 10; ++k) {
        EXPECT_TRUE(Add(average, {1, 2}));
        EXPECT_EQ(average.CurrentCount(), std::min(k, 3));
        EXPECT_FALSE(average.IsIntact());
        average.ReCalc();
      }
      const VectorAverage copy = average;
      EXPECT_FALSE(copy.IsIntact());
      EXPECT_LE(Content().size(), 20U);
      average.Clear();
      EXPECT_FALSE(average.IsIntact());
    }
    average.Clear();
    EXPECT_TRUE(average.IsIntact());
    for (int k = 1; k <= 4; ++k) Add(average, {1, 2});
    ExpectMean(average, {1, 2}, true);
  }
  ExpectNothingLeft();
}

// A pipe has no places: nothing can be kept in it, and nothing waits for it.
TEST_F(VectorAverageTest, Add_PathOfAPipe_NeitherWaitsNorRemovesIt) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  {
    VectorAverage average(2, path.c_str());
    for (int k = 0; k < 4; ++k) EXPECT_TRUE(Add(average, {1, 2}));
    average.ReCalc();
    average.Clear();
    EXPECT_FALSE(average.IsIntact());
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
  EXPECT_EQ(test::OpenFiles(), files);
}

TEST_F(VectorAverageTest, Add_NoMemory_Throws11001AndLeavesNoFile) {
  VectorAverage average(2, path.c_str());
  const VecReal32 v(100000);
  const auto addWithoutMemory = [&] {
    test::PrintedBy([&] {
      const test::AllocationLimit limit(1000);
      EXPECT_EQ(test::ThrownBy([&] { average.Add(v); }).GetErrorCode(), 11001);
    });
  };
  addWithoutMemory();
  ExpectNothingLeft();
  EXPECT_TRUE(average.Add(v));
  average.Clear();
  EXPECT_TRUE(Add(average, {1}));
  average.Clear();
  ExpectMean(average, {0}, false);
}

TEST_F(VectorAverageTest, AnyCall_Refused_LosesNothing) {
  const VecReal32 v = Of<VecReal32>({1, 2});
  VectorAverage used(2, path.c_str());
  used.Add(v);
  const std::string other = folder.File("another file of a long name");
  for (const std::size_t most : {0U, 10U, 40U, 60U, 100U, 200U}) {
    VectorAverage average;
    test::PrintedBy([&] {
      const test::AllocationLimit limit(most);
      for (int k = 0; k < 2; ++k) {
        const int code = test::ThrownBy([&] {
                           average.Init(2, other.c_str());
                           average.Add(v);
                           average = used;
                         }).GetErrorCode();
        EXPECT_TRUE(code == 0 || code == 11001) << code;
      }
    });
    average = VectorAverage();
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
    EXPECT_EQ(test::OpenFiles(), files + 1);
  }
  ExpectMean(used, {1, 2}, false);
}

// Rings beyond 2 and 4 GiB, of files that take no room on the disk.
TEST_F(VectorAverageTest, Add_LargeRing_FindsItsSlots) {
  for (const int count : {600000000, 1200000000, INT_MAX}) {
    VectorAverage average(count, path.c_str());
    Add(average, {1});
    if (!average.IsIntact()) GTEST_SKIP() << "no files of this size";
    const std::int64_t size = 4 * (std::int64_t{count} + 1);
    EXPECT_EQ(static_cast<std::int64_t>(fs::file_size(path)), size);
    average.Clear();
    VectorAveragePeer::MoveTo(average, size - 8);
    for (const float x : {2.0F, 3.0F, 7.0F}) EXPECT_TRUE(Add(average, {x}));
    ExpectMean(average, {4}, false);
    average.ReCalc();
    ExpectMean(average, {4}, false);
    EXPECT_EQ(static_cast<std::int64_t>(fs::file_size(path)), size);
    const VectorAverage copy = average;
    EXPECT_TRUE(copy.IsIntact());

    const int file = open(path.c_str(), O_RDONLY);
    float found[3];
    EXPECT_EQ(pread(file, &found[0], 8, size - 8), 8);
    EXPECT_EQ(pread(file, &found[2], 4, 0), 4);
    close(file);
    EXPECT_EQ(found[0], 2.0F);
    EXPECT_EQ(found[1], 3.0F);
    EXPECT_EQ(found[2], 7.0F);
  }
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, Add_RingBeyondAnyDisk_DoesNotCrash) {
  VectorAverage average(INT_MAX, path.c_str());
  const VecReal32 v(10000000); // 80 petabytes
  const FileLimit limit(1000000);
  EXPECT_TRUE(average.Add(v));
  EXPECT_FALSE(average.IsIntact());
  average.Clear();
}

// Copies.

TEST_F(VectorAverageTest, Copy_Used_IsAValueOfItsOwn) {
  VectorAverage average(2, path.c_str());
  for (const float x : {1.0F, 2.0F, 4.0F}) Add(average, {x, -x});
  const std::string before = Content();
  {
    VectorAverage copy(average);
    EXPECT_EQ(folder.Names().size(), 2U);
    EXPECT_EQ(test::OpenFiles(), files + 2);
    ExpectMean(copy, {3, -3}, true);
    Add(copy, {8, -8});
    ExpectMean(copy, {6, -6}, true);
    Add(copy, {0, 0});
    ExpectMean(copy, {4, -4}, true);
    copy.ReCalc();
    ExpectMean(copy, {4, -4}, true);
    EXPECT_TRUE(copy.IsIntact());
    EXPECT_EQ(Content(), before);
    ExpectMean(average, {3, -3}, true);
    copy.Clear();
    EXPECT_TRUE(Add(copy, {1, 2, 3}));
    EXPECT_EQ(folder.Names().size(), 2U);
    ExpectMean(copy, {1, 2, 3}, false);
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
  EXPECT_EQ(Content(), before);
  Add(average, {6, -6});
  ExpectMean(average, {5, -5}, true);
}

TEST_F(VectorAverageTest, Copy_SourceDiesFirst_GoesOn) {
  VectorAverage copy;
  {
    VectorAverage average(2, path.c_str());
    Add(average, {1});
    Add(average, {2});
    copy = average;
  }
  EXPECT_EQ(folder.Names().size(), 1U);
  EXPECT_NE(folder.Names()[0], "ring");
  EXPECT_EQ(folder.Names()[0].substr(0, 5), "ring.");
  Add(copy, {4});
  ExpectMean(copy, {3}, true);
  copy = VectorAverage();
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, Copy_Unused_DoesNotShareTheFile) {
  VectorAverage first(2, path.c_str());
  VectorAverage second(first), third;
  third = second;
  Add(first, {1});
  Add(second, {10});
  Add(third, {100});
  EXPECT_EQ(folder.Names().size(), 3U);
  Add(first, {3});
  Add(second, {30});
  Add(third, {300});
  ExpectMean(first, {2}, true);
  ExpectMean(second, {20}, true);
  ExpectMean(third, {200}, true);
}

TEST_F(VectorAverageTest, Copy_EveryState_GoesOnLikeItsSource) {
  for (int before = 0; before < 12; ++before) {
    VectorAverage average(3, path.c_str());
    for (int k = 0; k < before; ++k) Add(average, {static_cast<float>(k * k), 1});
    VectorAverage copy(average);
    for (int k = 0; k < 8; ++k) {
      Add(average, {static_cast<float>(5 * k), 2});
      Add(copy, {static_cast<float>(5 * k), 2});
      VecReal32 ours, theirs;
      EXPECT_EQ(average.Get(ours), copy.Get(theirs));
      EXPECT_EQ(List(ours), List(theirs));
      copy.ReCalc();
    }
  }
  ExpectNothingLeft();
}

TEST_F(VectorAverageTest, Copy_FolderGone_Throws13001AndKeepsTheSource) {
  const std::string inner = folder.File("inner");
  fs::create_directory(inner);
  VectorAverage average(2, std::string(inner).append("/ring").c_str());
  Add(average, {1});
  fs::remove_all(inner);
  VectorAverage other(1, path.c_str());
  Add(other, {7});
  ExpectOpenError([&] { const VectorAverage copy(average); });
  ExpectOpenError([&] { other = average; });
  ExpectMean(other, {7}, true);
  ExpectMean(average, {1}, false);
  EXPECT_EQ(test::OpenFiles(), files + 2);
}

TEST_F(VectorAverageTest, Assign_Itself_ChangesNothing) {
  VectorAverage average(2, path.c_str());
  Add(average, {1});
  const VectorAverage &same = average;
  average = same;
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
  ExpectMean(average, {1}, false);
}

TEST_F(VectorAverageTest, Assign_Used_RemovesItsFormerFile) {
  VectorAverage average(2, path.c_str()), other(3, folder.File("other").c_str());
  Add(average, {1});
  Add(other, {2, 3});
  average = other;
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(folder.Names().size(), 2U);
  ExpectMean(average, {2, 3}, false);
}

TEST_F(VectorAverageTest, Move_Used_TakesTheFile) {
  VectorAverage average(2, path.c_str());
  Add(average, {1});
  VectorAverage moved(std::move(average));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
  ExpectMean(moved, {1}, false);
  VectorAverage assigned(5, folder.File("other").c_str());
  Add(assigned, {1, 2});
  assigned = std::move(moved);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
  Add(assigned, {3});
  ExpectMean(assigned, {2}, true);
}

TEST_F(VectorAverageTest, Move_Source_IsUnused) {
  VectorAverage average(2, path.c_str());
  Add(average, {1, 2});
  const VectorAverage moved(std::move(average));
  // NOLINTNEXTLINE(bugprone-use-after-move)
  EXPECT_EQ(average.CurrentCount(), 0);
  ExpectMean(average, {0}, false);
  average.ReCalc();
  average.Clear();
  ExpectOpenError([&] { Add(average, {1, 2}); });
}

TEST_F(VectorAverageTest, AssignATemporary_KeepsThePath) {
  VectorAverage average;
  average = VectorAverage(2, path.c_str());
  Add(average, {1});
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"ring"});
}

TEST_F(VectorAverageTest, SteadyState_AllCalls_AllocateNothing) {
  VectorAverage average(3, path.c_str());
  const VecReal32 v(20000);
  VecReal32 out;
  average.Add(v);
  average.Get(out);
  const long before = test::AllocationCount();
  for (int k = 0; k < 5; ++k) {
    average.Add(v);
    average.Get(out);
    average.ReCalc();
  }
  average.Clear();
  average.Get(out);
  average.Add(v);
  EXPECT_EQ(test::AllocationCount(), before);
}

// Memory is one vector of doubles, whatever N is.
TEST_F(VectorAverageTest, Add_LongRing_TakesTheMemoryOfOneVector) {
  VectorAverage average(100000, path.c_str());
  const VecReal32 v(1000);
  const test::AllocationLimit limit(8 * 1000 + 64);
  for (int k = 0; k < 10; ++k) EXPECT_TRUE(average.Add(v));
}

} // namespace
