// Test support, host mode. The virtual box at its own pace under a test of one fact.
#pragma once

#include "Box_Clock.h"
#include "Host_Files.h"

#include "Log_Capture.h"
#include "Virtual_Box_Controller.h"

#include "generator/RHD_Generator.h"
#include "numbers/Hash.h"
#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::test {

class Box_Row : public testing::Test {
protected:
    static constexpr int slot = 2;
    static constexpr int usb_slot = 20;
    static constexpr std::int16_t unwritten = 0x7ABC;
    static constexpr auto patience = std::chrono::seconds(60);

    struct ADC_Row {
        Neuropixels::PacketInfo info;
        std::array<std::int16_t, 28> samples;
    };

    explicit Box_Row(recording::Recording_Options options = ramp_options())
        : m_box(std::make_shared<Virtual_Box>(options)), m_seed(options.seed) {
        *npoe_adapter::g_controller_factory = [box = m_box](bool) {
            return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                             false);
        };
        loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    }

    ~Box_Row() override {
        m_clock.reset();
        Neuropixels::closeBS(slot);
        Neuropixels::closeBS(usb_slot);
        *npoe_adapter::g_controller_factory = {};
    }

    void open_pxi() { open("pxi 2.0.169 3.2.191", slot); }

    void open_usb() { open("usb", usb_slot); }

    // The generator of what the box's ADC and TTL inputs show.
    recording::RHD_Generator rhd_generator() const {
        return {0, recording::mix(m_seed, recording::rhd_stream)};
    }

    static int read_now(int port) {
        Neuropixels::electrodePacket packet;
        int count = -77;
        EXPECT_EQ(Neuropixels::readElectrodeData(slot, port, 1, &packet, &count, 1), Neuropixels::SUCCESS);
        return count;
    }

    static int read_adc_now() {
        Neuropixels::PacketInfo info;
        std::array<std::int16_t, 24> row;
        int count = -77;
        EXPECT_EQ(Neuropixels::ADC_readPackets(usb_slot, &info, row.data(), 24, 1, &count),
                  Neuropixels::SUCCESS);
        return count;
    }

    static int queued(int port) {
        int available = -1;
        int headroom = -1;
        EXPECT_EQ(Neuropixels::getElectrodeDataFifoState(slot, port, 1, &available, &headroom),
                  Neuropixels::SUCCESS);
        return available;
    }

    static void wait_for_queue(int port, int packets) {
        const auto last = std::chrono::steady_clock::now() + patience;
        while (queued(port) < packets && std::chrono::steady_clock::now() < last) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    // The next packets, or fewer when no more come for a long time.
    static std::vector<Neuropixels::electrodePacket> read_packets(int port, std::size_t wanted,
                                                                  int of_slot = slot) {
        std::vector<Neuropixels::electrodePacket> packets(wanted);
        std::size_t got = 0;
        const auto last = std::chrono::steady_clock::now() + patience;
        while (got < wanted && std::chrono::steady_clock::now() < last) {
            int count = 0;
            EXPECT_EQ(Neuropixels::readElectrodeData(of_slot, port, 1, packets.data() + got, &count,
                                                     static_cast<int>(wanted - got)),
                      Neuropixels::SUCCESS);
            got += static_cast<std::size_t>(count);
            if (count == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        packets.resize(got);
        return packets;
    }

    static std::vector<ADC_Row> read_adc(std::size_t wanted, int row_length) {
        const auto length = static_cast<std::size_t>(row_length);
        std::vector<ADC_Row> rows;
        std::vector<Neuropixels::PacketInfo> infos(288);
        const auto last = std::chrono::steady_clock::now() + patience;
        while (rows.size() < wanted && std::chrono::steady_clock::now() < last) {
            std::vector<std::int16_t> samples(288 * length, unwritten);
            const int most = static_cast<int>(std::min<std::size_t>(288, wanted - rows.size()));
            int count = 0;
            EXPECT_EQ(Neuropixels::ADC_readPackets(usb_slot, infos.data(), samples.data(), row_length, most,
                                                   &count),
                      Neuropixels::SUCCESS);
            for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
                ADC_Row row{infos[i], {}};
                row.samples.fill(unwritten);
                std::copy_n(samples.data() + i * length, length, row.samples.begin());
                rows.push_back(row);
            }
            if (count == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        return rows;
    }

    // Blocks until a line that begins so has been logged.
    void wait_for_log_line(const std::string& begin) const {
        const auto last = std::chrono::steady_clock::now() + patience;
        while (std::chrono::steady_clock::now() < last) {
            for (const std::string& text : m_log.texts()) {
                if (text.starts_with(begin)) {
                    return;
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        ADD_FAILURE() << begin << " was not logged";
    }

    Log_Capture m_log;
    std::shared_ptr<Virtual_Box> m_box;
    std::optional<Box_Clock> m_clock;

private:
    void open(const char* line, int opened_slot) {
        select_host_mode(line);
        basestationID_of_line();
        // Another test of the process may have given the device another slot.
        Neuropixels::mapBS(1, usb_slot);
        ASSERT_EQ(Neuropixels::openBS(opened_slot), Neuropixels::SUCCESS);
        m_clock.emplace(m_box->stream());
    }

    static void basestationID_of_line() {
        Neuropixels::basestationID id{};
        ASSERT_EQ(Neuropixels::getDeviceList(&id, 1), 1);
    }

    std::uint64_t m_seed;
};

} // namespace Pelgar::ORBE::test
