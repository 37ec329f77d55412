#include <state/pending/watch_process.h>

#include <memory>
#include <thread>

#include <state/machine/problem.h>
#include <state/pending/change_folder.h>
#include <state/pending/change_lock.h>
#include <state/pending/pending_store.h>
#include <state/pending/watch.h>
#include <state/platform/file_search.h>
#include <state/platform/handles.h>
#include <state/platform/system_message.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

using Clock = std::chrono::steady_clock;
using UniqueService = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, Release<::CloseServiceHandle>>;

[[noreturn]] void Fail(const char* step, DWORD code)
{
    throw StateError({code, step, "Nothing can watch over the change", SystemMessage(code)});
}

std::wstring ServiceName(const std::string& id)
{
    return L"ZelkChange" + FromUtf8(id);
}

std::wstring FileName(const std::wstring& path)
{
    return path.substr(path.find_last_of(L'\\') + 1);
}

/// Of the program: a medium or a share that the original lies on may be gone when it is needed.
std::wstring CopyProgram(const std::wstring& place, const WatchProgram& program)
{
    for (const std::wstring& file : program.libraries)
        if (!::CopyFileW(file.c_str(), (place + L'\\' + FileName(file)).c_str(), FALSE))
            Fail("CopyFile", ::GetLastError());
    std::wstring copy = place + L'\\' + FileName(program.file);
    if (!::CopyFileW(program.file.c_str(), copy.c_str(), FALSE))
        Fail("CopyFile", ::GetLastError());
    return copy;
}

void RemoveFolder(const std::wstring& place)
{
    for (const FoundFile& file : FindFiles(place + L"\\*"))
        ::DeleteFileW((place + L'\\' + file.name).c_str());
    ::RemoveDirectoryW(place.c_str());
}

void RemoveService(const std::string& id)
{
    const UniqueService manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager)
        return;
    if (const UniqueService service{::OpenServiceW(manager.get(), ServiceName(id).c_str(), DELETE)})
        ::DeleteService(service.get());
}

/// A watch that was ended from outside begins again. Where that cannot be set, it is watched all the same.
void RestartOnFailure(SC_HANDLE service)
{
    constexpr DWORD DELAY_MS = 1000;
    SC_ACTION action = {SC_ACTION_RESTART, DELAY_MS};
    SERVICE_FAILURE_ACTIONSW actions = {};
    actions.cActions = 1; // the last one counts for all failures that follow
    actions.lpsaActions = &action;
    ::ChangeServiceConfig2W(service, SERVICE_CONFIG_FAILURE_ACTIONS, &actions);
}

bool StartService(const std::string& id, const std::wstring& line)
{
    const UniqueService manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE));
    if (!manager)
        return false;
    constexpr DWORD ACCESS = SERVICE_START | SERVICE_CHANGE_CONFIG | DELETE; // starting is also for the restart
    const std::wstring name = ServiceName(id);
    UniqueService service(::CreateServiceW(manager.get(), name.c_str(), L"ZELK: change of the network to be confirmed",
                                           ACCESS, SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                                           line.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
    if (!service && ::GetLastError() == ERROR_SERVICE_EXISTS)
        service.reset(::OpenServiceW(manager.get(), name.c_str(), ACCESS));
    if (!service)
        return false;
    RestartOnFailure(service.get());
    if (::StartServiceW(service.get(), 0, nullptr) || ::GetLastError() == ERROR_SERVICE_ALREADY_RUNNING)
        return true;
    ::DeleteService(service.get());
    return false;
}

/// Out of the job of a remote shell, which would take it along.
bool StartProcess(const std::wstring& line, const std::wstring& place)
{
    constexpr DWORD FLAGS = DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    for (const DWORD breakaway : {DWORD{CREATE_BREAKAWAY_FROM_JOB}, DWORD{0}})
    {
        std::wstring text = line;
        PROCESS_INFORMATION started = {};
        if (!::CreateProcessW(nullptr, text.data(), nullptr, nullptr, FALSE, FLAGS | breakaway, nullptr, place.c_str(),
                              &startup, &started))
            continue;
        const UniqueHandle process(started.hProcess);
        const UniqueHandle thread(started.hThread);
        return true;
    }
    return false;
}

bool AwaitSign(const std::wstring& file, std::chrono::milliseconds timeout)
{
    constexpr std::chrono::milliseconds INTERVAL(20);
    const auto end = Clock::now() + timeout;
    while (!LifeSign::IsGiven(file))
    {
        if (Clock::now() >= end)
            return false;
        std::this_thread::sleep_for(INTERVAL);
    }
    return true;
}

/// What the service's own functions, which take no argument, have to know.
struct ServiceWork
{
    std::wstring name;
    const std::function<void()>* work = nullptr;
};

ServiceWork& TheServiceWork()
{
    static ServiceWork work;
    return work;
}

/// It is not to be stopped: `zelkctl confirm` and `zelkctl restore` end it.
DWORD WINAPI Control(DWORD control, DWORD, void*, void*)
{
    return control == SERVICE_CONTROL_INTERROGATE ? NO_ERROR : ERROR_CALL_NOT_IMPLEMENTED;
}

void WINAPI ServiceMain(DWORD, wchar_t**)
{
    const ServiceWork& service = TheServiceWork();
    const SERVICE_STATUS_HANDLE handle = ::RegisterServiceCtrlHandlerExW(service.name.c_str(), Control, nullptr);
    SERVICE_STATUS status = {};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = SERVICE_RUNNING;
    ::SetServiceStatus(handle, &status);
    (*service.work)();
    status.dwCurrentState = SERVICE_STOPPED;
    ::SetServiceStatus(handle, &status);
}

} // namespace

void StartWatchProcess(const std::wstring& folder, const std::string& id, const WatchProgram& program,
                       std::chrono::milliseconds timeout)
{
    const std::wstring place = folder + L'\\' + FromUtf8(id);
    PrepareChangeFolder(place);
    try
    {
        const std::wstring line = L'"' + CopyProgram(place, program) + L"\" " + program.arguments + L' ' + FromUtf8(id);
        if (!StartService(id, line) && !StartProcess(line, place))
            Fail("CreateProcess", ::GetLastError());
        if (!AwaitSign(WatchFile(folder, id), timeout))
            Fail("LifeSign", WAIT_TIMEOUT);
    }
    catch (...)
    {
        RemoveService(id);
        RemoveFolder(place);
        throw;
    }
}

void RunWatchProcess(const std::string& id, const std::function<void()>& work)
{
    TheServiceWork() = {ServiceName(id), &work};
    const SERVICE_TABLE_ENTRYW table[] = {{TheServiceWork().name.data(), ServiceMain}, {nullptr, nullptr}};
    if (!::StartServiceCtrlDispatcherW(table)) // started as a process
        work();
    RemoveService(id);
}

void RemoveEndedWatches(const std::wstring& folder)
{
    for (const FoundFile& found : FindFiles(folder + L"\\*"))
    {
        const std::string id = ToUtf8(found.name);
        if (!IsChangeId(id) || LoadPendingChange(folder, id) || LifeSign::IsGiven(WatchFile(folder, id)))
            continue;
        RemoveService(id);
        ::DeleteFileW(WatchFile(folder, id).c_str());
        RemoveFolder(folder + L'\\' + found.name);
    }
}

} // namespace zelk
