// The drivers of the system's commands. The interpreter is the real one; the commands are stand-ins on the path that
// write down how they were called.

#include <cstdlib>
#include <functional>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/registry_scope.h>
#include <support/resources.h>
#include <support/traced.h>
#include <tools/wrap_ipconfig.h>
#include <tools/wrap_netsh.h>

using namespace testing_support;

namespace
{

constexpr const wchar_t* CONNECTION_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\{T}\\Connection";

/// A variable of the process and of its C run time, for one scope.
class Variable
{
public:
    Variable(const wchar_t* pszName, const std::wstring& sValue) : m_sName(pszName)
    {
        if (const wchar_t* pszBefore = ::_wgetenv(pszName); pszBefore != nullptr)
            m_sBefore = pszBefore;
        Set(sValue);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { Set(m_sBefore); }

private:
    void Set(const std::wstring& sValue) const { ::_wputenv((m_sName + L'=' + sValue).c_str()); }

    std::wstring m_sName;
    std::wstring m_sBefore;
};

TOLVA::ASSOC_IP_ADDR Assigned(const wchar_t* pszAddress, unsigned char prefix)
{
    TOLVA::ASSOC_IP_ADDR IpAddr;
    IpAddr.IpAddress = velmor::ip_address(pszAddress);
    IpAddr.SubnetPrefix = prefix;
    return IpAddr;
}

/// What a stand-in writes down: the command line as it is and, one a line, its arguments.
std::string Called(const std::string& sCommand, const std::string& sConnection)
{
    std::string sCalled = std::regex_replace(sCommand, std::regex("#"), '"' + sConnection + '"') + '\n';
    std::istringstream words(sCommand);
    std::string sWord;
    for (words >> sWord; words >> sWord;)
        sCalled += (sWord == "#" ? sConnection : sWord) + '\n';
    return sCalled;
}

/// No case may leave a temporary file behind.
class Tools : public Traced
{
protected:
    Tools()
    {
        NicInfo.sNicGuid = L"{T}";
        Name(L"Local Area Connection 2");
        Answer(0);
    }
    ~Tools() override { EXPECT_TRUE(std::filesystem::is_empty(temporary.Path())) << "a file is left"; }

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
    /// The transcript of an operation that finds its connection's name and makes its temporary file: what follows is
    /// `sRest`. There "@" stands for the operation, "#" for the connection.
    static std::string Filled(const std::string& sOperation, const std::string& sConnection, const std::string& sRest)
    {
        const std::string sAll = R"([V] @ : starting ...
[V] TOLVA::GetAdapterIpconfigName : starting ...
[V] TOLVA::GetAdapterIpconfigName : sIpconfigName = "#"
[V] TOLVA::GetAdapterIpconfigName : ... ending
[V] @ : sIpconfigName = "#"
[V] TOLVA::GetTempFilename : starting ...
[V] TOLVA::GetTempFilename : wszTempPath = <path>
[V] TOLVA::GetTempFilename : wszTempFilename = <file>
[V] TOLVA::GetTempFilename : ... ending
[V] @ : sOut = <file>
)" + sRest;
        return std::regex_replace(std::regex_replace(sAll, std::regex("@"), sOperation), std::regex("#"), sConnection);
    }

    bool AddIpv4() { return Wrap_netsh::AddIpAddr(NicInfo, Assigned(L"192.0.2.10", 24)); }

    TOLVA::NIC_INFO NicInfo;
    TempDirectory temporary; // its name has blanks
    TempDirectory commands;
    RegistryKeyScope connection{CONNECTION_KEY};
    // Wine looks at one byte too many for a folder without its last backslash.
    Variable path{L"PATH",
                  BesideProgram(L"stand_ins").wstring() + L"\\;" + ::_wgetenv(L"SystemRoot") + L"\\system32\\"};
    Variable temp{L"TMP", temporary.Text()};
    Variable standIn{L"ZELK_STAND_IN", commands.Text()};
};

TEST_F(Tools, EveryCommandArrivesToTheLetterAndTellsItsEnd)
{
    const std::string IPV4 = "sIpAddress = \"192.0.2.10\"", IPV6 = "sIpAddress = \"2001:db8::10\"";
    const TOLVA::ASSOC_IP_ADDR ipv4 = Assigned(L"192.0.2.10", 24);
    const TOLVA::ASSOC_IP_ADDR ipv6 = Assigned(L"2001:db8::10", 64);
    const struct
    {
        std::string sOperation;
        std::function<bool()> run;
        std::string sCommand;  ///< "#" stands for the connection
        std::string sReturned; ///< with the exit code
        std::string sAddress;  ///< the address in the trace, if there is one
    } rows[] = {
        {"netsh::AddIpAddr", [&] { return Wrap_netsh::AddIpAddr(NicInfo, ipv4); },
         "interface ipv4 set address # static 192.0.2.10 255.255.255.0", "interface ipv4 set address", IPV4},
        {"netsh::AddIpAddr", [&] { return Wrap_netsh::AddIpAddr(NicInfo, ipv6); },
         "interface ipv6 set address # 2001:db8::10 unicast infinite infinite persistent", "interface ipv6 set address",
         IPV6},
        {"netsh::RemoveIpAddr", [&] { return Wrap_netsh::RemoveIpAddr(NicInfo, ipv4); },
         "interface ipv4 delete address # 192.0.2.10", "interface ipv4 delete address", IPV4},
        {"netsh::RemoveIpAddr", [&] { return Wrap_netsh::RemoveIpAddr(NicInfo, ipv6); },
         "interface ipv6 delete address # 2001:db8::10 persistent", "interface ipv6 delete address", IPV6},
        {"netsh::SetDnsAddr", [&] { return Wrap_netsh::SetDnsAddr(NicInfo, ipv4.IpAddress); },
         "interface ipv4 set dnsservers # static 192.0.2.10", "interface ipv4 set dnsserver",
         "sIpDns = \"192.0.2.10\""},
        {"netsh::SetDnsAddr", [&] { return Wrap_netsh::SetDnsAddr(NicInfo, ipv6.IpAddress); },
         "interface ipv6 set dnsservers # static 2001:db8::10", "interface ipv6 set dnsserver",
         "sIpDns = \"2001:db8::10\""},
        {"ipconfig::RenewDhcp4", [&] { return Wrap_ipconfig::RenewDhcp4(NicInfo); }, "/renew #", "/renew", ""},
        {"ipconfig::RenewDhcp6", [&] { return Wrap_ipconfig::RenewDhcp6(NicInfo); }, "/renew6 #", "/renew6", ""},
        {"ipconfig::ReleaseDhcp4", [&] { return Wrap_ipconfig::ReleaseDhcp4(NicInfo); }, "/release #", "/release", ""},
        {"ipconfig::ReleaseDhcp6", [&] { return Wrap_ipconfig::ReleaseDhcp6(NicInfo); }, "/release6 #", "/release6",
         ""},
    };
    const std::pair<const wchar_t*, std::string> connections[] = {
        {L"Local Area Connection 2", "Local Area Connection 2"},
        {L"\x041B\x0412\x0421 & \x672C\x5730", "\xD0\x9B\xD0\x92\xD0\xA1 & \xE6\x9C\xAC\xE5\x9C\xB0"}};
    for (const auto& row : rows)
        for (const auto& [pszName, sName] : connections)
        {
            SCOPED_TRACE(row.sCommand + " for " + sName);
            Name(pszName);
            const bool bNetsh = !row.sAddress.empty();
            const std::string sProgram = bNetsh ? "netsh " : "ipconfig ";
            const std::string sReturned = (bNetsh ? "[I] @ : " + row.sAddress + '\n' : "") + "[V] @ : " + sProgram +
                                          row.sReturned + " returned : iRc = ";
            const std::string sFailed =
                bNetsh ? "[E] @ : ... ending" : "[V] @ : ... ending( ipconfig " + row.sReturned + " failed )";

            Answer(0, "not of interest\r\n", "neither\r\n");
            EXPECT_TRUE(row.run());
            EXPECT_EQ(Called(sProgram + row.sCommand, sName), Record());
            EXPECT_EQ(Filled("Wrap_" + row.sOperation, sName, sReturned + "0\n[V] @ : ... ending\n"), Transcript());

            Answer(3, "first\r\n", "then an error\r\n");
            EXPECT_FALSE(row.run());
            EXPECT_EQ(Filled("Wrap_" + row.sOperation, sName,
                             sReturned + "3\n[I] @ : sLine = \"first\"\n[I] @ : sLine = \"then an error\"\n" +
                                 "[I] @ : sIpconfigName = \"#\"\n" + sFailed + " : iRc = 3\n"),
                      Transcript());
        }
}

TEST_F(Tools, OutputOfAFailedCommandIsTracedLineByLine)
{
    using namespace std::string_view_literals;
    const std::string sLong(100000, 'x');
    const std::string sAcross = std::string(4095, 'x') + "\xC3\x9C"; // where a reader by blocks would cut
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"", {}},
        {"one\r\ntwo\nthree\r\n", {"one", "two", "three"}},
        {"one\r\ntwo", {"one", "two"}},
        {"\r\none\n\n\r\n", {"", "one", "", ""}},
        {sLong + "\r\nnext\r\n", {sLong, "next"}},
        {sAcross + "\n", {sAcross}},
        {"\xEF\xBB\xBFone\n", {"one"}}, // UTF-8 with a mark
        {std::string("\xFF\xFEo\0\xDC\0\r\0\n\0\x2C\x67"sv), {"o\xC3\x9C", "\xE6\x9C\xAC"}},
        {std::string("\xFF\xFEo\0\xDC"sv), {"o"}},
        {"a\x81\r\nb\r\n", {"a\xC3\xBC", "b"}}}; // the OEM code page, in which Wine's and western commands print
    for (const auto& [sOutput, expected] : rows)
    {
        Answer(1, sOutput);
        EXPECT_FALSE(AddIpv4());
        std::vector<std::string> lines;
        const std::string START = "[I] Wrap_netsh::AddIpAddr : sLine = \"";
        for (const std::string& sLine : trace.Lines())
            if (sLine.starts_with(START))
                lines.push_back(sLine.substr(START.size(), sLine.size() - START.size() - 1));
        EXPECT_EQ(expected, lines) << sOutput.substr(0, 20);
    }
}

TEST_F(Tools, AFileThatCannotBeDeletedIsAWarning)
{
    for (const int code : {0, 3})
    {
        Answer(code);
        std::wstring sAsked;
        {
            const auto patch = PATCH_IMPORT(DeleteFileW, [&](const wchar_t* pszFile) -> BOOL {
                sAsked += pszFile;
                ::SetLastError(ERROR_SHARING_VIOLATION);
                return FALSE;
            });
            EXPECT_EQ(code == 0, AddIpv4());
        }
        EXPECT_TRUE(std::filesystem::remove(sAsked)) << "asked once";
        EXPECT_NE(
            std::string::npos,
            Transcript().find("\n[I] Wrap_netsh::AddIpAddr : sOut = <file>\n[W] Wrap_netsh::AddIpAddr : DeleteFile "
                              "failed : dwLastError = 32\n"));
    }
}

TEST_F(Tools, NothingIsRunWithoutWhatItNeeds)
{
    const std::pair<std::string, std::function<bool()>> operations[] = {
        {"Wrap_netsh::AddIpAddr", [&] { return AddIpv4(); }},
        {"Wrap_ipconfig::ReleaseDhcp6", [&] { return Wrap_ipconfig::ReleaseDhcp6(NicInfo); }}};
    for (const auto& [sOperation, run] : operations)
    {
        const std::string START = "[E] " + sOperation + " : ... ending( TOLVA::";
        Answer(0);
        NicInfo.sNicGuid = L"{NOBODY}";
        EXPECT_FALSE(run());
        NicInfo.sNicGuid = L"{T}";
        EXPECT_EQ("[E] TOLVA::GetAdapterIpconfigName : ... ending( Get 'Name' failed )\n" + START +
                      "GetAdapterIpconfigName failed )\n",
                  trace.Complaints());

        const auto patch = PATCH_IMPORT(GetTempPathW, [](auto...) -> DWORD { return 0; });
        EXPECT_FALSE(run());
        EXPECT_EQ(START + "GetTempFilename failed )", trace.Lines().back());
    }
    // An address that could not be formed is found out late, when the file is there already.
    const TOLVA::ASSOC_IP_ADDR nothing = Assigned(L"none", 0);
    Answer(0);
    EXPECT_FALSE(Wrap_netsh::AddIpAddr(NicInfo, nothing));
    EXPECT_FALSE(Wrap_netsh::RemoveIpAddr(NicInfo, nothing));
    EXPECT_FALSE(Wrap_netsh::SetDnsAddr(NicInfo, nothing.IpAddress));
    EXPECT_EQ("", Record());
    EXPECT_TRUE(std::regex_search(Transcript(), std::regex("sOut = <file>\n\\[E\\] Wrap_netsh::AddIpAddr : "
                                                           "\\.\\.\\. ending\\( .+ \\)\n")))
        << Transcript();
}

TEST_F(Tools, WithoutAnInterpreterTheCommandHasFailed)
{
    const Variable nowhere(L"PATH", commands.Text());
    EXPECT_FALSE(AddIpv4());
    EXPECT_TRUE(trace.Has("[V] Wrap_netsh::AddIpAddr : netsh interface ipv4 set address returned : iRc = -1"));
    EXPECT_EQ("[E] Wrap_netsh::AddIpAddr : ... ending : iRc = -1\n", trace.Complaints());
}

TEST_F(Tools, OutOfMemoryNeitherLeavesAFileNorHidesTheResult)
{
    // Without an interpreter, so that there is time for every single allocation.
    TheTrace.SetTraceLevel(1);
    const TOLVA::ASSOC_IP_ADDR IpAddr = Assigned(L"192.0.2.10", 24);
    for (const int code : {0, 1})
        // The C++ run time needs memory for its first throw without memory: two failures leave it that.
        for (const unsigned int uiFailures : {1U, 2U, ~0U})
        {
            bool bRun = false;
            // Only the arguments that come first matter to it.
            const ImportPatch<std::intptr_t (*)(int, const wchar_t*)> patch("_wspawnlp",
                                                                            [&](int, const wchar_t*) -> std::intptr_t {
                                                                                bRun = true;
                                                                                return code;
                                                                            });
            AllocationWatch watch;
            unsigned int uiFailed = 0;
            for (;; ++uiFailed)
            {
                bRun = false;
                watch.Fail(uiFailed + 1, uiFailures);
                const bool bRc = Wrap_netsh::AddIpAddr(NicInfo, IpAddr);
                watch.Rest();
                ASSERT_EQ(bRun && code == 0, bRc) << uiFailed;
                ASSERT_TRUE(std::filesystem::is_empty(temporary.Path())) << uiFailed;
                if (!watch.HasFailed())
                    break;
            }
            EXPECT_GT(uiFailed, 20U);
            EXPECT_TRUE(bRun);
        }
}

} // namespace
