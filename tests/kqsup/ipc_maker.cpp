// ipc-maker STEP…: makes and holds named objects as an agent does, and dies without giving them back.
//
//   semaphore NAME COUNT   creates it             event NAME MANUAL SIGNALLED
//   memory NAME SIZE       attach NAME            rewrite NAME: creates, and releases at once
//   mutex NAME             lock NAME: creates it and locks it
//   rwl NAME               creates it
//   acquire NAME           says so, then waits for the semaphore for ever
//   set MAKER              a set without a key, listed as made by MAKER ("own": this process)
//   write FILE, read FILE  locks a file for writing or for reading
//   names FIRST COUNT      registers semaphores without creating any
//   stay                   says "ready" and waits to be killed
//
// Exits with the number of the first step that could not be done, from 1 on.
#include <fcntl.h>
#include <kqsupt.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

std::string ipc_directory() {
  return std::string(std::getenv("KQSUPT_SANDBOX")) + "/install/wexlib/var/.ipc";
}

void say(const char* what) {
  std::printf("%s\n", what);
  std::fflush(stdout);
}

bool lock_file(const std::string& path, short type) {
  const int fd = open(path.c_str(), type == F_RDLCK ? O_RDONLY : O_WRONLY);
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return fd >= 0 && fcntl(fd, F_SETLK, &lock) == 0;
}

bool make_set(const std::string& maker) {
  const int set = semget(IPC_PRIVATE, 1, IPC_CREAT | IPC_EXCL | 0600);
  union {
    int value;
    void* pointer;
  } one{1};
  if (set < 0 || semctl(set, 0, SETVAL, one) != 0) {
    return false;
  }
  const uint64_t process =
      maker == "own" ? static_cast<uint64_t>(getpid()) : std::strtoull(maker.c_str(), nullptr, 10);
  std::printf("%d\n", set);
  std::fflush(stdout);
  return SMWriteINIPathFileValue(
             "Semaphore List", std::to_string(set).c_str(), SMINI_TYPE_U64, &process,
             sizeof process, (ipc_directory() + "/.lxsuptIPCini").c_str(), 1) == SM_STATUS_SUCCESS;
}

bool acquire(const std::string& name) {
  SMSemaphore* const semaphore = SMSemaphoreOpen(name.c_str());
  if (semaphore == nullptr) {
    return false;
  }
  say("ready");
  return SMSemaphoreAcquireWait(semaphore, -1) == SM_STATUS_SUCCESS;
}

bool rewrite(const std::string& name) {
  SMSharedMem* const memory = SMSharedMemCreate(name.c_str(), 1);
  SMSharedMemFree(memory);
  return memory != nullptr;
}

bool register_names(int first, int count) {
  for (int i = first; i < first + count; ++i) {
    SMSemaphoreOpen(("name " + std::to_string(i)).c_str());
  }
  return true;
}

bool lock_mutex(const std::string& name) {
  return SMMutexLock(SMMutexCreate(name.c_str()), -1) == SM_STATUS_SUCCESS;
}

bool stay() {
  say("ready");
  for (;;) {
    pause();
  }
}

uint32_t number(const std::string& word) {
  return static_cast<uint32_t>(std::stoul(word));
}

// Does one step and tells how many words it had; 0 when it could not be done.
size_t do_step(const Words& words, size_t at) {
  const std::string& step = words[at];
  const auto word = [&](size_t i) { return words.at(at + i); };
  const auto name = [&] { return words.at(at + 1).c_str(); };
  const auto done = [](bool made, size_t size) { return made ? size : 0; };
  if (step == "semaphore") {
    return done(SMSemaphoreCreate(name(), number(word(2))) != nullptr, 3);
  }
  if (step == "event") {
    return done(SMEventCreate(name(), std::stoi(word(2)), number(word(3))) != nullptr, 4);
  }
  if (step == "memory") {
    return done(SMSharedMemCreate(name(), number(word(2))) != nullptr, 3);
  }
  if (step == "attach") {
    return done(SMSharedMemOpen(name()) != nullptr, 2);
  }
  if (step == "rewrite") {
    return done(rewrite(word(1)), 2);
  }
  if (step == "mutex") {
    return done(SMMutexCreate(name()) != nullptr, 2);
  }
  if (step == "lock") {
    return done(lock_mutex(word(1)), 2);
  }
  if (step == "rwl") {
    return done(SMRWLCreate(name()) != nullptr, 2);
  }
  if (step == "acquire") {
    return done(acquire(word(1)), 2);
  }
  if (step == "set") {
    return done(make_set(word(1)), 2);
  }
  if (step == "write" || step == "read") {
    return done(lock_file(word(1), step == "write" ? F_WRLCK : F_RDLCK), 2);
  }
  if (step == "names") {
    return done(register_names(std::stoi(word(1)), std::stoi(word(2))), 3);
  }
  return done(step == "stay" && stay(), 1);
}

}  // namespace

int main(int count, char** arguments) {
  const Words words(arguments + 1, arguments + count);
  int step = 1;
  for (size_t at = 0; at < words.size(); ++step) {
    const size_t size = do_step(words, at);
    if (size == 0) {
      _exit(step);
    }
    at += size;
  }
  _exit(0);
}
