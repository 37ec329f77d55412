# The API reference: target `docs`, from the headers and docs/*.md into docs/api of the build tree.

if(BUILD_TESTING)
  find_package(Doxygen REQUIRED)
else()
  find_package(Doxygen)
endif()
if(NOT DOXYGEN_FOUND)
  return()
endif()

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/docs)
configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)
file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md ${PROJECT_SOURCE_DIR}/include/*/*.h)
add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/docs/api/index.html
  # Pages that no longer have a source must not stay.
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${PROJECT_BINARY_DIR}/docs/api
  COMMAND ${DOXYGEN_EXECUTABLE} ${PROJECT_BINARY_DIR}/docs/Doxyfile
  DEPENDS ${sources} ${PROJECT_BINARY_DIR}/docs/Doxyfile ${PROJECT_SOURCE_DIR}/docs/DoxygenLayout.xml
  COMMENT "Writing the API reference"
  VERBATIM)
add_custom_target(docs ALL DEPENDS ${PROJECT_BINARY_DIR}/docs/api/index.html)

if(BUILD_TESTING)
  add_test(NAME docs COMMAND ${DOXYGEN_EXECUTABLE} ${PROJECT_BINARY_DIR}/docs/Doxyfile)
  set_tests_properties(docs PROPERTIES TIMEOUT 60)
endif()
