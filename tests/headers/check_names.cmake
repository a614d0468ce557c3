# SPDX-License-Identifier: BSD-3-Clause
# cmake -DSOURCE=folder -P check_names.cmake
#
# Fails when a unit of the host layer, of show/ or of the command below SOURCE has no test of its own
# stem, when a test of the host layer or of show/ starts with no unit's name, when two of their headers
# define a type of one name, which one program may hold, or when docs/architecture.md names a file
# that does not exist.
cmake_minimum_required(VERSION 3.20)

set(problems "")

file(GLOB_RECURSE sources RELATIVE "${SOURCE}" "${SOURCE}/shot/*.cpp" "${SOURCE}/show/*.cpp"
     "${SOURCE}/tools/cornerpin/*.cpp")
foreach(source IN LISTS sources)
  string(REGEX REPLACE "(_avx2|_avx512)?\\.cpp$" "" unit "${source}")
  string(REGEX REPLACE "^tools/cornerpin/" "tools/" test "${unit}")
  if(NOT EXISTS "${SOURCE}/tests/${test}_test.cpp")
    list(APPEND problems "${source} has no tests/${test}_test.cpp")
  endif()
endforeach()

file(GLOB tests RELATIVE "${SOURCE}/tests" "${SOURCE}/tests/shot/*/*_test.cpp"
     "${SOURCE}/tests/show/*_test.cpp")
foreach(test IN LISTS tests)
  string(REGEX REPLACE "_test\\.cpp$" "" unit "${test}")
  # More tests of a unit: shot_solver_trust_test is of shot_solver.
  while(NOT EXISTS "${SOURCE}/${unit}.h"
        AND NOT EXISTS "${SOURCE}/${unit}.cpp"
        AND unit MATCHES "_[a-z]+$")
    string(REGEX REPLACE "_[a-z]+$" "" unit "${unit}")
  endwhile()
  if(NOT EXISTS "${SOURCE}/${unit}.h" AND NOT EXISTS "${SOURCE}/${unit}.cpp")
    list(APPEND problems "tests/${test} is of no unit")
  endif()
endforeach()

# Those of cornerpin::shot are in a namespace of their own.
file(GLOB headers "${SOURCE}/shot/*/*.h" "${SOURCE}/show/*.h" "${SOURCE}/tools/cornerpin/*.h")
list(FILTER headers EXCLUDE REGEX "/shot/(include|interface)/")
set(types "")
foreach(header IN LISTS headers)
  file(STRINGS "${header}" lines REGEX "^(struct|class|enum class|enum) [A-Za-z]+( final)?( :.*)? {")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^(struct|class|enum class|enum) ([A-Za-z]+).*" "\\2" type "${line}")
    if(type IN_LIST types)
      list(APPEND problems "${header} defines ${type}, which another header does, too")
    endif()
    list(APPEND types "${type}")
  endforeach()
endforeach()

# Names in backticks with a folder in front, of files or of units without their ending; those of the
# host layer may leave out shot/.
file(READ "${SOURCE}/docs/architecture.md" document)
string(REGEX MATCHALL "`[a-z]+/[a-z_/]+[a-z_](\\.[a-z]+)?`" names "${document}")
foreach(name IN LISTS names)
  string(REPLACE "`" "" name "${name}")
  file(GLOB found "${SOURCE}/${name}" "${SOURCE}/${name}.*" "${SOURCE}/shot/${name}"
       "${SOURCE}/shot/${name}.*")
  if(NOT found)
    list(APPEND problems "docs/architecture.md names ${name}, which does not exist")
  endif()
endforeach()

list(LENGTH sources count)
list(LENGTH names named)
list(LENGTH types defined)
if(count LESS 40 OR named LESS 10 OR defined LESS 40)
  list(APPEND problems "only ${count} sources, ${named} names and ${defined} types")
endif()
if(problems)
  list(JOIN problems "\n  " text)
  message(FATAL_ERROR "\n  ${text}")
endif()
message(STATUS "${count} sources and ${named} names checked")
