# MusicXML lead sheets through the simulated host, and zemlo-host apply on them.
capochords_test(musicxml_test musicxml_test.cpp LIBS hostsim::musicxml PkgConfig::LIBZIP)
add_dependencies(musicxml_test zemlo-host)
target_compile_definitions(musicxml_test PRIVATE ZEMLO_HOST="$<TARGET_FILE:zemlo-host>")

# The README's main job: apply on the bundled sample, printed exactly as in tests/data.
add_test(NAME zemlo_host_apply_main_job
  COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:zemlo-host>
          "-DARGS=apply|--capo|3|--lang|en_US.UTF-8|-o|lantern-road.capo.musicxml"
          "-DFROM=Score " -DEXPECTED=${CMAKE_CURRENT_SOURCE_DIR}/data/zemlo_host_apply.txt
          -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/check_output.cmake)
