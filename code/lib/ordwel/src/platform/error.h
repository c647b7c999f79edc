// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_PLATFORM_ERROR_H
#define ORDWEL_SRC_PLATFORM_ERROR_H

#include <string>

// How every fallible call of the platform interface reports: it returns a status, and hands its
// values back through reference arguments. A failed status carries the platform's error number
// (GetLastError on Windows, errno on POSIX); the few Windows calls that go through the C runtime
// carry its errno instead, marked as such. The portable code turns a status into its texts.

namespace ordwel {
namespace platform {

struct status {
    bool m_failed = false;
    unsigned long m_code = 0;
    // m_code is a C runtime errno, not the system's error number.
    bool m_runtime = false;

    bool failed() const { return m_failed; }
};

// A call that worked, and one that failed with a system or C runtime error number.
inline status status_done()
{
    return status{};
}
inline status status_failed(unsigned long a_code)
{
    return status{true, a_code, false};
}
inline status status_failed_runtime(int a_errno)
{
    return status{true, static_cast<unsigned long>(a_errno), true};
}

// The calling thread's last error number, and the platform's text for it (empty when it has
// none).
unsigned long last_error();
std::string error_text(unsigned long a_error);
// The C runtime's text for an errno value.
std::string errno_text(int a_errno);

// A failed status with the calling thread's last error number.
inline status last_failure()
{
    return status_failed(last_error());
}

// The platform's text for a failed status, as the platform words it (empty when it has none).
inline std::string status_text(status const &a_status)
{
    return a_status.m_runtime ? errno_text(static_cast<int>(a_status.m_code)) : error_text(a_status.m_code);
}

} // namespace platform
} // namespace ordwel

#endif
