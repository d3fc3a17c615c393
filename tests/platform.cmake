# The Core Foundation stand-in.
capochords_test(cfformat_test cfformat_test.cpp)
# Reading Info.plist, and what a bundle object is.
capochords_test(bundle_test bundle_test.cpp)
foreach(t bundle_test)
  # These look at the stand-in's readers directly.
  target_include_directories(${t} PRIVATE ${PROJECT_SOURCE_DIR}/platform/src)
endforeach()
