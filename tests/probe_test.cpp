// The probe: injected answers are returned, and no failure is silent.
#include <csignal>
#include <filesystem>
#include <utility>

#include "harness.h"

namespace {

using ProbeTest = ToolTest;

TEST_F(ProbeTest, InjectedAnswersAreMarkedAndThoseNeverReachedCounted) {
  useRig(OneBoard);
  const Outcome outcome = runWith(
      {.arguments = {"/dn:0"},
       .faults = " DeviceCtrl_getDeviceNumber#2=-5;DeviceCtrl_getBoardId#2-3=1 ; DeviceCtrl_getProductId = 0xffffffff; "
                 "DeviceCtrl_getLocation=0xC0000000;CvxIsFusionDevice=0;"});
  EXPECT_EQ(outcome.output.substr(0, outcome.output.find("Driver")),
            "Detail information of device 0 (Board)\nDevice Number: -5\nDescription: Board\nProductID:0xFFFFFFFF\n"
            "Board ID: 0\n");
  EXPECT_EQ(outcome.calls({"DeviceCtrl_getDeviceNumber", "DeviceCtrl_getLocation"}),
            "DeviceCtrl_getDeviceNumber(DeviceCtrl#1) = 0\nDeviceCtrl_getDeviceNumber(DeviceCtrl#1) = -5 (injected)\n"
            "DeviceCtrl_getLocation(DeviceCtrl#1, 100, \"\") = 0xc0000000 (injected)\n");
  const std::string never = "# faults never reached: 1; CvxIsFusionDevice=0";
  EXPECT_EQ(runWith({.arguments = {"/?"}, .faults = "CvxIsFusionDevice=0"}).trace.back(), never);
  EXPECT_EQ(runWith({.arguments = {"/dd:(", "x"}, .faults = "CvxIsFusionDevice=0", .expectsErrors = true}).trace.back(),
            never);
  EXPECT_EQ(outcome.trace.back(), "# faults never reached: 2; DeviceCtrl_getBoardId#2-3=1; CvxIsFusionDevice=0");
}

TEST_F(ProbeTest, BadFaultsStopTheRun) {
  useRig(OneBoard);
  const char* const entry = "OPERATION[#FIRST[-LAST]]=ANSWER";
  const char* const range = "#FIRST or #FIRST-LAST, counted from 1";
  const char* const number = "a 32-bit number as the answer";
  const std::pair<const char*, const char*> cases[] = {
      {"DeviceCtrl_getBoardID=1", "the name of an operation before '#' or '='"},
      {"DeviceCtrl_getBoardId", entry},
      {"CvxIsFusionDevice=0;;CvxIsFusionDevice=0", entry},
      {"DeviceCtrl_getBoardId#0=1", range},
      {"DeviceCtrl_getBoardId#3-2=1", range},
      {"DeviceCtrl_getBoardId#x=1", range},
      {"DeviceCtrl_getBoardId=", number},
      {"DeviceCtrl_getBoardId=0x100000000", number},
      {"DeviceCtrl_getBoardId=0x-5", number},
      {"DeviceCtrl_getBoardId=null", number},
      {"DeviceCtrl_Create=0", "the answer null"},
      {"DeviceCtrl_dispose=0", "an operation that returns a value"}};
  for (const auto& [faults, expected] : cases) {
    const Outcome outcome = runWith({.arguments = {}, .faults = faults, .expectsErrors = true});
    EXPECT_EQ(outcome.signal, SIGABRT) << faults;
    EXPECT_TRUE(outcome.errors.starts_with("velq-probe: VELQ_FAULTS: \"")) << outcome.errors;
    EXPECT_EQ(runWith({.arguments = {"/?"}, .faults = faults, .expectsErrors = true}).signal, SIGABRT);
    EXPECT_TRUE(outcome.errors.ends_with(std::string("\": expected ") + expected + "\n")) << outcome.errors;
  }
}

TEST_F(ProbeTest, NeedsALibraryBehindIt) {
  std::filesystem::copy_file(SLEEP_RECORDER, path("libvelq.so"));
  const Outcome outcome = runWith({.arguments = {}, .library = path(""), .expectsErrors = true});
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_EQ(outcome.errors, "velq-probe: the probe found no device library\n");
}

}  // namespace
