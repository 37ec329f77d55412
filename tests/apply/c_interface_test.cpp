// ZELK_STATE.DLL on a kernel and a registry: it does what the tool does, and says it in the same JSON.

#include <atomic>
#include <future>

#include <c_interface/outcome.h>

#include "zelkctl_changes.h"

namespace
{

constexpr const char* CHANGE = R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["198.51.100.20/24"],
    "gateways": ["198.51.100.1"], "dnsServers": ["198.51.100.53", "198.51.100.54"]}}]})";
constexpr const char* OPTIONS = R"({"timeout": 15})";

/// What a caller collects, and when it cancels.
struct Listener
{
    std::vector<Json> events;
    int iQuestions = 0;
    std::function<bool(const Json& event)> cancelAt = [](const Json&) { return false; };
    std::atomic<bool> bCancelled = false;

    static int ZELK_STATE_CALL Call(void* pContext, const char* pszEvent)
    {
        auto& self = *static_cast<Listener*>(pContext);
        if (pszEvent == nullptr)
            return ++self.iQuestions, self.bCancelled;
        self.events.push_back(Json::parse(pszEvent));
        return self.cancelAt(self.events.back());
    }
};

/// On a thread of its own: this system keeps the resolver's servers for each thread.
template <class Operation>
Outcome GiveAnew(const Operation& operation)
{
    return std::async(std::launch::async, [&] { return Give(operation); }).get();
}

Outcome Apply(const char* pszDesired, const char* pszOptions = OPTIONS, Listener* pListener = nullptr)
{
    return GiveAnew([=](auto... texts) {
        return zelk_state_apply(pszDesired, pszOptions, pListener != nullptr ? &Listener::Call : nullptr, pListener,
                                texts...);
    });
}

Outcome Restore(const char* pszOptions)
{
    return GiveAnew([=](auto... texts) { return zelk_state_restore(pszOptions, nullptr, nullptr, texts...); });
}

class CInterface : public ZelkctlChanges
{
protected:
    void SetUp() override
    {
        Restore(R"({"discard": true})");
        ZelkctlChanges::SetUp();
        m_sBefore = Kernel();
    }

    static std::wstring FileWith(const std::string& sDocument)
    {
        WriteFileBytes(BesideProgram(L"desired.json"), sDocument);
        return L'"' + BesideProgram(L"desired.json").wstring() + L'"';
    }

    std::string m_sBefore;
};

TEST_F(CInterface, AnswersAsTheToolDoes)
{
    const auto Same = [](const Result& tool, const Outcome& here) {
        const Json answer = Json::parse(tool.sOut);
        EXPECT_EQ(tool.dwExitCode, static_cast<DWORD>(here.iCode));
        Json expected = here.bError ? answer.at("error") : answer.contains("result") ? answer.at("result") : answer;
        if (here.bError)
            expected["hint"] = nullptr; // the tool's speaks of its command line
        EXPECT_EQ(expected, here.json);
    };
    Same(Run(L"show --json"), GiveAnew([](auto... texts) { return zelk_state_read(nullptr, texts...); }));
    Same(Run(L"version --json"), GiveAnew([](auto... texts) { return zelk_state_version(texts...); }));
    Same(Run(L"pending --json"), GiveAnew([](auto... texts) { return zelk_state_pending(nullptr, texts...); }));
    Same(Run(L"confirm --json"), GiveAnew([](auto... texts) { return zelk_state_confirm(nullptr, texts...); }));
    Same(Run(L"restore --json --yes"), Restore(nullptr));
    Same(Run(L"export lan0"),
         GiveAnew([](auto... texts) { return zelk_state_export(R"({"adapters": ["lan0"]})", texts...); }));
    for (const char* pszDesired :
         {CHANGE, ZelkctlChanges::START, "{", R"({"adapters": [{"adapter": "lan7"}]})",
          R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["224.0.0.1/24", "192.0.2.0/24"]}}]})"})
    {
        SCOPED_TRACE(pszDesired);
        const std::wstring sApply = L"apply " + FileWith(pszDesired);
        Same(Run(sApply + L" --check --json"),
             GiveAnew([=](auto... texts) { return zelk_state_plan(pszDesired, nullptr, texts...); }));
    }
}

TEST_F(CInterface, AppliesAndTellsEachStep)
{
    Listener listener;
    const Outcome outcome = Apply(CHANGE, OPTIONS, &listener);
    EXPECT_EQ(ZELK_STATE_DONE, outcome.iCode);
    EXPECT_EQ("changed", outcome.json.at("outcome"));
    EXPECT_THAT(Kernel(), HasSubstr("198.51.100.20/24"));
    const std::size_t count = outcome.json.at("steps").size();
    ASSERT_EQ(2 * count + 1, listener.events.size());
    for (std::size_t i = 0; i < count; ++i)
    {
        const Json& begun = listener.events[2 * i];
        const Json& ended = listener.events[2 * i + 1];
        EXPECT_EQ("stepBegun", begun.at("event"));
        EXPECT_EQ("stepEnded", ended.at("event"));
        EXPECT_EQ(i + 1, begun.at("number"));
        EXPECT_EQ(count, begun.at("count"));
        EXPECT_EQ(begun.at("step").at("step"), ended.at("step").at("step"));
        EXPECT_EQ(outcome.json.at("steps")[i], ended.at("step"));
    }
    EXPECT_EQ(Json({{"event", "verifying"}}), listener.events.back());
    EXPECT_GT(listener.iQuestions, 0);
    const Json again = Apply(CHANGE).json;
    EXPECT_EQ("unchanged", again.at("outcome"));
    EXPECT_TRUE(again.at("pendingChange").is_null());
}

TEST_F(CInterface, IsCancelledByTheCallbackOrByAnotherThread)
{
    Listener byEvent;
    byEvent.cancelAt = [](const Json& event) { return event.at("event") == "stepEnded"; };
    const Outcome first = Apply(CHANGE, OPTIONS, &byEvent);
    EXPECT_EQ(ZELK_STATE_FAILED, first.iCode);
    EXPECT_EQ("cancelled", first.json.at("outcome"));
    EXPECT_TRUE(first.json.at("undo").at("complete"));
    EXPECT_EQ(m_sBefore, Kernel());

    const StandIn hangs("ZELK_HANG", "set dnsservers");
    Listener byThread;
    std::promise<void> hanging;
    byThread.cancelAt = [&](const Json& event) {
        if (event.at("event") == "stepBegun" && event.at("step").dump().find("set dnsservers") != std::string::npos &&
            !event.at("undoing"))
            hanging.set_value();
        return false;
    };
    auto applying = std::async(std::launch::async, [&] { return Apply(CHANGE, OPTIONS, &byThread); });
    EXPECT_EQ(std::future_status::ready, hanging.get_future().wait_for(std::chrono::seconds(60)));
    EXPECT_EQ(ZELK_STATE_BUSY, Apply(START, R"({"timeout": 1})").iCode);
    byThread.bCancelled = true;
    EXPECT_EQ("cancelled", applying.get().json.at("outcome"));
    EXPECT_EQ(m_sBefore, Kernel());
}

TEST_F(CInterface, ChangesWaitToBeConfirmed)
{
    constexpr const char* WITHIN = R"({"timeout": 15, "confirmWithin": 600, "label": "of the tests"})";
    EXPECT_EQ(ZELK_STATE_DONE, Apply(CHANGE, WITHIN).iCode);
    const auto Pending = [](auto... texts) { return zelk_state_pending(nullptr, texts...); };
    EXPECT_EQ("waiting", Give(Pending).json.at(0).at("phase"));
    EXPECT_EQ("of the tests", Give(Pending).json.at(0).at("label"));
    EXPECT_EQ(ZELK_STATE_BUSY, Apply(START).iCode);
    {
        const StandIn refuses("ZELK_REFUSED", "set dnsservers");
        EXPECT_EQ(ZELK_STATE_NOT_VERIFIED, Restore(R"({"timeout": 1})").iCode);
    }
    // The change's watch tries again as well, and may be the first: then there is nothing left to restore.
    EXPECT_THAT(Restore(OPTIONS).iCode, testing::AnyOf(ZELK_STATE_DONE, ZELK_STATE_FAILED));
    EXPECT_EQ(m_sBefore, Kernel());

    const Outcome made = Apply(CHANGE, WITHIN);
    EXPECT_EQ(ZELK_STATE_DONE, made.iCode);
    const std::string sOnly = Json({{"change", made.json.at("pendingChange")}}).dump();
    EXPECT_EQ(ZELK_STATE_DONE, Give([&](auto... texts) { return zelk_state_confirm(sOnly.c_str(), texts...); }).iCode);
    EXPECT_EQ(Json::array(), Give(Pending).json);
    EXPECT_THAT(Kernel(), HasSubstr("198.51.100.20/24"));
}

TEST_F(CInterface, NobodyWatchesWithoutTheToolBesideTheDll)
{
    const TempDirectory folder;
    std::filesystem::copy_file(BesideProgram(L"ZELK_STATE.DLL"), folder / L"ALONE.DLL");
    const HMODULE hAlone = ::LoadLibraryW((folder / L"ALONE.DLL").c_str());
    ASSERT_NE(nullptr, hAlone);
    const auto pApply = reinterpret_cast<decltype(&zelk_state_apply)>(
        reinterpret_cast<void*>(::GetProcAddress(hAlone, "zelk_state_apply")));
    const Outcome outcome = GiveAnew(
        [=](auto... texts) { return pApply(CHANGE, R"({"confirmWithin": 600})", nullptr, nullptr, texts...); });
    EXPECT_EQ(ZELK_STATE_NOT_POSSIBLE, outcome.iCode);
    EXPECT_THAT(outcome.json.value("reason", ""), HasSubstr("requires zelkctl.exe beside ZELK_STATE.DLL"));
    EXPECT_EQ(m_sBefore, Kernel());
    ::FreeLibrary(hAlone);
}

TEST_F(CInterface, ExamplesDoWhatTheySay)
{
    const Result loaded = Run(L"", {.pszProgram = L"load_state.exe"});
    EXPECT_EQ(0U, loaded.dwExitCode);
    EXPECT_THAT(Json::parse(loaded.sOut).at("adapters").dump(), HasSubstr(R"("friendlyName":"lan0")"));
    EXPECT_EQ(10U, Run(L"192.0.2.99/24", {.pszProgram = L"plan_state.exe"}).dwExitCode);
    EXPECT_EQ(0U, Run(L"192.0.2.10/24", {.pszProgram = L"plan_state.exe"}).dwExitCode);
    const Result refused = Run(L"300.0.2.99/24", {.pszProgram = L"plan_state.exe"});
    EXPECT_EQ(2U, refused.dwExitCode);
    EXPECT_EQ("usage", Json::parse(refused.sErr).at("kind"));

    const Result planned = Run(FileWith(CHANGE) + L" --check", {.pszProgram = L"apply_state.exe"});
    EXPECT_EQ(10U, planned.dwExitCode);
    EXPECT_EQ(m_sBefore, Kernel());
    const Result applied = Run(FileWith(CHANGE), {.pszProgram = L"apply_state.exe"});
    EXPECT_EQ(0U, applied.dwExitCode) << applied.sErr;
    EXPECT_THAT(applied.sErr, HasSubstr("stepEnded"));
    EXPECT_THAT(Kernel(), HasSubstr("198.51.100.20/24"));
}

} // namespace
