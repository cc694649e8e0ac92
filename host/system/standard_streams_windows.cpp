#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "output/standard_streams.h"

namespace brindle::host {

// Texts are UTF-8 with line feeds, as on every other system.
void prepare_standard_streams() {
    SetConsoleOutputCP(CP_UTF8);
    for (std::FILE* stream : {stdout, stderr}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
}

}  // namespace brindle::host
