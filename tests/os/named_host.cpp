// What the library makes of a host whose system calls itself $KQSUPT_HOST_NAME; without that the
// system does not say.

#include <kqsupt/log.h>
#include <kqsupt/os.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>

// In the place of the C library's. The library asks before main() begins.
extern "C" int uname(utsname* about) noexcept {
  const char* name = std::getenv("KQSUPT_HOST_NAME");
  if (name == nullptr) {
    // What is left behind in the answer does not count.
    std::strcpy(about->sysname, "VMkernel");
    errno = EFAULT;
    return -1;
  }
  std::strncpy(about->sysname, name, sizeof about->sysname - 1);
  return 0;
}

namespace {

// Whether a log of 128 KiB that gets an event becomes its own backup.
bool is_backed_up() {
  char path[256] = "";
  char backup[256] = "";
  uint32_t size = sizeof path;
  SMGetLogPathFileName(SM_LOG_TEXT, path, &size);
  size = sizeof backup;
  SMGetBackupLogPathFileName(SM_LOG_TEXT, backup, &size);
  unlink(backup);
  std::FILE* log = std::fopen(path, "w");
  std::fputs(std::string(131072, 'x').c_str(), log);
  std::fclose(log);
  SMAppendToLog(SM_LOG_TEXT, 1, 1, 1, "source", "text", nullptr, 0);
  struct stat about {};
  const bool is_one = stat(backup, &about) == 0 && about.st_size == 131072;
  unlink(path);
  unlink(backup);
  return is_one;
}

}  // namespace

int main() {
  uint32_t size = 0;
  SMGetLogMaxSize("/log/unknown.xml", &size);
  std::printf("type %u, default %u", static_cast<unsigned>(SMOSTypeGet()),
              static_cast<unsigned>(size));
  for (const uint32_t wanted : {131071U, 131072U, 1048575U, 1048576U, 4194304U, 4194305U}) {
    const bool is_taken = SMSetLogMaxSize("/log/known.xml", wanted) == SM_STATUS_SUCCESS;
    std::printf(", %u %s", static_cast<unsigned>(wanted), is_taken ? "yes" : "no");
  }
  std::printf("; of 128 KiB: %s\n", is_backed_up() ? "full" : "not full");
  return 0;
}
