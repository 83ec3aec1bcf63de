#include "qorn/infra/BitVector.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "qorn/infra/VecInt16.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Matrices.h"
#include "support/TempFile.h"
#include "support/Vectors.h"

namespace {

using QORN::VecInt16;
using QORN::test::ByRows;
using QORN::test::ExpectThrown;
using QORN::test::Flat;
using QORN::test::kNoSuchFile;
using QORN::test::List;
using QORN::test::OpenFiles;
using QORN::test::PrintedBy;
using QORN::test::TempFile;
using Bits = QORN::BitVector;
using Rows = std::vector<std::vector<double>>;
using Shorts = std::vector<short>;

Bits Of(int codes, int width, const std::vector<double> &bits) {
  return QORN::test::MatrixOf<Bits>(codes, width, bits);
}
VecInt16 Values(const Shorts &values) { return QORN::test::Of<VecInt16>(values); }

TEST(BitVector, Constructor_Shape_ClearsAllBits) {
  const Bits bits(2, 3);
  EXPECT_EQ(ByRows(bits), (Rows{{0, 0, 0}, {0, 0, 0}}));
  EXPECT_EQ(bits.GetCodeLen(), 2);
  EXPECT_EQ(bits.GetCodeWordLen(), 3);
  EXPECT_EQ(Bits().GetCodeLen(), 0);
}

TEST(BitVector, Constructor_Values_PutsTheLowestBitLast) {
  EXPECT_EQ(ByRows(Bits(Values({5, -1, 8, 0x7ff0}), 4)),
            (Rows{{0, 1, 0, 1}, {1, 1, 1, 1}, {1, 0, 0, 0}, {0, 0, 0, 0}}));
  EXPECT_EQ(ByRows(Bits(Values({1, -2}), 20)),
            (Rows{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
                  {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0}}));
  EXPECT_EQ(Bits(Values({-1}), 40)[0][0], 1);
  EXPECT_EQ(Bits(Values({}), 4).GetSize(), 0);
  EXPECT_EQ(Bits(Values({1, 2}), 0).GetRows(), 2);
}

TEST(BitVector, ValidBits_AreZeroOneAnd255) {
  const Bits bits;
  for (int b = 0; b < 256; ++b) {
    EXPECT_EQ(bits.IsValidBit(static_cast<unsigned char>(b)), b == 0 || b == 1 || b == 255) << b;
    EXPECT_EQ(Bits::GetPrintChar(static_cast<unsigned char>(b)), b == 0 ? '0' : b == 1 ? '1' : 'x') << b;
  }
}

// An explicit instantiation may name what is private.
using ValidateMember = bool (Bits::*)() const;
ValidateMember validate;
template <ValidateMember member> struct Opened { static inline const bool done = (validate = member, true); };
template struct Opened<&Bits::Validate>;

TEST(BitVector, Validate_OfAllBits_FindsTheIllegalOne) {
  EXPECT_TRUE((Of(1, 3, {0, 1, 255}).*validate)());
  EXPECT_FALSE((Of(2, 2, {0, 1, 255, 254}).*validate)());
  EXPECT_TRUE((Bits().*validate)());
}

TEST(BitVector, Set_AnyByte_FillsAllBits) {
  Bits bits(2, 20);
  bits.Set(77);
  EXPECT_EQ(Flat(bits), std::vector<double>(40, 77));
}

TEST(BitVector, Logic_InPlace_WorksOnAllEightBits) {
  const std::vector<double> a{0, 0, 1, 1, 255, 255, 12}, b{0, 1, 0, 1, 1, 255, 10};
  Bits both = Of(1, 7, a), either = both, one = both;
  const Bits other = Of(7, 1, b);
  both.And(other);
  either.Or(other);
  one.Xor(other);
  EXPECT_EQ(Flat(both), (std::vector<double>{0, 0, 0, 1, 1, 255, 8}));
  EXPECT_EQ(Flat(either), (std::vector<double>{0, 1, 1, 1, 255, 255, 14}));
  EXPECT_EQ(Flat(one), (std::vector<double>{0, 1, 1, 0, 254, 0, 6}));
}

TEST(BitVector, Logic_OutOfPlace_TakesTheShapeOfTheFirst) {
  const Bits a = Of(2, 2, {0, 1, 255, 12}), b = Of(2, 2, {1, 1, 1, 10});
  Bits out;
  Bits::And(out, a, b);
  EXPECT_EQ(ByRows(out), (Rows{{0, 1}, {1, 8}}));
  Bits::Or(out, a, b);
  EXPECT_EQ(ByRows(out), (Rows{{1, 1}, {255, 14}}));
  Bits::Xor(out, a, b);
  EXPECT_EQ(ByRows(out), (Rows{{1, 0}, {254, 6}}));
  Bits self = a;
  Bits::And(self, self, b);
  EXPECT_EQ(ByRows(self), (Rows{{0, 1}, {1, 8}}));
  self = b;
  Bits::Xor(self, a, self);
  EXPECT_EQ(ByRows(self), (Rows{{1, 0}, {254, 6}}));
  Bits::And(out, Bits(0, 3), Bits());
  EXPECT_EQ(out.GetCols(), 3);
  EXPECT_EQ(out.GetSize(), 0);
}

TEST(BitVector, Not_OfTheMember_ExchangesZeroAndOneOnly) {
  Bits bits = Of(1, 5, {0, 1, 255, 2, 254});
  bits.Not();
  EXPECT_EQ(Flat(bits), (std::vector<double>{1, 0, 255, 2, 254}));
}

TEST(BitVector, Not_OfTheStaticForm_ComplementsAllEightBits) {
  Bits out;
  Bits::Not(out, Of(1, 3, {0, 1, 255}));
  EXPECT_EQ(ByRows(out), (Rows{{255, 254, 0}}));
  Bits::Not(out, out);
  EXPECT_EQ(ByRows(out), (Rows{{0, 1, 255}}));
}

TEST(BitVector, Import_OfValues_ResizesAndReusesTheBlock) {
  Bits bits(4, 4);
  const auto *block = bits.GetPtr();
  bits.Import(Values({1, 2, 3}), 2);
  EXPECT_EQ(ByRows(bits), (Rows{{0, 1}, {1, 0}, {1, 1}}));
  EXPECT_EQ(bits.GetPtr(), block);
  bits.Import(Values({3, 2, 1, 0}), 2, 0, 3);
  EXPECT_EQ(ByRows(bits), (Rows{{0, 1, 1}, {0, 1, 0}}));
}

TEST(BitVector, Import_OfLaterValues_WritesTheRowsOfTheSameIndices) {
  Bits bits(3, 2);
  bits.Set(9);
  bits.Import(Values({0, 1, 2, 3, 1}), 3, 1, 2);
  EXPECT_EQ(ByRows(bits), (Rows{{9, 9}, {0, 1}, {1, 0}}));
}

TEST(BitVector, Export_ToBytes_CopiesWholeWords) {
  const Bits bits = Of(3, 2, {1, 2, 3, 4, 5, 6});
  unsigned char target[6] = {9, 9, 9, 9, 9, 9};
  bits.Export(target, 2);
  EXPECT_EQ((std::vector<int>(target, target + 6)), (std::vector<int>{1, 2, 3, 4, 9, 9}));
}

TEST(BitVector, Export_ToValues_SumsBytesTimesWeights) {
  VecInt16 out;
  Of(3, 4, {0, 1, 0, 1, 1, 1, 1, 1, 0, 0, 0, 255}).Export(out, 3);
  EXPECT_EQ(List(out), (Shorts{5, 15, 255}));
  Bits(Values({0x5a5a, 1, 0x7fff}), 15).Export(out, 3);
  EXPECT_EQ(List(out), (Shorts{0x5a5a, 1, 0x7fff}));
  Of(1, 4, {255, 255, 255, 255}).Export(out, 1);
  EXPECT_EQ(List(out), (Shorts{255 * 15}));
  Bits(Values({3, 3}), 4).Export(out, 1);
  EXPECT_EQ(List(out), (Shorts{3}));
}

// The weight of the first of sixteen bits is -32768, and halving keeps the sign.
TEST(BitVector, Export_OfSixteenBitsOrMore_FollowsTheSignedWeights) {
  VecInt16 out;
  Bits(Values({1, 4, -32768, 0x0101}), 16).Export(out, 4);
  EXPECT_EQ(List(out), (Shorts{-1, -4, -32768, -257}));
  Bits(Values({1, -1}), 17).Export(out, 2);
  EXPECT_EQ(List(out), (Shorts{0, 0}));
  Bits(Values({-1}), 33).Export(out, 1);
  EXPECT_EQ(List(out), (Shorts{0}));
}

TEST(BitVector, ImportOfFile_WholeWords_KeepsLowBytes) {
  const TempFile file("0 1 255\n1 256 -1\n0 1");
  Bits bits;
  bits.Import(file.Path(), 3);
  EXPECT_EQ(ByRows(bits), (Rows{{0, 1, 255}, {1, 0, 255}}));
  bits.Import(file.Path(), 2, false);
  EXPECT_EQ(ByRows(bits), (Rows{{0, 1}, {255, 1}, {0, 255}, {0, 1}}));
}

// 2^64 + 1, -2^64 - 1, 2^32 and 2^31 + 2.
TEST(BitVector, ImportOfFile_NumbersBeyondInt_KeepsLowBytes) {
  const TempFile file("18446744073709551617 -18446744073709551617 4294967296 2147483650");
  Bits bits;
  bits.Import(file.Path(), 4);
  EXPECT_EQ(ByRows(bits), (Rows{{1, 255, 0, 2}}));
}

// What the scanning format "%d" takes for a number.
TEST(BitVector, ImportOfFile_AnyText_StopsWhereNoNumberStands) {
  const struct {
    const char *text;
    Rows rows;
  } cases[] = {{" \t\n\v\f\r+1-0", {{1}, {0}}},
               {"1,1", {{1}}},
               {"1 - 1", {{1}}},
               {"1 +-1", {{1}}},
               {"007", {{7}}},
               {"0x1", {{0}}},
               {"1 \xA0"
                "1",
                {{1}}},
               {"-", {}}};
  for (const auto &c : cases) {
    const TempFile file(c.text);
    Bits bits;
    bits.Import(file.Path(), 1);
    EXPECT_EQ(ByRows(bits), c.rows) << c.text;
  }
}

TEST(BitVector, ImportOfFile_WithIndex_DropsTheFirstOfEachWord) {
  const TempFile file("  0 0 1 \n  1 1 1 \n  2 1");
  Bits bits(9, 9);
  bits.Import(file.Path(), 2, true);
  EXPECT_EQ(ByRows(bits), (Rows{{0, 1}, {1, 1}}));
}

TEST(BitVector, ImportOfFile_ThatIsNotNumbers_StopsThere) {
  const TempFile undefined("0 1\n1 x\n1 1\n"), empty("");
  Bits bits;
  bits.Import(undefined.Path(), 2);
  EXPECT_EQ(ByRows(bits), (Rows{{0, 1}}));
  bits.Import(empty.Path(), 2);
  EXPECT_EQ(bits.GetRows(), 0);
  EXPECT_EQ(bits.GetCols(), 2);
  for (const int width : {0, -1, -2147483647 - 1}) {
    for (const bool hasIndex : {false, true}) {
      bits.Import(undefined.Path(), width, hasIndex);
      EXPECT_EQ(bits.GetSize(), 0) << width;
    }
  }
  bits.Import(undefined.Path(), 2147483647, true);
  EXPECT_EQ(bits.GetSize(), 0);
}

TEST(BitVector, ImportOfFile_FromAPipe_KeepsNothing) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "1 0 1 1\n", 8), 8);
  close(ends[1]);
  Bits bits(4, 4);
  bits.Import(std::string("/dev/fd/").append(std::to_string(ends[0])).c_str(), 2);
  close(ends[0]);
  EXPECT_EQ(bits.GetSize(), 0);
}

TEST(BitVector, Files_ThatCannotBeOpened_Throw13001AndKeepTheBits) {
  Bits bits = Of(1, 2, {1, 0});
  const char *message = "error opening file", *none = nullptr;
  const int before = OpenFiles();
  ExpectThrown([&] { bits.Import(kNoSuchFile, 2); }, 13001, message, "infra\\BitVector");
  ExpectThrown([&] { bits.Import(none, 2); }, 13001, message, "infra\\BitVector");
  ExpectThrown([&] { bits.Dump(kNoSuchFile, true, true); }, 13001, message, "infra\\BitVector");
  EXPECT_EQ(ByRows(bits), (Rows{{1, 0}}));
  const TempFile file("1 1 1 1");
  ExpectThrown(
      [&] {
        const QORN::test::AllocationLimit limit(3);
        Bits().Import(file.Path(), 4);
      },
      11001, "memory allocation error", "infra/BitVector");
  EXPECT_EQ(OpenFiles(), before);
}

TEST(BitVector, IsEqual_NeedsShapeAndBytes) {
  const Bits a = Of(2, 3, {0, 1, 255, 1, 0, 1});
  Bits b = a;
  EXPECT_EQ(PrintedBy([&] {
              EXPECT_TRUE(a.IsEqual(b));
              b[1][2] = 0;
              EXPECT_FALSE(a.IsEqual(b));
              EXPECT_FALSE(a.IsEqual(Of(3, 2, {0, 1, 255, 1, 0, 1})));
              EXPECT_TRUE(Bits().IsEqual(Bits()));
            }),
            "");
}

TEST(BitVector, Dump_MoreThanTwiceTheCount_PrintsBothEnds) {
  const Bits bits = Of(3, 2, {0, 1, 255, 0, 7, 1});
  EXPECT_EQ(PrintedBy([&] { bits.Dump(1); }), "\n0 1 \n.................\nx 1 ");
  EXPECT_EQ(PrintedBy([&] { bits.Dump(2); }), "\n0 1 \nx 0 \nx 1 ");
  EXPECT_EQ(PrintedBy([&] { bits.Dump(); }), "\n0 1 \nx 0 \nx 1 ");
  EXPECT_EQ(PrintedBy([&] { bits.Dump(0); }), "\n.................");
  EXPECT_EQ(PrintedBy([&] { bits.Dump(-1); }), "\n.................");
  EXPECT_EQ(PrintedBy([] { Bits().Dump(1); }), "");
}

TEST(BitVector, DumpToFile_WithAndWithoutIndex_IsReadBack) {
  const TempFile file("what was there before");
  const Bits bits(Values({5, 2}), 3);
  EXPECT_EQ(PrintedBy([&] { bits.Dump(file.Path()); }), "");
  EXPECT_EQ(file.Content(), "1 0 1 \n0 1 0 \n");
  Bits back;
  back.Import(file.Path(), 3);
  EXPECT_TRUE(back.IsEqual(bits));
  EXPECT_EQ(PrintedBy([&] { bits.Dump(file.Path(), true, true); }),
            std::string("\n====").append(file.Path()).append(" saved"));
  EXPECT_EQ(file.Content(), "  0 1 0 1 \n  1 0 1 0 \n");
  back.Import(file.Path(), 3, true);
  EXPECT_TRUE(back.IsEqual(bits));
  Of(1, 2, {255, 1}).Dump(file.Path());
  EXPECT_EQ(file.Content(), "x 1 \n");
}

} // namespace
