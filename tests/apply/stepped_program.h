#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include <cli/zelkctl_test.h>

/// A program that is stopped, as a debugger does it, before each call by which its own code changes the system: files,
/// the registry, processes and services. So it can be ended at every point that makes a difference, and nowhere else.
class SteppedProgram
{
public:
    /// What happens at a stop, which is named by the function and which of its calls it is, such as "WriteFile 2". When
    /// it gives false, the program is ended there.
    using AtStop = std::function<bool(const std::string& sStop)>;

    /// Starts it; what it writes is not kept.
    explicit SteppedProgram(const std::wstring& sCommandLine);
    /// One that runs already. Its stops begin when Run does.
    explicit SteppedProgram(Handle process);
    SteppedProgram(const SteppedProgram&) = delete;
    SteppedProgram& operator=(const SteppedProgram&) = delete;
    ~SteppedProgram();

    /// Runs it to its end. Gives its exit code, or nothing when it was ended at a stop.
    std::optional<DWORD> Run(const AtStop& atStop);

private:
    struct Breakpoint
    {
        std::string sFunction;
        BYTE original = 0;
        int iCalls = 0;
    };

    DWORD OnException(const DEBUG_EVENT& event, const AtStop& atStop);
    void OnBreakpoint(void* pAddress, HANDLE hThread, const AtStop& atStop);
    void SetBreakpoints();
    void FindImage(const void* pBase);
    bool Write(void* pAddress, BYTE value) const;
    template <class T>
    bool Read(const void* pAddress, T& value) const;

    Handle m_process;
    const BYTE* m_pImage = nullptr;
    std::size_t m_imageSize = 0;
    std::map<void*, Breakpoint> m_breakpoints;
    std::map<DWORD, void*> m_stepping; ///< by thread, the breakpoint that it is passing
    bool m_bEnded = false;
};
