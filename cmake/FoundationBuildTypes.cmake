# The build type "Dev": optimised enough for tests over many thousand files, with assertions and
# debug information. The other build types are CMake's own.
set(CMAKE_CXX_FLAGS_DEV "-O1 -g1" CACHE STRING "Compiler flags of the build type Dev")
set(CMAKE_SHARED_LINKER_FLAGS_DEV "" CACHE STRING "Linker flags of the build type Dev (shared libraries)")
set(CMAKE_EXE_LINKER_FLAGS_DEV "" CACHE STRING "Linker flags of the build type Dev (programs)")
mark_as_advanced(CMAKE_CXX_FLAGS_DEV CMAKE_SHARED_LINKER_FLAGS_DEV CMAKE_EXE_LINKER_FLAGS_DEV)

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
