#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <state/desired/desired_state.h>
#include <state/reading/read_machine.h>

namespace zelk
{

// What a program passes to the C interface. Each of these throws ReportedError for what cannot be meant. A null text of
// options is as good as an empty object.

DesiredState DesiredStateOf(const char* text);

ReadOptions ReadOptionsOf(const char* options);

/// The names of adapters; nothing for all of them.
std::optional<std::vector<std::string>> ExportOptionsOf(const char* options);

/// Of an operation that has none.
void RefuseOptions(const char* options);

struct ConfirmOptions
{
    std::chrono::seconds timeout = std::chrono::seconds(60);
    std::string change; ///< its id; empty for all
};

ConfirmOptions ConfirmOptionsOf(const char* options);

struct ChangeOptions
{
    std::chrono::seconds timeout = std::chrono::seconds(60);
    bool keep = false;
    std::optional<std::uint32_t> confirmWithin; ///< seconds
    std::optional<IpAddress> waitFor;
    std::string label;
};

ChangeOptions ChangeOptionsOf(const char* options);

struct RestoreOptions
{
    std::chrono::seconds timeout = std::chrono::seconds(60);
    bool discard = false;
    std::string change; ///< its id; empty for all
};

RestoreOptions RestoreOptionsOf(const char* options);

} // namespace zelk
