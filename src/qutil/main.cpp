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

// Quirk: the exit status is 0 whatever becomes of the operation; only its messages report a failure.
int runOnNumber(const Arguments& arguments) {
  DeviceInformation device = recordOf(parseNumber(afterColon(arguments.selector)));
  doWork(arguments.argc, arguments.argv, device);
  return 0;
}

int runOnPattern(const Arguments& arguments, const std::string& pattern) {
  const std::vector<std::string> descriptions = getMatchedDevice(pattern);
  if (descriptions.empty()) {
    puts("No matched device found!Check your input and make sure the device on the PC is working normaly.");
    return -1;
  }
  printf("Find %lu devices on PC by your input.\n", static_cast<unsigned long>(descriptions.size()));
  for (const std::string& description : descriptions) {
    DeviceInformation device = recordOf(description);
    doWork(arguments.argc, arguments.argv, device);
  }
  return 0;
}

int runOnDescription(const Arguments& arguments) {
  const std::string description = afterColon(arguments.selector);
  printf("Device description you have entered:%s\n", description.c_str());
  // "-fusion" takes the description as it is, without wildcards.
  if (arguments.option != "-fusion") return runOnPattern(arguments, description);
  if (arguments.argc >= 4) return buildFusionDevice(arguments.argc, arguments.argv, description);
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

  // Quirk: neither used nor released. Before the list and the help there is none.
  DaqCtrlBase_Create(ScenarioFirmware);
  if (contains(arguments.selector, "/dn:")) return runOnNumber(arguments);
  if (contains(arguments.selector, "/dd:")) return runOnDescription(arguments);
  reportInsufficientParameter();
  return 0;
}
