// ipc-worker COMMAND NAME …: one of several processes that use named objects at the same time.

#include <fcntl.h>
#include <kqsupt/ipc.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "processes/account.h"

namespace {

using kqsupt::tests::Account;

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "ipc-worker: %s\n", what);
  std::exit(1);
}

void require(bool done, const char* what) {
  if (!done) {
    fail(what);
  }
}

void say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

uint32_t number(const char* text) {
  return static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

template <class Memory>
Memory* shared(const char* name) {
  SMSharedMem* memory = SMSharedMemOpen(name);
  require(memory != nullptr, "no shared memory");
  return static_cast<Memory*>(SMSharedMemGetAddressPtr(memory));
}

// count NAME THREADS ROUNDS: adds to the counter in the shared memory, under the mutex.
void count(const char* name, uint32_t threads, uint32_t rounds) {
  auto* const counter = shared<volatile uint32_t>(name);
  SMMutex* mutex = SMMutexOpen(name);
  std::vector<std::thread> counting;
  for (uint32_t i = 0; i < threads; ++i) {
    counting.emplace_back([=] {
      for (uint32_t n = 0; n < rounds; ++n) {
        require(SMMutexLock(mutex, -1) == 0, "not locked");
        *counter = *counter + 1;
        require(SMMutexUnLock(mutex) == 0, "not unlocked");
      }
    });
  }
  for (std::thread& thread : counting) {
    thread.join();
  }
}

// hold NAME: takes the mutex and gives it back, again and again, until it is killed.
void hold(const char* name) {
  SMMutex* mutex = SMMutexCreate(name);
  for (bool said = false;; said = true) {
    require(SMMutexLock(mutex, -1) == 0, "not locked");
    if (!said) {
      say("held");
    }
    usleep(1000);
    require(SMMutexUnLock(mutex) == 0, "not unlocked");
    usleep(10);
  }
}

// spend NAME PARTY: changes the account under the mutex, again and again, until it is killed, most
// likely in the middle of a change.
void spend(const char* name, uint32_t party) {
  auto* const account = shared<Account>(name);
  SMMutex* mutex = SMMutexOpen(name);
  for (bool said = false;; said = true) {
    require(SMMutexLock(mutex, -1) == 0, "not locked");
    if (!said) {
      say("held");
    }
    for (int i = 0; i < 20000; ++i) {
      account->add(party);
    }
    require(SMMutexUnLock(mutex) == 0, "not unlocked");
  }
}

// await NAME PARTY ROUNDS TIMEOUT: each time that it is told to go, waits for the mutex, changes
// the account once, and says that it is done.
void await(const std::string& name, uint32_t party, uint32_t rounds, const char* timeout) {
  auto* const account = shared<Account>(name.c_str());
  SMMutex* mutex = SMMutexOpen(name.c_str());
  SMSemaphore* go = SMSemaphoreOpen((name + " go " + std::to_string(party)).c_str());
  SMSemaphore* done = SMSemaphoreOpen((name + " done").c_str());
  require(mutex != nullptr && go != nullptr && done != nullptr, "nothing to wait for");
  for (uint32_t i = 0; i < rounds; ++i) {
    require(SMSemaphoreAcquireWait(go, -1) == 0, "not told");
    require(SMMutexLock(mutex, std::atoi(timeout)) == 0, "not locked");
    account->add(party);
    require(SMMutexUnLock(mutex) == 0, "not unlocked");
    require(SMSemaphoreRelease(done, 1, nullptr) == 0, "not released");
  }
}

// hold-file PATH PAUSE: has a lock on all of the file and gives it up for a moment each `PAUSE`
// microseconds, until it is killed; never when that is 0.
void hold_file(const char* path, uint32_t pause_us) {
  const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  require(file >= 0, "no file");
  for (bool said = false;; said = true) {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    require(fcntl(file, F_SETLKW, &lock) == 0, "not locked");
    if (!said) {
      say("held");
    }
    while (pause_us == 0) {
      pause();
    }
    usleep(pause_us);
    lock.l_type = F_UNLCK;
    require(fcntl(file, F_SETLKW, &lock) == 0, "not unlocked");
    usleep(100);
  }
}

// A buffer between producers and consumers; each item is a number that is made once.
struct Ring {
  static constexpr uint32_t kPlaces = 16;
  static constexpr uint32_t kEnd = 0xFFFFFFFF;
  uint32_t first;
  uint32_t next;
  uint32_t items[kPlaces];
  uint8_t seen[100000];
};

struct Buffer {
  explicit Buffer(const std::string& name)
      : ring(shared<Ring>(name.c_str())),
        mutex(SMMutexOpen(name.c_str())),
        free(SMSemaphoreOpen((name + " free").c_str())),
        filled(SMSemaphoreOpen((name + " filled").c_str())) {
    require(mutex != nullptr && free != nullptr && filled != nullptr, "no buffer");
  }
  void put(uint32_t item) const {
    require(SMSemaphoreAcquireWait(free, -1) == 0 && SMMutexLock(mutex, -1) == 0, "no place");
    ring->items[ring->next++ % Ring::kPlaces] = item;
    SMMutexUnLock(mutex);
    require(SMSemaphoreRelease(filled, 1, nullptr) == 0, "not released");
  }
  [[nodiscard]] uint32_t take() const {
    require(SMSemaphoreAcquireWait(filled, -1) == 0 && SMMutexLock(mutex, -1) == 0, "no item");
    const uint32_t item = ring->items[ring->first++ % Ring::kPlaces];
    if (item != Ring::kEnd) {
      ++ring->seen[item];
    }
    SMMutexUnLock(mutex);
    require(SMSemaphoreRelease(free, 1, nullptr) == 0, "not released");
    return item;
  }

  Ring* ring;
  SMMutex* mutex;
  SMSemaphore* free;
  SMSemaphore* filled;
};

// produce NAME FIRST COUNT: puts the numbers from FIRST into the buffer.
void produce(const char* name, uint32_t first, uint32_t count) {
  const Buffer buffer(name);
  for (uint32_t i = 0; i < count; ++i) {
    buffer.put(first + i);
  }
}

// consume NAME: takes numbers until there are none any more, and says how many.
void consume(const char* name) {
  const Buffer buffer(name);
  uint32_t taken = 0;
  while (buffer.take() != Ring::kEnd) {
    ++taken;
  }
  say(std::to_string(taken));
}

// wait NAME TIMEOUT: says when it waits for the event, and what that answered.
void wait_for(const char* name, const char* timeout) {
  SMEvent* event = SMEventOpen(name);
  require(event != nullptr, "no event");
  say("waiting");
  say(std::to_string(SMEventWait(event, std::atoi(timeout))));
}

// create NAME TEXT: makes shared memory that holds the text, and stays until it is killed.
void create(const char* name, const char* text) {
  SMSharedMem* memory = SMSharedMemCreate(name, 4096);
  if (memory == nullptr) {
    say("refused");
    return;
  }
  auto* const address = static_cast<char*>(SMSharedMemGetAddressPtr(memory));
  say(std::string("found ") + address);
  std::strcpy(address, text);
  say("created");
  pause();
}

// open NAME: says what the shared memory holds.
void open_memory(const char* name) {
  SMSharedMem* memory = SMSharedMemOpen(name);
  say(memory != nullptr ? static_cast<char*>(SMSharedMemGetAddressPtr(memory)) : "refused");
  SMSharedMemFree(memory);
}

// register PREFIX COUNT START: registers the names PREFIX0, PREFIX1 …, beginning at START.
void register_names(const std::string& prefix, uint32_t count, uint32_t start) {
  for (uint32_t i = 0; i < count; ++i) {
    require(SMSemaphoreOpen((prefix + std::to_string((start + i) % count)).c_str()) == nullptr,
            "a semaphore of that name");
  }
}

// post NAME COUNT: releases the semaphore, one by one, with a pause between.
void post(const char* name, uint32_t count) {
  SMSemaphore* semaphore = SMSemaphoreOpen(name);
  require(semaphore != nullptr, "no semaphore");
  for (uint32_t i = 0; i < count; ++i) {
    usleep(3000);
    require(SMSemaphoreRelease(semaphore, 1, nullptr) == 0, "not released");
  }
}

}  // namespace

int main(int count_of_arguments, char** arguments) {
  alarm(300);  // whatever goes wrong, nothing hangs for ever
  // Nor does it stay, holding the sandbox, when a test dies that started it.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::string command = count_of_arguments > 2 ? arguments[1] : "";
  const char* name = arguments[2];
  const auto argument = [&](int i) { return i < count_of_arguments ? arguments[i] : "0"; };
  if (command == "count") {
    count(name, number(argument(3)), number(argument(4)));
  } else if (command == "hold") {
    hold(name);
  } else if (command == "spend") {
    spend(name, number(argument(3)));
  } else if (command == "await") {
    await(name, number(argument(3)), number(argument(4)), argument(5));
  } else if (command == "hold-file") {
    hold_file(name, number(argument(3)));
  } else if (command == "produce") {
    produce(name, number(argument(3)), number(argument(4)));
  } else if (command == "consume") {
    consume(name);
  } else if (command == "wait") {
    wait_for(name, argument(3));
  } else if (command == "create") {
    create(name, argument(3));
  } else if (command == "open") {
    open_memory(name);
  } else if (command == "register") {
    register_names(name, number(argument(3)), number(argument(4)));
  } else if (command == "post") {
    post(name, number(argument(3)));
  } else {
    fail("what?");
  }
  // What it holds it leaves to the system, as a process does that dies.
  std::fflush(stdout);
  _exit(0);
}
