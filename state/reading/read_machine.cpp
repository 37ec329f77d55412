#include <state/reading/read_machine.h>

#include <utility>

#include <state/reading/adapter_table.h>
#include <state/reading/link_table.h>
#include <state/reading/reading.h>

namespace zelk
{

Machine ReadMachine(const ReadOptions&)
{
    Reading reading(GetSystemVersion());
    const LinkTable links = ReadLinkTable(reading);
    if (!ReadAdapterTable(reading, links))
        throw StateError(reading.machine.problems.back());
    return std::move(reading.machine);
}

} // namespace zelk
