// Changes JSON as a tree: of texts whose bytes are changed nearly all are no JSON, and say nothing of what follows.

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <state/fields/json.h>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace
{

using zelk::Json;
using Random = std::minstd_rand;

void Collect(Json& node, std::vector<Json*>& nodes)
{
    nodes.push_back(&node);
    if (node.is_structured())
        for (Json& child : node)
            Collect(child, nodes);
}

template <class List>
auto OneOf(List& list, Random& random)
{
    return std::next(std::begin(list), static_cast<std::ptrdiff_t>(random() % std::size(list)));
}

void MutateText(Json& node, Random& random)
{
    auto& text = node.get_ref<std::string&>();
    const std::size_t size = text.size();
    text.resize(size + 1 + random() % 16);
    text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, text.size()));
}

void MutateTree(Json& root, Random& random)
{
    static const Json VALUES[] = {nullptr, true, 0,           1,   4294967295U,   4294967296U,
                                  -1,      1.5,  "automatic", "1", Json::array(), Json::object()};
    std::vector<Json*> nodes;
    Collect(root, nodes);
    Json& node = **OneOf(nodes, random);
    Json other = **OneOf(nodes, random);
    const unsigned int choice = random() % 5;
    if (node.is_string() && choice > 1)
        MutateText(node, random);
    else if (node.is_structured() && !node.empty() && choice == 2)
        node.erase(OneOf(node, random));
    else if (node.is_array() && choice > 2)
        node.push_back(other);
    else if (node.is_object() && other.is_object() && !other.empty() && choice > 2)
        node[OneOf(other, random).key()] = **OneOf(nodes, random);
    else
        node = choice % 2 == 0 ? *OneOf(VALUES, random) : other;
}

/// A text and what it says. It is kept, because what a call gives is mostly what the next one gets.
struct Document
{
    std::string text;
    Json json = Json::value_t::discarded;
};

void Read(Document& document, std::string_view text)
{
    if (document.text == text)
        return;
    document.text = text;
    document.json = Json::parse(text, nullptr, false);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed)
{
    constexpr unsigned int BYTES_ONCE_IN = 16;
    static Document document;
    Random random(seed);
    Read(document, {reinterpret_cast<const char*>(data), size});
    if (!document.json.is_discarded() && random() % BYTES_ONCE_IN != 0)
    {
        MutateTree(document.json, random);
        document.text = document.json.dump(-1, ' ', false, Json::error_handler_t::replace);
        if (document.text.size() <= maxSize)
            return document.text.copy(reinterpret_cast<char*>(data), maxSize);
        document = {};
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}
