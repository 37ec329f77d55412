#include <state/notifications/adapter_event.h>

#include <algorithm>

#include <state/fields/item.h>

namespace zelk
{
namespace
{

constexpr Field<AdapterEvent> ADAPTER_EVENT[] = {
    Item<AdapterEvent, &AdapterEvent::time>("time", "Time", "When it was seen, in UTC."),
    Item<AdapterEvent, &AdapterEvent::adapter>("adapter", "Adapter", "Name of the adapter."),
    Item<AdapterEvent, &AdapterEvent::guid>("guid", "GUID", "GUID of the adapter."),
    Item<AdapterEvent, &AdapterEvent::path>("path", "Item",
                                            "What has changed, such as \"ipv4.addresses\"; \"adapter\" for an adapter "
                                            "that was added or removed."),
    Item<AdapterEvent, &AdapterEvent::before>("before", "Before",
                                              "The value before; null for an adapter that was added."),
    Item<AdapterEvent, &AdapterEvent::after>("after", "After", "The value now; null for an adapter that was removed."),
};

constexpr const char* VOLATILE[] = {"transmitSpeed", "receiveSpeed"};
constexpr const char* LIFETIMES[] = {"validLifetime", "preferredLifetime"};

/// A list of records without how long they stay valid; any other value as it is.
Json WithoutLifetimes(Json value)
{
    if (value.is_array())
        for (Json& element : value)
            if (element.is_object())
                for (const char* const key : LIFETIMES)
                    element.erase(key);
    return value;
}

/// Goes through all that two records of the same adapter have.
class Comparison
{
public:
    Comparison(const AdapterEvent& form, std::vector<AdapterEvent>& events) : m_form(form), m_events(events) {}

    void Compare(const Json& before, const Json& after, const std::string& prefix = {})
    {
        for (const auto& [key, value] : before.items())
        {
            const Json& now = after[key];
            if (value.is_object() && now.is_object())
                Compare(value, now, prefix + key + '.');
            else if (value != now && std::ranges::find(VOLATILE, key) == std::end(VOLATILE) &&
                     WithoutLifetimes(value) != WithoutLifetimes(now))
                Add(prefix + key, value, now);
        }
    }

    void Add(const std::string& path, const Json& before, const Json& after)
    {
        AdapterEvent event = m_form;
        event.path = path;
        event.before = before;
        event.after = after;
        m_events.push_back(std::move(event));
    }

private:
    const AdapterEvent& m_form; ///< with what they have in common
    std::vector<AdapterEvent>& m_events;
};

/// What stays the same. Two devices without a driver have no GUID, and may have the same name.
std::string IdentityOf(const Adapter& adapter)
{
    return adapter.guid ? adapter.guid->ToText() : adapter.deviceInstance.value_or(NameOf(adapter));
}

const Adapter* FindSame(const Machine& machine, const Adapter& adapter)
{
    const auto found = std::ranges::find(machine.adapters, IdentityOf(adapter), IdentityOf);
    return found != machine.adapters.end() ? &*found : nullptr;
}

} // namespace

std::vector<AdapterEvent> EventsBetween(const Machine& before, const Machine& after, std::chrono::sys_seconds time)
{
    constexpr const char* WHOLE = "adapter";
    std::vector<AdapterEvent> events;
    for (const Adapter& adapter : before.adapters)
    {
        const AdapterEvent form = {.time = time, .adapter = NameOf(adapter), .guid = adapter.guid};
        const Adapter* const now = FindSame(after, adapter);
        if (now == nullptr)
            Comparison(form, events).Add(WHOLE, ToJson(adapter), Json());
        else if (*now != adapter)
            Comparison(form, events).Compare(ToJson(adapter), ToJson(*now));
    }
    for (const Adapter& adapter : after.adapters)
        if (FindSame(before, adapter) == nullptr)
            Comparison({.time = time, .adapter = NameOf(adapter), .guid = adapter.guid}, events)
                .Add(WHOLE, Json(), ToJson(adapter));
    return events;
}

template <>
FieldTable<AdapterEvent> FieldsOf()
{
    return {"adapterEvent", ADAPTER_EVENT};
}

} // namespace zelk
