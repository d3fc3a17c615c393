# The validator (zemlo-host validate) against broken copies of the bundle:
# the plug-in's own objects linked with one planted fault each (tests/sabotage),
# wrapped in front of a function with ld --wrap.
function(capochords_broken_bundle name definition wrapped)
  add_library(${name} MODULE $<TARGET_OBJECTS:capochords_entry> sabotage/sabotage.cpp)
  target_compile_definitions(${name} PRIVATE ${definition})
  target_link_libraries(${name} PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,capochords::core>"
    capochords::warnings)
  target_link_options(${name} PRIVATE -Wl,--wrap=${wrapped})
  capochords_make_bundle(${name} NAME ${name}
    IDENTIFIER "com.capochords.broken"
    DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    EXPORTS ${PROJECT_SOURCE_DIR}/shell/exports.map)
  capochords_no_undefined(${name})
  capochords_copy_resources(${name})
endfunction()

capochords_broken_bundle(BrokenOverrun SABOTAGE_OVERRUN _Z7BrevadoP7EREGIONsssPtssPs)
capochords_broken_bundle(BrokenOpenEdit SABOTAGE_OPEN_EDIT FX_EndZemloEdit)
capochords_broken_bundle(BrokenNullHandle SABOTAGE_NULL_HANDLE FX_StartMassEdit)
capochords_broken_bundle(BrokenHang SABOTAGE_HANG FX_MassEditProgress)

capochords_test(validate_test validate_test.cpp)
add_dependencies(validate_test zemlo-host BrokenOverrun BrokenOpenEdit BrokenNullHandle BrokenHang)
target_compile_definitions(validate_test PRIVATE
  ZEMLO_HOST="$<TARGET_FILE:zemlo-host>"
  BROKEN_BUNDLES="${CMAKE_CURRENT_BINARY_DIR}")
