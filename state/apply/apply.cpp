#include <state/apply/apply.h>

#include <algorithm>
#include <future>
#include <thread>

#include <state/apply/ipv6_binding.h>
#include <state/apply/library_call.h>
#include <state/apply/process.h>
#include <state/apply/stored_form.h>
#include <state/apply/stored_routes.h>
#include <state/apply/stored_settings.h>
#include <state/desired/standing.h>
#include <state/plan/restore.h>
#include <state/platform/system_message.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>

namespace zelk
{
namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds INTERVAL(200);

/// On a thread of its own: some systems keep what they have read of the resolver's settings for each thread.
Machine ReadAnew()
{
    return std::async(std::launch::async, [] { return ReadMachine(); }).get();
}

std::string ErrorText(const std::string& function, std::uint32_t code)
{
    const std::string message = SystemMessage(code);
    return function + " failed with error " + std::to_string(code) + (message.empty() ? "." : ": " + message);
}

/// Does single steps.
class Performer
{
public:
    Performer(const ApplyOptions& options, bool cancellable) : m_options(options), m_cancellable(cancellable) {}

    StepResult Perform(const Machine& machine, const Step& step) const
    {
        StepResult result;
        result.step = step;
        result.outcome = StepOutcome::DONE;
        const auto start = Clock::now();
        std::visit([&](const auto& action) { Do(action, machine, result); }, step.action);
        result.duration = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
        return result;
    }

    [[nodiscard]] bool IsCancelled() const { return m_cancellable && m_options.isCancelled && m_options.isCancelled(); }

private:
    static void Fail(StepResult& result, StepOutcome outcome, std::string reason)
    {
        result.outcome = outcome;
        result.reason = std::move(reason);
    }

    void Do(const Command& command, const Machine&, StepResult& result) const
    {
        std::vector<std::wstring> arguments;
        for (const std::string& argument : command.arguments)
            arguments.push_back(FromUtf8(argument));
        const std::string file = MeansOf(result.step.action);
        const ProcessResult process =
            RunSystemProgram(FromUtf8(file), arguments, m_options.timeout, [this] { return IsCancelled(); });
        result.exitCode = process.exitCode;
        result.error = process.error;
        result.output = process.output;
        if (process.timedOut)
            Fail(result, StepOutcome::TIMED_OUT, file + " did not end in time and was ended.");
        else if (process.cancelled)
            Fail(result, StepOutcome::CANCELLED, file + " was ended because the change was cancelled.");
        else if (process.error != 0)
            Fail(result, StepOutcome::FAILED, ErrorText(process.function, process.error));
        else if (process.exitCode != 0u)
            Fail(result, StepOutcome::FAILED,
                 file + " ended with exit code " + std::to_string(*process.exitCode) + '.');
    }

    void Do(const LibraryCall& call, const Machine& machine, StepResult& result) const
    {
        const Adapter* const adapter = result.step.guid ? FindAdapter(machine, *result.step.guid) : nullptr;
        if (result.step.guid && adapter == nullptr)
            return Fail(result, StepOutcome::FAILED, "The adapter has gone.");
        const auto explain = m_options.watchLibrary ? m_options.watchLibrary() : nullptr;
        if (!Call(call, adapter))
            return Fail(result, StepOutcome::FAILED,
                        MeansOf(result.step.action) + " failed" + (explain ? ": " + explain() : std::string()) + '.');
        if (call.operation == LibraryOperation::ENABLE_ADAPTER ||
            call.operation == LibraryOperation::SET_HARDWARE_ADDRESS)
            AwaitDevice(*result.step.guid);
    }

    void Do(const StoredRoute& route, const Machine&, StepResult& result) const
    {
        result.error = ChangeStoredRoute(route);
        if (result.error != 0)
            Fail(result, StepOutcome::FAILED, ErrorText("Changing the stored routes", result.error));
    }

    void Do(const StoredSetting& setting, const Machine&, StepResult& result) const
    {
        result.error = ChangeStoredSetting(*result.step.guid, setting);
        if (result.error != 0)
            Fail(result, StepOutcome::FAILED, ErrorText("Changing the registry", result.error));
    }

    void Do(const Ipv6Binding& binding, const Machine&, StepResult& result) const
    {
        result.error = BindIpv6(*result.step.guid, binding.wanted);
        if (result.error != 0)
            Fail(result, StepOutcome::FAILED, ErrorText("INetCfg", result.error));
    }

    /// A device takes a moment until the protocols know it. If they never do, the next step says so.
    void AwaitDevice(const Guid& guid) const
    {
        const auto end = Clock::now() + m_options.timeout;
        for (;;)
        {
            const Machine machine = ReadAnew();
            const Adapter* const adapter = FindAdapter(machine, guid);
            if ((adapter != nullptr && adapter->index) || Clock::now() >= end || IsCancelled())
                return;
            std::this_thread::sleep_for(INTERVAL);
        }
    }

    const ApplyOptions& m_options;
    bool m_cancellable;
};

/// One change from its first step to its verification or to the state before.
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
        m_result.open = m_plan.items;
        if (m_plan.steps.empty() && m_plan.items.empty())
            return m_result;
        if (m_before.environment.elevated == false)
        {
            m_result.outcome = Outcome::NEEDS_ELEVATION;
            return m_result;
        }
        m_result.outcome = PerformAll();
        if (m_result.outcome == Outcome::CHANGED)
            m_result.outcome = Complete();
        if (m_result.outcome != Outcome::CHANGED && m_result.outcome != Outcome::NOT_VERIFIED)
            Abandon();
        return m_result;
    }

private:
    void Report(Progress::Phase phase, const Step* step = nullptr, std::size_t number = 0, std::size_t count = 0) const
    {
        if (m_options.progress)
            m_options.progress({phase, step, number, count});
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
            Report(Progress::Phase::PERFORMING, &step, m_result.steps.size() + 1, m_plan.steps.size());
            m_result.steps.push_back(performer.Perform(m_before, step));
            outcome = OutcomeOf(m_result.steps.back().outcome);
        }
        return outcome;
    }

    /// A command that replaces addresses can take routes with it that are to stay: what has not come back by itself
    /// after a moment is made again.
    Outcome Complete()
    {
        constexpr milliseconds MOMENT(2000);
        m_result.changed = true;
        Report(Progress::Phase::VERIFYING);
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
        const auto end = Clock::now() + timeout;
        for (;;)
        {
            m_result.now = ReadAnew();
            m_result.open = Differences(m_result.now, m_plan.targets, m_plan.identity);
            ExpectLeases();
            if (m_result.open.empty())
                return Outcome::CHANGED;
            if (m_options.isCancelled && m_options.isCancelled())
                return Outcome::CANCELLED;
            if (Clock::now() >= end)
                return Outcome::NOT_VERIFIED;
            std::this_thread::sleep_for(INTERVAL);
        }
    }

    void Abandon()
    {
        const bool touched = std::ranges::any_of(
            m_result.steps, [](const StepResult& one) { return one.outcome != StepOutcome::NOT_RUN; });
        if (touched && !m_options.keep)
            TakeBack();
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

    /// In several rounds: a step that fails because its work is done already must not keep the others from being taken.
    /// To the letter is tried once, since no command can be told everything; the registry's letters are put right at
    /// the end.
    void TakeBack()
    {
        constexpr int MOST_ROUNDS = 3;
        auto targets = RestoredTargets(m_before, StepsRun());
        const auto identity = RestoredIdentity(m_before, StepsRun());
        Undo& undo = m_result.undo.emplace();
        const Performer performer(m_options, false);
        for (int round = 0; round < MOST_ROUNDS; ++round)
        {
            const Machine now = ReadAnew();
            std::vector<Fault> faults;
            const Plan plan = MakePlan(now, targets, identity, faults);
            undo.open = plan.items;
            if (plan.steps.empty())
                break;
            for (const Step& step : plan.steps)
            {
                Report(Progress::Phase::UNDOING, &step, undo.steps.size() + 1, plan.steps.size());
                undo.steps.push_back(performer.Perform(now, step));
            }
            for (Target& target : targets)
                target.exact = false;
        }
        const auto end = Clock::now() + m_options.timeout;
        while (!undo.open.empty() && Clock::now() < end)
        {
            undo.open = Differences(ReadAnew(), targets, identity);
            if (!undo.open.empty())
                std::this_thread::sleep_for(INTERVAL);
        }
        if (undo.open.empty())
            m_storedForm.Restore();
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
