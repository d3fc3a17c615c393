# Text: formatting into a capacity, and the UTF-16 string's conversions.
capochords_fuzz(sprintf_fuzz sprintf_fuzz.cpp)
capochords_fuzz(eu16string_fuzz eu16string_fuzz.cpp)
