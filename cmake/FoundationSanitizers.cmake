set(FOUNDATION_SANITIZERS "" CACHE STRING "Sanitizers for everything built here, as -fsanitize takes them")

if(FOUNDATION_SANITIZERS)
  add_compile_options(-fsanitize=${FOUNDATION_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${FOUNDATION_SANITIZERS})
endif()

if(FOUNDATION_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
