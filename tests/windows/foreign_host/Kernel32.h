// A host in the ABI of Windows' main compiler. What it uses of the system: the functions of kernel32.def, and
// nothing else. Stands in for <windows.h>, which no compiler of this build has in that ABI.
#pragma once

#define KERNEL32(result) extern "C" __declspec(dllimport) result

using Kernel32_Handle = void*;

inline const Kernel32_Handle invalid_handle = reinterpret_cast<Kernel32_Handle>(-1LL);

constexpr unsigned standard_output = static_cast<unsigned>(-11);
constexpr unsigned read_access = 0x80000000U;
constexpr unsigned share_for_reading = 1;
constexpr unsigned open_existing = 3;
constexpr unsigned memory_for_use = 0x1000 | 0x2000; // reserved and committed
constexpr unsigned memory_readable_and_writable = 4;
constexpr unsigned module_by_address = 2 | 4; // without counting this as a use of it

KERNEL32(int) CloseHandle(Kernel32_Handle handle);
KERNEL32(Kernel32_Handle)
CreateFileA(const char* path, unsigned access, unsigned sharing, void* security, unsigned disposition,
            unsigned attributes, Kernel32_Handle model);
KERNEL32(void) ExitProcess(unsigned status);
KERNEL32(const char*) GetCommandLineA();
KERNEL32(int) GetFileSizeEx(Kernel32_Handle file, long long* size);
KERNEL32(int) GetModuleHandleExA(unsigned how, const void* address, Kernel32_Handle* module_found);
KERNEL32(Kernel32_Handle) GetStdHandle(unsigned which);
KERNEL32(int)
ReadFile(Kernel32_Handle file, void* buffer, unsigned size, unsigned* read, void* overlapped);
KERNEL32(void*)
VirtualAlloc(void* address, unsigned long long size, unsigned kind, unsigned protection);
KERNEL32(int)
WriteFile(Kernel32_Handle file, const void* buffer, unsigned size, unsigned* written, void* overlapped);
