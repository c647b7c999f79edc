#ifndef ORDWEL_PLATFORM_SYSTEMINFO_H
#define ORDWEL_PLATFORM_SYSTEMINFO_H

#include <cstdio>
#include <string>
#include <vector>

#include <ordwel/env.h>
#include <ordwel/types.h>

// The machine and process queries of env and cpuinfo. Each backend makes the system call and
// hands back plain values; what the values mean is decided in portable code.

namespace ordwel {
namespace platform {

// Texts that are empty when the platform cannot give them.
std::string user_name();
std::string host_name();
unsigned process_id();
// false when the platform cannot tell.
bool executable(std::string &a_path);
bool current_directory(std::string &a_path);
bool temp_directory(std::string &a_path);
bool home_directory(std::string &a_path);
// The separator of the platform's own paths.
char path_separator();

// A pipe from a shell command's standard output; null when the command cannot be started.
std::FILE *command_open(char const *a_command);
// The command's exit status.
int command_close(std::FILE *a_pipe);

struct memory_status {
    uint64 m_total;
    uint64 m_available;
};
memory_status memory();
unsigned processor_count();
// false when the source of the value cannot be opened at all; a_mhz is 0 when it opened and gave
// nothing readable.
bool processor_mhz(unsigned &a_mhz);
// Idle, kernel (idle included) and user time since the system started; false on failure.
bool system_times(uint64 &a_idle, uint64 &a_kernel, uint64 &a_user);

// What the version queries read. a_windows is false on a platform that is not Windows; then the
// records carry what that platform tells of its own version.
struct version_facts {
    bool m_windows;
    // Result of the extended query (non-zero: m_info is the extended record).
    sint32 m_have_extended;
    // Whether any version query worked.
    bool m_have_version;
    env::os_version_info m_info;
    env::system_info m_system;
    sint32 m_is_server;
};
version_facts read_version_facts();
// GetSystemMetrics(SM_SERVERR2).
int server_r2_metric();
// The registry's product type text; false when it cannot be read or needs more than 80 bytes.
bool product_type_text(std::string &a_text);
// The GetVersion word (POSIX: built from the kernel release).
uint32 version_word();
std::string kernel_name();
std::string machine_isa();

// The file-system name of the volume that holds a path; false when it cannot be asked. Windows
// asks the root, POSIX the nearest existing directory on the path.
bool volume_file_system(std::string const &a_root, std::string const &a_path, std::string &a_name);
// Whether a path can be examined (_wstat64i32 / stat).
bool path_exists(std::string const &a_path);

// The processor record of cpuinfo: the architecture of SYSTEM_INFO, the processor count, and bit n
// set when processor feature n is present.
struct processor_facts {
    uint32 m_architecture;
    uint32 m_processors;
    uint64 m_features;
};
processor_facts read_processor_facts();

// One record of the logical processor relations: its relation and processor mask.
struct processor_relation {
    uint32 m_relationship;
    uint64 m_mask;
};
enum class relation_status { ok, no_memory, failed };
// Fills a_records; on failed, a_error holds the platform's error code.
relation_status processor_relations(std::vector<processor_relation> &a_records, unsigned long &a_error);

} // namespace platform
} // namespace ordwel

#endif
