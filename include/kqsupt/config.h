/* Configuration files and the text services that go with them. */
#ifndef KQSUPT_CONFIG_H
#define KQSUPT_CONFIG_H

#include <kqsupt/frame.h>
#include <kqsupt/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Converts a list of items from one separator to another and returns it, newly allocated; the
 * caller releases it with SMFreeMem. `*count` and `*size`, each optional, receive the number of
 * items and the size of the list in bytes with its terminator.
 *
 * With a `separator`, runs of it count as one, blanks (TAB, LF, CR, space) around an item are cut
 * off, items of nothing else are dropped, and each item that is left is followed by `newSeparator`.
 * With `newSeparator` 0 that makes a list of terminated items that ends with an empty one.
 *
 * With `separator` 0, `text` is such a list of terminated items; every terminator between two items
 * becomes `newSeparator`. `*count` then receives one less than the number of items, and an empty
 * list gives NULL.
 *
 * NULL, with `*count` and `*size` 0, when `text` is NULL or memory is short. */
KQSUPT_API char* SMUTF8ConvertXSVToYSV(const char* text, char separator, char newSeparator,
                                       uint32_t* count, uint32_t* size);

/* ---- Install paths -----------------------------------------------------------------------------
 *
 * The install registry is a text file that the installers of products write: "/etc/ybreg.cfg", or
 * where that does not exist "/usr/lib/ext/mavo/ybreg.cfg". The library reads it when it is loaded
 * and whenever a path is asked for that it does not know. Without such a file the library does not
 * start.
 *
 * A line is "PRODUCT.KEY=VALUE". The products are tovu (ID -1, the family as a whole), tumbr (33),
 * Kelvane (34), Quillance (35), nurb (44), wexlib (45) and vosk5 (88); the keys are installpath,
 * binpath, inipath, vardatapath, logpath and configtool. A product without a key has its install
 * path for it. The environment variables "<product>installpath" in lower case, and then in upper
 * case, override an install path. The family's paths, when they are not given, are its install
 * path, or the directory that the install path of Kelvane or Quillance lies in. */

/* What a path is for. */
enum {
  SM_PATH_TYPE_INSTALL = 2,
  SM_PATH_TYPE_VARIABLE_DATA = 4,
  SM_PATH_TYPE_LOG = 8,
  SM_PATH_TYPE_CONFIG_TOOL = 16,
  SM_PATH_TYPE_INSTALL_TOO = 32, /* the install path as well */
  SM_PATH_TYPE_INI = 64,
  SM_PATH_TYPE_BIN = 128
};

/* The path of a product for a purpose, without a "/" at its end. `*size` is the room at `buffer` in
 * bytes and receives the size of the path with its terminator. With `buffer` NULL nothing is
 * copied.
 *
 * SM_STATUS_DATA_NOT_FOUND: no such product or type, the registry does not tell, or memory is too
 * short to read it; SM_STATUS_OPERATION_FAILED: the path does not exist now; with either `*size` 0,
 * and `size` may be NULL. SM_STATUS_INVALID_PARAMETER: `size` NULL where there is such a path.
 * SM_STATUS_BUFFER_TOO_SMALL: `*size` is too small, also with `buffer` NULL. */
KQSUPT_API SMStatus SMGetPathByProductIDandType(int32_t productID, uint32_t pathType, char* buffer,
                                                uint32_t* size);

/* The same for the install path of Quillance, and of a product. */
KQSUPT_API SMStatus SMGetInstallPath(char* buffer, uint32_t* size);
KQSUPT_API SMStatus SMGetInstallPathByProductID(int32_t productID, char* buffer, uint32_t* size);

/* Copies `text`, in which the first "@ybinstallpath@", in any case of letters, stands for the
 * family's install path. `*size` is the room at `buffer` in bytes and receives the size of the
 * result with its terminator.
 *
 * SM_STATUS_INVALID_PARAMETER: an argument NULL, `buffer` only where there is room enough.
 * 0xFFFFFFFF: `text` has 255 bytes or more. The statuses of SMGetPathByProductIDandType and
 * SM_STATUS_NO_MEMORY: the path cannot be had. With each of these `*size` receives 0.
 * SM_STATUS_BUFFER_TOO_SMALL: `*size` receives the size that is needed. */
KQSUPT_API SMStatus SMExpandYbInstallPathString(const char* text, char* buffer, uint32_t* size);

/* The ID of a product by its key, in any case of letters; 0 for NULL and unknown ones. */
KQSUPT_API int32_t SMProductSIDToID(const char* productKey);

/* The key of a product, newly allocated; the caller releases it with SMFreeMem. NULL for an unknown
 * one or when memory is short. */
KQSUPT_API char* SMProductIDToSID(int32_t productID);

/* The path of a file below a product's install path, or its path for another purpose: path, "/",
 * `subDirectory` and "/" unless that is NULL or empty, `fileName`. Newly allocated; the caller
 * releases it with SMFreeMem. The file need not exist. NULL when `fileName` is NULL, the product's
 * path cannot be had or memory is short. */
KQSUPT_API char* SMMakePathFileNameByPID(int32_t productID, const char* subDirectory,
                                         const char* fileName);
KQSUPT_API char* SMMakePathFileNameByPIDAndType(int32_t productID, uint32_t pathType,
                                                const char* subDirectory, const char* fileName);

/* The path of the file `fileName` for a language such as "en_US": the first that exists of
 * base/directory/en/US/sub/file, base/directory/en/sub/file and base/directory/sub/file. Newly
 * allocated; the caller releases it with SMFreeMem. `baseDirectory` NULL stands for ".",
 * `languageID` NULL for the language of the environment; `subDirectory` may be NULL or empty. NULL
 * when `directory` or `fileName` is NULL, `languageID` has more than 8 bytes, no such file with a
 * path of at most 255 bytes exists, or memory is short. */
KQSUPT_API char* SMGetLocalizedPathFileName(const char* baseDirectory, const char* directory,
                                            const char* languageID, const char* subDirectory,
                                            const char* fileName);

/* ---- Directories and files --------------------------------------------------------------------- */

/* Makes a directory with the mode 0755, less the process's umask. Its parent must be there. 0 also
 * when it exists; else 0xFFFFFFFF. */
KQSUPT_API SMStatus SMMkDir(const char* path);

/* Removes a directory. SM_STATUS_OPERATION_FAILED when it is not empty, SM_STATUS_DATA_NOT_FOUND
 * when it does not exist, 0xFFFFFFFF for NULL and when the system refuses otherwise. */
KQSUPT_API SMStatus SMRmDir(const char* path);

/* Deletes a file. 0xFFFFFFFF for NULL and when the system refuses. */
KQSUPT_API SMStatus SMDeleteFile(const char* path);

/* The size of a file in bytes. 0xFFFFFFFF, with `*size` 0, when the file cannot be opened or has no
 * size up to 2,147,483,647 bytes, and for NULL. */
KQSUPT_API SMStatus SMGetSizeOfFile(const char* path, uint32_t* size);

/* A name of 8 characters that no file in `directory` has. `*size` is the room at `buffer` in bytes
 * and receives 9. No file is made: another process may take the name meanwhile.
 *
 * SM_STATUS_INVALID_PARAMETER: `directory` or `size` NULL. SM_STATUS_BUFFER_TOO_SMALL: `buffer`
 * NULL, or `*size` less than 9, which it receives. SM_STATUS_NO_MEMORY. 0xFFFFFFFF: a hundred names
 * that were tried all exist. */
KQSUPT_API SMStatus SMGetTmpFile(const char* directory, char* buffer, uint32_t* size);

/* A file that is looked at for changes. */
typedef struct SMFileProp SMFileProp;

/* Notes when the file was last modified. The caller releases the handle with SMFilePropFree. NULL
 * when `path` is NULL, the file cannot be looked at or memory is short. */
KQSUPT_API SMFileProp* SMFilePropAlloc(const char* path);

/* 1 when the file was modified in another second than was noted, which is now noted. Else 0, also
 * for NULL and when the file cannot be looked at. */
KQSUPT_API uint32_t SMFilePropIsModified(SMFileProp* file);

/* Releases the handle. NULL is ignored. */
KQSUPT_API void SMFilePropFree(SMFileProp* file);

/* ---- INI files ---------------------------------------------------------------------------------
 *
 * Text of sections "[section]" with keys "key=value", one to a line. Names are compared byte by
 * byte and neither keys nor values are trimmed, but for blanks before a key. A line that begins
 * with ";" or "#" in its first column is a comment. Lines have at most 8,450 bytes; a longer one
 * counts as several. Names have at most 255 bytes, values 8,192.
 *
 * Every call locks the file, readers beside each other and writers alone, against the threads of
 * this process and all other processes that use this library. `lockWait` 1 waits for the lock
 * without limit, any other value tries once: SM_STATUS_TIMEOUT. Also for want of the lock:
 * SM_STATUS_NO_MEMORY, which the library answers too where it has not started,
 * SM_STATUS_ACCESS_DENIED, and 0xFFFFFFFF.
 *
 * A change writes a new file and renames it; the old content is for a moment called as the file,
 * but with "bak" for what is behind its last ".". Whoever comes next after a crash in that moment,
 * reader or writer, goes back to it. Other files should not have that name.
 *
 * Sizes are in bytes, with the terminator. */

/* The types of values. */
enum {
  SMINI_TYPE_UTF8 = 1,        /* text, as it stands */
  SMINI_TYPE_UCS2_STRICT = 2, /* UCS-2 text whose size must be that of the text */
  SMINI_TYPE_UCS2 = 3,        /* UCS-2 text whose size may differ from its own */
  SMINI_TYPE_BOOLEAN = 4,     /* uint16_t, 1 or 0: "TRUE" or "FALSE" */
  SMINI_TYPE_U32 = 5,         /* uint32_t, decimal */
  SMINI_TYPE_S32 = 6,         /* int32_t */
  SMINI_TYPE_U64 = 7,         /* uint64_t */
  SMINI_TYPE_S64 = 8,         /* int64_t */
  SMINI_TYPE_DOUBLE = 9       /* double, with eight decimals */
};

/* Reads the value of `key` in `section` of the file `pathFileName` into the `*size` bytes at
 * `buffer`.
 *
 * Text (SMINI_TYPE_UTF8): `*size` receives the size of the value, which is not copied when it is
 * greater: SM_STATUS_BUFFER_TOO_SMALL. With `section` NULL it is the list of all sections, with
 * `key` NULL the list of the section's keys: terminated names with an empty one at the end. Of a
 * list that is too long for the buffer the names that fit are copied.
 *
 * UCS-2 text: the same. Values of other types need their size at least, which `*size` keeps. Lists
 * there are of text only: for every other type `section` and `key` must be given. Numbers are read
 * as far as they go, and saturate; text that does not begin with one is 0. A boolean is "TRUE" or
 * "FALSE" in any case of letters, up to the first space.
 *
 * `defaultValue` and `defaultSize`, when neither is 0, give what the buffer receives when the value
 * cannot be had; the status tells that it could not. Text: at most `*size` bytes of it, the last of
 * them 0, and `*size` receives their number; without a default the text is empty and `*size` 0.
 * This is so for a section or key that is not found and for a malformed header; after any other
 * failure the buffer is as it was, and for lists no default is used. Other types: whatever failed
 * but an argument, when the default has the size of the type at least; else `*size` receives 0.
 *
 * SM_STATUS_UNSUCCESSFUL: `buffer` or `size` NULL, `*size` too small for the type, no path, an
 * unknown type, no section or key for a type that is not SMINI_TYPE_UTF8, a default of type
 * SMINI_TYPE_UCS2_STRICT whose size is not that of the text; the file is not a file that can be
 * read. SM_STATUS_FILE_OPEN_FAILED: it cannot be opened. SM_STATUS_SECTION_NOT_FOUND,
 * SM_STATUS_KEY_NOT_FOUND: no such section, no such key; for a list, none at all.
 * SM_STATUS_END_OF_FILE: a header without "]" before what is looked for. SM_STATUS_BAD_LENGTH:
 * neither "TRUE" nor "FALSE", or not UTF-8 where UCS-2 is wanted. SM_STATUS_NO_MEMORY or
 * 0xFFFFFFFF: memory is short. */
KQSUPT_API SMStatus SMReadINIPathFileValue(const char* section, const char* key, uint32_t type,
                                           void* buffer, uint32_t* size, const void* defaultValue,
                                           uint32_t defaultSize, const char* pathFileName,
                                           uint16_t lockWait);

/* Writes the `valueSize` bytes at `value` as the value of `key` in `section` of the file
 * `pathFileName`. A key that is there keeps its place; a new one is put behind the last one of its
 * section; a new section is put at the end of the file, with an empty line before it; a new file is
 * made, with its directory. Comments and blank lines that end the file are dropped when its last
 * section gains a key.
 *
 * Text with `value` NULL and `valueSize` 0 takes the key out. With `key` NULL, whether or not a
 * value is given, the whole section goes, up to the next line with "[" or "#" in its first column.
 * Of text `valueSize` is the size with its terminator, of UCS-2 text at most 2,048. Of
 * SMINI_TYPE_UCS2 it is only checked, from 1 to 2,048: the text is written to its terminator, which
 * must be there. Of other types it is the size of the type at least.
 *
 * SM_STATUS_UNSUCCESSFUL: no section, no path or one that ends in "/", a name of more than 255
 * bytes, an unknown type, no key for a type that is not text, or the file cannot be read.
 * SM_STATUS_BAD_LENGTH: `valueSize` is not what the type asks for, or what is to be taken out is in
 * a section that is not there. SM_STATUS_FILE_OPEN_FAILED: the file cannot be opened.
 * SM_STATUS_END_OF_FILE: a header without "]" before the section. SM_STATUS_FILE_NOT_FOUND: the new
 * file cannot be made, or the file not be added to. SM_STATUS_OUT_OF_SPACE: it cannot be written.
 * SM_STATUS_ALREADY_EXISTS: it cannot be renamed. 0xFFFFFFFF: the directory cannot be made, there
 * is no name for a new file, or the old one cannot be renamed. SM_STATUS_NO_MEMORY or 0xFFFFFFFF:
 * memory is short, as it always is for changing a file of more than 2,147,483,646 bytes. After each
 * of these the file is as it was. SM_STATUS_ACCESS_DENIED: the old content cannot be deleted, and
 * the next one to use the file goes back to it. Other statuses: the text is not UCS-2. */
KQSUPT_API SMStatus SMWriteINIPathFileValue(const char* section, const char* key, uint32_t type,
                                            const void* value, uint32_t valueSize,
                                            const char* pathFileName, uint16_t lockWait);

/* The same for the file `fileName` in the directory "ini" in the path for INI files of the product
 * Quillance. 0xFFFFFFFF when the product has no such path; SM_STATUS_BUFFER_TOO_SMALL when that of
 * the file has more than 254 bytes; SM_STATUS_UNSUCCESSFUL when `fileName` is NULL. */
KQSUPT_API SMStatus SMReadINIFileValue(const char* section, const char* key, uint32_t type,
                                       void* buffer, uint32_t* size, const void* defaultValue,
                                       uint32_t defaultSize, const char* fileName,
                                       uint16_t lockWait);
KQSUPT_API SMStatus SMWriteINIFileValue(const char* section, const char* key, uint32_t type,
                                        const void* value, uint32_t valueSize, const char* fileName,
                                        uint16_t lockWait);

/* The text of a key, newly allocated; the caller releases it with SMFreeMem. `*size`, when given,
 * receives its size. NULL, with `*size` 0, when there is none: then `defaultValue` is copied, but
 * only where the file is there and can be read. NULL also when the text has more than 32,767 bytes
 * or memory is short. */
KQSUPT_API char* SMReadINISectionKeyUTF8Value(const char* section, const char* key,
                                              const char* defaultValue, uint32_t* size,
                                              const char* pathFileName, uint16_t lockWait);

/* The value that `table`, of `count` entries, has for the text of a key, in any case of letters.
 * The value of entry 1 when the text cannot be read, whether there is no such key or memory is
 * short; that of entry 0 when no name matches. With `isBitMask` 1 the text is a list of names with
 * "," between them; the values of those that match are combined, 0 when none does. 0x80000000: an
 * argument NULL, a table of less than 2 entries, or memory is too short for the list. */
KQSUPT_API uint32_t SMReadINIEnums32Value(const char* section, const char* key,
                                          const SMEnums32* table, uint32_t count,
                                          uint16_t isBitMask, const char* pathFileName,
                                          uint16_t lockWait);

/* ---- Property files ----------------------------------------------------------------------------
 *
 * Lines of a key and a value without sections: "key = value". Blanks, ":" and "=" between the two
 * are one separator; blanks at both ends of the value are cut off. A line that begins with ";",
 * "#", "!" or "//" behind its blanks is a comment; one of a single character is not read. A value
 * that ends in a single "\" goes on in the next line, joined to it by "\n". Only as much of a key
 * is compared as the file has: the line "port=1" answers for the key "portal". The first line that
 * answers counts.
 *
 * Files are locked as INI files are, with the same statuses. A change replaces the file in the same
 * way, but nobody goes back to the old content after a crash. */

/* Reads the value of `key` as a value of type `typeCode`, a SMXLT_TYPE_ code with its notation,
 * into the `*size` bytes at `buffer`. `*size` and statuses are those of SMXLTUTF8ToTypeValue. With
 * `key` NULL and SMXLT_TYPE_UTF8 it is the list of all keys: terminated names with an empty one at
 * the end, and `*size` receives the size of the whole list.
 *
 * `defaultValue`, when it is given with a `defaultSize` of at most `*size`, is copied to the buffer
 * after any failure, and `*size` receives `defaultSize`.
 *
 * SM_STATUS_INVALID_PARAMETER: `size` or `pathFileName` NULL, or `key` NULL with another type.
 * SM_STATUS_FILE_OPEN_FAILED: the file cannot be opened. SM_STATUS_UNSUCCESSFUL: it cannot be read.
 * SM_STATUS_KEY_NOT_FOUND: no line answers, or there is none for a list. SM_STATUS_NO_MEMORY. */
KQSUPT_API SMStatus SMPropertyFileReadValue(const char* key, uint32_t typeCode, void* buffer,
                                            uint32_t* size, const void* defaultValue,
                                            uint32_t defaultSize, const char* pathFileName,
                                            uint16_t lockWait);

/* Writes the `valueSize` bytes at `value`, of type `typeCode`, in place of the value that answers
 * for `key`. The line becomes "key=value". The key must be there: when no line answers, the file is
 * emptied.
 *
 * SM_STATUS_INVALID_PARAMETER: an argument NULL. SM_STATUS_FILE_OPEN_FAILED,
 * SM_STATUS_UNSUCCESSFUL: the file cannot be opened, or read. SM_STATUS_NO_MEMORY, also for a file
 * of more than 2,147,483,646 bytes. The statuses of SMXLTTypeValueToUTF8 when the value cannot be
 * converted, those of SMWriteINIPathFileValue when the file cannot be replaced. After each of these
 * the file is as it was. */
KQSUPT_API SMStatus SMPropertyFileWriteValue(const char* key, uint32_t typeCode, const void* value,
                                             uint32_t valueSize, const char* pathFileName,
                                             uint16_t lockWait);

/* ---- Texts by number ---------------------------------------------------------------------------
 *
 * Texts lie in INI files: those of US English in the section "ASCII EN_US DEFAULT STRING ID
 * SECTION" under "0:ID", those of other languages in "MISCELLANEOUS STRING ID SECTION" under
 * "LANGUAGE:ID", each number in upper-case hexadecimal without leading zeros. A text ends at its
 * first CR or LF. The language IDs 0, 437 and 1033, and NULL, stand for US English. */

/* Copies the text with the number `stringID` to the `*size` bytes at `buffer`. Returns its size
 * with the terminator, which `*size` receives too: 0 when there is no such text, it does not fit or
 * `buffer` or `size` is NULL. `*languageID`, when given, becomes 0 when the text is the one of US
 * English, also for want of one in the language. In place of the text stands "Invalid Path File
 * Name" when no file name is given and "Failed to allocate memory" when memory is short. */
KQSUPT_API uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringID, uint32_t* languageID,
                                               const char* pathFileName, char* buffer,
                                               uint32_t* size);

/* The same from the library's own file, kqsdst32.ini in the directory for INI files of the family,
 * as UCS-2. IDs from BaseID to BaseID + oemRange are first counted on by offset: numbers that the
 * section "OEM Configuration" of kqisdy32.ini there may give, else 2304, 32 and 0. They are read
 * once for the process, at the first call that has the memory and finds the directory, and again
 * after a BaseID of 0.
 *
 * Returns the size of the text in bytes, which `*size` receives too. Without `ucs2Buffer` or `size`
 * it is the size of the text in UTF-8. When `*size` is less than twice that, nothing is written and
 * twice that is returned. 0 when there is no such text of up to 1,023 bytes, or it cannot be
 * converted. */
KQSUPT_API uint32_t SMGetUCS2StrFromID(uint32_t stringID, uint32_t* languageID, ustring* ucs2Buffer,
                                       uint32_t* size);

/* ---- Names of PCI devices ---------------------------------------------------------------------- */

/* Looks up the names of a PCI device and its vendor in a text file. Its lines are fields with tabs
 * between them: a kind, an identifier in hexadecimal, a name; what follows ";" is a comment. Lines
 * with fewer fields, or whose identifier is no number, are skipped. "V" is a vendor, "D" a device
 * of the vendor before, "O" a maker of boards with the device before, "S" a board of the maker
 * before; the name of a board, or else of its maker, stands for that of the device.
 *
 * `*vendorNameSize` and `*deviceNameSize` are the room in bytes and receive the lengths of the
 * names without their terminators; a name that is too long is cut. A name that is not found is
 * empty.
 *
 * SM_STATUS_INVALID_PARAMETER: a pointer NULL, a size 0 or no file name; both sizes receive 0.
 * SM_STATUS_NO_MEMORY. SM_STATUS_FILE_NOT_FOUND: the file cannot be opened, or vendor and device
 * are not both in it. */
KQSUPT_API SMStatus SMReadPCIDevFile(uint32_t vendorID, uint32_t deviceID, uint32_t subVendorID,
                                     uint32_t subDeviceID, const char* pathFileName,
                                     char* vendorName, uint32_t* vendorNameSize, char* deviceName,
                                     uint32_t* deviceNameSize);

#ifdef __cplusplus
}
#endif

#endif
