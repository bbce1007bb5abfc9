// Layer: device controller. The arithmetic of the gain correction, which is exact and has no branch. Called
// on the NP worker threads; never blocks.
#pragma once

#include "common/Vector_Unit.h"

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE {

// The float product of an unsigned value and its factor, truncated toward zero and kept to 16 bits. A product
// beyond 32 bits, or none at all (a factor that is not a number), gives 0, as the processor's own conversion
// does.
inline std::uint16_t gain_product(std::uint16_t value, float factor) {
    constexpr float limit = 2147483648.0F;
    const float product = static_cast<float>(value) * factor;
    const float in_range = product >= -limit && product < limit ? product : 0.0F;
    return static_cast<std::uint16_t>(static_cast<std::int32_t>(in_range));
}

// What is compiled where there is no vector code, and what that is held against.
namespace plain {

template <std::size_t N>
void apply_gain(std::uint16_t (&values)[N], const float* factors) {
    for (std::size_t i = 0; i < N; ++i) {
        values[i] = gain_product(values[i], factors[i]);
    }
}

} // namespace plain

#if ORBE_SSE2

// The products of four values. The conversion answers 0x80000000 for what it cannot hold, whose lower half is
// 0.
inline __m128i gain_products(__m128i values, const float* factors) {
    return _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(values), _mm_loadu_ps(factors)));
}

// The lower halves of eight numbers: spread to signed numbers of 16 bits, which the packing leaves as they
// are.
inline __m128i lower_halves(__m128i first, __m128i second) {
    constexpr int bits = 16;
    return _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(first, bits), bits),
                           _mm_srai_epi32(_mm_slli_epi32(second, bits), bits));
}

template <std::size_t N>
void apply_gain(std::uint16_t (&values)[N], const float* factors) {
    constexpr std::size_t at_once = 8;
    static_assert(N % at_once == 0);
    for (std::size_t i = 0; i < N; i += at_once) {
        auto* const place = reinterpret_cast<__m128i*>(values + i);
        const __m128i eight = _mm_loadu_si128(place);
        const __m128i first = _mm_unpacklo_epi16(eight, _mm_setzero_si128());
        const __m128i second = _mm_unpackhi_epi16(eight, _mm_setzero_si128());
        _mm_storeu_si128(
            place, lower_halves(gain_products(first, factors + i), gain_products(second, factors + i + 4)));
    }
}

#else

using plain::apply_gain;

#endif

// The middle of the converter's ten bits, which stands for no voltage, and their end.
inline constexpr int converter_middle = 512;
inline constexpr int converter_end = 1023;

// The product for consumers to whom the middle is 0: the distance from it is multiplied, and what goes beyond
// ten bits is held at their end.
inline std::uint16_t signed_gain_product(std::uint16_t value, float factor) {
    constexpr float below = -converter_middle;
    constexpr float above = converter_end - converter_middle;
    const float product = static_cast<float>(value - converter_middle) * factor;
    const float number = product == product ? product : 0.0F;
    const float held = number < below ? below : (number > above ? above : number);
    return static_cast<std::uint16_t>(static_cast<std::int32_t>(held) + converter_middle);
}

template <std::size_t N>
void apply_signed_gain(std::uint16_t (&values)[N], const float* factors) {
    for (std::size_t i = 0; i < N; ++i) {
        values[i] = signed_gain_product(values[i], factors[i]);
    }
}

} // namespace Pelgar::ORBE
