#include <support/trace/call_frame.h>

#include <support/values/address_text.h>

namespace
{

velmor::string Named(const char* pszName, const char* pszMessage)
{
    return velmor::string(pszName) + L" : " + pszMessage;
}

template <class T>
void TraceValue(unsigned int level, const velmor::string& sName, const char* pszVariable, const T& value)
{
    const velmor::string sVariable(pszVariable);
    if constexpr (std::same_as<T, CallFrame::Hex>)
        TheTrace.TraceHex(level, sName, sVariable, value.value);
    else if constexpr (std::same_as<T, CallFrame::Bytes>)
        TheTrace.TraceBytes(level, sName, sVariable, static_cast<const unsigned char*>(value.pBytes), value.count);
    else if constexpr (std::same_as<T, const velmor::string*>)
        TheTrace.TraceVar(level, sName, sVariable, *value);
    else if constexpr (requires { value.pConvert; })
        TheTrace.TraceVar(level, sName, sVariable, value.pConvert(value.pObject));
    else
        TheTrace.TraceVar(level, sName, sVariable, value);
}

} // namespace

// A line for which there is no memory is lost, like any that cannot be written.

void CallFrame::WriteMessage(TRACE_LEVEL level, const char* pszMessage) const noexcept
try
{
    TheTrace.Trace(level, m_pszName, pszMessage);
}
catch (...)
{
}

void CallFrame::WriteVariable(TRACE_LEVEL level, const char* pszMessage, const char* pszVariable,
                              const Value& value) const noexcept
try
{
    const velmor::string sName = pszMessage != nullptr ? Named(m_pszName, pszMessage) : velmor::string(m_pszName);
    std::visit([&](const auto& plain) { TraceValue(level, sName, pszVariable, plain); }, value);
}
catch (...)
{
}

void CallFrame::WriteEnding(TRACE_LEVEL level, const char* pszReason, const char* pszVariable,
                            const Value& value) const noexcept
try
{
    const std::string sEnding = "... ending( " + std::string(pszReason) + " )";
    if (pszVariable != nullptr)
        WriteVariable(level, sEnding.c_str(), pszVariable, value);
    else
        WriteMessage(level, sEnding.c_str());
}
catch (...)
{
}

bool CallFrame::FailUnforeseen() const noexcept
{
    try
    {
        throw;
    }
    catch (const std::exception& error)
    {
        return Fail(error.what());
    }
    catch (...)
    {
        return Fail("unknown exception");
    }
}

velmor::string TextOf(const velmor::ip_address& address)
{
    velmor::string sText;
    int code = NO_ERROR;
    return velmor::FormatAddress(address, sText, code) ? sText : velmor::string(L"<invalid>");
}
