#include "verbs/watch_commands.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include <state/notifications/adapter_event.h>
#include <state/notifications/change_notifications.h>
#include <state/reading/read_anew.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "events/condition.h"
#include "events/event_text.h"
#include "parser/suggestion.h"
#include "records/answer_schema.h"
#include "system/interrupt.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

/// What the user wants to see, and until when.
struct WatchOptions
{
    std::vector<std::string> adapters;
    std::vector<Condition> conditions;
    std::optional<std::uint32_t> timeout; ///< seconds
};

/// What happens to adapters from the construction on.
class AdapterWatch
{
public:
    explicit AdapterWatch(WatchOptions options) : m_options(std::move(options)), m_machine(Read())
    {
        for (const std::string& sWanted : m_options.adapters)
            m_wanted.push_back(FindAdapter(m_machine, sWanted));
        if (m_options.timeout)
            m_end = Clock::now() + seconds(*m_options.timeout);
        std::erase_if(m_machine.adapters, [this](const auto& adapter) { return !IsWatched(adapter); });
    }

    /// The first piece of the answer, which has no event.
    Answer First() const
    {
        const std::string sWhat = m_wanted.empty() ? "all adapters" : Enumeration(Names(m_wanted));
        Answer answer = AnswerOf({});
        if (!IsFulfilled())
            answer.notes = {"Watching " + sWhat + "; Ctrl+C ends it."};
        return answer;
    }

    /// Waits for the next events. Nothing when the user ends it, or what was waited for has come.
    std::optional<Answer> Next()
    {
        while (!IsFulfilled())
        {
            RefuseLateness();
            if (!m_notifications.Wait(Interval(), m_interrupt.Handle()))
                return Interrupted();
            if (const auto events = TakeEvents(); !events.empty())
                return AnswerOf(events);
        }
        return std::nullopt;
    }

private:
    using Clock = std::chrono::steady_clock;

    static zelk::Machine Read() { return zelk::ReadAnew({.identity = false}); }

    static std::vector<std::string> Names(const std::vector<zelk::Adapter>& adapters)
    {
        std::vector<std::string> names;
        for (const zelk::Adapter& adapter : adapters)
            names.push_back(Quoted(adapter));
        return names;
    }

    static Answer AnswerOf(const std::vector<zelk::AdapterEvent>& events)
    {
        std::string text;
        for (const zelk::AdapterEvent& event : events)
            text += TextOf(event) + '\n';
        return {.value = RecordsOf(events), .text = std::move(text)};
    }

    [[nodiscard]] bool IsWatched(const zelk::Adapter& adapter) const
    {
        if (m_wanted.empty())
            return !adapter.hidden;
        return std::ranges::any_of(m_wanted, [&](const zelk::Adapter& wanted) {
            return wanted.guid == adapter.guid && (wanted.guid || zelk::NameOf(wanted) == zelk::NameOf(adapter));
        });
    }

    /// Never, where nothing is waited for.
    [[nodiscard]] bool IsFulfilled() const { return !m_options.conditions.empty() && Missing().empty(); }

    /// What does not hold yet, each with its adapter.
    [[nodiscard]] std::vector<std::string> Missing() const
    {
        std::vector<std::string> missing;
        for (const zelk::Adapter& wanted : m_wanted)
        {
            const zelk::Adapter* pNow = SameAdapter(m_machine, wanted);
            const Json record = pNow != nullptr ? zelk::ToJson(*pNow) : Json();
            for (const Condition& condition : m_options.conditions)
                if (pNow == nullptr || !condition.Holds(record))
                    missing.push_back("adapter " + Quoted(wanted) + " does not have " + Quoted(condition.Text()));
        }
        return missing;
    }

    void RefuseLateness() const
    {
        if (m_end && Clock::now() >= *m_end)
            throw Failure(
                {.code = EXIT_TIME_OVER,
                 .sReason = std::to_string(*m_options.timeout) + " s are over, but " + Enumeration(Missing())});
    }

    [[nodiscard]] std::optional<Answer> Interrupted() const
    {
        if (!m_options.conditions.empty())
            throw Failure({.sReason = "interrupted, and " + Enumeration(Missing())});
        return std::nullopt;
    }

    /// How soon to read the machine again when the platform tells nothing.
    [[nodiscard]] milliseconds Interval() const
    {
        const milliseconds usual = m_notifications.AreComplete() ? seconds(5) : seconds(1);
        if (!m_end)
            return usual;
        return std::clamp(std::chrono::ceil<milliseconds>(*m_end - Clock::now()), milliseconds(0), usual);
    }

    std::vector<zelk::AdapterEvent> TakeEvents()
    {
        zelk::Machine now = Read();
        std::erase_if(now.adapters, [this](const auto& adapter) { return !IsWatched(adapter); });
        auto events =
            zelk::EventsBetween(m_machine, now, std::chrono::floor<seconds>(std::chrono::system_clock::now()));
        m_machine = std::move(now);
        return events;
    }

    WatchOptions m_options;
    InterruptEvent m_interrupt;
    zelk::ChangeNotifications m_notifications; // before the first reading, so that nothing is missed
    zelk::Machine m_machine;
    std::vector<zelk::Adapter> m_wanted; ///< none for all that the system shows
    std::optional<Clock::time_point> m_end;
};

Answer Watch(WatchOptions options)
{
    if (!options.conditions.empty() && options.adapters.empty())
        throw UsageError("--until", "needs an ADAPTER, whose fields they are");
    if (options.timeout && options.conditions.empty())
        throw UsageError("--timeout", "needs --until, which says what to wait for");
    const auto pWatch = std::make_shared<AdapterWatch>(std::move(options));
    Answer answer = pWatch->First();
    answer.next = [pWatch] { return pWatch->Next(); };
    return answer;
}

} // namespace

void AddWatchCommand(Command tool)
{
    Command verb = tool.AddVerb({"watch", "Print what changes on adapters as it changes, until Ctrl+C",
                                 "watch lan0 --until ipv4.addresses=192.0.2.20/24 --timeout 30"});
    verb.AddRemark(
        "With --until it ends, with exit code 0, as soon as each of the adapters has the value, which can be at once. "
        "The "
        "value is compared with each line that --get prints for the field; without a value, the field has to be "
        "empty.\n\n"
        "The adapters are read whenever the system notifies of a change, and at least every 5 seconds, or every second "
        "where the system does not notify. What changes several times between two readings is printed once, with "
        "the last value; what changes back between them is not printed.");
    const auto adapters = verb.AddOptionalArguments({ADAPTER_ARGUMENT, "Only these adapters", ADAPTER_FORM});
    const auto until = verb.AddRepeatedOption({"--until", "End as soon as a field has this value", "FIELD=VALUE"});
    const auto timeout =
        AddSecondsOption(verb, "--timeout", "Fail if --until takes longer; there is no limit by default");
    verb.AddJsonLinesFlag();
    verb.Answers({}, [=] {
        WatchOptions options{.adapters = adapters(), .conditions = {}, .timeout = timeout()};
        for (const std::string& sText : until())
            options.conditions.emplace_back(sText);
        return Watch(std::move(options));
    });
}

} // namespace zelkctl
