# Two Debian packages for i386 or amd64: the shared libraries, named after their major version so that two majors can be installed
# side by side, and what a developer needs on top.
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

set(runtime_package libzebcv${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The newest symbol version of libc and libm that the libraries use; tools/check_package.sh compares.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.29)")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Shared libraries. Plain C functions that work on the rows of the caller's images; needs AVX2 and FMA.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzebcv-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, link names, pkg-config file and CMake package.")
include(CPack)
