#include "folders/SpikeGLX_Metadata.h"

#include "description/Whole_File.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Pelgar::ORBE::view {

namespace {

// More than any list of channels has.
constexpr int most_channels = 100'000;

template <typename Number>
std::optional<Number> number_of(std::string_view text) {
    Number number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        return std::nullopt;
    }
    if constexpr (std::is_floating_point_v<Number>) {
        if (!std::isfinite(number)) {
            return std::nullopt;
        }
    }
    return number;
}

} // namespace

SpikeGLX_Metadata::SpikeGLX_Metadata(std::filesystem::path path) : m_path(std::move(path)) {
    std::istringstream lines(recorder::read_file(m_path));
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        const std::size_t sign = line.find('=');
        if (sign != std::string::npos) {
            m_values[line.substr(0, sign)] = line.substr(sign + 1);
        }
    }
}

std::optional<std::string> SpikeGLX_Metadata::text(const std::string& key) const {
    const auto value = m_values.find(key);
    return value == m_values.end() ? std::nullopt : std::optional(value->second);
}

std::optional<double> SpikeGLX_Metadata::number(const std::string& key) const {
    const auto value = text(key);
    return value ? number_of<double>(*value) : std::nullopt;
}

std::optional<std::uint64_t> SpikeGLX_Metadata::whole_number(const std::string& key) const {
    const auto value = text(key);
    return value ? number_of<std::uint64_t>(*value) : std::nullopt;
}

std::vector<int> SpikeGLX_Metadata::numbers(const std::string& key) const {
    std::vector<int> numbers;
    std::istringstream parts(text(key).value_or(""));
    for (std::string part; std::getline(parts, part, ',');) {
        const std::size_t colon = part.find(':');
        const auto first = number_of<int>(std::string_view(part).substr(0, colon));
        const auto last =
            colon == std::string::npos ? first : number_of<int>(std::string_view(part).substr(colon + 1));
        if (!first || !last || *first < 0 || *last < *first || *last >= most_channels ||
            numbers.size() >= static_cast<std::size_t>(most_channels)) {
            refuse("is damaged: " + key + " is no list of numbers");
        }
        for (int number = *first; number <= *last; ++number) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

std::vector<std::vector<double>> SpikeGLX_Metadata::table(const std::string& key) const {
    std::vector<std::vector<double>> rows;
    const std::string all = text(key).value_or("");
    for (std::size_t begin = 0; begin < all.size();) {
        const std::size_t end = all.find(')', begin);
        if (all[begin] != '(' || end == std::string::npos) {
            refuse("is damaged: " + key + " is no table");
        }
        std::vector<double>& row = rows.emplace_back();
        while (begin < end) {
            const std::size_t next = std::min(all.find_first_of(" ,", begin + 1), end);
            const auto number = number_of<double>(std::string_view(all).substr(begin + 1, next - begin - 1));
            if (!number) {
                refuse("is damaged: " + key + " is no table of numbers");
            }
            row.push_back(*number);
            begin = next;
        }
        begin = end + 1;
    }
    return rows;
}

void SpikeGLX_Metadata::refuse(const std::string& what) const {
    throw std::runtime_error("'" + m_path.string() + "' " + what);
}

} // namespace Pelgar::ORBE::view
