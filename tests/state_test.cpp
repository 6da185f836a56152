// The simulator called as a library: handles are checked, states are shared between processes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <velq/velq.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "simulator/simulation.h"

using namespace Automation::Velq;

namespace {

const std::string Path = testing::TempDir() + "qutil-state-" + std::to_string(getpid());

class HandleTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("VELQ_STATE", Path.c_str(), 1);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }
};

DaqCtrlBase* bind(Scenario scenario, int32_t number) {
  DaqCtrlBase* const control = DaqCtrlBase_Create(scenario);
  const DeviceInformation record{.DeviceNumber = number, .OpenMode = AccessDevice, .ModuleIndex = 0, .Description = {}};
  EXPECT_EQ(DaqCtrlBase_setSelectedDevice(control, &record), Success);
  return control;
}

FirmwareItem* chipOf(DaqCtrlBase* control, int32_t index) {
  return static_cast<FirmwareItem*>(
      Array_getItem(FirmwareCtrls_getFirmwares(static_cast<FirmwareCtrls*>(control)), index));
}

TEST_F(HandleTest, MisuseIsOneLineAndAnAbort) {
  DeviceCtrl* const device = DeviceCtrl_Create(0, nullptr, AccessDevice);
  Array* const addresses = DeviceCtrl_getBaseAddresses(device);
  DaqCtrlBase* const control = bind(ScenarioFirmware, 0);
  FirmwareItem* const chip = chipOf(control, 1);
  int foreign = 0;

  EXPECT_EQ(Array_getItem(addresses, 2), nullptr);
  EXPECT_EQ(Array_getItem(addresses, -1), nullptr);
  EXPECT_DEATH(DeviceCtrl_getBoardId(nullptr), "^velq-sim: DeviceCtrl_getBoardId: null handle\n$");
  EXPECT_DEATH(DeviceCtrl_getBoardId(reinterpret_cast<DeviceCtrl*>(&foreign)), "getBoardId: foreign handle\n$");
  EXPECT_DEATH(DeviceCtrl_getBoardId(reinterpret_cast<DeviceCtrl*>(control)),
               "getBoardId: handle of the wrong kind\n$");
  EXPECT_DEATH(CalibrationCtrl_getSolutions(reinterpret_cast<CalibrationCtrl*>(control)),
               "handle of the wrong kind\n$");
  EXPECT_DEATH(DeviceCtrl_dispose(DaqCtrlBase_getDevice(control)), "handle that belongs to its control\n$");
  DeviceCtrl_dispose(device);
  EXPECT_DEATH(DeviceCtrl_dispose(device), "DeviceCtrl_dispose: handle that was disposed of\n$");
  EXPECT_DEATH(Array_getLength(addresses), "Array_getLength: handle that was disposed of\n$");
  DaqCtrlBase_dispose(control);
  EXPECT_DEATH(FirmwareItem_getVersion(chip), "FirmwareItem_getVersion: handle that was disposed of\n$");
}

TEST_F(HandleTest, FirmwareStartNeedsAFileANoticeAndThePassword) {
  FirmwareItem* const chip = chipOf(bind(ScenarioFirmware, 5), 0);
  EXPECT_EQ(FirmwareItem_start(chip, 2, L"northwind"), simulator::ErrorWrongOrder);
  EXPECT_EQ(FirmwareItem_getProgress(chip), -1001);
  FirmwareItem_confirmNotice(chip);
  EXPECT_EQ(FirmwareItem_start(chip, 2, L"northwind"), simulator::ErrorWrongOrder);
}

void calibrate(CalibrationSolution* solution) {
  Array* const sections = CalibrationSolution_getSections(solution);
  for (int32_t i = 0; i < Array_getLength(sections); ++i) {
    auto* const section = static_cast<CalibrationSection*>(Array_getItem(sections, i));
    EXPECT_EQ(CalibrationSection_start(section), Success);
    Array* const items = CalibrationSection_getItems(section);
    for (int32_t j = 0; j < Array_getLength(items); ++j) {
      int64_t value = 0;
      int32_t detail = 0;
      uint32_t codes[15] = {};
      auto* const item = static_cast<CalibrationItem*>(Array_getItem(items, j));
      while (CalibrationItem_getState(item, &value, &detail, codes) == CalibrationRunning) continue;
    }
  }
  EXPECT_EQ(CalibrationSolution_updateAsCurrent(solution), Success);
}

TEST_F(HandleTest, WhatOthersKeptCountsAtOnceAndEveryCodeIsKept) {
  DaqCtrlBase* const control = bind(ScenarioCalibration, 0);
  FirmwareItem* const chip = chipOf(bind(ScenarioFirmware, 0), 1);
  EXPECT_STREQ(FirmwareItem_getVersion(chip), L"2.05");
  simulator::Simulation other("", {Path, false});
  other.change([](std::vector<simulator::StateChange>& changes) {
    changes = {{0, "description", "New"},
               {0, "board id", 9},
               {0, "firmware 1", 0x999},
               {6, "fusion", 300},
               {7, "fusion", 300}};
    return Success;
  });
  int32_t count = 256, children[256], made = 0;
  EXPECT_EQ(CvxFusionDeviceGetChildren(300, &count, children), Success);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(CvxFusionDeviceCreate(2, nullptr, &made), ErrorCannotFuse);
  DeviceCtrl* const device = DeviceCtrl_Create(-1, L"New", AccessDevice);
  EXPECT_EQ(DeviceCtrl_getBoardId(device), 9);
  for (const wchar_t* text : {L"", L"\xD800", L"\x110000"})
    EXPECT_EQ(DeviceCtrl_setDescription(device, 1, text), simulator::ErrorRefused);
  EXPECT_EQ(DeviceCtrl_getBoardId(DeviceCtrl_Create(300, nullptr, AccessDevice)), 0);
  EXPECT_STREQ(FirmwareItem_getVersion(chip), L"9.99");
  Array* const solutions = CalibrationCtrl_getSolutions(static_cast<CalibrationCtrl*>(control));
  calibrate(static_cast<CalibrationSolution*>(Array_getItem(solutions, 0)));
  other.refresh();
  EXPECT_EQ(other.codeInUse(0, "calibration 0.0.0", 1), 0x7CU);
  EXPECT_EQ(other.codeInUse(0, "calibration 0.1.0", 1), 0x84U);
  EXPECT_EQ(other.codeInUse(0, "calibration 0.1.1", 1), 0x88U);
  DaqCtrlBase_dispose(control);
  std::remove(Path.c_str());
}

ErrorCode rename(simulator::Simulation& simulation, int32_t number, const std::string& text) {
  return simulation.change([&](std::vector<simulator::StateChange>& changes) {
    changes.push_back({number, "description", text});
    return simulation.findDescription(text) == -1 ? Success : simulator::ErrorRefused;
  });
}

// Two views of one state, as two processes have them.
TEST(StateTest, OthersAreSeenNeverUndoneAndHeldOff) {
  std::remove(Path.c_str());
  simulator::Simulation one("", {Path, false});
  simulator::Simulation two("", {Path, false});
  EXPECT_EQ(rename(one, 0, "first"), Success);
  EXPECT_EQ(rename(two, 1, "first"), simulator::ErrorRefused);
  EXPECT_EQ(two.description(1), "QA-1808,BID#1");
  EXPECT_EQ(rename(two, 1, "second"), Success);
  EXPECT_EQ(two.findDescription("first"), 0);
  one.refresh();
  EXPECT_EQ(one.description(1), "second");
  EXPECT_EQ(one.findDescription("QA-1808,BID#1"), -1);
  const auto fail = [](std::vector<simulator::StateChange>&) -> ErrorCode { throw simulator::StateError("full"); };
  EXPECT_EQ(one.change(fail), simulator::ErrorNotKept);
  EXPECT_EQ(rename(two, 1, "third"), Success);
  const int input = dup(0);
  close(0);
  simulator::StateFile file({Path, false});
  EXPECT_TRUE(file.hold(5));
  EXPECT_EQ(fcntl(0, F_GETFD), -1) << "what a tool prints could end up in the state";
  dup2(input, 0);
  EXPECT_EQ(one.hold(6), Success);
  EXPECT_EQ(two.hold(6), ErrorDeviceBusy);
  EXPECT_EQ(two.hold(7), Success);
  one.release(6);
  EXPECT_EQ(two.checkFree(6), Success);
  std::remove(Path.c_str());
}

TEST(StateTest, NothingIsObeyedThatWasNotWrittenForThisRig) {
  const std::string row = "INSERT INTO change VALUES ";
  for (const std::string& sql : std::vector<std::string>{
           "CREATE TRIGGER t BEFORE INSERT ON change BEGIN SELECT RAISE(IGNORE); END", "CREATE TABLE other (a)",
           "DROP TABLE change; CREATE VIEW change AS WITH RECURSIVE r(device) AS (SELECT 0 UNION ALL SELECT"
           " device FROM r) SELECT device, 'board id' AS item, 1 AS value FROM r",
           row + "(0, 'location', 'x')", row + "(0, 'board id', 'x')", row + "(9, 'board id', 1)",
           row + "(0, 'fusion', 1)", row + "(0, 'fusion', 4294967296)", row + "(2, 'firmware 0', 1)",
           row + "(0, 'firmware 2', 1)", row + "(0, 'calibration 0.0.1', 1)", row + "(1, 'description', 5)",
           row + "(1, 'description', x'ff')"}) {
    std::remove(Path.c_str());
    simulator::Simulation writer("", {Path, false});
    rename(writer, 0, "first");
    sqlite3* database = nullptr;
    simulator::sqlite().open_v2(Path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    EXPECT_EQ(simulator::sqlite().exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    simulator::sqlite().close(database);
    const auto before = std::filesystem::last_write_time(Path);
    simulator::Simulation reader("", {Path, false});
    EXPECT_EQ(reader.description(0), "QA-3216,BID#0") << sql;
    EXPECT_EQ(rename(reader, 1, "second"), simulator::ErrorNotKept) << sql;
    EXPECT_EQ(std::filesystem::last_write_time(Path), before) << sql;
  }
  std::remove(Path.c_str());
}

}  // namespace
