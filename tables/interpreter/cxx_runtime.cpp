// Takes the place of two parts of the C++ run-time library that is linked into the module.

#include <cstddef>
#include <cstdlib>

// Its handler for an exception that nobody catches would bring a demangler of 65 KB into the module
// only to print a name. There is no such exception: the module's entry points catch all that it
// throws.
namespace __gnu_cxx {

void __verbose_terminate_handler() { std::abort(); }

} // namespace __gnu_cxx

#ifdef __GLIBC__

// What it remembers of the exceptions of a thread lies in thread-local storage, which the C library
// allocates when a thread first throws; where there is no memory for that, it ends the process. Here
// the storage is a part of what each thread has from its beginning on.
namespace __cxxabiv1 {

struct __cxa_eh_globals;

namespace {

// Zeros to begin with: a pointer and a counter, on some architectures another pointer.
[[gnu::tls_model("initial-exec")]] alignas(void *) constinit thread_local std::byte
    exceptions[3 * sizeof(void *)]{};

} // namespace

extern "C" __cxa_eh_globals *__cxa_get_globals() noexcept {
  return reinterpret_cast<__cxa_eh_globals *>(exceptions);
}

extern "C" __cxa_eh_globals *__cxa_get_globals_fast() noexcept {
  return reinterpret_cast<__cxa_eh_globals *>(exceptions);
}

} // namespace __cxxabiv1

#endif
