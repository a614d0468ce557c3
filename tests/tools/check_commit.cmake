# SPDX-License-Identifier: BSD-3-Clause
# cmake -DSCRIPT=file -DFOLDER=folder -P check_commit.cmake
#
# Fails unless the script finds the commit of a source: in a repository, changed or not; in an
# archive that git has made of it, even inside another repository; and none where nothing says it.
cmake_minimum_required(VERSION 3.20)
find_program(git git REQUIRED)

file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}/source/cmake")
file(REAL_PATH "${FOLDER}" FOLDER)
file(COPY_FILE "${SCRIPT}" "${FOLDER}/source/cmake/commit.cmake")
file(WRITE "${FOLDER}/source/.gitattributes" "cmake/commit.cmake export-subst\n")
set(problems "")

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${FOLDER}/source" OUTPUT_VARIABLE out
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(out "${out}" PARENT_SCOPE)
endfunction()

# What the script of a source says of it.
function(expect source what expected)
  run("${CMAKE_COMMAND}" "-DSOURCE=${source}" "-DHEADER=${FOLDER}/commit.h" -P
      "${source}/cmake/commit.cmake")
  file(READ "${FOLDER}/commit.h" header)
  if(NOT header STREQUAL "#define CORNERPIN_COMMIT \"${expected}\"\n")
    list(APPEND problems "${what}: ${header}")
    set(problems "${problems}" PARENT_SCOPE)
  endif()
endfunction()

expect("${FOLDER}/source" "without git" "")

run("${git}" init -q .)
run("${git}" add .)
run("${git}" -c user.name=n -c user.email=e -c commit.gpgsign=false commit -q -m one)
run("${git}" tag -m tag v1 HEAD)
run("${git}" rev-parse HEAD)
set(commit "${out}")
expect("${FOLDER}/source" "in a repository" "${commit}")
file(TIMESTAMP "${FOLDER}/commit.h" before "%s.%f")
expect("${FOLDER}/source" "again" "${commit}")
file(TIMESTAMP "${FOLDER}/commit.h" behind "%s.%f")
if(NOT before STREQUAL behind)
  list(APPEND problems "the header is written though nothing has changed")
endif()

run("${git}" archive --format=tar -o "${FOLDER}/source/a.tar" HEAD)
file(ARCHIVE_EXTRACT INPUT "${FOLDER}/source/a.tar" DESTINATION "${FOLDER}/source/unpacked")
expect("${FOLDER}/source/unpacked" "in an archive" "${commit}")
file(COPY "${FOLDER}/source/cmake" DESTINATION "${FOLDER}/source/inside")
expect("${FOLDER}/source/inside" "inside another repository" "")

file(APPEND "${FOLDER}/source/.gitattributes" "# changed\n")
expect("${FOLDER}/source" "changed" "${commit}-modified")

if(problems)
  list(JOIN problems "\n  " text)
  message(FATAL_ERROR "\n  ${text}")
endif()
