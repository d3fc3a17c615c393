# zemlo-host apply on a large generated score against xmllint --format on
# the same file, in wall time and peak memory: `cmake --build --preset
# release --target apply_vs_xmllint` (or bench/apply_vs_xmllint.sh BUILD_DIR).
add_executable(timemem timemem.cpp)
target_link_libraries(timemem PRIVATE capochords::warnings)
if(TARGET zemlo-host)
  add_custom_target(apply_vs_xmllint
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/apply_vs_xmllint.sh ${PROJECT_BINARY_DIR}
    DEPENDS timemem zemlo-host
    USES_TERMINAL
    COMMENT "zemlo-host apply against xmllint --format on a large score")
endif()
