// Program orbe-view, history. The histories of all streams of a source. Made by the source before anybody
// looks; afterwards only what is in them changes.
#pragma once

#include "history/ADC_History.h"
#include "history/Health_History.h"
#include "history/Probe_History.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::view {

class Histories {
public:
    // `has_adc`: whether the ADC inputs are there. `channels`: those of each probe that are; none: all.
    Histories(const std::vector<recorder::Probe_Description>& probes, bool has_adc, double adc_range_volts,
              double spike_microvolts, const std::vector<int>& channels = {}) {
        for (const recorder::Probe_Description& probe : probes) {
            m_probes.push_back(std::make_unique<Probe_History>(probe, spike_microvolts, channels));
        }
        if (has_adc) {
            m_adc = std::make_unique<ADC_History>(adc_range_volts);
        }
    }

    std::size_t probe_count() const { return m_probes.size(); }

    Probe_History& probe(std::size_t place) { return *m_probes.at(place); }

    const Probe_History& probe(std::size_t place) const { return *m_probes.at(place); }

    // Null for a port, 1..4, without one.
    const Probe_History* probe_on(int port) const {
        for (const auto& probe : m_probes) {
            if (probe->description().port == port) {
                return probe.get();
            }
        }
        return nullptr;
    }

    // Null without one.
    ADC_History* adc() { return m_adc.get(); }

    const ADC_History* adc() const { return m_adc.get(); }

    Health_History& health() { return m_health; }

    const Health_History& health() const { return m_health; }

    // Of all streams, each sample once.
    std::uint64_t lost_samples() const {
        std::uint64_t lost = m_adc ? ADC_History::Reading(*m_adc).different_lost_samples() : 0;
        for (const auto& probe : m_probes) {
            lost += Probe_History::Reading(*probe).different_lost_samples();
        }
        return lost;
    }

    // What comes next is of another time.
    void clear() {
        for (const auto& probe : m_probes) {
            probe->clear();
        }
        if (m_adc) {
            m_adc->clear();
        }
        m_health.clear();
    }

    // And its numbers are those of other samples.
    void begin_anew() {
        clear();
        for (const auto& probe : m_probes) {
            probe->begin_anew();
        }
        if (m_adc) {
            m_adc->begin_anew();
        }
    }

private:
    std::vector<std::unique_ptr<Probe_History>> m_probes;
    std::unique_ptr<ADC_History> m_adc;
    Health_History m_health;
};

} // namespace Pelgar::ORBE::view
