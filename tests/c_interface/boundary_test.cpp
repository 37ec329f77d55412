// The boundary of ZELK_STATE.DLL: whatever is passed to it ends in a defined result.

#include <functional>
#include <future>
#include <iterator>
#include <map>
#include <regex>
#include <set>

#include <gmock/gmock.h>

#include <support/golden.h>
#include <support/image.h>

#include "outcome.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

constexpr const char* NOTHING = R"({"adapters": []})";

/// Operations with their options, and with a desired state.
using Operation = std::function<int(const char* pszText, char** ppszResult, char** ppszError)>;
const std::map<std::string, Operation> OPERATIONS = {
    {"read", zelk_state_read},
    {"export", zelk_state_export},
    {"plan", [](const char* psz, auto... texts) { return zelk_state_plan(psz, nullptr, texts...); }},
    {"plan-with", [](const char* psz, auto... texts) { return zelk_state_plan(NOTHING, psz, texts...); }},
    {"apply",
     [](const char* psz, auto... texts) { return zelk_state_apply(NOTHING, psz, nullptr, nullptr, texts...); }},
    {"pending", zelk_state_pending},
    {"confirm", zelk_state_confirm},
    {"restore", [](const char* psz, auto... texts) { return zelk_state_restore(psz, nullptr, nullptr, texts...); }},
};

std::string RefusalOf(const std::string& sOperation, const char* pszText)
{
    const Outcome outcome = Give([&](auto... texts) { return OPERATIONS.at(sOperation)(pszText, texts...); });
    EXPECT_EQ(ZELK_STATE_USAGE, outcome.iCode) << sOperation;
    EXPECT_EQ("usage", outcome.json.value("kind", ""));
    return outcome.json.value("reason", "");
}

TEST(Boundary, RefusesWhatItDoesNotUnderstand)
{
    testing_support::ExpectTranscript([](const std::string& sQuestion) {
        const std::size_t blank = sQuestion.find(' ');
        const std::string sText = std::regex_replace(sQuestion.substr(blank + 1), std::regex("\\\\n"), "\n");
        return RefusalOf(sQuestion.substr(0, blank), sText.c_str());
    });
    EXPECT_EQ("the desired state is missing", RefusalOf("plan", nullptr));
    EXPECT_THAT(RefusalOf("plan", "{\"adapters\": [\"\xFF\xC0\"]}"), HasSubstr("this is not JSON"));
    EXPECT_THAT(RefusalOf("plan", std::string(1000000, '[').c_str()), HasSubstr("nested more than 100 deep"));
    const std::string sLong = "{\"" + std::string(16 << 20, 'x') + "\": 1}";
    EXPECT_THAT(RefusalOf("plan", sLong.c_str()), HasSubstr("is not a known key"));
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
