// Tools, recorder. A table of numbers in one dimension as numpy reads it, which says at its beginning how
// many there are. The stream's thread; blocks on the disk.
#pragma once

#include "formats/Data_File.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

namespace Pelgar::ORBE::recorder {

inline constexpr std::size_t npy_head_size = 128;

// `type` is numpy's name of it: "<i8".
std::string npy_head(const std::string& type, std::uint64_t count);

class Npy_File {
public:
    Npy_File(const std::filesystem::path& path, std::string type) : m_file(path), m_type(std::move(type)) {}

    template <typename Number>
    void append(Number number) {
        append_many<Number>(1, [number](std::size_t) { return number; });
    }

    // So many numbers, each made of its place among them.
    template <typename Number, typename Make>
    void append_many(std::size_t count, Make make) {
        begin();
        char* place = m_file.append(count * sizeof(Number));
        for (std::size_t i = 0; i < count; ++i, place += sizeof(Number)) {
            const Number number = make(i);
            std::memcpy(place, &number, sizeof(number));
        }
        m_count += count;
    }

    std::uint64_t count() const { return m_count; }

    std::uint64_t size() const { return m_file.size(); }

    // The numbers first, and then how many there are, so that the file is in order at any moment.
    void flush();

    void close();

private:
    void begin();

    Data_File m_file;
    std::string m_type;
    std::uint64_t m_count = 0;
    std::uint64_t m_told = 0; // in the head that is on the disk
};

} // namespace Pelgar::ORBE::recorder
