// A folder of stand-in files takes the place of the driver's devices: a regular file for the registers, a
// FIFO or a regular file for the stream.
#include "back_ends/CP_Linux_ORBE_Controller.h"

#include "Printed.h"
#include "Temp_Directory.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Pelgar::ORBE::A_ORBE_Controller;
using Pelgar::ORBE::CP_Linux_ORBE_Controller;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::Temp_Directory;
using Pelgar::ORBE::test::text_thrown_by;

namespace fs = std::filesystem;

constexpr std::uintmax_t bar_size = 0x2000;

class CPLinuxORBEController : public testing::Test {
protected:
    CPLinuxORBEController() { m_controller = std::make_unique<CP_Linux_ORBE_Controller>(folder()); }

    std::string folder() const { return m_directory.path().string(); }

    fs::path registers_of(const std::string& device) const { return m_directory.path() / (device + "_user"); }

    fs::path stream_of(const std::string& device) const { return m_directory.path() / (device + "_c2h_0"); }

    void make_registers(const std::string& device, std::uintmax_t size = bar_size) const {
        std::ofstream(registers_of(device)).close();
        fs::resize_file(registers_of(device), size);
    }

    void make_fifo(const fs::path& path) const { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }

    void make_recorded_stream(const std::string& device, const std::string& bytes) const {
        std::ofstream(stream_of(device), std::ios::binary) << bytes;
    }

    void make_device(const std::string& device) const {
        make_registers(device);
        make_fifo(stream_of(device));
    }

    bool open() { return m_controller->open_driver_connection("ORBE_Dext_Driver", true); }

    static std::uint32_t word_in_file(const fs::path& path, std::streamoff offset) {
        std::ifstream file(path, std::ios::binary);
        file.seekg(offset);
        char bytes[4] = {};
        file.read(bytes, sizeof bytes);
        std::uint32_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }

    // The bytes of the file that this process has mapped, all mappings together.
    static std::uintmax_t mapped_bytes(const fs::path& path) {
        std::ifstream maps("/proc/self/maps");
        std::uintmax_t bytes = 0;
        for (std::string line; std::getline(maps, line);) {
            if (line.ends_with(path.string())) {
                std::size_t dash = 0;
                const std::uintmax_t begin = std::stoull(line, &dash, 16);
                bytes += std::stoull(line.substr(dash + 1), nullptr, 16) - begin;
            }
        }
        return bytes;
    }

    Temp_Directory m_directory;
    std::unique_ptr<CP_Linux_ORBE_Controller> m_controller;
};

// The writing end of a FIFO that the back-end reads.
class Fifo_Writer {
public:
    explicit Fifo_Writer(const fs::path& path) : m_descriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC)) {}

    ~Fifo_Writer() { ::close(m_descriptor); }

    Fifo_Writer(const Fifo_Writer&) = delete;
    Fifo_Writer& operator=(const Fifo_Writer&) = delete;

    void write(const std::string& bytes) const {
        EXPECT_EQ(::write(m_descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    // Returns when everything written has been read.
    void wait_until_drained() const {
        int left = 1;
        while (::ioctl(m_descriptor, FIONREAD, &left) == 0 && left != 0) {
            std::this_thread::yield();
        }
    }

private:
    int m_descriptor;
};

TEST(CPLinuxORBEControllerFactory, MakesTheDriversBackEndWithItsModulesAndOpensNothing) {
    std::shared_ptr<A_ORBE_Controller> controller;
    const auto made = printed_by([&] { controller = A_ORBE_Controller::get_instance(false); });
    EXPECT_EQ(made.out, "A_ORBE_Controller ctor\n"
                        "SPI_Module ctor at base adr : 500\n"
                        "GPIO_Module ctor at base adr : 200\n"
                        "GPIO_Module ctor at base adr : 0\n"
                        "GPIO_Module ctor at base adr : 8\n"
                        "UART_Module ctor at base adr : 400\n"
                        "XADC_Module ctor at base adr : 800\n"
                        "Okelly_Adapter_Module ctor at base adr : 1000\n"
                        "AXI_Stream_Fifo_Module ctor at base adr : 1200\n"
                        "HW_ICAP_Module ctor at base adr : 1400\n"
                        "Foreign HW_ICAP_Module ctor at base adr : 400\n"
                        "GPIO_Module ctor at base adr : 1600\n");
    EXPECT_EQ(made.err, "");
    EXPECT_NE(dynamic_cast<CP_Linux_ORBE_Controller*>(controller.get()), nullptr);
    const auto released = printed_by([&] { controller.reset(); });
    EXPECT_EQ(released.out, "CP_Linux_ORBE_Controller dtor, closing driver connection\n"
                            "A_ORBE_Controller dtor\n");
}

TEST_F(CPLinuxORBEController, WithoutADeviceNothingIsOpened) {
    std::ofstream(m_directory.path() / "xdma0_control").close();
    std::ofstream(m_directory.path() / "other_user").close();
    make_recorded_stream("xdma0", "");
    const auto printed = printed_by([&] { EXPECT_FALSE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 0\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out, "");
}

TEST_F(CPLinuxORBEController, WithoutADeviceFolderThereIsNoDevice) {
    CP_Linux_ORBE_Controller controller(folder() + "/missing");
    const auto printed =
        printed_by([&] { EXPECT_FALSE(controller.open_driver_connection("ORBE_Dext_Driver", true)); });
    EXPECT_EQ(printed.out, "Devices found: 0\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPLinuxORBEController, OpeningMapsTheWholeRegisterFile) {
    make_device("xdma0");
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n8192 sized bar mapped to user space\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPLinuxORBEController, OfADeviceThatTellsNoSizeTheRegisterSpaceIsMapped) {
    make_registers("xdma0", 0);
    make_fifo(stream_of("xdma0"));
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n65536 sized bar mapped to user space\n");
    // Give the file its size after all, as a device has its registers whatever size it tells.
    fs::resize_file(registers_of("xdma0"), 0x1'0000);
    m_controller->write_register(0xFFFC, 7);
    EXPECT_EQ(word_in_file(registers_of("xdma0"), 0xFFFC), 7U);
}

TEST_F(CPLinuxORBEController, OfALargerBarNoMoreThanTheRegisterSpaceIsMapped) {
    make_registers("xdma0", 0x10'0000);
    make_fifo(stream_of("xdma0"));
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n65536 sized bar mapped to user space\n");
    EXPECT_EQ(mapped_bytes(registers_of("xdma0")), 0x1'0000U);
}

TEST_F(CPLinuxORBEController, LastOfTwoDevicesIsTheOneUsed) {
    make_registers("xdma0");
    make_recorded_stream("xdma0", "zero");
    make_registers("xdma1");
    make_recorded_stream("xdma1", "one!");
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 2\n8192 sized bar mapped to user space\n");
    m_controller->write_register(0x10, 0xCAFE'F00D);
    EXPECT_EQ(word_in_file(registers_of("xdma1"), 0x10), 0xCAFE'F00DU);
    EXPECT_EQ(word_in_file(registers_of("xdma0"), 0x10), 0U);
    std::string buffer(4, ' ');
    m_controller->setup_read(reinterpret_cast<std::uint8_t*>(buffer.data()), 4, 0, 1000);
    EXPECT_EQ(m_controller->read_stream(0, true), 4U);
    EXPECT_EQ(buffer, "one!");
}

TEST_F(CPLinuxORBEController, DevicesAreSortedByTheirNumber) {
    for (const char* device : {"xdma10", "xdma9", "xdma2"}) {
        make_registers(device);
        make_recorded_stream(device, "");
    }
    EXPECT_TRUE(open());
    m_controller->write_register(0x0, 1);
    EXPECT_EQ(word_in_file(registers_of("xdma10"), 0x0), 1U);
    EXPECT_EQ(word_in_file(registers_of("xdma9"), 0x0), 0U);
}

TEST_F(CPLinuxORBEController, RegistersThatCannotBeOpenedAreReported) {
    fs::create_symlink(m_directory.path() / "missing", registers_of("xdma0"));
    make_recorded_stream("xdma0", "");
    const auto printed = printed_by([&] { EXPECT_FALSE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n");
    const std::string reason = "No such file or directory: " + registers_of("xdma0").string();
    EXPECT_EQ(printed.err, "Error opening device, " + reason + "\n");
    EXPECT_EQ(m_controller->open_failure(), reason);
    EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out, "");
}

TEST_F(CPLinuxORBEController, StreamThatCannotBeOpenedIsReported) {
    make_registers("xdma0");
    fs::create_directory(stream_of("xdma0"));
    const auto printed = printed_by([&] { EXPECT_FALSE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n");
    const std::string reason = "Is a directory: " + stream_of("xdma0").string();
    EXPECT_EQ(printed.err, "Error opening device, " + reason + "\n");
    EXPECT_EQ(m_controller->open_failure(), reason);
    EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out, "Closing mm driver handle\n");
}

TEST_F(CPLinuxORBEController, DeviceThatMayNotBeOpenedIsNamed) {
    make_device("xdma0");
    ASSERT_EQ(::chmod(registers_of("xdma0").c_str(), 0), 0);
    ASSERT_EQ(::chmod(folder().c_str(), 0755), 0);
    // The superuser may open everything, so the test gives that up for a while.
    const bool superuser = ::geteuid() == 0;
    ASSERT_EQ(superuser ? ::seteuid(65534) : 0, 0);
    const auto printed = printed_by([&] { EXPECT_FALSE(open()); });
    ASSERT_EQ(superuser ? ::seteuid(0) : 0, 0);
    const std::string reason = "Permission denied: " + registers_of("xdma0").string();
    EXPECT_EQ(printed.err, "Error opening device, " + reason + "\n");
    EXPECT_EQ(m_controller->open_failure(), reason);
}

TEST_F(CPLinuxORBEController, FailureToOpenIsForgottenAfterASuccess) {
    EXPECT_FALSE(open());
    EXPECT_EQ(m_controller->open_failure(), "no device of the XDMA driver in " + folder());
    make_device("xdma0");
    EXPECT_TRUE(open());
    EXPECT_EQ(m_controller->open_failure(), "");
}

TEST_F(CPLinuxORBEController, LinkOfAHigherNumberChoosesItsDevice) {
    for (const char* device : {"xdma0", "xdma1"}) {
        make_registers(device);
        make_recorded_stream(device, device);
    }
    fs::create_symlink(registers_of("xdma0").filename(), registers_of("xdma99"));
    fs::create_symlink(stream_of("xdma0").filename(), stream_of("xdma99"));
    EXPECT_TRUE(open());
    m_controller->write_register(0x0, 1);
    EXPECT_EQ(word_in_file(registers_of("xdma0"), 0x0), 1U);
    EXPECT_EQ(word_in_file(registers_of("xdma1"), 0x0), 0U);
    std::string buffer(5, ' ');
    m_controller->setup_read(reinterpret_cast<std::uint8_t*>(buffer.data()), 5, 0, 1000);
    EXPECT_EQ(m_controller->read_stream(0, true), 5U);
    EXPECT_EQ(buffer, "xdma0");
}

TEST_F(CPLinuxORBEController, RegistersThatCannotBeMappedThrow) {
    make_fifo(registers_of("xdma0"));
    make_recorded_stream("xdma0", "");
    std::string text;
    const auto printed = printed_by([&] { text = text_thrown_by<std::runtime_error>([&] { open(); }); });
    const std::string reason = "No such device: " + registers_of("xdma0").string();
    EXPECT_EQ(text, "Error mapping registers, " + reason);
    EXPECT_EQ(m_controller->open_failure(), reason);
    EXPECT_EQ(printed.out, "Devices found: 1\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out,
              "Closing mm driver handle\nClosing c2h driver handle\n");
}

TEST_F(CPLinuxORBEController, RegistersAreWordsAtByteAddresses) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    m_controller->write_register(0x1054, 0x1234'5678);
    m_controller->write_register(0x1058, 0xFFFF'FFFF);
    EXPECT_EQ(word_in_file(registers_of("xdma0"), 0x1054), 0x1234'5678U);
    EXPECT_EQ(m_controller->read_register(0x1054), 0x1234'5678U);
    EXPECT_EQ(m_controller->read_register(0x1058), 0xFFFF'FFFFU);
    EXPECT_EQ(m_controller->read_register(0x1050), 0U);
}

TEST_F(CPLinuxORBEController, TwoLowBitsOfAnAddressAreDropped) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    m_controller->write_register(0x203, 9);
    EXPECT_EQ(word_in_file(registers_of("xdma0"), 0x200), 9U);
    EXPECT_EQ(m_controller->read_register(0x201), 9U);
    EXPECT_EQ(m_controller->read_register(0x202), 9U);
    EXPECT_EQ(m_controller->read_register(0x204), 0U);
}

TEST_F(CPLinuxORBEController, RegistersShowWhatTheOtherSideWrites) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    std::fstream file(registers_of("xdma0"), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(0x208);
    file.write("\x40\x00\x50\x4E", 4).flush();
    EXPECT_EQ(m_controller->read_register(0x208), 0x4E50'0040U);
}

TEST_F(CPLinuxORBEController, BytesAreWrittenOneByOneToTheSameAddress) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    const std::vector<std::uint8_t> bytes{1, 2, 0xFE};
    m_controller->write_register_bytes(0x404, 3, bytes.data());
    EXPECT_EQ(m_controller->read_register(0x404), 0xFEU);
    EXPECT_EQ(m_controller->read_register(0x408), 0U);
}

TEST_F(CPLinuxORBEController, ReadOfSizeZeroAsksTheDeviceForNothing) {
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 0U); });
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPLinuxORBEController, IncompleteReadReturnsWhatOneReadBrings) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    std::vector<std::uint8_t> buffer(8, 0xEE);
    EXPECT_TRUE(m_controller->setup_read(buffer.data(), 8, 0, 1000));
    const Fifo_Writer writer(stream_of("xdma0"));
    writer.write("abc");
    EXPECT_EQ(m_controller->read_stream(0, false), 3U);
    EXPECT_EQ(buffer, (std::vector<std::uint8_t>{'a', 'b', 'c', 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}));
}

TEST_F(CPLinuxORBEController, CompleteReadPutsShortReadsTogether) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    std::string buffer(9, ' ');
    m_controller->setup_read(reinterpret_cast<std::uint8_t*>(buffer.data()), 9, 0, 1000);
    std::thread device([&] {
        const Fifo_Writer writer(stream_of("xdma0"));
        for (const char* piece : {"abc", "def", "ghijkl"}) {
            writer.write(piece);
            if (piece[0] != 'g') {
                writer.wait_until_drained();
            }
        }
    });
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 9U); });
    device.join();
    EXPECT_EQ(buffer, "abcdefghi");
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(m_controller->read_stream(0, false), 3U) << "what did not fit must wait for the next read";
    EXPECT_EQ(buffer, "jkldefghi");
}

TEST_F(CPLinuxORBEController, EveryReadStartsAtTheBeginningOfTheBuffer) {
    make_registers("xdma0");
    make_recorded_stream("xdma0", "abcdef");
    ASSERT_TRUE(open());
    std::string buffer(3, ' ');
    m_controller->setup_read(reinterpret_cast<std::uint8_t*>(buffer.data()), 3, 0, 1000);
    EXPECT_EQ(m_controller->read_stream(0, true), 3U);
    EXPECT_EQ(buffer, "abc");
    EXPECT_EQ(m_controller->read_stream(0, true), 3U);
    EXPECT_EQ(buffer, "def");
}

TEST_F(CPLinuxORBEController, ReadsThatBringNothingAreGivenUpAfter100001Passes) {
    make_registers("xdma0");
    make_recorded_stream("xdma0", "abc");
    ASSERT_TRUE(open());
    std::string buffer(8, ' ');
    m_controller->setup_read(reinterpret_cast<std::uint8_t*>(buffer.data()), 8, 0, 1000);
    const auto printed = printed_by([&] { EXPECT_EQ(m_controller->read_stream(0, true), 3U); });
    EXPECT_EQ(printed.out, "100001 read_issue_counter.\n");
    EXPECT_EQ(printed.err, "Read timeout.\n");
    EXPECT_EQ(buffer, "abc     ");
    EXPECT_EQ(m_controller->read_stream(0, false), 0U);
}

TEST_F(CPLinuxORBEController, FailedReadIsReportedAndThrows) {
    make_registers("xdma0");
    make_recorded_stream("xdma0", "abc");
    ASSERT_TRUE(open());
    // Memory that the driver may not write to.
    void* page = ::mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    m_controller->setup_read(static_cast<std::uint8_t*>(page), 4096, 0, 1000);
    std::string text;
    const auto printed = printed_by(
        [&] { text = text_thrown_by<std::runtime_error>([&] { m_controller->read_stream(0, true); }); });
    EXPECT_EQ(text, "c2h transfer failed");
    EXPECT_EQ(printed.err, "ReadFile from device failed: 14");
    EXPECT_EQ(printed.out, "");
    ::munmap(page, 4096);
}

TEST_F(CPLinuxORBEController, ReadFromAClosedConnectionFails) {
    std::uint8_t byte = 0;
    m_controller->setup_read(&byte, 1, 0, 1000);
    std::string text;
    const auto printed = printed_by(
        [&] { text = text_thrown_by<std::runtime_error>([&] { m_controller->read_stream(0, false); }); });
    EXPECT_EQ(text, "c2h transfer failed");
    EXPECT_EQ(printed.err, "ReadFile from device failed: 9");
}

std::atomic<int> g_signals{0};

TEST_F(CPLinuxORBEController, ReadInterruptedBySignalsGoesOn) {
    make_device("xdma0");
    ASSERT_TRUE(open());

    g_signals = 0;

    struct sigaction action {};

    struct sigaction previous {};

    action.sa_handler = [](int) { ++g_signals; };
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &previous), 0);
    std::string buffer(3, ' ');
    m_controller->setup_read(reinterpret_cast<std::uint8_t*>(buffer.data()), 3, 0, 1000);
    const pthread_t reader = ::pthread_self();
    std::thread device([&] {
        const Fifo_Writer writer(stream_of("xdma0"));
        constexpr int signals = 50;
        for (int sent = 0; sent < signals; ++sent) {
            ::pthread_kill(reader, SIGUSR1);
            while (g_signals <= sent) {
                std::this_thread::yield();
            }
        }
        writer.write("abc");
    });
    EXPECT_EQ(m_controller->read_stream(0, true), 3U);
    device.join();
    EXPECT_EQ(::sigaction(SIGUSR1, &previous, nullptr), 0);
    EXPECT_EQ(g_signals, 50);
    EXPECT_EQ(buffer, "abc");
}

TEST_F(CPLinuxORBEController, ClosingTwiceSaysEachOfItsLinesOnce) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    const auto printed = printed_by([&] {
        m_controller->close_driver_connection();
        m_controller->close_driver_connection();
    });
    EXPECT_EQ(printed.out, "Closing mm driver handle\nClosing c2h driver handle\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPLinuxORBEController, RegistersStayMappedWhenTheConnectionIsClosed) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    m_controller->close_driver_connection();
    m_controller->write_register(0x0, 5);
    EXPECT_EQ(m_controller->read_register(0x0), 5U);
}

TEST_F(CPLinuxORBEController, ConnectionCanBeOpenedAnew) {
    make_registers("xdma0");
    make_recorded_stream("xdma0", "ab");
    ASSERT_TRUE(open());
    m_controller->close_driver_connection();
    fs::remove(registers_of("xdma0"));
    make_registers("xdma0", 0x1000);
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n4096 sized bar mapped to user space\n");
    m_controller->write_register(0x0, 5);
    EXPECT_EQ(word_in_file(registers_of("xdma0"), 0x0), 5U);
}

TEST_F(CPLinuxORBEController, OpeningAnewWithoutClosingLeavesNoFileBehind) {
    make_device("xdma0");
    const auto open_files = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    ASSERT_TRUE(open());
    const auto before = open_files();
    ASSERT_TRUE(open());
    EXPECT_EQ(open_files(), before);
}

TEST_F(CPLinuxORBEController, OneMappingIsHeldAtATimeAndNoneAfterwards) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    EXPECT_EQ(mapped_bytes(registers_of("xdma0")), bar_size);
    ASSERT_TRUE(open());
    EXPECT_EQ(mapped_bytes(registers_of("xdma0")), bar_size);
    m_controller.reset();
    EXPECT_EQ(mapped_bytes(registers_of("xdma0")), 0U);
}

TEST_F(CPLinuxORBEController, DestructorClosesTheConnection) {
    make_device("xdma0");
    ASSERT_TRUE(open());
    const auto printed = printed_by([&] { m_controller.reset(); });
    EXPECT_EQ(printed.out, "CP_Linux_ORBE_Controller dtor, closing driver connection\n"
                           "Closing mm driver handle\n"
                           "Closing c2h driver handle\n"
                           "A_ORBE_Controller dtor\n");
}

TEST_F(CPLinuxORBEController, RegistersOfTheDmaEngineAreOutOfReach) {
    const auto written = printed_by([&] { m_controller->write_xdma_register(0x10, 1); });
    EXPECT_EQ(written.err, "Uimplemented function in Linux : write_xdma_register \n");
    EXPECT_EQ(written.out, "");
    const auto read = printed_by([&] { EXPECT_EQ(m_controller->read_xdma_register(0x10), 0U); });
    EXPECT_EQ(read.err, "Uimplemented function in Linux : read_xdma_register \n");
    EXPECT_EQ(read.out, "");
}

TEST_F(CPLinuxORBEController, NoExtendedPropertyIsKnown) {
    const auto printed =
        printed_by([&] { EXPECT_FALSE(m_controller->set_extended_property(16, 4'000'000'000)); });
    EXPECT_EQ(printed.out, "CP_Linux_ORBE_Controller::set_extended_property 16 : 4000000000\n");
    EXPECT_EQ(printed.err, "");
}

} // namespace
