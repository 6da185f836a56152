// The simulator called as a library: handles are checked, states are shared between processes.
#include <gtest/gtest.h>
#include <unistd.h>
#include <velq/velq.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "simulator/simulation.h"

using namespace Automation::Velq;

namespace {

class HandleTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("VELQ_STATE", (testing::TempDir() + "qutil-handles-" + std::to_string(getpid())).c_str(), 1);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }
};

TEST_F(HandleTest, MisuseIsOneLineAndAnAbort) {
  DeviceCtrl* const device = DeviceCtrl_Create(0, nullptr, AccessDevice);
  Array* const addresses = DeviceCtrl_getBaseAddresses(device);
  DaqCtrlBase* const control = DaqCtrlBase_Create(ScenarioFirmware);
  const DeviceInformation record{.DeviceNumber = 0, .OpenMode = AccessDevice, .ModuleIndex = 0, .Description = {}};
  ASSERT_EQ(DaqCtrlBase_setSelectedDevice(control, &record), Success);
  Array* const chips = FirmwareCtrls_getFirmwares(static_cast<FirmwareCtrls*>(control));
  auto* const chip = static_cast<FirmwareItem*>(Array_getItem(chips, 1));
  int foreign = 0;

  EXPECT_EQ(Array_getItem(addresses, 2), nullptr);
  EXPECT_EQ(Array_getItem(addresses, -1), nullptr);
  EXPECT_DEATH(DeviceCtrl_getBoardId(nullptr), "^velq-sim: DeviceCtrl_getBoardId: null handle\n$");
  EXPECT_DEATH(DeviceCtrl_getBoardId(reinterpret_cast<DeviceCtrl*>(&foreign)), "getBoardId: foreign handle\n$");
  EXPECT_DEATH(DeviceCtrl_getBoardId(reinterpret_cast<DeviceCtrl*>(control)), "getBoardId: handle of the wrong kind\n$");
  EXPECT_DEATH(CalibrationCtrl_getSolutions(reinterpret_cast<CalibrationCtrl*>(control)), "handle of the wrong kind\n$");
  EXPECT_DEATH(DeviceCtrl_dispose(DaqCtrlBase_getDevice(control)), "handle that belongs to its control\n$");
  DeviceCtrl_dispose(device);
  EXPECT_DEATH(DeviceCtrl_dispose(device), "DeviceCtrl_dispose: handle that was disposed of\n$");
  EXPECT_DEATH(Array_getLength(addresses), "Array_getLength: handle that was disposed of\n$");
  DaqCtrlBase_dispose(control);
  EXPECT_DEATH(FirmwareItem_getVersion(chip), "FirmwareItem_getVersion: handle that was disposed of\n$");
}

TEST_F(HandleTest, FirmwareStartNeedsAFileANoticeAndThePassword) {
  DaqCtrlBase* const control = DaqCtrlBase_Create(ScenarioFirmware);
  const DeviceInformation record{.DeviceNumber = 5, .OpenMode = AccessDevice, .ModuleIndex = 0, .Description = {}};
  DaqCtrlBase_setSelectedDevice(control, &record);
  auto* const chip = static_cast<FirmwareItem*>(Array_getItem(FirmwareCtrls_getFirmwares(static_cast<FirmwareCtrls*>(control)), 0));
  EXPECT_EQ(FirmwareItem_start(chip, 2, L"northwind"), simulator::ErrorWrongOrder);
  EXPECT_EQ(FirmwareItem_getProgress(chip), -1001);
  FirmwareItem_confirmNotice(chip);
  EXPECT_EQ(FirmwareItem_start(chip, 2, L"northwind"), simulator::ErrorWrongOrder);
  DaqCtrlBase_dispose(control);
}

// Two views of one state, as two processes have them.
TEST(StateTest, ChangesOfOthersAreSeenAndNeverUndone) {
  const std::string path = testing::TempDir() + "qutil-state-" + std::to_string(getpid());
  std::remove(path.c_str());
  simulator::Simulation one("", {path, false});
  simulator::Simulation two("", {path, false});
  const auto rename = [](simulator::Simulation& simulation, int32_t number, const std::string& text) {
    return simulation.change([&](std::vector<simulator::StateChange>& changes) {
      if (simulation.findDescription(text) != -1) return simulator::ErrorRefused;
      changes.push_back({number, "description", text});
      return Success;
    });
  };
  EXPECT_EQ(rename(one, 0, "first"), Success);
  EXPECT_EQ(rename(two, 1, "first"), simulator::ErrorRefused);
  EXPECT_EQ(rename(two, 1, "second"), Success);
  EXPECT_EQ(two.findDescription("first"), 0);
  one.refresh();
  EXPECT_EQ(one.description(1), "second");
  EXPECT_EQ(one.findDescription("QA-1808,BID#1"), -1);
  // A refused change keeps nothing of what was collected before the refusal.
  EXPECT_EQ(one.change([](std::vector<simulator::StateChange>& changes) {
    changes.push_back({2, "description", std::string("half")});
    return simulator::ErrorRefused;
  }),
            simulator::ErrorRefused);
  two.refresh();
  EXPECT_EQ(two.description(2), "QD-0096,BID#2");
  std::remove(path.c_str());
}

}  // namespace
