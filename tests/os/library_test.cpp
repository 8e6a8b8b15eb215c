// Loading libraries and looking their functions up.

#include <dlfcn.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "gtest/gtest.h"
#include "kqsupt/frame.h"
#include "kqsupt/os.h"
#include "os/libraries.h"
#include "support/guarded.h"

namespace {

using kqsupt::tests::call;
using kqsupt::tests::Guarded;
using kqsupt::tests::library_named;

constexpr SMStatus kFailed = 0xFFFFFFFF;

using Library = kqsupt::tests::WithLibraries;

TEST_F(Library, IsLoadedUntilItIsUnloaded) {
  SMLib* library = SMLibLoad(counted_.c_str());
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(Library, LoadedTwiceStaysUntilItIsUnloadedTwice) {
  SMLib* one = SMLibLoad(counted_.c_str());
  SMLib* other = SMLibLoad(counted_.c_str());
  EXPECT_NE(one, other);
  EXPECT_EQ(SMLibUnLoad(one), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+");
  EXPECT_EQ(call(SMLibLinkToExportFN(other, "answer")), 42);
  EXPECT_EQ(SMLibUnLoad(other), SM_STATUS_SUCCESS);
  EXPECT_EQ(loads(), "+-");
}

TEST_F(Library, RecordIsATypeOfZeroAndKeepsThePathInItsBlock) {
  Guarded<char> path(counted_.c_str(), counted_.size() + 1);
  SMLib* library = SMLibLoad(path.data());
  ASSERT_NE(library, nullptr);
  uint32_t type = 7;
  const char* kept = nullptr;
  std::memcpy(&type, library, sizeof type);
  std::memcpy(&kept, reinterpret_cast<const char*>(library) + sizeof(void*), sizeof kept);
  EXPECT_EQ(type, 0U);
  EXPECT_EQ(kept, counted_);
  EXPECT_NE(kept, path.data());
  EXPECT_GT(kept, reinterpret_cast<const char*>(library));
  SMLibUnLoad(library);
}

TEST_F(Library, OfNoPathIsNotLoaded) {
  EXPECT_EQ(SMLibLoad(nullptr), nullptr);
}

TEST_F(Library, ThatIsMissingIsNotLoaded) {
  EXPECT_EQ(SMLibLoad(scratch_.file("none.so").c_str()), nullptr);
}

TEST_F(Library, ThatIsADirectoryIsNotLoaded) {
  EXPECT_EQ(SMLibLoad(scratch_.file("").c_str()), nullptr);
}

TEST_F(Library, ThatIsTextIsNotLoaded) {
  kqsupt::tests::put(scratch_.file("text.so"), "no library");
  EXPECT_EQ(SMLibLoad(scratch_.file("text.so").c_str()), nullptr);
}

TEST_F(Library, OfAnEmptyFileIsNotLoaded) {
  kqsupt::tests::put(scratch_.file("empty.so"), "");
  EXPECT_EQ(SMLibLoad(scratch_.file("empty.so").c_str()), nullptr);
}

TEST_F(Library, ThatNeedsWhatIsNowhereIsRefusedAtOnce) {
  EXPECT_EQ(SMLibLoad(library_named("incomplete").c_str()), nullptr);
}

TEST_F(Library, WithoutASlashIsSearchedForByTheLoader) {
  SMLib* library = SMLibLoad("libc.so.6");
  ASSERT_NE(library, nullptr);
  EXPECT_NE(SMLibLinkToExportFN(library, "malloc"), nullptr);
  EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
}

TEST_F(Library, UnloadedWithoutARecordIsAnInvalidParameter) {
  EXPECT_EQ(SMLibUnLoad(nullptr), SM_STATUS_INVALID_PARAMETER);
}

TEST_F(Library, FunctionsAndVariablesAreFound) {
  SMLib* library = SMLibLoad(counted_.c_str());
  EXPECT_EQ(call(SMLibLinkToExportFN(library, "answer")), 42);
  EXPECT_EQ(call(SMLibLinkToExportFN(library, "question")), 7);
  void* variable = SMLibLinkToExportFN(library, "kVariable");
  ASSERT_NE(variable, nullptr);
  EXPECT_EQ(*static_cast<const int*>(variable), 5);
  SMLibUnLoad(library);
}

TEST_F(Library, FunctionThatIsMissingIsNull) {
  SMLib* library = SMLibLoad(counted_.c_str());
  EXPECT_EQ(SMLibLinkToExportFN(library, "missing"), nullptr);
  EXPECT_EQ(SMLibLinkToExportFN(library, ""), nullptr);
  SMLibUnLoad(library);
}

TEST_F(Library, FunctionIsFoundWhateverWentWrongBefore) {
  SMLib* library = SMLibLoad(counted_.c_str());
  EXPECT_EQ(dlopen("/no/such/library", RTLD_NOW), nullptr);
  EXPECT_NE(SMLibLinkToExportFN(library, "answer"), nullptr);
  SMLibUnLoad(library);
}

TEST_F(Library, FunctionOfNothingIsNull) {
  EXPECT_EQ(SMLibLinkToExportFN(nullptr, "answer"), nullptr);
  SMLib* library = SMLibLoad(counted_.c_str());
  EXPECT_EQ(SMLibLinkToExportFN(library, nullptr), nullptr);
  SMLibUnLoad(library);
}

TEST_F(Library, SymbolWhoseValueIsNullIsNull) {
  void* handle = dlopen(odd_.c_str(), RTLD_NOW);
  ASSERT_NE(handle, nullptr);
  dlerror();
  EXPECT_EQ(dlsym(handle, "nothing"), nullptr);
  EXPECT_EQ(dlerror(), nullptr) << "the symbol is there";
  SMLib* library = SMLibLoad(odd_.c_str());
  EXPECT_EQ(SMLibLinkToExportFN(library, "nothing"), nullptr);
  EXPECT_EQ(call(SMLibLinkToExportFN(library, "something")), 1);
  EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
  dlclose(handle);
}

TEST_F(Library, UnlinkingDoesNothing) {
  SMLib* library = SMLibLoad(counted_.c_str());
  void* function = SMLibLinkToExportFN(library, "answer");
  EXPECT_EQ(SMLibUnLinkFromExportFN(library, function), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMLibUnLinkFromExportFN(library, function), SM_STATUS_SUCCESS);
  EXPECT_EQ(SMLibUnLinkFromExportFN(library, &function), SM_STATUS_SUCCESS);
  EXPECT_EQ(call(function), 42);
  EXPECT_EQ(loads(), "+");
  SMLibUnLoad(library);
}

TEST_F(Library, UnlinkingNothingIsAnInvalidParameter) {
  int something = 0;
  EXPECT_EQ(SMLibUnLinkFromExportFN(nullptr, &something), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMLibUnLinkFromExportFN(nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
  SMLib* library = SMLibLoad(counted_.c_str());
  EXPECT_EQ(SMLibUnLinkFromExportFN(library, nullptr), SM_STATUS_INVALID_PARAMETER);
  SMLibUnLoad(library);
}

// A record with a type, or a module, that is not of a library.
void expect_refused(SMLib* library, size_t offset, const void* value, size_t size) {
  char* const place = reinterpret_cast<char*>(library) + offset;
  char kept[sizeof(void*)];
  std::memcpy(kept, place, size);
  std::memcpy(place, value, size);
  int something = 0;
  EXPECT_EQ(SMLibLinkToExportFN(library, "answer"), nullptr);
  EXPECT_EQ(SMLibUnLinkFromExportFN(library, &something), SM_STATUS_OPERATION_FAILED);
  EXPECT_EQ(SMLibUnLinkFromExportFN(library, nullptr), SM_STATUS_INVALID_PARAMETER);
  EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_OPERATION_FAILED);
  std::memcpy(place, kept, size);
  EXPECT_NE(SMLibLinkToExportFN(library, "answer"), nullptr);
  EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
}

TEST_F(Library, RecordOfAnotherTypeIsRefused) {
  const uint32_t type = 1;
  expect_refused(SMLibLoad(counted_.c_str()), 0, &type, sizeof type);
}

TEST_F(Library, RecordWithoutAModuleIsRefused) {
  const void* const module = nullptr;
  expect_refused(SMLibLoad(counted_.c_str()), 2 * sizeof(void*), &module, sizeof module);
}

// What a program was started with stays in it however often it is closed; the loader counts all
// the same.
TEST_F(Library, ThatTheLoaderDoesNotUnloadKeepsItsRecord) {
  const char path[] = KQSUPT_LIB_DIR "/libkqbounded.so.1";
  SMLib* library = SMLibLoad(path);
  ASSERT_NE(library, nullptr);
  void* handle = dlopen(path, RTLD_NOW);
  dlclose(handle);
  dlclose(handle);
  EXPECT_EQ(SMLibUnLoad(library), kFailed);
  EXPECT_EQ(dlopen(path, RTLD_NOW), handle);
  EXPECT_NE(SMLibLinkToExportFN(library, "getenv_s"), nullptr);
  EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
}

}  // namespace
