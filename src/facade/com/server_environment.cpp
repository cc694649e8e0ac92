#include "facade/com/server_environment.h"

namespace brindle::com {

Environment& server_environment() {
    return system_environment();
}

}  // namespace brindle::com
