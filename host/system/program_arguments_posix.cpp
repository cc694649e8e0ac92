#include "system/program_arguments.h"

namespace brindle::host {

std::vector<std::string> program_arguments(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

}  // namespace brindle::host
