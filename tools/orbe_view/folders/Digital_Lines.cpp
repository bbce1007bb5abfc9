#include "folders/Digital_Lines.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::view {

namespace {

// The mark, the version, and the length of the text behind them in two bytes.
constexpr std::size_t head_begin_size = 10;
constexpr const char* mark = "\x93NUMPY\x01";
constexpr std::size_t mark_size = 7;

} // namespace

Digital_Lines::Digital_Lines(const std::filesystem::path& folder)
    : m_samples{folder / "sample_numbers.npy", "'<i8'", {}, 0, 0}, m_words{folder / "full_words.npy",
                                                                           "'<u8'",
                                                                           {},
                                                                           0,
                                                                           0} {}

void Digital_Lines::Table::look() {
    if (!file.is_open()) {
        file.open(path, std::ios::binary);
        if (!file.is_open()) {
            return; // no edge yet
        }
    }
    file.clear();
    if (data_begin == 0) {
        std::array<char, head_begin_size> begin{};
        file.seekg(0);
        if (!file.read(begin.data(), begin.size())) {
            return; // not written yet
        }
        const std::size_t length =
            static_cast<unsigned char>(begin[8]) + 256U * static_cast<unsigned char>(begin[9]);
        std::string text(length, '\0');
        if (std::memcmp(begin.data(), mark, mark_size) != 0 ||
            !file.read(text.data(), static_cast<std::streamsize>(length)) ||
            text.find(type) == std::string::npos) {
            throw std::runtime_error("'" + path.string() + "' is no table of " + type);
        }
        data_begin = head_begin_size + length;
    }
    file.seekg(0, std::ios::end);
    const auto bytes = static_cast<std::uint64_t>(std::max<std::streamoff>(file.tellg(), 0));
    count = (bytes - std::min(bytes, data_begin)) / sizeof(std::uint64_t);
}

std::uint64_t Digital_Lines::Table::at(std::uint64_t place) {
    std::uint64_t number = 0;
    file.clear();
    file.seekg(static_cast<std::streamoff>(data_begin + place * sizeof(number)));
    if (!file.read(reinterpret_cast<char*>(&number), sizeof(number))) {
        throw std::runtime_error("cannot read '" + path.string() + "' any further");
    }
    return number;
}

void Digital_Lines::look() {
    m_samples.look();
    m_words.look();
    m_count = std::min(m_samples.count, m_words.count);
}

std::uint64_t Digital_Lines::first_edge_behind(std::uint64_t sample) {
    std::uint64_t begin = 0;
    std::uint64_t end = m_count;
    while (begin < end) {
        const std::uint64_t middle = begin + (end - begin) / 2;
        if (m_samples.at(middle) <= sample) {
            begin = middle + 1;
        } else {
            end = middle;
        }
    }
    return begin;
}

void Digital_Lines::read(std::uint64_t first, std::span<std::uint64_t> words) {
    std::uint64_t edge = first_edge_behind(first);
    std::uint64_t lines = edge == 0 ? 0 : m_words.at(edge - 1);
    std::uint64_t next = edge < m_count ? m_samples.at(edge) : 0;
    for (std::size_t i = 0; i < words.size(); ++i) {
        // Several lines can change with one sample.
        while (edge < m_count && next <= first + i) {
            lines = m_words.at(edge);
            ++edge;
            next = edge < m_count ? m_samples.at(edge) : 0;
        }
        words[i] = lines;
    }
}

} // namespace Pelgar::ORBE::view
