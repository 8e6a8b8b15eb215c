// Padding fields.

#include "text/format_write.h"

namespace kqsupt::text {

void write_padded(BoundedOutput& output, const Spec& spec, const Field& field) {
  const uint64_t size =
      uint64_t{field.size} + field.zeros_behind_prefix + field.zeros_before_suffix;
  const uint64_t padding = spec.width > size ? spec.width - size : 0;
  const bool zeros = field.zero_fill && !spec.left;
  const char* const middle = field.text + field.prefix;
  const char* const suffix = field.text + field.size - field.suffix;
  if (!spec.left && !zeros) {
    output.run(' ', padding);
  }
  output.text(field.text, field.prefix);
  output.run('0', field.zeros_behind_prefix + (zeros ? padding : 0));
  output.text(middle, static_cast<size_t>(suffix - middle));
  output.run('0', field.zeros_before_suffix);
  output.text(suffix, field.suffix);
  if (spec.left) {
    output.run(' ', padding);
  }
}

}  // namespace kqsupt::text
