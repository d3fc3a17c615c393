# The whole command on fuzzer-built scores: the built bundle, loaded once,
# over the simulated host.
capochords_fuzz(command_fuzz command_fuzz.cpp)
get_target_property(command_fuzz_bundle CapoChords CAPOCHORDS_BUNDLE_DIR)
target_compile_definitions(command_fuzz PRIVATE CAPOCHORDS_BUNDLE="${command_fuzz_bundle}")
add_dependencies(command_fuzz CapoChords)
