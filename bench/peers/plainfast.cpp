#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC optimize("fast-math")
#endif

#include <cmath>

#include "peers/plain.h"

namespace peers {

void Fast::Sum_32f(const float *src, int len, float *result) {
  double sum = 0;
  for (int i = 0; i < len; ++i) sum += static_cast<double>(src[i]);
  *result = static_cast<float>(sum);
}
void Fast::Sum_64f(const double *src, int len, double *result) {
  double sum = 0;
  for (int i = 0; i < len; ++i) sum += src[i];
  *result = sum;
}
void Fast::Sum_32fc(const Cplx32 *src, int len, Cplx32 *result) {
  double re = 0, im = 0;
  for (int i = 0; i < len; ++i) re += static_cast<double>(src[i].re), im += static_cast<double>(src[i].im);
  *result = {static_cast<float>(re), static_cast<float>(im)};
}
void Fast::StdDev_32f(const float *src, int len, float *result) {
  double sum = 0;
  for (int i = 0; i < len; ++i) sum += static_cast<double>(src[i]);
  const double mean = sum / len;
  double squares = 0;
  for (int i = 0; i < len; ++i)
    squares += (static_cast<double>(src[i]) - mean) * (static_cast<double>(src[i]) - mean);
  *result = static_cast<float>(std::sqrt(squares / (len - 1)));
}
void Fast::StdDev_64f(const double *src, int len, double *result) {
  double sum = 0;
  for (int i = 0; i < len; ++i) sum += src[i];
  const double mean = sum / len;
  double squares = 0;
  for (int i = 0; i < len; ++i) squares += (src[i] - mean) * (src[i] - mean);
  *result = std::sqrt(squares / (len - 1));
}
void Fast::Norm_L2_32f(const float *src, int len, float *result) {
  double sum = 0;
  for (int i = 0; i < len; ++i) sum += static_cast<double>(src[i]) * static_cast<double>(src[i]);
  *result = static_cast<float>(std::sqrt(sum));
}
void Fast::Max_16s(const short *src, int len, short *result) {
  short max = src[0];
  for (int i = 1; i < len; ++i) max = src[i] > max ? src[i] : max;
  *result = max;
}
void Fast::Max_32f(const float *src, int len, float *result) {
  float max = src[0];
  for (int i = 1; i < len; ++i) max = src[i] > max ? src[i] : max;
  *result = max;
}
void Fast::MaxIndx_32f(const float *src, int len, float *result, int *index) {
  int place = 0;
  for (int i = 1; i < len; ++i) place = src[i] > src[place] ? i : place;
  *result = src[place];
  *index = place;
}
void Fast::MaxIndx_16s(const short *src, int len, short *result, int *index) {
  int place = 0;
  for (int i = 1; i < len; ++i) place = src[i] > src[place] ? i : place;
  *result = src[place];
  *index = place;
}
void Fast::Sum_32s(const int *src, int len, int *result) {
  long long sum = 0;
  for (int i = 0; i < len; ++i) sum += src[i];
  *result = static_cast<int>(sum > 2147483647LL ? 2147483647LL : sum < -2147483648LL ? -2147483648LL : sum);
}
void Fast::Sum_16s(const short *src, int len, short *result) {
  long long sum = 0;
  for (int i = 0; i < len; ++i) sum += src[i];
  *result = static_cast<short>(sum > 32767 ? 32767 : sum < -32768 ? -32768 : sum);
}

} // namespace peers
