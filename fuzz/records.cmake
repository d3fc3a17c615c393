# Frame cleaning against random frames.
capochords_fuzz(cleantgf_fuzz cleantgf_fuzz.cpp)
