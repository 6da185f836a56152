#include <velq/velq.h>

#include <cstdio>
#include <string>

#include "operations/do_work.h"
#include "operations/fusion.h"
#include "operations/number.h"
#include "operations/record.h"
#include "operations/usage.h"
#include "qutil/arguments.h"
#include "qutil/device_list.h"
#include "qutil/device_match.h"
#include "qutil/fusion_build.h"
#include "qutil/help.h"

using namespace Automation::Velq;

namespace {

int runOnNumber(int argc, char** argv, const std::string& number) {
  DeviceInformation device = recordOf(parseNumber(number));
  doWork(argc, argv, device);
  return 0;
}

int runOnPattern(int argc, char** argv, const std::string& pattern) {
  const std::vector<std::string> descriptions = getMatchedDevice(pattern);
  if (descriptions.empty()) {
    puts("No matched device found!Check your input and make sure the device on the PC is working normaly.");
    return -1;
  }
  printf("Find %lu devices on PC by your input.\n", static_cast<unsigned long>(descriptions.size()));
  for (const std::string& description : descriptions) {
    DeviceInformation device = recordOf(description);
    doWork(argc, argv, device);
  }
  return 0;
}

int runOnDescription(int argc, char** argv, const std::string& description, const std::string& option) {
  printf("Device description you have entered:%s\n", description.c_str());
  if (option != "-fusion") return runOnPattern(argc, argv, description);
  if (argc >= 4) return buildFusionDevice(argc, argv, description);
  DeviceInformation device = recordOf(description);
  QueryFusionDevInfo(device);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments(argc, argv);
  if (argc == 1) return getAllInstalledDevice();
  if (argc == 2 && arguments.selector == "/?") {
    printHelp();
    return 0;
  }
  if (argc == 2 && arguments.selector == "-detail") return getAllInstalledDevice();

  // Never used and never released, deliberately: a library sees one firmware control made ahead of every command.
  DaqCtrlBase_Create(ScenarioFirmware);
  if (holds(arguments.selector, "/dn:")) return runOnNumber(argc, argv, afterColon(arguments.selector));
  if (holds(arguments.selector, "/dd:"))
    return runOnDescription(argc, argv, afterColon(arguments.selector), arguments.option);
  reportInsufficientParameter();
  return 0;
}
