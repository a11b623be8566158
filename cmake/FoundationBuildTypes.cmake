# The build type "Dev": optimised enough for tests over many thousand files, with assertions and
# debug information. The other build types are CMake's own.
if(NOT CMAKE_CXX_FLAGS_DEV) # project() has put an empty entry into the cache
  set(CMAKE_CXX_FLAGS_DEV "-O1 -g1" CACHE STRING "Compiler flags of the build type Dev" FORCE)
endif()
mark_as_advanced(CMAKE_CXX_FLAGS_DEV)

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
