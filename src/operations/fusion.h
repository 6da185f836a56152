// "-fusion": the children of fusion devices, shown and added. Devices opened to read a child are never released.
#pragma once

#include <velq/types.h>

#include <string>
#include <vector>

/// Prints the children of a fusion device. A record chosen by description gets its number. Returns 0, or -1 when the
/// device cannot be opened, is no fusion device or the library does not list its children.
int QueryFusionDevInfo(Automation::Velq::DeviceInformation& device);

/// Looks up the devices that the arguments from the fourth on describe. Stores their numbers in `children` (at least
/// argc - 3 entries) and appends each argument and a space to `names`; `childCount` and `wide` are not used. Returns 0,
/// or -1 at the first that is not found: its name is in the list, its number and all that follows are not.
int GetDeviceChildrenDevNum(int childCount, int* children, int argc, char** argv, std::wstring& wide,
                            std::string& names);

/// The devices that the arguments from the fourth on describe.
struct NamedChildren {
  int count() const { return static_cast<int>(numbers.size()); }

  std::vector<int> numbers;  ///< one an argument; -1 from the first on that was not found
  std::string names;         ///< the arguments, each followed by a space; ends with the first that was not found
};

/// Looks them up with `GetDeviceChildrenDevNum`. Whether all were found is left to the library, which refuses -1.
NamedChildren findNamedChildren(int argc, char** argv);

/// Adds children to a fusion device and prints all that it has then. `names` and `description` are shown, `wide` is
/// not used. Returns 0, or -1 when the library refuses or fails.
int FusionDeviceAddChildren(int fusionNumber, int childCount, int* children, std::wstring wide, std::string names,
                            std::string description);

/// "/dn:Num -fusion child...": adds the devices that the arguments from the fourth on describe to the device. Returns
/// 0, after a refusal too, or -1 when the device cannot be opened.
int extendFusionDevice(int argc, char** argv, Automation::Velq::DeviceInformation& device);
