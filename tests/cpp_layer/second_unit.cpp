// The header alone, first and without anything before it.
#include "kqsupt.hpp"
// The tests' own.
#include "second_unit.h"

// Every class template of the header is compiled here, whole.
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
