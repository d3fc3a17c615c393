# The localized string table: the plug-in's own lookups inside a loaded copy,
# and the tables the bundle ships.
capochords_test(resources_test resources_test.cpp)
capochords_test(tables_test tables_test.cpp)
# Reads the tables with the stand-in's own reader.
target_include_directories(tables_test PRIVATE ${PROJECT_SOURCE_DIR}/platform/src)
