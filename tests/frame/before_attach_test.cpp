// Calls that come before the library's own constructor, and in a process without a registry file.

#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "gtest/gtest.h"
#include "kqsupt.h"

namespace {

constexpr SMStatus kNotStarted = 17;

bool early_calls_worked = false;

bool call_every_family() {
  void* block = SMAllocMem(4);
  SMFreeMem(block);
  SMRedBlackTree tree = nullptr;
  SMRedBlackTreeDelete(&tree, nullptr, nullptr);
  SMSDOConfig* config = SMSDOConfigAlloc();
  const uint32_t value = 7;
  const SMStatus added = SMSDOConfigAddData(config, 1, 1, &value, sizeof value, 0);
  SMSDOConfigFree(config);
  char text[8];
  const int32_t length = SMsnprintf(text, sizeof text, "%d", 7);
  SMXGBufFree(SMXGBufAlloc(0, 1));
  SMFreeMem(SMUTF8ConvertXSVToYSV("a,b", ',', ';', nullptr, nullptr));
  uint32_t address = 0;
  const SMStatus converted = SMIPAddrASCIIToNetwork("10.0.0.1", &address);
  const bool checksum_right = SMCRC32Compute_str("123456789") == 0xCBF43926;
  SMRFC1321Context context;
  SMRFC1321Load(&context);
  SMRFC1321AddMsg(&context, "abc", 3);
  SMRFC1321ComputeMsgDigest(&context);
  SMBase64Encode(text, context.digest, 3, nullptr);
  SMThread* thread = SMThreadStart([](void*) -> void* { return nullptr; }, nullptr);
  const bool stopped = thread != nullptr && SMThreadStop(thread) == SM_STATUS_SUCCESS;
  const bool named = SMThreadYield() == 0 && SMThreadGetID() != 0;
  SMRWLock* lock = SMRWLCreate(nullptr);
  const bool locked = SMRWLWriteLockGet(lock, -1) == SM_STATUS_SUCCESS;
  SMRWLWriteLockRelease(lock);
  SMRWLDestroy(lock);
  const bool refused = SMRWLCreate("name") == nullptr;
  const bool executed =
      SMCriticalSectionExecute([](void*) -> void* { std::abort(); }, nullptr, -1) == 0;
  return locked && refused && executed && stopped && named && checksum_right && block != nullptr &&
         added == SM_STATUS_SUCCESS && length == 1 &&
         (converted == SM_STATUS_SUCCESS || converted == kNotStarted) && SUPTGetMajorVersion() == 1;
}

// Files are not locked and names not found where there is no directory for them; what needs none
// works.
bool call_files_and_objects() {
  uint32_t number = 7;
  uint32_t size = sizeof number;
  const bool no_files =
      SMReadINIPathFileValue("s", "k", SMINI_TYPE_U32, &number, &size, nullptr, 0, "/tmp/x.ini",
                             1) != SM_STATUS_SUCCESS &&
      SMWriteINIPathFileValue("s", "k", SMINI_TYPE_UTF8, "v", 2, "/tmp/x.ini", 1) !=
          SM_STATUS_SUCCESS &&
      SMReadINIFileValue("s", "k", SMINI_TYPE_U32, &number, &size, nullptr, 0, "x.ini", 1) !=
          SM_STATUS_SUCCESS &&
      SMReadINISectionKeyUTF8Value("s", "k", "d", nullptr, "/tmp/x.ini", 1) == nullptr &&
      SMPropertyFileReadValue("k", SMXLT_TYPE_U32, &number, &size, nullptr, 0, "/tmp/x", 1) !=
          SM_STATUS_SUCCESS &&
      SMPropertyFileWriteValue("k", SMXLT_TYPE_UTF8, "v", 2, "/tmp/x", 1) != SM_STATUS_SUCCESS &&
      SMGetPathByProductIDandType(35, SM_PATH_TYPE_INI, nullptr, &size) ==
          SM_STATUS_DATA_NOT_FOUND &&
      SMMakePathFileNameByPID(35, nullptr, "f") == nullptr &&
      SMGetUCS2StrFromID(1, nullptr, nullptr, nullptr) == 0;
  const bool no_names = SMMutexCreate("x") == nullptr && SMMutexOpen("x") == nullptr &&
                        SMSemaphoreCreate("x", 1) == nullptr && SMSemaphoreOpen("x") == nullptr &&
                        SMEventCreate("x", 1, 1) == nullptr && SMEventOpen("x") == nullptr &&
                        SMSharedMemCreate("x", 1) == nullptr && SMSharedMemOpen("x") == nullptr;
  SMMutex* mutex = SMMutexCreate(nullptr);
  const bool locked = SMMutexLock(mutex, -1) == 0 && SMMutexUnLock(mutex) == 0;
  SMMutexDestroy(mutex);
  SMSemaphore* semaphore = SMSemaphoreCreate(nullptr, 1);
  const bool taken = SMSemaphoreAcquireWait(semaphore, 0) == 0;
  SMSemaphoreDestroy(semaphore);
  SMEvent* event = SMEventCreate(nullptr, 1, 1);
  const bool signalled = SMEventWait(event, 0) == 0;
  SMEventDestroy(event);
  return no_files && no_names && locked && taken && signalled && number == 7;
}

// A library that was loaded now would be initialized before the C library: there is none to load.
// The environment is not there yet either.
bool call_libraries_and_files() {
  return SMLibLoad("/no/such/library") == nullptr &&
         SMFLibLinkToExportFN("user", "/no/such/library", nullptr) == nullptr &&
         SMFLibUnLoad("user", "/no/such/library") == SM_STATUS_SUCCESS &&
         SMEnvDup("KQSUPT_NO_SUCH_VARIABLE", nullptr) == nullptr &&
         SMFileCopy("/etc/passwd", "/etc/passwd", 0) == SM_STATUS_FILE_EXISTS &&
         SMFileAppend("/no/such/file", "/etc/passwd", 0) == SM_STATUS_FILE_NOT_FOUND;
}

// Takes the registry file of the sandbox away, so that the library's own start fails.
void before_all_constructors(int, char**, char** environment) {
  early_calls_worked =
      call_every_family() && call_files_and_objects() && call_libraries_and_files();
  for (char** variable = environment; *variable != nullptr; ++variable) {
    if (std::strncmp(*variable, "KQSUPT_SANDBOX=", 15) == 0) {
      unlink("/etc/ybreg.cfg");
    }
  }
}

// The loader runs these before the constructors of any shared object.
using Initializer = void (*)(int, char**, char**);
[[gnu::section(".preinit_array"), gnu::used]] const Initializer kInitializer =
    before_all_constructors;

TEST(BeforeAttach, EveryFamilyAnswersBeforeTheLibrarysConstructor) {
  EXPECT_TRUE(early_calls_worked);
}

TEST(WithoutRegistryFile, ThereIsNone) {
  EXPECT_NE(access("/etc/ybreg.cfg", F_OK), 0);
  EXPECT_NE(access("/usr/lib/ext/mavo/ybreg.cfg", F_OK), 0);
}

TEST(WithoutRegistryFile, LibrariesAreLoadedForOneUserAndSharedByNone) {
  SMLib* library = SMLibLoad("libc.so.6");
  EXPECT_NE(SMLibLinkToExportFN(library, "malloc"), nullptr);
  EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMFLibLinkToExportFN("user", "libc.so.6", "malloc"), nullptr);
  EXPECT_EQ(SMFLibUnLoad("user", "libc.so.6"), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMFLibUnLoad(nullptr, "libc.so.6"), SM_STATUS_INVALID_PARAMETER);
}

TEST(WithoutRegistryFile, VariablesAreCopied) {
  char* path = SMEnvDup("PATH", nullptr);
  EXPECT_STREQ(path, getenv("PATH"));
  SMFreeMem(path);
}

TEST(WithoutRegistryFile, AddressesAreNotConverted) {
  uint32_t address = 7;
  EXPECT_EQ(SMIPAddrASCIIToNetwork("10.0.0.1", &address), kNotStarted);
  EXPECT_EQ(SMIPAddrASCIIToNetwork("no address", &address), kNotStarted);
  EXPECT_EQ(address, 7U);
  char text[16] = "old";
  uint32_t size = sizeof text;
  EXPECT_EQ(SMIPAddrNetworkToASCII(address, text, &size), kNotStarted);
  EXPECT_EQ(size, sizeof text);
  size = 0;
  EXPECT_EQ(SMIPAddrNetworkToASCII(address, text, &size), kNotStarted);
  EXPECT_EQ(size, 0U);
  EXPECT_STREQ(text, "old");
}

TEST(WithoutRegistryFile, HostNamesAreNotGiven) {
  char text[16] = "old";
  uint32_t size = sizeof text;
  EXPECT_EQ(SMGetIPHostName(text, &size), kNotStarted);
  EXPECT_EQ(SMGetDNSSuffixNameName(text, &size), kNotStarted);
  EXPECT_EQ(SMGetDNSSuffixNameName(nullptr, &size), kNotStarted);
  EXPECT_EQ(size, sizeof text);
  EXPECT_STREQ(text, "old");
  ustring units[100] = {7};
  size = sizeof units;
  EXPECT_EQ(SMUCS2GetIPHostName(units, &size), kNotStarted);
  EXPECT_EQ(SMUCS2GetIPHostName(nullptr, &size), kNotStarted);
  EXPECT_EQ(size, sizeof units);
  EXPECT_EQ(units[0], 7);
  size = 0;
  EXPECT_EQ(SMGetIPHostName(text, &size), kNotStarted);
}

TEST(WithoutRegistryFile, AddressesOfEitherFamilyAreNotConverted) {
  uint8_t bytes[16] = {7};
  char text[64] = "old";
  uint32_t size = 0;
  for (const uint32_t family : {0U, 1U, 2U}) {
    EXPECT_EQ(SMInetAddrUTF8ToNetwork(family, "1.2.3.4", bytes, &size), kNotStarted);
    EXPECT_EQ(SMInetAddrNetworkToUTF8(family, bytes, 4, text, &size), kNotStarted);
  }
  EXPECT_EQ(size, 0U);
  EXPECT_EQ(bytes[0], 7);
  EXPECT_STREQ(text, "old");
}

TEST(WithoutRegistryFile, AddressesAreNotListed) {
  SMIPAddrStr text{};
  SMInetAddrStr entry{};
  uint32_t count = 1;
  EXPECT_EQ(SMGetIPAddrStrList(nullptr, &count, &text), kNotStarted);
  EXPECT_EQ(SMGetIPAddrStrList(nullptr, &count, nullptr), kNotStarted);
  for (const uint32_t selector : {0U, 1U, 2U, 3U}) {
    EXPECT_EQ(SMGetInetAddrStrList(selector, &count, &entry), kNotStarted);
  }
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(text.text[0], '\0');
  EXPECT_EQ(entry.family, 0);
}

TEST(WithoutRegistryFile, TypedValuesOfAddressesAnswerTheSame) {
  uint32_t address = 7;
  uint32_t size = sizeof address;
  EXPECT_EQ(SMXLTUTF8ToTypeValue("10.0.0.1", &address, &size, SMXLT_TYPE_IPV4), kNotStarted);
  EXPECT_EQ(address, 7U);
  EXPECT_EQ(size, 4U);
  size = 3;
  EXPECT_EQ(SMXLTUTF8ToTypeValue("10.0.0.1", &address, &size, SMXLT_TYPE_IPV4),
            SM_STATUS_BUFFER_TOO_SMALL)
      << "the room is looked at first";
  char text[16] = "old";
  size = sizeof text;
  EXPECT_EQ(SMXLTTypeValueToUTF8(&address, 4, text, &size, SMXLT_TYPE_IPV4), kNotStarted);
  EXPECT_STREQ(text, "old");
  char parameter[] = "a=10.0.0.1";
  char* const parameters[] = {parameter};
  size = sizeof address;
  EXPECT_EQ(SMNVPUTF8ToTypeValue(1, parameters, "a", 0, &address, &size, SMXLT_TYPE_IPV4),
            kNotStarted);
}

TEST(WithoutRegistryFile, NullsAreRefusedBeforeThat) {
  uint32_t address = 7;
  char text[16];
  uint32_t size = sizeof text;
  EXPECT_EQ(SMIPAddrASCIIToNetwork(nullptr, &address), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMIPAddrASCIIToNetwork("10.0.0.1", nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMIPAddrNetworkToASCII(address, nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMIPAddrNetworkToASCII(address, text, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMGetIPHostName(nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMGetIPHostName(text, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMUCS2GetIPHostName(nullptr, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMGetDNSSuffixNameName(text, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrUTF8ToNetwork(1, "10.0.0.1", nullptr, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMInetAddrNetworkToUTF8(1, nullptr, 4, text, &size), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMGetIPAddrStrList(nullptr, nullptr, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMGetInetAddrStrList(0, nullptr, nullptr), SM_STATUS_UNSUCCESSFUL);
  EXPECT_EQ(SMXLTUTF8ToTypeValue(nullptr, &address, &size, SMXLT_TYPE_IPV4),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTUTF8ToTypeValue("10.0.0.1", nullptr, &size, SMXLT_TYPE_IPV4),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTUTF8ToTypeValue("10.0.0.1", &address, nullptr, SMXLT_TYPE_IPV4),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTTypeValueToUTF8(nullptr, 4, text, &size, SMXLT_TYPE_IPV4),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMXLTTypeValueToUTF8(&address, 4, text, nullptr, SMXLT_TYPE_IPV4),
            SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(size, sizeof text);
}

TEST(WithoutRegistryFile, EveryFamilyAnswers) {
  EXPECT_TRUE(call_every_family());
  EXPECT_TRUE(call_files_and_objects());
}

}  // namespace
