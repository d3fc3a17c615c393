# The capo chord command: the run over a region and the measure text blocks,
# through fresh copies of the test image over the simulated host.
capochords_test(command_test
  brevado_test.cpp
  textblocks_test.cpp)
