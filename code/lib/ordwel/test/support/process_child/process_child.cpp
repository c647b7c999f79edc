// SPDX-License-Identifier: MIT
// A small child program for the process tests. Its arguments are commands, run in order:
//   out TEXT     writes TEXT to the standard output      err TEXT   the same to the standard error
//   big N        writes N bytes to the standard output   cat        copies the standard input out
//   count        reads the standard input to its end and writes "<n> bytes"
//   env          writes the environment, one entry a line, sorted
//   cwd          writes the working directory           args       writes each further argument as [arg]
//   sleep MS     sleeps                                  exit N     ends with status N
//   spawn CMD..  starts itself with the rest of the arguments and writes "child <pid> of <own pid>"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <windows.h>
#else
#include <spawn.h>
#include <unistd.h>
extern char **environ;
#endif

namespace {

void sleep_ms(long a_ms)
{
#if defined(_WIN32)
    Sleep(static_cast<DWORD>(a_ms));
#else
    usleep(static_cast<useconds_t>(a_ms) * 1000);
#endif
}

std::string self_path(char const *a_argv0)
{
#if defined(_WIN32)
    (void)a_argv0;
    char l_path[MAX_PATH];
    GetModuleFileNameA(nullptr, l_path, MAX_PATH);
    return l_path;
#else
    (void)a_argv0;
    char l_path[4096];
    ssize_t const l_size = readlink("/proc/self/exe", l_path, sizeof(l_path) - 1);
    return l_size > 0 ? std::string(l_path, static_cast<std::size_t>(l_size)) : std::string();
#endif
}

long own_pid()
{
#if defined(_WIN32)
    return static_cast<long>(_getpid());
#else
    return static_cast<long>(getpid());
#endif
}

long spawn_self(char const *a_argv0, int a_argc, char **a_argv)
{
    std::string const l_self = self_path(a_argv0);
#if defined(_WIN32)
    std::string l_line = "\"" + l_self + "\"";
    for (int l_index = 0; l_index < a_argc; ++l_index) {
        l_line += " ";
        l_line += a_argv[l_index];
    }
    STARTUPINFOA l_start{};
    l_start.cb = sizeof(l_start);
    PROCESS_INFORMATION l_info{};
    std::vector<char> l_buffer(l_line.begin(), l_line.end());
    l_buffer.push_back('\0');
    if (!CreateProcessA(nullptr, l_buffer.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &l_start, &l_info)) {
        return -1;
    }
    CloseHandle(l_info.hThread);
    CloseHandle(l_info.hProcess);
    return static_cast<long>(l_info.dwProcessId);
#else
    std::vector<char *> l_args;
    l_args.push_back(const_cast<char *>(l_self.c_str()));
    for (int l_index = 0; l_index < a_argc; ++l_index) {
        l_args.push_back(a_argv[l_index]);
    }
    l_args.push_back(nullptr);
    pid_t l_pid = 0;
    if (posix_spawn(&l_pid, l_self.c_str(), nullptr, nullptr, l_args.data(), environ) != 0) {
        return -1;
    }
    return static_cast<long>(l_pid);
#endif
}

std::string read_input()
{
    std::string l_text;
    char l_buffer[4096];
    std::size_t l_read = 0;
    while ((l_read = std::fread(l_buffer, 1, sizeof(l_buffer), stdin)) > 0) {
        l_text.append(l_buffer, l_read);
    }
    return l_text;
}

} // namespace

int main(int a_argc, char **a_argv)
{
#if defined(_WIN32)
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    for (int l_index = 1; l_index < a_argc; ++l_index) {
        std::string const l_command = a_argv[l_index];
        char const *l_next = l_index + 1 < a_argc ? a_argv[l_index + 1] : "";
        if (l_command == "out") {
            std::fputs(l_next, stdout);
            std::fflush(stdout);
            ++l_index;
        } else if (l_command == "err") {
            std::fputs(l_next, stderr);
            std::fflush(stderr);
            ++l_index;
        } else if (l_command == "big") {
            std::string const l_bytes(std::strtoul(l_next, nullptr, 10), 'x');
            std::fwrite(l_bytes.data(), 1, l_bytes.size(), stdout);
            std::fflush(stdout);
            ++l_index;
        } else if (l_command == "cat") {
            std::string const l_text = read_input();
            std::fwrite(l_text.data(), 1, l_text.size(), stdout);
            std::fflush(stdout);
        } else if (l_command == "echo") {
            // Copies the input piece by piece as it comes, as the cat program does.
            char l_buffer[4096];
            std::size_t l_read = 0;
            while ((l_read = std::fread(l_buffer, 1, sizeof(l_buffer), stdin)) > 0) {
                std::fwrite(l_buffer, 1, l_read, stdout);
                std::fflush(stdout);
            }
        } else if (l_command == "count") {
            std::printf("%zu bytes", read_input().size());
            std::fflush(stdout);
        } else if (l_command == "env") {
            std::vector<std::string> l_entries;
#if defined(_WIN32)
            char *l_block = GetEnvironmentStringsA();
            for (char const *l_entry = l_block; *l_entry != '\0'; l_entry += std::strlen(l_entry) + 1) {
                if (*l_entry != '=') {
                    l_entries.push_back(l_entry);
                }
            }
            FreeEnvironmentStringsA(l_block);
#else
            for (char **l_entry = environ; *l_entry != nullptr; ++l_entry) {
                l_entries.push_back(*l_entry);
            }
#endif
            std::sort(l_entries.begin(), l_entries.end());
            for (std::string const &l_entry : l_entries) {
                std::printf("%s\n", l_entry.c_str());
            }
            std::fflush(stdout);
        } else if (l_command == "cwd") {
            char l_path[4096];
#if defined(_WIN32)
            char const *l_cwd = _getcwd(l_path, sizeof(l_path));
#else
            char const *l_cwd = getcwd(l_path, sizeof(l_path));
#endif
            std::printf("%s", l_cwd != nullptr ? l_cwd : "");
            std::fflush(stdout);
        } else if (l_command == "args") {
            for (++l_index; l_index < a_argc; ++l_index) {
                std::printf("[%s]", a_argv[l_index]);
            }
            std::fflush(stdout);
        } else if (l_command == "sleep") {
            sleep_ms(std::strtol(l_next, nullptr, 10));
            ++l_index;
        } else if (l_command == "exit") {
            return static_cast<int>(std::strtol(l_next, nullptr, 10));
        } else if (l_command == "spawn") {
            long const l_pid = spawn_self(a_argv[0], a_argc - l_index - 1, a_argv + l_index + 1);
            std::printf("child %ld of %ld\n", l_pid, own_pid());
            std::fflush(stdout);
            // The spawned child runs the rest; this one waits long enough to be killed.
            sleep_ms(30000);
            return 0;
        }
    }
    return 0;
}
