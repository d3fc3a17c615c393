# The menu command end to end: the built bundle invoked through its exported
# entry points in the simulated host.
capochords_test(invoke_test invoke_test.cpp)

