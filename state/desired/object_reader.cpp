#include <state/desired/object_reader.h>

#include <algorithm>

namespace zelk
{

std::string PlaceOf(const std::string& parent, std::size_t element)
{
    return parent + '/' + std::to_string(element);
}

std::string PlaceOf(const std::string& parent, std::string_view member)
{
    std::string place = parent + '/';
    for (const char c : member)
    {
        if (c == '~')
            place += "~0";
        else if (c == '/')
            place += "~1";
        else
            place += c;
    }
    return place;
}

const Json* ObjectReader::Find(const char* key)
{
    m_known.emplace_back(key);
    if (!m_object.is_object())
        return nullptr;
    const auto found = m_object.find(key);
    return found != m_object.end() ? &*found : nullptr;
}

void ObjectReader::Finish()
{
    if (!m_object.is_object())
        return;
    for (const auto& member : m_object.items())
        if (std::ranges::find(m_known, member.key()) == m_known.end())
            RefuseKey(member.key());
}

void ObjectReader::RefuseKey(const std::string& key)
{
    std::string text = "is not a known key";
    for (const std::string_view known : m_known)
        text += (known == m_known.front() ? "; known here are " : ", ") + std::string(known);
    Refuse(PlaceOf(m_place, std::string_view(key)), std::move(text));
}

} // namespace zelk
