# Composite preferences against random element records; frame cleaning
# against random frames.
capochords_fuzz(composite_fuzz composite_fuzz.cpp)
capochords_fuzz(cleantgf_fuzz cleantgf_fuzz.cpp)
# Array preferences: runs of element records by number.
capochords_fuzz(arrayprefs_fuzz arrayprefs_fuzz.cpp)
