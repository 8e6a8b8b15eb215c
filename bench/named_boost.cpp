// Named objects: Boost's, which lie in shared memory and have no holder that could die.

#include <boost/interprocess/sync/named_mutex.hpp>

#include "named_bench.h"

namespace kqbench {
namespace {

namespace interprocess = boost::interprocess;

struct BoostMutex {
  interprocess::named_mutex mutex{interprocess::open_or_create, "kqsupt-bench"};
  ~BoostMutex() { interprocess::named_mutex::remove("kqsupt-bench"); }
  void pair() {
    mutex.lock();
    mutex.unlock();
  }
};

const bool kAdded = [] {
  add_named_pairs<BoostMutex>(kNamedMutexRow, "Boost");
  return true;
}();

}  // namespace
}  // namespace kqbench
