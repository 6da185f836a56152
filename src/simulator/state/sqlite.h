// SQLite, loaded at its first use: most processes have no state, and loading it would double their cost.
#pragma once

#include <sqlite3.h>

#include <memory>

#include "simulator/state/state_file.h"

namespace simulator {

/// A function of SQLite, without its prefix.
#define LOADED_FUNCTION(name) \
  decltype(&sqlite3_##name) name = reinterpret_cast<decltype(&sqlite3_##name)>(find("sqlite3_" #name))

/// The functions that the state uses. The constructor loads the library until the process ends. Throws StateError.
class Sqlite {
  void* const library_ = load();

  static void* load();
  void* find(const char* function) const;

 public:
  LOADED_FUNCTION(open_v2);
  LOADED_FUNCTION(close);
  LOADED_FUNCTION(busy_timeout);
  LOADED_FUNCTION(db_config);
  LOADED_FUNCTION(errmsg);
  LOADED_FUNCTION(extended_errcode);
  LOADED_FUNCTION(system_errno);
  LOADED_FUNCTION(exec);
  LOADED_FUNCTION(prepare_v2);
  LOADED_FUNCTION(finalize);
  LOADED_FUNCTION(step);
  LOADED_FUNCTION(reset);
  LOADED_FUNCTION(bind_int64);
  LOADED_FUNCTION(bind_text);
  LOADED_FUNCTION(column_bytes);
  LOADED_FUNCTION(column_int64);
  LOADED_FUNCTION(column_text);
  LOADED_FUNCTION(column_type);
};

#undef LOADED_FUNCTION

/// The process's SQLite. Throws as its constructor.
const Sqlite& sqlite();

/// The error of the last call on this database, which has failed; errno is still that of the call.
StateError sqliteError(sqlite3* database);

struct SqliteDelete {
  void operator()(sqlite3* database) const { sqlite().close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite().finalize(statement); }
};

using SqliteDatabase = std::unique_ptr<sqlite3, SqliteDelete>;
using SqliteStatement = std::unique_ptr<sqlite3_stmt, SqliteDelete>;

}  // namespace simulator
