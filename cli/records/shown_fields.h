#pragma once

#include <string>
#include <vector>

#include <state/fields/field.h>

#include "answer/answer.h"

namespace zelkctl
{

/// The fields of a table. Those of records within the record stand in their place, as "ipv4.lease.server"; those of
/// lists of records behind the list, as "ipv4.addresses.origin", and only for who asks for them by their key.
template <class Record>
std::vector<Field> ShownFields();

template <>
std::vector<Field> ShownFields<zelk::Machine>();
template <>
std::vector<Field> ShownFields<zelk::Identity>();
template <>
std::vector<Field> ShownFields<zelk::Adapter>();
template <>
std::vector<Field> ShownFields<zelk::IpSettings>();

/// Those of a record without records in it.
template <class Record>
std::vector<Field> ShownFields()
{
    std::vector<Field> fields;
    for (const zelk::Field<Record>& field : zelk::FieldsOf<Record>())
        fields.push_back({field.key, field.label, field.unit, field.labelOfWord});
    return fields;
}

/// The fields with these keys, in their order.
std::vector<Field> Only(const std::vector<std::string>& keys, const std::vector<Field>& fields);

} // namespace zelkctl
