// SPDX-License-Identifier: MIT
#ifndef ORDWEL_ES_H
#define ORDWEL_ES_H

#include <exception>
#include <string>

#include <ordwel/export.h>
#include <ordwel/types.h>

/// The library's public interface: every public name lies in this namespace or one nested in it.
namespace ordwel {

/// The file name part of a path given by __FILE__, so that messages carry "mutex.cpp" and not the
/// build machine's directories. Both '/' and '\\' separate; a path without one comes back whole.
[[nodiscard]] constexpr char const *source_basename(char const *a_path) noexcept
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

/// The source location of a raise site, as the two arguments file and line:
/// es::arg::raise(ORDWEL_HERE, "bad input"), es::call::raise(errno, ORDWEL_HERE, "open failed").
#define ORDWEL_HERE ::ordwel::source_basename(__FILE__), static_cast<::ordwel::uint32>(__LINE__)

namespace ordwel {
/// The library's exceptions: es::base and the classes derived from it, one per kind of failure.
namespace es {

/// The root of every exception the library throws. It owns copies of the source file and message,
/// so the texts given to raise may die with the raiser's frame. It is never raised as such: each
/// derived class has a static raise that builds one and throws it by value.
class ORDWEL_API base : public std::exception {
public:
    /// Copies the source file, line and message; a null message is kept as "n/a".
    base(char const *a_file, uint32 a_line, char const *a_msg);
    /// A deep copy of both texts.
    base(base const &a_other);
    /// Takes over copies of the other's file, line and message.
    base &operator=(base const &a_other);
    ~base() override;

    /// The message; derived classes may compose a text of their own.
    [[nodiscard]] char const *what() const noexcept override;
    /// The base name of the source file that raised (as ORDWEL_HERE gives it).
    [[nodiscard]] virtual char const *file() const;
    /// The source line that raised.
    [[nodiscard]] virtual uint32 line() const;
    /// Whatever the object's own what() gives.
    [[nodiscard]] virtual char const *msg() const;

    /// The message as it was raised ("n/a" for a null one), whatever what() makes of it. A test
    /// runner reads a test::fail's text here, since its what() is fixed.
    [[nodiscard]] std::string const &message() const noexcept;

protected:
    std::string m_file; ///< The source file's base name, owned.
    uint32 m_line;      ///< The source line.
    std::string m_msg;  ///< The message as raised, owned ("n/a" for a null one).
};

// The classes that add nothing but their type. Each is thrown only through its static raise.
#define ORDWEL_ES_DECLARE(a_name)                                                                                      \
    class ORDWEL_API a_name : public base {                                                                            \
    public:                                                                                                            \
        /** Builds an a_name of the source location and message and throws it; a null message reads "n/a". */          \
        [[noreturn]] static void raise(char const *a_file, uint32 a_line, char const *a_msg);                          \
        /** A deep copy of the texts. */                                                                               \
        a_name(a_name const &a_other);                                                                                 \
        ~a_name() override;                                                                                            \
                                                                                                                       \
    protected:                                                                                                         \
        /** Protected: raise is the way to get one. */                                                                 \
        a_name(char const *a_file, uint32 a_line, char const *a_msg);                                                  \
    }

/// Memory or a system buffer was not to be had.
ORDWEL_ES_DECLARE(alloc);
/// A bad argument or bad input data.
ORDWEL_ES_DECLARE(arg);
/// A resource is in use.
ORDWEL_ES_DECLARE(inuse);
/// A null where none may be.
ORDWEL_ES_DECLARE(null);
/// An overflow.
ORDWEL_ES_DECLARE(oflow);
/// A position outside its bounds.
ORDWEL_ES_DECLARE(range);
/// An underflow: fewer data than demanded (a stream that ended early).
ORDWEL_ES_DECLARE(uflow);
/// A use before initialisation.
ORDWEL_ES_DECLARE(uninit);
/// An operation that cannot be done in this state or in this build.
ORDWEL_ES_DECLARE(unsupp);
/// An unspecified failure.
ORDWEL_ES_DECLARE(uspec);

#undef ORDWEL_ES_DECLARE

/// A failure of a call into the operating system or the thread library.
class ORDWEL_API call : public base {
public:
    /// Builds a call of the source location and message and throws it.
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, char const *a_msg);
    /// Raises with the text "<msg> (err = <a_error>)", bounded to 255 characters.
    [[noreturn]] static void raise(int a_error, char const *a_file, uint32 a_line, char const *a_msg);
    /// A deep copy of the texts.
    call(call const &a_other);
    ~call() override;

protected:
    /// Protected: raise is the way to get one.
    call(char const *a_file, uint32 a_line, char const *a_msg);
};

/// A failure that carries a caller-defined numeric code. The library itself never raises it.
class ORDWEL_API api_code : public base {
public:
    /// Builds an api_code of the source location, code and message and throws it.
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, sint64 a_code, std::string const &a_msg);
    /// A deep copy of the texts, and the code.
    api_code(api_code const &a_other);
    ~api_code() override;

    /// The code given to raise.
    [[nodiscard]] virtual sint64 code() const;

protected:
    /// Protected: raise is the way to get one.
    api_code(char const *a_file, uint32 a_line, sint64 a_code, std::string const &a_msg);

    sint64 m_code; ///< The caller's code.
};

/// A failed file operation. what() gives "Failed to <operation> file <subject> (<reason>)". The text
/// is composed by the constructor and again by set_subject_file, so a mended subject shows in the
/// next what(), and what() itself only reads: its pointer holds until the subject changes, and
/// threads may call it on one object at once. The base message is empty.
///
/// The inherited accessor file() is hidden by this class's own name: reach it through es::base
/// (static_cast<es::base const &>(e).file()).
class ORDWEL_API file : public base {
public:
    /// Throws a file of the source location, the reason (why it failed), the operation (the verb:
    /// "open", "read", ...) and the subject (the file's path).
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, std::string const &a_reason,
                                   std::string const &a_operation, std::string const &a_subject);
    /// The same with an empty subject, for a raiser that does not know the path.
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, std::string const &a_reason,
                                   std::string const &a_operation);
    /// Copies the texts and composes what().
    file(char const *a_file, uint32 a_line, std::string const &a_reason, std::string const &a_operation,
         std::string const &a_subject);
    /// A deep copy of every text.
    file(file const &a_other);
    ~file() override;

    /// "Failed to <operation> file <subject> (<reason>)".
    [[nodiscard]] char const *what() const noexcept override;
    /// The path of the file the operation failed on; empty when the raiser did not know it.
    [[nodiscard]] std::string const &get_subject_file() const;
    /// Replaces the path and composes what() anew.
    void set_subject_file(std::string const &a_subject);

protected:
    std::string m_reason;       ///< Why the operation failed.
    std::string m_operation;    ///< The verb of the operation.
    std::string m_subject_file; ///< The file's path, or empty.
    /// The text that what() gives, composed from the three above.
    std::string m_what;

    /// Composes m_what anew; a derived class that changes m_reason or m_operation calls it.
    void compose_what();
};

} // namespace es

/// The self-test registry (see <ordwel/test.h>) and the exception of a failed check.
namespace test {

/// A failed self-test check: what() is always "unit-test"; the message stands in msg's place of
/// the base (m_msg, read through message()), and file() and line() locate the failing check.
class ORDWEL_API fail : public es::base {
public:
    /// Builds a fail of the location and message of the check and throws it.
    [[noreturn]] static void raise(char const *a_file, uint32 a_line, char const *a_msg);
    /// A deep copy of the texts.
    fail(fail const &a_other);
    ~fail() override;

    /// Always "unit-test".
    [[nodiscard]] char const *what() const noexcept override;

protected:
    /// Protected: raise is the way to get one.
    fail(char const *a_file, uint32 a_line, char const *a_msg);
};

} // namespace test
} // namespace ordwel

#endif
