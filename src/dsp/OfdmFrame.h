// The physical-layer frame of IEEE Std 802.11a-1999, clause 17: what it fixes about carriers, training
// fields, pilots and the SIGNAL field. Carriers are numbered as there, -26 to 26, with none at 0.
#ifndef QORN_SRC_DSP_OFDMFRAME_H
#define QORN_SRC_DSP_OFDMFRAME_H

#include <array>
#include <cstddef>

namespace QORN::ofdm {

inline constexpr std::size_t kDataCarriers = 48;

/// A carrier and the value that it takes.
struct CarrierValue {
  int carrier;
  int value;
};

/// The short training field: carrier takes value * (1 + j). Carrier -8 has the opposite sign of the
/// standard's.
inline constexpr CarrierValue kShortTraining[] = {{-24, 1}, {-20, -1}, {-16, 1}, {-12, -1}, {-8, 1}, {-4, 1},
                                                  {4, -1},  {8, -1},   {12, 1},  {16, 1},   {20, 1}, {24, 1}};

/// The long training sequence, carriers -26 to 26, 0 at carrier 0.
inline constexpr int kLongTraining[] = {1,  1,  -1, -1, 1,  1, -1, 1,  -1, 1, 1,  1,  1,  1, 1,  -1, -1, 1,
                                        1,  -1, 1,  -1, 1,  1, 1,  1,  0,  1, -1, -1, 1,  1, -1, 1,  -1, 1,
                                        -1, -1, -1, -1, -1, 1, 1,  -1, -1, 1, -1, 1,  -1, 1, 1,  1,  1};

/// The pilots, of a symbol whose polarity is 1.
inline constexpr CarrierValue kPilots[] = {{-21, 1}, {-7, 1}, {7, 1}, {21, -1}};

/// The carriers of data, ascending: all but the pilots'.
std::array<int, kDataCarriers> DataCarriers();

/// What the standard says of a data rate: the RATE field with R1 as its top bit, the points of the
/// constellation, and the data bits per symbol.
struct Rate {
  int rateBits;
  int modOrder;
  int dataBitsPerSymbol;
};

/// 6, 9, 12, 18, 24, 36, 48 and 54 Mbit/s for 0 to 7; any other value gives the rate of 0.
Rate RateOf(int mcs);

/// The polarity of the pilots, 1 or -1, of symbol index >= 0; SIGNAL has index 0. Its period is 127.
int PilotPolarity(int index);

/// The SIGNAL field of a burst with `length` octets, 0 to 4095, coded and interleaved: bit i belongs to the
/// i-th data carrier.
std::array<int, kDataCarriers> CodedSignal(int rateBits, int length);

} // namespace QORN::ofdm

#endif
