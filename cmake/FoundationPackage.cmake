# What `cmake --install` installs for whoever builds on these libraries: headers, a CMake package with one component a
# library, and one pkg-config file a library. In parts that packagers may install apart: "runtime" and
# "development".

include(CMakePackageConfigHelpers)

set(FOUNDATION_PACKAGE_FOLDER "${CMAKE_INSTALL_LIBDIR}/cmake/FoundationStorage")

# Programs and libraries find each other wherever the whole is moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY "${CMAKE_INSTALL_FULL_BINDIR}"
  OUTPUT_VARIABLE foundation_libraries_from_programs)
if(NOT DEFINED CMAKE_INSTALL_RPATH)
  set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${foundation_libraries_from_programs}")
endif()

# foundation_install(TARGET ALIAS DESCRIPTION text [PUBLIC lib...] [PRIVATE lib...] [PACKAGES package...])
function(foundation_install target alias)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "DESCRIPTION" "PUBLIC;PRIVATE;PACKAGES")
  foundation_component(component ${alias})
  string(REPLACE "Foundation::" "" name ${alias})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  install(TARGETS ${target} EXPORT FoundationStorage${component}
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    FILE_SET HEADERS COMPONENT development)
  install(EXPORT FoundationStorage${component}
    FILE ${component}.cmake
    NAMESPACE Foundation::
    DESTINATION "${FOUNDATION_PACKAGE_FOLDER}"
    COMPONENT development)
  foundation_note_component(${component} "${arg_PUBLIC};${arg_PRIVATE}" "${arg_PACKAGES}")
  foundation_install_pkgconfig(${target} "${arg_DESCRIPTION}" "${arg_PUBLIC}")
endfunction()

# Foundation::StorageLocal is the component Local; Platform and Storage are called as they are.
function(foundation_component variable alias)
  string(REPLACE "Foundation::" "" name ${alias})
  string(REGEX REPLACE "^Storage(.+)$" "\\1" component ${name})
  set(${variable} ${component} PARENT_SCOPE)
endfunction()

# Libraries are described in the order of who uses whom, so all that one needs is known before it.
function(foundation_note_component component libraries packages)
  set(needs)
  list(FILTER libraries INCLUDE REGEX "^Foundation::")
  foreach(library IN LISTS libraries)
    foundation_component(used ${library})
    get_property(below GLOBAL PROPERTY FOUNDATION_NEEDS_${used})
    list(APPEND needs ${below} ${used})
  endforeach()
  list(REMOVE_DUPLICATES needs)
  set_property(GLOBAL APPEND PROPERTY FOUNDATION_COMPONENTS ${component})
  set_property(GLOBAL PROPERTY FOUNDATION_NEEDS_${component} ${needs})
  set_property(GLOBAL PROPERTY FOUNDATION_PACKAGES_${component} ${packages})
endfunction()

# To be called once, after all libraries.
function(foundation_install_package)
  get_property(FOUNDATION_COMPONENTS GLOBAL PROPERTY FOUNDATION_COMPONENTS)
  set(FOUNDATION_DESCRIPTIONS)
  foreach(component IN LISTS FOUNDATION_COMPONENTS)
    foreach(kind IN ITEMS NEEDS PACKAGES)
      get_property(values GLOBAL PROPERTY FOUNDATION_${kind}_${component})
      string(APPEND FOUNDATION_DESCRIPTIONS "set(_foundation_${kind}_${component} \"${values}\")\n")
    endforeach()
  endforeach()
  configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/FoundationStorageConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/FoundationStorageConfig.cmake"
    INSTALL_DESTINATION "${FOUNDATION_PACKAGE_FOLDER}"
    NO_SET_AND_CHECK_MACRO)
  # Before version 1.0 every minor version may change the interface.
  write_basic_package_version_file("${PROJECT_BINARY_DIR}/FoundationStorageConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
  install(FILES
      "${PROJECT_BINARY_DIR}/FoundationStorageConfig.cmake"
      "${PROJECT_BINARY_DIR}/FoundationStorageConfigVersion.cmake"
    DESTINATION "${FOUNDATION_PACKAGE_FOLDER}"
    COMPONENT development)
endfunction()

# --- pkg-config ---

# What is public alone: the others are found by the libraries themselves.
function(foundation_install_pkgconfig target description libraries)
  set(needs)
  foreach(library IN LISTS libraries)
    if(library MATCHES "^Foundation::")
      get_target_property(used ${library} ALIASED_TARGET)
      list(APPEND needs "${used} = ${PROJECT_VERSION}")
    elseif(library STREQUAL "GTest::gtest")
      list(APPEND needs gtest)
    endif()
  endforeach()
  list(JOIN needs ", " needs)
  foundation_below_prefix(libraries_folder "${CMAKE_INSTALL_LIBDIR}")
  foundation_below_prefix(headers_folder "${CMAKE_INSTALL_INCLUDEDIR}")
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
    OUTPUT_VARIABLE prefix_from_here)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/library.pc.in" "${PROJECT_BINARY_DIR}/pkgconfig/${target}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/pkgconfig/${target}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT development)
endfunction()

function(foundation_below_prefix variable folder)
  if(NOT IS_ABSOLUTE "${folder}")
    string(PREPEND folder "\${prefix}/")
  endif()
  set(${variable} "${folder}" PARENT_SCOPE)
endfunction()
