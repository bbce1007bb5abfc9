#include "packets/C_MT_NP_PXI_Queue.h"

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// Shared by the queues of all ports.
std::atomic<std::uint8_t> g_np_overflow_counter{0};

} // namespace

MT_NP_PXI_Queue::MT_NP_PXI_Queue()
    : MT_PXI_Queue(g_np_overflow_counter, "MT_NP_PXI_Queue::peek_xfer_buffer_from_queue signalled for exit") {
}

} // namespace Pelgar::ORBE::npoe_adapter
