#pragma once

#include "zelkctl_changes.h"

#include <tlhelp32.h>

/// Changes that can still be taken back, and who watches over them.
class Pending : public ZelkctlChanges
{
protected:
    void SetUp() override
    {
        Run(L"restore --discard --yes");
        ZelkctlChanges::SetUp();
        m_sBefore = Standing();
    }

    static std::string Standing() { return ::Kernel() + ::Registry(); }

    /// Without what only tells of a change that was restored.
    static Json ListPending()
    {
        Json list = Json::parse(Run(L"pending --json").sOut)["result"];
        std::erase_if(list.get_ref<Json::array_t&>(), [](const Json& change) { return change["phase"] == "restored"; });
        return list;
    }

    /// Waits for what another process is to do.
    template <class Condition>
    static bool Await(Condition condition)
    {
        constexpr ULONGLONG PATIENCE_MS = 60000;
        const ULONGLONG ullEnd = ::GetTickCount64() + PATIENCE_MS;
        while (!condition())
        {
            if (::GetTickCount64() > ullEnd)
                return false;
            ::Sleep(100);
        }
        return true;
    }

    /// The process that watches over a change; null when there is none.
    static Handle Watcher() { return ProcessOf(L"\\ZELK\\Changes\\"); }

    /// One whose file's path holds the text.
    static Handle ProcessOf(std::wstring_view sPart)
    {
        const Handle processes(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
        PROCESSENTRY32W entry = {};
        entry.dwSize = sizeof(entry);
        for (BOOL found = ::Process32FirstW(processes.get(), &entry); found;
             found = ::Process32NextW(processes.get(), &entry))
        {
            Handle process(::OpenProcess(PROCESS_ALL_ACCESS, FALSE, entry.th32ProcessID));
            wchar_t szFile[MAX_PATH] = {};
            DWORD dwSize = MAX_PATH;
            if (process && ::QueryFullProcessImageNameW(process.get(), 0, szFile, &dwSize) &&
                std::wstring_view(szFile).find(sPart) != std::wstring_view::npos)
                return process;
        }
        return nullptr;
    }

    static void AwaitEndOf(const Handle& process)
    {
        constexpr DWORD PATIENCE_MS = 120000;
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.get(), PATIENCE_MS));
    }

    static constexpr const wchar_t* CHANGE = L"address set lan0 198.51.100.20/24 --gateway 198.51.100.1 "
                                             L"--dns 198.51.100.53 198.51.100.54 --yes ";
    std::string m_sBefore;
};
