// Counts the allocations of a process: those that the interpreter is asked for, in all three of its
// domains, and the calls of malloc and its kin, by whomever. Preloaded, so that it sees them all.

#define _GNU_SOURCE
#include <Python.h>

long asked, called;

extern void *__libc_malloc(size_t), *__libc_calloc(size_t, size_t), *__libc_realloc(void *, size_t);

void *malloc(size_t size) { return ++called, __libc_malloc(size); }
void *calloc(size_t count, size_t size) { return ++called, __libc_calloc(count, size); }
void *realloc(void *block, size_t size) { return ++called, __libc_realloc(block, size); }

static void *count_malloc(void *below, size_t size) {
  const PyMemAllocatorEx *next = below;
  return ++asked, next->malloc(next->ctx, size);
}
static void *count_calloc(void *below, size_t count, size_t size) {
  const PyMemAllocatorEx *next = below;
  return ++asked, next->calloc(next->ctx, count, size);
}
static void *count_realloc(void *below, void *block, size_t size) {
  const PyMemAllocatorEx *next = below;
  return ++asked, next->realloc(next->ctx, block, size);
}
static void pass_free(void *below, void *block) {
  const PyMemAllocatorEx *next = below;
  next->free(next->ctx, block);
}

void start(void) {
  static PyMemAllocatorEx below[3];
  for (int domain = PYMEM_DOMAIN_RAW; domain <= PYMEM_DOMAIN_OBJ; ++domain) {
    PyMem_GetAllocator(domain, &below[domain]);
    PyMemAllocatorEx hook = {&below[domain], count_malloc, count_calloc, count_realloc, pass_free};
    PyMem_SetAllocator(domain, &hook);
  }
  asked = called = 0;
}
