// What the file ZELK_NM.DLL asks of the system that loads it, and what it offers.

#include <filesystem>
#include <regex>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include <zelk_nm/tolva.h>

#include <support/files.h>
#include <support/image.h>

using testing_support::Image;

namespace
{

TEST(DllImage, ImportsOnlyWhatTheOldestSystemHas)
{
#ifndef NDEBUG
    GTEST_SKIP() << "other builds than the release build carry parts of the compiler that are not shipped";
#endif
    const Image image(L"ZELK_NM.DLL");
    EXPECT_THAT(image.ImportsOfNewerSystems(), testing::IsEmpty());
    EXPECT_GT(image.Imports().size(), 50U);
    EXPECT_TRUE(image.IsForTheOldestSystem());
    EXPECT_LT(std::filesystem::file_size(testing_support::BesideProgram(L"ZELK_NM.DLL")), 300U * 1024)
        << "too large for a boot image";
    EXPECT_EQ(0U, image.Header().DataDirectory[IMAGE_DIRECTORY_ENTRY_TLS].Size)
        << "with thread callbacks the system goes on announcing threads";
}

TEST(DllImage, ExportsTheFacadeAndItsTypesOnly)
{
    const std::set<std::string> names = Image(L"ZELK_NM.DLL").Exports();
    const std::regex own("_ZNK?(5TOLVA|6velmor)(?!.*Wrap_)\\w+|_ZT[VIS]N6velmor\\w+");
    for (const std::string& sName : names)
        EXPECT_TRUE(std::regex_match(sName, own)) << sName;
    EXPECT_THAT(names, testing::IsSupersetOf({"_ZN5TOLVAC1Ev", "_ZN5TOLVAD1Ev", "_ZN5TOLVAaSERKS_",
                                              "_ZN5TOLVA20NIC_DEVICECLASS_GUIDE", "_ZN5TOLVA16HARDWARE_ADDRESSC1Ev",
                                              "_ZTVN6velmor10ip_addressE"}));
}

/// The comparisons take references, which no optimisation of this program folds away.
TEST(DllImage, ConstantsBindToReferences)
{
    EXPECT_EQ(velmor::string::npos, velmor::string(L"abc").find(L'd'));
    EXPECT_EQ(velmor::ip_address::INVALID_FAMILY, velmor::ip_address(velmor::string()).family());
    EXPECT_EQ(TOLVA::HARDWARE_ADDRESS::MAX_BYTES, TOLVA::HARDWARE_ADDRESS(L"1-2-3-4-5-6-7-8").size());
}

TEST(DllImage, VersionIsThatOfItsResource)
{
    velmor::string sVersion;
    EXPECT_EQ(0U, TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, sVersion));
    EXPECT_TRUE(std::regex_match(sVersion.narrow_c_str(), std::regex("\\d+\\.\\d+\\.\\d+\\.\\d+")));
}

/// As after a load for whose back end there was no memory.
TEST(Dll, AnswersWithoutABackEnd)
{
    auto* const ppBackEnd = reinterpret_cast<void**>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ZELK_NM.DLL"), "_ZN5TOLVA13m_pNetworkAPIE")));
    ASSERT_NE(nullptr, ppBackEnd);
    void* const pBackEnd = std::exchange(*ppBackEnd, nullptr);
    std::vector<TOLVA::ROUTE_INFO> Routes;
    EXPECT_FALSE(TOLVA::GetAdapterRoutes({}, Routes));
    unsigned long ulSize = 0;
    EXPECT_EQ(1U, TOLVA::GetTcp6Table(nullptr, ulSize, false));
    *ppBackEnd = pBackEnd;
}

} // namespace
