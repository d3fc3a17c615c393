# MusicXML lead sheets through the simulated host, and zemlo-host apply on them.
capochords_test(musicxml_test musicxml_test.cpp LIBS hostsim::musicxml PkgConfig::LIBZIP)
add_dependencies(musicxml_test zemlo-host)
target_compile_definitions(musicxml_test PRIVATE ZEMLO_HOST="$<TARGET_FILE:zemlo-host>")

# zemlo-host apply on the bundled sample, printed exactly as in tests/data:
# the README's main job, a selection, the whole document when nothing is
# selected (every record, byte for byte), and a removal that finds nothing.
function(zemlo_host_apply name expected)
  string(REPLACE ";" "|" args "apply;${ARGN};--lang;en_US.UTF-8")
  add_test(NAME ${name}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:zemlo-host> "-DARGS=${args}" "-DFROM=Score "
            -DEXPECTED=${CMAKE_CURRENT_SOURCE_DIR}/data/${expected}
            -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/check_output.cmake)
endfunction()
zemlo_host_apply(zemlo_host_apply_main_job zemlo_host_apply.txt --capo 3 -o lantern-road.capo.musicxml)
zemlo_host_apply(zemlo_host_works_on_the_selection zemlo_host_selection.txt
  --measures 2-3 --capo 5 --distance 40 -o selection.musicxml)
zemlo_host_apply(zemlo_host_asks_for_the_whole_document zemlo_host_whole_document.txt
  --unit inches --distance 0.5 --whole-document --capo 2 --label "Capo 2 (sounds in G)" --chord-flag --records
  -o whole.musicxml)
zemlo_host_apply(zemlo_host_removal_that_finds_nothing zemlo_host_removal.txt --remove --measures 2-3 -o removal.musicxml)
