#include "pictures/View_Request.h"

#include "description/Recording_Description.h"
#include "history/Health_History.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace Pelgar::ORBE::view {

namespace {

using nlohmann::json;

constexpr double farthest_seconds = 1e7;
constexpr double shortest_seconds = 0.002;

[[noreturn]] void refuse(const std::string& name, const std::string& reason) {
    throw std::invalid_argument("'" + name + "' " + reason);
}

double number_of(const json& value, const std::string& name, double least, double most) {
    if (!value.is_number()) {
        refuse(name, "is no number");
    }
    const auto number = value.get<double>();
    if (!std::isfinite(number) || number < least || number > most) {
        refuse(name, "is out of range");
    }
    return number;
}

std::size_t whole_of(const json& value, const std::string& name, std::size_t least, std::size_t most) {
    if (!value.is_number_integer()) {
        refuse(name, "is no whole number");
    }
    return static_cast<std::size_t>(
        number_of(value, name, static_cast<double>(least), static_cast<double>(most)));
}

bool truth_of(const json& value, const std::string& name) {
    if (!value.is_boolean()) {
        refuse(name, "is neither true nor false");
    }
    return value.get<bool>();
}

Shown_Stream stream_of(const json& value) {
    if (value == "ap") {
        return Shown_Stream::ap;
    }
    if (value == "lfp") {
        return Shown_Stream::lfp;
    }
    if (value == "adc") {
        return Shown_Stream::adc;
    }
    refuse("stream", "is none of ap, lfp and adc");
}

const json& object_of(const json& value, const std::string& name) {
    if (!value.is_object()) {
        refuse(name, "is no object");
    }
    return value;
}

View_Request view_of(const json& object) {
    constexpr std::size_t last_channel = recorder::channel_count - 1;
    View_Request request;
    for (const auto& [name, value] : object.items()) {
        if (name == "stream") {
            request.stream = stream_of(value);
        } else if (name == "port") {
            request.port = static_cast<int>(whole_of(value, name, 1, port_count));
        } else if (name == "first") {
            request.first_channel = whole_of(value, name, 0, last_channel);
        } else if (name == "count") {
            request.channel_count = whole_of(value, name, 1, View_Request::most_channels);
        } else if (name == "selected") {
            request.selected = whole_of(value, name, 0, last_channel);
        } else if (name == "seconds") {
            request.seconds = number_of(value, name, shortest_seconds, View_Request::longest_seconds);
        } else if (name == "columns") {
            request.columns = whole_of(value, name, 1, View_Request::most_columns);
        } else if (name == "end") {
            request.end = number_of(value, name, 0.0, farthest_seconds);
        } else {
            refuse(name, "is nothing that a view has");
        }
    }
    request.channel_count = std::min(request.channel_count, recorder::channel_count - request.first_channel);
    return request;
}

Page_Message::Jump jump_of(const json& object) {
    Page_Message::Jump jump{std::numeric_limits<double>::quiet_NaN(), true};
    for (const auto& [name, value] : object.items()) {
        if (name == "seconds") {
            jump.seconds = number_of(value, name, 0.0, farthest_seconds);
        } else if (name == "plays") {
            jump.plays = truth_of(value, name);
        } else {
            refuse(name, "is nothing that a jump has");
        }
    }
    if (std::isnan(jump.seconds)) {
        refuse("seconds", "is missing");
    }
    return jump;
}

} // namespace

Page_Message parse_page_message(const std::string& text) {
    const json parsed = json::parse(text, nullptr, false);
    if (parsed.is_discarded()) {
        throw std::invalid_argument("the message is no JSON");
    }
    Page_Message message;
    for (const auto& [name, value] : object_of(parsed, "message").items()) {
        if (name == "view") {
            message.view = view_of(object_of(value, name));
        } else if (name == "jump") {
            message.jump = jump_of(object_of(value, name));
        } else if (name == "plays") {
            message.plays = truth_of(value, name);
        } else if (name == "streams") {
            message.streams = truth_of(value, name);
        } else {
            refuse(name, "is nothing that a page can say");
        }
    }
    return message;
}

} // namespace Pelgar::ORBE::view
