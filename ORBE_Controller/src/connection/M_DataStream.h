// Layer: device controller. The receive side of the DMA stream: checks and registers the receive buffer, and
// reads into it. `read` is called on the pump thread and blocks until data has arrived; everything else on
// the host's threads.
#pragma once

#include "common/Export.h"
#include "connection/I_InputDataStream.h"
#include "connection/I_MemMapped_XDMA.h"
#include "connection/L2_ORBE_Configurator.h"

#include <memory>

namespace Pelgar::ORBE {

class ORBE_EXPORT M_DataStream {
public:
    // `stream` must outlive the object. The registers of the DMA engine are not needed: the driver minds
    // them.
    M_DataStream(I_MemMapped_XDMA* xdma, std::shared_ptr<ORBE_Configurator> configurator,
                 I_InputDataStream* stream);

    // Hands the buffer of `size` bytes over for all following reads. A buffer that is not aligned to 4 bytes
    // is refused; one that is not aligned to a page is only reported.
    void prepare_buffer_for_hw_read(unsigned char* buffer, unsigned size);

    // Exchanges the buffer that was handed over for another one, for all following reads. The design knows
    // nothing of it. Between two reads, on the thread that reads.
    void exchange_buffer(unsigned char* buffer, unsigned size);

    // Fills the prepared buffer, or reads only once when `complete` is false, and returns the number of
    // bytes. `buffer` is checked as above, but the data lands in the prepared buffer. Lets the exceptions of
    // the stream through.
    unsigned read(unsigned char* buffer, unsigned size, bool complete);

    // Switches off everything that sends data, by resetting the whole configuration.
    void disable_data_source();

private:
    std::shared_ptr<ORBE_Configurator> m_configurator;
    I_InputDataStream* m_stream;
};

} // namespace Pelgar::ORBE
