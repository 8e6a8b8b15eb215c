// Whether the library is being stopped: for calls that wait, which then give up.
#pragma once

namespace kqsupt::frame {

// True from before the first module stops.
[[nodiscard]] bool is_stopping();

}  // namespace kqsupt::frame
