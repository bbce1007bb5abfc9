// Program orbe-view, pictures. Makes what one page gets to see. One thread; waits for the streams' threads
// where both want the same history, and lets them in between the parts of a picture.
#pragma once

#include "pictures/Picture.h"
#include "pictures/Power_Spectrum.h"
#include "pictures/View_Request.h"
#include "sources/A_Source.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace Pelgar::ORBE::view {

class Picture_Maker {
public:
    // `may_control`: whether the page may change the box. The source must outlive the object.
    Picture_Maker(const A_Source& source, bool may_control);

    // What never changes: the probes, where their electrodes lie, what there is to see.
    Picture introduction() const;

    // Number `number` of this page. What changes slowly, the spectrum and the state of channels and streams,
    // comes only with `is_whole`.
    Picture make(const View_Request& request, std::uint64_t number, bool is_whole);

private:
    class Blocks;

    void add_traces(Blocks& blocks, const View_Request& request, std::uint64_t end);
    void add_probe_traces(Blocks& blocks, const Probe_History& probe, const View_Request& request,
                          std::uint64_t end);
    void add_adc_traces(Blocks& blocks, const ADC_History& adc, const View_Request& request,
                        std::uint64_t end);
    void add_channels(Blocks& blocks, const Probe_History& probe) const;
    void add_spectrum(Blocks& blocks, const Probe_History& probe, const View_Request& request,
                      std::uint64_t end);
    // Looks at a part of the columns: at all lanes of each, and at what is lost of it.
    using Look =
        std::function<void(const Columns& part, std::span<Extent> extents, std::span<std::uint32_t> lost)>;
    void add_lanes(Blocks& blocks, const Columns& columns, std::size_t columns_at_once,
                   std::span<const float> scales, const Look& look);
    void add_health(Blocks& blocks) const;
    void add_damage(Blocks& blocks) const;
    std::uint64_t end_of(const View_Request& request, const Source_Status& status) const;

    const A_Source& m_source;
    bool m_may_control;
    Power_Spectrum m_ap_spectrum{2048};
    Power_Spectrum m_lfp_spectrum{1024};
    std::vector<Extent> m_extents;
    std::vector<std::uint32_t> m_lost;
    std::vector<float> m_values;
    std::vector<std::int16_t> m_samples;
};

} // namespace Pelgar::ORBE::view
