#include "change/change.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include <state/reading/read_machine.h>

#include "adapters/adapter.h"
#include "adapters/library_call.h"
#include "answer/table.h"
#include "answer/value_text.h"
#include "change/permission.h"
#include "records/answer_schema.h"
#include "system/progress.h"

namespace zelkctl
{
namespace
{

/// How an aspect stood before the change, and after it.
struct Reading
{
    const Aspect* pAspect;
    Json before;
    Json now;

    [[nodiscard]] bool IsReached(const Json& value) const
    {
        return pAspect->isReached ? pAspect->isReached(value) : value == pAspect->wanted;
    }
    /// What nobody can foresee counts as different.
    [[nodiscard]] bool Differs() const { return pAspect->wanted.is_null() || !IsReached(before); }
};

std::vector<Reading> ReadBefore(const Change& change)
{
    CurrentMachine machine;
    std::vector<Reading> readings;
    for (const Aspect& aspect : change.aspects)
        readings.push_back({&aspect, aspect.read(machine), {}});
    return readings;
}

std::string WantedText(const Aspect& aspect)
{
    return aspect.wanted.is_null() ? "(not known beforehand)" : TextOf(aspect.wanted);
}

Json ItemsOf(const std::vector<Reading>& readings, bool bDone)
{
    Json items = Json::array();
    for (const Reading& reading : readings)
    {
        Json item;
        item["item"] = reading.pAspect->sKey;
        item["before"] = reading.before;
        item["wanted"] = reading.pAspect->wanted;
        if (bDone)
            item["now"] = reading.now;
        else
            item["differs"] = reading.Differs();
        items.push_back(std::move(item));
    }
    return items;
}

/// What the change would do.
Answer DifferencesOf(const std::vector<Reading>& readings)
{
    Table table;
    table.Add({{""}, {"Item"}, {"Before"}, {"After"}});
    bool bDiffers = false;
    for (const Reading& reading : readings)
    {
        const Aspect& aspect = *reading.pAspect;
        table.Add({{reading.Differs() ? "*" : "="}, {aspect.sLabel}, {TextOf(reading.before)}, {WantedText(aspect)}},
                  reading.Differs() ? Colour::WATCH : Colour::PLAIN);
        bDiffers |= reading.Differs();
    }
    Json result;
    result["differs"] = bDiffers;
    result["items"] = ItemsOf(readings, false);
    return {.value = std::move(result), .text = table.Text(), .code = bDiffers ? EXIT_DIFFERENCES : EXIT_DONE};
}

Failure FailureOf(const Change& change, ExitCode code, std::string sReason, std::string sHint)
{
    return Failure({.code = code,
                    .sReason = std::move(sReason),
                    .sOperation = code == EXIT_OPERATION_FAILED ? change.sOperation : "",
                    .sAdapter = change.adapter ? zelk::NameOf(*change.adapter) : "",
                    .sHint = std::move(sHint)});
}

bool RunWithProgress(const Change& change)
{
    const ProgressDisplay progress(change.sDoing);
    return change.operation();
}

void ReadNow(std::vector<Reading>& readings)
{
    CurrentMachine machine;
    for (Reading& reading : readings)
        reading.now = reading.pAspect->read(machine);
}

/// A device takes a moment to come back, an address to be assigned: reads until everything is as wanted, or for so
/// long.
bool ReachesWanted(std::vector<Reading>& readings)
{
    constexpr auto PATIENCE = std::chrono::seconds(10);
    constexpr auto INTERVAL = std::chrono::milliseconds(250);
    const auto end = std::chrono::steady_clock::now() + PATIENCE;
    for (;;)
    {
        ReadNow(readings);
        const bool bReached =
            std::ranges::all_of(readings, [](const Reading& reading) { return reading.IsReached(reading.now); });
        if (bReached || std::chrono::steady_clock::now() >= end)
            return bReached;
        std::this_thread::sleep_for(INTERVAL);
    }
}

/// What is still not as wanted.
std::string Missing(const std::vector<Reading>& readings)
{
    std::string text;
    for (const Reading& reading : readings)
        if (!reading.IsReached(reading.now))
            text += std::string(text.empty() ? "" : "; ") + reading.pAspect->sLabel + ": " + TextOf(reading.now) +
                    (reading.pAspect->wanted.is_null() ? "" : " instead of " + TextOf(reading.pAspect->wanted));
    return text;
}

void Verify(const Change& change, std::vector<Reading>& readings)
{
    const ProgressDisplay progress("Verifying");
    if (!ReachesWanted(readings))
        throw FailureOf(change, EXIT_OPERATION_FAILED,
                        "the library reported success, but the change cannot be verified: " + Missing(readings),
                        "Use --no-verify to skip this check.");
}

std::vector<std::string> NotesOf(const Change& change, const std::string& sSurvived)
{
    std::vector<std::string> notes = {change.sDone};
    if (change.reach == Reach::NEXT_START)
        notes.emplace_back("This takes effect when the system starts next time.");
    if (!sSurvived.empty())
        notes.push_back("The library reported a problem on the way: " + sSurvived);
    return notes;
}

} // namespace

const zelk::Machine& CurrentMachine::Get()
{
    if (!m_machine)
        m_machine = zelk::ReadMachine();
    return *m_machine;
}

Answer Perform(const Change& change, const ChangeOptions& options)
{
    std::vector<Reading> readings = ReadBefore(change);
    if (options.bCheck)
        return DifferencesOf(readings);
    const std::string sAdapter = change.adapter ? zelk::NameOf(*change.adapter) : "";
    if (change.bNeedsElevation)
        RequireElevation(sAdapter);
    if (change.reach == Reach::SESSION)
        RequireConfirmation(sAdapter, options.bConfirmed);

    const TraceReader trace;
    if (!RunWithProgress(change))
        throw OperationFailed(change.sOperation, change.adapter ? &*change.adapter : nullptr, trace, change.bNeedsIpv6);
    const std::string sSurvived = trace.Problems().empty() ? "" : Explanation(trace);
    const bool bVerify = options.bVerify && change.reach != Reach::NEXT_START;
    if (bVerify)
        Verify(change, readings);

    Json result;
    result["done"] = true;
    result["verified"] = bVerify;
    result["atNextStart"] = change.reach == Reach::NEXT_START;
    result["wentOnAfter"] = sSurvived.empty() ? Json() : Json(sSurvived);
    result["items"] = ItemsOf(readings, bVerify);
    return {.value = std::move(result), .text = "", .notes = NotesOf(change, sSurvived)};
}

Json ChangeSchema()
{
    const Json any = Json::object();
    const Json boolean = zelk::SchemaOfType("boolean");
    const auto Items = [&](const char* pszLast, bool bRequired) {
        Json item = ObjectOf({{"item", zelk::SchemaOfType("string")}, {"before", any}, {"wanted", any}});
        item["properties"][pszLast] = any;
        if (bRequired)
            item["required"].push_back(pszLast);
        return Json{{"type", "array"}, {"items", std::move(item)}};
    };
    return AnyOf({ObjectOf({{"differs", boolean}, {"items", Items("differs", true)}}),
                  ObjectOf({{"done", boolean},
                            {"verified", boolean},
                            {"atNextStart", boolean},
                            {"wentOnAfter", zelk::OrNull(zelk::SchemaOfType("string"))},
                            {"items", Items("now", false)}})});
}

Aspect AdapterAspect(const zelk::Adapter& adapter, const std::string& sKey, const std::string& sLabel,
                     std::function<Json(const zelk::Adapter&)> read, Json wanted)
{
    return {.sKey = sKey,
            .sLabel = sLabel,
            .read =
                [adapter, read = std::move(read)](CurrentMachine& machine) {
                    const zelk::Adapter* pNow = SameAdapter(machine.Get(), adapter);
                    return pNow != nullptr ? read(*pNow) : Json();
                },
            .wanted = std::move(wanted)};
}

} // namespace zelkctl
