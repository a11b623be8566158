# foundation_library(TARGET ALIAS NAME SOURCES file... HEADERS file... [PUBLIC lib...] [PRIVATE lib...])
#
# A shared library of this project. The calling folder is its one include root; HEADERS are its public
# headers, and each of them is compiled alone by the target all_verify_interface_header_sets.
function(foundation_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "ALIAS" "SOURCES;HEADERS;PUBLIC;PRIVATE")
  add_library(${target} SHARED ${arg_SOURCES})
  add_library(${arg_ALIAS} ALIAS ${target})
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS "${CMAKE_CURRENT_SOURCE_DIR}" FILES ${arg_HEADERS})
  target_link_libraries(${target} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    VERIFY_INTERFACE_HEADER_SETS ON)
  foundation_warnings(${target})
endfunction()
