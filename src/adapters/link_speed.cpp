#include <iterator>
#include <string>

#include <support/operation/adapter_operation.h>
#include <support/platform/number_text.h>
#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

/// The names under which drivers keep their speed and duplex setting; the first that a driver has decides. One stands
/// twice: the second never decides, but the log has thirty attempts for a driver without a setting.
constexpr const char* LinkSpeedNames[] = {
    "ConnectionType", "SpeedDuplex",  "*SpeedDuplex",       "MediaType",         "DuplexMode",
    "LinkSelection",  "LineSpeed",    "RequestedMediaType", "DataRate",          "media",
    "Rate",           "RingSpeed",    "SpeedAndDuplex",     "AutoNegotiation_A", "ConnectionType_A",
    "ConnType",       "EXTPHY",       "ForceSpeedDpx",      "LineConfig",        "LinkSpeed",
    "Media_type",     "NetworkMedia", "RequestedMediaType", "SupportedRates",    "transceiver",
    "XCVR_SELECT",    "FullDuplex",   "LineMode",           "FullDuplexEnable",  "DuplexCapabilities_A"};
static_assert(std::size(LinkSpeedNames) == 30);

// A driver's advanced properties are values of its class key, one a property. What the system's property sheet shows
// for a value stands in the "Enum" key of the property's parameters, which come with the driver's INF file. Names that
// begin with an asterisk are the standardised ones; older drivers have names of their own.

/// The driver's parameter and its present value; null when it has none of the names.
const char* FindSetting(const CallFrame& frame, const velmor::Registry& registry, const velmor::string& sSubKey,
                        velmor::string& sCurrentSetting)
{
    for (const char* pszName : LinkSpeedNames)
    {
        frame.Verbose("sLinkSpeedName", pszName);
        if (registry.GetString(sSubKey, pszName, sCurrentSetting))
            return pszName;
    }
    return nullptr;
}

/// What the driver shows for its setting. It keeps the texts in one of two places.
bool FindText(const CallFrame& frame, const velmor::Registry& registry, const velmor::string& sSubKey,
              const char* pszName, const velmor::string& sCurrentSetting, velmor::string& sText)
{
    const auto Read = [&](const char* pszAttempt, const wchar_t* pszPlace) {
        const velmor::string sSpeedKey = sSubKey + pszPlace + velmor::string(pszName) + L"\\Enum";
        frame.Verbose(pszAttempt, "sSpeedKey", sSpeedKey);
        return registry.GetString(sSpeedKey, sCurrentSetting, sText);
    };
    return Read("1st attempt", L"\\Ndi\\params\\") || Read("2nd attempt", L"\\Ndi\\savedParams\\");
}

/// The measured speed as text, for drivers without a setting.
velmor::string MeasuredSpeed(const TOLVA::NIC_INFO& NicInfo)
{
    double megabits = 0;
    if (!TOLVA::GetAdapterLinkSpeed(NicInfo, megabits))
        return L"Unknown";
    const std::string sText = velmor::FixedText(megabits, 1) + " Mbps";
    return velmor::string(sText.c_str());
}

} // namespace

bool TOLVA::GetAdapterSpeed(const NIC_INFO& NicInfo, velmor::string& sAdapterSpeed)
{
    return RunOnAdapter("TOLVA::GetAdapterSpeed", NicInfo, [&](const CallFrame& frame) {
        if (NicInfo.sNicEnum.empty())
            return frame.Fail("Bad NIC Enum");
        frame.Verbose("NicInfo.sNicGuid", NicInfo.sNicGuid);
        const velmor::string sSubKey = NETWORK_CLASS + L"\\" + NicInfo.sNicEnum;
        frame.Verbose("sSubKey", sSubKey);

        const velmor::Registry_System registry;
        velmor::string sCurrentSetting;
        const char* pszName = FindSetting(frame, registry, sSubKey, sCurrentSetting);
        if (pszName == nullptr)
        {
            frame.Ending(TRACE_WARNING, "No enum match found");
            sAdapterSpeed = MeasuredSpeed(NicInfo);
            return true;
        }
        frame.Verbose("Matched", "LinkSpeedNames[i]", pszName);
        frame.Verbose("sCurrentSetting", sCurrentSetting);
        if (!FindText(frame, registry, sSubKey, pszName, sCurrentSetting, sAdapterSpeed))
            return frame.Fail("Get adapter speed failed");
        frame.Information("sAdapterSpeed", sAdapterSpeed);
        return frame.Succeed();
    });
}

bool TOLVA::GetAdapterLinkSpeed(const NIC_INFO& NicInfo, double& dSpeed)
{
    return RunOnAdapter("TOLVA::GetAdapterLinkSpeed", NicInfo, [&](const CallFrame& frame) {
        constexpr double BITS_PER_MEGABIT = 1000000.0;
        unsigned long ulIndex = 0;
        if (!FindIndex(frame, NicInfo, ulIndex))
            return false;
        MIB_IFROW ifRow = {};
        ifRow.dwIndex = ulIndex;
        const DWORD dwRc = ::GetIfEntry(&ifRow);
        if (dwRc != NO_ERROR)
            return frame.Fail("GetIfEntry failed", "dwRc", dwRc);
        // 32 bits of bits a second: a faster link reads as all of them set.
        frame.Verbose("ifRow.dwSpeed", ifRow.dwSpeed);
        dSpeed = ifRow.dwSpeed / BITS_PER_MEGABIT;
        return frame.Succeed();
    });
}
