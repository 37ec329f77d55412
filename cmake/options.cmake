# zelk_nm_options: how every source of this project is compiled and linked.

option(ZELK_NM_SANITIZE "Undefined behaviour traps in Debug builds" ON)
option(ZELK_NM_COVERAGE "Count what is executed (clang)" OFF)
option(ZELK_NM_PRECOMPILE "Precompile other projects' headers for the product too, not only for its tests" ON)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -g1 -DNDEBUG") # for the stack of a crash; a debugger gets the debug preset
set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g")
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  set(CMAKE_CXX_FLAGS_DEBUG "-O0 -gline-tables-only") # a trap needs a line; the first compiler's are for debugging
endif()

add_library(zelk_nm_options INTERFACE)

target_compile_definitions(zelk_nm_options INTERFACE
  UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 WINVER=0x0A00
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

set(warnings
  -Wall -Wextra -Wpedantic -Werror
  -Wshadow -Wconversion -Wsign-conversion -Wdouble-promotion -Wcast-align -Wcast-qual -Wformat=2
  -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi -Wimplicit-fallthrough
  -Wunused -Wundef -Wredundant-decls -Wold-style-cast)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND warnings -Wduplicated-cond -Wduplicated-branches -Wlogical-op)
endif()

target_compile_options(zelk_nm_options INTERFACE
  # Only C++: the resource compiler gets a target's options too.
  $<$<COMPILE_LANGUAGE:CXX>:${warnings}>
  # The same bytes from every folder; of two maps that fit the last one counts.
  $<$<COMPILE_LANGUAGE:CXX>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.;-ffile-prefix-map=${PROJECT_BINARY_DIR}=.>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Release>>:-ffunction-sections;-fdata-sections>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Debug>>:-Wa,-mbig-obj>)

target_link_options(zelk_nm_options INTERFACE
  LINKER:--no-insert-timestamp
  $<$<CONFIG:Release>:LINKER:--gc-sections>)

if(ZELK_NM_SANITIZE)
  # Enumerations come out of the platform's tables and may hold what newer systems have added: their range is no error.
  set(sanitize -fsanitize=undefined -fno-sanitize=enum)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND sanitize -fsanitize-undefined-trap-on-error)
  else()
    list(APPEND sanitize -fsanitize-trap=undefined)
  endif()
  target_compile_options(zelk_nm_options INTERFACE $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Debug>>:${sanitize}>)
endif()

if(ZELK_NM_COVERAGE)
  # Clang's counters follow the source: a branch is a condition that somebody wrote, not a jump that was compiled.
  target_compile_options(zelk_nm_options INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fprofile-instr-generate;-fcoverage-mapping;-fprofile-update=atomic>)
  add_library(zelk_nm_counters STATIC ${PROJECT_SOURCE_DIR}/tests/coverage/counters.cpp)
  target_compile_definitions(zelk_nm_counters PRIVATE ZELK_PROFILES=L"Z:${PROJECT_BINARY_DIR}/profiles")
  target_link_libraries(zelk_nm_options INTERFACE zelk_nm_counters)
endif()

# zelk_nm_precompile(TARGET HEADER...): the headers of the platform and of the standard library, which take much of the
# time to compile, are compiled once, and with them the larger HEADERs of other projects. These are for clang alone: GCC
# reads all of a precompiled header for each source, and sources that do not need them would take three times as long.
# A source still has to include what it uses: the debug preset compiles the product without, and shows where one does not.
function(zelk_nm_precompile target)
  if(ZELK_NM_PRECOMPILE)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      set(ARGN "")
    endif()
    zelk_nm_precompile_always(${target} ${ARGN})
  endif()
endfunction()

function(zelk_nm_precompile_always target)
  target_precompile_headers(${target} PRIVATE ${ARGN}
    <winsock2.h> <ws2tcpip.h> <iphlpapi.h> <windows.h> <setupapi.h>
    <algorithm> <functional> <memory> <optional> <string> <string_view> <vector>)
endfunction()
