#include "Hang_Watch.h"

#include "All_Stacks.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Pelgar::ORBE::test {

Hang_Watch::Hang_Watch(std::size_t threads, std::chrono::milliseconds blocking,
                       std::chrono::milliseconds limit, std::function<void()> rescue)
    : m_blocking(blocking), m_limit(limit), m_rescue(std::move(rescue)) {
    for (std::size_t i = 0; i < threads; ++i) {
        m_calls.push_back(std::make_unique<Call>());
    }
    m_thread = std::thread([this] { watch(); });
}

Hang_Watch::~Hang_Watch() {
    m_ending = true;
    m_thread.join();
}

void Hang_Watch::begin(std::size_t thread, const std::string& name) {
    m_calls[thread]->since = Clock::now().time_since_epoch().count();
    m_calls[thread]->name = &name;
}

void Hang_Watch::end(std::size_t thread) {
    m_calls[thread]->name = nullptr;
}

std::chrono::milliseconds Hang_Watch::longest(std::string& name) const {
    std::chrono::milliseconds most{0};
    for (const auto& call : m_calls) {
        const std::string* const running = call->name;
        const Clock::time_point since{Clock::duration(call->since.load())};
        const auto lasted = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since);
        if (running != nullptr && lasted > most) {
            most = lasted;
            name = *running;
        }
    }
    return most;
}

void Hang_Watch::watch() {
    while (!m_ending) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::string name;
        const auto lasted = longest(name);
        if (lasted > m_limit) {
            std::fprintf(stderr, "%s does not come back\n", name.c_str());
            print_all_stacks();
            std::_Exit(EXIT_FAILURE);
        }
        if (lasted > m_blocking) {
            m_rescue();
        }
    }
}

} // namespace Pelgar::ORBE::test
