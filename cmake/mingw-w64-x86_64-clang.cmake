# The second compiler. It takes headers, run time and linker of the first one, whose thread model it must share.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-x86_64.cmake)

execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
  OUTPUT_VARIABLE gcc_folder OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(gcc_folder ${gcc_folder} DIRECTORY)
set(gcc_headers ${gcc_folder}/include/c++)

set(CMAKE_C_COMPILER clang-16)
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
string(CONCAT CMAKE_CXX_FLAGS_INIT
  "-stdlib++-isystem ${gcc_headers} -stdlib++-isystem ${gcc_headers}/x86_64-w64-mingw32 "
  "-stdlib++-isystem ${gcc_headers}/backward "
  "-femulated-tls") # as the run time's own thread-local variables are
# The other linker too: GNU's reports every type name for which the two compilers make sections of different sizes. A few
# functions stand both in GCC's run time and, inline, in what clang makes of its headers.
foreach(kind EXE SHARED MODULE)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS_INIT " -fuse-ld=lld-16 -L${gcc_folder} -Wl,--allow-multiple-definition")
endforeach()
set(CMAKE_CXX_STANDARD_LIBRARIES "-lpthread")
