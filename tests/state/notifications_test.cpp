// Notifications of a platform made for the test, and what two readings of a machine differ in.

#include <algorithm>
#include <map>
#include <set>
#include <thread>

#include <gmock/gmock.h>

#include <state/notifications/adapter_event.h>
#include <state/notifications/change_notifications.h>
#include <support/import_patch.h>

#include <iphlpapi.h>
#include <netioapi.h>

using namespace std::chrono_literals;
using namespace testing_support;
using namespace zelk;

namespace
{

/// What the system makes of a request.
enum class Reply
{
    ACCEPTS,
    REFUSES,
    PRETENDS, ///< accepts, but registers nothing
    LACKS     ///< the function is missing
};

/// The part of IP Helper that notifies, while it lives.
class FakeNotifier
{
public:
    /// With the functions of Vista, or without.
    explicit FakeNotifier(Reply vista = Reply::ACCEPTS)
    {
        theNotifier = this;
        for (const char* const name : FUNCTIONS)
            replies[name] = vista;
        ADD_PATCH(m_patches, GetProcAddress, [this](auto original, HMODULE module, const char* name) -> FARPROC {
            if (name == std::string("CancelMibChangeNotify2"))
                return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&Cancel));
            if (!replies.contains(name))
                return original(module, name);
            m_asked = name;
            return replies[name] == Reply::LACKS ? nullptr
                                                 : reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&Register));
        });
        ADD_PATCH(m_patches, NotifyAddrChange, &Request);
        ADD_PATCH(m_patches, NotifyRouteChange, &Request);
        ADD_PATCH(m_patches, CancelIPChangeNotify,
                  [this](OVERLAPPED* request) -> BOOL { return canCancel && Complete(request); });
    }

    /// As the system does, on a thread of its own.
    void Notify() const
    {
        std::thread([this] { m_callback(m_context, nullptr, MibAddInstance); }).join();
    }

    bool Complete(OVERLAPPED* request)
    {
        request->Internal = 0;
        return requests.erase(request) > 0 && ::SetEvent(request->hEvent);
    }

    /// The event that is signaled, open or not.
    [[nodiscard]] DWORD StateOfEvent() const { return ::WaitForSingleObject(m_context, 0); }

    static constexpr const char* FUNCTIONS[] = {"NotifyUnicastIpAddressChange", "NotifyRouteChange2",
                                                "NotifyIpInterfaceChange"};
    std::map<std::string, Reply> replies;
    Reply older = Reply::ACCEPTS; ///< of the functions before Vista
    bool canCancel = true;
    std::set<HANDLE> registered;
    std::set<OVERLAPPED*> requests;
    int requestsMade = 0;

private:
    using Callback = void WINAPI(void*, void*, MIB_NOTIFICATION_TYPE);

    static DWORD WINAPI Register(ADDRESS_FAMILY, Callback* callback, void* context, BOOLEAN, HANDLE* handle)
    {
        FakeNotifier& self = *theNotifier;
        self.m_callback = callback;
        self.m_context = context;
        if (self.replies[self.m_asked] == Reply::ACCEPTS)
            self.registered.insert(*handle = reinterpret_cast<HANDLE>(self.registered.size() + 1));
        return self.replies[self.m_asked] == Reply::REFUSES ? ERROR_NOT_SUPPORTED : NO_ERROR;
    }

    static DWORD WINAPI Cancel(HANDLE handle)
    {
        if (!theNotifier->canCancel)
            return ERROR_INVALID_PARAMETER;
        theNotifier->registered.erase(handle);
        return NO_ERROR;
    }

    static DWORD WINAPI Request(HANDLE*, OVERLAPPED* request)
    {
        ++theNotifier->requestsMade;
        if (theNotifier->older == Reply::ACCEPTS)
        {
            request->Internal = STATUS_PENDING;
            theNotifier->requests.insert(request);
        }
        return theNotifier->older == Reply::REFUSES ? ERROR_NOT_SUPPORTED : ERROR_IO_PENDING;
    }

    static inline FakeNotifier* theNotifier;
    std::string m_asked; ///< the function that was looked up last
    Callback* m_callback = nullptr;
    void* m_context = nullptr;
    ImportPatches m_patches;
};

/// Long enough for a test that waits for it to fail.
constexpr auto LONG = 60s;

bool WaitsLong(ChangeNotifications& notifications)
{
    const auto start = std::chrono::steady_clock::now();
    notifications.Wait(LONG);
    return std::chrono::steady_clock::now() - start >= LONG;
}

TEST(ChangeNotifications, EndAWaitAndLeaveNothingRegistered)
{
    FakeNotifier notifier;
    {
        ChangeNotifications notifications;
        EXPECT_TRUE(notifications.AreComplete());
        EXPECT_EQ(3U, notifier.registered.size());
        notifier.Notify(); // before the wait begins
        EXPECT_FALSE(WaitsLong(notifications));
        std::thread system([&] { notifier.Notify(); });
        EXPECT_FALSE(WaitsLong(notifications));
        system.join();
        EXPECT_TRUE(notifications.Wait(1ms)) << "nothing has come since";
    }
    EXPECT_TRUE(notifier.registered.empty());
    EXPECT_EQ(WAIT_FAILED, notifier.StateOfEvent()) << "the event is still open";
}

bool WaitsForTheInterval(const FakeNotifier& notifier, std::size_t registered = 0)
{
    ChangeNotifications notifications;
    return !notifications.AreComplete() && notifier.registered.size() == registered && notifications.Wait(1ms);
}

TEST(ChangeNotifications, GiveWayToTheIntervalWhereTheSystemDoesNotNotify)
{
    for (const Reply reply : {Reply::REFUSES, Reply::PRETENDS, Reply::LACKS})
        for (const char* const name : FakeNotifier::FUNCTIONS)
        {
            FakeNotifier notifier;
            notifier.replies[name] = reply;
            EXPECT_TRUE(WaitsForTheInterval(notifier, 2)) << name;
            EXPECT_TRUE(notifier.registered.empty());
        }
    FakeNotifier before(Reply::LACKS);
    before.older = Reply::REFUSES;
    EXPECT_TRUE(WaitsForTheInterval(before));
    const FakeNotifier notifier;
    const auto patch = PATCH_IMPORT(CreateEventW, [](auto...) -> HANDLE { return nullptr; });
    EXPECT_TRUE(WaitsForTheInterval(notifier));
}

TEST(ChangeNotifications, StopAtOnce)
{
    const FakeNotifier notifier;
    ChangeNotifications notifications;
    const std::unique_ptr<void, decltype(&::CloseHandle)> stop(::CreateEventW(nullptr, TRUE, TRUE, nullptr),
                                                               ::CloseHandle);
    EXPECT_FALSE(notifications.Wait(LONG, stop.get()));
    ::ResetEvent(stop.get());
    notifier.Notify();
    const auto patch = PatchWait([](DWORD) -> DWORD { return WAIT_OBJECT_0; }); // while the changes settle
    EXPECT_FALSE(notifications.Wait(LONG, stop.get()));
    EXPECT_TRUE(notifications.Wait(1ms, reinterpret_cast<HANDLE>(0x1234))) << "no handle, which cannot be waited for";
}

TEST(ChangeNotifications, KeepTheEventOfACallbackThatMayStillCome)
{
    FakeNotifier notifier;
    notifier.canCancel = false;
    {
        const ChangeNotifications notifications;
    }
    notifier.Notify();
    EXPECT_EQ(WAIT_OBJECT_0, notifier.StateOfEvent());
}

/// The system completes a request once, and writes to it until then.
TEST(ChangeNotifications, AskAgainAfterEachChangeBeforeVista)
{
    FakeNotifier notifier(Reply::LACKS);
    {
        ChangeNotifications notifications;
        EXPECT_TRUE(notifications.AreComplete());
        for (int made = 2; made < 5; ++made)
        {
            EXPECT_EQ(made, notifier.requestsMade);
            ASSERT_EQ(2U, notifier.requests.size());
            notifier.Complete(*notifier.requests.begin());
            EXPECT_FALSE(WaitsLong(notifications));
        }
    }
    EXPECT_TRUE(notifier.requests.empty()) << "a request was not cancelled";
    notifier.canCancel = false;
    {
        const ChangeNotifications notifications;
    }
    ASSERT_EQ(2U, notifier.requests.size()) << "the system may still complete them";
    for (OVERLAPPED* const request : std::set(notifier.requests))
        EXPECT_TRUE(notifier.Complete(request));
}

Machine MachineWithLink()
{
    Machine machine;
    Adapter& adapter = machine.adapters.emplace_back();
    adapter.guid = Guid::Parse("{00000003-0000-0000-0000-4E6574446576}");
    adapter.connectionName = "lan0";
    adapter.status = AdapterStatus::UP;
    adapter.transmitSpeed = 1000;
    Address& address = adapter.ipv4.addresses.emplace().emplace_back();
    address.address = *IpAddress::Parse("192.0.2.10");
    address.validLifetime = Lifetime{60};
    adapter.ipv4.dnsServers.emplace();
    adapter.ipv4.lease.emplace();
    for (const char* const device : {"PCI\\A", "PCI\\B"}) // two of the same sort without a driver
        machine.adapters.emplace_back().deviceInstance = device;
    return machine;
}

TEST(AdapterEvents, AreWhatTwoReadingsDifferIn)
{
    const struct
    {
        void (*change)(Adapter&);
        std::vector<std::string> paths;
        Json after; ///< of the first
    } rows[] = {
        {[](Adapter&) {}, {}, {}},
        {[](Adapter& adapter) { adapter.transmitSpeed = 2000; }, {}, {}},
        {[](Adapter& adapter) { adapter.ipv4.addresses->front().validLifetime->seconds = 59; }, {}, {}},
        {[](Adapter& adapter) { adapter.status = AdapterStatus::DORMANT; }, {"status"}, "dormant"},
        {[](Adapter& adapter) { adapter.ipv6.configured.mtu = 1400U; }, {"ipv6.configured.mtu"}, 1400},
        {[](Adapter& adapter) { adapter.ipv4.addresses->clear(); }, {"ipv4.addresses"}, Json::array()},
        {[](Adapter& adapter) { adapter.connectionName = "uplink"; }, {"name", "connectionName"}, "uplink"},
        {[](Adapter& adapter) { adapter.ipv4.lease.reset(); }, {"ipv4.lease"}, {}},
        {[](Adapter& adapter) { adapter.ipv4.dnsServers->emplace_back(); }, {"ipv4.dnsServers"}, {"0.0.0.0"}},
        {[](Adapter& adapter) { adapter.guid.reset(); }, {"adapter", "adapter"}, {}},
    };
    for (const auto& row : rows)
    {
        Machine now = MachineWithLink();
        row.change(now.adapters.front());
        const auto events = EventsBetween(MachineWithLink(), now, {});
        std::vector<std::string> paths;
        std::ranges::transform(events, std::back_inserter(paths), &AdapterEvent::path);
        EXPECT_EQ(row.paths, paths);
        EXPECT_EQ(row.after, events.empty() ? Json() : events.front().after);
    }
}

TEST(AdapterEvents, TellOfAnAdapterAsAWhole)
{
    const auto added = EventsBetween({}, MachineWithLink(), {});
    ASSERT_EQ(3U, added.size());
    EXPECT_EQ("adapter", added[0].path);
    EXPECT_EQ("lan0", added[0].adapter);
    EXPECT_TRUE(added[0].before.is_null());
    EXPECT_EQ("192.0.2.10", added[0].after["ipv4"]["addresses"][0]["address"]);
    EXPECT_EQ(3U, EventsBetween(MachineWithLink(), {}, {}).size());
}

} // namespace
