#include "qorn/utils/XIQReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/TempFile.h"
#include "support/XiqRecording.h"

namespace QORN {

struct XIQReaderPeer {
  static bool GetValueFromKey(std::string_view line, std::string_view key, std::string_view closeKey,
                              double &value, std::string_view terminator) {
    return XIQReader::GetValueFromKey(line, key, closeKey, value, terminator);
  }
  static bool GetValueFromKey(std::string_view line, std::string_view key, double &value) {
    return XIQReader::GetValueFromKey(line, key, value);
  }
  static bool ExtractAcqInfo(XIQReader &reader) { return reader.ExtractAcqInfo(); }
  static int BinDataOffset(const XIQReader &reader) { return reader.binDataOffset; }
};

} // namespace QORN

namespace {

using namespace QORN;
using test::ExpectThrown;
using test::TempFile;
using test::xiq::Acquisition;
using test::xiq::AppendInteger;
using test::xiq::DataSet;
using test::xiq::Header;
using test::xiq::Line;
using test::xiq::SetupLines;
using Peer = XIQReaderPeer;

template <class Call> void ExpectRefused(Call call) {
  ExpectThrown(call, 10002, "invalid input parameter", "utils\\XIQReader");
}

// Sample k of the file; some need more bits than a float has.
int ISample(int k) { return 100000007 * (k % 20) + k; }
int QSample(int k) { return -90000011 * (k % 23) - 3 * k; }

std::string Data(int count) {
  std::string bytes;
  for (int k = 0; k < count; ++k) {
    AppendInteger(bytes, ISample(k));
    AppendInteger(bytes, QSample(k));
  }
  return bytes;
}

std::string Lines(int nSets, int numberSamples, const std::string &scaling) {
  std::string lines =
      SetupLines("0.25", "1.5e-3") + " <DataSetsCollection>\n" + Acquisition(numberSamples, scaling);
  for (int k = 0; k < nSets; ++k) lines += DataSet(0.5 + k, -0.125 * k);
  return lines + " </DataSetsCollection>\n";
}

constexpr char kScaling[] = "1.2345678901e-7";

std::string Recording(int nSets, int numberSamples) {
  return Header(Lines(nSets, numberSamples, kScaling)) + Data(nSets * numberSamples);
}

// The contract's formulas, each step in its own type. Samples from `held` on are not in the file.
void ExpectSamples(const VecCplx32 &got, int first, int n, int held = INT_MAX) {
  ASSERT_EQ(got.GetSize(), n);
  const auto scaling = static_cast<float>(1.2345678901e-7);
  for (int k = 0; k < n; ++k) {
    const bool zero = first + k >= held;
    ASSERT_EQ(got[k].re, zero ? 0.0F : scaling * static_cast<float>(ISample(first + k))) << k;
    ASSERT_EQ(got[k].im, zero ? 0.0F : scaling * static_cast<float>(QSample(first + k))) << k;
  }
}
void ExpectSamples(const VecCplx64 &got, int first, int n, int held = INT_MAX) {
  ASSERT_EQ(got.GetSize(), n);
  for (int k = 0; k < n; ++k) {
    const bool zero = first + k >= held;
    const auto q = static_cast<double>(static_cast<float>(QSample(first + k)));
    ASSERT_EQ(got[k].re, zero ? 0.0 : ISample(first + k) * 1.2345678901e-7) << k;
    ASSERT_EQ(got[k].im, zero ? 0.0 : q * 1.2345678901e-7) << k;
  }
}

template <class V> class XiqSamples : public testing::Test {};
struct VectorName {
  template <class V> static std::string GetName(int) {
    return std::is_same_v<V, VecCplx32> ? "VecCplx32" : "VecCplx64";
  }
};
using Vectors = testing::Types<VecCplx32, VecCplx64>;
TYPED_TEST_SUITE(XiqSamples, Vectors, VectorName);

TEST(XIQReader, Constructor_WholeHeader_SetsAllFields) {
  const TempFile file(Recording(3, 50));
  XIQReader reader(file.Path());
  EXPECT_EQ(reader.QueryNumDataSets(), 3);
  EXPECT_EQ(reader.QueryNumSamples(), 50);
  XIQReader::AcqInfoStruct acq;
  reader.QueryAcqInfo(acq);
  EXPECT_EQ(acq.samplingFrequency, 56e6);
  EXPECT_EQ(acq.numberSamples, 50);
  EXPECT_EQ(acq.scaling, 1.2345678901e-7);
  EXPECT_EQ(acq.frequency, 1.09e9);
  EXPECT_EQ(acq.acquisitionBandwidth, 40e6);
  EXPECT_EQ(acq.maxSpan, 36e6);
  EXPECT_EQ(acq.rfAttenuation, 10.0);
  EXPECT_EQ(acq.referenceLevel, -20.5);
  XIQReader::SetupInfoStruct setup;
  reader.QuerySetupInfo(setup);
  EXPECT_EQ(setup.anOffset, 0.25);
  EXPECT_EQ(setup.anLenReq, 1.5e-3);
  for (int k = 0; k < 3; ++k) {
    XIQReader::DataSetInfoStruct info;
    reader.QueryDataSetInfo(info, k);
    EXPECT_EQ(info.triggerPosition, 0.5 + k);
    EXPECT_EQ(info.timestampOffset, -0.125 * k);
  }
  EXPECT_TRUE(Peer::ExtractAcqInfo(reader));
}

TEST(XIQReader, Constants_HaveTheirValues) {
  EXPECT_EQ(XIQReader::MAX_CHAR_PER_LINE, 1024);
  EXPECT_EQ(XIQReader::NUM_ELEMENTS_IN_ACQINFO, 8);
  EXPECT_EQ(XIQReader::HEADER_INFO_BITWISE_PATTERN, 255);
}

TEST(XIQReader, QueryDataSetInfo_SetThatIsNotThere_GivesZeros) {
  const TempFile file(Recording(2, 4));
  const XIQReader reader(file.Path());
  for (const int set : {-1, 2, INT_MIN, INT_MAX}) {
    XIQReader::DataSetInfoStruct info{1, 2};
    reader.QueryDataSetInfo(info, set);
    EXPECT_EQ(info.triggerPosition, 0.0);
    EXPECT_EQ(info.timestampOffset, 0.0);
  }
}

TEST(XIQReader, Constructor_FileThatCannotBeRead_Throws13001) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  const TempFile pipe; // to which nobody writes
  pipe.BecomePipe();
  const int files = test::OpenFiles();
  for (const char *path :
       {test::kNoSuchFile, folder.c_str(), "/dev/zero", pipe.Path(), static_cast<const char *>(nullptr)}) {
    ExpectThrown([&] { const XIQReader reader(path); }, 13001, "error opening file", "utils\\XIQReader");
  }
  const TempFile locked(Recording(1, 1));
  ASSERT_EQ(chmod(locked.Path(), 0), 0);
  const bool superuser = geteuid() == 0;
  if (!superuser || seteuid(65534) == 0) {
    ExpectThrown([&] { const XIQReader reader(locked.Path()); }, 13001, "error opening file",
                 "utils\\XIQReader");
    EXPECT_TRUE(!superuser || seteuid(0) == 0);
  }
  EXPECT_EQ(test::OpenFiles(), files);
}

TEST(XIQReader, Constructor_NoMemory_Throws11001) {
  std::string text;
  for (int k = 0; k < 100000; ++k) text += "<DataSet>\n\n\n";
  const TempFile file(text);
  const int files = test::OpenFiles();
  for (const std::size_t limit : {std::size_t{0}, std::size_t{1000}, std::size_t{300000}}) {
    const test::AllocationLimit limited(limit);
    EXPECT_EQ(test::ThrownBy([&] { const XIQReader reader(file.Path()); }).GetErrorCode(), 11001) << limit;
  }
  EXPECT_EQ(test::OpenFiles(), files);
  EXPECT_EQ(XIQReader(file.Path()).QueryNumDataSets(), 100000);
}

TEST(XIQReader, Constructor_IncompleteHeader_GivesZeros) {
  for (const std::string text : {"", "\n", "<?xml?>", "<DataFile offset=\"", "no tag at all\nand more\n"}) {
    const TempFile file(text);
    XIQReader reader(file.Path());
    EXPECT_EQ(reader.QueryNumDataSets(), 0);
    EXPECT_EQ(reader.QueryNumSamples(), 0);
    XIQReader::AcqInfoStruct acq;
    reader.QueryAcqInfo(acq);
    EXPECT_EQ(acq.scaling, 0.0);
    EXPECT_EQ(acq.referenceLevel, 0.0);
    EXPECT_EQ(Peer::BinDataOffset(reader), -1);
    EXPECT_FALSE(Peer::ExtractAcqInfo(reader));
    VecCplx32 dst(3);
    reader.ReadAllDataSetsIQSamples(dst);
    EXPECT_EQ(dst.GetSize(), 0);
    reader.ReadIQSamples(dst, 0);
    EXPECT_EQ(dst.GetSize(), 0);
  }
}

struct OffsetRow {
  const char *line;
  int offset;
};

TEST(XIQReader, Constructor_OffsetAttribute_LosesItsFirstCharacter) {
  for (const OffsetRow &row :
       {OffsetRow{"<DataFile offset=\"0123\">", 123}, OffsetRow{"<DataFile offset=\"123\">", 23},
        OffsetRow{"<DataFile offset=\"x77.9e0\">", 77}, OffsetRow{"<DataFile offset=\"0-5\">", -5},
        OffsetRow{"<DataFile offset=\"0 12\"", 12}, OffsetRow{"<DataFile offset=\"0\">", 0},
        OffsetRow{"<DataFile offset=\"012", -1}, OffsetRow{"<DataFile  offset=\"012\"", -1},
        OffsetRow{"\n<DataFile offset=\"012\"", -1}, OffsetRow{"<DataFile offset=\"", -1},
        OffsetRow{"<DataFile offset=\"\">7\"", 0}, OffsetRow{"<DataFile offset=\"\"7\"", 7},
        OffsetRow{"<DataFile offset=\"09e99\"", INT_MAX}, OffsetRow{"<DataFile offset=\"0-9e99\"", INT_MIN},
        OffsetRow{"<DataFile offset=\"0nan\"", 0}}) {
    const TempFile file(row.line);
    EXPECT_EQ(Peer::BinDataOffset(XIQReader(file.Path())), row.offset) << row.line;
  }
}

TEST(XIQReader, Constructor_KeyTwice_KeepsTheLaterValueAndIsNotComplete) {
  const TempFile twice(Header(Acquisition(10, "1") + Acquisition(20, "2") + "</DataSetsCollection>"));
  XIQReader reader(twice.Path());
  EXPECT_FALSE(Peer::ExtractAcqInfo(reader));
  EXPECT_EQ(reader.QueryNumSamples(), 20);
  XIQReader::AcqInfoStruct acq;
  reader.QueryAcqInfo(acq);
  EXPECT_EQ(acq.scaling, 2.0);
  const TempFile missing(Header(Line("Scaling", "", "3")));
  XIQReader other(missing.Path());
  EXPECT_FALSE(Peer::ExtractAcqInfo(other));
  // One key eight times sets as many bits.
  std::string lines;
  for (int k = 0; k < 8; ++k) lines += Line("Scaling", "", std::to_string(k));
  const TempFile eight(Header(lines));
  XIQReader repeated(eight.Path());
  EXPECT_TRUE(Peer::ExtractAcqInfo(repeated));
}

TEST(XIQReader, Constructor_LinesBehindTheCollection_DoNotCount) {
  const TempFile file(Header("</DataSetsCollection>\n" + Acquisition(10, "1")));
  EXPECT_EQ(XIQReader(file.Path()).QueryNumSamples(), 0);
  const TempFile sameLine(Header("<NumberSamples>7</NumberSamples></DataSetsCollection>\n"));
  EXPECT_EQ(XIQReader(sameLine.Path()).QueryNumSamples(), 0);
}

TEST(XIQReader, Constructor_TrialOrder_DecidesWhichKeyTakesALine) {
  XIQReader::AcqInfoStruct acq;
  // The key of Frequency also stands at the end of SamplingFrequency's; the closing key decides.
  const TempFile sampling(Header(Line("SamplingFrequency", " units=\"Hz\"", "5")));
  XIQReader(sampling.Path()).QueryAcqInfo(acq);
  EXPECT_EQ(acq.samplingFrequency, 5.0);
  EXPECT_EQ(acq.frequency, 0.0);
  const TempFile both(Header("<SamplingFrequency units=\"Hz\">5</Frequency></SamplingFrequency>\n"));
  XIQReader(both.Path()).QueryAcqInfo(acq);
  EXPECT_EQ(acq.samplingFrequency, 0.0);
  EXPECT_EQ(acq.frequency, 5.0);
  // The earlier key of the table, not of the line.
  const TempFile order(Header("<Scaling>1</Scaling><NumberSamples>2</NumberSamples>\n"));
  XIQReader(order.Path()).QueryAcqInfo(acq);
  EXPECT_EQ(acq.numberSamples, 2);
  EXPECT_EQ(acq.scaling, 0.0);
}

TEST(XIQReader, Constructor_TagAndValueOnDifferentLines_GiveZero) {
  const TempFile file(Header("<NumberSamples>\n7</NumberSamples>\n<Scaling>3\n</Scaling>\n"));
  XIQReader::AcqInfoStruct acq;
  XIQReader(file.Path()).QueryAcqInfo(acq);
  EXPECT_EQ(acq.numberSamples, 0);
  EXPECT_EQ(acq.scaling, 0.0);
}

TEST(XIQReader, Constructor_HostileNumbers_StopAtTheLimits) {
  struct Row {
    const char *text;
    int value;
  };
  for (const Row &row : {Row{"1e300", INT_MAX}, Row{"-1e300", INT_MIN}, Row{"nan", 0}, Row{"inf", INT_MAX},
                         Row{"2147483647.9", INT_MAX}, Row{"-3.9", -3}, Row{"1e999", INT_MAX}}) {
    const TempFile file(Header(Line("NumberSamples", "", row.text)));
    EXPECT_EQ(XIQReader(file.Path()).QueryNumSamples(), row.value) << row.text;
  }
}

TEST(XIQReader, Constructor_LongLines_AreReadInPiecesOf1023) {
  const std::string tag = "<DataSet>";
  struct Row {
    std::size_t before;
    int count;
  };
  // The tag within one piece, across the edge of two, and in the second.
  for (const Row &row : {Row{0, 1}, Row{1014, 1}, Row{1015, 0}, Row{1022, 0}, Row{1023, 1}, Row{2037, 1},
                         Row{2038, 0}, Row{2046, 1}}) {
    const TempFile file(std::string(row.before, 'x') + tag + "\n");
    EXPECT_EQ(XIQReader(file.Path()).QueryNumDataSets(), row.count) << row.before;
  }
  const TempFile twice("<DataSet><DataSet>" + std::string(1023 - 18, 'x') + "<DataSet>");
  EXPECT_EQ(XIQReader(twice.Path()).QueryNumDataSets(), 2);
  const TempFile zero(std::string("ab\0<DataSet>\n<DataSet\0>\n<DataSet>", 33));
  EXPECT_EQ(XIQReader(zero.Path()).QueryNumDataSets(), 1);
}

TEST(XIQReader, Constructor_DataSets_AreCountedAndTakeTheirNextTwoLines) {
  const std::string trigger = Line("TriggerPosition", " units=\"Seconds\"", "3");
  const std::string stamp = Line("TimestampOffset", " units=\"Seconds\"", "4");
  XIQReader::DataSetInfoStruct info;
  // A line too late.
  const TempFile late("<DataSet>\n\n" + trigger + stamp);
  XIQReader(late.Path()).QueryDataSetInfo(info, 0);
  EXPECT_EQ(info.triggerPosition, 0.0);
  EXPECT_EQ(info.timestampOffset, 0.0);
  // Tags on the lines of the values count, but have no times of their own.
  const TempFile nested("<DataSet>\n<DataSet>" + trigger + "<DataSet>" + stamp + "<DataSet>\n" + trigger +
                        stamp);
  const XIQReader reader(nested.Path());
  EXPECT_EQ(reader.QueryNumDataSets(), 4);
  for (int k = 0; k < 4; ++k) {
    reader.QueryDataSetInfo(info, k);
    EXPECT_EQ(info.triggerPosition, k < 2 ? 3.0 : 0.0) << k;
    EXPECT_EQ(info.timestampOffset, k < 2 ? 4.0 : 0.0) << k;
  }
  // The file ends before the lines that it needs.
  const TempFile cut(trigger + stamp + "<DataSet>");
  XIQReader(cut.Path()).QueryDataSetInfo(info, 0);
  EXPECT_EQ(info.triggerPosition, 0.0);
  EXPECT_EQ(XIQReader(cut.Path()).QueryNumDataSets(), 1);
}

TEST(XIQReader, Constructor_TagsAmongTheSamples_CountAsDataSets) {
  const std::string bytes = Recording(1, 1000) + "\n<DataSet>\n" + Data(1000) + "\n<DataSet>";
  const TempFile file(bytes);
  EXPECT_EQ(XIQReader(file.Path()).QueryNumDataSets(), 3);
}

TEST(XIQReader, Constructor_Setup_EndsAtItsTag) {
  XIQReader::SetupInfoStruct setup;
  for (const char *end : {"</Setup>\n", "<Setup/>\n"}) {
    const TempFile file(Header(SetupLines("1", "2").append(SetupLines("3", "4"))));
    XIQReader(file.Path()).QuerySetupInfo(setup);
    EXPECT_EQ(setup.anOffset, 1.0) << end;
    EXPECT_EQ(setup.anLenReq, 2.0) << end;
    const TempFile ended(Header(end + SetupLines("1", "2")));
    XIQReader(ended.Path()).QuerySetupInfo(setup);
    EXPECT_EQ(setup.anOffset, 0.0) << end;
  }
  // Other names of the second parameter do not count.
  const TempFile other(Header("<NumericParameter pid=\"anLenReq\" name=\"Length\">\n<Value>3</Value>\n"));
  XIQReader(other.Path()).QuerySetupInfo(setup);
  EXPECT_EQ(setup.anLenReq, 0.0);
}

TEST(XIQReader, GetValueFromKey_Line_NeedsBothKeysAndTheTerminator) {
  double value = 5;
  EXPECT_TRUE(Peer::GetValueFromKey("<Key>12</Key>", "Key", value));
  EXPECT_EQ(value, 12.0);
  EXPECT_FALSE(Peer::GetValueFromKey("<Key>12<", "Key", value));
  EXPECT_EQ(value, 0.0);
  EXPECT_FALSE(Peer::GetValueFromKey("</Ke>12<", "Key", value));
  EXPECT_FALSE(Peer::GetValueFromKey("/Key>12", "Key", value)); // the close key first, no terminator behind
  EXPECT_TRUE(Peer::GetValueFromKey("/Key>12<", "Key", value));
  EXPECT_EQ(value, 12.0);
  EXPECT_FALSE(Peer::GetValueFromKey("/Key", "Key", value)); // nothing behind the key
  EXPECT_FALSE(Peer::GetValueFromKey("", "Key", value));
  EXPECT_TRUE(Peer::GetValueFromKey("a=12;b", "a", "b", value, ";"));
  EXPECT_EQ(value, 12.0);
  EXPECT_TRUE(Peer::GetValueFromKey("Key 7 Key>8</Key", "Key", value)); // the first key counts
  EXPECT_EQ(value, 7.0);
}

TEST(XIQReader, Constructor_HostThatWritesCommas_ReadsPointsAllTheSame) {
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no such locale";
  const TempFile file(Recording(1, 1));
  XIQReader::AcqInfoStruct acq;
  XIQReader(file.Path()).QueryAcqInfo(acq);
  std::setlocale(LC_NUMERIC, before.c_str());
  EXPECT_EQ(acq.referenceLevel, -20.5);
}

TYPED_TEST(XiqSamples, ReadIQSamples_WholeSet_IsScaled) {
  for (const int n : {1, 100, 4096, 10001}) {
    const TempFile file(Recording(3, n));
    const XIQReader reader(file.Path());
    TypeParam dst;
    for (int set = 0; set < 3; ++set) {
      reader.ReadIQSamples(dst, set);
      ExpectSamples(dst, set * n, n);
    }
    reader.ReadAllDataSetsIQSamples(dst);
    ExpectSamples(dst, 0, 3 * n);
  }
}

TYPED_TEST(XiqSamples, ReadIQSamples_Part_IsThoseSamples) {
  const TempFile file(Recording(2, 9000));
  const XIQReader reader(file.Path());
  struct Row {
    int set, start, n;
  };
  for (const Row &row : {Row{0, 0, 9000}, Row{1, 0, 1}, Row{1, 8999, 1}, Row{0, 17, 8192}, Row{1, 4096, 4096},
                         Row{0, 9000, 0}, Row{0, 0, 0}}) {
    TypeParam dst(5);
    reader.ReadIQSamples(dst, row.set, row.start, row.n);
    ExpectSamples(dst, row.set * 9000 + row.start, row.n);
  }
}

TYPED_TEST(XiqSamples, ReadIQSamples_BadArguments_Throw10002) {
  const TempFile file(Recording(2, 100));
  const XIQReader reader(file.Path());
  TypeParam dst(3);
  ExpectRefused([&] { reader.ReadIQSamples(dst, 3); });
  ExpectRefused([&] { reader.ReadIQSamples(dst, 3, 0, 0); });
  ExpectRefused([&] { reader.ReadIQSamples(dst, INT_MAX); });
  ExpectRefused([&] { reader.ReadIQSamples(dst, 0, -1, 1); });
  ExpectRefused([&] { reader.ReadIQSamples(dst, 0, 0, -1); });
  ExpectRefused([&] { reader.ReadIQSamples(dst, 0, 1, 100); });
  ExpectRefused([&] { reader.ReadIQSamples(dst, 0, INT_MAX, INT_MAX); });
  EXPECT_EQ(dst.GetSize(), 3);
}

TYPED_TEST(XiqSamples, ReadIQSamples_SetBehindTheLast_IsWhatFollowsIt) {
  const TempFile file(Header(Lines(2, 100, kScaling)) + Data(250));
  const XIQReader reader(file.Path());
  TypeParam dst;
  reader.ReadIQSamples(dst, 2);
  ExpectSamples(dst, 200, 100, 250);
}

TYPED_TEST(XiqSamples, ReadIQSamples_NegativeSet_ReadsTheHeaderOrFromTheStart) {
  // 20 samples before the data there is the end of the header; 2000 before it there is no file.
  const std::string small = Header(Lines(1, 5, kScaling)) + Data(5);
  const TempFile file(small);
  const XIQReader reader(file.Path());
  TypeParam dst;
  reader.ReadIQSamples(dst, -1);
  ASSERT_EQ(dst.GetSize(), 5);
  const auto scale = static_cast<float>(1.2345678901e-7);
  EXPECT_FLOAT_EQ(static_cast<float>(dst[0].re), scale * static_cast<float>(0x20202020));
  const std::string large = Header(Lines(1, 2000, kScaling)) + Data(2000);
  const TempFile other(large);
  XIQReader(other.Path()).ReadIQSamples(dst, -1);
  ASSERT_EQ(dst.GetSize(), 2000);
  EXPECT_FLOAT_EQ(static_cast<float>(dst[0].re), scale * static_cast<float>(0x7461443C)); // "<Dat"
  XIQReader(other.Path()).ReadIQSamples(dst, INT_MIN);
  EXPECT_FLOAT_EQ(static_cast<float>(dst[0].re), scale * static_cast<float>(0x7461443C));
}

TYPED_TEST(XiqSamples, ReadIQSamples_NoOffset_ReadsEachSetFromOneByteEarlier) {
  const std::string bytes = "<DataFile>\n" + Lines(2, 2, "1") + Data(4);
  const TempFile file(bytes);
  const XIQReader reader(file.Path());
  EXPECT_EQ(Peer::BinDataOffset(reader), -1);
  TypeParam first, second, all;
  reader.ReadIQSamples(first, 0);
  reader.ReadIQSamples(second, 1);
  reader.ReadAllDataSetsIQSamples(all);
  ASSERT_EQ(all.GetSize(), 4);
  EXPECT_EQ(static_cast<float>(first[0].re), static_cast<float>(0x7461443C)); // bytes 0 to 3
  const int word = bytes[15] | bytes[16] << 8 | bytes[17] << 16 | bytes[18] << 24;
  EXPECT_EQ(static_cast<float>(second[0].re), static_cast<float>(word));
  EXPECT_EQ(all[0].re, first[0].re);
  EXPECT_EQ(all[2].re, second[0].re);
}

TYPED_TEST(XiqSamples, Reads_OfAFileThatEndsEarly_GiveZeros) {
  const std::string whole = Recording(3, 5000);
  for (const int missing : {1, 5000, 15000}) {
    const TempFile file(whole.substr(0, whole.size() - 8U * static_cast<unsigned>(missing)));
    const XIQReader reader(file.Path());
    TypeParam dst(15000);
    dst.Set({7, 7});
    reader.ReadAllDataSetsIQSamples(dst);
    ExpectSamples(dst, 0, 15000, 15000 - missing);
    reader.ReadIQSamples(dst, 2, 0, 5000);
    ExpectSamples(dst, 10000, 5000, 15000 - missing);
  }
  // Within the last sample, behind its I.
  const TempFile file(whole.substr(0, whole.size() - 4));
  TypeParam dst(15000);
  dst.Set({7, 7});
  XIQReader(file.Path()).ReadAllDataSetsIQSamples(dst);
  EXPECT_FLOAT_EQ(static_cast<float>(dst[14999].re),
                  static_cast<float>(1.2345678901e-7) * static_cast<float>(ISample(14999)));
  EXPECT_EQ(dst[14999].im, 0);
}

TYPED_TEST(XiqSamples, Reads_OfAFileThatShrinks_GiveZeros) {
  const std::string whole = Recording(2, 5000);
  const TempFile file(whole);
  const XIQReader reader(file.Path());
  ASSERT_EQ(truncate(file.Path(), static_cast<off_t>(whole.size() - 8 * 6000)), 0);
  TypeParam dst;
  reader.ReadAllDataSetsIQSamples(dst);
  ExpectSamples(dst, 0, 10000, 4000);
  ASSERT_EQ(truncate(file.Path(), 0), 0);
  reader.ReadIQSamples(dst, 1);
  ExpectSamples(dst, 0, 5000, 0);
}

TYPED_TEST(XiqSamples, Reads_OfAHostileCount_MakeUpNoGigabytes) {
  for (const int count : {INT_MAX, 2000000000, (1 << 22) + 11}) {
    const TempFile file(Header(Lines(3, count, kScaling)) + Data(10));
    const XIQReader reader(file.Path());
    TypeParam dst(3);
    ExpectRefused([&] { reader.ReadIQSamples(dst, 0); });
    ExpectRefused([&] { reader.ReadAllDataSetsIQSamples(dst); });
    EXPECT_EQ(dst.GetSize(), 3);
    reader.ReadIQSamples(dst, 0, 5, 8);
    ExpectSamples(dst, 5, 8, 10);
    reader.ReadIQSamples(dst, 3, count - 2, 2);
    ExpectSamples(dst, 0, 2, 0);
  }
  const TempFile negative(Header(Lines(1, -5, kScaling)) + Data(10));
  const XIQReader reader(negative.Path());
  TypeParam dst(3);
  reader.ReadIQSamples(dst, 0);
  EXPECT_EQ(dst.GetSize(), 0);
  reader.ReadAllDataSetsIQSamples(dst);
  EXPECT_EQ(dst.GetSize(), 0);
  ExpectRefused([&] { reader.ReadIQSamples(dst, 0, 0, 0); });
}

// Samples beyond 4 GiB, of a file that grew after it was opened and takes no room on the disk.
TYPED_TEST(XiqSamples, ReadIQSamples_BeyondFourGibibytes_FindsTheSamples) {
  const std::string header = Header(Lines(2, 600000000, kScaling));
  const TempFile file(header);
  const XIQReader reader(file.Path());
  const std::string data = Data(4);
  const int descriptor = open(file.Path(), O_WRONLY);
  ASSERT_GE(descriptor, 0);
  const auto position = static_cast<off_t>(header.size()) + 8 * (off_t{600000000} + 77);
  const bool written =
      pwrite(descriptor, data.data(), data.size(), position) == static_cast<ssize_t>(data.size());
  close(descriptor);
  if (!written) GTEST_SKIP() << "no files of this size";
  TypeParam dst;
  reader.ReadIQSamples(dst, 1, 77, 4);
  ExpectSamples(dst, 0, 4);
}

TYPED_TEST(XiqSamples, Reads_RepeatedIntoKeptVectors_AllocateNothing) {
  const TempFile file(Recording(2, 5000));
  const XIQReader reader(file.Path());
  TypeParam dst(10000);
  const long before = test::AllocationCount();
  reader.ReadIQSamples(dst, 1);
  reader.ReadIQSamples(dst, 0, 5, 10);
  reader.ReadAllDataSetsIQSamples(dst);
  EXPECT_EQ(test::AllocationCount(), before);
}

TEST(XIQReader, Copy_OfASourceThatDiesFirst_StandsAlone) {
  const TempFile file(Recording(2, 100));
  const TempFile other(Recording(1, 3));
  const int files = test::OpenFiles();
  {
    auto source = std::make_unique<XIQReader>(file.Path());
    const XIQReader copy(*source);
    XIQReader assigned(other.Path());
    assigned = *source;
    assigned = *&assigned;
    EXPECT_EQ(test::OpenFiles(), files + 3);
    source.reset();
    for (const XIQReader *reader : {&copy, static_cast<const XIQReader *>(&assigned)}) {
      EXPECT_EQ(reader->QueryNumDataSets(), 2);
      XIQReader::DataSetInfoStruct info;
      reader->QueryDataSetInfo(info, 1);
      EXPECT_EQ(info.triggerPosition, 1.5);
      VecCplx32 dst;
      reader->ReadAllDataSetsIQSamples(dst);
      ExpectSamples(dst, 0, 200);
    }
  }
  EXPECT_EQ(test::OpenFiles(), files);
}

} // namespace
