#include "Message_Book.h"

#include <array>
#include <cctype>
#include <string_view>

namespace Pelgar::ORBE::test {

namespace {

constexpr int warning = -1;

// What depends on the pace of the threads, or on what is streamed.
constexpr std::array<std::string_view, 6> by_pace{"high_water_mark",
                                                  "queue element count",
                                                  "electrode packet transferred",
                                                  "Elements in main demux queue",
                                                  "Interrupt wait duration",
                                                  "TTL input value change"};

// Whether the pump begins another read while it is being stopped is between two threads.
bool is_read_of_a_stop(Phase phase, const std::string& line) {
    return (phase == Phase::stop || phase == Phase::close) && line.starts_with("R:");
}

bool depends_on_pace(const std::string& line) {
    if (line.starts_with("A:")) {
        return true; // of every 256th read
    }
    for (const std::string_view part : by_pace) {
        if (line.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

// How far a thread beside the pump has come.
std::string without_progress(const std::string& line) {
    constexpr std::string_view begin = "Raw capture : ends after ";
    const auto bytes = line.find(" bytes");
    const bool tells = line.starts_with(begin) && bytes != std::string::npos;
    return tells ? std::string(begin) + "…" + line.substr(bytes) : line;
}

std::string without_numbers(const std::string& line) {
    std::string text;
    for (const char character : line) {
        const bool digit = std::isdigit(static_cast<unsigned char>(character)) != 0;
        if (!digit) {
            text += character;
        } else if (text.empty() || text.back() != '#') {
            text += '#';
        }
    }
    return text;
}

} // namespace

void Message_Book::learn(Phase phase, const std::vector<std::string>& printed) {
    for (const std::string& line : printed) {
        m_ordinary[phase].insert(without_numbers(line));
    }
}

std::vector<std::string> Message_Book::messages(Phase phase, const std::vector<Log_Line>& logged,
                                                const std::vector<std::string>& printed) const {
    std::set<std::string> seen;
    if (const auto ordinary = m_ordinary.find(phase); ordinary != m_ordinary.end()) {
        seen = ordinary->second;
    }
    std::vector<std::string> messages;
    const auto add = [&](const std::string& line) {
        if (!line.empty() && !depends_on_pace(line) && !is_read_of_a_stop(phase, line) &&
            seen.insert(without_numbers(line)).second) {
            messages.push_back(without_progress(line));
        }
    };
    for (const Log_Line& line : logged) {
        if (line.verbosity <= warning) {
            add(line.text);
        }
    }
    // Several threads print: in an order of their own.
    const std::multiset<std::string> in_order(printed.begin(), printed.end());
    for (const std::string& line : in_order) {
        add(line);
    }
    return messages;
}

} // namespace Pelgar::ORBE::test
