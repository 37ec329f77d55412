# zelk_nm_build_stamp: zelk_nm_build_stamp.h. Every build looks at the date, since neither the environment nor a new commit
# makes CMake run again.
set(header ${PROJECT_BINARY_DIR}/generated/zelk_nm_build_stamp.h)
add_custom_target(zelk_nm_date
  COMMAND ${CMAKE_COMMAND} -D OUTPUT=${header} -P ${CMAKE_CURRENT_LIST_DIR}/write_build_stamp.cmake
  BYPRODUCTS ${header}
  COMMENT "Dating the build"
  VERBATIM)
add_library(zelk_nm_build_stamp INTERFACE)
add_dependencies(zelk_nm_build_stamp zelk_nm_date)
target_include_directories(zelk_nm_build_stamp INTERFACE ${PROJECT_BINARY_DIR}/generated)
