#ifndef ORDWEL_ENV_H
#define ORDWEL_ENV_H

#include <cstddef>
#include <string>
#include <utility>

#include <ordwel/export.h>
#include <ordwel/types.h>

// Questions about the machine and the process: names, paths, memory, processors and their load,
// the operating system and its version. Each query asks the platform anew and gives a plain
// value; only the version queries keep what they read, in the singleton env::systeminfo.

namespace ordwel {

/// A fixed array of N elements inside the object itself, never on the heap.
template <class T, std::size_t N> class stack_vector {
public:
    T *begin() { return m_data; }
    stack_vector &operator=(stack_vector const &a_other)
    {
        for (std::size_t l_index = 0; l_index < N; ++l_index) {
            m_data[l_index] = a_other.m_data[l_index];
        }
        return *this;
    }

private:
    T m_data[N];
};

extern template class ORDWEL_API stack_vector<char, 256>;

namespace env {

/// The operating systems that get_os_version can name. Values 27 to 33 are never detected.
enum os_version : int {
    os_version_unknown = 0,
    os_version_windows = 1,
    os_version_windows_32s = 2,
    os_version_windows_95 = 3,
    os_version_windows_95r2 = 4,
    os_version_windows_98 = 5,
    os_version_windows_98se = 6,
    os_version_windows_millenium = 7,
    os_version_windows_nt35 = 8,
    os_version_windows_nt40 = 9,
    os_version_windows_nt40_server = 10,
    os_version_windows_2000 = 11,
    os_version_windows_xp = 12,
    os_version_windows_xp_professional_64 = 13,
    os_version_windows_homeserver = 14,
    os_version_windows_server_2003 = 15,
    os_version_windows_server_2003r2 = 16,
    os_version_windows_vista = 17,
    os_version_windows_server_2008 = 18,
    os_version_windows_server_2008r2 = 19,
    os_version_windows_7 = 20,
    os_version_windows_server_2012 = 21,
    os_version_windows_server_2012r2 = 22,
    os_version_windows_8 = 23,
    os_version_windows_81 = 24,
    os_version_windows_10 = 25,
    os_version_windows_server_2016 = 26,
    os_version_osx = 27,
    os_version_osx_panther = 28,
    os_version_osx_tiger = 29,
    os_version_osx_leopard = 30,
    os_version_osx_snow_leopard = 31,
    os_version_osx_lion = 32,
    os_version_osx_mountain_lion = 33
};

/// The platform's extended version record, field for field (Windows' OSVERSIONINFOEXA).
struct os_version_info {
    uint32 m_size;
    uint32 m_major;
    uint32 m_minor;
    uint32 m_build;
    uint32 m_platform_id;
    char m_service_pack[128];
    uint16 m_service_pack_major;
    uint16 m_service_pack_minor;
    uint16 m_suite_mask;
    uint8 m_product_type;
    uint8 m_reserved;
};

/// What the version detection and the processor queries read of the platform's system record
/// (Windows' SYSTEM_INFO).
struct system_info {
    uint16 m_processor_architecture;
    uint32 m_page_size;
    uint64 m_active_processor_mask;
    uint32 m_number_of_processors;
    uint32 m_processor_type;
    uint16 m_processor_level;
    uint16 m_processor_revision;
};

/// The process-wide record of the platform's version data, read once on first use.
class ORDWEL_API systeminfo {
public:
    static systeminfo &instance();

    systeminfo(systeminfo const &a_other);
    systeminfo &operator=(systeminfo const &a_other);

    os_version get_windows_version() const;
    int get_windows_is_server() const;

private:
    systeminfo();
    virtual ~systeminfo();

    void detect_windows_version();

    os_version m_version;
    os_version_info m_os_info;
    system_info m_system_info;
    sint32 m_have_extended;
    sint32 m_is_server;
};

ORDWEL_API std::string get_user_name();
/// The caller has started the socket layer where the platform needs that (WSAStartup on Windows).
ORDWEL_API std::string get_host_name();
ORDWEL_API unsigned get_pid();
ORDWEL_API std::string get_executable();
/// The directory of get_executable(), with its trailing separator.
ORDWEL_API std::string get_executable_path();
ORDWEL_API std::string get_current_working_directory_path();
/// The directory for temporary files, with its trailing separator.
ORDWEL_API std::string get_default_tmp_path();
ORDWEL_API std::string get_user_home_path();
/// true and the value when the variable is set (also to the empty string); false and "" otherwise.
ORDWEL_API std::pair<bool, std::string> get_environment_variable(std::string const &a_name);
/// Runs a command line through the shell and appends its standard output to a_output. Gives the
/// command's exit status; raises es::call when the command cannot be started at all.
ORDWEL_API int execute_command(std::string const &a_command, std::string &a_output);
ORDWEL_API unsigned get_mem_size_MiB();
ORDWEL_API unsigned get_avail_mem_MiB();
ORDWEL_API unsigned get_num_cpus();
ORDWEL_API unsigned get_cpu_frequency_Mhz();
/// The busy share (0 to 1) of all processors since the previous call; the first call covers the
/// time since the system started. Unguarded process-wide state: callers share one measuring span.
ORDWEL_API double get_cpu_utilization();
ORDWEL_API unsigned get_optimal_io_size(std::string const &a_path);
ORDWEL_API std::string get_isa();
ORDWEL_API std::string get_kernel_name();
ORDWEL_API std::string get_kernel_version();
ORDWEL_API bool get_is_server();
ORDWEL_API os_version get_os_version();
ORDWEL_API std::string get_os_version_string(os_version a_version);
/// The text of the calling thread's last platform error, trimmed of blanks and line ends. Call it
/// right after the failed call, before anything else can change that error.
ORDWEL_API std::string get_last_os_error();
/// Whether the path exists on a local volume whose file system is not one of the platform's own.
ORDWEL_API bool has_local_non_native_access(std::string const &a_path);

// The decisions behind the queries above, as pure functions over plain records, so that every
// platform can check them with made-up values.

/// The version that an extended version record names (a_server_r2: what GetSystemMetrics(SM_SERVERR2)
/// gives); os_version_windows when no row of the version table matches.
ORDWEL_API os_version os_version_with_version_info(os_version_info const &a_info, system_info const &a_system,
                                                   int a_server_r2);
/// The version that the registry's product type text names, for a plain (not extended) record.
ORDWEL_API os_version os_version_with_product_type(std::string const &a_product_type, uint32 a_major, uint32 a_minor);
/// "major.minor (build)" from a GetVersion word.
ORDWEL_API std::string kernel_version_with_word(uint32 a_word);
/// The busy share of the span between two samples of idle, kernel (idle included) and user time.
ORDWEL_API double cpu_utilization_with_times(uint64 a_idle, uint64 a_kernel, uint64 a_user, uint64 a_previous_idle,
                                             uint64 a_previous_kernel, uint64 a_previous_user);
/// The volume root of a backslashed path: its first piece and a backslash ("C:\a" gives "C:\").
ORDWEL_API std::string volume_root_with_path(std::string const &a_path);
/// Whether a file-system name is one of the platform's own: exactly "NTFS" or "FAT" on Windows,
/// and the native Linux names that docs/platform.md lists. Case counts.
ORDWEL_API bool is_native_file_system(std::string const &a_name);

} // namespace env
} // namespace ordwel

#endif
