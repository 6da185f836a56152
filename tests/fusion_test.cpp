// "-fusion" and "-defusion".
#include "harness.h"

namespace {

class FusionTest : public ToolTest {
 protected:
  FusionTest() {
    useRig(R"({"devices": [
      {"number": 0, "description": "Board A", "product_id": 7}, {"number": 1, "description": "Board B", "product_id": 7},
      {"number": 2, "description": "Board C", "product_id": 7}, {"number": 3, "description": "Odd", "product_id": 8}]})");
  }

  std::string list() { return run({}).output.substr(32); }
};

const char Entered[] = "Device description you have entered:Rig\n";

TEST_F(FusionTest, BuiltShownExtendedAndDissolved) {
  const Outcome built = run({"/dd:Rig", "-fusion", "Board A", "Board B"});
  EXPECT_EQ(built.output, std::string(Entered) + "Create fusion device Rig successfully\nRig fused devices:Board A Board B\n");
  EXPECT_EQ(built.calls({"DeviceCtrl_Create", "Cvx", "DeviceCtrl_set", "DeviceCtrl_dispose"}),
            "DeviceCtrl_Create(-1, \"\\x{676952}\", 0) = null\n"
            "DeviceCtrl_Create(-1, \"Board A\", 1) = DeviceCtrl#1\nDeviceCtrl_Create(-1, \"Board B\", 1) = DeviceCtrl#2\n"
            "CvxFusionDeviceCreate(2, [0, 1], 256) = 0x00000000\n"
            "DeviceCtrl_Create(256, null, 0) = DeviceCtrl#3\n"
            "DeviceCtrl_setDescription(DeviceCtrl#3, 3, \"Rig\") = 0x00000000\nDeviceCtrl_dispose(DeviceCtrl#3)\n");
  EXPECT_TRUE(list().ends_with("4,Rig\n")) << list();
  EXPECT_EQ(run({"/dd:Rig", "-fusion"}).output, std::string(Entered) + "Rig fused devices:Board A Board B\n");

  const Outcome extended = run({"/dn:256", "-fusion", "Board C"});
  EXPECT_EQ(extended.output, "Merge Board C  to fusion device Rig successfully.\nRig fused devices:Board A Board B Board C\n");
  EXPECT_EQ(extended.unreleased("DeviceCtrl"), "DeviceCtrl#2 DeviceCtrl#3 DeviceCtrl#4 DeviceCtrl#5");
  EXPECT_EQ(run({"/dn:256", "-defusion"}).output, "Dissociate the speciated fusion device Rig successfully.\n");
  EXPECT_EQ(list(), "0,Board A\n1,Board B\n2,Board C\n3,Odd\n");
  EXPECT_EQ(run({"/dn:256", "-fusion"}).output, "devCtrl is null.\n");
}

TEST_F(FusionTest, BuildFailures) {
  struct Case {
    std::string faults;
    std::vector<std::string> children;
    std::string output;
    int status;
    std::string lastCall;
  };
  const std::string refused = std::string(Entered) + "Specified devices can not be fused!(ErroeLevel = 3)\n";
  const std::string created = std::string(Entered) + "Create fusion device Rig successfully\nRig fused devices:Board A\n";
  const Case cases[] = {
      {"", {"Odd", "Board A"}, refused, 255, "CvxFusionDeviceCreate(2, [3, 0], 0)"},
      {"", {"Gone", "Board A"}, refused, 255, "CvxFusionDeviceCreate(2, [-1, -1], 0)"},
      {"", {"Board A", "Gone"}, refused, 255, "CvxFusionDeviceCreate(2, [0, -1], 0)"},
      {"", {"Board A", "Board A"}, refused, 255, "CvxFusionDeviceCreate(2, [0, 0], 0)"},
      {"DeviceCtrl_Create#3=null", {"Board A"}, created + "get device failed,devCtrl is NULL.\n", 255, "DeviceCtrl_Create"},
      {"DeviceCtrl_setDescription=0xC0000000", {"Board A"}, created, 0, "DeviceCtrl_dispose"},
      {"CvxFusionDeviceCreate=0xE0000028", {"Board A"}, Entered, 0, "DeviceCtrl_dispose"},
      {"CvxFusionDeviceCreate=0xE0000028; DeviceCtrl_Create#3=null",
       {"Board A"},
       std::string(Entered) + "get device failed,devCtrl is NULL.\n",
       255,
       "DeviceCtrl_Create(0, null, 0) = null"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.faults + testing::PrintToString(test.children));
    std::remove(state.c_str());
    std::vector<std::string> arguments = {"/dd:Rig", "-fusion"};
    arguments.insert(arguments.end(), test.children.begin(), test.children.end());
    Outcome outcome = runWith({.arguments = arguments, .faults = test.faults});
    if (!test.faults.empty()) outcome.trace.pop_back();
    EXPECT_EQ(outcome.output, test.output);
    EXPECT_EQ(outcome.status, test.status);
    EXPECT_TRUE(outcome.trace.back().starts_with(test.lastCall)) << outcome.calls();
  }
}

TEST_F(FusionTest, LookupTakesFourBytesForACharacter) {
  const Outcome outcome = run({"/dd:ABCDEFGH", "-fusion", "Board A"});
  EXPECT_EQ(outcome.calls({"DeviceCtrl_Create(-1, \"\\"}), "DeviceCtrl_Create(-1, \"\\x{44434241}\\x{48474645}\", 0) = null\n");
  EXPECT_EQ(run({"/dd:", "-fusion", "Board B"}).calls({"DeviceCtrl_Create(-1, \"\""}), "DeviceCtrl_Create(-1, \"\", 0) = null\n");
  // One byte makes one character, so a device with a name of one letter is found.
  run({"/dn:256", "-cd:X"});
  const Outcome extended = run({"/dd:X", "-fusion", "Board C"});
  EXPECT_TRUE(extended.output.ends_with("Merge Board C  to fusion device X successfully.\nX fused devices:Board A Board C\n")) << extended.output;
  EXPECT_EQ(extended.trace.back(), "DeviceCtrl_dispose(DeviceCtrl#1)");
}

TEST_F(FusionTest, QueryAndMergeFailures) {
  run({"/dd:Rig", "-fusion", "Board A", "Board B"});
  struct Case {
    std::vector<std::string> arguments;
    std::string faults;
    std::string output;
    std::string unreleased;
    std::string lastCall;
  };
  const std::string merged = "Merge Board C  to fusion device Rig successfully.\n";
  const std::string notMerged = "Specified devices can not be merged!(ErroeLevel = 3)\n";
  const Case cases[] = {
      {{"/dn:1", "-fusion"}, "", "Board B is not a fusion device.\n", "", "DeviceCtrl_dispose"},
      {{"/dn:256", "-fusion"}, "CvxIsFusionDevice=0xA000000D", "Rig is not a fusion device.\n", "", "DeviceCtrl_dispose"},
      {{"/dn:256", "-fusion"}, "DeviceCtrl_Create=null", "devCtrl is null.\n", "", "DeviceCtrl_Create"},
      {{"/dn:256", "-fusion"},
       "CvxFusionDeviceGetChildren=0xA000000D",
       "QueryFusionDevInfo CvxFusionDeviceGetChildren failed!",
       "",
       "CvxFusionDeviceGetChildren"},
      {{"/dn:256", "-fusion"}, "DeviceCtrl_Create#2=null", "Rig fused devices:Board B\n", "DeviceCtrl#2", "DeviceCtrl_getDescription"},
      {{"/dn:256", "-fusion"}, "DeviceCtrl_Create#2-3=null", "Rig fused devices:\n", "", "DeviceCtrl_Create(1,"},
      {{"/dn:256", "-fusion"},
       "DeviceCtrl_getDescription=0xC0000000",
       " fused devices:\n",
       "DeviceCtrl#2 DeviceCtrl#3",
       "DeviceCtrl_getDescription(DeviceCtrl#3"},
      {{"/dn:256", "-fusion", "Board C"}, "CvxFusionDeviceCheckChildren=1", notMerged, "DeviceCtrl#2", "CvxFusionDeviceCheckChildren"},
      {{"/dn:256", "-fusion", "Gone", "Board C"}, "", notMerged, "", "CvxFusionDeviceCheckChildren(256, 2, [-1, -1])"},
      {{"/dn:256", "-fusion", "Board C"},
       "CvxFusionDeviceAddChildren=0xA000000D",
       "CvxFusionDeviceAddChildren failed!\n",
       "DeviceCtrl#2",
       "CvxFusionDeviceAddChildren"},
      {{"/dn:256", "-fusion", "Board C"},
       "CvxFusionDeviceAddChildren=0; CvxFusionDeviceGetChildren=1",
       "CvxFusionDeviceGetChildren failed!\n",
       "DeviceCtrl#2",
       "CvxFusionDeviceGetChildren"},
      {{"/dn:256", "-fusion", "Board C"},
       "CvxFusionDeviceAddChildren=0",
       merged + "Rig fused devices:Board A Board B\n",
       "DeviceCtrl#2 DeviceCtrl#3 DeviceCtrl#4",
       "DeviceCtrl_getDescription(DeviceCtrl#4"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.arguments) + test.faults);
    Outcome outcome = runWith({.arguments = test.arguments, .faults = test.faults});
    if (!test.faults.empty()) {
      EXPECT_EQ(outcome.trace.back(), "# faults never reached: 0");
      outcome.trace.pop_back();
    }
    EXPECT_EQ(outcome.output, test.output);
    EXPECT_EQ(outcome.unreleased("DeviceCtrl"), test.unreleased);
    EXPECT_TRUE(outcome.trace.back().starts_with(test.lastCall)) << outcome.calls();
    EXPECT_EQ(outcome.status, 0);
  }
}

TEST_F(FusionTest, NamesAreCutAndConverted) {
  const std::string name(63, 'n');
  useRig(R"({"devices": [{"number": 0, "description": ")" + name + R"("}, {"number": 1, "description": "Zwölf "},
             {"number": 2, "description": "Grün", "children": [1]}]})");
  EXPECT_NE(run({"/dd:R", "-fusion", name + "1234567"}).calls().find("(-1, \"" + name + "\", 1) = DeviceCtrl#1\n"), std::string::npos);
  std::remove(state.c_str());
  // The device's own description is converted in the environment's locale, the report printed in "C".
  const Outcome merged = runWith({.arguments = {"/dn:2", "-fusion", name}, .locale = "C.UTF-8"});
  EXPECT_EQ(merged.output, "Merge " + name + "  to fusion device Grün successfully.\n" + printed("%s fused devices:%S\n", "Grün", L"Zwölf"));
}

}  // namespace
