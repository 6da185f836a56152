// "-fw" and "-fwo:".
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

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

const char Start[] = "Start Firmware Download!\n";
const char Finish[] = "\nFirmware Download OK. Please follow the previous Notice to do the operation.\n";
const char NoDigit[] = "You should input a digit to represent a firmware item:\n";
const char NoChip[] = "Please input correct firmware file no!\n";
const char Failed[] = "Load firmware failed!ErrorLevel = 3\n";

std::string overwrite(int chip, const std::string& notice) {
  return "Overwrite the firmware of device:4\n(Dev),chip:" + std::to_string(chip) + "\nNotice:\n" + notice + "\n";
}

TEST_F(FirmwareTest, Report) {
  const std::string first = "Firmware information in device:4(Dev)\nChip:0\nDescription:A\nversion:1.10\n";
  const std::string second = "Firmware information in device:4(Dev)\nChip:1\nDescription:B\nversion:1.10\n";
  struct Case {
    std::string faults, lines;
    int questions;  ///< asked of chips and devices
  };
  const Case cases[] = {
      {"", first + second, 6},
      {"FirmwareCtrls_getFirmwares=null", "", 0},
      {"Array_getLength=0", "", 0},
      {"Array_getLength=-2", "", 0},
      {"DaqCtrlBase_getDevice=null", "", 2},
      {"DeviceCtrl_getDescription#1=0xC0000000", "", 3},
      {"DeviceCtrl_getDescription#2=0xBFFFFFFF", first + "Firmware information in device:4()\nChip:1\nDescription:B\nversion:1.10\n", 6}};
  for (const auto& [faults, lines, questions] : cases) {
    const Outcome outcome = runWith({.arguments = {"/dn:4", "-fw"}, .faults = faults});
    EXPECT_EQ(outcome.output, "Query firmware information Start!\n" + lines) << faults;
    const std::string asked = outcome.calls({"FirmwareItem", "DeviceCtrl"});
    EXPECT_EQ(std::count(asked.begin(), asked.end(), '\n'), questions) << asked;
    EXPECT_EQ(outcome.unreleased("DaqCtrlBase") + outcome.unreleased("DeviceCtrl"), "DaqCtrlBase#1");
  }
}

TEST_F(FirmwareTest, OverwriteFollowsProgressToTheEnd) {
  const Outcome outcome = run({"/dn:4", "-fwo:" + newer});
  EXPECT_EQ(outcome.output, Start + overwrite(0, "Wait.") + "Progressing:    \b\b\b\b  5%\b\b\b\b 99%\b\b\b\b100%" + Finish);
  EXPECT_EQ(outcome.calls({"FirmwareItem", "sleep"}),
            "FirmwareItem_getVersion(FirmwareItem#1) = \"1.10\"\n"
            "FirmwareItem_loadFile(FirmwareItem#1, \"" +
                newer +
                "\") = 0x00000000\n"
                "FirmwareItem_getNotice(FirmwareItem#1) = \"Wait.\"\n"
                "FirmwareItem_confirmNotice(FirmwareItem#1) = 0x00000000\n"
                "FirmwareItem_start(FirmwareItem#1, 2, \"\") = 0x00000000\n"
                "FirmwareItem_getProgress(FirmwareItem#1) = 0\n"
                "sleep(500)\nFirmwareItem_getProgress(FirmwareItem#1) = 5\n"
                "sleep(500)\nFirmwareItem_getProgress(FirmwareItem#1) = 0\n"
                "sleep(500)\nFirmwareItem_getProgress(FirmwareItem#1) = -7\n"
                "sleep(500)\nFirmwareItem_getProgress(FirmwareItem#1) = 99\n"
                "sleep(500)\nFirmwareItem_getProgress(FirmwareItem#1) = 100\n");
  EXPECT_NE(run({"/dn:4", "-fw"}).output.find("Description:A\nversion:1.11\n"), std::string::npos);
  EXPECT_EQ(run({"/dn:4", "-fwo:" + newer, "001", "key"}).output, Start + overwrite(1, "Lock.") + "Progressing:    \b\b\b\b250%" + Finish);
}

TEST_F(FirmwareTest, Failures) {
  struct Case {
    std::vector<std::string> arguments;
    std::string faults;
    std::string output;
    std::string lastItemCall;
  };
  const std::string option = "-fwo:" + newer;
  const std::string older = "-fwo:" + firmware("older", "0x1216", "0x0110");
  const std::string shown = Start + overwrite(0, "Wait.");
  const std::string warned = std::string(Start) + "Warning: The loaded firmware is not newer than the existing one!\n" + Failed;
  const std::string unknown = std::string(Start) + "Error: Unknown Error is occured!\n" + Failed;
  const std::string progress = "FirmwareItem_getProgress";
  const Case cases[] = {
      {{option, "1a"}, "", std::string(Start) + NoDigit, ""},
      {{option, "-1"}, "", std::string(Start) + NoDigit, ""},
      {{option, "2"}, "", std::string(Start) + NoChip, ""},
      {{option, "99999999999999999999"}, "", std::string(Start) + NoChip, ""},
      {{option}, "FirmwareCtrls_getFirmwares=null", Start, ""},
      {{option}, "Array_getLength=0", std::string(Start) + NoChip, ""},
      {{older}, "FirmwareItem_start=0xC0000000", warned + overwrite(0, "Wait."), "FirmwareItem_start"},
      {{option}, "FirmwareItem_loadFile=0xC0000000", unknown, "FirmwareItem_loadFile"},
      {{option}, "FirmwareItem_loadFile=0xBFFFFFFF; FirmwareItem_start=0xE0000019", unknown + overwrite(0, "Wait."), "FirmwareItem_start"},
      {{option},
       "FirmwareItem_loadFile=0xE0000019",
       std::string(Start) + "Error: The device is busy now, it can not be opened!\n" + Failed,
       "FirmwareItem_loadFile"},
      {{"-fwo:/nowhere"}, "", std::string(Start) + "Error: The specified file can not open!\n" + Failed, "FirmwareItem_loadFile"},
      {{"-fwo:" + path("rig.json")}, "", std::string(Start) + "Error: This Firmware is not for the Device!\n" + Failed, "FirmwareItem_loadFile"},
      {{option}, "FirmwareItem_confirmNotice=0xC0000000", shown, "FirmwareItem_start"},
      {{option, "1", "wrong"}, "", Start + overwrite(1, "Lock."), "FirmwareItem_start"},
      {{option}, "FirmwareItem_getProgress=-1002", shown + "Device is busy! Can't run firmware download!\n", progress},
      {{option},
       "FirmwareItem_getProgress=-1001",
       shown + "Firmware has not be loaded or the firmware is invalid! Can't run firmware download! ErrorLevel = 3\n",
       progress},
      {{option}, "FirmwareItem_getProgress=-1", shown + "Operation abort or disturbed! ErrorLevel = 100\n", progress},
      {{option}, "FirmwareItem_getProgress=-5", shown, progress},
      {{option}, "FirmwareItem_getProgress=50", shown, progress},
      {{option}, "FirmwareItem_start=0xBFFFFFFF; FirmwareItem_getProgress=1", shown, progress},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.arguments) + test.faults);
    std::vector<std::string> arguments = test.arguments;
    arguments.insert(arguments.begin(), "/dn:4");
    const Outcome outcome = runWith({.arguments = arguments, .faults = test.faults});
    EXPECT_EQ(outcome.output, test.output);
    const std::string calls = "\n" + outcome.calls({"FirmwareItem", "sleep"});
    EXPECT_EQ(calls.substr(calls.rfind('\n', calls.size() - 2) + 1).find(test.lastItemCall), 0U) << calls;
    EXPECT_EQ(outcome.unreleased("DaqCtrlBase"), "DaqCtrlBase#1");
    EXPECT_EQ(outcome.status, 0);
  }
  EXPECT_NE(run({"/dn:4", "-fw"}).output.find("Description:A\nversion:1.10\n"), std::string::npos);
}

TEST_F(FirmwareTest, TooLongTextsAbort) {
  const std::string tooLong(257, '0');
  for (const std::vector<std::string>& extra :
       {std::vector<std::string>{"-fwo:" + tooLong}, {"-fwo:" + newer, tooLong}, {"-fwo:" + newer, "0", tooLong}}) {
    std::vector<std::string> arguments = extra;
    arguments.insert(arguments.begin(), "/dn:4");
    EXPECT_EQ(run(arguments).signal, SIGABRT);
  }
}

TEST_F(FirmwareTest, OverwriteHoldsTheDeviceUntilItsProcessIsKilled) {
  const pid_t process = start({"/dn:4", "-fwo:" + newer});
  Outcome blocked;
  for (int i = 0; i < 500 && blocked.output.find("busy") == std::string::npos; ++i) {
    usleep(10'000);
    blocked = runWith({.arguments = {"/dn:4", "-fwo:" + newer}, .faults = "FirmwareItem_start=0xC0000000"});
  }
  EXPECT_EQ(blocked.output, std::string(Start) + "Error: The device is busy now, it can not be opened!\n" + Failed);
  EXPECT_EQ(run({"/dn:4", "-cd:New"}).output, "Change device description start!\nsetDescription error!\n");
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
  EXPECT_NE(run({"/dn:4", "-fw"}).output.find("Description:A\nversion:1.10\n"), std::string::npos);
  EXPECT_TRUE(run({"/dn:4", "-fwo:" + newer}).output.ends_with(Finish));
}

}  // namespace
