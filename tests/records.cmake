# Document data records, preference maps, frames, and the simulated host's
# document store they run against.
capochords_test(records_test
  docstore_test.cpp
  prefmaps_test.cpp
  docdata_test.cpp
  frames_test.cpp)
