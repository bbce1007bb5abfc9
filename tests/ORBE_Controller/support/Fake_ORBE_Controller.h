// Test support: a back-end whose registers are a Register_Recorder and whose DMA stream yields what the test
// has queued, with the real modules on top. May be used from several threads.
#pragma once

#include "Register_Recorder.h"
#include "connection/A_ORBE_Controller.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Fake_ORBE_Controller final : public A_ORBE_Controller {
public:
    struct Open_Call {
        std::string device_name;
        bool flag;

        bool operator==(const Open_Call&) const = default;
    };

    struct Setup_Call {
        std::uint8_t* buffer;
        std::uint32_t size;
        std::uint8_t flag;
        std::uint32_t extra;

        bool operator==(const Setup_Call&) const = default;
    };

    struct Read_Call {
        std::uint64_t unused;
        bool complete;

        bool operator==(const Read_Call&) const = default;
    };

    // The modules are there from the start.
    Fake_ORBE_Controller();
    ~Fake_ORBE_Controller() override = default;

    Register_Recorder& registers() { return m_registers; }

    // One stream read each: the bytes it puts into the prepared buffer (cut to the buffer's size; none for an
    // empty read), or the text of the std::runtime_error it throws. With nothing queued a read yields 0
    // bytes.
    void queue_stream_read(std::vector<std::uint8_t> bytes);
    // The same, but the read answers another number of bytes than it puts there.
    void queue_stream_read(std::vector<std::uint8_t> bytes, std::uint32_t answer);
    void queue_stream_error(std::string text);
    std::size_t queued_stream_reads() const;

    // What `open_driver_connection` answers from now on (true at first), and one answer for each of the next
    // calls.
    void set_open_result(bool result);
    void queue_open_results(const std::vector<bool>& results);
    // Makes every open throw a std::runtime_error with this text instead.
    void set_open_error(std::string text);

    // Makes every register write throw a std::runtime_error with this text.
    void set_write_error(std::string text);
    void clear_write_error();

    std::vector<Open_Call> open_calls() const;
    int close_count() const;
    std::vector<Setup_Call> setup_calls() const;
    std::vector<Read_Call> read_calls() const;

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;
    bool open_driver_connection(const std::string& device_name, bool flag) override;
    void close_driver_connection() override;
    bool set_extended_property(std::uint32_t key, std::uint32_t value) override;
    bool setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                    std::uint32_t extra) override;
    std::uint32_t read_stream(std::uint64_t unused, bool complete) override;
    void write_xdma_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_xdma_register(std::uint32_t address) override;

private:
    struct Stream_Read {
        std::vector<std::uint8_t> bytes;
        std::optional<std::string> error;
        std::optional<std::uint32_t> answer;
    };

    Register_Recorder m_registers;
    mutable std::mutex m_mutex;
    std::deque<Stream_Read> m_stream_reads;
    bool m_open_result = true;
    std::deque<bool> m_open_results;
    std::optional<std::string> m_open_error;
    std::optional<std::string> m_write_error;
    std::vector<Open_Call> m_open_calls;
    int m_close_count = 0;
    std::vector<Setup_Call> m_setup_calls;
    std::vector<Read_Call> m_read_calls;
};

} // namespace Pelgar::ORBE::test
