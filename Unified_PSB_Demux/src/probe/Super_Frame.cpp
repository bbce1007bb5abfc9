#include "probe/Super_Frame.h"

#include "common/Vector_Unit.h"
#include "probe/Channel_Map.h"

#include <cstring>

namespace Pelgar::ORBE::demux::super_frame {

namespace {

using psb::bytes_per_frame;
using psb::bytes_per_row;
using psb::bytes_per_super_frame;
using psb::frames_per_super_frame;
using psb::rows_per_frame;
using psb::words_per_row;
using psb::words_per_super_frame;

using channel_map::adcs_per_pair;
using channel_map::channels_per_pair;
using channel_map::pair_count;
using channel_map::slot_count;

static_assert(frames_per_super_frame == 1 + slot_count);

// Value i of a frame is word i / 5 of its row i % 5.
constexpr std::size_t word_of_value(std::size_t value) {
    return value % rows_per_frame * words_per_row + value / rows_per_frame;
}

std::uint16_t word_at(const unsigned char* bytes, std::size_t word) {
    std::uint16_t value;
    std::memcpy(&value, bytes + word * sizeof value, sizeof value);
    return value;
}

void sort_frame(const unsigned char* frame, std::uint16_t* channels, std::size_t slot) {
    std::uint16_t* const destination = channels + adcs_per_pair * slot;
    for (std::size_t pair = 0; pair < pair_count; ++pair) {
        for (std::size_t adc = 0; adc < adcs_per_pair; ++adc) {
            const std::size_t word = word_of_value(adcs_per_pair * pair + adc);
            destination[channels_per_pair * pair + adc] = word_at(frame, word) & psb::value_mask;
        }
    }
}

} // namespace

bool has_start_flag(const unsigned char* bytes) {
    return (word_at(bytes, 0) & psb::super_frame_start) != 0;
}

std::uint32_t frame_counter(const unsigned char* bytes, std::size_t frame) {
    const unsigned char* const words = bytes + frame * bytes_per_frame;
    const std::uint32_t high = word_at(words, word_of_value(psb::counter_high_value)) & psb::value_mask;
    const std::uint32_t low = word_at(words, word_of_value(psb::counter_low_value)) & psb::value_mask;
    return high << psb::counter_part_bits | low;
}

bool counts_on(const unsigned char* bytes, std::uint32_t first) {
    std::uint32_t differences = 0;
    for (std::uint32_t frame = 0; frame < frames_per_super_frame; ++frame) {
        differences |= frame_counter(bytes, frame) ^ (first + frame);
    }
    return differences == 0;
}

void sort_lfp(const unsigned char* bytes, std::uint16_t (&channels)[channel_count], std::size_t slot) {
    sort_frame(bytes, channels, slot);
}

namespace plain {

bool is_in_order(const unsigned char* bytes) {
    unsigned differences = 0;
    for (std::size_t word = 0; word < words_per_super_frame; ++word) {
        const std::size_t tag = (word % words_per_row + 1) << psb::lane_tag_shift;
        differences |= static_cast<unsigned>(word_at(bytes, word) ^ tag);
    }
    return (differences & psb::lane_tag_mask) == 0 && has_start_flag(bytes);
}

void sort_ap(const unsigned char* bytes, std::uint16_t (&channels)[channel_count]) {
    for (std::size_t slot = 0; slot < slot_count; ++slot) {
        sort_frame(bytes + (slot + 1) * bytes_per_frame, channels, slot);
    }
}

} // namespace plain

#if ORBE_SSE2

namespace {

// A row takes seven of a vector's eight words. What lies behind it is the next row's first word, or, behind
// the last row of a frame, nothing that may be read: that one is read from a word before and shifted.
__m128i row_at(const unsigned char* frame, std::size_t row) {
    const unsigned char* const words = frame + row * bytes_per_row;
    if (row + 1 == rows_per_frame) {
        const unsigned char* const before = words - sizeof(std::uint16_t);
        return _mm_srli_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(before)), 2);
    }
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

// Seen as four numbers of 32 bits, a row has the words of an even lane in the lower halves and those of the
// odd lane behind it in the upper ones. Pairs of neighbouring values come about in five ways, and each way
// gives the pairs way, way + 5, way + 10 and, for the first one, way + 15.
constexpr std::size_t ways = 5;

constexpr int lower_value = psb::value_mask;
constexpr int upper_value = psb::value_mask << 16;

__m128i lower(__m128i row) {
    return _mm_and_si128(row, _mm_set1_epi32(lower_value));
}

__m128i upper(__m128i row) {
    return _mm_and_si128(row, _mm_set1_epi32(upper_value));
}

template <std::size_t way>
__m128i pairs_of(const unsigned char* frame) {
    if constexpr (way == 0) { // rows 0 and 1 of the even lanes
        return _mm_or_si128(lower(row_at(frame, 0)), upper(_mm_slli_epi32(row_at(frame, 1), 16)));
    } else if constexpr (way == 1) { // rows 2 and 3 of the even lanes
        return _mm_or_si128(lower(row_at(frame, 2)), upper(_mm_slli_epi32(row_at(frame, 3), 16)));
    } else if constexpr (way == 2) { // row 4 of the even lanes, row 0 of the odd ones
        return _mm_or_si128(lower(row_at(frame, 4)), upper(row_at(frame, 0)));
    } else if constexpr (way == 3) { // rows 1 and 2 of the odd lanes
        return _mm_or_si128(lower(_mm_srli_epi32(row_at(frame, 1), 16)), upper(row_at(frame, 2)));
    } else { // rows 3 and 4 of the odd lanes
        return _mm_or_si128(lower(_mm_srli_epi32(row_at(frame, 3), 16)), upper(row_at(frame, 4)));
    }
}

void store_pair(std::uint16_t* channels, std::size_t pair, __m128i values) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(channels + pair * channels_per_pair), values);
}

// The pairs of one way in four neighbouring slots, turned so that a pair's four slots come to lie side by
// side as its channels do.
template <std::size_t way>
void sort_four_slots(const unsigned char* frame, std::uint16_t* channels) {
    const __m128i slot0 = pairs_of<way>(frame);
    const __m128i slot1 = pairs_of<way>(frame + bytes_per_frame);
    const __m128i slot2 = pairs_of<way>(frame + 2 * bytes_per_frame);
    const __m128i slot3 = pairs_of<way>(frame + 3 * bytes_per_frame);
    const __m128i lower01 = _mm_unpacklo_epi32(slot0, slot1);
    const __m128i lower23 = _mm_unpacklo_epi32(slot2, slot3);
    const __m128i upper01 = _mm_unpackhi_epi32(slot0, slot1);
    const __m128i upper23 = _mm_unpackhi_epi32(slot2, slot3);
    store_pair(channels, way, _mm_unpacklo_epi64(lower01, lower23));
    store_pair(channels, way + ways, _mm_unpackhi_epi64(lower01, lower23));
    store_pair(channels, way + 2 * ways, _mm_unpacklo_epi64(upper01, upper23));
    if constexpr (way == 0) {
        store_pair(channels, way + 3 * ways, _mm_unpackhi_epi64(upper01, upper23));
    }
}

} // namespace

bool is_in_order(const unsigned char* bytes) {
    const __m128i tags = _mm_setr_epi16(0x1000, 0x2000, 0x3000, 0x4000, 0x5000, 0x6000, 0x7000, 0);
    const auto tag_bits = static_cast<short>(psb::lane_tag_mask);
    const __m128i mask =
        _mm_setr_epi16(tag_bits, tag_bits, tag_bits, tag_bits, tag_bits, tag_bits, tag_bits, 0);
    __m128i differences = _mm_setzero_si128();
    for (std::size_t frame = 0; frame < frames_per_super_frame; ++frame) {
        for (std::size_t row = 0; row < rows_per_frame; ++row) {
            const __m128i words = row_at(bytes + frame * bytes_per_frame, row);
            differences = _mm_or_si128(differences, _mm_xor_si128(words, tags));
        }
    }
    const __m128i wrong = _mm_and_si128(differences, mask);
    return _mm_movemask_epi8(_mm_cmpeq_epi8(wrong, _mm_setzero_si128())) == 0xFFFF && has_start_flag(bytes);
}

void sort_ap(const unsigned char* bytes, std::uint16_t (&channels)[channel_count]) {
    constexpr std::size_t slots_at_once = 4;
    for (std::size_t slot = 0; slot < slot_count; slot += slots_at_once) {
        const unsigned char* const frame = bytes + (slot + 1) * bytes_per_frame;
        std::uint16_t* const destination = channels + adcs_per_pair * slot;
        sort_four_slots<0>(frame, destination);
        sort_four_slots<1>(frame, destination);
        sort_four_slots<2>(frame, destination);
        sort_four_slots<3>(frame, destination);
        sort_four_slots<4>(frame, destination);
    }
}

#else

bool is_in_order(const unsigned char* bytes) {
    return plain::is_in_order(bytes);
}

void sort_ap(const unsigned char* bytes, std::uint16_t (&channels)[channel_count]) {
    plain::sort_ap(bytes, channels);
}

#endif

} // namespace Pelgar::ORBE::demux::super_frame
