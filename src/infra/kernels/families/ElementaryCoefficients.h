// Made by scripts/make_elementary_coefficients.py; change that script, not this file.
#ifndef QORN_SRC_INFRA_KERNELS_ELEMENTARYCOEFFICIENTS_H
#define QORN_SRC_INFRA_KERNELS_ELEMENTARYCOEFFICIENTS_H

#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// pi / 2 in parts of 33, 31, 31 and 53 bits.
constexpr double kHalfPi1 = 0x1.921fb544p+0;
constexpr double kHalfPi2 = 0x1.0b4611a4p-34;
constexpr double kHalfPi3 = 0x1.13198a2cp-65;
constexpr double kHalfPi4 = 0x1.01b839a25204ap-96;

// pi / 2 in parts of 32 and 53 bits, for float arguments.
constexpr double kHalfPiFirst = 0x1.921fb544p+0;
constexpr double kHalfPiRest = 0x1.0b4611a626331p-34;

// The reciprocal.
constexpr double kTwoOverPi = 0x1.45f306dc9c883p-1;

// pi / 2 cut to a float, and 2 / pi.
constexpr float kHalfPi32 = 0x1.921fb4p+0F;
constexpr float kTwoOverPi32 = 0x1.45f306p-1F;

// What the cut took from pi / 2.
constexpr double kHalfPi32Lost = 0x1.4442d18469899p-24;

// sin(r) = r + r^3 P(r^2) for |r| <= pi/4, relative.
// Largest error 2^-58.0.
constexpr double kSin64[6] = {
    -0x1.5555555555549p-3, 0x1.111111110f87bp-7,   -0x1.a01a019c119e2p-13,
    0x1.71de3577b4968p-19, -0x1.ae5e66365bb58p-26, 0x1.5d92ff5a8477ap-33,
};

// cos(r) = 1 - r^2/2 + r^4 P(r^2) for |r| <= pi/4, absolute.
// Largest error 2^-64.2.
constexpr double kCos64[6] = {
    0x1.555555555554cp-5,   -0x1.6c16c16c1517ep-10, 0x1.a01a019cb1baep-16,
    -0x1.27e4f809ee0bdp-22, 0x1.1ee9ebe726b98p-29,  -0x1.8fae9b5049e9ep-37,
};

// sin(r) = r + r^3 P(r^2) for |r| a little above pi/4, relative, for float results.
// Largest error 2^-37.0.
constexpr double kSin32[4] = {
    -0x1.555555499202ap-3,
    0x1.111106599e769p-7,
    -0x1.a00ddcd35d163p-13,
    0x1.6c7052e6a8c7fp-19,
};

// cos(r) = 1 + r^2 P(r^2) for the same, absolute.
// Largest error 2^-33.6.
constexpr double kCos32[4] = {
    -0x1.ffffffbf71235p-2,
    0x1.555537ebb16a8p-5,
    -0x1.6c061630dacaep-10,
    0x1.98a5547dce561p-16,
};

// 2 / pi in binary: a word of zeros before the point, then 1280 bits.
constexpr std::uint64_t kTwoOverPiBits[21] = {
    0x0000000000000000, 0xa2f9836e4e441529, 0xfc2757d1f534ddc0, 0xdb6295993c439041, 0xfe5163abdebbc561,
    0xb7246e3a424dd2e0, 0x06492eea09d1921c, 0xfe1deb1cb129a73e, 0xe88235f52ebb4484, 0xe99c7026b45f7e41,
    0x3991d639835339f4, 0x9c845f8bbdf9283b, 0x1ff897ffde05980f, 0xef2f118b5a0a6d1f, 0x6d367ecf27cb09b7,
    0x4f463f669e5fea2d, 0x7527bac7ebe5f17b, 0x3d0739f78a5292ea, 0x6bfb5fb11f8d5d08, 0x56033046fc7b6bab,
    0xf0cfbc209af4361d,
};

// pi / 2 in two parts of 53 bits; pi and pi / 4 follow by exact scaling.
constexpr double kHalfPiHigh = 0x1.921fb54442d18p+0;
constexpr double kHalfPiLow = 0x1.1a62633145c07p-54;

// The second again in parts of 33 and 53 bits.
constexpr double kHalfPiMiddle = 0x1.1a626331p-54;
constexpr double kHalfPiLast = 0x1.1701b839a252p-88;

// ln 2 in parts of 42 and 53 bits, its reciprocal, and the shift that puts e^r between 3/4 and 3/2.
constexpr double kLn2High = 0x1.62e42fefa38p-1;
constexpr double kLn2Low = 0x1.ef35793c7673p-45;
constexpr double kLog2e = 0x1.71547652b82fep+0;
constexpr double kExpShift = 0x1.e27076e2af2e6p-5;

// e^r = 1 + r + r^2 P(r) for 3/4 <= e^r <= 3/2, relative.
// Largest error 2^-57.7.
constexpr double kExp64[10] = {
    0x1.ffffffffffffep-2,  0x1.55555555556dbp-3,  0x1.5555555556109p-5,  0x1.111111108fef5p-7,
    0x1.6c16c16a2b526p-10, 0x1.a01a05459e2cep-13, 0x1.a019f69eecb2cp-16, 0x1.71d32a6b897d7p-19,
    0x1.283e0dcae0724p-22, 0x1.c6d0bb2a9071dp-26,
};

// 2^f = P(f) for |f| <= 1/2, relative, for float results.
// Largest error 2^-34.5.
constexpr double kExp2_32[8] = {
    0x1.ffffffffaba28p-1, 0x1.62e42ff11608bp-1,  0x1.ebfbe0a4f2469p-3,  0x1.c6b08aaf8ead5p-5,
    0x1.3b29dc13760cbp-7, 0x1.5d8a7000a24a9p-10, 0x1.446a44fadaeebp-13, 0x1.fe185e9095286p-17,
};

// The eighth of ln 2 in two parts of 24 bits and its reciprocal.
constexpr float kExpStepHigh = 0x1.62e43p-4F;
constexpr float kExpStepLow = -0x1.05c61p-32F;
constexpr float kExpSteps = 0x1.715476p+3F;

// 2^(i / 8) rounded, and the logarithm of what the rounding took.
constexpr float kExpPower[8] = {
    0x1p+0F,        0x1.172b84p+0F, 0x1.306fep+0F,  0x1.4bfdaep+0F,
    0x1.6a09e6p+0F, 0x1.8ace54p+0F, 0x1.ae89fap+0F, 0x1.d5818ep+0F,
};
constexpr float kExpPowerLost[8] = {
    0x0p+0F,         -0x1.9c0c22p-27F, 0x1.125002p-25F,  -0x1.0a3552p-25F,
    0x1.26055cp-26F, 0x1.67a1cap-28F,  -0x1.f9c306p-27F, -0x1.a5217cp-28F,
};

// e^r = 1 + r + r^2 P(r) for |r| <= ln 2 / 16, relative, in floats.
// Largest error 2^-32.5.
constexpr float kExpRest32[3] = {
    0x1p-1F,
    0x1.555c7ap-3F,
    0x1.55481cp-5F,
};

// ln 2, also in parts of 40 and 53 bits.
constexpr double kLn2 = 0x1.62e42fefa39efp-1;
constexpr double kLogLn2High = 0x1.62e42fefa2p-1;
constexpr double kLogLn2Low = 0x1.9ef35793c7673p-41;

// log10 2 in parts of 40 and 53 bits, log10 e in parts of 20 and 53 bits.
constexpr double kLog10Of2High = 0x1.34413509f6p-2;
constexpr double kLog10Of2Low = 0x1.9fef311f12b36p-42;
constexpr double kLog10eHigh = 0x1.bcb7ap-2;
constexpr double kLog10eLow = 0x1.1526e50e32a6bp-22;
constexpr double kLog10e = 0x1.bcb7b1526e50ep-2;
constexpr double kLog10Of2 = 0x1.34413509f79ffp-2;

// ln((1 + s) / (1 - s)) = 2 s + s^3 P(s^2) for arguments between sqrt(1/2) and sqrt(2), relative.
// Largest error 2^-59.5.
constexpr double kLog64[7] = {
    0x1.5555555555592p-1, 0x1.999999997fd31p-2, 0x1.24924941f9018p-2, 0x1.c71c5202963fep-3,
    0x1.7466406143781p-3, 0x1.39a192a45ab4cp-3, 0x1.2f070bf28d91cp-3,
};

// ln(1 + f) = f + f^2 P(f) for sqrt(1/2) <= 1 + f <= sqrt(2), relative, for float results.
// Largest error 2^-34.3.
constexpr double kLog32[12] = {
    -0x1.0000000e7902ep-1, 0x1.5555556c58ee6p-2, -0x1.ffffd2d449c06p-3, 0x1.99995a42a9d07p-3,
    -0x1.555f21c0f82c3p-3, 0x1.24a601a12cb47p-3, -0x1.fe52f1b2f3562p-4, 0x1.c29792a19aa52p-4,
    -0x1.a7789b0d03cefp-4, 0x1.a9d6cb8e25c9dp-4, -0x1.5115fe4f75bc1p-4, 0x1.e603f54f285aep-6,
};

// The same, for the logarithm inside a power.
// Largest error 2^-41.4.
constexpr double kPowLog32[15] = {
    -0x1.000000001fd6bp-1, 0x1.55555555826bcp-2, -0x1.ffffff64919e4p-3, 0x1.999998eb5e07cp-3,
    -0x1.55558bdc5d9cfp-3, 0x1.24929c63b2d31p-3, -0x1.ffef6be93f8dbp-4, 0x1.c6fc7e2b4bdf2p-4,
    -0x1.9ad7e329af6b4p-4, 0x1.7748670c9b0d7p-4, -0x1.49ad3331322f1p-4, 0x1.196e2b386ba0cp-4,
    -0x1.4e9885dc69191p-4, 0x1.be2a6d80b802p-4,  -0x1.1c54206ace51fp-4,
};

// The first of the numbers with k = 0, as bits; ln 2 and, per interval of an eighth of an octave's bits, 1 /
// c and ln c, the logarithms as multiples of 2^-17 and rests. |z / c - 1| <= 0.062500.
constexpr std::uint32_t kLogStart32 = 0x3f355555;
constexpr float kLogLn2High32 = 0x1.62e4p-1F;
constexpr float kLogLn2Low32 = 0x1.7f7d1cp-20F;
constexpr float kLogInverse32[8] = {
    0x1.6p+0F, 0x1.4p+0F, 0x1.2p+0F, 0x1.1p+0F, 0x1p+0F, 0x1.dp-1F, 0x1.ap-1F, 0x1.8p-1F,
};
constexpr float kLogHigh32[8] = {
    -0x1.4618p-2F, -0x1.c9p-3F, -0x1.e27p-4F, -0x1.f0ap-5F, 0x0p+0F, 0x1.9338p-4F, 0x1.a94p-3F, 0x1.2696p-2F,
};
constexpr float kLogLow32[8] = {
    -0x1.78438cp-19F, 0x1.070cacp-20F,  -0x1.db8abcp-22F, -0x1.86008cp-20F,
    0x0p+0F,          -0x1.0d1536p-19F, -0x1.2c3752p-19F, 0x1.089a6ep-21F,
};

// ln(1 + r) = r - r^2/2 + r^3 P(r) for |r| <= 1/16, relative, in floats.
// Largest error 2^-36.2.
constexpr float kLogRest32[5] = {
    0x1.555556p-2F, -0x1.ffff7cp-3F, 0x1.9998d6p-3F, -0x1.56d3dcp-3F, 0x1.262064p-3F,
};

// log10 e in two parts of 24 bits.
constexpr float kLog10eHigh32 = 0x1.bcb7b2p-2F;
constexpr float kLog10eLow32 = -0x1.5b235ep-27F;

// 1 / c per interval of a 32nd of an octave's bits, and the logarithms of 2 and c to both bases, as multiples
// of 2^-17 and rests. |z / c - 1| <= 0.025390.
constexpr float kLogFineInverse[32] = {
    0x1.64p+0F, 0x1.6p+0F,  0x1.58p+0F, 0x1.5p+0F,  0x1.48p+0F, 0x1.44p+0F, 0x1.3cp+0F, 0x1.38p+0F,
    0x1.3p+0F,  0x1.2cp+0F, 0x1.24p+0F, 0x1.2p+0F,  0x1.1cp+0F, 0x1.18p+0F, 0x1.1p+0F,  0x1.0cp+0F,
    0x1.08p+0F, 0x1.04p+0F, 0x1p+0F,    0x1.f8p-1F, 0x1.e4p-1F, 0x1.d8p-1F, 0x1.c8p-1F, 0x1.bcp-1F,
    0x1.bp-1F,  0x1.a8p-1F, 0x1.9cp-1F, 0x1.9p-1F,  0x1.88p-1F, 0x1.8p-1F,  0x1.78p-1F, 0x1.6cp-1F,
};
constexpr float kLnFine2High = 0x1.62e4p-1F;
constexpr float kLnFineHigh[32] = {
    -0x1.51aap-2F, -0x1.4618p-2F, -0x1.2e8ep-2F, -0x1.1676p-2F, -0x1.fb9p-3F, -0x1.e27p-3F,  -0x1.af3cp-3F,
    -0x1.9524p-3F, -0x1.5ff4p-3F, -0x1.44d4p-3F, -0x1.0d78p-3F, -0x1.e27p-4F, -0x1.a928p-4F, -0x1.6f1p-4F,
    -0x1.f0ap-5F,  -0x1.774p-5F,  -0x1.f82p-6F,  -0x1.fcp-7F,   0x0p+0F,      0x1.02p-6F,    0x1.ccbp-5F,
    0x1.4d3p-4F,   0x1.da7p-4F,   0x1.23d8p-3F,  0x1.5bf4p-3F,  0x1.823cp-3F, 0x1.bd08p-3F,  0x1.f99p-3F,
    0x1.1178p-2F,  0x1.2696p-2F,  0x1.3c26p-2F,  0x1.5d5cp-2F,
};
constexpr float kLnFine2Low = 0x1.7f7d1cp-20F;
constexpr float kLnFineLow[32] = {
    -0x1.b0e5cp-19F,  -0x1.78438cp-19F, -0x1.5d708ep-21F, 0x1.aa2a2cp-21F,  -0x1.86d5e4p-19F,
    -0x1.db8abcp-21F, -0x1.29d018p-20F, -0x1.a9cf46p-19F, 0x1.f1eb0ep-20F,  0x1.493348p-19F,
    0x1.832f72p-23F,  -0x1.db8abcp-22F, 0x1.2c5b52p-20F,  0x1.6ba8d4p-19F,  -0x1.86008cp-20F,
    -0x1.63d8ccp-19F, -0x1.361cfp-19F,  -0x1.5161f8p-20F, 0x0p+0F,          0x1.59624ep-20F,
    0x1.cf3776p-19F,  0x1.15d208p-20F,  0x1.3b1c22p-19F,  -0x1.dab6c8p-20F, 0x1.ad50f6p-25F,
    0x1.6551a4p-23F,  0x1.ce0ef6p-21F,  0x1.c6cb3cp-19F,  0x1.d044fcp-19F,  0x1.089a6ep-21F,
    -0x1.b1199ap-19F, -0x1.10535p-21F,
};
constexpr float kLog10Fine2High = 0x1.3442p-2F;
constexpr float kLog10FineHigh[32] = {
    -0x1.254cp-3F, -0x1.1b4p-3F, -0x1.06ccp-3F, -0x1.e3cp-4F, -0x1.b8ep-4F, -0x1.a308p-4F, -0x1.769p-4F,
    -0x1.5fe8p-4F, -0x1.31bp-4F, -0x1.1a2p-4F,  -0x1.d42p-5F, -0x1.a31p-5F, -0x1.715p-5F,  -0x1.3edp-5F,
    -0x1.af6p-6F,  -0x1.46p-6F,  -0x1.b6p-7F,   -0x1.b98p-8F, 0x0p+0F,      0x1.cp-8F,     0x1.902p-6F,
    0x1.217p-5F,   0x1.9c2p-5F,  0x1.fbp-5F,    0x1.2e38p-4F, 0x1.4f78p-4F, 0x1.829p-4F,   0x1.b72p-4F,
    0x1.db1p-4F,   0x1.ffcp-4F,  0x1.1298p-3F,  0x1.2f74p-3F,
};
constexpr float kLog10Fine2Low = -0x1.95ec1p-19F;
constexpr float kLog10FineLow[32] = {
    0x1.65943p-20F,   0x1.8e136cp-19F,  0x1.4c2c9ep-22F,  0x1.f2a79p-19F,   0x1.b2c54cp-20F, -0x1.4eb05p-19F,
    -0x1.40a252p-20F, -0x1.222bd4p-26F, -0x1.82ae24p-19F, -0x1.a22a8p-19F,  0x1.574d82p-20F, 0x1.58a7d8p-19F,
    0x1.f2f60cp-19F,  -0x1.199a5ep-21F, 0x1.b53fc6p-24F,  0x1.614a68p-19F,  0x1.6f714ep-19F, 0x1.c4ad82p-19F,
    0x0p+0F,          0x1.d40572p-19F,  0x1.863ac6p-19F,  -0x1.f928dcp-19F, -0x1.a1504p-19F, -0x1.64b1ap-19F,
    0x1.3a05bcp-19F,  0x1.56cddep-19F,  -0x1.8096b2p-19F, 0x1.cd1716p-20F,  0x1.ed766ap-20F, -0x1.ea21c4p-23F,
    0x1.a4fb3ep-19F,  -0x1.fc6162p-20F,
};

// ln(1 + r) = r + r^2 P(r) for such r, relative to the first term.
// Largest error 2^-33.1.
constexpr float kLnFineRest[4] = {
    -0x1.fffffep-2F,
    0x1.555552p-2F,
    -0x1.002326p-2F,
    0x1.99e98ap-3F,
};

// log10(1 + r) = r log10 e + r^2 P(r) for such r, relative to the first term.
// Largest error 2^-33.1.
constexpr float kLog10FineRest[4] = {
    -0x1.bcb7bp-3F,
    0x1.287a74p-3F,
    -0x1.bcf4c2p-4F,
    0x1.640b96p-4F,
};

// ln(1 + r) = r - r^2/2 + r^3 P(r) for |r| <= 2^-7, relative.
// Largest error 2^-65.8.
constexpr double kPowLog64[6] = {
    0x1.55555555555aep-2,  -0x1.000000000007dp-2, 0x1.999999891cedp-3,
    -0x1.55555542b1675p-3, 0x1.2499411a6257ep-3,  -0x1.0006e1512a61bp-3,
};

// Per interval of 2^-7 of an octave: 1 / c with at most 8 fractional bits, and ln c as a multiple of
// 2^-42 and a rest. |z / c - 1| <= 2^-7.00.
constexpr double kPowInverse[128] = {
    0x1.6ap+0, 0x1.68p+0, 0x1.66p+0, 0x1.64p+0, 0x1.62p+0, 0x1.6p+0,  0x1.5ep+0, 0x1.5cp+0, 0x1.5ap+0,
    0x1.58p+0, 0x1.56p+0, 0x1.54p+0, 0x1.52p+0, 0x1.5p+0,  0x1.5p+0,  0x1.4ep+0, 0x1.4cp+0, 0x1.4ap+0,
    0x1.48p+0, 0x1.46p+0, 0x1.46p+0, 0x1.44p+0, 0x1.42p+0, 0x1.4p+0,  0x1.3ep+0, 0x1.3ep+0, 0x1.3cp+0,
    0x1.3ap+0, 0x1.38p+0, 0x1.38p+0, 0x1.36p+0, 0x1.34p+0, 0x1.32p+0, 0x1.32p+0, 0x1.3p+0,  0x1.2ep+0,
    0x1.2ep+0, 0x1.2cp+0, 0x1.2ap+0, 0x1.2ap+0, 0x1.28p+0, 0x1.26p+0, 0x1.26p+0, 0x1.24p+0, 0x1.22p+0,
    0x1.22p+0, 0x1.2p+0,  0x1.1ep+0, 0x1.1ep+0, 0x1.1cp+0, 0x1.1cp+0, 0x1.1ap+0, 0x1.18p+0, 0x1.18p+0,
    0x1.16p+0, 0x1.16p+0, 0x1.14p+0, 0x1.12p+0, 0x1.12p+0, 0x1.1p+0,  0x1.1p+0,  0x1.0ep+0, 0x1.0ep+0,
    0x1.0cp+0, 0x1.0ap+0, 0x1.0ap+0, 0x1.08p+0, 0x1.08p+0, 0x1.06p+0, 0x1.06p+0, 0x1.04p+0, 0x1.04p+0,
    0x1.02p+0, 0x1.02p+0, 0x1p+0,    0x1p+0,    0x1.fap-1, 0x1.f6p-1, 0x1.f2p-1, 0x1.eep-1, 0x1.eap-1,
    0x1.e8p-1, 0x1.e4p-1, 0x1.ep-1,  0x1.dcp-1, 0x1.dap-1, 0x1.d6p-1, 0x1.d2p-1, 0x1.dp-1,  0x1.ccp-1,
    0x1.c8p-1, 0x1.c6p-1, 0x1.c2p-1, 0x1.cp-1,  0x1.bcp-1, 0x1.bap-1, 0x1.b6p-1, 0x1.b4p-1, 0x1.bp-1,
    0x1.aep-1, 0x1.aap-1, 0x1.a8p-1, 0x1.a6p-1, 0x1.a2p-1, 0x1.ap-1,  0x1.9ep-1, 0x1.9ap-1, 0x1.98p-1,
    0x1.96p-1, 0x1.94p-1, 0x1.9p-1,  0x1.8ep-1, 0x1.8cp-1, 0x1.8ap-1, 0x1.88p-1, 0x1.84p-1, 0x1.82p-1,
    0x1.8p-1,  0x1.7ep-1, 0x1.7cp-1, 0x1.7ap-1, 0x1.78p-1, 0x1.76p-1, 0x1.74p-1, 0x1.72p-1, 0x1.7p-1,
    0x1.6ep-1, 0x1.6cp-1,
};
constexpr double kPowLogHigh[128] = {
    -0x1.62c82f2b9cp-2,
    -0x1.5d1bdbf581p-2,
    -0x1.5767717456p-2,
    -0x1.51aad872ep-2,
    -0x1.4be5f95778p-2,
    -0x1.4618bc21c6p-2,
    -0x1.404308686ap-2,
    -0x1.3a64c55694p-2,
    -0x1.347dd9a988p-2,
    -0x1.2e8e2bae12p-2,
    -0x1.2895a13de8p-2,
    -0x1.22941fbcf8p-2,
    -0x1.1c898c169ap-2,
    -0x1.1675cababap-2,
    -0x1.1675cababap-2,
    -0x1.1058bf9ae5p-2,
    -0x1.0a324e2739p-2,
    -0x1.0402594b4dp-2,
    -0x1.fb9186d5e4p-3,
    -0x1.ef0adcbdc6p-3,
    -0x1.ef0adcbdc6p-3,
    -0x1.e27076e2bp-3,
    -0x1.d5c216b4fcp-3,
    -0x1.c8ff7c79aap-3,
    -0x1.bc286742d8p-3,
    -0x1.bc286742d8p-3,
    -0x1.af3c94e80cp-3,
    -0x1.a23bc1fe2cp-3,
    -0x1.9525a9cf46p-3,
    -0x1.9525a9cf46p-3,
    -0x1.87fa06520cp-3,
    -0x1.7ab890210ep-3,
    -0x1.6d60fe719ep-3,
    -0x1.6d60fe719ep-3,
    -0x1.5ff3070a7ap-3,
    -0x1.526e5e3a1cp-3,
    -0x1.526e5e3a1cp-3,
    -0x1.44d2b6ccb8p-3,
    -0x1.371fc201e8p-3,
    -0x1.371fc201e8p-3,
    -0x1.29552f82p-3,
    -0x1.1b72ad52f6p-3,
    -0x1.1b72ad52f6p-3,
    -0x1.0d77e7cd08p-3,
    -0x1.fec9131dcp-4,
    -0x1.fec9131dcp-4,
    -0x1.e27076e2bp-4,
    -0x1.c5e548f5bcp-4,
    -0x1.c5e548f5bcp-4,
    -0x1.a926d3a4acp-4,
    -0x1.a926d3a4acp-4,
    -0x1.8c345d6318p-4,
    -0x1.6f0d28ae58p-4,
    -0x1.6f0d28ae58p-4,
    -0x1.51b073f06p-4,
    -0x1.51b073f06p-4,
    -0x1.341d7961bcp-4,
    -0x1.16536eea38p-4,
    -0x1.16536eea38p-4,
    -0x1.f0a30c0118p-5,
    -0x1.f0a30c0118p-5,
    -0x1.b42dd71198p-5,
    -0x1.b42dd71198p-5,
    -0x1.77458f633p-5,
    -0x1.39e87b9fe8p-5,
    -0x1.39e87b9fe8p-5,
    -0x1.f829b0e78p-6,
    -0x1.f829b0e78p-6,
    -0x1.7b91b07d6p-6,
    -0x1.7b91b07d6p-6,
    -0x1.fc0a8b0fcp-7,
    -0x1.fc0a8b0fcp-7,
    -0x1.fe02a6b1p-8,
    -0x1.fe02a6b1p-8,
    0x0p+0,
    0x0p+0,
    0x1.82448a388p-7,
    0x1.432a92598p-6,
    0x1.c63d2ec15p-6,
    0x1.252f32f8dp-5,
    0x1.67c94f2d48p-5,
    0x1.894aa149f8p-5,
    0x1.ccb73cddd8p-5,
    0x1.08598b59e4p-4,
    0x1.2aa04a447p-4,
    0x1.3bdf5a7d2p-4,
    0x1.5e95a4d978p-4,
    0x1.8197e2f41p-4,
    0x1.9335e5d594p-4,
    0x1.b6ac88dad4p-4,
    0x1.da72763844p-4,
    0x1.ec739830ap-4,
    0x1.08598b59e4p-3,
    0x1.1178e8227ep-3,
    0x1.23d712a49cp-3,
    0x1.2d1610c868p-3,
    0x1.3fb45a5992p-3,
    0x1.4913d8333cp-3,
    0x1.5bf406b544p-3,
    0x1.6574ebe8c2p-3,
    0x1.7898d85444p-3,
    0x1.823c16551ap-3,
    0x1.8beafeb39p-3,
    0x1.9f6c40708ap-3,
    0x1.a93ed3c8aep-3,
    0x1.b31d8575bcp-3,
    0x1.c6ffbc6fp-3,
    0x1.d1037f2656p-3,
    0x1.db13db0d48p-3,
    0x1.e530effe72p-3,
    0x1.f991c6cb3cp-3,
    0x1.01eae5626cp-2,
    0x1.07138604d6p-2,
    0x1.0c42d67616p-2,
    0x1.1178e8227ep-2,
    0x1.1bf99635a7p-2,
    0x1.214456d0ecp-2,
    0x1.269621134ep-2,
    0x1.2bef07cdc9p-2,
    0x1.314f1e1d36p-2,
    0x1.36b6776be1p-2,
    0x1.3c25277333p-2,
    0x1.419b423d5fp-2,
    0x1.4718dc271cp-2,
    0x1.4c9e09e173p-2,
    0x1.522ae0738ap-2,
    0x1.57bf753c8dp-2,
    0x1.5d5bddf596p-2,
};
constexpr double kPowLogLow[128] = {
    -0x1.e54bdbd7c8a98p-44,
    0x1.8d6bdc9c7c238p-44,
    0x1.64ead9524d7cap-44,
    0x1.f4bd8db0a7cc1p-44,
    0x1.d7c92cd9ad824p-44,
    0x1.3d82f484c84ccp-46,
    -0x1.f8ef43049f7d3p-44,
    -0x1.7a71cbcd735dp-44,
    0x1.5594dd4c58092p-45,
    0x1.67b1e99b72bd8p-45,
    -0x1.a8d7ad24c13fp-44,
    0x1.a6976f5eb0963p-44,
    0x1.81410e5c62affp-44,
    -0x1.8380e731f55c4p-44,
    -0x1.8380e731f55c4p-44,
    0x1.4ab9d817d52cdp-44,
    -0x1.c6bee7ef4030ep-47,
    -0x1.036b89ef42d7fp-48,
    0x1.d572aab993c87p-47,
    0x1.b26b79c86af24p-45,
    0x1.b26b79c86af24p-45,
    0x1.a342c2af0003cp-44,
    0x1.1ba91bbca681bp-45,
    0x1.7794f689f8434p-45,
    -0x1.9ac53f39d121cp-44,
    -0x1.9ac53f39d121cp-44,
    0x1.a4e633fcd9066p-52,
    0x1.539cd91dc9f0bp-44,
    0x1.297137d9f158fp-44,
    0x1.297137d9f158fp-44,
    -0x1.22120401202fcp-44,
    0x1.bdb9072534a58p-45,
    0x1.bc6e557134767p-44,
    0x1.bc6e557134767p-44,
    0x1.8586f183bebf2p-44,
    0x1.790ba37fc5238p-44,
    0x1.790ba37fc5238p-44,
    0x1.70cc16135783cp-46,
    -0x1.ee8779b2d8abcp-44,
    -0x1.ee8779b2d8abcp-44,
    0x1.5b967f4471dfcp-44,
    -0x1.e80a41811a396p-45,
    -0x1.e80a41811a396p-45,
    -0x1.cb2cd2ee2f482p-44,
    0x1.54555d1ae6607p-44,
    0x1.54555d1ae6607p-44,
    0x1.a342c2af0003cp-45,
    -0x1.d0c57585fbe06p-46,
    -0x1.d0c57585fbe06p-46,
    -0x1.563650bd22a9cp-44,
    -0x1.563650bd22a9cp-44,
    -0x1.b20f5acb42a66p-44,
    0x1.4b4641b664613p-44,
    0x1.4b4641b664613p-44,
    -0x1.83f69278e686ap-44,
    -0x1.83f69278e686ap-44,
    -0x1.1d0929983761p-44,
    0x1.47c5e768fa309p-46,
    0x1.47c5e768fa309p-46,
    0x1.d599e83368e91p-45,
    0x1.d599e83368e91p-45,
    0x1.c827ae5d6704cp-46,
    0x1.c827ae5d6704cp-46,
    0x1.181dce586af09p-44,
    -0x1.eafd480ad9015p-44,
    -0x1.eafd480ad9015p-44,
    -0x1.980267c7e09e4p-45,
    -0x1.980267c7e09e4p-45,
    0x1.3b955b602ace4p-44,
    0x1.3b955b602ace4p-44,
    -0x1.f1e7cf6d3a69cp-50,
    -0x1.f1e7cf6d3a69cp-50,
    -0x1.9e23f0dda40e4p-46,
    -0x1.9e23f0dda40e4p-46,
    0x0p+0,
    0x0p+0,
    0x1.4554412c584ep-44,
    0x1.98139928637fep-47,
    -0x1.5439ce030a687p-44,
    0x1.83e9ae021b67bp-45,
    0x1.dac20827cca0cp-44,
    0x1.9a19a8be97661p-44,
    0x1.965c36e09f5fep-44,
    -0x1.7e5dd7009902cp-46,
    0x1.7a48ba8b1cb41p-44,
    -0x1.19bd0ad125895p-44,
    0x1.1cb7ce1d17171p-44,
    -0x1.c0fe460d20041p-44,
    0x1.3115c3abd47dap-45,
    0x1.b1bdff50225c7p-44,
    0x1.a89401fa71733p-46,
    0x1.11fcba80cdd1p-44,
    -0x1.7e5dd7009902cp-45,
    0x1.1ef78ce2d07f2p-45,
    0x1.00d238fd3df5cp-46,
    0x1.39d6ccb81b4a1p-47,
    0x1.19713c0cae559p-44,
    -0x1.53e43558124c4p-44,
    -0x1.27023eb68981cp-46,
    -0x1.98c1d34f0f462p-44,
    0x1.8e67be3dbaf3fp-44,
    0x1.e0ddb9a631e83p-46,
    -0x1.73d54aae92cd1p-47,
    -0x1.337d94bcd3f43p-44,
    -0x1.8724350562169p-45,
    0x1.c794e562a63cbp-44,
    0x1.ee138d3a69d43p-44,
    -0x1.84a7e75b6f6e4p-47,
    0x1.2806a847527e6p-44,
    -0x1.fdbdbb13f7c18p-44,
    -0x1.90d04cd7cc834p-44,
    0x1.a43dcfade85aep-44,
    -0x1.e76324e912b17p-44,
    0x1.7188b163ceae9p-45,
    0x1.1ef78ce2d07f2p-44,
    -0x1.1ac89575c2125p-44,
    -0x1.caf0428b728a3p-44,
    -0x1.1b61f10522625p-44,
    0x1.a9cfa4a5004f4p-45,
    -0x1.8e27ad3213cb8p-45,
    0x1.16ecdb0f177c8p-46,
    0x1.83b54b606bd5cp-46,
    -0x1.ce379226de3ecp-44,
    0x1.06c18fb4c14c5p-44,
    -0x1.e20891b0ad8a4p-45,
    0x1.ebe708164c759p-45,
    0x1.fadedee5d40efp-46,
    -0x1.a0b2a08a465dcp-47,
};

// atan(1/2) in two parts.
constexpr double kAtanHalfHigh = 0x1.dac670561bb4fp-2;
constexpr double kAtanHalfLow = 0x1.a2b7f222f65e2p-56;

// atan(t) = t + t^3 P(t^2) for |t| <= 7/16, relative.
// Largest error 2^-57.7.
constexpr double kAtan64[11] = {
    -0x1.555555555550bp-2, 0x1.999999998e77dp-3, -0x1.2492491ff1177p-3, 0x1.c71c6fda5e3cdp-4,
    -0x1.745cdb91803ddp-4, 0x1.3b0f1f2ab8f87p-4, -0x1.10d5f53536b61p-4, 0x1.dddd09a912002p-5,
    -0x1.979de271cefc6p-5, 0x1.2b11909538246p-5, -0x1.0a7272cec403bp-6,
};

// atan(t) = t + t^3 P(t^2) for |t| <= 1, relative, for float results.
// Largest error 2^-36.5.
constexpr double kAtan32[12] = {
    -0x1.5555552f27a1fp-2, 0x1.9999846c327aap-3, -0x1.2490391e5d549p-3, 0x1.c6e85a651cd7dp-4,
    -0x1.72d62d12f2b83p-4, 0x1.33a15ef601ef9p-4, -0x1.f02f51d0de7fbp-5, 0x1.69e9d7220f6ep-5,
    -0x1.b2f46fc4b2d7dp-6, 0x1.81f4fe733d3bfp-7, -0x1.b400243cc4ff5p-9, 0x1.ce16977b22a17p-12,
};

// erf(x) = x + (x / 8 + x P(x^2)) for |x| <= 1/2, relative.
// Largest error 2^-57.8.
constexpr double kErfSmall64[9] = {
    0x1.baea08536da19p-9,  -0x1.812746b0379b3p-2,  0x1.ce2f21a03d691p-4,
    -0x1.b82ce30f1f159p-6, 0x1.565bcbf5eb4fp-8,    -0x1.c02d4ea4eb65ep-11,
    0x1.f98d959e6144ap-14, -0x1.f2229823c3e3ep-17, 0x1.8b392a5df9bc6p-20,
};

// ln erfc(1/2) and its derivative there, each in two parts.
constexpr double kErfLogHigh = -0x1.785360f9b14c9p-1;
constexpr double kErfLogLow = -0x1.261280662755ap-56;
constexpr double kErfSlopeHigh = -0x1.d52c32689297p+0;
constexpr double kErfSlopeLow = -0x1.7a73b2d017f79p-56;

// ln erfc(1/2 + v) = ln erfc(1/2) + slope v + v^2 P(v) up to 1/2 + v = 6; the error is that of erf.
// Largest error 2^-58.1.
constexpr double kErfLarge64[20] = {
    -0x1.86aec5ebf44e6p-1,  -0x1.12a04bb7f6325p-4,  0x1.fedfab453026ap-7,   -0x1.29ad2ebe8e40fp-9,
    -0x1.64fc0b3b98bfap-13, 0x1.040edec22ad51p-12,  -0x1.6f36cfb95baa4p-14, 0x1.bf97378d94c59p-17,
    0x1.b0be5923b8495p-19,  -0x1.8d5c53f1c7b72p-19, 0x1.1ec059155a79ap-20,  -0x1.c246e91b5f8dep-23,
    0x1.ae2f993126409p-33,  0x1.1441dd9430bfp-26,   -0x1.b90258139c0c3p-28, 0x1.9c6ce8c9d3ccbp-30,
    -0x1.01dca31100991p-32, 0x1.aabca75eb6b2ep-36,  -0x1.a989573b8254cp-40, 0x1.848feb051f00ep-45,
};

// erf(x) = x P(x^2) for |x| <= 1, relative, for float results.
// Largest error 2^-34.8.
constexpr double kErfSmall32[8] = {
    0x1.20dd75040080cp+0, -0x1.8127465fb6dc7p-2,  0x1.ce2f07981de12p-4,  -0x1.b829a79b3b59dp-6,
    0x1.5628ed8fb2784p-8, -0x1.bcbe970c6fe76p-11, 0x1.d82681fd1a239p-14, -0x1.4383e8abca414p-17,
};

// log2 erfc(1 + v) = P(v) up to 1 + v = 4; the error is that of erf, for float results.
// Largest error 2^-37.8.
constexpr double kErfLarge32[10] = {
    -0x1.558eada64e342p+1,  -0x1.e753290d45ed8p+1, -0x1.37627b6509fdp+0, -0x1.eb3556dae628cp-5,
    0x1.daaa359675773p-7,   -0x1.79a295b8e2d1fp-9, 0x1.978052a3c4f8p-12, -0x1.54bddf36984f7p-17,
    -0x1.0502a1e1df7cbp-17, 0x1.2fcd9f368b188p-20,
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
