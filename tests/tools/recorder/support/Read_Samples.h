// Test support: files of samples, row by row.
#pragma once

#include "description/Whole_File.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

template <typename Number>
std::vector<Number> read_numbers(const std::filesystem::path& file, std::size_t skipped_bytes = 0) {
    const std::string bytes = recorder::read_file(file).substr(skipped_bytes);
    std::vector<Number> numbers(bytes.size() / sizeof(Number));
    std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(Number));
    return numbers;
}

struct Sample_Table {
    Sample_Table(const std::filesystem::path& file, std::size_t column_count)
        : columns(column_count), values(read_numbers<std::int16_t>(file)) {}

    std::size_t columns;
    std::vector<std::int16_t> values;

    std::size_t rows() const { return values.size() / columns; }

    std::int16_t at(std::size_t row, std::size_t column) const { return values.at(row * columns + column); }
};

} // namespace Pelgar::ORBE::test
