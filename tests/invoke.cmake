# The menu command end to end: the built bundle invoked through its exported
# entry points in the simulated host.
capochords_test(invoke_test invoke_test.cpp)

# zemlo-host runs the command on its sample score, as the README's main job
# does, and prints the score before and after exactly as in tests/data.
function(zemlo_host_run name expected)
  string(REPLACE ";" "|" args "run;${ARGN};--lang;en_US.UTF-8")
  add_test(NAME ${name}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:zemlo-host> "-DARGS=${args}" "-DFROM=Score "
            -DEXPECTED=${CMAKE_CURRENT_SOURCE_DIR}/data/${expected}
            -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/check_output.cmake)
endfunction()
zemlo_host_run(zemlo_host_main_job_adds_capo_chords zemlo_host_capo3.txt --capo 3)
zemlo_host_run(zemlo_host_asks_for_the_whole_document zemlo_host_whole_document.txt
  --unit inches --distance 0.5 --whole-document --capo 2 --label "Capo 2 (sounds in G)" --chord-flag)
zemlo_host_run(zemlo_host_works_on_the_selection zemlo_host_selection.txt
  --selection 2-3 --capo 5 --distance 40)
zemlo_host_run(zemlo_host_removal_that_finds_nothing zemlo_host_removal.txt
  --remove --selection 2-3)
