// The drivers of the system's commands. The interpreter is the real one; the commands are stand-ins on the path that
// write down how they were called.

#include <cstdlib>
#include <functional>
#include <optional>
#include <regex>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/registry_scope.h>
#include <support/traced.h>
#include <tools/wrap_ipconfig.h>
#include <tools/wrap_netsh.h>

using namespace testing_support;

namespace
{

constexpr const wchar_t* CONNECTION_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\{T}\\Connection";

/// A variable of the process and of its C run time; each case sets those that it needs.
void SetVariable(const std::wstring& sName, const std::wstring& sValue)
{
    ::_wputenv((sName + L'=' + sValue).c_str());
}

TOLVA::ASSOC_IP_ADDR Assigned(const wchar_t* pszAddress, unsigned char prefix)
{
    TOLVA::ASSOC_IP_ADDR IpAddr;
    IpAddr.IpAddress = velmor::ip_address(pszAddress);
    IpAddr.SubnetPrefix = prefix;
    return IpAddr;
}

/// No case may leave a temporary file behind.
class Tools : public Traced
{
protected:
    Tools()
    {
        // Wine looks at one byte too many for a folder without its last backslash.
        SetVariable(L"PATH",
                    BesideProgram(L"stand_ins").wstring() + L"\\;" + ::_wgetenv(L"SystemRoot") + L"\\system32\\");
        SetVariable(L"TMP", temporary.Text());
        SetVariable(L"ZELK_STAND_IN", commands.Text());
        NicInfo.sNicGuid = L"{T}";
        Name(L"Local Area Connection 2");
        Answer(0);
    }
    ~Tools() override
    {
        EXPECT_TRUE(std::filesystem::is_empty(temporary.Path())) << "a file is left";
        SetVariable(L"TMP", before);
    }

    void Name(const wchar_t* pszName) const { connection.Set(L"", L"Name", StringData(pszName)); }
    void Answer(int code, std::string_view sOutput = {}, std::string_view sErrors = {}) const
    {
        WriteFileBytes(commands / L"exit", std::to_string(code));
        WriteFileBytes(commands / L"stdout", sOutput);
        WriteFileBytes(commands / L"stderr", sErrors);
        std::filesystem::remove(commands / L"record");
        trace.Empty();
    }
    /// How the command was called; nothing when it was not. The interpreter leaves the blanks around the redirection.
    [[nodiscard]] std::string Record() const
    {
        return std::regex_replace(ReadFileBytes(commands / L"record"), std::regex(" +\n"), "\n");
    }

    /// The trace without the mask's conversion, and with names for what differs from run to run.
    [[nodiscard]] std::string Transcript() const
    {
        std::string sText;
        for (const std::string& sLine : trace.Lines())
            if (!sLine.starts_with("[V] TOLVA::Convert"))
                sText += sLine + '\n';
        sText = std::regex_replace(sText, std::regex("wszTempPath = \"[^\"\n]*\""), "wszTempPath = <path>");
        return std::regex_replace(sText, std::regex(" = \"[^\"\n]*\\\\TOL[0-9A-Fa-f]+\\.tmp\""), " = <file>");
    }
    bool AddIpv4() { return Wrap_netsh::AddIpAddr(NicInfo, Assigned(L"192.0.2.10", 24)); }

    TOLVA::NIC_INFO NicInfo;
    const std::wstring before = ::_wgetenv(L"TMP");
    TempDirectory temporary; // its name has blanks
    TempDirectory commands;
    RegistryKeyScope connection{CONNECTION_KEY};
};

TEST_F(Tools, EveryCommandArrivesToTheLetterAndTellsItsEnd)
{
    const TOLVA::ASSOC_IP_ADDR ipv4 = Assigned(L"192.0.2.10", 24), ipv6 = Assigned(L"2001:db8::10", 64);
    const std::function<bool()> operations[] = {[&] { return Wrap_netsh::AddIpAddr(NicInfo, ipv4); },
                                                [&] { return Wrap_netsh::AddIpAddr(NicInfo, ipv6); },
                                                [&] { return Wrap_netsh::RemoveIpAddr(NicInfo, ipv4); },
                                                [&] { return Wrap_netsh::RemoveIpAddr(NicInfo, ipv6); },
                                                [&] { return Wrap_netsh::SetDnsAddr(NicInfo, ipv4.IpAddress); },
                                                [&] { return Wrap_netsh::SetDnsAddr(NicInfo, ipv6.IpAddress); },
                                                [&] { return Wrap_ipconfig::RenewDhcp4(NicInfo); },
                                                [&] { return Wrap_ipconfig::RenewDhcp6(NicInfo); },
                                                [&] { return Wrap_ipconfig::ReleaseDhcp4(NicInfo); },
                                                [&] { return Wrap_ipconfig::ReleaseDhcp6(NicInfo); }};
    for (const auto& run : operations)
        for (const wchar_t* pszName : {L"Local Area Connection 2", L"\x041B\x0412\x0421 & \x672C\x5730"})
            for (const int code : {0, 3})
            {
                Name(pszName);
                Answer(code, "first\r\n", "then an error\r\n");
                golden->Line("== exit code", code);
                golden->Line("=", run());
                golden->Line(Record() + Transcript());
            }
}

TEST_F(Tools, OutputOfAFailedCommandIsTracedLineByLine)
{
    using namespace std::string_view_literals;
    const std::string sLong(100000, 'x');
    const std::string sAcross = std::string(4095, 'x') + "\xC3\x9C"; // where a reader by blocks would cut
    const std::string OUTPUTS[] = {"",
                                   "one\r\ntwo\nthree\r\n",
                                   "one\r\ntwo",
                                   "\r\none\n\n\r\n",
                                   sLong + "\r\nnext\r\n",
                                   sAcross + "\n",
                                   "\xEF\xBB\xBFone\n", // UTF-8 with a mark
                                   std::string("\xFF\xFEo\0\xDC\0\r\0\n\0\x2C\x67"sv),
                                   std::string("\xFF\xFEo\0\xDC"sv),
                                   "a\x81\r\nb\r\n"}; // the OEM code page, in which Wine's and western commands print
    for (const std::string& sOutput : OUTPUTS)
    {
        Answer(1, sOutput);
        EXPECT_FALSE(AddIpv4());
        golden->Line("== output of", sOutput.size());
        for (const std::string& sLine : trace.Lines())
            if (sLine.find("sLine = ") != std::string::npos)
                golden->Line(sLine.size(),
                             sLine.size() < 99 ? sLine : sLine.substr(0, 50) + sLine.substr(sLine.size() - 9));
    }
}

TEST_F(Tools, AFileThatCannotBeDeletedIsAWarning)
{
    for (const int code : {0, 3})
    {
        Answer(code);
        int iAsked = 0;
        const auto patch = PATCH_IMPORT(DeleteFileW, [&](auto original, const wchar_t* pszFile) -> BOOL {
            EXPECT_TRUE(original(pszFile));
            ++iAsked;
            ::SetLastError(ERROR_SHARING_VIOLATION);
            return FALSE;
        });
        golden->Line("== exit code", code, AddIpv4());
        golden->Line("asked", iAsked, Transcript());
    }
}

TEST_F(Tools, NothingIsRunWithoutWhatItNeeds)
{
    const auto Run = [&](const std::string& sTitle, const std::function<bool()>& run) {
        Answer(0);
        golden->Line("==", sTitle);
        golden->Line("=", run());
        golden->Line(Record() + Transcript());
    };
    const std::function<bool()> operations[] = {[&] { return AddIpv4(); },
                                                [&] { return Wrap_ipconfig::ReleaseDhcp6(NicInfo); }};
    for (const auto& run : operations)
    {
        NicInfo.sNicGuid = L"{NOBODY}";
        Run("no name", run);
        NicInfo.sNicGuid = L"{T}";
        const auto patch = PATCH_IMPORT(GetTempPathW, [](auto...) -> DWORD {
            ::SetLastError(5);
            return 0;
        });
        Run("no file", run);
    }
    // An address that could not be formed is found out late, when the file is there already.
    const TOLVA::ASSOC_IP_ADDR nothing = Assigned(L"none", 0);
    Run("no address", [&] { return Wrap_netsh::AddIpAddr(NicInfo, nothing); });
    Run("no address", [&] { return Wrap_netsh::RemoveIpAddr(NicInfo, nothing); });
    Run("no server", [&] { return Wrap_netsh::SetDnsAddr(NicInfo, nothing.IpAddress); });
}

TEST_F(Tools, WithoutAnInterpreterTheCommandHasFailed)
{
    SetVariable(L"PATH", commands.Text());
    EXPECT_FALSE(AddIpv4());
    golden->Line(Transcript());
}

/// What a command did is done, whatever cannot be had afterwards.
TEST_F(Tools, OutOfMemoryNeitherLeavesAFileNorHidesTheResult)
{
    TheTrace.SetTraceLevel(1);
    const TOLVA::ASSOC_IP_ADDR IpAddr = Assigned(L"192.0.2.10", 24);
    for (const int code : {0, 1})
    {
        bool bFailed = true;
        for (int n = 1; bFailed; ++n)
        {
            bool bRun = false;
            bFailed = false;
            // Only the arguments that come first matter to it.
            const ImportPatch<std::intptr_t (*)(int, const wchar_t*)> spawn(
                "_wspawnlp", [&](int, const wchar_t*) -> std::intptr_t { return bRun = true, code; });
            std::optional<ImportPatch<void* (*)(std::size_t)>> malloc;
            malloc.emplace("malloc", [&, left = n](auto original, std::size_t size) mutable -> void* {
                return --left == 0 ? bFailed = true, nullptr : original(size);
            });
            const bool bRc = Wrap_netsh::AddIpAddr(NicInfo, IpAddr);
            malloc.reset();
            ASSERT_EQ(bRun && code == 0, bRc) << n;
            ASSERT_TRUE(std::filesystem::is_empty(temporary.Path())) << n;
            EXPECT_TRUE(bFailed || n > 20);
        }
    }
}

} // namespace
