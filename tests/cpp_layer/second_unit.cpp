// The layer in a unit without exceptions and run-time type information, its header before any other:
// it needs none before it.
#include "kqsupt.hpp"
// The tests' own.
#include "second_unit.h"

// Templates whose every member is compiled here, whether it is used or not.
template class kqsupt::result<std::string>;
template class kqsupt::result<uint32_t>;
template class kqsupt::owner<SMEvent, SMEventDestroy>;
template class kqsupt::guard<SMRWLock, SMRWLReadLockRelease>;
template class kqsupt::basic_list<kqsupt::detail::singly_linked>;
template class kqsupt::basic_list<kqsupt::detail::doubly_linked>;
template class kqsupt::tree<int>;

const std::error_category& category_of_the_second_unit() {
  return kqsupt::status_category();
}

std::error_code error_of_the_second_unit() {
  return kqsupt::block_view(nullptr).find(1).error();
}
