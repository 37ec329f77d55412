// Stands in for a system command. The environment names a folder: "record" receives the command line and, one a line,
// its arguments; "stdout" and "stderr" are printed as they are; "exit" holds the exit code.

#include <cstdlib>

#include <support/files.h>

#include <windows.h>

namespace
{

std::string Utf8(const wchar_t* pszText)
{
    const std::u8string sText = std::filesystem::path(pszText).u8string();
    return std::string(sText.begin(), sText.end()) + '\n';
}

void Print(DWORD dwStream, const std::string& sBytes)
{
    DWORD dwWritten = 0;
    ::WriteFile(::GetStdHandle(dwStream), sBytes.data(), static_cast<DWORD>(sBytes.size()), &dwWritten, nullptr);
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    using testing_support::ReadFileBytes;
    const wchar_t* pszFolder = ::_wgetenv(L"ZELK_STAND_IN");
    if (pszFolder == nullptr)
        return 99;
    const std::filesystem::path folder(pszFolder);
    std::string sRecord = Utf8(::GetCommandLineW());
    for (int i = 1; i < argc; ++i)
        sRecord += Utf8(argv[i]);
    testing_support::WriteFileBytes(folder / L"record", sRecord);
    Print(STD_OUTPUT_HANDLE, ReadFileBytes(folder / L"stdout"));
    Print(STD_ERROR_HANDLE, ReadFileBytes(folder / L"stderr"));
    return std::atoi(ReadFileBytes(folder / L"exit").c_str());
}
