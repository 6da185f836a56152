// Names of handles whose addresses a library uses again.
#include <gtest/gtest.h>

#include "probe/names.h"

TEST(HandleNamesTest, AReleasedHandleInvalidatesAllThatWasObtainedFromIt) {
  const int control = 0, solutions = 0, solution = 0, other = 0;
  probe::HandleNames names;
  for (const char* const expected : {"CalibrationSolution#1", "CalibrationSolution#2"}) {
    names.adopt(&solutions, &control);
    names.adopt(&solution, &solutions);
    EXPECT_EQ(names.nameOf(&solution, "CalibrationSolution"), expected);
    EXPECT_EQ(names.nameOf(&solution, "CalibrationSolution"), expected);
    EXPECT_EQ(names.nameOf(&other, "DeviceCtrl"), "DeviceCtrl#1");
    names.forget(&control);
  }
  EXPECT_EQ(names.nameOf(nullptr, "Array"), "null");
}
