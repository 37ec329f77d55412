// Keeps what clang's counters have counted. Its own run time for that is not packaged for Windows.
//
// Each module adds its counts to a file of its own when it is unloaded or its process ends; a process that is killed
// loses its own. What maps the file is looked up when the module is loaded, because tests replace imports.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <windows.h>

extern "C" int __llvm_profile_runtime;
int __llvm_profile_runtime = 0; // compiled code refers to it, so that this is linked

namespace
{

// The linker sorts the parts of a section by what follows the "$": these stand around what the compiler made.
#define PROFILE_SECTION(name) __attribute__((section(name), used))
PROFILE_SECTION(".lprfd$A") std::uint64_t records_begin = 0;
PROFILE_SECTION(".lprfd$Z") std::uint64_t records_end = 0;
PROFILE_SECTION(".lprfc$A") std::uint64_t counters_begin = 0;
PROFILE_SECTION(".lprfc$Z") std::uint64_t counters_end = 0;
PROFILE_SECTION(".lprfn$A") const char names_begin = 0; // the readers expect one byte here
PROFILE_SECTION(".lprfn$Z") const char names_end = 0;

/// Describes a function.
struct Record
{
    std::uint64_t name, hash, counters, function, values;
    std::uint32_t counterCount;
    std::uint16_t valueSites[2];
};

/// The beginning of a file of raw counts.
struct Header
{
    std::uint64_t magic = 0xFF6C70726F667281; // "\xFFlprofr\x81"
    std::uint64_t version = 8;
    std::uint64_t binaryIdsSize = 0, recordCount = 0, paddingBeforeCounters = 0, counterCount = 0;
    std::uint64_t paddingAfterCounters = 0, namesSize = 0, countersDelta = 0, namesDelta = 0;
    std::uint64_t lastKindOfValue = 1;
};

struct Platform
{
    decltype(&CreateFileW) createFile;
    decltype(&CreateFileMappingW) createFileMapping;
    decltype(&MapViewOfFile) mapViewOfFile;
    decltype(&UnmapViewOfFile) unmapViewOfFile;
    decltype(&CloseHandle) closeHandle;
};
constinit Platform platform = {};

template <typename T>
T* After(T& marker)
{
    return &marker + 1;
}

DWORD BytesBetween(const void* pBegin, const void* pEnd)
{
    return static_cast<DWORD>(static_cast<const char*>(pEnd) - static_cast<const char*>(pBegin));
}

/// The same for modules of the same functions, which share a file.
std::uint64_t IdOfModule(std::size_t recordCount)
{
    std::uint64_t id = recordCount;
    const auto* const pRecords = reinterpret_cast<const Record*>(After(records_begin));
    for (std::size_t i = 0; i < recordCount; ++i)
        id = id * 31 + pRecords[i].name + pRecords[i].hash;
    return id;
}

/// Other processes may be adding to the same view.
void AddTo(char* pFile, const Header& header)
{
    const std::size_t recordsSize = header.recordCount * sizeof(Record);
    std::memcpy(pFile, &header, sizeof(header));
    std::memcpy(pFile += sizeof(header), After(records_begin), recordsSize);
    auto* const pCounts = reinterpret_cast<std::uint64_t*>(pFile += recordsSize);
    for (std::size_t i = 0; i < header.counterCount; ++i)
        std::atomic_ref(pCounts[i]).fetch_add(After(counters_begin)[i], std::memory_order_relaxed);
    std::memcpy(pFile + header.counterCount * sizeof(std::uint64_t), After(names_begin), header.namesSize);
}

void Save()
{
    Header header;
    const DWORD recordsSize = BytesBetween(After(records_begin), &records_end) / sizeof(Record) * sizeof(Record);
    header.recordCount = recordsSize / sizeof(Record);
    header.counterCount = BytesBetween(After(counters_begin), &counters_end) / sizeof(std::uint64_t);
    header.namesSize = BytesBetween(After(names_begin), &names_end);
    // The compiler writes the same distance with 32 bits.
    header.countersDelta = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(After(counters_begin)) -
                                                      reinterpret_cast<std::uintptr_t>(After(records_begin)));
    header.namesDelta = reinterpret_cast<std::uintptr_t>(After(names_begin));

    const std::uint64_t size =
        sizeof(header) + recordsSize + header.counterCount * sizeof(std::uint64_t) + (header.namesSize + 7) / 8 * 8;
    wchar_t path[] = ZELK_PROFILES L"/0123456789ABCDEF.profraw";
    for (std::size_t i = 0; i < 16; ++i)
        path[std::size(ZELK_PROFILES) + i] = L"0123456789ABCDEF"[IdOfModule(header.recordCount) >> i * 4 & 15];
    const HANDLE file = platform.createFile(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    const HANDLE mapping =
        platform.createFileMapping(file, nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(size), nullptr);
    if (void* const pView = platform.mapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0))
    {
        AddTo(static_cast<char*>(pView), header);
        platform.unmapViewOfFile(pView);
    }
    platform.closeHandle(mapping);
    platform.closeHandle(file);
}

/// The first object of its module, and so the last that is destroyed.
struct Counting
{
    Counting() { platform = {CreateFileW, CreateFileMappingW, MapViewOfFile, UnmapViewOfFile, CloseHandle}; }
    ~Counting() { Save(); }
};
__attribute__((init_priority(101))) const Counting counting;

} // namespace
