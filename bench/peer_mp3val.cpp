#include "peers.h"
#include "process.h"

namespace brindle::bench::mp3val {

void walk(const std::string& path) {
    run_program({"mp3val", path});
}

}  // namespace brindle::bench::mp3val
