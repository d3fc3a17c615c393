# The Core Foundation stand-in.
capochords_test(cfformat_test cfformat_test.cpp)
# Reading string tables and Info.plist, and bundles with localized resources.
capochords_test(stringstable_test stringstable_test.cpp)
capochords_test(bundle_test bundle_test.cpp)
capochords_test(localized_test localized_test.cpp)
foreach(t stringstable_test bundle_test localized_test)
  # These look at the stand-in's readers directly.
  target_include_directories(${t} PRIVATE ${PROJECT_SOURCE_DIR}/platform/src)
endforeach()
