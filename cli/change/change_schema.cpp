#include "change/change_schema.h"

#include <utility>

#include <state/answers/pending_list.h>

#include "records/answer_schema.h"

namespace zelkctl
{
namespace
{

Json ItemSchema()
{
    const Json any = Json::object();
    return ObjectOf({{"adapter", zelk::OrNull(zelk::SchemaOfType("string"))},
                     {"path", zelk::SchemaOfType("string")},
                     {"before", any},
                     {"after", any}});
}

Json StepSchema(bool bDone)
{
    const Json text = zelk::SchemaOfType("string");
    Json schema = ObjectOf({{"adapter", zelk::OrNull(text)},
                            {"step", text},
                            {"means", text},
                            {"command", zelk::OrNull(text)},
                            {"undoRestores", {{"type", "array"}, {"items", text}}}});
    if (!bDone)
        return schema;
    const Json integer = zelk::SchemaOfType("integer");
    const Json more = ObjectOf({{"outcome", {{"enum", {"done", "failed", "timedOut", "cancelled", "notRun"}}}},
                                {"durationMs", integer},
                                {"exitCode", zelk::OrNull(integer)},
                                {"error", zelk::OrNull(integer)},
                                {"reason", zelk::OrNull(text)},
                                {"output", zelk::OrNull(text)}});
    schema["properties"].update(more["properties"]);
    for (const Json& name : more["required"])
        schema["required"].push_back(name);
    return schema;
}

Json ArrayOf(Json schema)
{
    return {{"type", "array"}, {"items", std::move(schema)}};
}

} // namespace

Json DifferencesSchema()
{
    return ObjectOf({{"differs", zelk::SchemaOfType("boolean")},
                     {"items", ArrayOf(ItemSchema())},
                     {"steps", ArrayOf(StepSchema(false))},
                     {"notes", ArrayOf(zelk::SchemaOfType("string"))},
                     {"pending", ListOf<zelk::PendingEntry>()}});
}

Json AppliedSchema()
{
    return ObjectOf(
        {{"changed", zelk::SchemaOfType("boolean")},
         {"outcome", {{"enum", {"unchanged", "changed", "notVerified", "failed", "timedOut", "cancelled"}}}},
         {"items", ArrayOf(ItemSchema())},
         {"steps", ArrayOf(StepSchema(true))},
         {"differences", ArrayOf(ItemSchema())},
         {"undo", zelk::OrNull(UndoSchema())},
         {"notes", ArrayOf(zelk::SchemaOfType("string"))},
         {"pendingChange", zelk::OrNull(zelk::SchemaOfType("string"))},
         {"pending", ListOf<zelk::PendingEntry>()},
         {"adapters", ListOf("adapter")}});
}

Json StateChangeSchema()
{
    return AnyOf({DifferencesSchema(), AppliedSchema()});
}

Json UndoSchema()
{
    return ObjectOf({{"complete", zelk::SchemaOfType("boolean")},
                     {"steps", ArrayOf(StepSchema(true))},
                     {"differences", ArrayOf(ItemSchema())}});
}

} // namespace zelkctl
