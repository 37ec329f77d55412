#include <climits>

#include <adapters/wrap_ip_interface_info.h>
#include <support/fakes/platform_test.h>

using namespace testing_support;

namespace
{

using InterfaceTable = PlatformTest;

std::string Listed(TOLVA::Wrap_IP_INTERFACE_INFO& table)
{
    std::vector<TOLVA::NIC_INFO> list;
    return Show(table.GetAdapterList(list), list);
}

TEST_F(InterfaceTable, WhatLoadTableMakesOfThePlatformsAnswers)
{
    interfaces = {L"\\DEVICE\\TCPIP_{ABC}"};
    const std::deque<DWORD> ANSWERS[] = {{},
                                         {ERROR_NO_DATA},
                                         {NO_ERROR},
                                         {ERROR_NOT_SUPPORTED},
                                         {ERROR_INSUFFICIENT_BUFFER, ERROR_NO_DATA},
                                         {ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER},
                                         // The table has grown between the calls: there is no third.
                                         {ERROR_INSUFFICIENT_BUFFER, ERROR_INSUFFICIENT_BUFFER}};
    for (const auto& answers : ANSWERS)
    {
        codes["GetInterfaceInfo"] = answers;
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        Tell("load" + Show(std::vector<DWORD>(answers.begin(), answers.end())), [&] { return table.LoadTable(); });
        Tell("then list", [&] { return Listed(table); });
    }
}

TEST_F(InterfaceTable, GuidOfADeviceName)
{
    const std::wstring sLongest = L"{" + std::wstring(MAX_ADAPTER_NAME - 2, L'F') + L"}";
    const std::wstring NAMES[] = {L"\\DEVICE\\TCPIP_{ABC}",
                                  L"x{A}y}z",
                                  L"}{A{B}",
                                  L"{}",
                                  sLongest, // has no terminator; the next name follows at once
                                  L"plain}",
                                  L"",
                                  L"x{ABC",
                                  L"}{",
                                  L"{" + std::wstring(MAX_ADAPTER_NAME - 1, L'F')};
    for (const std::wstring& sName : NAMES)
    {
        interfaces = {sName, L"{LAST}"};
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        Tell("named " + Show(sName), [&] { return Listed(table); });
    }
}

TEST_F(InterfaceTable, CountsAndSizes)
{
    interfaces = {L"{ABC}"};
    for (const LONG lCount : {0L, -1L, static_cast<LONG>(LONG_MIN)})
    {
        claimedInterfaces = lCount;
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        Tell(Show("count", lCount), [&] { return Listed(table); });
    }
    // A size that is too small for what the platform then counts must not be believed.
    constexpr auto HEAD = static_cast<ULONG>(offsetof(IP_INTERFACE_INFO, Adapter));
    constexpr auto ENTRY = static_cast<ULONG>(sizeof(IP_ADAPTER_INDEX_MAP));
    for (const auto& [ulSize, lCount, dwRc] : {std::tuple<ULONG, LONG, DWORD>(0, 0, TRUE_ANSWER),
                                               {1, 0, TRUE_ANSWER},
                                               {1, 0, ERROR_NO_DATA},
                                               {HEAD, 0, TRUE_ANSWER},
                                               {HEAD, 1, TRUE_ANSWER},
                                               {HEAD + ENTRY - 1, 1, TRUE_ANSWER},
                                               {HEAD + ENTRY, 2, TRUE_ANSWER},
                                               {HEAD + ENTRY, LONG_MAX, TRUE_ANSWER}})
    {
        claimedSize = ulSize;
        claimedInterfaces = lCount;
        codes["GetInterfaceInfo"] = {TRUE_ANSWER, dwRc};
        TOLVA::Wrap_IP_INTERFACE_INFO table;
        Tell(Show("count", lCount, "in bytes", ulSize), [&] { return table.LoadTable(); });
        Tell("then list", [&] { return Listed(table); });
    }
}

TEST_F(InterfaceTable, TheList)
{
    SeedAdapter();
    std::vector<TOLVA::NIC_INFO> list = {Adapter()};
    const auto List = [&] { return Show(TOLVA::GetAdapterList(list), list); };
    codes["GetInterfaceInfo"] = {ERROR_NO_DATA};
    Tell("no adapter", List);
    interfaces = {L"\\DEVICE\\TCPIP_{1}", L"\\DEVICE\\TCPIP_{2", L"\\DEVICE\\TCPIP_{3}"};
    Tell("a bad name: the others are kept, none is completed", List);
}

} // namespace
