#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "injector.h"
#include "library.h"
#include "machine.h"

/// What is tried in one process.
struct Kind
{
    double dSeconds; ///< 0: all cases
    unsigned int uiSeed;
    unsigned int uiLevel; ///< of the trace
    bool bCold;           ///< the library is loaded anew for every call
    std::string sWhat;    ///< a step, or the name of one operation

    [[nodiscard]] bool IsPlanted() const { return sWhat.starts_with(PLANTED); }
    [[nodiscard]] bool IsStep() const { return sWhat == "faults" || IsState() || IsLoading(); }
    [[nodiscard]] bool IsState() const { return sWhat == "state"; }
    [[nodiscard]] bool IsLoading() const { return sWhat == "load"; }
};

/// Calls operations with every one of their platform calls failing, alone and with all later ones, and says in a file
/// what they must not do.
class Sweep
{
public:
    Sweep(const Kind& kind, std::FILE* pReport);

    /// False where there is something to complain of. Writes its figures too.
    bool Run();

private:
    using Place = std::pair<const Slot*, std::size_t>; ///< from which a function is called
    struct Case
    {
        Plan plan;
        bool bNewThread = false;
        Place place = {};
    };

    static DWORD WINAPI Watch(void*);
    static LONG WINAPI Crashed(EXCEPTION_POINTERS* pException);
    [[noreturn]] void GiveUp(const std::string& sWhy);
    void Complain(const std::string& sWhat);

    std::vector<unsigned int> Operations();
    void TryOperations();
    void Take(unsigned int uiOperation);
    std::vector<Case> Cases();
    void Try(const Case& tried);
    void Perform(const Case& tried, Answer& answer);
    void PerformLoading(const Case& tried);
    void Judge(const Answer& answer, bool bFailed);
    void CompareResources(const Case& tried);
    Library& Loaded();
    void Unload();

    const Kind m_kind;
    std::FILE* const m_pReport;
    std::unique_ptr<Library> m_library;
    unsigned int m_uiOperation = 0;
    unsigned int m_uiComplaints = 0;
    Case m_tried;
    const Slot* m_pFailed = nullptr; ///< the first that failed in it
    Answer m_reference = {}, m_answer = {}, m_next = {};
    Resources m_before = {};
    std::set<Place> m_known;        ///< places that an operation has been tried with
    std::set<unsigned int> m_taken; ///< operations that have had a turn
    std::map<std::string, unsigned long long> m_figures;
};
