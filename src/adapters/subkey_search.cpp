#include <adapters/subkey_search.h>

#include <algorithm>
#include <vector>

#include <support/values/text.h>

bool FindSubkey(const CallFrame& frame, const velmor::Registry_System& registry, const SubkeySearch& search,
                const velmor::string& sWanted, std::optional<velmor::string>& sSubkey)
{
    std::vector<velmor::string> names;
    if (!registry.EnumerateKeys(L"SYSTEM\\" + search.sKey, names))
        return frame.FailAs("... ending( velmor::Registry_System::EnumerateKeys failed) ");

    const auto found = std::find_if(names.begin(), names.end(), [&](const velmor::string& sName) {
        const velmor::string sPath = search.sKey + L"\\" + sName;
        if (*search.pszSubkeyPath != '\0')
            frame.Verbose(search.pszSubkeyPath, sPath);
        velmor::string sValue;
        if (!registry.GetString(sPath, search.pszValue, sValue))
            return false;
        frame.Verbose(search.pszFound, search.pszVariable, sValue);
        return velmor::EqualIgnoringCase(sValue, sWanted);
    });
    if (found != names.end())
        sSubkey = *found;
    return true;
}
