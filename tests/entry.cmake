# The built bundle driven through its entry points, and zemlo-host driving it.
capochords_test(entry_test entry_test.cpp)
# Runs copies of zemlo-host inside made-up application layouts.
add_dependencies(entry_test zemlo-host)
target_compile_definitions(entry_test PRIVATE ZEMLO_HOST="$<TARGET_FILE:zemlo-host>")

add_test(NAME zemlo_host_lists_the_menu_item
  COMMAND zemlo-host --lang en_US.UTF-8)
set_tests_properties(zemlo_host_lists_the_menu_item PROPERTIES PASS_REGULAR_EXPRESSION
  "Bound to the host engine: yes\nInterface version: 0x19500000\nInitialised: yes \\(value 0\\)\nMenu item 0: Capo Chords…\n.*status: 1\nMenu items: 1\nTerminated\n$")
add_test(NAME zemlo_host_speaks_german
  COMMAND zemlo-host --lang de_DE.UTF-8)
set_tests_properties(zemlo_host_speaks_german PROPERTIES PASS_REGULAR_EXPRESSION
  "Menu item 0: Kapodaster-Akkorde…\n  second text: Setzt Akkordsymbole")
add_test(NAME zemlo_host_refuses_a_folder_without_bundle
  COMMAND zemlo-host --bundle ${CMAKE_CURRENT_SOURCE_DIR})
set_tests_properties(zemlo_host_refuses_a_folder_without_bundle PROPERTIES WILL_FAIL TRUE)
