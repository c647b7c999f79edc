// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_PLATFORM_PROCESS_H
#define ORDWEL_SRC_PLATFORM_PROCESS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/error.h"

// The child-process calls of process. Each backend makes the system call and hands back plain
// values; the order of the steps, the texts and the bookkeeping are portable.

namespace ordwel {
namespace platform {

// A pipe end, a process or a thread: a HANDLE on Windows, a descriptor on POSIX.
using handle = std::intptr_t;
constexpr handle k_no_handle = -1;

// The process information record: the child's process and first thread, their ids, and the
// monitor's own handle on the child (a duplicate on Windows, a pidfd on POSIX, k_no_handle where
// the platform has none), so that closing the process handle never pulls it from under a wait.
struct child_record {
    handle process = k_no_handle;
    handle thread = k_no_handle;
    int pid = 0;
    int tid = 0;
    handle wait = k_no_handle;
    // How many suspensions are in force, where the platform does not count them itself.
    unsigned suspensions = 0;
};

// A pipe whose ends a child may inherit, with the default size.
status pipe_create(handle &a_read, handle &a_write);
// Takes the inherit flag off one end.
status handle_set_uninheritable(handle a_handle);
// Closes a handle that is not k_no_handle and sets it to k_no_handle.
void handle_close(handle &a_handle);

// Starts the program named by the quoted head of the command line. a_environment is a block of
// NUL-ended entries or null for the parent's; a_directory null for the parent's. With a_inherit
// the child's standard input is a_stdin and its output and error a_stdout.
// a_args is the command line split as a C runtime splits it, for a platform that starts programs
// with an argument vector.
status child_create(char const *a_command_line, std::vector<std::string> const &a_args, char const *a_environment,
                    char const *a_directory, bool a_inherit, handle a_stdin, handle a_stdout, child_record &a_child);

enum class wait_result { ended, timeout, other };
// Waits for the child's end. With a_output k_no_handle without limit; otherwise it comes back
// soon, with timeout, when output may be waiting in that pipe.
status child_wait(child_record const &a_child, handle a_output, wait_result &a_result);

// Writes all of a text to a pipe; fails when the reader has gone or the write fails. Never ends
// the process on a broken pipe.
status pipe_write(handle a_handle, char const *a_data, std::size_t a_size);
// How many bytes wait in a pipe, without blocking.
status pipe_available(handle a_handle, unsigned &a_count);
// Reads up to a_size bytes.
status pipe_read(handle a_handle, unsigned char *a_data, unsigned a_size, unsigned &a_read);

// What can be read of an ended child. The processor times are in units of 100 ns.
struct child_outcome {
    bool has_code = false;
    int code = -1;
    bool has_times = false;
    std::uint64_t user = 0;
    std::uint64_t kernel = 0;
};
// Reads exit code and times of an ended child and, where the platform keeps ended children
// around, releases it: the child's id may be reused after this.
void child_collect(child_record &a_child, child_outcome &a_outcome);

// The step of a walk over the child's threads that failed: the list of threads, or its first entry.
enum class walk_step { snapshot, first_thread };
// Suspend or resume every thread of the child; a_failed tells which step failed.
status child_suspend(child_record &a_child, walk_step &a_failed);
status child_resume(child_record &a_child, walk_step &a_failed);
// Kills the child with an exit code.
void child_kill(child_record const &a_child, unsigned a_exit_code);
// Kills the direct children of the child with exit code 1; fails when the system's list of
// processes cannot be walked.
status child_kill_children(child_record const &a_child);
// Closes the process and thread handles of the record (not the monitor's own).
void child_release(child_record &a_child);
// Closes the monitor's own handle.
void child_release_wait(child_record &a_child);

// A set of handles that several threads wait on together, where the platform has one (Linux:
// epoll; fails elsewhere). A handle added once wakes one waiting thread, once, when it becomes
// readable (a pidfd at the child's end, an event once set); a handle added for good wakes every
// waiter for as long as it stays readable.
status wait_set_create(handle &a_set);
status wait_set_add(handle a_set, handle a_item, void *a_key, bool a_once);
status wait_set_remove(handle a_set, handle a_item);
// Waits for a handle of the set and gives the key it was added with.
status wait_set_wait(handle a_set, void *&a_key);
// An event that a wait set can wait on (Linux: eventfd), set from the start or not.
status event_create(handle &a_event, bool a_set);
status event_set(handle a_event);

// Whether the library may end and join its threads while it is being unloaded (or the process
// exits). Not where unloading holds a lock that an ending thread needs, or where the other threads
// are gone by then.
bool unload_may_join_threads();

// Has a_prepare called in the forking thread before every fork of this process, a_parent after it
// in the parent and a_child after it in the new child; fails when they cannot be registered. Does
// nothing where processes do not fork.
status fork_handlers_add(void (*a_prepare)(), void (*a_parent)(), void (*a_child)());

} // namespace platform
} // namespace ordwel

#endif
