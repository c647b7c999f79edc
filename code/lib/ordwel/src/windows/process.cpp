// SPDX-License-Identifier: MIT
#include "platform/process.h"

#include <string>
#include <vector>

#include <windows.h>

#include <tlhelp32.h>

namespace ordwel {
namespace platform {

namespace {

HANDLE native(handle a_handle)
{
    return reinterpret_cast<HANDLE>(a_handle);
}

handle wrap(HANDLE a_handle)
{
    return reinterpret_cast<handle>(a_handle);
}

std::uint64_t filetime_count(FILETIME const &a_time)
{
    return (static_cast<std::uint64_t>(a_time.dwHighDateTime) << 32) | a_time.dwLowDateTime;
}

template <class T_step> status each_thread_of(child_record const &a_child, walk_step &a_failed, T_step a_step)
{
    HANDLE const l_snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (l_snapshot == INVALID_HANDLE_VALUE) {
        a_failed = walk_step::snapshot;
        return last_failure();
    }
    THREADENTRY32 l_entry{};
    l_entry.dwSize = sizeof(l_entry);
    if (!Thread32First(l_snapshot, &l_entry)) {
        status const l_failure = last_failure();
        CloseHandle(l_snapshot);
        a_failed = walk_step::first_thread;
        return l_failure;
    }
    do {
        if (l_entry.th32OwnerProcessID == static_cast<DWORD>(a_child.pid)) {
            HANDLE const l_thread = OpenThread(THREAD_SUSPEND_RESUME, FALSE, l_entry.th32ThreadID);
            if (l_thread != nullptr) {
                a_step(l_thread);
                CloseHandle(l_thread);
            }
        }
        l_entry.dwSize = sizeof(l_entry);
    } while (Thread32Next(l_snapshot, &l_entry));
    CloseHandle(l_snapshot);
    return status_done();
}

} // namespace

status pipe_create(handle &a_read, handle &a_write)
{
    SECURITY_ATTRIBUTES l_attributes{};
    l_attributes.nLength = sizeof(l_attributes);
    l_attributes.bInheritHandle = TRUE;
    HANDLE l_read = nullptr;
    HANDLE l_write = nullptr;
    if (!CreatePipe(&l_read, &l_write, &l_attributes, 0)) {
        return last_failure();
    }
    a_read = wrap(l_read);
    a_write = wrap(l_write);
    return status_done();
}

status handle_set_uninheritable(handle a_handle)
{
    return SetHandleInformation(native(a_handle), HANDLE_FLAG_INHERIT, 0) != 0 ? status_done() : last_failure();
}

void handle_close(handle &a_handle)
{
    if (a_handle != k_no_handle) {
        CloseHandle(native(a_handle));
        a_handle = k_no_handle;
    }
}

status child_create(char const *a_command_line, std::vector<std::string> const &, char const *a_environment,
                    char const *a_directory, bool a_inherit, handle a_stdin, handle a_stdout, child_record &a_child)
{
    STARTUPINFOA l_startup{};
    l_startup.cb = sizeof(l_startup);
    if (a_inherit) {
        l_startup.hStdOutput = native(a_stdout);
        l_startup.hStdError = native(a_stdout);
        l_startup.hStdInput = native(a_stdin);
        l_startup.dwFlags |= STARTF_USESTDHANDLES;
    }
    // CreateProcessA may write into the command line.
    std::vector<char> l_line(a_command_line, a_command_line + std::char_traits<char>::length(a_command_line) + 1);
    PROCESS_INFORMATION l_info{};
    if (!CreateProcessA(nullptr, l_line.data(), nullptr, nullptr, a_inherit ? TRUE : FALSE, 0,
                        const_cast<char *>(a_environment), a_directory, &l_startup, &l_info)) {
        return last_failure();
    }
    a_child.process = wrap(l_info.hProcess);
    a_child.thread = wrap(l_info.hThread);
    a_child.pid = static_cast<int>(l_info.dwProcessId);
    a_child.tid = static_cast<int>(l_info.dwThreadId);
    HANDLE l_wait = nullptr;
    if (DuplicateHandle(GetCurrentProcess(), l_info.hProcess, GetCurrentProcess(), &l_wait, 0, FALSE,
                        DUPLICATE_SAME_ACCESS)) {
        a_child.wait = wrap(l_wait);
    }
    return status_done();
}

status child_wait(child_record const &a_child, handle a_output, wait_result &a_result)
{
    HANDLE const l_process = native(a_child.wait != k_no_handle ? a_child.wait : a_child.process);
    DWORD l_result = WaitForSingleObject(l_process, a_output != k_no_handle ? 0 : INFINITE);
    if (l_result == WAIT_TIMEOUT && a_output != k_no_handle) {
        // The pipe cannot be waited on; while it is empty, the wait for the child lasts a
        // millisecond instead of spinning flat out.
        DWORD l_available = 0;
        if (PeekNamedPipe(native(a_output), nullptr, 0, nullptr, &l_available, nullptr) && l_available == 0) {
            l_result = WaitForSingleObject(l_process, 1);
        }
    }
    switch (l_result) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED:
        a_result = wait_result::ended;
        break;
    case WAIT_TIMEOUT:
        a_result = wait_result::timeout;
        break;
    case WAIT_FAILED:
        return last_failure();
    default:
        a_result = wait_result::other;
        break;
    }
    return status_done();
}

status pipe_write(handle a_handle, char const *a_data, std::size_t a_size)
{
    while (a_size > 0) {
        DWORD const l_chunk = a_size > 0x40000000u ? 0x40000000u : static_cast<DWORD>(a_size);
        DWORD l_written = 0;
        if (!WriteFile(native(a_handle), a_data, l_chunk, &l_written, nullptr)) {
            return last_failure();
        }
        a_data += l_written;
        a_size -= l_written;
    }
    return status_done();
}

status pipe_available(handle a_handle, unsigned &a_count)
{
    DWORD l_available = 0;
    if (!PeekNamedPipe(native(a_handle), nullptr, 0, nullptr, &l_available, nullptr)) {
        return last_failure();
    }
    a_count = static_cast<unsigned>(l_available);
    return status_done();
}

status pipe_read(handle a_handle, unsigned char *a_data, unsigned a_size, unsigned &a_read)
{
    DWORD l_read = 0;
    if (!ReadFile(native(a_handle), a_data, a_size, &l_read, nullptr)) {
        return last_failure();
    }
    a_read = static_cast<unsigned>(l_read);
    return status_done();
}

void child_collect(child_record &a_child, child_outcome &a_outcome)
{
    HANDLE const l_process = native(a_child.wait);
    if (a_child.wait == k_no_handle) {
        return;
    }
    DWORD l_code = 0;
    if (GetExitCodeProcess(l_process, &l_code)) {
        a_outcome.has_code = true;
        a_outcome.code = static_cast<int>(l_code);
    }
    FILETIME l_creation{};
    FILETIME l_exit{};
    FILETIME l_kernel{};
    FILETIME l_user{};
    if (GetProcessTimes(l_process, &l_creation, &l_exit, &l_kernel, &l_user)) {
        a_outcome.has_times = true;
        a_outcome.user = filetime_count(l_user);
        a_outcome.kernel = filetime_count(l_kernel);
    }
}

status child_suspend(child_record &a_child, walk_step &a_failed)
{
    return each_thread_of(a_child, a_failed, [](HANDLE a_thread) { SuspendThread(a_thread); });
}

status child_resume(child_record &a_child, walk_step &a_failed)
{
    return each_thread_of(a_child, a_failed, [](HANDLE a_thread) { ResumeThread(a_thread); });
}

void child_kill(child_record const &a_child, unsigned a_exit_code)
{
    if (a_child.process != k_no_handle) {
        TerminateProcess(native(a_child.process), a_exit_code);
    }
}

status child_kill_children(child_record const &a_child)
{
    HANDLE const l_snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (l_snapshot == INVALID_HANDLE_VALUE) {
        return last_failure();
    }
    PROCESSENTRY32 l_entry{};
    l_entry.dwSize = sizeof(l_entry);
    if (!Process32First(l_snapshot, &l_entry)) {
        CloseHandle(l_snapshot);
        return last_failure();
    }
    do {
        if (l_entry.th32ParentProcessID == static_cast<DWORD>(a_child.pid)) {
            HANDLE const l_process = OpenProcess(PROCESS_ALL_ACCESS, FALSE, l_entry.th32ProcessID);
            if (l_process != nullptr) {
                TerminateProcess(l_process, 1);
                CloseHandle(l_process);
            }
        }
        l_entry.dwSize = sizeof(l_entry);
    } while (Process32Next(l_snapshot, &l_entry));
    CloseHandle(l_snapshot);
    return status_done();
}

void child_release(child_record &a_child)
{
    handle_close(a_child.process);
    handle_close(a_child.thread);
}

void child_release_wait(child_record &a_child)
{
    handle_close(a_child.wait);
}

// Threads wait on one handle each here: the pool of monitor threads hands them their work.
status wait_set_create(handle &)
{
    return status_failed(ERROR_NOT_SUPPORTED);
}

status wait_set_add(handle, handle, void *, bool)
{
    return status_failed(ERROR_NOT_SUPPORTED);
}

status wait_set_remove(handle, handle)
{
    return status_failed(ERROR_NOT_SUPPORTED);
}

status wait_set_wait(handle, void *&)
{
    return status_failed(ERROR_NOT_SUPPORTED);
}

status event_create(handle &, bool)
{
    return status_failed(ERROR_NOT_SUPPORTED);
}

status event_set(handle)
{
    return status_failed(ERROR_NOT_SUPPORTED);
}

// A DLL's static destructors run in DllMain under the loader lock, which a thread needs to end;
// at process exit the other threads have been terminated before them.
bool unload_may_join_threads()
{
    return false;
}

status fork_handlers_add(void (*)(), void (*)(), void (*)())
{
    return status_done();
}

} // namespace platform
} // namespace ordwel
