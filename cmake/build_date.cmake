# zelk_nm_build_date(VARIABLE): the Unix time that stands for "now" in whatever is made. It is SOURCE_DATE_EPOCH of the
# environment; or else the commit's time, so that one commit makes the same files whenever it is built; or else, where there
# are uncommitted changes, the time itself. Sources without their history, as an archive of a commit gives them, carry the
# commit's time in their files.
function(zelk_nm_build_date variable)
  set(date "$ENV{SOURCE_DATE_EPOCH}")
  if(NOT date)
    zelk_nm_git(date log -1 --format=%ct -- .)
    zelk_nm_uncommitted_changes(changes)
    if(changes)
      string(TIMESTAMP date "%s" UTC)
    endif()
  endif()
  if(NOT date)
    file(TIMESTAMP ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../CMakeLists.txt date "%s" UTC)
  endif()
  if(NOT date MATCHES "^[0-9]+$")
    message(FATAL_ERROR "The build has no date: SOURCE_DATE_EPOCH is \"${date}\"")
  endif()
  set(${variable} ${date} PARENT_SCOPE)
endfunction()

# zelk_nm_uncommitted_changes(VARIABLE): a hash of what differs from the commit, new files included; empty for a clean tree
# and for sources without their history.
function(zelk_nm_uncommitted_changes variable)
  zelk_nm_git(commit log -1 --format=%H -- .)
  zelk_nm_git(changes diff --binary HEAD -- .)
  zelk_nm_git(new_files ls-files --others --exclude-standard -- .)
  set(hash "")
  if(commit AND (changes OR new_files))
    string(REPLACE "\n" ";" new_files "${new_files}")
    foreach(new_file IN LISTS new_files)
      file(SHA256 ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../${new_file} content)
      string(APPEND changes "${new_file} ${content}\n")
    endforeach()
    string(SHA256 hash "${commit}${changes}")
  endif()
  set(${variable} "${hash}" PARENT_SCOPE)
endfunction()

# zelk_nm_git(VARIABLE ARGUMENT...): what git prints about the sources; nothing where it fails.
function(zelk_nm_git variable)
  execute_process(COMMAND git --no-optional-locks ${ARGN} WORKING_DIRECTORY ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/..
    OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  set(${variable} "${output}" PARENT_SCOPE)
endfunction()

# zelk_nm_format_date(VARIABLE DATE FORMAT): as string(TIMESTAMP), in UTC.
function(zelk_nm_format_date variable date format)
  set(ENV{SOURCE_DATE_EPOCH} ${date})
  string(TIMESTAMP text "${format}" UTC)
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()
