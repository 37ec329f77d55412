// Stands in for the system's command and does to the network namespace what it is told. The last word of a connection's
// name is the link. The environment can name a change that is refused, such as "delete 192.0.2.1", or have it do
// nothing and say that it did.

#include <cstdlib>

#include <e2e/unix_command.h>

int main(int argc, char** argv)
{
    constexpr int FAMILY = 2, VERB = 3, CONNECTION = 5, FIRST = 6;
    if (argc <= FIRST)
        return 2;
    const bool bIpv4 = std::string(argv[FAMILY]) == "ipv4";
    const bool bSet = std::string(argv[VERB]) == "set";
    const std::string sConnection = argv[CONNECTION];
    const std::string sLink = " dev " + sConnection.substr(sConnection.rfind(' ') + 1);
    const std::string sAddress = argv[bIpv4 && bSet ? FIRST + 1 : FIRST];
    const char* pszRefused = std::getenv("ZELK_REFUSED");
    if (pszRefused != nullptr && argv[VERB] + (' ' + sAddress) == pszRefused)
        return 1;
    if (std::getenv("ZELK_IDLE") != nullptr)
        return 0;
    std::string sCommand;
    if (bIpv4 && bSet)
        sCommand = "ip -4 addr flush" + sLink + " && ip addr add " + sAddress + '/' + argv[argc - 1] + sLink;
    else if (bSet)
        sCommand = "ip addr add " + sAddress + "/64 nodad" + sLink;
    else
        sCommand = "a=$(ip -o addr show" + sLink + " to " + sAddress + " | awk '{print $4}'); ip addr del $a" + sLink;
    std::string sOutput;
    return RunUnix(sCommand, sOutput) ? 0 : 1;
}
