// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_PLATFORM_IMPERSONATE_H
#define ORDWEL_SRC_PLATFORM_IMPERSONATE_H

#include <cstdint>
#include <string>

#include "platform/error.h"

// The logon calls of impersonate_user. The backend fills the table with the platform's own
// calls; the order of the steps and the failure texts are portable. The table is reachable from
// the library's tests (through the static ordwel_private, not the shared library), which put failing calls in it to see
// the texts: nothing else changes it.

namespace ordwel {
namespace platform {

struct impersonate_calls {
    // LogonUserA with LOGON32_LOGON_NEW_CREDENTIALS and LOGON32_PROVIDER_DEFAULT.
    status (*logon_user)(char const *a_user, char const *a_domain, char const *a_password, std::intptr_t &a_token);
    // DuplicateToken at SecurityImpersonation.
    status (*duplicate_token)(std::intptr_t a_token, std::intptr_t &a_copy);
    // ImpersonateLoggedOnUser on the calling thread.
    status (*impersonate)(std::intptr_t a_copy);
    // RevertToSelf on the calling thread.
    status (*revert)();
    // Gives back a copy that duplicate_token made.
    void (*close_copy)(std::intptr_t a_copy);
};

impersonate_calls &impersonate_backend();

} // namespace platform
} // namespace ordwel

#endif
