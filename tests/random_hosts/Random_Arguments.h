// Test support, random hosts. Arguments for any exported function: good ones, bad ones, null pointers, and
// numbers at the ends of their types. Only what no library could survive is left out: a count that says more
// than the memory holds. One thread.
#pragma once

#include <NeuropixAPI.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Pelgar::ORBE::test {

class Random_Arguments {
public:
    explicit Random_Arguments(std::uint64_t seed);

    // The parameter as it is declared, with its name.
    template <typename T>
    T make(std::string_view parameter) {
        if constexpr (std::is_same_v<T, const char*>) {
            return text();
        } else if constexpr (std::is_pointer_v<T> && std::is_function_v<std::remove_pointer_t<T>>) {
            return one_in(4) ? nullptr : Callback<std::remove_pointer_t<T>>::function();
        } else if constexpr (std::is_pointer_v<T>) {
            return static_cast<T>(memory());
        } else if constexpr (std::is_same_v<T, bool>) {
            return one_in(2);
        } else if constexpr (std::is_floating_point_v<T>) {
            return static_cast<T>(real());
        } else if constexpr (std::is_enum_v<T>) {
            return static_cast<T>(enumerator(parameter));
        } else {
            return static_cast<T>(
                number(parameter, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
        }
    }

    // The memory of the call before may be used again.
    void begin_call() { m_used = 0; }

    std::size_t below(std::size_t end) { return static_cast<std::size_t>(m_random() % end); }

    bool one_in(std::size_t n) { return below(n) == 0; }

private:
    template <typename F>
    struct Callback;

    template <typename Result, typename... Parameters>
    struct Callback<Result(Parameters...)> {
        static Result answer(Parameters... /*unused*/) {
            if constexpr (!std::is_void_v<Result>) {
                return Result{};
            }
        }

        static auto function() -> Result (*)(Parameters...) { return &answer; }
    };

    const char* text();
    void* memory();
    double real();
    long enumerator(std::string_view parameter);
    std::uint64_t number(std::string_view parameter, std::intmax_t least, std::uintmax_t most);

    static constexpr std::size_t region_bytes = 256 * 1024;

    std::mt19937_64 m_random;
    std::vector<std::vector<std::uint64_t>> m_regions;
    std::size_t m_used = 0;
    std::string m_text;
};

} // namespace Pelgar::ORBE::test
