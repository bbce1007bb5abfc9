// Acquisition from the box's DMA stream to the host's packets, through the exported functions.
#include "Box_Fixture.h"
#include "Gain_Calibration_File.h"
#include "Stream_Check.h"

#include "expectation/ADC_Model.h"
#include "generator/Recording_Generator.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Neuropixels::closeBS;
using Neuropixels::start_acquisition;
using Neuropixels::stop_acquisition;
using Neuropixels::SUCCESS;
using Accesses = std::vector<Register_Access>;
using Fault = DMA_Read_Fault;

constexpr std::uint64_t block = 1792;
constexpr std::uint32_t mebibyte = 1U << 20U;

class Streaming : public Box_Fixture {
protected:
    static constexpr std::uint32_t config = Virtual_Box::configuration;

    void start() { ASSERT_EQ(start_acquisition(slot, 1), SUCCESS); }

    DMA_Source& source() { return m_box->stream(); }

    // The packets of whole blocks.
    static std::uint64_t packets_of(std::uint64_t blocks) { return blocks * block / 12; }

    static void expect_no_differences(const Stream_Check& check) {
        EXPECT_EQ(check.differences(), std::vector<std::string>{});
    }

    // Packets that nobody was due to receive.
    static std::size_t left_over() {
        std::size_t count = npoe_adapter::current_rhd_converter()->queue().size();
        for (int port = 1; port <= 4; ++port) {
            count += npoe_adapter::current_np_converter(port)->queue().size();
        }
        return count;
    }
};

TEST_F(Streaming, StartAndStopMakeExactlyTheseRegisterAccesses) {
    open();
    source().set_limit(0);
    start();
    EXPECT_EQ(
        m_box->accesses(),
        (Accesses{read_of(config, 0x5C0), write_of(config, 0x5CF), read_of(config, 0x5CF),
                  write_of(config, 0x7CF), read_of(config, 0x7CF), write_of(config, 0x5CF),
                  write_of(RHD_Interface_Model::mode, 2), write_of(RHD_Interface_Model::enabled_streams, 0),
                  write_of(RHD_Interface_Model::ttl_out, 0x12345678),
                  write_of(RHD_Interface_Model::acquisition_trigger, 1)}));
    m_box->forget_accesses();
    EXPECT_EQ(stop_acquisition(slot, 1), SUCCESS);
    EXPECT_EQ(m_box->accesses(), (Accesses{read_of(config, 0x5CF), write_of(config, 0x5C0),
                                           write_of(RHD_Interface_Model::enabled_streams, 0)}));
}

TEST_F(Streaming, PacketsOfAllPortsAndOfTheADCAreExact) {
    open();
    Stream_Check check(source());
    start();
    EXPECT_TRUE(check.run_to(4 * block + 500));
    EXPECT_EQ(left_over(), 0U);
    for (unsigned port = 1; port <= 4; ++port) {
        EXPECT_EQ(check.packets(port), packets_of(4));
    }
    EXPECT_GT(check.adc_packets(), 4 * block);
    check.finish();
    expect_no_differences(check);
    EXPECT_EQ(stop_acquisition(slot, 1), SUCCESS);
    EXPECT_EQ(closeBS(slot), SUCCESS);
}

TEST_F(Streaming, BytesOfTheStreamAreThoseOfARecordingOfTheSameSeed) {
    open();
    std::vector<std::uint8_t> stream;
    source().set_limit(1000);
    source().set_observer([&](std::span<const std::uint8_t> bytes) {
        stream.insert(stream.end(), bytes.begin(), bytes.end());
    });
    start();
    while (!source().is_held_back()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(stop_acquisition(slot, 1), SUCCESS);
    auto options = stream_options();
    options.super_frames = 1000;
    EXPECT_EQ(stream, recording::make_recording(options)) << "four whole reads, and the rest when they stop";
}

TEST_F(Streaming, StoppingAndStartingAgainLosesNothing) {
    open();
    Stream_Check check(source());
    start();
    EXPECT_TRUE(check.run_to(block + 600));
    check.pause();
    EXPECT_EQ(stop_acquisition(slot, 1), SUCCESS);
    start();
    check.resume();
    EXPECT_TRUE(check.run_to(3 * block + 600));
    check.finish();
    expect_no_differences(check);
    for (unsigned port = 1; port <= 4; ++port) {
        EXPECT_EQ(check.packets(port), packets_of(3));
    }
    EXPECT_EQ(m_log.count("End of main pump thread (2,1)"), 1);
}

TEST_F(Streaming, ClosingWithoutStoppingEndsThePumpAndTheReaders) {
    open();
    Stream_Check check(source());
    start();
    EXPECT_TRUE(check.run_to(block + 600));
    std::thread reader([&] {
        Neuropixels::electrodePacket packet;
        int actual = -1;
        EXPECT_EQ(Neuropixels::readElectrodeData(slot, 3, 0, &packet, &actual, 1), SUCCESS);
        EXPECT_EQ(actual, 0);
    });
    check.finish();
    EXPECT_EQ(closeBS(slot), SUCCESS);
    reader.join();
    expect_no_differences(check);
    EXPECT_EQ(m_log.count("End of main pump thread (2,1)"), 1);
    EXPECT_EQ(m_box->value(config), 0U);
}

TEST_F(Streaming, FailingReadEndsThePumpAndANewOpeningStreamsAgain) {
    open();
    source().fail_read(12, {Fault::Kind::fails});
    {
        Stream_Check check(source());
        start();
        check.allow(DMA_Source::unlimited);
        wait_for_log("error in main pump thread (2,1)");
        EXPECT_EQ(m_log.count(-1, "pump_hw_data_to_demux exception catched : c2h transfer failed"), 1);
        EXPECT_TRUE(check.wait_until_idle());
        EXPECT_EQ(error_level(), Error_Level::dma_pump);
        EXPECT_EQ(check.packets(1), packets_of(1)) << "11 reads hold one block and the row after it";
        check.finish();
        expect_no_differences(check);
    }
    m_box->forget_accesses();
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(m_log.count(-1, "Skipping commands for disabling streams ( m_current_error_level > 0 )"), 1);
    EXPECT_EQ(m_box->accesses(), Accesses{}) << "a box that fails is left alone";

    open();
    const std::uint64_t before = source().ticks();
    Stream_Check check(source(), Stream_Check::ADC_Status::not_compared);
    start();
    EXPECT_TRUE(check.run_to(before + 2 * block + 600));
    check.finish();
    expect_no_differences(check);
    EXPECT_EQ(check.packets(4), packets_of(2));
    EXPECT_EQ(stop_acquisition(slot, 1), SUCCESS);
}

TEST_F(Streaming, ShortAndEmptyReadsLoseNothing) {
    open();
    source().fail_read(2, {Fault::Kind::short_read, 4096});
    source().fail_read(3, {Fault::Kind::short_read, 0});
    source().fail_read(4, {Fault::Kind::short_read, 16});
    source().fail_read(9, {Fault::Kind::short_read, 1000 * 16});
    Stream_Check check(source());
    const Printed printed = printed_by([&] {
        start();
        EXPECT_TRUE(check.run_to(2 * block + 600));
    });
    check.finish();
    expect_no_differences(check);
    EXPECT_EQ(check.packets(2), packets_of(2));
    for (const char* line : {"R:4096 byte read from device\n", "R:0 byte read from device\n",
                             "R:16 byte read from device\n", "R:16000 byte read from device\n"}) {
        const auto at = printed.out.find(line);
        EXPECT_NE(at, std::string::npos) << line;
        EXPECT_EQ(printed.out.find(line, at + 1), std::string::npos) << line;
    }
}

TEST_F(Streaming, ReadThatCutsARowLosesThatRowOnly) {
    open();
    // The rest of the row comes alone in the next read, which is too short to be one.
    source().fail_read(3, {Fault::Kind::short_read, 5000 * 16 + 8});
    source().fail_read(4, {Fault::Kind::short_read, 8});
    Stream_Check check(source());
    const Printed printed = printed_by([&] {
        start();
        EXPECT_TRUE(check.run_to(3 * block + 600));
    });
    check.finish();
    expect_no_differences(check);
    EXPECT_NE(printed.err.find("Buffer size incompatible\n"), std::string::npos);
    EXPECT_EQ(m_log.count(-2, "Transfer buffer dropped : Buffer must contain at least 16 byte"), 1);
    std::uint64_t most = 0;
    for (unsigned port = 1; port <= 4; ++port) {
        most = std::max(most, check.packets(port));
    }
    EXPECT_EQ(most, packets_of(3)) << "the ports that lost nothing";
}

TEST_F(Streaming, PortThatLosesItsLinkStopsAndTheOthersGoOn) {
    open();
    Stream_Check check(source());
    start();
    EXPECT_TRUE(check.run_to(block + 600));
    m_box->lock_at_look(1, std::nullopt);
    EXPECT_TRUE(check.run_to(3 * block + 600));
    check.finish();
    expect_no_differences(check);
    EXPECT_EQ(check.packets(1), packets_of(3));
    EXPECT_EQ(check.packets(2), packets_of(1));
    EXPECT_EQ(check.packets(3), packets_of(3));
    EXPECT_EQ(check.packets(4), packets_of(3));
    EXPECT_EQ(closeBS(slot), SUCCESS);
}

TEST_F(Streaming, RHDStreamsAloneReachTheHost) {
    open();
    std::vector<std::uint8_t> bytes;
    source().set_observer(
        [&](std::span<const std::uint8_t> piece) { bytes.assign(piece.begin(), piece.end()); });
    source().set_limit(400);
    const auto controller = npoe_adapter::current_controller();
    controller->enable_streaming(false, {}, true, {0, 3, 31}, false);
    EXPECT_EQ(m_box->value(RHD_Interface_Model::enabled_streams), 0x80000009U);
    EXPECT_TRUE(controller->pump_data_to_demux());
    recording::ADC_Model model(3);
    ASSERT_GT(bytes.size(), 0U);
    model.feed(bytes);
    std::size_t frames = 0;
    while (const recording::ADC_Packet* const due = model.next()) {
        recording::ADC_Packet packet;
        Neuropixels::PacketInfo info{};
        int actual = 0;
        EXPECT_EQ(Neuropixels::ADC_readPackets(slot, &info, packet.samples.data(), 12, 1, &actual), SUCCESS);
        packet.status = info.Status;
        ASSERT_EQ(actual, 1);
        ASSERT_EQ(packet, *due) << "frame " << frames;
        ++frames;
    }
    EXPECT_EQ(frames, 399U) << "the last one's end is in an unfinished row";
}

TEST_F(Streaming, LinkFailureLeavesTheStreamToTheBox) {
    open();
    m_box->headstage(0).fail_from(1, Link_Fault::silence);
    EXPECT_EQ(Neuropixels::openPort(slot, 1), Neuropixels::FAILED);
    EXPECT_EQ(error_level(), Error_Level::probe_link);
    Stream_Check check(source());
    start();
    EXPECT_TRUE(check.run_to(block + 600));
    check.finish();
    expect_no_differences(check);
    m_box->forget_accesses();
    source().set_limit(DMA_Source::unlimited);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(m_log.count(-1, "Skipping commands for disabling streams ( m_current_error_level > 0 )"), 1);
    EXPECT_EQ(m_box->accesses(), Accesses{});
}

// Gain corrections of one port, with a factor of its own for every electrode and gain code.
class Corrected_Streaming : public Streaming {
protected:
    static constexpr int port = 2;

    static std::string factor_text(std::size_t electrode, std::size_t k) {
        return "0." + std::to_string(1000 + electrode * 7 % 5000 + k * 311);
    }

    static void correct(std::int16_t& sample, std::size_t electrode, std::size_t k) {
        const float factor = std::stof(factor_text(electrode, k));
        const auto value = static_cast<float>(static_cast<std::uint16_t>(sample));
        sample = static_cast<std::int16_t>(value * factor);
    }

    static std::size_t ap_code(std::size_t channel) { return channel % 8; }

    static std::size_t lfp_code(std::size_t channel) { return channel % 5; }

    static std::size_t bank(std::size_t channel) { return channel % 2; }

    static void configure() {
        Gain_Calibration_File file;
        file.factor = factor_text;
        file.write();
        ASSERT_EQ(Neuropixels::setGainCalibration(slot, port, 0, file.path.c_str()), SUCCESS);
        for (int channel = 0; channel < 384; ++channel) {
            const auto number = static_cast<std::size_t>(channel);
            ASSERT_EQ(Neuropixels::setGain(slot, port, 0, channel, static_cast<int>(ap_code(number)),
                                           static_cast<int>(lfp_code(number))),
                      SUCCESS);
            if (channel != 191) {
                ASSERT_EQ(
                    Neuropixels::selectElectrode(slot, port, 0, channel, 0, static_cast<int>(bank(number))),
                    SUCCESS);
            }
        }
    }

    static void correct_packet(unsigned of_port, Neuropixels::electrodePacket& packet) {
        if (of_port != port) {
            return;
        }
        for (std::size_t channel = 0; channel < 384; ++channel) {
            const std::size_t electrode = channel == 191 ? channel : bank(channel) * 384 + channel;
            for (auto& row : packet.apData) {
                correct(row[channel], electrode, ap_code(channel));
            }
            correct(packet.lfpData[channel], electrode, 8 + lfp_code(channel));
        }
    }
};

TEST_F(Corrected_Streaming, SamplesCarryTheCalibrationOfTheirPort) {
    open();
    configure();
    Stream_Check check(source());
    check.set_correction(correct_packet);
    start();
    EXPECT_TRUE(check.run_to(block + 600));
    check.finish();
    expect_no_differences(check);
    EXPECT_EQ(check.packets(port), packets_of(1));
}

TEST_F(Corrected_Streaming, MissingCorrectionWouldBeSeen) {
    open();
    configure();
    Stream_Check check(source());
    start();
    EXPECT_TRUE(check.run_to(block + 600));
    check.finish();
    EXPECT_EQ(check.differences(), (std::vector<std::string>{"port 2 : packet 0 differs"}));
}

TEST_F(Streaming, LongAcquisitionIsExactToTheLastSample) {
    constexpr std::uint64_t super_frames = 30'000ULL * ORBE_BOX_ROAD_SECONDS;
    constexpr std::uint64_t blocks = (super_frames + block - 1) / block;
    open();
    Stream_Check check(source());
    start();
    EXPECT_TRUE(check.run_to(blocks * block + 600));
    EXPECT_EQ(left_over(), 0U);
    check.finish();
    expect_no_differences(check);
    for (unsigned port = 1; port <= 4; ++port) {
        EXPECT_EQ(check.packets(port), packets_of(blocks));
    }
    EXPECT_GE(check.adc_packets(), super_frames);
    EXPECT_EQ(stop_acquisition(slot, 1), SUCCESS);
}

} // namespace
