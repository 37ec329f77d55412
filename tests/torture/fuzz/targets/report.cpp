// Machines for a report: those that are read are written to a document that reads the same.

#include "fuzz.h"
#include "report/machine_parser.h"

namespace
{

/// As JSON whose members have no order.
nlohmann::json InAnyOrder(const zelkctl::Json& json)
{
    return nlohmann::json::parse(json.dump());
}

} // namespace

void fuzz::Try(std::string_view text)
{
    static const zelkctl::MachineParser parser;
    std::vector<zelk::Fault> faults;
    const zelkctl::Json machines = parser.Machines(text, "name", faults);
    for (const zelk::Fault& fault : faults)
        Require(!fault.text.empty());
    zelkctl::Json applied = {{"machine", "name"}};
    std::vector<zelk::Fault> others;
    parser.AddApplied(applied, text, others);
    if (!faults.empty())
        return;
    const std::string written = zelkctl::Json{{"machines", machines}}.dump();
    // An error that stood in an answer is its machine's now, and comes first.
    Require(InAnyOrder(parser.Machines(written, "another", faults)) == InAnyOrder(machines) && faults.empty());
}
