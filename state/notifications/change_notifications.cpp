#include <state/notifications/change_notifications.h>

#include <algorithm>
#include <array>
#include <vector>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <netioapi.h>
#include <windows.h>

#include <state/platform/function.h>
#include <state/platform/handles.h>

namespace zelk
{
namespace
{

using std::chrono::milliseconds;

constexpr wchar_t IP_HELPER[] = L"iphlpapi.dll";
constexpr milliseconds SETTLING_TIME(30);

/// One that resets itself when a wait has ended.
UniqueHandle MakeEvent()
{
    return UniqueHandle(::CreateEventW(nullptr, FALSE, FALSE, nullptr));
}

template <class Row>
void NETIOAPI_API_ Signal(void* event, Row*, MIB_NOTIFICATION_TYPE)
{
    ::SetEvent(event);
}

/// The registrations of Vista and later.
class Callbacks
{
public:
    Callbacks()
    {
        Register<decltype(::NotifyUnicastIpAddressChange)>("NotifyUnicastIpAddressChange",
                                                           Signal<MIB_UNICASTIPADDRESS_ROW>);
        Register<decltype(::NotifyRouteChange2)>("NotifyRouteChange2", Signal<MIB_IPFORWARD_ROW2>);
        Register<decltype(::NotifyIpInterfaceChange)>("NotifyIpInterfaceChange", Signal<MIB_IPINTERFACE_ROW>);
    }
    Callbacks(const Callbacks&) = delete;
    Callbacks& operator=(const Callbacks&) = delete;

    /// Cancelling waits for a callback that runs. Where it fails, one may still come: its event then stays for good.
    ~Callbacks()
    {
        auto* const cancel = FindFunction<decltype(::CancelMibChangeNotify2)>(IP_HELPER, "CancelMibChangeNotify2");
        for (const HANDLE registration : m_registered)
            if (cancel == nullptr || cancel(registration) != NO_ERROR)
                static_cast<void>(m_event.release());
    }

    [[nodiscard]] HANDLE Event() const noexcept { return m_event.get(); }
    /// Whether the system has any of the functions.
    [[nodiscard]] bool AreKnown() const noexcept { return m_known; }
    [[nodiscard]] bool AreComplete() const noexcept { return m_registered.size() == KINDS; }

private:
    static constexpr std::size_t KINDS = 3; ///< of changes

    /// Some systems accept what they never do: without a handle nothing is registered.
    template <class Function, class Callback>
    void Register(const char* name, Callback* callback)
    {
        auto* const notify = FindFunction<Function>(IP_HELPER, name);
        HANDLE registration = nullptr;
        if (notify == nullptr)
            return;
        m_known = true;
        if (m_event && notify(AF_UNSPEC, callback, m_event.get(), FALSE, &registration) == NO_ERROR &&
            registration != nullptr)
            m_registered.push_back(registration);
    }

    UniqueHandle m_event = MakeEvent();
    std::vector<HANDLE> m_registered;
    bool m_known = false;
};

/// A request for the next change that a system before Vista signals.
class Request
{
public:
    using Function = DWORD WINAPI(HANDLE*, OVERLAPPED*);

    explicit Request(Function* notify) : m_notify(notify) { Start(); }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    /// What the system may still write to stays for good.
    ~Request()
    {
        constexpr DWORD PATIENCE_MS = 1000;
        if (!m_pending)
            return;
        const bool over = ::CancelIPChangeNotify(m_overlapped.get())
                              ? ::WaitForSingleObject(m_event.get(), PATIENCE_MS) == WAIT_OBJECT_0
                              : HasOverlappedIoCompleted(m_overlapped.get());
        if (over)
            return;
        static_cast<void>(m_event.release());
        static_cast<void>(m_overlapped.release());
    }

    /// Before the machine is read, so that a change during the reading is told too.
    void Start()
    {
        *m_overlapped = {};
        m_overlapped->hEvent = m_event.get();
        HANDLE device = nullptr; // is the system's
        m_pending = m_event && m_notify(&device, m_overlapped.get()) == ERROR_IO_PENDING;
    }

    [[nodiscard]] HANDLE Event() const noexcept { return m_event.get(); }
    [[nodiscard]] bool IsPending() const noexcept { return m_pending; }

private:
    Function* m_notify;
    UniqueHandle m_event = MakeEvent();
    std::unique_ptr<OVERLAPPED> m_overlapped = std::make_unique<OVERLAPPED>();
    bool m_pending = false;
};

/// False when `stop` is signaled in that time.
bool Pause(milliseconds time, HANDLE stop)
{
    const auto wait = static_cast<DWORD>(time.count());
    if (stop != nullptr)
        return ::WaitForSingleObject(stop, wait) == WAIT_TIMEOUT;
    ::Sleep(wait);
    return true;
}

} // namespace

struct ChangeNotifications::Registrations
{
    Registrations()
    {
        if (callbacks.AreKnown())
            return;
        for (Request::Function* const notify : {&::NotifyAddrChange, &::NotifyRouteChange})
            requests.push_back(std::make_unique<Request>(notify));
    }

    [[nodiscard]] bool AreComplete() const
    {
        if (callbacks.AreKnown())
            return callbacks.AreComplete();
        return std::ranges::all_of(requests, [](const auto& request) { return request->IsPending(); });
    }

    /// Those that are there, after `stop`.
    [[nodiscard]] std::vector<HANDLE> Events(HANDLE stop) const
    {
        std::vector<HANDLE> events = {stop, callbacks.Event()};
        for (const auto& request : requests)
            events.push_back(request->IsPending() ? request->Event() : nullptr);
        std::erase(events, nullptr);
        return events;
    }

    void Renew(HANDLE event)
    {
        for (const auto& request : requests)
            if (request->Event() == event)
                request->Start();
    }

    Callbacks callbacks;
    std::vector<std::unique_ptr<Request>> requests; ///< their addresses are the system's
};

ChangeNotifications::ChangeNotifications() : m_registrations(std::make_unique<Registrations>()) {}

ChangeNotifications::~ChangeNotifications() = default;

bool ChangeNotifications::AreComplete() const noexcept
{
    return m_registrations->AreComplete();
}

bool ChangeNotifications::Wait(milliseconds interval, void* stop)
{
    const auto events = m_registrations->Events(stop);
    if (events.empty())
        return Pause(interval, nullptr);
    const DWORD signaled = ::WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE,
                                                    static_cast<DWORD>(interval.count()));
    if (signaled == WAIT_TIMEOUT)
        return true;
    if (signaled >= events.size())
        return Pause(interval, nullptr);
    const HANDLE event = events[signaled];
    if (event == stop)
        return false;
    m_registrations->Renew(event);
    return Pause(SETTLING_TIME, stop);
}

} // namespace zelk
