# SPDX-License-Identifier: BSD-3-Clause

# What every target of this project is compiled with. Results are promised to the bit, so products
# and sums are never contracted into fused operations.
function(cornerpin_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  # Naming the standard here leaves compilers no dialect of their own.
  set(standard 17)
  if(CMAKE_CXX_STANDARD)
    set(standard ${CMAKE_CXX_STANDARD})
  endif()
  set_target_properties(
    ${target} PROPERTIES CXX_STANDARD ${standard} CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
                         CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(
      ${target} PRIVATE -ffp-contract=off -Wall -Wextra -Wpedantic -Wconversion
                        -Wnon-virtual-dtor $<$<BOOL:${CORNERPIN_WARNINGS_AS_ERRORS}>:-Werror>)
    # Of std::stable_sort newer Clangs report what GCC 12's own header calls, which C++17 deprecates.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 17)
      target_compile_options(${target} PRIVATE -Wno-deprecated-declarations)
    endif()
    # GCC 12 reports what its own std::string does in C++20.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13
       AND standard GREATER 17)
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
  elseif(MSVC)
    target_compile_options(${target} PRIVATE /W4 /fp:precise
                                             $<$<BOOL:${CORNERPIN_WARNINGS_AS_ERRORS}>:/WX>)
  endif()
endfunction()
