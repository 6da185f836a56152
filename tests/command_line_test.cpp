// What the first argument selects, the listing, the matching and the exit status.
#include <algorithm>

#include "harness.h"

namespace {

const char Insufficient[] = "Insufficient parameter! Please use \"qutil /?\"to get help. (Errorlevel = 1)\n";

using CommandLineTest = ToolTest;

struct Case {
  std::vector<std::string> arguments;
  std::string output;
  int status = 0;
  std::string faults = {};
};

TEST_F(CommandLineTest, ExitStatusAndOutput) {
  useRig(OneBoard);
  const std::string list = "Quellis devices list in system:\n0,Board\n";
  const std::string noMatch = "No matched device found!Check your input and make sure the device on the PC is working normaly.\n";
  const std::string entered = "Device description you have entered:";
  const Case cases[] = {
      {{}, list},
      {{"-detail"}, list},
      {{}, "", 0, "DeviceCtrl_getInstalledDevices=null"},
      {{}, "No Quellis device in system!(Errorlevel = 2)\n", 2, "Array_getLength=0"},
      {{}, "Quellis devices list in system:\n", 0, "Array_getLength=-1"},
      {{}, "Quellis devices list in system:\n", 0, "Array_getItem=null"},
      {{"/dd:*"}, entered + "*\n" + noMatch, 255, "Array_getItem=null"},
      {{"/dn:0", "-x"}, Insufficient, 0, "DaqCtrlBase_Create=null"},
      {{"-DETAIL"}, Insufficient},
      {{"-detail", "x"}, Insufficient},
      {{"/?", "x"}, Insufficient},
      {{""}, Insufficient},
      {{"/DN:0"}, Insufficient},
      {{"/dn:0", "-cd:a", "b", "c", "d"}, Insufficient},
      {{"/dn:0", "-cd:a", "b", "c", "d", "e"}, Insufficient},
      {{"/dd:Nothing"}, entered + "Nothing\n" + noMatch, 255},
      {{"/dd:"}, entered + "\n" + noMatch, 255},
      {{"/dd:*"}, entered + "*\n" + noMatch, 255, "DeviceCtrl_getInstalledDevices=null"},
      {{"/dd:("}, entered + "(\n" + noMatch, 255, "Array_getLength=0"},
      {{"/dd:Board", "-fusion"}, entered + "Board\nBoard is not a fusion device.\n"},
      {{"/dd:B*", "-fusion"}, entered + "B*\ndevCtrl is null.\n"},
      {{"/dd:B*", "-cd:"},
       entered + "B*\nFind 1 devices on PC by your input.\nChange device description start!\n"
                 "setDescription error!\n"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.arguments) + test.faults);
    const Outcome outcome = runWith({.arguments = test.arguments, .faults = test.faults});
    EXPECT_EQ(outcome.output, test.output);
    EXPECT_EQ(outcome.status, test.status);
  }
}

TEST_F(CommandLineTest, HelpNeedsNoLibraryCall) {
  const Outcome outcome = run({"/?"});
  EXPECT_TRUE(outcome.trace.empty());
  EXPECT_TRUE(outcome.output.starts_with("Corvane DAQ device tool help.\nUsage: qutil [/?] [/dn:Num [options] ]  [/dd:"));
  EXPECT_NE(outcome.output.find("-fwo:\"FilePath\" [n [\"ActivationCode\"]]\n"), std::string::npos);
  EXPECT_TRUE(outcome.output.ends_with("-defusion        :: Dissociate the specified fusion device.\n\n"));
  EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 25);
}

TEST_F(CommandLineTest, NumberTexts) {
  useRig(OneBoard);
  const std::pair<const char*, const char*> cases[] = {{"/dn:", "0"},
                                                       {"/dn:abc", "0"},
                                                       {"/dn:12abc", "12"},
                                                       {"/dn:-1", "-1"},
                                                       {"/dn: +7", "7"},
                                                       {"x/dn:3", "3"},
                                                       {"a:b/dn:3", "0"},
                                                       {"/dn:3/dd:X", "3"},
                                                       {"/dd:/dn:5", "0"},
                                                       {"/dn:2147483647", "2147483647"},
                                                       {"/dn:2147483648", "2147483647"},
                                                       {"/dn:-99999999999999999999", "-2147483648"}};
  for (const auto& [argument, number] : cases) {
    const Outcome outcome = run({argument, "-detail"});
    EXPECT_EQ(outcome.calls({"DeviceCtrl_Create"}).find("DeviceCtrl_Create(" + std::string(number) + ", \"\", 1)"), 0U) << argument << "\n"
                                                                                                                        << outcome.calls();
  }
}

TEST_F(CommandLineTest, TooLongTextsAbort) {
  useRig(OneBoard);
  const std::string fits(256, '7');
  const std::string tooLong(257, '7');
  EXPECT_EQ(run({"/dn:" + fits}).output, "Cannot find specifiled Quellis device 2147483647!(Errorleve= 2)\n");
  const std::vector<std::string> aborting[] = {
      {"/dn:" + tooLong}, {"/dd:" + tooLong, "-fusion"}, {"/dd:X", "-fusion", tooLong}, {"/dn:0", "-cd:" + tooLong}, {"/dn:0", "-ci:" + tooLong}};
  for (const auto& arguments : aborting) EXPECT_EQ(run(arguments).signal, SIGABRT) << arguments[1];
}

TEST_F(CommandLineTest, PatternsMatchWholeDescriptionsRegardlessOfCase) {
  useRig(R"({"devices": [{"number": 1, "description": "ABC"}, {"number": 2, "description": "ABC"},
             {"number": 3, "description": "AxB-23"}, {"number": 4, "description": "x2333"}]})");
  const std::pair<const char*, std::vector<std::string>> cases[] = {{"abc*", {"ABC", "ABC"}},
                                                                    {"*BC", {"ABC", "ABC"}},
                                                                    {"AB", {}},
                                                                    {"A?C", {"ABC", "ABC"}},
                                                                    {"AB*X", {"ABC", "ABC"}},
                                                                    {"*123", {"AxB-23"}},
                                                                    {"*123*", {"AxB-23", "x2333"}},
                                                                    {"A?B?-23", {"AxB-23"}},
                                                                    {"A?C?", {"ABC", "ABC"}},
                                                                    {"[xA].*", {"ABC", "ABC", "AxB-23", "x2333"}},
                                                                    {"*", {"ABC", "ABC", "AxB-23", "x2333"}},
                                                                    {".*B?C", {"ABC", "ABC"}},
                                                                    {"ABC|x2333", {"ABC", "ABC", "x2333"}}};
  for (const auto& [pattern, matches] : cases) {
    const Outcome outcome = run({std::string("/dd:") + pattern, "-none"});
    std::string expected = std::string("Device description you have entered:") + pattern + "\n";
    if (matches.empty())
      expected += "No matched device found!Check your input and make sure the device on the PC is working normaly.\n";
    else
      expected += "Find " + std::to_string(matches.size()) + " devices on PC by your input.\n";
    for (size_t i = 0; i < matches.size(); ++i) expected += Insufficient;
    EXPECT_EQ(outcome.output, expected);
  }
  // Both are looked up by description, so both runs see the first.
  EXPECT_EQ(run({"/dd:ABC"}).calls({"DeviceCtrl_Create"}),
            "DeviceCtrl_Create(-1, \"ABC\", 1) = DeviceCtrl#1\nDeviceCtrl_Create(-1, \"ABC\", 1) = DeviceCtrl#2\n");
}

TEST_F(CommandLineTest, RejectedPatternEndsTheRunAtTheFirstDevice) {
  const Outcome outcome = runWith({.arguments = {"/dd:("}, .expectsErrors = true});
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_NE(outcome.errors.find("regex_error"), std::string::npos);
  EXPECT_TRUE(outcome.trace.back().starts_with("Array_getItem(Array#1, 0)"));
}

TEST_F(CommandLineTest, LongDescriptionsAreCutTo63Characters) {
  const std::string text(70, 'd');
  useRig(R"({"devices": [{"number": 1, "description": ")" + text + R"("}]})");
  EXPECT_EQ(run({}).output, "Quellis devices list in system:\n0," + text + "\n");
  EXPECT_EQ(run({"/dd:d*"}).calls({"DeviceCtrl_Create"}), "DeviceCtrl_Create(-1, \"" + text.substr(0, 63) + "\", 1) = null\n");
}

TEST_F(CommandLineTest, LocaleIsTheEnvironmentsInTheListingOnly) {
  useRig(R"({"devices": [{"number": 0, "description": "Plain"}, {"number": 1, "description": "Mühle"}]})");
  const std::string heading = "Quellis devices list in system:\n";
  EXPECT_EQ(runWith({.arguments = {}, .locale = "C.UTF-8"}).output, heading + "0,Plain\n1,Mühle\n");
  EXPECT_EQ(runWith({.arguments = {}, .locale = "C"}).output, heading + "0,Plain\n" + printed("%d,%S\n", 1, L"Mühle"));
  EXPECT_TRUE(runWith({.arguments = {"/dn:1"}, .locale = "C.UTF-8"})
                  .output.starts_with(printed("Detail information of device %d (%S)\n", 1, L"Mühle") + "Device Number: 1\n" +
                                      printed("Description: %S\n", L"Mühle") + "ProductID:0x0\n"));
  // Matching converts in "C" in either: what could not be converted is matched as what was, here nothing.
  for (const char* locale : {"C", "C.UTF-8"}) {
    EXPECT_EQ(runWith({.arguments = {"/dd:M*"}, .locale = locale}).status, 255);
    EXPECT_NE(runWith({.arguments = {"/dd:*", "-x"}, .locale = locale}).output.find("Find 2 devices"), std::string::npos);
  }
}

}  // namespace
