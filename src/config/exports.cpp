// The exported functions on configuration.

#include "kqsupt/config.h"

#include "config/item_list.h"

using namespace kqsupt;

extern "C" {

char* SMUTF8ConvertXSVToYSV(const char* text, char separator, char newSeparator, uint32_t* count,
                            uint32_t* size) {
  return config::convert_list_for_caller(text, separator, newSeparator, count, size);
}

}  // extern "C"
