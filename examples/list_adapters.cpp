// Prints the adapters that are enabled for IPv4: the smallest use of the library.
#include <cstdio>

#include <zelk_nm/tolva.h>

int main()
{
    std::vector<TOLVA::NIC_INFO> adapters;
    if (!TOLVA::GetAdapterList(adapters))
        return std::fputs("No adapters; Logfiles\\TOLVA_trace.log tells why.\n", stderr), 1;
    for (const TOLVA::NIC_INFO& nic : adapters)
        std::printf("%s  %s\n", nic.sNicGuid.narrow_c_str(), nic.sNicFriendlyName.narrow_c_str());
}
