# foundation_library(TARGET [STATIC] ALIAS NAME DESCRIPTION text SOURCES file... HEADERS file... [PUBLIC lib...]
#                    [PRIVATE lib...] [PACKAGES package...])
#
# A library of this project, shared unless told. The calling folder is its one include root; HEADERS are its public
# headers, and each of them is compiled alone by the target all_verify_interface_header_sets. PACKAGES, "Boost 1.74"
# say, must be found before somebody else can link the installed library.
function(foundation_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "STATIC" "ALIAS;DESCRIPTION" "SOURCES;HEADERS;PUBLIC;PRIVATE;PACKAGES")
  if(arg_STATIC)
    add_library(${target} STATIC ${arg_SOURCES})
  else()
    add_library(${target} SHARED ${arg_SOURCES})
    foundation_exports(${target})
  endif()
  add_library(${arg_ALIAS} ALIAS ${target})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS "${CMAKE_CURRENT_SOURCE_DIR}" FILES ${arg_HEADERS})
  target_link_libraries(${target} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    VERIFY_INTERFACE_HEADER_SETS ON)
  foundation_warnings(${target})
  if(FOUNDATION_INSTALL)
    foundation_install(${target} ${arg_ALIAS} DESCRIPTION "${arg_DESCRIPTION}"
      PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE} PACKAGES ${arg_PACKAGES})
  endif()
endfunction()

# Hides what is not this project's own; cmake/exports.map says why that is needed.
function(foundation_exports target)
  set(map "${PROJECT_SOURCE_DIR}/cmake/exports.map")
  target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
  set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
endfunction()
