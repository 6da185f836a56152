// Reading rigs: each kind of error has one line with its place.
#include "simulator/rig/rig.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

namespace simulator {
namespace {

std::string problemOf(const std::string& json) {
  const std::string path = testing::TempDir() + "qutil-rig-" + std::to_string(getpid());
  std::ofstream(path) << json;
  std::string problem = "none";
  try {
    readRigFile(path);
  } catch (const RigError& error) {
    problem = error.what();
  }
  std::remove(path.c_str());
  return problem;
}

std::string device(const std::string& more) {
  return R"({"devices": [{"number": 1, "description": "D"}, {"number": 0, "description": "E")" + more + "}]}";
}

std::string chip(const std::string& fields) { return device(R"(, "firmware": [{)" + fields + "}]"); }

TEST(RigTest, FaultsAreOneLineWithTheirPlace) {
  const std::string deep(100'000, '[');
  std::string many;
  for (int i = 0; i < 256; ++i) many += "1, ";
  const std::pair<std::string, std::string> cases[] = {
      {"{\n \"devices\": [}", "line 2, column 14: syntax error"},
      {device(", \"location\": \"\xED\xA0\x80\""), "line 1, column 97: syntax error"},
      {"{\"devices\": " + deep, "/devices/0/0/0/0/0/0/0/0/0: expected at most 10 levels"},
      {device(", \"number\": 2"), "/devices/1/number: duplicate key"},
      {device("}, {\"number\": 1, \"description\": \"F\""),
       "/devices/2/number: expected a number other than that of /devices/0"},
      {device(", \"product_id\": -1"), "/devices/1/product_id: expected a number from 0 to 2147483647"},
      {device(", \"location\": \"a\\u0000\""), "/devices/1/location: expected a string without the character U+0000"},
      {device(", \"location\": \"" + std::string(10'000'000, 'x') + "\""),
       "/devices/1/location: expected a string of at most 1000 characters"},
      {"{\"devices\": [{\"number\": 0, \"description\": \"" + std::string(256, 'x') + "\"}]}",
       "/devices/0/description: expected a string of at most 255 characters"},
      {chip("\"description\": \"c\", \"version\": 1, \"progress\": []"), "/devices/1/firmware/0/progress: expected"},
      {R"({"devices": [{"number": 0, "description": "D", "children": [7]}]})",
       "/devices/0/children/0: expected the number of a device that is listed"},
      {device(R"(, "product_id": 1}, {"number": 2, "description": "F", "children": [1, 0])"),
       "/devices/2/children/1: expected a device with the product id of the first child"},
      {device(", \"children\": [0]"), "/devices/1/children/0: expected a device that is not a fusion device"},
      {device(", \"children\": [1, 1]"),
       "/devices/1/children/1: expected a device that belongs to no other fusion device"},
      {device(", \"children\": [" + many + "1]"), "/devices/1/children: expected 1 to 256 children"},
      {device(", \"product_id\": 1e999"), "/devices/1/product_id: expected a number of 64 bits"},
      {device(", \"board_id\": \"5\""),
       "/devices/1/board_id: expected a number from 0 to 15; a string needs \"0x\" before"},
      {device(", \"a\\nb/c~d\\u007f\\u009b\": 1"), "/devices/1/a\nb~1c~0d\x7F\u009B: unknown key"},
      {device(R"(, "calibration": [{"name": "", "description": "", "instruction": "", "sections": [
         {"description": "", "instruction": "", "items": [
           {"name": "", "in_use": 0, "backup": 0, "walk": [0], "fails": 1}]}]}])"),
       "/devices/1/calibration/0/sections/0/items/0/fails: expected true or false"},
  };
  for (const auto& [json, expected] : cases) {
    const std::string problem = problemOf(json);
    EXPECT_EQ(problem.substr(0, expected.size()), expected) << json.substr(0, 200);
  }
  const std::string texts = R"("description": "d", "instruction": "i", "name": "n", )";
  const std::string full = device(R"(, "firmware": [{"description": "d", "version": 1}], "calibration": [{)" + texts +
                                  R"("sections": [{"description": "d", "instruction": "i", "items": [{"name": "m", )"
                                  R"("in_use": 0, "backup": 0, "walk": [0]}]}]}])");
  EXPECT_EQ(problemOf(full), "none");
  for (size_t brace = full.find('{'); brace != std::string::npos; brace = full.find('{', brace + 1))
    EXPECT_NE(problemOf(std::string(full).insert(brace + 1, "\"x\": 1, ")).find("/x: unknown key; expected one of "),
              std::string::npos);
  EXPECT_THROW(readRigFile("/"), RigError);
  EXPECT_THROW(readRigFile("/dev/zero"), RigError);
}

}  // namespace
}  // namespace simulator
