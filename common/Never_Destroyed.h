// Layer: common. Process-wide state that outlives every thread: made at load, never torn down. A host that
// ends without closing the basestation leaves threads blocked in this state, and taking it away under them
// would hang or crash the exit.
#pragma once

#include <new>

namespace Pelgar::ORBE {

template <typename T>
class Never_Destroyed {
public:
    Never_Destroyed() { ::new (static_cast<void*>(m_storage)) T(); }

    Never_Destroyed(const Never_Destroyed&) = delete;
    Never_Destroyed& operator=(const Never_Destroyed&) = delete;

    // Makes a new object in the place of the old one, which is not torn down either. For a process that has
    // nobody left who could be using the old one.
    void begin_anew() { ::new (static_cast<void*>(m_storage)) T(); }

    T& operator*() { return *std::launder(reinterpret_cast<T*>(m_storage)); }

    T* operator->() { return &**this; }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
};

} // namespace Pelgar::ORBE
