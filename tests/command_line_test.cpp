// What the first argument selects, the listing, the matching and the exit status.
#include <zlib.h>

#include <csignal>
#include <sstream>

#include "harness.h"

namespace {

using CommandLineTest = ToolTest;

const std::string Heading = "Quellis devices list in system:\n";
const std::string Entered = "Device description you have entered:";
const std::string NoMatch =
    "No matched device found!Check your input and make sure the device on the PC is working normaly.\n";

TEST_F(CommandLineTest, ExitStatusAndOutput) {
  useRig(OneBoard);
  const std::string notChanged = "Change device description start!\nsetDescription error!\n";
  check({
      {"-detail", Heading + "0,Board\n"},
      {"DeviceCtrl_getInstalledDevices=null", ""},
      {"Array_getLength=0", "No Quellis device in system!(Errorlevel = 2)\n", "", "", 2},
      {"Array_getLength=-1", Heading},
      {"Array_getLength=9", Heading + "0,Board\n", "Array_getItem(Array#1, 1) = null"},
      {"Array_getLength=9 /dd:X", Entered + "X\n" + NoMatch, "Array_getItem(Array#1, 1) = null", "", 255},
      {"/dd:", Entered + "\n" + NoMatch, "", "", 255},
      {"DeviceCtrl_getInstalledDevices=null /dd:*", Entered + "*\n" + NoMatch, "", "", 255},
      {"Array_getLength=0 /dd:(", Entered + "(\n" + NoMatch, "", "", 255},
      {"/dd:Board -fusion", Entered + "Board\nBoard is not a fusion device.\n"},
      {"/dd:B* -fusion", Entered + "B*\ndevCtrl is null.\n"},
      {"/dd:B* -cd:", Entered + "B*\nFind 1 devices on PC by your input.\n" + notChanged, "", "DeviceCtrl#1"},
  });
  for (const char* line :
       {"DaqCtrlBase_Create=null /dn:0 -x", "-DETAIL", "-detail x", "/? x", "/DN:0", "/dn:0 -cd:a b c d"})
    check({{line, Insufficient}});
}

TEST_F(CommandLineTest, EachDeviceIsAskedForOnce) {
  const std::string listed = "DeviceCtrl_getInstalledDevices() = Array#1\nArray_getLength(Array#1) = 1\nArray_getItem(";
  useRig(OneBoard);
  EXPECT_EQ(run({}).calls(), listed + "Array#1, 0) = Array#1[0]\n");
  EXPECT_EQ(run({"/dd:X"}).calls(),
            "DaqCtrlBase_Create(0x00400000) = DaqCtrlBase#1\n" + listed + "Array#1, 0) = Array#1[0]\n");
}

TEST_F(CommandLineTest, HelpIsTheSameToTheByteAndNeedsNoLibraryCall) {
  const Outcome outcome = run({"/?"});
  EXPECT_TRUE(outcome.trace.empty());
  const auto* const bytes = reinterpret_cast<const Bytef*>(outcome.output.data());
  EXPECT_EQ(crc32(0, bytes, static_cast<uInt>(outcome.output.size())), 1197131850U) << outcome.output;
}

TEST_F(CommandLineTest, NumberTexts) {
  std::istringstream rows("/dn:12abc 12  a:b/dn:3 0  /dn:2147483648 2147483647  /dn:-99999999999999999999 -2147483648");
  for (std::string argument, number; rows >> argument >> number;)
    EXPECT_EQ(run({argument}).calls({"DeviceCtrl_Create"}).find("(" + number + ", \"\", 1)"), 17U) << argument;
}

TEST_F(CommandLineTest, TextsAreOfAtMost256Bytes) {
  EXPECT_EQ(run({"/dn:" + std::string(256, '7')}).output,
            "Cannot find specifiled Quellis device 2147483647!(Errorleve= 2)\n");
  for (const std::string line : {"/dn:", "/dd:X -fusion ", "/dn:0 -cd:", "/dn:0 -ci:", "/dn:0 -fwo:", "/dn:0 -fwo:f ",
                                 "FirmwareItem_loadFile=0 /dn:0 -fwo:f 0 "})
    EXPECT_EQ(runLine(line + std::string(257, '0')).signal, SIGABRT) << line;
  EXPECT_EQ(run({"/dd:" + std::string(257, '0'), "-fusion"}).signal, SIGABRT);
}

TEST_F(CommandLineTest, PatternsMatchWholeDescriptionsRegardlessOfCase) {
  useRig(R"({"devices": [{"number": 1, "description": "ABC"}, {"number": 2, "description": "ABC"},
             {"number": 3, "description": "AxB-23"}, {"number": 4, "description": "x2333"}]})");
  std::istringstream rows("abc* 2  *BC 2  A?C 2  AB*X 2  *123 1  *123* 2  A?B?-23 1  [xA].* 4  .*B?C 2  ABC|x2333 3");
  size_t count = 0;
  for (std::string pattern; rows >> pattern >> count;) {
    std::string expected = Entered + pattern + "\nFind " + std::to_string(count) + " devices on PC by your input.\n";
    for (size_t i = 0; i < count; ++i) expected += Insufficient;
    EXPECT_EQ(run({"/dd:" + pattern, "-none"}).output, expected);
  }
  EXPECT_EQ(run({"/dd:AB"}).output, Entered + "AB\n" + NoMatch);
  // Both are looked up by description, so both runs see the first.
  EXPECT_EQ(run({"/dd:ABC"}).calls({"DeviceCtrl_Create"}),
            "DeviceCtrl_Create(-1, \"ABC\", 1) = DeviceCtrl#1\nDeviceCtrl_Create(-1, \"ABC\", 1) = DeviceCtrl#2\n");
}

TEST_F(CommandLineTest, RejectedPatternEndsTheRunAtTheFirstDevice) {
  const Outcome outcome = runWith({.arguments = {"/dd:("}, .expectsErrors = true});
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_NE(outcome.errors.find("regex_error"), std::string::npos);
  EXPECT_TRUE(outcome.lastCall().starts_with("Array_getItem(Array#1, 0)"));
}

TEST_F(CommandLineTest, LongDescriptionsAreCutTo63Characters) {
  const std::string text(70, 'd');
  useRig(R"({"devices": [{"number": 1, "description": ")" + text + R"("}]})");
  EXPECT_EQ(run({}).output, Heading + "0," + text + "\n");
  EXPECT_EQ(run({"/dd:d*"}).lastCall(), "DeviceCtrl_Create(-1, \"" + text.substr(0, 63) + "\", 1) = null");
}

TEST_F(CommandLineTest, LocaleIsTheEnvironmentsInTheListingOnly) {
  useRig(R"({"devices": [{"number": 0, "description": "Plain"}, {"number": 1, "description": "Mühle"}]})");
  EXPECT_EQ(runWith({.arguments = {}, .locale = "C.UTF-8"}).output, Heading + "0,Plain\n1,Mühle\n");
  EXPECT_EQ(run({}).output, Heading + "0,Plain\n" + printed("%d,%S\n", 1, L"Mühle"));
  EXPECT_TRUE(runWith({.arguments = {"/dn:1"}, .locale = "C.UTF-8"})
                  .output.starts_with(printed("Detail information of device %d (%S)\n", 1, L"Mühle") +
                                      "Device Number: 1\n" + printed("Description: %S\n", L"Mühle") + "ProductID:"));
  // Matching converts in "C" in either: what could not be converted is matched as what was, here nothing.
  for (const char* locale : {"C", "C.UTF-8"}) {
    EXPECT_EQ(runWith({.arguments = {"/dd:M*"}, .locale = locale}).status, 255);
    EXPECT_NE(runWith({.arguments = {"/dd:*", "-x"}, .locale = locale}).output.find("Find 2 "), std::string::npos);
  }
}

}  // namespace
