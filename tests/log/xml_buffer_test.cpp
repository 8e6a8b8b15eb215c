// XML text, piece by piece.

#include <cstring>
#include <memory>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/log.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;

constexpr SMStatus kFailed = 0xFFFFFFFF;
const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

struct BufferFree {
  void operator()(SMXGBuf* buffer) const { SMXGBufFree(buffer); }
};
using Buffer = std::unique_ptr<SMXGBuf, BufferFree>;

Buffer new_buffer() {
  return Buffer(SMXGBufAlloc(64, 0));
}

std::string content(const Buffer& buffer) {
  EXPECT_EQ(buffer->string.content[buffer->string.length], '\0');
  return {buffer->string.content, buffer->string.length};
}

// Appends a text attribute.
SMStatus attribute(const Buffer& buffer, const char* name, const char* value) {
  return SMXGBufCatAttribute(buffer.get(), name, value, 0, SMXLT_TYPE_UTF8, nullptr);
}

class XmlBuffer : public testing::Test {
 protected:
  SMStatus value(const void* value, uint32_t size, uint32_t type,
                 const SMXGValueFormat* format = nullptr) {
    return SMXGBufCatNodeValue(buffer_.get(), value, size, type, format);
  }
  // The text that a value is written as.
  template <class T>
  std::string text_of(T value, uint32_t type, uint16_t flags = 0) {
    const SMXGValueFormat format{flags, 0};
    EXPECT_EQ(this->value(&value, sizeof value, type, &format), SM_STATUS_SUCCESS);
    std::string text = content(buffer_);
    buffer_ = new_buffer();
    return text;
  }
  Buffer buffer_ = new_buffer();
};

TEST(XmlAlloc, HasAtLeastSixtyFourBytes) {
  const Buffer small(SMXGBufAlloc(10, 1));
  EXPECT_EQ(small->string.capacity, 64U);
  EXPECT_EQ(content(small), kDeclaration);
  const Buffer none(SMXGBufAlloc(0, 0));
  EXPECT_EQ(none->string.capacity, 64U);
  EXPECT_EQ(content(none), "");
  const Buffer large(SMXGBufAlloc(100, 2));
  EXPECT_EQ(large->string.capacity, 100U);
  EXPECT_EQ(content(large), "") << "a declaration for 1 only";
}

TEST_F(XmlBuffer, RestartsWithExactlyTheCapacity) {
  ASSERT_EQ(SMXGBufCatEndNode(buffer_.get(), "old"), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufReAllocContent(buffer_.get(), 10, 0), buffer_->string.content);
  EXPECT_EQ(buffer_->string.capacity, 10U);
  EXPECT_EQ(content(buffer_), "");
  EXPECT_NE(SMXGBufReAllocContent(buffer_.get(), 10, 1), nullptr);
  EXPECT_EQ(content(buffer_), kDeclaration);
}

TEST_F(XmlBuffer, RestartedWithoutCapacityTakesNothing) {
  EXPECT_EQ(SMXGBufReAllocContent(buffer_.get(), 0, 1), nullptr);
  EXPECT_EQ(buffer_->string.content, nullptr);
  EXPECT_EQ(SMXGBufCatEndNode(buffer_.get(), "n"), SM_STATUS_NO_MEMORY);
  EXPECT_EQ(buffer_->string.content, nullptr);
  EXPECT_NE(SMXGBufReAllocContent(buffer_.get(), 8, 0), nullptr);
  EXPECT_EQ(SMXGBufReAllocContent(nullptr, 8, 0), nullptr);
}

TEST_F(XmlBuffer, GivesItsContentAway) {
  ASSERT_EQ(SMXGBufCatEndNode(buffer_.get(), "n"), SM_STATUS_SUCCESS);
  char* text = SMXGBufFreeGetContent(buffer_.release());
  EXPECT_STREQ(text, "</n>");
  SMXGBufFreeContent(text);
}

TEST(XmlFree, IgnoresNull) {
  SMXGBufFree(nullptr);
  SMXGBufFreeContent(nullptr);
  EXPECT_EQ(SMXGBufFreeGetContent(nullptr), nullptr);
}

TEST_F(XmlBuffer, WritesTagsAndAttributes) {
  const Buffer attributes = new_buffer();
  ASSERT_EQ(attribute(attributes, "a", "1"), SM_STATUS_SUCCESS);
  ASSERT_EQ(attribute(attributes, "b", "x"), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatBeginNode(buffer_.get(), "n", attributes.get()), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatEmptyNode(buffer_.get(), "e", attributes.get()), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatEndNode(buffer_.get(), "n"), SM_STATUS_SUCCESS);
  EXPECT_EQ(content(buffer_), "<n a=\"1\" b=\"x\"><e a=\"1\" b=\"x\" /></n>");
}

TEST_F(XmlBuffer, WritesTagsWithoutAttributes) {
  const Buffer none = new_buffer();
  EXPECT_EQ(SMXGBufCatBeginNode(buffer_.get(), "n", nullptr), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatBeginNode(buffer_.get(), "m", none.get()), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatEmptyNode(buffer_.get(), "e", none.get()), SM_STATUS_SUCCESS);
  EXPECT_EQ(content(buffer_), "<n><m><e />");
}

TEST_F(XmlBuffer, GrowsAsItIsAppendedTo) {
  const std::string name(1000, 'n');
  EXPECT_EQ(SMXGBufCatNode(buffer_.get(), name.c_str(), nullptr, "v", 2, SMXLT_TYPE_UTF8, nullptr),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(content(buffer_), "<" + name + ">v</" + name + ">");
}

TEST_F(XmlBuffer, NullBuffersAndNamesAreRefused) {
  EXPECT_EQ(SMXGBufCatBeginNode(nullptr, "n", nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatBeginNode(buffer_.get(), nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatEndNode(nullptr, "n"), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatEndNode(buffer_.get(), nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatEmptyNode(nullptr, "n", nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatEmptyNode(buffer_.get(), nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatAttribute(nullptr, "n", "v", 2, 13, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatAttribute(buffer_.get(), nullptr, "v", 2, 13, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatNodeValue(nullptr, "v", 2, 13, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatNode(nullptr, "n", nullptr, "v", 2, 13, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXGBufCatNode(buffer_.get(), nullptr, nullptr, "v", 2, 13, nullptr),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(content(buffer_), "");
}

TEST_F(XmlBuffer, IsNotItsOwnListOfAttributes) {
  ASSERT_EQ(attribute(buffer_, "a", "1"), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatBeginNode(buffer_.get(), "n", buffer_.get()), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(content(buffer_), "a=\"1\"");
}

TEST_F(XmlBuffer, AnAbsentValueIsAnEmptyElement) {
  EXPECT_EQ(SMXGBufCatNode(buffer_.get(), "n", nullptr, nullptr, 0, SMXLT_TYPE_U32, nullptr),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(content(buffer_), "<n></n>");
}

TEST_F(XmlBuffer, AnAbsentValueAloneIsNotFoundWhateverItsType) {
  EXPECT_EQ(value(nullptr, 0, SMXLT_TYPE_U32), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(value(nullptr, 0, 99), SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMXGBufCatAttribute(buffer_.get(), "a", nullptr, 0, SMXLT_TYPE_U32, nullptr),
            SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(content(buffer_), "");
}

TEST_F(XmlBuffer, UnknownTypeCodesFailAndLeaveTheBuffer) {
  const uint64_t number = 0;
  for (const uint32_t type : {15U, 16U, 17U, 32U, 36U, 41U, 47U, 51U, 99U, 0x0103U}) {
    EXPECT_EQ(value(&number, sizeof number, type), kFailed) << type;
    EXPECT_EQ(SMXGBufCatNode(buffer_.get(), "n", nullptr, &number, 8, type, nullptr), kFailed);
  }
  EXPECT_EQ(content(buffer_), "");
}

TEST_F(XmlBuffer, CodesThatTypedValuesDoNotKnowAnswerTheirStatus) {
  const uint64_t number = 0;
  for (const uint32_t type : {33U, 34U, 35U, 37U, 38U, 39U, 40U}) {
    EXPECT_EQ(value(&number, sizeof number, type), SM_STATUS_UNSUCCESSFUL) << type;
  }
  EXPECT_EQ(content(buffer_), "");
}

TEST_F(XmlBuffer, WritesNumbersAsTypedValuesDo) {
  EXPECT_EQ(text_of<uint16_t>(1, SMXLT_TYPE_BOOLEAN), "true");
  EXPECT_EQ(text_of<uint16_t>(2, SMXLT_TYPE_BOOLEAN), "false");
  EXPECT_EQ(text_of<int8_t>(-5, SMXLT_TYPE_S8), "-5");
  EXPECT_EQ(text_of<int16_t>(-5, SMXLT_TYPE_S16), "-5");
  EXPECT_EQ(text_of<int32_t>(INT32_MIN, SMXLT_TYPE_S32), "-2147483648");
  EXPECT_EQ(text_of<int64_t>(INT64_MIN, SMXLT_TYPE_S64), "-9223372036854775808");
  EXPECT_EQ(text_of<uint8_t>(5, SMXLT_TYPE_U8), "5");
  EXPECT_EQ(text_of<uint16_t>(5, SMXLT_TYPE_U16), "5");
  EXPECT_EQ(text_of<uint32_t>(31, SMXLT_TYPE_U32, SMXLT_FMT_HEX), "0x1f");
  EXPECT_EQ(text_of<uint64_t>(UINT64_MAX, SMXLT_TYPE_U64), "18446744073709551615");
  EXPECT_EQ(text_of<double>(2.5, SMXLT_TYPE_DOUBLE), "2.500");
  EXPECT_EQ(text_of<uint32_t>(1031, SMXLT_TYPE_LANGUAGE_ID), "de");
  EXPECT_EQ(text_of<int32_t>(0, SMXLT_TYPE_TIME).size(), 24U);
}

TEST_F(XmlBuffer, HasNoRoomForBinaryDigits) {
  const uint32_t number = 5;
  const SMXGValueFormat format{SMXLT_FMT_BASE2, 0};
  EXPECT_EQ(value(&number, 4, SMXLT_TYPE_U32, &format), SM_STATUS_BUFFER_TOO_SMALL);
  EXPECT_EQ(content(buffer_), "");
}

TEST_F(XmlBuffer, WritesBytesOfAnyNumber) {
  const std::string bytes(1000, '\xAB');
  EXPECT_EQ(value(bytes.data(), 1000, SMXLT_TYPE_BINARY), SM_STATUS_SUCCESS);
  EXPECT_EQ(content(buffer_).size(), 2000U);
  const SMXGValueFormat octal{SMXLT_FMT_OCTAL, 0};
  EXPECT_EQ(value(bytes.data(), 1000, SMXLT_TYPE_BINARY, &octal), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(content(buffer_).size(), 2000U);
}

TEST_F(XmlBuffer, WritesTextAsItIsUnlessItIsToBeEscaped) {
  const SMXGValueFormat plain{0, 0};
  const SMXGValueFormat escaped{0, 1};
  for (const uint32_t type : {13U, 48U, 50U}) {
    EXPECT_EQ(value("<&>", 0, type), SM_STATUS_SUCCESS);
    EXPECT_EQ(value("<&>", 0, type, &plain), SM_STATUS_SUCCESS);
    EXPECT_EQ(value("<&>", 0, type, &escaped), SM_STATUS_SUCCESS);
    EXPECT_EQ(content(buffer_), "<&><&>&lt;&amp;&gt;");
    buffer_ = new_buffer();
  }
}

TEST_F(XmlBuffer, AnEscapeLevelAboveSixteenCountsAsSixteen) {
  std::string sixteen = "&";
  for (int level = 0; level < 16; ++level) {
    sixteen += "amp;";
  }
  const ustring ucs2[] = {'&', 0};
  for (const uint8_t level : {uint8_t{16}, uint8_t{17}, uint8_t{255}}) {
    const SMXGValueFormat format{0, level};
    buffer_ = new_buffer();
    EXPECT_EQ(value("&", 0, SMXLT_TYPE_UTF8, &format), SM_STATUS_SUCCESS);
    EXPECT_EQ(value(ucs2, 0, SMXLT_TYPE_UCS2, &format), SM_STATUS_SUCCESS);
    EXPECT_EQ(content(buffer_), sixteen + sixteen) << int{level};
  }
}

TEST_F(XmlBuffer, TextHasTheSizeThatItIsGiven) {
  const Guarded<char> text("abc", 3);
  EXPECT_EQ(value(text.data(), 4, SMXLT_TYPE_UTF8), SM_STATUS_SUCCESS);
  EXPECT_EQ(value("abc", 3, SMXLT_TYPE_UTF8), SM_STATUS_SUCCESS);
  EXPECT_EQ(value("abc", 1, SMXLT_TYPE_UTF8), SM_STATUS_SUCCESS);
  EXPECT_EQ(content(buffer_), "abcab");
}

TEST_F(XmlBuffer, ConvertsUcs2) {
  const ustring text[] = {0xE9, '<', 0};
  const SMXGValueFormat escaped{0, 1};
  EXPECT_EQ(value(text, 0, SMXLT_TYPE_UCS2), SM_STATUS_SUCCESS);
  EXPECT_EQ(value(text, 0, 49, &escaped), SM_STATUS_SUCCESS);
  EXPECT_EQ(content(buffer_), "\xC3\xA9<\xC3\xA9&lt;");
  const ustring broken[] = {0xDC00, 0};
  EXPECT_EQ(value(broken, 0, SMXLT_TYPE_UCS2), kFailed);
  EXPECT_EQ(content(buffer_), "\xC3\xA9<\xC3\xA9&lt;");
}

TEST_F(XmlBuffer, AttributesAreSeparatedByOneBlank) {
  const uint32_t number = 7;
  const SMXGValueFormat escaped{0, 1};
  EXPECT_EQ(SMXGBufCatAttribute(buffer_.get(), "a", &number, 4, SMXLT_TYPE_U32, nullptr),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatAttribute(buffer_.get(), "b", "\"q\"", 0, SMXLT_TYPE_UTF8, &escaped),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(SMXGBufCatAttribute(buffer_.get(), "c", &number, 4, 99, nullptr), kFailed);
  EXPECT_EQ(content(buffer_), "a=\"7\" b=\"&quot;q&quot;\"");
}

std::string escaped(const std::string& text, uint32_t level, uint32_t capacity = 16) {
  const Guarded<char> guarded(text.c_str(), text.size() + 1);
  uint32_t size = capacity;
  char* copy = SMXGEscapeXMLUTF8Str(guarded.data(), &size, level);
  if (copy == nullptr) {
    return "(null)";
  }
  EXPECT_EQ(size, std::strlen(copy));
  std::string result = copy;
  SMFreeMem(copy);
  return result;
}

TEST(XmlEscape, WritesFiveCharactersAsEntities) {
  EXPECT_EQ(escaped("<a & 'b'>", 1), "&lt;a &amp; &apos;b&apos;&gt;");
  EXPECT_EQ(escaped("\"", 1), "&quot;");
  EXPECT_EQ(escaped("\t\xC3\xA9\x01", 1), "\t\xC3\xA9\x01");
  EXPECT_EQ(escaped("", 1), "");
}

// Each level escapes the result of the one before.
std::string escaped_by_model(const std::string& text) {
  std::string result;
  for (const char byte : text) {
    switch (byte) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&apos;";
        break;
      default:
        result += byte;
    }
  }
  return result;
}

TEST(XmlEscape, IsAppliedAsOftenAsTheLevelSays) {
  std::string expected = "x<&>'\"&y";
  for (uint32_t level = 1; level <= 16; ++level) {
    expected = escaped_by_model(expected);
    EXPECT_EQ(escaped("x<&>'\"&y", level), expected) << level;
  }
  EXPECT_EQ(escaped("x<&>'\"&y", 17), expected);
  EXPECT_EQ(escaped("x<&>'\"&y", 0xFFFFFFFF), expected);
  EXPECT_EQ(escaped("&", 2), "&amp;amp;");
}

// Wherever in a text they are, and however many.
TEST(XmlEscape, LongTextsAreEscapedAsShortOnesAre) {
  constexpr char kBytes[] = "a&b<c>d\"e'f\xC3\xA9";
  unsigned state = 1;
  for (size_t length = 0; length < 100; ++length) {
    for (size_t place = 0; place < length; ++place) {
      std::string text(length, 'x');
      text[place] = kBytes[1 + place % 5 * 2];
      EXPECT_EQ(escaped(text, 1), escaped_by_model(text));
    }
    std::string text;
    while (text.size() < length) {
      state = state * 1103515245 + 12345;
      text += kBytes[(state >> 16) % (sizeof kBytes - 1)];
    }
    EXPECT_EQ(escaped(text, 1), escaped_by_model(text));
    EXPECT_EQ(escaped(text, 2), escaped_by_model(escaped_by_model(text)));
  }
}

TEST(XmlEscape, NeedsNoCapacityToBeginWith) {
  for (uint32_t capacity = 0; capacity <= 8; ++capacity) {
    EXPECT_EQ(escaped("a<b", 1, capacity), "a&lt;b");
  }
}

TEST(XmlEscape, RefusesNullAndLevelZero) {
  uint32_t size = 7;
  EXPECT_EQ(SMXGEscapeXMLUTF8Str(nullptr, &size, 1), nullptr);
  EXPECT_EQ(SMXGEscapeXMLUTF8Str("a", nullptr, 1), nullptr);
  EXPECT_EQ(SMXGEscapeXMLUTF8Str("a", &size, 0), nullptr);
  EXPECT_EQ(size, 7U);
}

}  // namespace
