#pragma once

#include <zelk_nm/ip_address.h>
#include <zelk_nm/string.h>

#include "output.h"

namespace zelkctl
{

// The library's values as items of a record. What is not known is null.

Json TextOrNull(const velmor::string& text);

/// Null for an invalid address.
Json AddressOrNull(const velmor::ip_address& address);

/// Address and prefix length in one text, such as "10.0.0.0/8"; null for an invalid address.
Json NetworkOrNull(const velmor::ip_address& address, unsigned char prefixLength);

/// An array with the record that `toRecord` makes of each item.
template <class Items, class ToRecord>
Json RecordsOf(const Items& items, ToRecord&& toRecord)
{
    Json records = Json::array();
    for (const auto& item : items)
        records.push_back(toRecord(item));
    return records;
}

} // namespace zelkctl
