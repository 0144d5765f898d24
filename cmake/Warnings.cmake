# One warning policy for every target of the project.
add_library(lumbrel_warnings INTERFACE)
target_compile_options(lumbrel_warnings INTERFACE -Wall -Wextra -Wshadow -Wnon-virtual-dtor
  -Wcast-align -Wunused -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough)
if(LUMBREL_WERROR)
  target_compile_options(lumbrel_warnings INTERFACE -Werror)
endif()
