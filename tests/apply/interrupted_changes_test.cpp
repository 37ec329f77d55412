// Changes whose processes are ended: whichever of them, and wherever, the machine can be taken back to the letter.

#include <iostream>

#include "pending_changes.h"
#include "stepped_program.h"
#include "torture_budget.h"

namespace
{

/// Which processes are ended: the one that makes the change, the one that watches over it, or both.
enum class Victim
{
    STARTER,
    WATCHER,
    BOTH
};

class Interrupted : public Pending
{
protected:
    /// A stop, and who is ended there.
    struct Point
    {
        std::string sStop;
        Victim victim;
    };

    void SetUp() override
    {
        Pending::SetUp();
        WriteFileBytes(BesideProgram(L"many.json"), MANY_STEPS);
    }

    /// Whether every point of a change of many steps is wanted, or a sample of the points of one of a few.
    static bool IsWhole() { return TortureBudget().IsWhole(); }

    /// All of them, or a sample that has some of each.
    template <class T>
    static std::vector<T> Chosen(const std::vector<T>& points, std::size_t sample)
    {
        if (IsWhole() || points.size() < sample)
            return points;
        std::vector<T> chosen;
        for (std::size_t i = 0; i < sample; ++i)
            chosen.push_back(points[(points.size() - 1) * i / (sample - 1)]);
        return chosen;
    }

    static std::wstring Line(const std::wstring& sArguments)
    {
        return L'"' + BesideProgram(L"zelkctl.exe").wstring() + L"\" " + sArguments;
    }

    static std::wstring Change()
    {
        return IsWhole() ? L"apply \"" + BesideProgram(L"many.json").wstring() + L'"' : CHANGE;
    }

    static void End(const Handle& process)
    {
        ::TerminateProcess(process.get(), 0);
        AwaitEndOf(process);
    }

    /// The next zelkctl names what is pending, and can take it back.
    void ExpectTakenBack() const
    {
        if (!ListPending().empty())
        {
            EXPECT_THAT(Run(L"adapter list").sErr, HasSubstr(" is pending. "));
            EXPECT_EQ(0U, Run(L"restore --yes").dwExitCode);
        }
        EXPECT_TRUE(ListPending().empty());
        EXPECT_EQ(m_sBefore, Standing());
        while (const Handle watcher = Watcher())
            AwaitEndOf(watcher);
    }

    static std::vector<Point> PointsOf(const std::wstring& sChange)
    {
        std::vector<Point> points;
        SteppedProgram program(Line(sChange));
        program.Run([&](const std::string& sStop) {
            points.push_back({sStop, Victim::STARTER});
            if (Watcher())
                points.insert(points.end(), {{sStop, Victim::WATCHER}, {sStop, Victim::BOTH}});
            return true;
        });
        return points;
    }

    /// Makes the change, but for who is ended on the way.
    static void MakeInterrupted(const std::wstring& sChange, const Point& point)
    {
        SteppedProgram starter(Line(sChange));
        Handle watcher;
        const auto exitCode = starter.Run([&](const std::string& sStop) {
            if (sStop != point.sStop)
                return true;
            watcher = Watcher();
            if (point.victim != Victim::STARTER)
                End(watcher);
            return point.victim == Victim::WATCHER;
        });
        if (point.victim == Victim::STARTER && watcher)
        {
            AwaitEndOf(watcher);
            EXPECT_TRUE(ListPending().empty()) << "who watches restores at once";
        }
        if (point.victim == Victim::WATCHER)
        {
            EXPECT_EQ(0U, exitCode);
            EXPECT_TRUE(ListPending().at(0)["watched"]) << "another one watches now";
        }
    }
};

TEST_F(Interrupted, ChangesCanBeTakenBackFromEveryPoint)
{
    const std::wstring sChange = Change() + L" --confirm-within 600";
    Run(sChange); // so that there is something to clean up before the next one
    ExpectTakenBack();
    const auto points = PointsOf(sChange);
    EXPECT_NE(m_sBefore, Standing());
    ExpectTakenBack();
    for (const Point& point : Chosen(points, 10))
    {
        SCOPED_TRACE(point.sStop + ", victim " + testing::PrintToString(point.victim));
        MakeInterrupted(sChange, point);
        ExpectTakenBack();
    }
    std::cout << "figure: points where processes are ended\t" << points.size() << '\n';
}

/// By a person, and by who watches when the time is over.
TEST_F(Interrupted, RestoringCanBeTakenUpAgainFromEveryPoint)
{
    const auto person = [] { return SteppedProgram(Line(L"restore --yes")); };
    const auto watcher = [] { return SteppedProgram(Watcher()); };
    const std::pair<const wchar_t*, std::function<SteppedProgram()>> restorers[] = {{L"600", person}, {L"2", watcher}};
    for (const auto& [pszSeconds, begin] : restorers)
    {
        const auto restore = [&](const SteppedProgram::AtStop& atStop) {
            EXPECT_EQ(0U, Run(Change() + L" --confirm-within " + pszSeconds).dwExitCode);
            if (pszSeconds == std::wstring_view(L"600"))
                End(Watcher());
            begin().Run(atStop);
            ExpectTakenBack();
        };
        std::vector<std::string> stops;
        restore([&](const std::string& sStop) {
            stops.push_back(sStop);
            return true;
        });
        for (const std::string& sStop : Chosen(stops, 3))
        {
            SCOPED_TRACE(sStop + " of " + testing::PrintToString(std::wstring(pszSeconds)));
            restore([&](const std::string& sAt) { return sAt != sStop; });
        }
        std::cout << stops.size() << " points\n";
    }
}

} // namespace
