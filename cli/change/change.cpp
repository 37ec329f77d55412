#include "change/change.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

#include <winsock2.h>

#include <versionhelpers.h>

#include "adapters/library_call.h"
#include "answer/table.h"
#include "system/elevation.h"
#include "system/own_process.h"
#include "system/waiting.h"

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
    std::vector<Reading> readings;
    for (const Aspect& aspect : change.aspects)
        readings.push_back({&aspect, aspect.read(), {}});
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
        item["item"] = reading.pAspect->field.pszKey;
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
void ShowDifferences(const std::vector<Reading>& readings, Output& output)
{
    Table table;
    table.Add({"", "Item", "Before", "After"});
    bool bDiffers = false;
    for (const Reading& reading : readings)
    {
        const Colour colour = reading.Differs() ? Colour::WATCH : Colour::PLAIN;
        table.Add({reading.Differs() ? "*" : "=", reading.pAspect->field.pszLabel, TextOf(reading.before),
                   WantedText(*reading.pAspect)},
                  colour);
        bDiffers |= reading.Differs();
    }
    Json result;
    result["differs"] = bDiffers;
    result["items"] = ItemsOf(readings, false);
    output.Answer(result, table.Text());
    if (bDiffers)
        output.SetExitCode(EXIT_DIFFERENCES);
}

Failure FailureOf(const Change& change, ExitCode code, std::string sReason, std::string sHint)
{
    return Failure({.code = code,
                    .sReason = std::move(sReason),
                    .sOperation = code == EXIT_OPERATION_FAILED ? change.sOperation : "",
                    .sAdapter = change.adapter ? Quoted(*change.adapter) : "",
                    .sHint = std::move(sHint)});
}

void RequireElevation(const Change& change)
{
    if (change.bNeedsElevation && !IsElevated())
        throw FailureOf(change, EXIT_NEEDS_ELEVATION, "this needs elevation; nothing was changed",
                        "Run it from an elevated prompt, or look first with --check.");
}

void RequireConsent(const Change& change, const ChangeOptions& options)
{
    if (change.reach != Reach::SESSION || options.bConsent)
        return;
    const std::string sAdapter = change.adapter ? " through adapter " + Quoted(*change.adapter) : "";
    if (!IsTerminal(stdin) || !IsTerminal(stderr))
        throw FailureOf(change, EXIT_USAGE,
                        "this can cut off a session" + sAdapter + ", and nobody can be asked; nothing was changed",
                        "Say --yes when it may.");
    std::cerr << "This can cut off a session" << sAdapter << ". Go on? [y/N] " << std::flush;
    std::string sAnswer;
    std::getline(std::cin, sAnswer);
    if (sAnswer != "y" && sAnswer != "Y" && sAnswer != "yes")
        throw Failure({.sReason = "not confirmed; nothing was changed"}); // no operation has run that could have failed
}

bool RunShowing(const std::string& sDoing, const std::function<bool()>& operation)
{
    const Waiting waiting(sDoing);
    return operation();
}

/// Before Vista the library reads addresses and routes once per process: only another one sees what has become of them.
bool IsReadOncePerProcess()
{
    return !::IsWindowsVistaOrGreater();
}

void ReadNow(std::vector<Reading>& readings)
{
    if (!IsReadOncePerProcess())
    {
        for (Reading& reading : readings)
            reading.now = reading.pAspect->read();
        return;
    }
    const Json answer = Json::parse(RunOnceMore(L"--read-back"), nullptr, false);
    const Json items = answer.is_object() ? answer.value("result", Json::array()) : Json::array();
    for (std::size_t i = 0; i < readings.size(); ++i)
        readings[i].now = i < items.size() ? items[i] : Json();
}

/// What the process that was started for it answers.
Json ValuesOf(const std::vector<Reading>& readings)
{
    Json values = Json::array();
    for (const Reading& reading : readings)
        values.push_back(reading.before);
    return values;
}

/// A device takes a moment to come back, an address to be taken: reads until everything is reached, or for so long.
bool ReadBack(std::vector<Reading>& readings)
{
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + 10s;
    for (;;)
    {
        ReadNow(readings);
        const bool bReached =
            std::ranges::all_of(readings, [](const Reading& reading) { return reading.IsReached(reading.now); });
        if (bReached || std::chrono::steady_clock::now() >= end)
            return bReached;
        std::this_thread::sleep_for(250ms);
    }
}

/// What is still not as wanted.
std::string Missing(const std::vector<Reading>& readings)
{
    std::string text;
    for (const Reading& reading : readings)
        if (!reading.IsReached(reading.now))
            text += std::string(text.empty() ? "" : "; ") + reading.pAspect->field.pszLabel + ": " +
                    TextOf(reading.now) +
                    (reading.pAspect->wanted.is_null() ? "" : " instead of " + TextOf(reading.pAspect->wanted));
    return text;
}

void Verify(const Change& change, std::vector<Reading>& readings)
{
    const Waiting waiting("Reading back");
    if (!ReadBack(readings))
        throw FailureOf(change, EXIT_OPERATION_FAILED,
                        "the library reported success, but the machine does not show the change: " + Missing(readings),
                        "--no-verify does without this check.");
}

} // namespace

void Perform(const Change& change, const ChangeOptions& options, Output& output)
{
    std::vector<Reading> readings = ReadBefore(change);
    if (options.bReadBack)
        return output.Answer(ValuesOf(readings), "");
    if (options.bCheck)
        return ShowDifferences(readings, output);
    RequireElevation(change);
    RequireConsent(change, options);

    const TraceReader trace;
    if (!RunShowing(change.sDoing, change.operation))
        throw OperationFailed(change.sOperation, change.adapter ? &*change.adapter : nullptr, trace, change.bNeedsIpv6);
    const std::string sSurvived = trace.Problems().empty() ? "" : Explanation(trace);
    const bool bVerify = options.bVerify && change.reach != Reach::NEXT_START;
    if (bVerify)
        Verify(change, readings);

    Output::Note(change.sDone);
    if (change.reach == Reach::NEXT_START)
        Output::Note("It takes effect at the system's next start.");
    if (!sSurvived.empty())
        Output::Note("The library went on after this: " + sSurvived);
    Json result;
    result["done"] = true;
    result["verified"] = bVerify;
    result["atNextStart"] = change.reach == Reach::NEXT_START;
    result["wentOnAfter"] = sSurvived.empty() ? Json() : Json(sSurvived);
    result["items"] = ItemsOf(readings, bVerify);
    output.Answer(result, "");
}

} // namespace zelkctl
