# The simulated host's layers include only downwards.
add_test(NAME hostsim_layers_include_only_downwards
  COMMAND ${CMAKE_COMMAND} -DHOSTSIM=${PROJECT_SOURCE_DIR}/hostsim -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/check_layers.cmake)
