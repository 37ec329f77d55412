#include "sweep.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <set>
#include <sstream>

namespace
{

constexpr unsigned int ALL = ~0U;
constexpr unsigned int CONSTRUCTOR = 0; ///< TOLVA(), which reads the level of the trace and empties its file
constexpr unsigned int AFTER_LOADING = 4;

Sweep* pSweep;
std::atomic<ULONGLONG> ullBegin = 0; ///< of the case, or 0

/// The first part of an answer's text that is unlike the reference's, and that; empty where both are the same.
std::string Difference(const Answer& answer, const Answer& reference)
{
    std::istringstream first(answer.text), second(reference.text);
    for (std::string sFirst, sSecond; std::getline(first, sFirst, ';') && std::getline(second, sSecond, ';');)
        if (sFirst != sSecond)
            return sFirst + "; instead of " + sSecond;
    return {};
}

bool IsAllowed(const Answer& answer, const std::string& sDifference)
{
    std::string sParts = answer.allowed;
    for (const char* psz = std::strtok(sParts.data(), "^!|"); psz != nullptr; psz = std::strtok(nullptr, "|"))
        if (*psz == '*' || sDifference.starts_with(psz))
            return true;
    return sDifference.empty();
}

/// What is more than before, as text.
std::string Growth(const Resources& before, const Resources& now)
{
    std::string sText;
    const auto Add = [&](std::size_t first, std::size_t second, const char* pszName) {
        if (second > first)
            sText += " " + std::to_string(second - first) + " " + pszName;
    };
    Add(before.uiHandles, now.uiHandles, "handles");
    Add(before.blocks, now.blocks, "blocks");
    Add(before.files, now.files, "files");
    return sText;
}

} // namespace

Sweep::Sweep(const Kind& kind, std::FILE* pReport) : m_kind(kind), m_pReport(pReport)
{
    pSweep = this;
    if (kind.IsState())
        injector::LeaveMemory(); // without any the process is ended, by contract
    pAborted = [] { pSweep->GiveUp("it called abort"); };
    ::SetUnhandledExceptionFilter(&Crashed);
    ::CloseHandle(::CreateThread(nullptr, 0, &Watch, nullptr, 0, nullptr));
}

DWORD WINAPI Sweep::Watch(void*)
{
    const ULONGLONG ullLimit = pSweep->m_kind.IsPlanted() ? 2000 : 30000;
    for (;; ::Sleep(500))
        if (const ULONGLONG ull = ullBegin; ull != 0 && ::GetTickCount64() - ull > ullLimit)
            pSweep->GiveUp("it did not return in time");
}

LONG WINAPI Sweep::Crashed(EXCEPTION_POINTERS* pException)
{
    const EXCEPTION_RECORD& record = *pException->ExceptionRecord;
    char text[64];
    std::snprintf(text, sizeof(text), "it crashed with %lX at %p", record.ExceptionCode, record.ExceptionAddress);
    pSweep->GiveUp(text);
}

void Sweep::GiveUp(const std::string& sWhy)
{
    static std::atomic<bool> bGivesUp = false;
    if (!bGivesUp.exchange(true)) // what it says can fail too
        Complain(sWhy);
    ::TerminateProcess(::GetCurrentProcess(), 1);
    std::abort();
}

void Sweep::Complain(const std::string& sWhat)
{
    const Plan& plan = m_tried.plan;
    std::fprintf(m_pReport, "%s (trace level %u, %s library, %s thread), failure of call %u%s (%s) in way %u: %s\n",
                 m_reference.name, m_kind.uiLevel, m_kind.bCold ? "new" : "used", m_tried.bNewThread ? "new" : "main",
                 plan.uiFirst, plan.uiLast == ALL ? " and all later calls" : "",
                 m_pFailed != nullptr ? m_pFailed->sName.c_str() : "no call failed", plan.uiWay, sWhat.c_str());
    std::fflush(m_pReport);
    ++m_uiComplaints;
}

bool Sweep::Run()
{
    TryOperations();
    m_library.reset();
    const injector::Counts counts = injector::Count();
    m_figures["platform calls"] = counts.ullAll;
    m_figures["failures injected"] = counts.ullFailures;
    m_figures["platform functions that can fail"] = counts.slots;
    for (const auto& [sName, ullValue] : m_figures)
        std::fprintf(m_pReport, "%s\t%llu\n", sName.c_str(), ullValue);
    return m_uiComplaints == 0;
}

/// What this process is to try.
std::vector<unsigned int> Sweep::Operations()
{
    std::vector<unsigned int> operations;
    for (unsigned int i = 0; Loaded().Name(i, m_reference); ++i)
        if (m_kind.IsStep() ? !std::string(m_reference.name).starts_with(PLANTED) : m_kind.sWhat == m_reference.name)
            operations.push_back(i);
    m_figures["operations"] = operations.size();
    if (m_kind.IsLoading())
        operations.resize(1);
    return operations;
}

/// All cases of all operations, or at random until the time is over: first those of places that are still to be tried.
void Sweep::TryOperations()
{
    constexpr std::size_t CASES_A_TURN = 16;
    const bool bRandom = m_kind.dSeconds > 0;
    const unsigned int uiMost = m_kind.IsPlanted() ? 1 : 20; // complaints
    std::mt19937 random(m_kind.uiSeed);
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(m_kind.dSeconds);
    const auto IsOver = [&] {
        return m_uiComplaints >= uiMost || (bRandom && std::chrono::steady_clock::now() >= end);
    };
    std::vector<unsigned int> operations = Operations();
    if (bRandom)
        std::shuffle(operations.begin(), operations.end(), random);
    for (std::size_t i = 0; (bRandom || i < operations.size()) && !IsOver(); ++i)
    {
        Take(operations[i % operations.size()]);
        std::vector<Case> cases = Cases();
        if (bRandom)
        {
            std::shuffle(cases.begin(), cases.end(), random);
            std::stable_partition(cases.begin(), cases.end(),
                                  [&](const Case& one) { return !m_known.contains(one.place); });
            cases.resize(std::min(cases.size(), CASES_A_TURN));
        }
        for (const Case& tried : cases)
            if (!IsOver())
                Try(tried);
    }
}

Library& Sweep::Loaded()
{
    if (m_library == nullptr)
    {
        injector::Arm({});
        m_library = std::make_unique<Library>(m_kind.IsState());
        if (m_kind.uiLevel == 4 && !m_kind.IsState())
            m_library->Call(CONSTRUCTOR, false, false, m_next);
    }
    return *m_library;
}

void Sweep::Unload()
{
    if (!m_kind.bCold)
        return;
    injector::Arm({});
    m_library.reset();
}

/// From now on this operation is tried. Without failures it always gives the same answer: at its first turn in both
/// kinds of thread.
void Sweep::Take(unsigned int uiOperation)
{
    m_uiOperation = m_kind.IsLoading() ? AFTER_LOADING : uiOperation;
    m_tried = {};
    m_pFailed = nullptr;
    ullBegin = ::GetTickCount64();
    const unsigned int uiCalls = m_taken.insert(uiOperation).second ? 3 : 1;
    for (unsigned int i = 0; i < uiCalls; ++i)
    {
        Loaded().Call(m_uiOperation, i == 1, false, m_answer);
        if (i == 0)
            m_reference = m_answer;
        Judge(m_answer, false);
        Unload();
    }
    ullBegin = 0;
    if (!m_reference.bResult)
        m_figures[std::string("fails on this machine in any case: ") + m_reference.name] = 1;
    if (m_kind.IsLoading())
        std::snprintf(m_reference.name, sizeof(m_reference.name), "loading");
    m_before = CountResources();
}

/// Every call that can fail, in every way, once and with all later ones. Of those from one and the same place the first
/// two and the last one are enough, and a place in which operations meet is tried so with one of them, and with the
/// others in one way.
std::vector<Sweep::Case> Sweep::Cases()
{
    Perform({}, m_answer);
    const std::vector<Call> calls = injector::Recorded();
    Unload();
    std::map<Place, std::vector<unsigned int>> places;
    for (unsigned int i = 0; i < calls.size(); ++i)
        places[{calls[i].pSlot, calls[i].place}].push_back(i + 1);
    m_figures["call sites of the platform"] += places.size();

    std::vector<Case> cases;
    for (const auto& [place, numbers] : places)
    {
        const unsigned int first = numbers.front();
        const unsigned int second = numbers[std::min<std::size_t>(1, numbers.size() - 1)];
        const auto ways = static_cast<unsigned int>(place.first->pFailures->size());
        const bool bKnown = m_kind.dSeconds == 0 && !m_known.insert(place).second;
        if (bKnown && m_kind.uiLevel == 4)
            continue; // a line more of the trace
        if (bKnown)
            cases.push_back({{first, cases.size() % 2 == 0 ? first : ALL, first % ways}, first % 2 == 0, place});
        else
            for (const unsigned int n : std::set{first, second, numbers.back()})
                for (unsigned int way = 0; way < ways; ++way)
                    for (const unsigned int last : {n, ALL})
                        cases.push_back({{n, last, way}, (n + way) % 2 == 0, place});
    }
    m_before = CountResources();
    return cases;
}

void Sweep::Try(const Case& tried)
{
    if (m_kind.IsState())
        SetUpAdapter(AdapterGuid()); // what could not be taken back before is no fault of this case
    m_tried = tried;
    m_known.insert(tried.place);
    ullBegin = ::GetTickCount64();
    Perform(tried, m_answer);
    m_pFailed = injector::Count().pFirstFailed;
    Judge(m_answer, m_pFailed != nullptr);
    m_figures[m_answer.bResult ? "cases answered true" : "cases answered false"]++;
    // The next call is as if nothing had been, but for a function that a new library has sought in vain.
    Loaded().Call(m_uiOperation, false, false, m_next);
    if (!m_kind.bCold || m_answer.bResult || *m_answer.allowed != '^')
        Judge(m_next, false);
    Unload();
    CompareResources(tried);
    ullBegin = 0;

    constexpr unsigned long long CASES_A_TRACE_FILE = 500;
    if (++m_figures["cases"] % CASES_A_TRACE_FILE == 0 && !m_kind.bCold && !m_kind.IsState())
    {
        Loaded().Call(CONSTRUCTOR, false, false, m_next);
        m_before = CountResources();
    }
}

void Sweep::Perform(const Case& tried, Answer& answer)
{
    if (m_kind.IsLoading())
        return PerformLoading(tried);
    Library& library = Loaded();
    injector::Arm(tried.plan);
    library.Call(m_uiOperation, tried.bNewThread, true, answer);
}

/// Loading may be refused. What is loaded answers something to everything, and goes again.
void Sweep::PerformLoading(const Case& tried)
{
    constexpr unsigned int GROUPS = 6;
    injector::Arm(tried.plan);
    Library library(false);
    m_answer = m_reference;
    m_answer.bResult = library.IsLoaded();
    m_answer.bUnchanged = true;
    for (unsigned int i = tried.plan.uiFirst % GROUPS; library.IsLoaded(); i += GROUPS)
    {
        if (!library.Call(i, tried.bNewThread, false, m_next) || std::string(m_next.name).starts_with(PLANTED))
            break;
        if (m_next.bException)
            Complain(std::string("an exception left ") + m_next.name);
    }
}

void Sweep::Judge(const Answer& answer, bool bFailed)
{
    const std::string sDifference = Difference(answer, m_reference);
    if (answer.bException)
        Complain("an exception left the operation");
    else if (!bFailed && (answer.bResult != m_reference.bResult || !sDifference.empty()))
        Complain(std::string("without a failure it ") + (answer.bResult ? "succeeded" : "failed") +
                 ", unlike before: " + sDifference);
    else if (answer.bResult && !IsAllowed(answer, sDifference))
        Complain("it succeeded with " + sDifference);
    else if (!answer.bResult && !answer.bUnchanged && *answer.allowed != '!')
        Complain("it failed, but changed its arguments: " + sDifference);
}

/// What the platform keeps from its first use is not taken for a leak: that comes again each time.
void Sweep::CompareResources(const Case& tried)
{
    constexpr int REPEATS = 10;
    Resources now = CountResources();
    if (!now.bTraceFree)
        Complain("the mutex of the trace was not released");
    for (int i = 0; !Growth(m_before, now).empty(); ++i)
    {
        if (i == REPEATS)
        {
            Complain("it leaks each time:" + Growth(m_before, now));
            break;
        }
        m_before = now;
        Perform(tried, m_next);
        Unload();
        now = CountResources();
    }
    m_before = now;
}
