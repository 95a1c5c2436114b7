# Two Debian packages for i386 or amd64: the shared libraries, named after the object name so that two majors can be
# installed side by side, and what a developer needs on top.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zebcv)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "zebCV developers <zebcv@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${ZEBCV_ARCHITECTURE})
# The packages of both widths are installed beside each other: what both hold at one place is the same. CPack has no
# variable for this field before 3.31, so that it follows another one.
set(side_by_side "\nMulti-Arch: same")

set(runtime_package libzebcv${ZEBCV_VARIANT}-${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs${side_by_side})
# The newest symbol version of libc and libm that the libraries use; tools/check_package.sh compares.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.29)")
# What a package built against a library depends on.
set(shlibs "")
foreach(library libzebcv${ZEBCV_VARIANT} libzebcore)
  string(APPEND shlibs "${library} ${PROJECT_VERSION_MAJOR} ${runtime_package} (>= ${PROJECT_VERSION})\n")
endforeach()
file(WRITE ${PROJECT_BINARY_DIR}/shlibs "${shlibs}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/triggers ${PROJECT_BINARY_DIR}/shlibs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Shared libraries. Plain C functions that work on the rows of\nthe caller's images; needs AVX2 and FMA.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzebcv-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel${side_by_side})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, link names, pkg-config file and CMake package.")

# Only a package's tree holds the changelog.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(changelog ${PROJECT_BINARY_DIR}/changelog.gz)
  add_custom_command(OUTPUT ${changelog}
    COMMAND ${PROJECT_SOURCE_DIR}/tools/debian_changelog.sh ${PROJECT_SOURCE_DIR}/CHANGELOG.md | gzip -9n > ${changelog}
    DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/tools/debian_changelog.sh VERBATIM)
  add_custom_target(changelog ALL DEPENDS ${changelog})
  foreach(component runtime development)
    set(folder libzebcv-dev)
    if(component STREQUAL runtime)
      set(folder ${runtime_package})
    endif()
    install(FILES ${changelog} DESTINATION share/doc/${folder} COMPONENT ${component})
  endforeach()
endif()
include(CPack)
