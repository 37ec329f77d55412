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
#include <support/trace.h>
#include <support/trace_file.h>
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

/// Everything is traced. No case may leave a temporary file behind.
class Tools : public testing::Test
{
protected:
    Tools()
    {
        NicInfo.sNicGuid = L"{T}";
        Name(L"Local Area Connection 2");
        Answer(0);
        TheTrace.SetTraceLevel(4);
    }
    ~Tools() override
    {
        TheTrace.SetTraceLevel(3);
        EXPECT_TRUE(std::filesystem::is_empty(temporary.Path())) << "a file is left";
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
    TraceFile trace;
    RegistryKeyScope connection{CONNECTION_KEY};
    Variable path{L"PATH", BesideProgram(L"stand_ins").wstring() + L';' + ::_wgetenv(L"PATH")};
    Variable temp{L"TMP", temporary.Text()};
    Variable standIn{L"ZELK_STAND_IN", commands.Text()};
};

TEST_F(Tools, EveryCommandArrivesToTheLetterAndTellsItsEnd)
{
    const TOLVA::ASSOC_IP_ADDR ipv4 = Assigned(L"192.0.2.10", 24);
    const TOLVA::ASSOC_IP_ADDR ipv6 = Assigned(L"2001:db8::10", 64);
    const struct
    {
        std::string sOperation;
        std::function<bool()> run;
        std::string sCommand;  ///< "#" stands for the connection
        std::string sReturned; ///< with the exit code
        std::string sAddress;  ///< the address's name in the trace, if there is one, and the address
    } rows[] = {
        {"Wrap_netsh::AddIpAddr", [&] { return Wrap_netsh::AddIpAddr(NicInfo, ipv4); },
         "netsh interface ipv4 set address # static 192.0.2.10 255.255.255.0", "netsh interface ipv4 set address",
         "sIpAddress = \"192.0.2.10\""},
        {"Wrap_netsh::AddIpAddr", [&] { return Wrap_netsh::AddIpAddr(NicInfo, ipv6); },
         "netsh interface ipv6 set address # 2001:db8::10 unicast infinite infinite persistent",
         "netsh interface ipv6 set address", "sIpAddress = \"2001:db8::10\""},
        {"Wrap_netsh::RemoveIpAddr", [&] { return Wrap_netsh::RemoveIpAddr(NicInfo, ipv4); },
         "netsh interface ipv4 delete address # 192.0.2.10", "netsh interface ipv4 delete address",
         "sIpAddress = \"192.0.2.10\""},
        {"Wrap_netsh::RemoveIpAddr", [&] { return Wrap_netsh::RemoveIpAddr(NicInfo, ipv6); },
         "netsh interface ipv6 delete address # 2001:db8::10 persistent", "netsh interface ipv6 delete address",
         "sIpAddress = \"2001:db8::10\""},
        {"Wrap_netsh::SetDnsAddr", [&] { return Wrap_netsh::SetDnsAddr(NicInfo, ipv4.IpAddress); },
         "netsh interface ipv4 set dnsservers # static 192.0.2.10", "netsh interface ipv4 set dnsserver",
         "sIpDns = \"192.0.2.10\""},
        {"Wrap_netsh::SetDnsAddr", [&] { return Wrap_netsh::SetDnsAddr(NicInfo, ipv6.IpAddress); },
         "netsh interface ipv6 set dnsservers # static 2001:db8::10", "netsh interface ipv6 set dnsserver",
         "sIpDns = \"2001:db8::10\""},
        {"Wrap_ipconfig::RenewDhcp4", [&] { return Wrap_ipconfig::RenewDhcp4(NicInfo); }, "ipconfig /renew #",
         "ipconfig /renew", ""},
        {"Wrap_ipconfig::RenewDhcp6", [&] { return Wrap_ipconfig::RenewDhcp6(NicInfo); }, "ipconfig /renew6 #",
         "ipconfig /renew6", ""},
        {"Wrap_ipconfig::ReleaseDhcp4", [&] { return Wrap_ipconfig::ReleaseDhcp4(NicInfo); }, "ipconfig /release #",
         "ipconfig /release", ""},
        {"Wrap_ipconfig::ReleaseDhcp6", [&] { return Wrap_ipconfig::ReleaseDhcp6(NicInfo); }, "ipconfig /release6 #",
         "ipconfig /release6", ""},
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
            const std::string sReturned =
                (bNetsh ? "[I] @ : " + row.sAddress + '\n' : "") + "[V] @ : " + row.sReturned + " returned : iRc = ";
            const std::string sFailed =
                bNetsh ? "[E] @ : ... ending" : "[V] @ : ... ending( " + row.sReturned + " failed )";

            Answer(0, "not of interest\r\n", "neither\r\n");
            EXPECT_TRUE(row.run());
            EXPECT_EQ(Called(row.sCommand, sName), Record());
            EXPECT_EQ(Filled(row.sOperation, sName, sReturned + "0\n[V] @ : ... ending\n"), Transcript());

            Answer(3, "first\r\n", "then an error\r\n");
            EXPECT_FALSE(row.run());
            EXPECT_EQ(Filled(row.sOperation, sName,
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
    const struct
    {
        const char* pszCase;
        std::string sOutput;
        std::vector<std::string> lines;
    } rows[] = {
        {"nothing", "", {}},
        {"both line ends", "one\r\ntwo\nthree\r\n", {"one", "two", "three"}},
        {"no end of the last line", "one\r\ntwo", {"one", "two"}},
        {"empty lines", "\r\none\n\n\r\n", {"", "one", "", ""}},
        {"a long line", sLong + "\r\nnext\r\n", {sLong, "next"}},
        {"UTF-8",
         "\xC3\x9C"
         "ber\r\n\xE6\x9C\xAC\r\n",
         {"\xC3\x9C"
          "ber",
          "\xE6\x9C\xAC"}},
        {"UTF-8 across blocks", sAcross + "\n", {sAcross}},
        {"UTF-8 with a mark", "\xEF\xBB\xBFone\n", {"one"}},
        {"UTF-16", std::string("\xFF\xFEo\0\xDC\0\r\0\n\0\x2C\x67"sv), {"o\xC3\x9C", "\xE6\x9C\xAC"}},
        {"half a UTF-16 unit", std::string("\xFF\xFEo\0\xDC"sv), {"o"}},
        // What Wine's and western systems' commands print in.
        {"the OEM code page", "a\x81\r\nb\r\n", {"a\xC3\xBC", "b"}},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.pszCase);
        Answer(1, row.sOutput);
        EXPECT_FALSE(AddIpv4());
        std::vector<std::string> lines;
        const std::string START = "[I] Wrap_netsh::AddIpAddr : sLine = \"";
        for (const std::string& sLine : trace.Lines())
            if (sLine.starts_with(START))
                lines.push_back(sLine.substr(START.size(), sLine.size() - START.size() - 1));
        EXPECT_EQ(row.lines, lines);
    }
}

TEST_F(Tools, AFileThatCannotBeDeletedIsAWarning)
{
    for (const int code : {0, 3})
    {
        Answer(code);
        std::vector<std::wstring> asked;
        {
            const auto patch = PATCH_IMPORT(DeleteFileW, [&](const wchar_t* pszFile) -> BOOL {
                asked.emplace_back(pszFile);
                ::SetLastError(ERROR_SHARING_VIOLATION);
                return FALSE;
            });
            EXPECT_EQ(code == 0, AddIpv4());
        }
        ASSERT_EQ(1U, asked.size());
        EXPECT_TRUE(std::filesystem::remove(asked.front()));
        EXPECT_EQ(Filled("Wrap_netsh::AddIpAddr", "Local Area Connection 2",
                         "[I] @ : sIpAddress = \"192.0.2.10\"\n"
                         "[V] @ : netsh interface ipv4 set address returned : iRc = " +
                             std::to_string(code) +
                             "\n[I] @ : sOut = <file>\n[W] @ : DeleteFile failed : dwLastError = 32\n" +
                             (code == 0 ? "[V] @ : ... ending\n"
                                        : "[I] @ : sIpconfigName = \"#\"\n[E] @ : ... ending : iRc = 3\n")),
                  Transcript());
    }
}

TEST_F(Tools, NothingIsRunWithoutWhatItNeeds)
{
    const TOLVA::ASSOC_IP_ADDR nothing;
    const std::string NETSH = "Wrap_netsh::AddIpAddr";
    const std::string IPCONFIG = "Wrap_ipconfig::ReleaseDhcp6";
    const std::pair<std::string, std::function<bool()>> operations[] = {
        {NETSH, [&] { return AddIpv4(); }}, {IPCONFIG, [&] { return Wrap_ipconfig::ReleaseDhcp6(NicInfo); }}};
    for (const auto& [sOperation, run] : operations)
    {
        SCOPED_TRACE(sOperation);
        Answer(0);
        NicInfo.sNicGuid = L"{NOBODY}";
        EXPECT_FALSE(run());
        NicInfo.sNicGuid = L"{T}";
        trace.ExpectLines({"[V] " + sOperation + " : starting ...", "[V] TOLVA::GetAdapterIpconfigName : starting ...",
                           "[E] TOLVA::GetAdapterIpconfigName : ... ending( Get 'Name' failed )",
                           "[E] " + sOperation + " : ... ending( TOLVA::GetAdapterIpconfigName failed )"});
        EXPECT_EQ("", Record());

        Answer(0);
        const auto patch = PATCH_IMPORT(GetTempPathW, [](auto...) -> DWORD { return 0; });
        EXPECT_FALSE(run());
        EXPECT_EQ("[E] " + sOperation + " : ... ending( TOLVA::GetTempFilename failed )", trace.Lines().back());
        EXPECT_EQ("", Record());
    }
    // An address that could not be formed is found out late, when the file is there already.
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
    Answer(0);
    EXPECT_FALSE(AddIpv4());
    EXPECT_EQ(Filled("Wrap_netsh::AddIpAddr", "Local Area Connection 2",
                     "[I] @ : sIpAddress = \"192.0.2.10\"\n"
                     "[V] @ : netsh interface ipv4 set address returned : iRc = -1\n"
                     "[I] @ : sIpconfigName = \"#\"\n[E] @ : ... ending : iRc = -1\n"),
              Transcript());
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
