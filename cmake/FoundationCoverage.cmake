option(FOUNDATION_COVERAGE "Count which lines run (GCC only); \"./dev coverage\" reports them" OFF)

if(FOUNDATION_COVERAGE)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    message(FATAL_ERROR "FOUNDATION_COVERAGE needs GCC, not ${CMAKE_CXX_COMPILER_ID}.")
  endif()
  # Threads count, too; and what runs must be what is written, so that no optimisation moves or merges lines.
  add_compile_options(--coverage -fprofile-update=atomic -O0)
  add_link_options(--coverage)
endif()
