/// The tables of a catalogue.
#ifndef VELMAR_TOOLKIT_SCHEMA_H
#define VELMAR_TOOLKIT_SCHEMA_H

#include <string>

#include "toolkit/catalog/Database.h"

namespace velmar::toolkit {

/// Makes the tables in an empty database, and brings those of an older version up to date. Throws
/// Failure, without a change, for a database of another kind or of a newer version.
void prepareCatalog(Database& database);
/// The same for one that is only read.
void checkCatalog(Database& database);

/// The columns of least and greatest of all own facts, with commas.
std::string factColumns();

}  // namespace velmar::toolkit

#endif
