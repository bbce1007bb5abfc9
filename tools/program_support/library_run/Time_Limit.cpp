#include "library_run/Time_Limit.h"

#include "terminal/Exit_Codes.h"

#include <cstdlib>
#include <future>
#include <thread>

namespace Pelgar::ORBE::tools {

void run_within(std::chrono::milliseconds limit, const std::function<void()>& operation,
                const std::function<void()>& give_up) {
    std::packaged_task<void()> task(operation);
    std::future<void> done = task.get_future();
    std::thread thread(std::move(task));
    if (done.wait_for(limit) != std::future_status::ready) {
        give_up();
        std::_Exit(exit_codes::failed);
    }
    thread.join();
    done.get();
}

} // namespace Pelgar::ORBE::tools
