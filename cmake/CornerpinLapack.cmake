# SPDX-License-Identifier: BSD-3-Clause

# LAPACK from any provider. Debian keeps every provider in a folder of its own, and the plain name
# leads to whichever the machine prefers; the reference provider starts no threads and gives the
# same bits on every processor.
option(CORNERPIN_REFERENCE_LAPACK "Link the reference LAPACK, whichever the machine prefers" OFF)
if(CORNERPIN_REFERENCE_LAPACK)
  set(BLA_VENDOR Generic)
  list(PREPEND CMAKE_LIBRARY_PATH "/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/lapack"
       "/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/blas")
endif()

set(lapack_targets "")
foreach(target LAPACK::LAPACK BLAS::BLAS)
  if(NOT TARGET ${target})
    list(APPEND lapack_targets ${target})
  endif()
endforeach()
find_package(LAPACK REQUIRED)
# A project that includes this one links the static library, and so LAPACK, from its own folder.
foreach(target IN LISTS lapack_targets)
  if(TARGET ${target})
    set_target_properties(${target} PROPERTIES IMPORTED_GLOBAL TRUE)
  endif()
endforeach()

# The library and what it needs itself: a provider's BLAS may be a thin layer over the part that
# computes. Empty without ldd.
function(cornerpin_lapack_parts library result)
  execute_process(COMMAND ldd "${library}" OUTPUT_VARIABLE needed ERROR_QUIET)
  string(REGEX MATCHALL "/[^ \n]*(blas|lapack|atlas|blis|flame|mkl)[^ \n]*" parts "${needed}")
  set(${result} "${library}" ${parts} PARENT_SCOPE)
endfunction()

# Whether a library starts threads by itself: it then asks the system for them by name.
function(cornerpin_starts_threads library result)
  set(dynamic "")
  if(library MATCHES "\\.so")
    set(dynamic -D)
  endif()
  execute_process(COMMAND ${CMAKE_NM} ${dynamic} --undefined-only "${library}"
                  OUTPUT_VARIABLE symbols ERROR_QUIET)
  string(REGEX MATCH "pthread_create|GOMP_parallel|kmpc_fork_call" threads "${symbols}")
  set(${result} "${threads}" PARENT_SCOPE)
endfunction()

# The library promises to start no threads; a provider that starts some is named here.
function(cornerpin_report_threaded_lapack)
  foreach(library IN LISTS LAPACK_LIBRARIES BLAS_LIBRARIES)
    if(NOT EXISTS "${library}" OR NOT CMAKE_NM)
      continue()
    endif()
    file(REAL_PATH "${library}" path)
    cornerpin_lapack_parts("${path}" parts)
    foreach(part IN LISTS parts)
      cornerpin_starts_threads("${part}" threads)
      if(threads)
        message(WARNING "LAPACK provider ${part} starts threads of its own (${threads}). "
                        "Choose a serial one: -DCORNERPIN_REFERENCE_LAPACK=ON takes the reference "
                        "LAPACK, -DCMAKE_LIBRARY_PATH or -DBLA_VENDOR any other.")
        return()
      endif()
    endforeach()
  endforeach()
endfunction()
cornerpin_report_threaded_lapack()
