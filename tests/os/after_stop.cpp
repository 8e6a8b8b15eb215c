// Calls that come when the library has been stopped. By then nothing of the program runs any more
// but what is still to be written to its files: the calls hide in one of these. $1 is a
// library, $2 a file.

#include <kqsupt/frame.h>
#include <kqsupt/os.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const char* library = nullptr;
const char* file = nullptr;

bool answers_as_stated() {
  if (SMFLibLinkToExportFN("user", library, nullptr) != nullptr ||
      SMFLibUnLoad("user", library) != SM_STATUS_SUCCESS) {
    return false;
  }
  SMLib* const loaded = SMLibLoad(library);
  if (SMLibLinkToExportFN(loaded, "answer") == nullptr ||
      SMLibUnLoad(loaded) != SM_STATUS_SUCCESS) {
    return false;
  }
  char* const value = SMEnvDup("KQSUPT_LOADS", nullptr);
  SMFreeMem(value);
  return value != nullptr && SMFileAppend(file, file, 1) == 0xFFFFFFFF &&
         SMFileCopy(file, file, 0) == SM_STATUS_FILE_EXISTS;
}

ssize_t write_answer(void*, const char*, size_t size) {
  const char* const text = answers_as_stated() ? "as stated\n" : "otherwise\n";
  return write(1, text, 10) == 10 ? static_cast<ssize_t>(size) : -1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  library = arguments[1];
  file = arguments[2];
  if (SMFLibLinkToExportFN("user", library, "answer") == nullptr) {
    return 1;
  }
  std::FILE* last = fopencookie(nullptr, "w", {nullptr, write_answer, nullptr, nullptr});
  std::fputc('x', last);
  std::exit(0);
}
