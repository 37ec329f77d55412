// A DLL that uses ZELK_NM.DLL, so that the two can be loaded and unloaded together, and calls each of its operations.

#include "operations.h"

#include <cstdio>
#include <iterator>

#include <support/operations.h>

using testing_support::Arguments;
using testing_support::Operation;

namespace
{

/// Asks a question that fails when the platform does.
bool Fails()
{
    velmor::string sText;
    return !TOLVA::GetOwnDir(sText);
}

/// They do what none may do, which comes out only if the tool is right.
constexpr Operation FAULTS[] = {
    {"planted leak", [](Arguments&) { return !Fails() || ::CreateEventW(nullptr, TRUE, TRUE, nullptr) == nullptr; }},
    {"planted block", [](Arguments&) { return !Fails() || ::HeapAlloc(::GetProcessHeap(), 0, 8) == nullptr; }},
    {"planted file", [](Arguments& a) { return !Fails() || TOLVA::GetTempFilename(a.sText); }},
    {"planted mutex",
     [](Arguments&) {
         if (Fails())
             ::WaitForSingleObject(::CreateMutexW(nullptr, FALSE, L"TOLVA_trace.log"), INFINITE);
         return true;
     }},
    {"planted hang",
     [](Arguments&) {
         while (Fails())
             ::Sleep(60000);
         return true;
     }},
    {"planted exception", [](Arguments&) { return Fails() ? throw 1 : true; }},
    {"planted crash", [](Arguments& a) { return !Fails() || *reinterpret_cast<volatile char*>(a.ulNumber) == 0; }},
    {"planted answer", [](Arguments& a) { return !Fails() || (a.ulNumber = 1) == 1; }},
    {"planted change", [](Arguments& a) { return !Fails() || (a.ulNumber = 1) == 2; }},
    {"planted memory",
     [](Arguments& a) {
         static bool bFailed = false;
         bFailed = bFailed || Fails();
         a.ulNumber = bFailed;
         return true;
     }},
};

} // namespace

bool CallOperation(unsigned int uiOperation, const wchar_t* pszGuid, void (*pCount)(bool bBegin), Answer& answer)
{
    const auto operations = testing_support::Operations();
    if (uiOperation >= operations.size() + std::size(FAULTS))
        return false;
    const Operation& operation =
        uiOperation < operations.size() ? operations[uiOperation] : FAULTS[uiOperation - operations.size()];
    answer = {};
    answer.bException = true;
    std::snprintf(answer.name, sizeof(answer.name), "%s", operation.pszName);
    std::snprintf(answer.allowed, sizeof(answer.allowed), "%s", operation.pszAllowed);
    if (pCount == nullptr)
        return true;
    Arguments arguments(pszGuid);
    const std::string sBefore = arguments.Texts();
    try
    {
        pCount(true);
        answer.bResult = operation.pCall(arguments);
        answer.bException = false;
    }
    catch (...)
    {
    }
    pCount(false);
    const std::string sTexts = arguments.Texts();
    answer.bUnchanged = sTexts == sBefore;
    std::snprintf(answer.text, sizeof(answer.text), "%s", sTexts.c_str());
    return true;
}
