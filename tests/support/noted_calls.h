#pragma once

#include <support/golden.h>

namespace testing_support
{

/// Calls of functions that are replaced, each noted in a line. The call of that number, counted from 1, is refused.
struct NotedCalls
{
    int refused = 0;
    int made = 0;
    std::string sNotes;

    template <class... Values>
    void Note(const Values&... values)
    {
        sNotes += Show(values...) + '\n';
    }
    /// False, with a last error of its own, where it is to be refused.
    template <class... Values>
    bool Allow(const Values&... values)
    {
        const bool bAllowed = ++made != refused;
        Note(values...);
        if (!bAllowed)
            sNotes.insert(sNotes.size() - 1, " is refused");
        ::SetLastError(bAllowed ? ERROR_SUCCESS : 1000 + static_cast<DWORD>(made));
        return bAllowed;
    }
};

} // namespace testing_support
