// Base64 both ways, against a model and against buffers of the exact size.

#include <climits>
#include <cstring>
#include <random>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/containers.h"
#include "support/base64_model.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::base64_decoding_model;
using kqsupt::tests::base64_model;
using kqsupt::tests::Guarded;
using kqsupt::tests::kStandardAlphabet;

constexpr std::string_view kUrlAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

std::mt19937 generator(6);

std::string random_bytes(size_t length) {
  std::string bytes;
  while (bytes.size() < length) {
    bytes += static_cast<char>(generator());
  }
  return bytes;
}

// Encodes the first `length` of the bytes; what comes after them is what is read after the input.
std::string encoded(const std::string& bytes, int32_t length, const char* alphabet = nullptr) {
  std::string text(bytes.size() * 4 / 3 + 8, '#');
  EXPECT_EQ(SMBase64Encode(text.data(), bytes.data(), length, alphabet), 0U);
  return text.c_str();
}
std::string encoded(const std::string& bytes) {
  return encoded(bytes, static_cast<int32_t>(bytes.size()));
}

std::string decoded(const std::string& text, int32_t length) {
  // The model tells how many bytes are there.
  const std::string whole = length > 0 ? text.substr(0, static_cast<size_t>(length)) : "";
  const size_t size = base64_decoding_model(whole).size();
  const Guarded<char> bytes(size + 1);
  const Guarded<char> characters(whole.data(), whole.size());
  EXPECT_EQ(SMBase64Decode(bytes.data(), characters.data(), length), 0U);
  EXPECT_EQ(bytes.data()[size], '\0') << "after the last byte";
  return std::string(bytes.data(), size);
}
std::string decoded(const std::string& text) {
  return decoded(text, static_cast<int32_t>(text.size()));
}

TEST(Base64Encode, WritesFourCharactersForThreeBytes) {
  EXPECT_EQ(encoded("Man"), "TWFu");
}

TEST(Base64Encode, WritesThePaddedTextsOfTheStandardWhenANulFollows) {
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("f"), "Zg==");
  EXPECT_EQ(encoded("fo"), "Zm8=");
  EXPECT_EQ(encoded("foo"), "Zm9v");
  EXPECT_EQ(encoded("foob"), "Zm9vYg==");
  EXPECT_EQ(encoded("fooba"), "Zm9vYmE=");
  EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
  EXPECT_EQ(encoded("Ma"), "TWE=");
}

TEST(Base64Encode, UsesEveryCharacterOfTheAlphabet) {
  std::string bytes;
  for (unsigned value = 0; value < 64; value += 4) {
    const unsigned bits = value << 18 | (value + 1) << 12 | (value + 2) << 6 | (value + 3);
    bytes += static_cast<char>(bits >> 16);
    bytes += static_cast<char>(bits >> 8);
    bytes += static_cast<char>(bits);
  }
  EXPECT_EQ(encoded(bytes), kStandardAlphabet);
}

TEST(Base64Encode, OfOneByteTakesHighBitsOfTheByteAfterItIntoTheSecondCharacter) {
  EXPECT_EQ(encoded(std::string("M\0", 2), 1), "TQ==");
  EXPECT_EQ(encoded("M\xF0", 1), "Tf==");
  EXPECT_EQ(encoded("M\x0F", 1), "TQ==");
}

TEST(Base64Encode, OfTwoBytesTakesTheTopTwoBitsOfTheByteAfterThemIntoTheThirdCharacter) {
  EXPECT_EQ(encoded(std::string("Ma\0", 3), 2), "TWE=");
  EXPECT_EQ(encoded("Ma\xC0", 2), "TWH=");
  EXPECT_EQ(encoded("Ma\x3F", 2), "TWE=");
}

TEST(Base64Encode, OfALongInputTakesTheByteAfterItToo) {
  EXPECT_EQ(encoded("123456789012M\xFF", 13), "MTIzNDU2Nzg5MDEyTf==");
  EXPECT_EQ(encoded("123456789012Ma\xFF", 14), "MTIzNDU2Nzg5MDEyTWH=");
}

TEST(Base64Encode, UsesTheCallersAlphabet) {
  EXPECT_EQ(encoded("\xFB\xFF\xBF", 3, kUrlAlphabet.data()), "-_-_");
  EXPECT_EQ(encoded("\xFB\xFF\xBF", 3), "+/+/");
  EXPECT_EQ(encoded("M\xFF", 1, kUrlAlphabet.data()), "Tf==");
}

TEST(Base64Encode, ReadsSixtyFourCharactersOfTheCallersAlphabet) {
  const Guarded<char> alphabet(kUrlAlphabet.data(), 64);
  const std::string bytes = random_bytes(1000);
  EXPECT_EQ(encoded(bytes, 1000, alphabet.data()), base64_model(bytes, 1000, kUrlAlphabet));
}

TEST(Base64Encode, TakesANegativeLengthAsNone) {
  for (const int32_t length : {-1, -2, -3, -4, -5, -100, INT_MIN}) {
    char text[2] = {'#', '#'};
    EXPECT_EQ(SMBase64Encode(text, nullptr, length, nullptr), 0U);
    EXPECT_EQ(text[0], '\0') << length;
    EXPECT_EQ(text[1], '#') << length;
    EXPECT_EQ(encoded("abc", length, kUrlAlphabet.data()), "") << length;
  }
}

TEST(Base64Encode, OfNothingReadsNothing) {
  const Guarded<char> text(1);
  const Guarded<char> nothing(0);
  EXPECT_EQ(SMBase64Encode(text.data(), nothing.data(), 0, nullptr), 0U);
  EXPECT_EQ(text.data()[0], '\0');
}

TEST(Base64Encode, BreaksNoLines) {
  EXPECT_EQ(encoded(std::string(9999, 'x')).find_first_not_of("eHh4"), std::string::npos);
}

// The input ends at an inaccessible page, with the byte after it where that is read, and so does
// the output.
TEST(Base64Encode, OfEveryLengthIsThatOfTheModelAndKeepsToItsBuffers) {
  for (size_t length = 0; length <= 120; ++length) {
    const std::string bytes = random_bytes(length + 1);
    const Guarded<char> in(bytes.data(), length + (length % 3 != 0 ? 1 : 0));
    for (const std::string_view alphabet : {kStandardAlphabet, kUrlAlphabet}) {
      const Guarded<char> out((length + 2) / 3 * 4 + 1);
      EXPECT_EQ(SMBase64Encode(out.data(), in.data(), static_cast<int32_t>(length),
                               alphabet == kStandardAlphabet ? nullptr : alphabet.data()),
                0U);
      EXPECT_EQ(out.end()[-1], '\0');
      EXPECT_EQ(std::string(out.data()), base64_model(bytes, length, alphabet)) << length;
    }
  }
}

TEST(Base64Decode, WritesThreeBytesForFourCharacters) {
  EXPECT_EQ(decoded("TWFu"), "Man");
}

TEST(Base64Decode, WritesFewerBytesWherePaddingIs) {
  EXPECT_EQ(decoded("TWE="), "Ma");
  EXPECT_EQ(decoded("TQ=="), "M");
  EXPECT_EQ(decoded("Zm9vYg=="), "foob");
}

TEST(Base64Decode, PassesOverCharactersThatMakeNoGroup) {
  EXPECT_EQ(decoded("TWF"), "");
  EXPECT_EQ(decoded("T"), "");
  EXPECT_EQ(decoded("TWFuT"), "Man");
  EXPECT_EQ(decoded("TWFuTW"), "Man");
  EXPECT_EQ(decoded("TWFuTWF"), "Man");
}

TEST(Base64Decode, TakesANegativeLengthAsNone) {
  for (const int32_t length : {0, -1, -2, -3, -4, -8, INT_MIN}) {
    EXPECT_EQ(decoded("TWFu", length), "") << length;
  }
}

TEST(Base64Decode, OfAGroupThatBeginsWithPaddingIsNothing) {
  for (const char* group : {"=WFu", "T=Fu", "==Fu", "=W=u", "=WF=", "T==u", "T=F=", "===u",
                            "==F=", "=W==", "T===", "===="}) {
    EXPECT_EQ(decoded(group), "") << group;
  }
}

TEST(Base64Decode, OfAGroupWithPaddingInThirdPlaceIsOneByte) {
  EXPECT_EQ(decoded("TW=="), "M");
  EXPECT_EQ(decoded("TW=u"), "M");
}

TEST(Base64Decode, GoesOnAfterPadding) {
  EXPECT_EQ(decoded("TQ==TWFu"), "MMan");
  EXPECT_EQ(decoded("====TWFuTWE=TWFu"), "ManMaMan");
  EXPECT_EQ(decoded("TWFuTWFuTWFuTQ==TWFuTWFuTWFuTWFu=WFuTWFu"), "ManManManMManManManManMan");
}

TEST(Base64Decode, DropsBitsThatThePaddingLeavesOver) {
  EXPECT_EQ(decoded("Tf=="), "M");
  EXPECT_EQ(decoded("TWH="), "Ma");
}

TEST(Base64Decode, CombinesCharactersOutsideTheAlphabetAsAllOnes) {
  EXPECT_EQ(decoded("!WFu"), "\xFD\x61\x6E");
  EXPECT_EQ(decoded("T!Fu"), "\x4F\xF1\x6E");
  EXPECT_EQ(decoded("TW!u"), "\x4D\x6F\xEE");
  EXPECT_EQ(decoded("TWF!"), "\x4D\x61\xFF");
  EXPECT_EQ(decoded("!!!!"), "\xFF\xFF\xFF");
  EXPECT_EQ(decoded("TW!="), "\x4D\x6F");
  EXPECT_EQ(decoded("T!=="), "\x4F");
}

TEST(Base64Decode, TakesEveryByteOutsideTheAlphabetTheSameWay) {
  for (int value = 0; value < 256; ++value) {
    const auto character = static_cast<char>(value);
    if (character == '=' || kStandardAlphabet.find(character) != std::string_view::npos) {
      continue;
    }
    EXPECT_EQ(decoded({'T', 'W', 'F', character}), "\x4D\x61\xFF") << value;
  }
}

TEST(Base64Decode, SkipsNoLineEnds) {
  EXPECT_EQ(decoded("TWFu\nTWFu"), base64_decoding_model("TWFu\nTWFu"));
  EXPECT_NE(decoded("TWFu\nTWFu"), "ManMan");
}

TEST(Base64Decode, TakesEachCharacterInEachPlace) {
  for (size_t place = 0; place < 20; ++place) {
    for (int value = 0; value < 256; ++value) {
      std::string text = "TWFuQUJDREVGR0hJSktM";
      text[place] = static_cast<char>(value);
      ASSERT_EQ(decoded(text), base64_decoding_model(text)) << place << ", " << value;
    }
  }
}

TEST(Base64Decode, OfEveryLengthIsThatOfTheModelAndKeepsToItsBuffers) {
  for (size_t length = 0; length <= 120; ++length) {
    for (const unsigned odd : {0U, 40U, 3U}) {  // one character in so many is not of the alphabet
      std::string text;
      for (size_t i = 0; i < length; ++i) {
        text += kStandardAlphabet[generator() % 64];
        if (odd != 0 && generator() % odd == 0) {
          text.back() = "=?\x80\n"[generator() % 4];
        }
      }
      EXPECT_EQ(decoded(text), base64_decoding_model(text)) << text;
    }
  }
}

TEST(Base64Decode, WorksInPlace) {
  for (const unsigned odd : {0U, 20U}) {
    std::string text;
    for (size_t i = 0; i < 1000; ++i) {
      text += odd != 0 && generator() % odd == 0 ? '=' : kStandardAlphabet[generator() % 64];
    }
    const std::string bytes = base64_decoding_model(text);
    EXPECT_EQ(SMBase64Decode(text.data(), text.data(), 1000), 0U);
    EXPECT_EQ(text.substr(0, bytes.size() + 1), bytes + '\0');
  }
}

TEST(Base64, GivesBackWhatWasEncoded) {
  for (size_t length = 0; length <= 200; ++length) {
    const std::string bytes = random_bytes(length);
    EXPECT_EQ(decoded(encoded(bytes)), bytes);
  }
}

}  // namespace
