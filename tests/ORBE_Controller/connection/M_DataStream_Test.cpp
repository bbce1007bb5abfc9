#include "connection/M_DataStream.h"

#include "Fake_ORBE_Controller.h"
#include "Printed.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Pelgar::ORBE::GPIO_Module;
using Pelgar::ORBE::I_InputDataStream;
using Pelgar::ORBE::M_DataStream;
using Pelgar::ORBE::ORBE_Configurator;
using Pelgar::ORBE::test::Fake_ORBE_Controller;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::text_thrown_by;
using Pelgar::ORBE::test::write_of;

using Accesses = std::vector<Register_Access>;
using Setup_Call = Fake_ORBE_Controller::Setup_Call;
using Read_Call = Fake_ORBE_Controller::Read_Call;

constexpr unsigned buffer_size = 64;

struct alignas(4096) Page {
    unsigned char bytes[8192] = {};
};

class MDataStream : public testing::Test {
protected:
    unsigned char* buffer() { return m_page->bytes; }

    std::unique_ptr<Page> m_page = std::make_unique<Page>();
    Fake_ORBE_Controller m_controller;
    M_DataStream& m_stream = m_controller.data_stream();
};

const std::string wait_label = "Interrupt wait duration : ";
const std::string wait_unit = " ms \n";

// Whether the text is one line that tells the duration of a wait, a whole number, and nothing more.
bool is_wait_line(const std::string& text) {
    if (!text.starts_with(wait_label) || !text.ends_with(wait_unit) ||
        text.size() <= wait_label.size() + wait_unit.size()) {
        return false;
    }
    const auto digits = text.substr(wait_label.size(), text.size() - wait_label.size() - wait_unit.size());
    return digits.find_first_not_of("0123456789") == std::string::npos;
}

TEST_F(MDataStream, PrepareTogglesTheEndOfPacketModeAndHandsTheBufferOver) {
    const auto printed = printed_by([&] { m_stream.prepare_buffer_for_hw_read(buffer(), buffer_size); });
    EXPECT_EQ(m_controller.registers().accesses(),
              (Accesses{read_of(0x0, 0), write_of(0x0, 0), read_of(0x0, 0), write_of(0x0, 0x80)}));
    EXPECT_EQ(m_controller.setup_calls(), (std::vector<Setup_Call>{{buffer(), buffer_size, 0, 1000}}));
    EXPECT_EQ(printed.out, "Setting Windows mode\n");
    EXPECT_EQ(printed.err, "");
}

// A stream that notes what had been done to the registers when it was set up.
class Setup_Witness final : public I_InputDataStream {
public:
    explicit Setup_Witness(const Register_Recorder& registers) : m_registers(registers) {}

    bool setup_read(std::uint8_t*, std::uint32_t, std::uint8_t, std::uint32_t) override {
        m_writes_before_setup = m_registers.writes().size();
        return false;
    }

    std::uint32_t read_stream(std::uint64_t, bool) override { return 0; }

    std::size_t writes_before_setup() const { return m_writes_before_setup; }

private:
    const Register_Recorder& m_registers;
    std::size_t m_writes_before_setup = 0;
};

TEST_F(MDataStream, PrepareTogglesBeforeItHandsTheBufferOver) {
    Register_Recorder registers;
    Setup_Witness witness(registers);
    const auto gpio = std::make_shared<GPIO_Module>(&registers, 0x0);
    M_DataStream stream(nullptr, std::make_shared<ORBE_Configurator>(gpio), &witness);
    stream.prepare_buffer_for_hw_read(buffer(), buffer_size);
    EXPECT_EQ(witness.writes_before_setup(), 2U);
    EXPECT_EQ(registers.writes().size(), 2U);
}

TEST_F(MDataStream, PrepareRefusesABufferThatIsNotAlignedToWords) {
    const auto printed = printed_by([&] {
        for (const unsigned offset : {1U, 2U, 3U, 4097U}) {
            m_stream.prepare_buffer_for_hw_read(buffer() + offset, buffer_size);
        }
    });
    EXPECT_EQ(printed.out, "Buffer must be DW aligned\nBuffer must be DW aligned\n"
                           "Buffer must be DW aligned\nBuffer must be DW aligned\n");
    EXPECT_TRUE(m_controller.registers().accesses().empty());
    EXPECT_TRUE(m_controller.setup_calls().empty());
}

TEST_F(MDataStream, PrepareTellsOfABufferThatIsNotAlignedToAPageAndGoesOn) {
    const auto printed = printed_by([&] { m_stream.prepare_buffer_for_hw_read(buffer() + 4, buffer_size); });
    EXPECT_EQ(printed.out, "Buffer is not page aligned\nSetting Windows mode\n");
    EXPECT_EQ(m_controller.setup_calls(), (std::vector<Setup_Call>{{buffer() + 4, buffer_size, 0, 1000}}));
}

TEST_F(MDataStream, ReadLandsInThePreparedBufferWhateverBufferItIsGiven) {
    m_stream.prepare_buffer_for_hw_read(buffer(), buffer_size);
    m_controller.queue_stream_read({1, 2, 3});
    m_controller.queue_stream_read({});
    unsigned char* other = buffer() + 4096;
    EXPECT_EQ(m_stream.read(other, 1, true), 3U);
    EXPECT_EQ(m_stream.read(other, 1, false), 0U);
    EXPECT_EQ(std::vector<unsigned char>(buffer(), buffer() + 3), (std::vector<unsigned char>{1, 2, 3}));
    EXPECT_EQ(other[0], 0);
    EXPECT_EQ(m_controller.read_calls(), (std::vector<Read_Call>{{0, true}, {0, false}}));
}

TEST_F(MDataStream, ReadRefusesABufferThatIsNotAlignedToWords) {
    m_stream.prepare_buffer_for_hw_read(buffer(), buffer_size);
    m_controller.queue_stream_read({1});
    const auto printed = printed_by([&] { EXPECT_EQ(m_stream.read(buffer() + 2, buffer_size, true), 0U); });
    EXPECT_EQ(printed.out, "Buffer must be DW aligned\n");
    EXPECT_TRUE(m_controller.read_calls().empty());
}

TEST_F(MDataStream, ReadTellsOfABufferThatIsNotAlignedToAPageAndGoesOn) {
    m_stream.prepare_buffer_for_hw_read(buffer(), buffer_size);
    m_stream.read(buffer(), buffer_size, true);
    m_controller.queue_stream_read({1});
    const auto printed = printed_by([&] { EXPECT_EQ(m_stream.read(buffer() + 8, buffer_size, true), 1U); });
    EXPECT_EQ(printed.out, "Buffer is not page aligned\n");
}

// Brings the process-wide counter of the reads to where the next read prints, and returns the number of reads
// that took.
int read_until_a_wait_was_just_printed(M_DataStream& stream, unsigned char* buffer) {
    for (int reads = 1; reads <= 256; ++reads) {
        if (!printed_by([&] { stream.read(buffer, buffer_size, true); }).out.empty()) {
            return reads;
        }
    }
    return 0;
}

TEST_F(MDataStream, WaitIsPrintedForTheFirstAndThenForEvery256thRead) {
    ASSERT_NE(read_until_a_wait_was_just_printed(m_stream, buffer()), 0);
    for (int round = 0; round < 2; ++round) {
        const auto quiet = printed_by([&] {
            for (int i = 0; i < 255; ++i) {
                m_stream.read(buffer(), buffer_size, true);
            }
        });
        EXPECT_EQ(quiet.out, "");
        const auto printed = printed_by([&] { m_stream.read(buffer(), buffer_size, true); });
        EXPECT_TRUE(is_wait_line(printed.out)) << printed.out;
    }
}

TEST_F(MDataStream, ReadThatThrowsIsPassedOnAndNotCounted) {
    ASSERT_NE(read_until_a_wait_was_just_printed(m_stream, buffer()), 0);
    m_controller.queue_stream_error("c2h transfer failed");
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_stream.read(buffer(), buffer_size, true); }),
              "c2h transfer failed");
    const auto quiet = printed_by([&] {
        for (int i = 0; i < 255; ++i) {
            m_stream.read(buffer(), buffer_size, true);
        }
    });
    EXPECT_EQ(quiet.out, "");
    const auto printed = printed_by([&] { m_stream.read(buffer(), buffer_size, true); });
    EXPECT_TRUE(is_wait_line(printed.out)) << printed.out;
}

// A stream whose reads take a known time at least.
class Slow_Stream final : public I_InputDataStream {
public:
    static constexpr std::chrono::milliseconds duration{5};

    bool setup_read(std::uint8_t*, std::uint32_t, std::uint8_t, std::uint32_t) override { return true; }

    std::uint32_t read_stream(std::uint64_t, bool) override {
        std::this_thread::sleep_for(duration);
        return 7;
    }
};

TEST_F(MDataStream, WaitIsInMicrosecondsUnderItsLabelOfMilliseconds) {
    ASSERT_NE(read_until_a_wait_was_just_printed(m_stream, buffer()), 0);
    for (int i = 0; i < 255; ++i) {
        m_stream.read(buffer(), buffer_size, true);
    }
    Slow_Stream slow;
    M_DataStream stream(nullptr, nullptr, &slow);
    const auto printed = printed_by([&] { EXPECT_EQ(stream.read(buffer(), buffer_size, true), 7U); });
    ASSERT_TRUE(is_wait_line(printed.out)) << printed.out;
    const long long number = std::stoll(printed.out.substr(wait_label.size()));
    EXPECT_GE(number, 5'000) << "less than the read took, in microseconds";
    EXPECT_LT(number, 5'000'000) << "more than the read took, in nanoseconds";
}

TEST_F(MDataStream, DisablingTheSourceResetsTheConfiguration) {
    m_controller.registers().set_value(0x0, 0xFFFF'FFFF);
    m_stream.disable_data_source();
    EXPECT_EQ(m_controller.registers().accesses(), (Accesses{write_of(0x0, 0)}));
}

} // namespace
