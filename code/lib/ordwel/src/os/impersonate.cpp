// SPDX-License-Identifier: MIT
#include <ordwel/impersonate.h>

#include <exception>
#include <string>
#include <vector>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>
#include <ordwel/strutil.h>
#include <ordwel/url.h>

#include "platform/impersonate.h"

namespace ordwel {

namespace {

// The credentials that the calling thread acts with, while it impersonates.
struct thread_identity {
    bool active = false;
    impersonate_credentials credentials;
};

thread_identity &this_thread_identity()
{
    thread_local thread_identity s_identity;
    return s_identity;
}

// The platform's text of a failed logon step, without the line end and full stop that it may
// carry; "error <number>" where the platform has none.
std::string reason_with_status(platform::status const &a_status)
{
    std::string l_text = platform::status_text(a_status);
    while (!l_text.empty() &&
           (l_text.back() == '\n' || l_text.back() == '\r' || l_text.back() == ' ' || l_text.back() == '.')) {
        l_text.pop_back();
    }
    return l_text.empty() ? "error " + std::to_string(a_status.m_code) : l_text;
}

} // namespace

impersonate_user::impersonate_user() : m_logon_required(false), m_token(0)
{
}

impersonate_user::impersonate_user(impersonate_user const &a_other) = default;

impersonate_user &impersonate_user::operator=(impersonate_user const &a_other) = default;

impersonate_user::~impersonate_user() = default;

void impersonate_user::set_url(std::string const &a_url)
{
    parse_url(a_url);
}

void impersonate_user::parse_url(std::string const &a_url)
{
    m_url = url_new_params(a_url, "", true);
    m_host = string_to_uppercase(url_host(a_url));
    m_user = url_user(a_url, true);
    m_password = url_password(a_url, true);
    m_domain = url_domain(a_url, true);
    if (m_domain.empty()) {
        std::vector<std::string> l_tokens;
        strutil::tokenize_string(m_user, '/', l_tokens, true);
        if (l_tokens.size() > 1) {
            m_domain = l_tokens[0];
            m_user = l_tokens[1];
        }
    }
    if (!m_user.empty()) {
        m_logon_required = true;
        if (m_host.empty()) {
            es::arg::raise(ORDWEL_HERE, "host is empty, unable to login");
        }
        if (m_password.empty()) {
            es::arg::raise(ORDWEL_HERE, "password is empty, unable to login");
        }
    }
    if (m_domain.empty()) {
        m_domain = m_host;
    }
}

void impersonate_user::logon()
{
    if (!m_logon_required) {
        return;
    }
    platform::impersonate_calls const &l_calls = platform::impersonate_backend();
    if (m_token == 0) {
        std::intptr_t l_token = 0;
        platform::status const l_status =
            l_calls.logon_user(m_user.c_str(), m_domain.c_str(), m_password.c_str(), l_token);
        if (l_status.failed()) {
            es::call::raise(ORDWEL_HERE, string_with_format("unable to logon to host: '%s'. logon error: '%s'",
                                                            m_host.c_str(), reason_with_status(l_status).c_str())
                                             .c_str());
        }
        m_token = l_token;
    }
    std::intptr_t l_copy = 0;
    platform::status const l_duplicated = l_calls.duplicate_token(m_token, l_copy);
    if (l_duplicated.failed()) {
        es::call::raise(ORDWEL_HERE, string_with_format("unable to logon to host: '%s'. duplication error: '%s'",
                                                        m_host.c_str(), reason_with_status(l_duplicated).c_str())
                                         .c_str());
    }
    platform::status const l_impersonated = l_calls.impersonate(l_copy);
    // The impersonation holds what it needs of the copy; the copy itself goes at once.
    l_calls.close_copy(l_copy);
    if (l_impersonated.failed()) {
        es::call::raise(ORDWEL_HERE, string_with_format("unable to logon to host: '%s'. update credentials error: '%s'",
                                                        m_host.c_str(), reason_with_status(l_impersonated).c_str())
                                         .c_str());
    }
    thread_identity &l_identity = this_thread_identity();
    l_identity.active = true;
    l_identity.credentials.url = m_url;
    l_identity.credentials.host = m_host;
    l_identity.credentials.user = m_user;
    l_identity.credentials.domain = m_domain;
    l_identity.credentials.password = m_password;
    l_identity.credentials.token = m_token;
}

void impersonate_user::logoff()
{
    if (!m_logon_required) {
        return;
    }
    platform::impersonate_calls const &l_calls = platform::impersonate_backend();
    platform::status const l_status = l_calls.revert();
    if (l_status.failed()) {
        es::call::raise(ORDWEL_HERE, string_with_format("unable to logoff share: '%s'. revert credentials error: '%s'",
                                                        m_host.c_str(), reason_with_status(l_status).c_str())
                                         .c_str());
    }
    this_thread_identity() = thread_identity();
}

scoped_impersonate_user::scoped_impersonate_user(impersonate_user &a_user) : m_user(&a_user)
{
    m_user->logon();
}

scoped_impersonate_user::~scoped_impersonate_user() noexcept(false)
{
    // A failed logoff raises, unless an exception already passes through: then it is dropped,
    // so that the process is not terminated.
    if (std::uncaught_exceptions() > 0) {
        try {
            m_user->logoff();
        } catch (es::base const &) {
        }
        return;
    }
    m_user->logoff();
}

bool impersonate_thread_credentials(impersonate_credentials &a_out)
{
    thread_identity const &l_identity = this_thread_identity();
    if (!l_identity.active) {
        return false;
    }
    a_out = l_identity.credentials;
    return true;
}

} // namespace ordwel
