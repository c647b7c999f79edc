// SPDX-License-Identifier: MIT
#include "platform/systeminfo.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>

#include <winsock2.h>

#include <windows.h>

#include <shlobj.h>
#include <sys/stat.h>

#include "platform/text.h"

// The Win32 system queries, called by their own names.
namespace ordwel {
namespace platform {

namespace {

void copy_system_info(SYSTEM_INFO const &a_from, system_record &a_to)
{
    a_to.m_processor_architecture = a_from.wProcessorArchitecture;
    a_to.m_page_size = a_from.dwPageSize;
    a_to.m_active_processor_mask = static_cast<uint64>(a_from.dwActiveProcessorMask);
    a_to.m_number_of_processors = a_from.dwNumberOfProcessors;
    a_to.m_processor_type = a_from.dwProcessorType;
    a_to.m_processor_level = a_from.wProcessorLevel;
    a_to.m_processor_revision = a_from.wProcessorRevision;
}

SYSTEM_INFO native_system_info()
{
    SYSTEM_INFO l_info;
    std::memset(&l_info, 0, sizeof l_info);
    using native_call = void(WINAPI *)(LPSYSTEM_INFO);
    HMODULE const l_kernel = GetModuleHandleA("kernel32.dll");
    FARPROC const l_proc = l_kernel != nullptr ? GetProcAddress(l_kernel, "GetNativeSystemInfo") : nullptr;
    if (l_proc != nullptr) {
        native_call l_call;
        static_assert(sizeof l_call == sizeof l_proc, "function pointers differ in size");
        std::memcpy(&l_call, &l_proc, sizeof l_call);
        l_call(&l_info);
    } else {
        GetSystemInfo(&l_info);
    }
    return l_info;
}

} // namespace

std::string user_name()
{
    char l_name[128] = {};
    DWORD l_size = sizeof l_name;
    if (!GetUserNameA(l_name, &l_size)) {
        return std::string();
    }
    return std::string(l_name);
}

std::string host_name()
{
    char l_name[256] = {};
    gethostname(l_name, static_cast<int>(sizeof l_name - 1));
    return std::string(l_name);
}

unsigned process_id()
{
    return static_cast<unsigned>(GetCurrentProcessId());
}

status executable(std::string &a_path)
{
    char l_path[MAX_PATH + 1] = {};
    DWORD const l_size = GetModuleFileNameA(nullptr, l_path, MAX_PATH);
    if (l_size == 0) {
        return last_failure();
    }
    a_path.assign(l_path, l_size);
    return status_done();
}

status current_directory(std::string &a_path)
{
    char l_path[MAX_PATH + 1] = {};
    DWORD const l_size = GetCurrentDirectoryA(MAX_PATH, l_path);
    if (l_size == 0 || l_size >= MAX_PATH) {
        return last_failure();
    }
    a_path.assign(l_path, l_size);
    return status_done();
}

status temp_directory(std::string &a_path)
{
    char l_path[MAX_PATH + 1] = {};
    DWORD const l_size = GetTempPathA(MAX_PATH, l_path);
    if (l_size == 0 || l_size >= MAX_PATH) {
        return last_failure();
    }
    a_path.assign(l_path, l_size);
    return status_done();
}

status home_directory(std::string &a_path)
{
    char l_path[MAX_PATH + 1] = {};
    if (FAILED(SHGetFolderPathA(nullptr, CSIDL_PROFILE, nullptr, 0, l_path))) {
        return last_failure();
    }
    a_path = l_path;
    return status_done();
}

char path_separator()
{
    return '\\';
}

status command_open(char const *a_command, std::FILE *&a_pipe)
{
    // Only the command's standard output is read.
    a_pipe = _popen(a_command, "r");
    return a_pipe != nullptr ? status_done() : status_failed_runtime(errno);
}

int command_close(std::FILE *a_pipe)
{
    return _pclose(a_pipe);
}

memory_status memory()
{
    MEMORYSTATUSEX l_status;
    std::memset(&l_status, 0, sizeof l_status);
    l_status.dwLength = sizeof l_status;
    if (!GlobalMemoryStatusEx(&l_status)) {
        return memory_status{0, 0};
    }
    return memory_status{l_status.ullTotalPhys, l_status.ullAvailPhys};
}

unsigned processor_count()
{
    SYSTEM_INFO l_info;
    std::memset(&l_info, 0, sizeof l_info);
    GetSystemInfo(&l_info);
    return l_info.dwNumberOfProcessors;
}

status processor_mhz(unsigned &a_mhz)
{
    HKEY l_key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", 0, KEY_READ, &l_key) !=
        ERROR_SUCCESS) {
        return last_failure();
    }
    DWORD l_value = 0;
    DWORD l_size = sizeof l_value;
    DWORD l_type = 0;
    LONG const l_result =
        RegQueryValueExA(l_key, "~MHz", nullptr, &l_type, reinterpret_cast<LPBYTE>(&l_value), &l_size);
    RegCloseKey(l_key);
    a_mhz = l_result == ERROR_SUCCESS ? static_cast<unsigned>(l_value) : 0U;
    return status_done();
}

status system_times(uint64 &a_idle, uint64 &a_kernel, uint64 &a_user)
{
    FILETIME l_idle, l_kernel, l_user;
    if (!GetSystemTimes(&l_idle, &l_kernel, &l_user)) {
        return last_failure();
    }
    a_idle = (static_cast<uint64>(l_idle.dwHighDateTime) << 32) | l_idle.dwLowDateTime;
    a_kernel = (static_cast<uint64>(l_kernel.dwHighDateTime) << 32) | l_kernel.dwLowDateTime;
    a_user = (static_cast<uint64>(l_user.dwHighDateTime) << 32) | l_user.dwLowDateTime;
    return status_done();
}

version_facts read_version_facts()
{
    version_facts l_facts{};
    l_facts.m_windows = true;
    OSVERSIONINFOEXA l_info;
    std::memset(&l_info, 0, sizeof l_info);
    l_info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXA);
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    l_facts.m_have_extended = GetVersionExA(reinterpret_cast<OSVERSIONINFOA *>(&l_info));
    l_facts.m_have_version = l_facts.m_have_extended != 0;
    if (!l_facts.m_have_version) {
        l_info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
        l_facts.m_have_version = GetVersionExA(reinterpret_cast<OSVERSIONINFOA *>(&l_info)) != 0;
    }
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    l_facts.m_info.m_size = l_info.dwOSVersionInfoSize;
    l_facts.m_info.m_major = l_info.dwMajorVersion;
    l_facts.m_info.m_minor = l_info.dwMinorVersion;
    l_facts.m_info.m_build = l_info.dwBuildNumber;
    l_facts.m_info.m_platform_id = l_info.dwPlatformId;
    std::memcpy(l_facts.m_info.m_service_pack, l_info.szCSDVersion, sizeof l_facts.m_info.m_service_pack);
    l_facts.m_info.m_service_pack_major = l_info.wServicePackMajor;
    l_facts.m_info.m_service_pack_minor = l_info.wServicePackMinor;
    l_facts.m_info.m_suite_mask = l_info.wSuiteMask;
    l_facts.m_info.m_product_type = l_info.wProductType;
    l_facts.m_info.m_reserved = l_info.wReserved;

    copy_system_info(native_system_info(), l_facts.m_system);

    OSVERSIONINFOEXW l_wanted;
    std::memset(&l_wanted, 0, sizeof l_wanted);
    l_wanted.dwOSVersionInfoSize = sizeof l_wanted;
    l_wanted.wProductType = VER_NT_WORKSTATION;
    DWORDLONG const l_mask = VerSetConditionMask(0, VER_PRODUCT_TYPE, VER_EQUAL);
    l_facts.m_is_server = !VerifyVersionInfoW(&l_wanted, VER_PRODUCT_TYPE, l_mask);
    return l_facts;
}

int server_r2_metric()
{
    return GetSystemMetrics(SM_SERVERR2);
}

status product_type_text(std::string &a_text)
{
    HKEY l_key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SYSTEM\\CurrentControlSet\\Control\\ProductOptions", 0, KEY_QUERY_VALUE,
                      &l_key) != ERROR_SUCCESS) {
        return last_failure();
    }
    char l_text[80] = {};
    DWORD l_size = sizeof l_text;
    LONG const l_result =
        RegQueryValueExA(l_key, "ProductType", nullptr, nullptr, reinterpret_cast<LPBYTE>(l_text), &l_size);
    RegCloseKey(l_key);
    if (l_result != ERROR_SUCCESS || l_size > sizeof l_text) {
        return last_failure();
    }
    a_text.assign(l_text, strnlen(l_text, sizeof l_text));
    return status_done();
}

uint32 version_word()
{
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    return static_cast<uint32>(GetVersion());
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

std::string kernel_name()
{
    return "WINDOWS";
}

std::string machine_isa()
{
    return "x86_64";
}

status volume_file_system(std::string const &a_root, std::string const &, std::string &a_name)
{
    std::wstring const l_root = wide_with_utf8(a_root.c_str(), std::strlen(a_root.c_str()));
    wchar_t l_volume[MAX_PATH + 1] = {};
    wchar_t l_system[MAX_PATH + 1] = {};
    if (!GetVolumeInformationW(l_root.c_str(), l_volume, MAX_PATH + 1, nullptr, nullptr, nullptr, l_system,
                               MAX_PATH + 1)) {
        return last_failure();
    }
    a_name = utf8_with_wide(l_system, std::wcslen(l_system));
    return status_done();
}

bool path_exists(std::string const &a_path)
{
    std::wstring const l_path = wide_with_utf8(a_path.c_str(), std::strlen(a_path.c_str()));
    struct _stat64i32 l_info;
    return _wstat64i32(l_path.c_str(), &l_info) == 0;
}

processor_facts read_processor_facts()
{
    SYSTEM_INFO l_info;
    std::memset(&l_info, 0, sizeof l_info);
    GetSystemInfo(&l_info);
    processor_facts l_facts{};
    l_facts.m_architecture = l_info.wProcessorArchitecture;
    l_facts.m_processors = l_info.dwNumberOfProcessors;
    for (DWORD l_feature : {3U, 6U, 10U, 13U, 7U, 8U}) {
        if (IsProcessorFeaturePresent(l_feature)) {
            l_facts.m_features |= 1ULL << l_feature;
        }
    }
    return l_facts;
}

status processor_relations(std::vector<processor_relation> &a_records)
{
    DWORD l_length = 0;
    void *l_buffer = nullptr;
    while (!GetLogicalProcessorInformation(static_cast<PSYSTEM_LOGICAL_PROCESSOR_INFORMATION>(l_buffer), &l_length)) {
        DWORD const l_error = GetLastError();
        std::free(l_buffer);
        l_buffer = nullptr;
        if (l_error != ERROR_INSUFFICIENT_BUFFER) {
            return status_failed(l_error);
        }
        l_buffer = std::malloc(l_length);
        if (l_buffer == nullptr) {
            throw std::bad_alloc();
        }
    }
    auto const *const l_records = static_cast<SYSTEM_LOGICAL_PROCESSOR_INFORMATION const *>(l_buffer);
    std::size_t const l_count = l_length / sizeof(SYSTEM_LOGICAL_PROCESSOR_INFORMATION);
    try {
        for (std::size_t l_index = 0; l_index < l_count; ++l_index) {
            a_records.push_back(processor_relation{static_cast<uint32>(l_records[l_index].Relationship),
                                                   static_cast<uint64>(l_records[l_index].ProcessorMask)});
        }
    } catch (std::bad_alloc const &) {
        std::free(l_buffer);
        throw;
    }
    std::free(l_buffer);
    return status_done();
}

} // namespace platform
} // namespace ordwel
