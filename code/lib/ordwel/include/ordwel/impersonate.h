// SPDX-License-Identifier: MIT
#ifndef ORDWEL_IMPERSONATE_H
#define ORDWEL_IMPERSONATE_H

#include <cstdint>
#include <string>

#include <ordwel/export.h>

namespace ordwel {

/// Lets the calling thread reach network shares and hosts with the credentials of another user,
/// taken from a URL's user information ("smb://domain/name:secret@host/share", or a "domain/name"
/// user). The credentials serve outbound connections only: locally the thread stays itself. One
/// object is for one thread at a time; logon and logoff come from the same thread.
class ORDWEL_API impersonate_user {
public:
    /// Nothing to log on to: logon and logoff do nothing until set_url.
    impersonate_user();
    /// Copies share the platform's logon token.
    ///@{
    impersonate_user(impersonate_user const &a_other);
    impersonate_user &operator=(impersonate_user const &a_other);
    ///@}
    /// Neither logs off nor releases the token.
    ~impersonate_user();

    /// Takes the credentials of a URL. A URL with a user needs a host ("host is empty, unable to
    /// login") and a password ("password is empty, unable to login"), else es::arg; the fields are
    /// filled all the same. A URL without a user needs no logon, unless an earlier one did.
    void set_url(std::string const &a_url);
    /// Starts acting as the user on the calling thread; the first call logs on, later ones reuse
    /// the token. Raises es::call with the host and the platform's reason.
    void logon();
    /// Goes back to the thread's own identity; the token stays for the next logon.
    void logoff();

private:
    void parse_url(std::string const &a_url);

    std::string m_url;
    std::string m_host;
    std::string m_user;
    std::string m_password;
    std::string m_domain;
    bool m_logon_required;
    std::intptr_t m_token;
};

/// Logs on for a scope: logon in the constructor (a failure leaves no guard), logoff at its end.
class ORDWEL_API scoped_impersonate_user {
public:
    /// Calls logon on a_user, which must outlive the guard.
    explicit scoped_impersonate_user(impersonate_user &a_user);
    /// Calls logoff. A failure raises, unless an exception is already on its way through the
    /// calling thread: then it is dropped.
    ~scoped_impersonate_user() noexcept(false);

    scoped_impersonate_user(scoped_impersonate_user const &) = delete;
    scoped_impersonate_user &operator=(scoped_impersonate_user const &) = delete;

private:
    impersonate_user *m_user;
};

/// The outbound credentials that the calling thread acts with, for the library's network users.
struct impersonate_credentials {
    std::string url;      ///< The URL the credentials were taken from.
    std::string host;     ///< The host to connect to.
    std::string user;     ///< The user's name, without the domain.
    std::string domain;   ///< The user's domain; empty when the URL names none.
    std::string password; ///< The user's password.
    /// The logon token that the impersonation was copied from: one per logon, shared by copies.
    std::intptr_t token = 0;
};

/// true, with a_out filled, while the calling thread impersonates a user; false otherwise.
ORDWEL_API bool impersonate_thread_credentials(impersonate_credentials &a_out);

} // namespace ordwel

#endif
