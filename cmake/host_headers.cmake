# zelk_nm_host_headers: header-only libraries of the distribution. They are reached through a folder of links because
# /usr/include itself would bring the build machine's own C headers into the cross compile.
set(folder ${PROJECT_BINARY_DIR}/host-headers)
file(MAKE_DIRECTORY ${folder})

foreach(header CLI/CLI.hpp nlohmann/json.hpp spdlog/spdlog.h fmt/core.h)
  get_filename_component(name ${header} DIRECTORY)
  find_path(ZELK_NM_${name}_INCLUDE_DIR ${header} PATHS /usr/include /usr/local/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(CREATE_LINK ${ZELK_NM_${name}_INCLUDE_DIR}/${name} ${folder}/${name} SYMBOLIC)
endforeach()

add_library(zelk_nm_host_headers INTERFACE)
target_include_directories(zelk_nm_host_headers SYSTEM INTERFACE ${folder})
