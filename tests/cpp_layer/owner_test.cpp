// Owners and guards release what they have once. That the real ones leave nothing behind is told by
// the leak checker.

#include <cstddef>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

#include "gtest/gtest.h"
#include "kqsupt.hpp"

namespace {

struct Handle {
  int released = 0;
};
void count(Handle* handle) {
  ++handle->released;
}
using Owner = kqsupt::owner<Handle, count>;
using Guard = kqsupt::guard<Handle, count>;

// Two names of one object: compilers warn of a move to the same name.
template <class T>
void move_assign(T& to, T& from) {
  to = std::move(from);
}

TEST(Owner, MovesAndDoesNotCopy) {
  EXPECT_FALSE(std::is_copy_constructible_v<Owner> || std::is_copy_assignable_v<Owner>);
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<Owner>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<Owner>);
  EXPECT_FALSE(std::is_copy_constructible_v<kqsupt::record>);
  EXPECT_FALSE(std::is_copy_constructible_v<Guard>);
  EXPECT_FALSE(std::is_copy_constructible_v<kqsupt::tree<int>>);
}

TEST(Owner, IsNoBiggerThanItsHandle) {
  EXPECT_EQ(sizeof(kqsupt::record), sizeof(void*));
  EXPECT_EQ(sizeof(kqsupt::mutex_guard), sizeof(void*));
}

TEST(Owner, ReleasesOnceAtTheEndOfItsScope) {
  Handle handle;
  { const Owner owner(&handle); }
  EXPECT_EQ(handle.released, 1);
}

TEST(Owner, OfNothingReleasesNothing) {
  const Owner owner;
  EXPECT_FALSE(owner);
  EXPECT_EQ(owner.get(), nullptr);
}

TEST(Owner, ThatWasMovedFromReleasesNothing) {
  Handle handle;
  {
    Owner first(&handle);
    const Owner second(std::move(first));
    EXPECT_FALSE(first);
    EXPECT_EQ(second.get(), &handle);
  }
  EXPECT_EQ(handle.released, 1);
}

TEST(Owner, ReleasesWhatItHadWhenAnotherIsMovedToIt) {
  Handle one;
  Handle other;
  {
    Owner first(&one);
    Owner second(&other);
    first = std::move(second);
    EXPECT_EQ(one.released, 1);
    EXPECT_EQ(other.released, 0);
  }
  EXPECT_EQ(one.released, 1);
  EXPECT_EQ(other.released, 1);
}

TEST(Owner, MovedToItselfKeepsItsHandle) {
  Handle handle;
  {
    Owner owner(&handle);
    move_assign(owner, owner);
    EXPECT_EQ(owner.get(), &handle);
    EXPECT_EQ(handle.released, 0);
  }
  EXPECT_EQ(handle.released, 1);
}

TEST(Owner, HandsItsHandleOut) {
  Handle handle;
  {
    Owner owner(&handle);
    EXPECT_EQ(owner.release(), &handle);
  }
  EXPECT_EQ(handle.released, 0);
}

TEST(Owner, ResetReleasesNowAndNotAgain) {
  Handle handle;
  {
    Owner owner(&handle);
    owner.reset();
    EXPECT_EQ(handle.released, 1);
    owner.reset();
  }
  EXPECT_EQ(handle.released, 1);
}

TEST(Owner, ResetToItsOwnHandleKeepsIt) {
  Handle handle;
  {
    Owner owner(&handle);
    owner.reset(&handle);
    EXPECT_EQ(handle.released, 0);
  }
  EXPECT_EQ(handle.released, 1);
}

TEST(Guard, UnlocksOnceAtTheEndOrBefore) {
  Handle handle;
  { const Guard guard(&handle); }
  EXPECT_EQ(handle.released, 1);
  {
    Guard guard(&handle);
    guard.unlock();
    EXPECT_EQ(handle.released, 2);
    EXPECT_FALSE(guard);
  }
  EXPECT_EQ(handle.released, 2);
}

TEST(Guard, ThatWasDismissedUnlocksNothing) {
  Handle handle;
  {
    Guard guard(&handle);
    guard.dismiss();
  }
  EXPECT_EQ(handle.released, 0);
}

TEST(Guard, MovesWithWhatItHolds) {
  Handle handle;
  {
    Guard outer;
    {
      Guard inner(&handle);
      outer = std::move(inner);
    }
    EXPECT_EQ(handle.released, 0);
  }
  EXPECT_EQ(handle.released, 1);
}

TEST(Memory, KeepsItsContentWhenItGrows) {
  kqsupt::memory block = *kqsupt::memory::allocate(4);
  std::memcpy(block.get(), "fan", 4);
  ASSERT_TRUE(block.resize(100000));
  EXPECT_STREQ(static_cast<char*>(block.get()), "fan");
  EXPECT_EQ(block.resize(0).code(), kqsupt::status::invalid_parameter);
}

TEST(SizedStrings, OwnTheirBuffer) {
  kqsupt::utf8_buffer text = *kqsupt::utf8_buffer::create(4);
  ASSERT_TRUE(text.append("fan speed"));
  ASSERT_TRUE(text.append(""));
  kqsupt::utf8_buffer moved(std::move(text));
  EXPECT_EQ(text.view(), "");
  EXPECT_EQ(text.append("x").code(), kqsupt::status::invalid_parameter);
  move_assign(moved, moved);
  EXPECT_EQ(moved.view(), "fan speed");
  text = std::move(moved);
  EXPECT_EQ(text.view(), "fan speed");
  SMSSUTF8Str raw = text.release();
  EXPECT_STREQ(raw.content, "fan speed");
  SMSSUTF8StrFree(&raw);
  EXPECT_EQ(kqsupt::utf8_buffer::create(0).code(), kqsupt::status::invalid_parameter);
}

TEST(SizedStrings, FreeTheirBufferWhenAnotherIsMovedToThem) {
  kqsupt::utf8_buffer text = *kqsupt::utf8_buffer::create(4);
  kqsupt::utf8_buffer other = *kqsupt::utf8_buffer::create(4);
  ASSERT_TRUE(text.append("fan"));
  ASSERT_TRUE(other.append("disk"));
  text = std::move(other);
  EXPECT_EQ(text.view(), "disk");
  EXPECT_EQ(other.view(), "");
  kqsupt::ucs2_buffer wide = *kqsupt::ucs2_buffer::create(4);
  kqsupt::ucs2_buffer other_wide = *kqsupt::ucs2_buffer::create(4);
  ASSERT_TRUE(wide.append(u"fan"));
  ASSERT_TRUE(other_wide.append(u"disk"));
  wide = std::move(other_wide);
  EXPECT_EQ(wide.text(), u"disk");
  EXPECT_EQ(other_wide.text(), u"");
}

TEST(SizedStrings, HaveNoBufferOf4GiB) {
  constexpr size_t kMost = std::numeric_limits<size_t>::max();
  EXPECT_FALSE(kqsupt::utf8_buffer::create(kMost));
  EXPECT_FALSE(kqsupt::ucs2_buffer::create(kMost));
  EXPECT_FALSE(kqsupt::xml_buffer::create(false, kMost));
}

TEST(SizedStrings, OfUcs2TextOwnTheirs) {
  kqsupt::ucs2_buffer text = *kqsupt::ucs2_buffer::create(4);
  ASSERT_TRUE(text.append(u"\u00E4\u20AC"));
  ASSERT_TRUE(text.append(u" fan"));
  kqsupt::ucs2_buffer moved = std::move(text);
  move_assign(moved, moved);
  EXPECT_EQ(moved.text(), u"\u00E4\u20AC fan");
  EXPECT_EQ(moved.append(std::u16string_view(u"a\0b", 3)).code(),
            kqsupt::status::invalid_parameter);
  text = std::move(moved);
  EXPECT_EQ(text.text().size(), 6U);
  text.reset();
  EXPECT_EQ(text.text(), u"");
}

}  // namespace
