#include "raw_capture/Raw_Capture.h"

#include "Log_Capture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using Pelgar::ORBE::test::Log_Capture;
using Bytes = std::vector<std::uint8_t>;

// What the files of a test have in common: a disk that stalls and fails on request.
struct Disk {
    std::mutex mutex;
    std::condition_variable changed;
    bool is_stalled = false;
    bool is_in_write = false;
    int error = 0;
    std::vector<std::pair<std::string, Bytes>> files;
    int closed = 0;

    void stall(bool stalled) {
        const std::lock_guard lock(mutex);
        is_stalled = stalled;
        changed.notify_all();
    }

    void fail(int with) {
        const std::lock_guard lock(mutex);
        error = with;
    }

    void wait_for_write() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return is_in_write; });
    }

    Bytes content(std::size_t file) {
        const std::lock_guard lock(mutex);
        return files.at(file).second;
    }
};

class Disk_File final : public I_Capture_File {
public:
    Disk_File(Disk& disk, std::string name) : m_disk(disk), m_name(std::move(name)) {
        const std::lock_guard lock(m_disk.mutex);
        m_index = m_disk.files.size();
        m_disk.files.emplace_back(m_name, Bytes{});
    }

    void write(std::span<const std::uint8_t> bytes) override {
        std::unique_lock lock(m_disk.mutex);
        m_disk.is_in_write = true;
        m_disk.changed.notify_all();
        m_disk.changed.wait(lock, [this] { return !m_disk.is_stalled; });
        m_disk.is_in_write = false;
        if (m_disk.error != 0) {
            throw std::system_error(m_disk.error, std::generic_category(), m_name);
        }
        Bytes& content = m_disk.files[m_index].second;
        content.insert(content.end(), bytes.begin(), bytes.end());
    }

    void close() override {
        const std::lock_guard lock(m_disk.mutex);
        ++m_disk.closed;
    }

    const std::string& name() const override { return m_name; }

private:
    Disk& m_disk;
    std::string m_name;
    std::size_t m_index = 0;
};

class Raw_Capturing : public testing::Test {
protected:
    static constexpr std::size_t row = 16;
    static constexpr std::size_t capacity = 64 * row;

    Raw_Capturing() { make(); }

    void make() {
        m_capture = std::make_unique<Raw_Capture>(
            "raw_data.bin",
            [this](const std::string& name) {
                return std::make_unique<Disk_File>(m_disk, name + std::to_string(++m_runs));
            },
            capacity);
    }

    static Bytes rows(std::size_t count, std::uint8_t value) { return Bytes(count * row, value); }

    void take(const Bytes& bytes) {
        m_capture->take(bytes);
        m_taken.insert(m_taken.end(), bytes.begin(), bytes.end());
    }

    void wait_until_settled() {
        while (!m_capture->state().is_settled) {
            std::this_thread::yield();
        }
    }

    // Ends the capture's thread, so that everything is written and logged.
    void finish() { m_capture.reset(); }

    bool logged(int verbosity, const std::string& beginning) const {
        for (const auto& line : m_log.lines()) {
            if (line.verbosity == verbosity && line.text.starts_with(beginning)) {
                return true;
            }
        }
        return false;
    }

    Log_Capture m_log;
    Disk m_disk;
    int m_runs = 0;
    Bytes m_taken;
    std::unique_ptr<Raw_Capture> m_capture;
};

TEST_F(Raw_Capturing, EveryRunGetsAFileWithItsBytes) {
    take(rows(1, 9)); // before the run
    m_taken.clear();
    m_capture->begin_run();
    take(rows(3, 1));
    take(rows(2, 2));
    m_capture->end_run();
    take(rows(1, 9)); // between the runs
    m_capture->begin_run();
    m_capture->take(rows(4, 3));
    m_capture->end_run();
    wait_until_settled();
    const Raw_Capture_State state = m_capture->state();
    EXPECT_EQ(state.written, 9 * row);
    EXPECT_EQ(state.lost, 0U);
    EXPECT_EQ(state.problem, "");
    finish();
    ASSERT_EQ(m_disk.files.size(), 2U);
    EXPECT_EQ(m_disk.closed, 2);
    m_taken.resize(5 * row);
    EXPECT_EQ(m_disk.content(0), m_taken);
    EXPECT_EQ(m_disk.content(1), rows(4, 3));
    EXPECT_EQ(m_log.count(0, "Raw capture : raw_data.bin1 holds the whole run, 80 bytes"), 1);
    EXPECT_EQ(m_log.count(0, "Raw capture : raw_data.bin2 holds the whole run, 64 bytes"), 1);
}

TEST_F(Raw_Capturing, RunWithoutDataMakesNoFile) {
    m_capture->begin_run();
    m_capture->end_run();
    finish();
    EXPECT_TRUE(m_disk.files.empty());
}

TEST_F(Raw_Capturing, OnlyWholeRowsAreWritten) {
    m_capture->begin_run();
    m_capture->take(Bytes(2 * row + 5, 7));
    m_capture->take(Bytes(row - 1, 7));
    finish();
    EXPECT_EQ(m_disk.content(0), rows(2, 7));
}

TEST_F(Raw_Capturing, EndOfTheCaptureWritesWhatIsQueued) {
    m_disk.stall(true);
    m_capture->begin_run();
    take(rows(10, 1));
    m_disk.wait_for_write();
    take(rows(30, 2));
    std::thread disk([this] { m_disk.stall(false); });
    finish();
    disk.join();
    EXPECT_EQ(m_disk.content(0), m_taken);
    EXPECT_EQ(m_disk.closed, 1);
}

TEST_F(Raw_Capturing, StalledDiskCostsWholeTransfersAndNeverHoldsThePumpUp) {
    m_disk.stall(true);
    m_capture->begin_run();
    take(rows(4, 0));
    m_disk.wait_for_write();
    for (std::uint8_t transfer = 1; transfer <= 15; ++transfer) {
        take(rows(4, transfer));
    }
    // The disk has not moved: these calls come back all the same.
    for (std::uint8_t transfer = 100; transfer < 120; ++transfer) {
        m_capture->take(rows(4, transfer));
    }
    Raw_Capture_State state = m_capture->state();
    EXPECT_EQ(state.lost, 20 * 4 * row);
    EXPECT_EQ(state.places, 1U);
    EXPECT_DOUBLE_EQ(state.fill, 1.0);
    EXPECT_FALSE(state.is_settled);
    m_disk.stall(false);
    wait_until_settled();
    take(rows(4, 200));
    m_capture->end_run();
    wait_until_settled();
    EXPECT_EQ(m_capture->state().written, m_taken.size());
    finish();
    EXPECT_EQ(m_disk.content(0), m_taken);
    EXPECT_TRUE(logged(-1, "Raw capture : the disk is too slow, 1280 bytes lost so far in 1 places"));
    EXPECT_EQ(m_log.count(-2,
                          "Raw capture : raw_data.bin1 holds 1088 bytes of the run, 1280 bytes are lost in "
                          "1 places"),
              1);
}

TEST_F(Raw_Capturing, LossesAreToldAtMostOnceASecond) {
    m_capture->begin_run();
    for (int stall = 0; stall < 20; ++stall) {
        m_disk.stall(true);
        take(rows(1, 0));
        m_disk.wait_for_write();
        for (int i = 0; i < 70; ++i) {
            m_capture->take(rows(1, 1));
        }
        m_disk.stall(false);
        wait_until_settled();
    }
    finish();
    int told = 0;
    for (const auto& line : m_log.lines()) {
        told += line.text.starts_with("Raw capture : the disk is too slow") ? 1 : 0;
    }
    EXPECT_GE(told, 1);
    EXPECT_LT(told, 20);
}

TEST_F(Raw_Capturing, FullDiskIsToldOnceAndEndsTheCapture) {
    m_capture->begin_run();
    take(rows(4, 1));
    wait_until_settled();
    m_disk.fail(ENOSPC);
    m_capture->take(rows(4, 2));
    wait_until_settled();
    m_disk.fail(0);
    m_capture->take(rows(4, 3));
    m_capture->end_run();
    m_capture->begin_run();
    m_capture->take(rows(4, 4));
    m_capture->end_run();
    wait_until_settled();
    const Raw_Capture_State state = m_capture->state();
    EXPECT_EQ(state.written, 4 * row);
    EXPECT_EQ(state.lost, 12 * row);
    EXPECT_NE(state.problem.find("raw_data.bin1"), std::string::npos);
    finish();
    ASSERT_EQ(m_disk.files.size(), 1U);
    EXPECT_EQ(m_disk.content(0), rows(4, 1));
    int told = 0;
    for (const auto& line : m_log.lines()) {
        told += line.verbosity == -2 ? 1 : 0;
    }
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(logged(-2, "Raw capture : ends after 64 bytes, raw_data.bin1: "));
}

TEST_F(Raw_Capturing, FileThatCannotBeMadeIsToldLikeAFullDisk) {
    m_capture = std::make_unique<Raw_Capture>(
        "raw_data.bin",
        [](const std::string& name) -> std::unique_ptr<I_Capture_File> {
            throw std::system_error(ENOENT, std::generic_category(), name);
        },
        capacity);
    m_capture->begin_run();
    m_capture->take(rows(4, 1));
    wait_until_settled();
    EXPECT_EQ(m_capture->state().lost, 4 * row);
    EXPECT_NE(m_capture->state().problem, "");
    finish();
    EXPECT_TRUE(logged(-2, "Raw capture : ends after 0 bytes, raw_data.bin: "));
}

} // namespace
