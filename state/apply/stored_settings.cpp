#include <state/apply/stored_settings.h>

#include <winsock2.h>

#include <windows.h>

#include <state/platform/handles.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

/// Writes values of one key, which is made where it is missing, until one cannot be written.
class Writer
{
public:
    explicit Writer(const std::wstring& path) : m_code(Open(path)) {}

    void Number(const wchar_t* name, DWORD number) { Write(name, REG_DWORD, &number, sizeof(number)); }

    void Text(const wchar_t* name, const std::wstring& text)
    {
        Write(name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    }

    void List(const wchar_t* name, const std::vector<std::wstring>& texts)
    {
        std::wstring data;
        for (const std::wstring& text : texts)
            data += text + L'\0';
        data += L'\0';
        Write(name, REG_MULTI_SZ, data.data(), data.size() * sizeof(wchar_t));
    }

    [[nodiscard]] std::uint32_t Code() const noexcept { return static_cast<std::uint32_t>(m_code); }

private:
    LSTATUS Open(const std::wstring& path)
    {
        HKEY key = nullptr;
        const LSTATUS code =
            ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr);
        if (code == ERROR_SUCCESS)
            m_key.reset(key);
        return code;
    }

    void Write(const wchar_t* name, DWORD type, const void* data, std::size_t size)
    {
        if (m_code == ERROR_SUCCESS)
            m_code =
                ::RegSetValueExW(m_key.get(), name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
    }

    UniqueKey m_key;
    LSTATUS m_code;
};

std::uint32_t Change(const std::wstring& guid, const std::string& dnsSuffix)
{
    Writer writer(IPV4_INTERFACES + guid);
    writer.Text(L"Domain", FromUtf8(dnsSuffix));
    return writer.Code();
}

std::uint32_t Change(const std::wstring& guid, NetbiosSetting netbios)
{
    Writer writer(NETBIOS_INTERFACES + guid);
    writer.Number(L"NetbiosOptions", static_cast<DWORD>(netbios));
    return writer.Code();
}

/// A metric of 0 leaves it to the system.
std::uint32_t Change(const std::wstring& guid, const std::vector<Gateway>& gateways)
{
    std::vector<std::wstring> addresses, metrics;
    for (const Gateway& gateway : gateways)
    {
        addresses.push_back(FromUtf8(gateway.address.ToText()));
        metrics.push_back(std::to_wstring(gateway.metric.value_or(0)));
    }
    Writer writer(IPV4_INTERFACES + guid);
    writer.List(L"DefaultGateway", addresses);
    writer.List(L"DefaultGatewayMetric", metrics);
    return writer.Code();
}

} // namespace

std::uint32_t ChangeStoredSetting(const Guid& adapter, const StoredSetting& setting)
{
    const std::wstring guid = FromUtf8(adapter.ToText());
    return std::visit([&](const auto& value) { return Change(guid, value); }, setting.value);
}

} // namespace zelk
