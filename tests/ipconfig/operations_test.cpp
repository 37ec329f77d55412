#include <functional>

#include <support/operations.h>

#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

using EveryOperation = IpconfigTest;

/// In the golden text: what each one on an adapter asks and answers, and how it fails where something is not there.
TEST_F(EveryOperation, OnAnAdapterThatLacksSomething)
{
    const std::pair<std::string, std::function<void(Arguments&)>> rows[] = {
        {"", [](Arguments&) {}},
        {" without a GUID", [](Arguments& a) { a.NicInfo.sNicGuid = L""; }},
        {" without a name", [](Arguments& a) { a.NicInfo.sNicName = L""; }},
        {" without a class key", [](Arguments& a) { a.NicInfo.sNicEnum = L""; }},
        {" without a device", [](Arguments& a) { a.NicInfo.sNicPci = L""; }},
        {" of no family", [](Arguments& a) { a.enFamily = UNKNOWN_FAMILY; }},
        {" without an index", [this](Arguments&) { codes["GetAdapterIndex"] = {87}; }},
        {" without a table", [this](Arguments&) { codes["GetAdaptersAddresses"] = {5}; }},
        {" of another adapter", [this](Arguments&) { adapters[0].record.IfIndex = 12; }}};
    SeedAdapter();
    AddAdapter();
    InNewProcess("", [&] {
        for (const Operation& operation : Operations())
            for (const auto& [sTitle, spoil] : rows)
            {
                if (std::string_view(operation.pszName).find("(a.NicInfo") == std::string_view::npos)
                    continue;
                codes.clear();
                adapters[0].record.IfIndex = 11;
                Arguments arguments(GUID_A);
                spoil(arguments);
                const std::string sBefore = arguments.Texts();
                Begin();
                const bool bRc = operation.pCall(arguments);
                const std::string sAfter = arguments.Texts();
                if (sTitle.empty() || !bRc)
                    WriteDown(operation.pszName + sTitle, Show(bRc, sAfter != sBefore ? sAfter : ""));
            }
    });
}

} // namespace
