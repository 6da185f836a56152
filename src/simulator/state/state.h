// The state: what commands changed, in an SQLite database beside the rig with one row a changed item. Deleting the file
// is a reset. Several processes use it at once; each change is one transaction.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "simulator/rig/item.h"
#include "simulator/state/sqlite.h"
#include "simulator/state/state_file.h"

namespace simulator {

/// A changed value: a string in UTF-8, a number, or nothing, which reverts the change.
using StateValue = std::variant<std::monostate, int64_t, std::string>;

/// One changed item of one device.
struct StateChange {
  int32_t device;
  Item item;
  StateValue value;
};

/// All changed items, by device and item.
using StateContents = std::map<std::pair<int32_t, Item>, StateValue>;

/// Applies one change to `contents`.
void applyChange(StateContents& contents, const StateChange& change);

/// What is wrong with a state that has an item, by name, that its device does not have in the rig.
std::string foreignItem(int32_t device, const std::string& item);

/// The database.
class State {
 public:
  /// Opens nothing yet: a file that does not exist is an empty state.
  explicit State(const StateFile& file) : file_(file) {}

  /// Brings `contents` up to date when another process changed anything since the last call. Returns whether it did.
  /// Throws StateError.
  bool refresh(StateContents& contents);

  /// Saves the changes that `decide` collects, all or none, and returns them. No other process can write meanwhile.
  /// Creates the file when there is none, and waits up to a minute for other writers. Throws StateError, and what
  /// `decide` throws; nothing is saved then.
  std::vector<StateChange> change(const std::function<void(std::vector<StateChange>& changes)>& decide);

 private:
  void open();
  void close();
  void save(const std::vector<StateChange>& changes);
  bool isSaved(const std::vector<StateChange>& changes);
  void store(const StateChange& change);
  StateContents load();
  void execute(const char* sql);
  int64_t queryNumber(SqliteStatement& statement);
  SqliteStatement prepare(const char* sql);
  [[noreturn]] void fail() const;

  const StateFile& file_;
  SqliteDatabase database_;
  SqliteStatement version_;
  SqliteStatement put_;
  std::optional<int64_t> seenVersion_;  ///< of the contents that `refresh` returned last
  bool hasTable_ = false;
};

}  // namespace simulator
