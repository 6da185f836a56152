// "-fusion" and "-defusion".
#include <algorithm>

#include "harness.h"

namespace {

// Boards A1, B2 and C3 can be fused, Odd cannot; Pair is a fusion device of C3 and D4.
class FusionTest : public ToolTest {
 protected:
  FusionTest() {
    useRig(R"({"devices": [
      {"number": 0, "description": "A1", "product_id": 7}, {"number": 1, "description": "B2", "product_id": 7},
      {"number": 2, "description": "C3", "product_id": 7}, {"number": 3, "description": "Odd", "product_id": 8},
      {"number": 4, "description": "D4", "product_id": 7},
      {"number": 9, "description": "Pair", "children": [2, 4]}]})");
  }

  std::string list() { return run({}).output.substr(32); }
};

const std::string Entered = "Device description you have entered:Rig\n";
const std::string Created = Entered + "Create fusion device Rig successfully\nRig fused devices:";

// How a trace shows the string by which an existing fusion device is looked up: four bytes make a character.
std::string lookup(const std::string& name) {
  std::string shown;
  for (size_t i = 0; i < name.size(); i += 4) {
    unsigned character = 0;
    for (size_t j = i; j < std::min(i + 4, name.size()); ++j) character |= unsigned(name[j]) << 8 * (j - i);
    shown += printed("\\x{%x}", character);
  }
  return "DeviceCtrl_Create(-1, \"" + shown + "\", 0) = null\n";
}

TEST_F(FusionTest, BuiltShownExtendedAndDissolved) {
  const Outcome built = run({"/dd:Rig", "-fusion", "A1", "B2"});
  EXPECT_EQ(built.output, Created + "A1 B2\n");
  EXPECT_EQ(built.calls({"DeviceCtrl_Create", "Cvx", "DeviceCtrl_set", "DeviceCtrl_dispose"}),
            lookup("Rig") +
                "DeviceCtrl_Create(-1, \"A1\", 1) = DeviceCtrl#1\nDeviceCtrl_Create(-1, \"B2\", 1) = DeviceCtrl#2\n"
                "CvxFusionDeviceCreate(2, [0, 1], 256) = 0x00000000\n"
                "DeviceCtrl_Create(256, null, 0) = DeviceCtrl#3\n"
                "DeviceCtrl_setDescription(DeviceCtrl#3, 3, \"Rig\") = 0x00000000\nDeviceCtrl_dispose(DeviceCtrl#3)\n");
  EXPECT_TRUE(list().ends_with("6,Rig\n")) << list();
  const Outcome shown = run({"/dd:Rig", "-fusion"});
  EXPECT_EQ(shown.output, Entered + "Rig fused devices:A1 B2\n");
  EXPECT_EQ(shown.calls({"DeviceCtrl_Create(1", "DeviceCtrl_Create(0"}),
            "DeviceCtrl_Create(0, null, 1) = DeviceCtrl#2\nDeviceCtrl_Create(1, null, 1) = DeviceCtrl#3\n");

  run({"/dn:9", "-defusion"});
  const Outcome extended = run({"/dn:256", "-fusion", "C3"});
  EXPECT_EQ(extended.output, "Merge C3  to fusion device Rig successfully.\nRig fused devices:A1 B2 C3\n");
  EXPECT_EQ(extended.unreleased(), "DeviceCtrl#2 DeviceCtrl#3 DeviceCtrl#4 DeviceCtrl#5");
  EXPECT_EQ(run({"/dn:256", "-defusion"}).output, "Dissociate the speciated fusion device Rig successfully.\n");
  EXPECT_EQ(list(), "0,A1\n1,B2\n2,C3\n3,Odd\n4,D4\n");
  EXPECT_EQ(run({"/dn:256", "-fusion"}).output, "devCtrl is null.\n");
}

TEST_F(FusionTest, BuildFailures) {
  const std::string refused = Entered + "Specified devices can not be fused!(ErroeLevel = 3)\n";
  const std::string notOpened = "get device failed,devCtrl is NULL.\n";
  const std::string create = "CvxFusionDeviceCreate(2, ", open = "DeviceCtrl#1", set = "DeviceCtrl_setDescription";
  check({
      {"/dd:Rig -fusion Odd A1", refused, create + "[3, 0], 0)", open + " DeviceCtrl#2", 255},
      {"/dd:Rig -fusion Gone A1", refused, create + "[-1, -1], 0)", "", 255},
      {"/dd:Rig -fusion A1 Gone", refused, create + "[0, -1], 0)", open, 255},
      {"DeviceCtrl_Create#3=null /dd:Rig -fusion A1", Created + "A1\n" + notOpened, "DeviceCtrl_Create", open, 255},
      {"DeviceCtrl_setDescription=0xC0000000 /dd:Rig -fusion A1", Created + "A1\n", set, open},
      {"CvxFusionDeviceCreate=0xE0000028 /dd:Rig -fusion A1", Entered, set, open},
      {"CvxFusionDeviceCreate=0xE0000028 DeviceCtrl_Create#3=null /dd:Rig -fusion A1", Entered + notOpened,
       "DeviceCtrl_Create(0, null, 0) = null", open, 255},
  });
}

TEST_F(FusionTest, LookupTakesFourBytesForACharacter) {
  const auto calls = [&](const char* selector) {
    return run({selector, "-fusion", "A1"}).calls({"DeviceCtrl_Create(-1, \"\\", "DeviceCtrl_Create(-1, \"\""});
  };
  EXPECT_EQ(calls("/dd:ABCDEFGH"), lookup("ABCDEFGH"));
  EXPECT_EQ(calls("/dd:"), lookup(""));
  // One byte makes one character, so a device with a name of one letter is found, and its group extended.
  run({"/dn:9", "-cd:X"});
  const Outcome extended = run({"/dd:X", "-fusion", "B2"});
  EXPECT_TRUE(extended.output.ends_with("Merge B2  to fusion device X successfully.\nX fused devices:B2 C3 D4\n"))
      << extended.output;
  EXPECT_EQ(extended.trace.back(), "DeviceCtrl_dispose(DeviceCtrl#1)");
  EXPECT_EQ(extended.status, 0);
}

TEST_F(FusionTest, QueryAndMergeFailures) {
  const std::string fused = "Pair fused devices:", failed = "CvxFusionDeviceGetChildren failed!";
  const std::string notFusion = "Pair is not a fusion device.\n", read = "CvxFusionDeviceGetChildren";
  const std::string merged = "Merge A1  to fusion device Pair successfully.\n";
  const std::string notMerged = "Specified devices can not be merged!(ErroeLevel = 3)\n";
  const std::string two = "DeviceCtrl#2 DeviceCtrl#3";
  check({
      {"/dn:1 -fusion", "B2 is not a fusion device.\n"},
      {"CvxIsFusionDevice=0xA000000D /dn:9 -fusion", notFusion, "DeviceCtrl_getDescription"},
      {"CvxFusionDeviceGetChildren=0xA000000D /dn:9 -fusion", "QueryFusionDevInfo " + failed, read},
      {"CvxFusionDeviceGetChildren=0 /dn:9 -fusion", fused + "\n", "DeviceCtrl_Create(-1, null, 1) = null"},
      {"DeviceCtrl_Create#2=null /dn:9 -fusion", fused + "D4\n", "DeviceCtrl_getDescription", "DeviceCtrl#2"},
      {"DeviceCtrl_Create#2-3=null /dn:9 -fusion", fused + "\n", "DeviceCtrl_Create(4,"},
      {"DeviceCtrl_getDescription=0xC0000000 /dn:9 -fusion", " fused devices:\n", "", two},
      {"CvxFusionDeviceCheckChildren=1 /dn:9 -fusion A1", notMerged, "CvxFusionDeviceCheckChildren", "DeviceCtrl#2"},
      {"/dn:9 -fusion Gone A1", notMerged, "CvxFusionDeviceCheckChildren(9, 2, [-1, -1])"},
      {"CvxFusionDeviceAddChildren=0xA000000D /dn:9 -fusion A1", "CvxFusionDeviceAddChildren failed!\n",
       "CvxFusionDeviceAddChildren", "DeviceCtrl#2"},
      {"CvxFusionDeviceGetChildren=1 /dn:9 -fusion A1", failed + "\n", read, "DeviceCtrl#2"},
      {"CvxFusionDeviceAddChildren=0 /dn:9 -fusion A1", merged + fused + "C3 D4\n", "", two + " DeviceCtrl#4"},
  });
}

TEST_F(FusionTest, NamesAreCutAndConverted) {
  const std::string name(63, 'n');
  std::string keys;
  for (int i = 0; i < 64; ++i) keys += "\U0001F511";
  useRig(R"({"devices": [{"number": 0, "description": ")" + name + R"("}, {"number": 1, "description": "Zwölf "},
             {"number": 2, "description": ")" +
         keys + R"(cut", "children": [1]}]})");
  EXPECT_NE(run({"/dd:R", "-fusion", name + "1234567"}).calls().find("(-1, \"" + name + "\", 1) = DeviceCtrl#1\n"),
            std::string::npos);
  std::remove(state.c_str());
  // The device's own description is converted in the environment's locale, up to 256 bytes; the report printed in "C".
  const Outcome merged = runWith({.arguments = {"/dn:2", "-fusion", name}, .locale = "C.UTF-8"});
  EXPECT_EQ(merged.output, "Merge " + name + "  to fusion device " + keys + " successfully.\n" +
                               printed("%s fused devices:%S\n", keys.c_str(), L"Zwölf"));
}

}  // namespace
