#pragma once

#include <atomic>

#include <winsock2.h>

#include <windows.h>

namespace velmor
{

/// The process's one object of a type, made by its first use, which any thread may be; it goes when the library is
/// unloaded.
///
/// The compiler's own guard of such objects is switched off, because it brings the thread library along, and the
/// system's one-time initialisation begins with Vista. Two threads meet here at most once in a process, so the later
/// one may as well look again every millisecond.
template <class T>
const T& FirstUse()
{
    class Turn
    {
    public:
        explicit Turn(std::atomic_flag& taken) noexcept : m_taken(taken)
        {
            while (m_taken.test_and_set(std::memory_order_acquire))
                ::Sleep(1);
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn() { m_taken.clear(std::memory_order_release); }

    private:
        std::atomic_flag& m_taken;
    };

    static std::atomic_flag taken;
    const Turn turn(taken);
    static const T object;
    return object;
}

} // namespace velmor
