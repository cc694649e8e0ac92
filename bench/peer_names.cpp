// TagLib as a program that reads the files of its arguments, for xargs.
#include <cstdio>
#include <string>

#include "peers.h"

int main(int count, char** arguments) {
    for (int file = 1; file < count; ++file) {
        brindle::bench::taglib::open(arguments[file]);
    }
    return 0;
}
