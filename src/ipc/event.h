// Events: signalled while their count is above 0.
#pragma once

#include <cstdint>

#include "ipc/counter.h"
#include "ipc/object.h"
#include "kqsupt/ipc.h"

struct SMEvent {
  static constexpr auto kType = kqsupt::ipc::ObjectType::kEvent;
  kqsupt::ipc::ObjectHeader header;
  kqsupt::ipc::Counter count;
  bool is_creator;
  bool is_manual;
};

namespace kqsupt::ipc {

[[nodiscard]] SMEvent* create_event(const char* name, int32_t manual, uint32_t signalled,
                                    int32_t permission);
[[nodiscard]] SMEvent* open_event(const char* name);
SMStatus wait_for_event(SMEvent* event, int32_t timeout_ms);
SMStatus set_event(SMEvent* event);
SMStatus reset_event(SMEvent* event);
SMStatus pulse_event(SMEvent* event);
void destroy_event(SMEvent* event);

}  // namespace kqsupt::ipc
