#include <support/golden.h>

namespace testing_support
{

std::string Show(std::wstring_view sText)
{
    std::string sBytes(sText.size() * 3, '\0');
    sBytes.resize(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, sText.data(),
                                                                 static_cast<int>(sText.size()), sBytes.data(),
                                                                 static_cast<int>(sBytes.size()), nullptr, nullptr)));
    return sBytes;
}

} // namespace testing_support
