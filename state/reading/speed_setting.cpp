#include <state/reading/speed_setting.h>

#include <algorithm>
#include <array>

#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

/// The names under which drivers keep the setting, in the order in which they count. The one with the asterisk is the
/// standard's; the others are older.
constexpr std::array<std::wstring_view, 29> NAMES = {L"ConnectionType",
                                                     L"SpeedDuplex",
                                                     L"*SpeedDuplex",
                                                     L"MediaType",
                                                     L"DuplexMode",
                                                     L"LinkSelection",
                                                     L"LineSpeed",
                                                     L"RequestedMediaType",
                                                     L"DataRate",
                                                     L"media",
                                                     L"Rate",
                                                     L"RingSpeed",
                                                     L"SpeedAndDuplex",
                                                     L"AutoNegotiation_A",
                                                     L"ConnectionType_A",
                                                     L"ConnType",
                                                     L"EXTPHY",
                                                     L"ForceSpeedDpx",
                                                     L"LineConfig",
                                                     L"LinkSpeed",
                                                     L"Media_type",
                                                     L"NetworkMedia",
                                                     L"SupportedRates",
                                                     L"transceiver",
                                                     L"XCVR_SELECT",
                                                     L"FullDuplex",
                                                     L"LineMode",
                                                     L"FullDuplexEnable",
                                                     L"DuplexCapabilities_A"};

} // namespace

std::optional<std::string> ReadSpeedSetting(StoredKey& key, const std::wstring& path, std::vector<Problem>& problems)
{
    for (const std::wstring_view name : NAMES)
    {
        const auto setting = key.Text(name);
        if (!setting.value)
            continue;
        for (const wchar_t* const place : {L"\\Ndi\\params\\", L"\\Ndi\\savedParams\\"})
        {
            StoredKey texts((path + place).append(name) + L"\\Enum", problems);
            if (auto text = texts.Text(FromUtf8(*setting.value)); text.value)
                return text.value;
        }
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace zelk
