#pragma once

// Trace: the only place where the library says why something failed. The log is read by people and by scripts that
// search for its texts, so every text, variable name and level in the library is a contract, misspellings included;
// new code may add lines of its own but changes none. CallFrame is how an operation writes them; CTrace is the file.

#include <atomic>
#include <cstdint>
#include <string>

#include <winsock2.h>

#include <windows.h>

#include <support/platform/handles.h>
#include <support/platform/wide_file_stream.h>
#include <zelk_nm/string.h>

enum TRACE_LEVEL : unsigned int
{
    TRACE_ERROR = 1,
    TRACE_WARNING = 2,
    TRACE_INFORMATION = 4,
    TRACE_VERBOSE = 8
};

/// The library's trace log: one line an event, in a file that several processes share.
///
/// Every line is written under a named mutex with the file opened, appended to and closed, so that lines of concurrent
/// processes never interleave and the file on disk is always whole. No failure of the log is reported to anybody, and
/// no exception leaves it: what cannot be written is lost. A line waits for the mutex for a minute at most.
class CTrace
{
public:
    /// Opens the mutex, settles the log directory and moves the file of the previous load to its ".old" name.
    /// Without memory for that the log stays silent.
    CTrace(const wchar_t* pszFileName, const wchar_t* pszLevelKey, unsigned int ulLevelMask) noexcept;
    CTrace(const CTrace&) = delete;
    CTrace& operator=(const CTrace&) = delete;

    // The order of the virtual operations is the order of their slots.
    virtual ~CTrace();
    /// The directory of the trace file; it need not exist, and then nothing is written.
    virtual void GetLogDirectory(velmor::string& sDir);
    /// From now on traces into `sDir`. False, and nothing changed, when that is no directory.
    virtual bool SetLogDirectory(const velmor::string& sDir);
    /// The directory of the process's executable.
    virtual void GetModuleDirectory(velmor::string& sDir);
    /// 0 nothing, 1 errors, 2 and warnings, 3 and information, 4 everything; other settings change nothing.
    virtual void SetTraceLevel(unsigned int uiSetting);
    /// Takes the setting from trace.ini; without one the level stays.
    virtual void ReadTraceLevel();
    /// Sets the level, traces into `sDir` from now on and deletes the trace file there. An empty `sDir` does nothing.
    virtual void ResetLog(const velmor::string& sDir, unsigned int uiSetting);
    /// Empties the trace file. False when the mutex is missing or cannot be had within a minute.
    virtual bool ClearLog();
    virtual unsigned int GetTraceMask();

    /// Name, " : " and message.
    virtual void Trace(unsigned int level, const velmor::string& sName, const velmor::string& sMessage);

    // Name, " : ", variable, " = " and the value.
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          wchar_t value);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, char value);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          const wchar_t* pszValue);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          const char* pszValue);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          const std::wstring& sValue);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          const std::string& sValue);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          const velmor::string& sValue);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          long long value);
    /// Upper-case hexadecimal. The case then stays for thread ids and byte dumps of later lines, until a TraceIPv6.
    virtual void TraceHex(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          unsigned long long value);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, BOOL value);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, bool value);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          double value);
    virtual void TraceBytes(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                            const unsigned char* pBytes, unsigned int count);
    /// The text in a frame of "*". It is written at any level but 0.
    virtual void TraceBanner(const velmor::string& sText);
    /// The dotted text of an address in network byte order, or in host byte order with `bSwap`.
    virtual void TraceIPv4(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                           unsigned long ulAddress, bool bSwap);
    /// All eight groups of an IPv6 text. A text whose only colons are one "::" is not accepted, by contract.
    virtual void TraceIPv6(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                           const wchar_t* pszAddress);
    virtual void TraceIPv6(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                           const char* pszAddress);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          const GUID& value);
    virtual void TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                          const SYSTEMTIME& value);

    /// Whether lines of the level are written: all that a masked line costs.
    [[nodiscard]] bool IsWritten(unsigned int level) const noexcept
    {
        return (m_ulLevelMask.load(std::memory_order_relaxed) & level) != 0;
    }

private:
    class AcquiredFile;

    void RotateLog();
    void WritePrefix(unsigned int level);
    template <class Body>
    void WriteLine(unsigned int level, Body&& body) noexcept;
    template <class Value>
    void WriteVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                  Value&& writeValue) noexcept;
    template <class Char>
    void WriteIPv6(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                   const Char* pszAddress) noexcept;

    std::atomic<std::uint32_t> m_ulLevelMask;
    velmor::WideFileStream m_ofs;
    velmor::UniqueMutex m_hMutex;
    unsigned long m_ulEnvironment;
    velmor::string m_sFileName;
    velmor::string m_sLevelKey;
    velmor::string m_sLogPath;
    velmor::string m_sLogDir;
};

namespace velmor
{
// What stands on both sides of a banner's text.
extern const string BANNER_LEFT;
extern const string BANNER_RIGHT;
} // namespace velmor

/// The one trace log of the library. It is the first of the module's objects to be built and the last to go.
extern CTrace TheTrace;
