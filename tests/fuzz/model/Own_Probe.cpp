#include "Own_Probe.h"

#include "Converter_Link.h"

#include <string>

namespace Pelgar::ORBE::road_model {

Own_Probe::Own_Probe(Listening listening, Process_Counters& process, Told& told)
    : packets(process, told), m_listening(listening), m_told(told) {}

void Own_Probe::take_block(const Bytes& block) {
    for (std::size_t at = 0; at < block.size(); at += super_frame_length) {
        const std::uint8_t* const super_frame = block.data() + at;
        if (!begins_super_frame(super_frame)) {
            m_told.err += "Super frame align failure\n";
            return;
        }
        for (std::size_t number = 0; number < frames_per_super_frame; ++number) {
            take_frame(read_frame(super_frame + number * frame_length));
        }
    }
}

void Own_Probe::take_frame(const Probe_Frame& frame) {
    damage.wrong_tags += frame.wrong_tags;
    for (unsigned i = 0; i < frame.wrong_tags; ++i) {
        m_told.err += "Warning shift reg mismatch\n";
    }
    const std::uint32_t counter = long_counter(frame);
    const std::uint32_t phase = counter % 13;
    const unsigned slot = phase == 0 ? counter / 13 % 12 : phase - 1;
    Channels& values = phase == 0 ? m_lfp : m_ap;
    for (unsigned adc = 0; adc < 32; ++adc) {
        values[channel_of(adc, slot)] = frame.values[adc];
    }
    if (slot == 11) {
        deliver(phase == 0 ? Band::lfp : Band::ap, values);
    }
}

std::uint32_t Own_Probe::long_counter(const Probe_Frame& frame) {
    const std::uint32_t counter = frame.counter();
    if (counter == 0 && m_last_counter == 0xFFFFF) {
        m_told.out += "frame_number rolled : 0, prev count : 1048575\n";
    } else if (counter != m_last_counter + 1) {
        ++damage.frame_gaps;
        m_told.err += "check_frame_number_continuity failed, current counter (two part) : " +
                      std::to_string(frame.values[33]) + " " + std::to_string(frame.values[34]) +
                      ", prev counter : " + std::to_string(m_last_counter) + "\n";
    }
    m_last_counter = counter;

    const std::uint32_t upper_half = frame.values[33];
    if (upper_half == 0 && m_last_upper_half == 1023) {
        m_told.out += "Incrementing m_three_word_counter_high_part\n";
        m_wraps = (m_wraps + 1) % 65536;
    }
    m_last_upper_half = upper_half;

    const std::uint32_t long_counter = m_wraps * 1048576U + counter;
    if (long_counter != m_last_long_counter + 1) {
        m_told.err +=
            " stream DW counter discontiutiy. Prev DW counter : " + std::to_string(m_last_long_counter) +
            ", current DW counter : " + std::to_string(long_counter) + "\n";
    }
    m_last_long_counter = long_counter;
    return long_counter;
}

void Own_Probe::deliver(Band band, Channels& values) {
    if (reaches_converter(m_listening, band, m_told)) {
        gain.correct(band, values);
        packets.take(band, values);
    }
}

void Own_Probe::resync() {
    m_told.out += "reset_and_resync_counters requested.\n";
    m_wraps = 0;
}

} // namespace Pelgar::ORBE::road_model
