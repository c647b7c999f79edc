// SPDX-License-Identifier: MIT
#ifndef ORDWEL_PLATFORM_SYSTEMINFO_H
#define ORDWEL_PLATFORM_SYSTEMINFO_H

#include <cstdio>
#include <string>
#include <vector>

#include <ordwel/types.h>

#include "platform/error.h"

// The machine and process queries of env and cpuinfo. Each backend makes the system call and
// hands back plain values; what the values mean is decided in portable code.

namespace ordwel {
namespace platform {

// Texts that are empty when the platform cannot give them.
std::string user_name();
std::string host_name();
unsigned process_id();
// Fail when the platform cannot tell.
status executable(std::string &a_path);
status current_directory(std::string &a_path);
status temp_directory(std::string &a_path);
status home_directory(std::string &a_path);
// The separator of the platform's own paths.
char path_separator();

// A pipe from a shell command's standard output; fails when the command cannot be started.
status command_open(char const *a_command, std::FILE *&a_pipe);
// The command's exit status.
int command_close(std::FILE *a_pipe);

struct memory_status {
    uint64 m_total;
    uint64 m_available;
};
memory_status memory();
unsigned processor_count();
// Fails when the source of the value cannot be opened at all; a_mhz is 0 when it opened and gave
// nothing readable.
status processor_mhz(unsigned &a_mhz);
// Idle, kernel (idle included) and user time since the system started.
status system_times(uint64 &a_idle, uint64 &a_kernel, uint64 &a_user);

// The platform's version record (Windows' OSVERSIONINFOEXA) and system record (SYSTEM_INFO), as
// plain fields; env keeps its own records of the same shape.
struct os_version_record {
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
struct system_record {
    uint16 m_processor_architecture;
    uint32 m_page_size;
    uint64 m_active_processor_mask;
    uint32 m_number_of_processors;
    uint32 m_processor_type;
    uint16 m_processor_level;
    uint16 m_processor_revision;
};

// What the version queries read. a_windows is false on a platform that is not Windows; then the
// records carry what that platform tells of its own version.
struct version_facts {
    bool m_windows;
    // Result of the extended query (non-zero: m_info is the extended record).
    sint32 m_have_extended;
    // Whether any version query worked.
    bool m_have_version;
    os_version_record m_info;
    system_record m_system;
    sint32 m_is_server;
};
version_facts read_version_facts();
// GetSystemMetrics(SM_SERVERR2).
int server_r2_metric();
// The registry's product type text; fails when it cannot be read or needs more than 80 bytes.
status product_type_text(std::string &a_text);
// The GetVersion word (POSIX: built from the kernel release).
uint32 version_word();
std::string kernel_name();
std::string machine_isa();

// The file-system name of the volume that holds a path; fails when it cannot be asked. Windows
// asks the root, POSIX the nearest existing directory on the path.
status volume_file_system(std::string const &a_root, std::string const &a_path, std::string &a_name);
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
// Fills a_records; throws std::bad_alloc when memory runs out.
status processor_relations(std::vector<processor_relation> &a_records);

} // namespace platform
} // namespace ordwel

#endif
