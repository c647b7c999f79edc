// SPDX-License-Identifier: MIT
#include "platform/impersonate.h"

#include <windows.h>

namespace ordwel {
namespace platform {

namespace {

status win_logon_user(char const *a_user, char const *a_domain, char const *a_password, std::intptr_t &a_token)
{
    HANDLE l_token = nullptr;
    if (!LogonUserA(a_user, a_domain, a_password, LOGON32_LOGON_NEW_CREDENTIALS, LOGON32_PROVIDER_DEFAULT, &l_token)) {
        return last_failure();
    }
    a_token = reinterpret_cast<std::intptr_t>(l_token);
    return status_done();
}

status win_duplicate_token(std::intptr_t a_token, std::intptr_t &a_copy)
{
    HANDLE l_copy = nullptr;
    if (!DuplicateToken(reinterpret_cast<HANDLE>(a_token), SecurityImpersonation, &l_copy)) {
        return last_failure();
    }
    a_copy = reinterpret_cast<std::intptr_t>(l_copy);
    return status_done();
}

status win_impersonate(std::intptr_t a_copy)
{
    return ImpersonateLoggedOnUser(reinterpret_cast<HANDLE>(a_copy)) != 0 ? status_done() : last_failure();
}

status win_revert()
{
    return RevertToSelf() != 0 ? status_done() : last_failure();
}

void win_close_copy(std::intptr_t a_copy)
{
    CloseHandle(reinterpret_cast<HANDLE>(a_copy));
}

} // namespace

impersonate_calls &impersonate_backend()
{
    static impersonate_calls s_calls = {win_logon_user, win_duplicate_token, win_impersonate, win_revert,
                                        win_close_copy};
    return s_calls;
}

} // namespace platform
} // namespace ordwel
