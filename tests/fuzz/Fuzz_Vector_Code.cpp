// Fuzzing: everything that is written for the vector unit against its plain twin.
//
// An input is a byte that says which one, a byte with a number of streams, and the bytes to work on, in
// memory of their own length.
#include "Fuzz_Target.h"

#include "gain/Gain_Product.h"
#include "probe/Super_Frame.h"
#include "rhd/RHD_Turn.h"

#include "Byte_Reader.h"
#include "Require.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

// The bytes, filled up with zeros or cut.
std::vector<std::uint8_t> take(Byte_Reader& input, std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size && !input.empty(); ++i) {
        bytes[i] = input.byte();
    }
    return bytes;
}

void compare_super_frame(Byte_Reader& input) {
    constexpr std::size_t size = 910;
    const std::vector<std::uint8_t> bytes = take(input, size);
    std::uint16_t channels[demux::channel_count] = {};
    std::uint16_t expected[demux::channel_count] = {};
    demux::super_frame::sort_ap(bytes.data(), channels);
    demux::super_frame::plain::sort_ap(bytes.data(), expected);
    require(std::equal(std::begin(channels), std::end(channels), std::begin(expected)), "channels");
    require(demux::super_frame::is_in_order(bytes.data()) ==
                demux::super_frame::plain::is_in_order(bytes.data()),
            "whether a super frame is in order");
}

void compare_gain(Byte_Reader& input) {
    constexpr std::size_t count = 16;
    std::uint16_t values[count];
    std::uint16_t expected[count];
    float factors[count];
    std::memcpy(values, take(input, sizeof values).data(), sizeof values);
    std::memcpy(expected, values, sizeof values);
    std::memcpy(factors, take(input, sizeof factors).data(), sizeof factors);
    apply_gain(values, factors);
    plain::apply_gain(expected, factors);
    require(std::equal(std::begin(values), std::end(values), std::begin(expected)), "products");
}

void compare_turn(Byte_Reader& input, std::size_t stream_count) {
    std::vector<std::uint16_t> words(demux::rhd_words_per_stream * stream_count);
    for (std::uint16_t& word : words) {
        word = input.empty() ? std::uint16_t{0} : input.word();
    }
    std::vector<demux::RHD_Stream_Words> turned(stream_count);
    std::vector<demux::RHD_Stream_Words> expected(stream_count);
    std::vector<demux::RHD_Stream_Words*> turned_arrays;
    std::vector<demux::RHD_Stream_Words*> expected_arrays;
    for (std::size_t stream = 0; stream < stream_count; ++stream) {
        turned_arrays.push_back(&turned[stream]);
        expected_arrays.push_back(&expected[stream]);
    }
    demux::turn_rhd_words(words.data(), turned_arrays);
    demux::plain::turn_rhd_words(words.data(), expected_arrays);
    require(turned == expected, "streams");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Byte_Reader input(data, size);
    const unsigned choice = input.byte();
    const std::size_t stream_count = input.byte() % (demux::rhd_max_stream_count + 1);
    switch (choice % 3) {
    case 0:
        compare_super_frame(input);
        break;
    case 1:
        compare_gain(input);
        break;
    default:
        compare_turn(input, stream_count);
    }
    return 0;
}
