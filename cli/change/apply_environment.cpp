#include "change/apply_environment.h"

#include "adapters/library_call.h"
#include "change/change_text.h"

namespace zelkctl
{

zelk::ApplyOptions ApplyEnvironment::Options(std::chrono::seconds timeout) const
{
    zelk::ApplyOptions options;
    options.timeout = timeout;
    options.isCancelled = &InterruptGuard::IsInterrupted;
    options.watchLibrary = [] { return [pTrace = std::make_shared<TraceReader>()] { return Explanation(*pTrace); }; };
    options.progress = [pDisplay = m_pDisplay](const zelk::Progress& progress) {
        if (progress.ended != nullptr)
            return;        // the next line comes soon enough
        pDisplay->reset(); // the old line goes before the new one comes
        *pDisplay = std::make_unique<ProgressDisplay>(TextOf(progress));
    };
    return options;
}

} // namespace zelkctl
