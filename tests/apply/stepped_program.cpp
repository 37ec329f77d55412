#include "stepped_program.h"

#include <stdexcept>
#include <utility>

namespace
{

constexpr BYTE INT3 = 0xCC;
constexpr DWORD TRAP_FLAG = 0x100;

constexpr std::pair<const wchar_t*, const char*> FUNCTIONS[] = {
    {L"kernelbase", "CreateDirectoryW"}, {L"kernelbase", "WriteFile"},      {L"kernelbase", "FlushFileBuffers"},
    {L"kernelbase", "MoveFileExW"},      {L"kernelbase", "CopyFileW"},      {L"kernelbase", "DeleteFileW"},
    {L"kernelbase", "RemoveDirectoryW"}, {L"kernelbase", "CreateProcessW"}, {L"kernelbase", "RegSetValueExW"},
    {L"kernelbase", "RegDeleteValueW"},  {L"sechost", "CreateServiceW"},    {L"sechost", "StartServiceW"},
    {L"sechost", "DeleteService"},
};

CONTEXT ContextOf(HANDLE hThread)
{
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_CONTROL;
    ::GetThreadContext(hThread, &context);
    return context;
}

} // namespace

SteppedProgram::SteppedProgram(const std::wstring& sCommandLine)
{
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    const Handle nothing(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inheritable, OPEN_EXISTING, 0, nullptr));
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = startup.hStdOutput = startup.hStdError = nothing.get();
    PROCESS_INFORMATION started = {};
    std::wstring sLine = sCommandLine;
    if (!::CreateProcessW(nullptr, sLine.data(), nullptr, nullptr, TRUE, DEBUG_ONLY_THIS_PROCESS, nullptr, nullptr,
                          &startup, &started))
        throw std::runtime_error("the program did not start: error " + std::to_string(::GetLastError()));
    ::CloseHandle(started.hThread);
    m_process.reset(started.hProcess);
}

SteppedProgram::SteppedProgram(Handle process) : m_process(std::move(process))
{
    if (!::DebugActiveProcess(::GetProcessId(m_process.get())))
        throw std::runtime_error("the program cannot be stopped: error " + std::to_string(::GetLastError()));
}

SteppedProgram::~SteppedProgram()
{
    if (!m_bEnded)
        ::TerminateProcess(m_process.get(), 0);
}

std::optional<DWORD> SteppedProgram::Run(const AtStop& atStop)
{
    constexpr DWORD PATIENCE_MS = 120000;
    bool bToEnd = true;
    const AtStop checked = [&](const std::string& sStop) { return bToEnd = atStop(sStop); };
    DEBUG_EVENT event = {};
    while (::WaitForDebugEvent(&event, PATIENCE_MS))
    {
        DWORD dwHow = DBG_CONTINUE;
        switch (event.dwDebugEventCode)
        {
        case CREATE_PROCESS_DEBUG_EVENT:
            FindImage(event.u.CreateProcessInfo.lpBaseOfImage);
            ::CloseHandle(event.u.CreateProcessInfo.hFile);
            break;
        case LOAD_DLL_DEBUG_EVENT: ::CloseHandle(event.u.LoadDll.hFile); break;
        case EXCEPTION_DEBUG_EVENT: dwHow = OnException(event, checked); break;
        case EXIT_PROCESS_DEBUG_EVENT:
            m_bEnded = true;
            ::ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
            ::WaitForSingleObject(m_process.get(), PATIENCE_MS);
            return bToEnd ? std::optional(event.u.ExitProcess.dwExitCode) : std::nullopt;
        default: break;
        }
        ::ContinueDebugEvent(event.dwProcessId, event.dwThreadId, dwHow);
    }
    throw std::runtime_error("the program neither stopped nor ended");
}

DWORD SteppedProgram::OnException(const DEBUG_EVENT& event, const AtStop& atStop)
{
    const EXCEPTION_RECORD& record = event.u.Exception.ExceptionRecord;
    const Handle thread(::OpenThread(THREAD_ALL_ACCESS, FALSE, event.dwThreadId));
    if (record.ExceptionCode == EXCEPTION_BREAKPOINT && m_breakpoints.empty())
    {
        SetBreakpoints(); // this is the one at which a program that is debugged begins
        return DBG_CONTINUE;
    }
    if (record.ExceptionCode == EXCEPTION_BREAKPOINT && m_breakpoints.contains(record.ExceptionAddress))
    {
        OnBreakpoint(record.ExceptionAddress, thread.get(), atStop);
        m_stepping[event.dwThreadId] = record.ExceptionAddress;
        return DBG_CONTINUE;
    }
    if (record.ExceptionCode == EXCEPTION_SINGLE_STEP && m_stepping.contains(event.dwThreadId))
    {
        Write(m_stepping.extract(event.dwThreadId).mapped(), INT3);
        return DBG_CONTINUE;
    }
    return DBG_EXCEPTION_NOT_HANDLED;
}

/// The call goes on over the instruction that the breakpoint has replaced, which is one step.
void SteppedProgram::OnBreakpoint(void* pAddress, HANDLE hThread, const AtStop& atStop)
{
    CONTEXT context = ContextOf(hThread);
    Breakpoint& breakpoint = m_breakpoints.at(pAddress);
    const BYTE* pCaller = nullptr;
    Read(reinterpret_cast<const void*>(context.Rsp), pCaller);
    const bool bIsOwn = pCaller >= m_pImage && pCaller < m_pImage + m_imageSize;
    if (bIsOwn && !atStop(breakpoint.sFunction + ' ' + std::to_string(++breakpoint.iCalls)))
        ::TerminateProcess(m_process.get(), 0);
    Write(pAddress, breakpoint.original);
    context.Rip = reinterpret_cast<DWORD64>(pAddress);
    context.EFlags |= TRAP_FLAG;
    ::SetThreadContext(hThread, &context);
}

/// The system's modules lie where they lie in this process.
void SteppedProgram::SetBreakpoints()
{
    for (const auto& [pszModule, pszFunction] : FUNCTIONS)
    {
        void* const pAddress = reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(pszModule), pszFunction));
        BYTE original = 0;
        if (!Read(pAddress, original) || original != *static_cast<BYTE*>(pAddress) || !Write(pAddress, INT3))
            throw std::runtime_error(std::string("no program can be stopped at ") + pszFunction);
        m_breakpoints[pAddress] = {pszFunction, original, 0};
    }
}

void SteppedProgram::FindImage(const void* pBase)
{
    m_pImage = static_cast<const BYTE*>(pBase);
    IMAGE_DOS_HEADER dos = {};
    IMAGE_NT_HEADERS64 headers = {};
    Read(m_pImage, dos);
    Read(m_pImage + dos.e_lfanew, headers);
    m_imageSize = headers.OptionalHeader.SizeOfImage;
}

bool SteppedProgram::Write(void* pAddress, BYTE value) const
{
    return ::WriteProcessMemory(m_process.get(), pAddress, &value, sizeof(value), nullptr) &&
           ::FlushInstructionCache(m_process.get(), pAddress, sizeof(value));
}

template <class T>
bool SteppedProgram::Read(const void* pAddress, T& value) const
{
    return ::ReadProcessMemory(m_process.get(), pAddress, &value, sizeof(value), nullptr) != FALSE;
}
