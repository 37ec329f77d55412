#include <support/trace/trace.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <ws2tcpip.h>

#include <shlwapi.h>

#include <support/platform/module_path.h>
#include <support/registry/environment.h>
#include <support/values/ipv6_groups.h>
#include <zelk_common/trace_files.h>

namespace
{

constexpr DWORD LINE_WAIT_MS = 60000;
/// The load of the library waits for nobody.
constexpr DWORD ROTATION_WAIT_MS = 0;
constexpr unsigned int BYTES_PER_ROW = 32;
/// The environment whose files lie at fixed places on drive Z:, not beside the executable.
constexpr unsigned long ENVIRONMENT_ON_Z = 16;

struct LevelTag
{
    unsigned int level;
    const wchar_t* pszTag;
};
constexpr LevelTag LEVEL_TAGS[] = {
    {TRACE_ERROR, L":[E]: "}, {TRACE_WARNING, L":[W]: "}, {TRACE_INFORMATION, L":[I]: "}, {TRACE_VERBOSE, L":[V]: "}};

std::wstring_view View(const velmor::string& text) noexcept
{
    return {text.c_str(), text.size()};
}

const wchar_t* FallbackModulePath() noexcept
{
    return L"X:\\Program Files\\Velmor\\ZELK\\";
}

/// Waits for the mutex; any other result than success, an abandoned mutex included, gives it back and counts as failed.
velmor::HeldMutex WaitFor(HANDLE hMutex, DWORD dwMilliseconds) noexcept
{
    if (hMutex == nullptr)
        return {};
    if (::WaitForSingleObject(hMutex, dwMilliseconds) == WAIT_OBJECT_0)
        return velmor::HeldMutex(hMutex);
    ::ReleaseMutex(hMutex);
    return {};
}

void PutCharacter(velmor::WideFileStream& ofs, wchar_t character)
{
    ofs << L" = '";
    switch (character)
    {
    case L'\0': ofs << L"<NULL>"; break;
    case L'\n': ofs << L"<LF>"; break;
    case L'\r': ofs << L"<CR>"; break;
    default: ofs << character;
    }
    ofs << L'\'';
}

void PutQuoted(velmor::WideFileStream& ofs, std::wstring_view text)
{
    ofs << L" = \"" << text << L'"';
}

} // namespace

/// The trace file, open for as long as one line takes, with the mutex held.
class CTrace::AcquiredFile
{
public:
    explicit AcquiredFile(CTrace& trace) noexcept
        : m_mutex(WaitFor(trace.m_hMutex.Get(), LINE_WAIT_MS)), m_ofs(trace.m_ofs)
    {
        m_bOpen = m_mutex && m_ofs.Open(trace.m_sLogPath.c_str(), velmor::WideFileStream::Mode::Append);
    }
    AcquiredFile(const AcquiredFile&) = delete;
    AcquiredFile& operator=(const AcquiredFile&) = delete;
    ~AcquiredFile()
    {
        if (m_bOpen)
            m_ofs.Close();
    }
    explicit operator bool() const noexcept { return m_bOpen; }

private:
    velmor::HeldMutex m_mutex;
    velmor::WideFileStream& m_ofs;
    bool m_bOpen;
};

CTrace::CTrace(const wchar_t* pszFileName, const wchar_t* pszLevelKey, unsigned int ulLevelMask) noexcept
    : m_ulLevelMask(ulLevelMask), m_hMutex(::CreateMutexW(nullptr, FALSE, pszFileName)), m_ulEnvironment(0)
{
    try
    {
        m_sFileName = pszFileName;
        m_sLevelKey = pszLevelKey;
        // The environment is settled last, so the log directory is always sought beside the executable, even where the
        // settings file (ReadTraceLevel) lies on drive Z:.
        velmor::string sLogDir;
        CTrace::GetLogDirectory(sLogDir);
        m_sLogPath = sLogDir + L"\\" + m_sFileName;
        RotateLog();
    }
    catch (...)
    {
        // Without its path no file opens, and the lines are lost.
    }
    m_ulEnvironment = GetWindowsEnvironment();
}

CTrace::~CTrace()
{
    m_ofs.Close();
    if (m_hMutex)
        ::ReleaseMutex(m_hMutex.Get());
}

void CTrace::RotateLog()
{
    // Between copy and deletion another process could lose a line, so the mutex is held where it is free.
    const velmor::HeldMutex mutex = WaitFor(m_hMutex.Get(), ROTATION_WAIT_MS);
    if (!::PathFileExistsW(m_sLogPath.c_str()))
        return;
    velmor::string sBackup = m_sLogPath;
    const std::size_t position = sBackup.rfind(L'.');
    if (position != velmor::string::npos)
        sBackup.erase(position);
    sBackup += zelk_common::PREVIOUS_EXTENSION;
    // Every load starts a new file, whether the copy succeeded or not.
    ::CopyFileW(m_sLogPath.c_str(), sBackup.c_str(), FALSE);
    ::DeleteFileW(m_sLogPath.c_str());
}

void CTrace::GetLogDirectory(velmor::string& sDir)
{
    if (m_sLogDir.empty())
    {
        velmor::string sModuleDir;
        CTrace::GetModuleDirectory(sModuleDir);
        velmor::string sBase = sModuleDir;
        if (m_ulEnvironment == ENVIRONMENT_ON_Z)
            sBase = zelk_common::BOOT_IMAGE_DIRECTORY;
        sBase += zelk_common::LOG_DIRECTORY;
        m_sLogDir = velmor::ReadProfileText(zelk_common::LOG_SECTION, zelk_common::LOG_KEY, sBase,
                                            sModuleDir + zelk_common::LOG_SETTINGS);
    }
    sDir = m_sLogDir;
}

bool CTrace::SetLogDirectory(const velmor::string& sDir)
{
    if (!::PathIsDirectoryW(sDir.c_str()))
        return false;
    m_sLogDir = sDir;
    m_sLogPath = sDir + L"\\" + m_sFileName;
    return true;
}

void CTrace::GetModuleDirectory(velmor::string& sDir)
{
    velmor::string sPath;
    DWORD dwLastError = 0;
    if (!velmor::GetModulePath(nullptr, sPath, dwLastError))
        sPath = FallbackModulePath();
    sDir = velmor::DirectoryOf(sPath);
}

void CTrace::SetTraceLevel(unsigned int uiSetting)
{
    if (uiSetting <= 4)
        m_ulLevelMask = (1U << uiSetting) - 1;
}

void CTrace::ReadTraceLevel()
{
    constexpr INT NO_SETTING = 5;
    velmor::string sDir = zelk_common::BOOT_IMAGE_DIRECTORY;
    if (m_ulEnvironment != ENVIRONMENT_ON_Z)
        GetModuleDirectory(sDir);
    const velmor::string sSettings = sDir + zelk_common::TRACE_SETTINGS;
    SetTraceLevel(
        ::GetPrivateProfileIntW(zelk_common::TRACE_SECTION, m_sLevelKey.c_str(), NO_SETTING, sSettings.c_str()));
}

void CTrace::ResetLog(const velmor::string& sDir, unsigned int uiSetting)
{
    if (sDir.empty())
        return;
    SetTraceLevel(uiSetting);
    m_sLogPath = sDir + L"\\" + m_sFileName;
    ::DeleteFileW(m_sLogPath.c_str());
}

bool CTrace::ClearLog()
{
    const velmor::HeldMutex mutex = WaitFor(m_hMutex.Get(), LINE_WAIT_MS);
    if (!mutex)
        return false;
    m_ofs.Open(m_sLogPath.c_str(), velmor::WideFileStream::Mode::Truncate);
    m_ofs.Close();
    return true;
}

unsigned int CTrace::GetTraceMask()
{
    return m_ulLevelMask;
}

void CTrace::WritePrefix(unsigned int level)
{
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    char time[26];
    std::snprintf(time, std::size(time), "[%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u.%3.3u]", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    m_ofs << time << L':';
    m_ofs.Hex(::GetCurrentThreadId(), 4);
    for (const LevelTag& tag : LEVEL_TAGS)
        if (tag.level == level)
            m_ofs << tag.pszTag;
}

template <class Body>
void CTrace::WriteLine(unsigned int level, Body&& body) noexcept
{
    if (!IsWritten(level))
        return;
    const AcquiredFile file(*this);
    if (!file)
        return;
    try
    {
        WritePrefix(level);
        body();
        m_ofs << L'\n';
    }
    catch (...)
    {
        m_ofs.Clear();
    }
}

template <class Value>
void CTrace::WriteVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      Value&& writeValue) noexcept
{
    WriteLine(level, [&] {
        m_ofs << View(sName) << L" : " << View(sVariable);
        writeValue();
    });
}

void CTrace::Trace(unsigned int level, const velmor::string& sName, const velmor::string& sMessage)
{
    WriteLine(level, [&] { m_ofs << View(sName) << L" : " << View(sMessage); });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, wchar_t value)
{
    WriteVar(level, sName, sVariable, [&] { PutCharacter(m_ofs, value); });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, char value)
{
    WriteVar(level, sName, sVariable, [&] {
        wchar_t character = L'\0';
        if (std::mbtowc(&character, &value, 1) < 0)
            character = L'\xFFFD';
        PutCharacter(m_ofs, character);
    });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      const wchar_t* pszValue)
{
    WriteVar(level, sName, sVariable, [&] { PutQuoted(m_ofs, pszValue != nullptr ? pszValue : L""); });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      const char* pszValue)
{
    WriteVar(level, sName, sVariable, [&] { PutQuoted(m_ofs, View(velmor::string(pszValue))); });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      const std::wstring& sValue)
{
    TraceVar(level, sName, sVariable, sValue.c_str());
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      const std::string& sValue)
{
    TraceVar(level, sName, sVariable, sValue.c_str());
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      const velmor::string& sValue)
{
    TraceVar(level, sName, sVariable, sValue.c_str());
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, long long value)
{
    WriteVar(level, sName, sVariable, [&] { m_ofs << L" = " << value; });
}

void CTrace::TraceHex(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      unsigned long long value)
{
    WriteVar(level, sName, sVariable, [&] {
        m_ofs.UpperCaseDigits(true);
        m_ofs << L" = 0x";
        m_ofs.Hex(value);
    });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, BOOL value)
{
    TraceVar(level, sName, sVariable, value != FALSE);
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, bool value)
{
    WriteVar(level, sName, sVariable, [&] { m_ofs << (value ? L" = true" : L" = false"); });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable, double value)
{
    WriteVar(level, sName, sVariable, [&] { m_ofs << L" = " << value * 10000.0 / 10000.0; });
}

void CTrace::TraceBytes(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                        const unsigned char* pBytes, unsigned int count)
{
    WriteVar(level, sName, sVariable, [&] {
        m_ofs << (count > BYTES_PER_ROW ? L" = \n" : L" = ");
        for (unsigned int i = 0; pBytes != nullptr && i < count; ++i)
            m_ofs.Hex(pBytes[i], 2) << ((i + 1) % BYTES_PER_ROW == 0 ? L'\n' : L' ');
    });
}

void CTrace::TraceBanner(const velmor::string& sText)
{
    if (m_ulLevelMask == 0)
        return;
    const AcquiredFile file(*this);
    if (!file)
        return;
    try
    {
        const std::wstring sStars(sText.size() + 6, L'*');
        m_ofs << L'\n' << sStars << L'\n';
        m_ofs << View(velmor::BANNER_LEFT) << View(sText) << View(velmor::BANNER_RIGHT) << L'\n';
        m_ofs << sStars << L"\n\n";
    }
    catch (...)
    {
        m_ofs.Clear();
    }
}

void CTrace::TraceIPv4(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                       unsigned long ulAddress, bool bSwap)
{
    WriteVar(level, sName, sVariable, [&] {
        IN_ADDR address;
        address.s_addr = bSwap ? ::htonl(ulAddress) : ulAddress;
        const char* pszText = ::inet_ntoa(address);
        m_ofs << L" = " << (pszText != nullptr ? pszText : "<invalid>");
    });
}

template <class Char>
void CTrace::WriteIPv6(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                       const Char* pszAddress) noexcept
{
    WriteVar(level, sName, sVariable, [&] {
        m_ofs.UpperCaseDigits(false);
        m_ofs << L" = ";
        velmor::Ipv6Groups groups;
        if (pszAddress == nullptr || !velmor::ParseIpv6Groups(std::basic_string_view<Char>(pszAddress), groups))
        {
            m_ofs << L"<Invalid IPv6 address>";
            return;
        }
        for (std::size_t i = 0; i < groups.size(); ++i)
        {
            if (i > 0)
                m_ofs << L':';
            m_ofs.Hex(groups[i], 4);
        }
    });
}

void CTrace::TraceIPv6(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                       const wchar_t* pszAddress)
{
    WriteIPv6(level, sName, sVariable, pszAddress);
}

void CTrace::TraceIPv6(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                       const char* pszAddress)
{
    WriteIPv6(level, sName, sVariable, pszAddress);
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      const GUID& value)
{
    WriteVar(level, sName, sVariable, [&] {
        char text[37];
        std::snprintf(text, std::size(text), "%8.8lX-%4.4X-%4.4X-%2.2X%2.2X-%2.2X%2.2X%2.2X%2.2X%2.2X%2.2X",
                      value.Data1, value.Data2, value.Data3, value.Data4[0], value.Data4[1], value.Data4[2],
                      value.Data4[3], value.Data4[4], value.Data4[5], value.Data4[6], value.Data4[7]);
        m_ofs << L" = { " << text << L" }";
    });
}

void CTrace::TraceVar(unsigned int level, const velmor::string& sName, const velmor::string& sVariable,
                      const SYSTEMTIME& value)
{
    WriteVar(level, sName, sVariable, [&] {
        char text[32];
        std::snprintf(text, std::size(text), "%2.2u/%2.2u/%4.4u %2.2u:%2.2u:%2.2u", value.wDay, value.wMonth,
                      value.wYear, value.wHour, value.wMinute, value.wSecond);
        m_ofs << L" = " << text;
    });
}
