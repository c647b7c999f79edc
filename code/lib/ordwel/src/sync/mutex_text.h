// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_MUTEX_TEXT_H
#define ORDWEL_SRC_MUTEX_TEXT_H

#include <cerrno>
#include <string>

#include <ordwel/string_helpers.h>

namespace ordwel {

enum class mutex_op { lock, trylock, unlock };

// The text that a failed mutex operation raises with, for a result that is neither 0 nor, for
// trylock, EBUSY. A named mutex puts its name in the text; an unnamed one leaves two blanks.
inline std::string mutex_failure_text(mutex_op a_op, int a_result, std::string const &a_name)
{
    switch (a_op) {
    case mutex_op::lock:
        if (a_result == EDEADLK) {
            return string_with_format("A deadlock would occur if the thread blocked waiting for mutex %s (lock)",
                                      a_name.c_str());
        }
        if (a_result == EINVAL) {
            return string_with_format("The value specified by mutex %s is invalid (lock)", a_name.c_str());
        }
        return "Undocumented mutex error (lock)";
    case mutex_op::trylock:
        if (a_result == EINVAL) {
            return "The value specified by mutex is invalid (trylock)";
        }
        return "Undocumented mutex error (trylock)";
    case mutex_op::unlock:
        if (a_result == EPERM) {
            return string_with_format("The current thread does not hold a lock on mutex %s (unlock)", a_name.c_str());
        }
        if (a_result == EINVAL) {
            return string_with_format("The value specified by mutex %s is invalid (unlock)", a_name.c_str());
        }
        return "Undocumented mutex error (unlock)";
    }
    return std::string();
}

} // namespace ordwel

#endif
