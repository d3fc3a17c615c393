# The simulated host's handling of the plug-in's buffers: staged copies with
# guard bytes, and claims checked against the plug-in's memory.
capochords_test(buffers_test buffers_test.cpp)
