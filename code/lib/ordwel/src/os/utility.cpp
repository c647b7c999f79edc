// SPDX-License-Identifier: MIT
#include <ordwel/env.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <ordwel/es.h>
#include <ordwel/file.h>
#include <ordwel/path.h>
#include <ordwel/string_helpers.h>

#include "diag/raise.h"
#include "os/os_error.h"
#include "platform/file.h"
#include "platform/systeminfo.h"

namespace ordwel {

template class stack_vector<char, 256>;

namespace env {

namespace {

char const k_blanks[] = " \t\n\v\f\r";

// The previous sample of get_cpu_utilization: idle, user and kernel time.
uint64 s_previous_idle = 0;
uint64 s_previous_user = 0;
uint64 s_previous_kernel = 0;

// The platform's version and system records in env's terms.
os_version_info os_version_info_with_record(platform::os_version_record const &a_record)
{
    os_version_info l_info{};
    l_info.m_size = a_record.m_size;
    l_info.m_major = a_record.m_major;
    l_info.m_minor = a_record.m_minor;
    l_info.m_build = a_record.m_build;
    l_info.m_platform_id = a_record.m_platform_id;
    std::memcpy(l_info.m_service_pack, a_record.m_service_pack, sizeof l_info.m_service_pack);
    l_info.m_service_pack_major = a_record.m_service_pack_major;
    l_info.m_service_pack_minor = a_record.m_service_pack_minor;
    l_info.m_suite_mask = a_record.m_suite_mask;
    l_info.m_product_type = a_record.m_product_type;
    l_info.m_reserved = a_record.m_reserved;
    return l_info;
}

system_info system_info_with_record(platform::system_record const &a_record)
{
    system_info l_info{};
    l_info.m_processor_architecture = a_record.m_processor_architecture;
    l_info.m_page_size = a_record.m_page_size;
    l_info.m_active_processor_mask = a_record.m_active_processor_mask;
    l_info.m_number_of_processors = a_record.m_number_of_processors;
    l_info.m_processor_type = a_record.m_processor_type;
    l_info.m_processor_level = a_record.m_processor_level;
    l_info.m_processor_revision = a_record.m_processor_revision;
    return l_info;
}

} // namespace

// ---- systeminfo ----

systeminfo::systeminfo()
    : m_version(os_version_windows), m_os_info(), m_system_info(), m_have_extended(0), m_is_server(0)
{
    platform::version_facts const l_facts = platform::read_version_facts();
    m_os_info = os_version_info_with_record(l_facts.m_info);
    m_system_info = system_info_with_record(l_facts.m_system);
    m_have_extended = l_facts.m_have_extended;
    m_is_server = l_facts.m_is_server;
    if (!l_facts.m_windows) {
        // No value of the enumeration names another platform.
        m_version = os_version_unknown;
        return;
    }
    if (l_facts.m_have_version) {
        detect_windows_version();
    }
}

systeminfo::~systeminfo() = default;

systeminfo::systeminfo(systeminfo const &a_other) = default;

systeminfo &systeminfo::operator=(systeminfo const &a_other) = default;

systeminfo &systeminfo::instance()
{
    static systeminfo s_instance;
    return s_instance;
}

os_version systeminfo::get_windows_version() const
{
    return m_version;
}

int systeminfo::get_windows_is_server() const
{
    return m_is_server;
}

void systeminfo::detect_windows_version()
{
    if (m_have_extended != 0) {
        m_version = os_version_with_version_info(m_os_info, m_system_info, platform::server_r2_metric());
        return;
    }
    std::string l_type;
    if (!platform::product_type_text(l_type).failed()) {
        m_version = os_version_with_product_type(l_type, m_os_info.m_major, m_os_info.m_minor);
    }
}

// ---- pure decisions ----

os_version os_version_with_version_info(os_version_info const &a_info, system_info const &a_system, int a_server_r2)
{
    uint32 const l_major = a_info.m_major;
    uint32 const l_minor = a_info.m_minor;
    bool const l_workstation = a_info.m_product_type == 1;
    char const l_pack = a_info.m_service_pack[0];
    switch (a_info.m_platform_id) {
    case 0:
        return os_version_windows_32s;
    case 1:
        if (l_major == 4 && l_minor == 0) {
            return (l_pack == 'B' || l_pack == 'C') ? os_version_windows_95r2 : os_version_windows_95;
        }
        if (l_major == 4 && l_minor == 10) {
            return l_pack == 'A' ? os_version_windows_98se : os_version_windows_98;
        }
        if (l_major == 4 && l_minor == 90) {
            return os_version_windows_millenium;
        }
        return os_version_windows;
    case 2:
        break;
    default:
        return os_version_windows;
    }
    if (l_major == 3) {
        return os_version_windows_nt35;
    }
    if (l_major == 4) {
        if (a_info.m_product_type == 1) {
            return os_version_windows_nt40;
        }
        if (a_info.m_product_type == 3) {
            return os_version_windows_nt40_server;
        }
        return os_version_windows;
    }
    if (l_major == 5) {
        switch (l_minor) {
        case 0:
            return os_version_windows_2000;
        case 1:
            return os_version_windows_xp;
        case 2:
            // The suite mask is tested before the product type.
            if (a_info.m_suite_mask == 0x8000) {
                return os_version_windows_homeserver;
            }
            if (l_workstation && a_system.m_processor_architecture == 9) {
                return os_version_windows_xp_professional_64;
            }
            return a_server_r2 != 0 ? os_version_windows_server_2003r2 : os_version_windows_server_2003;
        default:
            return os_version_windows;
        }
    }
    if (l_major == 6) {
        switch (l_minor) {
        case 0:
            return l_workstation ? os_version_windows_vista : os_version_windows_server_2008;
        case 1:
            return l_workstation ? os_version_windows_7 : os_version_windows_server_2008r2;
        case 2:
            return l_workstation ? os_version_windows_8 : os_version_windows_server_2012;
        case 3:
            return l_workstation ? os_version_windows_81 : os_version_windows_server_2012r2;
        default:
            return os_version_windows;
        }
    }
    if (l_major == 10 && l_minor == 0) {
        return l_workstation ? os_version_windows_10 : os_version_windows_server_2016;
    }
    return os_version_windows;
}

namespace {

bool equal_ignoring_case(std::string const &a_left, char const *a_right)
{
    std::size_t const l_size = std::strlen(a_right);
    if (a_left.size() != l_size) {
        return false;
    }
    for (std::size_t l_index = 0; l_index < l_size; ++l_index) {
        auto const l_a = static_cast<unsigned char>(a_left[l_index]);
        auto const l_b = static_cast<unsigned char>(a_right[l_index]);
        if ((l_a >= 'a' && l_a <= 'z' ? l_a - 32 : l_a) != (l_b >= 'a' && l_b <= 'z' ? l_b - 32 : l_b)) {
            return false;
        }
    }
    return true;
}

} // namespace

os_version os_version_with_product_type(std::string const &a_product_type, uint32 a_major, uint32 a_minor)
{
    if (equal_ignoring_case(a_product_type, "WINNT")) {
        return a_major < 5 ? os_version_windows_nt40 : os_version_windows;
    }
    if (equal_ignoring_case(a_product_type, "LANMANNT") || equal_ignoring_case(a_product_type, "SERVERNT")) {
        if (a_major == 5 && a_minor == 2) {
            return os_version_windows_server_2003;
        }
        if (a_major == 5 && a_minor == 0) {
            return os_version_windows_2000;
        }
        if (a_major < 5) {
            return os_version_windows_nt40;
        }
    }
    return os_version_windows;
}

std::string kernel_version_with_word(uint32 a_word)
{
    int const l_major = static_cast<int>(a_word & 0xFFU);
    int const l_minor = static_cast<int>((a_word >> 8) & 0xFFU);
    int const l_build = (a_word & 0x80000000U) != 0 ? 0 : static_cast<int>(a_word >> 16);
    return string_with_format("%d.%d (%d)", l_major, l_minor, l_build);
}

double cpu_utilization_with_times(uint64 a_idle, uint64 a_kernel, uint64 a_user, uint64 a_previous_idle,
                                  uint64 a_previous_kernel, uint64 a_previous_user)
{
    uint64 const l_total = (a_user - a_previous_user) + (a_kernel - a_previous_kernel);
    uint64 const l_busy = l_total - (a_idle - a_previous_idle);
    if (l_total == 0) {
        // No time has passed between the two samples: nothing was busy.
        return 0.0;
    }
    return static_cast<double>(l_busy) / static_cast<double>(l_total);
}

std::string volume_root_with_path(std::string const &a_path)
{
    return a_path.substr(0, a_path.find('\\')) + '\\';
}

bool is_native_file_system(std::string const &a_name)
{
    // Windows' own, then Linux's own disk and memory file systems (as the POSIX backend names
    // them). Everything else, FAT32, exFAT, CDFS, vfat, ntfs, iso9660 and the network file
    // systems among them, is foreign.
    static char const *const k_native[] = {"NTFS", "FAT", "ext4",  "xfs",     "btrfs", "f2fs",
                                           "jfs",  "zfs", "tmpfs", "overlay", "ramfs", "reiserfs"};
    for (char const *l_name : k_native) {
        if (a_name == l_name) {
            return true;
        }
    }
    return false;
}

// ---- queries ----

std::string get_user_name()
{
    std::string l_name = platform::user_name();
    return l_name.empty() ? std::string("Unknown") : l_name;
}

std::string get_host_name()
{
    return platform::host_name();
}

unsigned get_pid()
{
    return platform::process_id();
}

std::string get_executable()
{
    std::string l_path;
    if (platform::executable(l_path).failed()) {
        es::call::raise(ORDWEL_HERE, "GetModuleFileName() failed.\n");
    }
    return l_path;
}

std::string get_executable_path()
{
    return path_directory(get_executable(), platform::path_separator(), 0);
}

std::string get_current_working_directory_path()
{
    std::string l_path;
    if (platform::current_directory(l_path).failed()) {
        es::call::raise(ORDWEL_HERE, "Unable to get current working directory");
    }
    return l_path;
}

std::string get_default_tmp_path()
{
    std::string l_path;
    if (platform::temp_directory(l_path).failed()) {
        es::call::raise(ORDWEL_HERE, "Unable to get temp path ");
    }
    return l_path;
}

std::string get_user_home_path()
{
    std::string l_path;
    if (platform::home_directory(l_path).failed()) {
        es::call::raise(ORDWEL_HERE, "Unable to locate user home path ");
    }
    return l_path;
}

std::pair<bool, std::string> get_environment_variable(std::string const &a_name)
{
    char const *const l_value = std::getenv(a_name.c_str());
    if (l_value == nullptr) {
        return std::make_pair(false, std::string());
    }
    return std::make_pair(true, std::string(l_value));
}

int execute_command(std::string const &a_command, std::string &a_output)
{
    std::FILE *l_pipe = nullptr;
    if (platform::command_open(a_command.c_str(), l_pipe).failed()) {
        diag::raise_format<es::call>(ORDWEL_HERE, "Unable to run command '%s'", a_command.c_str());
    }
    char l_piece[1024];
    while (std::fgets(l_piece, sizeof l_piece, l_pipe) != nullptr) {
        a_output.append(l_piece);
    }
    return platform::command_close(l_pipe);
}

unsigned get_mem_size_MiB()
{
    return static_cast<unsigned>(platform::memory().m_total >> 20);
}

unsigned get_avail_mem_MiB()
{
    return static_cast<unsigned>(platform::memory().m_available >> 20);
}

unsigned get_num_cpus()
{
    return platform::processor_count();
}

unsigned get_cpu_frequency_Mhz()
{
    unsigned l_mhz = 0;
    if (platform::processor_mhz(l_mhz).failed()) {
        es::call::raise(ORDWEL_HERE, "failed getting get_cpu_frequency_mhz from regestry");
    }
    return l_mhz;
}

double get_cpu_utilization()
{
    uint64 l_idle = 0;
    uint64 l_kernel = 0;
    uint64 l_user = 0;
    if (platform::system_times(l_idle, l_kernel, l_user).failed()) {
        return 0.0;
    }
    double const l_share =
        cpu_utilization_with_times(l_idle, l_kernel, l_user, s_previous_idle, s_previous_kernel, s_previous_user);
    s_previous_idle = l_idle;
    s_previous_kernel = l_kernel;
    s_previous_user = l_user;
    return l_share;
}

unsigned get_optimal_io_size(std::string const &)
{
    return 0x100000;
}

std::string get_isa()
{
    return platform::machine_isa();
}

std::string get_kernel_name()
{
    return platform::kernel_name();
}

std::string get_kernel_version()
{
    return kernel_version_with_word(platform::version_word());
}

bool get_is_server()
{
    return systeminfo::instance().get_windows_is_server() != 0;
}

os_version get_os_version()
{
    return systeminfo::instance().get_windows_version();
}

std::string get_os_version_string(os_version a_version)
{
    static char const *const k_texts[] = {"unknown",
                                          "Windows",
                                          "Windows 32s",
                                          "Windows 95",
                                          "Windows 95r2",
                                          "Windows 98",
                                          "Windows 98 SE",
                                          "Windows Millenium",
                                          "Windows NT 3.5",
                                          "Windows NT 4.0",
                                          "Windows NT 4.0 Server",
                                          "Windows 2000",
                                          "Windows XP",
                                          "Windows XP Professional 64",
                                          "Windows Homeserver",
                                          "Windows Server 2003",
                                          "Windows Server 2003r2",
                                          "Windows Vista",
                                          "Windows Server 2008",
                                          "Windows Server 2008r2",
                                          "Windows 7",
                                          "Windows Server 2012",
                                          "Windows Server 2012r2",
                                          "Windows 8",
                                          "Windows 8.1",
                                          "Windows 10",
                                          "Windows Server 2016",
                                          "OS X",
                                          "OS X Panther",
                                          "OS X Tiger",
                                          "OS X Leopard",
                                          "OS X Snow Leopard",
                                          "OS X Lion",
                                          "OS X Mountain Lion"};
    auto const l_index = static_cast<unsigned int>(a_version);
    return l_index < sizeof k_texts / sizeof k_texts[0] ? std::string(k_texts[l_index]) : std::string("Unknown");
}

std::string get_last_os_error()
{
    return os_error_text(platform::last_failure());
}

bool has_local_non_native_access(std::string const &a_path)
{
    std::string const l_root = volume_root_with_path(a_path);
    std::string const l_path = trimmed(a_path, '\\');
    std::string l_name;
    if (platform::volume_file_system(l_root, l_path, l_name).failed() || is_native_file_system(l_name)) {
        return false;
    }
    return platform::path_exists(l_path);
}

} // namespace env

std::string os_error_text(platform::status const &a_status)
{
    std::string const l_text = platform::status_text(a_status);
    if (l_text.empty()) {
        return string_with_format("Unknown error %lu", a_status.m_code);
    }
    return trimmed(l_text, env::k_blanks);
}

namespace fileutil {

namespace {

// What create_safe_filename makes of each byte.
struct safe_filename_table {
    char m_out[256];

    safe_filename_table() : m_out()
    {
        for (int l_byte = 0; l_byte < 256; ++l_byte) {
            // Read as a signed char, bytes from 128 up are negative and so below 33.
            int const l_value = static_cast<signed char>(static_cast<unsigned char>(l_byte));
            char l_out = '_';
            if (l_value >= 33 && l_value <= 122) {
                auto const l_char = static_cast<char>(l_value);
                if ((l_char >= '0' && l_char <= '9') || (l_char >= 'A' && l_char <= 'Z') ||
                    (l_char >= 'a' && l_char <= 'z') || std::strchr("!#%()+-=@[]", l_char) != nullptr) {
                    l_out = l_char;
                } else if (std::strchr(",.:;", l_char) != nullptr) {
                    l_out = '.';
                }
            }
            m_out[l_byte] = l_out;
        }
    }
};

safe_filename_table const k_safe_filename;

// Closes a whole-file function's file when the function raises after the open: the caller never
// sees the object, so nobody else could. A failure of that close is dropped, since the raise in
// flight says what went wrong. On the normal way out the function closes the file itself, and a
// failing close raises from there.
class close_on_raise {
public:
    explicit close_on_raise(file &a_file) : m_file(a_file) {}
    close_on_raise(close_on_raise const &) = delete;
    close_on_raise &operator=(close_on_raise const &) = delete;
    ~close_on_raise()
    {
        if (m_file.is_open()) {
            try {
                m_file.close();
            } catch (es::base const &) {
            }
        }
    }

private:
    file &m_file;
};

// Opens a file for reading as the whole-file functions do; es::arg for a file that is not open
// (an empty path), es::file from the open itself for one that cannot be opened.
file open_for_reading(std::string const &a_path)
{
    file l_file(a_path, 0, 420);
    if (!l_file.is_open()) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "failed to open file '%s'", a_path.c_str());
    }
    return l_file;
}

// The most that one call of file moves: its count reaches the platform as 32 bits.
constexpr uint64 k_max_call = 0xFFFFFFFFu;

// Reads up to a_size bytes in calls of at most 4 GiB less one, until the count or the end of the
// file; the bytes read.
uint64 read_up_to(file &a_file, unsigned char *a_data, uint64 a_size)
{
    uint64 l_done = 0;
    while (l_done < a_size) {
        uint64 const l_count = a_file.read(a_data + l_done, std::min(a_size - l_done, k_max_call));
        if (l_count == 0) {
            break;
        }
        l_done += l_count;
    }
    return l_done;
}

void write_whole(std::string const &a_path, void const *a_data, uint64 a_size)
{
    file l_file(a_path, file_write | file_create | file_truncate, 420);
    if (!l_file.is_open()) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "failed to open/create file '%s'", a_path.c_str());
    }
    close_on_raise const l_guard(l_file);
    // A write either moves its whole count or raises es::file with the reason; a count it came
    // back short of anyway would be data lost without a word, so that raises too.
    unsigned char const *const l_data = static_cast<unsigned char const *>(a_data);
    for (uint64 l_done = 0; l_done < a_size;) {
        uint64 const l_count = std::min(a_size - l_done, k_max_call);
        if (l_file.write(l_data + l_done, l_count) != l_count) {
            diag::raise_format<es::call>(ORDWEL_HERE, "failed to write file '%s'", a_path.c_str());
        }
        l_done += l_count;
    }
    l_file.close();
}

} // namespace

std::string create_safe_filename(std::string const &a_name)
{
    std::string l_result(a_name.size(), '_');
    for (std::size_t l_index = 0; l_index < a_name.size(); ++l_index) {
        l_result[l_index] = k_safe_filename.m_out[static_cast<unsigned char>(a_name[l_index])];
    }
    return l_result;
}

void get_file_bytes(std::string const &a_path, uint64 a_count, buffer &a_bytes)
{
    file l_file = open_for_reading(a_path);
    close_on_raise const l_guard(l_file);
    a_bytes.resize(a_count);
    uint64 const l_done = read_up_to(l_file, a_bytes.begin(), a_count);
    if (l_done < a_count) {
        a_bytes.resize(l_done);
    }
    l_file.close();
}

void get_file_content(std::string const &a_path, std::string &a_content)
{
    file l_file = open_for_reading(a_path);
    close_on_raise const l_guard(l_file);
    uint64 const l_size = l_file.size();
    std::string l_block(static_cast<std::size_t>(l_size), '\0');
    if (read_up_to(l_file, reinterpret_cast<unsigned char *>(&l_block[0]), l_size) < l_size) {
        diag::raise_format<es::call>(ORDWEL_HERE, "failed to read file '%s'", a_path.c_str());
    }
    a_content.swap(l_block);
    l_file.close();
}

void get_file_content(std::string const &a_path, buffer &a_content)
{
    file l_file = open_for_reading(a_path);
    close_on_raise const l_guard(l_file);
    uint64 const l_size = l_file.size();
    a_content.resize(l_size);
    if (read_up_to(l_file, a_content.begin(), l_size) < l_size) {
        diag::raise_format<es::call>(ORDWEL_HERE, "failed to read file '%s'", a_path.c_str());
    }
    l_file.close();
}

std::string string_with_file_content(std::string const &a_path)
{
    std::string l_content;
    get_file_content(a_path, l_content);
    return l_content;
}

void set_file_content(std::string const &a_path, std::string const &a_content)
{
    write_whole(a_path, a_content.data(), a_content.size());
}

void set_file_content(std::string const &a_path, buffer const &a_content)
{
    write_whole(a_path, a_content.begin(), a_content.size());
}

void remove_file(std::string const &a_path)
{
    platform::status const l_status = platform::file_unlink(a_path.c_str());
    if (l_status.failed()) {
        std::string const l_reason = platform::status_text(l_status);
        diag::raise_format<es::arg>(ORDWEL_HERE, "failed to remove file '%s' (%s)", a_path.c_str(), l_reason.c_str());
    }
}

} // namespace fileutil
} // namespace ordwel
