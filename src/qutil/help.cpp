#include "qutil/help.h"

#include <cstdio>

namespace {

constexpr wchar_t Help[] =
    LR"(Corvane DAQ device tool help.
Usage: qutil [/?] [/dn:Num [options] ]  [/dd:description [options]]
No option means to display the loaded devices list in system.
/dn:Num          :: Use the device number (Num) to specify the effective device.
/dd:Desc         :: Use the device Description (Desc) to specify the effective devices.
                 :: It supports wildcards(*, ?)  to specify multiple effective devices.
[Options]
-detail          :: Show detailed information about the pointed devices.
                 :: This is the default option of the /dn and /dd commands.
-cd:"New"        :: Change the description of device with "New" string.Targetstring support wildcards.
-ci:Num          :: Change board Id with Num value. Note, not all device support this action.
-fw              :: Show firmware and FPGA code information in device.
-fwo:"FilePath" [n ["ActivationCode"]]
                 :: Overwrite the firmware of specified chip ID n with "FilePath" file, and give the activation code.
                 :: If [n] is omitted, it means chip ID = 0.
                 :: Some devices, such as EtherCAT  module, need a password to process overwriting.
-cali:ai.auto    :: Execute Analog In auto calibration procedure. Note, not all device support it.
-cali:ai.reverse :: Use device backup AI adjusting code to overwrite current used.
-cali:ao.auto    :: Execute Analog Out auto calibration procedure. Note, not all device support it.
-cali:ao.reverse :: Use device backup AO adjusting code to overwrite current used.
-fusion ["dev1" ["dev2" ["dev3"[...]]]]
                 :: Display fused devices
                 :: Combine multiple devices(dev1,dev2,...)to one fusion device for use.
-defusion        :: Dissociate the specified fusion device.
)";

}  // namespace

void printHelp() { printf("%S\n", Help); }
