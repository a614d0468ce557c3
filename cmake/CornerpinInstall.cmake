# SPDX-License-Identifier: BSD-3-Clause

# Installs the library, its public headers, the CMake package and the pkg-config file. No installed
# file names a folder of the machine it was built on.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

get_target_property(public_headers cornerpin CORNERPIN_PUBLIC_HEADERS)
foreach(header IN LISTS public_headers)
  get_filename_component(folder "cornerpin/${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/cornerpin/${header}"
          DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
endforeach()

install(TARGETS cornerpin EXPORT cornerpin
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/cornerpin")
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

# What the linker needs beside the library: LAPACK's names without their folders.
set(pc_cflags "")
set(pc_libs_private "")
get_target_property(library_type cornerpin TYPE)
if(library_type STREQUAL "STATIC_LIBRARY")
  set(pc_cflags " -DCORNERPIN_STATIC")
  set(libraries ${LAPACK_LIBRARIES} ${BLAS_LIBRARIES})
  list(REMOVE_DUPLICATES libraries)
  foreach(library IN LISTS libraries)
    get_filename_component(name "${library}" NAME_WE)
    string(REGEX REPLACE "^(lib|-l)" "" name "${name}")
    string(APPEND pc_libs_private " -l${name}")
  endforeach()
endif()
set(pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH pc_prefix "/prefix/${pkgconfig_folder}" "/prefix")
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/cornerpin.pc.in"
               "${PROJECT_BINARY_DIR}/cornerpin.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/cornerpin.pc" DESTINATION "${pkgconfig_folder}")
