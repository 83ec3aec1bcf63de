#include "OfdmFrame.h"

#include <algorithm>
#include <bit>

namespace QORN::ofdm {

namespace {

constexpr int kLastCarrier = 26;
constexpr std::size_t kPolarityPeriod = 127;

// The scrambler x^7 + x^4 + 1 from all ones: bit i of the state is what came in i + 1 steps ago. 0 counts as
// 1, and 1 as -1.
constexpr std::array<signed char, kPolarityPeriod> MakePolarities() {
  std::array<signed char, kPolarityPeriod> polarities{};
  unsigned state = 0x7f;
  for (auto &polarity : polarities) {
    const unsigned bit = (state >> 6 ^ state >> 3) & 1U;
    polarity = bit == 0 ? 1 : -1;
    state = (state << 1 | bit) & 0x7f;
  }
  return polarities;
}

constexpr auto kPolarities = MakePolarities();

} // namespace

std::array<int, kDataCarriers> DataCarriers() {
  std::array<int, kDataCarriers> carriers{};
  std::size_t count = 0;
  for (int k = -kLastCarrier; k <= kLastCarrier; ++k) {
    const bool isPilot =
        std::any_of(std::begin(kPilots), std::end(kPilots), [k](auto pilot) { return pilot.carrier == k; });
    if (k != 0 && !isPilot) carriers[count++] = k;
  }
  return carriers;
}

Rate RateOf(int mcs) {
  static constexpr Rate kRates[] = {{13, 2, 24}, {15, 2, 36},   {5, 4, 48},   {7, 4, 72},
                                    {9, 16, 96}, {11, 16, 144}, {1, 64, 192}, {3, 64, 216}};
  return kRates[mcs >= 0 && mcs < 8 ? mcs : 0];
}

int PilotPolarity(int index) { return kPolarities[static_cast<std::size_t>(index) % kPolarityPeriod]; }

std::array<int, kDataCarriers> CodedSignal(int rateBits, int length) {
  std::array<unsigned, kDataCarriers / 2> bits{};
  for (std::size_t i = 0; i < 4; ++i) bits[i] = static_cast<unsigned>(rateBits) >> (3 - i) & 1U;
  for (std::size_t i = 0; i < 12; ++i) bits[5 + i] = static_cast<unsigned>(length) >> i & 1U;
  for (std::size_t i = 0; i < 17; ++i) bits[17] ^= bits[i];

  // The convolutional code of rate 1/2. Bit i of the register is what came in i steps ago; so the generators,
  // 133 and 171 in octal with the newest bit first, stand here from right to left.
  constexpr unsigned kFirst = 0b1101101, kSecond = 0b1001111;
  std::array<int, kDataCarriers> coded{};
  unsigned state = 0;
  for (std::size_t i = 0; i < bits.size(); ++i) {
    state = (state << 1 | bits[i]) & 0x7f;
    const int pair[] = {std::popcount(state & kFirst) % 2, std::popcount(state & kSecond) % 2};
    for (std::size_t j = 0; j < 2; ++j) {
      const std::size_t k = 2 * i + j;
      coded[k % 16 * 3 + k / 16] = pair[j];
    }
  }
  return coded;
}

} // namespace QORN::ofdm
