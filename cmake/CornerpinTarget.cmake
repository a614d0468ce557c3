# SPDX-License-Identifier: BSD-3-Clause

# What every target of this project is compiled with. Results are promised to the bit, so products
# and sums are never contracted into fused operations.
function(cornerpin_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  # Naming the standard here leaves compilers no dialect of their own.
  set_target_properties(
    ${target} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
                         CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(
      ${target} PRIVATE -ffp-contract=off -Wall -Wextra -Wpedantic -Wconversion
                        -Wnon-virtual-dtor $<$<BOOL:${CORNERPIN_WARNINGS_AS_ERRORS}>:-Werror>)
  elseif(MSVC)
    target_compile_options(${target} PRIVATE /W4 /fp:precise
                                             $<$<BOOL:${CORNERPIN_WARNINGS_AS_ERRORS}>:/WX>)
  endif()
endfunction()
