# The simulated host's user interface (dialogs, alerts, progress display),
# driven through the plug-in's own forwarders.
capochords_test(hostui_test
  hostui_support.cpp
  hostui_dialog_test.cpp
  hostui_description_test.cpp)
target_include_directories(hostui_test PRIVATE ${PROJECT_SOURCE_DIR}/platform/src)
