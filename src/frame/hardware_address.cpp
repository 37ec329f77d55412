#include <algorithm>
#include <cstring>
#include <cwctype>

#include <support/trace/call_frame.h>
#include <support/values/hex_text.h>
#include <zelk_nm/tolva.h>

namespace
{

constexpr unsigned int FEWEST_SECTIONS = 6;
constexpr unsigned int DIGITS_PER_SECTION = 2;

} // namespace

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
    unsigned int section = 0;
    unsigned int digits = 0;
    for (std::size_t i = 0; i < sHwAddr.size(); ++i)
    {
        const int value = velmor::HexDigitValue(static_cast<wchar_t>(std::towupper(sHwAddr.c_str()[i])));
        if (value < 0)
        {
            digits = 0;
            if (++section == MAX_BYTES)
                return "Too many address sections in string";
            continue;
        }
        if (++digits > DIGITS_PER_SECTION)
            return "Too many hex digits in section";
        m_bByteArray[section] = static_cast<unsigned char>(m_bByteArray[section] * 16 + value);
    }
    m_uiByteCount = section + 1;
    return m_uiByteCount < FEWEST_SECTIONS ? "Too few address sections in string" : nullptr;
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
