#pragma once

#include <concepts>
#include <type_traits>
#include <variant>

#include <support/trace/trace.h>
#include <zelk_nm/ip_address.h>
#include <zelk_nm/string.h>

/// The address's text; "<invalid>" where there is none. Unlike the conversion itself it does not throw NetworkError.
velmor::string TextOf(const velmor::ip_address& address);

/// How one operation speaks: every line that it traces is written under its name, and its two exits trace the end and
/// return the result. Texts travel as literals; nothing is built and nothing allocated for a line whose level is
/// masked.
class CallFrame
{
public:
    /// A number that is traced in hexadecimal.
    struct Hex
    {
        unsigned long long value;
    };
    struct Bytes
    {
        const void* pBytes;
        unsigned int count;
    };

    /// Traces "starting ...".
    explicit CallFrame(const char* pszName) noexcept : CallFrame(pszName, Silent()) { Verbose("starting ..."); }

    /// The frame of something that traces single lines only.
    static CallFrame WithoutStart(const char* pszName) noexcept { return CallFrame(pszName, Silent()); }

    bool Succeed() const noexcept
    {
        Verbose("... ending");
        return true;
    }

    /// Traces "... ending( reason )".
    bool Fail(const char* pszReason) const noexcept
    {
        Ending(TRACE_ERROR, pszReason);
        return false;
    }
    /// Traces "... ending( reason )" with a value, such as the platform's result code.
    template <class T>
    bool Fail(const char* pszReason, const char* pszVariable, const T& value) const noexcept
    {
        if (TheTrace.IsWritten(TRACE_ERROR))
            WriteEnding(TRACE_ERROR, pszReason, pszVariable, ToValue(value));
        return false;
    }
    /// For an ending that departs from the common form: the text stands in full where it is used.
    template <class... Args>
    bool FailAs(const Args&... args) const noexcept
    {
        Say(TRACE_ERROR, args...);
        return false;
    }
    /// "... ending( note )" at a level of its own.
    void Ending(TRACE_LEVEL level, const char* pszNote) const noexcept
    {
        if (TheTrace.IsWritten(level))
            WriteEnding(level, pszNote, nullptr, {});
    }

    // With one argument a message; with two a variable and its value; with three a message, a variable and its value.
    template <class... Args>
    void Verbose(const Args&... args) const noexcept
    {
        Say(TRACE_VERBOSE, args...);
    }
    template <class... Args>
    void Information(const Args&... args) const noexcept
    {
        Say(TRACE_INFORMATION, args...);
    }
    template <class... Args>
    void Warning(const Args&... args) const noexcept
    {
        Say(TRACE_WARNING, args...);
    }
    template <class... Args>
    void Error(const Args&... args) const noexcept
    {
        Say(TRACE_ERROR, args...);
    }

    // The same at a level that a table gives.
    void Say(TRACE_LEVEL level, const char* pszMessage) const noexcept
    {
        if (TheTrace.IsWritten(level))
            WriteMessage(level, pszMessage);
    }
    template <class T>
    void Say(TRACE_LEVEL level, const char* pszVariable, const T& value) const noexcept
    {
        if (TheTrace.IsWritten(level))
            WriteVariable(level, nullptr, pszVariable, ToValue(value));
    }
    template <class T>
    void Say(TRACE_LEVEL level, const char* pszMessage, const char* pszVariable, const T& value) const noexcept
    {
        if (TheTrace.IsWritten(level))
            WriteVariable(level, pszMessage, pszVariable, ToValue(value));
    }

    /// To be called in a handler: turns the exception that is being handled into a traced failure.
    bool FailUnforeseen() const noexcept;

private:
    struct Silent
    {
    };
    /// Anything that has a text form, made only when the line is written.
    struct Convertible
    {
        const void* pObject;
        velmor::string (*pConvert)(const void* pObject);
    };
    using Value = std::variant<bool, long long, double, Hex, Bytes, const char*, const wchar_t*, const velmor::string*,
                               Convertible>;

    CallFrame(const char* pszName, Silent) noexcept : m_pszName(pszName) {}

    template <class T>
    static Value ToValue(const T& value) noexcept
    {
        if constexpr (std::same_as<T, velmor::string>)
            return &value;
        else if constexpr (std::same_as<T, velmor::ip_address>)
            return Convertible{&value, [](const void* p) { return TextOf(*static_cast<const T*>(p)); }};
        else if constexpr (std::is_class_v<T> && std::convertible_to<const T&, velmor::string>)
            return Convertible{&value, [](const void* p) -> velmor::string { return *static_cast<const T*>(p); }};
        else if constexpr ((std::integral<T> && !std::same_as<T, bool>) || std::is_enum_v<T>)
            return static_cast<long long>(value);
        else
            return value;
    }

    void WriteMessage(TRACE_LEVEL level, const char* pszMessage) const noexcept;
    void WriteVariable(TRACE_LEVEL level, const char* pszMessage, const char* pszVariable,
                       const Value& value) const noexcept;
    /// Without a variable the reason alone.
    void WriteEnding(TRACE_LEVEL level, const char* pszReason, const char* pszVariable,
                     const Value& value) const noexcept;

    const char* m_pszName;
};

/// Runs the body of an exported operation in its call frame. No exception gets past it.
template <class Body>
bool RunOperation(const char* pszName, Body&& body) noexcept
{
    const CallFrame frame(pszName);
    try
    {
        return body(frame);
    }
    catch (...)
    {
        return frame.FailUnforeseen();
    }
}
