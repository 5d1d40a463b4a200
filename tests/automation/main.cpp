// Runs the tests in a single-threaded apartment, as hosts of a control do.
#include <gtest/gtest.h>
#include <ole2.h>

int main(int count, char** arguments) {
  ::testing::InitGoogleTest(&count, arguments);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const int result = RUN_ALL_TESTS();
  CoUninitialize();
  return result;
}
