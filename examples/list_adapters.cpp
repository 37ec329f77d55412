// Prints the adapters that are enabled for IPv4: the smallest use of the library.
#include <cstdio>

#include <fcntl.h>
#include <io.h>

#include <zelk_nm/tolva.h>

int main()
{
    std::vector<TOLVA::NIC_INFO> adapters;
    if (!TOLVA::GetAdapterList(adapters))
        return std::fputs("No adapters; Logfiles\\TOLVA_trace.log has the reason.\n", stderr), 1;

    _setmode(_fileno(stdout), _O_U8TEXT); // names can be in any script
    for (const TOLVA::NIC_INFO& nic : adapters)
        std::fputws((nic.sNicGuid + L"  " + nic.sNicFriendlyName + L"\n").c_str(), stdout);
}
