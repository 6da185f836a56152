// Which operation an option runs, what is prepared for it, and what is released.
#include "harness.h"

namespace {

using DispatchTest = ToolTest;

const char Insufficient[] = "Insufficient parameter! Please use \"qutil /?\"to get help. (Errorlevel = 1)\n";

// Numbers: 0 has everything, 1 nothing, 9 is a fusion device of 2 and 3.
const char Rig[] = R"({"devices": [
  {"number": 0, "description": "Full", "product_id": 1,
   "firmware": [{"description": "Chip", "version": "0x0100"}],
   "calibration": [{"name": "AI.Auto", "description": "d", "instruction": "i", "sections": []},
                   {"name": "AO.Auto", "description": "d", "instruction": "i", "sections": []}]},
  {"number": 1, "description": "Bare", "product_id": 2},
  {"number": 2, "description": "Left", "product_id": 3}, {"number": 3, "description": "Right", "product_id": 3},
  {"number": 9, "description": "Both", "children": [2, 3]}]})";

struct Row {
  std::vector<std::string> arguments;
  std::string firstLine;
  std::string calls;  ///< the operations in the order of their calls
};

// The operations in the order of their calls, those of `main` and the array walks left out.
std::string operationsOf(const Outcome& outcome) {
  std::string operations;
  for (size_t i = 1; i < outcome.trace.size(); ++i) {
    const std::string name = outcome.trace[i].substr(0, outcome.trace[i].find('('));
    if (name.starts_with("Array_")) continue;
    operations += (operations.empty() ? "" : " ") + name.substr(name.find('_') + 1);
  }
  return operations;
}

TEST_F(DispatchTest, EveryRow) {
  useRig(Rig);
  const std::string bind = "CvxIsFusionDevice Create setSelectedDevice getSelectedDevice ";
  const std::string bindCalibration =
      "Create getDescription getDeviceNumber dispose CvxIsFusionDevice Create setSelectedDevice getSelectedDevice "
      "getSolutions ";
  const std::string report =
      "Create getDescription getDeviceNumber getDeviceNumber getProductId getBoardId getDriverVersion getDllVersion "
      "getBoardVersion getLocation getBaseAddresses getInterrupts";
  const std::string solution = "getName getDescription getInstruction getSections";
  const Row rows[] = {
      {{"/dn:0"}, "Detail information of device 0 (Full)", report},
      {{"/dn:0", "-detail"}, "Detail information of device 0 (Full)", report},
      {{"/dn:0", "-detail", "x"}, Insufficient, ""},
      {{"/dn:0", "x-fwo:f", "1"}, "Start Firmware Download!", bind + "getFirmwares dispose"},
      {{"/dn:0", "-fw"}, "Query firmware information Start!", bind + "getFirmwares getDescription getVersion getDevice getDescription dispose"},
      {{"/dn:0", "-fw", "x", "y"},
       "Query firmware information Start!",
       bind + "getFirmwares getDescription getVersion getDevice getDescription dispose"},
      {{"/dn:0", "-fwx"}, Insufficient, bind + "dispose"},
      {{"/dn:000", "-fw-cd:N"}, "Change device description start!", bind + "Create getDescription setDescription dispose dispose"},
      {{"/dn:0", "-cali:ai.auto-fwo:f", "1"}, "Start Firmware Download!", bind + "getFirmwares dispose"},
      {{"/dn:0", "-fwx-cali:ai.auto"}, "", bind + "dispose"},
      {{"/dn:0", "-fwx-cali:ao.reverse"}, "", bind + "dispose"},
      {{"/dn:000", "-cali:ai.auto-cd:N"}, "Failed to change Description of device 0!", "Create getDeviceNumber"},
      {{"/dn:0", "-cali:ai.auto-ci:1"}, "You should input a digit after ci:", ""},
      {{"/dn:0", "-ci:3-cd:"}, "Failed to change Description of device 0!", "Create getDeviceNumber"},
      {{"/dn:0", "-ci:3"}, "Change device BoardID start!", "Create getDescription setBoardId getDeviceNumber setDescription dispose"},
      {{"/dn:0", "-cali:ao.auto-cali:ai.auto"}, "Solution 0 description:d", bindCalibration + solution + " updateAsCurrent getName dispose"},
      {{"/dn:0", "-cali:ao.auto"},
       "This device can not support the function! ErrorLevel = 3",
       bindCalibration + "getName " + solution + " updateAsCurrent dispose"},
      {{"/dn:0", "-cali:ai.reverse"},
       "Revise AI module adjusting code of device 0(Full) complete!.",
       bindCalibration + "getName loadGoldenBackup loadGoldenBackup updateAsCurrent getName dispose"},
      {{"/dn:0", "-cali:ao.reverse"},
       "Revise AO module adjusting code of device 0(Full) complete!.",
       bindCalibration + "getName getName loadGoldenBackup loadGoldenBackup updateAsCurrent dispose"},
      {{"/dn:9", "-fusion"},
       "Both fused devices:Left Right",
       "Create getDeviceNumber CvxIsFusionDevice getDescription dispose CvxFusionDeviceGetChildren Create "
       "getDescription Create getDescription"},
      {{"/dn:9", "-fusion", "Bare"},
       "Specified devices can not be merged!(ErroeLevel = 3)",
       "Create getDescription dispose Create getDeviceNumber CvxFusionDeviceCheckChildren"},
      {{"/dn:9", "-defusion"},
       "Dissociate the speciated fusion device Both successfully.",
       "Create getDescription getDeviceNumber dispose CvxIsFusionDevice CvxFusionDeviceGetChildren "
       "CvxFusionDeviceRemoveChildren"},
      {{"/dn:9", "-defusion", "x"}, Insufficient, ""},
      {{"/dn:0", "-Fusion"}, Insufficient, ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    std::remove(state.c_str());
    const Outcome outcome = runWith({.arguments = row.arguments, .input = "y\n"});
    EXPECT_TRUE(outcome.output.starts_with(row.firstLine)) << outcome.output;
    EXPECT_EQ(operationsOf(outcome), row.calls);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.trace.at(0), "DaqCtrlBase_Create(0x00400000) = DaqCtrlBase#1");
  }
}

TEST_F(DispatchTest, Preparations) {
  useRig(Rig);
  struct Case {
    std::vector<std::string> arguments;
    std::string faults;
    std::string output;
    std::string unreleased;  ///< devices, then controls; DaqCtrlBase#1 is main's own
    std::string lastCall;
  };
  const Case cases[] = {
      {{"/dn:9", "-fw"}, "", "N/A,Both is a SW device.\n", ", DaqCtrlBase#1", "DeviceCtrl_dispose"},
      {{"/dn:0", "-fw"}, "CvxIsFusionDevice=0; DeviceCtrl_Create=null", "", ", DaqCtrlBase#1", "DeviceCtrl_Create"},
      {{"/dn:9", "-fwx"}, "CvxIsFusionDevice=0xA000000D", Insufficient, ", DaqCtrlBase#1", "DaqCtrlBase_dispose"},
      {{"/dn:0", "-fw"}, "DaqCtrlBase_Create#2=null", "", ", DaqCtrlBase#1", "DaqCtrlBase_Create"},
      {{"/dn:0", "-fw"},
       "DaqCtrlBase_setSelectedDevice=0xC0000000",
       "Cannot find specified Quellis device 0! (Errorlevel = 3),ErrorCode = 0xc0000000.\n",
       "DeviceCtrl#1, DaqCtrlBase#1 DaqCtrlBase#2",
       "DeviceCtrl_getDeviceNumber"},
      {{"/dn:7", "-fwx"}, "", "", ", DaqCtrlBase#1 DaqCtrlBase#2", "DeviceCtrl_Create(7, \"\", 1) = null"},
      {{"/dn:0", "-fwx"}, "DaqCtrlBase_setSelectedDevice=0xBFFFFFFF", Insufficient, ", DaqCtrlBase#1", "DaqCtrlBase_di"},
      {{"/dn:7", "-cali:ai.auto"}, "", "", ", DaqCtrlBase#1", "DeviceCtrl_Create(7, \"\", 1) = null"},
      {{"/dn:9", "-cali:ai.auto"}, "", "Failed to execute,Both is a SW device.(ErrorLevel = 3)\n", ", DaqCtrlBase#1", "CvxIsFusionDevice(9)"},
      {{"/dn:9", "-cali:ai.auto"}, "CvxIsFusionDevice=0xA000000D", "", ", DaqCtrlBase#1", "DaqCtrlBase_dispose"},
      {{"/dn:0", "-cali:ao.reverse"}, "DaqCtrlBase_Create#2=null", "", ", DaqCtrlBase#1", "DaqCtrlBase_Create"},
      {{"/dn:0", "-cali:ai.reverse"},
       "DaqCtrlBase_setSelectedDevice=0xC0000000",
       "Select device error!\n",
       ", DaqCtrlBase#1 DaqCtrlBase#2",
       "DaqCtrlBase_setSelectedDevice"},
      {{"/dn:0", "-cali:ai.reverse"}, "DaqCtrlBase_setSelectedDevice=0xBFFFFFFF", "", ", DaqCtrlBase#1", "DaqCtrlBase_dispose(DaqCtrlBase#2)"},
      {{"/dn:8", "-fusion", "Left"},
       "",
       "Can not create a device without description!(ErrorLevel = 3)\n",
       ", DaqCtrlBase#1",
       "DeviceCtrl_Create(8, null, 1) = null"},
      {{"/dn:8", "-defusion"}, "", "get device failed,deviceCtrl is null!", ", DaqCtrlBase#1", "DeviceCtrl_Create(8, \"\", 0) = null"},
      {{"/dn:0", "-defusion"}, "", "Full is not a fusion device.\n", ", DaqCtrlBase#1", "CvxIsFusionDevice(0)"},
      {{"/dn:9", "-defusion"},
       "CvxIsFusionDevice=0xA000000D; DeviceCtrl_getDescription=0xC0000000",
       " is not a fusion device.\n",
       ", DaqCtrlBase#1",
       "CvxIsFusionDevice(9)"},
      {{"/dn:9", "-defusion"}, "CvxFusionDeviceGetChildren=0xA000000D", "", ", DaqCtrlBase#1", "CvxFusionDeviceGetChildren(9, 256"},
      {{"/dn:9", "-defusion"}, "CvxFusionDeviceRemoveChildren=1", "", ", DaqCtrlBase#1", "CvxFusionDeviceRemoveChildren(9, 2, [2, 3])"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.arguments) + test.faults);
    Outcome outcome = runWith({.arguments = test.arguments, .faults = test.faults});
    EXPECT_EQ(outcome.output, test.output);
    EXPECT_EQ(outcome.unreleased("DeviceCtrl") + ", " + outcome.unreleased("DaqCtrlBase"), test.unreleased);
    if (!test.faults.empty()) {
      EXPECT_EQ(outcome.trace.back(), "# faults never reached: 0");
      outcome.trace.pop_back();
    }
    EXPECT_TRUE(outcome.trace.back().starts_with(test.lastCall)) << outcome.calls();
  }
}

TEST_F(DispatchTest, BindingFillsTheRecordOfADeviceChosenByDescription) {
  useRig(Rig);
  EXPECT_EQ(run({"/dd:Full", "-fw"}).output.substr(77),
            "Query firmware information Start!\nFirmware information in device:0(Full)\nChip:0\nDescription:Chip\n"
            "version:1.00\n");
  EXPECT_NE(runWith({.arguments = {"/dd:Full", "-fw"}, .faults = "DaqCtrlBase_getSelectedDevice=0xC0000000"})
                .output.find("Firmware information in device:-1(Full)\n"),
            std::string::npos);
  EXPECT_EQ(run({"/dd:Both", "-defusion"}).calls({"CvxIsFusion"}), "CvxIsFusionDevice(9) = 0x00000000\n");
}

TEST_F(DispatchTest, DetailReport) {
  useRig(R"({"devices": [{"number": 4, "description": "A description of more than fifty characters, to be cut off",
    "product_id": "0x2AB", "board_id": 12, "driver_version": "1234567890", "board_version": "123456789",
    "location": "Slot", "base_addresses": ["0xfFFFffffFFFFffff", 0], "interrupts": []}]})");
  EXPECT_EQ(run({"/dn:4"}).output,
            "Detail information of device 4 (N/A)\nDevice Number: 4\nDescription: N/A\nProductID:0x2AB\nBoard ID: "
            "12\nDriver version: N/A\n"
            "DLL version: 1.0-sim\nBoard version: 123456789\nLocation: Slot\nBase address: 0xffffffffffffffff\n"
            "Base address: 0x0\n");
  const Outcome faulty = runWith({.arguments = {"/dn:4"},
                                  .faults = "DeviceCtrl_getDllVersion=1; DeviceCtrl_getBoardVersion=0xA000000D;"
                                            "DeviceCtrl_getLocation=0xC0000000; DeviceCtrl_getBaseAddresses=null;"
                                            "DeviceCtrl_getInterrupts=null"});
  EXPECT_EQ(faulty.output.substr(faulty.output.find("DLL")),
            "DLL version: N/A\nBoard version: N/A\nLocation: N/A\nBase address: N/A\nInterrupt: N/A\n");
  EXPECT_EQ(faulty.unreleased("DeviceCtrl"), "DeviceCtrl#1");
  EXPECT_NE(faulty.calls().find("DeviceCtrl_getDllVersion(DeviceCtrl#1, 10,"), std::string::npos);
  EXPECT_NE(faulty.calls().find("DeviceCtrl_getDescription(DeviceCtrl#1, 50,"), std::string::npos);
}

}  // namespace
