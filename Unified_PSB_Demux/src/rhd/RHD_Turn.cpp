#include "rhd/RHD_Turn.h"

#include "common/Vector_Unit.h"

#include <algorithm>

namespace Pelgar::ORBE::demux {

namespace plain {

void turn_rhd_words(const std::uint16_t* words, std::span<RHD_Stream_Words* const> streams) {
    for (std::size_t stream = 0; stream < streams.size(); ++stream) {
        RHD_Stream_Words& samples = *streams[stream];
        for (std::size_t position = 0; position < rhd_words_per_stream; ++position) {
            samples[position] = words[position * streams.size() + stream];
        }
    }
}

} // namespace plain

#if ORBE_SSE2

namespace {

// What is turned at once: eight positions of eight streams.
constexpr std::size_t side = 8;

void turn_square(const std::uint16_t* words, std::size_t stride, RHD_Stream_Words* const* streams,
                 std::size_t position) {
    __m128i row[side];
    for (std::size_t i = 0; i < side; ++i) {
        row[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(words + (position + i) * stride));
    }
    __m128i pair[side];
    for (std::size_t i = 0; i < side / 2; ++i) {
        pair[2 * i] = _mm_unpacklo_epi16(row[2 * i], row[2 * i + 1]);
        pair[2 * i + 1] = _mm_unpackhi_epi16(row[2 * i], row[2 * i + 1]);
    }
    __m128i quad[side];
    for (std::size_t half = 0; half < 2; ++half) {
        for (std::size_t i = 0; i < 2; ++i) {
            quad[4 * half + 2 * i] = _mm_unpacklo_epi32(pair[4 * half + i], pair[4 * half + 2 + i]);
            quad[4 * half + 2 * i + 1] = _mm_unpackhi_epi32(pair[4 * half + i], pair[4 * half + 2 + i]);
        }
    }
    for (std::size_t i = 0; i < side / 2; ++i) {
        const auto store = [&](std::size_t stream, __m128i samples) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(streams[stream]->data() + position), samples);
        };
        store(2 * i, _mm_unpacklo_epi64(quad[i], quad[i + 4]));
        store(2 * i + 1, _mm_unpackhi_epi64(quad[i], quad[i + 4]));
    }
}

// The steps that take `count` in squares; where it is no multiple of their side, the last one lies over the
// one before.
template <typename Operation>
void for_each_square(std::size_t count, Operation operation) {
    for (std::size_t at = 0; at < count; at += side) {
        operation(std::min(at, count - side));
    }
}

} // namespace

void turn_rhd_words(const std::uint16_t* words, std::span<RHD_Stream_Words* const> streams) {
    if (streams.size() < side) {
        plain::turn_rhd_words(words, streams);
        return;
    }
    for_each_square(streams.size(), [&](std::size_t stream) {
        for_each_square(rhd_words_per_stream, [&](std::size_t position) {
            turn_square(words + stream, streams.size(), streams.data() + stream, position);
        });
    });
}

#else

void turn_rhd_words(const std::uint16_t* words, std::span<RHD_Stream_Words* const> streams) {
    plain::turn_rhd_words(words, streams);
}

#endif

} // namespace Pelgar::ORBE::demux
