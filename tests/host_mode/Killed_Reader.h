// Test support, host mode. A thread that reads a port without a pause until it is ended by force, wherever it
// is, as the Open Ephys GUI ends a thread that has not ended within a second.
#pragma once

#include <NeuropixAPI.h>

#include <array>

#if defined(_WIN32)
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace Pelgar::ORBE::test {

class Killed_Reader {
public:
    explicit Killed_Reader(int slot) : m_slot(slot) {
#if defined(_WIN32)
        m_thread = ::CreateThread(nullptr, 0, read_for_ever, this, 0, nullptr);
#else
        ::pthread_create(&m_thread, nullptr, read_for_ever, this);
#endif
    }

    Killed_Reader(const Killed_Reader&) = delete;
    Killed_Reader& operator=(const Killed_Reader&) = delete;

    // Kills it.
    ~Killed_Reader() {
#if defined(_WIN32)
        ::TerminateThread(m_thread, 1);
        ::WaitForSingleObject(m_thread, INFINITE);
        ::CloseHandle(m_thread);
#else
        ::pthread_cancel(m_thread);
        ::pthread_join(m_thread, nullptr);
#endif
    }

private:
    void read() {
        int count = 0;
        Neuropixels::readElectrodeData(m_slot, 1, 1, m_packets.data(), &count,
                                       static_cast<int>(m_packets.size()));
    }

#if defined(_WIN32)
    static DWORD WINAPI read_for_ever(void* self) {
        while (true) {
            static_cast<Killed_Reader*>(self)->read();
        }
    }

    HANDLE m_thread = nullptr;
#else
    static void* read_for_ever(void* self) {
        ::pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
        while (true) {
            static_cast<Killed_Reader*>(self)->read();
        }
    }

    pthread_t m_thread{};
#endif
    int m_slot;
    std::array<Neuropixels::electrodePacket, 16> m_packets{};
};

} // namespace Pelgar::ORBE::test
