#include <state/pending/pending_change.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <random>

#include <state/desired/json_form.h>
#include <state/desired/json_reading.h>
#include <state/desired/object_reader.h>
#include <state/desired/standing.h>
#include <state/pending/machine_id.h>
#include <state/pending/utc_time.h>
#include <state/plan/restore.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

using Faults = std::vector<Fault>;

constexpr std::uint32_t RECORD_VERSION = 1;
constexpr std::size_t ID_LENGTH = 16;
constexpr std::string_view GUID_PREFIX = "guid:";
/// In the order of PendingPhase.
constexpr std::array PHASES = {"applying", "waiting", "restoring", "restored"};
/// In the order of RestoreCause.
constexpr std::array CAUSES = {"notConfirmed", "interrupted", "requested"};

std::optional<std::uint64_t> ReadMoment(const Json& json, const std::string& place, Faults& faults)
{
    if (!json.is_number_unsigned())
        return Refuse(faults, place, "must be a whole number");
    return json.get<std::uint64_t>();
}

std::optional<PendingPhase> ReadPhase(const Json& json, const std::string& place, Faults& faults)
{
    const auto found = std::ranges::find_if(PHASES, [&](const char* word) { return json == word; });
    if (found == PHASES.end())
        return Refuse(faults, place, "must be \"applying\", \"waiting\", \"restoring\" or \"restored\"");
    return static_cast<PendingPhase>(found - PHASES.begin());
}

std::optional<Guid> GuidOf(const DesiredAdapter& adapter)
{
    if (!adapter.adapter.starts_with(GUID_PREFIX))
        return std::nullopt;
    return Guid::Parse(std::string_view(adapter.adapter).substr(GUID_PREFIX.size()));
}

std::optional<DesiredState> ReadBefore(const Json& json, const std::string& place, Faults& faults)
{
    DesiredState state = ReadDesiredState(json, place, faults);
    for (std::size_t i = 0; i < state.adapters.size(); ++i)
        if (!GuidOf(state.adapters[i]))
            Refuse(faults, PlaceOf(place + "/adapters", i), "must name its adapter by \"guid:\"");
    return state;
}

/// One byte after the other, two hexadecimal digits each.
std::string HexOf(const std::vector<std::byte>& data)
{
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : data)
        text.append({DIGITS[std::to_integer<std::size_t>(byte >> 4)],
                     DIGITS[std::to_integer<std::size_t>(byte & std::byte(15))]});
    return text;
}

std::optional<std::vector<std::byte>> ReadHex(const Json& json, const std::string& place, Faults& faults)
{
    constexpr int BASE = 16;
    const std::string text = json.is_string() ? json.get<std::string>() : "?";
    if (text.size() % 2 != 0 || text.find_first_not_of("0123456789abcdef") != std::string::npos)
        return Refuse(faults, place, "must be bytes as hexadecimal digits");
    std::vector<std::byte> data;
    for (std::size_t i = 0; i < text.size(); i += 2)
        data.push_back(static_cast<std::byte>(std::stoi(text.substr(i, 2), nullptr, BASE)));
    return data;
}

Json JsonOf(const StoredValue& stored)
{
    Json json = {{"key", ToUtf8(stored.key)}, {"name", ToUtf8(stored.name)}};
    if (stored.value)
    {
        json["type"] = stored.value->type;
        json["data"] = HexOf(stored.value->data);
    }
    return json;
}

StoredValue ReadStoredValue(const Json& json, const std::string& place, Faults& faults)
{
    std::string key;
    std::string name;
    std::optional<std::uint32_t> type;
    std::optional<std::vector<std::byte>> data;
    ObjectReader reader(json, place, faults);
    reader.Require("key", key, ReadText);
    reader.Require("name", name, ReadText);
    reader.Take("type", type, ReadNumber);
    reader.Take("data", data, ReadHex);
    reader.Finish();
    StoredValue stored{FromUtf8(key), FromUtf8(name), std::nullopt};
    if (type && data)
        stored.value = {stored.name, *type, *data};
    return stored;
}

std::optional<std::vector<StoredValue>> ReadStored(const Json& json, const std::string& place, Faults& faults)
{
    if (!json.is_array())
        return Refuse(faults, place, "must be a list");
    std::vector<StoredValue> values;
    for (std::size_t i = 0; i < json.size(); ++i)
        values.push_back(ReadStoredValue(json[i], PlaceOf(place, i), faults));
    return values;
}

/// The record may name no other part of the registry.
void CheckStored(const PendingChange& change, Faults& faults)
{
    const auto targets = TargetsOf(change);
    for (std::size_t i = 0; i < change.stored.size(); ++i)
        if (!StoredForm::IsKnown(change.stored[i], targets))
            Refuse(faults, PlaceOf("/stored", i), "is no setting of the adapters before");
}

std::optional<RestoreCause> ReadCause(const Json& json, const std::string& place, Faults& faults)
{
    const auto found = std::ranges::find_if(CAUSES, [&](const char* word) { return json == word; });
    if (found == CAUSES.end())
        return Refuse(faults, place, "must be \"notConfirmed\", \"interrupted\" or \"requested\"");
    return static_cast<RestoreCause>(found - CAUSES.begin());
}

std::optional<Restoration> ReadRestoration(const Json& json, const std::string& place, Faults& faults)
{
    return ReadObject<Restoration>(json, place, faults, [](ObjectReader& reader, Restoration& restoration) {
        reader.Require("cause", restoration.cause, ReadCause);
        reader.Require("at", restoration.at, ReadText);
        reader.Require("open", restoration.open, ReadTexts);
    });
}

} // namespace

std::optional<Changer> ReadChanger(const Json& json, const std::string& place, Faults& faults)
{
    return ReadObject<Changer>(json, place, faults, [](ObjectReader& reader, Changer& changer) {
        reader.Require("user", changer.user, ReadText);
        reader.Require("process", changer.process, ReadNumber);
        reader.Require("since", changer.since, ReadText);
    });
}

PendingChange MakePendingChange(const Machine& before, const Plan& plan)
{
    PendingChange change;
    change.id = NewChangeId();
    change.machine = MachineId();
    change.by = ThisChanger();
    for (const Step& step : plan.steps)
        change.steps.push_back(step.adapter.empty() ? step.text : step.adapter + ": " + step.text);
    for (Target& target : RestoredTargets(before, plan.steps))
    {
        target.desired.adapter = std::string(GUID_PREFIX) + target.guid.ToText();
        change.before.adapters.push_back(std::move(target.desired));
    }
    change.before.identity = RestoredIdentity(before, plan.steps);
    for (const Difference& unknown : UnknownBefore(before, plan.steps))
        change.unknown.push_back(unknown.adapter + ": " + unknown.path);
    change.stored = StoredForm(TargetsOf(change)).Values();
    return change;
}

std::vector<Target> TargetsOf(const PendingChange& change, const Machine& machine)
{
    std::vector<Target> targets;
    for (const DesiredAdapter& desired : change.before.adapters)
        if (const auto guid = GuidOf(desired))
        {
            const Adapter* const adapter = FindAdapter(machine, *guid);
            targets.push_back({*guid, adapter != nullptr ? NameOf(*adapter) : guid->ToText(), "", desired, true});
        }
    return targets;
}

void BeginRestoring(PendingChange& change, RestoreCause cause)
{
    if (!change.restoration)
        change.restoration = {cause, "", {}};
    change.restoration->at = UtcNow();
    change.phase = PendingPhase::RESTORING;
}

std::string WritePendingChange(const PendingChange& change)
{
    Json json = {{"recordVersion", RECORD_VERSION},
                 {"id", change.id},
                 {"machine", change.machine},
                 {"phase", WordOf(change.phase)},
                 {"by", {{"user", change.by.user}, {"process", change.by.process}, {"since", change.by.since}}},
                 {"steps", change.steps},
                 {"before", ToJson(change.before)},
                 {"stored", Json::array()},
                 {"unknown", change.unknown}};
    for (const StoredValue& stored : change.stored)
        json["stored"].push_back(JsonOf(stored));
    if (!change.label.empty())
        json["label"] = change.label;
    if (change.confirmWithin)
        json["confirmWithin"] = *change.confirmWithin;
    if (change.waitFor)
        json["waitFor"] = change.waitFor->ToText();
    if (change.waitingSince)
        json["waitingSince"] = *change.waitingSince;
    if (change.restoration)
        json["restoration"] = {{"cause", WordOf(change.restoration->cause)},
                               {"at", change.restoration->at},
                               {"open", change.restoration->open}};
    return json.dump(2) + '\n';
}

PendingChange ParsePendingChange(std::string_view text, Faults& faults)
{
    PendingChange change;
    const auto json = ParseJson(text, faults);
    if (!json)
        return change;
    std::uint32_t version = 0;
    std::optional<std::string> label;
    ObjectReader reader(*json, "", faults);
    reader.Require("recordVersion", version, ReadNumber);
    if (version != RECORD_VERSION)
    {
        Refuse(faults, "/recordVersion", "is not that of this version, " + std::to_string(RECORD_VERSION));
        return change;
    }
    reader.Require("id", change.id, ReadChangeId);
    reader.Require("machine", change.machine, ReadText);
    reader.Require("phase", change.phase, ReadPhase);
    reader.Require("by", change.by, ReadChanger);
    reader.Require("steps", change.steps, ReadTexts);
    reader.Require("before", change.before, ReadBefore);
    reader.Require("stored", change.stored, ReadStored);
    reader.Require("unknown", change.unknown, ReadTexts);
    reader.Take("label", label, ReadText);
    reader.Take("confirmWithin", change.confirmWithin, ReadNumber);
    reader.Take("waitFor", change.waitFor, ReadAddress);
    reader.Take("waitingSince", change.waitingSince, ReadMoment);
    reader.Take("restoration", change.restoration, ReadRestoration);
    reader.Finish();
    change.label = label.value_or("");
    if (change.phase == PendingPhase::WAITING && !change.confirmWithin)
        Refuse(faults, "", "lacks \"confirmWithin\", which a change that waits has");
    if (change.phase == PendingPhase::RESTORED && !change.restoration)
        Refuse(faults, "", "lacks \"restoration\", which a change that was restored has");
    CheckStored(change, faults);
    return change;
}

std::optional<std::string> ReadChangeId(const Json& json, const std::string& place, Faults& faults)
{
    if (!json.is_string() || !IsChangeId(json.get_ref<const std::string&>()))
        return Refuse(faults, place, "must be the id of a change, 16 hexadecimal digits");
    return json.get<std::string>();
}

std::string NewChangeId()
{
    std::random_device random;
    std::array<char, ID_LENGTH + 1> text = {};
    std::snprintf(text.data(), text.size(), "%08x%08x", random(), random());
    return text.data();
}

bool IsChangeId(std::string_view text) noexcept
{
    return text.size() == ID_LENGTH && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::uint64_t ClockNow()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

std::string TextOf(const Restoration& restoration)
{
    constexpr std::array REASONS = {"because nobody confirmed the change in time",
                                    "because the process that made the change ended", "because somebody asked for it"};
    return "at " + restoration.at + ", " + REASONS[static_cast<std::size_t>(restoration.cause)];
}

const char* WordOf(RestoreCause cause) noexcept
{
    return CAUSES[static_cast<std::size_t>(cause)];
}

const char* WordOf(PendingPhase phase) noexcept
{
    return PHASES[static_cast<std::size_t>(phase)];
}

} // namespace zelk
