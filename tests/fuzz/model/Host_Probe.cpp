#include "Host_Probe.h"

#include "Converter_Link.h"

#include <algorithm>
#include <string>

namespace Pelgar::ORBE::road_model {

namespace {

constexpr std::uint32_t wrap = 1048576;

// Whether each counter is one above the one before, over the wrap as well.
bool counts_on(const std::array<Probe_Frame, frames_per_super_frame>& frames) {
    for (std::size_t i = 1; i < frames.size(); ++i) {
        if (frames[i].counter() != (frames[i - 1].counter() + 1) % wrap) {
            return false;
        }
    }
    return true;
}

} // namespace

void Host_Probe::take_block(const Bytes& block, std::uint32_t lost_before) {
    m_next_frame += std::uint64_t{13} * lost_before;
    m_next_counter = static_cast<std::uint32_t>((m_next_counter + std::uint64_t{13} * lost_before) % wrap);
    for (std::size_t at = 0; at < block.size(); at += super_frame_length) {
        const std::uint8_t* const bytes = block.data() + at;
        if (!begins_super_frame(bytes)) {
            m_told.err += "Super frame align failure\n";
            return;
        }
        Super_Frame frames;
        for (std::size_t number = 0; number < frames.size(); ++number) {
            frames[number] = read_frame(bytes + number * frame_length);
        }
        const bool has_wrong_tags = std::any_of(
            frames.begin(), frames.end(), [](const Probe_Frame& frame) { return frame.wrong_tags != 0; });
        if (has_wrong_tags || !counts_on(frames)) {
            drop(frames);
        } else {
            take(frames);
        }
    }
}

void Host_Probe::drop(const Super_Frame& frames) {
    for (std::size_t number = 0; number < frames.size(); ++number) {
        const Probe_Frame& frame = frames[number];
        damage.wrong_tags += frame.wrong_tags;
        for (unsigned i = 0; i < frame.wrong_tags; ++i) {
            m_told.err += "Warning shift reg mismatch\n";
        }
        if (number == 0) {
            m_told.err += "Super frame dropped because it is damaged, first counter (two part) : " +
                          std::to_string(frame.values[33]) + " " + std::to_string(frame.values[34]) + "\n";
        }
    }
    if (counts_on(frames)) {
        check_continuity(frames[0].counter());
    }
}

void Host_Probe::check_continuity(std::uint32_t first_counter) {
    damage.frame_gaps += first_counter != m_next_counter ? 1U : 0U;
    m_next_counter = (first_counter + 13) % wrap;
}

void Host_Probe::take(const Super_Frame& frames) {
    check_continuity(frames[0].counter());
    const std::uint64_t number = number_of(frames[0].counter());

    // An LFP sample that lost its end is finished by the next one's beginning.
    const std::uint64_t lfp_sample = number / 12;
    if (m_lfp_is_unfinished && lfp_sample != m_lfp_sample) {
        deliver(Band::lfp, m_lfp);
    }
    const auto lfp_slot = static_cast<unsigned>(number % 12);
    for (unsigned adc = 0; adc < 32; ++adc) {
        m_lfp[channel_of(adc, lfp_slot)] = frames[0].values[adc];
        for (unsigned slot = 0; slot < 12; ++slot) {
            m_ap[channel_of(adc, slot)] = frames[slot + 1].values[adc];
        }
    }
    m_lfp_sample = lfp_sample;
    m_lfp_is_unfinished = lfp_slot != 11;
    if (!m_lfp_is_unfinished) {
        deliver(Band::lfp, m_lfp);
    }
    packets.begin_sample(number);
    deliver(Band::ap, m_ap);
}

// The nearest number ahead that begins a super frame and ends in this counter; a probe that counts from 0
// again, or seems to have gone on for more than 8 s, has begun anew.
std::uint64_t Host_Probe::number_of(std::uint32_t first_counter) {
    std::uint64_t frame = first_counter;
    while (frame < m_next_frame || frame % 13 != 0) {
        frame += wrap;
    }
    const bool is_far = frame - m_next_frame > std::uint64_t{3} * wrap;
    const bool goes_on = frame == m_next_frame;
    if (!goes_on && (first_counter == 0 || (is_far && first_counter % 13 == 0))) {
        frame = first_counter;
    }
    m_next_frame = frame + 13;
    return frame / 13;
}

void Host_Probe::deliver(Band band, Channels& values) {
    if (!reaches_converter(m_listening, band, m_told)) {
        return;
    }
    gain.correct(band, values);
    if (band == Band::ap) {
        packets.take_ap(values);
    } else {
        packets.take_lfp(values);
    }
}

} // namespace Pelgar::ORBE::road_model
