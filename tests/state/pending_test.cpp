// Pending changes: what is kept of them on disk, who may work at a time, and what a watch does and when.

#include <array>
#include <atomic>
#include <fstream>
#include <future>

#include <gtest/gtest.h>

#include <state/machine/problem.h>
#include <state/pending/change_folder.h>
#include <state/pending/machine_id.h>
#include <state/pending/watch.h>
#include <state/pending/watch_process.h>
#include <support/import_patch.h>

#include <aclapi.h>

using namespace zelk;
using namespace std::chrono_literals;

namespace
{

constexpr const char* ID = "0123456789abcdef";

/// A folder for changes that goes with the test.
class PendingChanges : public testing::Test
{
protected:
    PendingChanges()
    {
        PrepareChangeFolder(m_folder);
        Clear();
    }
    ~PendingChanges() override { Clear(); }

    [[nodiscard]] std::wstring File(const std::wstring& name) const { return m_folder + L'\\' + name; }

    /// Of the phase; stored.
    PendingChange Store(PendingPhase phase, std::optional<std::uint32_t> seconds = std::nullopt) const
    {
        PendingChange change;
        change.id = ID;
        change.machine = MachineId();
        change.phase = phase;
        change.by = ThisChanger();
        change.steps = {"lan0: Adds the address 192.0.2.20"};
        DesiredAdapter adapter;
        adapter.adapter = "guid:{00000001-0000-0000-0000-4E6574446576}";
        adapter.ipv4.addresses = {*IpPrefix::Parse("192.0.2.10/24")};
        adapter.ipv4.dnsServers = Automatic();
        change.before.adapters = {adapter};
        change.before.identity.workgroup = "HOME";
        change.confirmWithin = seconds;
        if (phase == PendingPhase::WAITING)
            change.waitingSince = ClockNow();
        StorePendingChange(m_folder, change);
        return change;
    }

    void Write(const std::wstring& name, const std::string& text) const
    {
        StorePendingChange(m_folder, Store(PendingPhase::APPLYING)); // so that the file has its security
        HANDLE file = INVALID_HANDLE_VALUE;
        do // who watches may be reading it
            file = ::CreateFileW(File(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                 nullptr);
        while (file == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_SHARING_VIOLATION);
        DWORD written = 0;
        EXPECT_TRUE(::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
        ::CloseHandle(file);
    }

    [[nodiscard]] bool IsPending() const { return LoadPendingChange(m_folder, ID).has_value(); }

    const std::wstring m_folder = ChangeFolder().insert(ChangeFolder().rfind(L"\\Changes"), L"Test");

private:
    void Clear() const
    {
        WIN32_FIND_DATAW found = {};
        const HANDLE search = ::FindFirstFileW(File(L"*.*").c_str(), &found);
        do
            ::DeleteFileW(File(found.cFileName).c_str());
        while (::FindNextFileW(search, &found));
        ::FindClose(search);
    }
};

TEST_F(PendingChanges, AreReadBackAsTheyWereStored)
{
    PendingChange change = Store(PendingPhase::WAITING, 60);
    change.waitFor = *IpAddress::Parse("2001:db8::1");
    StorePendingChange(m_folder, change);
    const auto records = LoadPendingChanges(m_folder);
    ASSERT_EQ(1u, records.size());
    EXPECT_EQ("", records[0].fault);
    EXPECT_EQ(WritePendingChange(change), WritePendingChange(*records[0].change));
    RemovePendingChange(m_folder, ID);
    EXPECT_TRUE(LoadPendingChanges(m_folder).empty());
    EXPECT_TRUE(LoadPendingChanges(m_folder + L"\\missing").empty());
}

TEST_F(PendingChanges, OfDoubtAreRefusedWithTheirReason)
{
    const std::string good = WritePendingChange(Store(PendingPhase::APPLYING));
    const auto with = [&](const std::string& old, const std::string& text) {
        std::string changed = good;
        EXPECT_NE(std::string::npos, changed.find(old)) << old;
        return changed.replace(changed.find(old), old.size(), text);
    };
    const struct
    {
        std::string text;
        const char* fault;
        std::wstring file = L"0123456789abcdef.json";
    } wrongs[] = {
        {good.substr(0, good.size() / 2), "this is not JSON"},
        {"", "this is not JSON"},
        {std::string(100000, '['), "more than 100 deep"},
        {with("\"phase\": \"applying\"", R"("phase": "applying", "phase": "waiting")"), "\"phase\""},
        {with("\"recordVersion\": 1", "\"recordVersion\": 2"), "not that of this version"},
        {with(ID, "../../../0123456"), "/id must be the id of a change"},
        {with("applying", "waiting"), "lacks \"confirmWithin\""},
        {with("\"steps\"", "\"step\""), "lacks \"steps\""},
        {with("guid:{00000001", "name:{00000001"), "/before/adapters/0 must name"},
        {with("192.0.2.10/24", "192.0.2.10"), "/before/adapters/0/ipv4/addresses/0"},
        {with("\"stored\": []", R"("stored": [{"key": "SOFTWARE\\Microsoft", "name": "a", "type": 4, "data": "00"}])"),
         "/stored/0 is no setting"},
        {with(MachineId(), "00000000-0000-0000-0000-000000000000"), "another machine"},
        {good, "another name", L"fedcba9876543210.json"},
        {good, "such a name", L"evil.json"},
    };
    for (const auto& wrong : wrongs)
    {
        Write(wrong.file, wrong.text);
        if (wrong.file.find(L"0123") != 0)
            RemovePendingChange(m_folder, ID);
        const auto records = LoadPendingChanges(m_folder);
        ASSERT_EQ(1u, records.size()) << wrong.fault;
        EXPECT_FALSE(records[0].change) << wrong.fault;
        EXPECT_NE(std::string::npos, records[0].fault.find(wrong.fault)) << records[0].fault;
        ::DeleteFileW(File(wrong.file).c_str());
    }
}

/// This program, told to run no test, ends at once.
TEST_F(PendingChanges, AreNotMadeUnderAWatchThatNeverBegins)
{
    const PendingChange change = Store(PendingPhase::APPLYING);
    std::array<wchar_t, MAX_PATH> own = {};
    ::GetModuleFileNameW(nullptr, own.data(), MAX_PATH);
    const WatchProgram program = {own.data(), {}, L"--gtest_filter=none"};
    try
    {
        StartWatchProcess(m_folder, change.id, program, 500ms);
        ADD_FAILURE();
    }
    catch (const StateError& error)
    {
        EXPECT_EQ("LifeSign", error.GetProblem().step);
        EXPECT_EQ("Nothing can watch over the change", error.GetProblem().text);
    }
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES, ::GetFileAttributesW((m_folder + L"\\0123456789abcdef").c_str()));
}

TEST_F(PendingChanges, ThatOthersCanWriteAreRefused)
{
    Store(PendingPhase::APPLYING);
    std::wstring file = File(L"0123456789abcdef.json");
    SID everyone = {SID_REVISION, 1, SECURITY_WORLD_SID_AUTHORITY, {SECURITY_WORLD_RID}};
    EXPLICIT_ACCESSW access = {};
    access.grfAccessPermissions = FILE_GENERIC_READ | FILE_GENERIC_WRITE;
    access.grfAccessMode = GRANT_ACCESS;
    access.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access.Trustee.ptstrName = reinterpret_cast<wchar_t*>(&everyone);
    PACL entries = nullptr;
    ASSERT_EQ(DWORD{ERROR_SUCCESS}, ::SetEntriesInAclW(1, &access, nullptr, &entries));
    ASSERT_EQ(DWORD{ERROR_SUCCESS}, ::SetNamedSecurityInfoW(file.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                                            nullptr, nullptr, entries, nullptr));
    ::LocalFree(entries);
    const auto record = LoadPendingChange(m_folder, ID);
    ASSERT_TRUE(record);
    EXPECT_EQ("others than administrators can write to its file", record->fault);
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

/// Watches on a thread of its own.
class Watches : public PendingChanges
{
protected:
    std::future<WatchEnd> Watch()
    {
        return std::async(std::launch::async, [this] {
            return WatchPendingChange(m_folder, ID,
                                      {[this](const PendingChange&) {
                                           ++m_restored;
                                           return m_open;
                                       },
                                       [](const IpAddress& host) { return !host.IsLoopback(); }});
        });
    }

    /// Waits for what the watch is to do; it must find its file free now and then.
    template <class Condition>
    static bool Await(const std::future<WatchEnd>& end, Condition condition)
    {
        const auto latest = std::chrono::steady_clock::now() + 30s;
        while (!condition())
            if (end.wait_for(20ms) == std::future_status::ready || std::chrono::steady_clock::now() > latest)
                return false;
        return true;
    }

    std::atomic<int> m_restored = 0;
    std::vector<std::string> m_open; ///< what restoring leaves
};

TEST_F(Watches, RestoreWhenTheTimeIsOverAndNotBefore)
{
    Store(PendingPhase::WAITING, 1);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(WatchEnd::RESTORED, Watch().get());
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 1s);
    EXPECT_EQ(1, m_restored);
    const auto record = LoadPendingChange(m_folder, ID);
    ASSERT_TRUE(record && record->change) << "it tells what has happened";
    EXPECT_EQ(PendingPhase::RESTORED, record->change->phase);
    EXPECT_EQ(RestoreCause::NOT_CONFIRMED, record->change->restoration->cause);
    EXPECT_EQ(WatchEnd::GONE, Watch().get()) << "as after a restart";
    EXPECT_EQ(1, m_restored);
}

/// The performance counter, unlike the clock, cannot be set.
TEST_F(Watches, CountByThePerformanceCounter)
{
    std::atomic<bool> late = false;
    const auto counter = [&](auto original, LARGE_INTEGER* count) -> BOOL {
        constexpr LONGLONG HOUR = 3600;
        LARGE_INTEGER frequency = {};
        ::QueryPerformanceFrequency(&frequency);
        original(count);
        count->QuadPart += late ? HOUR * frequency.QuadPart : 0;
        return TRUE;
    };
    const testing_support::ImportPatch<decltype(&::QueryPerformanceCounter)> patch("QueryPerformanceCounter", counter);
    PendingChange change = Store(PendingPhase::WAITING, 3600);
    change.waitingSince = 0;
    StorePendingChange(m_folder, change);
    auto end = Watch();
    EXPECT_TRUE(Await(end, [this] { // a watch that comes late begins the time anew
        const auto record = LoadPendingChange(m_folder, ID);
        return record && record->change && record->change->waitingSince != 0u;
    }));
    EXPECT_EQ(0, m_restored);
    late = true;
    EXPECT_EQ(std::future_status::ready, end.wait_for(30s));
    EXPECT_EQ(1, m_restored);
    RemovePendingChange(m_folder, ID); // ends it in any case
}

TEST_F(Watches, EndWhenTheChangeIsConfirmedOrItsHostAnswers)
{
    Store(PendingPhase::WAITING, 3600);
    auto end = Watch();
    EXPECT_TRUE(Await(end, [this] { return LifeSign::IsGiven(WatchFile(m_folder, ID)); }));
    EXPECT_THROW(WatchPendingChange(m_folder, ID, {}), StateError); // one watch is enough
    RemovePendingChange(m_folder, ID);
    EXPECT_EQ(WatchEnd::GONE, end.get());

    PendingChange change = Store(PendingPhase::WAITING, 3600);
    change.waitFor = *IpAddress::Parse("192.0.2.1");
    StorePendingChange(m_folder, change);
    EXPECT_EQ(WatchEnd::CONFIRMED, Watch().get());
    EXPECT_FALSE(IsPending());
    EXPECT_EQ(0, m_restored);
}

TEST_F(Watches, RestoreAtOnceWhatADeadProcessLeft)
{
    for (const PendingPhase phase : {PendingPhase::APPLYING, PendingPhase::RESTORING})
    {
        auto lock = ChangeLock::Take(m_folder, 1min);
        Store(phase, 3600);
        auto end = Watch();
        EXPECT_EQ(std::future_status::timeout, end.wait_for(700ms)) << "its process is at work";
        lock.reset();
        EXPECT_EQ(WatchEnd::RESTORED, end.get());
    }
    EXPECT_EQ(2, m_restored);
}

TEST_F(Watches, BeginTheTimeAnewAfterARestart)
{
    PendingChange change = Store(PendingPhase::WAITING, 1);
    for (const std::uint64_t since :
         {ClockNow() + 1'000'000, ClockNow() - 1'000}) // a longer run of the machine, or not
    {
        change.waitingSince = since;
        StorePendingChange(m_folder, change);
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(WatchEnd::RESTORED, Watch().get());
        EXPECT_GE(std::chrono::steady_clock::now() - begin, 1s);
    }
}

TEST_F(Watches, AreNotEndedByARecordThatCannotBeRead)
{
    const std::string text = WritePendingChange(Store(PendingPhase::WAITING, 1));
    auto lock = ChangeLock::Take(m_folder, 1min);
    auto end = Watch();
    EXPECT_EQ(std::future_status::timeout, end.wait_for(400ms)) << "it has read the record";
    Write(L"0123456789abcdef.json", text.substr(0, text.size() / 2));
    lock.reset();
    EXPECT_EQ(WatchEnd::RESTORED, end.get());
}

TEST_F(Watches, LeaveTheRecordWhereRestoringFails)
{
    m_open = {"lan0: ipv4.addresses"};
    Store(PendingPhase::APPLYING);
    EXPECT_EQ(WatchEnd::NOT_RESTORED, Watch().get());
    EXPECT_EQ(3, m_restored);
    ASSERT_TRUE(IsPending());
    const PendingChange change = *LoadPendingChange(m_folder, ID)->change;
    EXPECT_EQ(PendingPhase::RESTORING, change.phase);
    EXPECT_EQ(RestoreCause::INTERRUPTED, change.restoration->cause);
    EXPECT_EQ(m_open, change.restoration->open);
}

} // namespace
