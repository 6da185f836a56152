// The "-cali:" options.
#include "harness.h"

namespace {

class CalibrationTest : public ToolTest {
 protected:
  CalibrationTest() {
    useRig(R"({"devices": [{"number": 0, "description": "Dev", "calibration": [
  {"name": "Self test", "description": "t", "instruction": "t", "sections": []},
  {"name": "x AI.Auto y", "description": "Inputs", "instruction": "Warm up", "sections": [
    {"description": "Zero", "instruction": "Short", "items": [
      {"name": "Off", "in_use": 1, "backup": 2, "walk": ["0xAB", "0xCD", "0xEF"]},
      {"name": "Gain", "in_use": 3, "backup": 4, "walk": ["0xF0"], "fails": true}]},
    {"description": "Rest", "instruction": "None", "items": []}]},
  {"name": "AI.Auto 2", "description": "More", "instruction": "", "sections": [
    {"description": "S", "instruction": "I", "items": []}]}]}]})");
  }
};

const std::string AnyKey = "Press any key to continue\n";
const std::string Question = "Update as current use? (Y/N):\n";
const std::string Back(15, '\b');
const std::string FirstSolution =
    "This device can not support the function! ErrorLevel = 3\n"
    "Solution 1 description:Inputs\nSolution 1 instrution:Warm up\n";
const std::string FirstSection = FirstSolution + "Section 0 description:Zero\nSection 0 instrution:Short\n" + AnyKey;
const std::string Codes = "Off,code                " + Back + "0X000000AB\n, ..." + Back + "0X000000CD\n, ..." + Back +
                          "0X000000EF\n,OK  \nGain,code                " + Back + "0X000000F0\n,Failed\n";
const std::string SecondSection =
    "Section 1 description:Rest\nSection 1 instrution:None\n" + AnyKey + "Solution 2 Completed!\n" + Question;
const std::string LastSolution =
    "Solution 2 description:More\nSolution 2 instrution:\nSection 0 description:S\nSection 0 instrution:I\n" + AnyKey +
    "Solution 1 Completed!\n" + Question;

// Two keys without an Enter; the answer, whose line end is the third key; and the second answer. Keys are not echoed.
TEST_F(CalibrationTest, KeysAndAnswersOnATerminal) {
  const auto calibrate = [&](const std::string& answer) {
    std::remove(state.c_str());
    return runWith({.arguments = {"/dn:0", "-cali:ai.auto"}, .keys = "ab", .answers = answer + "\nn\n"});
  };
  ASSERT_EQ(calibrate("y").output, FirstSection + Codes + SecondSection + "y\nn\n" + LastSolution);
  const auto updates = [&](const char* answer) { return calibrate(answer).calls({"CalibrationSolution_update"}); };
  for (const char* yes : {"y", "Y", "\xD9", "\xF9"})
    EXPECT_EQ(updates(yes), "CalibrationSolution_updateAsCurrent(CalibrationSolution#2) = 0x00000000\n") << yes;
  for (const char* no : {"n", " y", "\x19", "\x04"}) EXPECT_EQ(updates(no), "") << no;
}

TEST_F(CalibrationTest, SleepsUpdatesAndFailures) {
  struct Row {
    std::string faults, output;
    std::string calls;  ///< sleeps and updates: of the second solution too, whose answer is the end of the first line
  };
  const std::string rest = SecondSection + LastSolution;
  const std::string update = "CalibrationSolution_updateAsCurrent(CalibrationSolution#2) = ";
  const std::string section = "sleep(1000)\n", poll = "sleep(200)\n", notDone = update + "0xe0000005\n" + section;
  const Row rows[] = {
      {"", FirstSection + Codes + rest,
       section + poll + poll + poll + poll + section + update + "0x00000000\n" + section},
      {"CalibrationCtrl_getSolutions=null", "", ""},
      {"CalibrationSection_start=0xE0000019", FirstSection, section},
      {"CalibrationSolution_getSections#1=null", FirstSolution + "Solution 0 Completed!\n" + Question + LastSolution,
       notDone},
      {"CalibrationSection_getItems=null", FirstSection + rest, section + section + notDone},
      {"CalibrationSection_start=0xC0000000 CalibrationItem_getState#1=7 CalibrationItem_getState#2=0",
       FirstSection + "Off,code                " + Back + "0X00000000\nGain,code                " + Back +
           "0X00000000\n,OK  \n" + rest,
       section + poll + poll + section + notDone},
      {"CalibrationSolution_updateAsCurrent#1=0xC0000000", FirstSection + Codes + rest,
       section + poll + poll + poll + poll + section + update + "0xc0000000 (injected)\n" + section},
  };
  for (const auto& [faults, output, calls] : rows) {
    std::remove(state.c_str());
    const Outcome outcome = runLine(faults + " /dn:0 -cali:ai.auto");
    EXPECT_EQ(outcome.output, output);
    EXPECT_EQ(outcome.calls({"sleep", "CalibrationSolution_update"}), calls) << faults;
    EXPECT_EQ(outcome.unreleased(), "");
  }
  for (const char* fault : {"CalibrationSolution_getName#2=null", "CalibrationItem_getName#1=null"})
    EXPECT_EQ(runWith({.arguments = {"/dn:0", "-cali:ai.auto"}, .faults = fault, .expectsErrors = true}).signal,
              SIGABRT);
}

TEST_F(CalibrationTest, CodesInUseAreKept) {
  run({"/dn:0", "-cali:ai.auto"});
  EXPECT_NE(runLine("/dn:0 -cali:ai.auto").calls().find("[0x000000ab, 0x00000001, 0x00000002]"), std::string::npos);
  EXPECT_NE(run({"/dn:0", "-cali:ai.auto"}).calls().find("[0x000000ab, 0x000000ef, 0x00000002]"), std::string::npos);
  runLine("CalibrationSolution_updateAsCurrent=0xC0000000 /dn:0 -cali:ai.reverse");
  EXPECT_NE(run({"/dn:0", "-cali:ai.auto"}).calls().find("[0x000000ab, 0x00000002, 0x00000002]"), std::string::npos);
}

TEST_F(CalibrationTest, BackupRestore) {
  const auto steps = [&](const std::string& line) {
    std::string digits;
    for (const std::string& call : runLine(line).trace) {
      if (call.starts_with("CalibrationSolution_load")) digits += call[call.find(", ") + 2];
      if (call.starts_with("CalibrationSolution_update")) digits += 'u';
    }
    return digits;
  };
  const std::string done = "Revise AI module adjusting code of device 0(Dev) complete!.\n";
  const std::string line = " /dn:0 -cali:ai.reverse";
  const std::string failed = "CalibrationSolution_loadGoldenBackup#1=0xA000000D" + line;
  const std::string failedLater = "CalibrationSolution_loadGoldenBackup#2=1" + line;
  check({{line, done + done},
         {"/dn:0 -cali:ao.reverse", ""},
         {"Array_getLength=1" + line, "This device do not support the function! ErrorLevel = 3\n"},
         {failed, "This device operation failed!\n" + done},
         {failedLater, done},
         {"CalibrationCtrl_getSolutions=null" + line, ""},
         {"CalibrationSolution_updateAsCurrent=0xC0000000" + line, done + done}});
  EXPECT_EQ(steps(line) + " " + steps(failed) + " " + steps(failedLater), "01u01u 001u 0101u");
}

}  // namespace
