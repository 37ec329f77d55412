// What the library answers while the platform fails it.
//
// "zelk_torture_faults STEP SEED SECONDS" starts itself for each kind of process, so that one that crashes or hangs is
// seen. "zelk_torture_faults one SEED SECONDS LEVEL COLD WHAT" is such a process. Its figures, and what it complains
// of, stand in a file.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include <process.h>

#include "sweep.h"

namespace
{

constexpr const char* SETTINGS = "trace.ini";
constexpr const char* REPORT = "faults_report.txt";
constexpr const wchar_t* PROGRAM = L"zelk_torture_faults.exe";
constexpr const wchar_t* PROGRAM_5_2 = L"zelk_torture_faults_5_2.exe";

constexpr const char* PLANTED_FAULTS[] = {"planted leak",   "planted block", "planted file",      "planted mutex",
                                          "planted hang",   "planted crash", "planted exception", "planted answer",
                                          "planted change", "planted memory"};

/// What a process reported.
struct Report
{
    std::map<std::string, unsigned long long> figures;
    std::vector<std::string> complaints;
};

/// Only names of the tool's own.
std::string Narrow(const std::wstring& sText)
{
    return std::filesystem::path(sText).string();
}

int RunOne(wchar_t** argv)
{
    std::FILE* const pReport = std::fopen(REPORT, "w");
    if (pReport == nullptr)
        return 2;
    const std::wstring sWhat = argv[6];
    const Kind kind = {std::stod(argv[3]), static_cast<unsigned int>(std::stoul(argv[2])),
                       static_cast<unsigned int>(std::stoul(argv[4])), *argv[5] == L'1', Narrow(sWhat)};
    const bool bRight = Sweep(kind, pReport).Run();
    std::fclose(pReport);
    return bRight ? 0 : 1;
}

Report Start(const wchar_t* pszProgram, const Kind& kind)
{
    std::filesystem::remove_all("temp");
    std::filesystem::create_directory("temp");
    std::ofstream(SETTINGS) << "[Main]\nTOLVA_TraceLevel=" << kind.uiLevel << "\n";
    std::wstring sWhat = L"\"" + std::wstring(kind.sWhat.begin(), kind.sWhat.end()) + L"\"";
    const std::intptr_t code = ::_wspawnl(_P_WAIT, pszProgram, pszProgram, L"one", std::to_wstring(kind.uiSeed).c_str(),
                                          std::to_wstring(kind.dSeconds).c_str(), std::to_wstring(kind.uiLevel).c_str(),
                                          kind.bCold ? L"1" : L"0", sWhat.c_str(), nullptr);

    Report report;
    std::ifstream file(REPORT);
    for (std::string sLine; std::getline(file, sLine);)
        if (const std::size_t tab = sLine.find('\t'); tab != std::string::npos)
            report.figures[sLine.substr(0, tab)] = std::strtoull(sLine.c_str() + tab, nullptr, 10);
        else
            report.complaints.push_back(sLine);
    if (code != 0 && report.complaints.empty())
        report.complaints.push_back("a process ended with exit code " + std::to_string(code));
    return report;
}

/// Whether the tool finds every planted fault.
bool FindPlanted()
{
    bool bFound = true;
    for (const char* pszPlanted : PLANTED_FAULTS)
    {
        const Report report = Start(PROGRAM, {0, 0, 3, false, pszPlanted});
        if (!report.complaints.empty() && report.complaints.front().starts_with(pszPlanted))
            continue;
        std::cerr << "planted fault not found: " << pszPlanted << '\n';
        bFound = false;
    }
    std::cout << "planted faults found\t" << std::size(PLANTED_FAULTS) << std::endl;
    return bFound;
}

/// The kinds of process that a step takes, in each generation.
std::vector<Kind> KindsOf(const std::string& sStep, unsigned int uiSeed)
{
    constexpr bool COLD = true;
    std::vector<std::pair<unsigned int, bool>> kinds = {{3, false}, {4, false}, {3, COLD}};
    if (sStep == "load")
        kinds = {{3, COLD}, {4, COLD}};
    if (sStep == "state")
        kinds = {{3, false}};
    std::vector<Kind> all;
    for (const auto& [uiLevel, bCold] : kinds)
        all.push_back({0, uiSeed, uiLevel, bCold, sStep});
    return all;
}

bool RunAll(const std::string& sStep, unsigned int uiSeed, double dSeconds)
{
    const std::vector<Kind> kinds = KindsOf(sStep, uiSeed);
    std::map<std::string, unsigned long long> figures;
    bool bRight = true;
    for (const wchar_t* pszProgram : {PROGRAM, PROGRAM_5_2})
        for (Kind kind : kinds)
        {
            kind.dSeconds = dSeconds / static_cast<double>(2 * kinds.size());
            const Report report = Start(pszProgram, kind);
            for (const auto& [sName, ullValue] : report.figures)
                figures[sName] = sName.starts_with("operations") || sName.starts_with("platform functions")
                                     ? std::max(figures[sName], ullValue)
                                     : figures[sName] + ullValue;
            for (const std::string& sComplaint : report.complaints)
                std::cerr << (pszProgram == PROGRAM ? "" : "5.2: ") << sComplaint << '\n';
            bRight = bRight && report.complaints.empty();
        }
    for (const auto& [sName, ullValue] : figures)
        std::cout << sName << '\t' << ullValue << std::endl;
    return bRight;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const std::filesystem::path folder = std::filesystem::current_path();
    ::SetEnvironmentVariableW(L"TMP", (folder / L"temp").c_str());
    ::SetEnvironmentVariableW(L"TEMP", (folder / L"temp").c_str());
    if (argc == 7)
        return RunOne(argv);
    if (argc != 4)
        return 2;
    ::CopyFileW(PROGRAM, PROGRAM_5_2, FALSE);
    SetWindows(PROGRAM, L"win7");
    SetWindows(PROGRAM_5_2, L"winxp64");
    SetUpAdapter(AdapterGuid());
    const double dSeconds = std::stod(argv[3]);
    const bool bRight =
        FindPlanted() && RunAll(Narrow(argv[1]), static_cast<unsigned int>(std::stoul(argv[2])), dSeconds);
    std::filesystem::remove(SETTINGS); // other programs share the folder
    return bRight ? 0 : 1;
}
