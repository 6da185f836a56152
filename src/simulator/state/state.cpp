#include "simulator/state/state.h"

#include <algorithm>
#include <string_view>

#include "text/utf8.h"

namespace simulator {

namespace {

// The whole schema of a state. A state is recognised by exactly these characters.
constexpr const char* Table =
    "CREATE TABLE change (device INTEGER NOT NULL, item TEXT NOT NULL, value NOT NULL,"
    " PRIMARY KEY (device, item)) WITHOUT ROWID";
// Marks a database as ours, for file(1) and its like: "VELQ".
constexpr const char* Mark = "PRAGMA application_id = 0x56454C51";
constexpr int LongestWaitMilliseconds = 60'000;

std::string textColumn(sqlite3_stmt* statement, int column) {
  // In this order: column_bytes() counts the bytes of the form that column_text() converts to.
  const auto* const bytes = reinterpret_cast<const char*>(sqlite().column_text(statement, column));
  const std::string_view text(bytes, static_cast<size_t>(sqlite().column_bytes(statement, column)));
  if (!text::isUtf8(text)) throw StateError("cannot be used: it has a string that is not UTF-8");
  return std::string(text);
}

StateChange changeIn(sqlite3_stmt* row) {
  const auto device = static_cast<int32_t>(sqlite().column_int64(row, 0));
  const std::string name = textColumn(row, 1);
  const std::optional<Item> item = parseItem(name);
  if (!item) throw StateError(foreignItem(device, name));
  if (sqlite().column_type(row, 2) == SQLITE_INTEGER) return {device, *item, sqlite().column_int64(row, 2)};
  return {device, *item, textColumn(row, 2)};
}

}  // namespace

void applyChange(StateContents& contents, const StateChange& change) {
  const std::pair key(change.device, change.item);
  if (std::holds_alternative<std::monostate>(change.value))
    contents.erase(key);
  else
    contents[key] = change.value;
}

std::string foreignItem(int32_t device, const std::string& item) {
  return "was written for another rig (device " + std::to_string(device) + " has no \"" + item +
         "\" here) and is not used; name another file with VELQ_STATE, or delete this one";
}

bool State::refresh(StateContents& contents) {
  if (!database_ && !file_.exists()) return false;
  open();
  // Not known until all is read: after a failure the next call starts over.
  const std::optional<int64_t> seen = std::exchange(seenVersion_, std::nullopt);
  // Ahead of the contents: a change in between is read again, not missed. Own commits do not change the version.
  const int64_t version = queryNumber(version_);
  if (version != seen) contents = load();
  seenVersion_ = version;
  return version != seen;
}

std::vector<StateChange> State::change(const std::function<void(std::vector<StateChange>& changes)>& decide) {
  // Not by SQLite, which would leave the file's mode to the umask, and would not create its directory.
  file_.create();
  std::vector<StateChange> changes;
  try {
    open();
    // A plain BEGIN would let others write between what `decide` reads and the first change.
    execute("BEGIN IMMEDIATE");
    decide(changes);
    save(changes);
  } catch (...) {
    // Rolls back, and lets the next call find a file that was deleted and created again meanwhile.
    close();
    throw;
  }
  return changes;
}

void State::save(const std::vector<StateChange>& changes) {
  if (changes.empty()) return execute("ROLLBACK");
  if (!hasTable_) {
    execute(Table);
    execute(Mark);
  }
  for (const StateChange& change : changes) store(change);
  try {
    execute("COMMIT");
  } catch (const StateError&) {
    // It may have failed after the changes were in, for example in the sync of the directory.
    if (!isSaved(changes)) throw;
  }
  hasTable_ = true;
}

bool State::isSaved(const std::vector<StateChange>& changes) {
  // A new connection sees what others will: it rolls back what the failed one could not.
  close();
  open();
  const StateContents saved = load();
  return std::all_of(changes.begin(), changes.end(), [&](const StateChange& change) {
    const auto found = saved.find({change.device, change.item});
    return (found == saved.end() ? StateValue() : found->second) == change.value;
  });
}

void State::open() {
  // The last one that is set below, so that a failure on the way there is not taken for an open database.
  if (version_) return;
  sqlite3* database = nullptr;
  // SQLITE_OPEN_NOFOLLOW refuses links in the directories of the path, too, so those are resolved before.
  const int status = sqlite().open_v2(file_.resolvedPath().c_str(), &database,
                                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE, nullptr);
  // Also after a failure, for which SQLite needs a handle to report the reason by.
  database_.reset(database);
  if (status != SQLITE_OK) fail();
  sqlite().busy_timeout(database, LongestWaitMilliseconds);
  // No SQL that the file contains is executed.
  for (const auto& [option, isOn] : {std::pair(SQLITE_DBCONFIG_DEFENSIVE, 1),
                                     {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                     {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                     {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0}}) {
    if (sqlite().db_config(database, option, isOn, nullptr) != SQLITE_OK) fail();
  }
  // Syncs the directory, too, when the journal is removed: otherwise a power cut could restore the old values.
  execute("PRAGMA synchronous = EXTRA");
  version_ = prepare("PRAGMA data_version");
}

void State::close() {
  // Statements first: SQLite does not close a database that has any.
  put_.reset();
  version_.reset();
  database_.reset();
  seenVersion_.reset();
}

StateContents State::load() {
  StateContents loaded;
  const SqliteStatement schema = prepare("SELECT group_concat(sql, ';') FROM sqlite_schema");
  if (sqlite().step(schema.get()) != SQLITE_ROW) fail();
  // Null, and so an empty string, in a file that was created but never written.
  const std::string found = textColumn(schema.get(), 0);
  hasTable_ = !found.empty();
  if (!hasTable_) return loaded;
  if (found != Table) throw StateError("is not a database of this simulator");
  const SqliteStatement rows = prepare("SELECT device, item, value FROM change");
  int status = sqlite().step(rows.get());
  for (; status == SQLITE_ROW; status = sqlite().step(rows.get())) applyChange(loaded, changeIn(rows.get()));
  if (status != SQLITE_DONE) fail();
  return loaded;
}

void State::store(const StateChange& change) {
  const bool erases = std::holds_alternative<std::monostate>(change.value);
  SqliteStatement erase;
  if (erases) erase = prepare("DELETE FROM change WHERE device = ? AND item = ?");
  // Prepared once, because renaming a fleet repeats it for each device.
  if (!erases && !put_) put_ = prepare("INSERT OR REPLACE INTO change VALUES (?, ?, ?)");
  sqlite3_stmt* const statement = erases ? erase.get() : put_.get();

  sqlite().bind_int64(statement, 1, change.device);
  const std::string item = nameOf(change.item);
  // Not copied: the strings live longer than the step, and the next use binds others.
  sqlite().bind_text(statement, 2, item.c_str(), -1, SQLITE_STATIC);
  if (const auto* const number = std::get_if<int64_t>(&change.value)) sqlite().bind_int64(statement, 3, *number);
  if (const auto* const text = std::get_if<std::string>(&change.value))
    sqlite().bind_text(statement, 3, text->c_str(), -1, SQLITE_STATIC);
  const int status = sqlite().step(statement);
  sqlite().reset(statement);
  if (status != SQLITE_DONE) fail();
}

void State::execute(const char* sql) {
  if (sqlite().exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

int64_t State::queryNumber(SqliteStatement& statement) {
  const int status = sqlite().step(statement.get());
  const int64_t number = status == SQLITE_ROW ? sqlite().column_int64(statement.get(), 0) : 0;
  // It ends the lock that reading takes, and leaves the error of the step in place.
  sqlite().reset(statement.get());
  if (status != SQLITE_ROW) fail();
  return number;
}

SqliteStatement State::prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite().prepare_v2(database_.get(), sql, -1, &statement, nullptr) != SQLITE_OK) fail();
  return SqliteStatement(statement);
}

void State::fail() const { throw sqliteError(database_.get()); }

}  // namespace simulator
