#include <climits>
#include <cstddef>
#include <tuple>
#include <utility>

#include <adapters/wrap_ip_interface_info.h>

#include "discovery_test.h"

namespace
{

using InterfaceTable = DiscoveryTest;

const std::string NO_ADAPTERS =
    "[W] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending( GetInterfaceInfo failed - There "
    "are no network adapters enabled for IPv4 on the local system )";

std::vector<std::wstring> Guids(const std::vector<TOLVA::NIC_INFO>& list)
{
    std::vector<std::wstring> guids;
    for (const TOLVA::NIC_INFO& NicInfo : list)
        guids.push_back(Text(NicInfo.sNicGuid));
    return guids;
}

TEST_F(InterfaceTable, WhatLoadTableMakesOfThePlatformsAnswers)
{
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
        {{ERROR_NO_DATA}, 1, NO_ADAPTERS, true},
        {{NO_ERROR}, 1, sFailed + "0", true},
        {{ERROR_NOT_SUPPORTED}, 1, sFailed + "50", true},
        {{ERROR_INSUFFICIENT_BUFFER, ERROR_NO_DATA}, 2, NO_ADAPTERS, false},
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
    const struct
    {
        std::wstring sName;
        std::wstring sGuid; ///< empty for a failure
        std::string sMissing;
    } rows[] = {{L"\\DEVICE\\TCPIP_{ABC}", L"{ABC}", ""},
                {L"x{A}y}z", L"{A}", ""},
                {L"}{A{B}", L"{A{B}", ""},
                {L"{}", L"{}", ""},
                {sLongest, sLongest, ""}, // has no terminator; the next name follows at once
                {L"plain}", L"", "leading '{'"},
                {L"", L"", "leading '{'"},
                {L"x{ABC", L"", "trailing '}'"},
                {L"}{", L"", "trailing '}'"},
                {L"{" + std::wstring(MAX_ADAPTER_NAME - 1, L'F'), L"", "trailing '}'"}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.sName));
        interfaces = {};
        interfaces.names = {row.sName, L"{LAST}"};
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        std::vector<TOLVA::NIC_INFO> list;
        EXPECT_EQ(row.sMissing.empty(), table.GetAdapterList(list));
        std::vector<std::wstring> expected = {row.sGuid, L"{LAST}"};
        expected.erase(expected.begin(), expected.begin() + (row.sMissing.empty() ? 0 : 1));
        EXPECT_EQ(expected, Guids(list));
        EXPECT_TRUE(!row.sMissing.empty() || row.sName == Text(list.at(0).sNicName));
        const std::string NAME = "[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : ";
        EXPECT_EQ(!row.sMissing.empty(), trace.Has(NAME + "Couldn't find " + row.sMissing + " in device name"));
        trace.Empty();
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

TEST_F(InterfaceTable, ATableThatItsSizeCannotHold)
{
    constexpr auto ENTRY = static_cast<ULONG>(sizeof(IP_ADAPTER_INDEX_MAP));
    constexpr auto FIRST = static_cast<ULONG>(offsetof(IP_INTERFACE_INFO, Adapter));
    const auto tooSmall = [&](ULONG ulSize, LONG lCount, DWORD dwRc) {
        return [=](IP_INTERFACE_INFO* pTable, ULONG* pulSize) -> DWORD {
            if (pTable != nullptr && *pulSize >= FIRST)
                pTable->NumAdapters = lCount;
            return std::exchange(*pulSize, ulSize) == 0 ? ERROR_INSUFFICIENT_BUFFER : dwRc;
        };
    };
    for (const auto& [ulSize, lCount, dwRc] : {std::tuple<ULONG, LONG, DWORD>{1, 0, NO_ERROR},
                                               {1, 0, ERROR_NO_DATA},
                                               {FIRST, 1, NO_ERROR},
                                               {FIRST + ENTRY, 2, NO_ERROR},
                                               {FIRST + ENTRY, LONG_MAX, NO_ERROR}})
    {
        const auto patch = PATCH_IMPORT(GetInterfaceInfo, tooSmall(ulSize, lCount, dwRc));
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        std::vector<TOLVA::NIC_INFO> list;
        EXPECT_FALSE(table.LoadTable()) << ulSize;
        EXPECT_FALSE(table.GetAdapterList(list)) << ulSize;
        EXPECT_TRUE(list.empty());
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
    EXPECT_EQ(NO_ADAPTERS +
                  "\n[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : ... ending( Failed to load adapter table )\n"
                  "[E] TOLVA::GetAdapterList : ... ending(Failed to get adapter list)\n",
              trace.Complaints());
}

TEST_F(InterfaceTable, IndexOfAnAdapter)
{
    unsigned long ulFound = 1;
    EXPECT_TRUE(TOLVA::GetAdapterIndex(Adapter(L"{ABC}"), ulFound));
    EXPECT_EQ(11U, ulFound);
    EXPECT_EQ(std::vector<std::wstring>{L"\\DEVICE\\TCPIP_{ABC}"}, indexNames);
    indexCodes = {NO_ERROR, ERROR_DEV_NOT_EXIST};
    ulIndex = 12;
    EXPECT_FALSE(TOLVA::GetAdapterIndex(Adapter(L"{ABC}"), ulFound));
    EXPECT_EQ(12U, ulFound) << "the platform's value is passed on";
    EXPECT_FALSE(TOLVA::GetAdapterIndex(Adapter(L""), ulFound));
    EXPECT_EQ(2U, indexNames.size()) << "the platform is not asked";
    EXPECT_EQ("[E] TOLVA::GetAdapterIndex : ... ending(GetAdapterIndex failed) : dwRc = 55\n"
              "[E] TOLVA::GetAdapterIndex : ... ending( Bad NIC GUID )\n",
              trace.Complaints());
}

} // namespace
