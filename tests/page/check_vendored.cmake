# SPDX-License-Identifier: BSD-3-Clause
# cmake -DSOURCE=folder -P check_vendored.cmake
#
# Fails when a file of other people's libraries below SOURCE has not the digest that the README
# beside it lists, or is not listed.
cmake_minimum_required(VERSION 3.20)

set(problems "")
set(checked 0)
file(GLOB_RECURSE files "${SOURCE}/*")
foreach(path IN LISTS files)
  get_filename_component(folder "${path}" DIRECTORY)
  get_filename_component(name "${path}" NAME)
  if(name STREQUAL "README.md")
    continue()
  endif()
  file(SHA256 "${path}" digest)
  file(STRINGS "${folder}/README.md" lines REGEX "^[0-9a-f]+  ")
  if(NOT "${digest}  ${name}" IN_LIST lines)
    list(APPEND problems "${path} is not as its README lists it")
  endif()
  math(EXPR checked "${checked} + 1")
endforeach()
if(checked LESS 3)
  list(APPEND problems "only ${checked} files below ${SOURCE}")
endif()
if(problems)
  list(JOIN problems "\n  " text)
  message(FATAL_ERROR "\n  ${text}")
endif()
