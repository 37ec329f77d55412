#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zelk
{

/// How one of the system's commands has ended.
struct ProcessResult
{
    std::uint32_t error = 0;               ///< Windows error code of what could not be done to start or follow it
    const char* function = "";             ///< the function that gave the error
    std::optional<std::uint32_t> exitCode; ///< absent where it did not end by itself
    bool timedOut = false;
    bool cancelled = false;
    std::string output; ///< the beginning of what it wrote on both streams, as UTF-8
};

/// Starts a program of the system's directory, without a command interpreter, a window or input, and waits until it
/// ends. When the time is over or `isCancelled` says so it is ended together with everything that it has started. A
/// program that the system could not start or initialize has done nothing and is started once more.
ProcessResult RunSystemProgram(const std::wstring& file, const std::vector<std::wstring>& arguments,
                               std::chrono::milliseconds timeout, const std::function<bool()>& isCancelled);

} // namespace zelk
