# Lays a MODULE target out as a macOS-style bundle on every platform:
#   <dir>/<name>.bundle/Contents/Info.plist
#   <dir>/<name>.bundle/Contents/MacOS/<name>
#   <dir>/<name>.bundle/Contents/Resources/...
# On macOS CMake's own BUNDLE support does this; elsewhere we do it by hand.
function(capochords_make_bundle target)
  cmake_parse_arguments(B "" "NAME;IDENTIFIER;DIRECTORY;EXPORTS" "" ${ARGN})
  if(NOT B_DIRECTORY)
    set(B_DIRECTORY ${CMAKE_BINARY_DIR})
  endif()
  set(contents ${B_DIRECTORY}/${B_NAME}.bundle/Contents)
  set(CAPOCHORDS_BUNDLE_EXECUTABLE ${B_NAME})
  set(CAPOCHORDS_BUNDLE_IDENTIFIER ${B_IDENTIFIER})
  set(CAPOCHORDS_BUNDLE_VERSION ${PROJECT_VERSION})
  configure_file(${PROJECT_SOURCE_DIR}/resources/Info.plist.in ${contents}/Info.plist @ONLY)
  if(APPLE)
    set_target_properties(${target} PROPERTIES BUNDLE TRUE OUTPUT_NAME ${B_NAME}
      MACOSX_BUNDLE_INFO_PLIST ${contents}/Info.plist
      LIBRARY_OUTPUT_DIRECTORY ${B_DIRECTORY})
    if(B_EXPORTS)
      target_link_options(${target} PRIVATE -Wl,-exported_symbols_list,${B_EXPORTS}.macos)
    endif()
  else()
    set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX "" OUTPUT_NAME ${B_NAME}
      LIBRARY_OUTPUT_DIRECTORY ${contents}/MacOS)
    if(B_EXPORTS)
      # Only the listed names leave the image: the forwarders bear the host's
      # own function names and must never interpose on the host's symbols.
      target_link_options(${target} PRIVATE -Wl,--version-script=${B_EXPORTS}
        -Wl,-Bsymbolic)
      set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${B_EXPORTS})
    endif()
  endif()
  set_property(TARGET ${target} PROPERTY CAPOCHORDS_BUNDLE_DIR ${B_DIRECTORY}/${B_NAME}.bundle)
endfunction()

# Refuse undefined symbols in a loadable image. Clang does not link the
# sanitizer runtime into shared objects, so there the check stays off.
function(capochords_no_undefined target)
  if(NOT APPLE)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR NOT CMAKE_CXX_FLAGS MATCHES "sanitize")
      target_link_options(${target} PRIVATE -Wl,-z,defs)
    endif()
  endif()
endfunction()

# Copies resources/<lang>.lproj/* and resources/*.dlg into a bundle target's
# Contents/Resources, and keeps them up to date.
function(capochords_copy_resources target)
  get_target_property(bundle_dir ${target} CAPOCHORDS_BUNDLE_DIR)
  set(src ${PROJECT_SOURCE_DIR}/resources)
  file(GLOB_RECURSE resources CONFIGURE_DEPENDS RELATIVE ${src}
    ${src}/*.lproj/* ${src}/*.dlg)
  set(copied)
  foreach(res IN LISTS resources)
    add_custom_command(OUTPUT ${bundle_dir}/Contents/Resources/${res}
      COMMAND ${CMAKE_COMMAND} -E copy ${src}/${res} ${bundle_dir}/Contents/Resources/${res}
      DEPENDS ${src}/${res})
    list(APPEND copied ${bundle_dir}/Contents/Resources/${res})
  endforeach()
  add_custom_target(${target}_resources ALL DEPENDS ${copied})
  add_dependencies(${target} ${target}_resources)
endfunction()

