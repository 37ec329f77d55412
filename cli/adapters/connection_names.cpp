#include "adapters/connection_names.h"

#include <algorithm>
#include <cstddef>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>

#include "adapters/installed_adapters.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

constexpr ULONG FLAGS =
    GAA_FLAG_SKIP_UNICAST | GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;

std::vector<std::string> NamesInTable()
{
    ULONG ulSize = 16384; // enough for most machines; otherwise the call says how much
    std::vector<IP_ADAPTER_ADDRESSES> table;
    ULONG ulRc = ERROR_BUFFER_OVERFLOW;
    for (int attempt = 0; attempt < 3 && ulRc == ERROR_BUFFER_OVERFLOW; ++attempt)
    {
        table.resize(ulSize / sizeof(IP_ADAPTER_ADDRESSES) + 1);
        ulSize = static_cast<ULONG>(table.size() * sizeof(IP_ADAPTER_ADDRESSES));
        ulRc = ::GetAdaptersAddresses(AF_UNSPEC, FLAGS, nullptr, table.data(), &ulSize);
    }
    std::vector<std::string> names;
    for (const auto* p = ulRc == NO_ERROR ? table.data() : nullptr; p != nullptr; p = p->Next)
        if (p->IfType != IF_TYPE_SOFTWARE_LOOPBACK && p->IfType != IF_TYPE_TUNNEL && p->FriendlyName != nullptr)
            names.push_back(ToUtf8(std::wstring_view(p->FriendlyName)));
    return names;
}

} // namespace

std::vector<std::string> ConnectionNames()
{
    auto names = NamesInTable();
    for (const Adapter& adapter : ListInstalledAdapters())
        names.push_back(ToUtf8(adapter.Name()));
    std::erase(names, std::string());
    std::ranges::sort(names);
    names.erase(std::ranges::unique(names).begin(), names.end());
    return names;
}

} // namespace zelkctl
