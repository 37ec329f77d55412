#pragma once

#include <optional>
#include <string>
#include <vector>

#include <state/fields/field.h>

namespace zelkctl
{

/// How bad a finding is.
enum class Severity
{
    OK,
    NOTE, ///< worth knowing
    WRONG ///< something does not work
};

/// Something that the examination of a machine has shown.
struct Finding
{
    Severity severity;
    std::string sText;                       ///< whole sentences
    std::optional<std::string> adapter = {}; ///< the name of the one that it is about
    std::vector<std::string> missing = {};   ///< registry values such as "HKLM\Key\Value", of which any one would do
    std::string sTopic = {};
};

} // namespace zelkctl

namespace zelk
{

template <>
std::span<const Word<zelkctl::Severity>> WordsOf();
template <>
FieldTable<zelkctl::Finding> FieldsOf();

} // namespace zelk
