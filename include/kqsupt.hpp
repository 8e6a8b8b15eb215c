/// @file kqsupt.hpp
/// The C++17 layer over the C interface of libkqsupt: objects that release what they own, guards
/// that give back what they took, text as std::string_view and std::string, statuses as
/// std::error_code. It is a header and nothing else, and each of its functions is a call of the C
/// interface, repeated where the room was too small, with at most what has to be asked before or
/// released after it: what a call does, and which statuses it has, is told where the C function is
/// declared, and named here by `->`.
///
/// Failure: functions that can fail return a result<T>, which holds either a value or a status.
/// Nothing here throws, and the header compiles without exceptions and without run-time type
/// information. The standard containers that carry text and bytes do what they do everywhere when
/// memory is short.
///
/// Text in is UTF-8 in a std::string_view. What the C function wants terminated is copied first.
/// Text that holds a NUL is never cut: the call is not made and the answer is
/// status::invalid_parameter. Sizes of 4 GiB and more have the same answer. Text out is a
/// std::string without the terminator.
///
/// An object that was moved from, released or default-made owns nothing. The C interface takes such
/// a null handle everywhere and answers status::invalid_parameter.
///
/// What runs as a callback of the C interface must not let an exception out: that ends the process.
#ifndef KQSUPT_HPP
#define KQSUPT_HPP

#include <kqsupt.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace kqsupt {

// ---- Statuses -----------------------------------------------------------------------------------

/// The statuses of the C interface, by the same numbers. A call may also answer another number that
/// it passes on: compare with these and print the others.
enum class status : uint32_t {
  success = SM_STATUS_SUCCESS,
  not_supported = 1,  ///< no such log to ask about, no such notation of a number
  unsuccessful = SM_STATUS_UNSUCCESSFUL,
  timeout = SM_STATUS_TIMEOUT,
  file_not_found = SM_STATUS_FILE_NOT_FOUND,
  file_not_examined = 9,  ///< the source of a copy cannot be examined
  index_out_of_range = SM_STATUS_INDEX_OUT_OF_RANGE,
  buffer_too_small = SM_STATUS_BUFFER_TOO_SMALL,
  not_started = 17,  ///< the library has not started in this process (SM_STATUS_NEXT_SECTION, too)
  out_of_space = SM_STATUS_OUT_OF_SPACE,
  file_exists = SM_STATUS_FILE_EXISTS,
  data_not_found = SM_STATUS_DATA_NOT_FOUND,
  operation_failed = SM_STATUS_OPERATION_FAILED,
  already_exists = SM_STATUS_ALREADY_EXISTS,
  file_open_failed = SM_STATUS_FILE_OPEN_FAILED,
  end_of_file = SM_STATUS_END_OF_FILE,
  section_not_found = SM_STATUS_SECTION_NOT_FOUND,
  key_not_found = SM_STATUS_KEY_NOT_FOUND,
  bad_length = SM_STATUS_BAD_LENGTH,
  access_denied = SM_STATUS_ACCESS_DENIED,
  invalid_parameter = SM_STATUS_INVALID_PARAMETER,
  no_memory = SM_STATUS_NO_MEMORY,
  value_too_large = SM_STATUS_VALUE_TOO_LARGE,
  value_too_small = SM_STATUS_VALUE_TOO_SMALL,
  system_refused = 0xFFFFFFFF  ///< the operating system refused, with no word why
};

namespace detail {

/// The category of the statuses; see status_category().
class category final : public std::error_category {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "kqsupt"; }

  [[nodiscard]] std::string message(int value) const override {
    switch (static_cast<status>(static_cast<uint32_t>(value))) {
      case status::success:
        return "success";
      case status::not_supported:
        return "not supported";
      case status::unsuccessful:
        return "the request could not be carried out";
      case status::timeout:
        return "the wait took too long";
      case status::file_not_found:
        return "the file was not found";
      case status::file_not_examined:
        return "the file cannot be examined";
      case status::index_out_of_range:
        return "the index is out of range";
      case status::buffer_too_small:
        return "the buffer is too small";
      case status::not_started:
        return "the library has not started";
      case status::out_of_space:
        return "there is no room left";
      case status::file_exists:
        return "the file exists already";
      case status::data_not_found:
        return "there is no such item";
      case status::operation_failed:
        return "the operation was refused";
      case status::already_exists:
        return "there is such an item already";
      case status::file_open_failed:
        return "the file cannot be opened";
      case status::end_of_file:
        return "the file ended too early";
      case status::section_not_found:
        return "there is no such section";
      case status::key_not_found:
        return "there is no such key";
      case status::bad_length:
        return "the length is not allowed";
      case status::access_denied:
        return "access was denied";
      case status::invalid_parameter:
        return "an argument is not valid";
      case status::no_memory:
        return "memory is short";
      case status::value_too_large:
        return "the number is too large";
      case status::value_too_small:
        return "the number is too small";
      case status::system_refused:
        return "the operating system refused";
    }
    return "status " + std::to_string(static_cast<uint32_t>(value));
  }

  [[nodiscard]] std::error_condition default_error_condition(int value) const noexcept override {
    switch (static_cast<status>(static_cast<uint32_t>(value))) {
      case status::timeout:
        return std::errc::timed_out;
      case status::file_not_found:
        return std::errc::no_such_file_or_directory;
      case status::file_exists:
        return std::errc::file_exists;
      case status::access_denied:
        return std::errc::permission_denied;
      case status::invalid_parameter:
        return std::errc::invalid_argument;
      case status::no_memory:
        return std::errc::not_enough_memory;
      case status::value_too_large:
      case status::value_too_small:
        return std::errc::result_out_of_range;
      default:
        return {value, *this};
    }
  }
};

}  // namespace detail

/// The category of the statuses, named "kqsupt". Its messages are short English texts. Statuses
/// that the standard has a condition for compare equal to it: status::timeout to
/// std::errc::timed_out, and so on.
inline const std::error_category& status_category() noexcept {
  static const detail::category category;
  return category;
}

/// A status as an error code. The highest status, status::system_refused, has the value -1 there.
inline std::error_code make_error_code(status code) noexcept {
  return {static_cast<int>(static_cast<uint32_t>(code)), status_category()};
}

}  // namespace kqsupt

/// Lets a status stand where a std::error_code is wanted.
template <>
struct std::is_error_code_enum<kqsupt::status> : std::true_type {};

namespace kqsupt {

/// A value, or the status that tells why there is none.
///
///     auto mutex = kqsupt::mutex::create("fans");
///     if (!mutex) return mutex.error();
///     auto held = mutex->lock(1000);
template <class T>
class [[nodiscard]] result {
 public:
  /// A success that holds `value`.
  result(T value) : value_(std::move(value)), code_(status::success) {}
  /// A failure. status::success is none, and counts as status::operation_failed.
  result(status code) : code_(code == status::success ? status::operation_failed : code) {}

  /// Whether there is a value.
  explicit operator bool() const { return value_.has_value(); }
  /// The value, which must be there.
  T& operator*() & { return *value_; }
  const T& operator*() const& { return *value_; }
  T&& operator*() && { return std::move(*value_); }
  T* operator->() { return &*value_; }
  const T* operator->() const { return &*value_; }
  /// The value, or `other` when there is none.
  [[nodiscard]] T value_or(T other) && {
    return value_.has_value() ? std::move(*value_) : std::move(other);
  }
  [[nodiscard]] T value_or(T other) const& {
    return value_.has_value() ? *value_ : std::move(other);
  }
  /// The status: status::success when there is a value.
  [[nodiscard]] status code() const { return code_; }
  /// The same as an error code, which is false when there is a value.
  [[nodiscard]] std::error_code error() const { return code_; }

 private:
  std::optional<T> value_;
  status code_;
};

/// A success without a value, or the status that tells what failed.
template <>
class [[nodiscard]] result<void> {
 public:
  result() : code_(status::success) {}
  result(status code) : code_(code) {}

  /// Whether the call succeeded.
  explicit operator bool() const { return code_ == status::success; }
  [[nodiscard]] status code() const { return code_; }
  /// The status as an error code, which is false after a success.
  [[nodiscard]] std::error_code error() const { return code_; }

 private:
  status code_;
};

/// A timeout that waits without limit.
inline constexpr int32_t forever = -1;

namespace detail {

inline status code(SMStatus raw) {
  return static_cast<status>(raw);
}

/// Text as the C functions take it: a terminated copy, or a null pointer for no text at all. False
/// when the text holds a NUL.
class c_text {
 public:
  explicit c_text(std::optional<std::string_view> text)
      : given_(text.has_value()), text_(text.value_or(std::string_view())) {}
  explicit operator bool() const {
    return text_.find('\0') == std::string::npos &&
           text_.size() < std::numeric_limits<uint32_t>::max();
  }
  [[nodiscard]] const char* get() const { return given_ ? text_.c_str() : nullptr; }
  /// In bytes with the terminator.
  [[nodiscard]] uint32_t size() const { return static_cast<uint32_t>(text_.size() + 1); }

 private:
  bool given_;
  std::string text_;
};

inline bool fits(size_t size) {
  return size <= std::numeric_limits<uint32_t>::max();
}

/// Calls `call(buffer, &size)` with more and more room until that is enough, and gives what it
/// wrote. A value may grow between two calls, so the room is doubled at least.
template <class Call>
result<std::vector<char>> bytes_out(Call call, uint32_t room) {
  for (;;) {
    std::vector<char> buffer(room);
    uint32_t size = room;
    const SMStatus answer = call(buffer.data(), &size);
    if (answer == SM_STATUS_SUCCESS) {
      buffer.resize(size < room ? size : room);
      return buffer;
    }
    if (answer != SM_STATUS_BUFFER_TOO_SMALL || room > (1U << 30U)) {
      return code(answer);
    }
    room = size > 2 * room ? size : 2 * room;
  }
}

/// The same for text, up to its terminator.
template <class Call>
result<std::string> text_out(Call call, uint32_t room = 256) {
  const result<std::vector<char>> bytes = bytes_out(call, room);
  if (!bytes) {
    return bytes.code();
  }
  const std::string_view all(bytes->data(), bytes->size());
  return std::string(all.substr(0, all.find('\0')));
}

/// The terminated texts of a list that ends with an empty one.
inline std::vector<std::string> texts_of(const char* list, size_t size) {
  std::vector<std::string> texts;
  std::string_view rest(list, size);
  for (size_t end = rest.find('\0'); end != 0 && end != std::string_view::npos;
       end = rest.find('\0')) {
    texts.emplace_back(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
  return texts;
}

/// A text that the C interface allocated, released here.
inline result<std::string> text_of(char* text, status otherwise) {
  if (text == nullptr) {
    return otherwise;
  }
  std::string copy(text);
  SMFreeMem(text);
  return copy;
}

/// An owner in a result: a failure when the handle is null.
template <class Owner, class Handle>
result<Owner> made(Handle* handle, status otherwise = status::operation_failed) {
  if (handle == nullptr) {
    return otherwise;
  }
  return Owner(handle);
}

inline void unload(SMLib* library) {
  (void)SMLibUnLoad(library);
}
inline void join(SMThread* thread) {
  (void)SMThreadStop(thread);
}
inline void unlock(SMMutex* mutex) {
  (void)SMMutexUnLock(mutex);
}
inline void give_back(SMSemaphore* semaphore) {
  (void)SMSemaphoreRelease(semaphore, 1, nullptr);
}

}  // namespace detail

// ---- Owners and guards --------------------------------------------------------------------------

/// Owns a handle of the C interface and calls `Release` on it once: when it is destroyed, reset or
/// given another handle. It moves and does not copy; moving it to itself changes nothing.
template <class Handle, void (*Release)(Handle*)>
class owner {
 public:
  owner() = default;
  /// Takes `handle` over, which may be null.
  explicit owner(Handle* handle) : handle_(handle) {}
  owner(owner&& other) noexcept : handle_(other.release()) {}
  owner& operator=(owner&& other) noexcept {
    if (this != &other) {
      reset(other.release());
    }
    return *this;
  }
  owner(const owner&) = delete;
  owner& operator=(const owner&) = delete;
  ~owner() { reset(); }

  /// Whether a handle is owned.
  explicit operator bool() const { return handle_ != nullptr; }
  /// The handle, for calls of the C interface; it stays this object's.
  [[nodiscard]] Handle* get() const { return handle_; }
  /// Hands the handle to the caller.
  [[nodiscard]] Handle* release() { return std::exchange(handle_, nullptr); }
  /// Releases the handle, and takes `other` over.
  void reset(Handle* other = nullptr) {
    Handle* const old = std::exchange(handle_, other);
    if (old != nullptr && old != other) {
      Release(old);
    }
  }

 private:
  Handle* handle_ = nullptr;
};

/// Holds what a lock call took and gives it back once: at the end of its scope or by unlock(). It
/// must not outlive the object that it locks; moving that object does not matter.
template <class Handle, void (*Unlock)(Handle*)>
class [[nodiscard]] guard : private owner<Handle, Unlock> {
 public:
  guard() = default;
  /// Takes over a lock of `handle` that is held.
  explicit guard(Handle* handle) : owner<Handle, Unlock>(handle) {}

  /// Whether something is held.
  using owner<Handle, Unlock>::operator bool;
  /// Gives it back now.
  void unlock() { this->reset(); }
  /// Keeps it held; somebody else gives it back.
  void dismiss() { (void)this->release(); }
};

/// Holds a mutex. One with a name is given back early when this process lets go of any other handle
/// on that name, see mutex.
using mutex_guard = guard<SMMutex, detail::unlock>;
/// Holds 1 of the count of a semaphore.
using semaphore_guard = guard<SMSemaphore, detail::give_back>;
/// Holds a reader-writer lock as a reader.
using read_guard = guard<SMRWLock, SMRWLReadLockRelease>;
/// Holds a reader-writer lock as its writer.
using write_guard = guard<SMRWLock, SMRWLWriteLockRelease>;

// ---- Memory and version -------------------------------------------------------------------------

/// A block of plain heap memory, as the C interface hands out and takes over. -> SMAllocMem,
/// SMReAllocMem, SMFreeMem
class memory : public owner<void, SMFreeMem> {
 public:
  using owner::owner;

  /// A block of `size` bytes, not cleared. status::no_memory also for a `size` of 0, of which the
  /// heap may give nothing.
  static result<memory> allocate(size_t size) {
    return detail::fits(size)
               ? detail::made<memory>(SMAllocMem(static_cast<uint32_t>(size)), status::no_memory)
               : status::invalid_parameter;
  }
  /// Changes the size, keeping the content. With status::no_memory the block is as it was. `size` 0
  /// is refused: reset() releases the block.
  result<void> resize(size_t size) {
    if (size == 0 || !detail::fits(size)) {
      return status::invalid_parameter;
    }
    void* const moved = SMReAllocMem(get(), static_cast<uint32_t>(size));
    if (moved == nullptr) {
      return status::no_memory;
    }
    (void)release();
    reset(moved);
    return {};
  }
};

/// The version of the library that runs, as "1.1.1". -> SUPTGetMajorVersion, SUPTGetMinorVersion,
/// SUPTGetRevision
inline std::string version() {
  return std::to_string(SUPTGetMajorVersion()) + "." + std::to_string(SUPTGetMinorVersion()) + "." +
         std::to_string(SUPTGetRevision());
}

// ---- Text ---------------------------------------------------------------------------------------

/// UCS-2 text from UTF-8; each char16_t is one unit. status::invalid_parameter also for text of
/// 2 GiB, whose units the call cannot count. -> SMUTF8StrToUCS2Str
inline result<std::u16string> to_ucs2(std::string_view text) {
  if (text.size() >= std::numeric_limits<uint32_t>::max() / sizeof(ustring)) {
    return status::invalid_parameter;
  }
  const detail::c_text utf8(text);
  uint32_t size = 0;
  if (!utf8) {
    return status::invalid_parameter;
  }
  SMStatus answer = SMUTF8StrToUCS2Str(nullptr, &size, utf8.get());
  if (answer != SM_STATUS_SUCCESS) {
    return detail::code(answer);
  }
  std::vector<ustring> units(size / sizeof(ustring));
  answer = SMUTF8StrToUCS2Str(units.data(), &size, utf8.get());
  if (answer != SM_STATUS_SUCCESS) {
    return detail::code(answer);
  }
  return std::u16string(units.begin(), units.end() - 1);
}

/// UTF-8 text from UCS-2. status::invalid_parameter also for text that could take 4 GiB.
/// -> SMUCS2StrToUTF8Str
inline result<std::string> to_utf8(std::u16string_view text) {
  if (text.size() >= std::numeric_limits<uint32_t>::max() / 3 ||
      text.find(u'\0') != std::u16string_view::npos) {
    return status::invalid_parameter;
  }
  std::vector<ustring> units(text.begin(), text.end());
  units.push_back(0);
  uint32_t size = 0;
  SMStatus answer = SMUCS2StrToUTF8Str(nullptr, &size, units.data());
  if (answer != SM_STATUS_SUCCESS) {
    return detail::code(answer);
  }
  std::string utf8(size, '\0');
  answer = SMUCS2StrToUTF8Str(utf8.data(), &size, units.data());
  if (answer != SM_STATUS_SUCCESS) {
    return detail::code(answer);
  }
  utf8.resize(size - 1);
  return utf8;
}

/// Owns the buffer of a sized string of UTF-8 text. -> SMSSUTF8StrAlloc, SMSSUTF8StrFree
class utf8_buffer {
 public:
  utf8_buffer() = default;
  utf8_buffer(utf8_buffer&& other) noexcept : string_(std::exchange(other.string_, {})) {}
  utf8_buffer& operator=(utf8_buffer&& other) noexcept {
    if (this != &other) {
      SMSSUTF8StrFree(&string_);
      string_ = std::exchange(other.string_, {});
    }
    return *this;
  }
  utf8_buffer(const utf8_buffer&) = delete;
  utf8_buffer& operator=(const utf8_buffer&) = delete;
  ~utf8_buffer() { SMSSUTF8StrFree(&string_); }

  /// An empty string with a buffer of `capacity` bytes, which is not 0.
  static result<utf8_buffer> create(size_t capacity) {
    utf8_buffer made;
    if (capacity == 0 || !detail::fits(capacity)) {
      return status::invalid_parameter;
    }
    if (SMSSUTF8StrAlloc(&made.string_, static_cast<uint32_t>(capacity)) == nullptr) {
      made.string_ = {};
      return status::no_memory;
    }
    return made;
  }
  /// Appends `text`. With status::no_memory the string is as it was. -> SMSSUTF8StrNCatUTF8Str
  result<void> append(std::string_view text) {
    if (string_.content == nullptr || text.find('\0') != std::string_view::npos ||
        !detail::fits(text.size())) {
      return status::invalid_parameter;
    }
    const uint32_t before = string_.length;
    if (!text.empty()) {
      SMSSUTF8StrNCatUTF8Str(&string_, text.data(), static_cast<uint32_t>(text.size()));
    }
    return string_.length == before + text.size() ? status::success : status::no_memory;
  }
  /// The text, until the buffer changes.
  [[nodiscard]] std::string_view view() const {
    return string_.content != nullptr ? std::string_view(string_.content, string_.length)
                                      : std::string_view();
  }
  /// The record itself, for calls of the C interface.
  [[nodiscard]] SMSSUTF8Str* get() { return &string_; }
  /// Hands the buffer to the caller, who releases it with SMSSUTF8StrFree.
  [[nodiscard]] SMSSUTF8Str release() { return std::exchange(string_, {}); }
  /// Frees the buffer.
  void reset() { SMSSUTF8StrFree(&string_); }

 private:
  SMSSUTF8Str string_ = {};
};

/// Owns the buffer of a sized string of UCS-2 text. -> SMSSUCS2StrAlloc, SMSSUCS2StrFree
class ucs2_buffer {
 public:
  ucs2_buffer() = default;
  ucs2_buffer(ucs2_buffer&& other) noexcept : string_(std::exchange(other.string_, {})) {}
  ucs2_buffer& operator=(ucs2_buffer&& other) noexcept {
    if (this != &other) {
      SMSSUCS2StrFree(&string_);
      string_ = std::exchange(other.string_, {});
    }
    return *this;
  }
  ucs2_buffer(const ucs2_buffer&) = delete;
  ucs2_buffer& operator=(const ucs2_buffer&) = delete;
  ~ucs2_buffer() { SMSSUCS2StrFree(&string_); }

  /// An empty string with a buffer of `capacity` bytes, at least 2.
  static result<ucs2_buffer> create(size_t capacity) {
    ucs2_buffer made;
    if (capacity < sizeof(ustring) || !detail::fits(capacity)) {
      return status::invalid_parameter;
    }
    if (SMSSUCS2StrAlloc(&made.string_, static_cast<uint32_t>(capacity)) == nullptr) {
      made.string_ = {};
      return status::no_memory;
    }
    return made;
  }
  /// Appends `text`. With status::no_memory the string is as it was. -> SMSSUCS2StrNCatUCS2Str
  result<void> append(std::u16string_view text) {
    if (string_.content == nullptr || text.find(u'\0') != std::u16string_view::npos ||
        !detail::fits(text.size())) {
      return status::invalid_parameter;
    }
    const uint32_t before = string_.length;
    if (!text.empty()) {
      const std::vector<ustring> units(text.begin(), text.end());
      SMSSUCS2StrNCatUCS2Str(&string_, units.data(), static_cast<uint32_t>(units.size()));
    }
    return string_.length == before + text.size() ? status::success : status::no_memory;
  }
  /// A copy of the text.
  [[nodiscard]] std::u16string text() const {
    return string_.content != nullptr
               ? std::u16string(string_.content, string_.content + string_.length)
               : std::u16string();
  }
  /// The record itself, for calls of the C interface.
  [[nodiscard]] SMSSUCS2Str* get() { return &string_; }
  /// Hands the buffer to the caller, who releases it with SMSSUCS2StrFree.
  [[nodiscard]] SMSSUCS2Str release() { return std::exchange(string_, {}); }
  /// Frees the buffer.
  void reset() { SMSSUCS2StrFree(&string_); }

 private:
  SMSSUCS2Str string_ = {};
};

/// The ID of the language of the environment. -> SMGetLocalLanguageID
inline uint32_t local_language() {
  return SMGetLocalLanguageID();
}

// ---- Records ------------------------------------------------------------------------------------

/// The bytes of a block.
using block = std::vector<unsigned char>;

/// The value of an entry, and its type byte.
struct entry {
  uint16_t id;
  uint8_t type;
  block value;

  /// The value as text: its bytes up to the first 0.
  [[nodiscard]] std::string text() const {
    const std::string all(value.begin(), value.end());
    return all.substr(0, all.find('\0'));
  }
};

namespace detail {

/// Reads an entry by `call(&id, &type, buffer, &size)`.
template <class Call>
result<entry> entry_out(uint16_t id, Call call) {
  entry found{id, 0, {}};
  const auto bytes = bytes_out(
      [&](char* buffer, uint32_t* size) { return call(&found.id, &found.type, buffer, size); }, 64);
  if (!bytes) {
    return bytes.code();
  }
  found.value.assign(bytes->begin(), bytes->end());
  return found;
}

/// Reads a value whose size is that of T, by `call(buffer, &size)`. `slot` 4 is for values that are
/// given in slots of that size.
template <class T, class Call>
result<T> value_out(Call call, uint32_t slot) {
  static_assert(std::is_trivially_copyable_v<T>, "values are copied byte by byte");
  constexpr uint32_t kSize = sizeof(T);
  unsigned char buffer[kSize > 4 ? kSize : 4];
  uint32_t size = sizeof buffer;
  const SMStatus answer = call(buffer, &size);
  if (answer != SM_STATUS_SUCCESS) {
    return code(answer);
  }
  if (size != (kSize > slot ? kSize : slot)) {
    return status::bad_length;
  }
  T value;
  std::memcpy(&value, buffer, kSize);
  return value;
}

}  // namespace detail

/// What a walk of a block calls; leave out what is of no interest. Each answers 0 to go on.
/// -> SMSDOBinaryWalkBegin and the others
struct walk_callbacks {
  SMSDOBinaryWalkBegin begin = nullptr;
  SMSDOBinaryWalkEntry entry = nullptr;
  SMSDOBinaryWalkAfter after = nullptr;
  SMSDOBinaryWalkEnd end = nullptr;
};

/// A block that lies in somebody else's memory: a record or an array of them. It owns nothing and
/// is good for as long as that memory.
class block_view {
 public:
  /// The block at `data`, which this library made.
  explicit block_view(const void* data) : data_(data) {}
  explicit block_view(const block& bytes) : data_(bytes.empty() ? nullptr : bytes.data()) {}

  /// The block that begins a buffer of `size` bytes: status::operation_failed when that has no
  /// block's header, or less than the header says. What follows the header is trusted.
  static result<block_view> in(const void* data, size_t size) {
    constexpr size_t kHeaderSize = 8;
    const block_view view(data);
    if (data == nullptr || size < kHeaderSize || view.size() < kHeaderSize || view.size() > size) {
      return status::operation_failed;
    }
    return view;
  }

  [[nodiscard]] const void* data() const { return data_; }
  /// In bytes; 0 when it is no block. -> SMSDOBinaryGetSize
  [[nodiscard]] uint32_t size() const { return SMSDOBinaryGetSize(data_, nullptr); }
  /// Of entries or elements. -> SMSDOBinaryGetCount
  [[nodiscard]] result<uint32_t> count() const {
    const uint32_t count = SMSDOBinaryGetCount(data_, nullptr);
    return count != 0xFFFFFFFF ? result<uint32_t>(count) : status::invalid_parameter;
  }
  [[nodiscard]] bool is_array() const {
    uint16_t array = 0;
    return SMSDOBinaryGetSize(data_, &array) != 0 && array != 0;
  }

  /// The entry with this ID. A value of up to 4 bytes comes as its slot of 4.
  /// -> SMSDOBinaryGetDataByID
  [[nodiscard]] result<entry> find(uint16_t id) const {
    return detail::entry_out(id, [&](uint16_t*, uint8_t* type, void* buffer, uint32_t* size) {
      return SMSDOBinaryGetDataByID(data_, id, type, buffer, size);
    });
  }
  /// The entry at `index`, in the size that it was added with. -> SMSDOBinaryGetDataByIndex
  [[nodiscard]] result<entry> at(uint32_t index) const {
    return detail::entry_out(0, [&](uint16_t* id, uint8_t* type, void* buffer, uint32_t* size) {
      return SMSDOBinaryGetDataByIndex(data_, index, id, type, buffer, size);
    });
  }
  /// The value of the entry with this ID as a T. status::bad_length, or status::buffer_too_small,
  /// when it is of another size. Values of 1 to 4 bytes lie in slots of 4, which do not tell their
  /// size: each of these answers to every T of up to 4 bytes, so ask for the type that was added.
  /// -> SMSDOBinaryGetDataByID
  template <class T>
  [[nodiscard]] result<T> value(uint16_t id) const {
    return detail::value_out<T>(
        [&](void* buffer, uint32_t* size) {
          return SMSDOBinaryGetDataByID(data_, id, nullptr, buffer, size);
        },
        4);
  }
  /// The value of the entry with this ID as text, up to its terminator. -> SMSDOBinaryGetDataByID
  [[nodiscard]] result<std::string> text(uint16_t id) const {
    const result<entry> found = find(id);
    return found ? result<std::string>(found->text()) : found.code();
  }
  /// A copy of the element at `index` of an array. -> SMSDOBinaryArrayGetByIndex
  [[nodiscard]] result<block> element(uint32_t index) const {
    const auto bytes = detail::bytes_out(
        [&](char* buffer, uint32_t* size) {
          return SMSDOBinaryArrayGetByIndex(data_, 0, index, buffer, size);
        },
        256);
    return bytes ? result<block>(block(bytes->begin(), bytes->end())) : bytes.code();
  }
  /// Walks the block in order; with `recurse` nested ones, too. -> SMSDOBinaryWalk
  result<void> walk(void* context, const walk_callbacks& callbacks, bool recurse = true) const {
    return detail::code(SMSDOBinaryWalk(data_, context, callbacks.begin, callbacks.entry,
                                        callbacks.after, callbacks.end,
                                        static_cast<uint16_t>(recurse ? 1 : 0)));
  }

 private:
  const void* data_;
};

/// Owns a record in memory, its entries and its children. -> SMSDOConfigAlloc, SMSDOConfigFree
///
/// The handles of children belong to the record that holds them: child() lends one.
class record : public owner<SMSDOConfig, SMSDOConfigFree> {
 public:
  using owner::owner;

  /// An empty record. -> SMSDOConfigAlloc
  static result<record> create() {
    return detail::made<record>(SMSDOConfigAlloc(), status::no_memory);
  }
  /// A record from its block. -> SMSDOBinaryToConfig
  static result<record> from_block(block_view bytes) {
    return detail::made<record>(SMSDOBinaryToConfig(bytes.data()));
  }
  /// The records of an array block. -> SMSDOBinaryArrayToConfigArray
  static result<std::vector<record>> from_array(block_view array) {
    uint32_t count = 0;
    SMStatus answer = SMSDOBinaryArrayToConfigArray(array.data(), nullptr, &count);
    if (answer != SM_STATUS_SUCCESS && answer != SM_STATUS_BUFFER_TOO_SMALL) {
      return detail::code(answer);
    }
    std::vector<SMSDOConfig*> handles(count);
    // All the room before there is a record that could be lost.
    std::vector<record> records;
    records.reserve(count);
    if (count != 0) {
      answer = SMSDOBinaryArrayToConfigArray(array.data(), handles.data(), &count);
      if (answer != SM_STATUS_SUCCESS) {
        return detail::code(answer);
      }
    }
    for (uint32_t i = 0; i < count; ++i) {
      records.emplace_back(handles[i]);
    }
    return records;
  }
  /// A deep copy. -> SMSDOConfigClone
  [[nodiscard]] result<record> clone() const {
    return detail::made<record>(SMSDOConfigClone(get()));
  }

  /// Adds an entry with a copy of `size` bytes. It refuses the types of what becomes a child:
  /// children go in by add_child() and blocks by add_block(). Children of an entry that is replaced
  /// are freed. -> SMSDOConfigAddData
  result<void> add(uint16_t id, uint8_t type, const void* data, size_t size, bool replace = false) {
    const unsigned base = type & kBaseType;
    if (!detail::fits(size) || base == SDO_TYPE_CONFIG || base == SDO_TYPE_BINARY) {
      return status::invalid_parameter;
    }
    const std::vector<SMSDOConfig*> replaced =
        replace ? children_at(id) : std::vector<SMSDOConfig*>();
    const SMStatus answer =
        SMSDOConfigAddData(get(), id, type, data, static_cast<uint32_t>(size), replace ? 1 : 0);
    if (answer == SM_STATUS_SUCCESS) {
      for (SMSDOConfig* const child : replaced) {
        SMSDOConfigFree(child);
      }
    }
    return detail::code(answer);
  }
  /// Adds an entry with the bytes of a number or another plain value.
  template <class T>
  result<void> add_value(uint16_t id, uint8_t type, const T& value, bool replace = false) {
    static_assert(std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>,
                  "values are copied byte by byte");
    return add(id, type, &value, sizeof value, replace);
  }
  /// Adds an entry with text and its terminator.
  result<void> add_text(uint16_t id, uint8_t type, std::string_view text, bool replace = false) {
    const detail::c_text terminated(text);
    return terminated ? add(id, type, terminated.get(), terminated.size(), replace)
                      : status::invalid_parameter;
  }
  /// Adds `child`, which then belongs to this record; after a failure it is the caller's as before.
  /// `flags` are the caller's own bits 5 to 7 of the type. -> SMSDOConfigAddData
  result<void> add_child(uint16_t id, record& child, bool replace = false, uint8_t flags = 0) {
    const SMStatus answer =
        SMSDOConfigAddData(get(), id, static_cast<uint8_t>(SDO_TYPE_CONFIG | (flags & 0xE0)),
                           child.get(), sizeof(void*), replace ? 1 : 0);
    if (answer == SM_STATUS_SUCCESS) {
      (void)child.release();
    }
    return detail::code(answer);
  }
  /// Adds an array of children; the same.
  result<void> add_children(uint16_t id, std::vector<record>& children, bool replace = false,
                            uint8_t flags = 0) {
    std::vector<SMSDOConfig*> handles;
    for (const record& child : children) {
      handles.push_back(child.get());
    }
    const size_t size = handles.size() * sizeof(SMSDOConfig*);
    if (!detail::fits(size)) {
      return status::invalid_parameter;
    }
    const SMStatus answer = SMSDOConfigAddData(
        get(), id, static_cast<uint8_t>(SDO_TYPE_CONFIG | SDO_TYPE_FLAG_ARRAY | (flags & 0xE0)),
        handles.data(), static_cast<uint32_t>(size), replace ? 1 : 0);
    if (answer == SM_STATUS_SUCCESS) {
      for (record& child : children) {
        (void)child.release();
      }
      children.clear();
    }
    return detail::code(answer);
  }

  /// Adds the record that `bytes` holds as a child, or the records of an array as an array of
  /// children. The block is copied. -> SMSDOBinaryToConfig, SMSDOConfigAddData
  result<void> add_block(uint16_t id, block_view bytes, bool replace = false, uint8_t flags = 0) {
    if (bytes.size() == 0) {
      return status::invalid_parameter;
    }
    if (bytes.is_array()) {
      return detail::code(SMSDOConfigAddData(
          get(), id, static_cast<uint8_t>(SDO_TYPE_BINARY | SDO_TYPE_FLAG_ARRAY | (flags & 0xE0)),
          bytes.data(), bytes.size(), replace ? 1 : 0));
    }
    result<record> child = from_block(bytes);
    return child ? add_child(id, *child, replace, flags) : child.code();
  }

  /// The entry with this ID. -> SMSDOConfigGetDataByID
  [[nodiscard]] result<entry> find(uint16_t id) const {
    return detail::entry_out(id, [&](uint16_t*, uint8_t* type, void* buffer, uint32_t* size) {
      return SMSDOConfigGetDataByID(get(), id, type, buffer, size);
    });
  }
  /// The entry at `index` in ascending order of IDs. -> SMSDOConfigGetDataByIndex
  [[nodiscard]] result<entry> at(uint32_t index) const {
    return detail::entry_out(0, [&](uint16_t* id, uint8_t* type, void* buffer, uint32_t* size) {
      return SMSDOConfigGetDataByIndex(get(), index, id, type, buffer, size);
    });
  }
  /// The value of the entry with this ID as a T. status::bad_length, or status::buffer_too_small,
  /// when it is of another size. -> SMSDOConfigGetDataByID
  template <class T>
  [[nodiscard]] result<T> value(uint16_t id) const {
    return detail::value_out<T>(
        [&](void* buffer, uint32_t* size) {
          return SMSDOConfigGetDataByID(get(), id, nullptr, buffer, size);
        },
        0);
  }
  /// The value of the entry with this ID as text, up to its terminator. -> SMSDOConfigGetDataByID
  [[nodiscard]] result<std::string> text(uint16_t id) const {
    const result<entry> found = find(id);
    return found ? result<std::string>(found->text()) : found.code();
  }
  /// The child at this ID, which stays this record's. status::data_not_found when the entry is no
  /// single child. -> SMSDOConfigGetDataByID
  [[nodiscard]] result<SMSDOConfig*> child(uint16_t id) const {
    uint8_t type = 0;
    SMSDOConfig* found = nullptr;
    uint32_t size = sizeof found;
    const SMStatus answer = SMSDOConfigGetDataByID(get(), id, &type, &found, &size);
    if (answer == SM_STATUS_INVALID_PARAMETER) {
      return status::invalid_parameter;
    }
    return answer == SM_STATUS_SUCCESS && (type & 0x1FU) == SDO_TYPE_CONFIG && size == sizeof found
               ? result<SMSDOConfig*>(found)
               : status::data_not_found;
  }

  /// Removes the entry with this ID, or at `index`, or all of them; their children are freed.
  /// -> SMSDOConfigRemoveData
  result<void> remove(uint16_t id) {
    // An ID that is not valid stands for an index there.
    return id == 0 || id >= 0xFFFE ? status::invalid_parameter
                                   : detail::code(SMSDOConfigRemoveData(get(), id, 0, 0));
  }
  result<void> remove_at(uint32_t index) {
    return detail::code(SMSDOConfigRemoveData(get(), 0, index, 0));
  }
  result<void> clear() { return detail::code(SMSDOConfigRemoveData(get(), 0, 0, 1)); }

  /// The number of entries. -> SMSDOConfigGetCount
  [[nodiscard]] result<uint32_t> count() const {
    const uint32_t count = SMSDOConfigGetCount(get());
    return count != 0xFFFFFFFF ? result<uint32_t>(count) : status::invalid_parameter;
  }
  /// The size of the block that to_block() makes. -> SMSDOConfigGetBinarySize
  [[nodiscard]] uint32_t binary_size() const { return SMSDOConfigGetBinarySize(get()); }
  /// -> SMSDOConfigReCalcBinarySize
  uint32_t recalculate_binary_size() { return SMSDOConfigReCalcBinarySize(get()); }
  /// The block of this record. -> SMSDOConfigToBinary
  [[nodiscard]] result<block> to_block() const {
    uint32_t size = binary_size();
    block bytes(size);
    const SMStatus answer = SMSDOConfigToBinary(get(), size != 0 ? bytes.data() : nullptr, &size);
    if (answer != SM_STATUS_SUCCESS) {
      return detail::code(answer);
    }
    bytes.resize(size);
    return bytes;
  }
  /// Whether both serialize to the same bytes. -> SMSDOConfigCompareByValue
  friend bool operator==(const record& a, const record& b) {
    return SMSDOConfigCompareByValue(a.get(), b.get()) == 1;
  }
  friend bool operator!=(const record& a, const record& b) { return !(a == b); }

 private:
  static constexpr unsigned kBaseType = 0x0F;

  /// The children that the entry with this ID holds; none when it holds something else.
  [[nodiscard]] std::vector<SMSDOConfig*> children_at(uint16_t id) const {
    uint8_t type = 0;
    uint32_t size = 0;
    const SMStatus asked = SMSDOConfigGetDataByID(get(), id, &type, nullptr, &size);
    if (asked != SM_STATUS_BUFFER_TOO_SMALL || (type & kBaseType) != SDO_TYPE_CONFIG) {
      return {};
    }
    std::vector<SMSDOConfig*> children(size / sizeof(SMSDOConfig*));
    const SMStatus answer = SMSDOConfigGetDataByID(get(), id, nullptr, children.data(), &size);
    return answer == SM_STATUS_SUCCESS ? children : std::vector<SMSDOConfig*>();
  }
};

/// An array of blocks that grows. -> SMSDOBinaryArrayInitHeader, SMSDOBinaryArrayAddData
class block_array {
 public:
  /// An empty array.
  block_array() : bytes_(kHeaderSize) {
    (void)SMSDOBinaryArrayInitHeader(bytes_.data(), kHeaderSize);
  }

  /// Appends a copy of a record's block, which may lie in this array. status::buffer_too_small: the
  /// array would have 65,536 bytes or more, and is as it was.
  result<void> add(block_view element) {
    const uint32_t more = element.size();
    if (more == 0 || element.is_array()) {
      return status::invalid_parameter;
    }
    // With room for the header of an array in any case, which the call asks for. A second vector,
    // as the element may lie in the first.
    block grown(bytes_.size() + more + kHeaderSize);
    std::memcpy(grown.data(), bytes_.data(), bytes_.size());
    auto room = static_cast<uint32_t>(grown.size());
    const SMStatus answer = SMSDOBinaryArrayAddData(grown.data(), &room, element.data(), more);
    if (answer == SM_STATUS_SUCCESS) {
      grown.resize(bytes_.size() + more);
      bytes_ = std::move(grown);
    }
    return detail::code(answer);
  }
  [[nodiscard]] const block& bytes() const { return bytes_; }
  [[nodiscard]] block_view view() const { return block_view(bytes_); }

 private:
  static constexpr uint32_t kHeaderSize = 8;
  block bytes_;
};

/// Gives the entry `id` of the block `bytes` another value, which may lie in the block; the block
/// grows and shrinks with it. After a failure it is as it was. -> SMSDOBinarySetData
inline result<void> set_data(block& bytes, uint16_t id, uint8_t type, const void* data,
                             size_t size) {
  if (!detail::fits(size) || bytes.empty() || !detail::fits(bytes.size() + size + 16)) {
    return status::invalid_parameter;
  }
  // A second block, as the value may lie in the first.
  block changed(bytes.size() + size + 16);
  std::memcpy(changed.data(), bytes.data(), bytes.size());
  auto now = static_cast<uint32_t>(changed.size());
  const SMStatus answer =
      SMSDOBinarySetData(changed.data(), &now, id, type, data, static_cast<uint32_t>(size));
  if (answer == SM_STATUS_SUCCESS) {
    changed.resize(now);
    bytes = std::move(changed);
  }
  return detail::code(answer);
}

// ---- Containers ---------------------------------------------------------------------------------

namespace detail {

/// The functions of the singly linked family, for basic_list.
struct singly_linked {
  using list = SMSLList;
  using entry = SMSLListEntry;
  static constexpr auto alloc = SMSLListAlloc;
  static constexpr auto free = SMSLListFree;
  static constexpr auto entry_alloc = SMSLListEntryAlloc;
  static constexpr auto entry_free = SMSLListEntryFree;
  static constexpr auto insert_at_head = SMSLListInsertEntryAtHead;
  static constexpr auto insert_at_tail = SMSLListInsertEntryAtTail;
  static constexpr auto insert = SMSLListInsertEntry;
  static constexpr auto walk = SMSLListWalkAtHead;
  static constexpr auto remove_at_head = SMSLListRemoveEntryAtHead;
  static constexpr auto remove_at_tail = SMSLListRemoveEntryAtTail;
  static constexpr auto is_empty = SMSLListIsEmpty;
};

/// Those of the doubly linked family.
struct doubly_linked {
  using list = SMDLList;
  using entry = SMDLListEntry;
  static constexpr auto alloc = SMDLListAlloc;
  static constexpr auto free = SMDLListFree;
  static constexpr auto entry_alloc = SMDLListEntryAlloc;
  static constexpr auto entry_free = SMDLListEntryFree;
  static constexpr auto insert_at_head = SMDLListInsertEntryAtHead;
  static constexpr auto insert_at_tail = SMDLListInsertEntryAtTail;
  static constexpr auto insert = SMDLListInsertEntry;
  static constexpr auto walk = SMDLListWalkAtHead;
  static constexpr auto remove_at_head = SMDLListRemoveEntryAtHead;
  static constexpr auto remove_at_tail = SMDLListRemoveEntryAtTail;
  static constexpr auto is_empty = SMDLListIsEmpty;
};

template <class Family>
void free_list(typename Family::list* list) {
  while (typename Family::entry* const first = Family::remove_at_head(list)) {
    Family::entry_free(first);
  }
  Family::free(list);
}

}  // namespace detail

/// Owns an entry that is on no list, with the payload behind it.
template <class Family>
class basic_list_entry : public owner<typename Family::entry, Family::entry_free> {
 public:
  using owner<typename Family::entry, Family::entry_free>::owner;

  /// An entry with `payload` bytes behind it, not cleared, at get()->data.
  static result<basic_list_entry> create(size_t payload) {
    return detail::fits(payload)
               ? detail::made<basic_list_entry>(Family::entry_alloc(static_cast<uint32_t>(payload)),
                                                status::no_memory)
               : status::invalid_parameter;
  }
};

/// Owns a list and the entries on it: all were made by the entry class. Entries that the caller
/// linked in through get() are his to take out again before the list goes.
template <class Family>
class basic_list : public owner<typename Family::list, detail::free_list<Family>> {
 public:
  using base = owner<typename Family::list, detail::free_list<Family>>;
  using base::base;
  using entry = basic_list_entry<Family>;
  using raw_entry = typename Family::entry;

  /// An empty list.
  static result<basic_list> create() {
    return detail::made<basic_list>(Family::alloc(), status::no_memory);
  }
  /// Links an entry before the first one, or after the last. Nothing is done without a list or an
  /// entry; the caller keeps the entry then.
  void push_front(entry& added) {
    if (this->get() != nullptr) {
      Family::insert_at_head(this->get(), added.release());
    }
  }
  void push_back(entry& added) {
    if (this->get() != nullptr) {
      Family::insert_at_tail(this->get(), added.release());
    }
  }
  /// Links an entry in ascending order, as `order(raw_entry&)` has it: negative when the new entry
  /// comes before that one, positive when after, 0 when they are equal. After a failure the entry
  /// stays the caller's.
  template <class Order>
  result<void> insert(entry& added, Order order) {
    const SMStatus answer = Family::insert(this->get(), added.get(), &order, call<Order>);
    if (answer == SM_STATUS_SUCCESS) {
      (void)added.release();
    }
    return detail::code(answer);
  }
  /// The first entry that `matches(raw_entry&)`; null when there is none. It stays on the list.
  template <class Matches>
  [[nodiscard]] raw_entry* find(Matches matches) const {
    auto visit = [&](raw_entry& candidate) { return matches(candidate) ? 0 : 1; };
    return Family::walk(this->get(), &visit, call<decltype(visit)>);
  }
  /// Takes the first entry off the list, or the last; nothing when there is none.
  [[nodiscard]] entry pop_front() { return entry(Family::remove_at_head(this->get())); }
  [[nodiscard]] entry pop_back() { return entry(Family::remove_at_tail(this->get())); }
  [[nodiscard]] bool empty() const { return Family::is_empty(this->get()) == 1; }

 private:
  template <class Callable>
  static int32_t call(void* key, raw_entry* candidate, uint32_t) noexcept {
    return (*static_cast<Callable*>(key))(*candidate);
  }
};

/// A singly linked list and its entries. -> SMSLListAlloc, SMSLListEntryAlloc
using slist = basic_list<detail::singly_linked>;
using slist_entry = basic_list_entry<detail::singly_linked>;
/// A doubly linked list and its entries. -> SMDLListAlloc, SMDLListEntryAlloc
using dlist = basic_list<detail::doubly_linked>;
using dlist_entry = basic_list_entry<detail::doubly_linked>;

/// Owns the nodes of a red-black tree of the caller's items. The items stay the caller's.
/// -> SMRedBlackTreeAttach, SMRedBlackTreeDelete
///
/// An `order` is called as order(key, item) and is negative when the key comes before the item,
/// positive when after, 0 when they are equal.
template <class T>
class tree {
 public:
  tree() { SMRedBlackTreeAttach(&root_); }
  tree(tree&& other) noexcept : root_(other.root_) { SMRedBlackTreeDetach(&other.root_); }
  tree& operator=(tree&& other) noexcept {
    if (this != &other) {
      clear();
      root_ = other.root_;
      SMRedBlackTreeDetach(&other.root_);
    }
    return *this;
  }
  tree(const tree&) = delete;
  tree& operator=(const tree&) = delete;
  ~tree() { clear(); }

  /// -> SMRedBlackTreeDataInsert
  template <class Key, class Order>
  result<void> insert(T& item, const Key& key, Order order) {
    search<Key, Order> by{key, order};
    return detail::code(SMRedBlackTreeDataInsert(&root_, &item, &by, compare<Key, Order>));
  }
  /// Puts `item` in the place of the equal one, which is returned; null when there is none.
  /// -> SMRedBlackTreeDataReplace
  template <class Key, class Order>
  T* replace(T& item, const Key& key, Order order) {
    search<Key, Order> by{key, order};
    return static_cast<T*>(SMRedBlackTreeDataReplace(&root_, &item, &by, compare<Key, Order>));
  }
  /// -> SMRedBlackTreeDataDelete
  template <class Key, class Order>
  result<void> erase(const Key& key, Order order) {
    search<Key, Order> by{key, order};
    return detail::code(SMRedBlackTreeDataDelete(&root_, &by, compare<Key, Order>));
  }
  /// The item that equals the key; null when there is none. -> SMRedBlackTreeDataWalk
  template <class Key, class Order>
  [[nodiscard]] T* find(const Key& key, Order order) const {
    search<Key, Order> by{key, order};
    // The walk that searches takes a comparison in the place of its visit. By way of a type of no
    // arguments, which compilers take as a sign that the cast is meant.
    const auto visit =
        reinterpret_cast<SMRedBlackTreeVisit>(reinterpret_cast<void (*)()>(&compare<Key, Order>));
    return static_cast<T*>(
        SMRedBlackTreeDataWalk(root_, &by, visit, SM_RED_BLACK_TREE_WALK_SEARCH));
  }
  /// Calls `visit(T&)` for each item in ascending order. -> SMRedBlackTreeDataWalk
  template <class Visit>
  void for_each(Visit visit) const {
    (void)SMRedBlackTreeDataWalk(root_, &visit, each<Visit>, SM_RED_BLACK_TREE_WALK_ASCENDING);
  }
  [[nodiscard]] bool empty() const { return SMRedBlackTreeIsEmpty(root_) == 1; }
  /// Frees the nodes. -> SMRedBlackTreeDelete
  void clear() { SMRedBlackTreeDelete(&root_, nullptr, nullptr); }
  /// The root, for calls of the C interface.
  [[nodiscard]] SMRedBlackTree get() const { return root_; }
  /// Hands the nodes to the caller. -> SMRedBlackTreeDetach
  [[nodiscard]] SMRedBlackTree release() {
    const SMRedBlackTree root = root_;
    SMRedBlackTreeDetach(&root_);
    return root;
  }

 private:
  template <class Key, class Order>
  struct search {
    const Key& key;
    Order& order;
  };
  template <class Key, class Order>
  static int32_t compare(void* by, void* item, uint32_t) noexcept {
    const auto* const wanted = static_cast<search<Key, Order>*>(by);
    return wanted->order(wanted->key, *static_cast<const T*>(item));
  }
  template <class Visit>
  static int32_t each(void* visit, void* item) noexcept {
    (*static_cast<Visit*>(visit))(*static_cast<T*>(item));
    return 1;
  }

  SMRedBlackTree root_ = nullptr;
};

/// Holds one ID of a table and gives it back once. The table must still be there then.
class hash_id {
 public:
  hash_id() = default;
  /// Takes over an ID of the table of `bytes` bytes at `table`; 0 is none.
  hash_id(void* table, uint32_t bytes, uint32_t id) : table_(table), bytes_(bytes), id_(id) {}
  hash_id(hash_id&& other) noexcept
      : table_(other.table_), bytes_(other.bytes_), id_(other.release()) {}
  hash_id& operator=(hash_id&& other) noexcept {
    if (this != &other) {
      reset();
      table_ = other.table_;
      bytes_ = other.bytes_;
      id_ = other.release();
    }
    return *this;
  }
  hash_id(const hash_id&) = delete;
  hash_id& operator=(const hash_id&) = delete;
  ~hash_id() { reset(); }

  explicit operator bool() const { return id_ != 0; }
  [[nodiscard]] uint32_t get() const { return id_; }
  /// Keeps the ID in use, and returns it.
  [[nodiscard]] uint32_t release() { return std::exchange(id_, 0); }
  /// Makes the ID free again. -> SMReleaseHashID
  void reset() {
    const uint32_t id = release();
    if (id != 0) {
      (void)SMReleaseHashID(table_, bytes_, id);
    }
  }

 private:
  void* table_ = nullptr;
  uint32_t bytes_ = 0;
  uint32_t id_ = 0;
};

/// A table that hands out the IDs from 1 on. It moves and does not copy: a copy would hand out the
/// same IDs again. Moving it leaves the IDs that it handed out good; those of a table that another
/// one is moved to must be gone.
/// -> SMHashTableBytesNeeded, SMClearHashTable
class hash_id_table {
 public:
  hash_id_table(hash_id_table&&) noexcept = default;
  hash_id_table& operator=(hash_id_table&&) noexcept = default;
  hash_id_table(const hash_id_table&) = delete;
  hash_id_table& operator=(const hash_id_table&) = delete;
  ~hash_id_table() = default;

  /// For the IDs 1 to `most` at least.
  static result<hash_id_table> create(uint32_t most) {
    const uint32_t bytes = SMHashTableBytesNeeded(most);
    if (bytes == 0) {
      return status::invalid_parameter;
    }
    hash_id_table made;
    made.words_.resize(bytes / sizeof(uint32_t));
    (void)SMClearHashTable(made.words_.data(), bytes);
    return made;
  }
  /// Takes an ID by one of the modes SM_HASH_ID_. status::index_out_of_range when none is free.
  /// -> SMAcquireHashID
  result<hash_id> acquire(int32_t mode = SM_HASH_ID_LOWEST_FREE) {
    const uint32_t id = SMAcquireHashID(data(), bytes(), mode);
    return id != 0 ? result<hash_id>(hash_id(data(), bytes(), id)) : status::index_out_of_range;
  }
  /// Takes this ID, which is not 0. -> SMAcquireHashIDByID
  result<hash_id> acquire_by_id(uint32_t id) {
    const SMStatus answer =
        id != 0 ? SMAcquireHashIDByID(data(), bytes(), id) : SMStatus{SM_STATUS_INVALID_PARAMETER};
    return answer == SM_STATUS_SUCCESS ? result<hash_id>(hash_id(data(), bytes(), id))
                                       : detail::code(answer);
  }
  /// Whether an ID is in use. -> SMVerifyHashID
  [[nodiscard]] bool in_use(uint32_t id) const {
    return SMVerifyHashID(words_.data(), bytes(), id) == SM_STATUS_SUCCESS;
  }
  /// The smallest and the largest ID in use, or 0. -> SMGetMinInUseID, SMGetMaxInUseID
  [[nodiscard]] uint32_t smallest() const { return SMGetMinInUseID(words_.data(), bytes()); }
  [[nodiscard]] uint32_t largest() const { return SMGetMaxInUseID(words_.data(), bytes()); }
  /// The memory of the table, for calls of the C interface.
  [[nodiscard]] void* data() { return words_.data(); }
  [[nodiscard]] uint32_t bytes() const {
    return static_cast<uint32_t>(words_.size() * sizeof(uint32_t));
  }

 private:
  hash_id_table() = default;
  std::vector<uint32_t> words_;
};

// ---- Digests ------------------------------------------------------------------------------------

/// The CRC-32 of bytes. -> SMCRC32Compute_vn
inline result<uint32_t> crc32(std::string_view bytes) {
  return detail::fits(bytes.size()) ? result<uint32_t>(SMCRC32Compute_vn(
                                          bytes.data(), static_cast<uint32_t>(bytes.size())))
                                    : status::invalid_parameter;
}

/// A message whose MD5 digest is computed, in the byte order of the host. What it knows of the
/// message is cleared when it goes. One that was moved from begins a new message, and knows nothing
/// of the old one. -> SMRFC1321Load, SMRFC1321UnLoad
class md5 {
 public:
  md5() { SMRFC1321Load(&context_); }
  md5(md5&& other) noexcept : context_(other.context_) { other.restart(); }
  md5& operator=(md5&& other) noexcept {
    if (this != &other) {
      context_ = other.context_;
      other.restart();
    }
    return *this;
  }
  md5(const md5&) = delete;
  md5& operator=(const md5&) = delete;
  ~md5() { SMRFC1321UnLoad(&context_); }

  /// -> SMRFC1321AddMsg
  result<void> add(std::string_view bytes) {
    if (!detail::fits(bytes.size())) {
      return status::invalid_parameter;
    }
    SMRFC1321AddMsg(&context_, bytes.data(), static_cast<uint32_t>(bytes.size()));
    return {};
  }
  /// The 16 bytes of the digest; the next message begins. -> SMRFC1321ComputeMsgDigest
  [[nodiscard]] std::string finish() {
    SMRFC1321ComputeMsgDigest(&context_);
    std::string digest(reinterpret_cast<const char*>(context_.digest), sizeof context_.digest);
    restart();
    return digest;
  }

 private:
  void restart() {
    SMRFC1321UnLoad(&context_);
    SMRFC1321Load(&context_);
  }

  SMRFC1321Context context_;
};

/// Bytes as Base64 in the alphabet of RFC 4648. -> SMBase64Encode
inline result<std::string> base64_encode(std::string_view bytes) {
  if (bytes.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max()) / 2) {
    return status::invalid_parameter;
  }
  // The copy ends in a byte of 0, which the encoder looks at.
  const std::string in(bytes);
  std::string out((in.size() + 2) / 3 * 4 + 1, '\0');
  (void)SMBase64Encode(out.data(), in.c_str(), static_cast<int32_t>(in.size()), nullptr);
  out.pop_back();
  return out;
}

/// The bytes of a text in Base64, whose characters are not checked. -> SMBase64Decode
inline result<std::string> base64_decode(std::string_view text) {
  if (text.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
    return status::invalid_parameter;
  }
  std::string out(3 * (text.size() / 4) + 1, '\0');
  (void)SMBase64Decode(out.data(), text.data(), static_cast<int32_t>(text.size()));
  size_t size = 0;  // which the call does not tell
  for (; text.size() >= 4; text.remove_prefix(4)) {
    const size_t padding = text.substr(0, 4).find('=');
    size += padding == std::string_view::npos ? 3 : padding < 2 ? 0 : padding - 1;
  }
  out.resize(size);
  return out;
}

// ---- Threads ------------------------------------------------------------------------------------

/// Owns a thread that runs: who lets go of it waits for its end. -> SMThreadStart, SMThreadStop
class thread : public owner<SMThread, detail::join> {
 public:
  using owner::owner;

  /// Starts a thread that runs `body()`. Its stack has 128 KiB.
  template <class Body>
  static result<thread> start(Body body) {
    std::unique_ptr<Body> copy(new (std::nothrow) Body(std::move(body)));
    if (copy == nullptr) {
      return status::no_memory;
    }
    SMThread* const started = SMThreadStart(run<Body>, copy.get());
    if (started != nullptr) {
      (void)copy.release();  // it is the thread's now
    }
    return detail::made<thread>(started);
  }
  /// Starts a thread that nobody waits for. -> SMThreadStartAndRelease
  template <class Body>
  static result<void> start_detached(Body body) {
    std::unique_ptr<Body> copy(new (std::nothrow) Body(std::move(body)));
    if (copy == nullptr) {
      return status::no_memory;
    }
    const SMStatus answer = SMThreadStartAndRelease(run<Body>, copy.get());
    if (answer == SM_STATUS_SUCCESS) {
      (void)copy.release();
    }
    return detail::code(answer);
  }
  /// Waits for the end of the thread. -> SMThreadStop
  result<void> stop() { return detail::code(SMThreadStop(release())); }

 private:
  template <class Body>
  static void* run(void* body) noexcept {
    const std::unique_ptr<Body> own(static_cast<Body*>(body));
    (*own)();
    return nullptr;
  }
};

/// Names the calling thread. -> SMThreadSetName
inline result<void> set_thread_name(std::string_view name) {
  const detail::c_text text(name);
  return text ? detail::code(SMThreadSetName(text.get())) : status::invalid_parameter;
}

/// Runs `body()` while no other thread of the process runs a body of the same type: each lambda is
/// a section of its own. A body that runs a body of its own type again waits for itself, for ever.
/// status::operation_failed when it did not run, as where the library has not started.
/// -> SMCriticalSectionExecute
template <class Body>
result<void> run_critical(Body& body) {
  struct call {
    Body* body;
    bool ran;
    static void* run(void* argument) noexcept {
      auto* const self = static_cast<call*>(argument);
      (*self->body)();
      self->ran = true;
      return nullptr;
    }
  };
  call once{&body, false};
  const SMStatus answer = SMCriticalSectionExecute(call::run, &once, forever);
  if (answer != SM_STATUS_SUCCESS) {
    return detail::code(answer);
  }
  return once.ran ? status::success : status::operation_failed;
}

// ---- Libraries and the environment --------------------------------------------------------------

/// Owns one loading of a dynamic library. Who lets go of it does not learn whether the loader
/// refused: unload() tells. -> SMLibLoad, SMLibUnLoad
class library : public owner<SMLib, detail::unload> {
 public:
  using owner::owner;

  static result<library> load(std::string_view path) {
    const detail::c_text text(path);
    return text ? detail::made<library>(SMLibLoad(text.get())) : status::invalid_parameter;
  }
  /// What the library exports as `name`, as a pointer to a function of type Function; good while
  /// the library is loaded. -> SMLibLinkToExportFN
  template <class Function>
  [[nodiscard]] result<Function*> function(std::string_view name) const {
    static_assert(std::is_function_v<Function>, "a type such as int(int)");
    const detail::c_text text(name);
    if (!text) {
      return status::invalid_parameter;
    }
    void* const address = SMLibLinkToExportFN(get(), text.get());
    return address != nullptr ? result<Function*>(reinterpret_cast<Function*>(address))
                              : status::data_not_found;
  }
  /// Unloads it now; after a failure it is loaded as before. -> SMLibUnLoad
  result<void> unload() {
    const SMStatus answer = SMLibUnLoad(get());
    if (answer == SM_STATUS_SUCCESS) {
      (void)release();
    }
    return detail::code(answer);
  }
};

/// Owns the use of a library that the users in one process share; the last one has it unloaded.
/// -> SMFLibLinkToExportFN, SMFLibUnLoad
class shared_library {
 public:
  shared_library() = default;
  shared_library(shared_library&& other) noexcept
      : user_(std::move(other.user_)),
        path_(std::move(other.path_)),
        used_(std::exchange(other.used_, false)) {}
  shared_library& operator=(shared_library&& other) noexcept {
    if (this != &other) {
      reset();
      user_ = std::move(other.user_);
      path_ = std::move(other.path_);
      used_ = std::exchange(other.used_, false);
    }
    return *this;
  }
  shared_library(const shared_library&) = delete;
  shared_library& operator=(const shared_library&) = delete;
  ~shared_library() { reset(); }

  /// Makes `user` a user of the library at `path`. A name stands for one use: two objects with the
  /// same name and path end it twice.
  static result<shared_library> use(std::string_view user, std::string_view path) {
    const detail::c_text name(user);
    const detail::c_text file(path);
    if (!name || !file) {
      return status::invalid_parameter;
    }
    if (SMFLibLinkToExportFN(name.get(), file.get(), nullptr) == nullptr) {
      return status::operation_failed;
    }
    shared_library made;
    made.user_ = user;
    made.path_ = path;
    made.used_ = true;
    return made;
  }
  /// As library::function().
  template <class Function>
  [[nodiscard]] result<Function*> function(std::string_view name) const {
    static_assert(std::is_function_v<Function>, "a type such as int(int)");
    const detail::c_text text(name);
    if (!text || !used_) {
      return status::invalid_parameter;
    }
    void* const address = SMFLibLinkToExportFN(user_.c_str(), path_.c_str(), text.get());
    return address != nullptr ? result<Function*>(reinterpret_cast<Function*>(address))
                              : status::data_not_found;
  }
  explicit operator bool() const { return used_; }
  /// Leaves `user` a user for good.
  void release() { used_ = false; }
  /// Ends the use. -> SMFLibUnLoad
  void reset() {
    if (std::exchange(used_, false)) {
      (void)SMFLibUnLoad(user_.c_str(), path_.c_str());
    }
  }

 private:
  std::string user_;
  std::string path_;
  bool used_ = false;
};

/// The value of an environment variable. status::data_not_found when there is none. -> SMEnvDup
inline result<std::string> environment(std::string_view name) {
  const detail::c_text text(name);
  return text ? detail::text_of(SMEnvDup(text.get(), nullptr), status::data_not_found)
              : status::invalid_parameter;
}

// ---- Named objects ------------------------------------------------------------------------------
//
// create() without a name makes an object that is the process's own. A creation that fails does not
// tell why: status::operation_failed.

/// Owns a handle on a mutex. -> SMMutexCreate_s, SMMutexDestroy
///
/// Keep one object for a name in a process, and share it among the threads: when any handle on that
/// name goes, whatever this process has locked by that name is given back to other processes, also
/// what a guard of another handle still holds.
class mutex : public owner<SMMutex, SMMutexDestroy> {
 public:
  using owner::owner;

  static result<mutex> create() { return detail::made<mutex>(SMMutexCreate(nullptr)); }
  /// `permission` is -1, 0 or a sum of SM_PERMISSION_ bits.
  static result<mutex> create(std::string_view name, int32_t permission = -1) {
    const detail::c_text text(name);
    return text ? detail::made<mutex>(SMMutexCreate_s(text.get(), permission))
                : status::invalid_parameter;
  }
  static result<mutex> open(std::string_view name) {
    const detail::c_text text(name);
    return text ? detail::made<mutex>(SMMutexOpen(text.get())) : status::invalid_parameter;
  }
  /// Takes the mutex until the guard goes. -> SMMutexLock, SMMutexUnLock
  result<mutex_guard> lock(int32_t timeout = forever) {
    const SMStatus answer = SMMutexLock(get(), timeout);
    return answer == SM_STATUS_SUCCESS ? result<mutex_guard>(mutex_guard(get()))
                                       : detail::code(answer);
  }
};

/// Owns a handle on a semaphore. -> SMSemaphoreCreate_s, SMSemaphoreDestroy
///
/// Any handle of create(), also on a semaphore that existed, takes it away from everybody when it
/// goes; a handle of open() does not. Let one process create, and the others open.
class semaphore : public owner<SMSemaphore, SMSemaphoreDestroy> {
 public:
  using owner::owner;

  static result<semaphore> create(uint32_t count) {
    return detail::made<semaphore>(SMSemaphoreCreate(nullptr, count));
  }
  static result<semaphore> create(std::string_view name, uint32_t count, int32_t permission = -1) {
    const detail::c_text text(name);
    return text ? detail::made<semaphore>(SMSemaphoreCreate_s(text.get(), count, permission))
                : status::invalid_parameter;
  }
  static result<semaphore> open(std::string_view name) {
    const detail::c_text text(name);
    return text ? detail::made<semaphore>(SMSemaphoreOpen(text.get())) : status::invalid_parameter;
  }
  /// Takes 1 of the count for good. -> SMSemaphoreAcquireWait
  result<void> wait(int32_t timeout = forever) {
    return detail::code(SMSemaphoreAcquireWait(get(), timeout));
  }
  /// Takes 1 of the count until the guard goes. -> SMSemaphoreAcquireWait, SMSemaphoreRelease
  result<semaphore_guard> acquire(int32_t timeout = forever) {
    const SMStatus answer = SMSemaphoreAcquireWait(get(), timeout);
    return answer == SM_STATUS_SUCCESS ? result<semaphore_guard>(semaphore_guard(get()))
                                       : detail::code(answer);
  }
  /// Adds `count` and gives the count before. -> SMSemaphoreRelease
  result<uint32_t> post(int32_t count = 1) {
    uint32_t before = 0;
    const SMStatus answer = SMSemaphoreRelease(get(), count, &before);
    return answer == SM_STATUS_SUCCESS ? result<uint32_t>(before) : detail::code(answer);
  }
};

/// How an event goes out.
enum class event_reset : int32_t {
  automatic = 0,  ///< it lets one through
  manual = 1      ///< it stays until it is reset
};

/// Owns a handle on an event. -> SMEventCreate_s, SMEventDestroy
///
/// Any handle of create(), also on an event that existed, takes it away from everybody when it
/// goes; a handle of open() does not. Let one process create, and the others open.
class event : public owner<SMEvent, SMEventDestroy> {
 public:
  using owner::owner;

  static result<event> create(event_reset how, bool signalled = false) {
    return detail::made<event>(
        SMEventCreate(nullptr, static_cast<int32_t>(how), signalled ? 1 : 0));
  }
  static result<event> create(std::string_view name, event_reset how, bool signalled = false,
                              int32_t permission = -1) {
    const detail::c_text text(name);
    return text ? detail::made<event>(SMEventCreate_s(text.get(), static_cast<int32_t>(how),
                                                      signalled ? 1 : 0, permission))
                : status::invalid_parameter;
  }
  static result<event> open(std::string_view name) {
    const detail::c_text text(name);
    return text ? detail::made<event>(SMEventOpen(text.get())) : status::invalid_parameter;
  }
  /// -> SMEventWait
  result<void> wait(int32_t timeout = forever) { return detail::code(SMEventWait(get(), timeout)); }
  /// Signals it. -> SMEventSet
  result<void> set() { return detail::code(SMEventSet(get())); }
  /// Ends the signal; `reset` releases the handle, as for every owner. -> SMEventReset
  result<void> clear() { return detail::code(SMEventReset(get())); }
  /// -> SMEventPulse
  result<void> pulse() { return detail::code(SMEventPulse(get())); }
};

/// Owns a handle on a shared memory segment. The one that made the segment takes it away; one that
/// took over what a killed process left does not. -> SMSharedMemCreate_s, SMSharedMemFree
class shared_memory : public owner<SMSharedMem, SMSharedMemFree> {
 public:
  using owner::owner;

  static result<shared_memory> create(std::string_view name, size_t size, int32_t permission = -1) {
    const detail::c_text text(name);
    return text && detail::fits(size) ? detail::made<shared_memory>(SMSharedMemCreate_s(
                                            text.get(), static_cast<uint32_t>(size), permission))
                                      : status::invalid_parameter;
  }
  static result<shared_memory> open(std::string_view name) {
    const detail::c_text text(name);
    return text ? detail::made<shared_memory>(SMSharedMemOpen(text.get()))
                : status::invalid_parameter;
  }
  /// Where the segment lies, until the handle is released. -> SMSharedMemGetAddressPtr
  [[nodiscard]] void* address() const { return SMSharedMemGetAddressPtr(get()); }
};

/// Owns a reader-writer lock. -> SMRWLCreate, SMRWLDestroy
class rw_lock : public owner<SMRWLock, SMRWLDestroy> {
 public:
  using owner::owner;

  static result<rw_lock> create() { return detail::made<rw_lock>(SMRWLCreate(nullptr)); }
  static result<rw_lock> create(std::string_view name) {
    const detail::c_text text(name);
    return text ? detail::made<rw_lock>(SMRWLCreate(text.get())) : status::invalid_parameter;
  }
  /// Waits without end and takes the lock as a reader until the guard goes; `look_again` is after
  /// how many milliseconds it looks again without having been woken. -> SMRWLReadLockGet,
  /// SMRWLReadLockRelease
  result<read_guard> read(int32_t look_again = forever) {
    const SMStatus answer = SMRWLReadLockGet(get(), look_again);
    return answer == SM_STATUS_SUCCESS ? result<read_guard>(read_guard(get()))
                                       : detail::code(answer);
  }
  /// The same as the writer. -> SMRWLWriteLockGet, SMRWLWriteLockRelease
  result<write_guard> write(int32_t look_again = forever) {
    const SMStatus answer = SMRWLWriteLockGet(get(), look_again);
    return answer == SM_STATUS_SUCCESS ? result<write_guard>(write_guard(get()))
                                       : detail::code(answer);
  }
};

// ---- Paths and files ----------------------------------------------------------------------------

/// The path of a product for one of the purposes SM_PATH_TYPE_. -> SMGetPathByProductIDandType
inline result<std::string> product_path(int32_t product, uint32_t purpose) {
  return detail::text_out([&](char* buffer, uint32_t* size) {
    return SMGetPathByProductIDandType(product, purpose, buffer, size);
  });
}

/// The ID of a product by its key; 0 for unknown ones. -> SMProductSIDToID
inline int32_t product_id(std::string_view key) {
  const detail::c_text text(key);
  return text ? SMProductSIDToID(text.get()) : 0;
}

/// The key of a product by its ID. -> SMProductIDToSID
inline result<std::string> product_key(int32_t product) {
  return detail::text_of(SMProductIDToSID(product), status::data_not_found);
}

/// The path of a file below a path of a product; `directory` may be empty.
/// -> SMMakePathFileNameByPIDAndType
inline result<std::string> product_file(int32_t product, uint32_t purpose,
                                        std::string_view directory, std::string_view name) {
  const detail::c_text below(directory);
  const detail::c_text file(name);
  return below && file ? detail::text_of(SMMakePathFileNameByPIDAndType(product, purpose,
                                                                        below.get(), file.get()),
                                         status::data_not_found)
                       : status::invalid_parameter;
}

/// -> SMFileCopy
inline result<void> copy_file(std::string_view source, std::string_view destination,
                              bool overwrite) {
  const detail::c_text from(source);
  const detail::c_text to(destination);
  return from && to ? detail::code(SMFileCopy(from.get(), to.get(), overwrite ? 1 : 0))
                    : status::invalid_parameter;
}

/// -> SMFileAppend
inline result<void> append_file(std::string_view source, std::string_view destination,
                                bool create) {
  const detail::c_text from(source);
  const detail::c_text to(destination);
  return from && to ? detail::code(SMFileAppend(from.get(), to.get(), create ? 1 : 0))
                    : status::invalid_parameter;
}

/// -> SMDeleteFile
inline result<void> delete_file(std::string_view path) {
  const detail::c_text text(path);
  return text ? detail::code(SMDeleteFile(text.get())) : status::invalid_parameter;
}

/// -> SMGetSizeOfFile
inline result<uint32_t> size_of_file(std::string_view path) {
  const detail::c_text text(path);
  uint32_t size = 0;
  const SMStatus answer =
      text ? SMGetSizeOfFile(text.get(), &size) : SMStatus{SM_STATUS_INVALID_PARAMETER};
  return answer == SM_STATUS_SUCCESS ? result<uint32_t>(size) : detail::code(answer);
}

/// -> SMMkDir
inline result<void> make_directory(std::string_view path) {
  const detail::c_text text(path);
  return text ? detail::code(SMMkDir(text.get())) : status::invalid_parameter;
}

/// -> SMRmDir
inline result<void> remove_directory(std::string_view path) {
  const detail::c_text text(path);
  return text ? detail::code(SMRmDir(text.get())) : status::invalid_parameter;
}

/// A name that no file in the directory has; none is made. -> SMGetTmpFile
inline result<std::string> unused_name(std::string_view directory) {
  const detail::c_text text(directory);
  return text ? detail::text_out([&](char* buffer, uint32_t* size) {
    return SMGetTmpFile(text.get(), buffer, size);
  })
              : status::invalid_parameter;
}

/// Owns what is known of a file that is looked at for changes. -> SMFilePropAlloc, SMFilePropFree
class file_watch : public owner<SMFileProp, SMFilePropFree> {
 public:
  using owner::owner;

  static result<file_watch> create(std::string_view path) {
    const detail::c_text text(path);
    return text ? detail::made<file_watch>(SMFilePropAlloc(text.get())) : status::invalid_parameter;
  }
  /// Whether it was modified in another second than was noted. -> SMFilePropIsModified
  [[nodiscard]] bool modified() { return SMFilePropIsModified(get()) == 1; }
};

// ---- INI files and property files ---------------------------------------------------------------

/// The types of values that INI files and property files have, by their C++ type.
template <class T>
struct value_type;

/// "TRUE" or "FALSE", as a uint16_t.
template <>
struct value_type<bool> {
  using stored = uint16_t;
  static constexpr uint32_t ini = SMINI_TYPE_BOOLEAN;
  static constexpr uint32_t translated = SMXLT_TYPE_BOOLEAN;
};
template <>
struct value_type<uint32_t> {
  using stored = uint32_t;
  static constexpr uint32_t ini = SMINI_TYPE_U32;
  static constexpr uint32_t translated = SMXLT_TYPE_U32;
};
template <>
struct value_type<int32_t> {
  using stored = int32_t;
  static constexpr uint32_t ini = SMINI_TYPE_S32;
  static constexpr uint32_t translated = SMXLT_TYPE_S32;
};
template <>
struct value_type<uint64_t> {
  using stored = uint64_t;
  static constexpr uint32_t ini = SMINI_TYPE_U64;
  static constexpr uint32_t translated = SMXLT_TYPE_U64;
};
template <>
struct value_type<int64_t> {
  using stored = int64_t;
  static constexpr uint32_t ini = SMINI_TYPE_S64;
  static constexpr uint32_t translated = SMXLT_TYPE_S64;
};
template <>
struct value_type<double> {
  using stored = double;
  static constexpr uint32_t ini = SMINI_TYPE_DOUBLE;
  static constexpr uint32_t translated = SMXLT_TYPE_DOUBLE;
};

/// An INI file by its path. It holds no file open. Calls wait for the file's lock without limit,
/// or with `wait` false try it once: status::timeout.
class ini_file {
 public:
  explicit ini_file(std::string_view path, bool wait = true)
      : path_(path), wait_(static_cast<uint16_t>(wait ? 1 : 0)) {}

  /// The text of a key. -> SMReadINIPathFileValue
  [[nodiscard]] result<std::string> text(std::string_view section, std::string_view key) const {
    const result<std::vector<char>> bytes = read(section, key);
    return bytes ? result<std::string>(std::string(bytes->data())) : bytes.code();
  }
  /// The value of a key: bool, a number of 32 or 64 bits, or double. -> SMReadINIPathFileValue
  template <class T>
  [[nodiscard]] result<T> value(std::string_view section, std::string_view key) const {
    const detail::c_text path(path_);
    const detail::c_text in(section);
    const detail::c_text name(key);
    if (!path || !in || !name) {
      return status::invalid_parameter;
    }
    typename value_type<T>::stored stored{};
    uint32_t size = sizeof stored;
    const SMStatus answer = SMReadINIPathFileValue(in.get(), name.get(), value_type<T>::ini,
                                                   &stored, &size, nullptr, 0, path.get(), wait_);
    return answer == SM_STATUS_SUCCESS ? result<T>(static_cast<T>(stored)) : detail::code(answer);
  }
  /// The names of all sections, and of the keys of one. -> SMReadINIPathFileValue
  [[nodiscard]] result<std::vector<std::string>> sections() const { return list(std::nullopt); }
  [[nodiscard]] result<std::vector<std::string>> keys(std::string_view section) const {
    return list(section);
  }
  /// Sets a key to a text, or to a value. -> SMWriteINIPathFileValue
  result<void> set_text(std::string_view section, std::string_view key, std::string_view text) {
    const detail::c_text terminated(text);
    return terminated ? write(section, key, SMINI_TYPE_UTF8, terminated.get(), terminated.size())
                      : status::invalid_parameter;
  }
  template <class T>
  result<void> set(std::string_view section, std::string_view key, T value) {
    const typename value_type<T>::stored stored = value;
    return write(section, key, value_type<T>::ini, &stored, sizeof stored);
  }
  /// Takes a key out, or a whole section. -> SMWriteINIPathFileValue
  result<void> remove(std::string_view section, std::string_view key) {
    return write(section, key, SMINI_TYPE_UTF8, nullptr, 0);
  }
  result<void> remove_section(std::string_view section) {
    return write(section, std::nullopt, SMINI_TYPE_UTF8, nullptr, 0);
  }

 private:
  using maybe_text = std::optional<std::string_view>;

  [[nodiscard]] result<std::vector<char>> read(maybe_text section, maybe_text key) const {
    const detail::c_text path(path_);
    const detail::c_text in(section);
    const detail::c_text name(key);
    if (!path || !in || !name) {
      return status::invalid_parameter;
    }
    result<std::vector<char>> bytes = detail::bytes_out(
        [&](char* buffer, uint32_t* size) {
          return SMReadINIPathFileValue(in.get(), name.get(), SMINI_TYPE_UTF8, buffer, size,
                                        nullptr, 0, path.get(), wait_);
        },
        256);
    if (bytes) {
      bytes->push_back('\0');
    }
    return bytes;
  }
  [[nodiscard]] result<std::vector<std::string>> list(maybe_text section) const {
    const result<std::vector<char>> bytes = read(section, std::nullopt);
    return bytes ? result<std::vector<std::string>>(detail::texts_of(bytes->data(), bytes->size()))
                 : bytes.code();
  }
  result<void> write(std::string_view section, maybe_text key, uint32_t type, const void* value,
                     uint32_t size) {
    const detail::c_text path(path_);
    const detail::c_text in(section);
    const detail::c_text name(key);
    return path && in && name ? detail::code(SMWriteINIPathFileValue(
                                    in.get(), name.get(), type, value, size, path.get(), wait_))
                              : status::invalid_parameter;
  }

  std::string path_;
  uint16_t wait_;
};

/// A property file by its path. It holds no file open; it waits for the lock as ini_file does.
class property_file {
 public:
  explicit property_file(std::string_view path, bool wait = true)
      : path_(path), wait_(static_cast<uint16_t>(wait ? 1 : 0)) {}

  /// The text of a key. -> SMPropertyFileReadValue
  [[nodiscard]] result<std::string> text(std::string_view key) const {
    const result<std::vector<char>> bytes = read(key);
    return bytes ? result<std::string>(std::string(bytes->data())) : bytes.code();
  }
  /// The value of a key, of the same types as in INI files. -> SMPropertyFileReadValue
  template <class T>
  [[nodiscard]] result<T> value(std::string_view key) const {
    const detail::c_text path(path_);
    const detail::c_text name(key);
    if (!path || !name) {
      return status::invalid_parameter;
    }
    typename value_type<T>::stored stored{};
    uint32_t size = sizeof stored;
    const SMStatus answer = SMPropertyFileReadValue(name.get(), value_type<T>::translated, &stored,
                                                    &size, nullptr, 0, path.get(), wait_);
    return answer == SM_STATUS_SUCCESS ? result<T>(static_cast<T>(stored)) : detail::code(answer);
  }
  /// The names of all keys. -> SMPropertyFileReadValue
  [[nodiscard]] result<std::vector<std::string>> keys() const {
    const result<std::vector<char>> bytes = read(std::nullopt);
    return bytes ? result<std::vector<std::string>>(detail::texts_of(bytes->data(), bytes->size()))
                 : bytes.code();
  }
  /// Sets a key that is there to a text, or to a value; without such a key the file is emptied.
  /// -> SMPropertyFileWriteValue
  result<void> set_text(std::string_view key, std::string_view text) {
    const detail::c_text terminated(text);
    return terminated ? write(key, SMXLT_TYPE_UTF8, terminated.get(), terminated.size())
                      : status::invalid_parameter;
  }
  template <class T>
  result<void> set(std::string_view key, T value) {
    const typename value_type<T>::stored stored = value;
    return write(key, value_type<T>::translated, &stored, sizeof stored);
  }

 private:
  [[nodiscard]] result<std::vector<char>> read(std::optional<std::string_view> key) const {
    const detail::c_text path(path_);
    const detail::c_text name(key);
    if (!path || !name) {
      return status::invalid_parameter;
    }
    result<std::vector<char>> bytes = detail::bytes_out(
        [&](char* buffer, uint32_t* size) {
          return SMPropertyFileReadValue(name.get(), SMXLT_TYPE_UTF8, buffer, size, nullptr, 0,
                                         path.get(), wait_);
        },
        256);
    if (bytes) {
      bytes->push_back('\0');
    }
    return bytes;
  }
  result<void> write(std::string_view key, uint32_t type, const void* value, uint32_t size) {
    const detail::c_text path(path_);
    const detail::c_text name(key);
    return path && name ? detail::code(SMPropertyFileWriteValue(name.get(), type, value, size,
                                                                path.get(), wait_))
                        : status::invalid_parameter;
  }

  std::string path_;
  uint16_t wait_;
};

// ---- Logs ---------------------------------------------------------------------------------------

/// An event for the family's own logs. Texts for SM_LOG_XML must hold no markup: they go into that
/// log as they are, so give them through escape_xml(), and the other logs the plain ones.
struct log_event {
  uint16_t type = SM_EVENT_INFORMATION;  ///< an SM_EVENT_ value
  uint16_t category = 1;                 ///< 1 to 6
  uint32_t id = 0;
  std::string_view source;
  std::string_view description;
  std::string_view data = {};  ///< bytes, which may hold a NUL
};

/// Appends an event to each log that `logs` names, a sum of SM_LOG_ bits. Source and description of
/// an event for SM_LOG_XML must hold no markup, see log_event. -> SMAppendToLog
inline result<void> append_to_log(uint32_t logs, const log_event& event) {
  const detail::c_text source(event.source);
  const detail::c_text description(event.description);
  return source && description && detail::fits(event.data.size())
             ? detail::code(SMAppendToLog(logs, event.type, event.category, event.id, source.get(),
                                          description.get(),
                                          event.data.empty() ? nullptr : event.data.data(),
                                          static_cast<uint32_t>(event.data.size())))
             : status::invalid_parameter;
}

/// Begins each log that `logs` names anew. -> SMClearLog
inline result<void> clear_log(uint32_t logs, uint16_t category, std::string_view source) {
  const detail::c_text text(source);
  return text ? detail::code(SMClearLog(logs, category, text.get())) : status::invalid_parameter;
}

/// The path of a log, and of its backup. -> SMGetLogPathFileName, SMGetBackupLogPathFileName
inline result<std::string> log_path(uint32_t log) {
  return detail::text_out(
      [&](char* buffer, uint32_t* size) { return SMGetLogPathFileName(log, buffer, size); });
}
inline result<std::string> backup_log_path(uint32_t log) {
  return detail::text_out(
      [&](char* buffer, uint32_t* size) { return SMGetBackupLogPathFileName(log, buffer, size); });
}

/// The size that a log must not reach, for this process. -> SMSetLogMaxSize, SMGetLogMaxSize
inline result<void> set_log_max_size(std::string_view path, uint32_t size) {
  const detail::c_text text(path);
  return text ? detail::code(SMSetLogMaxSize(text.get(), size)) : status::invalid_parameter;
}
inline result<uint32_t> log_max_size(std::string_view path) {
  const detail::c_text text(path);
  uint32_t size = 0;
  const SMStatus answer =
      text ? SMGetLogMaxSize(text.get(), &size) : SMStatus{SM_STATUS_INVALID_PARAMETER};
  return answer == SM_STATUS_SUCCESS ? result<uint32_t>(size) : detail::code(answer);
}

/// Appends a message to a rotated log; `around` is a sum of SM_LOG_PREFIX_ and SM_LOG_SUFFIX_ bits.
/// -> SMFileLogMsgToRotatedLog
inline result<void> log_rotated(std::string_view message, std::string_view path, uint32_t max_size,
                                uint32_t generations, uint32_t around) {
  const detail::c_text text(message);
  const detail::c_text file(path);
  return text && file ? detail::code(SMFileLogMsgToRotatedLog(text.get(), file.get(), max_size,
                                                              generations, around))
                      : status::invalid_parameter;
}

/// Owns a buffer of XML text that is appended to. After a failure it is as it was.
/// -> SMXGBufAlloc, SMXGBufFree
class xml_buffer : public owner<SMXGBuf, SMXGBufFree> {
 public:
  using owner::owner;

  static result<xml_buffer> create(bool declaration = false, size_t capacity = 0) {
    return detail::fits(capacity)
               ? detail::made<xml_buffer>(
                     SMXGBufAlloc(static_cast<uint32_t>(capacity), declaration ? 1 : 0),
                     status::no_memory)
               : status::invalid_parameter;
  }
  /// Appends a start tag, with the attributes that another buffer holds; an end tag; an empty
  /// element. -> SMXGBufCatBeginNode, SMXGBufCatEndNode, SMXGBufCatEmptyNode
  result<void> begin(std::string_view name, const SMXGBuf* attributes = nullptr) {
    const detail::c_text text(name);
    return text ? detail::code(SMXGBufCatBeginNode(get(), text.get(), attributes))
                : status::invalid_parameter;
  }
  result<void> end(std::string_view name) {
    const detail::c_text text(name);
    return text ? detail::code(SMXGBufCatEndNode(get(), text.get())) : status::invalid_parameter;
  }
  result<void> empty(std::string_view name, const SMXGBuf* attributes = nullptr) {
    const detail::c_text text(name);
    return text ? detail::code(SMXGBufCatEmptyNode(get(), text.get(), attributes))
                : status::invalid_parameter;
  }
  /// Appends name="value", a whole element, or a text alone. The text is escaped once.
  /// -> SMXGBufCatAttribute, SMXGBufCatNode, SMXGBufCatNodeValue
  result<void> attribute(std::string_view name, std::string_view value) {
    const detail::c_text text(name);
    const detail::c_text content(value);
    return text && content
               ? detail::code(SMXGBufCatAttribute(get(), text.get(), content.get(), content.size(),
                                                  SMXLT_TYPE_UTF8, &escaped))
               : status::invalid_parameter;
  }
  result<void> node(std::string_view name, std::string_view value,
                    const SMXGBuf* attributes = nullptr) {
    const detail::c_text text(name);
    const detail::c_text content(value);
    return text && content
               ? detail::code(SMXGBufCatNode(get(), text.get(), attributes, content.get(),
                                             content.size(), SMXLT_TYPE_UTF8, &escaped))
               : status::invalid_parameter;
  }
  result<void> value(std::string_view value) {
    const detail::c_text content(value);
    return content ? detail::code(SMXGBufCatNodeValue(get(), content.get(), content.size(),
                                                      SMXLT_TYPE_UTF8, &escaped))
                   : status::invalid_parameter;
  }
  /// The text, until the buffer changes.
  [[nodiscard]] std::string_view view() const {
    return get() != nullptr && get()->string.content != nullptr
               ? std::string_view(get()->string.content, get()->string.length)
               : std::string_view();
  }
  /// Frees the buffer and gives its text. -> SMXGBufFreeGetContent, SMXGBufFreeContent
  [[nodiscard]] std::string take() {
    char* const content = SMXGBufFreeGetContent(release());
    std::string text(content != nullptr ? content : "");
    SMXGBufFreeContent(content);
    return text;
  }

 private:
  static constexpr SMXGValueFormat escaped = {0, 1};
};

/// Text with the characters that XML gives a meaning to as entities, escaped `level` times, 1 to
/// 16. -> SMXGEscapeXMLUTF8Str
inline result<std::string> escape_xml(std::string_view text, uint32_t level = 1) {
  const detail::c_text terminated(text);
  uint32_t size = terminated.size();
  if (!terminated || level == 0) {
    return status::invalid_parameter;
  }
  return detail::text_of(SMXGEscapeXMLUTF8Str(terminated.get(), &size, level), status::no_memory);
}

// ---- Host and network ---------------------------------------------------------------------------

/// Milliseconds since the epoch. -> SMRefTicksGet
inline uint64_t ticks() {
  return SMRefTicksGet();
}

/// The name of this host. -> SMGetIPHostName
inline result<std::string> host_name() {
  return detail::text_out(
      [](char* buffer, uint32_t* size) { return SMGetIPHostName(buffer, size); });
}

/// The address that a text of a family, SM_INET_FAMILY_, names: 4 or 16 bytes in network byte
/// order. -> SMInetAddrUTF8ToNetwork
inline result<std::string> parse_address(uint32_t family, std::string_view text) {
  const detail::c_text terminated(text);
  char bytes[16];
  uint32_t size = sizeof bytes;
  const SMStatus answer = terminated
                              ? SMInetAddrUTF8ToNetwork(family, terminated.get(), bytes, &size)
                              : SMStatus{SM_STATUS_INVALID_PARAMETER};
  return answer == SM_STATUS_SUCCESS ? result<std::string>(std::string(bytes, size))
                                     : detail::code(answer);
}

/// The text of such an address. -> SMInetAddrNetworkToUTF8
inline result<std::string> format_address(uint32_t family, std::string_view address) {
  if (!detail::fits(address.size())) {
    return status::invalid_parameter;
  }
  return detail::text_out([&](char* buffer, uint32_t* size) {
    return SMInetAddrNetworkToUTF8(family, address.data(), static_cast<uint32_t>(address.size()),
                                   buffer, size);
  });
}

/// The addresses of this machine of the families that `selector` names, an SM_INET_LIST_ value.
/// -> SMGetInetAddrStrList
inline result<std::vector<std::string>> addresses(uint32_t selector = SM_INET_LIST_BOTH) {
  std::vector<SMInetAddrStr> entries(16);
  for (;;) {
    auto count = static_cast<uint32_t>(entries.size());
    const SMStatus answer = SMGetInetAddrStrList(selector, &count, entries.data());
    if (answer != SM_STATUS_SUCCESS && answer != SM_STATUS_BUFFER_TOO_SMALL) {
      return detail::code(answer);
    }
    if (count <= entries.size()) {
      std::vector<std::string> texts;
      for (uint32_t i = 0; i < count; ++i) {
        texts.emplace_back(entries[i].text);
      }
      return texts;
    }
    entries.resize(count);
  }
}

}  // namespace kqsupt

#endif
