// Only for the thread sanitizer. Qt starts programs in a child that shares our memory until it runs
// them; the sanitizer, which does its book-keeping in that memory, then takes us for the child and
// looks at nothing any more. So the child gets memory of its own.
#include <dlfcn.h>
#include <sched.h>

#include <cstdarg>

extern "C" int clone(int (*function)(void *), void *stack, int flags, void *argument, ...)
{
    va_list rest;
    va_start(rest, argument);
    void *const parentTid = va_arg(rest, void *);
    void *const tls = va_arg(rest, void *);
    void *const childTid = va_arg(rest, void *);
    va_end(rest);
    static const auto next = reinterpret_cast<decltype(&clone)>(dlsym(RTLD_NEXT, "clone"));
    return next(function, stack, flags & ~(CLONE_VM | CLONE_VFORK), argument, parentTid, tls,
                childTid);
}
