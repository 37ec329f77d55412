# Gives zelk_nm::zelk_nm, and zelk_nm::zelk_state with the C interface, which is the component "state".
include(${CMAKE_CURRENT_LIST_DIR}/zelk_nm-targets.cmake)

foreach(component IN LISTS zelk_nm_FIND_COMPONENTS)
  if(component STREQUAL "state")
    set(zelk_nm_state_FOUND TRUE)
  elseif(zelk_nm_FIND_REQUIRED_${component})
    set(zelk_nm_FOUND FALSE)
    set(zelk_nm_NOT_FOUND_MESSAGE "There is no component \"${component}\"; there is \"state\".")
  endif()
endforeach()
