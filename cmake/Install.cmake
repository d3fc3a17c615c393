# cmake --install and CPack: zemlo-host with the engine bundle, the plug-in
# bundle and the sample lead sheets, laid out so that the program finds them
# beside itself wherever the tree is unpacked:
#   bin/zemlo-host
#   lib/capochords/{ZemloEngine,CapoChords}.bundle
#   share/capochords/samples/*.musicxml
set(capochords_bundles lib/capochords)
# The engine image is linked to the program; found from the program's folder.
set_target_properties(zemlo-host PROPERTIES
  INSTALL_RPATH "$ORIGIN/../${capochords_bundles}/ZemloEngine.bundle/Contents/MacOS")
install(TARGETS zemlo-host RUNTIME DESTINATION bin)
foreach(target ZemloEngine CapoChords)
  get_target_property(dir ${target} CAPOCHORDS_BUNDLE_DIR)
  install(DIRECTORY ${dir} DESTINATION ${capochords_bundles} USE_SOURCE_PERMISSIONS)
endforeach()
file(GLOB capochords_samples CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/hostsim/samples/*.musicxml)
install(FILES ${capochords_samples} DESTINATION share/capochords/samples)

set(CPACK_PACKAGE_NAME capochords)
set(CPACK_PACKAGE_VENDOR "CapoChords")
set(CPACK_PACKAGE_CONTACT "CapoChords developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Capo chords for Zemlo scores: the plug-in and a simulated host that runs it on MusicXML")
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_FILE_NAME capochords-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6, libstdc++6, libgcc-s1, libxml2, libzip4")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
include(CPack)
