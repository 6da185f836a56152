// "-cd:" and "-ci:".
#include "harness.h"

namespace {

using ChangeTest = ToolTest;

struct Case {
  std::string option;
  std::string output;
  std::string lastCall;  ///< the last library call before the probe's own line
  std::string unreleased = {};
  std::string faults = {};
};

class ChangeCases : public ChangeTest {
 protected:
  void check(const std::string& rig, const std::vector<Case>& cases) {
    useRig(rig);
    for (const Case& test : cases) {
      SCOPED_TRACE(test.option + " " + test.faults);
      std::remove(state.c_str());
      Outcome outcome = runWith({.arguments = {"/dn:0", test.option}, .faults = test.faults});
      EXPECT_EQ(outcome.output, test.output);
      if (!test.faults.empty()) {
        EXPECT_EQ(outcome.trace.back(), "# faults never reached: 0");
        outcome.trace.pop_back();
      }
      EXPECT_TRUE(outcome.trace.back().starts_with(test.lastCall)) << outcome.calls();
      EXPECT_EQ(outcome.unreleased("DeviceCtrl"), test.unreleased);
    }
  }
};

TEST_F(ChangeCases, Description) {
  const std::string start = "Change device description start!\n";
  const std::string changed = start + "Device description has changed from ABC-12 to ";
  const std::string refused = "Failed to change Description of device 0! (Errorlevel = 3)\n";
  check(R"({"devices": [{"number": 0, "description": "ABC-12"}, {"number": 1, "description": "Other"}]})",
        {{"-cd:New", changed + "New\n", "DeviceCtrl_dispose"},
         {"-cd:XY*", changed + "XYC-12\n", "DeviceCtrl_dispose"},
         {"-cd:?Z?", changed + "AZC\n", "DeviceCtrl_dispose"},
         {"-cd:*_n*e?w", changed + "ABC-12_new\n", "DeviceCtrl_dispose"},
         {"-cd:123456789?", changed + "123456789\n", "DeviceCtrl_dispose"},
         {"-cd:a:b", changed + "a:b\n", "DeviceCtrl_dispose"},
         {"-cd:My-Card", refused, "DeviceCtrl_getDeviceNumber", "DeviceCtrl#1"},
         {"-cd:a+", refused, "DeviceCtrl_getDeviceNumber", "DeviceCtrl#1"},
         {"-cd:@", refused, "DeviceCtrl_getDeviceNumber", "DeviceCtrl#1"},
         {"-cd:/", refused, "DeviceCtrl_getDeviceNumber", "DeviceCtrl#1"},
         {"-cd:", start + "setDescription error!\n", "DeviceCtrl_setDescription(DeviceCtrl#1, 1, \"\")", "DeviceCtrl#1"},
         {"-cd:Other", start + "setDescription error!\n", "DeviceCtrl_setDescription(DeviceCtrl#1, 6", "DeviceCtrl#1"},
         {"-cd:N", start + "setDescription error!\n", "DeviceCtrl_setDescription(DeviceCtrl#1, 2, \"N\") = 0xa000000d", "DeviceCtrl#1",
          "DeviceCtrl_setDescription=0xA000000D"},
         {"-cd:?N", start + "Device description has changed from  to N\n", "DeviceCtrl_dispose", "", "DeviceCtrl_getDescription=0xC0000000"},
         {"-cd:N", "Failed to change Board ID of device 0! (Errorlevel = 3).\n", "DeviceCtrl_Create", "", "DeviceCtrl_Create=null"}});
  EXPECT_EQ(runWith({.arguments = {"/dn:0", "1234567-cd:N"}, .expectsErrors = true}).signal, SIGABRT);
}

TEST_F(ChangeCases, BoardId) {
  const std::string start = "Change device BoardID start!\n";
  const std::string success = start + "Change the Board ID of device 0(ABC12#3) success.\n";
  const std::string failed = start + "Failed to change Board ID of device 0! (Errorlevel = 3).\n";
  const std::string set = "DeviceCtrl_setDescription(DeviceCtrl#1, ";
  check(R"({"devices": [{"number": 0, "description": "ABC 12#3", "highest_board_id": 2147483647}]})",
        {{"-ci:5", success, "DeviceCtrl_dispose"},
         {"-ci:", success, "DeviceCtrl_dispose"},
         {"-ci:1a", "You should input a digit after ci:\n", "DaqCtrlBase_Create"},
         {"-ci:-1", "You should input a digit after ci:\n", "DaqCtrlBase_Create"},
         {"-ci:5", start.substr(0, 0), "DeviceCtrl_Create", "", "DeviceCtrl_Create=null"},
         {"-ci:5", failed, "DeviceCtrl_getDeviceNumber", "DeviceCtrl#1", "DeviceCtrl_setBoardId=0xC0000000"},
         {"-ci:5", success, "DeviceCtrl_dispose", "", "DeviceCtrl_setBoardId=0xBFFFFFFF"},
         {"-ci:5", success, "DeviceCtrl_dispose", "", "DeviceCtrl_setBoardId=0xA000000D"},
         {"-ci:5", success + "update device description error!\n", set + "8, \"ABC12#5\")", "DeviceCtrl#1", "DeviceCtrl_setDescription=0xA000000D"},
         {"-ci:9", start + "Change the Board ID of device 0() success.\n", "DeviceCtrl_dispose", "", "DeviceCtrl_getDescription=0xC0000000"}});
  std::remove(state.c_str());
  EXPECT_EQ(run({"/dn:0", "-ci:99999999999"}).calls({"DeviceCtrl_set"}),
            "DeviceCtrl_setBoardId(DeviceCtrl#1, 2147483647) = 0x00000000\n" + set + "17, \"ABC12#2147483647\") = 0x00000000\n");
  EXPECT_NE(run({"/dn:0"}).output.find("Board ID: 2147483647\n"), std::string::npos);
}

TEST_F(ChangeTest, RebuiltDescriptionIsBoundedBy128Characters) {
  useRig(R"({"devices": [{"number": 0, "description": ")" + std::string(200, 'd') + R"("}]})");
  const Outcome outcome = run({"/dn:0", "-ci:12"});
  const std::string cut(127, 'd');
  EXPECT_NE(outcome.calls().find("setDescription(DeviceCtrl#1, 128, \"" + cut + "\")"), std::string::npos) << outcome.calls();
}

TEST_F(ChangeTest, DescriptionsAreConvertedInTheEnvironmentsLocale) {
  useRig(R"({"devices": [{"number": 0, "description": "Mühle 1"}]})");
  const auto calls = [&](const char* option, const char* locale) {
    return runWith({.arguments = {"/dn:0", option}, .locale = locale}).calls({"DeviceCtrl_setDescription"});
  };
  EXPECT_EQ(calls("-cd:*ß", "C.UTF-8"), "DeviceCtrl_setDescription(DeviceCtrl#1, 9, \"M\\x{fc}hle 1\\x{df}\") = 0x00000000\n");
  // Positions count bytes: the "?" takes half of a character, which ends the text.
  EXPECT_EQ(calls("-cd:M?X", "C.UTF-8"), "DeviceCtrl_setDescription(DeviceCtrl#1, 2, \"M\") = 0x00000000\n");
  EXPECT_EQ(run({"/dn:0"}).output.substr(0, 35), "Detail information of device 0 (M)\n");
  EXPECT_EQ(calls("-cd:*2", "C"), "DeviceCtrl_setDescription(DeviceCtrl#1, 3, \"M2\") = 0x00000000\n");
}

TEST_F(ChangeTest, RenamingByPatternReachesEveryMatch) {
  EXPECT_EQ(run({"/dd:QS*", "-cd:Pump?*"}).output,
            "Device description you have entered:QS*\nFind 2 devices on PC by your input.\n"
            "Change device description start!\nDevice description has changed from QS-2004,BID#0 to Pump004,BID#0\n"
            "Change device description start!\nDevice description has changed from QS-2004,BID#1 to Pump004,BID#1\n");
  EXPECT_TRUE(run({}).output.ends_with("5,Pump004,BID#0\n6,Pump004,BID#1\n"));
}

}  // namespace
