// Uses the DLL as any caller does. Argument: the file for the answer.

#include <cstdio>

#include <zelk_nm/tolva.h>

int main(int argc, char** argv)
{
    std::FILE* pAnswer = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
    if (pAnswer == nullptr)
        return 2;
    const TOLVA library;
    velmor::string sVersion;
    TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, sVersion);
    std::vector<TOLVA::NIC_INFO> list;
    const bool bListed = TOLVA::GetAdapterList(list);
    bool bIndexed = true;
    for (const TOLVA::NIC_INFO& NicInfo : list)
    {
        unsigned long ulIndex = 0;
        bIndexed = TOLVA::GetAdapterIndex(NicInfo, ulIndex) && ulIndex != 0 && bIndexed;
    }
    std::fprintf(pAnswer, "%s %d %u %d", sVersion.narrow_c_str(), bListed, static_cast<unsigned int>(list.size()),
                 bIndexed);
    return std::fclose(pAnswer);
}
