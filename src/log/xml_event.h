// Events in a log of XML: one element each, in front of the end of the document.
#pragma once

#include "kqsupt/frame.h"
#include "log/event.h"

namespace kqsupt::log {

// Appends the event, after a backup when the log would reach `max_size` bytes.
[[nodiscard]] SMStatus append_xml_event(const char* path, const Event& event, uint32_t max_size);

// Deletes the log and begins a new one with an event that says so.
[[nodiscard]] SMStatus clear_xml_log(const char* path, uint16_t category, const char* user,
                                     const char* source);

}  // namespace kqsupt::log
