#include "comparisons.h"

#include <memory>

#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <support/platform/handles.h>
#include <support/trace/call_frame.h>

namespace
{

constexpr unsigned int SETTING_INFORMATION = 3;

/// Keeps the compiler from moving what it can see through out of a loop.
void Barrier()
{
    asm volatile("" ::: "memory");
}

velmor::string LogPath()
{
    velmor::string sDir;
    TheTrace.GetLogDirectory(sDir);
    return sDir + L"\\TOLVA_trace.log";
}

/// What one line costs the platform, whoever writes it: the mutex, the file opened, one write, and all given back.
void WriteBareLine(HANDLE hMutex, const wchar_t* pszPath, std::string_view line)
{
    ::WaitForSingleObject(hMutex, 60000);
    {
        const velmor::UniqueFile file(::CreateFileW(pszPath, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD dwWritten = 0;
        ::WriteFile(file.Get(), line.data(), static_cast<DWORD>(line.size()), &dwWritten, nullptr);
    }
    ::ReleaseMutex(hMutex);
}

} // namespace

Comparison MaskedLine()
{
    auto logger = std::make_shared<spdlog::logger>("peer", std::make_shared<spdlog::sinks::null_sink_mt>());
    logger->set_level(spdlog::level::info);
    const auto Ours = [](int repetitions) {
        TheTrace.SetTraceLevel(SETTING_INFORMATION);
        const CallFrame frame = CallFrame::WithoutStart("Benchmark");
        const velmor::string sGuid = L"{00000002-0000-0000-0000-4E6574446576}";
        for (int i = 0; i < repetitions; ++i)
        {
            frame.Verbose("NicInfo.sNicGuid", sGuid);
            Barrier();
        }
    };
    const auto Peer = [logger](int repetitions) {
        for (int i = 0; i < repetitions; ++i)
        {
            // Its fastest form, without a value; with one it takes far longer.
            logger->debug("NicInfo.sNicGuid");
            Barrier();
        }
    };
    return {"masked trace line / masked spdlog line", Ours, Peer, 5000000, 1.0};
}

Comparison WrittenLine()
{
    auto pMutex = std::make_shared<velmor::UniqueMutex>(::CreateMutexW(nullptr, FALSE, L"zelk_nm_bench"));
    const velmor::string sPath = LogPath();
    const auto Ours = [](int repetitions) {
        TheTrace.SetTraceLevel(SETTING_INFORMATION);
        TheTrace.ClearLog();
        const CallFrame frame = CallFrame::WithoutStart("TOLVA::GetAdapterPCI");
        const velmor::string sNicPci = L"PCI\\VEN_8086&DEV_100E&SUBSYS_11001AF4&REV_03\\3&267A616A&0&18";
        for (int i = 0; i < repetitions; ++i)
            frame.Information("NicInfo.sNicPci", sNicPci);
    };
    const auto Peer = [pMutex, sPath](int repetitions) {
        TheTrace.ClearLog();
        constexpr std::string_view LINE =
            "[2015-05-15 12:05:48.125]:0ab4:[I]: TOLVA::GetAdapterPCI : NicInfo.sNicPci = "
            "\"PCI\\VEN_8086&DEV_100E&SUBSYS_11001AF4&REV_03\\3&267A616A&0&18\"\r\n";
        for (int i = 0; i < repetitions; ++i)
            WriteBareLine(pMutex->Get(), sPath.c_str(), LINE);
    };
    return {"written trace line / bare platform calls", Ours, Peer, 300, 1.10};
}
