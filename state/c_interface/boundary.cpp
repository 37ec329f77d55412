#include <state/c_interface/boundary.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include <state/answers/reports.h>

namespace zelk
{
namespace
{

/// Given where there is no memory for another text.
char outOfMemory[] =
    R"({"kind":"failed","exitCode":1,"operation":null,"adapter":null,"reason":"out of memory","hint":null})";

char* TextOf(const Json& json)
{
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    auto* const copy = static_cast<char*>(std::malloc(text.size() + 1)); // NOLINT(*-no-malloc): the receiver may be C
    if (copy == nullptr)
        throw std::bad_alloc();
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

ErrorReport CurrentReport()
{
    try
    {
        throw;
    }
    catch (const ReportedError& error)
    {
        return error.Report();
    }
    catch (const StateError& error)
    {
        return ReportOf(error);
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& error)
    {
        return {.reason = error.what()};
    }
}

} // namespace

int GiveAnswer(const Answer& answer, char** result)
{
    if (result != nullptr)
        *result = TextOf(answer.value);
    return answer.code;
}

int GiveCurrentError(char** error) noexcept
{
    try
    {
        const ErrorReport report = CurrentReport();
        if (error != nullptr)
            *error = TextOf(ToJson(report));
        return report.code;
    }
    catch (...)
    {
        if (error != nullptr)
            *error = outOfMemory;
        return EXIT_OPERATION_FAILED;
    }
}

void FreeText(char* text) noexcept
{
    if (text != outOfMemory)
        std::free(text); // NOLINT(*-no-malloc)
}

} // namespace zelk
