// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_FORCED_UNWIND_H
#define ORDWEL_SRC_FORCED_UNWIND_H

// With glibc, pthread_exit and a cancellation leave a thread by unwinding its stack with a special
// exception. A catch-all clause must let it pass on, or the C library aborts the process: every
// catch (...) of the library that can see a thread end stands behind ORDWEL_PASS_FORCED_UNWIND.
#include <pthread.h>

// The special exception has no object behind it, so the handler's reference is bound to null; a
// function that holds ORDWEL_PASS_FORCED_UNWIND is marked ORDWEL_PASSES_FORCED_UNWIND to keep the
// undefined-behaviour sanitizer from reporting that binding.
#if defined(__GLIBC__) && defined(__GLIBCXX__)
#include <cxxabi.h>
#define ORDWEL_PASSES_FORCED_UNWIND __attribute__((no_sanitize("null")))
#define ORDWEL_PASS_FORCED_UNWIND                                                                                      \
    catch (abi::__forced_unwind &)                                                                                     \
    {                                                                                                                  \
        throw;                                                                                                         \
    }
#else
#define ORDWEL_PASSES_FORCED_UNWIND
#define ORDWEL_PASS_FORCED_UNWIND
#endif

#endif
