// foreign_host calls
// foreign_host simulation EXPECTATION
// foreign_host driver EXPECTATION
//
// A host as Windows' main compiler builds it: it imports the functions under that compiler's names, through
// the import library of that compiler's linker. Makes the calls that take no box, or plays a host, on a
// recording or on the box that is present. Exits with 0, with the number of the step that the run has
// ended at, or with one of the numbers below. Has no run time library, and nothing of the system but
// kernel32.
#include "Foreign_Calls.h"
#include "Host_Road.h"
#include "Kernel32.h"
#include "Output.h"

namespace Pelgar::ORBE::host {

namespace {

constexpr unsigned calls_were_wrong = 100;
constexpr unsigned no_expectation = 101;
constexpr unsigned bad_command_line = 102;

constexpr unsigned most_words = 4;
constexpr unsigned longest_word = 1024;

struct Command_Line {
    unsigned count;
    char words[most_words][longest_word];
};

// Too large for a stack.
Command_Line g_command_line;

// Words are parted by blanks, but for those between quotation marks; answers whether they fit.
bool read_command_line(const char* text) {
    while (*text != '\0') {
        while (*text == ' ') {
            ++text;
        }
        if (*text == '\0') {
            break;
        }
        if (g_command_line.count == most_words) {
            return false;
        }
        char* const word = g_command_line.words[g_command_line.count++];
        unsigned length = 0;
        bool quoted = false;
        for (; *text != '\0' && (quoted || *text != ' '); ++text) {
            if (*text == '"') {
                quoted = !quoted;
            } else if (length + 1 < longest_word) {
                word[length++] = *text;
            } else {
                return false;
            }
        }
        word[length] = '\0';
    }
    return true;
}

bool is_word(const char* word, const char* expected) {
    while (*word != '\0' && *word == *expected) {
        ++word;
        ++expected;
    }
    return *word == *expected;
}

struct File {
    const void* bytes; // null: it could not be read
    unsigned size;
};

File read_file(const char* path) {
    const Kernel32_Handle file =
        CreateFileA(path, read_access, share_for_reading, nullptr, open_existing, 0, nullptr);
    if (file == invalid_handle) {
        return {nullptr, 0};
    }
    long long size = 0;
    void* bytes = nullptr;
    unsigned read = 0;
    if (GetFileSizeEx(file, &size) != 0 && size > 0 && size == static_cast<unsigned>(size)) {
        bytes = VirtualAlloc(nullptr, static_cast<unsigned long long>(size), memory_for_use,
                             memory_readable_and_writable);
    }
    if (bytes != nullptr && (ReadFile(file, bytes, static_cast<unsigned>(size), &read, nullptr) == 0 ||
                             read != static_cast<unsigned>(size))) {
        bytes = nullptr;
    }
    CloseHandle(file);
    return {bytes, read};
}

unsigned run_road(const char* expectation_path, Host_Road_End end) {
    const File expectation = read_file(expectation_path);
    if (expectation.bytes == nullptr) {
        print("the expectation cannot be read\n");
        return no_expectation;
    }
    const Host_Road_Result result = run_host_road(expectation.bytes, expectation.size, end);
    print("step ");
    print(static_cast<long long>(result.step));
    print(", port ");
    print(static_cast<long long>(result.port));
    print(", packet ");
    print(static_cast<long long>(result.packet));
    print(", byte ");
    print(static_cast<long long>(result.byte));
    print("\n");
    return static_cast<unsigned>(result.step);
}

unsigned run() {
    if (read_command_line(GetCommandLineA())) {
        const auto& [count, words] = g_command_line;
        if (count == 2 && is_word(words[1], "calls")) {
            return run_foreign_calls() ? 0 : calls_were_wrong;
        }
        if (count == 3 && is_word(words[1], "simulation")) {
            return run_road(words[2], END_BY_CLOSING);
        }
        if (count == 3 && is_word(words[1], "driver")) {
            return run_road(words[2], END_BY_STOPPING);
        }
    }
    print("usage: foreign_host calls | simulation EXPECTATION | driver EXPECTATION\n");
    return bad_command_line;
}

} // namespace
} // namespace Pelgar::ORBE::host

// Where the system starts the program.
extern "C" void host_entry() {
    ExitProcess(Pelgar::ORBE::host::run());
}
