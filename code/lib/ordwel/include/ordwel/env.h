// SPDX-License-Identifier: MIT
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
    /// The first of the N elements.
    [[nodiscard]] T *begin() { return m_data; }
    /// Copies all N elements.
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
    uint32 m_size;               ///< The size of the record in bytes, as the platform asks for it.
    uint32 m_major;              ///< The major version number.
    uint32 m_minor;              ///< The minor version number.
    uint32 m_build;              ///< The build number.
    uint32 m_platform_id;        ///< The platform family: 0 Win32s, 1 Windows 9x, 2 NT.
    char m_service_pack[128];    ///< The service pack text, NUL-terminated.
    uint16 m_service_pack_major; ///< The service pack's major number.
    uint16 m_service_pack_minor; ///< The service pack's minor number.
    uint16 m_suite_mask;         ///< The product suites present, as bits.
    uint8 m_product_type;        ///< 1 workstation, 2 domain controller, 3 server.
    uint8 m_reserved;            ///< Unused.
};

/// What the version detection and the processor queries read of the platform's system record
/// (Windows' SYSTEM_INFO).
struct system_info {
    uint16 m_processor_architecture; ///< The processor architecture; 9 is 64-bit x86.
    uint32 m_page_size;              ///< The page size in bytes.
    uint64 m_active_processor_mask;  ///< One bit for each processor in use.
    uint32 m_number_of_processors;   ///< The number of processors.
    uint32 m_processor_type;         ///< The processor type, as the platform names it.
    uint16 m_processor_level;        ///< The processor level, as the platform names it.
    uint16 m_processor_revision;     ///< The processor revision, as the platform names it.
};

/// The process-wide record of the platform's version data, read once on first use.
class ORDWEL_API systeminfo {
public:
    /// The one record, built on first use (not guarded against a second thread at that moment)
    /// and alive to the end of the process.
    [[nodiscard]] static systeminfo &instance();

    /// Copy every field.
    ///@{
    systeminfo(systeminfo const &a_other);
    systeminfo &operator=(systeminfo const &a_other);
    ///@}

    /// The detected version; os_version_windows when no known version matched.
    [[nodiscard]] os_version get_windows_version() const;
    /// Non-zero on a server edition.
    [[nodiscard]] int get_windows_is_server() const;

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

/// The name of the user running the process; "Unknown" when the platform cannot tell.
[[nodiscard]] ORDWEL_API std::string get_user_name();
/// The machine's host name. The caller has started the socket layer where the platform needs that
/// (WSAStartup on Windows).
[[nodiscard]] ORDWEL_API std::string get_host_name();
/// The id of the running process.
[[nodiscard]] ORDWEL_API unsigned get_pid();
/// The path of the running program. Raises es::call "GetModuleFileName() failed.\n" when the
/// platform cannot tell.
[[nodiscard]] ORDWEL_API std::string get_executable();
/// The directory of get_executable(), with its trailing separator.
[[nodiscard]] ORDWEL_API std::string get_executable_path();
/// The current working directory. Raises es::call when the platform cannot tell.
[[nodiscard]] ORDWEL_API std::string get_current_working_directory_path();
/// The directory for temporary files, with its trailing separator. Raises es::call "Unable to get
/// temp path " when the platform cannot tell.
[[nodiscard]] ORDWEL_API std::string get_default_tmp_path();
/// The current user's home (profile) directory. Raises es::call "Unable to locate user home path "
/// when the platform cannot tell.
[[nodiscard]] ORDWEL_API std::string get_user_home_path();
/// true and the value when the variable is set (also to the empty string); false and "" otherwise.
[[nodiscard]] ORDWEL_API std::pair<bool, std::string> get_environment_variable(std::string const &a_name);
/// Runs a command line through the shell and appends its standard output to a_output. Gives the
/// command's exit status; raises es::call when the command cannot be started at all.
ORDWEL_API int execute_command(std::string const &a_command, std::string &a_output);
/// The machine's physical memory in MiB (whole MiB, rounded down).
[[nodiscard]] ORDWEL_API unsigned get_mem_size_MiB();
/// The physical memory available now, in MiB (whole MiB, rounded down).
[[nodiscard]] ORDWEL_API unsigned get_avail_mem_MiB();
/// The number of processors.
[[nodiscard]] ORDWEL_API unsigned get_num_cpus();
/// The first processor's nominal clock in MHz; 0 when it is not recorded. Raises es::call "failed
/// getting get_cpu_frequency_mhz from regestry" when the record cannot be opened.
[[nodiscard]] ORDWEL_API unsigned get_cpu_frequency_Mhz();
/// The busy share (0 to 1) of all processors since the previous call; the first call covers the
/// time since the system started. Unguarded process-wide state: callers share one measuring span.
/// 0 when the platform cannot give the times.
[[nodiscard]] ORDWEL_API double get_cpu_utilization();
/// The size of reads and writes that suits the file system: 1 MiB for any path.
[[nodiscard]] ORDWEL_API unsigned get_optimal_io_size(std::string const &a_path);
/// The processor's instruction set, as "x86_64".
[[nodiscard]] ORDWEL_API std::string get_isa();
/// The kernel's name, as "WINDOWS".
[[nodiscard]] ORDWEL_API std::string get_kernel_name();
/// The kernel's version as "major.minor (build)"; see kernel_version_with_word.
[[nodiscard]] ORDWEL_API std::string get_kernel_version();
/// Whether the system is a server edition (systeminfo::get_windows_is_server).
[[nodiscard]] ORDWEL_API bool get_is_server();
/// The operating system's version, detected once (systeminfo::get_windows_version).
[[nodiscard]] ORDWEL_API os_version get_os_version();
/// The name of a version ("Windows 7"); "unknown" for os_version_unknown and "Unknown" for a value
/// outside the enumeration.
[[nodiscard]] ORDWEL_API std::string get_os_version_string(os_version a_version);
/// The text of the calling thread's last platform error, trimmed of blanks and line ends. Call it
/// right after the failed call, before anything else can change that error.
[[nodiscard]] ORDWEL_API std::string get_last_os_error();
/// Whether the path exists on a local volume whose file system is not one of the platform's own.
[[nodiscard]] ORDWEL_API bool has_local_non_native_access(std::string const &a_path);

// The decisions behind the queries above, as pure functions over plain records, so that every
// platform can check them with made-up values.

/// The version that an extended version record names (a_server_r2: what GetSystemMetrics(SM_SERVERR2)
/// gives); os_version_windows when no row of the version table matches.
[[nodiscard]] ORDWEL_API os_version os_version_with_version_info(os_version_info const &a_info,
                                                                 system_info const &a_system, int a_server_r2);
/// The version that the registry's product type text names, for a plain (not extended) record.
[[nodiscard]] ORDWEL_API os_version os_version_with_product_type(std::string const &a_product_type, uint32 a_major,
                                                                 uint32 a_minor);
/// "major.minor (build)" from a GetVersion word.
[[nodiscard]] ORDWEL_API std::string kernel_version_with_word(uint32 a_word);
/// The busy share of the span between two samples of idle, kernel (idle included) and user time.
[[nodiscard]] ORDWEL_API double cpu_utilization_with_times(uint64 a_idle, uint64 a_kernel, uint64 a_user,
                                                           uint64 a_previous_idle, uint64 a_previous_kernel,
                                                           uint64 a_previous_user);
/// The volume root of a backslashed path: its first piece and a backslash ("C:\a" gives "C:\").
[[nodiscard]] ORDWEL_API std::string volume_root_with_path(std::string const &a_path);
/// Whether a file-system name is one of the platform's own: exactly "NTFS" or "FAT" on Windows,
/// and the native Linux names that docs/platform.md lists. Case counts.
[[nodiscard]] ORDWEL_API bool is_native_file_system(std::string const &a_name);

} // namespace env
} // namespace ordwel

#endif
