// What the library asks of the program around it, as Windows has it.
#pragma once

#include <brindle/values.h>

namespace brindle::com {

// Lets the windows of this thread catch up: handles messages until there are none.
void pump_messages();
// Shows a text and waits until the user has acknowledged it.
void show_message(const String& text);

}  // namespace brindle::com
