// Preloaded by a test: lets memory run out for the C++ code of the module, which takes it from
// malloc, and for nobody else.

#include <cstddef>
#include <cstring>
#include <dlfcn.h>

extern "C" {

void *__libc_malloc(std::size_t size);

static long seen = -1; // negative: not armed
static long first_failure = 0;
static long end_of_failures = 0; // 0: none

void fail_new(long first, long end) {
  seen = first < 0 ? -1 : 0;
  first_failure = first;
  end_of_failures = end;
}

void *malloc(std::size_t size) {
  Dl_info caller;
  if (seen >= 0 && dladdr(__builtin_return_address(0), &caller) != 0 &&
      std::strstr(caller.dli_fname, "/data_tables.") != nullptr) {
    const long number = seen++;
    if (number >= first_failure && (end_of_failures == 0 || number < end_of_failures)) {
      return nullptr;
    }
  }
  return __libc_malloc(size);
}
}
