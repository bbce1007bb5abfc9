// A host in the ABI of Windows' main compiler. Calls any exported function with arguments of its types and
// says what it answered, and whether it wrote anything to its caller.
#pragma once

namespace Pelgar::ORBE::host {

// What the pointer parameters of one call lead to.
class Caller_Memory {
public:
    Caller_Memory() {
        for (auto& byte : m_bytes) {
            byte = untouched;
        }
    }

    void* address() { return m_bytes; }

    bool is_untouched() const {
        for (const auto byte : m_bytes) {
            if (byte != untouched) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr unsigned char untouched = 0xA5;

    alignas(16) unsigned char m_bytes[256];
};

struct Outcome {
    long long result; // 0 for a function that returns nothing; of a text, whether there is one
    bool wrote;
};

template <typename T>
struct Sample {
    static T value(void* /*memory*/) { return static_cast<T>(1); }
};

// Not 1, so that all the bits of a floating point register count.
template <>
struct Sample<double> {
    static double value(void* /*memory*/) { return -1234.5678; }
};

template <typename T>
struct Sample<T*> {
    static T* value(void* memory) { return static_cast<T*>(memory); }
};

template <>
struct Sample<const char*> {
    static const char* value(void* memory) { return memory == nullptr ? nullptr : "no such file"; }
};

// The library calls no host back while nothing is open.
template <typename Result, typename... Parameters>
struct Sample<Result (*)(Parameters...)> {
    static Result must_not_be_called(Parameters... /*unused*/) { __builtin_trap(); }

    static auto value(void* memory) -> Result (*)(Parameters...) {
        return memory == nullptr ? nullptr : &must_not_be_called;
    }
};

inline long long number_of(const char* text) {
    return text != nullptr ? 1 : 0;
}

template <typename T>
long long number_of(T value) {
    return static_cast<long long>(value);
}

template <typename Result, typename... Parameters>
long long call(Result (*function)(Parameters...), void* memory) {
    return number_of(function(Sample<Parameters>::value(memory)...));
}

template <typename... Parameters>
long long call(void (*function)(Parameters...), void* memory) {
    function(Sample<Parameters>::value(memory)...);
    return 0;
}

template <typename Function>
Outcome call_with_samples(Function function) {
    Caller_Memory memory;
    const long long result = call(function, memory.address());
    return {result, !memory.is_untouched()};
}

// The same with null for every pointer.
template <typename Function>
long long call_with_nulls(Function function) {
    return call(function, nullptr);
}

} // namespace Pelgar::ORBE::host
