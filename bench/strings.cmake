# The UTF-16 C-string routines against their standard counterparts.
add_executable(strings_bench strings_bench.cpp)
target_link_libraries(strings_bench PRIVATE benchmark::benchmark capochords::core capochords::warnings)
