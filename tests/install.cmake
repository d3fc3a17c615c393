# The installed program finds its bundles and samples beside itself.
add_test(NAME Install.RunsFromItsOwnPrefix
  COMMAND ${CMAKE_COMMAND} -DBUILD=${CMAKE_BINARY_DIR} -DPROGRAM=$<TARGET_FILE:zemlo-host>
          -DWORK=${CMAKE_CURRENT_BINARY_DIR}/install-test
          -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/check_install.cmake)
