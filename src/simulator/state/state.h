// The state: what commands changed, kept apart from the rig in an SQLite database with one row a changed item. Deleting
// the file is a reset. Several processes use it at once; each change is one transaction.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "simulator/state/sqlite.h"
#include "simulator/state/state_file.h"

namespace simulator {

/// A changed value: a text in UTF-8, a number, or nothing, which takes the change back.
using StateValue = std::variant<std::monostate, int64_t, std::string>;

/// One changed item of one device, "description" or "firmware 0" for example.
struct StateChange {
  int32_t device;
  std::string item;
  StateValue value;
};

/// All changed items, by device and item.
using StateContents = std::map<std::pair<int32_t, std::string>, StateValue>;

/// Puts one change into `contents`.
void apply(StateContents& contents, const StateChange& change);

/// The database.
class State {
 public:
  /// Opens nothing yet: a file that is not there is an empty state, and is made with the first change.
  explicit State(const StateFile& file) : file_(file) {}

  /// Brings `contents` up to date when another process changed anything since the last call. Returns whether it did.
  /// Throws StateError.
  bool refresh(StateContents& contents);

  /// Holds the file against writers, brings `contents` up to date, and keeps the changes that `decide` returns, all or
  /// none; they are in `contents` afterwards. `decide` learns whether `contents` were brought up to date. Throws
  /// StateError; nothing is kept then.
  void change(StateContents& contents, const std::function<std::vector<StateChange>(bool refreshed)>& decide);

 private:
  void open();
  void close();
  void keep(StateContents& contents, const std::vector<StateChange>& changes);
  bool isKept(const std::vector<StateChange>& changes);
  void store(const StateChange& change);
  void load(StateContents& contents);
  void execute(const char* sql);
  int64_t queryNumber(SqliteStatement& statement);
  SqliteStatement prepare(const char* sql);
  [[noreturn]] void fail() const;

  const StateFile& file_;
  SqliteDatabase database_;
  SqliteStatement version_;
  SqliteStatement put_;
  int64_t seenVersion_ = -1;
  bool hasTable_ = false;
};

}  // namespace simulator
