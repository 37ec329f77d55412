#include <state/apply/stored_routes.h>

#include <state/machine/persistent_route.h>
#include <state/platform/handles.h>
#include <state/platform/registry.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

std::wstring NameOf(const StoredRoute& route)
{
    return FromUtf8(route.destination.address.ToText() + ',' + MaskOf(route.destination.length).ToText() + ',' +
                    route.nextHop.ToText() + ',' + std::to_string(route.metric.value_or(1)));
}

LSTATUS RemoveOthers(HKEY key, const StoredRoute& route, const std::wstring& kept)
{
    std::vector<RegistryValue> values;
    if (const DWORD code = ReadValues(PERSISTENT_ROUTES, values); code != ERROR_SUCCESS)
        return static_cast<LSTATUS>(code);
    for (const RegistryValue& value : values)
    {
        const auto stored = ParsePersistentRoute(ToUtf8(value.name));
        if (!stored || value.name == kept || stored->destination != route.destination ||
            stored->nextHop != route.nextHop)
            continue;
        if (const LSTATUS code = ::RegDeleteValueW(key, value.name.c_str()); code != ERROR_SUCCESS)
            return code;
    }
    return ERROR_SUCCESS;
}

} // namespace

std::uint32_t ChangeStoredRoute(const StoredRoute& route)
{
    HKEY opened = nullptr;
    LSTATUS code = ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, PERSISTENT_ROUTES, 0, nullptr, 0, KEY_READ | KEY_WRITE,
                                     nullptr, &opened, nullptr);
    if (code != ERROR_SUCCESS)
        return static_cast<std::uint32_t>(code);
    const UniqueKey key(opened);
    const std::wstring name = route.wanted ? NameOf(route) : std::wstring();
    if (route.wanted) // first, so that a failure in between leaves one too many rather than none
        code =
            ::RegSetValueExW(key.get(), name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(L""), sizeof(wchar_t));
    if (code == ERROR_SUCCESS)
        code = RemoveOthers(key.get(), route, name);
    return static_cast<std::uint32_t>(code);
}

} // namespace zelk
