// The simulator called as a library: handles are checked, states are shared between processes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <velq/velq.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "simulator/model/simulation.h"

using namespace Automation::Velq;

namespace {

const std::string StatePath = testing::TempDir() + "qutil-state-" + std::to_string(getpid());

class HandleTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("VELQ_STATE", StatePath.c_str(), 1);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }
  void TearDown() override { std::remove(StatePath.c_str()); }

  void changeElsewhere(const std::vector<simulator::StateChange>& all) {
    const auto decide = [&](std::vector<simulator::StateChange>& changes) { return changes = all, Success; };
    EXPECT_EQ(other.change(decide), Success);
  }

  simulator::Simulation other{"", {StatePath, false}};  ///< another process's
};

DaqCtrlBase* bind(Scenario scenario, int32_t number) {
  DaqCtrlBase* const control = DaqCtrlBase_Create(scenario);
  const DeviceInformation record{.DeviceNumber = number, .OpenMode = AccessDevice, .ModuleIndex = 0, .Description = {}};
  DeviceInformation bound{.DeviceNumber = 7, .OpenMode = AccessFusion, .ModuleIndex = 7, .Description = {}};
  EXPECT_EQ(DaqCtrlBase_getSelectedDevice(control, &bound), simulator::ErrorWrongOrder);
  EXPECT_EQ(DaqCtrlBase_setSelectedDevice(control, &record), Success);
  EXPECT_EQ(DaqCtrlBase_getSelectedDevice(control, &bound), Success);
  EXPECT_EQ(std::tuple(bound.DeviceNumber, bound.OpenMode, bound.ModuleIndex), std::tuple(number, AccessDevice, 0));
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
  EXPECT_DEATH(DeviceCtrl_getDllVersion(nullptr, 0, nullptr), "^velq-sim: DeviceCtrl_getDllVersion: null handle\n$");
  DeviceCtrl_dispose(device);
  EXPECT_DEATH(DeviceCtrl_dispose(device), "DeviceCtrl_dispose: handle that was disposed of\n$");
  EXPECT_DEATH(Array_getLength(addresses), "Array_getLength: handle that was disposed of\n$");
  DaqCtrlBase_dispose(control);
  EXPECT_DEATH(FirmwareItem_getVersion(chip), "FirmwareItem_getVersion: handle that was disposed of\n$");
}

TEST_F(HandleTest, OverwriteNeedsFileNoticeAndPasswordAndHoldsUntilItsControlGoes) {
  const std::string file = StatePath + ".dfu", make = "(echo >" + file + "; dfu-suffix -p 0x7024 -d 0x300 -a " + file;
  ASSERT_EQ(std::system((make + ") >/dev/null 2>&1").c_str()), 0);
  DaqCtrlBase* const control = bind(ScenarioFirmware, 5);
  FirmwareItem* const chip = chipOf(control, 0);
  const auto load = [&] { return FirmwareItem_loadFile(chip, std::wstring(file.begin(), file.end()).c_str()); };
  const auto start = [&](const wchar_t* password = L"northwind") { return FirmwareItem_start(chip, 2, password); };
  EXPECT_EQ(load(), Success);
  EXPECT_EQ(start(), simulator::ErrorWrongOrder);
  EXPECT_EQ(FirmwareItem_getProgress(chip), -1001);
  FirmwareItem_confirmNotice(chip);
  EXPECT_EQ(start(nullptr), simulator::ErrorRefused);
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(start(), Success);
    EXPECT_EQ(load(), simulator::ErrorWrongOrder);
    for (const int32_t percent : {0, 25, 50, 75, 100, 100}) EXPECT_EQ(FirmwareItem_getProgress(chip), percent);
  }
  EXPECT_EQ(other.checkFree(5), ErrorDeviceBusy);
  EXPECT_EQ(load(), WarningFirmwareNotNewer);
  std::remove(file.c_str());
  EXPECT_EQ(load(), ErrorFileUnreadable);
  EXPECT_EQ(start(), simulator::ErrorWrongOrder);
  DaqCtrlBase_dispose(control);
  EXPECT_EQ(other.checkFree(5), Success);
}

void calibrate(CalibrationSolution* solution) {
  Array* const sections = CalibrationSolution_getSections(solution);
  for (int32_t i = 0; i < Array_getLength(sections); ++i) {
    auto* const section = static_cast<CalibrationSection*>(Array_getItem(sections, i));
    Array* const items = CalibrationSection_getItems(section);
    for (int32_t j = 0; j < Array_getLength(items); ++j) {
      int64_t value = 0;
      int32_t detail = 0;
      uint32_t codes[15] = {};
      auto* const item = static_cast<CalibrationItem*>(Array_getItem(items, j));
      const auto poll = [&] { return CalibrationItem_getState(item, &value, &detail, codes); };
      EXPECT_EQ(poll(), j == 0 ? CalibrationFailed : CalibrationRunning);
      EXPECT_EQ(CalibrationSection_start(section), Success);
      for (int64_t polls = 1; poll() == CalibrationRunning; ++polls) EXPECT_EQ(value, polls);
      EXPECT_EQ(value, detail);
    }
  }
}

TEST_F(HandleTest, WhatOthersKeptCountsAtOnceAndEveryCodeIsKept) {
  DaqCtrlBase* const control = bind(ScenarioCalibration, 0);
  FirmwareItem* const chip = chipOf(bind(ScenarioFirmware, 0), 1);
  EXPECT_STREQ(FirmwareItem_getVersion(chip), L"2.05");
  changeElsewhere(
      {{0, simulator::DescriptionItem, "New"}, {0, simulator::BoardIdItem, 9}, {0, simulator::firmwareItem(1), 0x999}});
  DeviceCtrl* const device = DeviceCtrl_Create(-1, L"New", AccessDevice);
  EXPECT_EQ(DeviceCtrl_getBoardId(device), 9);
  for (const wchar_t* text : {L"", L"\xD800", L"\x110000"})
    EXPECT_EQ(DeviceCtrl_setDescription(device, 1, text), simulator::ErrorRefused);
  EXPECT_STREQ(FirmwareItem_getVersion(chip), L"9.99");
  Array* const solutions = CalibrationCtrl_getSolutions(static_cast<CalibrationCtrl*>(control));
  auto* const solution = static_cast<CalibrationSolution*>(Array_getItem(solutions, 0));
  calibrate(solution);
  EXPECT_EQ(CalibrationSolution_loadGoldenBackup(solution, 0), Success);
  other.refresh();
  EXPECT_EQ(other.codeInUse(0, simulator::calibrationItem(0, 0, 0), 1), 1U);
  EXPECT_EQ(CalibrationSolution_updateAsCurrent(solution), Success);
  other.refresh();
  for (const auto& [section, item, code] : {std::tuple(0U, 0U, 0x7CU), {1, 0, 0x84}, {1, 1, 0x88}})
    EXPECT_EQ(other.codeInUse(0, simulator::calibrationItem(0, section, item), 1), code);
  EXPECT_EQ(other.checkFree(0), ErrorDeviceBusy);
  DaqCtrlBase_dispose(control);
  EXPECT_EQ(other.checkFree(0), Success);
}

// A process that lives long: each query is the first after a change of another process.
TEST_F(HandleTest, EveryQuerySeesWhatOthersChanged) {
  const int32_t six = 6, seven = 7;
  int32_t group = 300, count = 1, child = 0;
  const std::function<bool()> queries[] = {
      [] { return Array_getLength(DeviceCtrl_getInstalledDevices()) == 8; },
      [&] { return CvxIsFusionDevice(group) == Success; },
      [&] { return CvxFusionDeviceCheckChildren(group, 1, &seven) == Success; },
      [&] { return CvxFusionDeviceRemoveChildren(group, 1, &six) == Success; },
      [&] { return CvxFusionDeviceGetChildren(group, &count, &child) == Success && child == 6; },
      [&] { return DeviceCtrl_getProductId(DeviceCtrl_Create(group, nullptr, AccessDevice)) == 0x2004; }};
  EXPECT_EQ(Array_getLength(DeviceCtrl_getInstalledDevices()), 7);
  for (const auto& sees : queries) {
    changeElsewhere({{6, simulator::FusionItem, ++group}});
    EXPECT_TRUE(sees()) << group;
  }
  for (const int32_t bare : {2, group}) {
    EXPECT_EQ(CalibrationCtrl_getSolutions(static_cast<CalibrationCtrl*>(bind(ScenarioCalibration, bare))), nullptr);
    EXPECT_EQ(FirmwareCtrls_getFirmwares(static_cast<FirmwareCtrls*>(bind(ScenarioFirmware, bare))), nullptr);
  }
  DeviceCtrl* const gone = DeviceCtrl_Create(group, nullptr, AccessDevice);
  wchar_t text[64];
  EXPECT_EQ(DeviceCtrl_getLocation(gone, 64, text), 0xE0000001);
  changeElsewhere({{6, simulator::FusionItem, -1}});
  EXPECT_EQ(CvxIsFusionDevice(group), 0xE0000001);
  EXPECT_EQ(DeviceCtrl_setDescription(gone, 1, L"x"), 0xE0000002);
  EXPECT_EQ(DeviceCtrl_getProductId(gone) + DeviceCtrl_getBoardId(gone), 0);
}

TEST_F(HandleTest, RulesForGroups) {
  changeElsewhere({{0, simulator::DescriptionItem, "Fusion device 256"},
                   {4, simulator::DescriptionItem, "F"},
                   {6, simulator::FusionItem, 4},
                   {7, simulator::BoardIdItem, 9}});
  void* const last = Array_getItem(DeviceCtrl_getInstalledDevices(), 7);
  EXPECT_STREQ(static_cast<InstalledDeviceNode*>(last)->Description, L"F");
  const int32_t list[] = {7, 6, 7};
  int32_t made = 0;
  EXPECT_EQ(CvxFusionDeviceRemoveChildren(4, 1, list), 0xE0000003);
  EXPECT_EQ(CvxFusionDeviceRemoveChildren(4, 0, list), 0xE0000003);
  EXPECT_EQ(CvxFusionDeviceCreate(2, list, &made), ErrorCannotFuse) << "one has a group";
  EXPECT_EQ(CvxFusionDeviceRemoveChildren(4, 1, list + 1), Success);
  EXPECT_EQ(DeviceCtrl_getBoardId(DeviceCtrl_Create(7, nullptr, AccessDevice)), 9) << "undone with the group";
  EXPECT_EQ(CvxFusionDeviceCreate(3, list, &made), ErrorCannotFuse) << "one is there twice";
  EXPECT_EQ(CvxFusionDeviceCreate(2, nullptr, &made), ErrorCannotFuse);
  EXPECT_EQ(other.hold(7), Success);
  EXPECT_EQ(CvxFusionDeviceCreate(2, list, &made), ErrorCannotFuse);
  other.release(7);
  EXPECT_EQ(CvxFusionDeviceCreate(2, list, &made), Success);
  wchar_t text[18];
  EXPECT_EQ(DeviceCtrl_getDescription(DeviceCtrl_Create(made, nullptr, AccessDevice), 18, text), 0xA0000001);
  EXPECT_STREQ(text, L"Fusion device 256") << "and another mark, because a device has that description";
}

ErrorCode rename(simulator::Simulation& simulation, int32_t number, const std::string& text) {
  return simulation.change([&](std::vector<simulator::StateChange>& changes) {
    changes.push_back({number, simulator::DescriptionItem, text});
    return simulation.findDescription(text) ? simulator::ErrorRefused : Success;
  });
}

// Two views of one state, as two processes have them.
TEST(StateTest, OthersAreSeenNeverUndoneAndHeldOff) {
  std::remove(StatePath.c_str());
  simulator::Simulation one("", {StatePath, false});
  simulator::Simulation two("", {StatePath, false});
  EXPECT_EQ(rename(one, 0, "first"), Success);
  EXPECT_EQ(rename(two, 1, "first"), simulator::ErrorRefused);
  EXPECT_EQ(rename(two, 1, "second"), Success);
  one.refresh();
  for (simulator::Simulation* const view : {&one, &two}) {
    EXPECT_EQ(view->findDescription("first"), 0);
    EXPECT_EQ(view->findDescription("second"), 1);
    EXPECT_EQ(view->findDescription("QA-1808,BID#1"), std::nullopt);
  }
  const auto fail = [](std::vector<simulator::StateChange>&) -> ErrorCode { throw simulator::StateError("full"); };
  EXPECT_EQ(one.change(fail), 0xE0000004);
  EXPECT_EQ(rename(two, 1, "third"), Success);
  for (const int standard : {0, 1, 2}) {
    const int copy = dup(standard);
    close(standard);
    simulator::StateFile file({StatePath, false});
    EXPECT_TRUE(file.hold(5));
    const bool isFree = fcntl(standard, F_GETFD) == -1;
    dup2(copy, standard);
    EXPECT_TRUE(isFree) << "what a tool prints could end up in the state";
  }
  constexpr int32_t Device = 0x40000001;  // the number of a byte that SQLite locks
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(one.hold(Device), Success);
    EXPECT_EQ(one.hold(Device), Success);
    EXPECT_EQ(two.hold(Device), ErrorDeviceBusy);
    EXPECT_EQ(two.hold(Device + 1), Success);
    one.release(Device);
    EXPECT_EQ(two.checkFree(Device), ErrorDeviceBusy);
    one.release(Device);
    EXPECT_EQ(two.checkFree(Device), Success);
  }
  EXPECT_EQ(simulator::StateFile({"plain", false}).resolvedPath(), std::filesystem::current_path() / "plain");
  std::remove(StatePath.c_str());
}

TEST(StateTest, NothingIsObeyedThatWasNotWrittenForThisRig) {
  const std::string row = "INSERT INTO change VALUES ";
  for (const std::string& sql : std::vector<std::string>{
           "CREATE TRIGGER t BEFORE INSERT ON change BEGIN SELECT RAISE(IGNORE); END", "CREATE TABLE other (a)",
           "DROP TABLE change; CREATE VIEW change AS WITH RECURSIVE r(device) AS (SELECT 0 UNION ALL SELECT"
           " device FROM r) SELECT device, 'board id' AS item, 1 AS value FROM r",
           row + "(0, 'location', 'x')", row + "(0, 'board id', 'x')", row + "(9, 'board id', 1)",
           row + "(9, 'description', 'x')", row + "(9, 'fusion', 300)", row + "(9, 'firmware 0', 1)",
           "UPDATE change SET device = 9, item = 'description', value = 'x'", row + "(0, 'fusion', 1)",
           row + "(0, 'fusion', 4294967296)", row + "(2, 'firmware 0', 1)", row + "(0, 'firmware 2', 1)",
           row + "(0, 'calibration 0.0.1', 1)", row + "(1, 'description', 5)", row + "(1, 'description', x'ff')"}) {
    std::remove(StatePath.c_str());
    simulator::Simulation writer("", {StatePath, false});
    rename(writer, 0, "first");
    sqlite3* database = nullptr;
    simulator::sqlite().open_v2(StatePath.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    EXPECT_EQ(simulator::sqlite().exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    simulator::sqlite().close(database);
    simulator::Simulation reader("", {StatePath, false});
    EXPECT_EQ(reader.description(0), "QA-3216,BID#0") << sql;
    EXPECT_EQ(rename(reader, 1, "second"), simulator::ErrorNotSaved) << sql;
  }
  std::remove(StatePath.c_str());
}

}  // namespace
