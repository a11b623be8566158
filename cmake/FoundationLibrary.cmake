# foundation_library(TARGET [STATIC] ALIAS NAME SOURCES file... HEADERS file... [PUBLIC lib...] [PRIVATE lib...])
#
# A library of this project, shared unless told. The calling folder is its one include root; HEADERS are its public
# headers, and each of them is compiled alone by the target all_verify_interface_header_sets.
function(foundation_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "STATIC" "ALIAS" "SOURCES;HEADERS;PUBLIC;PRIVATE")
  if(arg_STATIC)
    add_library(${target} STATIC ${arg_SOURCES})
  else()
    add_library(${target} SHARED ${arg_SOURCES})
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
  install(TARGETS ${target} FILE_SET HEADERS)
endfunction()
