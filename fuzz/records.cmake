# Composite preferences against random element records; frame cleaning
# against random frames.
capochords_fuzz(composite_fuzz composite_fuzz.cpp)
capochords_fuzz(cleantgf_fuzz cleantgf_fuzz.cpp)
