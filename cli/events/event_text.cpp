#include "events/event_text.h"

#include <algorithm>
#include <vector>

#include "answer/cell_text.h"
#include "answer/value_text.h"
#include "records/shown_fields.h"

namespace zelkctl
{
namespace
{

using Texts = std::vector<std::string>;

std::string Joined(const Texts& texts)
{
    std::string text;
    for (const std::string& sText : texts)
        text.append(text.empty() ? "" : ", ").append(sText);
    return text.empty() ? "-" : text;
}

Texts TextsWithout(const Texts& texts, const Texts& others)
{
    Texts left;
    std::ranges::copy_if(texts, std::back_inserter(left),
                         [&](const std::string& sText) { return std::ranges::find(others, sText) == others.end(); });
    return left;
}

std::string FromTo(const std::string& sBefore, const std::string& sAfter)
{
    return sBefore + " -> " + sAfter;
}

/// A list as it was or is: each item, and what people read of it.
struct List
{
    List(const Field& field, const Json& value)
        : items(value.is_array() ? value : Json::array()), texts(items.empty() ? Texts() : TextsOf(field, items))
    {
    }

    Json items;
    Texts texts;
};

/// What else is different in items that people read the same text of. How long they stay valid always is.
void AppendDetails(const List& before, const List& after, Texts& changes)
{
    for (std::size_t i = 0; i < after.texts.size(); ++i)
    {
        const auto found = std::ranges::find(before.texts, after.texts[i]);
        if (found == before.texts.end() || !after.items[i].is_object())
            continue;
        const Json& item = before.items[static_cast<std::size_t>(found - before.texts.begin())];
        for (const auto& [sKey, value] : after.items[i].items())
            if (!sKey.ends_with("Lifetime") && item.value(sKey, Json()) != value)
                changes.push_back(after.texts[i] + ' ' + sKey + ' ' + FromTo(TextOf(item[sKey]), TextOf(value)));
    }
}

std::string ListChange(const List& before, const List& after)
{
    Texts changes;
    if (const Texts added = TextsWithout(after.texts, before.texts); !added.empty())
        changes.push_back("added " + Joined(added));
    if (const Texts removed = TextsWithout(before.texts, after.texts); !removed.empty())
        changes.push_back("removed " + Joined(removed));
    AppendDetails(before, after, changes);
    if (changes.empty())
        return FromTo(Joined(before.texts), Joined(after.texts)); // in another order
    std::string text;
    for (const std::string& sChange : changes)
        text.append(text.empty() ? "" : "; ").append(sChange);
    return text;
}

std::string ChangeText(const zelk::AdapterEvent& event)
{
    const auto fields = ShownFields<zelk::Adapter>();
    const auto found = std::ranges::find(fields, event.path, &Field::sKey);
    const Field field = found != fields.end() ? *found : Field{event.path, event.path};
    if (event.before.is_array() || event.after.is_array())
        return field.sLabel + ": " + ListChange({field, event.before}, {field, event.after});
    return field.sLabel + ": " + FromTo(Joined(TextsOf(field, event.before)), Joined(TextsOf(field, event.after)));
}

} // namespace

std::string TextOf(const zelk::AdapterEvent& event)
{
    const std::string sBegin = zelk::TimeText(event.time) + "  " + Printable(event.adapter) + "  ";
    if (event.path != "adapter")
        return sBegin + ChangeText(event);
    return sBegin + (event.before.is_null() ? "The adapter was added." : "The adapter was removed.");
}

} // namespace zelkctl
