// Changes JSON as a tree: of texts whose bytes are changed nearly all are no JSON, and say nothing of what follows.

#include <algorithm>
#include <cstdint>
#include <random>
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
    for (Json& child : node)
        if (node.is_structured())
            Collect(child, nodes);
}

template <class List>
auto& OneOf(List& list, Random& random)
{
    return list[random() % std::size(list)];
}

void MutateText(Json& node, Random& random)
{
    std::string text = node.get<std::string>();
    const std::size_t size = text.size();
    text.resize(size + 1 + random() % 16);
    text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, text.size()));
    node = text;
}

void RemoveOne(Json& node, Random& random)
{
    if (node.is_structured() && !node.empty())
        node.erase(std::next(node.begin(), static_cast<std::ptrdiff_t>(random() % node.size())));
}

/// Adds the value to a list, or to an object under the key of another one's member.
void AddOne(Json& node, const Json& other, const Json& value, Random& random)
{
    if (node.is_array())
        node.push_back(value);
    else if (node.is_object() && other.is_object() && !other.empty())
        node[std::next(other.begin(), static_cast<std::ptrdiff_t>(random() % other.size())).key()] = value;
}

void MutateTree(Json& root, Random& random)
{
    static const Json VALUES[] = {nullptr, true, 0,           1,   4294967295U,   4294967296U,   -1,
                                  1.5,     "",   "automatic", "1", Json::array(), Json::object()};
    std::vector<Json*> nodes;
    Collect(root, nodes);
    Json& node = *OneOf(nodes, random);
    const Json other = *OneOf(nodes, random);
    switch (random() % 6)
    {
    case 0: node = OneOf(VALUES, random); break;
    case 1: node = other; break;
    case 2: RemoveOne(node, random); break;
    case 3: AddOne(node, other, *OneOf(nodes, random), random); break;
    default:
        if (node.is_string())
            MutateText(node, random);
        else if (node.is_number_unsigned())
            node = node.get<std::uint64_t>() ^ 1ULL << random() % 40;
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed)
{
    constexpr unsigned int BYTES_ONCE_IN = 16;
    Random random(seed);
    Json json = Json::parse(data, data + size, nullptr, false);
    if (json.is_discarded() || random() % BYTES_ONCE_IN == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    MutateTree(json, random);
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    std::ranges::copy(text, data);
    return text.size();
}
