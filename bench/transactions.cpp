// Executes COUNT transactions of one row each in a new SQLite file: transactions FILE COUNT. The table is that of a
// state.
#include <sqlite3.h>

#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
  if (argc != 3) return 1;
  sqlite3* database = nullptr;
  if (sqlite3_open(argv[1], &database) != SQLITE_OK) return 1;
  const auto run = [&](const char* sql) {
    if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) != SQLITE_OK) std::exit(1);
  };
  run("CREATE TABLE change (device INTEGER NOT NULL, item TEXT NOT NULL, value NOT NULL,"
      " PRIMARY KEY (device, item)) WITHOUT ROWID");
  sqlite3_stmt* put = nullptr;
  sqlite3_prepare_v2(database, "INSERT OR REPLACE INTO change VALUES (?, 'description', ?)", -1, &put, nullptr);
  const int count = std::atoi(argv[2]);
  for (int i = 0; i < count; ++i) {
    const std::string description = "QA-3216,Rack " + std::to_string(i / 16) + ",BID#" + std::to_string(i % 16) + "x";
    run("BEGIN IMMEDIATE");
    sqlite3_bind_int(put, 1, i);
    sqlite3_bind_text(put, 2, description.c_str(), -1, SQLITE_STATIC);
    if (sqlite3_step(put) != SQLITE_DONE) return 1;
    sqlite3_reset(put);
    run("COMMIT");
  }
  sqlite3_finalize(put);
  return sqlite3_close(database);
}
