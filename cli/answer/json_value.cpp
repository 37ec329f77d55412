#include "answer/json_value.h"

#include <functional>
#include <string>

#include "system/text.h"

namespace zelkctl
{

Json TextOrNull(const velmor::string& text)
{
    return text.empty() ? Json() : Json(ToUtf8(text));
}

Json AddressOrNull(const velmor::ip_address& address)
{
    return address.is_valid() ? TextOrNull(address) : Json();
}

Json ServerOrNull(const velmor::ip_address& address)
{
    return address == velmor::ip_address() ? Json() : AddressOrNull(address);
}

Json AnswerOrNull(bool (*pQuery)(const TOLVA::NIC_INFO&, bool&), const TOLVA::NIC_INFO& info)
{
    return AnswerOrNull(pQuery, info, std::identity());
}

Json AnswerOrNull(bool (*pQuery)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE, bool&), const TOLVA::NIC_INFO& info,
                  TOLVA::FAMILY_TYPE enFamily)
{
    bool bAnswer = false;
    return pQuery(info, enFamily, bAnswer) ? Json(bAnswer) : Json();
}

Json NetworkOrNull(const velmor::ip_address& address, unsigned char prefixLength)
{
    return address.is_valid() ? Json(ToUtf8(velmor::string(address)) + '/' + std::to_string(prefixLength)) : Json();
}

Json PlainAddresses(const std::vector<velmor::ip_address>& addresses)
{
    return RecordsOf(addresses, [](const velmor::ip_address& address) {
        Json record;
        record["address"] = AddressOrNull(address);
        return record;
    });
}

} // namespace zelkctl
