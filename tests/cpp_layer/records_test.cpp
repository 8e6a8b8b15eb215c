// Records and blocks.

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt.hpp"

namespace {

using kqsupt::block;
using kqsupt::block_view;
using kqsupt::record;
using kqsupt::status;

record sensor(const std::string& name, uint32_t celsius) {
  record made = *record::create();
  EXPECT_TRUE(made.add_text(1, 3, name));
  EXPECT_TRUE(made.add_value(2, 1, celsius));
  return made;
}

TEST(Record, GivesBackWhatWasAdded) {
  record made = sensor("inlet", 24);
  EXPECT_EQ(made.count().value_or(0), 2U);
  EXPECT_EQ(made.text(1).value_or(""), "inlet");
  EXPECT_EQ(made.value<uint32_t>(2).value_or(0), 24U);
  EXPECT_EQ(made.at(1)->id, 2);
  EXPECT_EQ(made.find(1)->type, 3);
  EXPECT_EQ(made.find(1)->value.size(), 6U);
}

TEST(Record, RefusesAValueOfAnotherSize) {
  record made = sensor("a long name", 24);
  EXPECT_EQ(made.value<uint16_t>(2).code(), status::bad_length);
  EXPECT_EQ(made.value<uint32_t>(1).code(), status::buffer_too_small);
  EXPECT_EQ(made.value<uint64_t>(2).code(), status::bad_length);
}

TEST(Record, IsAsItWasAfterAFailure) {
  record made = sensor("inlet", 24);
  EXPECT_EQ(made.add_value(2, 1, uint32_t{1}).code(), status::already_exists);
  EXPECT_EQ(made.add_text(3, 3, std::string_view("a\0b", 3)).code(), status::invalid_parameter);
  EXPECT_EQ(made.add_value(0, 1, 1).code(), status::invalid_parameter);
  EXPECT_EQ(made.remove(9).code(), status::data_not_found);
  EXPECT_EQ(made.remove(0).code(), status::invalid_parameter);
  EXPECT_EQ(made.remove_at(2).code(), status::index_out_of_range);
  EXPECT_TRUE(made == sensor("inlet", 24));
}

TEST(Record, ReplacesAndRemoves) {
  record made = sensor("inlet", 24);
  EXPECT_TRUE(made.add_value(2, 1, uint32_t{25}, true));
  EXPECT_EQ(made.value<uint32_t>(2).value_or(0), 25U);
  EXPECT_TRUE(made.remove(1));
  EXPECT_EQ(made.text(1).code(), status::data_not_found);
  EXPECT_TRUE(made.clear());
  EXPECT_EQ(made.count().value_or(9), 0U);
}

TEST(Record, FreesAChildThatAnotherValueReplaces) {
  record parent = *record::create();
  record child = sensor("inlet", 24);
  ASSERT_TRUE(parent.add_child(1, child, false, 0x40));
  std::vector<record> children;
  children.push_back(sensor("inlet", 24));
  children.push_back(sensor("outlet", 31));
  ASSERT_TRUE(parent.add_children(2, children));
  ASSERT_TRUE(parent.add_value(1, 1, uint32_t{1}, true));
  ASSERT_TRUE(parent.add_text(2, 3, "none", true));
  EXPECT_EQ(parent.value<uint32_t>(1).value_or(0), 1U);
  EXPECT_EQ(parent.text(2).value_or(""), "none");
}

TEST(Record, KeepsAChildThatCouldNotBeReplaced) {
  record parent = *record::create();
  record child = sensor("inlet", 24);
  ASSERT_TRUE(parent.add_child(1, child));
  EXPECT_EQ(parent.add_value(1, 1, uint32_t{1}).code(), status::already_exists);
  const std::vector<char> bytes(65536);
  EXPECT_EQ(parent.add(1, 1, bytes.data(), bytes.size(), true).code(), status::out_of_space);
  const auto lent = parent.child(1);
  ASSERT_TRUE(lent);
  EXPECT_EQ(SMSDOConfigGetCount(*lent), 2U);
}

TEST(Record, TakesTheRecordOfABlockAsAChild) {
  const block inlet = *sensor("inlet", 24).to_block();
  record parent = *record::create();
  ASSERT_TRUE(parent.add_block(1, block_view(inlet)));
  const auto child = parent.child(1);
  ASSERT_TRUE(child);
  EXPECT_EQ(SMSDOConfigGetCount(*child), 2U);
  ASSERT_TRUE(parent.add_block(1, block_view(inlet), true));
  kqsupt::block_array array;
  ASSERT_TRUE(array.add(block_view(inlet)));
  ASSERT_TRUE(array.add(block_view(inlet)));
  ASSERT_TRUE(parent.add_block(2, array.view(), false, 0x20));
  EXPECT_EQ(parent.find(2)->type, SDO_TYPE_CONFIG | SDO_TYPE_FLAG_ARRAY | 0x20);
  EXPECT_EQ(parent.find(2)->value.size(), 2 * sizeof(void*));
}

TEST(Record, LosesNothingWhenABlockCannotBeAdded) {
  const block inlet = *sensor("inlet", 24).to_block();
  kqsupt::block_array array;
  ASSERT_TRUE(array.add(block_view(inlet)));
  record parent = sensor("outlet", 31);
  EXPECT_EQ(parent.add_block(1, block_view(inlet)).code(), status::already_exists);
  EXPECT_EQ(parent.add_block(1, array.view()).code(), status::already_exists);
  EXPECT_EQ(parent.add_block(0, block_view(inlet), true).code(), status::invalid_parameter);
  EXPECT_EQ(parent.add_block(3, block_view(nullptr)).code(), status::invalid_parameter);
  EXPECT_EQ(parent.add(3, SDO_TYPE_BINARY, inlet.data(), inlet.size()).code(),
            status::invalid_parameter);
  EXPECT_TRUE(parent == sensor("outlet", 31));
}

TEST(Record, CountsItsBlockAnew) {
  record made = sensor("inlet", 24);
  const uint32_t size = made.binary_size();
  // A value of 4 bytes lies in its record, and counts in full here.
  EXPECT_EQ(made.recalculate_binary_size(), size + 4);
  EXPECT_EQ(made.binary_size(), size + 4);
}

TEST(Record, GivesTextsOfAnyLength) {
  const std::string text(60000, 'x');
  record made = *record::create();
  ASSERT_TRUE(made.add_text(1, 3, text));
  EXPECT_EQ(made.text(1).value_or(""), text);
  const block bytes = *made.to_block();
  EXPECT_EQ(block_view(bytes).text(1).value_or(""), text);
  EXPECT_EQ(block_view(bytes).at(0)->text(), text);
  kqsupt::block_array array;
  ASSERT_TRUE(array.add(block_view(bytes)));
  EXPECT_EQ(array.view().element(0).value_or({}), bytes);
}

TEST(Record, OfNothingAnswersInvalidParameter) {
  record none;
  EXPECT_EQ(none.count().code(), status::invalid_parameter);
  EXPECT_EQ(none.add_value(1, 1, 1).code(), status::invalid_parameter);
  EXPECT_EQ(none.to_block().code(), status::invalid_parameter);
  EXPECT_FALSE(none.clone());
}

TEST(Record, TakesAChildOnlyWhenItIsAdded) {
  record child = sensor("inlet", 24);
  record parent = *record::create();
  EXPECT_EQ(parent.add_child(0, child).code(), status::invalid_parameter);
  EXPECT_TRUE(child);
  ASSERT_TRUE(parent.add_child(1, child));
  EXPECT_FALSE(child);
  const auto lent = parent.child(1);
  ASSERT_TRUE(lent);
  EXPECT_EQ(SMSDOConfigGetCount(*lent), 2U);
  EXPECT_EQ(parent.child(2).code(), status::data_not_found);
  EXPECT_EQ(parent.add(2, SDO_TYPE_CONFIG, "", 1).code(), status::invalid_parameter);
}

TEST(Record, TakesAnArrayOfChildrenOnlyWhenItIsAdded) {
  std::vector<record> children;
  children.push_back(sensor("inlet", 24));
  children.push_back(sensor("outlet", 31));
  record parent = *record::create();
  EXPECT_FALSE(parent.add_children(0, children));
  EXPECT_EQ(children.size(), 2U);
  ASSERT_TRUE(parent.add_children(1, children));
  EXPECT_TRUE(children.empty());
  EXPECT_TRUE(*parent.clone() == parent);
}

TEST(Record, SurvivesTheWayThroughItsBlock) {
  record parent = *record::create();
  record child = sensor("inlet", 24);
  ASSERT_TRUE(parent.add_child(7, child));
  const auto bytes = parent.to_block();
  ASSERT_TRUE(bytes);
  EXPECT_EQ(bytes->size(), parent.binary_size());
  const auto again = record::from_block(block_view(*bytes));
  ASSERT_TRUE(again);
  EXPECT_TRUE(*again == parent);
  EXPECT_TRUE(*again != sensor("inlet", 24));
}

TEST(Block, IsReadInPlace) {
  const block bytes = *sensor("inlet", 24).to_block();
  const block_view view(bytes);
  EXPECT_EQ(view.text(1).value_or(""), "inlet");
  EXPECT_EQ(view.value<uint32_t>(2).value_or(0), 24U);
  EXPECT_EQ(view.at(0)->text(), "inlet");
  EXPECT_EQ(view.count().value_or(0), 2U);
  EXPECT_EQ(view.size(), bytes.size());
  EXPECT_FALSE(view.is_array());
  EXPECT_EQ(view.find(9).code(), status::data_not_found);
  EXPECT_EQ(view.at(2).code(), status::index_out_of_range);
}

TEST(Block, GivesSmallValuesOutOfTheirSlot) {
  record made = *record::create();
  ASSERT_TRUE(made.add_value(1, 1, uint16_t{513}));
  ASSERT_TRUE(made.add_value(2, 1, uint8_t{7}));
  ASSERT_TRUE(made.add_value(3, 1, uint64_t{1} << 40));
  ASSERT_TRUE(made.add_text(4, 3, "ab"));
  const block bytes = *made.to_block();
  const block_view view(bytes);
  EXPECT_EQ(view.value<uint16_t>(1).value_or(0), 513);
  EXPECT_EQ(view.value<uint8_t>(2).value_or(0), 7);
  EXPECT_EQ(view.value<uint64_t>(3).value_or(0), uint64_t{1} << 40);
  EXPECT_EQ(view.text(4).value_or(""), "ab");
  EXPECT_EQ(view.value<uint32_t>(3).code(), status::buffer_too_small);
}

TEST(Block, IsFoundInABufferOnlyWhole) {
  block bytes = *sensor("inlet", 24).to_block();
  EXPECT_TRUE(block_view::in(bytes.data(), bytes.size()));
  EXPECT_FALSE(block_view::in(bytes.data(), bytes.size() - 1));
  EXPECT_FALSE(block_view::in(bytes.data(), 7));
  EXPECT_FALSE(block_view::in(nullptr, 100));
  bytes[0] ^= 0xFF;
  EXPECT_FALSE(block_view::in(bytes.data(), bytes.size()));
}

TEST(Block, IsWalkedInOrder) {
  record parent = *record::create();
  record child = sensor("inlet", 24);
  ASSERT_TRUE(parent.add_value(1, 1, 5));
  ASSERT_TRUE(parent.add_child(7, child));
  std::vector<uint32_t> ids;
  kqsupt::walk_callbacks callbacks;
  callbacks.entry = [](void* context, uint32_t*, uint32_t id, uint32_t, uint32_t, uint32_t,
                       uint32_t, uint32_t, const void*) -> SMStatus {
    static_cast<std::vector<uint32_t>*>(context)->push_back(id);
    return SM_STATUS_SUCCESS;
  };
  const block bytes = *parent.to_block();
  ASSERT_TRUE(block_view(bytes).walk(&ids, callbacks));
  EXPECT_EQ(ids, (std::vector<uint32_t>{1, 7, 1, 2}));
  EXPECT_EQ(block_view(nullptr).walk(&ids, callbacks).code(), status::invalid_parameter);
}

TEST(Block, ChangesItsSizeWithAValue) {
  block bytes = *sensor("inlet", 24).to_block();
  ASSERT_TRUE(kqsupt::set_data(bytes, 1, 3, "a much longer name", 19));
  EXPECT_EQ(block_view(bytes).size(), bytes.size());
  EXPECT_EQ(block_view(bytes).text(1).value_or(""), "a much longer name");
  const block before = bytes;
  EXPECT_EQ(kqsupt::set_data(bytes, 9, 3, "x", 1).code(), status::data_not_found);
  EXPECT_EQ(bytes, before);
}

TEST(Block, TakesAValueThatLiesInsideIt) {
  block bytes = *sensor("inlet", 24).to_block();
  const block before = bytes;
  ASSERT_TRUE(kqsupt::set_data(bytes, 1, 3, bytes.data(), bytes.size()));
  EXPECT_EQ(block_view(bytes).size(), bytes.size());
  EXPECT_EQ(block_view(bytes).find(1)->value, before);
  EXPECT_EQ(block_view(bytes).value<uint32_t>(2).value_or(0), 24U);
}

TEST(BlockArray, TakesAnElementThatLiesInsideIt) {
  const block inlet = *sensor("inlet", 24).to_block();
  kqsupt::block_array array;
  ASSERT_TRUE(array.add(block_view(inlet)));
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(array.add(block_view(array.bytes().data() + 8)));
  }
  EXPECT_EQ(array.view().count().value_or(0), 5U);
  EXPECT_EQ(array.view().element(4).value_or({}), inlet);
}

TEST(BlockArray, GivesBackItsElements) {
  const block inlet = *sensor("inlet", 24).to_block();
  const block outlet = *sensor("outlet", 31).to_block();
  kqsupt::block_array array;
  ASSERT_TRUE(array.add(block_view(inlet)));
  ASSERT_TRUE(array.add(block_view(outlet)));
  EXPECT_TRUE(array.view().is_array());
  EXPECT_EQ(array.view().count().value_or(0), 2U);
  EXPECT_EQ(array.view().element(1).value_or({}), outlet);
  EXPECT_EQ(array.view().element(2).code(), status::data_not_found);
  const auto records = record::from_array(array.view());
  ASSERT_TRUE(records);
  ASSERT_EQ(records->size(), 2U);
  EXPECT_TRUE(records->at(1) == sensor("outlet", 31));
}

TEST(BlockArray, RefusesWhatIsNoRecordsBlockAndStays) {
  kqsupt::block_array array;
  EXPECT_EQ(array.add(block_view(nullptr)).code(), status::invalid_parameter);
  EXPECT_EQ(array.add(array.view()).code(), status::invalid_parameter);
  record big = *record::create();
  const std::vector<char> bytes(60000);
  ASSERT_TRUE(big.add(1, 1, bytes.data(), bytes.size()));
  const block large = *big.to_block();
  ASSERT_TRUE(array.add(block_view(large)));
  EXPECT_EQ(array.add(block_view(large)).code(), status::buffer_too_small);
  EXPECT_EQ(array.view().size(), array.bytes().size());
  EXPECT_EQ(array.view().count().value_or(0), 1U);
  EXPECT_EQ(record::from_array(kqsupt::block_array().view())->size(), 0U);
}

}  // namespace
