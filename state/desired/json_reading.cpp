#include <state/desired/json_reading.h>

#include <functional>
#include <set>
#include <utility>

#include <state/desired/object_reader.h>

namespace zelk
{
namespace
{

using Faults = std::vector<Fault>;

/// Ends the parsing: what is written to be read again is written by a call for each level.
struct NestedTooDeep
{
};
constexpr int DEEPEST = 100;

/// The parser keeps one of two members of the same name; nobody can tell which one was meant.
class KeyWatch
{
public:
    explicit KeyWatch(Faults& faults) : m_faults(faults) {}

    bool operator()(int depth, Json::parse_event_t event, const Json& json)
    {
        if (depth > DEEPEST)
            throw NestedTooDeep();
        if (event == Json::parse_event_t::object_start)
            m_objects.emplace_back();
        else if (event == Json::parse_event_t::object_end)
            m_objects.pop_back();
        else if (event == Json::parse_event_t::key && !m_objects.back().insert(json.get<std::string>()).second)
            Refuse(m_faults, "", "the key \"" + json.get<std::string>() + "\" stands twice in one object");
        return true;
    }

private:
    std::vector<std::set<std::string>> m_objects;
    Faults& m_faults;
};

} // namespace

std::nullopt_t Refuse(Faults& faults, const std::string& place, std::string text)
{
    faults.push_back({FaultKind::MEANING, place, std::move(text)});
    return std::nullopt;
}

std::optional<Json> ParseJson(std::string_view text, Faults& faults)
{
    try
    {
        KeyWatch watch(faults);
        return Json::parse(text, std::ref(watch));
    }
    catch (const NestedTooDeep&)
    {
        return Refuse(faults, "", "its values are nested more than 100 deep");
    }
    catch (const Json::exception& error)
    {
        const std::string_view message = error.what();
        return Refuse(faults, "", "this is not JSON: " + std::string(message.substr(message.find(']') + 2)));
    }
}

std::optional<bool> ReadBool(const Json& json, const std::string& place, Faults& faults)
{
    if (!json.is_boolean())
        return Refuse(faults, place, "must be true or false");
    return json.get<bool>();
}

std::optional<std::string> ReadText(const Json& json, const std::string& place, Faults& faults)
{
    if (!json.is_string())
        return Refuse(faults, place, "must be a text");
    return json.get<std::string>();
}

std::optional<std::uint32_t> ReadNumber(const Json& json, const std::string& place, Faults& faults)
{
    constexpr std::uint64_t GREATEST = 0xFFFFFFFF;
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() > GREATEST)
        return Refuse(faults, place, "must be a whole number from 0 to 4294967295");
    return static_cast<std::uint32_t>(json.get<std::uint64_t>());
}

std::optional<IpAddress> ReadAddress(const Json& json, const std::string& place, Faults& faults)
{
    auto address = json.is_string() ? IpAddress::Parse(json.get_ref<const std::string&>()) : std::nullopt;
    if (!address)
        return Refuse(faults, place, "must be an IPv4 or IPv6 address");
    return address;
}

std::optional<std::vector<std::string>> ReadTexts(const Json& json, const std::string& place, Faults& faults)
{
    if (!json.is_array())
        return Refuse(faults, place, "must be a list of texts");
    std::vector<std::string> texts;
    for (const Json& element : json)
        if (auto text = ReadText(element, PlaceOf(place, texts.size()), faults))
            texts.push_back(std::move(*text));
        else
            return std::nullopt;
    return texts;
}

} // namespace zelk
