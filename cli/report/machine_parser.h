#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include <state/desired/fault.h>
#include <state/fields/json.h>

namespace zelkctl
{

using zelk::Json;

/// Reads machines for a page from documents that other runs of the tool, or other programs, have written. Every fault
/// is appended; with one the result is not to be used.
class MachineParser
{
public:
    MachineParser();

    /// What `zelkctl show --json` prints, with or without its envelope; a machine as it stands in a page; or several,
    /// as "machines" of an object.
    /// @param sName  of a machine that has none in the document
    [[nodiscard]] Json Machines(std::string_view text, const std::string& sName,
                                std::vector<zelk::Fault>& faults) const;

    /// Adds to a machine what `zelkctl apply FILE --json` printed.
    void AddApplied(Json& machine, std::string_view text, std::vector<zelk::Fault>& faults) const;

private:
    /// One of the things that a page tells of a machine.
    struct Part
    {
        const char* pszKey;
        const char* pszMember;  ///< without which it is something else; null for a list
        const char* pszCommand; ///< what prints it
        Json schema;
    };

    [[nodiscard]] Json MachineOf(const Json& json, const std::string& sPlace, const std::string& sName,
                                 std::vector<zelk::Fault>& faults) const;
    [[nodiscard]] Json MachineOfReading(const Json& json, const std::string& sPlace, const std::string& sName,
                                        std::vector<zelk::Fault>& faults) const;
    void AddPart(Json& machine, const Part& part, const Json& given, std::string sPlace,
                 std::vector<zelk::Fault>& faults) const;

    std::array<Part, 4> m_parts;
    Json m_definitions;
};

} // namespace zelkctl
