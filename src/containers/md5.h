// The message digest: MD5 over words in the byte order of the host.
#pragma once

#include <cstdint>

#include "kqsupt/containers.h"

namespace kqsupt::containers {

// The exported operations.
void load_digest(SMRFC1321Context* context);
void add_message(SMRFC1321Context* context, const void* data, uint32_t length);
void compute_digest(SMRFC1321Context* context);
void unload_digest(SMRFC1321Context* context);

}  // namespace kqsupt::containers
