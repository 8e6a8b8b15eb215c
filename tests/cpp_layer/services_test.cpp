// Text, files, logs and what the host is asked for.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "gtest/gtest.h"
#include "ipc/named.h"
#include "kqsupt.hpp"
#include "support/scratch.h"

namespace {

using kqsupt::status;
using kqsupt::tests::content_of;
using kqsupt::tests::put;
using kqsupt::tests::Scratch;

const std::string kWithNul("a\0b", 3);

TEST(Text, RoundTripsThroughUcs2) {
  for (const std::string text : {"", "fan", "\xC3\xA4\xE2\x82\xAC"}) {
    const auto units = kqsupt::to_ucs2(text);
    ASSERT_TRUE(units);
    EXPECT_EQ(kqsupt::to_utf8(*units).value_or("(failed)"), text);
  }
  EXPECT_EQ(*kqsupt::to_ucs2("\xE2\x82\xAC"), u"\u20AC");
  EXPECT_EQ(kqsupt::to_ucs2("\xFF").code(), status::operation_failed);
}

TEST(Text, WithANulIsRefused) {
  EXPECT_EQ(kqsupt::to_ucs2(kWithNul).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::to_utf8(std::u16string_view(u"a\0b", 3)).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::environment(kWithNul).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::delete_file(kWithNul).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::ini_file(kWithNul).text("s", "k").code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::escape_xml(kWithNul).code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::log_rotated(kWithNul, "/tmp/x", 1, 1, 0).code(), status::invalid_parameter);
}

// Memory of zeros that is never touched; null where an address space has no room for it.
class Zeros {
 public:
  explicit Zeros(size_t size)
      : size_(size),
        at_(mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
  ~Zeros() {
    if (at_ != MAP_FAILED) {
      munmap(at_, size_);
    }
  }
  Zeros(const Zeros&) = delete;
  Zeros& operator=(const Zeros&) = delete;

  [[nodiscard]] const void* get() const { return at_ != MAP_FAILED ? at_ : nullptr; }

 private:
  size_t size_;
  void* at_;
};

// The texts hold NULs, too, and would take long to be looked through.
TEST(Text, WhoseConversionCouldNotBeCountedIsRefused) {
  constexpr size_t kMost = std::numeric_limits<uint32_t>::max();
  const Zeros zeros(kMost / 2 + 1);
  if (zeros.get() == nullptr) {
    GTEST_SKIP() << "such a text does not exist here";
  }
  EXPECT_EQ(
      kqsupt::to_ucs2(std::string_view(static_cast<const char*>(zeros.get()), kMost / 2)).code(),
      status::invalid_parameter);
  EXPECT_EQ(
      kqsupt::to_utf8(std::u16string_view(static_cast<const char16_t*>(zeros.get()), kMost / 4))
          .code(),
      status::invalid_parameter);
}

TEST(Text, IsTakenUpToTheEndOfTheView) {
  setenv("LAYER", "fan", 1);
  EXPECT_EQ(kqsupt::environment(std::string_view("LAYERS", 5)).value_or(""), "fan");
  EXPECT_EQ(kqsupt::environment("NO_LAYER").code(), status::data_not_found);
}

TEST(IniFile, GivesBackEveryTypeThatItWasGiven) {
  const Scratch scratch;
  kqsupt::ini_file file(scratch.file("a.ini"));
  ASSERT_TRUE(file.set_text("fans", "name", "inlet"));
  ASSERT_TRUE(file.set("fans", "on", true));
  ASSERT_TRUE(file.set("fans", "u32", uint32_t{4000000000}));
  ASSERT_TRUE(file.set("fans", "s32", int32_t{-5}));
  ASSERT_TRUE(file.set("fans", "u64", uint64_t{1} << 63));
  ASSERT_TRUE(file.set("fans", "s64", int64_t{-1} * (int64_t{1} << 40)));
  ASSERT_TRUE(file.set("fans", "double", 2.5));
  EXPECT_EQ(file.text("fans", "name").value_or(""), "inlet");
  EXPECT_TRUE(file.value<bool>("fans", "on").value_or(false));
  EXPECT_EQ(file.value<uint32_t>("fans", "u32").value_or(0), 4000000000U);
  EXPECT_EQ(file.value<int32_t>("fans", "s32").value_or(0), -5);
  EXPECT_EQ(file.value<uint64_t>("fans", "u64").value_or(0), uint64_t{1} << 63);
  EXPECT_EQ(file.value<int64_t>("fans", "s64").value_or(0), int64_t{-1} * (int64_t{1} << 40));
  EXPECT_EQ(file.value<double>("fans", "double").value_or(0), 2.5);
}

TEST(IniFile, GivesTextsOfAnyLengthAndLists) {
  const Scratch scratch;
  kqsupt::ini_file file(scratch.file("a.ini"));
  const std::string value(8000, 'x');
  std::vector<std::string> keys;
  for (int i = 0; i < 200; ++i) {
    keys.push_back("key" + std::to_string(i));
    ASSERT_TRUE(file.set_text("many", keys.back(), "1"));
  }
  ASSERT_TRUE(file.set_text("long", "value", value));
  EXPECT_EQ(file.text("long", "value").value_or(""), value);
  EXPECT_EQ(file.sections().value_or({}), (std::vector<std::string>{"many", "long"}));
  EXPECT_EQ(file.keys("many").value_or({}), keys);
}

TEST(IniFile, TellsWhatIsMissing) {
  const Scratch scratch;
  kqsupt::ini_file file(scratch.file("a.ini"));
  EXPECT_EQ(file.text("fans", "name").code(), status::file_open_failed);
  ASSERT_TRUE(file.set_text("fans", "name", "inlet"));
  EXPECT_EQ(file.text("fans", "slot").code(), status::key_not_found);
  EXPECT_EQ(file.text("disks", "name").code(), status::section_not_found);
  ASSERT_TRUE(file.remove("fans", "name"));
  EXPECT_EQ(file.text("fans", "name").code(), status::key_not_found);
  ASSERT_TRUE(file.remove_section("fans"));
  EXPECT_EQ(file.text("fans", "name").code(), status::section_not_found);
}

TEST(PropertyFile, ReadsAndWrites) {
  const Scratch scratch;
  put(scratch.file("a.properties"), "name = inlet\nslot: 4\non=true\n");
  kqsupt::property_file file(scratch.file("a.properties"));
  EXPECT_EQ(file.text("name").value_or(""), "inlet");
  EXPECT_EQ(file.value<uint32_t>("slot").value_or(0), 4U);
  EXPECT_TRUE(file.value<bool>("on").value_or(false));
  EXPECT_EQ(file.keys().value_or({}), (std::vector<std::string>{"name", "slot", "on"}));
  ASSERT_TRUE(file.set("slot", int32_t{-7}));
  ASSERT_TRUE(file.set_text("name", "outlet"));
  EXPECT_EQ(file.value<int32_t>("slot").value_or(0), -7);
  EXPECT_EQ(file.text("name").value_or(""), "outlet");
  EXPECT_EQ(file.text("speed").code(), status::key_not_found);
}

TEST(PropertyFile, GivesBackEveryTypeThatItWasGiven) {
  const Scratch scratch;
  put(scratch.file("a.properties"), "u64=0\ns64=0\ndouble=0\non=TRUE\n");
  kqsupt::property_file file(scratch.file("a.properties"));
  ASSERT_TRUE(file.set("u64", uint64_t{1} << 63));
  ASSERT_TRUE(file.set("s64", int64_t{-1} * (int64_t{1} << 40)));
  ASSERT_TRUE(file.set("double", 2.5));
  ASSERT_TRUE(file.set("on", false));
  EXPECT_EQ(file.value<uint64_t>("u64").value_or(0), uint64_t{1} << 63);
  EXPECT_EQ(file.value<int64_t>("s64").value_or(0), int64_t{-1} * (int64_t{1} << 40));
  EXPECT_EQ(file.value<double>("double").value_or(0), 2.5);
  EXPECT_FALSE(file.value<bool>("on").value_or(true));
}

// Calls `body()` while another process holds the lock of the file.
template <class Body>
void while_locked(const std::string& path, Body body) {
  int ready[2];
  int let_go[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(let_go), 0);
  const std::string lock_file = kqsupt::tests::lock_file_of_path(path);
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    close(let_go[1]);
    const int file = open(lock_file.c_str(), O_RDWR | O_CREAT, 0666);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    char byte = 'x';
    const bool held =
        file >= 0 && fcntl(file, F_SETLK, &lock) == 0 && write(ready[1], &byte, 1) == 1;
    close(ready[1]);
    _exit(held && read(let_go[0], &byte, 1) == 0 ? 0 : 1);
  }
  close(ready[1]);
  close(let_go[0]);
  char byte;
  EXPECT_EQ(read(ready[0], &byte, 1), 1) << "the lock cannot be held";
  body();
  close(ready[0]);
  close(let_go[1]);
  int ended = 1;
  waitpid(child, &ended, 0);
  EXPECT_EQ(ended, 0);
}

TEST(LockedFiles, AreNotWaitedForWhenToldSo) {
  const Scratch scratch;
  put(scratch.file("a.properties"), "slot=4\n");
  while_locked(scratch.file("a.properties"), [&] {
    kqsupt::property_file file(scratch.file("a.properties"), false);
    EXPECT_EQ(file.value<uint32_t>("slot").code(), status::timeout);
    EXPECT_EQ(file.set("slot", 5).code(), status::timeout);
  });
  put(scratch.file("a.ini"), "[fan]\nslot=4\n");
  while_locked(scratch.file("a.ini"), [&] {
    kqsupt::ini_file file(scratch.file("a.ini"), false);
    EXPECT_EQ(file.value<uint32_t>("fan", "slot").code(), status::timeout);
    EXPECT_EQ(file.set("fan", "slot", 5).code(), status::timeout);
  });
}

TEST(Paths, AreThoseOfTheRegistry) {
  const std::string install = std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/nurb";
  EXPECT_EQ(kqsupt::product_path(44, SM_PATH_TYPE_INSTALL).value_or(""), install);
  EXPECT_EQ(kqsupt::product_path(99, SM_PATH_TYPE_INSTALL).code(), status::data_not_found);
  EXPECT_EQ(kqsupt::product_id("nurb"), 44);
  EXPECT_EQ(kqsupt::product_id(kWithNul), 0);
  EXPECT_EQ(kqsupt::product_key(44).value_or(""), "nurb");
  EXPECT_EQ(kqsupt::product_key(99).code(), status::data_not_found);
  EXPECT_EQ(kqsupt::product_file(44, SM_PATH_TYPE_VARIABLE_DATA, "", "a").value_or(""),
            install + "/var/a");
}

TEST(Files, AreCopiedAndDeleted) {
  const Scratch scratch;
  put(scratch.file("a"), "fan");
  ASSERT_TRUE(kqsupt::copy_file(scratch.file("a"), scratch.file("b"), false));
  EXPECT_EQ(kqsupt::copy_file(scratch.file("a"), scratch.file("b"), false).error(),
            std::errc::file_exists);
  ASSERT_TRUE(kqsupt::append_file(scratch.file("a"), scratch.file("b"), false));
  EXPECT_EQ(content_of(scratch.file("b")), "fanfan");
  EXPECT_EQ(kqsupt::size_of_file(scratch.file("b")).value_or(0), 6U);
  EXPECT_EQ(kqsupt::append_file(scratch.file("a"), scratch.file("c"), false).code(),
            status::file_not_found);
  ASSERT_TRUE(kqsupt::append_file(scratch.file("a"), scratch.file("c"), true));
  EXPECT_EQ(content_of(scratch.file("c")), "fan");
  EXPECT_TRUE(kqsupt::delete_file(scratch.file("b")));
  EXPECT_EQ(kqsupt::size_of_file(scratch.file("b")).code(), status::system_refused);
}

TEST(Directories, AreMadeAndRemoved) {
  const Scratch scratch;
  ASSERT_TRUE(kqsupt::make_directory(scratch.file("d")));
  put(scratch.file("d/a"), "fan");
  EXPECT_EQ(kqsupt::remove_directory(scratch.file("d")).code(), status::operation_failed);
  EXPECT_EQ(kqsupt::unused_name(scratch.file("d")).value_or("").size(), 8U);
  ASSERT_TRUE(kqsupt::delete_file(scratch.file("d/a")));
  EXPECT_TRUE(kqsupt::remove_directory(scratch.file("d")));
  EXPECT_EQ(kqsupt::remove_directory(scratch.file("d")).code(), status::data_not_found);
}

TEST(Addresses, RoundTripThroughTheirText) {
  EXPECT_EQ(kqsupt::parse_address(SM_INET_FAMILY_IPV4, "10.0.0.1").value_or(""),
            std::string("\x0A\0\0\x01", 4));
  const std::string loopback = *kqsupt::parse_address(SM_INET_FAMILY_IPV6, "::1");
  EXPECT_EQ(loopback.size(), 16U);
  EXPECT_EQ(kqsupt::format_address(SM_INET_FAMILY_IPV6, loopback).value_or(""), "::1");
  EXPECT_EQ(kqsupt::parse_address(SM_INET_FAMILY_IPV4, "fan").code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::format_address(SM_INET_FAMILY_IPV4, loopback).code(),
            status::invalid_parameter);
}

TEST(FileWatch, OwnsItsHandle) {
  const Scratch scratch;
  put(scratch.file("a"), "fan");
  auto watch = kqsupt::file_watch::create(scratch.file("a"));
  ASSERT_TRUE(watch);
  EXPECT_FALSE(watch->modified());
  const timespec times[2] = {{1000, 0}, {1000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, scratch.file("a").c_str(), times, 0), 0);
  EXPECT_TRUE(watch->modified());
  EXPECT_FALSE(kqsupt::file_watch::create(scratch.file("b")));
}

TEST(Log, TakesAnEvent) {
  const std::string path = kqsupt::log_path(SM_LOG_XML).value_or("");
  ASSERT_NE(path, "");
  EXPECT_EQ(kqsupt::backup_log_path(SM_LOG_XML).value_or(""),
            path.substr(0, path.size() - 1) + "_");
  kqsupt::log_event event;
  event.type = SM_EVENT_WARNING;
  event.id = 77;
  event.source = "layer";
  event.description = "The inlet is hot";
  event.data = kWithNul;
  ASSERT_TRUE(kqsupt::append_to_log(SM_LOG_TEXT | SM_LOG_XML, event));
  EXPECT_NE(content_of(path).find("The inlet is hot"), std::string::npos);
  event.source = kWithNul;
  EXPECT_EQ(kqsupt::append_to_log(SM_LOG_XML, event).code(), status::invalid_parameter);
  EXPECT_TRUE(kqsupt::clear_log(SM_LOG_XML, 1, "layer"));
  EXPECT_EQ(content_of(path).find("The inlet is hot"), std::string::npos);
}

TEST(Log, HasALargestSize) {
  EXPECT_EQ(kqsupt::log_max_size("/x").value_or(0), 1048576U);
  ASSERT_TRUE(kqsupt::set_log_max_size("/x", 2000000));
  EXPECT_EQ(kqsupt::log_max_size("/x").value_or(0), 2000000U);
  EXPECT_EQ(kqsupt::set_log_max_size("/x", 1).code(), status::invalid_parameter);
}

TEST(RotatedLog, TakesAMessage) {
  const Scratch scratch;
  ASSERT_TRUE(kqsupt::log_rotated("fan", scratch.file("a"), 100, 2, SM_LOG_SUFFIX_NEWLINE));
  EXPECT_EQ(content_of(scratch.file("a")), "fan\n");
}

TEST(XmlBuffer, BuildsTextAndGivesItOut) {
  kqsupt::xml_buffer attributes = *kqsupt::xml_buffer::create();
  ASSERT_TRUE(attributes.attribute("slot", "4"));
  kqsupt::xml_buffer xml = *kqsupt::xml_buffer::create();
  ASSERT_TRUE(xml.begin("fans", attributes.get()));
  ASSERT_TRUE(xml.node("name", "a<b"));
  ASSERT_TRUE(xml.value("&"));
  ASSERT_TRUE(xml.empty("none"));
  ASSERT_TRUE(xml.end("fans"));
  const std::string expected = "<fans slot=\"4\"><name>a&lt;b</name>&amp;<none /></fans>";
  EXPECT_EQ(xml.view(), expected);
  EXPECT_EQ(xml.take(), expected);
  EXPECT_FALSE(xml);
  EXPECT_EQ(xml.take(), "");
  EXPECT_EQ(xml.begin("x").code(), status::invalid_parameter);
  EXPECT_EQ(kqsupt::escape_xml("a&b", 2).value_or(""), "a&amp;amp;b");
  EXPECT_EQ(kqsupt::escape_xml("a&b", 0).code(), status::invalid_parameter);
}

TEST(Host, IsAskedFor) {
  EXPECT_NE(kqsupt::host_name().value_or(""), "");
  EXPECT_TRUE(kqsupt::addresses());
  EXPECT_GT(kqsupt::ticks(), 0U);
  EXPECT_EQ(kqsupt::version(), "1.1.1");
  EXPECT_NE(kqsupt::local_language(), 0U);
}

}  // namespace
