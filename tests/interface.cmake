# The host interface and the preference maps against lists written out by
# hand from the host interface documentation.
capochords_test(interface_test interface_test.cpp)
