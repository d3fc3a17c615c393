# Measurement units and decimal entry, inside a loaded copy of the test image.
capochords_test(units_test units_test.cpp)
