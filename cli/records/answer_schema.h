#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <state/fields/json_value.h>

#include "answer/answer.h"
#include "parser/request.h"

namespace zelkctl
{

// What makes the JSON of answers, and the JSON Schema that describes it.

template <class Record>
Json RecordsOf(const std::vector<Record>& records)
{
    return zelk::JsonValue<std::vector<Record>>::Write(records);
}

/// The schema of a list of records by the name that the schema has for the record.
Json ListOf(const std::string& sRecord);

template <class Record>
Json ListOf()
{
    return ListOf(zelk::FieldsOf<Record>().name);
}

/// The schema of a value that fits one of these.
Json AnyOf(std::initializer_list<Json> schemas);

/// The schema of an object that has all of these members.
Json ObjectOf(std::initializer_list<std::pair<const char*, Json>> members);

/// Records that have an address and nothing else.
inline constexpr const char* DNS_SERVER_RECORD = "dnsServer";

/// The schema of everything that the tool writes as JSON.
Json AnswersSchema(const std::vector<CommandSchema>& commands);

} // namespace zelkctl
