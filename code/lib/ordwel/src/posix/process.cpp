// SPDX-License-Identifier: MIT
#include "platform/process.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/ioctl.h>
#if defined(__linux__)
#include <sys/epoll.h>
#include <sys/eventfd.h>
#endif
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace ordwel {
namespace platform {

namespace {

// Without a pidfd, the monitor looks at the child this often while it waits for output.
constexpr int k_fallback_poll_ms = 10;

// A descriptor that becomes readable when the child ends, or -1 where the kernel has none. The
// kernel opens it close-on-exec, so a child started later does not inherit it.
int open_pidfd(pid_t a_pid)
{
#if defined(SYS_pidfd_open)
    long const l_fd = syscall(SYS_pidfd_open, a_pid, 0);
    if (l_fd >= 0) {
        return static_cast<int>(l_fd);
    }
#else
    (void)a_pid;
#endif
    return -1;
}

bool child_has_ended(pid_t a_pid, bool a_block)
{
    for (;;) {
        siginfo_t l_info{};
        int const l_flags = WEXITED | WNOWAIT | (a_block ? 0 : WNOHANG);
        if (waitid(P_PID, static_cast<id_t>(a_pid), &l_info, l_flags) == 0) {
            return l_info.si_pid != 0;
        }
        if (errno != EINTR) {
            // Not ours any more (reaped elsewhere): as good as ended.
            return true;
        }
    }
}

std::uint64_t hundred_ns(timeval const &a_time)
{
    return static_cast<std::uint64_t>(a_time.tv_sec) * 10000000u + static_cast<std::uint64_t>(a_time.tv_usec) * 10u;
}

// The parent id of one /proc/<pid>/stat, or -1. The command name in parentheses may hold any
// byte, so the fields are read behind its last ')'.
long parent_of(char const *a_pid)
{
    std::string const l_path = std::string("/proc/") + a_pid + "/stat";
    int const l_fd = open(l_path.c_str(), O_RDONLY | O_CLOEXEC);
    if (l_fd < 0) {
        return -1;
    }
    char l_text[1024];
    ssize_t const l_size = read(l_fd, l_text, sizeof(l_text) - 1);
    close(l_fd);
    if (l_size <= 0) {
        return -1;
    }
    l_text[l_size] = '\0';
    char const *l_close = std::strrchr(l_text, ')');
    if (l_close == nullptr) {
        return -1;
    }
    char l_state = 0;
    long l_parent = -1;
    if (std::sscanf(l_close + 1, " %c %ld", &l_state, &l_parent) != 2) {
        return -1;
    }
    return l_parent;
}

} // namespace

status pipe_create(handle &a_read, handle &a_write)
{
    int l_fds[2];
    if (pipe2(l_fds, O_CLOEXEC) != 0) {
        return last_failure();
    }
    a_read = l_fds[0];
    a_write = l_fds[1];
    return status_done();
}

status handle_set_uninheritable(handle a_handle)
{
    int const l_fd = static_cast<int>(a_handle);
    int const l_flags = fcntl(l_fd, F_GETFD);
    if (l_flags == -1 || fcntl(l_fd, F_SETFD, l_flags | FD_CLOEXEC) != 0) {
        return last_failure();
    }
    return status_done();
}

void handle_close(handle &a_handle)
{
    if (a_handle != k_no_handle) {
        close(static_cast<int>(a_handle));
        a_handle = k_no_handle;
    }
}

status child_create(char const *, std::vector<std::string> const &a_args, char const *a_environment,
                    char const *a_directory, bool a_inherit, handle a_stdin, handle a_stdout, child_record &a_child)
{
    std::vector<std::string> const &l_args = a_args;
    if (l_args.empty() || l_args[0].empty()) {
        return status_failed(ENOENT);
    }
    std::vector<char *> l_argv;
    for (std::string const &l_arg : l_args) {
        l_argv.push_back(const_cast<char *>(l_arg.c_str()));
    }
    l_argv.push_back(nullptr);

    std::vector<char *> l_envp;
    if (a_environment != nullptr) {
        for (char const *l_entry = a_environment; *l_entry != '\0'; l_entry += std::strlen(l_entry) + 1) {
            l_envp.push_back(const_cast<char *>(l_entry));
        }
        l_envp.push_back(nullptr);
    }

    posix_spawn_file_actions_t l_actions;
    if (posix_spawn_file_actions_init(&l_actions) != 0) {
        return status_failed(ENOMEM);
    }
    int l_error = 0;
    if (a_inherit && a_stdin != k_no_handle && a_stdout != k_no_handle) {
        int const l_in = static_cast<int>(a_stdin);
        int const l_out = static_cast<int>(a_stdout);
        l_error = posix_spawn_file_actions_adddup2(&l_actions, l_in, 0);
        if (l_error == 0) {
            l_error = posix_spawn_file_actions_adddup2(&l_actions, l_out, 1);
        }
        if (l_error == 0) {
            l_error = posix_spawn_file_actions_adddup2(&l_actions, l_out, 2);
        }
    }
    if (l_error == 0 && a_directory != nullptr) {
        l_error = posix_spawn_file_actions_addchdir_np(&l_actions, a_directory);
    }
    pid_t l_pid = 0;
    if (l_error == 0) {
        char *const *l_env = a_environment != nullptr ? l_envp.data() : environ;
        // A program named without a directory is looked for along the parent's PATH, as
        // Windows looks along its own search path.
        if (std::strchr(l_argv[0], '/') != nullptr) {
            l_error = posix_spawn(&l_pid, l_argv[0], &l_actions, nullptr, l_argv.data(), l_env);
        } else {
            l_error = posix_spawnp(&l_pid, l_argv[0], &l_actions, nullptr, l_argv.data(), l_env);
        }
    }
    posix_spawn_file_actions_destroy(&l_actions);
    if (l_error != 0) {
        return status_failed(static_cast<unsigned long>(l_error));
    }
    a_child.pid = static_cast<int>(l_pid);
    a_child.tid = static_cast<int>(l_pid);
    a_child.process = l_pid;
    a_child.wait = open_pidfd(l_pid);
    return status_done();
}

status child_wait(child_record const &a_child, handle a_output, wait_result &a_result)
{
    pid_t const l_pid = static_cast<pid_t>(a_child.pid);
    if (a_child.wait != k_no_handle) {
        pollfd l_fds[2] = {{static_cast<int>(a_child.wait), POLLIN, 0}, {-1, POLLIN, 0}};
        nfds_t l_count = 1;
        if (a_output != k_no_handle) {
            l_fds[1].fd = static_cast<int>(a_output);
            l_count = 2;
        }
        int const l_ready = poll(l_fds, l_count, -1);
        if (l_ready < 0) {
            if (errno == EINTR) {
                a_result = wait_result::other;
                return status_done();
            }
            return last_failure();
        }
        a_result = l_fds[0].revents != 0 ? wait_result::ended : wait_result::timeout;
        return status_done();
    }
    if (a_output == k_no_handle) {
        a_result = child_has_ended(l_pid, true) ? wait_result::ended : wait_result::other;
        return status_done();
    }
    pollfd l_fd = {static_cast<int>(a_output), POLLIN, 0};
    if (poll(&l_fd, 1, k_fallback_poll_ms) < 0 && errno != EINTR) {
        return last_failure();
    }
    a_result = child_has_ended(l_pid, false) ? wait_result::ended : wait_result::timeout;
    return status_done();
}

status pipe_write(handle a_handle, char const *a_data, std::size_t a_size)
{
    // A reader that has gone raises SIGPIPE in the writing thread. It is held back here and
    // taken off again, so that it never ends the host.
    sigset_t l_pipe;
    sigemptyset(&l_pipe);
    sigaddset(&l_pipe, SIGPIPE);
    sigset_t l_old;
    pthread_sigmask(SIG_BLOCK, &l_pipe, &l_old);
    status l_status = status_done();
    while (a_size > 0) {
        ssize_t const l_written = write(static_cast<int>(a_handle), a_data, a_size);
        if (l_written < 0) {
            if (errno == EINTR) {
                continue;
            }
            l_status = last_failure();
            if (errno == EPIPE) {
                timespec const l_zero{0, 0};
                while (sigtimedwait(&l_pipe, nullptr, &l_zero) == SIGPIPE) {
                }
            }
            break;
        }
        a_data += l_written;
        a_size -= static_cast<std::size_t>(l_written);
    }
    pthread_sigmask(SIG_SETMASK, &l_old, nullptr);
    return l_status;
}

status pipe_available(handle a_handle, unsigned &a_count)
{
    int l_count = 0;
    if (ioctl(static_cast<int>(a_handle), FIONREAD, &l_count) != 0) {
        return last_failure();
    }
    a_count = static_cast<unsigned>(l_count);
    return status_done();
}

status pipe_read(handle a_handle, unsigned char *a_data, unsigned a_size, unsigned &a_read)
{
    for (;;) {
        ssize_t const l_read = read(static_cast<int>(a_handle), a_data, a_size);
        if (l_read >= 0) {
            a_read = static_cast<unsigned>(l_read);
            return status_done();
        }
        if (errno != EINTR) {
            return last_failure();
        }
    }
}

void child_collect(child_record &a_child, child_outcome &a_outcome)
{
    if (a_child.pid == 0) {
        return;
    }
    int l_status = 0;
    rusage l_usage{};
    pid_t l_result = 0;
    do {
        l_result = wait4(static_cast<pid_t>(a_child.pid), &l_status, 0, &l_usage);
    } while (l_result < 0 && errno == EINTR);
    if (l_result != static_cast<pid_t>(a_child.pid)) {
        return;
    }
    if (WIFEXITED(l_status)) {
        a_outcome.has_code = true;
        a_outcome.code = WEXITSTATUS(l_status);
    } else if (WIFSIGNALED(l_status)) {
        // The shell's convention for a child that a signal ended.
        a_outcome.has_code = true;
        a_outcome.code = 128 + WTERMSIG(l_status);
    }
    a_outcome.has_times = true;
    a_outcome.user = hundred_ns(l_usage.ru_utime);
    a_outcome.kernel = hundred_ns(l_usage.ru_stime);
}

// SIGSTOP and SIGCONT do not count; the count that Windows keeps per thread is kept here, so that
// the child runs again only when every suspension has been resumed.
status child_suspend(child_record &a_child, walk_step &)
{
    if (a_child.suspensions++ == 0) {
        kill(static_cast<pid_t>(a_child.pid), SIGSTOP);
    }
    return status_done();
}

status child_resume(child_record &a_child, walk_step &)
{
    if (a_child.suspensions > 0 && --a_child.suspensions == 0) {
        kill(static_cast<pid_t>(a_child.pid), SIGCONT);
    }
    return status_done();
}

void child_kill(child_record const &a_child, unsigned)
{
    kill(static_cast<pid_t>(a_child.pid), SIGKILL);
}

status child_kill_children(child_record const &a_child)
{
    DIR *const l_dir = ::opendir("/proc");
    if (l_dir == nullptr) {
        return last_failure();
    }
    std::vector<pid_t> l_children;
    while (dirent *l_entry = ::readdir(l_dir)) {
        char const *l_name = l_entry->d_name;
        if (*l_name < '0' || *l_name > '9') {
            continue;
        }
        if (parent_of(l_name) == a_child.pid) {
            l_children.push_back(static_cast<pid_t>(std::atol(l_name)));
        }
    }
    ::closedir(l_dir);
    for (pid_t l_pid : l_children) {
        kill(l_pid, SIGKILL);
    }
    return status_done();
}

void child_release(child_record &a_child)
{
    // The process "handle" is the id itself, which stays valid until the monitor reaps.
    a_child.process = k_no_handle;
    a_child.thread = k_no_handle;
}

void child_release_wait(child_record &a_child)
{
    handle_close(a_child.wait);
}

status wait_set_create(handle &a_set)
{
#if defined(__linux__)
    int const l_fd = epoll_create1(EPOLL_CLOEXEC);
    if (l_fd < 0) {
        return last_failure();
    }
    a_set = l_fd;
    return status_done();
#else
    (void)a_set;
    return status_failed(ENOSYS);
#endif
}

status wait_set_add(handle a_set, handle a_item, void *a_key, bool a_once)
{
#if defined(__linux__)
    epoll_event l_event{};
    l_event.events = EPOLLIN | (a_once ? EPOLLONESHOT : 0u);
    l_event.data.ptr = a_key;
    if (epoll_ctl(static_cast<int>(a_set), EPOLL_CTL_ADD, static_cast<int>(a_item), &l_event) != 0) {
        return last_failure();
    }
    return status_done();
#else
    (void)a_set;
    (void)a_item;
    (void)a_key;
    (void)a_once;
    return status_failed(ENOSYS);
#endif
}

status wait_set_remove(handle a_set, handle a_item)
{
#if defined(__linux__)
    if (epoll_ctl(static_cast<int>(a_set), EPOLL_CTL_DEL, static_cast<int>(a_item), nullptr) != 0) {
        return last_failure();
    }
    return status_done();
#else
    (void)a_set;
    (void)a_item;
    return status_failed(ENOSYS);
#endif
}

status wait_set_wait(handle a_set, void *&a_key)
{
#if defined(__linux__)
    for (;;) {
        epoll_event l_event{};
        int const l_count = epoll_wait(static_cast<int>(a_set), &l_event, 1, -1);
        if (l_count == 1) {
            a_key = l_event.data.ptr;
            return status_done();
        }
        if (l_count < 0 && errno != EINTR) {
            return last_failure();
        }
    }
#else
    (void)a_set;
    (void)a_key;
    return status_failed(ENOSYS);
#endif
}

status event_create(handle &a_event, bool a_set)
{
#if defined(__linux__)
    int const l_fd = eventfd(a_set ? 1u : 0u, EFD_CLOEXEC | EFD_NONBLOCK);
    if (l_fd < 0) {
        return last_failure();
    }
    a_event = l_fd;
    return status_done();
#else
    (void)a_event;
    (void)a_set;
    return status_failed(ENOSYS);
#endif
}

status event_set(handle a_event)
{
#if defined(__linux__)
    std::uint64_t const l_one = 1;
    while (write(static_cast<int>(a_event), &l_one, sizeof(l_one)) < 0) {
        if (errno != EINTR) {
            return last_failure();
        }
    }
    return status_done();
#else
    (void)a_event;
    return status_failed(ENOSYS);
#endif
}

bool unload_may_join_threads()
{
    return true;
}

status fork_handlers_add(void (*a_prepare)(), void (*a_parent)(), void (*a_child)())
{
    int const l_error = pthread_atfork(a_prepare, a_parent, a_child);
    return l_error == 0 ? status_done() : status_failed(static_cast<unsigned long>(l_error));
}

} // namespace platform
} // namespace ordwel
