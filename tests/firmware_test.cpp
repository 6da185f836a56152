// "-fw" and "-fwo:".
#include "harness.h"

namespace {

class FirmwareTest : public ToolTest {
 protected:
  FirmwareTest() {
    useRig(R"({"devices": [{"number": 4, "description": "Dev", "product_id": "0x1216", "firmware": [
      {"description": "A", "version": "0x0110", "notice": "Wait.", "progress": [0, 5, 0, -7, 99, 100]},
      {"description": "B", "version": "0x0110", "notice": "Lock.", "password": "key", "progress": [-101, 250]}]}]})");
    newer = firmware("newer", "0x1216", "0x0111");
  }

  std::string newer;
};

const std::string Start = "Start Firmware Download!\n";
const std::string Finish = "\nFirmware Download OK. Please follow the previous Notice to do the operation.\n";
const std::string Failed = "Load firmware failed!ErrorLevel = 3\n";
const std::string Busy = Start + "Error: The device is busy now, it can not be opened!\n" + Failed;

std::string overwrite(int chip, const std::string& notice) {
  return "Overwrite the firmware of device:4\n(Dev),chip:" + std::to_string(chip) + "\nNotice:\n" + notice + "\n";
}

TEST_F(FirmwareTest, Report) {
  const std::string start = "Query firmware information Start!\n";
  const std::string first = start + "Firmware information in device:4(Dev)\nChip:0\nDescription:A\nversion:1.10\n";
  const std::string second = "Chip:1\nDescription:B\nversion:1.10\n";
  check({
      {"/dn:4 -fw", first + "Firmware information in device:4(Dev)\n" + second},
      {"FirmwareCtrls_getFirmwares=null /dn:4 -fw", start},
      {"Array_getLength=-2 /dn:4 -fw", start, "Array_getLength"},
      {"DaqCtrlBase_getDevice=null /dn:4 -fw", start, "DaqCtrlBase_getDevice"},
      {"DeviceCtrl_getDescription#1=0xC0000000 /dn:4 -fw", start, "DeviceCtrl_getDescription"},
      {"DeviceCtrl_getDescription#2=0xBFFFFFFF /dn:4 -fw", first + "Firmware information in device:4()\n" + second,
       "DeviceCtrl_getDescription(DeviceCtrl#1, 100"},
  });
}

TEST_F(FirmwareTest, OverwriteFollowsProgressToTheEnd) {
  const Outcome outcome = run({"/dn:4", "-fwo:" + newer});
  EXPECT_EQ(outcome.output,
            Start + overwrite(0, "Wait.") + "Progressing:    \b\b\b\b  5%\b\b\b\b 99%\b\b\b\b100%" + Finish);
  std::string progress = "FirmwareItem_getProgress(FirmwareItem#1) = 0\n";
  for (const char* value : {"5", "0", "-7", "99", "100"})
    progress += std::string("sleep(500)\nFirmwareItem_getProgress(FirmwareItem#1) = ") + value + "\n";
  EXPECT_EQ(outcome.calls({"FirmwareItem", "sleep"}),
            "FirmwareItem_getVersion(FirmwareItem#1) = \"1.10\"\nFirmwareItem_loadFile(FirmwareItem#1, \"" + newer +
                "\") = 0x00000000\nFirmwareItem_getNotice(FirmwareItem#1) = \"Wait.\"\n"
                "FirmwareItem_confirmNotice(FirmwareItem#1) = 0x00000000\n"
                "FirmwareItem_start(FirmwareItem#1, 2, \"\") = 0x00000000\n" +
                progress);
  EXPECT_NE(run({"/dn:4", "-fw"}).output.find("Description:A\nversion:1.11\n"), std::string::npos);
  EXPECT_EQ(run({"/dn:4", "-fwo:" + newer, "001", "key"}).output,
            Start + overwrite(1, "Lock.") + "Progressing:    \b\b\b\b250%" + Finish);
}

TEST_F(FirmwareTest, Failures) {
  const std::string line = " /dn:4 -fwo:" + newer, progress = "FirmwareItem_getProgress", start = "FirmwareItem_start";
  const std::string older = " /dn:4 -fwo:" + firmware("older", "0x1216", "0x0110");
  const std::string load = "FirmwareItem_loadFile", shown = Start + overwrite(0, "Wait.");
  const std::string warned = Start + "Warning: The loaded firmware is not newer than the existing one!\n" + Failed;
  const std::string unknown = Start + "Error: Unknown Error is occured!\n" + Failed;
  const std::string invalid =
      shown + "Firmware has not be loaded or the firmware is invalid! Can't run firmware download! ErrorLevel = 3\n";
  const std::string aborted = shown + "Operation abort or disturbed! ErrorLevel = 100\n";
  const std::string noDigit = Start + "You should input a digit to represent a firmware item:\n";
  const std::string noChip = Start + "Please input correct firmware file no!\n";
  check({
      {line + " 1a", noDigit},
      {line + " 2", noChip},
      {line + " 99999999999999999999", noChip},
      {"FirmwareCtrls_getFirmwares=null" + line, Start},
      {"FirmwareItem_start=0xC0000000" + older, warned + overwrite(0, "Wait."), start},
      {"FirmwareItem_loadFile=0xC0000000" + line, unknown, load},
      {"FirmwareItem_loadFile=0xBFFFFFFF FirmwareItem_start=0xE0000019" + line, unknown + overwrite(0, "Wait."), start},
      {"FirmwareItem_loadFile=0xE0000019" + line, Busy, load},
      {"/dn:4 -fwo:/nowhere", Start + "Error: The specified file can not open!\n" + Failed, load},
      {"/dn:4 -fwo:" + path("rig.json"), Start + "Error: This Firmware is not for the Device!\n" + Failed, load},
      {line + " 1 wrong", Start + overwrite(1, "Lock."), start},
      {"FirmwareItem_getProgress=-1002" + line, shown + "Device is busy! Can't run firmware download!\n", progress},
      {"FirmwareItem_getProgress=-1001" + line, invalid, progress},
      {"FirmwareItem_getProgress=-1" + line, aborted, progress},
      {"FirmwareItem_getProgress=-5" + line, shown, progress},
      {"FirmwareItem_start=0xBFFFFFFF FirmwareItem_getProgress=50" + line, shown, progress},
  });
  EXPECT_NE(run({"/dn:4", "-fw"}).output.find("Description:A\nversion:1.10\n"), std::string::npos);
}

TEST_F(FirmwareTest, OverwriteHoldsTheDeviceUntilItsProcessIsKilled) {
  const auto [blocked, renamed] =
      runBeside({"/dn:4", "-fwo:" + newer}, "FirmwareItem_start=0xC0000000 /dn:4 -fwo:" + newer, "\") = 0xe0000019",
                "/dn:4 -cd:New");
  EXPECT_EQ(blocked.output, Busy);
  EXPECT_EQ(renamed.output, "Change device description start!\nsetDescription error!\n");
  EXPECT_NE(run({"/dn:4", "-fw"}).output.find("Description:A\nversion:1.10\n"), std::string::npos);
  EXPECT_TRUE(run({"/dn:4", "-fwo:" + newer}).output.ends_with(Finish));
}

}  // namespace
