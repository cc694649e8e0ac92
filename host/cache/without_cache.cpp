// Replaces run_cache.cpp in a build without SQLite.
#include "cache/run_cache.h"

namespace brindle::host {

namespace {

constexpr char kReason[] = "built without SQLite, which the cache needs";

}  // namespace

std::optional<std::string> reason_against_caching() {
    return kReason;
}

struct RunCache::State {};

RunCache::RunCache(const std::string&, std::string) {
    throw CacheError(kReason);
}

RunCache::~RunCache() = default;

std::optional<CachedAnswer> RunCache::find(const std::string&, const FileIdentity&) {
    return std::nullopt;
}

std::optional<CachedAnswer> RunCache::find_of(const std::string&, const std::string&,
                                              const FileIdentity&) {
    return std::nullopt;
}

void RunCache::keep(const std::string&, const FileIdentity&, CachedAnswer) {}

std::optional<std::string> RunCache::finish() {
    return std::nullopt;
}

std::int64_t RunCache::run() const {
    return 0;
}

std::int64_t RunCache::today() const {
    return 0;
}

// Not called without a cache.
std::optional<FileIdentity> identity_of(const std::string&) {
    return std::nullopt;
}

}  // namespace brindle::host
