# The readers of string tables and Info.plist, on any bytes.
capochords_fuzz(stringstable_fuzz stringstable_fuzz.cpp)
target_include_directories(stringstable_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/platform/src)
# The Info.plist reader on its own, where its round trip is checked.
capochords_fuzz(infoplist_fuzz infoplist_fuzz.cpp)
target_include_directories(infoplist_fuzz PRIVATE ${PROJECT_SOURCE_DIR}/platform/src)
