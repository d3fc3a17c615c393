# The simulated host's undoable edits, driven through the plug-in's forwarders.
capochords_test(hostedits_test hostedits_test.cpp)
