# SPDX-License-Identifier: BSD-3-Clause

# LAPACK from any provider. The library promises to start no threads; a provider that starts some
# by itself is named here.
find_package(LAPACK REQUIRED)

function(cornerpin_report_threaded_lapack)
  foreach(library IN LISTS LAPACK_LIBRARIES BLAS_LIBRARIES)
    if(NOT EXISTS "${library}" OR NOT CMAKE_NM)
      continue()
    endif()
    file(REAL_PATH "${library}" path)
    set(dynamic "")
    if(path MATCHES "\\.so")
      set(dynamic -D)
    endif()
    execute_process(COMMAND ${CMAKE_NM} ${dynamic} --undefined-only "${path}"
                    OUTPUT_VARIABLE symbols ERROR_QUIET)
    if(symbols MATCHES "pthread_create|GOMP_parallel|kmpc_fork_call")
      message(WARNING "LAPACK provider ${path} starts threads of its own. "
                      "Choose a serial one, for example the reference LAPACK, with "
                      "-DCMAKE_LIBRARY_PATH or -DBLA_VENDOR.")
      return()
    endif()
  endforeach()
endfunction()
cornerpin_report_threaded_lapack()
