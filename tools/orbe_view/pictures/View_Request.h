// Program orbe-view, pictures. What a page wants to see, and what it wants done, as it says it. Any thread;
// nothing blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Pelgar::ORBE::view {

enum class Shown_Stream { ap, lfp, adc };

struct View_Request {
    static constexpr std::size_t most_channels = 96;
    static constexpr std::size_t most_columns = 2000;
    static constexpr double longest_seconds = 30.0;

    Shown_Stream stream = Shown_Stream::ap;
    int port = 1;
    std::size_t first_channel = 0;
    std::size_t channel_count = 16;
    std::size_t selected = 0; // the channel of the spectrum
    double seconds = 1.0;
    std::size_t columns = 1000;
    std::optional<double> end; // seconds; none: where the data end

    bool operator==(const View_Request&) const = default;
};

// One message holds one or several of these.
struct Page_Message {
    struct Jump {
        double seconds;
        bool plays;
    };

    std::optional<View_Request> view;
    std::optional<Jump> jump;
    std::optional<bool> plays;
    std::optional<bool> streams; // changes the box
};

// Throws std::invalid_argument, with a text for whoever has written the page, for anything else.
Page_Message parse_page_message(const std::string& text);

} // namespace Pelgar::ORBE::view
