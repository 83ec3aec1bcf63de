// The writers of recordings, against the library's readers and against bytes.

#include <gtest/gtest.h>
#include <qorn/qorn.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "Failure.h"
#include "RecordingWriter.h"
#include "support/TempFile.h"

namespace {

using QORN::Cplx32;
using QORN::test::TempFile;
using tool::Format;
using tool::MakeRecordingWriter;
using tool::RecordingHead;

constexpr Format kAll[] = {Format::kIqf, Format::kXiq,  Format::kCu8,
                           Format::kCs8, Format::kCs16, Format::kCf32};

struct Written {
  std::string bytes;
  std::int64_t saturated;
};

Written Write(Format format, const RecordingHead &head, const std::vector<Cplx32> &samples) {
  std::ostringstream out;
  const auto writer = MakeRecordingWriter(format, out, head);
  // In parts of any length.
  const int n = static_cast<int>(samples.size());
  for (int done = 0, part = 1; done < n; done += part, part = part * 3 + 1)
    writer->Put(samples.data() + done, std::min(part, n - done));
  writer->End();
  return {out.str(), writer->Saturated()};
}

RecordingHead HeadFor(const std::vector<Cplx32> &samples, double step) {
  RecordingHead head;
  head.samples = static_cast<std::int64_t>(samples.size());
  head.rate = 2.4e6;
  head.centre = 1090.0123e6;
  head.span = 2e6;
  head.step = step;
  return head;
}

/// i - 500 and 3 (500 - i) steps.
std::vector<Cplx32> Ramp(int n, double step) {
  std::vector<Cplx32> samples;
  for (int i = 0; i < n; ++i)
    samples.push_back({static_cast<float>((i - 500) * step), static_cast<float>(3 * (500 - i) * step)});
  return samples;
}

TEST(RecordingWriter, Iqf_ReadByTheLibrary_GivesTheHeadAndTheSamples) {
  for (const int points : {1024, 100}) {
    for (const double step : {1e-5, 1.0 / 32768.0, 0.37}) {
      const std::vector<Cplx32> samples = Ramp(9001, step);
      RecordingHead head = HeadFor(samples, step);
      head.framePoints = points;
      head.level = -17.25;
      head.entries = {{"Title", "a"}, {"Span", "1.9M"}};
      head.flatness = {{1, 2}, {-3, 4}};
      const Written written = Write(Format::kIqf, head, samples);
      EXPECT_EQ(written.saturated, 0);
      const TempFile file(written.bytes);
      const QORN::IQFReader reader(file.Path());
      EXPECT_EQ(reader.GetFFTPoints(), points);
      EXPECT_EQ(reader.GetNofValidFrames(), (9001 + points - 1) / points);
      EXPECT_EQ(reader.GetNofBlocks(), 1);
      EXPECT_EQ(reader.GetSamplingFrequency(), 2.4e6);
      EXPECT_EQ(reader.GetCenterFrequency(), 1090.0123e6);
      EXPECT_EQ(reader.GetSpan(), 1.9e6);
      EXPECT_EQ(reader.GetMaxInputLevel(), -17.25);
      EXPECT_NEAR(reader.GetScalingFactor(), step, 1e-13 * step);
      QORN::VecCplx32 got;
      ASSERT_TRUE(reader.ReadIQData(0, reader.GetNofValidFrames() * points, got));
      for (int i = 0; i < got.GetSize(); ++i) {
        const Cplx32 expected = i < 9001 ? samples[static_cast<std::size_t>(i)] : Cplx32{};
        ASSERT_FLOAT_EQ(got[i].re, expected.re) << i;
        ASSERT_FLOAT_EQ(got[i].im, expected.im) << i;
      }
      QORN::VecReal32 first, second;
      QORN::FrameHeader frame;
      ASSERT_TRUE(reader.GetRawFlatness(&frame, first, second));
      EXPECT_EQ(first[1], -3.0F);
      EXPECT_EQ(second[1], 4.0F);
      EXPECT_EQ(second[2], 0.0F);
    }
  }
}

TEST(RecordingWriter, Iqf_EntriesWithoutAValue_AreLeftOut) {
  RecordingHead head = HeadFor({}, 1.0);
  head.entries = {{"Title", ""}, {"Bins", "7"}, {"FrameLength", ""}, {"Span", ""}};
  const TempFile file(Write(Format::kIqf, head, {}).bytes);
  const QORN::IQFReader reader(file.Path());
  char value[61];
  EXPECT_FALSE(reader.GetHeader("Title", value));
  EXPECT_EQ(reader.GetNofBins(), 7);
  EXPECT_EQ(reader.GetFFTPoints(), 1024);
  EXPECT_EQ(reader.GetSpan(), 2e6);
  EXPECT_EQ(reader.GetSamplingFrequency(), 2.4e6);
}

TEST(RecordingWriter, Iqf_Rates_AreReadBackExactly) {
  for (const double rate : {1.0, 3.0, 44100.0, 2.4e6, 61.44e6, 1e9 / 7.0, 0.3}) {
    RecordingHead head = HeadFor({}, 1.0);
    head.rate = rate;
    const TempFile file(Write(Format::kIqf, head, {}).bytes);
    EXPECT_EQ(QORN::IQFReader(file.Path()).GetSamplingFrequency(), rate);
  }
}

TEST(RecordingWriter, Xiq_ReadByTheLibrary_GivesTheHeadAndTheSamples) {
  for (const double step : {1e-9, 1.0 / 32768.0, 0.37}) {
    const std::vector<Cplx32> samples = Ramp(9001, step);
    RecordingHead head = HeadFor(samples, step);
    head.level = -17.25;
    const Written written = Write(Format::kXiq, head, samples);
    EXPECT_EQ(written.saturated, 0);
    const TempFile file(written.bytes);
    const QORN::XIQReader reader(file.Path());
    EXPECT_EQ(reader.QueryNumDataSets(), 1);
    QORN::XIQReader::AcqInfoStruct info;
    reader.QueryAcqInfo(info);
    EXPECT_EQ(info.numberSamples, 9001);
    EXPECT_EQ(info.samplingFrequency, 2.4e6);
    EXPECT_EQ(info.frequency, 1090.0123e6);
    EXPECT_EQ(info.scaling, step);
    EXPECT_EQ(info.acquisitionBandwidth, 2e6);
    EXPECT_EQ(info.maxSpan, 2e6);
    EXPECT_EQ(info.referenceLevel, -17.25);
    QORN::VecCplx32 got;
    reader.ReadIQSamples(got, 0);
    for (int i = 0; i < 9001; ++i) {
      ASSERT_FLOAT_EQ(got[i].re, samples[static_cast<std::size_t>(i)].re) << i;
      ASSERT_FLOAT_EQ(got[i].im, samples[static_cast<std::size_t>(i)].im) << i;
    }
    EXPECT_EQ(static_cast<std::size_t>(9001 * 8),
              written.bytes.size() - written.bytes.find("</DataFile>\n") - 12);
  }
}

TEST(RecordingWriter, Raw_Bytes_AreThoseOfTheFormat) {
  const auto bytes = [](Format format, double step, const std::vector<Cplx32> &samples) {
    return Write(format, HeadFor(samples, step), samples).bytes;
  };
  using namespace std::string_literals;
  EXPECT_EQ(bytes(Format::kCu8, 1.0, {{-127.5F, 127.5F}, {0.5F, -0.5F}}), "\x00\xFF\x80\x7F"s);
  EXPECT_EQ(bytes(Format::kCs8, 0.5, {{-64.0F, 63.5F}, {0.5F, -0.5F}}), "\x80\x7F\x01\xFF"s);
  EXPECT_EQ(bytes(Format::kCs16, 2.0, {{-65536.0F, 65534.0F}, {516.0F, -2.0F}}),
            "\x00\x80\xFF\x7F\x02\x01\xFF\xFF"s);
  EXPECT_EQ(bytes(Format::kCf32, 1.0, {{1.0F, -2.0F}}), "\x00\x00\x80\x3F\x00\x00\x00\xC0"s);
  EXPECT_EQ(bytes(Format::kCf32, 0.5, {{1.0F, -1.0F}}), "\x00\x00\x00\x40\x00\x00\x00\xC0"s);
}

TEST(RecordingWriter, Values_BeyondTheLimits_AreStoppedThereAndCounted) {
  using namespace std::string_literals;
  // 127.4 rounds to the limit, 127.6 would be 128.
  const std::vector<Cplx32> samples = {{127.4F, 0.0F}, {127.6F, -128.6F}, {1e30F, 0.0F}, {0.0F, -128.4F}};
  const Written written = Write(Format::kCs8, HeadFor(samples, 1.0), samples);
  EXPECT_EQ(written.bytes, "\x7F\x00\x7F\x80\x7F\x00\x00\x80"s);
  EXPECT_EQ(written.saturated, 2);
  for (const Format format : kAll) {
    const float most = std::numeric_limits<float>::max();
    const Written extreme = Write(format, HeadFor({{most, -most}}, 1e-3), {{most, -most}});
    EXPECT_EQ(extreme.saturated, 1) << static_cast<int>(format);
  }
}

TEST(RecordingWriter, NotFinite_IsRefusedByIntegersAndKeptByFloats) {
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float wild : {infinity, -infinity, std::numeric_limits<float>::quiet_NaN()}) {
    std::vector<Cplx32> samples(6000);
    samples[5000].im = wild;
    for (const Format format : kAll) {
      if (format == Format::kCf32) {
        const std::string bytes = Write(format, HeadFor(samples, 0.25), samples).bytes;
        EXPECT_EQ(std::memcmp(bytes.data() + 40004, &wild, 4), 0);
        continue;
      }
      try {
        Write(format, HeadFor(samples, 0.25), samples);
        FAIL();
      } catch (const tool::DataError &error) {
        EXPECT_STREQ(error.what(), "sample 5 000 is not a finite number");
      }
    }
  }
}

TEST(RecordingWriter, TooManySamples_AreRefused) {
  std::ostringstream out;
  RecordingHead head = HeadFor({}, 1.0);
  const auto fails = [&](Format format, std::int64_t samples, const std::string &message) {
    head.samples = samples;
    try {
      MakeRecordingWriter(format, out, head);
      FAIL();
    } catch (const tool::DataError &error) {
      EXPECT_EQ(error.what(), message);
    }
  };
  fails(Format::kXiq, 2147483648, "2 147 483 648 samples are more than the 2 147 483 647 that xiq holds");
  fails(Format::kIqf, 2199023254529,
        "2 199 023 254 529 samples are more than the 2 199 023 254 528 that iqf holds");
}

TEST(RecordingWriter, StepsThatNoReaderTakes_AreRefused) {
  std::ostringstream out;
  for (const Format format : {Format::kIqf, Format::kXiq}) {
    const std::string name = tool::FactsOf(format).name;
    for (const auto &[step, text] :
         {std::pair(0.9e-30, "9e-31"), {1.1e15, "1.1e+15"}, {0.0, "0"}, {-1.0, "-1"}})
      try {
        MakeRecordingWriter(format, out, HeadFor({}, step));
        FAIL() << name << ' ' << step;
      } catch (const tool::DataError &error) {
        EXPECT_EQ(error.what(), "a " + name + " recording of these values would have " + text +
                                    " V per step, which is not from 1e-30 to 1e+15");
      }
    EXPECT_EQ(out.str(), "");
  }
}

TEST(RecordingFormat, Names_AreFoundInAnyCase) {
  for (const Format format : kAll) {
    const std::string name = tool::FactsOf(format).name;
    EXPECT_EQ(tool::FactsOf(format).format, format);
    EXPECT_EQ(tool::FindFormat(name), format);
    EXPECT_EQ(tool::FormatOfPath("a.b/c." + name), format);
  }
  EXPECT_EQ(tool::FormatOfPath("X.XIQ"), Format::kXiq);
  for (const char *path : {"", "iqf", "a.iqf/b", "a.", "a.wav", ".cf32"})
    EXPECT_EQ(tool::FormatOfPath(path), std::nullopt) << path;
  EXPECT_EQ(tool::FormatNames(), "iqf, xiq, cu8, cs8, cs16, cf32");
  EXPECT_EQ(tool::FormatNames(true), "cu8, cs8, cs16, cf32");
}

} // namespace
