// What std::terminate() does before it ends the process.
#include <cstdlib>

// In the place of the runtime's own, which prints the name of the exception's type: that would
// bring a decoder of names into the DLL, a twelfth of its size, for a line that no host shows.
// NOLINTNEXTLINE(cert-dcl58-cpp): a function of the runtime, which may be replaced at link time
namespace __gnu_cxx {
void __verbose_terminate_handler();  // NOLINT(bugprone-reserved-identifier)

void __verbose_terminate_handler() {  // NOLINT(bugprone-reserved-identifier)
    std::abort();
}
}  // namespace __gnu_cxx
