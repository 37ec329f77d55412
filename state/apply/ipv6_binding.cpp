#include <state/apply/ipv6_binding.h>

#include <memory>
#include <optional>
#include <string>

#include <winsock2.h>

#include <windows.h>

#include <netcfgx.h>
#include <objbase.h>

#include <netcfgn.h>

#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

constexpr GUID NETWORK_CONFIGURATION = {0x5B035261, 0x40F9, 0x11D1, {0xAA, 0xEC, 0x00, 0x80, 0x5F, 0xC1, 0x27, 0x0E}};

constexpr GUID Interface(std::uint32_t number)
{
    return {0xC0E8AE00 + number, 0x306E, 0x11D1, {0xAA, 0xCF, 0x00, 0x80, 0x5F, 0xC1, 0x27, 0x0E}};
}
constexpr GUID CONFIGURATION = Interface(0x93);
constexpr GUID CONFIGURATION_LOCK = Interface(0x9F);
constexpr GUID COMPONENT_BINDINGS = Interface(0x9E);

struct ReleaseInterface
{
    void operator()(IUnknown* unknown) const noexcept { unknown->Release(); }
};
template <class T>
using UniqueInterface = std::unique_ptr<T, ReleaseInterface>;

/// Where a call of COM puts an interface. It is owned only when the statement with the call is over.
template <class T>
class Out
{
public:
    explicit Out(UniqueInterface<T>& owner) noexcept : m_owner(owner) {}
    Out(const Out&) = delete;
    Out& operator=(const Out&) = delete;
    ~Out() { m_owner.reset(m_pointer); }

    operator T**() noexcept { return &m_pointer; }
    operator void**() noexcept { return reinterpret_cast<void**>(&m_pointer); }

private:
    UniqueInterface<T>& m_owner;
    T* m_pointer = nullptr;
};

/// COM on this thread.
class ComScope
{
public:
    ComScope() noexcept : m_code(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;
    ~ComScope()
    {
        if (SUCCEEDED(m_code))
            ::CoUninitialize();
    }

private:
    HRESULT m_code;
};

/// The network configuration, locked for writing as long as it lives.
class Configuration
{
public:
    HRESULT Open()
    {
        constexpr DWORD PATIENCE_MS = 5000;
        HRESULT code =
            ::CoCreateInstance(NETWORK_CONFIGURATION, nullptr, CLSCTX_INPROC_SERVER, CONFIGURATION, Out(m_whole));
        if (code == S_OK)
            code = m_whole->QueryInterface(CONFIGURATION_LOCK, Out(m_lock));
        if (code == S_OK)
            code = m_lock->AcquireWriteLock(PATIENCE_MS, L"zelkctl", nullptr);
        if (code != S_OK) // S_FALSE: another program has the lock
            return FAILED(code) ? code : NETCFG_E_NO_WRITE_LOCK;
        m_locked = true;
        code = m_whole->Initialize(nullptr);
        m_initialized = SUCCEEDED(code);
        return code;
    }

    ~Configuration()
    {
        if (m_initialized)
            m_whole->Uninitialize();
        if (m_locked)
            m_lock->ReleaseWriteLock();
    }

    INetCfg* operator->() const noexcept { return m_whole.get(); }

private:
    UniqueInterface<INetCfg> m_whole;
    UniqueInterface<INetCfgLock> m_lock;
    bool m_locked = false;
    bool m_initialized = false;
};

std::string TextOf(const GUID& guid)
{
    wchar_t text[40] = {};
    ::StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
    return ToUtf8(text);
}

/// The GUID of what an interface leads down to, where it has one.
std::optional<Guid> LowerGuid(INetCfgBindingInterface& hop)
{
    UniqueInterface<INetCfgComponent> lower;
    GUID guid = {};
    HRESULT code = hop.GetLowerComponent(Out(lower));
    if (code == S_OK)
        code = lower->GetInstanceGuid(&guid);
    return code == S_OK ? Guid::Parse(TextOf(guid)) : std::nullopt;
}

/// Gives the elements of an enumeration to a function until it wants no more. S_OK when it wants no more, S_FALSE at
/// the end.
template <class Element, class Enumeration, class Function>
HRESULT ForEach(Enumeration& enumeration, Function function)
{
    for (;;)
    {
        UniqueInterface<Element> element;
        const HRESULT code = enumeration.Next(1, Out(element), nullptr);
        if (code != S_OK)
            return code;
        if (const HRESULT done = function(*element); done != S_FALSE)
            return done;
    }
}

/// S_OK when the path leads down to the adapter, S_FALSE when it does not.
HRESULT LeadsTo(INetCfgBindingPath& path, const Guid& adapter)
{
    UniqueInterface<IEnumNetCfgBindingInterface> hops;
    const HRESULT code = path.EnumBindingInterfaces(Out(hops));
    if (code != S_OK)
        return code;
    return ForEach<INetCfgBindingInterface>(
        *hops, [&](INetCfgBindingInterface& hop) { return LowerGuid(hop) == adapter ? S_OK : S_FALSE; });
}

HRESULT Bind(const Configuration& configuration, const Guid& adapter, bool wanted)
{
    UniqueInterface<INetCfgComponent> protocol;
    UniqueInterface<INetCfgComponentBindings> bindings;
    UniqueInterface<IEnumNetCfgBindingPath> paths;
    HRESULT code = configuration->FindComponent(L"MS_TCPIP6", Out(protocol));
    if (code == S_OK)
        code = protocol->QueryInterface(COMPONENT_BINDINGS, Out(bindings));
    if (code == S_OK)
        code = bindings->EnumBindingPaths(EBP_BELOW, Out(paths));
    bool found = false;
    if (code == S_OK)
        code = ForEach<INetCfgBindingPath>(*paths, [&](INetCfgBindingPath& path) {
            const HRESULT leads = LeadsTo(path, adapter);
            if (leads != S_OK)
                return leads;
            found = true;
            const HRESULT enabled = path.Enable(wanted ? TRUE : FALSE);
            return FAILED(enabled) ? enabled : S_FALSE; // there may be more
        });
    if (FAILED(code))
        return code;
    return found ? configuration->Apply() : HRESULT_FROM_WIN32(ERROR_NOT_FOUND); // or the protocol is not installed
}

} // namespace

std::uint32_t BindIpv6(const Guid& adapter, bool wanted)
{
    const ComScope com;
    Configuration configuration;
    HRESULT code = configuration.Open();
    if (SUCCEEDED(code))
        code = Bind(configuration, adapter, wanted);
    return SUCCEEDED(code) ? 0 : static_cast<std::uint32_t>(code);
}

} // namespace zelk
