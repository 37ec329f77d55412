#pragma once

#include <string>

#include <support/resources.h>
#include <torture/steps.h>

namespace torture
{

/// What this process holds.
struct Holdings
{
    unsigned int handles;
    std::size_t blocks;
    std::size_t privateKilobytes;
};

/// Of the process's own committed pages; what it maps of files does not count.
inline std::size_t PrivateBytes()
{
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* address = nullptr; ::VirtualQuery(address, &region, sizeof(region)) != 0;
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize)
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            bytes += region.RegionSize;
    return bytes;
}

inline Holdings Held()
{
    return {testing_support::CountHandles(), testing_support::CountHeapBlocks(), PrivateBytes() / 1024};
}

/// The heap grows in steps of its own. What is lost once in a hundred rounds is more than this.
inline constexpr std::size_t HEAP_STEP_KB = 256;

/// Prints what is held more than before, and ends the step where that is too much.
inline void CheckSame(const Holdings& before, const Holdings& after, const char* what)
{
    const std::string name = what;
    Figure((name + ": handles more").c_str(), static_cast<long>(after.handles) - static_cast<long>(before.handles));
    Figure((name + ": blocks more").c_str(), static_cast<long>(after.blocks) - static_cast<long>(before.blocks));
    Figure((name + ": private kilobytes more").c_str(),
           static_cast<long>(after.privateKilobytes) - static_cast<long>(before.privateKilobytes));
    Check(after.handles <= before.handles, name + " leave handles");
    Check(after.blocks <= before.blocks, name + " leave blocks");
    Check(after.privateKilobytes <= before.privateKilobytes + HEAP_STEP_KB, name + " grow");
}

} // namespace torture
