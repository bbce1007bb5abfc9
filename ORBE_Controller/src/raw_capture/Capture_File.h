// Layer: device controller. A raw capture's file on disk, which never takes the place of another one. On the
// capture's thread; blocks for the disk.
#pragma once

#include "raw_capture/I_Capture_File.h"

#include <cstdio>
#include <memory>

namespace Pelgar::ORBE {

class Capture_File final : public I_Capture_File {
public:
    // A new file of that name, or, when there is one that is not empty, of the first that is free of
    // "raw_data_2.bin", "raw_data_3.bin" and so on. Throws std::system_error.
    explicit Capture_File(const std::string& name);

    void write(std::span<const std::uint8_t> bytes) override;
    void close() override;

    const std::string& name() const override { return m_name; }

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    [[noreturn]] void fail(int error) const;
    bool is_gone() const;

    std::string m_name;
    std::unique_ptr<std::FILE, Closer> m_file;
};

} // namespace Pelgar::ORBE
