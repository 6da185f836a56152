// The simulator as the tool sees it: bad rigs, states that cannot be used, and what is saved.
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <utility>

#include "harness.h"

namespace {

using SimulatorTest = ToolTest;

#define ADVICE "; name another file with VELQ_STATE or velq-sim --state"

const char Refused[] = "Change device description start!\nsetDescription error!\n";

TEST_F(SimulatorTest, BadRigIsOneLineAndNoList) {
  useRig("{\"devices\": [{\"number\": 1}]}");
  const Outcome listed = runWith({.arguments = {}, .expectsErrors = true});
  EXPECT_EQ(listed.output, "");
  EXPECT_EQ(listed.errors, "velq-sim: " + path("rig.json") + ": /devices/0: expected the key \"description\"\n");
  environment["VELQ_RIG"] = path("no\n\u009Bne");
  EXPECT_EQ(runWith({.arguments = {}, .expectsErrors = true}).errors,
            "velq-sim: " + path("no\\x{a}\\x{9b}ne") + ": cannot be opened: No such file or directory\n");
}

TEST_F(SimulatorTest, UnusableStateIsOneLineAndReadingGoesOn) {
  useRig(OneBoard);
  write("text", "no database at all, but long enough to be taken for one");
  std::filesystem::create_symlink(path("nowhere"), path("dangling"));
  mkfifo(path("fifo").c_str(), 0600);
  const std::pair<const char*, const char*> cases[] = {
      {"text", "cannot be used: file is not a database" ADVICE},
      {"dangling", "is a symbolic link, which is not followed"},
      {"fifo", "is not a regular file"},
      {"missing/state", "cannot be created: No such file or directory" ADVICE},
  };
  for (const auto& [file, problem] : cases) {
    SCOPED_TRACE(file);
    state = path(file);
    const bool isThere = file != std::string("missing/state");
    const std::string line = "velq-sim: " + state + ": " + problem + "\n";
    const Outcome read = runWith({.arguments = {"/dn:0"}, .expectsErrors = isThere});
    EXPECT_TRUE(read.output.starts_with("Detail information of device 0 (Board)\n"));
    EXPECT_EQ(read.errors, isThere ? line : "");
    const Outcome changed = runWith({.arguments = {"/dn:0", "-cd:New"}, .expectsErrors = true});
    EXPECT_EQ(changed.output, Refused);
    EXPECT_EQ(changed.errors, line);
  }
  EXPECT_EQ(std::filesystem::file_size(path("text")), 55U);
  EXPECT_FALSE(std::filesystem::exists(path("nowhere")));
}

TEST_F(SimulatorTest, WithoutSqliteOnlyChangesAreRefused) {
  useRig(OneBoard);
  write("libsqlite3.so.0", "no library");
  environment["LD_LIBRARY_PATH"] = path(".");
  run({"/dn:0"});
  const Outcome changed = runWith({.arguments = {"/dn:0", "-cd:New"}, .expectsErrors = true});
  EXPECT_EQ(changed.output, Refused);
  EXPECT_EQ(changed.errors,
            "velq-sim: " + state + ": cannot be used: " + path("./libsqlite3.so.0") + ": file too short\n");
}

TEST_F(SimulatorTest, StateIsPrivateAndWhereTheEnvironmentSays) {
  state = "";
  run({"/dn:0", "-fw"});
  EXPECT_FALSE(std::filesystem::exists(path(".local")));
  run({"/dn:0", "-cd:A"});
  environment["XDG_STATE_HOME"] = path("xdg");
  run({"/dn:0", "-cd:C"});
  useRig(OneBoard);
  std::filesystem::create_symlink("rig.json", path("link"));
  const std::string longName(255, 'r');
  std::filesystem::copy_file(path("rig.json"), path(longName));
  for (const char* name : {"rig.json", "link", longName.c_str()}) {
    environment["VELQ_RIG"] = path(name);
    run({"/dn:0", "-cd:Of " + std::string(name, 4)});
  }
  environment["VELQ_RIG"] = path("rig.json");
  EXPECT_TRUE(run({}).output.ends_with("0,Of link\n"));
  std::set<std::string> names;
  for (const char* directory : {".local/state/velq-sim", "xdg/velq-sim"}) {
    for (const auto& file : std::filesystem::directory_iterator(path(directory))) {
      names.insert(file.path().filename().string().substr(0, 9));
      struct stat status {};
      ASSERT_EQ(stat(file.path().c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 07777, 0600U) << file;
    }
  }
  EXPECT_EQ(names, (std::set<std::string>{"state", "rig.json-", "rrrrrrrrr"}));
  environment["XDG_STATE_HOME"] = "xdg";
  environment["HOME"] = ".";
  EXPECT_EQ(runWith({.arguments = {"/dn:0", "-cd:D"}, .expectsErrors = true}).errors,
            "velq-sim: the state: VELQ_STATE, XDG_STATE_HOME and HOME name no file for it\n");
}

// Started by another user, the copy runs as its owner.
TEST_F(SimulatorTest, SetUserIdProcessIgnoresTheEnvironment) {
  useRig(OneBoard);
  struct statvfs mount {};
  ASSERT_EQ(statvfs(path("").c_str(), &mount), 0);
  if (geteuid() != 0 || (mount.f_flag & (ST_NOSUID | ST_NOEXEC)) != 0) GTEST_SKIP() << "needs root and set-user-id";
  std::filesystem::copy_file(QUTIL, path("qutil"));
  chmod(path("").c_str(), 0711);
  chmod(path("qutil").c_str(), 04755);
  const auto output = [&](const std::string& prefix, const std::string& arguments) {
    return outputOf("VELQ_RIG=" + path("rig.json") + " VELQ_STATE=" + state + " XDG_STATE_HOME=" + path("xdg") + " " +
                    prefix + path("qutil") + " " + arguments);
  };
  EXPECT_EQ(output("", "/dn:0 -cd:New").find(Refused), std::string::npos);
  const std::string other = "setpriv --reuid=65534 --regid=65534 --clear-groups ";
  EXPECT_TRUE(output(other, "/dn:0").starts_with("Detail information of device 0 (QA-3216,BID#0)\n"));
  EXPECT_EQ(output(other, "/dn:0 -cd:Other"),
            "velq-sim: the state: VELQ_STATE, XDG_STATE_HOME and HOME name no file for it\n" + std::string(Refused));
  EXPECT_FALSE(std::filesystem::exists(path("xdg")));
}

TEST_F(SimulatorTest, GroupsLeaveNothingBehind) {
  const std::string boards = R"({"devices": [{"number": 2, "description": "A"}, {"number": 1, "description": "B"},)";
  useRig(boards + R"({"number": 0, "description": "Rig", "children": [2, 1]}]})");
  run({"/dn:0", "-fusion", "A"});
  EXPECT_NE(run({"/dn:0", "-ci:5"}).output.find("success"), std::string::npos);
  EXPECT_NE(run({"/dn:0", "-defusion"}).output.find("successfully"), std::string::npos);
  EXPECT_NE(run({"/dn:2", "-cd:New"}).output.find("changed from A to New"), std::string::npos);
  EXPECT_NE(run({"/dd:Both", "-fusion", "New", "B"}).output.find("successfully"), std::string::npos);
  useRig(boards + R"({"number": 256, "description": "Plain"}]})");
  const Outcome listed = runWith({.arguments = {}, .expectsErrors = true});
  EXPECT_TRUE(listed.output.ends_with("0,A\n1,B\n2,Plain\n")) << listed.output;
}

TEST_F(SimulatorTest, ProgressThatEndsBelow100IsNeverDone) {
  useRig(R"({"devices": [{"number": 0, "description": "D", "firmware": [
    {"description": "C", "version": 1, "progress": [0, 99]}]}]})");
  const Outcome ended = runLine("FirmwareItem_getProgress#5=100 /dn:0 -fwo:" + firmware("f", "0x0000", "0x0002"));
  EXPECT_NE(ended.output.find("100%\nFirmware Download OK."), std::string::npos);
  EXPECT_NE(run({"/dn:0", "-fw"}).output.find("version:0.01\n"), std::string::npos);
}

TEST_F(SimulatorTest, RulesForDescriptionsAndIds) {
  for (const char* line : {"/dn:2 -ci:8", "/dn:0 -ci:16", "/dn:5 -ci:0"})
    EXPECT_NE(runLine(line).output.find("Failed to change Board ID"), std::string::npos) << line;
  useRig(R"({"devices": [{"number": 0, "description": "Twin"}, {"number": 1, "description": "Twin"}]})");
  for (const char* line : {"/dn:0 -cd:*", "/dn:1 -cd:*"}) EXPECT_EQ(runLine(line).output, Refused);
}

}  // namespace
