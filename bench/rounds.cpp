// Does one job a number of times and nothing else, for callgrind to count: the difference between
// N and 2N rounds is what N of them cost.
//
//   brindle_rounds <open|read|save|grow> <file> <rounds>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include <brindle/text.h>

#include "jobs.h"

int main(int count, char** arguments) {
    using namespace brindle;
    if (count != 4) {
        std::cerr << "usage: brindle_rounds <open|read|save|grow> <file> <rounds>\n";
        return 2;
    }
    const std::string job = arguments[1];
    const String name = from_utf8(arguments[2]);
    std::size_t sum = 0;
    for (int round = std::stoi(arguments[3]); round > 0; --round) {
        if (job == "open") {
            sum += bench::open_only(name);
        } else if (job == "read") {
            sum += bench::open_and_read(name);
        } else if (job == "save") {
            bench::open_and_save(name);
        } else if (job == "grow") {
            bench::open_and_grow(name);
        } else {
            return 2;
        }
    }
    std::cout << sum << '\n';
    return 0;
}
