// Several threads read through one reader at once, each into a vector of its own. Under the thread sanitizer
// this shows that reads share nothing that changes; without it, that they give what a single thread gives.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/utils/IQFReader.h"
#include "qorn/utils/XIQReader.h"
#include "support/IqfRecording.h"
#include "support/TempFile.h"
#include "support/XiqRecording.h"

namespace {

using namespace QORN;

bool SameBytes(const VecCplx32 &a, const VecCplx32 &b) {
  return a.GetSize() == b.GetSize() &&
         std::memcmp(a.GetPtr(), b.GetPtr(), sizeof(Cplx32) * static_cast<std::size_t>(a.GetSize())) == 0;
}

// read(dst, k) gives the k-th piece of the recording. Each thread reads all pieces, starting with another.
template <class Read> void ReadAtOnce(int pieces, Read read) {
  constexpr int kThreads = 4;
  std::vector<VecCplx32> want(static_cast<std::size_t>(pieces));
  for (int k = 0; k < pieces; ++k) read(want[static_cast<std::size_t>(k)], k);
  std::vector<int> same(kThreads, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      VecCplx32 dst;
      int &count = same[static_cast<std::size_t>(t)];
      for (int round = 0; round < 3 * pieces; ++round) {
        const int k = (round + t) % pieces;
        read(dst, k);
        if (SameBytes(dst, want[static_cast<std::size_t>(k)])) ++count;
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  for (const int count : same) EXPECT_EQ(count, 3 * pieces);
}

TEST(IQFReader, ConcurrentReads_OwnVectors_GiveWhatOneThreadGets) {
  using namespace test::iqf;
  std::string bytes = Header("FFTPoints=1000 ValidFrames=20 BlockSize=20 MaxInputLevel=7");
  for (int f = 0; f < 21; ++f) {
    bytes += Frame(f == 11 ? Mark::kPolar : Mark::kCartesian, [f](int k) {
      return Pair{100 * f - k, 13 * k};
    });
  }
  const test::TempFile file(bytes);
  const IQFReader reader(file.Path());
  ReadAtOnce(7, [&](VecCplx32 &dst, int k) {
    VecReal32 a, b;
    reader.GetFlatness(a, b);
    reader.ReadIQData(2500 * k, 3000, dst);
  });
}

TEST(XIQReader, ConcurrentReads_OwnVectors_GiveWhatOneThreadGets) {
  using namespace test::xiq;
  std::string bytes = Header(Acquisition(9000, "1e-6") + DataSet(0, 0) + DataSet(1, 1));
  for (int k = 0; k < 2 * 2 * 9000; ++k) AppendInteger(bytes, 7919 * k);
  const test::TempFile file(bytes);
  const XIQReader reader(file.Path());
  ReadAtOnce(7, [&](VecCplx32 &dst, int k) { reader.ReadIQSamples(dst, k % 2, 1000 * k, 2900); });
}

} // namespace
