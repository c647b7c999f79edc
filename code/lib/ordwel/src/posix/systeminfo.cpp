// SPDX-License-Identifier: MIT
#include "platform/systeminfo.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include <pwd.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/cpu_dispatch.h"

// The POSIX counterparts of the Windows system queries: the password database, /proc and /sys,
// uname, statfs and cpuid.
namespace ordwel {
namespace platform {

namespace {

// The password entry of the effective user; false when there is none.
bool own_password_entry(std::string &a_name, std::string &a_home)
{
    long l_hint = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::size_t l_size = l_hint > 0 ? static_cast<std::size_t>(l_hint) : 1024;
    for (int l_try = 0; l_try < 8; ++l_try, l_size *= 4) {
        std::string l_storage(l_size, '\0');
        struct passwd l_entry {};
        struct passwd *l_result = nullptr;
        int const l_error = getpwuid_r(geteuid(), &l_entry, &l_storage[0], l_size, &l_result);
        if (l_error == ERANGE) {
            continue;
        }
        if (l_error != 0 || l_result == nullptr) {
            return false;
        }
        a_name = l_entry.pw_name != nullptr ? l_entry.pw_name : "";
        a_home = l_entry.pw_dir != nullptr ? l_entry.pw_dir : "";
        return true;
    }
    return false;
}

// The value of a "Name: value" line of a /proc text file, as a number; false when absent.
bool proc_number(char const *a_file, std::string const &a_key, unsigned long long &a_value)
{
    std::ifstream l_in(a_file);
    std::string l_line;
    while (std::getline(l_in, l_line)) {
        std::string::size_type const l_colon = l_line.find(':');
        if (l_colon == std::string::npos) {
            continue;
        }
        std::string l_name = l_line.substr(0, l_colon);
        while (!l_name.empty() && (l_name.back() == ' ' || l_name.back() == '\t')) {
            l_name.pop_back();
        }
        if (l_name == a_key) {
            a_value = std::strtoull(l_line.c_str() + l_colon + 1, nullptr, 10);
            return true;
        }
    }
    return false;
}

bool read_number_file(char const *a_file, unsigned long long &a_value)
{
    std::ifstream l_in(a_file);
    return static_cast<bool>(l_in >> a_value);
}

// "5.15.0-91-generic" gives 5, 15 and 0.
void release_numbers(char const *a_release, uint32 &a_major, uint32 &a_minor, uint32 &a_patch)
{
    uint32 *const l_fields[] = {&a_major, &a_minor, &a_patch};
    char const *l_text = a_release;
    for (uint32 *l_field : l_fields) {
        char *l_end = nullptr;
        unsigned long const l_value = std::strtoul(l_text, &l_end, 10);
        *l_field = static_cast<uint32>(l_value);
        if (l_end == l_text || *l_end != '.') {
            break;
        }
        l_text = l_end + 1;
    }
}

} // namespace

std::string user_name()
{
    std::string l_name;
    std::string l_home;
    return own_password_entry(l_name, l_home) ? l_name : std::string();
}

std::string host_name()
{
    char l_name[256] = {};
    gethostname(l_name, sizeof l_name - 1);
    return std::string(l_name);
}

unsigned process_id()
{
    return static_cast<unsigned>(getpid());
}

status executable(std::string &a_path)
{
    char l_path[PATH_MAX];
    ssize_t const l_size = readlink("/proc/self/exe", l_path, sizeof l_path);
    if (l_size <= 0 || static_cast<std::size_t>(l_size) >= sizeof l_path) {
        return last_failure();
    }
    a_path.assign(l_path, static_cast<std::size_t>(l_size));
    return status_done();
}

status current_directory(std::string &a_path)
{
    for (std::size_t l_size = 256; l_size <= (1U << 20); l_size *= 2) {
        std::string l_path(l_size, '\0');
        if (getcwd(&l_path[0], l_size) != nullptr) {
            a_path = l_path.c_str();
            return status_done();
        }
        if (errno != ERANGE) {
            return last_failure();
        }
    }
    return last_failure();
}

status temp_directory(std::string &a_path)
{
    char const *const l_dir = std::getenv("TMPDIR");
    a_path = (l_dir != nullptr && *l_dir != '\0') ? l_dir : "/tmp/";
    if (a_path.back() != '/') {
        a_path.push_back('/');
    }
    return status_done();
}

status home_directory(std::string &a_path)
{
    char const *const l_home = std::getenv("HOME");
    if (l_home != nullptr && *l_home != '\0') {
        a_path = l_home;
        return status_done();
    }
    std::string l_name;
    if (!own_password_entry(l_name, a_path) || a_path.empty()) {
        return status_failed(ENOENT);
    }
    return status_done();
}

char path_separator()
{
    return '/';
}

status command_open(char const *a_command, std::FILE *&a_pipe)
{
    a_pipe = popen(a_command, "r");
    return a_pipe != nullptr ? status_done() : last_failure();
}

int command_close(std::FILE *a_pipe)
{
    int const l_status = pclose(a_pipe);
    if (l_status == -1) {
        return -1;
    }
    if (WIFEXITED(l_status)) {
        return WEXITSTATUS(l_status);
    }
    // A command ended by a signal gives 128 and the signal's number, as the shell tells it.
    return WIFSIGNALED(l_status) ? 128 + WTERMSIG(l_status) : l_status;
}

memory_status memory()
{
    unsigned long long l_total = 0;
    unsigned long long l_available = 0;
    proc_number("/proc/meminfo", "MemTotal", l_total);
    proc_number("/proc/meminfo", "MemAvailable", l_available);
    // /proc/meminfo counts in KiB.
    return memory_status{l_total * 1024, l_available * 1024};
}

unsigned processor_count()
{
    long const l_count = sysconf(_SC_NPROCESSORS_ONLN);
    return l_count > 0 ? static_cast<unsigned>(l_count) : 1U;
}

status processor_mhz(unsigned &a_mhz)
{
    unsigned long long l_khz = 0;
    if (read_number_file("/sys/devices/system/cpu/cpu0/cpufreq/base_frequency", l_khz) ||
        read_number_file("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", l_khz)) {
        a_mhz = static_cast<unsigned>(l_khz / 1000);
        return status_done();
    }
    std::ifstream l_in("/proc/cpuinfo");
    if (!l_in) {
        return last_failure();
    }
    a_mhz = 0;
    std::string l_line;
    while (std::getline(l_in, l_line)) {
        if (l_line.compare(0, 7, "cpu MHz") == 0) {
            std::string::size_type const l_colon = l_line.find(':');
            if (l_colon != std::string::npos) {
                a_mhz = static_cast<unsigned>(std::strtod(l_line.c_str() + l_colon + 1, nullptr));
            }
            break;
        }
    }
    return status_done();
}

status system_times(uint64 &a_idle, uint64 &a_kernel, uint64 &a_user)
{
    std::ifstream l_in("/proc/stat");
    std::string l_label;
    unsigned long long l_user = 0, l_nice = 0, l_system = 0, l_idle = 0, l_iowait = 0, l_irq = 0, l_softirq = 0,
                       l_steal = 0;
    if (!(l_in >> l_label >> l_user >> l_nice >> l_system >> l_idle) || l_label != "cpu") {
        return last_failure();
    }
    l_in >> l_iowait >> l_irq >> l_softirq >> l_steal;
    // As on Windows, kernel time includes idle time; waiting for I/O counts as idle.
    a_idle = l_idle + l_iowait;
    a_kernel = l_system + l_irq + l_softirq + l_steal + a_idle;
    a_user = l_user + l_nice;
    return status_done();
}

version_facts read_version_facts()
{
    version_facts l_facts{};
    l_facts.m_windows = false;
    struct utsname l_name {};
    if (uname(&l_name) == 0) {
        l_facts.m_have_version = true;
        l_facts.m_have_extended = 1;
        l_facts.m_info.m_size = sizeof l_facts.m_info;
        release_numbers(l_name.release, l_facts.m_info.m_major, l_facts.m_info.m_minor, l_facts.m_info.m_build);
    }
    processor_facts const l_processor = read_processor_facts();
    l_facts.m_system.m_processor_architecture = static_cast<uint16>(l_processor.m_architecture);
    l_facts.m_system.m_number_of_processors = l_processor.m_processors;
    long const l_page = sysconf(_SC_PAGESIZE);
    l_facts.m_system.m_page_size = l_page > 0 ? static_cast<uint32>(l_page) : 4096;
    return l_facts;
}

int server_r2_metric()
{
    return 0;
}

status product_type_text(std::string &)
{
    return last_failure();
}

uint32 version_word()
{
    struct utsname l_name {};
    if (uname(&l_name) != 0) {
        return 0;
    }
    uint32 l_major = 0, l_minor = 0, l_patch = 0;
    release_numbers(l_name.release, l_major, l_minor, l_patch);
    return (l_major & 0xFFU) | ((l_minor & 0xFFU) << 8) | ((l_patch & 0x7FFFU) << 16);
}

std::string kernel_name()
{
    struct utsname l_name {};
    if (uname(&l_name) != 0) {
        return "UNKNOWN";
    }
    std::string l_text = l_name.sysname;
    for (char &l_char : l_text) {
        if (l_char >= 'a' && l_char <= 'z') {
            l_char = static_cast<char>(l_char - 32);
        }
    }
    return l_text;
}

std::string machine_isa()
{
    struct utsname l_name {};
    return uname(&l_name) == 0 ? std::string(l_name.machine) : std::string("unknown");
}

status volume_file_system(std::string const &, std::string const &a_path, std::string &a_name)
{
    if (a_path.empty()) {
        return last_failure();
    }
    // The nearest existing directory on the path tells the volume, as a Windows drive root would.
    std::string l_probe = a_path;
    struct statfs l_info {};
    while (statfs(l_probe.c_str(), &l_info) != 0) {
        std::string::size_type const l_slash = l_probe.find_last_of('/');
        if (l_slash == std::string::npos) {
            l_probe = ".";
        } else if (l_slash == 0) {
            if (l_probe == "/") {
                return last_failure();
            }
            l_probe = "/";
        } else {
            l_probe.erase(l_slash);
        }
    }
    static std::map<unsigned long, char const *> const k_names = {
        {0xEF53UL, "ext4"},        {0x58465342UL, "xfs"},      {0x9123683EUL, "btrfs"},    {0xF2F52010UL, "f2fs"},
        {0x3153464AUL, "jfs"},     {0x2FC12FC1UL, "zfs"},      {0x01021994UL, "tmpfs"},    {0x794C7630UL, "overlay"},
        {0x858458F6UL, "ramfs"},   {0x52654973UL, "reiserfs"}, {0x4D44UL, "vfat"},         {0x2011BAB0UL, "exfat"},
        {0x5346544EUL, "ntfs"},    {0x9660UL, "iso9660"},      {0x15013346UL, "udf"},      {0x6969UL, "nfs"},
        {0xFF534D42UL, "cifs"},    {0xFE534D42UL, "smb2"},     {0x65735546UL, "fuse"},     {0x9FA0UL, "proc"},
        {0x62656572UL, "sysfs"},   {0x1CD1UL, "devpts"},       {0x73717368UL, "squashfs"}, {0x27E0EBUL, "cgroup"},
        {0x63677270UL, "cgroup2"}, {0x01021997UL, "v9fs"},
    };
    auto const l_type = static_cast<unsigned long>(l_info.f_type) & 0xFFFFFFFFUL;
    auto const l_found = k_names.find(l_type);
    if (l_found != k_names.end()) {
        a_name = l_found->second;
    } else {
        char l_text[32];
        std::snprintf(l_text, sizeof l_text, "0x%lx", l_type);
        a_name = l_text;
    }
    return status_done();
}

bool path_exists(std::string const &a_path)
{
    struct stat l_info {};
    return stat(a_path.c_str(), &l_info) == 0;
}

processor_facts read_processor_facts()
{
    processor_facts l_facts{};
#if defined(__x86_64__)
    l_facts.m_architecture = 9;
#elif defined(__i386__)
    l_facts.m_architecture = 0;
#elif defined(__ia64__)
    l_facts.m_architecture = 6;
#elif defined(__aarch64__)
    l_facts.m_architecture = 12;
#elif defined(__arm__)
    l_facts.m_architecture = 5;
#else
    l_facts.m_architecture = 0xFFFF;
#endif
    l_facts.m_processors = processor_count();
#if defined(__x86_64__) || defined(__i386__)
    internal::cpuid_registers l_leaf{};
    if (internal::cpuid(1, 0, l_leaf)) {
        uint32 const l_ecx = l_leaf.m_ecx;
        uint32 const l_edx = l_leaf.m_edx;
        // The IsProcessorFeaturePresent numbers: 3 MMX, 6 SSE, 10 SSE2, 13 SSE3, 8 RDTSC.
        l_facts.m_features |= ((l_edx >> 23) & 1ULL) << 3;
        l_facts.m_features |= ((l_edx >> 25) & 1ULL) << 6;
        l_facts.m_features |= ((l_edx >> 26) & 1ULL) << 10;
        l_facts.m_features |= (static_cast<uint64>(l_ecx) & 1ULL) << 13;
        l_facts.m_features |= ((l_edx >> 4) & 1ULL) << 8;
    }
    if (internal::cpuid(0x80000001U, 0, l_leaf)) {
        // 7: 3DNow!
        l_facts.m_features |= ((l_leaf.m_edx >> 31) & 1ULL) << 7;
    }
#endif
    return l_facts;
}

status processor_relations(std::vector<processor_relation> &a_records)
{
    // One core record per (package, core) pair of the online processors, with a bit for each of
    // its hardware threads, as GetLogicalProcessorInformation reports cores.
    std::map<std::pair<long, long>, uint64> l_cores;
    long const l_configured = sysconf(_SC_NPROCESSORS_CONF);
    for (long l_cpu = 0; l_cpu < l_configured && l_cpu < 64; ++l_cpu) {
        std::string const l_base = "/sys/devices/system/cpu/cpu" + std::to_string(l_cpu);
        unsigned long long l_online = 1;
        if (access(l_base.c_str(), F_OK) != 0) {
            continue;
        }
        read_number_file((l_base + "/online").c_str(), l_online);
        if (l_online == 0) {
            continue;
        }
        unsigned long long l_package = 0;
        unsigned long long l_core = static_cast<unsigned long long>(l_cpu);
        read_number_file((l_base + "/topology/physical_package_id").c_str(), l_package);
        read_number_file((l_base + "/topology/core_id").c_str(), l_core);
        l_cores[std::make_pair(static_cast<long>(l_package), static_cast<long>(l_core))] |= 1ULL << l_cpu;
    }
    if (l_cores.empty()) {
        // No topology to read: one core per processor this process may run on.
        cpu_set_t l_set;
        CPU_ZERO(&l_set);
        if (sched_getaffinity(0, sizeof l_set, &l_set) == 0) {
            for (int l_cpu = 0; l_cpu < 64 && l_cpu < CPU_SETSIZE; ++l_cpu) {
                if (CPU_ISSET(l_cpu, &l_set)) {
                    l_cores[std::make_pair(0L, static_cast<long>(l_cpu))] = 1ULL << l_cpu;
                }
            }
        }
    }
    try {
        for (auto const &l_core : l_cores) {
            a_records.push_back(processor_relation{0, l_core.second});
        }
    } catch (std::bad_alloc const &) {
        a_records.clear();
        throw;
    }
    return status_done();
}

} // namespace platform
} // namespace ordwel
