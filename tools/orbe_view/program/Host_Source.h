// Program orbe-view. The box, or the recording that plays one, through the library's host mode, as recorders
// use it. A thread reads all streams, before anything else has to be done with them, and puts them into the
// histories; the library's own queues hold two seconds.
#pragma once

#include "ADC_Source.h"
#include "Health_Watch.h"
#include "Opened_Box.h"
#include "Probe_Source.h"
#include "sources/A_Source.h"
#include "sources/Packet_Intake.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::view {

struct Host_Choice {
    std::optional<std::filesystem::path> simulation;  // the recording that is played; none: the box
    std::optional<std::filesystem::path> calibration; // the folder with a folder a probe
    double spike_microvolts = 100.0;
};

class Host_Source final : public A_Source {
public:
    // Opens the box in the working directory, which selects it, brings its probes up and lets them stream.
    // Blocks on the probes' links; throws std::runtime_error with what goes wrong.
    explicit Host_Source(const Host_Choice& choice);
    ~Host_Source() override;

    const Histories& histories() const override { return m_histories; }

    // When something has gone wrong nothing streams any more, and the problem says why.
    Source_Status status() const override;
    // False as well when nothing can stream any more.
    bool stream(bool streams) override;

private:
    using Clock = Health_Watch::Clock;

    std::vector<recorder::Probe_Description> bring_up(const Host_Choice& choice) const;
    void run();
    void run_until_stopped();
    void follow_wish();
    bool read();
    void look_at_health(Clock::time_point now);
    std::size_t stream_of(std::size_t probe) const;

    std::string m_name;
    bool m_is_simulation;
    recorder::Opened_Box m_box;
    Histories m_histories;

    mutable std::mutex m_mutex;
    std::string m_problem;
    std::atomic<bool> m_stops{false};
    std::atomic<bool> m_shall_stream{true};
    std::atomic<bool> m_streams{false};
    std::atomic<bool> m_has_failed{false};
    std::atomic<std::uint64_t> m_position{0};

    // Of the thread.
    std::vector<recorder::Probe_Source> m_probes;
    recorder::ADC_Source m_adc;
    std::vector<Packet_Intake> m_intakes; // of the probes
    Packet_Intake m_adc_intake{0};
    std::unique_ptr<recorder::Probe_Source::Batch> m_batch;
    std::unique_ptr<recorder::ADC_Source::Batch> m_adc_batch;
    Health_Watch m_health{m_histories};

    std::thread m_thread; // last: it uses the others
};

} // namespace Pelgar::ORBE::view
