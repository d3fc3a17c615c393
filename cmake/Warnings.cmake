# Warnings are errors in our own code. The null-dereference warning is left
# out: GCC 12 at -O3 reports paths it invents itself in standard-library code.
add_library(capochords_warnings INTERFACE)
target_compile_options(capochords_warnings INTERFACE
  -Wall -Wextra -Werror -Wshadow -Wnon-virtual-dtor -Wcast-align
  -Wformat=2 -Wimplicit-fallthrough -Wundef)
add_library(capochords::warnings ALIAS capochords_warnings)
