#ifndef ORDWEL_ES_H
#define ORDWEL_ES_H

#include <exception>
#include <string>

#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {

// The file name part of a path given by __FILE__, so that messages carry "mutex.cpp" and not the
// build machine's directories.
constexpr char const *source_basename(char const *a_path) noexcept
{
    char const *l_name = a_path;
    for (char const *l_iter = a_path; *l_iter != '\0'; ++l_iter) {
        if (*l_iter == '/' || *l_iter == '\\') {
            l_name = l_iter + 1;
        }
    }
    return l_name;
}

} // namespace ordwel

// The source location of a raise site: es::arg::raise(ORDWEL_HERE, "bad input"),
// es::call::raise(errno, ORDWEL_HERE, "open failed").
#define ORDWEL_HERE ::ordwel::source_basename(__FILE__), static_cast<::ordwel::uint32>(__LINE__)

namespace ordwel {
namespace es {

// The root of every exception the library throws. It owns copies of the source file and message,
// so the texts given to raise may die with the raiser's frame.
class ORDWEL_API base : public std::exception {
public:
    base(char const *a_file, uint32 a_line, char const *a_msg);
    base(base const &a_other);
    base &operator=(base const &a_other);
    ~base() override;

    char const *what() const noexcept override;
    virtual char const *file() const;
    virtual uint32 line() const;
    // Whatever the object's own what() gives.
    virtual char const *msg() const;

    // The message as it was raised ("n/a" for a null one), whatever what() makes of it. A test
    // runner reads a test::fail's text here, since its what() is fixed.
    std::string const &message() const noexcept;

protected:
    std::string m_file;
    uint32 m_line;
    std::string m_msg;
};

// The classes that add nothing but their type. Each is thrown only through its static raise.
#define ORDWEL_ES_DECLARE(a_name)                                                                                      \
    class ORDWEL_API a_name : public base {                                                                            \
    public:                                                                                                            \
        [[noreturn]] static void raise(char const *a_file, uint32 a_line, char const *a_msg);                          \
        a_name(a_name const &a_other);                                                                                 \
        ~a_name() override;                                                                                            \
                                                                                                                       \
    protected:                                                                                                         \
        a_name(char const *a_file, uint32 a_line, char const *a_msg);                                                  \
    }

ORDWEL_ES_DECLARE(alloc);
ORDWEL_ES_DECLARE(arg);
ORDWEL_ES_DECLARE(inuse);
ORDWEL_ES_DECLARE(null);
ORDWEL_ES_DECLARE(oflow);
ORDWEL_ES_DECLARE(range);
ORDWEL_ES_DECLARE(uflow);
ORDWEL_ES_DECLARE(uninit);
ORDWEL_ES_DECLARE(unsupp);
ORDWEL_ES_DECLARE(uspec);

#undef ORDWEL_ES_DECLARE

// A failure of a call into the operating system or the thread library.
class ORDWEL_API call : public base {
public:
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, char const *a_msg);
    // Raises with the text "<msg> (err = <a_error>)", bounded to 255 characters.
    [[noreturn]] static void raise(int a_error, char const *a_file, uint32 a_line, char const *a_msg);
    call(call const &a_other);
    ~call() override;

protected:
    call(char const *a_file, uint32 a_line, char const *a_msg);
};

// A failure that carries a caller-defined numeric code.
class ORDWEL_API api_code : public base {
public:
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, sint64 a_code, std::string const &a_msg);
    api_code(api_code const &a_other);
    ~api_code() override;

    virtual sint64 code() const;

protected:
    api_code(char const *a_file, uint32 a_line, sint64 a_code, std::string const &a_msg);

    sint64 m_code;
};

// A failed file operation. what() gives "Failed to <operation> file <subject> (<reason>)". The text
// is composed by the constructor and again by set_subject_file, so a mended subject shows in the
// next what(), and what() itself only reads: its pointer holds until the subject changes, and
// threads may call it on one object at once.
//
// The inherited accessor file() is hidden by this class's own name: reach it through es::base
// (static_cast<es::base const &>(e).file()).
class ORDWEL_API file : public base {
public:
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, std::string const &a_reason,
                                   std::string const &a_operation, std::string const &a_subject);
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, std::string const &a_reason,
                                   std::string const &a_operation);
    file(char const *a_file, uint32 a_line, std::string const &a_reason, std::string const &a_operation,
         std::string const &a_subject);
    file(file const &a_other);
    ~file() override;

    char const *what() const noexcept override;
    std::string const &get_subject_file() const;
    void set_subject_file(std::string const &a_subject);

protected:
    std::string m_reason;
    std::string m_operation;
    std::string m_subject_file;
    // The text that what() gives, composed from the three above.
    std::string m_what;

    // Composes m_what anew; a derived class that changes m_reason or m_operation calls it.
    void compose_what();
};

} // namespace es

namespace test {

// A failed self-test check: what() is always "unit-test"; the message stands in msg's place of
// the base (m_msg), and file() and line() locate the failing check.
class ORDWEL_API fail : public es::base {
public:
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, char const *a_msg);
    fail(fail const &a_other);
    ~fail() override;

    char const *what() const noexcept override;

protected:
    fail(char const *a_file, uint32 a_line, char const *a_msg);
};

} // namespace test
} // namespace ordwel

#endif
