// Test support: RHD frames out of words, read one word after the other, slowly and without regard to the code
// it is compared with.
#pragma once

#include "Demux_Streams.h"
#include "Recording_Listeners.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace Pelgar::ORBE::test {

class RHD_Reference_Reader {
public:
    RHD_Reference_Reader(Words words, std::size_t stream_count)
        : m_words(std::move(words)), m_stream_count(stream_count) {}

    void signal_to_stop() { m_stopped = true; }

    std::size_t words_left() const { return m_words.size() - m_at; }

    // Whether the words last for another frame, or for what is taken for the preamble of one.
    bool can_read() const;

    // The next frame; false when there is none where it was looked for.
    bool read(Rhd_Frame_Copy& frame);

    std::string out;
    std::string err;
    std::uint32_t frames = 0;

private:
    std::uint16_t next();
    std::uint32_t next_double();

    Words m_words;
    std::size_t m_stream_count;
    std::size_t m_at = 0;
    bool m_stopped = false;
};

} // namespace Pelgar::ORBE::test
