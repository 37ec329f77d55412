#include <state/apply/apply.h>

#include <algorithm>
#include <iterator>

#include <state/apply/look_schedule.h>
#include <state/apply/performer.h>
#include <state/apply/stored_form.h>
#include <state/apply/take_back.h>
#include <state/desired/standing.h>
#include <state/plan/restore.h>
#include <state/reading/read_anew.h>

namespace zelk
{
namespace
{

using std::chrono::milliseconds;

/// One change from its first step to its verification or to the previous state.
class Change
{
public:
    Change(const Machine& before, const Plan& plan, const ApplyOptions& options)
        : m_before(before), m_plan(plan), m_options(options), m_storedForm(plan.targets)
    {
    }

    ApplyResult Run()
    {
        m_result.now = m_before;
        m_result.open = m_plan.differences;
        if (m_plan.steps.empty() && m_plan.differences.empty())
            return m_result;
        if (m_before.environment.elevated == false)
        {
            m_result.outcome = Outcome::NEEDS_ELEVATION;
            return m_result;
        }
        m_result.outcome = PerformAll();
        if (m_result.outcome == Outcome::CHANGED)
            m_result.outcome = Complete();
        m_result.changed = !m_result.steps.empty();
        if (m_result.outcome != Outcome::CHANGED && m_result.outcome != Outcome::NOT_VERIFIED)
            Abandon();
        return m_result;
    }

private:
    void Report(const Progress& progress) const
    {
        if (m_options.progress)
            m_options.progress(progress);
    }

    static Outcome OutcomeOf(StepOutcome outcome)
    {
        switch (outcome)
        {
        case StepOutcome::DONE: return Outcome::CHANGED;
        case StepOutcome::TIMED_OUT: return Outcome::TIMED_OUT;
        case StepOutcome::CANCELLED: return Outcome::CANCELLED;
        default: return Outcome::FAILED;
        }
    }

    /// Up to the first that fails; the others are listed as not run.
    Outcome PerformAll()
    {
        const Performer performer(m_options, true);
        Outcome outcome = Outcome::CHANGED;
        for (const Step& step : m_plan.steps)
        {
            if (outcome == Outcome::CHANGED && performer.IsCancelled())
                outcome = Outcome::CANCELLED;
            if (outcome != Outcome::CHANGED)
            {
                m_result.steps.emplace_back().step = step;
                continue;
            }
            Progress progress = {.step = &step, .number = m_result.steps.size() + 1, .count = m_plan.steps.size()};
            Report(progress);
            m_result.steps.push_back(performer.Perform(m_before, step));
            progress.ended = &m_result.steps.back();
            Report(progress);
            outcome = OutcomeOf(m_result.steps.back().outcome);
        }
        return outcome;
    }

    /// A command that replaces addresses can take routes with it that are to stay: what has not come back by itself
    /// after a moment is made again.
    Outcome Complete()
    {
        constexpr milliseconds MOMENT(2000);
        Report({.phase = Progress::Phase::VERIFYING});
        const Outcome outcome = Verify(std::min(MOMENT, m_options.timeout));
        if (outcome != Outcome::NOT_VERIFIED)
            return outcome;
        BringBackRoutes();
        return Verify(m_options.timeout);
    }

    /// A step that fails here may have come too late; verifying tells.
    void BringBackRoutes()
    {
        std::vector<Fault> faults;
        const Plan rest = MakePlan(m_result.now, m_plan.targets, m_plan.identity, faults);
        const Performer performer(m_options, true);
        for (const Step& step : rest.steps)
            if (IsRouteOnly(step) && !performer.IsCancelled())
                m_result.steps.push_back(performer.Perform(m_result.now, step));
    }

    static bool IsRouteOnly(const Step& step)
    {
        return std::ranges::all_of(step.touches, [](const std::string& path) {
            return path == "routes" || path == "ipv4.gateways" || path == "ipv6.gateways";
        });
    }

    /// Whoever becomes a DHCP client and has a link is to get an address.
    void ExpectLeases()
    {
        for (const Target& target : m_plan.targets)
        {
            const Adapter* const before = FindAdapter(m_before, target.guid);
            const Adapter* const now = FindAdapter(m_result.now, target.guid);
            const bool becomes = target.desired.ipv4.dhcp == true && before != nullptr && !DhcpStands(*before, true);
            if (becomes && now != nullptr && IsUp(*now) && AddressesInUse(*now, Family::IPV4).empty())
                m_result.open.push_back(
                    {target.name, "ipv4.addresses", Json::array(), "an address from a DHCP server"});
        }
    }

    Outcome Verify(milliseconds timeout)
    {
        LookSchedule schedule(m_options.lookInterval, timeout);
        for (;;)
        {
            m_result.now = ReadAnew();
            m_result.open = Differences(m_result.now, m_plan.targets, m_plan.identity);
            ExpectLeases();
            if (m_result.open.empty())
                return Outcome::CHANGED;
            if (m_options.isCancelled && m_options.isCancelled())
                return Outcome::CANCELLED;
            if (schedule.IsOver())
                return Outcome::NOT_VERIFIED;
            schedule.AwaitNext();
        }
    }

    void Abandon()
    {
        const bool touched = std::ranges::any_of(
            m_result.steps, [](const StepResult& one) { return one.outcome != StepOutcome::NOT_RUN; });
        if (touched && !m_options.keep)
        {
            m_result.undo = TakeBack(RestoredTargets(m_before, StepsRun()), RestoredIdentity(m_before, StepsRun()),
                                     m_storedForm, m_options);
            std::ranges::move(UnknownBefore(m_before, StepsRun()), std::back_inserter(m_result.undo->open));
        }
        m_result.now = ReadAnew();
        m_result.open = Differences(m_result.now, m_plan.targets, m_plan.identity);
        m_result.changed = touched && (!m_result.undo || !m_result.undo->open.empty());
    }

    [[nodiscard]] std::vector<Step> StepsRun() const
    {
        std::vector<Step> steps;
        for (const StepResult& result : m_result.steps)
            if (result.outcome != StepOutcome::NOT_RUN)
                steps.push_back(result.step);
        return steps;
    }

    const Machine& m_before;
    const Plan& m_plan;
    const ApplyOptions& m_options;
    StoredForm m_storedForm; ///< before the change
    ApplyResult m_result;
};

} // namespace

ApplyResult Apply(const Machine& before, const Plan& plan, const ApplyOptions& options)
{
    return Change(before, plan, options).Run();
}

} // namespace zelk
