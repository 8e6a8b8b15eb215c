// Named objects: APR's global mutex over a record lock.

#include <apr_general.h>
#include <apr_global_mutex.h>

#include <cstdlib>
#include <string>

#include "named_bench.h"

namespace kqbench {
namespace {

struct AprMutex {
  apr_global_mutex_t* mutex = [] {
    apr_initialize();
    apr_pool_t* pool = nullptr;
    apr_pool_create(&pool, nullptr);
    apr_global_mutex_t* made = nullptr;
    const std::string path = std::string(std::getenv("TMPDIR")) + "/apr";
    require(apr_global_mutex_create(&made, path.c_str(), APR_LOCK_FCNTL, pool) == APR_SUCCESS);
    return made;
  }();
  void pair() {
    require(apr_global_mutex_lock(mutex) == APR_SUCCESS &&
            apr_global_mutex_unlock(mutex) == APR_SUCCESS);
  }
};

const bool kAdded = [] {
  add_named_pairs<AprMutex>(kNamedMutexRow, "APR");
  return true;
}();

}  // namespace
}  // namespace kqbench
