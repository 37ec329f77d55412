#include <state/c_interface/arguments.h>

#include <utility>

#include <state/answers/reports.h>
#include <state/desired/json_form.h>
#include <state/desired/json_reading.h>
#include <state/desired/object_reader.h>
#include <state/pending/pending_change.h>
#include <state/values/printable.h>

namespace zelk
{
namespace
{

using Faults = std::vector<Fault>;

[[noreturn]] void Refuse(std::string reason)
{
    throw ReportedError({.code = EXIT_USAGE, .reason = std::move(reason)});
}

/// Reads the members of the options, of which every one can be left out.
template <class Take>
void ReadOptionsText(const char* options, const Take& take)
{
    if (options == nullptr)
        options = "{}";
    Faults faults;
    if (const auto json = ParseJson(options, faults))
    {
        ObjectReader reader(*json, "", faults);
        take(reader);
        reader.Finish();
    }
    if (faults.empty())
        return;
    std::string reason = "the options cannot be used:";
    for (const Fault& fault : faults)
        reason += "\n  " + (fault.place.empty() ? "" : Printable(fault.place) + ": ") + Printable(fault.text);
    Refuse(std::move(reason));
}

std::optional<std::uint32_t> ReadSeconds(const Json& json, const std::string& place, Faults& faults)
{
    constexpr std::uint64_t LONGEST = 86400;
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() < 1 || json.get<std::uint64_t>() > LONGEST)
        return Refuse(faults, place, "must be a whole number of seconds from 1 to 86400");
    return static_cast<std::uint32_t>(json.get<std::uint64_t>());
}

void TakeTimeout(ObjectReader& reader, std::chrono::seconds& timeout)
{
    std::optional<std::uint32_t> seconds;
    reader.Take("timeout", seconds, ReadSeconds);
    if (seconds)
        timeout = std::chrono::seconds(*seconds);
}

void TakeFlag(ObjectReader& reader, const char* key, bool& flag)
{
    std::optional<bool> given;
    reader.Take(key, given, ReadBool);
    flag = given.value_or(flag);
}

template <class Read>
void TakeText(ObjectReader& reader, const char* key, std::string& text, const Read& read)
{
    std::optional<std::string> given;
    reader.Take(key, given, read);
    text = given.value_or(text);
}

} // namespace

DesiredState DesiredStateOf(const char* text)
{
    if (text == nullptr)
        Refuse("the desired state is missing");
    Faults faults;
    DesiredState state = ParseDesiredState(text, faults);
    if (!faults.empty())
        throw ReportedError(ReportOf(faults, &Printable));
    return state;
}

ReadOptions ReadOptionsOf(const char* options)
{
    ReadOptions read;
    ReadOptionsText(options, [&](ObjectReader& reader) {
        TakeFlag(reader, "identity", read.identity);
        TakeFlag(reader, "routes", read.routes);
    });
    return read;
}

std::optional<std::vector<std::string>> ExportOptionsOf(const char* options)
{
    std::optional<std::vector<std::string>> adapters;
    ReadOptionsText(options, [&](ObjectReader& reader) { reader.Take("adapters", adapters, ReadTexts); });
    return adapters;
}

void RefuseOptions(const char* options)
{
    ReadOptionsText(options, [](ObjectReader&) {});
}

ConfirmOptions ConfirmOptionsOf(const char* options)
{
    ConfirmOptions confirm;
    ReadOptionsText(options, [&](ObjectReader& reader) {
        TakeTimeout(reader, confirm.timeout);
        TakeText(reader, "change", confirm.change, ReadChangeId);
    });
    return confirm;
}

ChangeOptions ChangeOptionsOf(const char* options)
{
    ChangeOptions change;
    ReadOptionsText(options, [&](ObjectReader& reader) {
        TakeTimeout(reader, change.timeout);
        TakeFlag(reader, "keep", change.keep);
        reader.Take("confirmWithin", change.confirmWithin, ReadSeconds);
        reader.Take("waitFor", change.waitFor, ReadAddress);
        TakeText(reader, "label", change.label, ReadText);
    });
    if (change.waitFor && !change.confirmWithin)
        Refuse("the options cannot be used: waitFor needs confirmWithin, which says for how long");
    return change;
}

RestoreOptions RestoreOptionsOf(const char* options)
{
    RestoreOptions restore;
    ReadOptionsText(options, [&](ObjectReader& reader) {
        TakeTimeout(reader, restore.timeout);
        TakeFlag(reader, "discard", restore.discard);
        TakeText(reader, "change", restore.change, ReadChangeId);
    });
    return restore;
}

} // namespace zelk
