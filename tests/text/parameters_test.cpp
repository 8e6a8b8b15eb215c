// Parameters of the form "name=value".

#include <string>
#include <vector>

#include "gtest/gtest.h"
#include "kqsupt/text.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::Guarded;

// A list of parameters in memory that ends where they do.
class Parameters {
 public:
  Parameters(std::initializer_list<const char*> texts) : texts_(texts.begin(), texts.end()) {
    for (std::string& text : texts_) {
      pointers_.push_back(text.data());
    }
  }
  [[nodiscard]] int32_t count() const { return static_cast<int32_t>(pointers_.size()); }
  [[nodiscard]] char* const* texts() const { return pointers_.data(); }

  [[nodiscard]] int32_t index(const char* name, uint32_t ignore_case = 0) const {
    return SMNVPGetParamIndexByUTF8Name(count(), texts(), name, ignore_case);
  }
  [[nodiscard]] const char* value(const char* name, uint32_t ignore_case = 0) const {
    return SMNVPGetUTF8ParamValueByUTF8Name(count(), texts(), name, ignore_case);
  }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

TEST(Parameter, NameIsCutOffInPlace) {
  char text[] = "name=value=more";
  EXPECT_EQ(SMNVPGetUTF8ParamName(text), text);
  EXPECT_STREQ(text, "name");
  EXPECT_STREQ(text + 5, "value=more");
}

TEST(Parameter, ValueIsWhatFollowsTheFirstEqualsSign) {
  char text[] = "name=value=more";
  EXPECT_EQ(SMNVPGetUTF8ParamValue(text), text + 5);
  EXPECT_STREQ(text, "name=value=more");
}

TEST(Parameter, MayHaveAnEmptyValue) {
  char text[] = "a=";
  EXPECT_EQ(SMIsValidParam(text), 1U);
  EXPECT_STREQ(SMNVPGetUTF8ParamValue(text), "");
  EXPECT_STREQ(SMNVPGetUTF8ParamName(text), "a");
}

TEST(Parameter, NeedsAnEqualsSignAndANameBeforeIt) {
  for (const char* text : {"", "a", "=", "=x", "=x=y", "name"}) {
    const size_t size = std::string(text).size() + 1;
    const Guarded<char> param(text, size);
    EXPECT_EQ(SMIsValidParam(param.data()), 0U) << text;
    EXPECT_EQ(SMNVPGetUTF8ParamName(param.data()), nullptr) << text;
    EXPECT_EQ(SMNVPGetUTF8ParamValue(param.data()), nullptr) << text;
    EXPECT_STREQ(param.data(), text);
  }
}

TEST(Parameter, NullIsNone) {
  EXPECT_EQ(SMIsValidParam(nullptr), 0U);
  EXPECT_EQ(SMNVPGetUTF8ParamName(nullptr), nullptr);
  EXPECT_EQ(SMNVPGetUTF8ParamValue(nullptr), nullptr);
}

TEST(FindParameter, ComparesWholeNames) {
  const Parameters parameters{"Mode=fast", "level=3"};
  EXPECT_EQ(parameters.index("Mode"), 0);
  EXPECT_EQ(parameters.index("level"), 1);
  EXPECT_EQ(parameters.index("lev"), -1);
  EXPECT_EQ(parameters.index("levels"), -1);
  EXPECT_EQ(parameters.index(""), -1);
  EXPECT_STREQ(parameters.value("level"), "3");
  EXPECT_EQ(parameters.value("lev"), nullptr);
}

TEST(FindParameter, IgnoresTheCaseForOneOnly) {
  const Parameters parameters{"Mode=fast"};
  EXPECT_EQ(parameters.index("mode", 0), -1);
  EXPECT_EQ(parameters.index("mode", 1), 0);
  EXPECT_EQ(parameters.index("mode", 2), -1);
}

TEST(FindParameter, FirstMatchWins) {
  const Parameters parameters{"a=1", "A=2", "a=3"};
  EXPECT_STREQ(parameters.value("a"), "1");
  EXPECT_STREQ(parameters.value("A"), "2");
  EXPECT_STREQ(parameters.value("A", 1), "1");
}

TEST(FindParameter, PassesOverWhatIsNoParameter) {
  const Parameters parameters{"a", "=a", "", "a=1"};
  EXPECT_EQ(parameters.index("a"), 3);
}

TEST(FindParameter, AnEqualsSignEndsTheName) {
  const Parameters parameters{"a=b=c"};
  EXPECT_EQ(parameters.index("a=b"), -1);
  EXPECT_STREQ(parameters.value("a"), "b=c");
}

TEST(FindParameter, LooksAtNoneWithoutACount) {
  const Parameters parameters{"a=1"};
  EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(0, parameters.texts(), "a", 0), -1);
  EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(-1, parameters.texts(), "a", 0), -1);
  EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(1, nullptr, "a", 0), -1);
  EXPECT_EQ(parameters.index(nullptr), -1);
}

TEST(FindParameter, HighBytesAreComparedToo) {
  const Parameters parameters{"n\xC3\xA9=1"};
  EXPECT_EQ(parameters.index("n\xC3\xA9", 1), 0);
  EXPECT_EQ(parameters.index("n\xC3\xA8", 1), -1);
}

TEST(ParameterToValue, ReadsAsATypedValue) {
  const Parameters parameters{"level=3", "flag=maybe"};
  uint32_t value = 0;
  uint32_t size = 4;
  EXPECT_EQ(SMNVPUTF8ToTypeValue(2, parameters.texts(), "LEVEL", 1, &value, &size, SMXLT_TYPE_U32),
            SM_STATUS_SUCCESS);
  EXPECT_EQ(value, 3U);
  EXPECT_EQ(
      SMNVPUTF8ToTypeValue(2, parameters.texts(), "flag", 0, &value, &size, SMXLT_TYPE_BOOLEAN),
      SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, 2U);
}

TEST(ParameterToValue, ChecksPointersThenTheName) {
  const Parameters parameters{"level=3"};
  uint32_t value = 0;
  uint32_t size = 4;
  EXPECT_EQ(SMNVPUTF8ToTypeValue(1, nullptr, "x", 0, &value, &size, 99),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMNVPUTF8ToTypeValue(1, parameters.texts(), "x", 0, nullptr, &size, 99),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMNVPUTF8ToTypeValue(1, parameters.texts(), "x", 0, &value, nullptr, 99),
            SM_STATUS_DATA_NOT_FOUND);
  EXPECT_EQ(SMNVPUTF8ToTypeValue(1, parameters.texts(), "level", 0, &value, nullptr, 99),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, 4U);
}

const SMEnums32 kColours[] = {{"?", 0xFF, 0}, {"red", 1, 0}, {"green", 2, 0}, {"blue", 4, 0}};
constexpr uint32_t kInvalid = 0x80000000;

uint32_t colour(const char* parameter, uint32_t multiple) {
  const Parameters parameters{parameter};
  return SMNVPGetEnums32Value(1, parameters.texts(), "c", 0, kColours, 4, multiple);
}

TEST(ParameterEnum, FindsANameInAnyCase) {
  EXPECT_EQ(colour("c=green", 0), 2U);
  EXPECT_EQ(colour("c=BLUE", 0), 4U);
}

TEST(ParameterEnum, UnknownNamesHaveTheValueOfTheFirstEntry) {
  EXPECT_EQ(colour("c=pink", 0), 0xFFU);
  EXPECT_EQ(colour("c=", 0), 0xFFU);
  EXPECT_EQ(colour("c=?", 0), 0xFFU);
  EXPECT_EQ(colour("c=red|blue", 0), 0xFFU);
}

TEST(ParameterEnum, AnAbsentParameterHasTheValueOfTheSecondEntry) {
  EXPECT_EQ(colour("d=green", 0), 1U);
  EXPECT_EQ(colour("d=green", 1), 1U);
}

TEST(ParameterEnum, ListsCombineWhatTheyName) {
  EXPECT_EQ(colour("c=Red|blue", 1), 5U);
  EXPECT_EQ(colour("c=red,green", 1), 3U);
  EXPECT_EQ(colour("c= red | green ", 1), 3U);
  EXPECT_EQ(colour("c=green", 1), 2U);
  EXPECT_EQ(colour("c=pink", 1), 0U);
  EXPECT_EQ(colour("c=pink|red", 1), 1U);
  EXPECT_EQ(colour("c=", 1), 0U);
}

TEST(ParameterEnum, BarsWinOverCommas) {
  EXPECT_EQ(colour("c=red,green|blue", 1), 4U);
}

TEST(ParameterEnum, NullsAndShortTablesAreInvalid) {
  const Parameters parameters{"c=red"};
  EXPECT_EQ(SMNVPGetEnums32Value(1, nullptr, "c", 0, kColours, 4, 0), kInvalid);
  EXPECT_EQ(SMNVPGetEnums32Value(1, parameters.texts(), nullptr, 0, kColours, 4, 0), kInvalid);
  EXPECT_EQ(SMNVPGetEnums32Value(1, parameters.texts(), "c", 0, nullptr, 4, 0), kInvalid);
  EXPECT_EQ(SMNVPGetEnums32Value(1, parameters.texts(), "c", 0, kColours, 1, 0), kInvalid);
  EXPECT_EQ(SMNVPGetEnums32Value(1, parameters.texts(), "c", 0, kColours, 2, 0), 1U);
}

}  // namespace
