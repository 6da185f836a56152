// Which operation an option runs, what is prepared for it, and what is released.
#include "harness.h"

namespace {

using DispatchTest = ToolTest;

// Numbers: 0 has everything, 1 nothing, 9 is a fusion device of 2 and 3.
const char Rig[] = R"({"devices": [
  {"number": 0, "description": "Full", "product_id": 1,
   "firmware": [{"description": "Chip", "version": "0x0100"}],
   "calibration": [{"name": "AI.Auto", "description": "d", "instruction": "i", "sections": [
                     {"description": "s", "instruction": "i", "items": [
                       {"name": "I", "in_use": 1, "backup": 2, "walk": [3]}]}]},
                   {"name": "AO.Auto", "description": "d", "instruction": "i", "sections": []}]},
  {"number": 1, "description": "Bare", "product_id": 2},
  {"number": 2, "description": "Left", "product_id": 3}, {"number": 3, "description": "Right", "product_id": 3},
  {"number": 9, "description": "Both", "children": [2, 3]}]})";

// The operations in the order of their calls, main's own left out.
std::string operationsOf(const Outcome& outcome) {
  std::string operations;
  for (size_t i = 1; i < outcome.trace.size(); ++i) {
    const std::string name = outcome.trace[i].substr(0, outcome.trace[i].find('('));
    operations += name.substr(name.find('_') + 1) + " ";
  }
  return operations;
}

TEST_F(DispatchTest, EveryRow) {
  useRig(Rig);
  const std::string bind = "CvxIsFusionDevice Create setSelectedDevice getSelectedDevice ";
  const std::string load = bind + "getFirmwares getLength getItem getVersion getItem loadFile dispose ";
  const std::string firmware =
      bind + "getFirmwares getLength getItem getDescription getItem getVersion getDevice getDescription dispose ";
  const std::string calibrate = "Create getDescription getDeviceNumber dispose " + bind + "getSolutions getLength ";
  const std::string skip = "getItem getName ";
  const std::string solution = "getItem getDescription getItem getInstruction getItem getSections getLength ";
  const std::string section =
      "getItem getDescription getItem getInstruction getItem start sleep getItem getItems getLength getItem getName "
      "getItem getState sleep ";
  const std::string use = "getItem updateAsCurrent ";
  const std::string restore = "getItem loadGoldenBackup getItem loadGoldenBackup " + use;
  const std::string report =
      "Create getDescription getDeviceNumber getDeviceNumber getProductId getBoardId getDriverVersion getDllVersion "
      "getBoardVersion getLocation getBaseAddresses getInterrupts ";
  const std::string open = "Create getDescription getDeviceNumber dispose ";
  const std::pair<std::string, std::string> rows[] = {
      {"/dn:0", report},
      {"/dn:0 -detail", report},
      {"/dn:0 -detail x", ""},
      {"/dn:0 x-fwo:f 0", load},
      {"/dn:0 -fw", firmware},
      {"/dn:0 -fw x y", firmware},
      {"/dn:000 -fw-cd:N", bind + "Create getDescription setDescription dispose dispose "},
      {"/dn:0 -cali:ai.auto-fwo:f 0", load},
      {"/dn:0 -fwx-cali:ao.reverse", bind + "dispose "},
      {"/dn:000 -cali:ai.auto-cd:+", "Create getDeviceNumber "},
      {"/dn:0 -cali:ai.auto-ci:x", ""},
      {"/dn:0 -ci:3-cd:", "Create getDeviceNumber "},
      {"/dn:0 -ci:3", "Create getDescription setBoardId getDeviceNumber setDescription dispose "},
      {"/dn:0 -cali:ao.auto-cali:ai.auto", calibrate + skip + solution + section + use + skip + "dispose "},
      {"/dn:0 -cali:ao.auto", calibrate + skip + skip + solution + use + "dispose "},
      {"/dn:0 -cali:ai.reverse", calibrate + skip + restore + skip + "dispose "},
      {"/dn:0 -cali:ao.reverse", calibrate + skip + skip + restore + "dispose "},
      {"/dn:9 -fusion",
       "Create getDeviceNumber CvxIsFusionDevice getDescription dispose CvxFusionDeviceGetChildren Create "
       "getDescription Create getDescription "},
      {"/dn:9 -fusion Bare", "Create getDescription dispose Create getDeviceNumber CvxFusionDeviceCheckChildren "},
      {"/dn:9 -defusion", open + "CvxIsFusionDevice CvxFusionDeviceGetChildren CvxFusionDeviceRemoveChildren "},
      {"/dn:9 -defusion x", ""},
      {"/dn:0 -Fusion", ""}};
  for (const auto& [line, calls] : rows) {
    std::remove(state.c_str());
    const Outcome outcome = runLine(line);
    EXPECT_EQ(operationsOf(outcome), calls) << line;
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.trace.at(0), "DaqCtrlBase_Create(0x00400000) = DaqCtrlBase#1");
  }
}

TEST_F(DispatchTest, Preparations) {
  useRig(Rig);
  const std::string notFound = "Cannot find specified Quellis device 0! (Errorlevel = 3),ErrorCode = 0xc0000000.\n";
  const std::string noDescription = "Can not create a device without description!(ErrorLevel = 3)\n";
  const std::string software = "Failed to execute,Both is a SW device.(ErrorLevel = 3)\n";
  const std::string control = "DaqCtrlBase#2";
  check({
      {"/dn:9 -fw", "N/A,Both is a SW device.\n", "DeviceCtrl_getDescription"},
      {"CvxIsFusionDevice=0 DeviceCtrl_Create=null /dn:0 -fw", "", "DeviceCtrl_Create"},
      {"CvxIsFusionDevice=0xA000000D /dn:9 -fwx", Insufficient},
      {"DaqCtrlBase_Create#2=null /dn:0 -fw", "", "DaqCtrlBase_Create"},
      {"DaqCtrlBase_setSelectedDevice=0xC0000000 /dn:0 -fw", notFound, "DeviceCtrl_get", control + " DeviceCtrl#1"},
      {"/dn:7 -fwx", "", "DeviceCtrl_Create(7, \"\", 1) = null", control},
      {"DaqCtrlBase_setSelectedDevice=0xBFFFFFFF /dn:0 -fwx", Insufficient},
      {"/dn:0 -fwx-cali:ai.auto", ""},
      {"/dn:7 -cali:ai.auto", "", "DeviceCtrl_Create(7, \"\", 1) = null"},
      {"/dn:9 -cali:ai.auto", software, "CvxIsFusionDevice(9)"},
      {"CvxIsFusionDevice=0xA000000D /dn:9 -cali:ai.auto", ""},
      {"DaqCtrlBase_Create#2=null /dn:0 -cali:ao.reverse", "", "DaqCtrlBase_Create"},
      {"DaqCtrlBase_setSelectedDevice=0xC0000000 /dn:0 -cali:ai.reverse", "Select device error!\n", "", control},
      {"DaqCtrlBase_setSelectedDevice=0xBFFFFFFF /dn:0 -cali:ai.reverse", ""},
      {"/dn:8 -fusion Left", noDescription, "DeviceCtrl_Create(8, null, 1) = null"},
      {"/dn:8 -defusion", "get device failed,deviceCtrl is null!", "DeviceCtrl_Create(8, \"\", 0) = null"},
      {"/dn:0 -defusion", "Full is not a fusion device.\n", "CvxIsFusionDevice(0)"},
      {"CvxIsFusionDevice=0xA000000D DeviceCtrl_getDescription=0xC0000000 /dn:9 -defusion",
       " is not a fusion device.\n"},
      {"CvxFusionDeviceGetChildren=0xA000000D /dn:9 -defusion", "", "CvxFusionDeviceGetChildren(9, 256"},
      {"CvxFusionDeviceRemoveChildren=1 /dn:9 -defusion", "", "CvxFusionDeviceRemoveChildren(9, 2, [2, 3])"},
  });
}

TEST_F(DispatchTest, RecordsNameTheDeviceAndAreFilledByBinding) {
  useRig(Rig);
  const auto bound = [&](const char* line) { return runLine(line).calls({"DaqCtrlBase_setSelected"}); };
  EXPECT_EQ(bound("/dn:0 -fw"), "DaqCtrlBase_setSelectedDevice(DaqCtrlBase#2, {0, 1, 0, \"\"}) = 0x00000000\n");
  EXPECT_EQ(bound("/dd:Full -fw"), "DaqCtrlBase_setSelectedDevice(DaqCtrlBase#2, {-1, 1, 0, \"Full\"}) = 0x00000000\n");
  EXPECT_EQ(run({"/dd:Full", "-fw"}).output.substr(77),
            "Query firmware information Start!\nFirmware information in device:0(Full)\nChip:0\nDescription:Chip\n"
            "version:1.00\n");
  EXPECT_NE(runLine("DaqCtrlBase_getSelectedDevice=0xC0000000 /dd:Full -fw").output.find(" in device:-1(Full)\n"),
            std::string::npos);
  EXPECT_EQ(run({"/dd:Both", "-defusion"}).calls({"CvxIsFusion"}), "CvxIsFusionDevice(9) = 0x00000000\n");
}

TEST_F(DispatchTest, DetailReport) {
  useRig(R"({"devices": [{"number": 4, "description": "A description of more than fifty characters, to be cut off",
    "product_id": "0x2AB", "board_id": 12, "driver_version": "1234567890", "board_version": "123456789",
    "location": "Slot", "base_addresses": ["0xfFFFffffFFFFffff", 0], "interrupts": [3]}]})");
  const std::string head =
      "Detail information of device 4 (N/A)\nDevice Number: 4\nDescription: N/A\nProductID:0x2AB\nBoard ID: 12\n"
      "Driver version: N/A\n";
  check({{"/dn:4",
          head + "DLL version: 1.0-sim\nBoard version: 123456789\nLocation: Slot\nBase address: 0xffffffffffffffff\n"
                 "Base address: 0x0\nInterrupt: 3\n",
          "Array_getLength(Array#2) = 1", "DeviceCtrl#1"},
         {"DeviceCtrl_getDllVersion=1 DeviceCtrl_getBoardVersion=0xA000000D DeviceCtrl_getLocation=0xC0000000 "
          "DeviceCtrl_getBaseAddresses=null Array_getLength=9 /dn:4",
          head + "DLL version: N/A\nBoard version: N/A\nLocation: N/A\nBase address: N/A\nInterrupt: 3\n",
          "Array_getItem(Array#1, 1) = null", "DeviceCtrl#1"},
         {"DeviceCtrl_getInterrupts=null Array_getLength=-1 /dn:4",
          head + "DLL version: 1.0-sim\nBoard version: 123456789\nLocation: Slot\nInterrupt: N/A\n", "",
          "DeviceCtrl#1"}});
  const std::string calls = run({"/dn:4"}).calls();
  EXPECT_NE(calls.find("DeviceCtrl_getDllVersion(DeviceCtrl#1, 10,"), std::string::npos);
  EXPECT_NE(calls.find("DeviceCtrl_getDescription(DeviceCtrl#1, 50,"), std::string::npos);
}

}  // namespace
