// Fuzzing: the reader of the ADC calibration file, against a plain one: the table, and what is printed.
//
// An input is the file.
#include "Fuzz_Target.h"

#include "Printed_Output.h"
#include "Require.h"
#include "probe_link/NP_Probe_Config_Reader.h"

#include <array>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

constexpr const char* input_file = "input.csv";
constexpr const char* earlier_file = "earlier.csv";

void write_file(const char* path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.flush();
    require(file.good(), "the working directory can be written to");
}

// Takes the file apart character by character; everything must be followed by a character.
class Plain_Reader {
public:
    explicit Plain_Reader(std::string_view text) : m_text(text) {}

    // The nine times 32 numbers, in the order of the file, if the file is well-formed.
    std::optional<std::array<std::uint32_t, 288>> read() {
        skip_blanks();
        const std::size_t header_at = m_at;
        while (m_at < m_text.size() && !is_blank(m_text[m_at])) {
            ++m_at;
        }
        if (m_at == header_at || m_at == m_text.size()) {
            return {};
        }
        std::array<std::uint32_t, 288> numbers;
        for (std::uint32_t& number : numbers) {
            const auto next = read_number();
            if (!next) {
                return {};
            }
            number = *next;
        }
        return numbers;
    }

private:
    static bool is_blank(char character) {
        return character == ' ' || (character >= '\t' && character <= '\r');
    }

    void skip_blanks() {
        while (m_at < m_text.size() && is_blank(m_text[m_at])) {
            ++m_at;
        }
    }

    // A number and the one character behind it. A minus counts down from 2 to the power of 32.
    std::optional<std::uint32_t> read_number() {
        skip_blanks();
        const bool is_negative = m_at < m_text.size() && m_text[m_at] == '-';
        if (is_negative || (m_at < m_text.size() && m_text[m_at] == '+')) {
            ++m_at;
        }
        const std::size_t digits_at = m_at;
        std::uint64_t number = 0;
        while (m_at < m_text.size() && m_text[m_at] >= '0' && m_text[m_at] <= '9') {
            number = 10 * number + static_cast<std::uint64_t>(m_text[m_at] - '0');
            if (number > 0xFFFFFFFF) {
                return {};
            }
            ++m_at;
        }
        if (m_at == digits_at || m_at == m_text.size()) {
            return {};
        }
        ++m_at;
        return static_cast<std::uint32_t>(is_negative ? 0x100000000 - number : number);
    }

    std::string_view m_text;
    std::size_t m_at = 0;
};

// A table as 288 numbers.
std::array<std::uint32_t, 288> numbers_of(const NP_Probe_Config_Reader& reader) {
    std::array<std::uint32_t, 288> numbers;
    std::size_t i = 0;
    for (const ADC_Calibration& row : reader.adc_calibration()) {
        for (const std::uint32_t number : {row.adc, row.comp_p, row.comp_n, row.slope, row.coarse, row.fine,
                                           row.cfix, row.offset, row.threshold}) {
            numbers[i++] = number;
        }
    }
    return numbers;
}

std::string earlier_text() {
    std::string text = "earlier\n";
    for (int number = 0; number < 288; ++number) {
        text += std::to_string(number + 1) + ' ';
    }
    return text;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    static const bool earlier_is_written = (write_file(earlier_file, earlier_text()), true);
    require(earlier_is_written, "the earlier table is there");
    write_file(input_file, text);
    const auto expected = Plain_Reader(text).read();

    Printed_Output printed;
    NP_Probe_Config_Reader reader(".");
    require(reader.load_adc_calibration_data_from_file(earlier_file), "a good file is read");
    const auto earlier = numbers_of(reader);
    require(earlier[0] == 1 && earlier[287] == 288, "a good file is read in order");
    printed.take_out();

    const bool loaded = reader.load_adc_calibration_data_from_file(input_file);
    require(loaded == expected.has_value(), "whether the file is read");
    require(numbers_of(reader) == expected.value_or(earlier), "table");
    require(printed.take_out() == (loaded ? "ADC calibration data loaded.\n" : ""), "standard output");
    require(printed.take_err().starts_with(loaded ? "" : "Exception caught : "), "standard error");
    return 0;
}
