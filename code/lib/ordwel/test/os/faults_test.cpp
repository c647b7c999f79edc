// SPDX-License-Identifier: MIT
// Faults the library must survive: failures after a file is open, large input through a child,
// a full disk. Most need Linux (its /proc, its mounts); elsewhere they skip and say why.
#include <ordwel/file.h>

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include <ordwel/buffer.h>
#include <ordwel/es.h>

#include "support/test_support.h"

#if defined(__linux__)
#include <chrono>
#include <cstdlib>
#include <thread>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <dirent.h>
#include <grp.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ordwel/process.h>

#include "support/process_recorder.h"
#endif

namespace {

using namespace ordwel;

#if defined(__linux__)

// Known defects that another change fixes. While a flag is true its test skips with the reason
// instead of failing; the fix sets it to false, and the test holds the fix from then on.
constexpr bool k_stdin_deadlocks_on_large_input = false;
constexpr bool k_full_disk_write_returns_normally = false;

// The descriptors this process has open, the one that reads the list among them.
int open_descriptors()
{
    DIR *const l_list = opendir("/proc/self/fd");
    if (l_list == nullptr) {
        return -1;
    }
    int l_count = 0;
    while (dirent const *const l_entry = readdir(l_list)) {
        if (l_entry->d_name[0] != '.') {
            ++l_count;
        }
    }
    closedir(l_list);
    return l_count;
}

// How a body run in a child process ended.
struct guarded_end {
    bool timed_out;
    int exit_code; // -1 when a signal ended it
};

// Exit codes of the guarded bodies beyond pass (0) and fail (1).
constexpr int k_raised_other = 2;
constexpr int k_did_not_finish = 3;
constexpr int k_cannot_set_up = 77;

// Runs a_body in a forked child and gives its result as the child's exit code. A body that has
// not ended after a_limit is killed, so that a hang fails the test instead of stopping the run.
// The child also keeps what the body changes (its mounts, its threads) away from this process.
guarded_end run_guarded(std::function<int()> const &a_body, std::chrono::seconds a_limit)
{
    pid_t const l_child = fork();
    if (l_child == 0) {
        int l_code = k_raised_other;
        try {
            l_code = a_body();
        } catch (...) {
        }
        _exit(l_code);
    }
    if (l_child < 0) {
        ADD_FAILURE() << "fork failed";
        return {false, -1};
    }
    auto const l_end = std::chrono::steady_clock::now() + a_limit;
    int l_status = 0;
    while (waitpid(l_child, &l_status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > l_end) {
            kill(l_child, SIGKILL);
            waitpid(l_child, &l_status, 0);
            return {true, -1};
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return {false, WIFEXITED(l_status) ? WEXITSTATUS(l_status) : -1};
}

// The children of this process that are running or ended and not reaped, from the parent field
// of every /proc/<pid>/stat. Unlike waitpid it reaps nothing, so the monitors keep their work.
int live_children()
{
    DIR *const l_list = opendir("/proc");
    if (l_list == nullptr) {
        return -1;
    }
    int l_count = 0;
    long const l_self = static_cast<long>(getpid());
    while (dirent const *const l_entry = readdir(l_list)) {
        if (l_entry->d_name[0] < '0' || l_entry->d_name[0] > '9') {
            continue;
        }
        std::string const l_path = std::string("/proc/") + l_entry->d_name + "/stat";
        std::FILE *const l_stat = std::fopen(l_path.c_str(), "r");
        if (l_stat == nullptr) {
            continue;
        }
        char l_text[1024] = {};
        std::size_t const l_size = std::fread(l_text, 1, sizeof l_text - 1, l_stat);
        std::fclose(l_stat);
        l_text[l_size] = '\0';
        char const *const l_close = std::strrchr(l_text, ')');
        char l_state = 0;
        long l_parent = -1;
        if (l_close != nullptr && std::sscanf(l_close + 1, " %c %ld", &l_state, &l_parent) == 2 && l_parent == l_self) {
            ++l_count;
        }
    }
    closedir(l_list);
    return l_count;
}

// Counts the calls of a status object and those that come too late: any call that starts, or is
// still running, once the owner has closed it (after terminate(true) or the destructor).
class watched_status : public process::status {
public:
    void finished(process *) override
    {
        enter();
        leave();
    }
    void stdout_data(unsigned char const *, unsigned int) override
    {
        enter();
        if (m_calls == k_trigger_call && m_on_data) {
            // The owner's step, on the monitor thread; from here on this object counts as gone.
            m_on_data();
            m_closed = true;
            return;
        }
        // Long enough for a piece to be in flight while the owner closes.
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        leave();
    }

    static constexpr int k_trigger_call = 10;
    std::function<void()> m_on_data;
    std::atomic<bool> m_closed{false};
    std::atomic<int> m_calls{0};
    std::atomic<int> m_late{0};

private:
    void enter()
    {
        ++m_calls;
        if (m_closed) {
            ++m_late;
        }
    }
    void leave()
    {
        if (m_closed) {
            ++m_late;
        }
    }
};

#endif

// The whole-file helpers open the file themselves; when they raise after the open (a directory
// opens and fails at the read, a device takes the open and refuses the write) the caller never
// sees the object, so the helper must have closed it.
TEST(faults, failing_whole_file_helpers_leave_no_descriptor_open)
{
#if defined(__linux__)
    ordwel_test::temp_dir const l_dir;
    std::string const &l_directory = l_dir.path();
    struct row {
        char const *name;
        std::function<void()> call;
    };
    row const l_rows[] = {
        {"get_file_content to a string",
         [&] {
             std::string l_text;
             fileutil::get_file_content(l_directory, l_text);
         }},
        {"get_file_content to a buffer",
         [&] {
             buffer l_bytes;
             fileutil::get_file_content(l_directory, l_bytes);
         }},
        {"get_file_bytes",
         [&] {
             buffer l_bytes;
             fileutil::get_file_bytes(l_directory, 16, l_bytes);
         }},
        {"string_with_file_content", [&] { (void)fileutil::string_with_file_content(l_directory); }},
        {"set_file_content of a string", [] { fileutil::set_file_content("/dev/full", std::string("data")); }},
        {"set_file_content of a buffer",
         [] { fileutil::set_file_content("/dev/full", ordwel_test::buffer_of("data")); }},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.name);
        int const l_before = open_descriptors();
        ASSERT_GT(l_before, 0);
        for (int l_round = 0; l_round < 50; ++l_round) {
            ASSERT_THROW(l_row.call(), es::file);
        }
        EXPECT_EQ(open_descriptors(), l_before);
    }
#else
    GTEST_SKIP() << "counts descriptors in /proc/self/fd, which only Linux has";
#endif
}

// A child that echoes 1 MiB of standard input back while both its pipes are full: the parent must
// feed and drain at once.
TEST(faults, megabyte_of_standard_input_round_trips_through_cat)
{
#if defined(__linux__)
    if (k_stdin_deadlocks_on_large_input) {
        GTEST_SKIP() << "known defect: process feeds a child's whole standard input before it reads the "
                        "child's output, so input larger than the pipes deadlocks; this test runs once that "
                        "is fixed";
    }
    guarded_end const l_end = run_guarded(
        [] {
            std::string const l_input = ordwel_test::large_input();
            ordwel_test::recorder l_collector;
            process l_cat("cat", "/bin/cat", {}, {}, "", l_input, process_capture, &l_collector);
            if (!l_collector.wait_finished()) {
                return k_did_not_finish;
            }
            return l_collector.output() == l_input && l_cat.get_status() == 0 ? 0 : 1;
        },
        std::chrono::seconds(30));
    EXPECT_FALSE(l_end.timed_out) << "the guard killed a child that hung";
    EXPECT_EQ(l_end.exit_code, 0) << "1: what came back differs from what went in; 3: cat did not finish in 20 s";
#else
    GTEST_SKIP() << "runs the child in a forked guard, which needs Linux";
#endif
}

// A write that does not fit on the disk must raise es::file, not stop short in silence. The disk
// is a 256 KiB tmpfs mounted in a mount namespace of a child process of its own.
TEST(faults, writing_past_a_full_disk_raises)
{
#if defined(__linux__)
    if (geteuid() != 0) {
        GTEST_SKIP() << "mounting a small tmpfs needs root";
    }
    guarded_end const l_end = run_guarded(
        [] {
            char l_template[] = "/tmp/ordwel_full_disk_XXXXXX";
            if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                mkdtemp(l_template) == nullptr) {
                return k_cannot_set_up;
            }
            std::string const l_mount = l_template;
            if (mount("ordwel_full_disk", l_mount.c_str(), "tmpfs", 0, "size=256k") != 0) {
                rmdir(l_mount.c_str());
                return k_cannot_set_up;
            }
            int l_code = k_raised_other;
            try {
                fileutil::set_file_content(l_mount + "/big", ordwel_test::large_input());
                l_code = 1;
            } catch (es::file const &) {
                l_code = 0;
            } catch (...) {
            }
            umount2(l_mount.c_str(), MNT_DETACH);
            rmdir(l_mount.c_str());
            return l_code;
        },
        std::chrono::seconds(30));
    ASSERT_FALSE(l_end.timed_out);
    if (l_end.exit_code == k_cannot_set_up) {
        GTEST_SKIP() << "cannot mount a tmpfs in a new mount namespace here (no CAP_SYS_ADMIN?)";
    }
    if (l_end.exit_code == 1 && k_full_disk_write_returns_normally) {
        GTEST_SKIP() << "known defect: the file backend takes a short write on a full disk as done, so "
                        "set_file_content returns normally; this test fails on it once that is fixed";
    }
    EXPECT_EQ(l_end.exit_code, 0) << "1: returned normally; 2: raised something other than es::file";
#else
    GTEST_SKIP() << "mounts a small tmpfs, which needs Linux";
#endif
}

// Once terminate(true) or the destructor has returned, the status object may go: no call of it
// may be running or start later, also when the step runs inside a call on the monitor thread.
// The child writes without end, so the pipe is full when the step comes.
TEST(faults, no_report_reaches_a_status_object_after_cancel_or_destruction)
{
#if defined(__linux__)
    enum class step { terminate_cancel, destroy };
    struct row {
        char const *name;
        step what;
        bool on_monitor;
    };
    row const l_rows[] = {
        {"terminate(true) by the owner", step::terminate_cancel, false},
        {"destructor by the owner", step::destroy, false},
        {"terminate(true) inside stdout_data", step::terminate_cancel, true},
        {"destructor inside stdout_data", step::destroy, true},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.name);
        watched_status l_status;
        // The callback may come before the constructor has returned: it waits for the owner.
        std::atomic<process *> l_child{nullptr};
        std::atomic<bool> l_ready{false};
        auto const l_step = [&] {
            while (!l_ready) {
                std::this_thread::yield();
            }
            if (l_row.what == step::terminate_cancel) {
                l_child.load()->terminate(true);
            } else {
                delete l_child.exchange(nullptr);
            }
        };
        if (l_row.on_monitor) {
            l_status.m_on_data = l_step;
        }
        l_child = new process("yes", "yes", {}, {}, "", "", process_capture, &l_status);
        int const l_pid = l_child.load()->get_pid();
        l_ready = true;
        ASSERT_GT(l_pid, 0);
        if (l_row.on_monitor) {
            ASSERT_TRUE(ordwel_test::eventually([&] { return l_status.m_closed.load(); }));
        } else {
            ASSERT_TRUE(ordwel_test::eventually([&] { return l_status.m_calls > watched_status::k_trigger_call; }));
            l_step();
            l_status.m_closed = true;
        }
        // The destructor leaves the child running; without a kill it writes on for ever.
        kill(l_pid, SIGKILL);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_EQ(l_status.m_late, 0) << "calls after the status object was given up";
        delete l_child.exchange(nullptr);
    }
#else
    GTEST_SKIP() << "kills the child by its id and uses the POSIX program yes";
#endif
}

// A monitor thread that cannot start: the constructor raises, and the child it had already
// started is killed and reaped, its pipes closed. The thread limit of an unprivileged user makes
// the thread fail while the child (one task fewer) still starts.
TEST(faults, a_monitor_that_cannot_start_leaves_no_child)
{
#if defined(__linux__)
    if (geteuid() != 0) {
        GTEST_SKIP() << "making thread creation fail takes a change of user, which needs root";
    }
    constexpr int k_thread_started = 4;
    constexpr int k_other_error = 5;
    constexpr int k_child_left = 6;
    constexpr int k_descriptor_left = 7;
    guarded_end const l_end = run_guarded(
        [] {
            // A user of its own, so that no other process counts against the limit: this process
            // and the child may exist, the monitor thread may not.
            gid_t const l_id = 61379;
            rlimit const l_limit{2, 2};
            if (setgroups(0, nullptr) != 0 || setgid(l_id) != 0 || setuid(l_id) != 0 ||
                setrlimit(RLIMIT_NPROC, &l_limit) != 0) {
                return k_cannot_set_up;
            }
            int const l_before = open_descriptors();
            ordwel_test::recorder l_collector;
            try {
                process l_child("sleep", "/bin/sleep", {"30"}, {}, "", "input", process_capture, &l_collector);
                l_child.terminate(true);
                return k_thread_started;
            } catch (es::call const &l_error) {
                if (std::string(l_error.what()).find("thread create failed") == std::string::npos) {
                    return k_other_error;
                }
            }
            int l_status = 0;
            if (waitpid(-1, &l_status, WNOHANG) != -1 || errno != ECHILD) {
                return k_child_left;
            }
            return open_descriptors() == l_before ? 0 : k_descriptor_left;
        },
        std::chrono::seconds(30));
    ASSERT_FALSE(l_end.timed_out);
    if (l_end.exit_code == k_cannot_set_up || l_end.exit_code == k_other_error || l_end.exit_code == k_thread_started) {
        GTEST_SKIP() << "could not make the monitor thread fail alone (code " << l_end.exit_code << ")";
    }
    EXPECT_EQ(l_end.exit_code, 0) << k_child_left << ": a child is left; " << k_descriptor_left
                                  << ": a descriptor is left";
#else
    GTEST_SKIP() << "changes user and thread limit in a forked guard, which needs Linux";
#endif
}

// Many starts that fail, many objects destroyed while their children run, many short children:
// afterwards no child is left (running or zombie) and no descriptor is open that was not before.
TEST(faults, repeated_starts_and_failures_leave_no_child_and_no_descriptor)
{
#if defined(__linux__)
    struct row {
        char const *name;
        char const *program;
        std::vector<std::string> args;
        int count;
    };
    row const l_rows[] = {
        {"failed starts of a missing program", "/nonexistent/ordwel_no_such_program", {}, 200},
        {"destroyed while running", "/bin/sleep", {"0.2"}, 100},
        {"short children destroyed at once", "/bin/true", {}, 1000},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.name);
        guarded_end const l_end = run_guarded(
            [&l_row] {
                // The pool of monitor threads keeps descriptors of its own while it lives: it is
                // made, by a first child, before the count.
                {
                    ordwel_test::recorder l_first;
                    process l_child("first", "/bin/true", {}, {}, "", "", 0, &l_first);
                    if (!l_first.wait_finished()) {
                        return k_did_not_finish;
                    }
                }
                int const l_before = open_descriptors();
                ordwel_test::recorder l_collector;
                for (int l_round = 0; l_round < l_row.count; ++l_round) {
                    try {
                        process l_child("p", l_row.program, l_row.args, {}, "", "in", process_capture, &l_collector);
                    } catch (es::call const &) {
                    }
                }
                bool const l_clean = ordwel_test::eventually([] { return live_children() == 0; }) &&
                                     ordwel_test::eventually([&] { return open_descriptors() == l_before; });
                return l_clean ? 0 : 1;
            },
            std::chrono::seconds(60));
        EXPECT_FALSE(l_end.timed_out);
        EXPECT_EQ(l_end.exit_code, 0) << "a child or a descriptor is left";
    }
#else
    GTEST_SKIP() << "counts children and descriptors in /proc, which only Linux has";
#endif
}

} // namespace
