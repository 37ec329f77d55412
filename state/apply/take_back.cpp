#include <state/apply/take_back.h>

#include <state/apply/look_schedule.h>
#include <state/apply/performer.h>
#include <state/reading/read_anew.h>

namespace zelk
{
namespace
{

class TakingBack
{
public:
    TakingBack(std::vector<Target>& targets, const DesiredIdentity& identity, const ApplyOptions& options)
        : m_targets(targets), m_identity(identity), m_options(options)
    {
    }

    /// In several rounds: a step that fails because its work is done already must not keep the others from being
    /// taken. To the letter is tried once, since no command can be told everything.
    Undo Run()
    {
        constexpr int MOST_ROUNDS = 3;
        for (int round = 0; round < MOST_ROUNDS && PerformRound(); ++round)
            for (Target& target : m_targets)
                target.exact = false;
        Await();
        return std::move(m_undo);
    }

private:
    /// False when nothing was left to do.
    bool PerformRound()
    {
        const Performer performer(m_options, false);
        const Machine now = ReadAnew();
        std::vector<Fault> faults;
        const Plan plan = MakePlan(now, m_targets, m_identity, faults);
        m_undo.open = plan.differences;
        for (const Step& step : plan.steps)
        {
            Progress progress = {.phase = Progress::Phase::UNDOING,
                                 .step = &step,
                                 .number = m_undo.steps.size() + 1,
                                 .count = plan.steps.size()};
            Report(progress);
            m_undo.steps.push_back(performer.Perform(now, step));
            progress.ended = &m_undo.steps.back();
            Report(progress);
        }
        return !plan.steps.empty();
    }

    void Report(const Progress& progress) const
    {
        if (m_options.progress)
            m_options.progress(progress);
    }

    void Await()
    {
        LookSchedule schedule(m_options.lookInterval, m_options.timeout);
        while (!m_undo.open.empty() && !schedule.IsOver())
        {
            m_undo.open = Differences(ReadAnew(), m_targets, m_identity);
            if (!m_undo.open.empty())
                schedule.AwaitNext();
        }
    }

    std::vector<Target>& m_targets;
    const DesiredIdentity& m_identity;
    const ApplyOptions& m_options;
    Undo m_undo;
};

} // namespace

Undo TakeBack(std::vector<Target> targets, const DesiredIdentity& identity, const StoredForm& storedForm,
              const ApplyOptions& options)
{
    Undo undo = TakingBack(targets, identity, options).Run();
    if (undo.open.empty() && storedForm.Restore())
        undo.open = Differences(ReadAnew(), targets, identity);
    return undo;
}

} // namespace zelk
