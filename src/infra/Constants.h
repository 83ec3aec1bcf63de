// Numbers of mathematics, each rounded once to its type.
#ifndef QORN_SRC_INFRA_CONSTANTS_H
#define QORN_SRC_INFRA_CONSTANTS_H

namespace QORN::constants {

template <class T> inline constexpr T kPi = static_cast<T>(3.14159265358979323846L);
template <class T> inline constexpr T kTwoPi = static_cast<T>(6.28318530717958647693L);

} // namespace QORN::constants

#endif
