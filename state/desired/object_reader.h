#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <state/desired/fault.h>
#include <state/fields/json.h>

namespace zelk
{

/// The place of an element or member below another one, as a JSON pointer.
std::string PlaceOf(const std::string& parent, std::size_t element);
std::string PlaceOf(const std::string& parent, std::string_view member);

/// Reads the members of one JSON object and refuses those that nobody asked for.
class ObjectReader
{
public:
    ObjectReader(const Json& object, std::string place, std::vector<Fault>& faults)
        : m_object(object), m_place(std::move(place)), m_faults(faults)
    {
        if (!object.is_object())
            Refuse(m_place, "must be an object");
    }

    /// A member that can be left out. `read` takes its JSON, its place and the faults, and gives the value or, after a
    /// fault, nothing.
    template <class T, class Read>
    void Take(const char* key, std::optional<T>& value, Read&& read)
    {
        if (const Json* const member = Find(key))
            value = read(*member, PlaceOf(m_place, std::string_view(key)), m_faults);
    }

    /// A member that has to be there.
    template <class T, class Read>
    void Require(const char* key, T& value, Read&& read)
    {
        std::optional<T> taken;
        Take(key, taken, std::forward<Read>(read));
        if (taken)
            value = std::move(*taken);
        else if (m_object.is_object() && !m_object.contains(key))
            Refuse(m_place, std::string("lacks \"") + key + '"');
    }

    /// Refuses all members that have not been asked for.
    void Finish();

private:
    const Json* Find(const char* key);
    void RefuseKey(const std::string& key);
    void Refuse(std::string place, std::string text)
    {
        m_faults.push_back({FaultKind::MEANING, std::move(place), std::move(text)});
    }

    const Json& m_object;
    std::string m_place;
    std::vector<Fault>& m_faults;
    std::vector<std::string_view> m_known;
};

/// Reads an object of which `read` takes all members: it gets the reader and the value.
template <class T, class Read>
std::optional<T> ReadObject(const Json& json, const std::string& place, std::vector<Fault>& faults, Read&& read)
{
    T value;
    ObjectReader reader(json, place, faults);
    read(reader, value);
    reader.Finish();
    return value;
}

} // namespace zelk
