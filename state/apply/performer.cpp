#include <state/apply/performer.h>

#include <state/apply/ipv6_binding.h>
#include <state/apply/library_call.h>
#include <state/apply/look_schedule.h>
#include <state/apply/process.h>
#include <state/apply/stored_routes.h>
#include <state/apply/stored_settings.h>
#include <state/platform/system_message.h>
#include <state/platform/utf8.h>
#include <state/reading/read_anew.h>

namespace zelk
{
namespace
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::string ErrorText(const std::string& function, std::uint32_t code)
{
    const std::string message = SystemMessage(code);
    return function + " failed with error " + std::to_string(code) + (message.empty() ? "." : ": " + message);
}

/// Does one step.
class Work
{
public:
    Work(const ApplyOptions& options, const Performer& performer) : m_options(options), m_performer(performer) {}

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
        const ProcessResult process = RunSystemProgram(FromUtf8(file), arguments, m_options.timeout,
                                                       [this] { return m_performer.IsCancelled(); });
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
        LookSchedule schedule(m_options.lookInterval, m_options.timeout);
        for (;;)
        {
            const Machine machine = ReadAnew();
            const Adapter* const adapter = FindAdapter(machine, guid);
            if ((adapter != nullptr && adapter->index) || schedule.IsOver() || m_performer.IsCancelled())
                return;
            schedule.AwaitNext();
        }
    }

    const ApplyOptions& m_options;
    const Performer& m_performer;
};

} // namespace

StepResult Performer::Perform(const Machine& machine, const Step& step) const
{
    return Work(m_options, *this).Perform(machine, step);
}

} // namespace zelk
