// Fuzzing: writes the first inputs of every target, well-formed and malformed ones, into the directory given:
//     make_fuzz_corpus tests/fuzz/corpus
// The files are committed; this program is run again when a target or an input changes. What the bytes of an
// input mean is said at the head of its Fuzz_*.cpp. Other files of the directory are left alone.
#include "Demux_Streams.h"
#include "data_road/Road_Corpus.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace Pelgar::ORBE::test;

class Corpus {
public:
    Corpus(const std::filesystem::path& root, const char* target) : m_directory(root / target) {
        std::filesystem::create_directories(m_directory);
    }

    void add(const char* name, const Bytes& bytes) const {
        std::ofstream file(m_directory / name, std::ios::binary);
        for (const std::uint8_t byte : bytes) {
            file.put(static_cast<char>(byte));
        }
        if (!file.flush()) {
            throw std::runtime_error("cannot write '" + (m_directory / name).string() + "'");
        }
    }

    void add(const char* name, std::string_view text) const { add(name, Bytes(text.begin(), text.end())); }

private:
    std::filesystem::path m_directory;
};

void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts) {
        append(bytes, part);
    }
    return bytes;
}

Bytes bytes_of(std::span<const std::uint16_t> words) {
    Bytes bytes;
    append_words(bytes, words);
    return bytes;
}

// Blocks of a probe's serial bus.

Bytes block(const Bytes& bytes) {
    return joined({bytes_of(Words{static_cast<std::uint16_t>(bytes.size())}), bytes});
}

void make_psb_blocks(const std::filesystem::path& root) {
    const Corpus corpus(root, "psb_blocks");
    const Bytes resynchronisation{0xFF, 0xFF};
    const Bytes one = numbered_super_frames(0, 1);
    corpus.add("super_frame", block(one));
    corpus.add("two_blocks", joined({block(one), block(numbered_super_frames(13, 2))}));
    // The frame that completes a set of LFP values has number 143.
    corpus.add("lfp_set", block(numbered_super_frames(143, 1)));
    corpus.add("counter_rolls_over", block(numbered_super_frames(0xFFFFA, 1)));
    corpus.add("resynchronisation",
               joined({block(numbered_super_frames(0xFFFFA, 1)), resynchronisation, block(one)}));
    corpus.add("counter_gap", joined({block(one), block(numbered_super_frames(4711, 1))}));

    Bytes wrong = numbered_super_frames(0, 2);
    wrong[17] ^= 0x50;
    wrong[911] ^= 0x08;
    corpus.add("wrong_tag_and_flag", block(wrong));
    Bytes short_block = one;
    short_block.pop_back();
    Bytes long_block = one;
    long_block.push_back(0);
    corpus.add("odd_sizes", joined({block({}), block(short_block), block(long_block), block({1, 2, 3})}));
}

// A probe's serial bus word by word.

// A frame as 30 words, each a sync bit and two bits of each lane: six columns of five words, the last of
// zeros.
Words serial_words(const Adc_Frame& frame) {
    constexpr unsigned sync_bits[5] = {1, 0, 1, 0, 0};
    Words words;
    for (unsigned column = 0; column < 6; ++column) {
        for (unsigned beat = 0; beat < 5; ++beat) {
            unsigned word = column == 0 ? sync_bits[beat] << 15 : 0U;
            for (unsigned lane = 0; lane < 7 && column < 5; ++lane) {
                word |= (unsigned{frame[5 * lane + column]} >> (8 - 2 * beat) & 3U) << (12 - 2 * lane);
            }
            words.push_back(static_cast<std::uint16_t>(word));
        }
    }
    return words;
}

Words serial_frames(std::uint32_t count) {
    Words words;
    for (std::uint32_t number = 0; number < count; ++number) {
        const Words frame = serial_words(numbered_frame(number));
        words.insert(words.end(), frame.begin(), frame.end());
    }
    return words;
}

void make_psb_words(const std::filesystem::path& root) {
    const Corpus corpus(root, "psb_words");
    const Bytes no_options{0};
    const Bytes with_source{0x80};
    corpus.add("frames", joined({no_options, bytes_of(serial_frames(3))}));
    corpus.add("garbage_first", joined({no_options, Bytes(9, 0x55), bytes_of(serial_frames(2))}));
    corpus.add("never_in_step", joined({no_options, Bytes(80, 0x7F)}));
    // Sync given up before words 20 and 45.
    corpus.add("given_up", joined({{2, 20, 0, 45, 0}, bytes_of(serial_frames(3))}));
    Words lost = serial_frames(3);
    lost.erase(lost.begin() + 37);
    corpus.add("lost_word", joined({no_options, bytes_of(lost)}));
    Words closing = serial_frames(2);
    closing[28] = 0x0010;
    closing[59] = 0x7FFF;
    corpus.add("closing_column", joined({no_options, bytes_of(closing)}));
    closing.insert(closing.end(), 3, 0);
    corpus.add("closing_column_with_source", joined({with_source, bytes_of(closing)}));
}

// The RHD stream.

Bytes rhd_frames(std::uint32_t count, std::size_t stream_count) {
    Bytes bytes;
    for (std::uint32_t seed = 0; seed < count; ++seed) {
        append_words(bytes, rhd_words(numbered_rhd_frame(seed, stream_count), stream_count));
    }
    return bytes;
}

void make_rhd_reader(const std::filesystem::path& root) {
    const Corpus corpus(root, "rhd_reader");
    const Bytes false_preamble{0x53, 0x2A, 0x13, 0x38, 0xAA, 0x2A, 0xA2, 0xD6};
    corpus.add("no_streams", joined({{0, 255}, rhd_frames(3, 0)}));
    corpus.add("three_streams", joined({{3, 255}, rhd_frames(2, 3)}));
    corpus.add("all_streams", joined({{32, 255}, rhd_frames(1, 32)}));
    corpus.add("too_many_streams", joined({{35, 255}, rhd_frames(1, 35)}));
    corpus.add("stopped_at_once", joined({{1, 0}, rhd_frames(2, 1)}));
    corpus.add("garbage_first", joined({{0, 255}, Bytes(14, 0x31), rhd_frames(1, 0)}));
    corpus.add("false_preamble", joined({{1, 255}, false_preamble, rhd_frames(1, 1)}));
    Bytes cut = rhd_frames(2, 2);
    cut.erase(cut.end() - 61, cut.end());
    corpus.add("cut_frame", joined({{2, 255}, cut}));
}

// ADC calibration.

std::string adc_rows(int count, const char* line_end) {
    std::string text;
    for (int adc = 0; adc < count; ++adc) {
        for (const int value :
             {adc, 16 + adc % 5, 15 - adc % 3, adc % 8, adc % 4, 3 - adc % 4, adc % 16, 500 + adc}) {
            text += std::to_string(value) + ',';
        }
        text += std::to_string(600 - adc) + line_end;
    }
    return text;
}

void make_adc_calibration(const std::filesystem::path& root) {
    const Corpus corpus(root, "adc_calibration");
    corpus.add("good.csv", "22175715561\n" + adc_rows(32, "\n"));
    corpus.add("carriage_returns.csv", "22175715561\r\n" + adc_rows(32, "\r\n"));
    corpus.add("more_follows.csv", "22175715561\n" + adc_rows(33, "\n"));
    corpus.add("31_rows.csv", "22175715561\n" + adc_rows(31, "\n"));
    corpus.add("blank_in_header.csv", "221 75715561\n" + adc_rows(32, "\n"));
    std::string cut = "22175715561\n" + adc_rows(32, "\n");
    cut.pop_back();
    corpus.add("no_last_line_end.csv", cut);
    corpus.add("signs.csv", "x\n-0,+1,-1,007,-4294967295,4294967295,0,0,0\n" + adc_rows(31, "\n"));
    corpus.add("too_large.csv", "x\n0,4294967296\n" + adc_rows(32, "\n"));
    corpus.add("no_number.csv", "x\n0,16,sixteen,0,0,0,0,0,0\n" + adc_rows(31, "\n"));
    corpus.add("header_only.csv", "22175715561");
}

// Gain calibration.

void make_gain_calibration(const std::filesystem::path& root) {
    const Corpus corpus(root, "gain_calibration");
    const std::string header = "22175715561\n";
    const std::string line = "0,1,1.5,.999,0.98,1.01,2,-1,1e1,1,0.5,1.25,1.75,1.1,0.9,3,1e-3\n";
    corpus.add("good.csv", '*' + header + line);
    corpus.add("carriage_returns.csv", "*22175715561\r\n0,1,1,1,1,1,1,1,1,2,2,2,2,2,2,2,2.5\r\n");
    corpus.add("odd_numbers.csv",
               '*' + header + "x y,inf,-inf,nan,0x1p3,1e38,-1e38, 7,8z,0,-0,65536,1e9,4294967296,+3,1.,.1\n");
    corpus.add("two_kinds_of_lines.csv", '*' + header + "0,9,8,7,6,5,4,3,2,1,2,3,4,5,6,7,8\n" + line);
    corpus.add("line_before_last_is_no_number.csv",
               '*' + header + line + "1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,\n" + line);
    corpus.add("too_large.csv", '*' + header + line + "1,1,1,1e39,1,1,1,1,1,1,1,1,1,1,1,1,1\n");
    corpus.add("too_small.csv", '*' + header + line + "1,1,1,1,1e-50,1,1,1,1,1,1,1,1,1,1,1,1\n");
    corpus.add("three_lines.csv", header + line + line + line);
    corpus.add("blank_in_header.csv", "*serial number\n" + line);
    corpus.add("missing_comma.csv", '*' + header + "0,1,1\n" + line);
    corpus.add("header_only.csv", "22175715561");
}

// Rows of the DMA stream.

Bytes port_rows(unsigned port, std::uint32_t super_frame_count) {
    Bytes bytes;
    Row_Counters counters;
    for (const Row_Payload& row : row_payloads(numbered_super_frames(0, super_frame_count))) {
        counters.append(bytes, port, row);
    }
    return bytes;
}

Bytes rhd_rows(std::uint32_t frame_count, std::size_t stream_count) {
    Bytes bytes;
    Row_Counters counters;
    for (const Row_Payload& row : row_payloads(rhd_frames(frame_count, stream_count))) {
        counters.append(bytes, 4, row);
    }
    return bytes;
}

// The steps of Fuzz_Row_Demux.cpp, in its order.
enum Step : std::uint8_t {
    raw,
    row,
    super_frame,
    whole_block,
    rhd_frame,
    end_buffer,
    skip_rows,
    change_byte,
    cut,
    turns
};

Bytes raw_rows(const Bytes& bytes) {
    return joined({{raw}, block(bytes)});
}

void make_row_demux(const std::filesystem::path& root) {
    const Corpus corpus(root, "row_demux");
    constexpr std::uint8_t workers = 0x80;
    corpus.add("super_frames", {workers, super_frame, 0, super_frame, 1, super_frame, 2, super_frame, 3});
    corpus.add("rhd_frames", {workers | 5, rhd_frame, rhd_frame, end_buffer, rhd_frame, rhd_frame});
    corpus.add("whole_block", {workers, whole_block, 2, super_frame, 2});
    corpus.add("damaged_block", {workers, whole_block, 1, change_byte, 0x34, 0x12, 0xD1, change_byte, 7, 0x20,
                                 0xFF, super_frame, 1});
    corpus.add("raw_rows", joined({{0}, raw_rows(port_rows(3, 1))}));
    corpus.add("raw_rhd_rows", joined({{workers | 1}, raw_rows(rhd_rows(3, 1))}));
    corpus.add("odd_sizes",
               {0, super_frame, 0, cut, 5, end_buffer, rhd_frame, cut, 31, end_buffer, super_frame, 0});
    corpus.add("short_buffers", joined({{workers},
                                        raw_rows({0xD0}),
                                        {end_buffer},
                                        raw_rows(Bytes(15, 0xD4)),
                                        {end_buffer},
                                        raw_rows(Bytes(16, 0xD4))}));
    corpus.add("lost_rows",
               {0, super_frame, 0, skip_rows, 0, 3, super_frame, 0, skip_rows, 4, 255, rhd_frame});
    corpus.add("unknown_stream", joined({{0, row, 0x05}, Bytes(14, 0xAA), {row, 0x0F}, Bytes(14, 0x55)}));
    corpus.add("turns", {workers | 3, turns, 0x0F, rhd_frame, turns, 0x0F, rhd_frame, end_buffer, turns, 0x05,
                         turns, 0x0A, skip_rows, 2, 1, turns, 0x0F});
    corpus.add("damaged_turns", {0, turns, 0x0F, change_byte, 0x41, 0x01, 0x01, change_byte, 0x80, 0x04, 0x03,
                                 turns, 0x0F, change_byte, 0x00, 0x20, 0xF0});
    corpus.add("turns_over_a_full_block", {workers, turns, 0x04, whole_block, 2, turns, 0x0F, turns, 0x0F});
    corpus.add("no_marker", {workers | 2, super_frame, 0, change_byte, 0x0F, 0x01, 0x10, rhd_frame,
                             end_buffer, super_frame, 0, change_byte, 0x0F, 0x04, 0x00});
}

void make_vector_code(const std::filesystem::path& root) {
    const Corpus corpus(root, "vector_code");
    corpus.add("super_frame", joined({{0, 0}, numbered_super_frames(26, 1)}));
    Bytes wrong_tag = joined({{0, 0}, numbered_super_frames(39, 1)});
    wrong_tag.back() ^= 0x80;
    corpus.add("wrong_last_tag", wrong_tag);
    corpus.add("large_products", joined({{1, 0}, Bytes(32, 0xFF), Bytes(64, 0x47)}));
    corpus.add("no_numbers", joined({{1, 0}, Bytes(32, 0x12), Bytes(32, 0xFF), Bytes(32, 0x7F)}));
    corpus.add("few_streams", joined({{2, 7}, rhd_rows(2, 7)}));
    corpus.add("odd_streams", joined({{2, 13}, rhd_rows(2, 13)}));
    corpus.add("all_streams", joined({{2, 32}, rhd_rows(2, 32)}));
}

void make_data_road(const std::filesystem::path& root) {
    const Corpus corpus(root, "data_road");
    for (const auto& [name, bytes] : road_corpus()) {
        corpus.add(name.c_str(), bytes);
    }
}

// Recordings.

void make_recording_checker(const std::filesystem::path& root) {
    const Corpus corpus(root, "recording_checker");
    corpus.add("no_whole_piece", joined({{0}, port_rows(0, 2), rhd_rows(2, 2)}));
    corpus.add("one_piece", joined({{1}, port_rows(1, 1), rhd_rows(1, 0)}));
    // 260 rows, whose counters all but run on from one turn to the next.
    corpus.add("two_pieces", joined({{2}, port_rows(2, 4)}));
    corpus.add("rhd_pieces", joined({{2}, rhd_rows(7, 0)}));
    corpus.add("odd_bytes", joined({{0}, port_rows(3, 1), Bytes(7, 0xD3)}));
    Bytes damaged = joined({{1}, port_rows(0, 1), rhd_rows(2, 1)});
    damaged[1 + 16 * 70] = 0x11;
    corpus.add("no_marker", damaged);
    Bytes unknown;
    append_row(unknown, 5, 0, {1, 2, 3, 4, 5, 6, 7});
    append_row(unknown, 15, 9, {});
    corpus.add("unknown_streams", joined({{1}, unknown}));
    corpus.add("noise", joined({{2}, Bytes(100, 0xDD)}));
    corpus.add("nothing", Bytes{});
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return 2;
    }
    try {
        const std::filesystem::path root(argv[1]);
        make_psb_blocks(root);
        make_psb_words(root);
        make_rhd_reader(root);
        make_adc_calibration(root);
        make_gain_calibration(root);
        make_row_demux(root);
        make_data_road(root);
        make_vector_code(root);
        make_recording_checker(root);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
