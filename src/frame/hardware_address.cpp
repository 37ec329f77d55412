#include <algorithm>
#include <cstring>
#include <string_view>

#include <support/trace/call_frame.h>
#include <support/values/hardware_address_text.h>
#include <support/values/hex_text.h>
#include <zelk_nm/tolva.h>

TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS() noexcept : m_bByteArray(), m_uiByteCount(0) {}

TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS(const unsigned char* pByteArray, unsigned int count) noexcept
    : HARDWARE_ADDRESS()
{
    const CallFrame frame = CallFrame::WithoutStart("TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS");
    if (pByteArray == nullptr || count == 0)
    {
        frame.Error("Invalid byte array and/or count arguments");
        return;
    }
    frame.Verbose("pByteArray", CallFrame::Bytes{pByteArray, count});
    m_uiByteCount = std::min(count, MAX_BYTES);
    std::copy_n(pByteArray, m_uiByteCount, m_bByteArray);
    frame.Verbose("m_bByteArray", CallFrame::Bytes{m_bByteArray, m_uiByteCount});
}

TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS(const velmor::string& sHwAddr) noexcept : HARDWARE_ADDRESS()
{
    const CallFrame frame = CallFrame::WithoutStart("TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS");
    if (sHwAddr.empty())
    {
        frame.Error("Invalid string argument");
        return;
    }
    frame.Verbose("sHwAddr", sHwAddr);
    if (const char* pszReason = Parse(sHwAddr))
    {
        *this = HARDWARE_ADDRESS();
        frame.Error(pszReason);
        return;
    }
    frame.Verbose("m_bByteArray", CallFrame::Bytes{m_bByteArray, m_uiByteCount});
}

const char* TOLVA::HARDWARE_ADDRESS::Parse(const velmor::string& sHwAddr) noexcept
{
    return velmor::ParseHardwareAddress(std::wstring_view(sHwAddr.c_str(), sHwAddr.size()), m_bByteArray,
                                        m_uiByteCount);
}

void TOLVA::HARDWARE_ADDRESS::copy(unsigned char* pByteArray, unsigned int count) const noexcept
{
    if (pByteArray == nullptr || count == 0)
    {
        CallFrame::WithoutStart("TOLVA::HARDWARE_ADDRESS::copy").Error("Invalid byte array and/or count arguments");
        return;
    }
    std::memset(pByteArray, 0, count);
    // The caller's count decides, not the address's own length: the bytes beyond that are zero anyway.
    std::copy_n(m_bByteArray, std::min(count, MAX_BYTES), pByteArray);
}

unsigned int TOLVA::HARDWARE_ADDRESS::size() const noexcept
{
    CallFrame::WithoutStart("TOLVA::HARDWARE_ADDRESS::size").Verbose("m_uiByteCount", m_uiByteCount);
    return m_uiByteCount;
}

bool TOLVA::HARDWARE_ADDRESS::operator==(const HARDWARE_ADDRESS& other) const noexcept
{
    return m_uiByteCount == other.m_uiByteCount &&
           std::equal(m_bByteArray, m_bByteArray + MAX_BYTES, other.m_bByteArray);
}

TOLVA::HARDWARE_ADDRESS::operator velmor::string() const
{
    return velmor::HexPairs(m_bByteArray, m_uiByteCount);
}
