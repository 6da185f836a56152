// The "-cali:" options.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "harness.h"

namespace {

using CalibrationTest = ToolTest;

const char Rig[] = R"({"devices": [{"number": 0, "description": "Dev", "calibration": [
  {"name": "Self test", "description": "t", "instruction": "t", "sections": []},
  {"name": "x AI.Auto y", "description": "Inputs", "instruction": "Warm up", "sections": [
    {"description": "Zero", "instruction": "Short", "items": [
      {"name": "Off", "in_use": 1, "backup": 2, "walk": ["0xAB", "0xCD", "0xEF"]},
      {"name": "Gain", "in_use": 3, "backup": 4, "walk": ["0xF0"], "fails": true}]},
    {"description": "Rest", "instruction": "None", "items": []}]},
  {"name": "AI.Auto 2", "description": "More", "instruction": "", "sections": [
    {"description": "S", "instruction": "I", "items": []}]}]}]})";

const char Unsupported[] = "This device can not support the function! ErrorLevel = 3\n";
const char AnyKey[] = "Press any key to continue\n";
const char Question[] = "Update as current use? (Y/N):\n";
const std::string Back(15, '\b');
const std::string FirstSection =
    "Solution 1 description:Inputs\nSolution 1 instrution:Warm up\n"
    "Section 0 description:Zero\nSection 0 instrution:Short\nPress any key to continue\n";
const std::string Codes = "Off,code                " + Back + "0X000000AB\n, ..." + Back + "0X000000CD\n, ..." + Back +
                          "0X000000EF\n,OK  \nGain,code                " + Back + "0X000000F0\n,Failed\n";
const std::string SecondSection = "Section 1 description:Rest\nSection 1 instrution:None\nPress any key to continue\n";
const std::string LastSolution = "Solution 2 description:More\nSolution 2 instrution:\nSection 0 description:S\nSection 0 instrution:I\n";

TEST_F(CalibrationTest, ProcedureFromTheFirstLineToTheLast) {
  useRig(Rig);
  const Outcome outcome = runWith({.arguments = {"/dn:0", "-cali:ai.auto"}, .input = "y\nN\n"});
  EXPECT_EQ(outcome.output, Unsupported + FirstSection + Codes + SecondSection + "Solution 2 Completed!\n" + Question + LastSolution + AnyKey +
                                "Solution 1 Completed!\n" + Question);
  EXPECT_EQ(outcome.calls({"CalibrationSection_start", "sleep", "CalibrationSolution_update"}),
            "CalibrationSection_start(CalibrationSection#1) = 0x00000000\nsleep(1000)\n"
            "sleep(200)\nsleep(200)\nsleep(200)\nsleep(200)\n"
            "CalibrationSection_start(CalibrationSection#2) = 0x00000000\nsleep(1000)\n"
            "CalibrationSolution_updateAsCurrent(CalibrationSolution#2) = 0x00000000\n"
            "CalibrationSection_start(CalibrationSection#3) = 0x00000000\nsleep(1000)\n");
  EXPECT_EQ(outcome.unreleased("DaqCtrlBase"), "DaqCtrlBase#1");
  // What is in use, and the backup, stand in the second and third code of every poll.
  const Outcome next = run({"/dn:0", "-cali:ai.auto"});
  EXPECT_NE(next.calls().find("[0x000000ab, 0x000000ef, 0x00000002]"), std::string::npos);
  EXPECT_NE(next.calls().find("[0x000000f0, 0x00000003, 0x00000004]"), std::string::npos);
}

TEST_F(CalibrationTest, ElementsAreAskedForAtEveryUse) {
  useRig(Rig);
  const Outcome outcome = run({"/dn:0", "-cali:ai.auto"});
  const std::string calls = outcome.calls({"Array_getItem", "CalibrationItem"});
  EXPECT_NE(calls.find("Array_getItem(Array#3, 1) = Array#3[1]\nCalibrationItem_getName(CalibrationItem#2) = \"Gain\"\n"
                       "Array_getItem(Array#3, 1) = Array#3[1]\nCalibrationItem_getState(CalibrationItem#2, "),
            std::string::npos)
      << calls;
}

TEST_F(CalibrationTest, KeysAndAnswersOnATerminal) {
  useRig(Rig);
  // Two keys, the answer, whose line end is the next key, and the second answer. Keys are not echoed, answers are.
  for (const char* answer : {"y", "Y", "\xD9", "\xF9"}) {
    std::remove(state.c_str());
    const Outcome outcome = runWith({.arguments = {"/dn:0", "-cali:ai.auto"}, .keys = std::string("ab") + answer + "\nn\n"});
    EXPECT_EQ(outcome.calls({"CalibrationSolution_update"}), "CalibrationSolution_updateAsCurrent(CalibrationSolution#2) = 0x00000000\n") << answer;
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.output.find(LastSolution + AnyKey), std::string::npos);
  }
  for (const char* answer : {"n", " y", "\x19", "\x04"})
    EXPECT_EQ(runWith({.arguments = {"/dn:0", "-cali:ai.auto"}, .keys = std::string("ab") + answer + "\nn\n"}).calls({"CalibrationSolution_update"}),
              "")
        << answer;
}

TEST_F(CalibrationTest, Failures) {
  useRig(Rig);
  struct Case {
    std::string faults;
    std::string output;
    std::string calls;  ///< sleeps and updates; the second answer is the end of the first line
  };
  const std::string rest = SecondSection + "Solution 2 Completed!\n" + Question + LastSolution + AnyKey + "Solution 1 Completed!\n" + Question;
  const std::string update = "CalibrationSolution_updateAsCurrent(CalibrationSolution#2) = ";
  const std::string polls = "sleep(200)\nsleep(200)\nsleep(200)\nsleep(200)\n";
  const Case cases[] = {
      {"CalibrationCtrl_getSolutions=null", "", ""},
      {"Array_getLength=0", "", ""},
      {"CalibrationSection_start=0xE0000019", Unsupported + FirstSection, "sleep(1000)\n"},
      {"CalibrationSolution_getSections#1=null",
       std::string(Unsupported) + "Solution 1 description:Inputs\nSolution 1 instrution:Warm up\nSolution 0 Completed!\n" + Question + LastSolution +
           AnyKey + "Solution 1 Completed!\n" + Question,
       update + "0xe0000005\nsleep(1000)\n"},
      {"CalibrationSection_getItems=null", Unsupported + FirstSection + rest, "sleep(1000)\nsleep(1000)\n" + update + "0xe0000005\nsleep(1000)\n"},
      {"CalibrationSection_start=0xC0000000; CalibrationItem_getState#1=7; CalibrationItem_getState#2=0",
       Unsupported + FirstSection + "Off,code                " + Back + "0X00000000\nGain,code                " + Back + "0X00000000\n,OK  \n" + rest,
       "sleep(1000)\nsleep(200)\nsleep(200)\nsleep(1000)\n" + update + "0xe0000005\nsleep(1000)\n"},
      {"CalibrationSolution_updateAsCurrent#1=0xC0000000", Unsupported + FirstSection + Codes + rest,
       "sleep(1000)\n" + polls + "sleep(1000)\n" + update + "0xc0000000 (injected)\nsleep(1000)\n"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.faults);
    const Outcome outcome = runWith({.arguments = {"/dn:0", "-cali:ai.auto"}, .faults = test.faults, .input = "y\ny\n"});
    EXPECT_EQ(outcome.output, test.output);
    EXPECT_EQ(outcome.calls({"sleep", "CalibrationSolution_update"}), test.calls);
    EXPECT_EQ(outcome.unreleased("DaqCtrlBase"), "DaqCtrlBase#1");
  }
  for (const char* fault : {"CalibrationSolution_getName#2=null", "CalibrationItem_getName#1=null"})
    EXPECT_EQ(runWith({.arguments = {"/dn:0", "-cali:ai.auto"}, .faults = fault, .expectsErrors = true}).signal, SIGABRT);
}

TEST_F(CalibrationTest, BackupRestore) {
  const std::string solution =
      R"("description": "", "instruction": "", "sections": [{"description": "", "instruction": "",
     "items": [{"name": "I", "in_use": 1, "backup": 9, "walk": [1]}]}]})";
  const std::string head = R"({"devices": [{"number": 3, "description": "Dev", "calibration": [{"name": ")";
  const std::string one = head + R"(Old AO", )" + solution + "]}]}";
  const std::string two = head + R"(My AI", )" + solution + R"(, {"name": "AI.Auto", )" + solution + "]}]}";
  const std::string none = head + R"(X", )" + solution + R"(, {"name": "Y", )" + solution + "]}]}";
  const std::string done = "Revise AI module adjusting code of device 3(Dev) complete!.\n";
  struct Case {
    std::string rig, option, faults, output, steps;
  };
  const Case cases[] = {
      {one, "-cali:ai.reverse", "", "This device do not support the function! ErrorLevel = 3\n", ""},
      {none, "-cali:ai.reverse", "", "", ""},
      {two, "-cali:ai.reverse", "", done + done, "01u01u"},
      {two, "-cali:ai.reverse", "CalibrationSolution_loadGoldenBackup#1=0xA000000D", "This device operation failed!\n" + done, "001u"},
      {two, "-cali:ai.reverse", "CalibrationSolution_loadGoldenBackup#2=1", done, "0101u"},
      {two, "-cali:ai.reverse", "CalibrationCtrl_getSolutions=null", "", ""},
      {two, "-cali:ai.reverse", "CalibrationSolution_updateAsCurrent=0xC0000000", done + done, "01u01u"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.faults);
    useRig(test.rig);
    std::remove(state.c_str());
    const Outcome outcome = runWith({.arguments = {"/dn:3", test.option}, .faults = test.faults});
    EXPECT_EQ(outcome.output, test.output);
    std::string steps;
    for (const std::string& line : outcome.trace) {
      if (line.starts_with("CalibrationSolution_load")) steps += line[line.find(", ") + 2];
      if (line.starts_with("CalibrationSolution_update")) steps += 'u';
    }
    EXPECT_EQ(steps, test.steps);
  }
  useRig(two);
  std::remove(state.c_str());
  run({"/dn:3", "-cali:ai.reverse"});
  EXPECT_NE(run({"/dn:3", "-cali:ai.auto"}).calls().find("[0x00000001, 0x00000009, 0x00000009]"), std::string::npos);
}

TEST_F(CalibrationTest, RunningSectionHoldsTheDevice) {
  useRig(Rig);
  const pid_t process = start({"/dn:0", "-cali:ai.auto"});
  Outcome blocked;
  for (int i = 0; i < 500 && blocked.trace.empty(); ++i) {
    usleep(10'000);
    const Outcome outcome = run({"/dn:0", "-cali:ai.auto"});
    if (outcome.calls().find("CalibrationSection_start(CalibrationSection#1) = 0xe0000019") != std::string::npos) blocked = outcome;
  }
  EXPECT_EQ(blocked.output, Unsupported + FirstSection);
  EXPECT_EQ(blocked.calls({"sleep"}), "sleep(1000)\n");
  EXPECT_EQ(run({"/dn:0", "-cali:ai.reverse"}).output, "This device operation failed!\nThis device operation failed!\n");
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
  EXPECT_NE(run({"/dn:0", "-cali:ai.auto"}).output.find("Completed"), std::string::npos);
}

}  // namespace
