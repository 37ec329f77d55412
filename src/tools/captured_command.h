#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

/// One row of a driver's table: a system command and how its end is traced.
struct SystemCommand
{
    const char* pszReturned; ///< with the exit code, at verbose level
    const char* pszFailed;   ///< with an exit code other than 0, at `failedLevel`
    TRACE_LEVEL failedLevel;
    /// The command and its arguments, up to the first null. The words below stand for values of the call.
    std::array<const wchar_t*, 11> words;

    [[nodiscard]] bool Uses(const wchar_t* pszWord) const noexcept
    {
        return std::find(words.begin(), words.end(), pszWord) != words.end();
    }

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
