// Says on what Windows the library believes to run and which back end it has chosen. It links the library's own
// objects, whose static objects are built before main as they are when the DLL is loaded. Argument: the file for the
// answer.

#include <cstdio>
#include <typeinfo>

#include <backends/pre_vista_api.h>
#include <support/registry/environment.h>
#include <support/trace/trace.h>

namespace
{

// An explicit instantiation may name private members.
AbstractNetworkAPI* (*Factory())();
AbstractNetworkAPI* Chosen();

template <AbstractNetworkAPI* (*pFactory)(), std::unique_ptr<AbstractNetworkAPI>* pOwner>
struct Opened
{
    friend AbstractNetworkAPI* (*Factory())() { return pFactory; }
    friend AbstractNetworkAPI* Chosen() { return pOwner->get(); }
};
template struct Opened<&TOLVA::NetworkApiFactory, &TOLVA::m_pNetworkAPI>;

} // namespace

int main(int argc, char** argv)
{
    std::FILE* pAnswer = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
    if (pAnswer == nullptr)
        return 2;
    const WindowsEnvironment& environment = GetDetectedEnvironment();
    // At load the factory's choice is masked in the trace, so it is asked for once more.
    TheTrace.SetTraceLevel(4);
    const std::unique_ptr<AbstractNetworkAPI> again(Factory()());
    const AbstractNetworkAPI* const pAgain = again.get();
    const AbstractNetworkAPI* const pChosen = Chosen();
    const bool bSame = pAgain != nullptr && pChosen != nullptr && typeid(*pAgain) == typeid(*pChosen);
    std::fprintf(pAnswer, "%u %lu %s", environment.version.wProductType, GetWindowsEnvironment(),
                 !bSame                                                 ? "unclear"
                 : dynamic_cast<const PreVistaAPI*>(pChosen) != nullptr ? "before Vista"
                                                                        : "Vista");
    return std::fclose(pAnswer);
}
