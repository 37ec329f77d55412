#include <state/answers/reports.h>

#include <algorithm>

#include <state/pending/watch.h>
#include <state/platform/system_message.h>

namespace zelk
{
namespace
{

std::string NameOf(const Changer& changer)
{
    return changer.user + " (process " + std::to_string(changer.process) + ", since " + changer.since + ')';
}

std::string IndexText(const Adapter& adapter)
{
    return adapter.index ? std::to_string(*adapter.index) : "-";
}

/// A line for each, by which they can be told apart.
std::string Enumerate(const std::vector<const Adapter*>& adapters)
{
    std::size_t width = 0;
    for (const Adapter* const adapter : adapters)
        width = std::max(width, IndexText(*adapter).size());
    std::string text;
    for (const Adapter* const adapter : adapters)
    {
        const std::string index = IndexText(*adapter);
        text += '\n' + index + std::string(width - index.size(), ' ') + "  " +
                (adapter->guid ? adapter->guid->ToText() : "-") + "  " + Printable(NameOf(*adapter));
    }
    return text;
}

} // namespace

ExitCode CodeOf(const Plan& plan) noexcept
{
    return plan.differences.empty() ? EXIT_DONE : EXIT_DIFFERENCES;
}

ExitCode CodeOf(Outcome outcome) noexcept
{
    switch (outcome)
    {
    case Outcome::UNCHANGED:
    case Outcome::CHANGED: return EXIT_DONE;
    case Outcome::NOT_VERIFIED: return EXIT_NOT_VERIFIED;
    case Outcome::TIMED_OUT: return EXIT_TIME_OVER;
    case Outcome::NEEDS_ELEVATION: return EXIT_NEEDS_ELEVATION;
    case Outcome::FAILED:
    case Outcome::CANCELLED: break;
    }
    return EXIT_OPERATION_FAILED;
}

ExitCode CodeOf(PendingOutcome outcome) noexcept
{
    switch (outcome)
    {
    case PendingOutcome::DONE: return EXIT_DONE;
    case PendingOutcome::BUSY: return EXIT_BUSY;
    case PendingOutcome::NOT_RESTORED: return EXIT_NOT_VERIFIED;
    case PendingOutcome::NOTHING:
    case PendingOutcome::INTERRUPTED:
    case PendingOutcome::REFUSED: break;
    }
    return EXIT_OPERATION_FAILED;
}

ExitCode CodeOf(const std::vector<Fault>& faults)
{
    const auto Has = [&](FaultKind kind) { return std::ranges::find(faults, kind, &Fault::kind) != faults.end(); };
    if (Has(FaultKind::MEANING))
        return EXIT_USAGE;
    return Has(FaultKind::ADAPTER) ? EXIT_NO_SUCH_ADAPTER : EXIT_NOT_POSSIBLE;
}

ErrorReport ReportOf(const StateError& error)
{
    const Problem& problem = error.GetProblem();
    return {.reason = problem.text + ' ' + problem.step + ": " + SystemText(problem.code)};
}

ErrorReport ReportOf(const std::vector<Fault>& faults, std::string (*nameOf)(std::string_view place))
{
    ErrorReport report = {.code = CodeOf(faults), .reason = "nothing was changed, because this cannot be applied:"};
    for (const Fault& fault : faults)
    {
        const std::string name = nameOf(fault.place);
        report.reason += "\n  " + (name.empty() ? "" : name + ": ") + Printable(fault.text);
    }
    return report;
}

ErrorReport ReportOfName(const std::string& text, const std::vector<const Adapter*>& adapters)
{
    const std::string quoted = '"' + Printable(text) + '"';
    return {.code = EXIT_NO_SUCH_ADAPTER,
            .reason = adapters.empty() ? "there is no adapter " + quoted
                                       : quoted + " matches several adapters:" + Enumerate(adapters)};
}

ErrorReport ReportOfMissingElevation()
{
    return {.code = EXIT_NEEDS_ELEVATION, .reason = "this requires elevation; nothing was changed"};
}

ErrorReport ReportOfBusy(const std::optional<Changer>& holder)
{
    return {.code = EXIT_BUSY,
            .reason = (holder ? NameOf(*holder) : std::string("another process")) +
                      " is changing the machine; nothing was changed"};
}

ErrorReport ReportOfAwaited(const PendingChange& other)
{
    const auto left = TimeLeft(other);
    return {.code = EXIT_BUSY,
            .reason = "a change by " + NameOf(other.by) +
                      (left ? " waits to be confirmed for " + std::to_string((*left + 999) / 1000) + " s more"
                            : " is being completed or restored") +
                      "; nothing was changed"};
}

ErrorReport ReportOf(const PendingResult& result, const std::string& id)
{
    switch (result.outcome)
    {
    case PendingOutcome::BUSY: return ReportOfBusy(result.holder);
    case PendingOutcome::INTERRUPTED:
        return {.reason = "the pending change was interrupted or is being taken back, so it cannot be confirmed"};
    case PendingOutcome::REFUSED:
        return {.reason = "the record of the pending change cannot be used: " + result.records.front().fault};
    default: return {.reason = id.empty() ? "nothing is pending" : "the change " + id + " is not pending"};
    }
}

} // namespace zelk
