#include <state/pending/change_folder.h>

#include <array>
#include <cstddef>
#include <vector>

#include <aclapi.h>
#include <sddl.h>

#include <state/machine/problem.h>
#include <state/platform/system_message.h>

namespace zelk
{
namespace
{

[[noreturn]] void Fail(const char* step, DWORD code)
{
    throw StateError({code, step, "The folder for pending changes cannot be used", SystemMessage(code)});
}

UniqueHandle OpenFolder(const std::wstring& folder)
{
    const HANDLE handle = ::CreateFileW(folder.c_str(), READ_CONTROL | FILE_READ_ATTRIBUTES,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        Fail("CreateFile", ::GetLastError());
    return UniqueHandle(handle);
}

void CheckFolder(const std::wstring& folder)
{
    const UniqueHandle handle = OpenFolder(folder);
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!::GetFileInformationByHandle(handle.get(), &information))
        Fail("GetFileInformationByHandle", ::GetLastError());
    const DWORD kind = information.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
    if (kind != FILE_ATTRIBUTE_DIRECTORY) // a link could lead anywhere
        Fail("GetFileInformationByHandle", ERROR_DIRECTORY);
    if (!IsOnlyForAdministrators(handle.get()))
        Fail("GetSecurityInfo", ERROR_INVALID_OWNER);
}

/// The account of this process; empty when it cannot be read.
std::vector<std::byte> OwnAccount()
{
    HANDLE opened = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened))
        return {};
    const UniqueHandle token(opened);
    DWORD size = 0;
    ::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<std::byte> user(size);
    if (size < sizeof(TOKEN_USER) || !::GetTokenInformation(token.get(), TokenUser, user.data(), size, &size))
        return {};
    return user;
}

/// TrustedInstaller owns the Windows directory.
bool IsTrustedInstaller(PSID account)
{
    wchar_t* text = nullptr;
    if (!::ConvertSidToStringSidW(account, &text))
        return false;
    const UniqueLocalText owner(text);
    return std::wstring_view(text) == L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";
}

bool IsTrusted(PSID account)
{
    for (const WELL_KNOWN_SID_TYPE type :
         {WinLocalSystemSid, WinBuiltinAdministratorsSid, WinCreatorOwnerSid, WinCreatorOwnerRightsSid})
        if (::IsWellKnownSid(account, type))
            return true;
    const std::vector<std::byte> user = OwnAccount();
    return (!user.empty() && ::EqualSid(account, reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid)) ||
           IsTrustedInstaller(account);
}

bool AllowsOthers(const ACE_HEADER& header)
{
    constexpr DWORD CHANGES = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_WRITE_EA | FILE_WRITE_ATTRIBUTES |
                              FILE_DELETE_CHILD | DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
    if (header.AceType == ACCESS_DENIED_ACE_TYPE || (header.AceFlags & INHERIT_ONLY_ACE) != 0)
        return false;
    if (header.AceType != ACCESS_ALLOWED_ACE_TYPE) // of an unknown kind
        return true;
    const auto& allowed = reinterpret_cast<const ACCESS_ALLOWED_ACE&>(header);
    return (allowed.Mask & CHANGES) != 0 && !IsTrusted(const_cast<DWORD*>(&allowed.SidStart));
}

} // namespace

AdministratorsOnly::AdministratorsOnly()
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)", SDDL_REVISION_1,
                                                                &descriptor, nullptr))
        return;
    m_descriptor.reset(descriptor);
    m_attributes.nLength = sizeof(m_attributes);
    m_attributes.lpSecurityDescriptor = descriptor;
}

std::wstring ChangeFolder()
{
    std::array<wchar_t, MAX_PATH + 1> path = {};
    const UINT length = ::GetSystemWindowsDirectoryW(path.data(), MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        Fail("GetSystemWindowsDirectory", ::GetLastError());
    return std::wstring(path.data(), length) + L"\\ZELK\\Changes";
}

void PrepareChangeFolder(const std::wstring& folder)
{
    AdministratorsOnly security;
    if (security.Get() == nullptr)
        Fail("ConvertStringSecurityDescriptorToSecurityDescriptor", ::GetLastError());
    const std::wstring parent = folder.substr(0, folder.find_last_of(L'\\'));
    for (const std::wstring& path : {parent, folder})
        if (!::CreateDirectoryW(path.c_str(), security.Get()) && ::GetLastError() != ERROR_ALREADY_EXISTS)
            Fail("CreateDirectory", ::GetLastError());
    for (const std::wstring& path : {parent, folder})
        CheckFolder(path);
}

bool IsOnlyForAdministrators(HANDLE file)
{
    PSID owner = nullptr;
    PACL entries = nullptr;
    PSECURITY_DESCRIPTOR read = nullptr;
    if (::GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner, nullptr,
                          &entries, nullptr, &read) != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, Release<::LocalFree>> descriptor(read);
    if (owner == nullptr || !IsTrusted(owner) || entries == nullptr) // no list allows everything
        return false;
    for (DWORD i = 0; i < entries->AceCount; ++i)
        if (void* entry = nullptr; !::GetAce(entries, i, &entry) || AllowsOthers(*static_cast<ACE_HEADER*>(entry)))
            return false;
    return true;
}

} // namespace zelk
