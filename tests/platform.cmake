# The Core Foundation stand-in.
capochords_test(cfformat_test cfformat_test.cpp)
