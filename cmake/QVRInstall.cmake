# SPDX-License-Identifier: BSD-3-Clause
#
# What is installed, in five components:
#   runtime      the shared library
#   development  header, links, static library, the files for CMake and pkg-config, the documentation
#   tools        qvr
#   gstreamer    the GStreamer plug-in
#   python       the Python package
# The rules of tool, documentation, plug-in and Python package stand beside them.
# Nothing installed holds the prefix, so that the folder may be moved afterwards.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS QVRUncompressed QVRUncompressed_static EXPORT QVRUncompressedTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/include/QVRUncompressed.h" TYPE INCLUDE COMPONENT development)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/QVRUncompressed")
set(made_dir "${PROJECT_BINARY_DIR}/cmake")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/QVRUncompressedConfig.cmake.in"
  "${made_dir}/QVRUncompressedConfig.cmake"
  INSTALL_DESTINATION "${package_dir}" NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file("${made_dir}/QVRUncompressedConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(EXPORT QVRUncompressedTargets NAMESPACE QVRUncompressed:: DESTINATION "${package_dir}" COMPONENT development)
install(FILES "${made_dir}/QVRUncompressedConfig.cmake" "${made_dir}/QVRUncompressedConfigVersion.cmake"
  DESTINATION "${package_dir}" COMPONENT development)

# Where the prefix is, seen from the file.
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/qvruncompressed.pc.in" "${made_dir}/qvruncompressed.pc" @ONLY)
install(FILES "${made_dir}/qvruncompressed.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
