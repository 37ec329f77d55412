#pragma once

#include <support/platform/handles.h>
#include <support/platform/module_function.h>
#include <support/trace/call_frame.h>

/// A function of a library that not every system has, and what the trace says of the two. The last error is told with
/// what is missing.
struct LoadedFunctionTexts
{
    const wchar_t* pszLibrary;
    const char* pszFunction;
    const char* pszConstructor; ///< the name under which the next two stand
    const char* pszNoLibrary;
    const char* pszNoFunction;
    const char* pszDestructor; ///< the name under which the next one stands
    const char* pszFreed;
};

/// Such a function, with its library loaded for as long as the object lives.
template <class Function>
class LoadedFunction
{
public:
    explicit LoadedFunction(const LoadedFunctionTexts& texts) noexcept
        : m_texts(texts), m_hModule(::LoadLibraryW(texts.pszLibrary))
    {
        const CallFrame frame = CallFrame::WithoutStart(texts.pszConstructor);
        if (!m_hModule)
        {
            frame.Error(texts.pszNoLibrary, "dwLastError", ::GetLastError());
            return;
        }
        m_pFunction = velmor::FindFunction<Function>(m_hModule.Get(), texts.pszFunction);
        if (m_pFunction == nullptr)
            frame.Error(texts.pszNoFunction, "dwLastError", ::GetLastError());
    }
    LoadedFunction(const LoadedFunction&) = delete;
    LoadedFunction& operator=(const LoadedFunction&) = delete;
    ~LoadedFunction()
    {
        if (m_hModule)
            CallFrame::WithoutStart(m_texts.pszDestructor).Verbose(m_texts.pszFreed);
    }

    /// Null where the library or the function is missing.
    [[nodiscard]] Function* Get() const noexcept { return m_pFunction; }

private:
    const LoadedFunctionTexts& m_texts;
    velmor::UniqueModule m_hModule;
    Function* m_pFunction = nullptr;
};
