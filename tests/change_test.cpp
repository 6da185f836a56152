// "-cd:" and "-ci:".
#include "harness.h"

namespace {

using ChangeTest = ToolTest;

const std::string Set = "DeviceCtrl_setDescription(DeviceCtrl#1, ";

TEST_F(ChangeTest, Description) {
  const std::string start = "Change device description start!\n";
  const std::string changed = start + "Device description has changed from ABC-12 to ";
  const std::string refused = "Failed to change Description of device 0! (Errorlevel = 3)\n";
  const std::string failed = start + "setDescription error!\n";
  const std::string open = "DeviceCtrl#1";
  useRig(R"({"devices": [{"number": 0, "description": "ABC-12"}, {"number": 1, "description": "Other"}]})");
  check({
      {"/dn:0 -cd:XY*", changed + "XYC-12\n", Set + "7, \"XYC-12\") = 0x00000000"},
      {"/dn:0 -cd:?Z:?", changed + "AZ:-\n", Set + "5, \"AZ:-\")"},
      {"/dn:0 -cd:", failed, Set + "1, \"\")", open},
      {"/dn:0 -cd:Other", failed, Set + "6", open},
      {"DeviceCtrl_setDescription=0xA000000D /dn:0 -cd:N", failed, Set + "2, \"N\") = 0xa000000d", open},
      {"DeviceCtrl_getDescription=0xC0000000 /dn:0 -cd:?N", start + "Device description has changed from  to N\n"},
      {"DeviceCtrl_Create=null /dn:0 -cd:N", "Failed to change Board ID of device 0! (Errorlevel = 3).\n"},
  });
  for (const std::string text : {"My-Card", "a+", "@", "/"})
    check({{"/dn:0 -cd:" + text, refused, "DeviceCtrl_getDeviceNumber", open}});
  EXPECT_EQ(runWith({.arguments = {"/dn:0", "1234567-cd:N"}, .expectsErrors = true}).signal, SIGABRT);
}

TEST_F(ChangeTest, BoardId) {
  const std::string start = "Change device BoardID start!\n";
  const std::string success = start + "Change the Board ID of device 0(ABC12#3) success.\n";
  const std::string failed = start + "Failed to change Board ID of device 0! (Errorlevel = 3).\n";
  const std::string noDigit = "You should input a digit after ci:\n";
  const std::string notUpdated = success + "update device description error!\n";
  useRig(R"({"devices": [{"number": 0, "description": "ABC 12#3", "highest_board_id": 2147483647}]})");
  check({
      {"/dn:0 -ci:99999999999", success, Set + "17, \"ABC12#2147483647\") = 0x00000000"},
      {"/dn:0 -ci:", success, Set + "8, \"ABC12#0\")"},
      {"/dn:0 -ci:1a", noDigit, "DaqCtrlBase_Create"},
      {"/dn:0 -ci:-1", noDigit, "DaqCtrlBase_Create"},
      {"DeviceCtrl_Create=null /dn:0 -ci:5", "", "DeviceCtrl_Create"},
      {"DeviceCtrl_setBoardId=0xC0000000 /dn:0 -ci:5", failed, "DeviceCtrl_getDeviceNumber", "DeviceCtrl#1"},
      {"DeviceCtrl_setBoardId=0xBFFFFFFF /dn:0 -ci:5", success, Set},
      {"DeviceCtrl_setDescription=0xA000000D /dn:0 -ci:5", notUpdated, Set + "8, \"ABC12#5\")", "DeviceCtrl#1"},
      {"DeviceCtrl_getDescription=0xC0000000 /dn:0 -ci:9", start + "Change the Board ID of device 0() success.\n"},
  });
  run({"/dn:0", "-ci:2147483647"});
  EXPECT_NE(run({"/dn:0"}).output.find("Board ID: 2147483647\n"), std::string::npos);
}

TEST_F(ChangeTest, RebuiltDescriptionIsBoundedBy128Characters) {
  useRig(R"({"devices": [{"number": 0, "description": ")" + std::string(200, 'd') + R"("}]})");
  const Outcome outcome = run({"/dn:0", "-ci:12"});
  EXPECT_TRUE(outcome.lastCall().starts_with(Set + "128, \"" + std::string(127, 'd') + "\")")) << outcome.calls();
}

TEST_F(ChangeTest, DescriptionsAreConvertedInTheEnvironmentsLocale) {
  useRig(R"({"devices": [{"number": 0, "description": "Mühle 1"}]})");
  const auto call = [&](const char* option, const char* locale) {
    return runWith({.arguments = {"/dn:0", option}, .locale = locale}).lastCall();
  };
  EXPECT_EQ(call("-cd:*ß", "C.UTF-8"), Set + "9, \"M\\x{fc}hle 1\\x{df}\") = 0x00000000");
  // Positions count bytes: the "?" takes half of a character, which ends the string.
  EXPECT_EQ(call("-cd:M?X", "C.UTF-8"), Set + "2, \"M\") = 0x00000000");
  EXPECT_EQ(run({"/dn:0"}).output.substr(0, 35), "Detail information of device 0 (M)\n");
  EXPECT_EQ(call("-cd:*2", "C"), Set + "3, \"M2\") = 0x00000000");
}

}  // namespace
