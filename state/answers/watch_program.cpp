#include <state/answers/watch_program.h>

#include <state/platform/utf8.h>

namespace zelk
{

WatchProgram MakeWatchProgram(const std::wstring& tool, const std::wstring& library)
{
    return {tool, {library}, FromUtf8(WATCH_VERB)};
}

} // namespace zelk
