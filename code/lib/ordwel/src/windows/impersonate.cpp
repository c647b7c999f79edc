#include "platform/impersonate.h"

#include <windows.h>

namespace ordwel {
namespace platform {

namespace {

bool win_logon_user(char const *a_user, char const *a_domain, char const *a_password, std::intptr_t &a_token)
{
    HANDLE l_token = nullptr;
    if (!LogonUserA(a_user, a_domain, a_password, LOGON32_LOGON_NEW_CREDENTIALS, LOGON32_PROVIDER_DEFAULT, &l_token)) {
        return false;
    }
    a_token = reinterpret_cast<std::intptr_t>(l_token);
    return true;
}

bool win_duplicate_token(std::intptr_t a_token, std::intptr_t &a_copy)
{
    HANDLE l_copy = nullptr;
    if (!DuplicateToken(reinterpret_cast<HANDLE>(a_token), SecurityImpersonation, &l_copy)) {
        return false;
    }
    a_copy = reinterpret_cast<std::intptr_t>(l_copy);
    return true;
}

bool win_impersonate(std::intptr_t a_copy)
{
    return ImpersonateLoggedOnUser(reinterpret_cast<HANDLE>(a_copy)) != 0;
}

bool win_revert()
{
    return RevertToSelf() != 0;
}

void win_close_copy(std::intptr_t a_copy)
{
    CloseHandle(reinterpret_cast<HANDLE>(a_copy));
}

// FormatMessageA's text of GetLastError, without the line end that it carries.
std::string win_last_error()
{
    DWORD const l_error = GetLastError();
    char l_text[512] = {};
    DWORD l_size = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, l_error, 0,
                                  l_text, sizeof(l_text), nullptr);
    while (l_size > 0 && (l_text[l_size - 1] == '\n' || l_text[l_size - 1] == '\r' || l_text[l_size - 1] == ' ' ||
                          l_text[l_size - 1] == '.')) {
        --l_size;
    }
    if (l_size == 0) {
        return "error " + std::to_string(l_error);
    }
    return std::string(l_text, l_size);
}

} // namespace

impersonate_calls &impersonate_backend()
{
    static impersonate_calls s_calls = {win_logon_user, win_duplicate_token, win_impersonate,
                                        win_revert,     win_close_copy,      win_last_error};
    return s_calls;
}

} // namespace platform
} // namespace ordwel
