# The built bundle driven through its entry points.
capochords_test(entry_test entry_test.cpp)
