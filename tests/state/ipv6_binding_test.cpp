// IPv6 bound to an adapter through a network configuration of which each call fails in turn.

#include <array>
#include <deque>
#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <winsock2.h>

#include <windows.h>

#include <objbase.h>

#include <state/apply/performer.h>
#include <support/golden.h>
#include <support/import_patch.h>

using namespace zelk;

namespace
{

struct Method
{
    std::string name;
    std::string given = {}; ///< the interface that it gives,
    bool first = false;     ///< and whether in its first argument, not in the second
};

/// By the interface and the place in its table of functions.
const std::map<std::pair<std::string, std::size_t>, Method> METHODS = {
    {{"INetCfg", 0}, {"QueryInterface", "INetCfgLock"}},
    {{"INetCfg", 3}, {"Initialize"}},
    {{"INetCfg", 4}, {"Uninitialize"}},
    {{"INetCfg", 5}, {"Apply"}},
    {{"INetCfg", 8}, {"FindComponent", "INetCfgComponent"}},
    {{"INetCfgLock", 3}, {"AcquireWriteLock"}},
    {{"INetCfgLock", 4}, {"ReleaseWriteLock"}},
    {{"INetCfgComponent", 0}, {"QueryInterface", "INetCfgComponentBindings"}},
    {{"INetCfgComponent", 8}, {"GetInstanceGuid"}},
    {{"INetCfgComponentBindings", 8}, {"EnumBindingPaths", "IEnumNetCfgBindingPath"}},
    {{"IEnumNetCfgBindingPath", 3}, {"Next", "INetCfgBindingPath"}},
    {{"INetCfgBindingPath", 6}, {"Enable"}},
    {{"INetCfgBindingPath", 10}, {"EnumBindingInterfaces", "IEnumNetCfgBindingInterface", true}},
    {{"IEnumNetCfgBindingInterface", 3}, {"Next", "INetCfgBindingInterface"}},
    {{"INetCfgBindingInterface", 5}, {"GetLowerComponent", "INetCfgComponent", true}},
};

/// Two paths lead down from IPv6, of two steps each: to another adapter, and through a filter to the one asked for.
class NetworkConfiguration
{
public:
    NetworkConfiguration(std::size_t failing, HRESULT failure) : m_failing(failing), m_failure(failure)
    {
        pThis = this;
    }

    HRESULT Give(const std::string& kind, std::size_t place, void* out)
    {
        ++references;
        static const auto functions = MakeFunctions(std::make_index_sequence<11>());
        *static_cast<Object**>(out) = &m_objects.emplace_back(Object{functions.data(), kind, place, 0});
        return S_OK;
    }

    std::string calls; ///< with "!" behind the one that has failed
    ULONG references = 0;

private:
    struct Object
    {
        void* const* functions;
        std::string kind;  ///< its interface
        std::size_t place; ///< the path, or the step
        std::size_t next;
    };

    template <std::size_t SLOT>
    static HRESULT WINAPI Called(Object& object, void* first, void* second)
    {
        const Method& method = METHODS.at({object.kind, SLOT});
        const bool fails = ++pThis->m_count == pThis->m_failing;
        pThis->calls += ' ' + method.name + (fails ? "!" : "");
        return fails ? pThis->m_failure : pThis->Do(method, object, first, second);
    }
    static ULONG WINAPI Release(Object&) { return --pThis->references; }

    HRESULT Do(const Method& method, Object& object, void* first, void* second)
    {
        constexpr GUID FIRST_STEP = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
        if (method.name == "Next" && object.next == 2)
            return S_FALSE;
        if (method.name == "GetInstanceGuid")
            (*static_cast<GUID*>(first) = FIRST_STEP).Data1 += static_cast<DWORD>(object.place);
        if (method.given.empty())
            return S_OK;
        const std::size_t place = method.name == "Next" ? 2 * object.place + object.next++ : object.place;
        return Give(method.given, place, method.first ? first : second);
    }

    template <std::size_t... SLOTS>
    static std::array<void*, sizeof...(SLOTS)> MakeFunctions(std::index_sequence<SLOTS...>)
    {
        std::array functions = {reinterpret_cast<void*>(&Called<SLOTS>)...};
        functions[2] = reinterpret_cast<void*>(&Release);
        return functions;
    }

    static inline NetworkConfiguration* pThis;
    std::deque<Object> m_objects;
    std::size_t m_failing, m_count = 0;
    HRESULT m_failure;
};

StepResult Bind(bool wanted)
{
    const Step step = {"lan0", Guid::Parse("{00000004-0002-0003-0405-060708090A0B}"), "", Ipv6Binding{wanted}, {}};
    return Performer({}, false).Perform({}, step);
}

} // namespace

TEST(Ipv6Binding, IsMadeOrRefusedAndLeavesNothing)
{
    testing_support::Golden golden;
    for (const HRESULT failure : {E_ACCESSDENIED, S_FALSE})
        for (std::size_t failing = 1;; ++failing)
        {
            NetworkConfiguration windows(failing, failure);
            const auto patch = PATCH_IMPORT(CoCreateInstance, [&](auto&&, auto&&, auto&&, auto&&, void** object) {
                return windows.Give("INetCfg", 0, object);
            });
            const StepResult result = Bind(failing % 2 == 0);
            const std::size_t end = windows.calls.find('!');
            const std::size_t begin = end != std::string::npos ? windows.calls.rfind(' ', end) : 0;
            golden.Line(windows.calls.substr(begin + 1), result.outcome == StepOutcome::DONE ? "DONE" : result.reason);
            EXPECT_EQ(0U, windows.references) << windows.calls;
            if (end == std::string::npos)
                break;
        }
    // Wine has none; and COM is set up otherwise on this thread.
    ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    golden.Line(Bind(true).reason);
    ::CoUninitialize();
}
