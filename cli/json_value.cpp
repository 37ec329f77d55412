#include "json_value.h"

#include <string>

#include "text.h"

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

Json NetworkOrNull(const velmor::ip_address& address, unsigned char prefixLength)
{
    return address.is_valid() ? Json(ToUtf8(velmor::string(address)) + '/' + std::to_string(prefixLength)) : Json();
}

} // namespace zelkctl
