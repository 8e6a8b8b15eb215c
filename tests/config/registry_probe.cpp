// registry-probe path | path-after-first-appears | all | texts ID...: what a process that has just
// been started is told of the install registry, one line a function.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "kqsupt.h"

namespace {

void print_path() {
  char path[300];
  uint32_t size = sizeof path;
  const SMStatus status = SMGetPathByProductIDandType(35, SM_PATH_TYPE_INSTALL, path, &size);
  std::printf("%s\n", status == 0 ? path : ("status " + std::to_string(status)).c_str());
}

void print_status(const char* name, SMStatus status) {
  std::printf("%s %u\n", name, static_cast<unsigned>(status));
}

void print_size(const char* name, SMStatus status, uint32_t size) {
  std::printf("%s %u %u\n", name, static_cast<unsigned>(status), static_cast<unsigned>(size));
}

void print_null(const char* name, char* made) {
  std::printf("%s %s\n", name, made == nullptr ? "null" : made);
  SMFreeMem(made);
}

void print_all() {
  const std::string directory = std::string(std::getenv("TMPDIR")) + "/registry-probe";
  char text[300] = "";
  uint32_t size = sizeof text;
  SMStatus status = SMGetPathByProductIDandType(35, SM_PATH_TYPE_INI, text, &size);
  print_size("SMGetPathByProductIDandType", status, size);
  size = sizeof text;
  status = SMGetInstallPath(text, &size);
  print_size("SMGetInstallPath", status, size);
  size = sizeof text;
  status = SMGetInstallPathByProductID(-1, text, &size);
  print_size("SMGetInstallPathByProductID", status, size);
  size = sizeof text;
  status = SMExpandYbInstallPathString("@ybinstallpath@", text, &size);
  print_size("SMExpandYbInstallPathString macro", status, size);
  size = sizeof text;
  status = SMExpandYbInstallPathString("plain", text, &size);
  print_size("SMExpandYbInstallPathString plain", status, size);
  print_status("SMProductSIDToID", static_cast<SMStatus>(SMProductSIDToID("Quillance")));
  print_null("SMMakePathFileNameByPID", SMMakePathFileNameByPID(35, "a", "b"));
  print_null("SMMakePathFileNameByPIDAndType", SMMakePathFileNameByPIDAndType(35, 8, "a", "b"));
  print_null("SMGetLocalizedPathFileName",
             SMGetLocalizedPathFileName(nullptr, "no", "en_US", "such", "file"));
  size = sizeof text;
  print_status("SMReadINIFileValue",
               SMReadINIFileValue("s", "k", SMINI_TYPE_UTF8, text, &size, nullptr, 0, "a.ini", 1));
  print_status("SMWriteINIFileValue",
               SMWriteINIFileValue("s", "k", SMINI_TYPE_UTF8, "v", 2, "a.ini", 1));
  size = sizeof text;
  print_status("SMReadINIPathFileValue",
               SMReadINIPathFileValue("s", "k", SMINI_TYPE_UTF8, text, &size, nullptr, 0,
                                      (directory + ".ini").c_str(), 1));
  size = sizeof text;
  print_status("SMGetUTF8StrFromIDPathFile",
               SMGetUTF8StrFromIDPathFile(1, nullptr, (directory + ".ini").c_str(), text, &size));
  ustring wide[16];
  size = sizeof wide;
  print_status("SMGetUCS2StrFromID", SMGetUCS2StrFromID(1, nullptr, wide, &size));
  char name[16];
  size = sizeof text;
  uint32_t name_size = sizeof name;
  print_status("SMReadPCIDevFile", SMReadPCIDevFile(1, 2, 3, 4, (directory + ".pci").c_str(), text,
                                                    &size, name, &name_size));
  print_status("SMMkDir", SMMkDir(directory.c_str()));
  size = sizeof name;
  status = SMGetTmpFile(directory.c_str(), name, &size);
  print_size("SMGetTmpFile", status, size);
  print_status("SMRmDir", SMRmDir(directory.c_str()));
}

// The library's own texts with these numbers, in hexadecimal.
void print_texts(const char* const* ids) {
  for (; *ids != nullptr; ++ids) {
    ustring wide[64] = {};
    uint32_t size = sizeof wide;
    (void)SMGetUCS2StrFromID(static_cast<uint32_t>(std::strtoul(*ids, nullptr, 16)), nullptr, wide,
                             &size);
    for (const ustring* unit = wide; *unit != 0; ++unit) {
      std::putchar(static_cast<char>(*unit));
    }
    std::putchar('\n');
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc >= 2 ? argv[1] : "";
  if (what == "all") {
    print_all();
  } else if (what == "path" || what == "path-after-first-appears") {
    if (what != "path") {
      std::ofstream("/etc/ybreg.cfg") << "Quillance.installpath=/usr\ntumbr.installpath=/usr\n";
      uint32_t size = 0;
      (void)SMGetPathByProductIDandType(99, SM_PATH_TYPE_INSTALL, nullptr, &size);
    }
    print_path();
  } else if (what == "texts") {
    print_texts(argv + 2);
  } else {
    return 2;
  }
  return 0;
}
