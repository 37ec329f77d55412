# cmake -D OUTPUT=<file> -D VERSION=<version> -D GCC_VERSION=<version> -D DLL=<file> -D DLL_MAP=<link map>
#   -D STATE_DLL=<file> -D STATE_DLL_MAP=<link map> -D PROGRAM=<file> -D PROGRAM_MAP=<link map> -P write_spdx.cmake
#
# The SPDX 2.3 document of the binaries. What was linked into each is read from the linker's own list.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/build_date.cmake)

# json_text(VARIABLE TEXT): the text as a JSON string.
function(json_text variable text)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REPLACE "\n" "\\n" text "${text}")
  set(${variable} "\"${text}\"" PARENT_SCOPE)
endfunction()

# json_set(JSON KEY TEXT ...): sets text members.
function(json_set variable)
  set(json "${${variable}}")
  math(EXPR last "${ARGC} - 2")
  foreach(index RANGE 1 ${last} 2)
    math(EXPR next "${index} + 1")
    json_text(value "${ARGV${next}}")
    string(JSON json SET "${json}" ${ARGV${index}} "${value}")
  endforeach()
  set(${variable} "${json}" PARENT_SCOPE)
endfunction()

# json_append(KEY JSON): one more element of the document's array.
function(json_append key json)
  string(JSON count ERROR_VARIABLE error LENGTH "${document}" ${key})
  if(error)
    string(JSON document SET "${document}" ${key} "[]")
    set(count 0)
  endif()
  string(JSON document SET "${document}" ${key} ${count} "${json}")
  set(document "${document}" PARENT_SCOPE)
endfunction()

# add_package(ID NAME VERSION LICENCE [KEY TEXT ...])
function(add_package id name version licence)
  set(package "{}")
  json_set(package SPDXID SPDXRef-${id} name "${name}" versionInfo "${version}" downloadLocation NOASSERTION
    licenseConcluded "${licence}" licenseDeclared "${licence}" copyrightText NOASSERTION ${ARGN})
  string(JSON package SET "${package}" filesAnalyzed false)
  json_append(packages "${package}")
  set(document "${document}" PARENT_SCOPE)
endfunction()

# describe_package(KEY JSON): sets a member of the package that was added last.
function(describe_package key json)
  string(JSON count LENGTH "${document}" packages)
  math(EXPR last "${count} - 1")
  string(JSON document SET "${document}" packages ${last} ${key} "${json}")
  set(document "${document}" PARENT_SCOPE)
endfunction()

# add_binary(ID FILE PURPOSE): a package that is one file of ours.
function(add_binary id file purpose)
  get_filename_component(name ${file} NAME)
  file(SHA256 ${file} hash)
  add_package(${id} ${name} ${VERSION} LicenseRef-zelk-nm
    supplier "Organization: Velmor" packageFileName bin/${name} primaryPackagePurpose ${purpose})
  describe_package(checksums "[{\"algorithm\": \"SHA256\", \"checksumValue\": \"${hash}\"}]")
  set(document "${document}" PARENT_SCOPE)
endfunction()

# add_foreign(ID NAME LICENCE DEBIAN_PACKAGE VERSION): a package of others, in the version that the build machine has;
# VERSION is said where that cannot be found out.
function(add_foreign id name licence debian_package version)
  execute_process(COMMAND dpkg-query -W -f "\${Version}" ${debian_package}
    OUTPUT_VARIABLE installed ERROR_QUIET RESULT_VARIABLE unknown)
  if(unknown)
    add_package(${id} "${name}" ${version} "${licence}")
  else()
    add_package(${id} "${name}" ${installed} "${licence}")
    string(REPLACE "+" "%2B" locator "pkg:deb/debian/${debian_package}@${installed}")
    describe_package(externalRefs "[{\"referenceCategory\": \"PACKAGE-MANAGER\", \"referenceType\": \"purl\",
      \"referenceLocator\": \"${locator}\"}]")
  endif()
  set(document "${document}" PARENT_SCOPE)
endfunction()

function(add_relationship from type to)
  set(relationship "{}")
  json_set(relationship spdxElementId SPDXRef-${from} relationshipType ${type} relatedSpdxElement SPDXRef-${to})
  json_append(relationships "${relationship}")
  set(document "${document}" PARENT_SCOPE)
endfunction()

function(add_licence id name text)
  set(licence "{}")
  json_set(licence licenseId LicenseRef-${id} name "${name}" extractedText "${text}")
  json_append(hasExtractedLicensingInfos "${licence}")
  set(document "${document}" PARENT_SCOPE)
endfunction()

# find_linked(VARIABLE MAP): the ids of the foreign packages that a binary was linked from.
function(find_linked variable map)
  file(STRINGS ${map} lines REGEX "^(/.*\\.a\\(|LOAD /.*\\.o$)")
  set(ids)
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^(LOAD )?([^(]+).*" "\\2" file "${line}")
    get_filename_component(name ${file} NAME)
    if(name MATCHES "^(lib(stdc\\+\\+|supc\\+\\+|gcc|gcc_eh|gcov)\\.a|crt(begin|end)\\.o)$")
      list(APPEND ids gcc-runtime)
    elseif(name MATCHES "^lib(win)?pthread\\.a$")
      list(APPEND ids winpthreads)
    elseif(file MATCHES "/x86_64-w64-mingw32/lib/[^/]*$")
      list(APPEND ids mingw-w64)
    else()
      # Nothing gets into a binary without standing in the list.
      message(FATAL_ERROR "${file} was linked: say in write_spdx.cmake where it is from")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES ids)
  list(SORT ids)
  set(${variable} "${ids}" PARENT_SCOPE)
endfunction()

zelk_nm_build_date(date)
zelk_nm_format_date(created ${date} "%Y-%m-%dT%H:%M:%SZ")
file(SHA256 ${DLL} dll_hash)
file(SHA256 ${STATE_DLL} state_dll_hash)
file(SHA256 ${PROGRAM} program_hash)
string(SHA256 hash "${dll_hash}${state_dll_hash}${program_hash}")

set(document "{}")
json_set(document SPDXID SPDXRef-DOCUMENT spdxVersion SPDX-2.3 dataLicense CC0-1.0 name zelk_nm-${VERSION}
  documentNamespace http://spdx.org/spdxdocs/zelk_nm-${VERSION}-${hash})
string(JSON document SET "${document}" creationInfo
  "{\"created\": \"${created}\", \"creators\": [\"Organization: Velmor\", \"Tool: CMake-${CMAKE_VERSION}\"]}")

add_package(zelk-nm zelk_nm ${VERSION} LicenseRef-zelk-nm supplier "Organization: Velmor")
add_binary(dll ${DLL} LIBRARY)
add_binary(state-dll ${STATE_DLL} LIBRARY)
add_binary(zelkctl ${PROGRAM} APPLICATION)
add_relationship(DOCUMENT DESCRIBES zelk-nm)
add_relationship(zelk-nm CONTAINS dll)
add_relationship(zelk-nm CONTAINS state-dll)
add_relationship(zelk-nm CONTAINS zelkctl)
add_relationship(state-dll DYNAMIC_LINK dll)
add_relationship(zelkctl DYNAMIC_LINK dll)

find_linked(dll_parts ${DLL_MAP})
find_linked(state_dll_parts ${STATE_DLL_MAP})
find_linked(program_parts ${PROGRAM_MAP})
foreach(id IN LISTS dll_parts)
  add_relationship(dll STATIC_LINK ${id})
endforeach()
foreach(id IN LISTS state_dll_parts)
  add_relationship(state-dll STATIC_LINK ${id})
endforeach()
foreach(id IN LISTS program_parts)
  add_relationship(zelkctl STATIC_LINK ${id})
endforeach()

set(parts ${dll_parts} ${state_dll_parts} ${program_parts})
if("gcc-runtime" IN_LIST parts)
  add_foreign(gcc-runtime "GCC run-time libraries (libstdc++, libgcc)" "GPL-3.0-or-later WITH GCC-exception-3.1"
    g++-mingw-w64-x86-64-posix ${GCC_VERSION})
endif()
if("mingw-w64" IN_LIST parts)
  add_foreign(mingw-w64 "mingw-w64 C run time"
    "ZPL-2.1 AND LicenseRef-mingw-w64-public-domain AND LicenseRef-mingw-w64-gdtoa" mingw-w64-x86-64-dev NOASSERTION)
  add_licence(mingw-w64-public-domain "Public domain parts of mingw-w64"
    "This file has no copyright assigned and is placed in the Public Domain.")
  add_licence(mingw-w64-gdtoa "gdtoa in mingw-w64"
"Copyright (C) 1997-2001 Lucent Technologies. All Rights Reserved

Permission to use, copy, modify, and distribute this software and its documentation for any purpose and without fee is hereby \
granted, provided that the above copyright notice appear in all copies and that both that the copyright notice and this \
permission notice and warranty disclaimer appear in supporting documentation, and that the name of Lucent or any of its \
entities not be used in advertising or publicity pertaining to distribution of the software without specific, written prior \
permission.

LUCENT DISCLAIMS ALL WARRANTIES WITH REGARD TO THIS SOFTWARE, INCLUDING ALL IMPLIED WARRANTIES OF MERCHANTABILITY AND FITNESS. \
IN NO EVENT SHALL LUCENT OR ANY OF ITS ENTITIES BE LIABLE FOR ANY SPECIAL, INDIRECT OR CONSEQUENTIAL DAMAGES OR ANY DAMAGES \
WHATSOEVER RESULTING FROM LOSS OF USE, DATA OR PROFITS, WHETHER IN AN ACTION OF CONTRACT, NEGLIGENCE OR OTHER TORTIOUS ACTION, \
ARISING OUT OF OR IN CONNECTION WITH THE USE OR PERFORMANCE OF THIS SOFTWARE.")
endif()
if("winpthreads" IN_LIST parts)
  add_foreign(winpthreads winpthreads "MIT AND BSD-3-Clause" mingw-w64-x86-64-dev NOASSERTION)
endif()

# Headers leave no trace in the link.
add_foreign(cli11 CLI11 BSD-3-Clause libcli11-dev NOASSERTION)
add_foreign(nlohmann-json "JSON for Modern C++" MIT nlohmann-json3-dev NOASSERTION)
add_relationship(zelkctl CONTAINS cli11)
add_relationship(zelkctl CONTAINS nlohmann-json)
add_relationship(state-dll CONTAINS nlohmann-json)

file(READ ${CMAKE_CURRENT_LIST_DIR}/../LICENSE licence)
add_licence(zelk-nm "Licence of the Velmor Network Library" "${licence}")

file(WRITE ${OUTPUT} "${document}\n")
