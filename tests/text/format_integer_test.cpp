// All combinations of flags, widths, precisions and sizes of the integer conversions, beside the C
// library.

#include <cstdio>
#include <string>
#include <vector>

#include "support/guarded.h"
#include "text/formatted.h"

namespace {

using kqsupt::tests::cut_to_every_size;
using kqsupt::tests::expected;
using kqsupt::tests::formatted;
using kqsupt::tests::Guarded;
using kqsupt::tests::is_emulated;

struct Size {
  std::string ours;
  std::string c_library;  // a long has 32 bits here
};
const std::vector<Size> kSizes = {{"", ""},    {"h", "h"},  {"l", ""},  {"ll", ""},
                                  {"hh", "h"}, {"lh", "h"}, {"hl", ""}, {"L", ""}};

struct Conversion {
  std::string ours;
  std::string c_library;
};
const std::vector<Conversion> kConversions = {{"d", "d"}, {"i", "i"}, {"u", "u"},
                                              {"o", "o"}, {"x", "x"}, {"X", "X"}};
const std::vector<Conversion> kLongConversions = {{"D", "d"}, {"U", "u"}, {"O", "o"}};

const std::vector<std::string> kWidths = {"", "1", "2", "7", "12", "30"};
const std::vector<std::string> kPrecisions = {"", ".", ".0", ".1", ".3", ".10", ".20"};
const std::vector<int32_t> kValues = {
    0, 1, -1, 7, 8, -42, 32767, 32768, 0x12345678, 2147483647, -2147483647 - 1};

std::vector<std::string> all_flags() {
  std::vector<std::string> all;
  for (unsigned set = 0; set < 32; ++set) {
    std::string flags;
    for (unsigned i = 0; i < 5; ++i) {
      if ((set >> i & 1) != 0) {
        flags += "-+ #0"[i];
      }
    }
    all.push_back(flags);
  }
  return all;
}

template <class Look>
void for_each_layout(Look look) {
  for (const std::string& flags : all_flags()) {
    for (const std::string& width : kWidths) {
      for (const std::string& precision : kPrecisions) {
        look("%" + flags + width + precision);
      }
    }
  }
}

template <class Look>
void for_each_pair_of_formats(Look look) {
  for_each_layout([&](const std::string& layout) {
    for (const Size& size : kSizes) {
      for (const Conversion& conversion : kConversions) {
        look(layout + size.ours + conversion.ours, layout + size.c_library + conversion.c_library);
      }
      for (const Conversion& conversion : kLongConversions) {
        look(layout + size.ours + conversion.ours, layout + conversion.c_library);
      }
    }
  });
}

TEST(FormatInteger, EveryCombinationIsWhatTheCLibraryGives) {
  uint64_t combinations = 0;
  for_each_pair_of_formats([&](const std::string& ours, const std::string& c_library) {
    for (const int32_t value : kValues) {
      ASSERT_EQ(formatted(ours.c_str(), value), expected(c_library.c_str(), value))
          << ours << " of " << value;
      ++combinations;
    }
  });
  std::printf("[   FACT   ] %llu combinations of integer conversions like the C library's\n",
              static_cast<unsigned long long>(combinations));
}

TEST(FormatInteger, EveryCombinationOfPointersIsAlternateHexadecimal) {
  for_each_layout([&](const std::string& layout) {
    for (const uintptr_t value : {uintptr_t{0}, uintptr_t{0xABC}, UINTPTR_MAX}) {
      ASSERT_EQ(
          formatted((layout + "p").c_str(), reinterpret_cast<void*>(value)),
          expected(("%#" + layout.substr(1) + "lx").c_str(), static_cast<unsigned long>(value)))
          << layout;
    }
  });
}

TEST(FormatInteger, WidthAndPrecisionArgumentsAreWhatTheCLibraryMakesOfThem) {
  for (const std::string& flags : all_flags()) {
    for (const char* conversion : {"d", "u", "o", "x", "X"}) {
      const std::string format = "%" + flags + "*.*" + conversion;
      for (const int width : {-20, -1, 0, 1, 20}) {
        for (const int precision : {-20, -1, 0, 1, 12}) {
          for (const int value : {0, 1, -1}) {
            ASSERT_EQ(formatted(format.c_str(), width, precision, value),
                      expected(format.c_str(), width, precision, value))
                << format << " of " << width << ", " << precision << ", " << value;
          }
        }
      }
    }
  }
}

TEST(FormatInteger, EveryCombinationIsCutToEverySizeOfTheBuffer) {
  // A stride that has no factor in common with any list leaves none of their entries out.
  const uint32_t stride = is_emulated() ? 173 : 1;
  uint64_t combinations = 0;
  uint64_t taken = 0;
  for_each_pair_of_formats([&](const std::string& ours, const std::string& c_library) {
    for (const int32_t value : kValues) {
      if (combinations++ % stride == 0) {
        ASSERT_TRUE(cut_to_every_size(expected(c_library.c_str(), value), ours.c_str(), value));
        ++taken;
      }
    }
  });
  std::printf("[   FACT   ] %llu combinations of integer conversions cut to every size\n",
              static_cast<unsigned long long>(taken));
}

TEST(FormatInteger, SubsetIsTheSameAtEverySizeOfTheBuffer) {
  const std::vector<std::string> conversions = {"d", "u", "#o", "#x", "X"};
  for (const std::string layout : {"", "8", "-8", "08", "+8.5", " .5", "-12.7", "2"}) {
    for (const std::string& conversion : conversions) {
      // "#" stands among the flags.
      const bool alternate = conversion[0] == '#';
      const std::string format =
          (alternate ? "%#" : "%") + layout + (alternate ? conversion.substr(1) : conversion);
      for (const int32_t value : {0, 42, -42, 2147483647}) {
        const std::string whole = expected(format.c_str(), value);
        for (size_t size = 0; size <= whole.size() + 2; ++size) {
          const std::string cut = whole.substr(0, size == 0 ? 0 : size - 1);
          const Guarded<char> buffer(size == 0 ? 1 : size);
          const int32_t stored =
              SMsnprintf(buffer.data(), static_cast<uint32_t>(size), format.c_str(), value);
          ASSERT_EQ(stored, cut.size()) << format << " in " << size;
          ASSERT_STREQ(buffer.data(), cut.c_str()) << format << " in " << size;
        }
      }
    }
  }
}

}  // namespace
