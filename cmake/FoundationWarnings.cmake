option(FOUNDATION_WARNINGS_AS_ERRORS "Fail the build on any compiler warning" OFF)

# Turns on the warnings that this project keeps clean under GCC and Clang.
function(foundation_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Wold-style-cast
    -Woverloaded-virtual -Wcast-align -Wformat=2
    # GCC 12 sees overlaps and uninitialised parts inside its own std::string where there are none, and, when it
    # optimises, null pointers in it (-Wnull-dereference).
    $<$<CXX_COMPILER_ID:Clang>:-Wnull-dereference>
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op -Wno-restrict -Wno-maybe-uninitialized>
    $<$<BOOL:${FOUNDATION_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()
