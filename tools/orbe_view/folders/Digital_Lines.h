// Program orbe-view, folders. The digital lines of a stream as the Open Ephys GUI has them: a table of edges,
// which may be growing. It is searched on the disk, because there can be millions of them. One thread; blocks
// on the disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <span>

namespace Pelgar::ORBE::view {

class Digital_Lines {
public:
    // `folder`: with sample_numbers.npy and full_words.npy.
    explicit Digital_Lines(const std::filesystem::path& folder);

    // Looks how many edges there are by now. Throws std::runtime_error for files that are none of their kind.
    void look();

    // The lines, line 1 in the lowest bit, at the samples from number `first` on. Before the first edge all
    // are low. Throws as above.
    void read(std::uint64_t first, std::span<std::uint64_t> words);

private:
    // Numbers of 64 bits behind a head.
    struct Table {
        std::filesystem::path path;
        const char* type;
        std::ifstream file;
        std::uint64_t data_begin = 0; // bytes; 0: not there yet
        std::uint64_t count = 0;

        void look();
        std::uint64_t at(std::uint64_t place);
    };

    std::uint64_t first_edge_behind(std::uint64_t sample);

    Table m_samples;
    Table m_words;
    std::uint64_t m_count = 0;
};

} // namespace Pelgar::ORBE::view
