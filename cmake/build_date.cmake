# zelk_nm_build_date(VARIABLE): the Unix time that stands for "now" in whatever is made, so that one commit makes the same
# files whenever it is built. It is SOURCE_DATE_EPOCH of the environment or else the commit's time. Sources without their
# history, as an archive of a commit gives them, carry that time in their files.
function(zelk_nm_build_date variable)
  set(date "$ENV{SOURCE_DATE_EPOCH}")
  set(source_dir ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/..)
  if(NOT date)
    execute_process(COMMAND git log -1 --format=%ct -- . WORKING_DIRECTORY ${source_dir}
      OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  if(NOT date)
    file(TIMESTAMP ${source_dir}/CMakeLists.txt date "%s" UTC)
  endif()
  if(NOT date MATCHES "^[0-9]+$")
    message(FATAL_ERROR "The build has no date: SOURCE_DATE_EPOCH is \"${date}\"")
  endif()
  set(${variable} ${date} PARENT_SCOPE)
endfunction()

# zelk_nm_format_date(VARIABLE DATE FORMAT): as string(TIMESTAMP), in UTC.
function(zelk_nm_format_date variable date format)
  set(ENV{SOURCE_DATE_EPOCH} ${date})
  string(TIMESTAMP text "${format}" UTC)
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()
