#include "records/settings_record.h"

#include <functional>

#include "answer/json_value.h"

namespace zelkctl
{
namespace
{

constexpr Field FIELDS[] = {{"dnsDomain", "DNS domain"},
                            {"automaticPrivateAddressing", "Automatic private addressing"},
                            {"netbiosOverTcpip", "NetBIOS over TCP/IP"},
                            {"speedAndDuplex", "Speed and duplex"},
                            {"linkSpeedMbps", "Link speed (Mbit/s)"}};

} // namespace

Json SettingsOf(const TOLVA::NIC_INFO& info)
{
    Json record;
    record["dnsDomain"] = AnswerOrNull(&TOLVA::GetAdapterDomain, info, TextOrNull);
    record["automaticPrivateAddressing"] = AnswerOrNull(&TOLVA::GetAutoconfigStatus, info);
    record["netbiosOverTcpip"] = AnswerOrNull(&TOLVA::GetNetBIOSOverTcpipStatus, info);
    record["speedAndDuplex"] = AnswerOrNull(&TOLVA::GetAdapterSpeed, info, TextOrNull);
    record["linkSpeedMbps"] = AnswerOrNull(&TOLVA::GetAdapterLinkSpeed, info, std::identity());
    return record;
}

std::span<const Field> SettingsFields()
{
    return FIELDS;
}

} // namespace zelkctl
