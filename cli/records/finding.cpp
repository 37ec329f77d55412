#include "records/finding.h"

#include <state/fields/item.h>

namespace zelk
{
namespace
{

using zelkctl::Finding;
using zelkctl::Severity;

constexpr Word<Severity> SEVERITIES[] = {
    {{"ok", "ok"}, Severity::OK}, {{"note", "note"}, Severity::NOTE}, {{"wrong", "wrong"}, Severity::WRONG}};

constexpr Field<Finding> FINDING[] = {
    Item<Finding, &Finding::severity>("severity", "Severity",
                                      "\"note\" is worth knowing; where it is \"wrong\" something does not work."),
    Item<Finding, &Finding::sTopic>("topic", "Topic", "What was examined."),
    Item<Finding, &Finding::adapter>("adapter", "Adapter",
                                     "The adapter that it is about; null where it is about none."),
    Item<Finding, &Finding::sText>("text", "Text", "The finding, in sentences."),
    Item<Finding, &Finding::missing>("missing", "Missing",
                                     "Registry values that are missing; any one of them would do. A key \"*\" is one "
                                     "of any name."),
};

} // namespace

template <>
std::span<const Word<Severity>> WordsOf()
{
    return SEVERITIES;
}

template <>
FieldTable<Finding> FieldsOf()
{
    return {"finding", FINDING};
}

} // namespace zelk
