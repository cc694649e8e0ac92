// What is at the other end of a stream.
#pragma once

namespace brindle::host {

enum class Stream { Output, Error };

// A terminal on which a line can be drawn over.
[[nodiscard]] bool is_terminal(Stream stream);
// Somebody reads standard error and types into standard input.
[[nodiscard]] bool can_ask();
// Also asks the environment: NO_COLOR with any value but an empty one forbids them.
[[nodiscard]] bool wants_colours(Stream stream);
// Of the terminal at standard error.
[[nodiscard]] int terminal_columns();

}  // namespace brindle::host
