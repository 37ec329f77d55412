#include <state/apply/stored_form.h>

#include <algorithm>

#include <state/platform/handles.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

std::optional<RegistryValue> Find(const std::vector<RegistryValue>& values, const wchar_t* name)
{
    const auto found =
        std::ranges::find_if(values, [name](const RegistryValue& one) { return EqualsIgnoringCase(one.name, name); });
    return found != values.end() ? std::optional(*found) : std::nullopt;
}

bool AreSame(const std::optional<RegistryValue>& left, const std::optional<RegistryValue>& right)
{
    return left ? right && left->type == right->type && left->data == right->data : !right;
}

} // namespace

StoredForm::StoredForm(const std::vector<Target>& targets)
{
    const auto remember = [this](const std::wstring& key, std::initializer_list<const wchar_t*> names) {
        std::vector<RegistryValue> values;
        if (ReadValues(key, values) == ERROR_SUCCESS)
            for (const wchar_t* name : names)
                m_values.push_back({key, name, Find(values, name)});
    };
    for (const Target& target : targets)
    {
        const std::wstring guid = FromUtf8(target.guid.ToText());
        remember(NETBIOS_INTERFACES + guid, {L"NetbiosOptions"});
        remember(IPV6_INTERFACES + guid, {L"NameServer"});
        remember(IPV4_INTERFACES + guid,
                 {L"EnableDHCP", L"IPAddress", L"SubnetMask", L"DefaultGateway", L"DefaultGatewayMetric", L"NameServer",
                  L"Domain", L"InterfaceMetric", L"MTU"});
    }
}

void StoredForm::Restore() const
{
    for (const Value& old : m_values)
    {
        std::vector<RegistryValue> now;
        if (ReadValues(old.key, now) != ERROR_SUCCESS || AreSame(old.value, Find(now, old.name.c_str())))
            continue;
        HKEY opened = nullptr;
        if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, old.key.c_str(), 0, KEY_SET_VALUE, &opened) != ERROR_SUCCESS)
            continue;
        const UniqueKey key(opened);
        if (old.value)
            ::RegSetValueExW(key.get(), old.name.c_str(), 0, old.value->type,
                             reinterpret_cast<const BYTE*>(old.value->data.data()),
                             static_cast<DWORD>(old.value->data.size()));
        else
            ::RegDeleteValueW(key.get(), old.name.c_str());
    }
}

} // namespace zelk
