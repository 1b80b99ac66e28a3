option(TAVU_WERROR "Treat warnings as errors" ON)

add_library(tavu_warnings INTERFACE)
target_compile_options(
  tavu_warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            -Wold-style-cast
            -Wcast-qual
            -Wformat=2
            -Wundef
            -Wvla
            $<$<BOOL:${TAVU_WERROR}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(tavu_warnings INTERFACE -Wsuggest-override -Wduplicated-cond -Wlogical-op)
endif()
