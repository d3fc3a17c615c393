# Text: the string routines, the UTF-16 string class and the conversions of
# the Core Foundation stand-in beneath them.
capochords_test(strings16_test strings16_test.cpp)
capochords_test(eu16string_test eu16string_test.cpp)
capochords_test(cfconvert_test cfconvert_test.cpp)
