// Configuration files and install paths under failing allocations.

#include "kqsupt/config.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

#include "faults/open_descriptors.h"
#include "faults/sweep.h"
#include "support/failing_heap.h"
#include "support/scratch.h"

namespace kqsupt::tests {
namespace {

const Failures kNoMemory = {{SM_STATUS_NO_MEMORY, 0}};
constexpr SMStatus kFailed = 0xFFFFFFFF;
const Failures kNoMemoryOrFailed = {{SM_STATUS_NO_MEMORY, 0}, {kFailed, 0}};

SMStatus done(bool is_done) {
  return is_done ? SM_STATUS_SUCCESS : SM_STATUS_NO_MEMORY;
}

constexpr int32_t kQuillance = 35;
constexpr int32_t kNoProduct = 99;

// ---- Files ----

// A file in a directory of its own. Its path is the same for every row: the library keeps the lock of
// a path once it has been used.
class File {
 public:
  explicit File(const std::string& content) : content_(content) {
    put(path(), content);
    descriptors_ = open_descriptors();
  }
  File() {
    std::filesystem::remove(path());
    descriptors_ = open_descriptors();
  }
  ~File() { SMFreeMem(made); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  // The file and its directory are as they were.
  [[nodiscard]] bool file_unchanged() const {
    return content_of(path()) == content_ && open_descriptors() == descriptors_ &&
           directory().names().size() == (content_ == kNoFile ? 0U : 1U);
  }
  // So is what the call was to fill.
  [[nodiscard]] bool unchanged() const {
    return file_unchanged() && made == nullptr &&
           std::all_of(std::begin(buffer), std::end(buffer), [](char byte) { return byte == '~'; });
  }

  static const char* path() {
    static const std::string path = directory().file("a.ini");
    return path.c_str();
  }

  char* made = nullptr;
  alignas(8) char buffer[512] = {};
  uint32_t size = 0;

 private:
  static constexpr char kNoFile[] = "(no file)";  // what content_of() says
  static const Scratch& directory() {
    static const Scratch directory;
    return directory;
  }
  std::string content_ = kNoFile;
  int descriptors_ = 0;

 protected:
  // Called by the constructors of what derives from it.
  void fill() { std::fill(std::begin(buffer), std::end(buffer), '~'); }
};

constexpr char kIniText[] =
    "; "
    "comment\n[first]\nkey=value\nyes=TRUE\nnumber=-7\nreal=2.5\nnames=a,b\n\n[second]\nother=x\n";

struct Ini : File {
  Ini() : File(kIniText) { fill(); }
};

struct NoFile : File {
  NoFile() { fill(); }
};

// A section whose names take more than the memory that a reader begins with.
struct LongIni : File {
  LongIni() : File(text()) { fill(); }
  static const std::string& text() {
    static const std::string text = [] {
      std::string long_text = "[first]\n";
      for (int i = 10000; i < 12000; ++i) {
        long_text += "key" + std::to_string(i) + "=1\n";
      }
      return long_text;
    }();
    return text;
  }
};

// The same with a value that takes more than the memory that its reader begins with.
struct Properties : File {
  Properties() : File("name = text\nlong = " + std::string(400, 'x') + "\nnumber = 7\n") { fill(); }
};

template <class State>
Row file_row(const std::string& name, const Failures& failures, SMStatus (*call)(State&)) {
  return row<State>(name, failures, call, [](State& state) { return state.unchanged(); });
}

SMStatus read_ini(Ini& state, const char* section, const char* key, uint32_t type, uint32_t size) {
  state.size = size;
  return SMReadINIPathFileValue(section, key, type, state.buffer, &state.size, nullptr, 0,
                                File::path(), 1);
}

SMStatus write_ini(const char* section, const char* key, uint32_t type, const void* value,
                   uint32_t size) {
  return SMWriteINIPathFileValue(section, key, type, value, size, File::path(), 1);
}

template <class Value>
SMStatus write_ini_number(uint32_t type, Value value) {
  return write_ini("first", "number", type, &value, sizeof value);
}

// The family's own file.
struct OwnIni {
  OwnIni() {
    put(path(), kIniText);
    descriptors = open_descriptors();
  }
  ~OwnIni() { std::filesystem::remove(path()); }
  [[nodiscard]] bool unchanged() const {
    return content_of(path()) == kIniText && open_descriptors() == descriptors;
  }
  static std::string path() {
    return std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/Quillance/ini/ini/rows.ini";
  }
  int descriptors;
  char buffer[100] = {};
  uint32_t size = 0;
};

std::vector<Row> ini_read_rows() {
  return {
      file_row<Ini>(
          "SMReadINIPathFileValue_text", kNoMemory,
          [](Ini& state) { return read_ini(state, "first", "key", SMINI_TYPE_UTF8, 100); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_sections", kNoMemory,
          [](Ini& state) { return read_ini(state, nullptr, nullptr, SMINI_TYPE_UTF8, 100); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_keys", kNoMemory,
          [](Ini& state) { return read_ini(state, "first", nullptr, SMINI_TYPE_UTF8, 100); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_ucs2", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "key", SMINI_TYPE_UCS2, 100); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_ucs2_strict", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "key", SMINI_TYPE_UCS2_STRICT, 100); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_boolean", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "yes", SMINI_TYPE_BOOLEAN, 2); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_u32", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "number", SMINI_TYPE_U32, 4); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_s32", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "number", SMINI_TYPE_S32, 4); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_u64", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "number", SMINI_TYPE_U64, 8); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_s64", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "number", SMINI_TYPE_S64, 8); }),
      file_row<Ini>(
          "SMReadINIPathFileValue_double", kNoMemoryOrFailed,
          [](Ini& state) { return read_ini(state, "first", "real", SMINI_TYPE_DOUBLE, 8); }),
      row<OwnIni>(
          "SMReadINIFileValue", kNoMemory,
          [](OwnIni& state) {
            state.size = sizeof state.buffer;
            return SMReadINIFileValue("first", "key", SMINI_TYPE_UTF8, state.buffer, &state.size,
                                      nullptr, 0, "rows.ini", 1);
          },
          [](OwnIni& state) { return state.unchanged() && state.buffer[0] == '\0'; }),
      file_row<Ini>("SMReadINISectionKeyUTF8Value", kNoMemory,
                    [](Ini& state) {
                      state.made = SMReadINISectionKeyUTF8Value("first", "key", nullptr,
                                                                &state.size, File::path(), 1);
                      return done(state.made != nullptr);
                    }),
      file_row<Ini>("SMReadINISectionKeyUTF8Value_default", kNoMemory,
                    [](Ini& state) {
                      state.made = SMReadINISectionKeyUTF8Value("first", "none", "default",
                                                                &state.size, File::path(), 1);
                      return done(state.made != nullptr);
                    }),
      file_row<LongIni>("SMReadINISectionKeyUTF8Value_list", kNoMemory,
                        [](LongIni& state) {
                          state.made = SMReadINISectionKeyUTF8Value("first", nullptr, nullptr,
                                                                    &state.size, File::path(), 1);
                          return done(state.made != nullptr && state.size == 18001);
                        }),
      // Without the text the answer is that of a key that is not there.
      file_row<Ini>(
          "SMReadINIEnums32Value_mask", kNoMemory,
          [](Ini&) {
            constexpr SMEnums32 kTable[] = {{"?", 99, 0}, {"-", 8, 0}, {"a", 1, 0}, {"b", 2, 0}};
            const uint32_t value =
                SMReadINIEnums32Value("first", "names", kTable, 4, 1, File::path(), 1);
            if (value != 3 && value != 8 && value != 0x80000000) {
              return SMStatus{SM_STATUS_UNSUCCESSFUL};
            }
            return done(value == 3);
          }),
      file_row<Ini>("SMReadINIEnums32Value_name", kNoMemory,
                    [](Ini&) {
                      constexpr SMEnums32 kTable[] = {{"?", 99, 0}, {"-", 8, 0}, {"value", 1, 0}};
                      const uint32_t value =
                          SMReadINIEnums32Value("first", "key", kTable, 3, 0, File::path(), 1);
                      if (value != 1 && value != 8) {
                        return SMStatus{SM_STATUS_UNSUCCESSFUL};
                      }
                      return done(value == 1);
                    }),
  };
}

// More than the memory that a line begins with.
constexpr char kLongValue[] =
    "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123"
    "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123"
    "012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789012"
    "3";

std::vector<Row> ini_write_rows() {
  return {
      file_row<Ini>("SMWriteINIPathFileValue_change", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini("first", "key", SMINI_TYPE_UTF8, "other", 6); }),
      file_row<Ini>("SMWriteINIPathFileValue_long", kNoMemoryOrFailed,
                    [](Ini&) {
                      return write_ini("first", "key", SMINI_TYPE_UTF8, kLongValue,
                                       sizeof kLongValue);
                    }),
      file_row<Ini>("SMWriteINIPathFileValue_new_key", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini("first", "new", SMINI_TYPE_UTF8, "value", 6); }),
      file_row<Ini>("SMWriteINIPathFileValue_new_section", kNoMemory,
                    [](Ini&) { return write_ini("third", "key", SMINI_TYPE_UTF8, "value", 6); }),
      file_row<NoFile>(
          "SMWriteINIPathFileValue_new_file", kNoMemory,
          [](NoFile&) { return write_ini("first", "key", SMINI_TYPE_UTF8, "value", 6); }),
      file_row<Ini>("SMWriteINIPathFileValue_take_key_out", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini("first", "key", SMINI_TYPE_UTF8, nullptr, 0); }),
      file_row<Ini>("SMWriteINIPathFileValue_take_section_out", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini("first", nullptr, SMINI_TYPE_UTF8, nullptr, 0); }),
      file_row<Ini>("SMWriteINIPathFileValue_ucs2", kNoMemoryOrFailed,
                    [](Ini&) {
                      constexpr ustring kValue[] = {0xE9, 'a', 0};
                      return write_ini("first", "key", SMINI_TYPE_UCS2, kValue, sizeof kValue);
                    }),
      file_row<Ini>("SMWriteINIPathFileValue_ucs2_strict", kNoMemoryOrFailed,
                    [](Ini&) {
                      constexpr ustring kValue[] = {0xE9, 'a', 0};
                      return write_ini("first", "key", SMINI_TYPE_UCS2_STRICT, kValue,
                                       sizeof kValue);
                    }),
      file_row<Ini>("SMWriteINIPathFileValue_boolean", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini_number<uint16_t>(SMINI_TYPE_BOOLEAN, 1); }),
      file_row<Ini>("SMWriteINIPathFileValue_u32", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini_number<uint32_t>(SMINI_TYPE_U32, 8); }),
      file_row<Ini>("SMWriteINIPathFileValue_s32", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini_number<int32_t>(SMINI_TYPE_S32, -8); }),
      file_row<Ini>("SMWriteINIPathFileValue_u64", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini_number<uint64_t>(SMINI_TYPE_U64, 8); }),
      file_row<Ini>("SMWriteINIPathFileValue_s64", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini_number<int64_t>(SMINI_TYPE_S64, -8); }),
      file_row<Ini>("SMWriteINIPathFileValue_double", kNoMemoryOrFailed,
                    [](Ini&) { return write_ini_number<double>(SMINI_TYPE_DOUBLE, 0.5); }),
      row<OwnIni>(
          "SMWriteINIFileValue", kNoMemoryOrFailed,
          [](OwnIni&) {
            return SMWriteINIFileValue("first", "key", SMINI_TYPE_UTF8, "other", 6, "rows.ini", 1);
          },
          [](OwnIni& state) { return state.unchanged(); }),
  };
}

SMStatus read_property(Properties& state, const char* key, uint32_t type, uint32_t size) {
  state.size = size;
  return SMPropertyFileReadValue(key, type, state.buffer, &state.size, nullptr, 0, File::path(), 1);
}

SMStatus write_property(const char* key, uint32_t type, const void* value, uint32_t size) {
  return SMPropertyFileWriteValue(key, type, value, size, File::path(), 1);
}

std::vector<Row> property_rows() {
  return {
      file_row<Properties>(
          "SMPropertyFileReadValue_text", kNoMemory,
          [](Properties& state) { return read_property(state, "name", SMXLT_TYPE_UTF8, 100); }),
      file_row<Properties>(
          "SMPropertyFileReadValue_long", kNoMemory,
          [](Properties& state) { return read_property(state, "long", SMXLT_TYPE_UTF8, 500); }),
      file_row<Properties>(
          "SMPropertyFileReadValue_number", kNoMemory,
          [](Properties& state) { return read_property(state, "number", SMXLT_TYPE_U32, 4); }),
      file_row<Properties>(
          "SMPropertyFileReadValue_keys", kNoMemory,
          [](Properties& state) { return read_property(state, nullptr, SMXLT_TYPE_UTF8, 100); }),
      file_row<Properties>(
          "SMPropertyFileWriteValue_text", kNoMemoryOrFailed,
          [](Properties&) { return write_property("name", SMXLT_TYPE_UTF8, "other", 6); }),
      file_row<Properties>("SMPropertyFileWriteValue_number", kNoMemoryOrFailed,
                           [](Properties&) {
                             const uint32_t value = 8;
                             return write_property("number", SMXLT_TYPE_U32, &value, sizeof value);
                           }),
      file_row<Properties>("SMPropertyFileWriteValue_ucs2", kNoMemoryOrFailed,
                           [](Properties&) {
                             constexpr ustring kValue[] = {0xE9, 'a', 0};
                             return write_property("name", SMXLT_TYPE_UCS2, kValue, sizeof kValue);
                           }),
      file_row<Properties>("SMPropertyFileWriteValue_bytes", kNoMemoryOrFailed,
                           [](Properties&) {
                             static constexpr uint8_t kValue[2000] = {1, 2};
                             return write_property("name", SMXLT_TYPE_BINARY, kValue,
                                                   sizeof kValue);
                           }),
  };
}

// ---- Install paths ----

// A query of what no registry has: the table is read again, or given up for want of memory.
void reload_table() {
  uint32_t size = 0;
  (void)SMGetPathByProductIDandType(kNoProduct, SM_PATH_TYPE_INSTALL, nullptr, &size);
}

struct Path {
  Path() { descriptors = open_descriptors(); }
  ~Path() {
    SMFreeMem(made);
    SMFilePropFree(watched);
  }
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;
  [[nodiscard]] bool unchanged() const {
    return made == nullptr && watched == nullptr && std::strcmp(text, "untouched") == 0 &&
           open_descriptors() == descriptors;
  }
  char* made = nullptr;
  SMFileProp* watched = nullptr;
  char text[300] = "untouched";
  uint32_t size = 0;
  int descriptors;
};

// A table that is not there, so that the next query has to make it.
struct NoTable : Path {
  NoTable() {
    fail_allocation(1, Fault::kFromThen);
    reload_table();
    stop_failing();
    descriptors = open_descriptors();
  }
  ~NoTable() { reload_table(); }
};

template <class State>
Row path_row(const std::string& name, const Failures& failures, SMStatus (*call)(State&)) {
  return row<State>(name, failures, call, [](State& state) { return state.unchanged(); });
}

constexpr char kLongName[] =
    "a-file-name-that-takes-more-than-the-memory-that-a-path-begins-with-0123456789-0123456789-"
    "0123456789-0123456789-0123456789-0123456789-0123456789-0123456789-0123456789-0123456789-"
    "0123456789-0123456789-0123456789-0123456789-0123456789-0123456789-0123456789-0123456789";

// Where texts for languages lie.
const std::string& languages() {
  static const Scratch scratch;
  static const std::string directory = [] {
    std::filesystem::create_directories(scratch.file("texts/en/US"));
    put(scratch.file("texts/en/US/exact.txt"), "");
    put(scratch.file("texts/plain.txt"), "");
    return scratch.file("");
  }();
  return directory;
}

std::vector<Row> path_rows() {
  return {
      path_row<NoTable>("SMGetPathByProductIDandType_table", {{SM_STATUS_DATA_NOT_FOUND, 0}},
                        [](NoTable& state) {
                          state.size = sizeof state.text;
                          return SMGetPathByProductIDandType(kQuillance, SM_PATH_TYPE_INI,
                                                             state.text, &state.size);
                        }),
      path_row<NoTable>("SMGetInstallPath_table", {{SM_STATUS_DATA_NOT_FOUND, 0}},
                        [](NoTable& state) {
                          state.size = sizeof state.text;
                          return SMGetInstallPath(state.text, &state.size);
                        }),
      path_row<NoTable>("SMGetInstallPathByProductID_table", {{SM_STATUS_DATA_NOT_FOUND, 0}},
                        [](NoTable& state) {
                          state.size = sizeof state.text;
                          return SMGetInstallPathByProductID(kQuillance, state.text, &state.size);
                        }),
      path_row<Path>("SMExpandYbInstallPathString", kNoMemory,
                     [](Path& state) {
                       state.size = sizeof state.text;
                       return SMExpandYbInstallPathString("@ybinstallpath@/x", state.text,
                                                          &state.size);
                     }),
      path_row<Path>("SMProductIDToSID", kNoMemory,
                     [](Path& state) {
                       state.made = SMProductIDToSID(kQuillance);
                       return done(state.made != nullptr);
                     }),
      path_row<Path>("SMMakePathFileNameByPID", kNoMemory,
                     [](Path& state) {
                       state.made = SMMakePathFileNameByPID(kQuillance, "sub", kLongName);
                       return done(state.made != nullptr);
                     }),
      path_row<Path>("SMMakePathFileNameByPIDAndType", kNoMemory,
                     [](Path& state) {
                       state.made = SMMakePathFileNameByPIDAndType(kQuillance, SM_PATH_TYPE_LOG,
                                                                   nullptr, "file");
                       return done(state.made != nullptr);
                     }),
      path_row<Path>("SMGetLocalizedPathFileName_exact", kNoMemory,
                     [](Path& state) {
                       state.made = SMGetLocalizedPathFileName(languages().c_str(), "texts",
                                                               "en_US", nullptr, "exact.txt");
                       return done(state.made != nullptr);
                     }),
      path_row<Path>("SMGetLocalizedPathFileName_plain", kNoMemory,
                     [](Path& state) {
                       state.made = SMGetLocalizedPathFileName(languages().c_str(), "texts",
                                                               "en_US", nullptr, "plain.txt");
                       return done(state.made != nullptr);
                     }),
      path_row<Path>("SMGetTmpFile", kNoMemory,
                     [](Path& state) {
                       state.size = sizeof state.text;
                       return SMGetTmpFile("/tmp", state.text, &state.size);
                     }),
      path_row<Path>("SMFilePropAlloc", kNoMemory,
                     [](Path& state) {
                       state.watched = SMFilePropAlloc("/etc/ybreg.cfg");
                       return done(state.watched != nullptr);
                     }),
  };
}

// ---- Texts by number and names of devices ----

struct Texts : File {
  Texts() : File("[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1F=text\n") { fill(); }
};

// The library's own texts. A BaseID of 0 has every look-up read the range again.
struct OwnTexts {
  OwnTexts() {
    put(directory() + "kqsdst32.ini", "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1F=text\n");
    put(directory() + "kqisdy32.ini", "[OEM Configuration]\nBaseID=0\n");
    descriptors = open_descriptors();
  }
  ~OwnTexts() {
    std::filesystem::remove(directory() + "kqsdst32.ini");
    std::filesystem::remove(directory() + "kqisdy32.ini");
  }
  OwnTexts(const OwnTexts&) = delete;
  OwnTexts& operator=(const OwnTexts&) = delete;
  static std::string directory() {
    return std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/Quillance/ini/ini/";
  }
  [[nodiscard]] bool begins_with(char letter) const { return buffer[0] == letter; }
  ustring buffer[32] = {};
  int descriptors;
};

// A name that is not found is empty, also for want of memory.
struct Devices : File {
  Devices() : File("V\t8086\tVendor\nD\t1234\tDevice\n") { fill(); }
};

std::vector<Row> other_rows() {
  return {
      // A text says that there is no memory.
      row<Texts>(
          "SMGetUTF8StrFromIDPathFile", kNoMemory,
          [](Texts& state) {
            state.size = sizeof state.buffer;
            SMGetUTF8StrFromIDPathFile(0x1F, nullptr, File::path(), state.buffer, &state.size);
            if (std::strcmp(state.buffer, "text") == 0) {
              return SMStatus{SM_STATUS_SUCCESS};
            }
            const bool is_told = std::strcmp(state.buffer, "Failed to allocate memory") == 0;
            state.size = 0;
            std::fill(std::begin(state.buffer), std::end(state.buffer), '~');
            return is_told ? SMStatus{SM_STATUS_NO_MEMORY} : SMStatus{SM_STATUS_UNSUCCESSFUL};
          },
          [](Texts& state) { return state.unchanged(); }),
      // It says so here too, or there is no text at all; and where only the range cannot be read, the
      // usual one serves.
      row<OwnTexts>(
          "SMGetUCS2StrFromID", {{SM_STATUS_NO_MEMORY, 0}, {SM_STATUS_SUCCESS, 0}},
          [](OwnTexts& state) {
            uint32_t size = sizeof state.buffer;
            const uint32_t result = SMGetUCS2StrFromID(0x1F, nullptr, state.buffer, &size);
            if (result == 10 && state.begins_with('t')) {
              return SMStatus{SM_STATUS_SUCCESS};
            }
            const bool is_told = result == 52 && state.begins_with('F');
            const bool is_none = result == 0 && state.begins_with('\0');
            state.buffer[0] = 0;
            return is_told || is_none ? SMStatus{SM_STATUS_NO_MEMORY}
                                      : SMStatus{SM_STATUS_UNSUCCESSFUL};
          },
          [](OwnTexts& state) { return open_descriptors() == state.descriptors; }),
      row<Devices>(
          "SMReadPCIDevFile", kNoMemory,
          [](Devices& state) {
            state.size = 100;
            uint32_t size = 100;
            return SMReadPCIDevFile(0x8086, 0x1234, 0, 0, File::path(), state.buffer, &state.size,
                                    state.buffer + 100, &size);
          },
          [](Devices& state) { return state.file_unchanged(); }),
  };
}

}  // namespace

std::vector<Row> config_rows() {
  // The library keeps the lock of a path from its first use on.
  {
    Ini state;
    (void)read_ini(state, "first", "key", SMINI_TYPE_UTF8, 100);
    OwnIni own;
    own.size = sizeof own.buffer;
    (void)SMReadINIFileValue("first", "key", SMINI_TYPE_UTF8, own.buffer, &own.size, nullptr, 0,
                             "rows.ini", 1);
    const OwnTexts texts;
    (void)SMGetUCS2StrFromID(0x1F, nullptr, nullptr, nullptr);
  }
  // What the rows themselves make at their first use.
  languages();
  LongIni::text();
  std::vector<Row> rows;
  for (const auto& family :
       {ini_read_rows(), ini_write_rows(), property_rows(), path_rows(), other_rows()}) {
    rows.insert(rows.end(), family.begin(), family.end());
  }
  return rows;
}

}  // namespace kqsupt::tests
