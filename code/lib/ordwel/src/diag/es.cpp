// SPDX-License-Identifier: MIT
#include <ordwel/es.h>

#include <cstdio>

#include <ordwel/string_helpers.h>

namespace ordwel {
namespace es {

namespace {

char const *message_or_na(char const *a_msg)
{
    return a_msg != nullptr ? a_msg : "n/a";
}

} // namespace

base::base(char const *a_file, uint32 a_line, char const *a_msg)
    : std::exception(), m_file(a_file), m_line(a_line), m_msg(message_or_na(a_msg))
{
}

base::base(base const &a_other) = default;
base &base::operator=(base const &a_other) = default;
base::~base() = default;

char const *base::what() const noexcept
{
    return m_msg.c_str();
}

char const *base::file() const
{
    return m_file.c_str();
}

uint32 base::line() const
{
    return m_line;
}

char const *base::msg() const
{
    return what();
}

std::string const &base::message() const noexcept
{
    return m_msg;
}

#define ORDWEL_ES_DEFINE(a_name)                                                                                       \
    a_name::a_name(char const *a_file, uint32 a_line, char const *a_msg) : base(a_file, a_line, a_msg)                 \
    {                                                                                                                  \
    }                                                                                                                  \
    a_name::a_name(a_name const &a_other) = default;                                                                   \
    a_name::~a_name() = default;                                                                                       \
    void a_name::raise(char const *a_file, uint32 a_line, char const *a_msg)                                           \
    {                                                                                                                  \
        throw a_name(a_file, a_line, a_msg);                                                                           \
    }

ORDWEL_ES_DEFINE(alloc)
ORDWEL_ES_DEFINE(arg)
ORDWEL_ES_DEFINE(inuse)
ORDWEL_ES_DEFINE(null)
ORDWEL_ES_DEFINE(oflow)
ORDWEL_ES_DEFINE(range)
ORDWEL_ES_DEFINE(uflow)
ORDWEL_ES_DEFINE(uninit)
ORDWEL_ES_DEFINE(unsupp)
ORDWEL_ES_DEFINE(uspec)
ORDWEL_ES_DEFINE(call)

#undef ORDWEL_ES_DEFINE

void call::raise(int a_error, char const *a_file, uint32 a_line, char const *a_msg)
{
    // The text is bounded by a 256-byte buffer: snprintf cuts a longer one at 255 characters.
    char l_text[256];
    int const l_count = std::snprintf(l_text, sizeof l_text, "%s (err = %d)", message_or_na(a_msg), a_error);
    if (l_count < 0) {
        l_text[0] = '\0';
    }
    throw call(a_file, a_line, l_text);
}

api_code::api_code(char const *a_file, uint32 a_line, sint64 a_code, std::string const &a_msg)
    : base(a_file, a_line, a_msg.c_str()), m_code(a_code)
{
}

api_code::api_code(api_code const &a_other) = default;
api_code::~api_code() = default;

void api_code::raise(char const *a_file, uint32 a_line, sint64 a_code, std::string const &a_msg)
{
    throw api_code(a_file, a_line, a_code, a_msg);
}

sint64 api_code::code() const
{
    return m_code;
}

file::file(char const *a_file, uint32 a_line, std::string const &a_reason, std::string const &a_operation,
           std::string const &a_subject)
    : base(a_file, a_line, ""), m_reason(a_reason), m_operation(a_operation), m_subject_file(a_subject)
{
    compose_what();
}

file::file(file const &a_other) = default;
file::~file() = default;

void file::raise(char const *a_file, uint32 a_line, std::string const &a_reason, std::string const &a_operation,
                 std::string const &a_subject)
{
    throw file(a_file, a_line, a_reason, a_operation, a_subject);
}

void file::raise(char const *a_file, uint32 a_line, std::string const &a_reason, std::string const &a_operation)
{
    throw file(a_file, a_line, a_reason, a_operation, std::string());
}

void file::compose_what()
{
    m_what =
        string_with_format("Failed to %s file %s (%s)", m_operation.c_str(), m_subject_file.c_str(), m_reason.c_str());
}

char const *file::what() const noexcept
{
    return m_what.c_str();
}

std::string const &file::get_subject_file() const
{
    return m_subject_file;
}

void file::set_subject_file(std::string const &a_subject)
{
    if (&a_subject != &m_subject_file) {
        m_subject_file = a_subject;
        compose_what();
    }
}

} // namespace es

namespace test {

fail::fail(char const *a_file, uint32 a_line, char const *a_msg) : es::base(a_file, a_line, a_msg)
{
}
fail::fail(fail const &a_other) = default;
fail::~fail() = default;

void fail::raise(char const *a_file, uint32 a_line, char const *a_msg)
{
    throw fail(a_file, a_line, a_msg);
}

char const *fail::what() const noexcept
{
    return "unit-test";
}

} // namespace test
} // namespace ordwel
