# What the plug-in image exports and what it leaves undefined.
add_test(NAME bundle_exports_exactly_the_entry_points
  COMMAND ${CMAKE_COMMAND} -DIMAGE=$<TARGET_FILE:CapoChords>
          -DEXPECTED=${CMAKE_CURRENT_SOURCE_DIR}/expected_exports.txt
          -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/check_exports.cmake)

# The link options of our images refuse undefined symbols: a module that uses
# a function nobody defines must not link.
add_library(zdefs_canary MODULE EXCLUDE_FROM_ALL zdefs_canary.cpp)
capochords_no_undefined(zdefs_canary)
add_test(NAME image_link_refuses_undefined_symbols
  COMMAND ${CMAKE_COMMAND} --build ${CMAKE_BINARY_DIR} --target zdefs_canary)
set_tests_properties(image_link_refuses_undefined_symbols PROPERTIES WILL_FAIL TRUE)
add_test(NAME bundle_image_has_no_undefined_symbols
  COMMAND sh -c "ldd -r \"$0\" 2>&1 | grep -q 'undefined symbol' && exit 1 || exit 0"
          $<TARGET_FILE:CapoChords>)
