# Host binding and forwarders.
capochords_test(forwarders_test forwarders_test.cpp)
capochords_test(binding_test binding_test.cpp)
# The same suite in a process where the engine is known only by its symbols:
# binding falls back to the application's own bundle.
capochords_test(binding_fallback_test binding_fallback_test.cpp ENGINE AnonEngine)

# Forwarders with a binding that can be made to throw.
add_library(ThrowingBinding MODULE ${PROJECT_SOURCE_DIR}/pdk/forwarders.cpp probe/throwing_binding.cpp)
target_include_directories(ThrowingBinding PRIVATE ${PROJECT_SOURCE_DIR}/pdk ${PROJECT_SOURCE_DIR}/pdk/table)
target_link_libraries(ThrowingBinding PRIVATE capochords::warnings ${CMAKE_DL_LIBS})
capochords_make_bundle(ThrowingBinding NAME ThrowingBinding IDENTIFIER "com.capochords.throwing"
  DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
add_dependencies(binding_test ThrowingBinding)
