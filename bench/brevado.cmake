# The capo chord run over a large simulated score, and the same host calls
# replayed into the engine without the plug-in.
if(TARGET CapoChordsProbe)
  add_executable(brevado_bench brevado_bench.cpp)
  target_link_libraries(brevado_bench PRIVATE benchmark::benchmark ZemloEngine hostsim::driver
    capochords::warnings)
  get_target_property(brevado_probe_bundle CapoChordsProbe CAPOCHORDS_BUNDLE_DIR)
  target_compile_definitions(brevado_bench PRIVATE CAPOCHORDS_PROBE_BUNDLE="${brevado_probe_bundle}")
  add_dependencies(brevado_bench CapoChordsProbe)
endif()
