#pragma once

#include <cstdlib>
#include <deque>
#include <functional>
#include <set>
#include <sstream>

#include <backends/pre_vista_api.h>
#include <backends/vista_api.h>
#include <discovery/discovery_test.h>

/// Among forced codes: this call is answered as the platform would.
constexpr DWORD TRUE_ANSWER = 0xFFFFFFFF;

template <class... Parts>
std::string Joined(const Parts&... parts)
{
    std::ostringstream stream;
    (stream << ... << parts);
    return stream.str();
}

/// The text once for each number.
inline std::string Series(const std::string& sBefore, int first, int last, const std::string& sAfter)
{
    return first > last ? "" : Joined(sBefore, first, sAfter) + Series(sBefore, first + 1, last, sAfter);
}

inline velmor::ip_address Ip(const char* pszAddress)
{
    return velmor::ip_address(velmor::string(pszAddress));
}
TOLVA::ROUTE_INFO Route(const char* pszDestination, unsigned char prefix, const char* pszNextHop,
                        unsigned long ulMetric);
TOLVA::ASSOC_IP_ADDR Address(const char* pszAddress, unsigned char prefix = 24);

// Rows of the platform's tables; what the arguments do not say has values that the library never writes.
MIB_IPFORWARDROW OldRow(DWORD dwIndex, const char* pszDestination, const char* pszMask, const char* pszNextHop,
                        DWORD dwMetric);
MIB_IPFORWARD_ROW2 NewRow(DWORD dwIndex, const char* pszDestination, UINT8 prefix, const char* pszNextHop,
                          ULONG ulMetric);

// Every field in one line. What follows the metric of a row are, in the order of the declaration, its other numbers.
std::string Shown(const MIB_IPFORWARDROW& row);
std::string Shown(const MIB_IPFORWARD_ROW2& row);
std::string Shown(const std::vector<TOLVA::ROUTE_INFO>& list);
std::string Shown(const std::vector<TOLVA::ASSOC_IP_ADDR>& list);

/// A platform that keeps its routes in memory. What only some systems have is exported by a made-up module. A case that
/// leaves a table allocated or the module loaded fails.
class BackendTest : public DiscoveryTest
{
protected:
    BackendTest();
    ~BackendTest() override;

    /// Runs an operation of the back end with arguments that are good on every system.
    static bool Run(AbstractNetworkAPI& api, std::string_view sOperation, const TOLVA::NIC_INFO& NicInfo = Adapter());
    /// Runs the body in a new process, where nothing of the library has been used yet, up to that process's end.
    void InNewProcess(const std::function<void()>& body);

    /// Notes a call and gives its forced result, the last error too, or TRUE_ANSWER.
    DWORD Called(const std::string& sFunction, const std::string& sNote);
    /// The calls since the last question, each with "; ".
    std::string Asked() { return std::exchange(m_sAsked, {}); }

    using Codes = std::map<std::string, std::deque<DWORD>>;
    Codes codes;                   ///< forced results of a function's next calls
    std::set<std::string> missing; ///< modules and exports that this system does not have
    std::map<std::string, void*> exports;
    std::vector<MIB_IPFORWARDROW> oldRoutes;
    std::vector<MIB_IPADDRROW> oldAddresses;
    std::vector<MIB_IPFORWARD_ROW2> routes;
    std::vector<MIB_UNICASTIPADDRESS_ROW> unicast;
    DWORD dwLowestMetric = 0; ///< of a route that is taken

private:
    template <class Table, class Rows>
    DWORD FillTable(const char* pszFunction, const Rows& rows, Table* pTable, ULONG* pulSize, BOOL bSort);
    template <class Table, class Rows>
    DWORD Allocate(const char* pszFunction, int family, const Rows& rows, Table** ppTable);
    template <class Row>
    DWORD Create(const char* pszFunction, std::vector<Row>& table, const Row& row, DWORD dwMetric);
    template <class Row>
    DWORD Delete(const char* pszFunction, std::vector<Row>& table, const Row& row);
    void ReplaceLoader();
    void ExportFunctions();

    static inline BackendTest* s_pTest = nullptr;
    std::string m_sAsked;
    int m_iModules = 0;
    std::map<void*, std::vector<unsigned char>> m_tables; ///< allocated and not freed
    std::vector<std::vector<unsigned char>> m_freed;      ///< kept, so that late readers find poison
};
