# What is installed: the libraries, their headers, a pkg-config file and a CMake package. None of them names the place
# where it was installed, so that the tree can be moved. CPack makes two Debian packages from the same rules.
include(CMakePackageConfigHelpers)
# Projects of 64 bits look into their own folder before lib; those that a 64-bit compiler builds for 32 look into lib only.
set(package_dir lib/cmake/zebcv)
if(ZEBCV_WIDTH EQUAL 64)
  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zebcv)
endif()
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS zebcv zebcore EXPORT zebcvTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/zebcv.h include/zebcore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY include/zebcv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

install(EXPORT zebcvTargets NAMESPACE zebcv:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/zebcvConfig.cmake.in ${PROJECT_BINARY_DIR}/zebcvConfig.cmake
                              INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
# The version file turns projects of the other width down, so that find_package() goes on to where that one is. The
# width comes from an option of this project, which the compiler's detection at configuration does not know of.
math(EXPR CMAKE_SIZEOF_VOID_P "${ZEBCV_WIDTH} / 8")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zebcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zebcvConfig.cmake ${PROJECT_BINARY_DIR}/zebcvConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT development)

file(RELATIVE_PATH prefix_from_pc /${pkgconfig_dir} /)
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file(cmake/zebcv.pc.in ${PROJECT_BINARY_DIR}/zebcv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zebcv.pc DESTINATION ${pkgconfig_dir} COMPONENT development)

include(cmake/Package.cmake)
