#include <state/pending/pending_store.h>

#include <state/machine/problem.h>
#include <state/pending/change_folder.h>
#include <state/pending/machine_id.h>
#include <state/platform/file_search.h>
#include <state/platform/system_message.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

constexpr std::wstring_view ENDING = L".json";
constexpr std::wstring_view ENDING_BESIDE = L".new";
constexpr LONGLONG GREATEST_SIZE = 4 << 20;

std::wstring FileOf(const std::wstring& folder, const std::string& id, std::wstring_view ending = ENDING)
{
    return folder + L'\\' + FromUtf8(id) + std::wstring(ending);
}

[[noreturn]] void Fail(const char* step, const char* text)
{
    const DWORD code = ::GetLastError();
    throw StateError({code, step, text, SystemMessage(code)});
}

/// What is done to a file fails while another process has it open, which those that read records do for a moment.
template <class Work>
bool DoInTurn(Work work)
{
    constexpr int TRIES = 40;
    constexpr DWORD INTERVAL_MS = 50;
    for (int i = 0;; ++i)
    {
        if (work())
            return true;
        const DWORD code = ::GetLastError();
        if (i == TRIES || (code != ERROR_SHARING_VIOLATION && code != ERROR_ACCESS_DENIED))
            return false;
        ::Sleep(INTERVAL_MS);
    }
}

void WriteFlushed(const std::wstring& file, const std::string& text)
{
    constexpr const char* WHAT = "The pending change cannot be written";
    AdministratorsOnly security;
    const HANDLE opened = ::CreateFileW(file.c_str(), GENERIC_WRITE, 0, security.Get(), CREATE_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        Fail("CreateFile", WHAT);
    const UniqueHandle handle(opened);
    DWORD written = 0;
    if (!::WriteFile(handle.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ||
        written != text.size())
        Fail("WriteFile", WHAT);
    if (!::FlushFileBuffers(handle.get()))
        Fail("FlushFileBuffers", WHAT);
}

/// The text of a file that only administrators could have written; else why it is not to be used.
std::optional<std::string> ReadTrusted(HANDLE file, std::string& fault)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    LARGE_INTEGER size = {};
    if (!::GetFileInformationByHandle(file, &information) || !::GetFileSizeEx(file, &size))
        fault = "its file cannot be read";
    else if ((information.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0)
        fault = "it is not a plain file";
    else if (!IsOnlyForAdministrators(file))
        fault = "others than administrators can write to its file";
    else if (size.QuadPart > GREATEST_SIZE)
        fault = "its file is too large";
    if (!fault.empty())
        return std::nullopt;
    std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &read, nullptr) || read != text.size())
    {
        fault = "its file cannot be read";
        return std::nullopt;
    }
    return text;
}

PendingRecord Understand(std::string id, const std::string& text)
{
    std::vector<Fault> faults;
    PendingChange change = ParsePendingChange(text, faults);
    PendingRecord record{std::move(id), std::nullopt, ""};
    if (!faults.empty())
        record.fault = "it cannot be understood:" + (faults.front().place.empty() ? "" : ' ' + faults.front().place) +
                       ' ' + faults.front().text;
    else if (change.id != record.id)
        record.fault = "its file has another name than it says";
    else if (change.machine != MachineId())
        record.fault = "it is of another machine";
    else
        record.change = std::move(change);
    return record;
}

} // namespace

void StorePendingChange(const std::wstring& folder, const PendingChange& change)
{
    const std::wstring beside = FileOf(folder, change.id, ENDING_BESIDE);
    WriteFlushed(beside, WritePendingChange(change));
    const std::wstring file = FileOf(folder, change.id);
    if (!DoInTurn([&] {
            return ::MoveFileExW(beside.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
        }))
        Fail("MoveFileEx", "The pending change cannot be written");
}

std::optional<PendingRecord> LoadPendingChange(const std::wstring& folder, const std::string& id)
{
    const HANDLE opened = ::CreateFileW(FileOf(folder, id).c_str(), GENERIC_READ | READ_CONTROL,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
    {
        const DWORD code = ::GetLastError();
        if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND)
            return std::nullopt;
        return PendingRecord{id, std::nullopt, "its file cannot be opened: " + SystemMessage(code)};
    }
    const UniqueHandle file(opened);
    PendingRecord refused{id, std::nullopt, ""};
    const auto text = ReadTrusted(file.get(), refused.fault);
    return text ? Understand(id, *text) : refused;
}

std::vector<PendingRecord> LoadPendingChanges(const std::wstring& folder)
{
    std::vector<PendingRecord> records;
    for (const FoundFile& file : FindFiles(folder + L"\\*" + std::wstring(ENDING)))
    {
        const std::string name = ToUtf8(file.name);
        const std::string id = name.substr(0, name.size() - std::min(name.size(), ENDING.size()));
        if (!IsChangeId(id) || name != id + ToUtf8(ENDING))
            records.push_back({id, std::nullopt, "no pending change has such a name"});
        else if (auto record = LoadPendingChange(folder, id))
            records.push_back(std::move(*record));
    }
    return records;
}

void RemovePendingChange(const std::wstring& folder, const std::string& id)
{
    const std::wstring file = FileOf(folder, id);
    if (!DoInTurn([&] { return ::DeleteFileW(file.c_str()) || ::GetLastError() == ERROR_FILE_NOT_FOUND; }))
        Fail("DeleteFile", "The pending change cannot be removed");
}

void RemoveHalfWritten(const std::wstring& folder)
{
    for (const FoundFile& file : FindFiles(folder + L"\\*" + std::wstring(ENDING_BESIDE)))
        ::DeleteFileW((folder + L'\\' + file.name).c_str());
}

} // namespace zelk
