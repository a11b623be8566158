# Debian packages, made by `./dev package`: one for programs that are linked with the libraries, one for building on
# them, one with the command.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME foundation-storage)
set(CPACK_PACKAGE_CONTACT "The foundation-storage developers <maintainers@users.noreply.foundation-storage.example>")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)

set(soname ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_COMPONENTS_ALL runtime development command)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libfoundation-storage${soname})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libfoundation-storage-dev)
set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME fstore)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION} (shared libraries)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (headers, CMake package, pkg-config files)")
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "${PROJECT_DESCRIPTION} (command)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION utils)

# What the packages need of each other is said here, as exactly as they fit; what else, the linker knows.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(runtime "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime}, libboost-dev (>= 1.74)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libgtest-dev")
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${runtime}")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  install(FILES LICENSE
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME}"
    RENAME copyright
    COMPONENT ${component})
endforeach()

include(CPack)
