#include "Road_Corpus.h"

#include "Road_Step.h"

#include <initializer_list>

namespace Pelgar::ORBE::test {

namespace {

using namespace road_step;

// The first byte of an input.
constexpr unsigned own_way = 0;
constexpr unsigned host_mode = 1;
constexpr unsigned by_hand = 2; // the threads work when a step says so
constexpr unsigned with_gains = 4;
constexpr unsigned short_queues = 16;

class Road {
public:
    explicit Road(unsigned way, unsigned block = 0, unsigned rhd_streams = 0, unsigned listening = 0,
                  unsigned gain_seed = 0, unsigned wiring = 0) {
        add({way, block, rhd_streams, listening, gain_seed, wiring});
    }

    Road& step(Step step, std::initializer_list<unsigned> bytes = {}) {
        add({step});
        return add(bytes);
    }

    Road& super_frames_of(unsigned port, unsigned count) {
        return step(super_frames, {port | (count - 1) << 2});
    }

    Road& frame_of(unsigned port, unsigned number) {
        return step(set_frame, {port | number >> 16 << 2, number & 0xFF, number >> 8 & 0xFF});
    }

    Road& ttl(unsigned word) {
        return step(set_ttl, {word & 0xFF, word >> 8 & 0xFF, word >> 16 & 0xFF, word >> 24});
    }

    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

private:
    Road& add(std::initializer_list<unsigned> bytes) {
        for (const unsigned byte : bytes) {
            m_bytes.push_back(static_cast<std::uint8_t>(byte));
        }
        return *this;
    }

    std::vector<std::uint8_t> m_bytes;
};

constexpr unsigned all_streams = 31;

} // namespace

std::vector<std::pair<std::string, std::vector<std::uint8_t>>> road_corpus() {
    std::vector<std::pair<std::string, std::vector<std::uint8_t>>> inputs;
    const auto add = [&inputs](const std::string& name, const Road& road) {
        inputs.emplace_back(name, road.bytes());
    };
    for (const unsigned way : {own_way, host_mode}) {
        const std::string name = way == host_mode ? "host_" : "own_";
        add(name + "packets",
            Road(way, 5).super_frames_of(0, 16).super_frames_of(0, 16).super_frames_of(0, 1));
        add(name + "gains", Road(way | with_gains, 0, 0, 0, 9)
                                .super_frames_of(1, 16)
                                .step(gains, {44})
                                .super_frames_of(1, 16)
                                .super_frames_of(1, 2));
        add(name + "all_streams", Road(way, 2, 1)
                                      .ttl(0x300)
                                      .step(turns, {all_streams})
                                      .step(turns, {all_streams})
                                      .ttl(0x10000)
                                      .step(turns, {all_streams})
                                      .step(turns, {all_streams}));
        add(name + "frame_counter_wraps",
            Road(way, 1).frame_of(0, 0xFFFF3).super_frames_of(0, 3).frame_of(0, 3).super_frames_of(0, 3));
        add(name + "lost_super_frames", Road(way, 1)
                                            .super_frames_of(2, 14)
                                            .step(skip_frames, {2, 26, 0})
                                            .super_frames_of(2, 16)
                                            .step(skip_frames, {2, 1, 0})
                                            .super_frames_of(2, 4));
        add(name + "lost_rows",
            Road(way, 3).super_frames_of(0, 9).step(leave_out_rows, {200, 1}).super_frames_of(0, 16));
        add(name + "wrong_tag",
            Road(way, 3).super_frames_of(0, 9).step(set_byte, {100, 5, 0x11}).super_frames_of(0, 9));
        add(name + "row_repeated",
            Road(way, 3).super_frames_of(0, 9).step(repeat_rows, {50, 1}).super_frames_of(0, 9));
        add(name + "rows_exchanged",
            Road(way, 3).super_frames_of(0, 9).step(exchange_rows, {77, 65}).super_frames_of(0, 9));
        add(name + "no_marker", Road(way, 3)
                                    .super_frames_of(0, 9)
                                    .step(set_byte, {40, 0, 0x10})
                                    .step(end_transfer)
                                    .super_frames_of(0, 9));
        add(name + "rhd_out_of_step", Road(way, 0, 2)
                                          .step(rhd_frames, {9})
                                          .step(leave_out_rows, {30, 3})
                                          .step(end_transfer)
                                          .step(skip_rhd, {5, 0})
                                          .step(rhd_frames, {9}));
        add(name + "nobody_listens", Road(way | 8, 0, 0, 0x25)
                                         .step(turns, {all_streams})
                                         .step(turns, {all_streams})
                                         .super_frames_of(0, 13)
                                         .super_frames_of(1, 13));
        Road lost(way | by_hand | short_queues, 0);
        for (unsigned transfer = 0; transfer < 6; ++transfer) {
            lost.step(turns, {all_streams}).step(turns, {all_streams}).step(end_transfer);
            if (transfer == 3) {
                lost.step(work, {1});
            }
        }
        add(name + "lost_transfers", lost.step(work, {all_streams})
                                         .step(turns, {15})
                                         .step(end_transfer)
                                         .step(turns, {all_streams})
                                         .super_frames_of(3, 16));
        // Two transfers find room; the second one's last super frame goes on in the third, which does not.
        add(name + "super_frame_torn_by_loss", Road(way | by_hand | short_queues, 0)
                                                   .super_frames_of(0, 3)
                                                   .step(end_transfer)
                                                   .super_frames_of(0, 3)
                                                   .step(cut, {240})
                                                   .step(end_transfer)
                                                   .super_frames_of(0, 2)
                                                   .step(end_transfer)
                                                   .step(work, {all_streams})
                                                   .super_frames_of(0, 16)
                                                   .step(end_transfer)
                                                   .step(work, {all_streams})
                                                   .super_frames_of(0, 16));
        add(name + "forgotten", Road(way, 4)
                                    .super_frames_of(0, 7)
                                    .step(rhd_frames, {2})
                                    .step(end_transfer)
                                    .step(forget)
                                    .step(resync)
                                    .super_frames_of(0, 16)
                                    .step(rhd_frames, {4}));
    }
    Road full(own_way);
    for (unsigned i = 0; i < 9; ++i) {
        full.step(rhd_frames, {63});
    }
    add("own_adc_queue_full", full);
    add("own_whole_block", Road(own_way, 0xFF).step(whole_block, {1}).super_frames_of(1, 1));
    add("host_restarted", Road(host_mode, 0)
                              .super_frames_of(0, 16)
                              .step(rhd_frames, {20})
                              .step(end_transfer)
                              .step(restart)
                              .super_frames_of(0, 16)
                              .super_frames_of(0, 16)
                              .step(rhd_frames, {20})
                              .step(end_transfer)
                              .step(pause, {0})
                              .super_frames_of(0, 5)
                              .step(pause, {1})
                              .super_frames_of(0, 16)
                              .super_frames_of(0, 16));
    // Samples of the probe whose level was lost with frames of the ADC inputs.
    for (const unsigned before : {0U, 0x100U}) {
        add("host_sync_lost_behind_" + std::to_string(before), Road(host_mode)
                                                                   .ttl(before)
                                                                   .step(rhd_frames, {4})
                                                                   .step(skip_rhd, {15, 0})
                                                                   .ttl(0x100 - before)
                                                                   .step(rhd_frames, {9})
                                                                   .super_frames_of(0, 16)
                                                                   .super_frames_of(0, 16)
                                                                   .super_frames_of(0, 6));
    }
    // Ten wraps of the frame counter on, over two gaps that can be nothing else; then a gap of less than
    // three wraps, or of more, where the probe may have begun anew.
    for (const unsigned frame : {1'300U, 780'000U}) {
        add("host_gap_to_" + std::to_string(frame), Road(host_mode, 0)
                                                        .super_frames_of(0, 12)
                                                        .frame_of(0, 7)
                                                        .super_frames_of(0, 4)
                                                        .frame_of(0, 600'003)
                                                        .super_frames_of(0, 4)
                                                        .frame_of(0, frame)
                                                        .super_frames_of(0, 16));
    }
    // The first input at its thresholds, and one step beyond: the lowest bits of a stamp are added to it.
    Road thresholds(host_mode);
    for (const unsigned level : {0xB333U, 0xB334U, 0x947BU, 0x947AU}) {
        thresholds.step(set_rhd_stamp, {0, 0, 0, 0})
            .step(set_adc, {level & 0xFF, level >> 8})
            .step(rhd_frames, {0});
    }
    add("host_adc_thresholds", thresholds.step(rhd_frames, {3}));
    for (unsigned wiring = 0; wiring < 6; ++wiring) {
        add("host_sync_" + std::to_string(wiring), Road(host_mode, 0, 0, 0, 0, wiring | wiring << 6)
                                                       .ttl(0x8f00)
                                                       .step(set_adc, {0, 0xC0})
                                                       .step(rhd_frames, {5})
                                                       .ttl(0)
                                                       .step(set_adc, {0, 0x80})
                                                       .step(rhd_frames, {20})
                                                       .super_frames_of(0, 16)
                                                       .super_frames_of(0, 10));
    }
    return inputs;
}

} // namespace Pelgar::ORBE::test
