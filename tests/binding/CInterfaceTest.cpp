// The C interface from the outside: what each function does at its edges, and that failures arrive as
// records.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "qorn_c.h"
#include "support/Allocations.h"

namespace {

template <class T, void (*destroy)(T *)> struct Destroyer {
  void operator()(T *object) const { destroy(object); }
};
template <class T, void (*destroy)(T *)> using Owned = std::unique_ptr<T, Destroyer<T, destroy>>;
using Vector = Owned<qorn_vector, qorn_vector_destroy>;
using Spectrum = Owned<qorn_spectrum, qorn_spectrum_destroy>;
using Spline = Owned<qorn_spline, qorn_spline_destroy>;
using Hermite = Owned<qorn_hermite, qorn_hermite_destroy>;

constexpr qorn_error kStale{77, 77, "stale", "stale"};

Vector MakeVector(qorn_element element) { return Vector(qorn_vector_create(element, nullptr)); }

template <class T> Vector MakeVector(qorn_element element, const std::vector<T> &values) {
  Vector vector = MakeVector(element);
  EXPECT_EQ(qorn_vector_import(vector.get(), values.data(), static_cast<int>(values.size()), nullptr), 0);
  return vector;
}

template <class T> std::vector<T> Values(const Vector &vector) {
  std::vector<T> values(static_cast<std::size_t>(qorn_vector_size(vector.get())));
  EXPECT_EQ(qorn_vector_export(vector.get(), values.data(), static_cast<int>(values.size()), nullptr), 0);
  return values;
}

void ExpectRecord(const qorn_error &error, int code, const std::string &message, const std::string &file) {
  EXPECT_EQ(error.code, code);
  ASSERT_NE(error.message, nullptr);
  EXPECT_EQ(error.message, message);
  ASSERT_NE(error.file, nullptr);
  EXPECT_EQ(error.file, file);
  EXPECT_GT(error.line, 0);
}

void ExpectRefused(int code, const qorn_error &error) {
  EXPECT_EQ(code, 10002);
  ExpectRecord(error, 10002, "invalid input parameter", "binding\\qorn_c");
}

void ExpectNoFailure(const qorn_error &error) {
  EXPECT_EQ(error.code, 0);
  EXPECT_EQ(error.line, 0);
  EXPECT_EQ(error.message, nullptr);
  EXPECT_EQ(error.file, nullptr);
}

template <class T> void ExpectRoundTrip(qorn_element element, const std::vector<T> &values) {
  const Vector vector = MakeVector(element, values);
  EXPECT_EQ(Values<T>(vector), values) << element;
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(qorn_vector_data(vector.get())) % 64, 0U) << element;
}

} // namespace

TEST(CInterface_Version, IsThatOfTheHeader) {
  EXPECT_EQ(qorn_c_interface(), QORN_C_INTERFACE);
  EXPECT_EQ(std::string(qorn_c_version()).find_first_not_of("0123456789."), std::string::npos);
}

TEST(CInterface_Vector, EveryKind_GivesBackWhatItTook) {
  ExpectRoundTrip<std::int16_t>(QORN_INT16, {1, -2, 32767});
  ExpectRoundTrip<std::int32_t>(QORN_INT32, {1, -2, 2147483647});
  ExpectRoundTrip<std::uint32_t>(QORN_UINT32, {1, 4294967295U});
  ExpectRoundTrip<float>(QORN_REAL32, {1.5F, -2.5F, 3.25F});
  ExpectRoundTrip<double>(QORN_REAL64, {1e-300, -2.5});
  ExpectRoundTrip<std::array<float, 2>>(QORN_CPLX32, {{1, 2}, {3, 4}, {5, 6}});
  ExpectRoundTrip<std::array<double, 2>>(QORN_CPLX64, {{1, 2}, {3, 4}});
}

TEST(CInterface_Vector, New_IsEmptyAndWithoutMemory) {
  qorn_error error = kStale;
  const Vector vector(qorn_vector_create(QORN_REAL32, &error));
  ExpectNoFailure(error);
  ASSERT_NE(vector, nullptr);
  EXPECT_EQ(qorn_vector_size(vector.get()), 0);
  EXPECT_EQ(qorn_vector_capacity(vector.get()), 0);
  EXPECT_EQ(qorn_vector_data(vector.get()), nullptr);
  EXPECT_EQ(qorn_vector_export(vector.get(), nullptr, 0, nullptr), 0);
  EXPECT_EQ(qorn_vector_import(vector.get(), nullptr, 0, nullptr), 0);
}

TEST(CInterface_Vector, UnknownKind_IsRefused) {
  for (const int element : {-1, 7, std::numeric_limits<int>::max()}) {
    qorn_error error = kStale;
    EXPECT_EQ(qorn_vector_create(element, &error), nullptr);
    ExpectRefused(error.code, error);
  }
}

TEST(CInterface_Vector, ResizeWithinTheCapacity_KeepsElementsAndMemory) {
  const Vector vector = MakeVector<float>(QORN_REAL32, {1, 2, 3, 4});
  void *const data = qorn_vector_data(vector.get());
  const long before = QORN::test::AllocationCount();
  EXPECT_EQ(qorn_vector_resize(vector.get(), 2, nullptr), 0);
  EXPECT_EQ(qorn_vector_size(vector.get()), 2);
  EXPECT_EQ(qorn_vector_capacity(vector.get()), 4);
  EXPECT_EQ(qorn_vector_resize(vector.get(), 4, nullptr), 0);
  EXPECT_EQ(QORN::test::AllocationCount(), before);
  EXPECT_EQ(qorn_vector_data(vector.get()), data);
  EXPECT_EQ(Values<float>(vector), (std::vector<float>{1, 2, 3, 4}));
}

TEST(CInterface_Vector, ResizeAboveTheCapacity_ClearsElements) {
  const Vector vector = MakeVector<float>(QORN_REAL32, {1, 2});
  EXPECT_EQ(qorn_vector_resize(vector.get(), 3, nullptr), 0);
  EXPECT_EQ(Values<float>(vector), (std::vector<float>{0, 0, 0}));
}

TEST(CInterface_Vector, NegativeCounts_AreRefusedAndChangeNothing) {
  const Vector vector = MakeVector<float>(QORN_REAL32, {1, 2});
  float value = 7;
  qorn_error error = kStale;
  ExpectRefused(qorn_vector_resize(vector.get(), -1, &error), error);
  ExpectRefused(qorn_vector_import(vector.get(), &value, -1, &error), error);
  ExpectRefused(qorn_vector_export(vector.get(), &value, -1, &error), error);
  EXPECT_EQ(Values<float>(vector), (std::vector<float>{1, 2}));
  EXPECT_EQ(value, 7);
}

TEST(CInterface_Vector, ExportOfMoreThanThereIs_IsRefused) {
  const Vector vector = MakeVector<float>(QORN_REAL32, {1, 2});
  std::array<float, 3> values{7, 7, 7};
  qorn_error error = kStale;
  ExpectRefused(qorn_vector_export(vector.get(), values.data(), 3, &error), error);
  EXPECT_EQ(values, (std::array<float, 3>{7, 7, 7}));
  EXPECT_EQ(qorn_vector_export(vector.get(), values.data(), 1, &error), 0);
  EXPECT_EQ(values, (std::array<float, 3>{1, 7, 7}));
  ExpectNoFailure(error);
}

TEST(CInterface_Vector, NullBlocks_AreRefused) {
  const Vector vector = MakeVector<float>(QORN_REAL32, {1, 2});
  qorn_error error = kStale;
  ExpectRefused(qorn_vector_import(vector.get(), nullptr, 1, &error), error);
  ExpectRefused(qorn_vector_export(vector.get(), nullptr, 1, &error), error);
}

// Memory of the vector itself serves as long as the vector keeps it; what its growth frees cannot be read.
TEST(CInterface_Vector, ImportOfItsOwnMemory_MovesElementsOrIsRefused) {
  const Vector vector = MakeVector<float>(QORN_REAL32, {1, 2, 3, 4});
  auto *const data = static_cast<float *>(qorn_vector_data(vector.get()));
  qorn_error error = kStale;
  EXPECT_EQ(qorn_vector_import(vector.get(), data, 4, &error), 0);
  EXPECT_EQ(Values<float>(vector), (std::vector<float>{1, 2, 3, 4}));
  EXPECT_EQ(qorn_vector_import(vector.get(), data + 1, 3, &error), 0);
  ExpectNoFailure(error);
  EXPECT_EQ(Values<float>(vector), (std::vector<float>{2, 3, 4}));
  EXPECT_EQ(qorn_vector_resize(vector.get(), 2, nullptr), 0);
  for (const float *src : {data, data + 3, data - 4}) { // all of them reach into the block
    ExpectRefused(qorn_vector_import(vector.get(), src, 5, &error), error);
    EXPECT_EQ(qorn_vector_data(vector.get()), data);
    EXPECT_EQ(Values<float>(vector), (std::vector<float>{2, 3}));
  }

  const std::vector<float> foreign(5, 7);
  EXPECT_EQ(qorn_vector_import(vector.get(), foreign.data(), 5, &error), 0);
  EXPECT_EQ(Values<float>(vector), foreign);
}

TEST(CInterface_Vector, NoMemory_IsARecord) {
  const Vector vector = MakeVector(QORN_REAL32);
  const QORN::test::AllocationLimit limit(1000);
  qorn_error error = kStale;
  testing::internal::CaptureStdout();
  EXPECT_EQ(qorn_vector_resize(vector.get(), 1000000, &error), 11001);
  testing::internal::GetCapturedStdout();
  ExpectRecord(error, 11001, "memory allocation error", "infra/Vector");
  EXPECT_EQ(qorn_vector_size(vector.get()), 0);
}

TEST(CInterface_Objects, NoMemoryForTheObjectItself_IsARecord) {
  const auto refused = [](auto create) {
    qorn_error error = kStale;
    {
      const QORN::test::AllocationLimit limit(0);
      EXPECT_EQ(create(&error), nullptr);
    }
    ExpectRecord(error, 11001, "memory allocation error", "binding\\qorn_c");
  };
  refused([](qorn_error *error) { return qorn_vector_create(QORN_REAL32, error); });
  refused([](qorn_error *error) { return qorn_spline_create(error); });
  refused([](qorn_error *error) { return qorn_hermite_create(error); });
}

TEST(CInterface_Objects, Null_IsDestroyedWithoutEffectAndRefusedElsewhere) {
  qorn_vector_destroy(nullptr);
  qorn_spectrum_destroy(nullptr);
  qorn_spline_destroy(nullptr);
  qorn_hermite_destroy(nullptr);
  EXPECT_EQ(qorn_vector_size(nullptr), 0);
  EXPECT_EQ(qorn_vector_capacity(nullptr), 0);
  EXPECT_EQ(qorn_vector_data(nullptr), nullptr);
  EXPECT_EQ(qorn_spectrum_size(nullptr), 0);

  const Vector v = MakeVector<float>(QORN_REAL32, {1, 2});
  const Spline spline(qorn_spline_create(nullptr));
  qorn_error error = kStale;
  ExpectRefused(qorn_vector_resize(nullptr, 1, &error), error);
  ExpectRefused(qorn_vector_import(nullptr, "", 1, &error), error);
  ExpectRefused(qorn_vector_export(nullptr, qorn_vector_data(v.get()), 1, &error), error);
  ExpectRefused(qorn_spectrum_set_unit(nullptr, 1, &error), error);
  ExpectRefused(qorn_spectrum_apply(nullptr, v.get(), v.get(), &error), error);
  ExpectRefused(qorn_spline_set_boundary1(nullptr, 1, &error), error);
  ExpectRefused(qorn_spline_set_boundary2(nullptr, 1, &error), error);
  ExpectRefused(qorn_spline_set_natural(nullptr, &error), error);
  ExpectRefused(qorn_spline_interpolate(nullptr, v.get(), v.get(), v.get(), v.get(), &error), error);
  ExpectRefused(qorn_hermite_interpolate(nullptr, v.get(), v.get(), v.get(), v.get(), &error), error);
  ExpectRefused(qorn_spline_interpolate(spline.get(), nullptr, v.get(), v.get(), v.get(), &error), error);
  ExpectRefused(qorn_spline_interpolate(spline.get(), v.get(), nullptr, v.get(), v.get(), &error), error);
  ExpectRefused(qorn_spline_interpolate(spline.get(), v.get(), v.get(), nullptr, v.get(), &error), error);
  ExpectRefused(qorn_spline_interpolate(spline.get(), v.get(), v.get(), v.get(), nullptr, &error), error);
}

TEST(CInterface_Spectrum, RealCosine_ReadsHalfItsAmplitudeAtEitherSide) {
  constexpr int kSize = 64, kBin = 5;
  std::vector<float> samples(kSize);
  for (int n = 0; n < kSize; ++n) {
    samples[static_cast<std::size_t>(n)] = static_cast<float>(std::cos(2 * M_PI * kBin * n / kSize));
  }
  const Spectrum spectrum(qorn_spectrum_create(kSize, QORN_WINDOW_RECTANGLE, 0, nullptr));
  EXPECT_EQ(qorn_spectrum_size(spectrum.get()), kSize);
  EXPECT_EQ(qorn_spectrum_set_unit(spectrum.get(), QORN_VOLT, nullptr), 0);
  const Vector in = MakeVector(QORN_REAL32, samples), out = MakeVector(QORN_REAL32);
  ASSERT_EQ(qorn_spectrum_apply(spectrum.get(), out.get(), in.get(), nullptr), 0);
  const auto levels = Values<float>(out);
  ASSERT_EQ(levels.size(), static_cast<std::size_t>(kSize));
  EXPECT_NEAR(levels[kSize / 2 + kBin], 0.5F, 1e-6F);
  EXPECT_NEAR(levels[kSize / 2 - kBin], 0.5F, 1e-6F);
  EXPECT_NEAR(levels[kSize / 2], 0.0F, 1e-6F);

  const long before = QORN::test::AllocationCount();
  EXPECT_EQ(qorn_spectrum_apply(spectrum.get(), out.get(), in.get(), nullptr), 0);
  EXPECT_EQ(QORN::test::AllocationCount(), before);
}

TEST(CInterface_Spectrum, BlockWhereItLies_GivesWhatACopyGives) {
  const std::vector<std::array<float, 2>> block{{1, 2}, {3, -4}, {5, 6}, {-7, 8}};
  const Spectrum spectrum(qorn_spectrum_create(4, QORN_WINDOW_HANN, 0, nullptr));
  const Vector copy = MakeVector(QORN_CPLX32, block), expected = MakeVector(QORN_REAL32);
  ASSERT_EQ(qorn_spectrum_apply(spectrum.get(), expected.get(), copy.get(), nullptr), 0);

  // What the vector held before is gone, and it does not go on to see the block.
  const Vector in = MakeVector<std::array<float, 2>>(QORN_CPLX32, {{9, 9}}), out = MakeVector(QORN_REAL32);
  ASSERT_EQ(qorn_spectrum_apply_block(spectrum.get(), out.get(), in.get(), block.data(), 4, nullptr), 0);
  EXPECT_EQ(Values<float>(out), Values<float>(expected));
  EXPECT_EQ(qorn_vector_size(in.get()), 0);
  EXPECT_EQ(qorn_vector_data(in.get()), nullptr);
  EXPECT_EQ(qorn_vector_import(in.get(), block.data(), 2, nullptr), 0);
  EXPECT_EQ((Values<std::array<float, 2>>(in)), (std::vector<std::array<float, 2>>{block[0], block[1]}));

  const std::vector<float> real{1, 2, 3, 4};
  const Vector inReal = MakeVector(QORN_REAL32);
  ASSERT_EQ(qorn_spectrum_apply(spectrum.get(), expected.get(), MakeVector(QORN_REAL32, real).get(), nullptr),
            0);
  const long before = QORN::test::AllocationCount();
  ASSERT_EQ(qorn_spectrum_apply_block(spectrum.get(), out.get(), inReal.get(), real.data(), 4, nullptr), 0);
  EXPECT_EQ(QORN::test::AllocationCount(), before);
  EXPECT_EQ(Values<float>(out), Values<float>(expected));
}

TEST(CInterface_Spectrum, BlockThatIsRefused_LeavesTheVectorEmptyOrAsItWas) {
  const Spectrum spectrum(qorn_spectrum_create(2, QORN_WINDOW_HANN, 0, nullptr));
  const Vector in = MakeVector<float>(QORN_REAL32, {1, 2}), out = MakeVector(QORN_REAL32);
  const Vector wide = MakeVector<double>(QORN_REAL64, {1, 2});
  const std::array<double, 2> data{};
  qorn_error error = kStale;
  const auto apply = [&](qorn_vector *dst, qorn_vector *src, const void *block, int n) {
    return qorn_spectrum_apply_block(spectrum.get(), dst, src, block, n, &error);
  };
  ExpectRefused(apply(out.get(), in.get(), data.data(), -1), error);
  ExpectRefused(apply(out.get(), in.get(), nullptr, 1), error);
  ExpectRefused(apply(in.get(), in.get(), data.data(), 2), error);
  ExpectRefused(apply(out.get(), nullptr, data.data(), 2), error);
  EXPECT_EQ(Values<float>(in), (std::vector<float>{1, 2}));
  ExpectRefused(apply(nullptr, in.get(), data.data(), 2), error);
  EXPECT_EQ(qorn_vector_size(in.get()), 0);
  ExpectRefused(apply(out.get(), wide.get(), data.data(), 2), error);
  EXPECT_EQ(qorn_vector_size(wide.get()), 0);
  EXPECT_EQ(apply(out.get(), in.get(), nullptr, 0), 0);
  EXPECT_EQ(qorn_vector_size(out.get()), 0);
}

TEST(CInterface_Spectrum, BlockInTheMemoryOfItsVectors_IsRefusedAndChangesNothing) {
  const Spectrum spectrum(qorn_spectrum_create(4, QORN_WINDOW_RECTANGLE, 0, nullptr));
  const Vector in = MakeVector<float>(QORN_REAL32, {1, 2, 3, 4}),
               out = MakeVector<float>(QORN_REAL32, {5, 6});
  qorn_error error = kStale;
  const auto apply = [&](const float *block, int n) {
    return qorn_spectrum_apply_block(spectrum.get(), out.get(), in.get(), block, n, &error);
  };
  // Whole and in part, and behind the length but within the capacity.
  EXPECT_EQ(qorn_vector_resize(in.get(), 3, nullptr), 0);
  EXPECT_EQ(qorn_vector_resize(out.get(), 1, nullptr), 0);
  const auto *const inData = static_cast<const float *>(qorn_vector_data(in.get()));
  const auto *const outData = static_cast<const float *>(qorn_vector_data(out.get()));
  for (const float *block : {inData, inData + 3, inData - 3, outData, outData + 1, outData - 3}) {
    ExpectRefused(apply(block, 4), error);
  }
  EXPECT_EQ(qorn_vector_data(in.get()), inData);
  EXPECT_EQ(Values<float>(in), (std::vector<float>{1, 2, 3}));
  EXPECT_EQ(qorn_vector_data(out.get()), outData);
  EXPECT_EQ(Values<float>(out), (std::vector<float>{5}));

  // No samples are no memory of anything.
  EXPECT_EQ(apply(inData, 0), 0);
  EXPECT_EQ(qorn_vector_size(in.get()) + qorn_vector_size(out.get()), 0);
}

TEST(CInterface_Spectrum, WhatItCannotWorkWith_IsARecord) {
  qorn_error error = kStale;
  testing::internal::CaptureStdout();
  EXPECT_EQ(qorn_spectrum_create(-1, QORN_WINDOW_HANN, 0, &error), nullptr);
  testing::internal::GetCapturedStdout();
  ExpectRecord(error, 11001, "memory allocation error", "infra/Vector");

  // Made without a window, refused at work.
  const Vector real = MakeVector<float>(QORN_REAL32, {1, 2}), other = MakeVector<double>(QORN_REAL64, {1, 2});
  const Spectrum none(qorn_spectrum_create(2, 16, 0, &error));
  ExpectNoFailure(error);
  EXPECT_EQ(qorn_spectrum_apply(none.get(), real.get(), real.get(), &error), 10002);
  ExpectRecord(error, 10002, "invalid input parameter", "dsp\\Spectrum");

  const Spectrum spectrum(qorn_spectrum_create(2, QORN_WINDOW_HANN, 0, nullptr));
  ExpectRefused(qorn_spectrum_apply(spectrum.get(), real.get(), other.get(), &error), error);
  ExpectRefused(qorn_spectrum_apply(spectrum.get(), other.get(), real.get(), &error), error);
  ExpectRefused(qorn_spectrum_apply(spectrum.get(), nullptr, real.get(), &error), error);
  ExpectRefused(qorn_spectrum_apply(spectrum.get(), real.get(), nullptr, &error), error);
}

TEST(CInterface_Spline, Parabola_IsGivenBackByItsSlopes) {
  // With the end slopes of x^2 the spline is the parabola itself, in both precisions.
  const Spline spline(qorn_spline_create(nullptr));
  EXPECT_EQ(qorn_spline_set_boundary1(spline.get(), 0, nullptr), 0);
  EXPECT_EQ(qorn_spline_set_boundary2(spline.get(), 6, nullptr), 0);
  const Vector x = MakeVector<double>(QORN_REAL64, {0, 1, 2, 3}),
               y = MakeVector<double>(QORN_REAL64, {0, 1, 4, 9});
  const Vector at = MakeVector<double>(QORN_REAL64, {0.5, 2.5}), out = MakeVector(QORN_REAL64);
  qorn_error error = kStale;
  EXPECT_EQ(qorn_spline_interpolate(spline.get(), out.get(), x.get(), y.get(), at.get(), &error), 0);
  ExpectNoFailure(error);
  ASSERT_EQ(qorn_vector_size(out.get()), 2);
  EXPECT_NEAR(Values<double>(out)[0], 0.25, 1e-15);
  EXPECT_NEAR(Values<double>(out)[1], 6.25, 1e-14);

  const Vector xf = MakeVector<float>(QORN_REAL32, {0, 1, 2, 3}),
               yf = MakeVector<float>(QORN_REAL32, {0, 1, 4, 9});
  const Vector atf = MakeVector<float>(QORN_REAL32, {0.5F, 2.5F}), outf = MakeVector(QORN_REAL32);
  EXPECT_EQ(qorn_spline_interpolate(spline.get(), outf.get(), xf.get(), yf.get(), atf.get(), &error), 0);
  ASSERT_EQ(qorn_vector_size(outf.get()), 2);
  EXPECT_NEAR(Values<float>(outf)[0], 0.25F, 1e-6F);
  EXPECT_NEAR(Values<float>(outf)[1], 6.25F, 1e-5F);
}

TEST(CInterface_Spline, NaturalAgain_IsAsANewOne) {
  const Spline fresh(qorn_spline_create(nullptr)), reset(qorn_spline_create(nullptr));
  qorn_spline_set_boundary1(reset.get(), 3, nullptr);
  qorn_spline_set_boundary2(reset.get(), -3, nullptr);
  qorn_spline_set_natural(reset.get(), nullptr);
  const Vector x = MakeVector<double>(QORN_REAL64, {0, 1, 2}), y = MakeVector<double>(QORN_REAL64, {0, 1, 0});
  const Vector at = MakeVector<double>(QORN_REAL64, {0.5}), a = MakeVector(QORN_REAL64),
               b = MakeVector(QORN_REAL64);
  qorn_spline_interpolate(fresh.get(), a.get(), x.get(), y.get(), at.get(), nullptr);
  qorn_spline_interpolate(reset.get(), b.get(), x.get(), y.get(), at.get(), nullptr);
  EXPECT_EQ(Values<double>(a), Values<double>(b));
  EXPECT_NEAR(Values<double>(a).at(0), 0.6875, 1e-15); // y2[1] = -3: 0.5 + 3 * 0.375 / 6
}

TEST(CInterface_Spline, ResultOfItsOwn_IsNoFailure) {
  const Spline spline(qorn_spline_create(nullptr));
  const Vector x = MakeVector<double>(QORN_REAL64, {0, 1, 2}), y = MakeVector<double>(QORN_REAL64, {0, 1});
  const Vector at = MakeVector<double>(QORN_REAL64, {0.5}), out = MakeVector(QORN_REAL64);
  qorn_error error = kStale;
  EXPECT_EQ(qorn_spline_interpolate(spline.get(), out.get(), x.get(), y.get(), at.get(), &error), 10003);
  ExpectNoFailure(error);
}

TEST(CInterface_Hermite, StraightLine_IsGivenBack) {
  const Hermite hermite(qorn_hermite_create(nullptr));
  const Vector x = MakeVector<float>(QORN_REAL32, {0, 1, 3}), y = MakeVector<float>(QORN_REAL32, {1, 3, 7});
  const Vector at = MakeVector<float>(QORN_REAL32, {0.5F, 2, 4}), out = MakeVector(QORN_REAL32);
  EXPECT_EQ(qorn_hermite_interpolate(hermite.get(), out.get(), x.get(), y.get(), at.get(), nullptr), 0);
  EXPECT_EQ(Values<float>(out), (std::vector<float>{2, 5, 9}));
}

TEST(CInterface_Hermite, OnePoint_IsARecordOf12005) {
  const Hermite hermite(qorn_hermite_create(nullptr));
  const Vector one = MakeVector<double>(QORN_REAL64, {1}), out = MakeVector(QORN_REAL64);
  qorn_error error = kStale;
  EXPECT_EQ(qorn_hermite_interpolate(hermite.get(), out.get(), one.get(), one.get(), one.get(), &error),
            12005);
  ExpectRecord(error, 12005, "CubicHermiteInterpolation error", "math\\CubicHermiteInterpolation");
}

TEST(CInterface_Interpolate, MixedPrecisions_AreRefused) {
  const Spline spline(qorn_spline_create(nullptr));
  const Vector d = MakeVector<double>(QORN_REAL64, {1, 2}), f = MakeVector<float>(QORN_REAL32, {1, 2});
  const Vector i = MakeVector<std::int32_t>(QORN_INT32, {1, 2});
  qorn_error error = kStale;
  const auto interpolate = [&](const Vector &out, const Vector &x, const Vector &y, const Vector &at) {
    return qorn_spline_interpolate(spline.get(), out.get(), x.get(), y.get(), at.get(), &error);
  };
  ExpectRefused(interpolate(f, d, d, d), error);
  ExpectRefused(interpolate(d, f, d, d), error);
  ExpectRefused(interpolate(d, d, f, d), error);
  ExpectRefused(interpolate(d, d, d, f), error);
  ExpectRefused(interpolate(i, i, i, i), error);
}

TEST(CInterface_Interpolate, ResultInTheTable_IsRefused) {
  const Hermite hermite(qorn_hermite_create(nullptr));
  const Vector x = MakeVector<double>(QORN_REAL64, {0, 1, 2}), y = MakeVector<double>(QORN_REAL64, {0, 2, 4});
  const Vector at = MakeVector<double>(QORN_REAL64, {0.5, 1.5});
  qorn_error error = kStale;
  ExpectRefused(qorn_hermite_interpolate(hermite.get(), x.get(), x.get(), y.get(), at.get(), &error), error);
  ExpectRefused(qorn_hermite_interpolate(hermite.get(), y.get(), x.get(), y.get(), at.get(), &error), error);
  EXPECT_EQ(Values<double>(x), (std::vector<double>{0, 1, 2}));
  EXPECT_EQ(qorn_hermite_interpolate(hermite.get(), at.get(), x.get(), y.get(), at.get(), &error), 0);
  EXPECT_EQ(Values<double>(at), (std::vector<double>{1, 3}));
}

TEST(CInterface_Units, EveryConversion_GivesItsFormula) {
  struct Row {
    double (*wide)(double);
    float (*narrow)(float);
    double in, out;
  };
  const double v0 = std::sqrt(0.05), offset = 13.01029995663981;
  const Row rows[] = {
      {qorn_watt2dbm, qorn_watt2dbmf, 2, 10 * std::log10(2000.0)},
      {qorn_dbm2watt, qorn_dbm2wattf, 7, std::pow(10, 0.7) / 1000},
      {qorn_volt2dbm, qorn_volt2dbmf, 2, 20 * std::log10(2 / v0)},
      {qorn_dbm2volt, qorn_dbm2voltf, 7, std::pow(10, 0.35) * v0},
      {qorn_peakvolt2dbm, qorn_peakvolt2dbmf, 2, 20 * std::log10(2.0) + 10},
      {qorn_dbm2peakvolt, qorn_dbm2peakvoltf, 7, std::pow(10, -0.15)},
      {qorn_volt2watt, qorn_volt2wattf, 3, 9.0 / 50},
      {qorn_watt2volt, qorn_watt2voltf, 3, std::sqrt(150.0)},
      {qorn_dbm2dbv, qorn_dbm2dbvf, 7, 7 - offset},
      {qorn_dbv2dbm, qorn_dbv2dbmf, 7, 7 + offset},
      {qorn_dbv2volt, qorn_dbv2voltf, 7, std::pow(10, 0.35)},
      {qorn_volt2dbv, qorn_volt2dbvf, 2, 20 * std::log10(2.0)},
      {qorn_dbv2watt, qorn_dbv2wattf, 7, std::pow(10, 0.7) / 50},
      {qorn_watt2dbv, qorn_watt2dbvf, 2, 10 * std::log10(100.0)},
      {qorn_dbpt2dbuvm, nullptr, 7, 56.5},
      {qorn_dbuvm2dbpt, nullptr, 7, -42.5},
  };
  for (const Row &row : rows) {
    const double scale = std::abs(row.out);
    EXPECT_NEAR(row.wide(row.in), row.out, 1e-13 * scale) << &row - rows;
    if (row.narrow != nullptr) {
      EXPECT_NEAR(row.narrow(static_cast<float>(row.in)), row.out, 3e-7 * scale) << &row - rows;
    }
  }
}
