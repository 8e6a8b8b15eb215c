/** @file
 * Configuration files and the text services that go with them. */
#ifndef KQSUPT_CONFIG_H
#define KQSUPT_CONFIG_H

#include <kqsupt/frame.h>
#include <kqsupt/text.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup config_lists Lists of items
 * @{ */

/** Converts a list of items from one separator to another.
 *
 * With a `separator`, runs of it count as one, blanks (TAB, LF, CR, space) around an item are cut
 * off, items of nothing else are dropped, and each item that is left is followed by `newSeparator`.
 * With `newSeparator` 0 that makes a list of terminated items that ends with an empty one.
 *
 * With `separator` 0, `text` is such a list of terminated items; every terminator between two items
 * becomes `newSeparator`. `*count` then receives one less than the number of items, and an empty
 * list gives NULL.
 *
 * @param[in] text the list. NULL is answered with NULL; borrowed for the call.
 * @param[in] separator what stands between the items of `text`, or 0.
 * @param[in] newSeparator what stands behind or between the items of the new list, or 0.
 * @param[out] count receives the number of items; 0 when the call answers NULL. May be NULL; stays
 *   the caller's.
 * @param[out] size receives the size of the new list in bytes with its terminator; 0 when the call
 *   answers NULL. May be NULL; stays the caller's.
 * @return The new list, newly allocated, which the caller releases with SMFreeMem; NULL when `text`
 *   is NULL or memory is short. */
KQSUPT_API char* SMUTF8ConvertXSVToYSV(const char* text, char separator, char newSeparator,
                                       uint32_t* count, uint32_t* size);

/** @} */

/** @defgroup config_paths Install paths
 *
 * The install registry is a text file that the installers of products write: "/etc/ybreg.cfg", or
 * where that does not exist "/usr/lib/ext/mavo/ybreg.cfg". The library reads it when it is loaded
 * and whenever a path is asked for that it does not know. Without such a file the library does not
 * start.
 *
 * A line is "PRODUCT.KEY=VALUE". The products are tovu (ID -1, the family as a whole), tumbr (33),
 * Kelvane (34), Quillance (35), nurb (44), wexlib (45) and vosk5 (88); the keys are installpath,
 * binpath, inipath, vardatapath, logpath and configtool. A product without a key has its install
 * path for it. The environment variables `<product>installpath` in lower case, and then in upper
 * case, override an install path. The family's paths, when they are not given, are its install
 * path, or the directory that the install path of Kelvane or Quillance lies in.
 * @{ */

/** What a path is for. */
enum {
  SM_PATH_TYPE_INSTALL = 2,       /**< the product itself: its install path */
  SM_PATH_TYPE_VARIABLE_DATA = 4, /**< what it keeps while it runs */
  SM_PATH_TYPE_LOG = 8,           /**< its logs */
  SM_PATH_TYPE_CONFIG_TOOL = 16,  /**< its configuration tool */
  SM_PATH_TYPE_INSTALL_TOO = 32,  /**< the install path as well */
  SM_PATH_TYPE_INI = 64,          /**< its INI files */
  SM_PATH_TYPE_BIN = 128          /**< its programs */
};

/** Gives the path of a product for a purpose, without a "/" at its end.
 *
 * @param[in] productID the ID of the product, as told above.
 * @param[in] pathType an SM_PATH_TYPE_ value.
 * @param[out] buffer the room for the path. With NULL nothing is copied; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the path with its
 *   terminator, or 0 where there is no such path. May be NULL only there; stays the caller's.
 * @retval SM_STATUS_SUCCESS the path was written, or with `buffer` NULL its size told.
 * @retval SM_STATUS_DATA_NOT_FOUND there is no such product or type, the registry does not tell, or
 *   memory is too short to read it; `*size` receives 0, and `size` may be NULL.
 * @retval SM_STATUS_OPERATION_FAILED the path does not exist now; `*size` receives 0, and `size`
 *   may be NULL.
 * @retval SM_STATUS_INVALID_PARAMETER `size` is NULL where there is such a path.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*size` is too small, also with `buffer` NULL. */
KQSUPT_API SMStatus SMGetPathByProductIDandType(int32_t productID, uint32_t pathType, char* buffer,
                                                uint32_t* size);

/** As SMGetPathByProductIDandType for the install path of Quillance.
 *
 * @param[out] buffer the room for the path. With NULL nothing is copied; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the path with its
 *   terminator, or 0 where there is no such path. May be NULL only there; stays the caller's.
 * @retval SM_STATUS_SUCCESS the path was written, or with `buffer` NULL its size told.
 * @retval SM_STATUS_DATA_NOT_FOUND the registry does not tell, or memory is too short to read it;
 *   `*size` receives 0, and `size` may be NULL.
 * @retval SM_STATUS_OPERATION_FAILED the path does not exist now; `*size` receives 0, and `size`
 *   may be NULL.
 * @retval SM_STATUS_INVALID_PARAMETER `size` is NULL where there is such a path.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*size` is too small, also with `buffer` NULL. */
KQSUPT_API SMStatus SMGetInstallPath(char* buffer, uint32_t* size);

/** As SMGetPathByProductIDandType for the install path of a product.
 *
 * @param[in] productID the ID of the product.
 * @param[out] buffer the room for the path. With NULL nothing is copied; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the path with its
 *   terminator, or 0 where there is no such path. May be NULL only there; stays the caller's.
 * @retval SM_STATUS_SUCCESS the path was written, or with `buffer` NULL its size told.
 * @retval SM_STATUS_DATA_NOT_FOUND there is no such product, the registry does not tell, or memory
 *   is too short to read it; `*size` receives 0, and `size` may be NULL.
 * @retval SM_STATUS_OPERATION_FAILED the path does not exist now; `*size` receives 0, and `size`
 *   may be NULL.
 * @retval SM_STATUS_INVALID_PARAMETER `size` is NULL where there is such a path.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `*size` is too small, also with `buffer` NULL. */
KQSUPT_API SMStatus SMGetInstallPathByProductID(int32_t productID, char* buffer, uint32_t* size);

/** Copies `text`, in which the first `@ybinstallpath@`, in any case of letters, stands for the
 * family's install path.
 *
 * @param[in] text the text, of less than 255 bytes. Not NULL; borrowed for the call.
 * @param[out] buffer the room for the result; NULL with a `*size` of 0 to ask for its size; stays
 *   the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the result with its
 *   terminator, the size that is needed with SM_STATUS_BUFFER_TOO_SMALL, and 0 with any other
 *   failure. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the result was written.
 * @retval SM_STATUS_INVALID_PARAMETER an argument is NULL, `buffer` only where there is room
 *   enough.
 * @retval 0xFFFFFFFF `text` has 255 bytes or more.
 * @retval SM_STATUS_DATA_NOT_FOUND the registry does not tell the family's install path, or memory
 *   is too short to read it.
 * @retval SM_STATUS_OPERATION_FAILED the family's install path does not exist now.
 * @retval SM_STATUS_NO_MEMORY memory is short.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the result does not fit into `*size` bytes, and `*size`
 *   receives the size that is needed. */
KQSUPT_API SMStatus SMExpandYbInstallPathString(const char* text, char* buffer, uint32_t* size);

/** Tells the ID of a product by its key.
 *
 * @param[in] productKey the key, such as "wexlib", in any case of letters. NULL is answered with 0;
 *   borrowed for the call.
 * @return The ID; 0 for NULL and unknown keys. */
KQSUPT_API int32_t SMProductSIDToID(const char* productKey);

/** Tells the key of a product by its ID.
 *
 * @param[in] productID the ID of the product.
 * @return The key, newly allocated, which the caller releases with SMFreeMem; NULL for an unknown
 *   product or when memory is short. */
KQSUPT_API char* SMProductIDToSID(int32_t productID);

/** Makes the path of a file below a product's install path: that path, "/", `subDirectory` and "/"
 * unless that is NULL or empty, `fileName`. The file need not exist.
 *
 * @param[in] productID the ID of the product.
 * @param[in] subDirectory the directory below that path; may be NULL or empty; borrowed for the
 *   call.
 * @param[in] fileName the name of the file. NULL is answered with NULL; borrowed for the call.
 * @return The path, newly allocated, which the caller releases with SMFreeMem; NULL when `fileName`
 *   is NULL, the product's path cannot be had or memory is short. */
KQSUPT_API char* SMMakePathFileNameByPID(int32_t productID, const char* subDirectory,
                                         const char* fileName);

/** As SMMakePathFileNameByPID below a product's path for another purpose.
 *
 * @param[in] productID the ID of the product.
 * @param[in] pathType an SM_PATH_TYPE_ value.
 * @param[in] subDirectory the directory below that path; may be NULL or empty; borrowed for the
 *   call.
 * @param[in] fileName the name of the file. NULL is answered with NULL; borrowed for the call.
 * @return The path, newly allocated, which the caller releases with SMFreeMem; NULL when `fileName`
 *   is NULL, the product's path cannot be had or memory is short. */
KQSUPT_API char* SMMakePathFileNameByPIDAndType(int32_t productID, uint32_t pathType,
                                                const char* subDirectory, const char* fileName);

/** Finds the file `fileName` for a language such as "en_US": the first that exists of
 * base/directory/en/US/sub/file, base/directory/en/sub/file and base/directory/sub/file.
 *
 * @param[in] baseDirectory the base directory; NULL stands for "."; borrowed for the call.
 * @param[in] directory the directory below it. NULL is answered with NULL; borrowed for the call.
 * @param[in] languageID the language, of at most 8 bytes; NULL stands for the language of the
 *   environment; borrowed for the call.
 * @param[in] subDirectory the directory below that of the language; may be NULL or empty; borrowed
 *   for the call.
 * @param[in] fileName the name of the file. NULL is answered with NULL; borrowed for the call.
 * @return The path of the file, newly allocated, which the caller releases with SMFreeMem; NULL
 *   when `directory` or `fileName` is NULL, `languageID` has more than 8 bytes, no such file with a
 *   path of at most 255 bytes exists, or memory is short. */
KQSUPT_API char* SMGetLocalizedPathFileName(const char* baseDirectory, const char* directory,
                                            const char* languageID, const char* subDirectory,
                                            const char* fileName);

/** @} */

/** @defgroup config_files Directories and files
 * @{ */

/** Makes a directory with the mode 0755, less the process's umask. Its parent must be there.
 *
 * @param[in] path the path of the directory. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the directory was made, or something with that path exists already.
 * @retval 0xFFFFFFFF `path` is NULL, or the system refuses. */
KQSUPT_API SMStatus SMMkDir(const char* path);

/** Removes a directory.
 *
 * @param[in] path the path of the directory. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the directory was removed.
 * @retval SM_STATUS_OPERATION_FAILED it is not empty.
 * @retval SM_STATUS_DATA_NOT_FOUND it does not exist.
 * @retval 0xFFFFFFFF `path` is NULL, or the system refuses otherwise. */
KQSUPT_API SMStatus SMRmDir(const char* path);

/** Deletes a file.
 *
 * @param[in] path the path of the file. Not NULL; borrowed for the call.
 * @retval SM_STATUS_SUCCESS the file was deleted.
 * @retval 0xFFFFFFFF `path` is NULL, or the system refuses. */
KQSUPT_API SMStatus SMDeleteFile(const char* path);

/** Tells the size of a file.
 *
 * @param[in] path the path of the file. Not NULL; borrowed for the call.
 * @param[out] size receives the size in bytes, 0 on failure. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the size was written.
 * @retval 0xFFFFFFFF the file cannot be opened or has no size up to 2,147,483,647 bytes, or an
 *   argument is NULL. */
KQSUPT_API SMStatus SMGetSizeOfFile(const char* path, uint32_t* size);

/** Gives a name of 8 characters that no file in `directory` has. No file is made: another process
 * may take the name meanwhile.
 *
 * @param[in] directory the path of the directory. Not NULL; borrowed for the call.
 * @param[out] buffer the room for the name; NULL to ask for its size; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives 9 with SM_STATUS_SUCCESS and with
 *   SM_STATUS_BUFFER_TOO_SMALL. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS the name was written.
 * @retval SM_STATUS_INVALID_PARAMETER `directory` or `size` is NULL.
 * @retval SM_STATUS_BUFFER_TOO_SMALL `buffer` is NULL, or `*size` less than 9, which it receives.
 * @retval SM_STATUS_NO_MEMORY memory is short.
 * @retval 0xFFFFFFFF a hundred names that were tried all exist. */
KQSUPT_API SMStatus SMGetTmpFile(const char* directory, char* buffer, uint32_t* size);

/** A file that is looked at for changes. */
typedef struct SMFileProp SMFileProp;

/** Notes when the file was last modified.
 *
 * @param[in] path the path of the file. NULL is answered with NULL; borrowed for the call.
 * @return The handle, which the caller releases with SMFilePropFree; NULL when `path` is NULL, the
 *   file cannot be looked at or memory is short. */
KQSUPT_API SMFileProp* SMFilePropAlloc(const char* path);

/** Tells whether the file was modified in another second than was noted, which is now noted.
 *
 * @param[in,out] file the handle. NULL is answered with 0; stays the caller's.
 * @return 1 when it was; else 0, also for NULL and when the file cannot be looked at. */
KQSUPT_API uint32_t SMFilePropIsModified(SMFileProp* file);

/** Releases the handle.
 *
 * @param[in] file the handle, which the call takes over and frees. NULL is ignored. */
KQSUPT_API void SMFilePropFree(SMFileProp* file);

/** @} */

/** @defgroup config_ini INI files
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
 * Sizes are in bytes, with the terminator.
 * @{ */

/** The types of values. */
enum {
  SMINI_TYPE_UTF8 = 1,        /**< text, as it stands */
  SMINI_TYPE_UCS2_STRICT = 2, /**< UCS-2 text whose size must be that of the text */
  SMINI_TYPE_UCS2 = 3,        /**< UCS-2 text whose size may differ from its own */
  SMINI_TYPE_BOOLEAN = 4,     /**< uint16_t, 1 or 0: "TRUE" or "FALSE" */
  SMINI_TYPE_U32 = 5,         /**< uint32_t, decimal */
  SMINI_TYPE_S32 = 6,         /**< int32_t */
  SMINI_TYPE_U64 = 7,         /**< uint64_t */
  SMINI_TYPE_S64 = 8,         /**< int64_t */
  SMINI_TYPE_DOUBLE = 9       /**< double, with eight decimals */
};

/** Reads the value of `key` in `section` of the file `pathFileName`.
 *
 * Text (SMINI_TYPE_UTF8): `*size` receives the size of the value, which is not copied when it is
 * greater: SM_STATUS_BUFFER_TOO_SMALL. With `section` NULL it is the list of all sections, with
 * `key` NULL the list of the section's keys: terminated names with an empty one at the end. Of a
 * list that is too long for the buffer the names that fit are copied.
 *
 * UCS-2 text: the same, but for the default. Values of other types need their size at least, which
 * `*size` keeps. Lists there are of text only: for every other type `section` and `key` must be
 * given. Numbers are read
 * as far as they go, and saturate; text that does not begin with one is 0. A boolean is "TRUE" or
 * "FALSE" in any case of letters, up to the first space behind leading ones.
 *
 * `defaultValue` and `defaultSize`, when neither is 0, give what the buffer receives when the value
 * cannot be had; the status tells that it could not. Text: at most `*size` bytes of it, the last of
 * them 0, and `*size` receives their number; without a default the text is empty and `*size` 0.
 * This is so for a section or key that is not found and for a malformed header; after any other
 * failure the buffer is as it was, and for lists no default is used. UCS-2 text: whatever failed
 * but an argument or the room for the value, as many bytes of the default as fit, of which the last
 * need be no terminator, and `*size` receives their number; without a default the buffer is as it
 * was and `*size` 0. Other types: whatever failed but an argument, when the default has the size of
 * the type at least; else `*size` receives 0.
 *
 * @param[in] section the section; NULL for the list of all sections; borrowed for the call.
 * @param[in] key the key; NULL for the list of the section's keys; borrowed for the call.
 * @param[in] type an SMINI_TYPE_ value.
 * @param[out] buffer the room for the value. Not NULL; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives what is told above. Not NULL; stays
 *   the caller's.
 * @param[in] defaultValue what the buffer receives when the value cannot be had; NULL for no
 *   default; borrowed for the call.
 * @param[in] defaultSize the size of the default in bytes; 0 for no default.
 * @param[in] pathFileName the path of the file. Not NULL, nor empty; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @retval SM_STATUS_SUCCESS the value or the list was written.
 * @retval SM_STATUS_UNSUCCESSFUL `buffer` or `size` is NULL, `*size` too small for the type, no
 *   path, an unknown type, no section or key for a type that is not SMINI_TYPE_UTF8, a default of
 *   type SMINI_TYPE_UCS2_STRICT whose size is not that of the text; or the file is not a file that
 *   can be read.
 * @retval SM_STATUS_FILE_OPEN_FAILED the file cannot be opened.
 * @retval SM_STATUS_SECTION_NOT_FOUND there is no such section; for a list, none at all.
 * @retval SM_STATUS_KEY_NOT_FOUND there is no such key; for a list, none at all.
 * @retval SM_STATUS_END_OF_FILE a header without "]" comes before what is looked for.
 * @retval SM_STATUS_BAD_LENGTH the value is neither "TRUE" nor "FALSE", or not UTF-8 where UCS-2 is
 *   wanted.
 * @retval SM_STATUS_BUFFER_TOO_SMALL a text, or a list, does not fit into `*size` bytes; `*size`
 *   receives the size that is needed.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the library has not started.
 * @retval 0xFFFFFFFF memory is short; or the file cannot be locked.
 * @retval SM_STATUS_TIMEOUT the file is locked by somebody else, and `lockWait` is not 1.
 * @retval SM_STATUS_ACCESS_DENIED the file may not be locked by this process. */
KQSUPT_API SMStatus SMReadINIPathFileValue(const char* section, const char* key, uint32_t type,
                                           void* buffer, uint32_t* size, const void* defaultValue,
                                           uint32_t defaultSize, const char* pathFileName,
                                           uint16_t lockWait);

/** Writes the `valueSize` bytes at `value` as the value of `key` in `section` of the file
 * `pathFileName`. A key that is there keeps its place; a new one is put behind the last one of its
 * section; a new section is put at the end of the file, with an empty line before it; a new file is
 * made, with its directory. Comments and blank lines that end the file are dropped when its last
 * section gains a key.
 *
 * Text with `value` NULL and `valueSize` 0 takes the key out. With `key` NULL, whether or not a
 * value is given, the whole section goes, up to the next line with "[" or "#" in its first column.
 *
 * After every failure but one the file is as it was: with SM_STATUS_ACCESS_DENIED the old content
 * may be there still, and the next one to use the file goes back to it.
 *
 * @param[in] section the section, of at most 255 bytes. Not NULL; borrowed for the call.
 * @param[in] key the key, of at most 255 bytes; NULL to take the section out; borrowed for the
 *   call.
 * @param[in] type an SMINI_TYPE_ value.
 * @param[in] value the value; NULL to take the key or the section out, which text alone can;
 *   borrowed for the call.
 * @param[in] valueSize of text the size with its terminator, of UCS-2 text at most 2,048 bytes. Of
 *   SMINI_TYPE_UCS2 it is only checked, from 1 to 2,048: the text is written to its terminator,
 *   which must be there. Of other types the size of the type at least.
 * @param[in] pathFileName the path of the file. Not NULL, nor empty; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @retval SM_STATUS_SUCCESS the value was written, or the key or the section is taken out.
 * @retval SM_STATUS_UNSUCCESSFUL no section, no path or one that ends in "/", a name of more than
 *   255 bytes, an unknown type, no key for a type that is not text, or the file cannot be read.
 * @retval SM_STATUS_BAD_LENGTH `valueSize` is not what the type asks for, a value that is no
 *   text is NULL, or what is to be taken out is in a section that is not there.
 * @retval SM_STATUS_FILE_OPEN_FAILED the file cannot be opened.
 * @retval SM_STATUS_END_OF_FILE a header without "]" comes before the section.
 * @retval SM_STATUS_FILE_NOT_FOUND the new file cannot be made, or the file not be added to.
 * @retval SM_STATUS_OUT_OF_SPACE the file cannot be written.
 * @retval SM_STATUS_ALREADY_EXISTS the new file cannot be renamed.
 * @retval 0xFFFFFFFF the directory cannot be made, there is no name for a new file, or the old one
 *   cannot be renamed; memory is short; or the file cannot be locked, or an interrupted change not
 *   be undone.
 * @retval SM_STATUS_NO_MEMORY memory is short, as it always is for changing a file of more than
 *   2,147,483,646 bytes, or the library has not started.
 * @retval SM_STATUS_ACCESS_DENIED the old content cannot be deleted, and the next one to use the
 *   file goes back to it; or the file may not be locked by this process, and nothing is written.
 * @retval SM_STATUS_OPERATION_FAILED the text is not UCS-2.
 * @retval SM_STATUS_TIMEOUT the file is locked by somebody else, and `lockWait` is not 1. */
KQSUPT_API SMStatus SMWriteINIPathFileValue(const char* section, const char* key, uint32_t type,
                                            const void* value, uint32_t valueSize,
                                            const char* pathFileName, uint16_t lockWait);

/** As SMReadINIPathFileValue for the file `fileName` in the directory "ini" in the path for INI
 * files of the product Quillance. When the path cannot be had, the buffer and `*size` are as they
 * were.
 *
 * @param[in] section the section; NULL for the list of all sections; borrowed for the call.
 * @param[in] key the key; NULL for the list of the section's keys; borrowed for the call.
 * @param[in] type an SMINI_TYPE_ value.
 * @param[out] buffer the room for the value. Not NULL; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives what is told above. Not NULL; stays
 *   the caller's.
 * @param[in] defaultValue what the buffer receives when the value cannot be had; NULL for no
 *   default; borrowed for the call.
 * @param[in] defaultSize the size of the default in bytes; 0 for no default.
 * @param[in] fileName the name of the file. Not NULL; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @retval SM_STATUS_SUCCESS the value or the list was written.
 * @retval SM_STATUS_UNSUCCESSFUL `buffer` or `size` is NULL, `*size` too small for the type, no
 *   `fileName`, an unknown type, no section or key for a type that is not SMINI_TYPE_UTF8, a
 *   default of type SMINI_TYPE_UCS2_STRICT whose size is not that of the text; or the file is not a
 *   file that can be read.
 * @retval SM_STATUS_FILE_OPEN_FAILED the file cannot be opened.
 * @retval SM_STATUS_SECTION_NOT_FOUND there is no such section; for a list, none at all.
 * @retval SM_STATUS_KEY_NOT_FOUND there is no such key; for a list, none at all.
 * @retval SM_STATUS_END_OF_FILE a header without "]" comes before what is looked for.
 * @retval SM_STATUS_BAD_LENGTH the value is neither "TRUE" nor "FALSE", or not UTF-8 where UCS-2 is
 *   wanted.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the path of the file has more than 254 bytes; or a text, or a
 *   list, does not fit into `*size` bytes, and `*size` receives the size that is needed.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the library has not started.
 * @retval 0xFFFFFFFF the product has no such path; memory is short; or the file cannot be locked.
 * @retval SM_STATUS_TIMEOUT the file is locked by somebody else, and `lockWait` is not 1.
 * @retval SM_STATUS_ACCESS_DENIED the file may not be locked by this process. */
KQSUPT_API SMStatus SMReadINIFileValue(const char* section, const char* key, uint32_t type,
                                       void* buffer, uint32_t* size, const void* defaultValue,
                                       uint32_t defaultSize, const char* fileName,
                                       uint16_t lockWait);

/** As SMWriteINIPathFileValue for the file `fileName` in the directory "ini" in the path for INI
 * files of the product Quillance.
 *
 * @param[in] section the section, of at most 255 bytes. Not NULL; borrowed for the call.
 * @param[in] key the key, of at most 255 bytes; NULL to take the section out; borrowed for the
 *   call.
 * @param[in] type an SMINI_TYPE_ value.
 * @param[in] value the value; NULL to take the key or the section out, which text alone can;
 *   borrowed for the call.
 * @param[in] valueSize of text the size with its terminator, of UCS-2 text at most 2,048 bytes. Of
 *   SMINI_TYPE_UCS2 it is only checked, from 1 to 2,048: the text is written to its terminator,
 *   which must be there. Of other types the size of the type at least.
 * @param[in] fileName the name of the file. Not NULL; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @retval SM_STATUS_SUCCESS the value was written, or the key or the section is taken out.
 * @retval SM_STATUS_UNSUCCESSFUL no section, no `fileName` or one that ends in "/", a name of more
 *   than 255 bytes, an unknown type, no key for a type that is not text, or the file cannot be
 *   read.
 * @retval SM_STATUS_BAD_LENGTH `valueSize` is not what the type asks for, a value that is no
 *   text is NULL, or what is to be taken out is in a section that is not there.
 * @retval SM_STATUS_FILE_OPEN_FAILED the file cannot be opened.
 * @retval SM_STATUS_END_OF_FILE a header without "]" comes before the section.
 * @retval SM_STATUS_FILE_NOT_FOUND the new file cannot be made, or the file not be added to.
 * @retval SM_STATUS_OUT_OF_SPACE the file cannot be written.
 * @retval SM_STATUS_ALREADY_EXISTS the new file cannot be renamed.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the path of the file has more than 254 bytes.
 * @retval 0xFFFFFFFF the product has no such path; the directory cannot be made, there is no name
 *   for a new file, or the old one cannot be renamed; memory is short; or the file cannot be
 *   locked, or an interrupted change not be undone.
 * @retval SM_STATUS_NO_MEMORY memory is short, as it always is for changing a file of more than
 *   2,147,483,646 bytes, or the library has not started.
 * @retval SM_STATUS_ACCESS_DENIED the old content cannot be deleted, and the next one to use the
 *   file goes back to it; or the file may not be locked by this process, and nothing is written.
 * @retval SM_STATUS_OPERATION_FAILED the text is not UCS-2.
 * @retval SM_STATUS_TIMEOUT the file is locked by somebody else, and `lockWait` is not 1. */
KQSUPT_API SMStatus SMWriteINIFileValue(const char* section, const char* key, uint32_t type,
                                        const void* value, uint32_t valueSize, const char* fileName,
                                        uint16_t lockWait);

/** Reads the text of a key into memory of its own. When there is none, `defaultValue` is copied,
 * but only where the file is there and can be read.
 *
 * @param[in] section the section; with NULL the text is the list of all sections, as
 *   SMReadINIPathFileValue lists them; borrowed for the call.
 * @param[in] key the key; with NULL the text is the list of the section's keys; borrowed for the
 *   call.
 * @param[in] defaultValue the text to copy when there is none; NULL for no default; borrowed for
 *   the call.
 * @param[out] size receives the size of the text; 0 when the call answers NULL. May be NULL; stays
 *   the caller's.
 * @param[in] pathFileName the path of the file. NULL is answered with NULL; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @return The text, newly allocated, which the caller releases with SMFreeMem; NULL when there is
 *   neither a text nor a default, the text has more than 32,767 bytes or memory is short. */
KQSUPT_API char* SMReadINISectionKeyUTF8Value(const char* section, const char* key,
                                              const char* defaultValue, uint32_t* size,
                                              const char* pathFileName, uint16_t lockWait);

/** Tells the value that `table` has for the text of a key, in any case of letters.
 *
 * @param[in] section the section. Not NULL; borrowed for the call.
 * @param[in] key the key. Not NULL; borrowed for the call.
 * @param[in] table the names and their values. Not NULL; borrowed for the call.
 * @param[in] count the number of entries of `table`, 2 at least.
 * @param[in] isBitMask with 1 the text is a list of names with "," between them; with any other
 *   value it is one name.
 * @param[in] pathFileName the path of the file. Not NULL; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @return The value of the name; that of entry 1 when the text cannot be read, whether there is no
 *   such key or memory is short; that of entry 0 when no name matches. With `isBitMask` 1 the
 *   values of those that match, combined, 0 when none does. 0x80000000 when an argument is NULL,
 *   the table has less than 2 entries, or memory is too short for the list. */
KQSUPT_API uint32_t SMReadINIEnums32Value(const char* section, const char* key,
                                          const SMEnums32* table, uint32_t count,
                                          uint16_t isBitMask, const char* pathFileName,
                                          uint16_t lockWait);

/** @} */

/** @defgroup config_properties Property files
 *
 * Lines of a key and a value without sections: "key = value". Blanks, ":" and "=" between the two
 * are one separator; blanks at both ends of the value are cut off. A line that begins with ";",
 * "#", "!" or "//" behind its blanks is a comment; one of a single character is not read. A value
 * that ends in a single `\` goes on in the next line, joined to it by `\n`. Only as much of a key
 * is compared as the file has: the line "port=1" answers for the key "portal". The first line that
 * answers counts.
 *
 * Files are locked as INI files are, with the same statuses. A change replaces the file in the same
 * way, but nobody goes back to the old content after a crash.
 * @{ */

/** Reads the value of `key`. `*size` and statuses are those of SMXLTUTF8ToTypeValue. With `key`
 * NULL and SMXLT_TYPE_UTF8 it is the list of all keys: terminated names with an empty one at the
 * end, and `*size` receives the size of the whole list.
 *
 * @param[in] key the key; NULL for the list of all keys; borrowed for the call.
 * @param[in] typeCode the type of the value, a SMXLT_TYPE_ code with its notation.
 * @param[out] buffer the room for the value; NULL only where `*size` is 0, or for a list to ask for
 *   its size; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives the size of the value, the list or
 *   the default. Not NULL; stays the caller's.
 * @param[in] defaultValue what is copied to the buffer after any failure, when it is given with a
 *   `defaultSize` of at most `*size`; `*size` receives `defaultSize`. NULL for no default; borrowed
 *   for the call.
 * @param[in] defaultSize the size of the default in bytes.
 * @param[in] pathFileName the path of the file. Not NULL; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @retval SM_STATUS_SUCCESS the value or the list was written.
 * @retval SM_STATUS_INVALID_PARAMETER `size` or `pathFileName` is NULL, or `key` is with another
 *   type; `buffer` is NULL with a `*size` other than 0; the text is not a value of the type in this
 *   notation, or the type cannot be read in it.
 * @retval SM_STATUS_FILE_OPEN_FAILED the file cannot be opened.
 * @retval SM_STATUS_UNSUCCESSFUL the file cannot be read; the type cannot be read from text, or
 *   bytes not in this notation.
 * @retval SM_STATUS_KEY_NOT_FOUND no line answers, or there is none for a list.
 * @retval SM_STATUS_NO_MEMORY memory is short, or the library has not started.
 * @retval SM_STATUS_BUFFER_TOO_SMALL the value or the list does not fit into `*size` bytes.
 * @retval SM_STATUS_VALUE_TOO_LARGE the number is above an 8- or 16-bit type.
 * @retval SM_STATUS_VALUE_TOO_SMALL the number is below a signed 8- or 16-bit type.
 * @retval 1 a signed 64-bit integer in octal or hexadecimal, or an unsigned one in octal.
 * @retval SM_STATUS_OPERATION_FAILED the text for a UCS-2 value is not UTF-8.
 * @retval 17 an address, while the library is being stopped.
 * @retval SM_STATUS_TIMEOUT the file is locked by somebody else, and `lockWait` is not 1.
 * @retval SM_STATUS_ACCESS_DENIED the file may not be locked by this process.
 * @retval 0xFFFFFFFF there is no such language, a malformed list of bytes, or no address; or the
 *   file cannot be locked. */
KQSUPT_API SMStatus SMPropertyFileReadValue(const char* key, uint32_t typeCode, void* buffer,
                                            uint32_t* size, const void* defaultValue,
                                            uint32_t defaultSize, const char* pathFileName,
                                            uint16_t lockWait);

/** Writes the `valueSize` bytes at `value`, of type `typeCode`, in place of the value that answers
 * for `key`. The line becomes "key=value". The key must be there: when no line answers, the file is
 * emptied. After each failure the file is as it was, but with SM_STATUS_ACCESS_DENIED, where the
 * old content may be beside it still.
 *
 * @param[in] key the key. Not NULL; borrowed for the call.
 * @param[in] typeCode the type of the value, a SMXLT_TYPE_ code with its notation.
 * @param[in] value the value. Not NULL; borrowed for the call.
 * @param[in] valueSize the size of the value in bytes; it counts for bytes and UTF-8 text.
 * @param[in] pathFileName the path of the file. Not NULL; borrowed for the call.
 * @param[in] lockWait 1 waits for the lock of the file without limit, any other value tries once.
 * @retval SM_STATUS_SUCCESS the value was written, or the file emptied.
 * @retval SM_STATUS_INVALID_PARAMETER an argument is NULL.
 * @retval SM_STATUS_FILE_OPEN_FAILED the file cannot be opened.
 * @retval SM_STATUS_UNSUCCESSFUL the file cannot be read; or there is no such type, or bytes not in
 *   this notation.
 * @retval SM_STATUS_NO_MEMORY memory is short, also for a file of more than 2,147,483,646 bytes, or
 *   the library has not started.
 * @retval SM_STATUS_OPERATION_FAILED the value is not UCS-2.
 * @retval 17 an address, while the library is being stopped.
 * @retval SM_STATUS_FILE_NOT_FOUND the new file cannot be made.
 * @retval SM_STATUS_OUT_OF_SPACE the new file cannot be written.
 * @retval SM_STATUS_ALREADY_EXISTS the new file cannot be renamed.
 * @retval 0xFFFFFFFF there is no name for a new file, or the old one cannot be renamed; memory is
 *   too short for the text of bytes; or the file cannot be locked.
 * @retval SM_STATUS_ACCESS_DENIED the old content cannot be deleted, and the new one is in place;
 *   or the file may not be locked by this process, and nothing is written.
 * @retval SM_STATUS_TIMEOUT the file is locked by somebody else, and `lockWait` is not 1. */
KQSUPT_API SMStatus SMPropertyFileWriteValue(const char* key, uint32_t typeCode, const void* value,
                                             uint32_t valueSize, const char* pathFileName,
                                             uint16_t lockWait);

/** @} */

/** @defgroup config_texts Texts by number
 *
 * Texts lie in INI files: those of US English in the section "ASCII EN_US DEFAULT STRING ID
 * SECTION" under "0:ID", those of other languages in "MISCELLANEOUS STRING ID SECTION" under
 * "LANGUAGE:ID", each number in upper-case hexadecimal without leading zeros. A text ends at its
 * first CR or LF. The language IDs 0, 437 and 1033, and NULL, stand for US English.
 * @{ */

/** Copies the text with the number `stringID`. In place of the text stands "Invalid Path File Name"
 * when no file name is given and "Failed to allocate memory" when memory is short.
 *
 * @param[in] stringID the number of the text.
 * @param[in,out] languageID the language; becomes 0 when the text is the one of US English, also
 *   for want of one in the language. NULL stands for US English; stays the caller's.
 * @param[in] pathFileName the path of the INI file. With NULL, or an empty one, no file name is
 *   given; borrowed for the call.
 * @param[out] buffer the room for the text. With NULL nothing is copied; stays the caller's.
 * @param[in,out] size the room at `buffer` in bytes; receives what the call returns. With NULL
 *   nothing is copied; stays the caller's.
 * @return The size of the text with the terminator; 0 when there is no such text, it does not fit
 *   or `buffer` or `size` is NULL. */
KQSUPT_API uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringID, uint32_t* languageID,
                                               const char* pathFileName, char* buffer,
                                               uint32_t* size);

/** As SMGetUTF8StrFromIDPathFile from the library's own file, kqsdst32.ini in the directory "ini" in
 * the path for INI files of the product Quillance, as UCS-2. IDs from BaseID to BaseID + oemRange
 * are first counted on by offset: numbers that the section "OEM Configuration" of kqisdy32.ini
 * there may give, else 2304, 32 and 0. They are read once for the process, at the first call that
 * has the memory and finds the directory, and again after a BaseID of 0.
 *
 * @param[in] stringID the number of the text.
 * @param[in,out] languageID the language; becomes 0 when the text is the one of US English, also
 *   for want of one in the language. NULL stands for US English; stays the caller's.
 * @param[out] ucs2Buffer the room for the text; NULL to ask for its size in UTF-8; stays the
 *   caller's.
 * @param[in,out] size the room at `ucs2Buffer` in bytes; receives what the call returns. NULL as
 *   for `ucs2Buffer`; stays the caller's.
 * @return The size of the text in bytes with its terminator. Without `ucs2Buffer` or `size` it is
 *   the size of the text in UTF-8. When `*size` is less than twice that, nothing is written and
 *   twice that is returned. 0 when there is no such text of up to 1,023 bytes, or it cannot be
 *   converted. */
KQSUPT_API uint32_t SMGetUCS2StrFromID(uint32_t stringID, uint32_t* languageID, ustring* ucs2Buffer,
                                       uint32_t* size);

/** @} */

/** @defgroup config_pci Names of PCI devices
 * @{ */

/** Looks up the names of a PCI device and its vendor in a text file.
 *
 * Its lines are fields with tabs between them: a kind, an identifier in hexadecimal, a name; what
 * follows ";" is a comment. Lines with fewer fields, or whose identifier is no number, are skipped.
 * "V" is a vendor, "D" a device of the vendor before, "O" a maker of boards with the device before,
 * "S" a board of the maker before; the name of a board, or else of its maker, stands for that of
 * the device. A name that is too long is cut; a name that is not found is empty.
 *
 * @param[in] vendorID the identifier of the vendor.
 * @param[in] deviceID the identifier of the device.
 * @param[in] subVendorID the identifier of the maker of the board.
 * @param[in] subDeviceID the identifier of the board.
 * @param[in] pathFileName the path of the file. Not NULL, nor empty; borrowed for the call.
 * @param[out] vendorName the room for the name of the vendor. Not NULL; stays the caller's.
 * @param[in,out] vendorNameSize the room at `vendorName` in bytes, not 0; receives the length of
 *   the name without its terminator. Not NULL; stays the caller's.
 * @param[out] deviceName the room for the name of the device. Not NULL; stays the caller's.
 * @param[in,out] deviceNameSize the room at `deviceName` in bytes, not 0; receives the length of
 *   the name without its terminator. Not NULL; stays the caller's.
 * @retval SM_STATUS_SUCCESS vendor and device are both in the file.
 * @retval SM_STATUS_INVALID_PARAMETER a pointer is NULL, a size 0 or there is no file name; both
 *   sizes receive 0.
 * @retval SM_STATUS_NO_MEMORY memory is short.
 * @retval SM_STATUS_FILE_NOT_FOUND the file cannot be opened or read, or vendor and device are not
 *   both in it. */
KQSUPT_API SMStatus SMReadPCIDevFile(uint32_t vendorID, uint32_t deviceID, uint32_t subVendorID,
                                     uint32_t subDeviceID, const char* pathFileName,
                                     char* vendorName, uint32_t* vendorNameSize, char* deviceName,
                                     uint32_t* deviceNameSize);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
