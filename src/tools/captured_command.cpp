#include <tools/captured_command.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <process.h>

#include <support/platform/text_file.h>

namespace
{

constexpr std::size_t MOST_ARGUMENTS = 16;
using ArgumentVector = std::array<const wchar_t*, MOST_ARGUMENTS>;

velmor::string Quoted(const velmor::string& sText)
{
    return L"\"" + sText + L"\"";
}

template <std::size_t... Index>
int RunAndWait(const ArgumentVector& arguments, std::index_sequence<Index...>)
{
    // The list ends at its first null. The run time joins the arguments with blanks and quotes nothing, so the
    // interpreter sees the redirection as such.
    return static_cast<int>(::_wspawnlp(_P_WAIT, L"CMD", L"CMD", arguments[Index]..., nullptr));
}

int RunInterpreter(const std::vector<velmor::string>& arguments)
{
    ArgumentVector pointers = {};
    for (std::size_t i = 0; i < arguments.size(); ++i)
        pointers.at(i) = arguments[i].c_str();
    return RunAndWait(pointers, std::make_index_sequence<MOST_ARGUMENTS>());
}

} // namespace

velmor::string SystemCommand::Name() const
{
    constexpr const wchar_t* VALUES[] = {nullptr, CONNECTION, ADDRESS, NETMASK};
    if (pszName != nullptr)
        return pszName;
    velmor::string sName;
    for (const wchar_t* pszWord : words)
    {
        if (std::find(std::begin(VALUES), std::end(VALUES), pszWord) != std::end(VALUES))
            break;
        if (!sName.empty())
            sName += L' ';
        sName += pszWord;
    }
    return sName;
}

CapturedCommand::~CapturedCommand()
{
    if (!m_sOut.empty())
        ::DeleteFileW(m_sOut.c_str());
}

bool CapturedCommand::Prepare(const TOLVA::NIC_INFO& NicInfo)
{
    if (!TOLVA::GetAdapterIpconfigName(NicInfo, m_sConnection))
        return m_frame.Fail("TOLVA::GetAdapterIpconfigName failed");
    m_frame.Verbose("sIpconfigName", m_sConnection);
    if (!TOLVA::GetTempFilename(m_sOut))
        return m_frame.Fail("TOLVA::GetTempFilename failed");
    m_frame.Verbose("sOut", m_sOut);
    return true;
}

bool CapturedCommand::Run(const SystemCommand& command, const velmor::string& sAddress, const velmor::string& sNetmask)
{
    // Before it runs: once it has, no lack of memory may hide how it ended.
    const velmor::string sReturned = command.Name() + L" returned";
    const velmor::string sFailed =
        command.bNamedInFailure ? L"... ending( " + command.Name() + L" failed )" : velmor::string(L"... ending");
    const char* const pszReturned = sReturned.narrow_c_str();
    const char* const pszFailed = sFailed.narrow_c_str();

    const int iRc = RunInterpreter(Arguments(command, sAddress, sNetmask));
    m_frame.Verbose(pszReturned, "iRc", iRc);
    if (iRc != 0)
        TraceOutput();
    DeleteOutput();
    if (iRc == 0)
        return m_frame.Succeed();

    m_frame.Information("sIpconfigName", m_sConnection);
    m_frame.Say(command.failedLevel, pszFailed, "iRc", iRc);
    return false;
}

std::vector<velmor::string> CapturedCommand::Arguments(const SystemCommand& command, const velmor::string& sAddress,
                                                       const velmor::string& sNetmask) const
{
    std::vector<velmor::string> arguments = {L"/C"};
    for (const wchar_t* pszWord : command.words)
    {
        if (pszWord == nullptr)
            break;
        if (pszWord == SystemCommand::CONNECTION)
            arguments.push_back(Quoted(m_sConnection));
        else if (pszWord == SystemCommand::ADDRESS)
            arguments.push_back(sAddress);
        else if (pszWord == SystemCommand::NETMASK)
            arguments.push_back(sNetmask);
        else
            arguments.emplace_back(pszWord);
    }
    arguments.insert(arguments.end(), {L">", Quoted(m_sOut), L"2>&1"});
    return arguments;
}

void CapturedCommand::TraceOutput() const noexcept
try
{
    velmor::TextFile output(m_sOut);
    velmor::string sLine;
    while (output.ReadLine(sLine))
        m_frame.Information("sLine", sLine);
}
catch (...)
{
    // Out of memory: the output is for diagnosis alone, and the command's end is still to be told.
}

void CapturedCommand::DeleteOutput()
{
    if (!::DeleteFileW(m_sOut.c_str()))
    {
        const DWORD dwLastError = ::GetLastError();
        m_frame.Information("sOut", m_sOut);
        m_frame.Warning("DeleteFile failed", "dwLastError", dwLastError);
    }
    m_sOut = L"";
}
