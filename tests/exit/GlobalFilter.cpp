// A global object that filters in its destructor, in a program with the library inside: the objects of the
// library that were made after it are gone by then. The exit code is 0 if the outputs are right.
#include <cstdlib>

#include "qorn/dsp/SFIRFilter.h"

namespace {

constexpr int kTaps = 1000, kSamples = 20000;

class Owner {
public:
  Owner() {
    QORN::VecReal32 taps;
    taps.Set(1.0F, kTaps);
    m_filter.SetTaps(taps);
  }
  Owner(const Owner &) = delete;
  Owner &operator=(const Owner &) = delete;
  ~Owner() { std::_Exit(Filters() && Makes() ? EXIT_SUCCESS : EXIT_FAILURE); }

private:
  // Sums of up to kTaps ones.
  static bool IsRight(QORN::SFIRFilter &filter) {
    QORN::VecReal32 x, y;
    x.Set(1.0F, kSamples);
    filter.Apply(y, x, false);
    for (int n = 0; n < kSamples; ++n) {
      if (y[n] != static_cast<float>(n < kTaps ? n + 1 : kTaps)) return false;
    }
    return true;
  }
  bool Filters() { return IsRight(m_filter); }
  bool Makes() const {
    QORN::SFIRFilter copy(m_filter);
    copy.Flush();
    return IsRight(copy);
  }

  QORN::SFIRFilter m_filter;
};

Owner owner;

} // namespace

int main() { return EXIT_FAILURE; } // the destructor decides
