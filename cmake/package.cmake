# What `cmake --install` and CPack make of the project. The components: runtime, which is all that a boot image needs;
# state, the DLL with the C interface; development; documentation; collection, the archive for Ansible; symbols, the debug
# information of the binaries.
include(CMakePackageConfigHelpers)

set(package_files ${PROJECT_BINARY_DIR}/package)
set(doc_folder share/doc/zelk_nm)
set(config_folder lib/cmake/zelk_nm)

install(TARGETS zelk_nm EXPORT zelk_nm
  RUNTIME DESTINATION bin COMPONENT runtime
  ARCHIVE DESTINATION lib COMPONENT development
  INCLUDES DESTINATION include)
install(TARGETS zelk_state_dll EXPORT zelk_nm
  RUNTIME DESTINATION bin COMPONENT state
  ARCHIVE DESTINATION lib COMPONENT development
  INCLUDES DESTINATION include)
# For compilers that make import libraries of their own.
install(FILES state/c_interface/zelk_state.def DESTINATION lib COMPONENT development)
install(TARGETS zelkctl RUNTIME DESTINATION bin COMPONENT runtime)
# The library's trace goes into a folder beside the program and is never written without one.
install(DIRECTORY DESTINATION bin/Logfiles COMPONENT runtime)
# Only asked for by its name, and in an archive of its own.
install(FILES $<TARGET_FILE:zelk_nm>.debug $<TARGET_FILE:zelk_state_dll>.debug $<TARGET_FILE:zelkctl>.debug
  DESTINATION bin COMPONENT symbols
  OPTIONAL EXCLUDE_FROM_ALL)

install(DIRECTORY include/zelk_nm include/zelk_state DESTINATION include COMPONENT development FILES_MATCHING PATTERN *.h)
install(EXPORT zelk_nm NAMESPACE zelk_nm:: FILE zelk_nm-targets.cmake DESTINATION ${config_folder} COMPONENT development)
install(FILES cmake/zelk_nm-config.cmake DESTINATION ${config_folder} COMPONENT development)
write_basic_package_version_file(${package_files}/zelk_nm-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${package_files}/zelk_nm-config-version.cmake DESTINATION ${config_folder} COMPONENT development)
foreach(library zelk_nm zelk_state)
  string(TOUPPER ${library} file)
  configure_file(cmake/library.pc.in ${package_files}/${library}.pc @ONLY)
  install(FILES ${package_files}/${library}.pc DESTINATION lib/pkgconfig COMPONENT development)
endforeach()
install(DIRECTORY examples DESTINATION ${doc_folder} COMPONENT development)

install(FILES README.md LICENSE DESTINATION ${doc_folder} COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${doc_folder} COMPONENT documentation OPTIONAL
  FILES_MATCHING PATTERN *.md PATTERN *.schema.json)
# There once the API reference has been made.
install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/api DESTINATION ${doc_folder}/docs COMPONENT documentation OPTIONAL)

# The linker says which archives it took from; that list and the binaries make the SPDX document.
set(spdx ${package_files}/zelk_nm.spdx.json)
foreach(target zelk_nm zelk_state_dll zelkctl)
  target_link_options(${target} PRIVATE LINKER:-Map=${package_files}/${target}.map)
endforeach()
add_custom_command(OUTPUT ${spdx}
  COMMAND ${CMAKE_COMMAND} -D OUTPUT=${spdx} -D VERSION=${PROJECT_VERSION} -D GCC_VERSION=${CMAKE_CXX_COMPILER_VERSION}
    -D DLL=$<TARGET_FILE:zelk_nm> -D DLL_MAP=${package_files}/zelk_nm.map
    -D STATE_DLL=$<TARGET_FILE:zelk_state_dll> -D STATE_DLL_MAP=${package_files}/zelk_state_dll.map
    -D PROGRAM=$<TARGET_FILE:zelkctl> -D PROGRAM_MAP=${package_files}/zelkctl.map
    -P ${CMAKE_CURRENT_LIST_DIR}/write_spdx.cmake
  DEPENDS zelk_nm zelk_state_dll zelkctl
    $<TARGET_FILE:zelk_nm> $<TARGET_FILE:zelk_state_dll> $<TARGET_FILE:zelkctl>
    ${CMAKE_CURRENT_LIST_DIR}/write_spdx.cmake LICENSE
  COMMENT "Listing what went into the binaries"
  VERBATIM)
add_custom_target(zelk_nm_spdx ALL DEPENDS ${spdx})
install(FILES ${spdx} DESTINATION ${doc_folder} COMPONENT documentation)

# The notices that those who made the linked parts ask for.
foreach(package g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev libcli11-dev nlohmann-json3-dev)
  install(FILES /usr/share/doc/${package}/copyright DESTINATION ${doc_folder}/licences RENAME ${package}.txt
    COMPONENT documentation OPTIONAL)
endforeach()

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME zelk_nm-${PROJECT_VERSION}-win64)
set(CPACK_PACKAGE_VENDOR Velmor)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_COMPONENTS_ALL runtime state development documentation collection symbols)
foreach(component runtime state development documentation collection)
  string(TOUPPER CPACK_COMPONENT_${component}_GROUP variable)
  set(${variable} package)
endforeach()
set(CPACK_COMPONENT_SYMBOLS_GROUP symbols)
set(CPACK_ARCHIVE_PACKAGE_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}-symbols)
include(CPack)
