// The functions of ZELK_STATE.DLL as operations that are called by number. What they read differs from call to call: an
// answer is their code, and whether the texts are what the header promises.

#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include <nlohmann/json.hpp>

#include <zelk_state/zelk_state.h>

#include "operations.h"

namespace
{

struct Texts
{
    char* pszResult = nullptr;
    char* pszError = nullptr;
};

constexpr const char* NOTHING = R"({"adapters": []})";

/// Desired states.
struct Documents
{
    std::string sExported; ///< this machine as it is
    std::string sChanged;  ///< what only the registry keeps of one adapter
    std::string sBack;     ///< the same as it was before
    std::string sDisabled; ///< what a stand-in of the platform only claims to do
    std::string sRenamed;  ///< what a command does, or only claims to
};

struct Operation
{
    const char* pszName;
    int (*pCall)(const Documents& documents, char** ppszResult, char** ppszError);
    bool bChanges = false;
};

#define CALL(function, ...)                                                                                            \
#function "(" #__VA_ARGS__ ")",                                                                                    \
        []([[maybe_unused]] const Documents& documents, char** ppszResult,                                             \
           char** ppszError) { return function(__VA_ARGS__ __VA_OPT__(, ) ppszResult, ppszError); }

constexpr Operation OPERATIONS[] = {
    {CALL(zelk_state_version)},
    {CALL(zelk_state_read, nullptr)},
    {CALL(zelk_state_read, R"({"identity": false})")},
    {CALL(zelk_state_export, nullptr)},
    {CALL(zelk_state_export, R"({"adapters": ["none"]})")},
    {CALL(zelk_state_plan, NOTHING, nullptr)},
    {CALL(zelk_state_plan, documents.sExported.c_str(), nullptr)},
    {CALL(zelk_state_plan, "[", nullptr)},
    {CALL(zelk_state_apply, NOTHING, nullptr, nullptr, nullptr)},
    {CALL(zelk_state_apply, documents.sChanged.c_str(), R"({"timeout": 1})", nullptr, nullptr), true},
    {CALL(zelk_state_apply, documents.sChanged.c_str(), R"({"confirmWithin": 60})", nullptr, nullptr), true},
    {CALL(zelk_state_apply, documents.sDisabled.c_str(), R"({"timeout": 1})", nullptr, nullptr), true},
    {CALL(zelk_state_apply, documents.sRenamed.c_str(), R"({"timeout": 1})", nullptr, nullptr), true},
    {CALL(zelk_state_pending, nullptr)},
    {CALL(zelk_state_confirm, R"({"timeout": 1})")},
    {CALL(zelk_state_restore, R"({"timeout": 1})", nullptr, nullptr)},
    {CALL(zelk_state_restore, R"({"discard": true})", nullptr, nullptr)},
};

/// Whether exactly one of the two texts is there, and is JSON.
bool IsAsPromised(int iCode, const Texts& texts)
{
    if ((texts.pszResult == nullptr) == (texts.pszError == nullptr) || iCode < 0 || iCode > ZELK_STATE_DIFFERENCES)
        return false;
    const bool bResult = texts.pszResult != nullptr;
    const nlohmann::json document = nlohmann::json::parse(bResult ? texts.pszResult : texts.pszError, nullptr, false);
    return bResult ? !document.is_discarded() : document.is_object() && document.value("exitCode", -1) == iCode;
}

const char* AnswerOf(const Texts& texts)
{
    if (texts.pszResult != nullptr)
        return texts.pszResult;
    return texts.pszError != nullptr ? texts.pszError : "nothing";
}

void Free(const Texts& texts)
{
    zelk_state_free(texts.pszResult);
    zelk_state_free(texts.pszError);
}

std::string Desired(const std::string& sGuid, nlohmann::json settings)
{
    settings["adapter"] = "guid:" + sGuid;
    return nlohmann::json{{"adapters", {settings}}}.dump();
}

std::string Registry(const std::string& sGuid, const char* pszSuffix, const char* pszNetbios)
{
    return Desired(sGuid, {{"ipv4", {{"dnsSuffix", pszSuffix}, {"netbios", pszNetbios}}}});
}

Documents MakeDocuments(const std::wstring& sGuid)
{
    const std::string sNarrow(sGuid.begin(), sGuid.end()); // of ASCII alone
    Documents documents = {NOTHING, Registry(sNarrow, "other.example", "enabled"),
                           Registry(sNarrow, "example.com", "disabled"), Desired(sNarrow, {{"enabled", false}}),
                           Desired(sNarrow, {{"connectionName", "other"}})};
    Texts texts;
    if (zelk_state_export(nullptr, &texts.pszResult, &texts.pszError) == 0)
        documents.sExported = texts.pszResult;
    Free(texts);
    return documents;
}

/// Undoes the change. What is wrong: the machine is as asked for exactly if the code says so, and as it was unless the
/// result says that it is not; what only claims to be done is not.
std::string WhatIsWrong(const Documents& documents, int iCode, const char* pszResult)
{
    Texts texts[4];
    const bool bDone =
        zelk_state_plan(documents.sChanged.c_str(), nullptr, &texts[0].pszResult, &texts[0].pszError) == 0;
    zelk_state_restore(R"({"timeout": 1})", nullptr, nullptr, &texts[1].pszResult, &texts[1].pszError);
    zelk_state_restore(R"({"discard": true})", nullptr, nullptr, &texts[2].pszResult, &texts[2].pszError);
    const bool bBack = zelk_state_apply(documents.sBack.c_str(), nullptr, nullptr, nullptr, &texts[3].pszResult,
                                        &texts[3].pszError) == 0;
    std::string sWrong = bDone == (iCode == 0) ? "" : bDone ? "it is done; " : "it is not done; ";
    if (!bBack && std::strstr(pszResult != nullptr ? pszResult : "", R"("undo":{"complete":false)") == nullptr)
        sWrong += std::string("not taken back: ") + AnswerOf(texts[3]);
    for (const Texts& each : texts)
        Free(each);
    return sWrong;
}

} // namespace

bool CallOperation(unsigned int uiOperation, const wchar_t* pszGuid, void (*pCount)(bool bBegin), Answer& answer)
{
    if (uiOperation >= std::size(OPERATIONS))
        return false;
    answer = {};
    std::snprintf(answer.name, sizeof(answer.name), "%s", OPERATIONS[uiOperation].pszName);
    std::snprintf(answer.allowed, sizeof(answer.allowed), "code=");
    if (pCount == nullptr)
        return true;
    static const Documents documents = MakeDocuments(pszGuid);
    Texts texts;
    int iCode = -1;
    try
    {
        pCount(true);
        iCode = OPERATIONS[uiOperation].pCall(documents, &texts.pszResult, &texts.pszError);
    }
    catch (...)
    {
        answer.bException = true;
    }
    pCount(false);
    answer.bResult = true;
    const std::string sWrong = OPERATIONS[uiOperation].bChanges ? WhatIsWrong(documents, iCode, texts.pszResult) : "";
    // A command may be too slow for time that runs fast.
    const int iTold = iCode == ZELK_STATE_TIME_OVER ? static_cast<int>(ZELK_STATE_NOT_VERIFIED) : iCode;
    if (sWrong.empty() && IsAsPromised(iCode, texts))
        std::snprintf(answer.text, sizeof(answer.text), "code=%d;", iTold);
    else
        std::snprintf(answer.text, sizeof(answer.text), "broken=%d %.1000s %.500s;", iCode, sWrong.c_str(),
                      AnswerOf(texts));
    Free(texts);
    return true;
}
