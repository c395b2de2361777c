// Takes the place of the C++ run-time library's handler for an exception that nobody catches, which
// would bring a demangler of some 60 KB into the module only to print a name. There is no such
// exception: the module's entry points catch all that it throws.

#include <cstdlib>

namespace __gnu_cxx {

void __verbose_terminate_handler() { std::abort(); }

} // namespace __gnu_cxx
