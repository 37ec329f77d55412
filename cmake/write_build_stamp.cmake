# cmake -D OUTPUT=<header> -P write_build_stamp.cmake: the date and time of the build in the form of __DATE__ and __TIME__.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/build_date.cmake)
set(changes "")
if(NOT "$ENV{SOURCE_DATE_EPOCH}")
  zelk_nm_uncommitted_changes(changes)
endif()

# The same changes are no new build: their first date stays, and nothing is compiled again.
if(changes AND EXISTS ${OUTPUT})
  file(STRINGS ${OUTPUT} same REGEX "${changes}")
  if(same)
    return()
  endif()
endif()

zelk_nm_build_date(date)
zelk_nm_format_date(day ${date} "%b %d %Y")
zelk_nm_format_date(time ${date} "%H:%M:%S")
string(REPLACE " 0" "  " day "${day}")
# An unchanged file keeps its time: nothing is compiled again.
file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT
"// SOURCE_DATE_EPOCH=@date@
// uncommitted changes: @changes@
#define ZELK_NM_BUILD_DATE \"@day@\"
#define ZELK_NM_BUILD_TIME \"@time@\"
")
