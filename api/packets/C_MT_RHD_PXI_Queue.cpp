#include "packets/C_MT_RHD_PXI_Queue.h"

#include "common/Console.h"

namespace Pelgar::ORBE::npoe_adapter {

namespace {

std::atomic<std::uint8_t> g_rhd_overflow_counter{0};

} // namespace

MT_RHD_PXI_Queue::MT_RHD_PXI_Queue()
    : MT_PXI_Queue(g_rhd_overflow_counter,
                   "MT_RHD_PXI_Queue::peek_xfer_buffer_from_queue signalled for exit") {
    console::out("MT_RHD_PXI_Queue ctor \n");
}

} // namespace Pelgar::ORBE::npoe_adapter
