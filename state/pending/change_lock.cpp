#include <state/pending/change_lock.h>

#include <array>
#include <thread>

#include <state/machine/problem.h>
#include <state/pending/change_folder.h>
#include <state/pending/pending_change.h>
#include <state/pending/utc_time.h>
#include <state/platform/system_message.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds INTERVAL(100);

std::wstring LockFile(const std::wstring& folder)
{
    return folder + L"\\change.lock";
}

std::string UserName()
{
    std::array<wchar_t, 257> name = {};
    DWORD size = static_cast<DWORD>(name.size());
    return ::GetUserNameW(name.data(), &size) ? ToUtf8(name.data()) : std::string();
}

/// Others may read the file, but not open it for writing. Gives null and the system's code.
UniqueHandle OpenAlone(const std::wstring& file, DWORD& code)
{
    AdministratorsOnly security;
    const HANDLE handle = ::CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, security.Get(),
                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    code = handle != INVALID_HANDLE_VALUE ? ERROR_SUCCESS : ::GetLastError();
    return UniqueHandle(handle != INVALID_HANDLE_VALUE ? handle : nullptr);
}

[[noreturn]] void Fail(DWORD code, const char* what)
{
    throw StateError({code, "CreateFile", what, SystemMessage(code)});
}

/// What nobody can read is no reason to give the lock up.
void WriteHolder(HANDLE file)
{
    const Changer changer = ThisChanger();
    const std::string text =
        Json{{"user", changer.user}, {"process", changer.process}, {"since", changer.since}}.dump() + '\n';
    DWORD written = 0;
    ::SetEndOfFile(file);
    ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

} // namespace

Changer ThisChanger()
{
    return {UserName(), ::GetCurrentProcessId(), UtcNow()};
}

std::optional<ChangeLock> ChangeLock::Take(const std::wstring& folder, std::chrono::milliseconds timeout,
                                           const std::function<bool()>& isCancelled)
{
    const auto end = Clock::now() + timeout;
    for (;;)
    {
        DWORD code = ERROR_SUCCESS;
        if (UniqueHandle file = OpenAlone(LockFile(folder), code))
        {
            WriteHolder(file.get());
            return ChangeLock(std::move(file));
        }
        if (code != ERROR_SHARING_VIOLATION)
            Fail(code, "The lock on changes cannot be taken");
        if (Clock::now() >= end || (isCancelled && isCancelled()))
            return std::nullopt;
        std::this_thread::sleep_for(INTERVAL);
    }
}

std::optional<Changer> ChangeLock::Holder(const std::wstring& folder)
{
    if (!LifeSign::IsGiven(LockFile(folder)))
        return std::nullopt;
    const HANDLE opened =
        ::CreateFileW(LockFile(folder).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return std::nullopt;
    const UniqueHandle file(opened);
    std::array<char, 4096> text = {};
    DWORD size = 0;
    if (!::ReadFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &size, nullptr))
        return std::nullopt;
    std::vector<Fault> faults;
    const auto holder = ReadChanger(Json::parse(text.data(), text.data() + size, nullptr, false), "", faults);
    return faults.empty() ? holder : std::nullopt;
}

LifeSign::LifeSign(const std::wstring& file)
{
    constexpr int TRIES = 10; // who looks whether the sign is given has the file open for a moment
    DWORD code = ERROR_SUCCESS;
    for (int i = 0; i < TRIES && !m_file; ++i)
    {
        if (i > 0)
            std::this_thread::sleep_for(INTERVAL);
        m_file = OpenAlone(file, code);
    }
    if (!m_file)
        Fail(code, "The watch cannot open the file that shows that it is running");
}

bool LifeSign::IsGiven(const std::wstring& file)
{
    const HANDLE opened = ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return ::GetLastError() == ERROR_SHARING_VIOLATION;
    ::CloseHandle(opened);
    return false;
}

} // namespace zelk
