#include "qorn/utils/IQFReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "qorn/infra/QORNException.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/IqfRecording.h"
#include "support/TempFile.h"

namespace QORN {

struct IQFReaderPeer {
  static char *StrPBrk(char *s, const char *set) { return IQFReader::StrPBrk(s, set); }
  static int InitStrTok(ST_STR &state) { return IQFReader::InitStrTok(state); }
  static int FreeStrTok(ST_STR &state) { return IQFReader::FreeStrTok(state); }
  static char *StrTok(const char *s, const char *delimiters, ST_STR &state) {
    return IQFReader::StrTok(s, delimiters, state);
  }
  static double Convert(const char *s) { return IQFReader::Convert(s); }
  static bool Compare(double x, double ref, double tol) { return IQFReader::Compare(x, ref, tol); }
  static bool Compare(double x, const char *ref, const char *tol) { return IQFReader::Compare(x, ref, tol); }
};

} // namespace QORN

namespace {

using QORN::Cplx32;
using QORN::FrameHeader;
using QORN::IQFReader;
using QORN::QORNException;
using QORN::VecCplx32;
using QORN::VecCplx64;
using QORN::VecReal32;
using QORN::VecReal64;
using Peer = QORN::IQFReaderPeer;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::TempFile;
using QORN::test::iqf::Frame;
using QORN::test::iqf::Header;
using QORN::test::iqf::Mark;
using QORN::test::iqf::Pair;

// Runs what must throw, and gives the code; every exception of the reader bears its path and the code's text.
template <class F> int CodeOf(const F &f) {
  const QORNException e = QORN::test::ThrownBy(f);
  const int code = e.GetErrorCode();
  if (code == 0) return 0;
  EXPECT_STREQ(e.GetFileName(), "utils\\IQFReader");
  EXPECT_STREQ(e.GetMessage(), code == 13001   ? "error opening file"
                               : code == 11001 ? "memory allocation error"
                                               : "invalid input parameter");
  EXPECT_GT(e.GetLineNumber(), 0);
  return code;
}

int CodeOfOpening(const std::string &bytes) {
  const TempFile file(bytes);
  return CodeOf([&] { const IQFReader reader(file.Path()); });
}

constexpr char kLevels[] = "MaxInputLevel=7 LevelOffset=-2 GainOffset=-95 IOffset=3 QOffset=-5 ";

std::string Text(int points, int frames, const std::string &more = kLevels) {
  return "FFTPoints=" + std::to_string(points) + " ValidFrames=" + std::to_string(frames) + " BlockSize=4 " +
         more;
}

// What the writer below puts into pair k of frame f.
Pair Sample(int f, int k) { return {100 * f - 7 * k + 11, 13 * k - 50 * f - 4000}; }

// A recording of Cartesian frames and a flatness record.
std::string Recording(int points, int frames, Mark mark = Mark::kCartesian,
                      const std::string &more = kLevels) {
  std::string bytes = Header(Text(points, frames, more));
  for (int f = 0; f < frames; ++f) bytes += Frame(mark, [f](int k) { return Sample(f, k); });
  return bytes + Frame(Mark::kNone, [](int k) { return Pair{k - 512, 3 * k}; });
}

// (7 - 95 - 2) dBm: the peak voltage is sqrt(2 * 50 ohm * 1 mW * 10^(-90 / 10)).
const double kScale = std::sqrt(1e-10);

// The volts of an integer pair as the contract tells them: in double, and rounded once.
Cplx32 Volts(const Pair &pair) {
  const auto scale = static_cast<double>(static_cast<float>(kScale));
  return {static_cast<float>((pair.second - 3.0) * scale), static_cast<float>((pair.first + 5.0) * scale)};
}

void ExpectSamples(const VecCplx32 &got, int points, int start, int n) {
  ASSERT_EQ(got.GetSize(), n);
  for (int i = 0; i < n; ++i) {
    const Cplx32 want = Volts(Sample((start + i) / points, (start + i) % points));
    // The scale comes from a power that may be one unit off, which shows only after rounding to float.
    ASSERT_FLOAT_EQ(got[i].re, want.re) << i;
    ASSERT_FLOAT_EQ(got[i].im, want.im) << i;
  }
}

TEST(IQFReader, Constructor_AllKeys_SetsAllFields) {
  const std::string text = "FFTPoints=1000\r\nBins=820\r\nMaxInputLevel=7.5\r\nLevelOffset=-2\r\n"
                           "CenterFrequency=1090.5M\r\nSpan=40M\r\nBlockSize=4\r\nValidFrames=10\r\n"
                           "UnitPeriod=20n\r\nFrameLength=500u\r\nGainOffset=1.5\r\nMultiFrames=3\r\n";
  const TempFile file(Header(text));
  const IQFReader reader(file.Path());
  EXPECT_EQ(reader.GetFFTPoints(), 1000);
  EXPECT_EQ(reader.GetNofBins(), 820);
  EXPECT_EQ(reader.GetMaxInputLevel(), 7.5);
  EXPECT_EQ(reader.GetCenterFrequency(), 1090.5 * 1e6);
  EXPECT_EQ(reader.GetSpan(), 40e6);
  EXPECT_EQ(reader.GetBlockSize(), 4);
  EXPECT_EQ(reader.GetNofValidFrames(), 10);
  EXPECT_EQ(reader.GetNofBlocks(), 3);
  EXPECT_EQ(reader.GetFirstBlockSize(), 2);
  EXPECT_EQ(reader.GetUnitPeriod(), 20.0 * 1e-9);
  EXPECT_EQ(reader.GetFrameLength(), 500.0 * 1e-6);
  EXPECT_EQ(reader.GetNofMultiFrames(), 3);
  EXPECT_EQ(reader.GetDataOffset(), static_cast<int>(text.size()) + 4);
  EXPECT_EQ(reader.GetSamplingFrequency(), 1000 / (500.0 * 1e-6));
  EXPECT_EQ(reader.GetNofSamplesInBlock(), 4000);
  EXPECT_EQ(reader.GetNoflSamplesInFile(), 10000);
  int a = 0;
  int b = 0;
  reader.GetTrigPos(a, b);
  EXPECT_EQ(a, 4000);
  EXPECT_EQ(b, 4000);
  // 7 dBm are 5.0119 mW, into 50 ohm a peak of 0.70795 V.
  EXPECT_NEAR(reader.GetScalingFactor(), 0.7079457843841379, 1e-15);
}

TEST(IQFReader, Constructor_NoKeys_SetsDefaults) {
  const TempFile file(Header(""));
  const IQFReader reader(file.Path());
  EXPECT_EQ(reader.GetFFTPoints(), 0);
  EXPECT_EQ(reader.GetNofBins(), 0);
  EXPECT_EQ(reader.GetBlockSize(), 0);
  EXPECT_EQ(reader.GetNofValidFrames(), 0);
  EXPECT_EQ(reader.GetNofMultiFrames(), 1);
  EXPECT_EQ(reader.GetMaxInputLevel(), 0.0);
  EXPECT_EQ(reader.GetCenterFrequency(), 0.0);
  EXPECT_EQ(reader.GetSpan(), 0.0);
  EXPECT_EQ(reader.GetUnitPeriod(), 0.0);
  EXPECT_EQ(reader.GetFrameLength(), 0.0);
  EXPECT_EQ(reader.GetNofBlocks(), 0);
  EXPECT_EQ(reader.GetFirstBlockSize(), 0);
  EXPECT_EQ(reader.GetDataOffset(), 2 + 0);
  EXPECT_TRUE(std::isnan(reader.GetSamplingFrequency()));
  EXPECT_NEAR(reader.GetScalingFactor(), 0.31622776601683794, 1e-16); // 0 dBm
}

TEST(IQFReader, Constructor_AnySeparators_ParseTheSame) {
  for (const char *text :
       {"Span=40M BlockSize=2", "Span 40M\nBlockSize 2\n", "\t Span\t=\r\n40M==BlockSize 2"}) {
    const TempFile file(Header(text));
    const IQFReader reader(file.Path());
    EXPECT_EQ(reader.GetSpan(), 40e6) << text;
    EXPECT_EQ(reader.GetBlockSize(), 2) << text;
  }
}

TEST(IQFReader, Constructor_TextBehindAZeroByte_IsIgnored) {
  const TempFile file(Header(std::string("Bins=5 \0Span=1M", 15)));
  const IQFReader reader(file.Path());
  EXPECT_EQ(reader.GetNofBins(), 5);
  EXPECT_EQ(reader.GetSpan(), 0.0);
  EXPECT_EQ(reader.GetDataOffset(), 18);
}

TEST(IQFReader, Constructor_HugeNumbers_StopAtTheLimits) {
  const TempFile file(Header("FFTPoints=99999999999999999999 ValidFrames=2147483647 BlockSize=-9999999999 "
                             "Span=1e999 FrameLength=-1e999 UnitPeriod=1e-999"));
  const IQFReader reader(file.Path());
  EXPECT_EQ(reader.GetFFTPoints(), INT_MAX);
  EXPECT_EQ(reader.GetNofValidFrames(), INT_MAX);
  EXPECT_EQ(reader.GetBlockSize(), INT_MIN);
  EXPECT_EQ(reader.GetNoflSamplesInFile(), INT_MAX);
  EXPECT_EQ(reader.GetNofSamplesInBlock(), INT_MIN);
  EXPECT_EQ(reader.GetNofBlocks(), 0);
  EXPECT_EQ(reader.GetSpan(), HUGE_VAL);
  EXPECT_EQ(reader.GetFrameLength(), -HUGE_VAL);
  EXPECT_EQ(reader.GetUnitPeriod(), 0.0);
}

struct Blocks {
  int frames, blockSize, nofBlocks, firstBlockSize;
};

TEST(IQFReader, Constructor_FramesAndBlockSize_GiveBlocks) {
  for (const Blocks &row : {Blocks{10, 4, 3, 2}, Blocks{8, 4, 2, 4}, Blocks{1, 1, 1, 1}, Blocks{3, 64, 1, 3},
                            Blocks{0, 4, 0, 4}, Blocks{10, 0, 0, 0}, Blocks{10, -3, 0, 0},
                            Blocks{INT_MAX, INT_MAX, 1, INT_MAX}, Blocks{INT_MAX, 1, INT_MAX, 1}}) {
    const TempFile file(
        Header("ValidFrames=" + std::to_string(row.frames) + " BlockSize=" + std::to_string(row.blockSize)));
    const IQFReader reader(file.Path());
    EXPECT_EQ(reader.GetNofBlocks(), row.nofBlocks) << row.frames << ' ' << row.blockSize;
    EXPECT_EQ(reader.GetFirstBlockSize(), row.firstBlockSize) << row.frames << ' ' << row.blockSize;
  }
}

TEST(IQFReader, Constructor_FileThatIsNotThere_Throws13001) {
  EXPECT_EQ(CodeOf([] { const IQFReader reader("/nowhere/nothing.iqf"); }), 13001);
  EXPECT_EQ(CodeOf([] { const IQFReader reader(nullptr); }), 13001);
  const std::string folder = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(CodeOf([&] { const IQFReader reader(folder.c_str()); }), 13001);
}

// Nobody writes to it, so that an open that waits for that would not come back.
TEST(IQFReader, Constructor_NamedPipe_Throws13001AtOnce) {
  const TempFile file;
  file.BecomePipe();
  const int files = QORN::test::OpenFiles();
  EXPECT_EQ(CodeOf([&] { const IQFReader reader(file.Path()); }), 13001);
  EXPECT_EQ(QORN::test::OpenFiles(), files);
}

// The recording has become a pipe since it was opened.
TEST(IQFReader, Read_OfANamedPipe_Throws13001AtOnce) {
  const TempFile file(Recording(8, 1));
  const IQFReader reader(file.Path());
  file.BecomePipe();
  VecCplx32 dst;
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, 1, dst); }), 13001);
}

TEST(IQFReader, Constructor_NoRecording_Throws13001) {
  EXPECT_EQ(CodeOfOpening(""), 13001);
  EXPECT_EQ(CodeOfOpening("3"), 13001);
  EXPECT_EQ(CodeOfOpening("310"), 13001);
  EXPECT_EQ(CodeOfOpening("0"), 13001);
  EXPECT_EQ(CodeOfOpening("0Bins=5"), 13001);
  EXPECT_EQ(CodeOfOpening("/5Bins=5"), 13001);
  EXPECT_EQ(CodeOfOpening("\x89PNG\r\n"), 13001);
  EXPECT_EQ(CodeOfOpening(std::string(64, '\0')), 13001);
  EXPECT_EQ(CodeOfOpening("2-1Bins=5"), 13001);
}

// The length is read as atoi reads it: blanks before its digits and anything behind them do not count.
TEST(IQFReader, Constructor_LengthWithOtherCharacters_IsReadUpToThem) {
  const struct {
    const char *bytes;
    int nofBins, dataOffset;
  } rows[] = {{"2 6Bins=5", 5, 9}, {"3 6xBins=5", 5, 10}, {"2xyBins=5", 0, 3}, {"3+06Bins=5", 5, 10}};
  for (const auto &row : rows) {
    const TempFile file(row.bytes);
    const IQFReader reader(file.Path());
    EXPECT_EQ(reader.GetNofBins(), row.nofBins) << row.bytes;
    EXPECT_EQ(reader.GetDataOffset(), row.dataOffset) << row.bytes;
  }
}

TEST(IQFReader, Constructor_HeaderLengthBeyondTheFile_Throws13001) {
  EXPECT_EQ(CodeOfOpening("16Bins=5"), 0);
  EXPECT_EQ(CodeOfOpening("17Bins=5"), 13001);
  EXPECT_EQ(CodeOfOpening("9999999999Bins=5"), 13001);
}

TEST(IQFReader, Constructor_AnyTruncationOfTheHeader_Throws13001) {
  const std::string whole = Header(Text(1024, 3));
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_EQ(CodeOfOpening(whole.substr(0, length)), 13001) << length;
  EXPECT_EQ(CodeOfOpening(whole), 0);
}

TEST(IQFReaderDeathTest, Constructor_FirstCharacterAboveNine_EndsTheProgram) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (const char *bytes : {":", "A", "<?xml", "\x7F"}) {
    const TempFile file(bytes);
    EXPECT_EXIT(IQFReader(file.Path()), testing::KilledBySignal(SIGABRT), "") << bytes;
  }
}

TEST(IQFReader, Constructor_NoMemoryForTheHeader_Throws11001) {
  const TempFile file(Header(std::string(1 << 20, ' ')));
  const std::string path = file.Path();
  const AllocationLimit limit(1 << 19);
  EXPECT_EQ(CodeOf([&] { const IQFReader reader(path.c_str()); }), 11001);
}

TEST(IQFReader, Constructor_Tokens_AreTakenUpToAHundred) {
  std::string text;
  for (int i = 0; i < 50; ++i) text += "Name" + std::to_string(i) + "=Value" + std::to_string(i) + "\n";
  const TempFile full(Header(text));
  const IQFReader reader(full.Path());
  char value[61];
  EXPECT_TRUE(reader.GetHeader("Name49", value));
  EXPECT_STREQ(value, "Value49");
  EXPECT_EQ(CodeOfOpening(Header(text + "More")), 13001);
  EXPECT_EQ(CodeOfOpening(Header(text + std::string(100000, 'x') + "=1")), 13001);
}

TEST(IQFReader, Constructor_OverlongTokens_AreCut) {
  const std::string name(200, 'n');
  const std::string number(300, 'v');
  const TempFile file(Header(name + "=" + number + " Bins=5 " + std::string(5000, 'z')));
  const IQFReader reader(file.Path());
  char value[61];
  EXPECT_TRUE(reader.GetHeader(std::string(40, 'n').c_str(), value));
  EXPECT_EQ(value, std::string(60, 'v'));
  EXPECT_FALSE(reader.GetHeader(name.c_str(), value));
  EXPECT_EQ(reader.GetNofBins(), 5);
}

TEST(IQFReader, Constructor_PathOf999AndMoreCharacters_OpensButReadsOnlyTheShorter) {
  const TempFile file(Recording(8, 1));
  const std::string folder = std::filesystem::path(file.Path()).parent_path().string() + "/";
  const std::string name = std::filesystem::path(file.Path()).filename().string();
  const std::string fits = folder + std::string(999 - folder.size() - name.size(), '/') + name;
  ASSERT_EQ(fits.size(), 999U);
  VecCplx32 dst;
  EXPECT_TRUE(IQFReader(fits.c_str()).GetIQData(0, 1, nullptr, dst));
  const std::string tooLong = folder + "/" + fits.substr(folder.size());
  const IQFReader reader(tooLong.c_str());
  EXPECT_EQ(CodeOf([&] { reader.GetIQData(0, 1, nullptr, dst); }), 13001);
}

TEST(IQFReader, GetHeader_Key_IsComparedWhole) {
  const TempFile file(Header("Bins=5 Note=a note=b Note=c Last"));
  const IQFReader reader(file.Path());
  char value[61];
  EXPECT_TRUE(reader.GetHeader("Note", value));
  EXPECT_STREQ(value, "a");
  EXPECT_TRUE(reader.GetHeader("note", value));
  EXPECT_STREQ(value, "b");
  EXPECT_TRUE(reader.GetHeader("Last", value));
  EXPECT_STREQ(value, "");
  std::strcpy(value, "old");
  EXPECT_FALSE(reader.GetHeader("NOTE", value));
  EXPECT_STREQ(value, "");
  EXPECT_FALSE(reader.GetHeader("Not", value));
  EXPECT_FALSE(reader.GetHeader("", value));
}

TEST(IQFReader, ListHeader_Records_ArePrintedInOrder) {
  const TempFile file(Header("Title=mode-s\r\nBins=5\r\nLast"));
  const IQFReader reader(file.Path());
  testing::internal::CaptureStdout();
  reader.ListHeader();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Title = mode-s\nBins = 5\nLast = \n");
}

TEST(IQFReader, Copy_NoMemory_Throws11001AndChangesNothing) {
  const TempFile file(Header("Bins=5")), other(Header("Bins=7"));
  const IQFReader reader(file.Path());
  IQFReader target(other.Path());
  EXPECT_EQ(CodeOf([&] {
              const AllocationLimit limit(0);
              const IQFReader copy(reader);
            }),
            11001);
  // There is room for a record already, so it takes more of them.
  const TempFile more(Header("Bins=5 Span=1M FFTPoints=8"));
  const IQFReader larger(more.Path());
  EXPECT_EQ(CodeOf([&] {
              const AllocationLimit limit(0);
              target = larger;
            }),
            11001);
  EXPECT_EQ(target.GetNofBins(), 7);
  EXPECT_EQ(target.GetFFTPoints(), 0);
  target = larger;
  EXPECT_EQ(target.GetFFTPoints(), 8);
}

TEST(IQFReader, Copy_OfASourceThatDiesFirst_StandsAlone) {
  const TempFile file(Recording(8, 2));
  const TempFile other(Header("Bins=7"));
  auto source = std::make_unique<IQFReader>(file.Path());
  const IQFReader copy(*source);
  IQFReader assigned(other.Path());
  assigned = *source;
  assigned = *&assigned;
  source.reset();
  for (const IQFReader *reader : {&copy, static_cast<const IQFReader *>(&assigned)}) {
    char value[61];
    EXPECT_TRUE(reader->GetHeader("GainOffset", value));
    EXPECT_STREQ(value, "-95");
    EXPECT_FALSE(reader->GetHeader("Bins", value));
    EXPECT_EQ(reader->GetFFTPoints(), 8);
    EXPECT_EQ(reader->GetNofBlocks(), 1);
    VecCplx32 dst;
    reader->ReadIQData(0, 16, dst);
    ExpectSamples(dst, 8, 0, 16);
  }
}

TEST(IQFReader, GetIQData_CartesianFrames_GiveVoltsAndHeaders) {
  const TempFile file(Recording(1024, 3));
  const IQFReader reader(file.Path());
  FrameHeader headers[3] = {};
  headers[2].reserved0 = 7;
  VecCplx32 dst;
  EXPECT_TRUE(reader.GetIQData(1, 2, headers, dst));
  ExpectSamples(dst, 1024, 1024, 2048);
  for (int f = 0; f < 2; ++f) {
    EXPECT_EQ(headers[f].reserved0, 0x1234);
    EXPECT_EQ(headers[f].polarMark1, 0);
    EXPECT_EQ(headers[f].polarMark2, 0);
    EXPECT_EQ(headers[f].cartMark1, 0xFFFF);
    EXPECT_EQ(headers[f].cartMark2, 0xFFFF);
    EXPECT_EQ(std::memcmp(headers[f].reserved1, "abcdefghijklmn", 14), 0);
  }
  EXPECT_EQ(headers[2].reserved0, 7);
}

TEST(IQFReader, GetIQData_FullScaleIntegers_KeepTheirSign) {
  const TempFile file(Header(Text(2, 1, "")) + Frame(Mark::kNone, [](int k) {
                        return k == 0 ? Pair{-32768, 32767} : Pair{32767, -32768};
                      }));
  VecCplx32 dst;
  IQFReader(file.Path()).GetIQData(0, 1, nullptr, dst);
  const auto scale = static_cast<double>(static_cast<float>(std::sqrt(0.1)));
  EXPECT_EQ(dst[0].re, static_cast<float>(32767 * scale));
  EXPECT_EQ(dst[0].im, static_cast<float>(-32768 * scale));
  EXPECT_EQ(dst[1].re, static_cast<float>(-32768 * scale));
  EXPECT_EQ(dst[1].im, static_cast<float>(32767 * scale));
}

TEST(IQFReader, GetIQData_PolarMark_ConvertsAllFramesSoFarAnew) {
  // Frames 1 and 2 are marked: frame 0 and 1 are converted twice, frame 2 once, frame 3 not at all.
  std::string bytes = Header(Text(4, 4));
  for (int f = 0; f < 4; ++f)
    bytes += Frame(f == 1 || f == 2 ? Mark::kPolar : Mark::kNone, [f](int k) { return Sample(f, k); });
  const TempFile file(bytes);
  VecCplx32 dst;
  EXPECT_TRUE(IQFReader(file.Path()).GetIQData(0, 4, nullptr, dst));
  ASSERT_EQ(dst.GetSize(), 16);
  for (int i = 0; i < 16; ++i) {
    const Cplx32 volts = Volts(Sample(i / 4, i % 4));
    double re = static_cast<double>(volts.re);
    double im = static_cast<double>(volts.im);
    const int times[] = {2, 2, 1, 0};
    for (int t = 0; t < times[i / 4]; ++t) {
      const double magnitude = std::hypot(re, im);
      im = std::atan2(im, re);
      re = magnitude;
    }
    // Two conversions in float, each good to a few units of the last place.
    EXPECT_NEAR(dst[i].re, re, 1e-6 * std::fabs(re)) << i;
    EXPECT_NEAR(dst[i].im, im, 1e-6 * std::fabs(im)) << i;
  }
}

TEST(IQFReader, GetIQData_OneMarkOnly_IsNotPolar) {
  std::string bytes = Recording(8, 1, Mark::kPolar);
  bytes[bytes.size() - 2 * 4120 + 2] = 0;
  const TempFile file(bytes);
  VecCplx32 dst;
  IQFReader(file.Path()).GetIQData(0, 1, nullptr, dst);
  ExpectSamples(dst, 8, 0, 8);
}

TEST(IQFReader, GetIQData_BadCounts_Throw10002) {
  const TempFile file(Recording(1024, 2));
  const IQFReader reader(file.Path());
  VecCplx32 dst;
  EXPECT_EQ(CodeOf([&] { reader.GetIQData(-1, 1, nullptr, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.GetIQData(0, -1, nullptr, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.GetIQData(0, INT_MAX, nullptr, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.GetIQData(0, 5000, nullptr, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.GetIQData(INT_MAX, 4097, nullptr, dst); }), 10002);
  EXPECT_TRUE(reader.GetIQData(0, 0, nullptr, dst));
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(IQFReader, Reads_PointsOutsideOneTo1024_Throw10002) {
  for (const int points : {0, -1, 1025, INT_MAX, INT_MIN}) {
    const TempFile file(Recording(points, 2));
    const IQFReader reader(file.Path());
    EXPECT_EQ(reader.GetFFTPoints(), points);
    VecCplx32 dst;
    VecReal32 a;
    VecReal32 b;
    EXPECT_EQ(CodeOf([&] { reader.GetIQData(0, 1, nullptr, dst); }), 10002) << points;
    EXPECT_EQ(CodeOf([&] { reader.GetIQData2(0, 1, nullptr, dst); }), 10002) << points;
    EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, 1, dst); }), 10002) << points;
    EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, 0, 1, dst); }), 10002) << points;
    EXPECT_EQ(CodeOf([&] { reader.GetRawIQAPData(0, 1, nullptr, a, b); }), 10002) << points;
    EXPECT_EQ(CodeOf([&] { reader.GetFlatness(a, b); }), 10002) << points;
  }
}

TEST(IQFReader, GetIQData_FileCutShort_ReadsZeroIntegersAfterIt) {
  const std::string bytes = Recording(8, 3);
  const std::size_t frames = bytes.size() - 4 * 4120;
  VecCplx32 dst;
  for (const std::size_t kept : {0U, 10U, 24U, 24U + 5U, 24U + 12U, 4120U, 4120U + 30U}) {
    const TempFile file(bytes.substr(0, frames + kept));
    const IQFReader reader(file.Path());
    dst.Resize(24);
    for (int i = 0; i < 24; ++i) dst[i] = {99.0f, 99.0f};
    EXPECT_TRUE(reader.GetIQData(0, 3, nullptr, dst));
    for (int i = 0; i < 24; ++i) {
      const std::size_t end = static_cast<std::size_t>(i / 8 * 4120 + 24 + i % 8 * 4);
      const Pair whole = Sample(i / 8, i % 8);
      const auto low = [](int x) { return x & 0xFF; };
      Pair want{0, 0};
      if (kept >= end + 2)
        want.first = whole.first;
      else if (kept >= end + 1)
        want.first = low(whole.first);
      if (kept >= end + 4)
        want.second = whole.second;
      else if (kept >= end + 3)
        want.second = low(whole.second);
      EXPECT_FLOAT_EQ(dst[i].re, Volts(want).re) << kept << ' ' << i;
      EXPECT_FLOAT_EQ(dst[i].im, Volts(want).im) << kept << ' ' << i;
    }
  }
}

TEST(IQFReader, Reads_FileRemovedAfterOpening_Throw13001) {
  auto file = std::make_unique<TempFile>(Recording(8, 1));
  const IQFReader reader(file->Path());
  file.reset();
  VecCplx32 dst;
  VecCplx64 wide;
  VecReal32 a;
  VecReal32 b;
  EXPECT_EQ(CodeOf([&] { reader.GetIQData(0, 1, nullptr, dst); }), 13001);
  EXPECT_EQ(CodeOf([&] { reader.GetIQData2(0, 1, nullptr, dst); }), 13001);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, 1, dst); }), 13001);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, 1, wide); }), 13001);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, 0, 1, dst); }), 13001);
  EXPECT_EQ(CodeOf([&] { reader.GetRawIQAPData(0, 1, nullptr, a, b); }), 13001);
  EXPECT_EQ(CodeOf([&] { reader.GetFlatness(a, b); }), 13001);
  EXPECT_EQ(CodeOf([&] { reader.GetRawFlatness(nullptr, a, b); }), 13001);
}

TEST(IQFReader, Reads_NoMemoryForTheSamples_Throw11001) {
  const TempFile file(Recording(1024, 40));
  const IQFReader reader(file.Path());
  VecCplx32 dst;
  const AllocationLimit limit(1 << 18);
  testing::internal::CaptureStdout(); // the container reports the request
  int code = 0;
  try {
    reader.GetIQData(0, 40, nullptr, dst);
  } catch (QORNException &e) {
    code = e.GetErrorCode();
  }
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(code, 11001);
}

TEST(IQFReader, GetIQData2_LastFrameCartesian_WorksInFloat) {
  for (const Mark mark : {Mark::kCartesian, Mark::kBoth}) {
    std::string bytes =
        Header(Text(4, 2, "MaxInputLevel=7 LevelOffset=-2 GainOffset=-95 IOffset=0.3 QOffset=-0.7"));
    bytes += Frame(Mark::kPolar, [](int k) { return Sample(0, k); });
    bytes += Frame(mark, [](int k) { return Sample(1, k); });
    const TempFile file(bytes);
    FrameHeader headers[2];
    VecCplx32 dst;
    EXPECT_TRUE(IQFReader(file.Path()).GetIQData2(0, 2, headers, dst));
    EXPECT_EQ(headers[0].polarMark1, 0xFFFF);
    EXPECT_EQ(headers[1].cartMark2, 0xFFFF);
    ASSERT_EQ(dst.GetSize(), 8);
    const auto scale = static_cast<float>(kScale);
    for (int i = 0; i < 8; ++i) {
      const Pair pair = Sample(i / 4, i % 4);
      EXPECT_FLOAT_EQ(dst[i].re, (static_cast<float>(pair.second) - 0.3f) * scale);
      EXPECT_FLOAT_EQ(dst[i].im, (static_cast<float>(pair.first) + 0.7f) * scale);
    }
  }
}

TEST(IQFReader, GetIQData2_LastFramePolar_AddsTheOffsetToEverySample) {
  std::string bytes = Header(Text(4, 2));
  bytes += Frame(Mark::kCartesian, [](int k) { return Pair{k - 2, 1000 + k}; });
  bytes += Frame(Mark::kPolar, [](int k) { return Pair{3 - k, 2000 + k}; });
  const TempFile file(bytes);
  VecCplx32 dst;
  EXPECT_TRUE(IQFReader(file.Path()).GetIQData2(0, 2, nullptr, dst));
  ASSERT_EQ(dst.GetSize(), 8);
  for (int i = 0; i < 8; ++i) {
    const double phase = i < 4 ? i - 2 : 7 - i;
    const double magnitude = i < 4 ? 1000 + i : 1996 + i;
    // Rounded as float after each of three steps, of at most 2003 each.
    EXPECT_NEAR(dst[i].re, (magnitude * std::cos(phase) + 3.0) * kScale, 1e-3 * kScale) << i;
    EXPECT_NEAR(dst[i].im, (magnitude * std::sin(phase) - 5.0) * kScale, 1e-3 * kScale) << i;
  }
}

TEST(IQFReader, GetIQData2_NoMarkInTheLastFrame_Throws13001) {
  std::string bytes = Header(Text(4, 2)) + Frame(Mark::kCartesian, [](int k) { return Sample(0, k); });
  const TempFile cut(bytes);
  const TempFile unmarked(bytes + Frame(Mark::kNone, [](int k) { return Sample(1, k); }));
  VecCplx32 dst;
  for (const TempFile *file : {&cut, &unmarked}) {
    const IQFReader reader(file->Path());
    FrameHeader headers[2];
    EXPECT_EQ(CodeOf([&] { reader.GetIQData2(0, 2, headers, dst); }), 13001);
    EXPECT_EQ(dst.GetSize(), 8);
    EXPECT_EQ(headers[0].cartMark1, 0xFFFF);
    EXPECT_EQ(CodeOf([&] { reader.GetIQData2(0, 0, nullptr, dst); }), 13001);
    EXPECT_TRUE(reader.GetIQData2(0, 1, nullptr, dst));
  }
}

// Both marks of a pair count, each at its own place.
TEST(IQFReader, GetIQData2_OneMarkOnly_Throws13001) {
  for (const Mark mark : {Mark::kCartesian, Mark::kPolar}) {
    const int pair = mark == Mark::kPolar ? 2 : 6;
    for (const int at : {pair, pair + 2}) {
      std::string bytes = Header(Text(4, 1));
      const std::size_t frame = bytes.size();
      bytes += Frame(mark, [](int k) { return Sample(0, k); });
      bytes[frame + static_cast<std::size_t>(at)] = 0;
      const TempFile file(bytes);
      const IQFReader reader(file.Path());
      VecCplx32 dst;
      FrameHeader header;
      EXPECT_EQ(CodeOf([&] { reader.GetIQData2(0, 1, &header, dst); }), 13001) << at;
      EXPECT_EQ(header.polarMark1, mark != Mark::kPolar ? 0 : at == 2 ? 0xFF00 : 0xFFFF);
      EXPECT_EQ(header.polarMark2, mark != Mark::kPolar ? 0 : at == 4 ? 0xFF00 : 0xFFFF);
      EXPECT_EQ(header.cartMark1, mark != Mark::kCartesian ? 0 : at == 6 ? 0xFF00 : 0xFFFF);
      EXPECT_EQ(header.cartMark2, mark != Mark::kCartesian ? 0 : at == 8 ? 0xFF00 : 0xFFFF);
    }
  }
}

TEST(IQFReader, Constructor_FramesWithoutABlockSize_HasNoBlocks) {
  const TempFile file(Header("FFTPoints=4 ValidFrames=10"));
  const IQFReader reader(file.Path());
  EXPECT_EQ(reader.GetBlockSize(), 0);
  EXPECT_EQ(reader.GetNofBlocks(), 0);
  EXPECT_EQ(reader.GetFirstBlockSize(), 0);
}

TEST(IQFReader, Constructor_SignsOfNumbers_AreReadAsAtofReadsThem) {
  const TempFile file(Header("IOffset=+5 QOffset=+-5 MaxInputLevel=-5 Span=+2k"));
  const IQFReader reader(file.Path());
  EXPECT_EQ(reader.GetMaxInputLevel(), -5.0);
  EXPECT_EQ(reader.GetSpan(), 2000.0);
  EXPECT_EQ(Peer::Convert("+-5"), 0.0);
}

struct Range {
  int start, n;
};

TEST(IQFReader, ReadIQData_AnyRange_DeliversItsSamples) {
  for (const int points : {1, 7, 1024}) {
    const TempFile file(Recording(points, 6));
    const IQFReader reader(file.Path());
    for (const Range &range : {Range{0, 1}, Range{0, 6}, Range{3, 2}, Range{5, 1}, Range{0, 6 * points},
                               Range{points - 1, 2}, Range{points, 3 * points}}) {
      VecCplx32 dst;
      EXPECT_TRUE(reader.ReadIQData(range.start, range.n, dst));
      ExpectSamples(dst, points, range.start, range.n);
      VecCplx32 corrected;
      EXPECT_TRUE(reader.ReadCorrectedIQData(range.start, range.n, corrected));
      EXPECT_TRUE(corrected == dst);
      VecCplx64 wide;
      EXPECT_TRUE(reader.ReadIQData(range.start, range.n, wide));
      ASSERT_EQ(wide.GetSize(), range.n);
      for (int i = 0; i < range.n; ++i) {
        EXPECT_EQ(wide[i].re, static_cast<double>(dst[i].re));
        EXPECT_EQ(wide[i].im, static_cast<double>(dst[i].im));
      }
    }
  }
}

TEST(IQFReader, ReadIQData_AcrossAFrame_ReadsNoOtherFrame) {
  // The polar mark of frame 2 would convert what was read before it.
  std::string bytes = Header(Text(1024, 3));
  for (int f = 0; f < 3; ++f)
    bytes += Frame(f == 2 ? Mark::kPolar : Mark::kNone, [f](int k) { return Sample(f, k); });
  const TempFile file(bytes);
  VecCplx32 dst;
  EXPECT_TRUE(IQFReader(file.Path()).ReadIQData(1000, 100, dst));
  ExpectSamples(dst, 1024, 1000, 100);
}

TEST(IQFReader, ReadIQData_MoreFramesThanABlock_IsSafe) {
  for (const char *blockSize : {"BlockSize=1 ", "BlockSize=0 ", "BlockSize=-4 ", ""}) {
    std::string bytes = Header(std::string("FFTPoints=16 ValidFrames=40 ") + blockSize + kLevels);
    for (int f = 0; f < 40; ++f) bytes += Frame(Mark::kNone, [f](int k) { return Sample(f, k); });
    const TempFile file(bytes);
    VecCplx32 dst;
    EXPECT_TRUE(IQFReader(file.Path()).ReadIQData(3, 600, dst));
    ExpectSamples(dst, 16, 3, 600);
  }
}

TEST(IQFReader, ReadIQData_BadArguments_Throw10002) {
  const TempFile file(Recording(1024, 2));
  const IQFReader reader(file.Path());
  VecCplx32 dst;
  VecCplx64 wide;
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(-1, 1, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(-1, 1, wide); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, -1, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, -1, 0, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, -1, 0, wide); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, INT_MAX, dst); }), 10002);
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(INT_MAX, INT_MAX, dst); }), 10002);
  EXPECT_TRUE(reader.ReadIQData(1024, 0, dst));
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(IQFReader, Reads_OfAFileThatShrinks_GiveZeros) {
  const std::string whole = Recording(1000, 20);
  const TempFile file(whole);
  const IQFReader reader(file.Path());
  std::filesystem::resize_file(file.Path(), static_cast<std::size_t>(reader.GetDataOffset()) + 9 * 4120 + 24);
  VecCplx32 dst;
  EXPECT_TRUE(reader.ReadIQData(0, 20000, dst));
  for (int i = 9000; i < 20000; ++i) ASSERT_EQ(dst[i].re, Volts({0, 0}).re) << i;
  dst.Resize(9000);
  ExpectSamples(dst, 1000, 0, 9000);
  std::filesystem::remove(file.Path());
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, 1, dst); }), 13001);
}

TEST(IQFReader, Constructor_FileThatMayNotBeRead_Throws13001) {
  const TempFile file(Recording(8, 1));
  std::filesystem::permissions(file.Path(), std::filesystem::perms::none);
  // The superuser may read everything and has to step down for this.
  const bool superuser = geteuid() == 0;
  if (superuser && seteuid(65534) != 0) GTEST_SKIP() << "the superuser cannot step down";
  EXPECT_EQ(CodeOf([&] { const IQFReader reader(file.Path()); }), 13001);
  EXPECT_TRUE(!superuser || seteuid(0) == 0);
}

TEST(IQFReader, ReadIQData_FramesBeyondTheLimitsOfInt_ReadAsZeros) {
  const TempFile file(Header(Text(1, INT_MAX)) + Frame(Mark::kNone, [](int k) { return Sample(0, k); }));
  const IQFReader reader(file.Path());
  VecCplx32 dst;
  EXPECT_TRUE(reader.ReadIQData(INT_MAX - 5, 100, dst));
  ASSERT_EQ(dst.GetSize(), 100);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(dst[i].re, Volts({0, 0}).re) << i;
}

TEST(IQFReader, ReadIQData_HostileValidFrames_MakesUpNoGigabytes) {
  const TempFile file(Header(Text(1024, INT_MAX)) + Frame(Mark::kNone, [](int k) { return Sample(0, k); }));
  const IQFReader reader(file.Path());
  EXPECT_EQ(reader.GetNoflSamplesInFile(), INT_MAX);
  VecCplx32 dst;
  EXPECT_EQ(CodeOf([&] { reader.ReadIQData(0, reader.GetNoflSamplesInFile(), dst); }), 10002);
  EXPECT_TRUE(reader.ReadIQData(0, 1024, dst));
  ExpectSamples(dst, 1024, 0, 1024);
  VecReal32 a;
  VecReal32 b;
  EXPECT_TRUE(reader.GetFlatness(a, b)); // far behind the end of the file
  EXPECT_EQ(a[1023], 0.0f);
}

struct BlockRead {
  int start, n, count;
};

TEST(IQFReader, ReadIQDataInBlock_PastTheBlock_IsCutShort) {
  const TempFile file(Recording(10, 6)); // blocks of 4 frames
  const IQFReader reader(file.Path());
  for (const BlockRead &row :
       {BlockRead{0, 40, 40}, BlockRead{0, 41, 40}, BlockRead{35, 100, 5}, BlockRead{39, 1, 1},
        BlockRead{40, 1, 0}, BlockRead{55, 3, 0}, BlockRead{60, 1, 0}, BlockRead{7, 0, 0},
        BlockRead{INT_MAX, INT_MAX, 0}, BlockRead{3, INT_MAX, 37}}) {
    for (const int block : {0, 1, -5, INT_MAX}) {
      VecCplx32 dst(3);
      EXPECT_EQ(reader.ReadIQData(block, row.start, row.n, dst), row.count) << row.start << ' ' << row.n;
      ExpectSamples(dst, 10, row.start, row.count);
      VecCplx64 wide(3);
      EXPECT_EQ(reader.ReadIQData(block, row.start, row.n, wide), row.count);
      ASSERT_EQ(wide.GetSize(), row.count);
      for (int i = 0; i < row.count; ++i) EXPECT_EQ(wide[i].re, static_cast<double>(dst[i].re));
    }
  }
}

TEST(IQFReader, ReadIQDataInBlock_PastTheFrames_GivesNothing) {
  const TempFile file(Recording(10, 2)); // blocks of 4 frames, but only 2 frames
  const IQFReader reader(file.Path());
  VecCplx32 dst;
  EXPECT_EQ(reader.ReadIQData(0, 20, 5, dst), 0);
  EXPECT_EQ(reader.ReadIQData(0, 19, 1, dst), 1);
}

TEST(IQFReader, Reads_RepeatedIntoKeptVectors_AllocateNothing) {
  std::string bytes = Header(Text(1000, 4));
  for (const Mark mark : {Mark::kCartesian, Mark::kPolar, Mark::kNone, Mark::kBoth, Mark::kNone}) {
    bytes += Frame(mark, [](int k) { return Pair{k, -k}; });
  }
  const TempFile file(bytes);
  const IQFReader reader(file.Path());
  VecCplx32 samples(4000);
  VecReal32 first(4096), second(4096);
  FrameHeader headers[4];
  const long before = AllocationCount();
  reader.GetIQData(0, 4, headers, samples);
  reader.GetIQData2(0, 4, headers, samples);
  reader.GetIQData2(0, 2, headers, samples);
  reader.ReadIQData(500, 3000, samples);
  reader.ReadIQData(0, 500, 3000, samples);
  reader.GetRawIQAPData(0, 4, headers, first, second);
  reader.GetFlatness(first, second);
  EXPECT_EQ(AllocationCount(), before);
}

TEST(IQFReader, GetRawIQAPData_FewerThan1024Points_StaysWithinTheVectors) {
  for (const int points : {1, 1000, 1024}) {
    const TempFile file(Recording(points, 3));
    const IQFReader reader(file.Path());
    FrameHeader headers[3];
    VecReal32 first;
    VecReal32 second;
    EXPECT_TRUE(reader.GetRawIQAPData(0, 3, headers, first, second));
    EXPECT_EQ(headers[2].reserved0, 0x1234);
    ASSERT_EQ(first.GetSize(), 3 * points);
    ASSERT_EQ(second.GetSize(), 3 * points);
    EXPECT_GE(first.GetCapacity(), 3 * 1024);
    for (int i = 0; i < 3 * points; ++i) {
      const Pair pair = Sample(i / 1024, i % 1024);
      EXPECT_EQ(first[i], static_cast<float>(pair.second)) << i;
      EXPECT_EQ(second[i], static_cast<float>(pair.first)) << i;
    }
  }
}

TEST(IQFReader, GetFlatness_Record_IsScaled) {
  for (const int points : {1, 1000, 1024}) {
    const TempFile file(Recording(points, 3));
    const IQFReader reader(file.Path());
    FrameHeader header;
    VecReal32 amplitude;
    VecReal32 phase;
    VecReal32 first;
    VecReal32 second;
    VecReal64 wideAmplitude;
    VecReal64 widePhase;
    EXPECT_TRUE(reader.GetFlatness(&header, amplitude, phase));
    EXPECT_EQ(header.reserved0, 0x1234);
    EXPECT_TRUE(reader.GetFlatness(&header, wideAmplitude, widePhase));
    EXPECT_TRUE(reader.GetRawFlatness(&header, first, second));
    ASSERT_EQ(amplitude.GetSize(), points);
    ASSERT_EQ(widePhase.GetSize(), points);
    for (int k = 0; k < points; ++k) {
      EXPECT_EQ(amplitude[k], static_cast<float>(k - 512) / 128.0f);
      EXPECT_EQ(phase[k], static_cast<float>(3 * k) / -128.0f);
      EXPECT_EQ(wideAmplitude[k], (k - 512) / 128.0);
      EXPECT_EQ(widePhase[k], 3 * k / -128.0);
      EXPECT_EQ(first[k], static_cast<float>(k - 512));
      EXPECT_EQ(second[k], static_cast<float>(3 * k));
    }
    VecReal32 again;
    EXPECT_TRUE(reader.GetFlatness(again, phase));
    EXPECT_TRUE(again == amplitude);
  }
}

TEST(IQFReader, Convert_LastCharacter_ChoosesTheFactor) {
  EXPECT_EQ(Peer::Convert("10M"), 1e7);
  EXPECT_EQ(Peer::Convert("5m"), 0.005);
  EXPECT_EQ(Peer::Convert("12"), 12.0);
  EXPECT_EQ(Peer::Convert("2.5G"), 2.5e9);
  EXPECT_EQ(Peer::Convert("3K"), 3000.0);
  EXPECT_EQ(Peer::Convert("3k"), 3000.0);
  EXPECT_EQ(Peer::Convert("4u"), 4 * 1e-6);
  EXPECT_EQ(Peer::Convert("4n"), 4 * 1e-9);
  EXPECT_EQ(Peer::Convert("4p"), 4 * 1e-12);
  EXPECT_EQ(Peer::Convert("+1.5e3M"), 1.5e9);
  EXPECT_EQ(Peer::Convert("-7g"), -7.0);
  EXPECT_EQ(Peer::Convert("MHz"), 0.0);
  EXPECT_EQ(Peer::Convert("M"), 0.0);
  EXPECT_EQ(Peer::Convert(""), 0.0);
}

TEST(IQFReader, Compare_Tolerance_IsInclusiveOnBothSides) {
  EXPECT_TRUE(Peer::Compare(1.0, 1.0, 0.0));
  EXPECT_TRUE(Peer::Compare(1.5, 1.0, 0.5));
  EXPECT_TRUE(Peer::Compare(0.5, 1.0, -0.5));
  EXPECT_FALSE(Peer::Compare(1.5000001, 1.0, 0.5));
  EXPECT_FALSE(Peer::Compare(0.4999999, 1.0, -0.5));
  EXPECT_TRUE(Peer::Compare(std::nan(""), 1.0, 0.5));
  EXPECT_TRUE(Peer::Compare(10.4e6, "10M", "500k"));
  EXPECT_FALSE(Peer::Compare(10.6e6, "10M", "500k"));
}

TEST(IQFReader, StrPBrk_Set_FindsTheFirstOfIt) {
  char text[] = "abc=d";
  EXPECT_EQ(Peer::StrPBrk(text, "=c"), text + 2);
  EXPECT_EQ(Peer::StrPBrk(text, "xyz"), nullptr);
  char empty[] = "";
  EXPECT_EQ(Peer::StrPBrk(empty, "abc"), nullptr);
}

TEST(IQFReader, StrTok_String_IsSplitAtDelimiters) {
  QORN::ST_STR state;
  EXPECT_EQ(Peer::InitStrTok(state), 0);
  EXPECT_EQ(Peer::StrTok(nullptr, " ", state), nullptr);
  const std::string text = "  one, two ,,three";
  EXPECT_STREQ(Peer::StrTok(text.c_str(), " ,", state), "one");
  EXPECT_NE(state.next, nullptr);
  EXPECT_STREQ(Peer::StrTok(nullptr, ",", state), " two ");
  EXPECT_STREQ(Peer::StrTok(nullptr, " ,", state), "three");
  EXPECT_EQ(state.next, nullptr);
  EXPECT_EQ(Peer::StrTok(nullptr, " ,", state), nullptr);
  EXPECT_STREQ(Peer::StrTok("next", " ", state), "next");
  EXPECT_STREQ(Peer::StrTok("a  ", " ", state), "a");
  EXPECT_EQ(Peer::StrTok(nullptr, " ", state), nullptr);
  EXPECT_EQ(Peer::StrTok("   ", " ", state), nullptr);
  EXPECT_EQ(Peer::StrTok("", " ", state), nullptr);
  EXPECT_EQ(Peer::FreeStrTok(state), 0);
  EXPECT_EQ(state.buffer, nullptr);
  EXPECT_EQ(state.next, nullptr);
}

} // namespace
