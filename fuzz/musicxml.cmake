# MusicXML files through the simulated host's reader and writer.
capochords_fuzz(leadsheet_fuzz leadsheet_fuzz.cpp)
target_link_libraries(leadsheet_fuzz PRIVATE hostsim::musicxml)
