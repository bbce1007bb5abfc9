// Fuzzing: the gain calibration file, against a plain reader of it: what becomes of a block of either band
// before and after loads that succeed or fail, and what is printed.
//
// An input is the file. Where it begins with a star, the rest is the file, whose last line is repeated until
// there are 960 behind the header, so that whole files need not be whole inputs.
#include "Fuzz_Target.h"

#include "Printed_Output.h"
#include "Recording_Listeners.h"
#include "Require.h"
#include "gain/C_L2_CH_Gain_Fix_Filter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

constexpr const char* input_file = "input.csv";
constexpr const char* good_file = "good.csv";
constexpr std::ptrdiff_t line_count = 961;
// Channels whose electrode is another one than after a load.
constexpr unsigned moved_channels = 100;

void write_file(const char* path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.flush();
    require(file.good(), "the working directory can be written to");
}

std::string file_of_input(std::string_view input) {
    if (!input.starts_with('*')) {
        return std::string(input);
    }
    std::string text(input.substr(1));
    const auto lines = std::count(text.begin(), text.end(), '\n');
    if (lines < 2 || !text.ends_with('\n')) {
        return text;
    }
    const std::string last = text.substr(text.find_last_of('\n', text.size() - 2) + 1);
    for (auto line = lines; line < line_count; ++line) {
        text += last;
    }
    return text;
}

std::string good_text() {
    std::string text = "good\n";
    for (int electrode = 0; electrode < 960; ++electrode) {
        text += std::to_string(electrode);
        for (int k = 0; k < 16; ++k) {
            text += ',' + std::to_string(1 + electrode % 7) + '.' + std::to_string(k);
        }
        text += '\n';
    }
    return text;
}

// What the filter must do, worked out channel by channel.
class Plain_Filter {
public:
    // The reason of a failure, or nothing. A reason that is the stream's is empty.
    std::optional<std::string> load(std::string_view text) {
        constexpr const char* blanks = " \t\n\v\f\r";
        const std::size_t header = text.find_first_not_of(blanks);
        const std::size_t header_end =
            header == std::string_view::npos ? header : text.find_first_of(blanks, header);
        if (header_end == std::string_view::npos) {
            return "";
        }
        text.remove_prefix(header_end + 1);
        for (auto& factors : m_factors) {
            if (!take_field(text, ',')) {
                return "";
            }
            for (std::size_t k = 0; k < 16; ++k) {
                const auto field = take_field(text, k < 15 ? ',' : '\n');
                if (!field) {
                    return "";
                }
                char* end = nullptr;
                errno = 0;
                const float factor = std::strtof(field->c_str(), &end);
                if (end == field->c_str()) {
                    return "invalid stof argument";
                }
                if (errno == ERANGE) {
                    return "stof argument out of range";
                }
                factors[k] = factor;
            }
        }
        for (std::size_t channel = 0; channel < 384; ++channel) {
            m_electrode[channel] = channel;
        }
        m_loaded = true;
        return {};
    }

    void set_codes(std::size_t channel, std::size_t ap, std::size_t lfp) { m_codes[channel] = {ap, 8 + lfp}; }

    void set_electrode(std::size_t channel, std::size_t electrode) { m_electrode[channel] = electrode; }

    Channel_Values corrected(Band band, const Channel_Values& values) const {
        Channel_Values result = values;
        for (std::size_t channel = 0; channel < 384 && m_loaded; ++channel) {
            const std::size_t code = m_codes[channel][band == Band::AP ? 0 : 1];
            const float product = static_cast<float>(values[channel]) * m_factors[m_electrode[channel]][code];
            // What 32 bits cannot hold becomes 0; of the rest the low 16 bits are kept.
            const bool fits = product >= -0x1p31F && product < 0x1p31F;
            const auto whole = static_cast<std::int64_t>(fits ? std::trunc(product) : 0.0F);
            result[channel] = static_cast<std::uint16_t>(((whole % 65536) + 65536) % 65536);
        }
        return result;
    }

private:
    static std::optional<std::string> take_field(std::string_view& text, char delimiter) {
        const std::size_t end = text.find(delimiter);
        if (end == std::string_view::npos) {
            return {};
        }
        std::string field(text.substr(0, end));
        text.remove_prefix(end + 1);
        return field;
    }

    bool m_loaded = false;
    std::array<std::array<float, 16>, 960> m_factors{};
    std::array<std::array<std::size_t, 2>, 384> m_codes{};
    std::array<std::size_t, 384> m_electrode{};
};

// The filter and the plain one side by side.
class Comparison {
public:
    Comparison() {
        m_filter->set_listener(m_listener);
        for (std::uint16_t channel = 0; channel < 384; ++channel) {
            const auto ap = static_cast<std::uint16_t>(channel % 8);
            const auto lfp = static_cast<std::uint16_t>(channel / 8 % 8);
            m_filter->set_channel_gain_codes(channel, ap, lfp);
            m_plain->set_codes(channel, ap, lfp);
        }
    }

    bool load(const char* path, std::string_view text) {
        const bool loaded = m_filter->load_gain_calibration(path);
        const auto failure = m_plain->load(text);
        m_loaded_once = m_loaded_once || !failure;
        require(loaded == !failure.has_value(), "whether the file is loaded");
        std::string out = std::string("Loading gain data from file : ") + path + '\n';
        if (loaded) {
            out += "Gain data loaded.\n"
                   "Creating default 1:1 mapping for the shank pixels ( Bank A Selection )\n";
        }
        require(m_printed.take_out() == out, "standard output");
        const std::string err = failure ? "Exception caught while loading gain data : " + *failure : "";
        const std::string printed = m_printed.take_err();
        const bool reason_is_known = !failure || !failure->empty();
        require(reason_is_known ? printed == err : printed.starts_with(err), "standard error");
        compare_blocks();
        return loaded;
    }

    void move_channels() {
        for (std::uint16_t channel = 0; channel < moved_channels; ++channel) {
            m_filter->set_channel_bank(channel, 1 + channel % 2);
            m_plain->set_electrode(channel, channel + 384U * (1 + channel % 2));
        }
        compare_blocks();
    }

    // One block of each band. The values run over all sixteen bits in a few steps.
    void compare_blocks() {
        Channel_Values values;
        for (std::size_t channel = 0; channel < 384; ++channel) {
            values[channel] = static_cast<std::uint16_t>(channel * 171 + 5);
        }
        for (const Band band : {Band::AP, Band::LFP}) {
            std::uint16_t block[384];
            std::copy(values.begin(), values.end(), block);
            m_listener->sets.clear();
            if (band == Band::AP) {
                m_filter->publish_ap_ch_data(block);
            } else {
                m_filter->publish_lp_ch_data(block);
            }
            require(m_listener->sets.size() == 1 && m_listener->sets[0].band == band, "one block for one");
            const Channel_Values& corrected = m_listener->sets[0].values;
            require(corrected == m_plain->corrected(band, values), "corrected block");
            require(m_loaded_once || corrected == values, "blocks stay as they are until a file is loaded");
        }
    }

private:
    Printed_Output m_printed;
    std::unique_ptr<C_L2_CH_Gain_Fix_Filter> m_filter = std::make_unique<C_L2_CH_Gain_Fix_Filter>();
    std::unique_ptr<Plain_Filter> m_plain = std::make_unique<Plain_Filter>();
    std::shared_ptr<Recording_L2_Listener> m_listener = std::make_shared<Recording_L2_Listener>();
    bool m_loaded_once = false;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = file_of_input(std::string(data, data + size));
    static const std::string good = [] {
        std::string whole = good_text();
        write_file(good_file, whole);
        return whole;
    }();
    write_file(input_file, text);

    Comparison comparison;
    if (!comparison.load(input_file, text)) {
        require(comparison.load(good_file, good), "a good file is loaded");
        comparison.move_channels();
        comparison.load(input_file, text);
    }
    return 0;
}
