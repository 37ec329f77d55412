#include <state/platform/system_message.h>

#include <string_view>

#include <state/platform/handles.h>
#include <state/platform/utf8.h>

namespace zelk
{

std::string SystemMessage(std::uint32_t code)
{
    constexpr DWORD FLAGS = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                            FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    wchar_t* buffer = nullptr; // allocated by the call, whose parameter is a text all the same
    const DWORD length = ::FormatMessageW(FLAGS, nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    const UniqueLocalText owner(buffer);
    std::wstring_view text(buffer != nullptr ? buffer : L"", length);
    while (!text.empty() && text.back() <= L' ')
        text.remove_suffix(1);
    return ToUtf8(text);
}

std::string SystemText(std::uint32_t code)
{
    std::string text = SystemMessage(code);
    if (text.ends_with('.'))
        text.pop_back();
    const std::string number = std::to_string(code);
    return text.empty() ? "error " + number : text + " (" + number + ')';
}

} // namespace zelk
