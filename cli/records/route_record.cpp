#include "records/route_record.h"

#include "answer/json_value.h"

namespace zelkctl
{
namespace
{

constexpr Field FIELDS[] = {
    {"destination", "Destination"}, {"nextHop", "Next hop"}, {"metric", "Metric"}, {"index", "Index"}};

} // namespace

Json RecordOf(const TOLVA::ROUTE_INFO& route)
{
    Json record;
    record["destination"] = NetworkOrNull(route.Destination, route.PrefixLength);
    record["nextHop"] = AddressOrNull(route.NextHop);
    record["metric"] = route.ulMetric;
    record["index"] = route.ulIndex;
    return record;
}

std::span<const Field> RouteFields()
{
    return FIELDS;
}

} // namespace zelkctl
