// The functions of ZELK_STATE.DLL as operations that are called by number. What they read differs from call to call: an
// answer is their code, and whether the texts are what the header promises.

#include <cstdio>
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

struct Operation
{
    const char* pszName;
    int (*pCall)(const char* pszExported, char** ppszResult, char** ppszError);
};

#define OPERATION(function, ...)                                                                                       \
    {                                                                                                                  \
#function "(" #__VA_ARGS__ ")",                                                                                \
            []([[maybe_unused]] const char* pszExported, char** ppszResult,                                            \
               char** ppszError) { return function(__VA_ARGS__ __VA_OPT__(, ) ppszResult, ppszError); }                \
    }

constexpr Operation OPERATIONS[] = {
    OPERATION(zelk_state_version),
    OPERATION(zelk_state_read, nullptr),
    OPERATION(zelk_state_read, R"({"identity": false})"),
    OPERATION(zelk_state_export, nullptr),
    OPERATION(zelk_state_export, R"({"adapters": ["none"]})"),
    OPERATION(zelk_state_plan, NOTHING, nullptr),
    OPERATION(zelk_state_plan, pszExported, nullptr),
    OPERATION(zelk_state_plan, "[", nullptr),
    OPERATION(zelk_state_apply, NOTHING, nullptr, nullptr, nullptr),
    OPERATION(zelk_state_pending, nullptr),
    OPERATION(zelk_state_confirm, R"({"timeout": 1})"),
    OPERATION(zelk_state_restore, R"({"timeout": 1})", nullptr, nullptr),
    OPERATION(zelk_state_restore, R"({"discard": true})", nullptr, nullptr),
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

/// This machine's configuration as a desired state.
std::string Exported()
{
    Texts texts;
    zelk_state_export(nullptr, &texts.pszResult, &texts.pszError);
    const std::string sExported = texts.pszResult != nullptr ? texts.pszResult : NOTHING;
    zelk_state_free(texts.pszResult);
    zelk_state_free(texts.pszError);
    return sExported;
}

} // namespace

bool CallOperation(unsigned int uiOperation, const wchar_t*, void (*pCount)(bool bBegin), Answer& answer)
{
    if (uiOperation >= std::size(OPERATIONS))
        return false;
    answer = {};
    std::snprintf(answer.name, sizeof(answer.name), "%s", OPERATIONS[uiOperation].pszName);
    std::snprintf(answer.allowed, sizeof(answer.allowed), "code=");
    if (pCount == nullptr)
        return true;
    static const std::string sExported = Exported();
    Texts texts;
    int iCode = -1;
    try
    {
        pCount(true);
        iCode = OPERATIONS[uiOperation].pCall(sExported.c_str(), &texts.pszResult, &texts.pszError);
    }
    catch (...)
    {
        answer.bException = true;
    }
    pCount(false);
    answer.bResult = true;
    if (IsAsPromised(iCode, texts))
        std::snprintf(answer.text, sizeof(answer.text), "code=%d;", iCode);
    else
        std::snprintf(answer.text, sizeof(answer.text), "broken=%d %.500s %.500s;", iCode,
                      texts.pszResult != nullptr ? texts.pszResult : "no result",
                      texts.pszError != nullptr ? texts.pszError : "no error");
    zelk_state_free(texts.pszResult);
    zelk_state_free(texts.pszError);
    return true;
}
