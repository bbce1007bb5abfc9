#include "Electrode_Map.h"

#include <charconv>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr int channels = static_cast<int>(channel_count);
constexpr const char* head_for_all = "channel,electrode";
constexpr const char* head_by_port = "port,channel,electrode";
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

int electrode_in_bank(int channel, int bank) {
    const int electrode = bank * channels + channel;
    return electrode < Electrode_Map::electrode_count ? electrode : electrode - channels;
}

std::string without_blanks(const std::string& line) {
    std::string text;
    for (const char character : line) {
        if (character != ' ' && character != '\t' && character != '\r') {
            text += character;
        }
    }
    return text;
}

std::vector<int> numbers_of(std::string_view line) {
    std::vector<int> numbers;
    while (true) {
        const std::size_t comma = line.find(',');
        const std::string_view field = line.substr(0, comma);
        int number = 0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
        if (error != std::errc{} || end != field.data() + field.size()) {
            throw std::invalid_argument("'" + std::string(field) + "' is no whole number");
        }
        numbers.push_back(number);
        if (comma == std::string_view::npos) {
            return numbers;
        }
        line.remove_prefix(comma + 1);
    }
}

void check_range(const char* name, int number, int least, int most) {
    if (number < least || number > most) {
        throw std::invalid_argument(std::string(name) + " " + std::to_string(number) + " is none of " +
                                    std::to_string(least) + " to " + std::to_string(most));
    }
}

void check_pair(int channel, int electrode) {
    check_range("channel", channel, 0, channels - 1);
    if (electrode == Electrode_Map::disconnected) {
        return;
    }
    check_range("electrode", electrode, 0, Electrode_Map::electrode_count - 1);
    if (channel == Electrode_Map::reference_channel) {
        throw std::invalid_argument("channel " + std::to_string(channel) +
                                    " is the probe's reference and takes no electrode");
    }
    if (electrode % channels != channel) {
        throw std::invalid_argument("electrode " + std::to_string(electrode) + " is one of channel " +
                                    std::to_string(electrode % channels) + " and not of channel " +
                                    std::to_string(channel));
    }
}

} // namespace

Electrode_Map Electrode_Map::of_bank(int bank) {
    Electrode_Map map;
    for (auto& electrodes : map.m_electrodes) {
        for (int channel = 0; channel < channels; ++channel) {
            electrodes[static_cast<std::size_t>(channel)] =
                channel == reference_channel ? disconnected : electrode_in_bank(channel, bank);
        }
    }
    return map;
}

Electrode_Map Electrode_Map::of_file(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path)) {
        throw std::invalid_argument("the electrode map '" + path.string() + "' cannot be read");
    }
    Electrode_Map map = of_bank(0);
    std::array<std::array<bool, channel_count>, port_count> is_named{};
    std::size_t columns = 0; // until the head has come
    std::size_t number = 0;
    try {
        for (std::string line; std::getline(file, line);) {
            ++number;
            std::string text = without_blanks(line);
            if (number == 1 && text.starts_with(byte_order_mark)) {
                text.erase(0, byte_order_mark.size());
            }
            if (text.empty() || text.front() == '#') {
                continue;
            }
            if (columns == 0) {
                columns = text == head_for_all ? 2 : text == head_by_port ? 3 : 0;
                if (columns == 0) {
                    throw std::invalid_argument(std::string("the first line must be '") + head_for_all +
                                                "' or '" + head_by_port + "'");
                }
                continue;
            }
            const std::vector<int> numbers = numbers_of(text);
            if (numbers.size() != columns) {
                throw std::invalid_argument(std::to_string(numbers.size()) + " numbers and not " +
                                            std::to_string(columns));
            }
            const int channel = numbers[columns - 2];
            const int electrode = numbers[columns - 1];
            check_pair(channel, electrode);
            int first = 1;
            int last = port_count;
            if (columns == 3) {
                check_range("port", numbers[0], 1, port_count);
                first = last = numbers[0];
            }
            for (int port = first; port <= last; ++port) {
                bool& named = is_named[static_cast<std::size_t>(port - 1)][static_cast<std::size_t>(channel)];
                if (named) {
                    throw std::invalid_argument("channel " + std::to_string(channel) + " stands here again");
                }
                named = true;
                map.m_electrodes[static_cast<std::size_t>(port - 1)][static_cast<std::size_t>(channel)] =
                    electrode;
            }
        }
        if (columns == 0) {
            throw std::invalid_argument("the file is empty");
        }
    } catch (const std::invalid_argument& error) {
        throw std::invalid_argument("electrode map '" + path.string() + "', line " + std::to_string(number) +
                                    ": " + error.what());
    }
    return map;
}

int Electrode_Map::electrode(int port, int channel) const {
    return m_electrodes.at(static_cast<std::size_t>(port - 1)).at(static_cast<std::size_t>(channel));
}

} // namespace Pelgar::ORBE::recorder
