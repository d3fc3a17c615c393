# The key of the shapes, the spelling of capo chords and the capo advisor.
capochords_test(shapes_test shapes_test.cpp LIBS hostsim::musicxml)
