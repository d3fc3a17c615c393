# The settings dialog's handler inside a loaded copy of the test image, shown
# by the simulated host.
capochords_test(dialog_test dialog_test.cpp)
