// SPDX-License-Identifier: MIT
#include "platform/impersonate.h"

#include <atomic>

namespace ordwel {
namespace platform {

// POSIX has no identity bound to a thread for outbound connections. A logon hands out a token
// number, and the impersonation itself is the thread's set of credentials that the portable code
// keeps: the local identity never changes, as with Windows' new-credentials logon.
namespace {

std::atomic<std::intptr_t> s_next_token{1};

status posix_logon_user(char const *, char const *, char const *, std::intptr_t &a_token)
{
    a_token = s_next_token.fetch_add(1);
    return status_done();
}

status posix_duplicate_token(std::intptr_t, std::intptr_t &a_copy)
{
    a_copy = s_next_token.fetch_add(1);
    return status_done();
}

status posix_impersonate(std::intptr_t)
{
    return status_done();
}

status posix_revert()
{
    return status_done();
}

void posix_close_copy(std::intptr_t)
{
}

} // namespace

impersonate_calls &impersonate_backend()
{
    static impersonate_calls s_calls = {posix_logon_user, posix_duplicate_token, posix_impersonate, posix_revert,
                                        posix_close_copy};
    return s_calls;
}

} // namespace platform
} // namespace ordwel
