#pragma once

#include <string>

#include "system/handles.h"
#include "system/interrupt.h"

namespace zelkctl
{

/// Tells when files of a directory change. For as long as it lives, Ctrl+C ends the waiting instead of the program.
class DirectoryWatch
{
public:
    explicit DirectoryWatch(const std::wstring& sDirectory);

    /// Waits for a change since construction, or since the last wait. False when the user ends it.
    bool Wait();

private:
    InterruptEvent m_interrupt;
    UniqueChangeNotification m_changes;
};

} // namespace zelkctl
