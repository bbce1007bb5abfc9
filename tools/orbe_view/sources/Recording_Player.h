// Program orbe-view, sources. Decodes a raw recording from one of its pieces on, and puts it into the
// histories. One thread, which blocks on the disk and on the decoder's threads.
#pragma once

#include "decoding/Raw_Decoder.h"
#include "history/Histories.h"
#include "sources/Packet_Intake.h"
#include "sources/Recording_Index.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace Pelgar::ORBE::view {

class Recording_Player {
public:
    // Begins with piece number `piece`, which is `place` in the index. Throws std::runtime_error when the
    // file cannot be read.
    Recording_Player(const std::filesystem::path& file, const recorder::Recording_Description& description,
                     Histories& histories, std::size_t piece, const Recording_Index::Piece& place);

    // The next piece; false when no more than a piece's beginning is there and more may come. `is_last`: the
    // beginning as well, as a rest; what has been added to it comes next then, before another piece. Throws
    // as above.
    bool decode_piece(bool is_last);

    // So many bytes of the piece before the next one, when that was a rest; otherwise 0.
    std::size_t shown_of_rest() const { return m_shown_of_rest; }

    // The piece that comes next.
    std::size_t next_piece() const { return m_piece; }

private:
    void take();

    std::filesystem::path m_path;
    std::ifstream m_file;
    Histories& m_histories;
    std::size_t m_piece;
    std::size_t m_shown_of_rest = 0;
    std::vector<std::uint8_t> m_bytes;
    recorder::Raw_Decoder m_decoder;
    std::vector<Packet_Intake> m_intakes; // of the probes
    Packet_Intake m_adc_intake;
    std::vector<Neuropixels::electrodePacket> m_packets;
    std::vector<Neuropixels::PacketInfo> m_infos;
    std::vector<std::int16_t> m_rows;
};

} // namespace Pelgar::ORBE::view
