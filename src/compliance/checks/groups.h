// Fusion devices while they are created, changed and dissolved.
#pragma once

#include <optional>

#include "compliance/checks/check.h"

namespace compliance {

using Children = std::vector<int32_t>;

/// The fusion devices that a check has created, and all else as it was before. After each call it is noted what is
/// otherwise.
class Groups {
 public:
  explicit Groups(const CheckContext& context) : context_(context) {}

  /// Dissolves those that are left.
  ~Groups();
  Groups(const Groups&) = delete;
  Groups& operator=(const Groups&) = delete;

  /// The devices that were listed before, in their order.
  const Children& devices() const { return devices_; }

  /// Creates a fusion device and returns its number; nothing when the library refuses, which has to be with the status
  /// that tools understand.
  std::optional<int32_t> create(const Children& children);

  /// Tries to create one that has to be refused.
  void expectNoGroupOf(const Children& children);

  /// Adds children. Returns whether the library has, which has to be what it returned for the check before.
  bool add(int32_t number, const Children& added);

  /// Tries to add children that have to be refused.
  void expectNotAdded(int32_t number, const Children& added);

  /// Removes children of the fusion device; the last of them ends it.
  void remove(int32_t number, const Children& removed);

  /// Tries to remove what has to be refused.
  void expectNotRemoved(int32_t number, const Children& removed);

  /// Outside of all groups.
  const Findings& findings() const { return context_.findings; }

  /// At the group of this number.
  Findings at(int32_t number) const { return findings().at("fusion device " + std::to_string(number)); }

  /// Looks at the groups, and that there are no others.
  void look(const std::string& after);

  /// Looks at all devices, in this process and in the next.
  void lookAtAll(const std::string& after) const;

 private:
  struct Group {
    std::set<int32_t> children;
    std::wstring description;  ///< as first seen

    Children sortedChildren() const { return {children.begin(), children.end()}; }
  };

  void expectAsWanted(Snapshot found, const std::string& when) const;

  const CheckContext& context_;
  const Children devices_ = listedNumbers();
  std::map<int32_t, Group> groups_;
  std::set<int32_t> used_;  ///< numbers that groups have had
};

}  // namespace compliance
