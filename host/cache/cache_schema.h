// The tables of a cache.
#pragma once

#include "cache/database.h"

namespace brindle::host {

// Makes the tables in an empty database. Raises CacheError, with a reason alone, unless the
// database then has our id, our version and our tables, and is whole; and DatabaseError.
void prepare_cache_schema(const Database& database);

}  // namespace brindle::host
