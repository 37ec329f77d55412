#include <state/apply/stored_form.h>

#include <algorithm>

#include <state/platform/handles.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

/// A key of which every adapter has one, and its values that settings are kept in.
struct KeyOfAdapter
{
    std::wstring parent;
    std::vector<const wchar_t*> names;
};

const KeyOfAdapter KEYS[] = {
    {NETBIOS_INTERFACES, {L"NetbiosOptions"}},
    {IPV6_INTERFACES, {L"NameServer"}},
    {IPV4_INTERFACES,
     {L"EnableDHCP", L"IPAddress", L"SubnetMask", L"DefaultGateway", L"DefaultGatewayMetric", L"NameServer", L"Domain",
      L"InterfaceMetric", L"MTU"}},
};

std::wstring KeyOf(const KeyOfAdapter& of, const Target& target)
{
    return of.parent + FromUtf8(target.guid.ToText());
}

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
    for (const Target& target : targets)
        for (const KeyOfAdapter& of : KEYS)
        {
            std::vector<RegistryValue> values;
            const std::wstring key = KeyOf(of, target);
            const DWORD code = ReadValues(key, values);
            if (code == ERROR_SUCCESS || code == ERROR_FILE_NOT_FOUND) // a change can make the key
                for (const wchar_t* name : of.names)
                    m_values.push_back({key, name, Find(values, name)});
        }
}

bool StoredForm::IsKnown(const StoredValue& value, const std::vector<Target>& targets)
{
    return std::ranges::any_of(targets, [&](const Target& target) {
        return std::ranges::any_of(KEYS, [&](const KeyOfAdapter& of) {
            return value.key == KeyOf(of, target) && std::ranges::find(of.names, value.name) != of.names.end();
        });
    });
}

bool StoredForm::Restore() const
{
    bool different = false;
    for (const StoredValue& old : m_values)
    {
        std::vector<RegistryValue> now;
        if (ReadValues(old.key, now) != ERROR_SUCCESS || AreSame(old.value, Find(now, old.name.c_str())))
            continue;
        different = true;
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
    return different;
}

} // namespace zelk
