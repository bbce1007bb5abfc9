// Test support: calls any exported function with arguments that can be told apart and says what the call
// wrote to its caller. Numbers are 11, 22, 33 and so on by position, enumerations 1, bools true; every
// pointer leads to a buffer of its own.
#pragma once

#include "NeuropixAPI.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Pelgar::ORBE::test {

// What a pointer parameter leads to.
class Host_Buffer {
public:
    Host_Buffer() { m_bytes.fill(untouched); }

    void* address() { return m_bytes.data(); }

    const std::uint8_t* bytes() const { return m_bytes.data(); }

    // Whether everything from byte `first` on is as it was.
    bool is_untouched_from(std::size_t first) const {
        for (std::size_t i = first; i < m_bytes.size(); ++i) {
            if (m_bytes[i] != untouched) {
                return false;
            }
        }
        return true;
    }

    // The value in the buffer; fails the test when more was written.
    template <typename T>
    T value() const {
        EXPECT_TRUE(is_untouched_from(sizeof(T)));
        T value{};
        std::memcpy(&value, m_bytes.data(), sizeof(T));
        return value;
    }

    // The text at byte `first`; fails the test when it has no end or when something was written behind it.
    std::string text_at(std::size_t first) const {
        std::string text;
        for (std::size_t i = first; i < m_bytes.size(); ++i) {
            if (m_bytes[i] == 0) {
                EXPECT_TRUE(is_untouched_from(i + 1));
                return text;
            }
            text.push_back(static_cast<char>(m_bytes[i]));
        }
        ADD_FAILURE() << "a text without its closing zero";
        return text;
    }

private:
    static constexpr std::uint8_t untouched = 0xA5;

    alignas(std::max_align_t) std::array<std::uint8_t, 256> m_bytes{};
};

// What was written through a parameter of type T, "-" for nothing.
template <typename T>
std::string written_through(const Host_Buffer& buffer) {
    using Target = std::remove_pointer_t<T>;
    if (buffer.is_untouched_from(0)) {
        return "-";
    }
    if constexpr (std::is_same_v<Target, char>) {
        return buffer.text_at(0);
    } else if constexpr (std::is_same_v<Target, Neuropixels::firmware_Info>) {
        Neuropixels::firmware_Info info{};
        const auto* const bytes = buffer.bytes();
        std::memcpy(&info, bytes, offsetof(Neuropixels::firmware_Info, name));
        return std::to_string(info.major) + "." + std::to_string(info.minor) + "." +
               std::to_string(info.build) + " " + buffer.text_at(offsetof(Neuropixels::firmware_Info, name));
    } else if constexpr (std::is_same_v<Target, int> || std::is_same_v<Target, std::uint64_t>) {
        return std::to_string(buffer.value<Target>());
    } else {
        return "something";
    }
}

template <typename Result, typename... Parameters>
Result must_not_be_called(Parameters... /*unused*/) {
    ADD_FAILURE() << "a callback was called";
    return Result();
}

template <typename Result, typename... Parameters>
auto callback_like(Result (* /*type*/)(Parameters...)) {
    return &must_not_be_called<Result, Parameters...>;
}

template <typename T>
T sample_argument(std::size_t position, Host_Buffer& buffer) {
    if constexpr (std::is_same_v<T, bool>) {
        return true;
    } else if constexpr (std::is_enum_v<T>) {
        return static_cast<T>(1);
    } else if constexpr (std::is_arithmetic_v<T>) {
        return static_cast<T>(11 * (position + 1));
    } else if constexpr (std::is_same_v<T, const char*>) {
        return "a file";
    } else if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
        return callback_like(T{});
    } else {
        return static_cast<T>(buffer.address());
    }
}

struct Call_Outcome {
    std::string result;  // as a text; empty for a function that returns nothing
    std::string written; // "-" or the value for each pointer parameter but constant ones, parted by ", "
};

template <typename T>
constexpr bool is_output =
    std::is_pointer_v<T> && !std::is_const_v<std::remove_pointer_t<T>> &&
    !std::is_function_v<std::remove_pointer_t<T>> && !std::is_same_v<T, Neuropixels::np_streamhandle_t>;

template <typename Result, typename... Parameters>
std::string result_of(Result (*function)(Parameters...), const std::tuple<Parameters...>& arguments) {
    if constexpr (std::is_void_v<Result>) {
        std::apply(function, arguments);
        return "";
    } else if constexpr (std::is_same_v<Result, const char*>) {
        return std::apply(function, arguments);
    } else {
        return std::to_string(std::apply(function, arguments));
    }
}

template <typename Result, typename... Parameters>
Call_Outcome call_with_samples(Result (*function)(Parameters...)) {
    std::array<Host_Buffer, sizeof...(Parameters) + 1> buffers;
    return [&]<std::size_t... position>(std::index_sequence<position...>) {
        Call_Outcome outcome;
        outcome.result = result_of(
            function, std::tuple<Parameters...>(sample_argument<Parameters>(position, buffers[position])...));
        [[maybe_unused]] const auto note = [&](bool output, const std::string& text) {
            if (output) {
                outcome.written += (outcome.written.empty() ? "" : ", ") + text;
            } else {
                EXPECT_EQ(text, "-") << "written through a parameter that is no output";
            }
        };
        (note(is_output<Parameters>, written_through<Parameters>(buffers[position])), ...);
        return outcome;
    }
    (std::index_sequence_for<Parameters...>());
}

// The same with null for every pointer; answers the result alone.
template <typename Result, typename... Parameters>
std::string call_with_nulls(Result (*function)(Parameters...)) {
    Host_Buffer unused;
    std::size_t position = 0;
    [[maybe_unused]] const auto argument = [&]<typename T>(std::type_identity<T> /*type*/) -> T {
        if constexpr (std::is_pointer_v<T>) {
            ++position;
            return nullptr;
        } else {
            return sample_argument<T>(position++, unused);
        }
    };
    return result_of(function, std::tuple<Parameters...>{argument(std::type_identity<Parameters>())...});
}

} // namespace Pelgar::ORBE::test
