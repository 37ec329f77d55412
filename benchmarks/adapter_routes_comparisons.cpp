#include "comparisons.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <backends/vista_api.h>
#include <support/trace/trace.h>

#include "patched_import.h"

namespace
{

constexpr unsigned int SETTING_ERRORS = 1;
constexpr double MOST_TIMES_BARE = 1.5;
constexpr ULONG INDEX = 7;
constexpr const wchar_t* GUID_TEXT = L"{00000007-0000-0000-0000-4E6574446576}";

/// Rows of a routing table, all of one adapter, in the platform's layout.
class RowTable
{
public:
    explicit RowTable(int count)
        : m_bytes(sizeof(MIB_IPFORWARD_TABLE2) + static_cast<std::size_t>(count) * sizeof(MIB_IPFORWARD_ROW2))
    {
        Get()->NumEntries = static_cast<ULONG>(count);
        for (ULONG i = 0; i < Get()->NumEntries; ++i)
            Fill(Get()->Table[i], i);
    }

    MIB_IPFORWARD_TABLE2* Get() { return reinterpret_cast<MIB_IPFORWARD_TABLE2*>(m_bytes.data()); }

private:
    static void Fill(MIB_IPFORWARD_ROW2& row, ULONG i)
    {
        row.InterfaceIndex = INDEX;
        row.Metric = i;
        row.DestinationPrefix.PrefixLength = 24;
        row.DestinationPrefix.Prefix.Ipv4.sin_family = AF_INET;
        row.DestinationPrefix.Prefix.Ipv4.sin_addr.s_addr = i;
        row.NextHop.Ipv4.sin_family = AF_INET;
        row.NextHop.Ipv4.sin_addr.s_addr = i + 1;
    }

    std::vector<unsigned char> m_bytes;
};

// What the platform answers; plain functions, so what they hand out stands here.
MIB_IPFORWARD_TABLE2* pPreparedTable = nullptr;

DWORD WINAPI AnswerIndex(wchar_t*, ULONG* pulIndex)
{
    *pulIndex = INDEX;
    return NO_ERROR;
}

DWORD WINAPI AnswerTable(ADDRESS_FAMILY, MIB_IPFORWARD_TABLE2** ppTable)
{
    *ppTable = pPreparedTable;
    return NO_ERROR;
}

void WINAPI TakeTableBack(void*) {}

FARPROC WINAPI FindFake(HMODULE, const char* pszName)
{
    if (std::strcmp(pszName, "GetIpForwardTable2") == 0)
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&AnswerTable));
    if (std::strcmp(pszName, "FreeMibTable") == 0)
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&TakeTableBack));
    return nullptr;
}

/// The newer back end, made while every look-up finds the fakes.
std::unique_ptr<VistaAPI> MakeBackEnd()
{
    const PatchedImport lookUp("GetProcAddress", &FindFake);
    return std::make_unique<VistaAPI>();
}

using Routes = std::vector<TOLVA::ROUTE_INFO>;

void ListThrough(VistaAPI& api, const TOLVA::NIC_INFO& adapter, RowTable& table, Routes& routes)
{
    pPreparedTable = table.Get();
    if (!api.GetAdapterRoutes(adapter, routes) || routes.size() != table.Get()->NumEntries)
        throw std::runtime_error("the routes are not complete");
}

TOLVA::ROUTE_INFO BareRecord(const MIB_IPFORWARD_ROW2& row)
{
    TOLVA::ROUTE_INFO route;
    route.ulIndex = row.InterfaceIndex;
    route.Destination = velmor::ip_address(row.DestinationPrefix.Prefix);
    route.PrefixLength = row.DestinationPrefix.PrefixLength;
    route.NextHop = velmor::ip_address(row.NextHop);
    route.ulMetric = row.Metric;
    return route;
}

/// The same questions and the same records with nothing around them.
void ListBare(const TOLVA::NIC_INFO& adapter, RowTable& table, Routes& routes)
{
    // Read anew each time, as pointers that were looked up are: the compiler must not see through them.
    static decltype(&AnswerTable) volatile pAsk = &AnswerTable;
    static decltype(&TakeTableBack) volatile pGiveBack = &TakeTableBack;
    pPreparedTable = table.Get();
    ULONG ulIndex = 0;
    const velmor::string sDevice = L"\\DEVICE\\TCPIP_" + adapter.sNicGuid;
    ::GetAdapterIndex(const_cast<wchar_t*>(sDevice.c_str()), &ulIndex);
    MIB_IPFORWARD_TABLE2* pTable = nullptr;
    pAsk(AF_UNSPEC, &pTable);
    for (const MIB_IPFORWARD_ROW2& row : std::span(pTable->Table, pTable->NumEntries))
        if (row.InterfaceIndex == ulIndex)
            routes.push_back(BareRecord(row));
    pGiveBack(pTable);
}

/// A platform with routing tables of our own making, for as long as it lives.
struct PreparedPlatform
{
    PatchedImport index{"GetAdapterIndex", &AnswerIndex};
    std::unique_ptr<VistaAPI> pApi = MakeBackEnd();
    TOLVA::NIC_INFO adapter;

    PreparedPlatform() { adapter.sNicGuid = GUID_TEXT; }
};

template <class Once>
auto Repeat(Once once)
{
    return [once](int repetitions) {
        TheTrace.SetTraceLevel(SETTING_ERRORS);
        for (int i = 0; i < repetitions; ++i)
            once();
    };
}

} // namespace

Comparison AdapterRoutes(int count)
{
    constexpr int ROWS_A_TIMING = 200000;
    constexpr int MOST_REPETITIONS = 20000;
    auto p = std::make_shared<PreparedPlatform>();
    auto pTable = std::make_shared<RowTable>(count);
    const auto Ours = [p, pTable] {
        Routes routes;
        ListThrough(*p->pApi, p->adapter, *pTable, routes);
    };
    const auto Peer = [p, pTable] {
        Routes routes;
        ListBare(p->adapter, *pTable, routes);
    };
    return {"GetAdapterRoutes of " + std::to_string(count) + " / bare loop", Repeat(Ours), Repeat(Peer),
            std::min(MOST_REPETITIONS, ROWS_A_TIMING / count), MOST_TIMES_BARE};
}

Comparison AdapterRoutesGrowth()
{
    auto p = std::make_shared<PreparedPlatform>();
    // Into memory that is there already: for a list of a megabyte the platform's fresh pages cost as much as its rows.
    auto pRoutes = std::make_shared<Routes>();
    const auto List = [p, pRoutes](RowTable& table) {
        pRoutes->clear();
        ListThrough(*p->pApi, p->adapter, table, *pRoutes);
    };
    auto pMany = std::make_shared<RowTable>(10000);
    auto pFew = std::make_shared<RowTable>(100);
    const auto Peer = [List, pFew] {
        for (int i = 0; i < 100; ++i)
            List(*pFew);
    };
    return {"10000 routes / 100 times 100 routes", Repeat([List, pMany] { List(*pMany); }), Repeat(Peer), 20,
            MOST_TIMES_BARE};
}
