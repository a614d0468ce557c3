# SPDX-License-Identifier: BSD-3-Clause

# Installs the library, its public headers, the CMake package and the pkg-config file, and the same
# of the host layer as component `shot` where that is built. No installed file names a folder of the
# machine it was built on.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

get_target_property(public_headers cornerpin CORNERPIN_PUBLIC_HEADERS)
foreach(header IN LISTS public_headers)
  get_filename_component(folder "cornerpin/${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/cornerpin/${header}"
          DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
endforeach()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/cornerpin")
set(pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH pc_prefix "/prefix/${pkgconfig_folder}" "/prefix")
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")

install(TARGETS cornerpin EXPORT cornerpin
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(EXPORT cornerpin NAMESPACE cornerpin:: FILE cornerpinTargets.cmake
        DESTINATION "${package_folder}")
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/cornerpinConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/cornerpinConfig.cmake" INSTALL_DESTINATION "${package_folder}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cornerpinConfigVersion.cmake"
                                 COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/cornerpinConfig.cmake"
              "${PROJECT_BINARY_DIR}/cornerpinConfigVersion.cmake"
        DESTINATION "${package_folder}")

# What the linker needs beside a static library: names without their folders.
function(cornerpin_link_flags result)
  set(flags "")
  foreach(library IN LISTS ARGN)
    get_filename_component(name "${library}" NAME_WE)
    string(REGEX REPLACE "^(lib|-l)" "" name "${name}")
    string(APPEND flags " -l${name}")
  endforeach()
  set(${result} "${flags}" PARENT_SCOPE)
endfunction()

set(pc_cflags "")
set(pc_libs_private "")
get_target_property(library_type cornerpin TYPE)
if(library_type STREQUAL "STATIC_LIBRARY")
  set(pc_cflags " -DCORNERPIN_STATIC")
  set(libraries ${LAPACK_LIBRARIES} ${BLAS_LIBRARIES})
  list(REMOVE_DUPLICATES libraries)
  cornerpin_link_flags(pc_libs_private ${libraries})
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/cornerpin.pc.in"
               "${PROJECT_BINARY_DIR}/cornerpin.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/cornerpin.pc" DESTINATION "${pkgconfig_folder}")

if(TARGET cornerpin_shot)
  install(FILES "${PROJECT_SOURCE_DIR}/shot/include/cornerpin/shot.h"
          DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/cornerpin")
  install(TARGETS cornerpin_shot EXPORT cornerpin_shot
          INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
  install(EXPORT cornerpin_shot NAMESPACE cornerpin:: FILE cornerpinShotTargets.cmake
          DESTINATION "${package_folder}")
  set(pc_cflags "")
  set(pc_libs_private "")
  if(library_type STREQUAL "STATIC_LIBRARY")
    set(pc_cflags " -DCORNERPIN_SHOT_STATIC")
    cornerpin_link_flags(pc_libs_private gd csv fmt ${libraries} crypto pthread tiff z)
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/cmake/cornerpin-shot.pc.in"
                 "${PROJECT_BINARY_DIR}/cornerpin-shot.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/cornerpin-shot.pc" DESTINATION "${pkgconfig_folder}")
endif()
