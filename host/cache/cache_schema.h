// The tables of a cache.
#pragma once

#include "cache/database.h"

namespace brindle::host {

// Creates the tables in an empty database. Raises CacheError (a reason without the name) unless the
// database then has our id, our version and our tables, and passes its check; and DatabaseError.
void prepare_cache_schema(const Database& database);

}  // namespace brindle::host
