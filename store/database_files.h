#pragma once

struct sqlite3;

// SQLite's way to the files of the store. It has its own because SQLite's usual locks belong to the
// process and vanish when any part of it closes any descriptor of the file, a backup for instance.
// These belong to the open file and hold against the usual ones of other programs.
namespace Tools::Store {

// The name to open a database with. Registered with SQLite on first use; null if that fails.
const char* databaseFiles();
// To be called when all databases are closed and the library goes.
void forgetDatabaseFiles();

// False for a database whose index could not be made or may not be written: this connection reads
// by an index of its own and cannot write.
bool isIndexShared(sqlite3* connection);

// False when the index of the write-ahead log was cut off under its map, as by a backup that is
// copied over it: touching it would end the program.
bool isIndexWhole(sqlite3* connection);

}
