# SPDX-License-Identifier: BSD-3-Clause
# cmake -DSOURCE=folder -DHEADER=file -P commit.cmake
#
# Writes a header that defines CORNERPIN_COMMIT, the commit that the source in the folder is of:
# from git, with "-modified" where tracked files were changed, or what git has put into an archive
# here; empty where neither says it. The header is only touched when that changes.
cmake_minimum_required(VERSION 3.20)

set(commit "$Format:%H$")

if(NOT commit MATCHES "^[0-9a-f]+$")
  set(commit "")
  find_program(git git)
  file(REAL_PATH "${SOURCE}" source)
  if(git)
    # A repository around the source is not its own.
    execute_process(COMMAND "${git}" -C "${source}" rev-parse --show-toplevel OUTPUT_VARIABLE top
                    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  if(git AND "${top}" STREQUAL "${source}")
    execute_process(COMMAND "${git}" --no-optional-locks -C "${source}" describe --always
                            --abbrev=64 "--exclude=*" --dirty=-modified
                    OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
endif()

file(CONFIGURE OUTPUT "${HEADER}" CONTENT "#define CORNERPIN_COMMIT \"${commit}\"\n")
