# zelk_nm_test_options: what is tested is optimised. Its tests are a little: without inlining, the thousands of small
# template functions that each source compiles take the linker a minute. To carry their debug information about takes
# longer than to run them; the debug preset has it.
add_library(zelk_nm_test_options INTERFACE)
target_compile_options(zelk_nm_test_options INTERFACE
  $<$<CONFIG:Release>:-O1;-g0>
  # GCC 12 finds faults in optimised std::wstring that are not there.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overread>
  # What tests execute is not counted itself.
  $<$<BOOL:${ZELK_NM_COVERAGE}>:-fno-profile-instr-generate;-fno-coverage-mapping>)

# zelk_nm_add_test_program(NAME SOURCES <file>... [INTERNALS] [PLATFORM] [DLL] [OLDER] [TIMEOUT <seconds>])
#
# One GoogleTest program, which is one CTest entry: a Wine process per case would cost more than the cases.
# INTERNALS links the library's own objects and opens src/; PLATFORM adds the platform that is made up for them. DLL links
# ZELK_NM.DLL as any caller does.
# OLDER adds a second entry, NAME_5_2: the same program on a Windows before Vista. The two share a folder, so they need a
# common RESOURCE_LOCK.
# The program lives in a folder of its own, with its own Logfiles and DLL, so that no trace or ini file meets another's.
function(zelk_nm_add_test_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNALS;PLATFORM;DLL;OLDER" "TIMEOUT" "SOURCES")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "zelk_nm_add_test_program(${name}): unknown arguments ${arg_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()

  set(folder ${PROJECT_BINARY_DIR}/tests/${name})
  file(MAKE_DIRECTORY ${folder}/Logfiles)
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/tests/golden ${folder}/golden SYMBOLIC)

  add_executable(${name} ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${folder})
  target_link_libraries(${name} PRIVATE zelk_nm_options zelk_nm_test_options GTest::gmock_main)
  target_link_options(${name} PRIVATE $<$<CONFIG:Release>:-s>)
  target_precompile_headers(${name} REUSE_FROM zelk_nm_test_support)
  if(TARGET zelk_nm_test_support)
    target_link_libraries(${name} PRIVATE zelk_nm_test_support)
  endif()

  if(arg_PLATFORM)
    set(arg_INTERNALS ON)
    target_link_libraries(${name} PRIVATE zelk_nm_test_platform)
  endif()
  if(arg_INTERNALS)
    target_compile_definitions(${name} PRIVATE ZELK_NM_STATIC)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PRIVATE zelk_nm_objects)
  endif()
  if(arg_DLL)
    target_link_libraries(${name} PRIVATE zelk_nm::zelk_nm)
    add_custom_command(OUTPUT ${folder}/ZELK_NM.DLL
      COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:zelk_nm> ${folder}/ZELK_NM.DLL
      DEPENDS zelk_nm $<TARGET_FILE:zelk_nm>
      VERBATIM)
    target_sources(${name} PRIVATE ${folder}/ZELK_NM.DLL)
  endif()

  set(tests ${name})
  add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY ${folder})
  if(arg_OLDER)
    list(APPEND tests ${name}_5_2)
    add_test(NAME ${name}_5_2 COMMAND ${PROJECT_SOURCE_DIR}/scripts/wine-run-older.sh $<TARGET_FILE:${name}>
      WORKING_DIRECTORY ${folder})
  endif()
  # The emulator's own limit comes first: it ends the Windows process, not only the script around it.
  math(EXPR limit "${arg_TIMEOUT} - 5")
  set_tests_properties(${tests} PROPERTIES TIMEOUT ${arg_TIMEOUT} ENVIRONMENT ZELK_WINE_TIMEOUT=${limit})
endfunction()
