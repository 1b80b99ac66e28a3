# TAVU_SANITIZE is a comma-separated list as -fsanitize takes it, for example "address,undefined".
set(TAVU_SANITIZE "" CACHE STRING "Sanitizers to build with")

add_library(tavu_sanitizers INTERFACE)
if(TAVU_SANITIZE)
  target_compile_options(tavu_sanitizers INTERFACE -fsanitize=${TAVU_SANITIZE}
                                                   -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tavu_sanitizers INTERFACE -fsanitize=${TAVU_SANITIZE})
endif()
