#include <climits>

#include <adapters/wrap_ip_interface_info.h>

#include "discovery_test.h"

namespace
{

using InterfaceTable = DiscoveryTest;

std::vector<std::wstring> Guids(const std::vector<TOLVA::NIC_INFO>& list)
{
    std::vector<std::wstring> guids;
    for (const TOLVA::NIC_INFO& NicInfo : list)
        guids.push_back(Text(NicInfo.sNicGuid));
    return guids;
}

TEST_F(InterfaceTable, WhatLoadTableMakesOfThePlatformsAnswers)
{
    const std::string sNoData = "[W] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending( GetInterfaceInfo failed - "
                                "There are no network adapters enabled for IPv4 on the local system )";
    const std::string sFailed =
        "[E] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending( GetInterfaceInfo failed ) : dwRc = ";
    const struct
    {
        std::vector<DWORD> codes;
        unsigned int calls;
        std::string sEnding;
        bool bLoadsAgain; ///< the next question has to load the table
    } rows[] = {
        {{}, 2, "[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending", false},
        {{ERROR_NO_DATA}, 1, sNoData, true},
        {{NO_ERROR}, 1, sFailed + "0", true},
        {{ERROR_NOT_SUPPORTED}, 1, sFailed + "50", true},
        {{ERROR_INSUFFICIENT_BUFFER, ERROR_NO_DATA}, 2, sNoData, false},
        {{ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER}, 2, sFailed + "87", true},
        // The table has grown between the calls: there is no third.
        {{ERROR_INSUFFICIENT_BUFFER, ERROR_INSUFFICIENT_BUFFER}, 2, sFailed + "122", true},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.sEnding);
        interfaces = {};
        interfaces.names = {L"\\DEVICE\\TCPIP_{ABC}"};
        interfaces.codes = row.codes;
        trace.Empty();
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        EXPECT_EQ(row.codes.empty(), table.LoadTable());
        trace.ExpectLines({"[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : starting ...", row.sEnding});
        EXPECT_EQ(row.calls, interfaces.calls);
        EXPECT_TRUE(interfaces.bBufferWasZero);

        std::vector<TOLVA::NIC_INFO> list;
        EXPECT_TRUE(table.GetAdapterList(list));
        EXPECT_EQ(row.bLoadsAgain ? row.calls + 2 : row.calls, interfaces.calls);
        EXPECT_EQ(row.bLoadsAgain || row.codes.empty() ? 1U : 0U, list.size());
    }
}

TEST_F(InterfaceTable, GuidOfADeviceName)
{
    const std::wstring sLongest = L"{" + std::wstring(MAX_ADAPTER_NAME - 2, L'F') + L"}";
    const char* const LEADING =
        "[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : Couldn't find leading '{' in device name";
    const char* const TRAILING =
        "[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : Couldn't find trailing '}' in device name";
    const struct
    {
        std::wstring sName;
        std::wstring sGuid;
        const char* pszError;
    } rows[] = {
        {L"\\DEVICE\\TCPIP_{ABC}", L"{ABC}", nullptr},
        {L"x{A}y}z", L"{A}", nullptr},
        {L"}{A{B}", L"{A{B}", nullptr},
        {L"{}", L"{}", nullptr},
        {sLongest, sLongest, nullptr}, // has no terminator; the next name follows at once
        {L"plain}", L"", LEADING},
        {L"", L"", LEADING},
        {L"x{ABC", L"", TRAILING},
        {L"}{", L"", TRAILING},
        {L"{" + std::wstring(MAX_ADAPTER_NAME - 1, L'F'), L"", TRAILING},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.sName));
        interfaces = {};
        interfaces.names = {row.sName, L"{LAST}"};
        trace.Empty();
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        std::vector<TOLVA::NIC_INFO> list;
        EXPECT_EQ(row.pszError == nullptr, table.GetAdapterList(list));
        ASSERT_EQ(row.pszError == nullptr ? 2U : 1U, list.size());
        EXPECT_EQ(L"{LAST}", Text(list.back().sNicGuid));
        if (row.pszError == nullptr)
        {
            EXPECT_EQ(row.sGuid, Text(list.front().sNicGuid));
            EXPECT_EQ(row.sName, Text(list.front().sNicName));
        }
        else
            EXPECT_TRUE(trace.Has(row.pszError));
    }
}

TEST_F(InterfaceTable, CountsThatHoldNothing)
{
    for (const LONG lCount : {0L, -1L, static_cast<LONG>(LONG_MIN)})
    {
        interfaces = {};
        interfaces.names = {L"{ABC}"};
        interfaces.claimed = lCount;
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        std::vector<TOLVA::NIC_INFO> list;
        EXPECT_TRUE(table.GetAdapterList(list)) << lCount;
        EXPECT_TRUE(list.empty()) << lCount;
    }
}

TEST_F(InterfaceTable, ABadNameKeepsTheOthersAndCompletesNothing)
{
    SeedAdapter();
    interfaces.names = {L"\\DEVICE\\TCPIP_{1}", L"\\DEVICE\\TCPIP_{2", L"\\DEVICE\\TCPIP_{3}"};
    std::vector<TOLVA::NIC_INFO> list = {Adapter()};
    EXPECT_FALSE(TOLVA::GetAdapterList(list));
    EXPECT_EQ((std::vector<std::wstring>{GUID_A, L"{1}", L"{3}"}), Guids(list));
    EXPECT_TRUE(list[0].sNicEnum.empty());
    EXPECT_TRUE(indexNames.empty());
    trace.ExpectLines(Transcript(R"(
[V] TOLVA::GetAdapterList : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : NicInfo.sNicName = "\DEVICE\TCPIP_{1}"
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : NicInfo.sNicName = "\DEVICE\TCPIP_{2"
[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : Couldn't find trailing '}' in device name
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : NicInfo.sNicName = "\DEVICE\TCPIP_{3}"
[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : ... ending( Failed to obtain adapter information for one or more adapters )
[E] TOLVA::GetAdapterList : ... ending(Failed to get adapter list)
)"));
}

TEST_F(InterfaceTable, NoAdapterLeavesTheListAsItWas)
{
    interfaces.codes = {ERROR_NO_DATA};
    std::vector<TOLVA::NIC_INFO> list = {Adapter()};
    EXPECT_FALSE(TOLVA::GetAdapterList(list));
    EXPECT_EQ(std::vector<std::wstring>{GUID_A}, Guids(list));
    EXPECT_TRUE(indexNames.empty());
    trace.ExpectLines(Transcript(R"(
[V] TOLVA::GetAdapterList : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : starting ...
[W] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending( GetInterfaceInfo failed - There are no network adapters enabled for IPv4 on the local system )
[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : ... ending( Failed to load adapter table )
[E] TOLVA::GetAdapterList : ... ending(Failed to get adapter list)
)"));
}

TEST_F(InterfaceTable, IndexOfAnAdapter)
{
    unsigned long ulFound = 1;
    EXPECT_TRUE(TOLVA::GetAdapterIndex(Adapter(L"{ABC}"), ulFound));
    EXPECT_EQ(11U, ulFound);
    EXPECT_EQ(std::vector<std::wstring>{L"\\DEVICE\\TCPIP_{ABC}"}, indexNames);
    trace.ExpectLines(Transcript(R"(
[V] TOLVA::GetAdapterIndex : starting ...
[V] TOLVA::GetAdapterIndex : NicInfo.sNicGuid = "{ABC}"
[V] TOLVA::GetAdapterIndex : ulAdapterIndex = 11
[V] TOLVA::GetAdapterIndex : ... ending
)"));

    trace.Empty();
    indexCodes = {NO_ERROR, ERROR_DEV_NOT_EXIST};
    ulIndex = 12;
    EXPECT_FALSE(TOLVA::GetAdapterIndex(Adapter(L"{ABC}"), ulFound));
    EXPECT_EQ(12U, ulFound) << "the platform's value is passed on";
    trace.ExpectLines(Transcript(R"(
[V] TOLVA::GetAdapterIndex : starting ...
[V] TOLVA::GetAdapterIndex : NicInfo.sNicGuid = "{ABC}"
[E] TOLVA::GetAdapterIndex : ... ending(GetAdapterIndex failed) : dwRc = 55
)"));

    trace.Empty();
    EXPECT_FALSE(TOLVA::GetAdapterIndex(Adapter(L""), ulFound));
    EXPECT_EQ(2U, indexNames.size()) << "the platform is not asked";
    trace.ExpectLines(Transcript(R"(
[V] TOLVA::GetAdapterIndex : starting ...
[E] TOLVA::GetAdapterIndex : ... ending( Bad NIC GUID )
)"));
}

} // namespace
