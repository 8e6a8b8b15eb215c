// Typed values of INI files.

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "config/ini_fixture.h"
#include "kqsupt/frame.h"
#include "support/ucs2.h"

namespace {

using namespace std::string_literals;
using kqsupt::tests::Guarded;
using kqsupt::tests::Ini;

class IniTyped : public Ini {
 protected:
  template <class Value>
  struct Got {
    SMStatus status;
    Value value;
    uint32_t size;
    bool operator==(const Got&) const = default;
    friend void PrintTo(const Got& got, std::ostream* out) {
      *out << got.status << ": " << got.value << ", size " << got.size;
    }
  };
  template <class Value>
  Got<Value> read_as(uint32_t type, const char* key, Value before = 77, uint32_t size = 0,
                     const Value* fallback = nullptr) {
    Got<Value> got{0, before, size != 0 ? size : static_cast<uint32_t>(sizeof(Value))};
    got.status =
        SMReadINIPathFileValue("s", key, type, &got.value, &got.size, fallback,
                               fallback != nullptr ? sizeof *fallback : 0, path_.c_str(), 1);
    return got;
  }
  template <class Value>
  std::string written_as(uint32_t type, Value value, uint32_t size = sizeof(Value)) {
    put_file("[s]\nk=\n");
    const SMStatus status = SMWriteINIPathFileValue("s", "k", type, &value, size, path_.c_str(), 1);
    if (status != 0) {
      return "status " + std::to_string(status);
    }
    const std::string text = file();
    return text.substr(6, text.size() - 7);
  }
  void put_value(const std::string& value) { put_file("[s]\nk=" + value + "\n"); }
};

TEST_F(IniTyped, ABooleanIsTrueOrFalseInAnyCase) {
  const std::pair<const char*, int> kTexts[] = {
      {"TRUE", 1},   {"true", 1}, {"True x", 1}, {"FALSE", 0}, {"fAlSe ", 0},  {"  TRUE", 1},
      {"TRUEx", -1}, {"", -1},    {" ", -1},     {"1", -1},    {"TRUE\r", -1}, {"TRUE\t", -1}};
  for (const auto& [text, expected] : kTexts) {
    put_value(text);
    const Got<uint16_t> want = expected < 0 ? Got<uint16_t>{SM_STATUS_BAD_LENGTH, 77, 0}
                                            : Got<uint16_t>{0, static_cast<uint16_t>(expected), 2};
    EXPECT_EQ(read_as<uint16_t>(4, "k"), want) << text;
  }
}

TEST_F(IniTyped, ABooleanIsWrittenTrueForExactlyOne) {
  EXPECT_EQ(written_as<uint16_t>(4, 1), "TRUE");
  EXPECT_EQ(written_as<uint16_t>(4, 0), "FALSE");
  EXPECT_EQ(written_as<uint16_t>(4, 2), "FALSE");
  EXPECT_EQ(written_as<uint16_t>(4, 0xFFFF), "FALSE");
  EXPECT_EQ(written_as<uint16_t>(4, 1, 1), "status 264");
  EXPECT_EQ(written_as<uint16_t>(4, 1, 9), "TRUE");
}

TEST_F(IniTyped, UnsignedNumbersSaturateAt32Bits) {
  const std::pair<const char*, uint32_t> kTexts[] = {{"0", 0},
                                                     {"42", 42},
                                                     {"4294967295", 4294967295U},
                                                     {"4294967296", 4294967295U},
                                                     {"99999999999999999999", 4294967295U},
                                                     {"-1", 4294967295U},
                                                     {"-4294967295", 1},
                                                     {"-4294967296", 4294967295U},
                                                     {"  12abc", 12},
                                                     {"+7\r", 7},
                                                     {"", 0},
                                                     {"x", 0},
                                                     {"-", 0},
                                                     {"0x10", 0}};
  for (const auto& [text, value] : kTexts) {
    put_value(text);
    EXPECT_EQ(read_as<uint32_t>(5, "k"), (Got<uint32_t>{0, value, 4})) << text;
  }
}

TEST_F(IniTyped, SignedNumbersSaturateAt32Bits) {
  const std::pair<const char*, int32_t> kTexts[] = {{"-1", -1},
                                                    {"2147483647", INT32_MAX},
                                                    {"2147483648", INT32_MAX},
                                                    {"4294967295", INT32_MAX},
                                                    {"-2147483648", INT32_MIN},
                                                    {"-2147483649", INT32_MIN},
                                                    {"\t-12 x", -12},
                                                    {"abc", 0}};
  for (const auto& [text, value] : kTexts) {
    put_value(text);
    EXPECT_EQ(read_as<int32_t>(6, "k"), (Got<int32_t>{0, value, 4})) << text;
  }
}

TEST_F(IniTyped, Numbers64Saturate) {
  put_value("18446744073709551615");
  EXPECT_EQ(read_as<uint64_t>(7, "k"), (Got<uint64_t>{0, UINT64_MAX, 8}));
  put_value("18446744073709551616");
  EXPECT_EQ(read_as<uint64_t>(7, "k"), (Got<uint64_t>{0, UINT64_MAX, 8}));
  put_value("-9223372036854775808");
  EXPECT_EQ(read_as<int64_t>(8, "k"), (Got<int64_t>{0, INT64_MIN, 8}));
  put_value("9223372036854775808");
  EXPECT_EQ(read_as<int64_t>(8, "k"), (Got<int64_t>{0, INT64_MAX, 8}));
  put_value("none");
  EXPECT_EQ(read_as<int64_t>(8, "k"), (Got<int64_t>{0, 0, 8}));
  EXPECT_EQ(read_as<uint64_t>(7, "k"), (Got<uint64_t>{0, 0, 8}));
}

TEST_F(IniTyped, Numbers64HaveASignWhereTheirTypeDoes) {
  put_value("-5");
  EXPECT_EQ(read_as<uint64_t>(7, "k"), (Got<uint64_t>{0, 0, 8}));
  EXPECT_EQ(read_as<int64_t>(8, "k"), (Got<int64_t>{0, -5, 8}));
  put_value(" \v+5 x");
  EXPECT_EQ(read_as<uint64_t>(7, "k"), (Got<uint64_t>{0, 5, 8}));
  EXPECT_EQ(read_as<int64_t>(8, "k"), (Got<int64_t>{0, 5, 8}));
}

TEST_F(IniTyped, DoublesAreReadAsFarAsTheyGo) {
  put_value(" -1.5e3x");
  EXPECT_EQ(read_as<double>(9, "k"), (Got<double>{0, -1500.0, 8}));
  put_value("x");
  EXPECT_EQ(read_as<double>(9, "k"), (Got<double>{0, 0.0, 8}));
}

TEST_F(IniTyped, NumbersAreWrittenInDecimal) {
  EXPECT_EQ(written_as<uint32_t>(5, 0), "0");
  EXPECT_EQ(written_as<uint32_t>(5, UINT32_MAX), "4294967295");
  EXPECT_EQ(written_as<int32_t>(6, INT32_MIN), "-2147483648");
  EXPECT_EQ(written_as<int32_t>(6, INT32_MAX), "2147483647");
  EXPECT_EQ(written_as<uint64_t>(7, UINT64_MAX), "18446744073709551615");
  EXPECT_EQ(written_as<int64_t>(8, INT64_MIN), "-9223372036854775808");
  EXPECT_EQ(written_as<double>(9, 1.5), "1.50000000");
  EXPECT_EQ(written_as<double>(9, -0.000000004), "-0.00000000");
  EXPECT_EQ(written_as<double>(9, std::numeric_limits<double>::max()).size(), 309U + 9);
}

TEST_F(IniTyped, AValueThatIsTooSmallForItsTypeIsNotWritten) {
  EXPECT_EQ(written_as<uint32_t>(5, 1, 3), "status 264");
  EXPECT_EQ(written_as<int32_t>(6, 1, 3), "status 264");
  EXPECT_EQ(written_as<uint64_t>(7, 1, 7), "status 264");
  EXPECT_EQ(written_as<int64_t>(8, 1, 7), "status 264");
  EXPECT_EQ(written_as<double>(9, 1, 7), "status 264");
  EXPECT_EQ(file(), "[s]\nk=\n");
}

TEST_F(IniTyped, FixedTypesNeedAllPointers) {
  put_value("1");
  const uint32_t value = 5;
  for (const uint32_t type : {4U, 5U, 6U, 7U, 8U, 9U}) {
    const char* path = path_.c_str();
    EXPECT_EQ(SMWriteINIPathFileValue(nullptr, "k", type, &value, 0, path, 1), 2U);
    EXPECT_EQ(SMWriteINIPathFileValue("s", nullptr, type, &value, 0, path, 1), 2U);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, &value, 0, nullptr, 1), 2U);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, nullptr, 8, path, 1), SM_STATUS_BAD_LENGTH);
    uint32_t size = 1;
    uint64_t buffer = 77;
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", type, &buffer, &size, nullptr, 0, path, 1), 2U);
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", type, &buffer, nullptr, nullptr, 0, path, 1), 2U);
    size = 8;
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", type, nullptr, &size, nullptr, 0, path, 1), 2U);
    EXPECT_EQ(buffer, 77U);
  }
}

TEST_F(IniTyped, ADefaultServesForEveryFailure) {
  const uint32_t fallback = 9;
  put_file("[s]\nlong=" + std::string(8300, '1') + "\n");
  EXPECT_EQ(read_as<uint32_t>(5, "absent", 77, 4, &fallback),
            (Got<uint32_t>{SM_STATUS_KEY_NOT_FOUND, 9, 4}));
  EXPECT_EQ(read_as<uint32_t>(5, "absent"), (Got<uint32_t>{SM_STATUS_KEY_NOT_FOUND, 77, 0}));
  EXPECT_EQ(read_as<uint32_t>(5, "long", 77, 4, &fallback),
            (Got<uint32_t>{SM_STATUS_BUFFER_TOO_SMALL, 9, 4}));
  unlink(path_.c_str());
  EXPECT_EQ(read_as<uint32_t>(5, "k", 77, 4, &fallback),
            (Got<uint32_t>{SM_STATUS_FILE_OPEN_FAILED, 9, 4}));
  const uint16_t short_default = 9;
  uint32_t value = 77;
  uint32_t size = 4;
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 5, &value, &size, &short_default, 2, path_.c_str(), 1),
            SM_STATUS_FILE_OPEN_FAILED);
  EXPECT_EQ(value, 77U);
  EXPECT_EQ(size, 0U);
}

TEST_F(IniTyped, TheSizeStaysAsItWasOnSuccess) {
  put_value("5");
  uint64_t room = 0;
  uint32_t size = 8;
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 5, &room, &size, nullptr, 0, path_.c_str(), 1), 0U);
  EXPECT_EQ(size, 8U);
}

// ---- UCS-2 ----

const ustring kGruesse[] = {'g', 'r', 0xFC, 0xDF, 'e', 0};

TEST_F(IniTyped, WideTextIsConverted) {
  put_value("grüße");
  for (const uint32_t type : {2U, 3U}) {
    const Guarded<ustring> buffer(6);
    uint32_t size = 12;
    EXPECT_EQ(
        SMReadINIPathFileValue("s", "k", type, buffer.data(), &size, nullptr, 0, path_.c_str(), 1),
        0U);
    EXPECT_EQ(size, 12U);
    EXPECT_EQ(std::memcmp(buffer.data(), kGruesse, 12), 0);
    put_file("[s]\n");
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, kGruesse, 12, path_.c_str(), 1), 0U);
    EXPECT_EQ(file(), "[s]\nk=grüße\n");
  }
}

TEST_F(IniTyped, WideTextThatDoesNotFitTellsItsSize) {
  put_value("grüße");
  for (uint32_t capacity = 1; capacity < 12; ++capacity) {
    const Guarded<uint8_t> buffer(capacity, 0x55);
    uint32_t size = capacity;
    EXPECT_EQ(
        SMReadINIPathFileValue("s", "k", 3, buffer.data(), &size, kGruesse, 4, path_.c_str(), 1),
        SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 12U);
    EXPECT_EQ(buffer.data()[0], 0x55);
  }
}

TEST_F(IniTyped, WideTextNeedsABufferAndASize) {
  put_value("grüße");
  for (const uint32_t type : {2U, 3U}) {
    ustring buffer[8] = {77};
    const char* path = path_.c_str();
    uint32_t size = 0;
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", type, buffer, &size, nullptr, 0, path, 1), 2U);
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", type, buffer, nullptr, nullptr, 0, path, 1), 2U);
    size = sizeof buffer;
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", type, nullptr, &size, nullptr, 0, path, 1), 2U);
    EXPECT_EQ(buffer[0], 77);
  }
}

TEST_F(IniTyped, OnlyTextHasLists) {
  put_file("[s]\nk=1\n");
  const uint64_t fallback = 0;
  for (const uint32_t type : {2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U}) {
    const char* path = path_.c_str();
    uint64_t value = 77;
    uint32_t size = sizeof value;
    const auto read = [&](const char* section, const char* key) {
      return SMReadINIPathFileValue(section, key, type, &value, &size, &fallback, 2, path, 1);
    };
    EXPECT_EQ(read(nullptr, "k"), SM_STATUS_UNSUCCESSFUL) << type;
    EXPECT_EQ(read("s", nullptr), SM_STATUS_UNSUCCESSFUL) << type;
    EXPECT_EQ(read(nullptr, nullptr), SM_STATUS_UNSUCCESSFUL) << type;
    EXPECT_EQ(value, 77U);
    EXPECT_EQ(size, sizeof value);
  }
}

TEST_F(IniTyped, WideTextThatIsNoUtf8IsABadLength) {
  put_value("a\xFF");
  ustring buffer[8] = {77};
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 3, buffer, &size, nullptr, 0, path_.c_str(), 1),
            SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(size, 0U);
  EXPECT_EQ(buffer[0], 77);
}

TEST_F(IniTyped, AWideDefaultIsCutToTheBuffer) {
  put_file("[s]\n");
  ustring buffer[8] = {77, 77, 77};
  uint32_t size = 4;
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 3, buffer, &size, kGruesse, 12, path_.c_str(), 1),
            SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(buffer[0], 'g');
  EXPECT_EQ(buffer[1], 'r');
  EXPECT_EQ(buffer[2], 77);
}

TEST_F(IniTyped, AStrictDefaultHasTheSizeOfItsText) {
  put_file("[s]\n");
  ustring buffer[8] = {77};
  for (const uint32_t wrong : {2U, 10U, 11U, 13U}) {
    uint32_t size = sizeof buffer;
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", 2, buffer, &size, kGruesse, wrong, path_.c_str(), 1),
              2U)
        << wrong;
    EXPECT_EQ(buffer[0], 77);
  }
  uint32_t size = sizeof buffer;
  EXPECT_EQ(SMReadINIPathFileValue("s", "k", 2, buffer, &size, kGruesse, 12, path_.c_str(), 1),
            SM_STATUS_KEY_NOT_FOUND);
  EXPECT_EQ(size, 12U);
}

TEST_F(IniTyped, WideTextHasAtMost2048Bytes) {
  put_file("[s]\n");
  std::vector<ustring> text(1025, 0x20AC);
  text[1023] = 0;
  const char* path = path_.c_str();
  for (const uint32_t type : {2U, 3U}) {
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, text.data(), 2048, path, 1), 0U);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, text.data(), 2049, path, 1),
              SM_STATUS_BAD_LENGTH);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, text.data(), 0, path, 1),
              SM_STATUS_BAD_LENGTH);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, nullptr, 2, path, 1), SM_STATUS_BAD_LENGTH);
  }
  EXPECT_EQ(SMWriteINIPathFileValue("s", "k", 2, text.data(), 2046, path, 1), SM_STATUS_BAD_LENGTH);
  EXPECT_EQ(SMWriteINIPathFileValue("s", "k", 2, nullptr, 0, path, 1), 0U);
  EXPECT_EQ(file(), "[s]\n");
}

TEST_F(IniTyped, WideTextIsWrittenToItsTerminatorWhateverItsSize) {
  for (const uint32_t size : {1U, 2U, 5U, 11U, 12U, 13U, 2048U}) {
    put_file("[s]\n");
    const Guarded<ustring> value(kGruesse, 6);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", 3, value.data(), size, path_.c_str(), 1), 0U);
    EXPECT_EQ(file(), "[s]\nk=grüße\n") << size;
  }
}

TEST_F(IniTyped, WideTextNeedNotBeAligned) {
  for (const uint32_t type : {2U, 3U}) {
    put_file("[s]\n");
    const Guarded<uint8_t> room(13);
    uint8_t* odd = room.data() + (reinterpret_cast<uintptr_t>(room.data()) % 2 == 0 ? 1 : 0);
    std::memcpy(odd, kGruesse, 12);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", type, odd, 12, path_.c_str(), 1), 0U);
    EXPECT_EQ(file(), "[s]\nk=grüße\n");
  }
}

TEST_F(IniTyped, WideTextOfMoreThan8192BytesIsNotWritten) {
  put_file("[s]\n");
  std::vector<ustring> text(8194, 'x');
  text[8192] = 0;
  EXPECT_EQ(SMWriteINIPathFileValue("s", "k", 3, text.data(), 2, path_.c_str(), 1), 0U);
  EXPECT_EQ(file(), "[s]\nk=" + std::string(8192, 'x') + "\n");
  text[8192] = 'x';
  text[8193] = 0;
  EXPECT_EQ(SMWriteINIPathFileValue("s", "k", 3, text.data(), 2, path_.c_str(), 1),
            SM_STATUS_BAD_LENGTH);
}

TEST_F(IniTyped, WideTextWithHalfAPairIsNotWritten) {
  put_file("[s]\nk=1\n");
  const ustring half[] = {0xD800, 'a', 0};
  EXPECT_NE(SMWriteINIPathFileValue("s", "k", 3, half, sizeof half, path_.c_str(), 1), 0U);
  EXPECT_EQ(file(), "[s]\nk=1\n");
}

}  // namespace
