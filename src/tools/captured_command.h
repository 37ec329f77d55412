#pragma once

// Tools: changes that are left to the system's own commands, netsh and ipconfig. The functions of IP Helper change only
// what the stack uses at present, which is lost at the next start; netsh also writes the persistent settings. Those for
// leases know IPv4 alone; ipconfig knows both families. The commands run through the command interpreter, which finds
// them and redirects their output. What they print is in the system's language: their exit code alone is judged, and
// their output only kept for the trace.

#include <algorithm>
#include <array>
#include <vector>

#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

/// One row of a driver's table: a system command and how its end is traced.
struct SystemCommand
{
    /// The command and its arguments, up to the first null. The words below stand for values of the call.
    std::array<const wchar_t*, 11> words;
    /// What the trace calls it; by default its words up to the first that stands for a value.
    const wchar_t* pszName = nullptr;
    /// An exit code other than 0 is traced at this level,
    TRACE_LEVEL failedLevel = TRACE_ERROR;
    /// with the command's name or without.
    bool bNamedInFailure = false;

    [[nodiscard]] bool Uses(const wchar_t* pszWord) const noexcept
    {
        return std::find(words.begin(), words.end(), pszWord) != words.end();
    }
    [[nodiscard]] velmor::string Name() const;

    static constexpr wchar_t CONNECTION[] = L"<connection>";
    static constexpr wchar_t ADDRESS[] = L"<address>";
    static constexpr wchar_t NETMASK[] = L"<netmask>";
};

/// One run of a system command for one adapter, through the command interpreter. The command's whole output goes into a
/// temporary file, which this object owns: it is gone when the object is.
class CapturedCommand
{
public:
    explicit CapturedCommand(const CallFrame& frame) noexcept : m_frame(frame) {}
    CapturedCommand(const CapturedCommand&) = delete;
    CapturedCommand& operator=(const CapturedCommand&) = delete;
    ~CapturedCommand();

    /// Finds the adapter's connection name and makes the temporary file. On failure nothing is left behind, the reason
    /// is traced and nothing may be run.
    bool Prepare(const TOLVA::NIC_INFO& NicInfo);

    /// Runs the command and blocks until it ends. Only its exit code decides: 0 is success. What a failed command
    /// printed goes into the trace line by line.
    bool Run(const SystemCommand& command, const velmor::string& sAddress = {}, const velmor::string& sNetmask = {});

private:
    std::vector<velmor::string> Arguments(const SystemCommand& command, const velmor::string& sAddress,
                                          const velmor::string& sNetmask) const;
    void TraceOutput() const noexcept;
    void DeleteOutput();

    const CallFrame& m_frame;
    velmor::string m_sConnection;
    velmor::string m_sOut;
};
