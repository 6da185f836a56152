// Parses a rig, reads a state if it is given one, and prints a string: read_all TEXT RIG [STATE]. What the simulator
// must do, written down straight and linked as usual.
#include <sqlite3.h>

#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

int main(int argc, char** argv) {
  if (argc < 3) return 1;
  std::ifstream file(argv[2]);
  const nlohmann::json rig = nlohmann::json::parse(file);
  int rows = 0;
  if (argc == 4) {
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(argv[3], &database, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) return 1;
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, "SELECT device, item, value FROM change", -1, &statement, nullptr);
    while (sqlite3_step(statement) == SQLITE_ROW) ++rows;
    sqlite3_finalize(statement);
    sqlite3_close(database);
  }
  std::cout << argv[1];
  return rig.at("devices").empty() || (argc == 4 && rows == 0) ? 1 : 0;
}
