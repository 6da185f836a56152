// The executable and the libraries that it can be put on.
#include "harness.h"

namespace {

using LibraryTest = ToolTest;

TEST_F(LibraryTest, SameExecutableOnAnotherLibrary) {
  environment = {{"MINIMAL_BOARD", "/nonexistent/board"}};
  const Outcome outcome = runWith({.arguments = {"/dn:0"}, .library = MINIMAL_LIBRARY_DIR});
  EXPECT_EQ(outcome.output,
            "Detail information of device 0 (Minimal board)\nDevice Number: 0\nDescription: Minimal board\n"
            "ProductID:0x100\nBoard ID: 0\nDriver version: N/A\nDLL version: 1.0-min\nBoard version: N/A\n"
            "Location: N/A\nBase address: 0xd000\nInterrupt: N/A\n");
  // Its addresses are used again, which get a new name in the trace each time; the tool never releases some.
  const std::string name = "Minimal board", opened = "DeviceCtrl_Create(-1, \"Minimal board\", 1) = DeviceCtrl#";
  EXPECT_EQ(runWith({.arguments = {"/dd:R", "-fusion", name, name}, .library = MINIMAL_LIBRARY_DIR}).calls({opened}),
            opened + "1\n" + opened + "2\n");
  EXPECT_NE(run({"/dn:0", "-cali:ai.auto"}).calls().find("Item_getState(CalibrationItem#1,"), std::string::npos);
  EXPECT_NE(run({"/dn:0"}).output.find("DLL version: 1.0-sim\n"), std::string::npos);
}

// Nothing that a library returns makes the tool read or write where it must not, which the sanitizers find out.
TEST_F(LibraryTest, HostileAnswersLeaveTheToolWhole) {
  environment["LD_LIBRARY_PATH"] = HOSTILE_LIBRARY_DIR;
  // Nulls; and on fusion devices lengths and numbers that are negative, odd, or more than there is; and no terminators.
  for (const std::string bytes : {"\7", "\xA0", "\xF0", "\xFA", ""}) {
    environment["HOSTILE"].clear();
    for (int i = 0; i < 300; ++i) environment["HOSTILE"] += bytes;
    for (const char* line :
         {"", "/dd:*", "/dn:0", "/dn:0 -cd:*x", "/dn:0 -ci:5", "/dn:0 -fw", "/dn:0 -fwo:f", "/dn:0 -fusion",
          "/dn:0 -fusion a", "/dn:0 -defusion", "/dd:R -fusion a b", "/dn:0 -cali:ai.auto", "/dn:0 -cali:ai.reverse"})
      EXPECT_EQ(runLine(line).signal, 0) << line << bytes;
  }
  const std::string name(63, 'x');
  EXPECT_TRUE(run({"/dn:0", "-cali:ai.reverse"})
                  .output.starts_with("Revise AI module adjusting code of device 0(" + name + ") "));
  EXPECT_TRUE(run({"/dn:0", "-cd:*"}).output.ends_with(" has changed from " + name + " to " + name + "\n"));
  EXPECT_NE(run({"/dn:0"}).output.find("Description: " + std::string(50, 'x') + "\n"), std::string::npos);
}

}  // namespace
