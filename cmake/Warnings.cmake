# Warnings are errors in our own code.
add_library(capochords_warnings INTERFACE)
target_compile_options(capochords_warnings INTERFACE
  -Wall -Wextra -Werror -Wshadow -Wnon-virtual-dtor -Wcast-align
  -Wformat=2 -Wimplicit-fallthrough -Wnull-dereference -Wundef)
add_library(capochords::warnings ALIAS capochords_warnings)
