// SPDX-License-Identifier: BSD-3-Clause
//
// The processor's vector instructions in plain C++, so that kernels for instruction sets that this machine lacks can be
// run all the same. Stands in for the compiler's header of that name.
#pragma once

#ifndef SIMDE_ENABLE_NATIVE_ALIASES
#define SIMDE_ENABLE_NATIVE_ALIASES
#endif
#define SIMDE_NO_NATIVE
#include <simde/x86/avx512.h>

#include <cstdint>
#include <cstring>

// What the emulation leaves out.
namespace emulated {

template <class Out, class In, class Each>
simde__m512i each_of(simde__m512i a, simde__m512i b, Each each) {
    In left[64 / sizeof(In)];
    In right[64 / sizeof(In)];
    Out out[64 / sizeof(Out)];
    std::memcpy(left, &a, 64);
    std::memcpy(right, &b, 64);
    for (unsigned i = 0; i < 64 / sizeof(Out); ++i) {
        out[i] = each(left, right, i);
    }
    std::memcpy(&a, out, 64);
    return a;
}

inline simde__m512i multiply_high(simde__m512i a, simde__m512i b) {
    return each_of<std::uint16_t, std::uint16_t>(a, b, [](auto& x, auto& y, unsigned i) {
        return static_cast<std::uint16_t>(std::uint32_t{x[i]} * y[i] >> 16);
    });
}
inline simde__m512i multiply_add(simde__m512i a, simde__m512i b) {
    return each_of<std::int32_t, std::int16_t>(
        a, b, [](auto& x, auto& y, unsigned i) { return x[2 * i] * y[2 * i] + x[2 * i + 1] * y[2 * i + 1]; });
}
inline simde__m512i shift_right_arithmetic(simde__m512i a, unsigned bits) {
    return each_of<std::int32_t, std::int32_t>(a, a, [=](auto& x, auto&, unsigned i) { return x[i] >> bits; });
}
template <class Wide, class Narrow>
simde__m512i zero_extend(simde__m256i a) {
    Narrow in[32 / sizeof(Narrow)];
    Wide out[64 / sizeof(Wide)];
    std::memcpy(in, &a, 32);
    for (unsigned i = 0; i < 64 / sizeof(Wide); ++i) {
        out[i] = in[i];
    }
    simde__m512i result;
    std::memcpy(&result, out, 64);
    return result;
}
inline simde__m512 to_float(simde__m512i a) {
    std::int32_t in[16];
    float out[16];
    std::memcpy(in, &a, 64);
    for (unsigned i = 0; i < 16; ++i) {
        out[i] = static_cast<float>(in[i]);
    }
    simde__m512 result;
    std::memcpy(&result, out, 64);
    return result;
}

}  // namespace emulated

#undef _mm512_madd_epi16
#define __mmask8 simde__mmask8
#define _mm512_mulhi_epu16(a, b) emulated::multiply_high(a, b)
#define _mm512_madd_epi16(a, b) emulated::multiply_add(a, b)
#define _mm512_srai_epi32(a, bits) emulated::shift_right_arithmetic(a, bits)
#define _mm512_cvtepu8_epi16(a) emulated::zero_extend<std::uint16_t, std::uint8_t>(a)
#define _mm512_cvtepu16_epi32(a) emulated::zero_extend<std::uint32_t, std::uint16_t>(a)
#define _mm512_cvtepi32_ps(a) emulated::to_float(a)
#define _mm256_zeroupper()
