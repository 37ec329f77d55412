// The boundary of ZELK_STATE.DLL: whatever is passed to it, and whatever it runs out of, ends in a defined result.

#include <cstdlib>
#include <future>
#include <iterator>
#include <set>

#include <gmock/gmock.h>

#include <support/image.h>
#include <support/import_patch.h>

#include "outcome.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

constexpr const char* NOTHING = R"({"adapters": []})";

struct RefusedCase
{
    const char* pszDesired; ///< null for none
    const char* pszOptions;
    const char* pszReason;
};

TEST(Boundary, RefusesDesiredStates)
{
    const std::string sDeep(1000000, '[');
    const std::string sLong = "{\"" + std::string(16 << 20, 'x') + "\": 1}";
    const RefusedCase CASES[] = {
        {nullptr, nullptr, "the desired state is missing"},
        {"", nullptr, "this is not JSON"},
        {R"({"adapters": [)", nullptr, "this is not JSON"},
        {"{\"adapters\": [\"\xFF\xC0\"]}", nullptr, "this is not JSON"},
        {sDeep.c_str(), nullptr, "nested more than 100 deep"},
        {sLong.c_str(), nullptr, "is not a known key"},
        {"[]", nullptr, "must be an object"},
        {R"({"adapter": []})", nullptr,
         "/adapter: is not a known key; known here are schemaVersion, adapters, identity"},
        {R"({"adapters": [], "adapters": []})", nullptr, "stands twice"},
        {NOTHING, "", "this is not JSON"},
        {NOTHING, "[]", "must be an object"},
        {NOTHING, R"({"timeout": 5})", "/timeout: is not a known key"},
    };
    for (const RefusedCase& refused : CASES)
    {
        const Outcome outcome =
            Give([&](auto... texts) { return zelk_state_plan(refused.pszDesired, refused.pszOptions, texts...); });
        EXPECT_EQ(ZELK_STATE_USAGE, outcome.iCode) << refused.pszReason;
        EXPECT_THAT(outcome.json.value("reason", ""), HasSubstr(refused.pszReason));
        EXPECT_EQ("usage", outcome.json.value("kind", ""));
    }
}

TEST(Boundary, RefusesOptions)
{
    const auto Read = [](const char* psz, auto... texts) { return zelk_state_read(psz, texts...); };
    const auto Export = [](const char* psz, auto... texts) { return zelk_state_export(psz, texts...); };
    const auto Pending = [](const char* psz, auto... texts) { return zelk_state_pending(psz, texts...); };
    const auto Confirm = [](const char* psz, auto... texts) { return zelk_state_confirm(psz, texts...); };
    const auto Restore = [](const char* psz, auto... texts) {
        return zelk_state_restore(psz, nullptr, nullptr, texts...);
    };
    const auto Apply = [](const char* psz, auto... texts) {
        return zelk_state_apply(NOTHING, psz, nullptr, nullptr, texts...);
    };
    struct Case
    {
        std::function<int(const char*, char**, char**)> operation;
        const char* pszOptions;
        const char* pszReason;
    };
    const Case CASES[] = {
        {Read, R"({"identity": 1})", "/identity: must be true or false"},
        {Read, "{\"a\nb\": 1}", "this is not JSON"},
        {Export, R"({"adapters": "lan0"})", "/adapters: must be a list of texts"},
        {Export, R"({"adapters": ["a", 1]})", "/adapters/1: must be a text"},
        {Pending, R"({"all": true})", "/all: is not a known key"},
        {Confirm, R"({"timeout": 0})", "/timeout: must be a whole number of seconds from 1 to 86400"},
        {Confirm, R"({"change": "all"})", "/change: must be the id of a change"},
        {Confirm, R"({"timeout": 1.5})", "/timeout: must be"},
        {Restore, R"({"timeout": 86401})", "/timeout: must be"},
        {Restore, R"({"discard": "yes"})", "/discard: must be true or false"},
        {Apply, R"({"confirmWithin": -1})", "/confirmWithin: must be"},
        {Apply, R"({"confirmWithin": 5, "waitFor": "gateway"})", "/waitFor: must be an IPv4 or IPv6 address"},
        {Apply, R"({"waitFor": "192.0.2.1"})", "waitFor needs confirmWithin"},
        {Apply, R"({"keep": true, "Keep": true})", "/Keep: is not a known key"},
    };
    for (const Case& refused : CASES)
    {
        const Outcome outcome = Give([&](auto... texts) { return refused.operation(refused.pszOptions, texts...); });
        EXPECT_EQ(ZELK_STATE_USAGE, outcome.iCode) << refused.pszOptions;
        EXPECT_THAT(outcome.json.value("reason", ""), HasSubstr(refused.pszReason));
    }
}

TEST(Boundary, TextsCanBeLeftOut)
{
    zelk_state_free(nullptr);
    EXPECT_EQ(ZELK_STATE_DONE, zelk_state_version(nullptr, nullptr));
    EXPECT_EQ(ZELK_STATE_DONE, zelk_state_plan(NOTHING, nullptr, nullptr, nullptr));
    EXPECT_EQ(ZELK_STATE_USAGE, zelk_state_plan(nullptr, nullptr, nullptr, nullptr));
    char stale = 0;
    char* pszError = &stale;
    EXPECT_EQ(ZELK_STATE_DONE, zelk_state_read(nullptr, nullptr, &pszError));
    EXPECT_EQ(nullptr, pszError);
}

TEST(Boundary, AdaptersThatDoNotExistAreNamed)
{
    const Outcome outcome =
        Give([](auto... texts) { return zelk_state_export("{\"adapters\": [\"no\\u0007ne\"]}", texts...); });
    EXPECT_EQ(ZELK_STATE_NO_SUCH_ADAPTER, outcome.iCode);
    EXPECT_EQ("there is no adapter \"no\xEF\xBF\xBDne\"", outcome.json.value("reason", ""));
}

TEST(Boundary, SeveralThreadsReadAtOnce)
{
    const auto ReadOften = [] {
        std::set<std::string> machines;
        for (int i = 0; i < 5; ++i)
            machines.insert(Give([](auto... texts) { return zelk_state_read(nullptr, texts...); }).json.dump());
        return machines;
    };
    std::vector<std::future<std::set<std::string>>> threads;
    for (int i = 0; i < 8; ++i)
        threads.push_back(std::async(std::launch::async, ReadOften));
    const auto expected = ReadOften();
    EXPECT_EQ(1U, expected.size());
    EXPECT_THAT(*expected.begin(), HasSubstr("\"adapters\":["));
    for (auto& thread : threads)
        EXPECT_EQ(expected, thread.get());
}

/// Large blocks are what is missing first.
TEST(Boundary, WhatFindsNoMemoryIsAResult)
{
    std::size_t most = SIZE_MAX;
    const testing_support::ImportPatch<void* (*)(std::size_t)> patch(
        "malloc", [&](std::size_t size) -> void* { return size < most ? std::malloc(size) : nullptr; },
        ::GetModuleHandleW(L"ZELK_STATE.DLL"));
    const std::string sLong = "{\"" + std::string(16 << 20, 'x') + "\": 1}";
    struct Case
    {
        std::size_t most;
        const char* pszDesired;
    };
    for (const Case& scarce : {Case{1 << 20, sLong.c_str()}, Case{1 << 10, NOTHING}})
    {
        const Outcome outcome = Give([&](auto... texts) {
            most = scarce.most;
            const int iCode = zelk_state_plan(scarce.pszDesired, nullptr, texts...);
            most = SIZE_MAX;
            return iCode;
        });
        EXPECT_EQ(ZELK_STATE_FAILED, outcome.iCode) << scarce.most;
        EXPECT_EQ("out of memory", outcome.json.value("reason", ""));
    }
    EXPECT_EQ(ZELK_STATE_DONE, Give([](auto... texts) { return zelk_state_plan(NOTHING, nullptr, texts...); }).iCode);
}

TEST(StateImage, ExportsTheInterfaceAndImportsSystemDllsAndTheLibrary)
{
#ifndef NDEBUG
    GTEST_SKIP() << "other builds than the release build carry parts of the compiler, and another linker's tables";
#endif
    const testing_support::Image image(L"ZELK_STATE.DLL");
    EXPECT_THAT(image.Exports(), ElementsAre("zelk_state_apply", "zelk_state_confirm", "zelk_state_export",
                                             "zelk_state_free", "zelk_state_pending", "zelk_state_plan",
                                             "zelk_state_read", "zelk_state_restore", "zelk_state_version"));
    std::set<std::string> others;
    std::ranges::copy_if(image.ImportsOfNewerSystems(), std::inserter(others, others.end()),
                         [](const std::string& sImport) { return !sImport.starts_with("ZELK_NM.DLL "); });
    EXPECT_THAT(others, testing::IsEmpty());
    EXPECT_TRUE(image.IsForTheOldestSystem());
}

} // namespace
