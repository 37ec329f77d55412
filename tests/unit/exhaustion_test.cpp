#include <new>

#include <support/files.h>
#include <support/resources.h>
#include <support/traced.h>
#include <zelk_nm/tolva.h>

using namespace testing_support;
using velmor::string;

namespace
{

using Exhaustion = Traced;

void ThrowAndCatch()
{
    try
    {
        throw std::bad_alloc();
    }
    catch (const std::bad_alloc&)
    {
        SUCCEED();
    }
}

/// The C++ run time takes some memory for good at its first throw, and again at its first throw without memory.
void WarmUpThrowing()
{
    ThrowAndCatch();
    AllocationWatch watch;
    watch.Fail(1);
    ThrowAndCatch();
}

/// Runs the operation with one allocation after the other failing, alone and with all that follow, until it gets by
/// without. `Operation` returns
/// whether its result is right: the true one, or the one that stands for a failure.
template <class Operation>
void FailEveryAllocation(const char* pszName, Operation operation)
{
    SCOPED_TRACE(pszName);
    WarmUpThrowing();
    ASSERT_TRUE(operation()); // the platform keeps some things from the first call
    for (const unsigned int failures : {1U, 1000000U})
    {
        const unsigned int handles = CountHandles();
        AllocationWatch watch;
        unsigned int n = 0;
        bool bFailed = true;
        while (bFailed && n < 3000)
        {
            watch.Fail(++n, failures);
            const bool bRight = operation();
            bFailed = watch.HasFailed();
            watch.Rest();
            const std::size_t live = watch.Live();
            ASSERT_TRUE(bRight) << "allocation " << n;
            ASSERT_EQ(0U, live) << "leak when allocation " << n << " fails";
        }
        EXPECT_FALSE(bFailed) << "endless";
        EXPECT_LT(1U, n) << "nothing was allocated, so nothing was tried";
        EXPECT_EQ(handles, CountHandles());
    }
}

TEST_F(Exhaustion, NoExceptionLeavesAnOperationAndNothingLeaks)
{
    FailEveryAllocation("GetAdapterList", [] {
        std::vector<TOLVA::NIC_INFO> list;
        return TOLVA::GetAdapterList(list) || list.size() < 1000;
    });
}

TEST_F(Exhaustion, FilesAndVersions)
{
    FailEveryAllocation("GetTempFilename", [] {
        const wchar_t* const pszBefore = L"before";
        string sFile(pszBefore, 6);
        const bool bMade = TOLVA::GetTempFilename(sFile);
        ::DeleteFileW(sFile.c_str());
        return bMade != (std::wcscmp(sFile.c_str(), pszBefore) == 0);
    });
    FailEveryAllocation("GetResourceVersionStr", [] {
        static const string MODULE(L"kernel32.dll"); // too long for the inline buffer
        string sVersion;
        TOLVA::GetResourceVersionStr(MODULE, sVersion);
        return sVersion.empty() || std::wcscmp(sVersion.c_str(), L"Error") == 0 || sVersion.find(L'.') != string::npos;
    });
    FailEveryAllocation("GetLogDir", [] {
        string sDir;
        return TOLVA::GetLogDir(sDir) != sDir.empty();
    });
    FailEveryAllocation("GetModuleProperty", [] {
        string sText;
        return (TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION, sText) == 0) != sText.empty();
    });
    FailEveryAllocation("TOLVA", [] { return TOLVA(), true; });
}

TEST_F(Exhaustion, ConversionsGoOnWithoutTheirTrace)
{
    TheTrace.SetTraceLevel(4);
    constexpr unsigned char BYTES[] = {1, 2, 3, 4, 5, 6};
    static const string ADDRESS(L"01-02-03-04-05-06");
    static const velmor::ip_address LOCAL(string("127.0.0.1"));
    FailEveryAllocation("conversions", [&] {
        return TOLVA::ConvertIpAddressToDword(LOCAL) == 0x7F000001 && TOLVA::ConvertPrefixToNetmask(24).is_ipv4() &&
               TOLVA::ConvertNetmaskToPrefix(TOLVA::ConvertPrefixToNetmask(24)) == 24 &&
               TOLVA::Convert_SOCKADDR_INET(TOLVA::Convert_SOCKADDR_INET(LOCAL)) == LOCAL &&
               TOLVA::HARDWARE_ADDRESS(BYTES, 6) == TOLVA::HARDWARE_ADDRESS(ADDRESS);
    });
}

} // namespace
