// The executable and the libraries that it can be put on.
#include <array>

#include "harness.h"

namespace {

using LibraryTest = ToolTest;

std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  std::array<char, 4096> bytes;
  while (const size_t count = fread(bytes.data(), 1, bytes.size(), pipe)) output.append(bytes.data(), count);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

TEST_F(LibraryTest, SameExecutableOnAnotherLibrary) {
  const Outcome outcome = runWith({.arguments = {"/dn:0"}, .library = MINIMAL_LIBRARY_DIR});
  EXPECT_EQ(outcome.output,
            "Detail information of device 0 (Minimal board)\nDevice Number: 0\nDescription: Minimal board\n"
            "ProductID:0x100\nBoard ID: 0\nDriver version: N/A\nDLL version: 1.0-min\nBoard version: N/A\n"
            "Location: N/A\nBase address: 0xd000\nInterrupt: N/A\n");
  EXPECT_NE(run({"/dn:0"}).output.find("DLL version: 1.0-sim\n"), std::string::npos);
}

TEST_F(LibraryTest, OneEntryIsExportedAndTheToolNeedsIt) {
  const std::string tool = outputOf("readelf -Wd " QUTIL);
  EXPECT_NE(tool.find("(NEEDED)             Shared library: [libvelq.so]"), std::string::npos) << tool;
  EXPECT_NE(tool.find("(RUNPATH)"), std::string::npos);
  for (const char* library : {SIMULATOR, PROBE, MINIMAL_LIBRARY_DIR "/libvelq.so"})
    EXPECT_EQ(outputOf(std::string("nm -D --defined-only --format=posix ") + library + " | cut -d' ' -f1"), "CvxQuellisLibInitialize\n") << library;
  EXPECT_NE(outputOf("readelf -Wd " SIMULATOR).find("Library soname: [libvelq.so]"), std::string::npos);
}

// Nothing that a library returns makes the tool read or write where it must not; the sanitizers see to that in their
// run.
TEST_F(LibraryTest, HostileAnswersLeaveTheToolWhole) {
  const std::vector<std::vector<std::string>> commands = {{},
                                                          {"/dd:*"},
                                                          {"/dn:0"},
                                                          {"/dn:0", "-cd:*x"},
                                                          {"/dn:0", "-ci:5"},
                                                          {"/dn:0", "-fusion"},
                                                          {"/dn:0", "-fusion", "a"},
                                                          {"/dn:0", "-defusion"},
                                                          {"/dd:R", "-fusion", "a", "b"},
                                                          {"/dn:0", "-cali:ai.reverse"}};
  for (const char* behaviour : {"rude", "negative", "enormous", "null", "fusion", "fusion negative", "fusion null"}) {
    environment["HOSTILE"] = behaviour;
    for (const auto& arguments : commands) {
      // An object's place in an array is the library's word: the tool walks to the end of what it was told.
      if (behaviour == std::string("enormous") && arguments.size() == 2 && arguments[1].find("cali") != std::string::npos) continue;
      SCOPED_TRACE(behaviour + testing::PrintToString(arguments));
      const Outcome outcome = runWith({.arguments = arguments, .library = HOSTILE_LIBRARY_DIR});
      EXPECT_EQ(outcome.signal, 0);
    }
  }
  environment["HOSTILE"] = "rude";
  EXPECT_TRUE(runWith({.arguments = {"/dn:0", "-cali:ai.reverse"}, .library = HOSTILE_LIBRARY_DIR})
                  .output.starts_with("Revise AI module adjusting code of device 0(" + std::string(63, 'x') + ") "));
  EXPECT_EQ(runWith({.arguments = {"/dn:0", "-cd:*"}, .library = HOSTILE_LIBRARY_DIR}).output,
            "Change device description start!\nDevice description has changed from " + std::string(63, 'x') + " to " + std::string(63, 'x') + "\n");
  EXPECT_NE(runWith({.arguments = {"/dn:0"}, .library = HOSTILE_LIBRARY_DIR}).output.find("Description: " + std::string(50, 'x') + "\n"),
            std::string::npos);
}

}  // namespace
