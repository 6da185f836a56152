#include "simulator/state/state.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

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
  const auto* const bytes = reinterpret_cast<const char*>(sqlite().column_text(statement, column));
  const std::string_view text(bytes, static_cast<size_t>(sqlite().column_bytes(statement, column)));
  if (!text::isUtf8(text)) throw StateError("cannot be used: it has a string that is not UTF-8");
  return std::string(text);
}

StateValue valueColumn(sqlite3_stmt* statement, int column) {
  if (sqlite().column_type(statement, column) == SQLITE_INTEGER) return sqlite().column_int64(statement, column);
  return textColumn(statement, column);
}

StateChange changeIn(sqlite3_stmt* row) {
  const int32_t device = sqlite().column_int(row, 0);
  const std::string name = textColumn(row, 1);
  const std::optional<Item> item = parseItem(name);
  if (!item) throw StateError(foreignItem(device, name));
  return {device, *item, valueColumn(row, 2)};
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

State::Transaction::Transaction(State& state) : state_(state) {
  // Not by SQLite, which would leave the file's mode to the umask, and would not create its directory.
  state_.file_.create();
  try {
    state_.open();
    state_.execute("BEGIN IMMEDIATE");
  } catch (...) {
    state_.close();
    throw;
  }
}

State::Transaction::~Transaction() {
  // Rolls back, and lets the next call find a file that was deleted and created again meanwhile.
  if (!isComplete_) state_.close();
}

void State::Transaction::commit(const std::vector<StateChange>& changes) {
  state_.save(changes);
  isComplete_ = true;
}

bool State::refresh(StateContents& contents) {
  if (!database_ && !file_.exists()) return false;
  open();
  // Not known until all is read: after a failure the next call starts over.
  const std::optional<int64_t> seen = std::exchange(seenVersion_, std::nullopt);
  const int64_t version = queryNumber(version_);
  if (version != seen) contents = load();
  seenVersion_ = version;
  return version != seen;
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
    // It may have failed after the changes were in.
    if (!isSaved(changes)) throw;
  }
  hasTable_ = true;
}

bool State::isSaved(const std::vector<StateChange>& changes) {
  close();
  open();
  const StateContents saved = load();
  return std::all_of(changes.begin(), changes.end(), [&](const StateChange& change) {
    const auto found = saved.find({change.device, change.item});
    return (found == saved.end() ? StateValue() : found->second) == change.value;
  });
}

void State::open() {
  if (version_) return;
  sqlite3* database = nullptr;
  // SQLITE_OPEN_NOFOLLOW refuses links in the directories of the path, too, so those are resolved before.
  const int status = sqlite().open_v2(file_.resolvedPath().c_str(), &database,
                                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_EXRESCODE, nullptr);
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
  put_.reset();
  version_.reset();
  database_.reset();
  seenVersion_.reset();
}

StateContents State::load() {
  StateContents loaded;
  const SqliteStatement schema = prepare("SELECT group_concat(sql, ';') FROM sqlite_schema");
  if (sqlite().step(schema.get()) != SQLITE_ROW) fail();
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

  sqlite().bind_int(statement, 1, change.device);
  const std::string item = nameOf(change.item);
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
  sqlite().reset(statement.get());
  if (status != SQLITE_ROW) fail();
  return number;
}

SqliteStatement State::prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite().prepare_v2(database_.get(), sql, -1, &statement, nullptr) != SQLITE_OK) fail();
  return SqliteStatement(statement);
}

void State::fail() const {
  const int lastError = errno;
  const int status = sqlite().extended_errcode(database_.get());
  const int kind = status & 0xFF;
  // SQLite takes a file system without locks for another process that has the lock.
  const bool lacksLocks = kind == SQLITE_BUSY && lastError == ENOLCK;
  const bool isLock = lacksLocks || kind == SQLITE_PERM || status == SQLITE_IOERR_LOCK ||
                      status == SQLITE_IOERR_RDLOCK || status == SQLITE_IOERR_UNLOCK;
  const bool isDirectory = status == SQLITE_READONLY_DIRECTORY;
  const bool isOpening = kind == SQLITE_CANTOPEN;
  const char* const what = isLock        ? "cannot be locked: "
                           : isDirectory ? "its directory cannot be written: "
                           : isOpening   ? "cannot be opened: "
                                         : "cannot be used: ";
  // The system's reason says more than SQLite's name for it, where it is one of this call.
  const bool isSystems = isLock || isOpening || kind == SQLITE_IOERR;
  const int systems = isSystems ? sqlite().system_errno(database_.get()) : 0;
  const int reason = lacksLocks ? ENOLCK : isDirectory ? EACCES : systems;
  throw StateError(what + std::string(reason == 0 ? sqlite().errmsg(database_.get()) : std::strerror(reason)) +
                   StateError::Advice);
}

}  // namespace simulator
