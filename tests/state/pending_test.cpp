// Pending changes: what is kept of them on disk, who may work at a time, and what a watch does and when.

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include <state/answers/library_version.h>
#include <state/answers/pending_list.h>
#include <state/answers/pending_result.h>
#include <state/answers/reports.h>
#include <state/machine/problem.h>
#include <state/pending/answers.h>
#include <state/pending/change_folder.h>
#include <state/pending/machine_id.h>
#include <state/pending/watch.h>
#include <state/pending/watch_process.h>
#include <state/platform/file_search.h>
#include <state/platform/utf8.h>
#include <support/golden.h>
#include <support/import_patch.h>

#include <iphlpapi.h>

#include <aclapi.h>
#include <icmpapi.h>
#include <sddl.h>

using namespace testing_support;
using namespace zelk;
using namespace std::chrono_literals;

namespace
{

constexpr const char* ID = "0123456789abcdef";

/// The folder for changes, of a Windows directory that goes with the test.
class PendingChanges : public testing::Test
{
protected:
    PendingChanges() { Clear(); }
    ~PendingChanges() override { std::filesystem::remove_all(std::filesystem::path(m_folder).parent_path()); }

    [[nodiscard]] std::wstring File(const std::wstring& name) const { return m_folder + L'\\' + name; }

    static PendingChange Change()
    {
        PendingChange change;
        change.id = ID;
        change.machine = MachineId();
        change.by = {"ann", 4, "2026-01-31T23:59:59Z"};
        change.steps = {"lan0: Adds the address 192.0.2.20"};
        DesiredAdapter adapter;
        adapter.adapter = "guid:{0000FFFF-0000-0000-0000-4E6574446576}";
        adapter.ipv4.addresses = {*IpPrefix::Parse("192.0.2.10/24")};
        adapter.ipv4.dnsServers = Automatic();
        change.before.adapters = {adapter};
        return change;
    }

    void Write(const std::wstring& name, const std::string& text) const
    {
        AdministratorsOnly security;
        const UniqueHandle file(::CreateFileW(File(name).c_str(), GENERIC_WRITE, 0, security.Get(), CREATE_ALWAYS,
                                              FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        EXPECT_TRUE(::WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    }

    void Clear() const
    {
        std::filesystem::remove_all(m_folder);
        PrepareChangeFolder(m_folder);
    }

    const ImportPatch<decltype(&::GetSystemWindowsDirectoryW)> m_windows{
        "GetSystemWindowsDirectoryW", [](wchar_t* path, UINT size) -> UINT { return ::GetTempPathW(size, path) - 1; }};
    const std::wstring m_folder = ChangeFolder();
};

TEST_F(PendingChanges, AreReadBackAsTheyWereStored)
{
    PendingChange change = Change();
    change.phase = PendingPhase::WAITING;
    change.by = ThisChanger();
    change.before.identity.workgroup = "HOME";
    change.confirmWithin = 60;
    change.waitFor = *IpAddress::Parse("2001:db8::1");
    change.waitingSince = ClockNow();
    StorePendingChange(m_folder, change);
    const auto records = LoadPendingChanges(m_folder);
    ASSERT_EQ(1u, records.size());
    EXPECT_EQ("", records[0].fault);
    EXPECT_EQ(WritePendingChange(change), WritePendingChange(*records[0].change));
    RemovePendingChange(m_folder, ID);
    EXPECT_TRUE(LoadPendingChanges(m_folder).empty());
    EXPECT_TRUE(LoadPendingChanges(m_folder + L"\\missing").empty());
}

TEST_F(PendingChanges, AreMadeByOneProcessAtATime)
{
    auto first = ChangeLock::Take(m_folder, 0ms);
    ASSERT_TRUE(first);
    EXPECT_FALSE(ChangeLock::Take(m_folder, 250ms));
    const auto holder = ChangeLock::Holder(m_folder);
    ASSERT_TRUE(holder);
    EXPECT_EQ(::GetCurrentProcessId(), holder->process);
    EXPECT_FALSE(ChangeLock::Take(m_folder, 1h, [] { return true; }));
    auto second = std::async(std::launch::async, [&] { return ChangeLock::Take(m_folder, 1min); });
    first.reset();
    EXPECT_TRUE(second.get());
    EXPECT_FALSE(ChangeLock::Holder(m_folder));
}

/// A function of the platform that fails, whatever its caller passes: the calling convention of 64 bits allows to pass
/// on too much.
struct Failure
{
    std::shared_ptr<ImportSlots> slots;
    DWORD code = 0;
    int times = 0; ///< from then on it works
    std::intptr_t result = 0;
};
std::array<Failure, 2> theFailures;

/// The compiler may ask the import table once for all rounds of a loop, so the table stays as it is.
using Any = std::intptr_t;
template <std::size_t N>
Any Fail(Any a, Any b, Any c, Any d, Any e, Any f, Any g, Any h, Any i, Any j, Any k, Any l, Any m)
{
    Failure& failure = theFailures[N];
    if (failure.times-- <= 0)
        return reinterpret_cast<decltype(&Fail<N>)>(failure.slots->Original())(a, b, c, d, e, f, g, h, i, j, k, l, m);
    ::SetLastError(failure.code);
    return failure.result;
}

/// What is done to the folder and asked about it, a word with its arguments each; "has" makes a record that differs
/// from a good one, "fail" names a function with the code, how often it fails and what it gives.
class Transcripts : public PendingChanges
{
protected:
    Transcripts()
    {
        ADD_PATCH(m_patches, Sleep, [this](DWORD time) { Wait(time); });
        ADD_PATCH(m_patches, WaitForSingleObject, [this](auto original, HANDLE handle, DWORD time) -> DWORD {
            return time == INFINITE ? original(handle, time) : Wait(time);
        });
        ADD_PATCH(m_patches, GetTickCount64, [this] { return m_now; });
        ADD_PATCH(m_patches, QueryPerformanceCounter, [this](LARGE_INTEGER* count) -> BOOL {
            ::QueryPerformanceFrequency(count);
            count->QuadPart = count->QuadPart * static_cast<LONGLONG>(m_now) / 1000;
            return TRUE;
        });
        ADD_PATCH(m_patches, CreateFileW, [this](auto original, const wchar_t* file, auto... rest) -> HANDLE {
            if (file == File(L"change.lock"))
                Do(std::exchange(m_meanwhile, ""));
            return original(file, rest...);
        });
        ADD_PATCH(m_patches, GetFileInformationByHandle,
                  [this](auto original, HANDLE file, BY_HANDLE_FILE_INFORMATION* information) -> BOOL {
                      const BOOL isRead = original(file, information);
                      information->dwFileAttributes |= m_attributes;
                      return isRead;
                  });
    }
    ~Transcripts() override { theFailures = {}; }

    std::string Answer(const std::string& question)
    {
        theFailures = {};
        m_module = nullptr;
        m_attributes = 0;
        m_now = 1'000'000;
        m_meanwhile.clear();
        m_later.clear();
        m_open.clear();
        Clear();
        m_answer.clear();
        const std::regex bar(" \\| ");
        for (std::sregex_token_iterator i(question.begin(), question.end(), bar, -1), end; i != end; ++i)
        {
            const auto begin = m_now;
            Do(*i);
            if (m_now > begin)
                Say("after", m_now - begin, "ms");
        }
        return m_answer;
    }

private:
    using Words = std::istream;

    template <class... Values>
    void Say(const Values&... values)
    {
        m_answer += Show(values...) + '\n';
    }
    template <class T>
    static T Next(Words& words)
    {
        T value = {};
        words >> value >> std::ws;
        return value;
    }
    static std::string Rest(Words& words) { return {std::istreambuf_iterator<char>(words), {}}; }
    std::wstring NextFile(Words& words) const { return File(FromUtf8(Next<std::string>(words))); }

    void Do(const std::string& step)
    try
    {
        std::istringstream words(step);
        if (!step.empty())
            m_verbs.at(Next<std::string>(words))(words);
    }
    catch (const StateError& error)
    {
        Say(error.GetProblem().step, error.GetProblem().code, error.GetProblem().text);
    }
    /// No time passes but by waiting, which does what is due.
    DWORD Wait(DWORD time)
    {
        m_now += time;
        for (auto due = m_later.begin(); due != m_later.end() && due->first <= m_now; due = m_later.erase(due))
            Do(due->second);
        return WAIT_TIMEOUT;
    }

    template <class Work>
    void Tell(Words& words, Work work)
    {
        const auto id = Next<std::string>(words);
        const PendingResult result = work(id);
        const bool isDone = result.outcome == PendingOutcome::DONE || result.outcome == PendingOutcome::NOT_RESTORED;
        Say(static_cast<int>(CodeOf(result.outcome)),
            isDone ? RestorationToJson(result).dump() : ReportOf(result, id).reason);
    }
    static GuardedOptions AtOnce()
    {
        GuardedOptions options;
        options.apply.timeout = 0ms;
        options.confirmation.emplace();
        return options;
    }
    /// Nothing, but the change has to be confirmed.
    void Apply()
    {
        const auto result = ApplyGuarded([](const Machine&) { return DesiredState(); }, AtOnce());
        if (result.outcome == GuardedOutcome::APPLIED)
            Say("applied");
        else
            Say((result.pending ? ReportOfAwaited(*result.pending) : ReportOfBusy(result.holder)).reason);
    }
    void List()
    {
        for (const PendingEntry& entry : ReadPending())
            Say(entry.id + ":", entry.status + (entry.secondsLeft ? Show("", *entry.secondsLeft, "s left") : ""));
        std::vector<std::string> names;
        for (const FoundFile& file : FindFiles(File(L"*")))
            names.push_back(ToUtf8(file.name));
        std::ranges::sort(names);
        Say("files:", names);
    }
    void Have(Words& words) const
    {
        const auto name = Next<std::string>(words);
        Json record = Json::parse(WritePendingChange(Change()));
        record["id"] = name;
        record.merge_patch(Json::parse(Rest(words)));
        Write(FromUtf8(name) + L".json", record.dump());
    }
    /// Blanks first, for a file of any size.
    void Fill(Words& words) const
    {
        const std::wstring name = FromUtf8(Next<std::string>(words));
        const std::string blanks(Next<std::size_t>(words), ' ');
        Write(name, blanks + Rest(words));
    }
    void Open(Words& words)
    {
        const std::wstring file = NextFile(words);
        const auto share = Next<DWORD>(words);
        m_open.emplace_back(::CreateFileW(file.c_str(), GENERIC_READ, share, nullptr, OPEN_ALWAYS, 0, nullptr));
    }
    void Defer(Words& words)
    {
        const auto when = m_now + Next<ULONGLONG>(words);
        m_later.emplace(when, Rest(words));
    }
    void Store() const
    {
        PendingChange change = Change();
        change.phase = PendingPhase::WAITING;
        change.confirmWithin = 60;
        StorePendingChange(m_folder, change);
    }
    void LetFail(Words& words)
    {
        const std::array entries = {&Fail<0>, &Fail<1>};
        const std::size_t n = theFailures[0].slots ? 1 : 0;
        const auto function = Next<std::string>(words);
        theFailures[n] = {nullptr, Next<DWORD>(words), Next<int>(words), Next<std::intptr_t>(words)};
        theFailures[n].slots =
            std::make_shared<ImportSlots>(m_module, function.c_str(), reinterpret_cast<void*>(entries[n]));
    }
    /// Whether a file with the security that SDDL tells is trusted, or gives it to the record's file.
    void Trust(Words& words, bool isAsked)
    {
        PSECURITY_DESCRIPTOR made = nullptr;
        ASSERT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorA(Rest(words).c_str(), SDDL_REVISION_1, &made,
                                                                           nullptr));
        const std::unique_ptr<void, Release<::LocalFree>> descriptor(made);
        const auto patch = PATCH_IMPORT(GetSecurityInfo,
                                        [&](HANDLE, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID* owner, PSID*,
                                            PACL* entries, PACL*, void**) -> DWORD {
                                            BOOL flag = FALSE;
                                            ::GetSecurityDescriptorOwner(made, owner, &flag);
                                            ::GetSecurityDescriptorDacl(made, &flag, entries, &flag);
                                            return ERROR_SUCCESS;
                                        });
        if (isAsked)
            Say(IsOnlyForAdministrators(nullptr) ? "trusted" : "not trusted");
        else
            EXPECT_TRUE(::SetFileSecurityW(File(L"0123456789abcdef.json").c_str(), DACL_SECURITY_INFORMATION, made));
    }
    void Ping(Words& words)
    {
        const auto host = Next<std::string>(words);
        const auto count = Next<DWORD>(words);
        const auto status = Next<DWORD>(words);
        const auto reply = [&](auto address, void* data, std::size_t place) {
            Say("asks", IpAddress(address).ToText());
            std::memcpy(static_cast<std::byte*>(data) + place, &status, sizeof(status));
            return count;
        };
        const auto patch4 = PATCH_IMPORT(IcmpSendEcho, [&](auto, IPAddr to, auto, auto, auto, void* data, auto...) {
            return reply(std::bit_cast<IpAddress::Ipv4Bytes>(to), data, offsetof(ICMP_ECHO_REPLY, Status));
        });
        const auto patch6 = PATCH_IMPORT(
            Icmp6SendEcho2, [&](auto, auto, auto, auto, auto, sockaddr_in6* to, auto, auto, auto, void* data, auto...) {
                return reply(std::bit_cast<IpAddress::Ipv6Bytes>(to->sin6_addr), data, 28);
            });
        Say(Answers(*IpAddress::Parse(host), 1s) ? "answers" : "does not answer");
    }
    void Run(Words& words)
    {
        constexpr std::array ENDS = {"gone", "confirmed", "restored", "not restored"};
        const std::string open = Rest(words);
        const auto restore = [&](const PendingChange& change) {
            Say("restores", WordOf(change.restoration->cause));
            return open.empty() ? std::vector<std::string>() : std::vector{open};
        };
        const auto answers = [](const IpAddress& host) { return !host.IsLoopback(); };
        Say(ENDS[static_cast<std::size_t>(WatchPendingChange(m_folder, ID, {restore, answers}))]);
    }

    ImportPatches m_patches;
    std::string m_answer;
    ULONGLONG m_now = 0;                           ///< milliseconds since the start of the machine
    std::multimap<ULONGLONG, std::string> m_later; ///< steps, by when they are done
    std::string m_meanwhile;                       ///< a step for when the lock is next tried
    std::vector<UniqueHandle> m_open;
    HMODULE m_module = nullptr; ///< whose calls fail
    DWORD m_attributes = 0;     ///< that all files have besides their own
    const std::map<std::string, std::function<void(Words&)>> m_verbs = {
        {"has", [this](Words& words) { Have(words); }},
        {"file", [this](Words& words) { Fill(words); }},
        {"folder", [this](Words& words) { ::CreateDirectoryW(NextFile(words).c_str(), nullptr); }},
        {"open", [this](Words& words) { Open(words); }},
        {"close", [this](Words&) { m_open.clear(); }},
        {"attributes", [this](Words& words) { m_attributes = Next<DWORD>(words); }},
        {"in", [this](Words& words) { m_module = ::GetModuleHandleA(Rest(words).c_str()); }},
        {"fail", [this](Words& words) { LetFail(words); }},
        {"later", [this](Words& words) { Defer(words); }},
        {"meanwhile", [this](Words& words) { m_meanwhile = Rest(words); }},
        {"give", [this](Words& words) { Trust(words, false); }},
        {"trust", [this](Words& words) { Trust(words, true); }},
        {"store", [this](Words&) { Store(); }},
        {"remove", [this](Words&) { RemovePendingChange(m_folder, ID); }},
        {"lock", [this](Words&) { ChangeLock::Take(m_folder, 0ms); }},
        {"prepare", [this](Words& words) { PrepareChangeFolder(NextFile(words)); }},
        {"watch",
         [this](Words&) {
             StartWatchProcess(m_folder, ID, {File(L"a.exe"), {File(L"a.dll")}, L""}, 1s);
         }},
        {"run", [this](Words& words) { Run(words); }},
        {"ping", [this](Words& words) { Ping(words); }},
        {"machine", [this](Words&) { Say(MachineId().empty() ? "unknown" : "known"); }},
        {"version", [this](Words&) { Say(ReadLibraryVersion().version.empty() ? "unknown" : "known"); }},
        {"apply", [this](Words&) { Apply(); }},
        {"confirm", [this](Words& words) { Tell(words, [](auto& id) { return ConfirmPending(0ms, id); }); }},
        {"restore", [this](Words& words) { Tell(words, [](auto& id) { return RestorePending(AtOnce().apply, id); }); }},
        {"discard", [this](Words& words) { Tell(words, [](auto& id) { return DiscardPending(0ms, id); }); }},
        {"list", [this](Words&) { List(); }},
    };
};

TEST_F(Transcripts, OfPendingChanges)
{
    ExpectTranscript([this](const std::string& question) { return Answer(question); });
}

TEST(Reports, TellAdaptersApart)
{
    Adapter known;
    known.index = 12;
    known.guid = *Guid::Parse("{00000012-0000-0000-0000-4E6574446576}");
    known.connectionName = "lan0";
    const Adapter unknown;
    EXPECT_EQ("\"lan\" matches several adapters:\n12  {00000012-0000-0000-0000-4E6574446576}  lan0\n-   -  ",
              ReportOfName("lan", {&known, &unknown}).reason);
    EXPECT_EQ(EXIT_NEEDS_ELEVATION, CodeOf(Outcome::NEEDS_ELEVATION));
}

TEST(WatchServices, RunToTheirEndAndCannotBeStopped)
{
    Golden golden;
    const auto start = PATCH_IMPORT(StartServiceCtrlDispatcherW, [](const SERVICE_TABLE_ENTRYW* table) -> BOOL {
        table->lpServiceProc(0, nullptr);
        return TRUE;
    });
    const auto registration =
        PATCH_IMPORT(RegisterServiceCtrlHandlerExW,
                     [&](const wchar_t* name, LPHANDLER_FUNCTION_EX control, void* context) -> SERVICE_STATUS_HANDLE {
                         for (DWORD code = SERVICE_CONTROL_STOP; code <= SERVICE_CONTROL_SHUTDOWN; ++code)
                             golden.Line(name, "control", code, "gives", control(code, 0, nullptr, context));
                         return nullptr;
                     });
    const auto status = PATCH_IMPORT(SetServiceStatus, [&](SERVICE_STATUS_HANDLE, SERVICE_STATUS* now) -> BOOL {
        golden.Line("state", now->dwCurrentState, "accepts", now->dwControlsAccepted);
        return TRUE;
    });
    RunWatchProcess(ID, [&] { golden.Line("works"); });
}

} // namespace
