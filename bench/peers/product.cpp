#include "peers/product.h"

#if defined(QORN_PEER_VOLK)

#include <volk/volk.h>

namespace peers {

namespace {
unsigned Count(int len) { return static_cast<unsigned>(len); }
const lv_32fc_t *In(const QORN::Cplx32 *x) { return reinterpret_cast<const lv_32fc_t *>(x); }
lv_32fc_t *Out(QORN::Cplx32 *x) { return reinterpret_cast<lv_32fc_t *>(x); }
} // namespace

void VolkProduct::DotProd_32f(const float *src1, const float *src2, int len, float *result) {
  volk_32f_x2_dot_prod_32f(result, src1, src2, Count(len));
}
void VolkProduct::DotProd_32fc(const QORN::Cplx32 *src1, const QORN::Cplx32 *src2, int len,
                               QORN::Cplx32 *result) {
  volk_32fc_x2_dot_prod_32fc(Out(result), In(src1), In(src2), Count(len));
}
void VolkProduct::DotProd_32f32fc(const float *src1, const QORN::Cplx32 *src2, int len,
                                  QORN::Cplx32 *result) {
  volk_32fc_32f_dot_prod_32fc(Out(result), In(src2), src1, Count(len));
}

} // namespace peers

#endif
