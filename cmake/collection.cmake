# The Ansible collection, as an archive of the package and unpacked for the tests. It carries the programs.
find_program(ZELK_NM_ANSIBLE_GALAXY ansible-galaxy REQUIRED)
set(collection_folder ${PROJECT_BINARY_DIR}/collection)
set(collection_archive ${collection_folder}/velmor-zelk-${PROJECT_VERSION}.tar.gz)
file(GLOB_RECURSE sources CONFIGURE_DEPENDS ansible/*)
list(FILTER sources EXCLUDE REGEX /__pycache__/)
add_custom_command(OUTPUT ${collection_archive}
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/build-collection.sh ${collection_folder} ${PROJECT_VERSION}
    $<TARGET_FILE:zelkctl> $<TARGET_FILE:zelk_nm>
  DEPENDS zelkctl zelk_nm $<TARGET_FILE:zelkctl> $<TARGET_FILE:zelk_nm> ${sources}
    scripts/build-collection.sh docs/desired-state.schema.json cli/report/page.html LICENSE CHANGELOG.md
  COMMENT "Building the Ansible collection"
  VERBATIM)
add_custom_target(zelk_collection ALL DEPENDS ${collection_archive})
install(FILES ${collection_archive} DESTINATION share/ansible COMPONENT collection)
