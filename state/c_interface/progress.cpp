#include <state/c_interface/progress.h>

namespace zelk
{
namespace
{

Json EventOf(const Progress& progress)
{
    if (progress.step == nullptr)
        return {{"event", "verifying"}};
    return {{"event", progress.ended != nullptr ? "stepEnded" : "stepBegun"},
            {"undoing", progress.phase == Progress::Phase::UNDOING},
            {"number", progress.number},
            {"count", progress.count},
            {"step", progress.ended != nullptr ? ToJson(*progress.ended) : ToJson(*progress.step)}};
}

} // namespace

ApplyOptions ProgressCallback::Options(std::chrono::seconds timeout)
{
    ApplyOptions options;
    options.timeout = timeout;
    if (m_callback == nullptr)
        return options;
    options.progress = [this](const Progress& progress) { Tell(progress); };
    options.isCancelled = [this] { return IsCancelled(); };
    return options;
}

void ProgressCallback::Tell(const Progress& progress)
{
    const std::string event = EventOf(progress).dump(-1, ' ', false, Json::error_handler_t::replace);
    if (m_callback(m_context, event.c_str()) != 0)
        m_cancelled = true;
}

bool ProgressCallback::IsCancelled()
{
    m_cancelled = m_cancelled || m_callback(m_context, nullptr) != 0;
    return m_cancelled;
}

} // namespace zelk
