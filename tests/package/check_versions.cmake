# SPDX-License-Identifier: BSD-3-Clause
# cmake -DSOURCE=folder -DVERSION=1.2.3 -P check_versions.cmake
#
# Fails unless the change logs begin with the version, and the documents, the examples and the names
# of the Debian packages, which follow the names of the shared libraries, have its first two numbers.
cmake_minimum_required(VERSION 3.20)
string(REGEX MATCH "^[0-9]+[.][0-9]+" series "${VERSION}")
set(problems "")

# The first match of the expression in the file, or each one, has to be what is expected.
function(expect how file expression expected)
  file(READ "${SOURCE}/${file}" text)
  string(REGEX ${how} "${expression}" found "${text}")
  list(REMOVE_DUPLICATES found)
  if(NOT found STREQUAL expected)
    list(APPEND problems "${file}: \"${found}\", not \"${expected}\"")
    set(problems "${problems}" PARENT_SCOPE)
  endif()
endfunction()

expect(MATCH CHANGELOG.md "## [0-9.]+" "## ${VERSION}")
expect(MATCH debian/changelog "cornerpin \\([0-9.]+-" "cornerpin (${VERSION}-")
foreach(file README.md docs/cpp.md examples/CMakeLists.txt)
  expect(MATCHALL ${file} "find_package\\(cornerpin [0-9.]+" "find_package(cornerpin ${series}")
endforeach()
expect(MATCHALL docs/install.md "cornerpin-[0-9.]+[0-9]" "cornerpin-${VERSION}")
foreach(file debian/control docs/install.md)
  expect(MATCHALL ${file} "libcornerpin[0-9.]+[0-9]" "libcornerpin${series}")
  expect(MATCHALL ${file} "libcornerpin-shot[0-9.]+[0-9]" "libcornerpin-shot${series}")
endforeach()
foreach(library libcornerpin libcornerpin-shot)
  if(NOT EXISTS "${SOURCE}/debian/${library}${series}.install")
    list(APPEND problems "debian/${library}${series}.install is missing")
  endif()
endforeach()

if(problems)
  list(JOIN problems "\n  " text)
  message(FATAL_ERROR "\n  ${text}")
endif()
