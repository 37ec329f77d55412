#pragma once

#include <vector>

#include <zelk_nm/tolva.h>

#include "answer/output.h"

namespace zelkctl
{

// The library's values as items of a record. What is not known is null.

Json TextOrNull(const velmor::string& text);

/// Null for an invalid address.
Json AddressOrNull(const velmor::ip_address& address);

/// Address and prefix length in one text, such as "10.0.0.0/8"; null for an invalid address.
Json NetworkOrNull(const velmor::ip_address& address, unsigned char prefixLength);

/// The library says 0.0.0.0 for a server that is not there: null.
Json ServerOrNull(const velmor::ip_address& address);

/// What a query of the library tells of an adapter, as `toJson` shows it; null when it fails.
template <class Value, class ToJson>
Json AnswerOrNull(bool (*pQuery)(const TOLVA::NIC_INFO&, Value&), const TOLVA::NIC_INFO& info, ToJson&& toJson)
{
    Value value{};
    return pQuery(info, value) ? Json(toJson(value)) : Json();
}

Json AnswerOrNull(bool (*pQuery)(const TOLVA::NIC_INFO&, bool&), const TOLVA::NIC_INFO& info);

/// Likewise of one of its address families.
Json AnswerOrNull(bool (*pQuery)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE, bool&), const TOLVA::NIC_INFO& info,
                  TOLVA::FAMILY_TYPE enFamily);

/// An array with the record that `toRecord` makes of each item.
template <class Items, class ToRecord>
Json RecordsOf(const Items& items, ToRecord&& toRecord)
{
    Json records = Json::array();
    for (const auto& item : items)
        records.push_back(toRecord(item));
    return records;
}

/// A list of addresses of which nothing else is known.
Json PlainAddresses(const std::vector<velmor::ip_address>& addresses);
inline constexpr Field PLAIN_ADDRESS_FIELDS[] = {{"address", "Address"}};

} // namespace zelkctl
