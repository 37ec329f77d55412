# zelk_nm_split_debug(TARGET): a Release binary is stripped; its debug information goes into FILE.debug beside it.
function(zelk_nm_split_debug target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
    return()
  endif()
  set(file $<TARGET_FILE_NAME:${target}>)
  # Without a date of its own each of these tools writes today's into the header.
  set(dateless ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0)
  add_custom_command(TARGET ${target} POST_BUILD
    WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
    COMMAND ${dateless} ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${dateless} ${CMAKE_STRIP} --strip-all ${file}
    COMMAND ${dateless} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${file}.debug ${file}
    VERBATIM)
endfunction()
