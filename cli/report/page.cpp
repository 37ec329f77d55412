#include "report/page.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>

#include <winsock2.h>

#include <windows.h>

#include <state/answers/library_version.h>
#include <state/pending/utc_time.h>

#include "system/system_error.h"

namespace zelkctl
{
namespace
{

constexpr std::string_view PLACE_OF_DATA = "@DATA@";
constexpr std::string_view MARK = "<meta name=\"generator\" content=\"zelkctl report\">";
constexpr int VERSION_OF_DATA = 1;

std::string_view Template()
{
    const HRSRC hResource = ::FindResourceW(nullptr, L"PAGE", MAKEINTRESOURCEW(10)); // RCDATA
    const HGLOBAL hPage = hResource != nullptr ? ::LoadResource(nullptr, hResource) : nullptr;
    if (hPage == nullptr)
        throw SystemError("loading the page from the tool");
    return {static_cast<const char*>(::LockResource(hPage)), ::SizeofResource(nullptr, hResource)};
}

/// JSON that can stand in a script element: only inside texts are there letters that would mean something to HTML.
std::string Embeddable(const Json& data)
{
    std::string text;
    for (const char c : data.dump(-1, ' ', true, Json::error_handler_t::replace))
        if (c == '<')
            text += "\\u003c";
        else if (c == '>')
            text += "\\u003e";
        else if (c == '&')
            text += "\\u0026";
        else
            text += c;
    return text;
}

} // namespace

std::string MakePage(Json machines)
{
    const Json data = {{"schemaVersion", VERSION_OF_DATA},
                       {"generated", zelk::UtcNow()},
                       {"tool", zelk::ReadLibraryVersion().version},
                       {"machines", std::move(machines)}};
    std::string page(Template());
    return page.replace(page.find(PLACE_OF_DATA), PLACE_OF_DATA.size(), Embeddable(data));
}

bool IsPage(const std::wstring& sPath)
{
    std::ifstream file(std::filesystem::path(sPath), std::ios::binary);
    std::array<char, 512> beginning = {};
    file.read(beginning.data(), beginning.size());
    return std::string_view(beginning.data(), static_cast<std::size_t>(file.gcount())).find(MARK) !=
           std::string_view::npos;
}

} // namespace zelkctl
